// The library's numerical constants, named tolerances and zero test, defined once for every
// subsystem. Internal header: not installed.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

namespace orrin {

// The circle constants exactly as the engine writes them (double-rounded values of pi, 2 pi, pi/2).
constexpr double PI = 3.141592653589793;
constexpr double TWO_PI = 6.283185307179586;
constexpr double HALF_PI = 1.5707963267948966;
/// Degrees per radian and radians per degree, as the 2D profile solver converts with them.
constexpr double DEG_PER_RAD = 57.29577951308232;
constexpr double RAD_PER_DEG = 0.017453292519943295;

/// The zero test of angles [rad], lengths [L] and rates [rad/L] alike: |x| <= 1e-6 is zero.
constexpr double TOL_ZERO = 1e-6;
/// Cosine at or above which two directions count as one (a straight course) [-].
constexpr double STRAIGHT_COS = 0.999999999;
/// Chord at or below which backcal lays a straight course instead of an arc [L].
constexpr double MIN_CHORD = 0.25;
/// Depth by which the solver separates two stations whose measured depths touch [L].
constexpr double DEPTH_NUDGE = 0.001;
/// Closure a solved line must reach on the point, depth or line it solves for [L]: where a line
/// solves for a quantity in closed form, rounding may leave it this far off, and no further.
constexpr double TOL_CLOSE = 1e-4;
/// Agreement a solved direction must reach (an arrival direction, a hold aimed at its target) [rad]:
/// the angular counterpart of TOL_CLOSE.
constexpr double TOL_DIR = 1e-6;
/// Residual below which a small iterative solve stops, on a position [L] and on an angle [rad]:
/// far inside TOL_CLOSE and TOL_DIR, so that a converged solve meets them with room to spare.
constexpr double SOLVE_POS = 1e-8;
constexpr double SOLVE_ANG = 1e-10;
/// Passes of one Newton or fixed-point solve, and bisections after a bracketing scan. A solve that
/// has not reached SOLVE_POS / SOLVE_ANG by then is accepted only within TOL_CLOSE / TOL_DIR.
constexpr int MAX_PASSES = 100;
/// Steps of a bracketing scan over a solver's whole range, before the bisection of a bracket.
constexpr int SCAN_STEPS = 1000;
/// Length of each arc of the chain that lays a constant-toolface curve [L]: the curve's shape, not
/// a tolerance (its interpolation lays the same arcs).
constexpr double CT_STEP = 1.0;

/// True when x lies outside [-1e-6, 1e-6] (both ends of the band count as zero).
constexpr bool is_nonzero(double x) {
    return x < -TOL_ZERO || x > TOL_ZERO;
}
/// True when x lies inside [-1e-6, 1e-6], both ends inclusive. Written as the band test itself, not
/// as !is_nonzero: a NaN is neither zero nor nonzero, so both `if (is_zero(x))` and
/// `if (is_nonzero(x))` send it to their else branch, and each routine's test reads as it is stated.
constexpr bool is_zero(double x) {
    return x >= -TOL_ZERO && x <= TOL_ZERO;
}

/// How far past +-1 an acos/asin argument may stray by floating-point rounding and still be read as
/// +-1 [-]. A dot product of unit vectors, or a sum of products of sines and cosines, is off by a few
/// ulps at most (an ulp of 1 is 2.2e-16); 1e-15 covers that and nothing more. Arguments further out
/// come from inputs that are inconsistent in themselves, and are left to give NaN, which the callers
/// see and report as the description of each routine says.
constexpr double ARG_SLACK = 1e-15;

/// x with rounding excursions beyond +-1 (at most ARG_SLACK) brought back to +-1; any other value
/// unchanged. The single clamp policy of every acos and asin in the library.
inline double unit_arg(double x) {
    if (x > 1.0 && x <= 1.0 + ARG_SLACK) return 1.0;
    if (x < -1.0 && x >= -1.0 - ARG_SLACK) return -1.0;
    return x;
}
/// acos under the library's clamp policy (see unit_arg).
inline double acos_u(double x) {
    return std::acos(unit_arg(x));
}
/// asin under the library's clamp policy (see unit_arg).
inline double asin_u(double x) {
    return std::asin(unit_arg(x));
}

/// The bit pattern of x: memos compare angles and depths by it, so that -0.0 and +0.0 stay apart.
inline std::uint64_t bits_of(double x) {
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}

}  // namespace orrin
