// The orrin tool as a user runs it: on the bundled examples, checked against geometry and against
// the library's own solution, and on every kind of bad input.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "plan/CPlan.h"

using nlohmann::json;

namespace {

constexpr double kDeg = 3.141592653589793 / 180.0;
constexpr double kPos = 1e-6;       ///< positions the tool prints against the library's [L]
constexpr double kOnTarget = 1e-4;  ///< solved positions against targets (930 iterates to 1e-4) [L]
constexpr double kAngle = 1e-6;     ///< printed angles [deg]
constexpr double kWalkClosure = 1.0;  ///< the bit walk aims until it misses by less than this [L]

const std::string kExamples = ORRIN_EXAMPLES "/";  ///< the bundled example plans and survey
using Rows = std::vector<std::vector<double>>;     ///< survey rows: md [L], inc [deg], azi [deg]

struct Result {
    int code;
    std::string out, err;
};

std::string scratchDir() {
    static char tmpl[] = "/tmp/orrin-cli-XXXXXX";
    static const std::string dir = mkdtemp(tmpl);
    return dir;
}

std::string slurp(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

Result runOrrin(const std::string& args) {
    const std::string errFile = scratchDir() + "/stderr.txt";
    FILE* pipe = popen((ORRIN_BIN " " + args + " 2>" + errFile).c_str(), "r");
    std::string out;
    char buf[4096];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, pipe)) > 0;) out.append(buf, n);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out, slurp(errFile)};
}

std::string write(const std::string& name, const std::string& text) {
    const std::string path = scratchDir() + "/" + name;
    std::ofstream(path) << text;
    return path;
}

/// A survey file: the header, then the rows written exactly, each with `extra` appended.
std::string csvText(const std::string& header, char sep, const Rows& rows, const char* extra = "") {
    std::ostringstream text;
    text.precision(17);
    text << header << "\n";
    for (const auto& r : rows) text << r[0] << sep << r[1] << sep << r[2] << extra << "\n";
    return text.str();
}

/// The target (by "name") or line (by "target") of `list` named `name`; null when there is none.
json named(const json& list, const json& name) {
    for (const json& t : list)
        if (t.value("name", "") == name || t.value("target", "") == name) return t;
    return json();
}

/// What keeps `xml` from being well-formed ("" when nothing does): every tag closed in order,
/// attributes quoted, one root. Checked by hand, so that no XML tool is needed.
std::string xmlFault(const std::string& xml) {
    std::vector<std::string> open;
    int roots = 0;
    for (std::size_t i = xml.find('<'); i != std::string::npos; i = xml.find('<', i + 1)) {
        const std::size_t end = xml.find('>', i);
        if (end == std::string::npos) return "unclosed tag";
        const std::string tag = xml.substr(i + 1, end - i - 1);
        if (tag[0] == '?' || tag[0] == '!') continue;
        if (std::count(tag.begin(), tag.end(), '"') % 2) return "quote in <" + tag;
        if (tag[0] == '/' && (open.empty() || open.back() != tag.substr(1))) return "stray <" + tag;
        if (tag[0] == '/') {
            open.pop_back();
        } else {
            roots += open.empty();
            if (tag.back() != '/') open.push_back(tag.substr(0, tag.find_first_of(" \n/")));
        }
    }
    if (!open.empty()) return "<" + open.back() + "> not closed";
    return roots == 1 ? "" : "not one root element";
}

}  // namespace

