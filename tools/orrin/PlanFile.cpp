#include "PlanFile.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace orrin_tool {

using nlohmann::json;

double LineInput::value(const std::string& field) const {
    for (const auto& [name, v] : values)
        if (name == field) return v;
    return 0.0;
}

bool LineInput::has(const std::string& field) const {
    for (const auto& entry : values)
        if (entry.first == field) return true;
    return false;
}

namespace {

std::string quoted(const std::string& s) {
    return "\"" + s + "\"";
}

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const std::string& w : words) out += (out.empty() ? "" : ", ") + w;
    return out;
}

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw InputError(path + ": cannot be read: " + std::strerror(errno));
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool endsWithCsv(const std::string& path) {
    if (path.size() < 4) return false;
    std::string ext = path.substr(path.size() - 4);
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".csv";
}

/// Where a value sits, for messages: "FILE: PLACE: field "F": ...".
struct Place {
    std::string file;
    std::string place;  ///< "lines[2] ("Inc Azi MD")", "targets[0]", "tie_on"; empty at the top

    [[noreturn]] void fail(const std::string& field, const std::string& what) const {
        std::string msg = file + ": ";
        if (!place.empty()) msg += place + ": ";
        if (!field.empty()) msg += "field " + quoted(field) + ": ";
        throw InputError(msg + what);
    }

    double number(const json& obj, const std::string& key) const {
        const json& v = obj.at(key);
        if (!v.is_number()) fail(key, "expected a number, got " + v.dump());
        const double d = v.get<double>();
        if (!std::isfinite(d)) fail(key, "expected a finite number");
        return d;
    }

    double number(const json& obj, const std::string& key, double fallback) const {
        return obj.contains(key) ? number(obj, key) : fallback;
    }

    std::string text(const json& obj, const std::string& key) const {
        const json& v = obj.at(key);
        if (!v.is_string()) fail(key, "expected a string, got " + v.dump());
        return v.get<std::string>();
    }

    const json& object(const json& v, const std::string& field) const {
        if (!v.is_object()) fail(field, "expected an object {...}, got " + v.dump());
        return v;
    }

    /// Every key of obj must be one of `allowed`.
    void onlyKeys(const json& obj, const std::vector<std::string>& allowed) const {
        for (const auto& item : obj.items()) {
            if (std::find(allowed.begin(), allowed.end(), item.key()) == allowed.end())
                fail(item.key(), "unknown field (expected one of: " + joined(allowed) + ")");
        }
    }
};

// ---- Survey CSV ------------------------------------------------------------------------------

enum class Column { None, MD, Inc, Azi, TVD, North, East };

