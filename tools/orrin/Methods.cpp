#include "Methods.h"

#include <cctype>
#include <sstream>

#include "Common.h"
#include "plan/CPlan.h"

namespace orrin_tool {

namespace {

// The profiles' names come from the library through a code of the right profile type: 1100 is read
// as a slant, 1300 as an S-shape.
constexpr short kSlantCode = 1100;
constexpr short kSShapeCode = 1300;

const std::vector<MethodSpec> kMethods = {
    // Straight holds (family 20).
    {10, 20, 1, 0, 0, "", nullptr, "md", "hold the direction to a measured depth"},
    {20, 20, 2, 0, 0, "", nullptr, "tvd|target", "hold the direction to a vertical depth"},
    {140, 20, 3, 0, 0, "", nullptr, "target",
     "hold the direction to the target's vertical section"},
    // Inclination/azimuth and dogleg-severity lines (family 90).
    {30, 90, 1, 0, 0, "", nullptr, "md inc azi", "arc to an inclination and azimuth at a depth"},
    {40, 90, 2, 0, 0, "", nullptr, "tvd|target inc azi",
     "arc to an inclination and azimuth at a vertical depth"},
    {50, 90, 3, 0, 0, "", nullptr, "inc azi dls",
     "arc of a dogleg severity to an inclination and azimuth"},
    {150, 90, 6, 0, 0, "", nullptr, "dls azi tvd",
     "arc of a dogleg severity to an azimuth at a depth"},
    {80, 90, 7, 0, 0, "upper", nullptr, "dls azi md",
     "arc of a dogleg severity to an azimuth; the higher end inclination"},
    {160, 90, 8, 0, 0, "lower", nullptr, "dls azi md",
     "arc of a dogleg severity to an azimuth; the lower end inclination"},
    {60, 90, 9, 0, 0, "right", nullptr, "dls inc md",
     "arc of a dogleg severity to an inclination, turning right"},
    {180, 90, 10, 0, 0, "left", nullptr, "dls inc md",
     "arc of a dogleg severity to an inclination, turning left"},
    {51, 90, 11, 0, 0, "", nullptr, "inc azi dls",
     "constant-toolface curve to an inclination and azimuth"},
    // Dogleg severity and toolface with one end angle (family 100).
    {70, 100, 2, 0, 0, "", "DLS TF Inc MD", "dls tf inc md",
     "arc of a dogleg severity and toolface reaching an inclination"},
    {90, 100, 4, 0, 0, "", "DLS TF Azi MD", "dls tf azi md",
     "arc of a dogleg severity and toolface reaching an azimuth"},
    // Drop/turn arcs and constant-toolface curves (family 30).
    {100, 30, 1, 0, 0, "", nullptr, "dls tf md",
     "arc of a dogleg severity and toolface to a depth"},
    {110, 30, 2, 0, 0, "", nullptr, "dls tf tvd|target",
     "arc of a dogleg severity and toolface to a vertical depth"},
    {120, 30, 3, 0, 0, "", nullptr, "dls tf inc",
     "arc of a dogleg severity and toolface to an inclination"},
    {130, 30, 4, 0, 0, "", nullptr, "dls tf azi",
     "arc of a dogleg severity and toolface to an azimuth"},
    {101, 30, 1, 0, 1, "", nullptr, "dls tf md", "constant-toolface curve to a depth"},
    {111, 30, 2, 0, 1, "", nullptr, "dls tf tvd|target",
     "constant-toolface curve to a vertical depth"},
    {121, 30, 3, 0, 1, "", nullptr, "dls tf inc", "constant-toolface curve to an inclination"},
    // "CT4 Azm." ends at the measured depth stored with the line (the library lays its curve to
    // that depth and labels the end with the azimuth), so the tool asks for both.
    {131, 30, 4, 0, 1, "", nullptr, "dls tf azi md",
     "constant-toolface curve turning towards an azimuth, ending at the given depth"},
    // Build/turn curves (family 40).
    {105, 40, 1, 0, 0, "", nullptr, "build turn md", "build and turn rates to a depth"},
    {115, 40, 2, 0, 0, "", nullptr, "build turn tvd|target",
     "build and turn rates to a vertical depth"},
    {125, 40, 3, 0, 0, "", nullptr, "build turn inc", "build and turn rates to an inclination"},
    {135, 40, 4, 0, 0, "", nullptr, "build turn azi", "build and turn rates to an azimuth"},
    // Two-dimensional profiles (families 60 and 70).
    {kSlantCode, 60, 0, 0, 0, "", nullptr, "target solve kickoff build_dls hold_inc tangent",
     "kick-off hold, build, tangent to the target; two parameters solved"},
    {kSShapeCode, 70, 0, 0, 0, "", nullptr,
     "target solve kickoff build_dls hold_inc tangent drop_dls final_inc final_hold",
     "kick-off hold, build, tangent, drop, final hold to the target; two parameters solved"},
    // Curves to a target (families 50, 80, 120).
    {910, 50, 0, 0, 0, "", nullptr, "target dls inc",
     "arc to an inclination, heading over the target"},
    {1910, 80, 0, 1, 0, "", nullptr, "target dls", "arc, then hold to the target"},
    {1920, 80, 0, 2, 0, "", nullptr, "target dls", "hold, then arc to the target"},
    {920, 120, 0, 1, 0, "", nullptr, "target", "one arc to the target"},
    {930, 120, 0, 2, 0, "", nullptr, "target md",
     "one arc of a course length to the target's north and east; depth solved"},
    // Build/turn curves and online curves to a target (families 45, 55, 85, 125, 130, 135).
    {925, 125, 0, 1, 0, "", nullptr, "target", "one build/turn curve to the target"},
    {935, 125, 0, 2, 0, "", nullptr, "target md",
     "one build/turn curve of a course length to the target's north and east; depth solved"},
    {1915, 55, 0, 0, 0, "", nullptr, "target build inc",
     "build/turn curve of a build rate to an inclination, turned to head over the target; hold"},
    {2925, 85, 0, 0, 0, "", nullptr, "target build turn",
     "kick-off hold, build/turn curve of given rates, hold to the target"},
    {1930, 130, 0, 0, 0, "", nullptr, "target tvd",
     "arc ending at a vertical depth, heading at the target; hold to it"},
    {1935, 135, 0, 0, 0, "", nullptr, "target tvd",
     "build/turn curve ending at a vertical depth, heading at the target; hold to it"},
    {2930, 45, 0, 2, 0, "", nullptr, "target dls inc",
     "kick-off hold, arc of a dogleg severity to an inclination, hold to the target"},
    // Optimum align (family 110) and horizontal landing (family 140): two arcs, with or without a
    // hold between them, to a target reached with its arrival "inc" and "azi" (a landing: onto the
    // horizontal line through the target at "azi"); the shortest such path.
    {2910, 110, 0, 1, 0, "", nullptr, "target dls1 dls2",
     "arc, hold, arc of given severities to the target with its arrival direction"},
    {2940, 110, 0, 4, 0, "", nullptr, "target tangent",
     "arc, hold of a given length, arc of one solved severity, with the arrival direction"},
    {2950, 110, 0, 5, 0, "", nullptr, "target tvd1 tvd2",
     "arc, hold from vertical depth tvd1 to tvd2, arc, with the arrival direction"},
    {1940, 110, 0, 8, 0, "", nullptr, "target",
     "two arcs of one solved severity to the target with its arrival direction"},
    {1960, 110, 0, 6, 0, "", nullptr, "target dls1",
     "two arcs, the first of a given severity, to the target with its arrival direction"},
    {1970, 110, 0, 7, 0, "", nullptr, "target dls2",
     "two arcs, the second of a given severity, to the target with its arrival direction"},
    {1950, 140, 0, 0, 0, "", nullptr, "target dls azi",
     "two arcs of a severity landing horizontally at azimuth azi on the line through the target"},
    // Backward lines (family 150): solved from their target, reached with its arrival angles, back
    // to a start given by one quantity; the forward target line before one aims at that start.
    {-20, 150, 2, 0, 0, "", nullptr, "target dls tf md",
     "arc back from the target, arriving with toolface tf, over a course length md"},
    {-30, 150, 3, 0, 0, "", nullptr, "target dls tf tvd",
     "arc back from the target, arriving with toolface tf, to a start depth tvd"},
    {-40, 150, 4, 0, 0, "", nullptr, "target dls tf inc",
     "arc back from the target, arriving with toolface tf, to a start inclination"},
    {-60, 150, 5, 0, 0, "", nullptr, "target dls inc azi",
     "arc back from the target to a start inclination and azimuth"},
    {-50, 150, 6, 0, 0, "", nullptr, "target",
     "hold back from the target along its arrival direction to the tie-on's depth"},
    {-10, 150, 1, 0, 0, "", nullptr, "target back_target",
     "arc back from the target through another target, where it starts"},
};

struct ProfileField {
    int index;
    const char* name;
};
constexpr ProfileField kProfileFields[] = {
    {1, "kickoff"},  {2, "build_dls"}, {3, "hold_inc"},   {4, "tangent"},
    {5, "drop_dls"}, {6, "final_inc"}, {7, "final_hold"},
};

}  // namespace

std::string MethodSpec::name() const {
    if (ownName) return ownName;
    return narrow(CPlan::GetNameFromMethod(code));
}

std::vector<std::string> MethodSpec::inputList() const {
    std::vector<std::string> out;
    std::istringstream in(inputs);
    for (std::string word; in >> word;) out.push_back(word);
    return out;
}

const std::vector<MethodSpec>& methodTable() {
    return kMethods;
}

std::string methodKey(const std::string& name) {
    std::string out;
    for (char c : name) {
        if (c == '.') continue;
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (!out.empty() && out.back() != ' ') out.push_back(' ');
            continue;
        }
        out.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

const MethodSpec* findMethod(const std::string& name, const std::string& variant) {
    const std::string key = methodKey(name);
    for (const MethodSpec& m : kMethods) {
        if (methodKey(m.name()) != key) continue;
        if (variant.empty() || variant == m.variant) return &m;
    }
    return nullptr;
}

bool isMethodName(const std::string& name) {
    return findMethod(name, "") != nullptr;
}

const char* familyLabel(int family) {
    switch (family) {
    case 10: return "Tie-on";
    case 20: return "Straight hold";
    case 30: return "Drop/turn and constant toolface";
    case 40: return "Build/turn";
    case 50: return "Online inclination";
    case 60: return "Slant profile";
    case 70: return "S-shape profile";
    case 80: return "Curve and tangent to target";
    case 90: return "Inclination/azimuth and DLS";
    case 100: return "DLS and toolface";
    case 110: return "Optimum align";
    case 120: return "Single curve to target";
    case 45: return "Hold, arc and hold to an inclination";
    case 55: return "Build/turn online inclination";
    case 85: return "Hold, build/turn curve and hold";
    case 125: return "Build/turn curve to target";
    case 130: return "Online arc to a depth";
    case 135: return "Online build/turn curve to a depth";
    case 140: return "Horizontal landing";
    case 150: return "Backward line";
    default: return "Target method";
    }
}

int familyOfCode(int code) {
    if (code == 2) return 10;
    if (code > 1000 && code % 1000 < 900) {
        return narrow(CPlan::GetNameFromMethod(code)) == "Slant" ? 60 : 70;
    }
    if (code < 0) return 150;
    for (const MethodSpec& m : kMethods)
        if (m.code == code) return m.family;
    return 0;
}

FieldKind fieldKind(const std::string& field) {
    if (field == "md" || field == "tvd" || field == "kickoff" || field == "tangent" ||
        field == "final_hold" || field == "north" || field == "east" || field == "tvd1" ||
        field == "tvd2")
        return FieldKind::Length;
    if (field == "inc" || field == "azi" || field == "tf" || field == "hold_inc" ||
        field == "final_inc" || field == "azimuth")
        return FieldKind::Angle;
    if (field == "dls" || field == "build" || field == "turn" || field == "build_dls" ||
        field == "drop_dls" || field == "rate" || field == "dls1" || field == "dls2")
        return FieldKind::Rate;
    if (field == "target" || field == "back_target" || field == "variant" || field == "note")
        return FieldKind::Text;
    return FieldKind::Other;
}

int profileIndex(const std::string& field) {
    for (const ProfileField& f : kProfileFields)
        if (field == f.name) return f.index;
    return 0;
}

const char* profileField(int index) {
    for (const ProfileField& f : kProfileFields)
        if (index == f.index) return f.name;
    return "";
}

}  // namespace orrin_tool