// Each example solves, and every station that names a target lies on it in the coordinates its
// method aims at: t the depth, n north and east, s the vertical section, h the heading over the
// target, d the target's arrival direction, l the horizontal line through the target at the line's
// landing azimuth; the whole point (tn) for every other method.
TEST(CliExamples, TargetedStationsLieOnTheirTargets) {
    const std::map<std::string, std::string> aims = {
        {"Straight TVD", "t"}, {"Inc Azi TVD", "t"},  {"DT2 TVD", "t"},     {"CT2 TVD", "t"},
        {"BT2 TVD", "t"},      {"StraightVSEC", "s"}, {"DT6 MDNSEW", "n"},  {"Online Inc", "h"},
        {"BT6 MDNSEW", "n"},   {"BT8 OL Inc", "n"},   {"HZ Landing", "tl"},
    };
    int checked = 0;
    for (const char* name : {"slant.json", "s-shape.json", "lines.json", "targets.json",
                             "backward.json", "buildturn.json", "align.json"}) {
        SCOPED_TRACE(name);
        const Result r = runOrrin("solve --json " + kExamples + name);
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_TRUE(r.err.empty());
        const json plan = json::parse(slurp(kExamples + name));
        const double vsAzi = plan.contains("vertical_section")
                                 ? plan["vertical_section"]["azimuth"].get<double>() * kDeg
                                 : std::nan("");
        const json out = json::parse(r.out);
        for (const json& s : out["stations"]) {
            if (!s.contains("target")) continue;
            const json target = named(plan["targets"], s["target"]);
            ASSERT_FALSE(target.is_null());
            const std::string method = s["method"];
            SCOPED_TRACE(method + " to " + target["name"].get<std::string>());
            std::string aim = aims.count(method) ? aims.at(method) : "tn";
            if (method.rfind("BACK", 0) == 0 || method.rfind("OPT AL", 0) == 0) aim += "d";
            const auto has = [&aim](char c) { return aim.find(c) != std::string::npos; };
            const double n = target["north"], e = target["east"];
            const double dn = n - s["north"].get<double>(), de = e - s["east"].get<double>();
            if (has('t')) {
                EXPECT_NEAR(s["tvd"].get<double>(), target["tvd"], kOnTarget);
            }
            if (has('n')) {
                EXPECT_NEAR(std::hypot(dn, de), 0.0, kOnTarget);
            }
            if (has('s')) {
                EXPECT_NEAR(s["vs"].get<double>(), n * std::cos(vsAzi) + e * std::sin(vsAzi),
                            kOnTarget);
            }
            if (has('h')) {
                const double azi = std::atan2(de, dn) / kDeg;
                EXPECT_NEAR(std::remainder(s["azi"].get<double>() - azi, 360.0), 0.0, 1e-3);
            }
            if (has('d')) {
                EXPECT_NEAR(s["inc"].get<double>(), target["inc"], kAngle);
                EXPECT_NEAR(s["azi"].get<double>(), target["azi"], kAngle);
            }
            if (has('l')) {
                const double azi = named(plan["lines"], s["target"])["azi"].get<double>() * kDeg;
                EXPECT_NEAR(dn * std::sin(azi) - de * std::cos(azi), 0.0, kOnTarget);
                EXPECT_NEAR(s["inc"].get<double>(), 90.0, kAngle);
                EXPECT_NEAR(s["azi"].get<double>(), azi / kDeg, kAngle);
            }
            ++checked;
        }
    }
    EXPECT_EQ(checked, 24);  // 1 + 2 + 3 + 5 + 2 + 7 + 4 targets met in the seven plans
}

