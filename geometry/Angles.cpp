// Angle wrapping, direction vectors, and the conversions between dogleg, toolface, build and turn.
//
// All angles [rad], rates [rad/L], lengths [L]. Direction vectors are (east, north, down).
#include "geometry/Numerics.h"
#include "plan/CPlan.h"

#include <cmath>

using namespace orrin;

// An angle difference brought into (-pi, pi] by at most one correction each way: an input more than
// one turn out of range stays out of range (deliberate). -pi maps to pi.
double CPlan::getdaz(double x) {
    if (x <= -PI) x += TWO_PI;
    if (x > PI) x -= TWO_PI;
    return x;
}

// An azimuth brought into [0, 2 pi) by at most one correction each way (deliberate). 2 pi maps to 0;
// -0.0 stays -0.0.
double CPlan::deltaz(double x) {
    if (x < 0.0) x += TWO_PI;
    if (x >= TWO_PI) x -= TWO_PI;
    return x;
}

// The angle in [0, 2 pi) whose sine lies along a and cosine along b: an azimuth is
// tangle(east, north), a toolface tangle(turn part, build part). 0 when both are zero (|.| <= 1e-6).
double CPlan::tangle(double a, double b) {
    if (is_zero(a) && is_zero(b)) return 0.0;
    return deltaz(std::atan2(a, b));
}

// Divides (x, y, z) by its length and returns the length. A length of zero (|len| <= 1e-6) returns 0
// and leaves the three values undivided.
double CPlan::normalize(double& x, double& y, double& z) {
    const double len = std::sqrt(y * y + x * x + z * z);
    if (is_zero(len)) return 0.0;
    x /= len;
    y /= len;
    z /= len;
    return len;
}

// The unit direction (east, north, down) = (sin A sin I, cos A sin I, cos I).
void CPlan::vector(double inc, double azi, double& e, double& n, double& v) {
    e = std::sin(azi) * std::sin(inc);
    n = std::cos(azi) * std::sin(inc);
    v = std::cos(inc);
}

// Distance from point 1 to point 2, both as (vertical, north, east), with the unit vector from 1 to 2
// in (e, n, v). Coincident points (within 1e-6) return 0 with the raw differences in the outputs.
double CPlan::canvec(double v1, double n1, double e1, double v2, double n2, double e2, double& e,
                     double& n, double& v) {
    e = e2 - e1;
    n = n2 - n1;
    v = v2 - v1;
    return normalize(e, n, v);
}

// The unit direction of inclination inc that points horizontally from (n1, e1) at (n2, e2), and the
// course length that covers the horizontal distance h at that inclination: h / sin(inc).
// Degenerate: h within 1e-6 returns h, leaves the raw differences in e and n and does not write v;
// a vertical inclination (within 1e-6) writes the vector (then straight down) but returns 0.
double CPlan::tarvec(double n1, double e1, double inc, double n2, double e2, double& e, double& n,
                     double& v) {
    e = e2 - e1;
    n = n2 - n1;
    const double h = std::sqrt(n * n + e * e);
    if (is_zero(h)) return h;
    const double s = std::sin(inc) / h;
    e *= s;
    n *= s;
    v = std::cos(inc);
    if (is_zero(inc)) return 0.0;
    return h / std::sin(inc);
}

// Points m_stnA (inc, azi) at the point (tvd, ns, ew) and returns the distance to it. When the point
// coincides with m_stnA the differences stay undivided, so the inclination is acos of a value within
// 1e-6 of zero (very nearly pi/2) and the azimuth 0; callers accept this.
double CPlan::lasvec(double tvd, double ns, double ew) {
    double dv = tvd - m_stnA.tvd;
    double dn = ns - m_stnA.ns;
    double de = ew - m_stnA.ew;
    const double d = normalize(dv, dn, de);
    m_stnA.inc = acos_u(dv);
    m_stnA.azi = tangle(de, dn);
    return d;
}