/// The role of a CSV column from its header: letters only, lower case, units in brackets dropped.
Column columnRole(const std::string& header) {
    std::string h;
    int depth = 0;
    for (char c : header) {
        if (c == '(' || c == '[') ++depth;
        if (c == ')' || c == ']') depth = depth > 0 ? depth - 1 : 0;
        if (depth == 0 && std::isalpha(static_cast<unsigned char>(c)))
            h.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    auto starts = [&h](const char* p) { return h.rfind(p, 0) == 0; };
    if (starts("md") || starts("measured") || h == "depth") return Column::MD;
    if (starts("inc") || h == "angle") return Column::Inc;
    if (starts("az") || starts("dir")) return Column::Azi;
    if (starts("tvd") || starts("truevertical")) return Column::TVD;
    if (starts("north") || h == "ns" || h == "n") return Column::North;
    if (starts("east") || h == "ew" || h == "e") return Column::East;
    return Column::None;
}

std::vector<std::string> splitRow(const std::string& line, char sep) {
    std::vector<std::string> cells;
    std::string cell;
    bool inQuotes = false;
    for (char c : line) {
        if (c == '"') {
            inQuotes = !inQuotes;
        } else if (c == sep && !inQuotes) {
            cells.push_back(cell);
            cell.clear();
        } else {
            cell.push_back(c);
        }
    }
    cells.push_back(cell);
    for (std::string& s : cells) {
        const auto a = s.find_first_not_of(" \t");
        const auto b = s.find_last_not_of(" \t");
        s = a == std::string::npos ? "" : s.substr(a, b - a + 1);
    }
    return cells;
}

bool parseNumber(const std::string& s, double& out) {
    if (s.empty()) return false;
    char* end = nullptr;
    out = std::strtod(s.c_str(), &end);
    return end && *end == '\0' && std::isfinite(out);
}

/// A survey CSV: its first station is the tie-on, every later one an "Inc Azi MD" line.
void readSurvey(const std::string& path, std::optional<bool> metres, PlanInput& plan) {
    std::istringstream in(readText(path));
    std::vector<std::pair<int, std::string>> rows;  // (line number, text)
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#') continue;
        rows.emplace_back(number, line);
    }
    if (rows.empty()) throw InputError(path + ": empty: expected a header row and stations");

    const std::string& headerLine = rows[0].second;
    const char sep = headerLine.find(',') != std::string::npos   ? ','
                     : headerLine.find(';') != std::string::npos ? ';'
                                                                 : '\t';
    const std::vector<std::string> header = splitRow(headerLine, sep);
    int col[7] = {-1, -1, -1, -1, -1, -1, -1};
    for (std::size_t i = 0; i < header.size(); ++i) {
        const int role = static_cast<int>(columnRole(header[i]));
        if (role != 0 && col[role] < 0) col[role] = static_cast<int>(i);
    }
    const std::string where = path + ":" + std::to_string(rows[0].first);
    const struct {
        Column c;
        const char* what;
    } needed[] = {{Column::MD, "measured depth (MD, Depth, Measured Depth)"},
                  {Column::Inc, "inclination (Inc, Incl, Inclination)"},
                  {Column::Azi, "azimuth (Azi, Az, Azimuth)"}};
    for (const auto& n : needed)
        if (col[static_cast<int>(n.c)] < 0)
            throw InputError(where + ": header: no column of " + n.what);

    if (!metres) {
        std::string h = header[static_cast<std::size_t>(col[static_cast<int>(Column::MD)])];
        std::transform(h.begin(), h.end(), h.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        metres = h.find("(m)") != std::string::npos || h.find("[m]") != std::string::npos;
    }
    plan.units.metres = *metres;

    if (rows.size() < 2) throw InputError(path + ": no stations below the header");
    double lastMD = 0.0;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const std::string at = path + ":" + std::to_string(rows[r].first);
        const std::vector<std::string> cells = splitRow(rows[r].second, sep);
        double v[7] = {0, 0, 0, 0, 0, 0, 0};
        for (int role = 1; role < 7; ++role) {
            if (col[role] < 0) continue;
            const std::size_t i = static_cast<std::size_t>(col[role]);
            const std::string name = quoted(header[i]);
            if (i >= cells.size() || cells[i].empty())
                throw InputError(at + ": column " + name + ": missing");
            if (!parseNumber(cells[i], v[role]))
                throw InputError(at + ": column " + name + ": expected a number, got " +
                                 quoted(cells[i]));
        }
        const double md = v[1], inc = v[2], azi = v[3];
        if (inc < 0.0 || inc > 180.0)
            throw InputError(at + ": column " + quoted(header[static_cast<std::size_t>(col[2])]) +
                             ": inclination must lie between 0 and 180 degrees");
        if (r > 1 && !(md > lastMD))
            throw InputError(at + ": column " + quoted(header[static_cast<std::size_t>(col[1])]) +
                             ": measured depth must increase (" +
                             cells[static_cast<std::size_t>(col[1])] + " after " +
                             std::to_string(lastMD) + ")");
        lastMD = md;
        if (r == 1) {
            plan.tie.md = md;
            plan.tie.inc = inc * kDegree;
            plan.tie.azi = std::fmod(azi + 360.0, 360.0) * kDegree;
            plan.tie.tvd = col[4] >= 0 ? v[4] : md;  // no TVD column: vertical above the tie-on
            plan.tie.ns = v[5];
            plan.tie.ew = v[6];
            plan.tie.method = 2;
            continue;
        }
        LineInput line;
        line.method = findMethod("Inc Azi MD", "");
        line.where = at;
        line.values = {{"md", md}, {"inc", inc * kDegree}, {"azi", azi * kDegree}};
        line.surveyed = true;
        plan.lines.push_back(line);
    }
}

