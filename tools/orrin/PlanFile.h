// Reading a plan: a JSON plan file (docs/plan-format.md) or a survey CSV, checked and converted to
// the library's units (radians, radians per length unit, the plan's length unit).
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Common.h"
#include "Methods.h"
#include "plan/Records.h"

namespace orrin_tool {

/// One planned line as read: its method and its inputs in library units.
struct LineInput {
    const MethodSpec* method = nullptr;
    std::string where;  ///< where it was read: "lines[3]" or "survey.csv row 5"
    std::vector<std::pair<std::string, double>> values;  ///< numeric inputs by field
    std::string target;                                  ///< target name, or empty
    std::string backTarget;      ///< start target of a "BACK Target" line, or empty
    int solve1 = 0, solve2 = 0;  ///< unknowns of a 2D profile
    bool surveyed = false;       ///< a station of a survey CSV (an "Inc Azi MD" line)

    /// The value of a field, 0 when absent.
    double value(const std::string& field) const;
    bool has(const std::string& field) const;
};

/// A whole plan as read.
struct PlanInput {
    std::string file;   ///< the file as named on the command line
    std::string title;  ///< "title" of the file, or the file's name
    Units units;
    SStation tie;  ///< the tie-on station (method 2)
    double vsAzimuth = 0.0, vsNorth = 0.0, vsEast = 0.0;
    bool vsFromClosure = false;  ///< no section given and no target: along the well's closure
    bool horizontalTurn = false;
    std::vector<STarget> targets;
    std::vector<LineInput> lines;
    std::vector<std::pair<double, double>> walk;  ///< (tvd [L], walk rate [rad/L])
};

/// Reads a plan file: a survey CSV when its name ends in ".csv", a JSON plan otherwise. A CSV's
/// units come from `units` when given, else from its header ("MD (m)"), else feet. Throws
/// InputError naming the file, the place and the field.
PlanInput readPlan(const std::string& path, std::optional<bool> metres);

}  // namespace orrin_tool