// A survey CSV solved by the tool gives the positions the library's own survey routine gives for
// the same stations, for the bundled survey and one longer than a plan can hold (1000 lines); other
// spellings of the header give the same well.
TEST(CliSurvey, CsvReproducesTheLibrary) {
    std::istringstream in(slurp(kExamples + "survey.csv"));
    std::string line;
    std::getline(in, line);
    Rows rows, longRows;
    for (char sep; std::getline(in, line);) {
        rows.emplace_back(3);
        std::istringstream(line) >> rows.back()[0] >> sep >> rows.back()[1] >> sep >>
            rows.back()[2];
    }
    ASSERT_GT(rows.size(), 10u);
    longRows.push_back(rows[0]);  // from the same tie-on
    for (int k = 1; k <= 3000; ++k)
        longRows.push_back(
            {30.0 * k, std::fmin(80.0, 0.05 * k), std::fmod(10.0 + 0.02 * k, 360.0)});

    for (const auto& [file, survey] :
         {std::pair(kExamples + "survey.csv", rows),
          std::pair(write("long.csv", csvText("md,inc,azi", ',', longRows)), longRows)}) {
        SCOPED_TRACE(file);
        std::vector<double> md, inc, azi;
        for (const auto& r : survey)
            md.push_back(r[0]), inc.push_back(r[1] * kDeg), azi.push_back(r[2] * kDeg);
        std::vector<SStation> want(survey.size());
        want[0].md = want[0].tvd = md[0], want[0].inc = inc[0], want[0].azi = azi[0];
        want[0].method = 2;
        ASSERT_EQ(CPlan::SolveSurvey(want[0], md.size() - 1, &md[1], &inc[1], &azi[1], &want[1]),
                  0);
        const Result r = runOrrin("solve --csv " + file);
        ASSERT_EQ(r.code, 0) << r.err;
        std::istringstream out(r.out);
        std::getline(out, line);
        EXPECT_EQ(line, "line,method,part,MD,Inc,Azi,TVD,North,East,VS,DLS,TF,Build,Turn,target");
        std::size_t i = 0;
        for (; std::getline(out, line); ++i) {
            SCOPED_TRACE(line);
            ASSERT_LT(i, want.size());
            std::vector<std::string> c;
            std::istringstream ss(line);
            for (std::string cell; std::getline(ss, cell, ',');) c.push_back(cell);
            ASSERT_GE(c.size(), 9u);
            const SStation& s = want[i];
            EXPECT_EQ(c[1], i == 0 ? "Tie Line" : "Inc Azi MD");
            const double at[] = {s.md, s.inc / kDeg, 0.0, s.tvd, s.ns, s.ew};
            for (int k : {0, 1, 3, 4, 5}) EXPECT_NEAR(std::stod(c[3 + k]), at[k], kPos) << k;
        }
        EXPECT_EQ(i, survey.size());
    }

    const Result r = runOrrin("solve --csv " + kExamples + "survey.csv");
    const std::string last = r.out.substr(r.out.rfind('\n', r.out.size() - 2) + 1);
    for (const std::string& text : {csvText("Depth [ft];Angle;Dir", ';', rows),
                                    csvText("md,inc,azi,comment", ',', rows, ",ok")}) {
        SCOPED_TRACE(text.substr(0, text.find('\n')));
        const Result rv = runOrrin("solve --csv " + write("variant.csv", text));
        ASSERT_EQ(rv.code, 0) << rv.err;
        EXPECT_EQ(rv.out.substr(rv.out.rfind('\n', rv.out.size() - 2) + 1), last);
    }
}

// Every plot is well-formed XML with its targets named; a failing plan is drawn up to its failing
// line, which is marked.
TEST(CliPlot, SvgIsWellFormedAndMarksTheFailingLine) {
    const std::string failing = write("failing.json", R"({"units": "ft",
        "targets": [{"name": "Deep", "tvd": 9000, "north": 10, "east": 10}],
        "lines": [{"method": "Inc Azi MD", "md": 500, "inc": 0, "azi": 0},
                  {"method": "Inc Azi MD", "md": 1400, "inc": 90, "azi": 30},
                  {"method": "Straight TVD", "target": "Deep"}]})");
    struct Case {
        std::string file;
        int code;
        std::vector<std::string> texts;
    } const cases[] = {
        {kExamples + "slant.json", 0, {"T1", "Vertical section", "Plan view", "TVD (ft)"}},
        {kExamples + "s-shape.json", 0, {"Top reservoir", "TVD (m)"}},
        {kExamples + "survey.csv", 0, {"North (ft)"}},
        {failing, 1, {"Line 4 failed: Straight TVD", "Can't project", "Deep"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string svg = scratchDir() + "/plot.svg";
        std::remove(svg.c_str());
        const Result r = runOrrin("plot " + c.file + " -o " + svg);
        EXPECT_EQ(r.code, c.code) << r.err;
        const std::string text = slurp(svg);
        EXPECT_EQ(xmlFault(text), "");
        for (const std::string& t : c.texts) EXPECT_NE(text.find(t), std::string::npos) << t;
    }
}

// A plan the library cannot solve: its own message on standard error with the file's line, exit 1,
// and the last good solution still printed.
TEST(CliSolve, FailingPlanShowsTheLastGoodSolution) {
    struct Case {
        const char *lines, *message, *where;
        std::size_t solved;
    } const cases[] = {
        {R"([{"method": "Inc Azi MD", "md": 500, "inc": 0, "azi": 0},
             {"method": "Inc Azi MD", "md": 1400, "inc": 90, "azi": 30},
             {"method": "Straight TVD", "tvd": 2000}])",
         "Line 4: Can't project to TVD from horizontal", "lines[2] (\"Straight TVD\")", 3},
        {R"([{"method": "Inc Azi MD", "md": 3000, "inc": 60, "azi": 120},
             {"method": "CT2 TVD", "dls": 2, "tf": 30, "tvd": 5400}])",
         "Line 3: Vertical depth 5400.00 not reached", "lines[1] (\"CT2 TVD\")", 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        const std::string file =
            write("fail.json", std::string(R"({"units": "ft", "lines": )") + c.lines + "}");
        const Result table = runOrrin("solve " + file);
        EXPECT_EQ(table.code, 1);
        EXPECT_NE(table.err.find(file + ": " + c.message), std::string::npos) << table.err;
        EXPECT_NE(table.err.find(c.where), std::string::npos) << table.err;
        EXPECT_NE(table.out.find("Not solved: " + std::string(c.message)), std::string::npos);
        const Result js = runOrrin("solve --json " + file);
        EXPECT_EQ(js.code, 1);
        const json out = json::parse(js.out);
        EXPECT_EQ(out["stations"].size(), c.solved);
        EXPECT_NE(out["error"]["message"].get<std::string>().find(c.message), std::string::npos);
        for (const json& s : out["stations"]) EXPECT_TRUE(s["tvd"].is_number());
    }
}

