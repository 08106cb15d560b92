// orrin: describe a well plan in a file, solve it, read the result, look at it.
//
//   orrin solve FILE [--csv | --json] [-o OUT]   the solved plan
//   orrin at FILE --md X ... | --step N          points along the solved plan
//   orrin plot FILE -o plan.svg                  vertical section and plan view
//   orrin walk FILE                              bit-walk aim-off
//   orrin methods                                every method and its inputs
//
// Exit codes: 0 done; 1 the library could not solve the plan (its message on standard error, the
// last good solution still shown); 2 bad input or usage (one message naming file, place and field).
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "Common.h"
#include "Methods.h"
#include "PlanFile.h"
#include "Plot.h"
#include "Report.h"
#include "Solve.h"

using namespace orrin_tool;

namespace {

constexpr int kSolveFailed = 1;
constexpr int kBadInput = 2;

/// Where a failing line sits, as the library says it and as the file names it.
void reportFailure(const PlanInput& in, const Solution& sol) {
    std::string where;
    if (sol.failedLine >= 0)
        where = " [" + in.lines[static_cast<std::size_t>(sol.failedLine)].where + "]";
    std::cerr << "orrin: " << in.file << ": " << sol.message << where << "\n";
}

std::vector<Row> stationRows(const Solution& sol) {
    std::vector<Row> rows;
    int part = 0;
    for (std::size_t i = 0; i < sol.stations.size(); ++i) {
        const SolvedStation& st = sol.stations[i];
        part = st.lineStart ? 1 : part + 1;
        Row r;
        r.line = static_cast<int>(i) + 1;
        r.method = st.method;
        r.part = part;
        r.s = st.s;
        r.vs = sol.plan.GetVS(st.s.ns, st.s.ew);
        rows.push_back(r);
    }
    return rows;
}

std::string errorJson(const PlanInput& in, const Solution& sol) {
    if (sol.error == 0) return "\"error\": null";
    const std::string code = sol.error <= kDepthNotReached ? "null" : std::to_string(sol.error);
    return "\"error\": {\"code\": " + code + ", \"message\": " + jsonString(sol.message) +
           ", \"plan_line\": " +
           jsonString(in.lines[static_cast<std::size_t>(sol.failedLine)].where) + "}";
}

/// Prints (or writes atomically to `out`) the whole text at once.
void emit(const std::string& text, const std::string& out) {
    if (out.empty()) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
    } else {
        writeAtomically(out, text);
    }
}

Format formatOf(bool csv, bool json) {
    return json ? Format::Json : csv ? Format::Csv : Format::Table;
}

std::string header(const PlanInput& in, const Solution& sol) {
    char buf[256];
    std::snprintf(buf, sizeof buf,
                  "%s: %zu lines, units %s, rates %s, vertical section at %.2f deg\n",
                  in.title.c_str(), in.lines.size(), in.units.length(), in.units.rate(),
                  sol.plan.m_dVSAzi / kDegree);
    std::string text = buf;
    text += sol.error == 0 ? "Solved.\n\n" : "Not solved: " + sol.message + "\n\n";
    return text;
}

int runSolve(const PlanInput& in, Format format, const std::string& out) {
    Solution sol = solvePlan(in);
    std::string text = format == Format::Table ? header(in, sol) : "";
    text += formatRows(stationRows(sol), in.units, format, true, errorJson(in, sol));
    emit(text, out);
    if (sol.error == 0) return 0;
    reportFailure(in, sol);
    return kSolveFailed;
}

struct AtOptions {
    std::vector<double> md, tvd, inc, azi, north, east;
    double step = 0.0;
    std::string by = "md";
};

