// Solving a plan through the library, and the stations of the solution.
#pragma once

#include <string>
#include <vector>

#include "PlanFile.h"
#include "plan/CPlan.h"

namespace orrin_tool {

/// One solved station and the plan line it belongs to.
struct SolvedStation {
    SStation s;
    int planLine = -1;       ///< index into PlanInput::lines; -1 for the tie-on
    bool lineStart = false;  ///< the first station of its line
    int family = 10;         ///< method family of its line
    std::string method;      ///< display name of its line's method
};

/// A solved plan: the library object with the solution, and its stations read back.
struct Solution {
    CPlan plan;
    std::vector<SolvedStation> stations;  ///< the solved stations, from the tie-on
    int error = 0;                        ///< m_nError of the failing line, kDepthNotReached, or 0
    std::string message;  ///< the library's message of it ("Line 4: ..."), or the tool's
    int failedLine = -1;  ///< index into PlanInput::lines of the failing line
};

/// The error of a line to a vertical depth that the library ended elsewhere without an error code.
constexpr int kDepthNotReached = -1001;

/// Puts the plan's lines one after another (PutData(-1) after the tie-on) and reads the solution
/// back. A failing line ends the putting: the plan keeps the last good solution. A line whose
/// solved stations are not finite, or that does not reach the vertical depth it was given, fails as
/// well, with the tool's own code.
Solution solvePlan(const PlanInput& input);

/// Puts one line's inputs into the transfer fields of `plan` (every other field cleared) and appends
/// it with PutData(-1).
void putLine(CPlan& plan, const PlanInput& input, const LineInput& line);

}  // namespace orrin_tool
