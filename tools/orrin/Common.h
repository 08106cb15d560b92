// Shared pieces of the orrin tool: units of the plan file, the input error, small conversions.
//
// The library works in radians and in the plan's own length unit; the tool reads and writes degrees,
// and dogleg severity, build and turn rates per 100 ft or per 30 m, as the plan file says.
#pragma once

#include <stdexcept>
#include <string>

namespace orrin_tool {

constexpr double kPi = 3.141592653589793;
constexpr double kDegree = kPi / 180.0;  ///< one degree [rad]

/// The length unit of a plan, and the course over which its rates are given.
struct Units {
    bool metres = false;

    const char* length() const { return metres ? "m" : "ft"; }
    /// Course length of a rate: 100 ft or 30 m [L].
    double rateCourse() const { return metres ? 30.0 : 100.0; }
    const char* rate() const { return metres ? "deg/30m" : "deg/100ft"; }
    /// Degrees per rate course to radians per length unit.
    double rateIn(double degPerCourse) const { return degPerCourse * kDegree / rateCourse(); }
    /// Radians per length unit to degrees per rate course.
    double rateOut(double radPerLength) const { return radPerLength * rateCourse() / kDegree; }
};

/// Bad input: a file that cannot be read or that does not describe a plan. The message names the
/// file, the place in it and the field; the tool prints it and exits with code 2.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A library string back to bytes: the library's texts are ASCII, and names the tool put in with
/// widen come back as they went in.
inline std::string narrow(const std::u16string& s) {
    std::string out;
    out.reserve(s.size());
    for (char16_t c : s) out.push_back(c < 0x100 ? static_cast<char>(c) : '?');
    return out;
}

inline std::u16string widen(const std::string& s) {
    std::u16string out;
    out.reserve(s.size());
    for (unsigned char c : s) out.push_back(static_cast<char16_t>(c));
    return out;
}

}  // namespace orrin_tool