int runAt(const PlanInput& in, const AtOptions& o, Format format, const std::string& out) {
    Solution sol = solvePlan(in);
    if (sol.error != 0) {
        reportFailure(in, sol);
        return kSolveFailed;
    }
    CPlan& p = sol.plan;
    struct Ask {
        int quantity;
        double value;  // library units
        std::string what;
    };
    std::vector<Ask> asks;
    auto add = [&asks](int q, const std::vector<double>& vs, double scale, const char* name) {
        for (double v : vs) {
            char buf[64];
            std::snprintf(buf, sizeof buf, "%s %g", name, v);
            asks.push_back({q, v * scale, buf});
        }
    };
    add(CPlan::PLAN_MD, o.md, 1.0, "md");
    add(CPlan::PLAN_TVD, o.tvd, 1.0, "tvd");
    add(CPlan::PLAN_INC, o.inc, kDegree, "inc");
    add(CPlan::PLAN_AZI, o.azi, kDegree, "azi");
    add(CPlan::PLAN_NORTH, o.north, 1.0, "north");
    add(CPlan::PLAN_EAST, o.east, 1.0, "east");
    if (o.step > 0.0) {
        const bool byTvd = o.by == "tvd";
        double lo = byTvd ? sol.stations.front().s.tvd : sol.stations.front().s.md, hi = lo;
        for (const SolvedStation& st : sol.stations) hi = std::max(hi, byTvd ? st.s.tvd : st.s.md);
        std::vector<double> list;
        for (double v = std::ceil(lo / o.step - 1e-9) * o.step; v < hi - 1e-9; v += o.step)
            list.push_back(v);
        list.push_back(hi);
        add(byTvd ? CPlan::PLAN_TVD : CPlan::PLAN_MD, list, 1.0, byTvd ? "tvd" : "md");
    }
    if (asks.empty())
        throw InputError("at: give --md, --tvd, --inc, --azi, --north, --east or --step");

    std::vector<Row> rows;
    std::vector<std::string> missed;
    for (const Ask& a : asks) {
        if (!p.PlanPointAt(a.quantity, a.value)) {
            missed.push_back(a.what);
            continue;
        }
        Row r;
        r.s = p.m_stnA;
        r.s.target.clear();
        r.vs = p.GetVS(r.s.ns, r.s.ew);
        // The line holding the point: the first station at or below its depth.
        r.line = static_cast<int>(sol.stations.size());
        r.method = sol.stations.back().method;
        for (std::size_t i = r.s.md > sol.stations[0].s.md + 1e-9 ? 1 : 0; i < sol.stations.size();
             ++i) {
            if (sol.stations[i].s.md >= r.s.md - 1e-9) {
                r.line = static_cast<int>(i) + 1;
                r.method = sol.stations[i].method;
                break;
            }
        }
        rows.push_back(r);
    }
    emit(formatRows(rows, in.units, format, false), out);
    for (const std::string& m : missed)
        std::cerr << "orrin: " << in.file << ": no point of the plan has " << m << "\n";
    return missed.empty() ? 0 : kSolveFailed;
}

int runPlot(const PlanInput& in, const std::string& out) {
    Solution sol = solvePlan(in);
    writeAtomically(out, plotSvg(in, sol));
    std::cout << "wrote " << out << "\n";
    if (sol.error == 0) return 0;
    reportFailure(in, sol);
    return kSolveFailed;
}

int runWalk(const PlanInput& in, Format format, const std::string& out) {
    if (in.walk.empty()) throw InputError(in.file + ": field \"walk\": the plan has no walk table");
    Solution sol = solvePlan(in);
    if (sol.error != 0) {
        reportFailure(in, sol);
        return kSolveFailed;
    }
    CPlan& p = sol.plan;
    p.SetWalkTable(in.walk);
    p.CalcWalk();
    if (p.m_nError != 0) {
        std::cerr << "orrin: " << in.file << ": walk: " << narrow(p.ErrorMessage()) << "\n";
        return kSolveFailed;
    }
    // The aim the plan was last solved with is the walk line's position in the saved plan.
    const SStation aim = p.m_saved[static_cast<std::size_t>(p.m_nWalkLine)];
    const double realN = p.m_dWalkTargetNS, realE = p.m_dWalkTargetEW, realV = p.m_dWalkTargetTVD;
    std::vector<Row> rows;
    double endN = 0, endE = 0, endV = 0;
    for (unsigned i = 0; i < p.GetSize(); ++i) {
        Row r;
        p.DumpData(static_cast<int>(i), r.s);
        r.line = static_cast<int>(i) + 1;
        r.method = narrow(CPlan::GetNameFromMethod(r.s.method));
        r.vs = p.GetVS(r.s.ns, r.s.ew);
        if (narrow(r.s.target) == narrow(p.m_strWalkTarget))
            endN = r.s.ns, endE = r.s.ew, endV = r.s.tvd;
        rows.push_back(r);
    }
    const double miss =
        std::sqrt((endN - realN) * (endN - realN) + (endE - realE) * (endE - realE) +
                  (endV - realV) * (endV - realV));
    const std::string name = narrow(p.m_strWalkTarget);
    if (format == Format::Json) {
        const std::string extra =
            "\"walk_target\": {\"name\": " + jsonString(name) + ", \"tvd\": " + exact(realV) +
            ", \"north\": " + exact(realN) + ", \"east\": " + exact(realE) +
            "},\n  \"aim\": {\"tvd\": " + exact(aim.tvd) + ", \"north\": " + exact(aim.ns) +
            ", \"east\": " + exact(aim.ew) + "},\n  \"miss\": " + exact(miss);
        emit(formatRows(rows, in.units, format, true, extra), out);
        return 0;
    }
    std::string text;
    if (format == Format::Table) {
        char buf[512];
        const char* L = in.units.length();
        std::snprintf(buf, sizeof buf,
                      "Walk target %s:  TVD %.2f  North %.2f  East %.2f %s\n"
                      "Aim the plan at:  TVD %.2f  North %.2f  East %.2f %s\n"
                      "Aim-off:          TVD %+.2f  North %+.2f  East %+.2f %s\n"
                      "The walked well ends %.2f %s from the target.\n\nWalked well:\n",
                      name.c_str(), realV, realN, realE, L, aim.tvd, aim.ns, aim.ew, L,
                      aim.tvd - realV, aim.ns - realN, aim.ew - realE, L, miss, L);
        text = buf;
    }
    text += formatRows(rows, in.units, format, true);
    emit(text, out);
    return 0;
}

