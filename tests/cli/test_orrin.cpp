// The orrin tool as a user runs it: on the bundled examples, checked against geometry and against
// the library's own solution, and on every kind of bad input.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
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

struct Result {
    int code;
    std::string out, err;
};

std::string scratchDir() {
    static std::string dir = [] {
        char tmpl[] = "/tmp/orrin-cli-XXXXXX";
        return std::string(mkdtemp(tmpl));
    }();
    return dir;
}

Result runOrrin(const std::string& args) {
    const std::string errFile = scratchDir() + "/stderr.txt";
    const std::string cmd = std::string(ORRIN_BIN) + " " + args + " 2>" + errFile;
    Result r{};
    FILE* pipe = popen(cmd.c_str(), "r");
    char buf[4096];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, pipe)) > 0;) r.out.append(buf, n);
    const int status = pclose(pipe);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream in(errFile);
    std::ostringstream err;
    err << in.rdbuf();
    r.err = err.str();
    return r;
}

std::string example(const std::string& name) {
    return std::string(ORRIN_EXAMPLES) + "/" + name;
}

std::string write(const std::string& name, const std::string& text) {
    const std::string path = scratchDir() + "/" + name;
    std::ofstream(path) << text;
    return path;
}

bool exists(const std::string& path) {
    return std::ifstream(path).good();
}

json readJson(const std::string& path) {
    std::ifstream in(path);
    return json::parse(in);
}

/// Well-formed XML, checked by hand: every tag closed in order, attributes quoted, one root.
bool balancedXml(const std::string& xml, std::string& why) {
    std::vector<std::string> open;
    int roots = 0;
    for (std::size_t i = xml.find('<'); i != std::string::npos; i = xml.find('<', i + 1)) {
        const std::size_t end = xml.find('>', i);
        if (end == std::string::npos) return why = "unclosed tag", false;
        const std::string tag = xml.substr(i + 1, end - i - 1);
        if (tag[0] == '?' || tag[0] == '!') continue;
        if (std::count(tag.begin(), tag.end(), '"') % 2) return why = "quote in <" + tag, false;
        if (tag[0] == '/') {
            if (open.empty() || open.back() != tag.substr(1)) return why = "stray </" + tag, false;
            open.pop_back();
            continue;
        }
        if (open.empty()) ++roots;
        const std::string name = tag.substr(0, tag.find_first_of(" \n/"));
        if (tag.back() != '/') open.push_back(name);
    }
    if (!open.empty()) return why = "<" + open.back() + "> not closed", false;
    return roots == 1 || (why = "not one root element", false);
}

}  // namespace

// Each example solves, and every station that names a target lies on it in the coordinates its
// method aims at: a depth for the lines to a vertical depth, the vertical section for a hold to a
// section, north and east for an arc of given length, the heading over the target for "Online Inc",
// the whole point otherwise.
TEST(CliExamples, TargetedStationsLieOnTheirTargets) {
    struct Aim {
        const char* method;
        bool tvd, northEast, vs, heading;
    } const aims[] = {
        {"Straight TVD", true, false, false, false}, {"Inc Azi TVD", true, false, false, false},
        {"DT2 TVD", true, false, false, false},      {"CT2 TVD", true, false, false, false},
        {"BT2 TVD", true, false, false, false},      {"StraightVSEC", false, false, true, false},
        {"DT6 MDNSEW", false, true, false, false},   {"Online Inc", false, false, false, true},
        {"BT6 MDNSEW", false, true, false, false},   {"BT8 OL Inc", false, true, false, false},
    };
    int checked = 0;
    for (const char* name : {"slant.json", "s-shape.json", "lines.json", "targets.json",
                             "backward.json", "buildturn.json"}) {
        SCOPED_TRACE(name);
        const Result r = runOrrin("solve --json " + example(name));
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_TRUE(r.err.empty());
        const json plan = readJson(example(name));
        const json out = json::parse(r.out);
        const double vsAzi = plan.contains("vertical_section")
                                 ? plan["vertical_section"]["azimuth"].get<double>() * kDeg
                                 : std::nan("");
        for (const json& s : out["stations"]) {
            if (!s.contains("target")) continue;
            json target;
            for (const json& t : plan["targets"])
                if (t["name"] == s["target"]) target = t;
            ASSERT_FALSE(target.is_null());
            const std::string method = s["method"];
            SCOPED_TRACE(method + " to " + target["name"].get<std::string>());
            Aim aim{"", true, true, false, false};
            for (const Aim& a : aims)
                if (method == a.method) aim = a;
            const double n = target["north"], e = target["east"], v = target["tvd"];
            if (aim.tvd) {
                EXPECT_NEAR(s["tvd"].get<double>(), v, kOnTarget);
            }
            if (aim.northEast) {
                EXPECT_NEAR(s["north"].get<double>(), n, kOnTarget);
                EXPECT_NEAR(s["east"].get<double>(), e, kOnTarget);
            }
            if (aim.vs) {
                EXPECT_NEAR(s["vs"].get<double>(), n * std::cos(vsAzi) + e * std::sin(vsAzi),
                            kOnTarget);
            }
            if (target.contains("inc") && method.rfind("BACK", 0) == 0) {
                // A backward line arrives with the target's own direction.
                EXPECT_NEAR(s["inc"].get<double>(), target["inc"].get<double>(), 1e-9);
                EXPECT_NEAR(s["azi"].get<double>(), target["azi"].get<double>(), 1e-9);
            }
            if (aim.heading) {
                const double dn = n - s["north"].get<double>(), de = e - s["east"].get<double>();
                const double azi = std::atan2(de, dn) / kDeg;
                EXPECT_NEAR(std::remainder(s["azi"].get<double>() - azi, 360.0), 0.0, 1e-3);
            }
            ++checked;
        }
    }
    EXPECT_EQ(checked, 20);  // 1 + 2 + 3 + 5 + 2 + 7 targets met in the six plans
}