// ---- JSON plan ------------------------------------------------------------------------------

/// A numeric input of a line in library units.
double toLibrary(const Units& units, const std::string& field, double v) {
    switch (fieldKind(field)) {
    case FieldKind::Angle: return v * kDegree;
    case FieldKind::Rate: return units.rateIn(v);
    default: return v;
    }
}

void readTargets(const json& list, const Place& top, PlanInput& plan) {
    if (!list.is_array()) top.fail("targets", "expected an array [...], got " + list.dump());
    for (std::size_t k = 0; k < list.size(); ++k) {
        const Place at{top.file, "targets[" + std::to_string(k) + "]"};
        const json& t = at.object(list[k], "");
        at.onlyKeys(t, {"name", "tvd", "north", "east", "inc", "azi", "note"});
        for (const char* key : {"name", "tvd", "north", "east"})
            if (!t.contains(key)) at.fail(key, "missing");
        STarget target;
        const std::string name = at.text(t, "name");
        if (name.empty() || name == narrow(u"BACKTARGET")) at.fail("name", "not a usable name");
        for (const STarget& other : plan.targets)
            if (narrow(other.name) == name)
                at.fail("name", "a second target named " + quoted(name));
        target.name = widen(name);
        target.tvd = at.number(t, "tvd");
        target.ns = at.number(t, "north");
        target.ew = at.number(t, "east");
        if (t.contains("inc") != t.contains("azi"))
            at.fail(t.contains("inc") ? "azi" : "inc", "missing (arrival angles come in pairs)");
        if (t.contains("inc")) {
            target.hasAngles = true;
            target.inc = at.number(t, "inc") * kDegree;
            target.azi = at.number(t, "azi") * kDegree;
        }
        plan.targets.push_back(target);
    }
}