// Toolface of the arc from direction 1 to direction 2, with its dogleg angle in dl and the azimuth
// change getdaz(azi2 - azi1) in daz.
//   toolface = tangle(sin daz sin I2, sin I2 cos I1 cos daz - cos I2 sin I1): the gravity toolface,
//   0 for a pure build, pi/2 for a pure right turn, wrapped into (-pi, pi];
//   from a vertical start (I1 within 1e-6) it is the target azimuth deltaz(azi2) in [0, 2 pi), and 0
//   when I2 is vertical too; a straight course (both changes within 1e-6) has toolface 0;
//   dl = acos(sin I2 sin I1 cos daz + cos I2 cos I1).
// The two ranges of the toolface differ on purpose.
double CPlan::getfo(double inc1, double azi1, double inc2, double azi2, double& dl, double& daz) {
    daz = getdaz(azi2 - azi1);
    const double t =
        tangle(std::sin(daz) * std::sin(inc2),
               std::sin(inc2) * std::cos(inc1) * std::cos(daz) - std::cos(inc2) * std::sin(inc1));
    double tf;
    if (is_zero(inc1)) {
        tf = is_zero(inc2) ? 0.0 : deltaz(azi2);
    } else {
        tf = getdaz(t);
    }
    if (is_zero(inc1 - inc2) && is_zero(daz)) tf = 0.0;
    dl = acos_u(std::sin(inc2) * std::sin(inc1) * std::cos(daz) + std::cos(inc2) * std::cos(inc1));
    return tf;
}

// Azimuth change produced by turn rate h over a course len whose inclination starts at inc0 and
// changes at the constant rate build.
//   plain turn model (m_bHorizontalTurn clear): h len;
//   horizontal-plane model: the integral of h / sin I along the course,
//   ln(tan((inc0 + len build)/2) / tan(inc0/2)) h / build; with no build h len / sin(inc0); from a
//   vertical start (inc0 within 1e-6) h len.
// len <= 0 gives 0.
double CPlan::hdls2daz(double h, double len, double inc0, double build) const {
    if (len <= 0.0) return 0.0;
    if (!m_bHorizontalTurn) return h * len;
    if (is_nonzero(inc0) && is_nonzero(build))
        return std::log(std::tan((inc0 + len * build) / 2.0) / std::tan(inc0 / 2.0)) * h / build;
    if (is_zero(inc0)) return h * len;
    return h * len / std::sin(inc0);
}

// Turn rate that gives the azimuth change daz over a course len: the inverse of hdls2daz, with the
// same models and degenerate branches.
double CPlan::daz2hdls(double daz, double len, double inc0, double build) const {
    if (len <= 0.0) return 0.0;
    if (!m_bHorizontalTurn) return daz / len;
    if (is_nonzero(inc0) && is_nonzero(build))
        return (daz * build) /
               std::log(std::tan((len * build + inc0) / 2.0) / std::tan(inc0 / 2.0));
    if (is_zero(inc0)) return daz / len;
    return std::sin(inc0) * daz / len;
}

namespace {
/// Passes of the course-length iteration of dazhdls2md.
constexpr int DAZ_MD_PASSES = 100;
/// The iteration stops once an estimate lies this close to the first estimate [L].
constexpr double DAZ_MD_STOP = 0.001;
}  // namespace

// Course length over which turn rate h produces the azimuth change daz (h within 1e-6 gives 0).
//   plain turn model: daz / h;
//   horizontal-plane model: a first estimate sin(m_stnPrev.inc) daz / h, which deliberately takes the
//   start inclination of the working station and not inc0; with no build or a vertical inc0 that
//   estimate is the answer. Otherwise the estimate L is rescaled by daz / D(L), D(L) being the azimuth
//   change that hdls2daz gives over L, at most 100 times; it stops when an estimate comes within 0.001
//   of the first estimate (not of the previous one: deliberate, so a far answer runs all 100 passes),
//   or returns at once when D(L) is exactly 0.
double CPlan::dazhdls2md(double daz, double h, double inc0, double build) const {
    if (is_zero(h)) return 0.0;
    double L = daz / h;
    if (!m_bHorizontalTurn) return L;
    L = std::sin(m_stnPrev.inc) * L;
    if (is_zero(build) || !is_nonzero(inc0)) return L;
    const double L0 = L;
    const double T = std::tan(inc0 / 2.0);
    for (int pass = 0; pass < DAZ_MD_PASSES; ++pass) {
        const double D = std::log(std::tan((build * L + inc0) / 2.0) / T) * h / build;
        if (D == 0.0) return L;
        L = L * daz / D;
        if (std::fabs(L - L0) < DAZ_MD_STOP) break;
    }
    return L;
}