// The survey CSV, solved by the tool, gives the positions the library gives for the same stations
// put as "Inc Azi MD" lines; other spellings of the header give the same well.
TEST(CliSurvey, CsvReproducesTheLibrary) {
    std::ifstream in(example("survey.csv"));
    std::string line;
    std::getline(in, line);
    std::vector<std::vector<double>> rows;
    while (std::getline(in, line)) {
        std::vector<double> r;
        std::stringstream ss(line);
        for (std::string cell; std::getline(ss, cell, ',');) r.push_back(std::stod(cell));
        rows.push_back(r);
    }
    ASSERT_GT(rows.size(), 10u);
    CPlan p;
    p.NewData(static_cast<int>(rows.size()));
    SStation tie;
    tie.md = tie.tvd = rows[0][0];
    tie.inc = rows[0][1] * kDeg;
    tie.azi = rows[0][2] * kDeg;
    tie.method = 2;
    p.LoadData(0, tie);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        p.m_nFamily = 90;
        p.m_nSubMethod = 1;
        p.m_dMD = rows[i][0];
        p.m_dInc = rows[i][1] * kDeg;
        p.m_dAzi = rows[i][2] * kDeg;
        p.PutData(-1);
        ASSERT_EQ(p.m_nError, 0);
    }

    const Result r = runOrrin("solve --csv " + example("survey.csv"));
    ASSERT_EQ(r.code, 0) << r.err;
    std::stringstream out(r.out);
    std::getline(out, line);
    EXPECT_EQ(line, "line,method,part,MD,Inc,Azi,TVD,North,East,VS,DLS,TF,Build,Turn,target");
    std::size_t i = 0;
    for (; std::getline(out, line); ++i) {
        SCOPED_TRACE(line);
        std::vector<std::string> c;
        std::stringstream ss(line);
        for (std::string cell; std::getline(ss, cell, ',');) c.push_back(cell);
        ASSERT_GE(c.size(), 9u);
        SStation s;
        p.DumpData(static_cast<int>(i), s);
        EXPECT_EQ(c[1], i == 0 ? "Tie Line" : "Inc Azi MD");
        EXPECT_NEAR(std::stod(c[3]), s.md, kPos);
        EXPECT_NEAR(std::stod(c[4]), s.inc / kDeg, kAngle);
        EXPECT_NEAR(std::stod(c[6]), s.tvd, kPos);
        EXPECT_NEAR(std::stod(c[7]), s.ns, kPos);
        EXPECT_NEAR(std::stod(c[8]), s.ew, kPos);
    }
    EXPECT_EQ(i, rows.size());

    // The same survey under other usual headers and separators ends at the same place.
    const std::string last = r.out.substr(r.out.rfind('\n', r.out.size() - 2) + 1);
    struct Variant {
        const char* name;
        const char* header;
        char sep;
    } const variants[] = {
        {"semicolons", "Measured Depth;Incl;Azimuth", ';'},
        {"tabs and units", "Depth [ft]\tAngle\tDir", '\t'},
        {"extra column", "md,inc,azi,comment", ','},
    };
    for (const Variant& v : variants) {
        SCOPED_TRACE(v.name);
        std::string text = std::string(v.header) + "\n";
        for (const auto& row : rows) {
            std::ostringstream ss;
            ss.precision(17);
            ss << row[0] << v.sep << row[1] << v.sep << row[2];
            if (std::string(v.header).find("comment") != std::string::npos) ss << ",ok";
            text += ss.str() + "\n";
        }
        const Result rv = runOrrin("solve --csv " + write("variant.csv", text));
        ASSERT_EQ(rv.code, 0) << rv.err;
        EXPECT_EQ(rv.out.substr(rv.out.rfind('\n', rv.out.size() - 2) + 1), last);
    }
}