// Bad input: one message on standard error naming the file, the place and the field; exit 2;
// nothing on standard output and no output file. Usage errors are bad input too.
TEST(CliBadInput, OneClearMessageAndExitCode2) {
    const std::string head = R"({"units": "ft", "targets": [{"name": "T1", "tvd": 5000,
        "north": 800, "east": 600}], "lines": [)";
    struct Case {
        std::string text;  // the file: a survey when it starts "MD,", absent when ""
        std::vector<std::string> expected;
    } const cases[] = {
        {R"({"units": "ft", "lines": [)", {"malformed JSON"}},
        {R"({"lines": []})", {"field \"units\": missing"}},
        {head + R"({"method": "Inc Azi MDX"}]})",
         {"lines[0]", "field \"method\"", "unknown method \"Inc Azi MDX\""}},
        {head + R"({"method": "Inc Azi MD", "md": 100, "inc": 3}]})",
         {"lines[0] (\"Inc Azi MD\"): field \"azi\": missing"}},
        {head + R"({"method": "DT6 Curve", "target": "T9"}]})",
         {"lines[0] (\"DT6 Curve\"): field \"target\": unknown target \"T9\"", "T1"}},
        {"MD,Inc,Azi\n0,0,0\n100,x,0\n",
         {"bad.csv:3: column \"Inc\": expected a number, got \"x\""}},
        {"MD,Inc,Azi\n0,0,0\n100,1,0\n90,2,0\n", {"bad.csv:4", "measured depth must increase"}},
        {"", {"absent.json: cannot be read"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected[0]);
        const std::string file = c.text.empty()                ? "absent.json"
                                 : c.text.rfind("MD,", 0) == 0 ? "bad.csv"
                                                               : "bad.json";
        const std::string path = scratchDir() + "/" + file, svg = scratchDir() + "/bad.svg";
        std::remove(path.c_str());
        if (!c.text.empty()) write(file, c.text);
        for (const std::string& cmd : {"solve " + path, "plot " + path + " -o " + svg}) {
            SCOPED_TRACE(cmd);
            const Result r = runOrrin(cmd);
            EXPECT_EQ(r.code, 2);
            EXPECT_TRUE(r.out.empty()) << r.out;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
            for (const std::string& e : c.expected)
                EXPECT_NE(r.err.find(e), std::string::npos)
                    << "wanted: " << e << "\ngot: " << r.err;
            EXPECT_NE(r.err.find(path), std::string::npos) << r.err;
            EXPECT_FALSE(std::ifstream(svg).good());
        }
    }
    for (const char* args :
         {"", "solve x.json --frobnicate", "walk " ORRIN_EXAMPLES "/survey.csv"}) {
        SCOPED_TRACE(args);
        const Result r = runOrrin(args);
        EXPECT_EQ(r.code, 2);
        EXPECT_FALSE(r.err.empty());
    }
}