std::string methodsText() {
    std::string text;
    int family = -1;
    for (const MethodSpec& m : methodTable()) {
        if (m.family != family) {
            family = m.family;
            text += std::string(text.empty() ? "" : "\n") + familyLabel(family) + "\n";
        }
        std::string name = m.name();
        if (*m.variant) name += " (variant " + std::string(m.variant) + ")";
        std::string inputs;
        for (const std::string& f : m.inputList()) inputs += (inputs.empty() ? "" : " ") + f;
        char buf[512];
        std::snprintf(buf, sizeof buf, "  %-26s %s\n  %-26s %s\n", name.c_str(), inputs.c_str(), "",
                      m.about);
        text += buf;
    }
    text +=
        "\nInputs: md tvd tvd1 tvd2 kickoff tangent final_hold in the plan's length unit; inc azi "
        "tf\n"
        "hold_inc final_inc in degrees; dls dls1 dls2 build turn build_dls drop_dls per 100 ft or "
        "per\n"
        "30 m; target a target's name; solve the two profile parameters to solve for; a|b takes "
        "one\n"
        "of the two.\n";
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    InitOrrinDLL();
    CLI::App app{"orrin: plan a well from a plan file, solve it, read it, plot it"};
    app.require_subcommand(1);
    std::string file, out, units;
    bool csv = false, json = false;
    AtOptions at;

    auto common = [&](CLI::App* cmd, bool formats) {
        cmd->add_option("FILE", file, "plan file (.json) or survey (.csv)")->required();
        cmd->add_option("--units", units, "length unit of a survey CSV")
            ->check(CLI::IsMember({"ft", "m"}));
        if (formats) {
            auto* c = cmd->add_flag("--csv", csv, "CSV output");
            auto* j = cmd->add_flag("--json", json, "JSON output");
            c->excludes(j);
            cmd->add_option("-o,--output", out, "write to this file instead of standard output");
        }
    };
    CLI::App* solve = app.add_subcommand("solve", "the solved plan as a table, CSV or JSON");
    common(solve, true);
    CLI::App* atCmd = app.add_subcommand("at", "points along the solved plan");
    common(atCmd, true);
    atCmd->add_option("--md", at.md, "measured depths");
    atCmd->add_option("--tvd", at.tvd, "vertical depths");
    atCmd->add_option("--inc", at.inc, "inclinations [deg]");
    atCmd->add_option("--azi", at.azi, "azimuths [deg]");
    atCmd->add_option("--north", at.north, "north coordinates");
    atCmd->add_option("--east", at.east, "east coordinates");
    atCmd->add_option("--step", at.step, "a listing every N length units")
        ->check(CLI::PositiveNumber);
    atCmd->add_option("--by", at.by, "what --step steps in")->check(CLI::IsMember({"md", "tvd"}));
    CLI::App* plot = app.add_subcommand("plot", "vertical section and plan view as SVG");
    common(plot, false);
    plot->add_option("-o,--output", out, "the SVG file to write")->required();
    CLI::App* walk = app.add_subcommand("walk", "the bit-walk aim-off of a plan with a walk table");
    common(walk, true);
    CLI::App* methods = app.add_subcommand("methods", "every method and the inputs it takes");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::cerr << "orrin: " << e.what() << "\n";
        return kBadInput;
    }

    try {
        if (methods->parsed()) {
            std::cout << methodsText();
            return 0;
        }
        std::optional<bool> metres;
        if (!units.empty()) metres = units == "m";
        const PlanInput in = readPlan(file, metres);
        const Format format = formatOf(csv, json);
        if (solve->parsed()) return runSolve(in, format, out);
        if (atCmd->parsed()) return runAt(in, at, format, out);
        if (plot->parsed()) return runPlot(in, out);
        if (walk->parsed()) return runWalk(in, format, out);
    } catch (const InputError& e) {
        std::cerr << "orrin: " << e.what() << "\n";
        return kBadInput;
    } catch (const std::exception& e) {
        std::cerr << "orrin: " << e.what() << "\n";
        return kBadInput;
    }
    return kBadInput;
}