// A survey longer than a plan can hold (1000 lines) solves, ending where the library's own survey
// routine ends it.
TEST(CliSurvey, LongSurveysSolve) {
    std::string text = "md,inc,azi\n0,0,0\n";
    std::vector<double> md, inc, azi;
    for (int i = 1; i <= 3000; ++i) {
        md.push_back(30.0 * i);
        inc.push_back(std::fmin(80.0, 0.05 * i));
        azi.push_back(std::fmod(10.0 + 0.02 * i, 360.0));
        text += std::to_string(md.back()) + "," + std::to_string(inc.back()) + "," +
                std::to_string(azi.back()) + "\n";
    }
    for (std::size_t i = 0; i < md.size(); ++i) {
        inc[i] = std::stod(std::to_string(inc[i])) * kDeg;  // as the file holds them
        azi[i] = std::stod(std::to_string(azi[i])) * kDeg;
    }
    std::vector<SStation> out(md.size());
    SStation tie;
    tie.method = 2;
    ASSERT_EQ(CPlan::SolveSurvey(tie, md.size(), md.data(), inc.data(), azi.data(), out.data()), 0);
    const Result r = runOrrin("solve --json " + write("long.csv", text));
    ASSERT_EQ(r.code, 0) << r.err;
    const json last = json::parse(r.out)["stations"].back();
    EXPECT_NEAR(last["tvd"].get<double>(), out.back().tvd, kPos);
    EXPECT_NEAR(last["north"].get<double>(), out.back().ns, kPos);
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
        {example("slant.json"), 0, {"T1", "Vertical section", "Plan view", "TVD (ft)"}},
        {example("s-shape.json"), 0, {"Top reservoir", "TVD (m)"}},
        {example("lines.json"), 0, {"Fault block", "Build/turn"}},
        {example("targets.json"), 0, {">A<", ">E<", "Curve to target"}},
        {example("buildturn.json"), 0, {">A<", ">G<", "Curve to target"}},
        {example("survey.csv"), 0, {"North (ft)"}},
        {failing, 1, {"Line 4 failed: Straight TVD", "Can&apos;t project", "Deep"}},
    };
    const bool haveXmllint = std::system("command -v xmllint >/dev/null 2>&1") == 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string svg = scratchDir() + "/plot.svg";
        std::remove(svg.c_str());
        const Result r = runOrrin("plot " + c.file + " -o " + svg);
        EXPECT_EQ(r.code, c.code) << r.err;
        std::ifstream in(svg);
        std::ostringstream text;
        text << in.rdbuf();
        std::string why;
        EXPECT_TRUE(balancedXml(text.str(), why)) << why;
        if (haveXmllint) {
            EXPECT_EQ(std::system(("xmllint --noout " + svg).c_str()), 0);
        }
        for (const std::string& t : c.texts) {
            const std::string plain = t == "Can&apos;t project" ? "Can't project" : t;
            EXPECT_NE(text.str().find(plain), std::string::npos) << plain;
        }
    }
}

