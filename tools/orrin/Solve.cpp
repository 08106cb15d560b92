#include "Solve.h"

#include <cmath>
#include <cstdio>

namespace orrin_tool {

namespace {

/// How close a line to a vertical depth must end to it [L].
constexpr double kDepthReached = 0.01;

/// Stations a line may take: a 2D S-shape is the longest, with five.
constexpr int kMaxStationsPerLine = 5;

void clearTransfer(CPlan& p) {
    p.m_nFamily = p.m_nSubMethod = p.m_bConstTF = p.m_nTargetMethod = 0;
    p.m_dVS = p.m_dMD = p.m_dInc = p.m_dAzi = p.m_dTF = p.m_dTVD = 0.0;
    p.m_dDLS = p.m_dBuild = p.m_dTurn = 0.0;
    p.m_nSolveFor1 = p.m_nSolveFor2 = p.m_nProfileType = 0;
    p.m_dBuildDLS = p.m_dDropDLS = p.m_dHoldInc = p.m_dFinalInc = 0.0;
    p.m_dLength1 = p.m_dLength2 = p.m_dLength3 = 0.0;
    p.m_strTarget.clear();
    p.m_bTargetFlag = false;
    p.m_dMethodParam1 = p.m_dMethodParam2 = p.m_dMethodParam3 = p.m_dMethodParam4 = 0.0;
    p.m_dMethodParam5 = p.m_dMethodParam6 = p.m_dMethodParam7 = p.m_dMethodParam8 = 0.0;
    p.m_target = STarget();
}

}  // namespace

void putLine(CPlan& p, const PlanInput& input, const LineInput& line) {
    const MethodSpec& m = *line.method;
    clearTransfer(p);
    p.m_nFamily = m.family;
    p.m_nSubMethod = m.sub;
    p.m_nTargetMethod = m.targetMethod;
    p.m_bConstTF = m.constTF;

    // One-station lines read the line values, target methods the method parameters: an input goes
    // to both, since each method reads only its own.
    for (const auto& [field, v] : line.values) {
        if (field == "md") p.m_dMD = v;
        if (field == "tvd") p.m_dTVD = v;
        if (field == "inc") p.m_dInc = p.m_dMethodParam4 = v;
        if (field == "azi") p.m_dAzi = v;
        if (field == "tf") p.m_dTF = v;
        if (field == "dls") p.m_dDLS = p.m_dMethodParam1 = v;
        if (field == "build") p.m_dBuild = p.m_dMethodParam7 = v;
        if (field == "turn") p.m_dTurn = p.m_dMethodParam8 = v;
        if (field == "kickoff") p.m_dLength1 = v;
        if (field == "build_dls") p.m_dBuildDLS = v;
        if (field == "hold_inc") p.m_dHoldInc = v;
        if (field == "tangent") p.m_dLength2 = v;
        if (field == "drop_dls") p.m_dDropDLS = -v;  // a drop lowers the inclination
        if (field == "final_inc") p.m_dFinalInc = v;
        if (field == "final_hold") p.m_dLength3 = v;
        // "DT7 OL TVD" and "BT7 OL TVD" take the depth of their curve's end as a parameter.
        if (field == "tvd" && (m.code == 1930 || m.code == 1935)) p.m_dMethodParam4 = v;
    }
    // Optimum align and landing: the two severities, the tangent, the depths of the hold, the
    // landing azimuth.
    for (const auto& [field, v] : line.values) {
        if (field == "dls1") p.m_dMethodParam1 = v;
        if (field == "dls2") p.m_dMethodParam2 = v;
        if (field == "tangent" && m.family == 110) p.m_dMethodParam3 = v;
        if (field == "tvd1") p.m_dMethodParam5 = v;
        if (field == "tvd2") p.m_dMethodParam6 = v;
        if (field == "azi" && m.code == 1950) p.m_dMethodParam4 = v;
    }
    p.m_nSolveFor1 = line.solve1;
    p.m_nSolveFor2 = line.solve2;
    if (!line.target.empty()) {
        for (const STarget& t : input.targets)
            if (narrow(t.name) == line.target) p.m_target = t;
    }
    // A "BACK Target" line starts at a second target: its name, flag and position.
    for (const STarget& t : input.targets) {
        if (line.backTarget.empty() || narrow(t.name) != line.backTarget) continue;
        p.m_strTarget = t.name;
        p.m_bTargetFlag = t.flag;
        p.m_dLength1 = t.tvd;
        p.m_dLength2 = t.ns;
        p.m_dLength3 = t.ew;
    }
    p.PutData(-1);
}

namespace {

/// Steps of the scan for the smallest severity that solves a line, each a factor of 2^(1/2), from
/// 2^-10 to 2^20 times the line's own severity; then bisections between the last failing and the
/// first solving step.
constexpr int kSeverityStepsDown = 20;
constexpr int kSeveritySteps = 60;
constexpr int kSeverityBisections = 30;

Solution solveLines(const PlanInput& input, bool withHint);

/// The line `failed` with every given severity (dls, dls1, dls2) set to k [rad/L], the lines after
/// it dropped, solves.
bool solvesWith(const PlanInput& input, std::size_t failed, double k) {
    PlanInput trial = input;
    trial.lines.resize(failed + 1);
    for (auto& [field, v] : trial.lines[failed].values)
        if (field == "dls" || field == "dls1" || field == "dls2") v = k;
    return solveLines(trial, false).error == 0;
}

/// For a line of two arcs that has no path with its severities ("OPT AL DLS" and "HZ Landing" -1,
/// "OPT AL CD1" -1, "OPT AL CD2" -2): the smallest dogleg severity [rad/L], given to every arc that
/// takes one (both arcs of the first two), at which the line would solve, found by a scan in steps of
/// 2^(1/2) and bisection; 0 when the scan finds none.
double smallestSeverity(const PlanInput& input, std::size_t failed) {
    double given = 0.0;
    for (const auto& [field, v] : input.lines[failed].values)
        if (field == "dls" || field == "dls1" || field == "dls2") given = std::fmax(given, v);
    if (!(given > 0.0)) return 0.0;
    double below = 0.0;
    for (int j = -kSeverityStepsDown; j <= kSeveritySteps - kSeverityStepsDown; ++j) {
        const double k = given * std::pow(2.0, 0.5 * j);
        if (!solvesWith(input, failed, k)) {
            below = k;
            continue;
        }
        double lo = below, hi = k;
        for (int b = 0; b < kSeverityBisections && below > 0.0; ++b) {
            const double mid = 0.5 * (lo + hi);
            (solvesWith(input, failed, mid) ? hi : lo) = mid;
        }
        return hi;
    }
    return 0.0;
}

}  // namespace

Solution solvePlan(const PlanInput& input) {
    return solveLines(input, true);
}

namespace {

Solution solveLines(const PlanInput& input, bool withHint) {
    Solution out;
    CPlan& p = out.plan;
    // The leading stations of a survey are solved at once by SolveSurvey, exactly as the plan
    // solves them as "Inc Azi MD" lines (the plain turn model), so a survey of any length solves.
    std::size_t surveyed = 0;
    while (!input.horizontalTurn && surveyed < input.lines.size() && input.lines[surveyed].surveyed)
        ++surveyed;
    const std::size_t rest = input.lines.size() - surveyed;
    p.NewData(static_cast<int>(1 + surveyed + kMaxStationsPerLine * rest));
    p.LoadData(0, input.tie);
    p.NewTarget(static_cast<int>(input.targets.size()));
    for (std::size_t i = 0; i < input.targets.size(); ++i)
        p.LoadTarget(static_cast<int>(i), input.targets[i]);
    p.SetVS(input.vsAzimuth, input.vsNorth, input.vsEast);
    p.m_bHorizontalTurn = input.horizontalTurn;
    p.m_nPrev = 0;

    std::vector<int> owner{-1};  // plan line of each solved station
    if (surveyed > 0) {
        std::vector<double> md, inc, azi;
        for (std::size_t k = 0; k < surveyed; ++k) {
            md.push_back(input.lines[k].value("md"));
            inc.push_back(input.lines[k].value("inc"));
            azi.push_back(input.lines[k].value("azi"));
        }
        std::vector<SStation> stations(surveyed);
        const int error = CPlan::SolveSurvey(input.tie, surveyed, md.data(), inc.data(), azi.data(),
                                             stations.data());
        std::size_t good = 0;
        while (good < surveyed && stations[good].method != 0) ++good;
        for (std::size_t i = 0; i < good; ++i) {
            p.LoadData(static_cast<int>(i) + 1, stations[i]);
            owner.push_back(static_cast<int>(i));
        }
        if (error != 0) {
            p.m_nError = error;
            p.m_nFirst = p.m_nLast = static_cast<int>(good) + 1;
            out.error = error;
            out.message = narrow(p.ErrorMessage());
            out.failedLine = static_cast<int>(good);
        }
    }
    for (std::size_t k = surveyed; out.error == 0 && k < input.lines.size(); ++k) {
        putLine(p, input, input.lines[k]);
        if (p.m_nError != 0) {
            out.error = p.m_nError;
            out.message = narrow(p.ErrorMessage());
            out.failedLine = static_cast<int>(k);
            const short code = input.lines[k].method->code;
            const bool noPath =
                (p.m_nError == -1 && (code == 2910 || code == 1950 || code == 1960)) ||
                (p.m_nError == -2 && code == 1970);
            if (withHint && noPath) {
                const double least = smallestSeverity(input, k);
                char buf[160];
                if (least > 0.0) {
                    std::snprintf(buf, sizeof buf,
                                  " (the smallest dogleg severity that solves it, on %s: %.2f %s)",
                                  code == 2910 || code == 1950 ? "both arcs" : "the given arc",
                                  std::ceil(input.units.rateOut(least) * 100.0) / 100.0,
                                  input.units.rate());
                    out.message += buf;
                }
            }
            break;
        }
        // A line to a vertical depth must end there: a constant-toolface curve that turns away
        // from the depth is committed by the library where it stopped, without an error.
        const LineInput& line = input.lines[k];
        if (std::string(line.method->inputs).find("tvd|target") != std::string::npos) {
            double want = line.value("tvd");
            for (const STarget& t : input.targets)
                if (!line.target.empty() && narrow(t.name) == line.target) want = t.tvd;
            SStation start, end;
            p.DumpData(static_cast<int>(owner.size()) - 1, start);
            p.DumpData(static_cast<int>(p.GetSize()) - 1, end);
            // The library reads a depth 1000 or more above the start as an increment.
            const bool reached = std::fabs(end.tvd - want) <= kDepthReached ||
                                 std::fabs(end.tvd - (start.tvd + want)) <= kDepthReached;
            if (!reached) {
                char buf[160];
                std::snprintf(buf, sizeof buf,
                              ": Vertical depth %.2f not reached (the line ends at %.2f)", want,
                              end.tvd);
                out.error = kDepthNotReached;
                out.message = "Line " + std::to_string(owner.size() + 1) + buf;
                out.failedLine = static_cast<int>(k);
                break;
            }
        }
        owner.resize(p.GetSize(), static_cast<int>(k));
    }

    const std::size_t solved = owner.size();
    if (input.vsFromClosure) {
        // The section along the closure of the last solved station, from the tie-on's origin.
        SStation last;
        p.DumpData(static_cast<int>(solved) - 1, last);
        double azi = std::atan2(last.ew, last.ns);
        if (azi < 0.0) azi += 2.0 * kPi;
        p.SetVS(azi, 0.0, 0.0);
    }
    for (std::size_t i = 0; i < solved; ++i) {
        SolvedStation st;
        p.DumpData(static_cast<int>(i), st.s);
        st.planLine = owner[i];
        st.lineStart = i == 0 || owner[i] != owner[i - 1];
        if (st.planLine < 0) {
            st.family = 10;
            st.method = narrow(CPlan::GetNameFromMethod(2));
        } else {
            const MethodSpec& m = *input.lines[static_cast<std::size_t>(st.planLine)].method;
            st.family = m.family;
            st.method = m.name();
        }
        out.stations.push_back(st);
    }
    return out;
}

}  // namespace

}  // namespace orrin_tool
