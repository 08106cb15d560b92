// The plan drawn as SVG: a vertical-section view and a plan view side by side.
#pragma once

#include <string>

#include "PlanFile.h"
#include "Solve.h"

namespace orrin_tool {

/// The SVG document of a solved (or partly solved) plan.
std::string plotSvg(const PlanInput& input, Solution& solution);

}  // namespace orrin_tool