// A plan the library cannot solve: its own message on standard error with the file's line, exit 1,
// and the last good solution still printed.
TEST(CliSolve, FailingPlanShowsTheLastGoodSolution) {
    struct Case {
        const char* name;
        const char* lines;
        const char* message;
        const char* where;
        int solved;
    } const cases[] = {
        {"straight TVD from horizontal",
         R"([{"method": "Inc Azi MD", "md": 500, "inc": 0, "azi": 0},
             {"method": "Inc Azi MD", "md": 1400, "inc": 90, "azi": 30},
             {"method": "Straight TVD", "tvd": 2000}])",
         "Line 4: Can't project to TVD from horizontal", "lines[2] (\"Straight TVD\")", 3},
        {"an inclination out of the arc's reach",
         R"([{"method": "Inc Azi MD", "md": 1000, "inc": 10, "azi": 0},
             {"method": "DLS Inc MD", "dls": 0.5, "inc": 40, "md": 1100}])",
         "Line 3: Unknown Solution problem", "lines[1] (\"DLS Inc MD\")", 2},
        {"a constant-toolface curve that turns away from its depth",
         R"([{"method": "Inc Azi MD", "md": 3000, "inc": 60, "azi": 120},
             {"method": "CT2 TVD", "dls": 2, "tf": 30, "tvd": 5400}])",
         "Line 3: Vertical depth 5400.00 not reached", "lines[1] (\"CT2 TVD\")", 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
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
        EXPECT_EQ(out["stations"].size(), static_cast<std::size_t>(c.solved));
        EXPECT_NE(out["error"]["message"].get<std::string>().find(c.message), std::string::npos);
        for (const json& s : out["stations"]) EXPECT_TRUE(s["tvd"].is_number());
    }
}

// Bad input: one message on standard error naming the file, the place and the field; exit 2;
// nothing on standard output and no output file.
TEST(CliBadInput, OneClearMessageAndExitCode2) {
    const std::string head = R"({"units": "ft", "targets": [{"name": "T1", "tvd": 5000,
        "north": 800, "east": 600}], "lines": [)";
    struct Case {
        const char* name;
        std::string file, text;  // text "" leaves the file as it is (or absent)
        std::vector<std::string> expected;
    } const cases[] = {
        {"malformed JSON", "bad.json", R"({"units": "ft", "lines": [)", {"malformed JSON"}},
        {"not an object", "bad.json", "[1, 2]", {"must be a JSON object"}},
        {"missing units", "bad.json", R"({"lines": []})", {"field \"units\": missing"}},
        {"unknown units", "bad.json", R"({"units": "yd"})", {"field \"units\"", "\"yd\""}},
        {"unknown top-level field",
         "bad.json",
         R"({"units": "ft", "line": []})",
         {"field \"line\": unknown field"}},
        {"unknown method",
         "bad.json",
         head + R"({"method": "Inc Azi MDX"}]})",
         {"lines[0]", "field \"method\"", "unknown method \"Inc Azi MDX\""}},
        {"backward line to a target without arrival angles",
         "bad.json",
         head + R"({"method": "BACK to CL", "target": "T1", "dls": 3, "tf": 0, "md": 500}]})",
         {"lines[0]", "field \"target\"", "arrival"}},
        {"unknown variant",
         "bad.json",
         head + R"({"method": "DLS Inc MD", "variant": "up", "dls": 2, "inc": 3, "md": 9}]})",
         {"field \"variant\"", "right, left"}},
        {"missing field",
         "bad.json",
         head + R"({"method": "Inc Azi MD", "md": 100, "inc": 3}]})",
         {"lines[0] (\"Inc Azi MD\"): field \"azi\": missing"}},
        {"non-numeric field",
         "bad.json",
         head + R"({"method": "Straight MD", "md": 100}, {"method": "DT5 CH Tang",
             "target": "T1", "dls": "fast"}]})",
         {"lines[1] (\"DT5 CH Tang\"): field \"dls\": expected a number, got \"fast\""}},
        {"field the method does not take",
         "bad.json",
         head + R"({"method": "Straight MD", "md": 100, "dsl": 3}]})",
         {"field \"dsl\": not an input of \"Straight MD\""}},
        {"unknown target",
         "bad.json",
         head + R"({"method": "DT6 Curve", "target": "T9"}]})",
         {"lines[0] (\"DT6 Curve\"): field \"target\": unknown target \"T9\"", "T1"}},
        {"depth or target, both given",
         "bad.json",
         head + R"({"method": "Straight TVD", "tvd": 10, "target": "T1"}]})",
         {"field \"target\"", "not both"}},
        {"profile unknown solved for",
         "bad.json",
         head + R"({"method": "Slant", "target": "T1", "solve": ["hold_inc", "final_hold"],
             "build_dls": 2}]})",
         {"field \"solve\"", "\"final_hold\" is not a parameter of \"Slant\""}},
        {"target without a name",
         "bad.json",
         R"({"units": "ft", "targets": [{"tvd": 1,
             "north": 2, "east": 3}]})",
         {"targets[0]: field \"name\": missing"}},
        {"walk entry without a rate",
         "bad.json",
         R"({"units": "ft", "walk": [{"tvd": 1}]})",
         {"walk[0]: field \"rate\": missing"}},
        {"survey with a word for a number",
         "bad.csv",
         "MD,Inc,Azi\n0,0,0\n100,x,0\n",
         {"bad.csv:3: column \"Inc\": expected a number, got \"x\""}},
        {"survey without an azimuth column",
         "bad.csv",
         "MD,Inc,Grid\n0,0,0\n",
         {"bad.csv:1: header: no column of azimuth"}},
        {"survey going back up",
         "bad.csv",
         "MD,Inc,Azi\n0,0,0\n100,1,0\n90,2,0\n",
         {"bad.csv:4", "measured depth must increase"}},
        {"missing file", "absent.json", "", {"absent.json: cannot be read"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = scratchDir() + "/" + c.file;
        std::remove(path.c_str());
        if (!c.text.empty()) write(c.file, c.text);
        const std::string svg = scratchDir() + "/bad.svg";
        for (const std::string& cmd : {"solve " + path, "plot " + path + " -o " + svg}) {
            SCOPED_TRACE(cmd);
            const Result r = runOrrin(cmd);
            EXPECT_EQ(r.code, 2);
            EXPECT_TRUE(r.out.empty()) << r.out;
            EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
            EXPECT_NE(r.err.find(path), std::string::npos) << r.err;
            for (const std::string& e : c.expected)
                EXPECT_NE(r.err.find(e), std::string::npos)
                    << "wanted: " << e << "\ngot: " << r.err;
            EXPECT_FALSE(exists(svg));
        }
    }
    // Usage errors are bad input too.
    for (const char* args : {"", "solve", "solve x.json --frobnicate", "at x.json --md ten",
                             "plot x.json", "walk " ORRIN_EXAMPLES "/survey.csv"}) {
        SCOPED_TRACE(args);
        const Result r = runOrrin(args);
        EXPECT_EQ(r.code, 2);
        EXPECT_FALSE(r.err.empty());
    }
}