// Points along the plan: at a station's own depth the station comes back; an inclination is found
// where the plan has it; a depth above the tie-on is not on the plan.
TEST(CliAt, PointsAlongThePlan) {
    const json solved = json::parse(runOrrin("solve --json " + kExamples + "slant.json").out);
    const json& station = solved["stations"][2];
    const Result r = runOrrin("at --json " + kExamples + "slant.json --md " +
                              std::to_string(station["md"].get<double>()) + " --inc 10");
    ASSERT_EQ(r.code, 0) << r.err;
    const json at = json::parse(r.out);
    ASSERT_EQ(at["stations"].size(), 2u);
    for (const char* key : {"tvd", "north", "east", "inc"})
        EXPECT_NEAR(at["stations"][0][key].get<double>(), station[key].get<double>(), 1e-4) << key;
    EXPECT_NEAR(at["stations"][1]["inc"].get<double>(), 10.0, kAngle);

    const Result above = runOrrin("at " + kExamples + "lines.json --md 100");
    EXPECT_EQ(above.code, 1);
    EXPECT_NE(above.err.find("no point of the plan has md 100"), std::string::npos);
}

// The bit walk: the walked well ends within the walk's closure of the real target, and the aim-off
// is reported against that target.
TEST(CliWalk, AimOffMeetsTheTarget) {
    const Result r = runOrrin("walk --json " + kExamples + "slant.json");
    ASSERT_EQ(r.code, 0) << r.err;
    const json out = json::parse(r.out);
    const json target = json::parse(slurp(kExamples + "slant.json"))["targets"][0];
    const auto miss = [&target](const json& p, const char* k) {
        return p[k].get<double>() - target[k].get<double>();
    };
    EXPECT_EQ(out["walk_target"]["name"], target["name"]);
    EXPECT_LT(out["miss"].get<double>(), kWalkClosure);
    int ends = 0;
    for (const json& s : out["stations"]) {
        if (!s.contains("target")) continue;
        ++ends;
        EXPECT_LT(std::hypot(miss(s, "north"), miss(s, "east"), miss(s, "tvd")), kWalkClosure);
    }
    EXPECT_EQ(ends, 1);
    // The walk table of the example does move the aim.
    EXPECT_GT(std::hypot(miss(out["aim"], "north"), miss(out["aim"], "east")), kWalkClosure);
}

// A line of two given severities that has no path names the smallest common severity that solves
// it, and that one does.
TEST(CliAlign, NoPathNamesTheSmallestSeverity) {
    auto plan = [](double dls) {
        return R"({"units": "ft", "tie_on": {"md": 6000, "inc": 75, "azi": 15, "tvd": 6000},
            "targets": [{"name": "E", "tvd": 6100, "north": 200, "east": 150, "inc": 85,
            "azi": 90}], "lines": [{"method": "OPT AL DLS", "target": "E", "dls1": )" +
               std::to_string(dls) + R"(, "dls2": )" + std::to_string(dls) + "}]}";
    };
    const Result fail = runOrrin("solve " + write("gentle.json", plan(2.0)));
    EXPECT_EQ(fail.code, 1);
    const std::string key = "on both arcs: ";
    const auto at = fail.err.find(key);
    ASSERT_NE(at, std::string::npos) << fail.err;
    const double least = std::stod(fail.err.substr(at + key.size()));
    EXPECT_EQ(runOrrin("solve " + write("least.json", plan(least))).code, 0);
    EXPECT_EQ(runOrrin("solve " + write("less.json", plan(least - 0.05))).code, 1);
}

// `orrin methods` names every method the library names.
TEST(CliMethods, ListsEveryMethodOfTheLibrary) {
    const Result r = runOrrin("methods");
    ASSERT_EQ(r.code, 0);
    for (int code = -60; code < 3000; ++code) {  // every named line and profile but the tie line
        const std::u16string w = CPlan::GetNameFromMethod(code);
        const std::string name(w.begin(), w.end());
        if (name.empty() || code == 0 || code == 2) continue;
        bool listed = false;  // as a whole name: after a space, before a space, comma or line end
        for (std::size_t p = r.out.find(name); p != std::string::npos && !listed;
             p = r.out.find(name, p + 1)) {
            const char after = r.out[p + name.size()];
            listed =
                p > 0 && r.out[p - 1] == ' ' && (after == ' ' || after == ',' || after == '\n');
        }
        EXPECT_TRUE(listed) << name;
    }
}