LineInput readLine(const json& raw, std::size_t k, const Place& top, const PlanInput& plan) {
    Place at{top.file, "lines[" + std::to_string(k) + "]"};
    const json& obj = at.object(raw, "");
    if (!obj.contains("method")) at.fail("method", "missing");
    const std::string name = at.text(obj, "method");
    const std::string variant = obj.contains("variant") ? at.text(obj, "variant") : "";
    const MethodSpec* named = findMethod(name, variant);
    if (!named) {
        if (!isMethodName(name))
            at.fail("method", "unknown method " + quoted(name) + " (orrin methods lists them)");
        std::vector<std::string> variants;
        for (const MethodSpec& m : methodTable())
            if (methodKey(m.name()) == methodKey(name) && *m.variant) variants.push_back(m.variant);
        at.fail("variant", "unknown variant " + quoted(variant) + " of " + quoted(name) +
                               (variants.empty() ? " (it has none)"
                                                 : " (expected one of: " + joined(variants) + ")"));
    }
    at.place += " (" + quoted(named->name()) + ")";

    LineInput line;
    line.method = named;
    line.where = at.place;
    const std::vector<std::string> inputs = named->inputList();
    std::vector<std::string> allowed{"method", "variant", "note"}, shown;
    for (const std::string& token : inputs) {
        for (std::size_t a = 0, b; a <= token.size(); a = b + 1) {
            b = token.find('|', a);
            if (b == std::string::npos) b = token.size();
            allowed.push_back(token.substr(a, b - a));
            shown.push_back(token.substr(a, b - a));
        }
    }
    for (const auto& item : obj.items())
        if (std::find(allowed.begin(), allowed.end(), item.key()) == allowed.end())
            at.fail(item.key(), "not an input of " + quoted(named->name()) + " (it takes " +
                                    joined(shown) + ")");

    const bool profile = named->family == 60 || named->family == 70;
    if (profile) {
        if (!obj.contains("solve"))
            at.fail(
                "solve", "missing (two of: " + [&] {
                    std::vector<std::string> p;
                    for (int i = 1; i <= (named->family == 60 ? 4 : 7); ++i)
                        p.push_back(profileField(i));
                    return joined(p);
                }() + ")");
        const json& solve = obj.at("solve");
        const int last = named->family == 60 ? 4 : 7;
        if (!solve.is_array() || solve.size() != 2 || !solve[0].is_string() ||
            !solve[1].is_string())
            at.fail("solve", "expected two parameter names, got " + solve.dump());
        int idx[2];
        for (int i = 0; i < 2; ++i) {
            const std::string p = solve[static_cast<std::size_t>(i)].get<std::string>();
            idx[i] = profileIndex(p);
            if (idx[i] < 1 || idx[i] > last)
                at.fail("solve", quoted(p) + " is not a parameter of " + quoted(named->name()));
            if (obj.contains(p)) at.fail(p, "is solved for (listed in \"solve\"): leave it out");
        }
        if (idx[0] == idx[1]) at.fail("solve", "the two parameters must differ");
        line.solve1 = idx[0];
        line.solve2 = idx[1];
    }

    for (const std::string& token : inputs) {
        if (token == "solve") continue;
        const auto bar = token.find('|');
        if (bar != std::string::npos) {
            const std::string a = token.substr(0, bar), b = token.substr(bar + 1);
            if (obj.contains(a) && obj.contains(b))
                at.fail(b, "give " + quoted(a) + " or " + quoted(b) + ", not both");
            if (!obj.contains(a) && !obj.contains(b))
                at.fail(a, "missing (or give " + quoted(b) + ")");
        }
        for (std::size_t a = 0, b; a <= token.size(); a = b + 1) {
            b = token.find('|', a);
            if (b == std::string::npos) b = token.size();
            const std::string field = token.substr(a, b - a);
            const int pi = profileIndex(field);
            const bool solved = pi != 0 && (pi == line.solve1 || pi == line.solve2);
            if (!obj.contains(field)) {
                // Profile holds default to none; every other input is needed.
                const bool optionalHold =
                    field == "kickoff" || field == "tangent" || field == "final_hold";
                if (bar == std::string::npos && !solved && !optionalHold) at.fail(field, "missing");
                continue;
            }
            if (field == "target" || field == "back_target") {
                const std::string t = at.text(obj, field);
                bool known = false;
                std::vector<std::string> names;
                for (const STarget& target : plan.targets) {
                    names.push_back(narrow(target.name));
                    known = known || narrow(target.name) == t;
                }
                if (!known)
                    at.fail(field, "unknown target " + quoted(t) +
                                       (names.empty() ? " (the plan has no targets)"
                                                      : " (targets: " + joined(names) + ")"));
                if (field == "back_target") {
                    line.backTarget = t;
                    continue;
                }
                if (named->family == 150) {
                    for (const STarget& target : plan.targets)
                        if (narrow(target.name) == t && !target.hasAngles)
                            at.fail("target",
                                    "a backward line ends on a target with arrival "
                                    "\"inc\" and \"azi\"; " +
                                        quoted(t) + " has none");
                }
                line.target = t;
                continue;
            }
            const double v = at.number(obj, field);
            if ((field == "md" || field == "dls") && v < 0.0)
                at.fail(field, "must not be negative");
            line.values.emplace_back(field, toLibrary(plan.units, field, v));
        }
    }
    return line;
}