// Points along the plan: at a station's own depth the station comes back; a listing every N units
// runs from the tie-on to the end; an inclination is found where the plan has it; a depth above the
// tie-on is not on the plan.
TEST(CliAt, PointsAlongThePlan) {
    const json solved = json::parse(runOrrin("solve --json " + example("slant.json")).out);
    const json& station = solved["stations"][2];
    const Result r = runOrrin("at --json " + example("slant.json") + " --md " +
                              std::to_string(station["md"].get<double>()) + " --inc 10");
    ASSERT_EQ(r.code, 0) << r.err;
    const json at = json::parse(r.out);
    ASSERT_EQ(at["stations"].size(), 2u);
    for (const char* key : {"tvd", "north", "east", "inc"})
        EXPECT_NEAR(at["stations"][0][key].get<double>(), station[key].get<double>(), 1e-4) << key;
    EXPECT_NEAR(at["stations"][1]["inc"].get<double>(), 10.0, 1e-6);

    const Result list = runOrrin("at --csv " + example("slant.json") + " --step 1000");
    ASSERT_EQ(list.code, 0);
    const double td = solved["stations"].back()["md"];
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'),
              1 + static_cast<long>(std::ceil(td / 1000.0)) + 1 - (std::fmod(td, 1000.0) == 0));

    const Result above = runOrrin("at " + example("lines.json") + " --md 100");
    EXPECT_EQ(above.code, 1);
    EXPECT_NE(above.err.find("no point of the plan has md 100"), std::string::npos);
}

// The bit walk: the walked well ends within the walk's closure of the real target, and the aim-off
// is reported against that target.
TEST(CliWalk, AimOffMeetsTheTarget) {
    const Result r = runOrrin("walk --json " + example("slant.json"));
    ASSERT_EQ(r.code, 0) << r.err;
    const json out = json::parse(r.out);
    const json target = readJson(example("slant.json"))["targets"][0];
    EXPECT_EQ(out["walk_target"]["name"], target["name"]);
    EXPECT_LT(out["miss"].get<double>(), kWalkClosure);
    int ends = 0;
    for (const json& s : out["stations"]) {
        if (!s.contains("target")) continue;
        ++ends;
        const double dn = s["north"].get<double>() - target["north"].get<double>();
        const double de = s["east"].get<double>() - target["east"].get<double>();
        const double dv = s["tvd"].get<double>() - target["tvd"].get<double>();
        EXPECT_LT(std::sqrt(dn * dn + de * de + dv * dv), kWalkClosure);
    }
    EXPECT_EQ(ends, 1);
    const double aimOff =
        std::hypot(out["aim"]["north"].get<double>() - target["north"].get<double>(),
                   out["aim"]["east"].get<double>() - target["east"].get<double>());
    EXPECT_GT(aimOff, kWalkClosure);  // the walk table of the example does move the aim
}

// The optimum-align example: every line ends on its target with the target's arrival direction, the
// landing on the horizontal line through its target at the landing azimuth. A line of two given
// severities that has no path names the smallest common severity that solves it, and that one does.
TEST(CliAlign, ArrivalDirectionsAndSmallestSeverity) {
    const Result r = runOrrin("solve --json " + example("align.json"));
    ASSERT_EQ(r.code, 0) << r.err;
    const json plan = readJson(example("align.json"));
    const json out = json::parse(r.out);
    int checked = 0;
    for (const json& s : out["stations"]) {
        if (!s.contains("target")) continue;
        for (const json& t : plan["targets"]) {
            if (t["name"] != s["target"]) continue;
            SCOPED_TRACE(t["name"].get<std::string>());
            const double dn = s["north"].get<double>() - t["north"].get<double>();
            const double de = s["east"].get<double>() - t["east"].get<double>();
            EXPECT_NEAR(s["tvd"].get<double>(), t["tvd"].get<double>(), kOnTarget);
            if (t.contains("inc")) {
                EXPECT_NEAR(std::hypot(dn, de), 0.0, kOnTarget);
                EXPECT_NEAR(s["inc"].get<double>(), t["inc"].get<double>(), kAngle);
                EXPECT_NEAR(s["azi"].get<double>(), t["azi"].get<double>(), kAngle);
            } else {  // landed at 45 degrees: on the line north-east through the target
                EXPECT_NEAR(dn - de, 0.0, kOnTarget);
                EXPECT_NEAR(s["inc"].get<double>(), 90.0, kAngle);
                EXPECT_NEAR(s["azi"].get<double>(), 45.0, kAngle);
            }
            ++checked;
        }
    }
    EXPECT_EQ(checked, 4);

    auto plan2 = [](double dls) {
        return R"({"units": "ft", "tie_on": {"md": 6000, "inc": 75, "azi": 15, "tvd": 6000},
            "targets": [{"name": "E", "tvd": 6100, "north": 200, "east": 150, "inc": 85,
            "azi": 90}], "lines": [{"method": "OPT AL DLS", "target": "E", "dls1": )" +
               std::to_string(dls) + R"(, "dls2": )" + std::to_string(dls) + "}]}";
    };
    const Result fail = runOrrin("solve " + write("gentle.json", plan2(2.0)));
    EXPECT_EQ(fail.code, 1);
    const std::string key = "on both arcs: ";
    const auto at = fail.err.find(key);
    ASSERT_NE(at, std::string::npos) << fail.err;
    const double least = std::stod(fail.err.substr(at + key.size()));
    EXPECT_EQ(runOrrin("solve " + write("least.json", plan2(least))).code, 0);
    EXPECT_EQ(runOrrin("solve " + write("less.json", plan2(least - 0.05))).code, 1);
}

// `orrin methods` names every method the library names, and marks those it does not solve yet.
TEST(CliMethods, ListsEveryMethodOfTheLibrary) {
    const Result r = runOrrin("methods");
    ASSERT_EQ(r.code, 0);
    const int codes[] = {10,   20,   30,   40,   50,   51,   60,   80,   100,  101,  105,
                         110,  111,  115,  120,  121,  125,  130,  131,  135,  140,  150,
                         160,  180,  910,  920,  925,  930,  935,  1910, 1915, 1920, 1930,
                         1935, 1940, 1950, 1960, 1970, 2910, 2925, 2930, 2940, 2950, 1100,
                         1300, -10,  -20,  -30,  -40,  -50,  -60};
    for (int code : codes) {
        const std::u16string w = CPlan::GetNameFromMethod(code);
        const std::string name(w.begin(), w.end());
        ASSERT_FALSE(name.empty()) << code;
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