PlanInput readJson(const std::string& path) {
    const std::string text = readText(path);
    json doc;
    try {
        doc = json::parse(text);
    } catch (const json::parse_error& e) {
        std::string what = e.what();
        const auto close = what.find("] ");
        if (close != std::string::npos) what = what.substr(close + 2);
        throw InputError(path + ": malformed JSON: " + what);
    }
    const Place top{path, ""};
    if (!doc.is_object()) throw InputError(path + ": the plan must be a JSON object {...}");
    top.onlyKeys(doc, {"title", "note", "units", "tie_on", "survey", "vertical_section", "targets",
                       "lines", "walk", "horizontal_turn"});

    PlanInput plan;
    plan.file = path;
    if (!doc.contains("units")) top.fail("units", "missing (\"ft\" or \"m\")");
    const std::string units = top.text(doc, "units");
    if (units != "ft" && units != "m")
        top.fail("units", "expected \"ft\" or \"m\", got " + quoted(units));
    plan.units.metres = units == "m";
    if (doc.contains("title")) plan.title = top.text(doc, "title");
    if (doc.contains("horizontal_turn")) {
        if (!doc["horizontal_turn"].is_boolean())
            top.fail("horizontal_turn", "expected true or false");
        plan.horizontalTurn = doc["horizontal_turn"].get<bool>();
    }

    if (doc.contains("survey") && doc.contains("tie_on"))
        top.fail("tie_on",
                 "give \"tie_on\" or \"survey\", not both (a survey starts at its tie-on)");
    if (doc.contains("survey")) {
        std::string csv = top.text(doc, "survey");
        const auto slash = path.find_last_of('/');
        if (!csv.empty() && csv[0] != '/' && slash != std::string::npos)
            csv = path.substr(0, slash + 1) + csv;
        readSurvey(csv, plan.units.metres, plan);
    } else {
        const Place at{path, "tie_on"};
        const json& tie = doc.contains("tie_on") ? at.object(doc["tie_on"], "") : json::object();
        at.onlyKeys(tie, {"md", "inc", "azi", "tvd", "north", "east", "note"});
        plan.tie.md = at.number(tie, "md", 0.0);
        plan.tie.inc = at.number(tie, "inc", 0.0) * kDegree;
        plan.tie.azi = at.number(tie, "azi", 0.0) * kDegree;
        plan.tie.tvd = at.number(tie, "tvd", plan.tie.md);
        plan.tie.ns = at.number(tie, "north", 0.0);
        plan.tie.ew = at.number(tie, "east", 0.0);
        plan.tie.method = 2;
        if (plan.tie.inc < 0.0 || plan.tie.inc > kPi) at.fail("inc", "must lie in 0 to 180");
    }

    if (doc.contains("targets")) readTargets(doc["targets"], top, plan);

    if (doc.contains("vertical_section")) {
        const Place at{path, "vertical_section"};
        const json& vs = at.object(doc["vertical_section"], "");
        at.onlyKeys(vs, {"azimuth", "north", "east", "note"});
        if (!vs.contains("azimuth")) at.fail("azimuth", "missing");
        plan.vsAzimuth = at.number(vs, "azimuth") * kDegree;
        plan.vsNorth = at.number(vs, "north", 0.0);
        plan.vsEast = at.number(vs, "east", 0.0);
    } else if (!plan.targets.empty()) {
        // By default the section looks from the origin towards the last target.
        const STarget& t = plan.targets.back();
        plan.vsAzimuth = std::atan2(t.ew, t.ns);
        if (plan.vsAzimuth < 0.0) plan.vsAzimuth += 2.0 * kPi;
    } else {
        plan.vsFromClosure = true;
    }

    if (doc.contains("lines")) {
        const json& lines = doc["lines"];
        if (!lines.is_array()) top.fail("lines", "expected an array [...], got " + lines.dump());
        for (std::size_t k = 0; k < lines.size(); ++k)
            plan.lines.push_back(readLine(lines[k], k, top, plan));
    }

    if (doc.contains("walk")) {
        const json& walk = doc["walk"];
        if (!walk.is_array()) top.fail("walk", "expected an array [...], got " + walk.dump());
        for (std::size_t k = 0; k < walk.size(); ++k) {
            const Place at{path, "walk[" + std::to_string(k) + "]"};
            const json& w = at.object(walk[k], "");
            at.onlyKeys(w, {"tvd", "rate", "note"});
            for (const char* key : {"tvd", "rate"})
                if (!w.contains(key)) at.fail(key, "missing");
            plan.walk.emplace_back(at.number(w, "tvd"), plan.units.rateIn(at.number(w, "rate")));
        }
    }
    return plan;
}

}  // namespace

PlanInput readPlan(const std::string& path, std::optional<bool> metres) {
    PlanInput plan;
    if (endsWithCsv(path)) {
        plan.file = path;
        plan.vsFromClosure = true;
        readSurvey(path, metres, plan);
    } else {
        plan = readJson(path);
    }
    if (plan.title.empty()) {
        const auto slash = path.find_last_of('/');
        plan.title = slash == std::string::npos ? path : path.substr(slash + 1);
    }
    return plan;
}

}  // namespace orrin_tool
