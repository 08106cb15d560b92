// The single-line solvers: one circular arc (or a straight hold) from its start station and a
// sufficient subset of its end quantities, completed by one or two missing quantities.
//
// Every solver reads the start of the line from m_stnPrev (M1 md [L], I1 inc [rad], A1 azi [rad],
// V1 tvd [L]) and reads and writes the end of the line in m_stnC (M2 md, I2 inc, A2 azi, V2 tvd, K
// dls [rad/L], TF tf [rad], DL dl [rad]). The toolface TF is the angle at the start from the high
// side of the hole to the plane of the arc, clockwise positive; DL is the whole change of direction
// along the arc. Positions (ns, ew, and tvd except where a solver says so) are left to the
// curvature step that the caller runs afterwards.
//
// A solver that fails sets m_nError to a negative code and returns at once; none of them ever
// clears an error already set. Inconsistent inputs may give NaN through acos/asin (see acos_u,
// asin_u); the solvers hand such a result on as it is, the caller stores it.
#include "geometry/Numerics.h"
#include "geometry/TrigMemo.h"
#include "plan/CPlan.h"

#include <cmath>

using namespace orrin;

namespace {

/// Largest difference between the wanted end inclination and the one a dogleg candidate of solve10
/// actually gives, for the candidate to count as a solution [rad]. Wider than the zero test because
/// the candidate has been through acos twice.
constexpr double INC_CHECK = 1e-5;

/// The vertical gain of solve11's smaller arc must match the wanted depth change this closely for
/// the smaller arc to be taken [L].
constexpr double ARC_DEPTH_MATCH = 0.001;

/// Step of the first pass of solve13's scan over the end inclination: one degree [rad].
constexpr double SCAN_STEP = RAD_PER_DEG;
/// Each later pass of solve13 scans the bracket of the pass before with a step this many times
/// smaller [-]: the second pass steps 0.01 degree.
constexpr double SCAN_REFINE = 100.0;
/// Passes of solve13's scan: a coarse one that brackets the answer and one that narrows it [-].
constexpr int SCAN_PASSES = 2;

}  // namespace

// Toolface of the arc between the start direction (I1, A1) and the end direction (I2, A2).
// Reads I1, A1 of m_stnPrev and I2, A2 of m_stnC; writes m_stnC.tf [rad].
//   dA = getdaz(A2 - A1), taken as 0 when I1 is zero (|I1| <= 1e-6) since a vertical start has no
//   azimuth of its own;
//   TF = getdaz(tangle(sin I2 sin dA, sin I2 cos I1 cos dA - cos I2 sin I1)): the components of the
//   end direction to the right of and along the high side at the start, so TF is in (-pi, pi].
// Degenerate: from a vertical start (I1 zero) to a non-vertical end TF = deltaz(A2) in [0, 2 pi),
// the direction in which the hole leaves vertical; a straight line (|I1 - I2| <= 1e-6 and
// |dA| <= 1e-6) has TF = 0. The two ranges differ on purpose. Never fails.
void CPlan::solve1() {
    const double I1 = m_stnPrev.inc;
    const double I2 = m_stnC.inc;
    const double dA = is_nonzero(I1) ? getdaz(m_stnC.azi - m_stnPrev.azi) : 0.0;
    double sI1, cI1, sI2, cI2, sdA, cdA;
    sincosOf(I1, sI1, cI1);
    sincosOf(I2, sI2, cI2);
    sincosOf(dA, sdA, cdA);
    double tf = tangle(sI2 * sdA, sI2 * cI1 * cdA - cI2 * sI1);
    tf = getdaz(tf);
    if (is_zero(I1) && is_nonzero(I2)) tf = deltaz(m_stnC.azi);
    if (is_zero(I1 - I2) && is_zero(dA)) tf = 0.0;
    m_stnC.tf = tf;
}

// Dogleg angle between the start and end directions.
// Reads I1, A1 of m_stnPrev and I2, A2 of m_stnC; writes m_stnC.dl [rad] in [0, pi].
//   DL = acos(cos I1 cos I2 + sin I1 sin I2 cos dA), dA = getdaz(A2 - A1): the spherical law of
//   cosines.
// Never fails.
void CPlan::solve2() {
    const double I1 = m_stnPrev.inc;
    const double I2 = m_stnC.inc;
    const double dA = getdaz(m_stnC.azi - m_stnPrev.azi);
    double sI1, cI1, sI2, cI2, sdA, cdA;
    sincosOf(I1, sI1, cI1);
    sincosOf(I2, sI2, cI2);
    sincosOf(dA, sdA, cdA);
    m_stnC.dl = acos_u(cI1 * cI2 + sI1 * sI2 * cdA);
}

// End azimuth of the arc of dogleg DL started with toolface TF.
// Reads I1, A1 of m_stnPrev and DL, TF of m_stnC; writes m_stnC.azi [rad] in [0, 2 pi).
//   The end direction is cos DL t1 + sin DL (cos TF high side + sin TF right side); its horizontal
//   part along the start azimuth is h = cos DL sin I1 + sin DL cos TF cos I1 and across it (to the
//   right) s = sin DL sin TF, so A2 = tangle(sin A1 h + cos A1 s, cos A1 h - sin A1 s).
// Degenerate: a start of inclination exactly 0 (compared with 0, not with the zero band, on
// purpose) has its toolface measured from north, so A2 = TF as given. Never fails.
void CPlan::solve3() {
    const double I1 = m_stnPrev.inc;
    if (I1 == 0.0) {
        m_stnC.azi = m_stnC.tf;
        return;
    }
    const double A1 = m_stnPrev.azi;
    const double DL = m_stnC.dl;
    const double TF = m_stnC.tf;
    double sI1, cI1, sA1, cA1, sDL, cDL, sTF, cTF;
    sincosOf(I1, sI1, cI1);
    sincosOf(A1, sA1, cA1);
    sincosOf(DL, sDL, cDL);
    sincosOf(TF, sTF, cTF);
    const double h = cDL * sI1 + sDL * cTF * cI1;
    const double s = sDL * sTF;
    m_stnC.azi = tangle(sA1 * h + cA1 * s, cA1 * h - sA1 * s);
}

// End inclination of the arc of dogleg DL started with toolface TF.
// Reads I1 of m_stnPrev and DL, TF of m_stnC; writes m_stnC.inc [rad] in [0, pi].
//   I2 = acos(cos DL cos I1 - cos TF sin I1 sin DL), the down component of the end direction.
// Never fails.
void CPlan::solve4() {
    const double I1 = m_stnPrev.inc;
    const double DL = m_stnC.dl;
    double sI1, cI1, sDL, cDL, sTF, cTF;
    sincosOf(I1, sI1, cI1);
    sincosOf(DL, sDL, cDL);
    sincosOf(m_stnC.tf, sTF, cTF);
    m_stnC.inc = acos_u(cDL * cI1 - cTF * sI1 * sDL);
}

// End inclination at which the arc started with toolface TF reaches the end azimuth A2.
// Reads I1, A1 of m_stnPrev and A2, TF of m_stnC; writes m_stnC.inc [rad] in [0, pi].
//   With dA = getdaz(A2 - A1) and ct = cot TF, the arc's plane meets the azimuth A2 at
//   I2 = atan2(sin I1, cos I1 cos dA - sin dA ct).
// Degenerate: TF zero (|TF| <= 1e-6) is a pure build or drop, which cannot change azimuth: -8.
// ct is taken as 0 when TF is +-pi/2 within 1e-6 (a pure turn). When the denominator
// d = cos I1 cos dA - sin dA ct is zero (|d| <= 1e-6) the only case kept is the flat turn on the
// horizontal: ct zero, I1 at pi/2 (|cos I1| <= 1e-6) and dA turning the way the toolface points
// (sin TF dA > 0), where I2 = I1; any other zero denominator is -8.
void CPlan::solve6() {
    const double TF = m_stnC.tf;
    if (is_zero(TF)) {
        m_nError = ERR_TF_AZI;
        return;
    }
    const double I1 = m_stnPrev.inc;
    const double dA = getdaz(m_stnC.azi - m_stnPrev.azi);
    double ct = 0.0;
    if (is_nonzero(getdaz(TF - HALF_PI)) && is_nonzero(getdaz(TF + HALF_PI)))
        ct = 1.0 / std::tan(TF);
    const double d = std::cos(I1) * std::cos(dA) - std::sin(dA) * ct;
    if (is_zero(d)) {
        if (is_zero(ct) && is_zero(std::cos(I1)) && std::sin(TF) * dA > 0.0)
            m_stnC.inc = I1;
        else
            m_nError = ERR_TF_AZI;
        return;
    }
    m_stnC.inc = std::atan2(std::sin(I1), d);
}

// End azimuth of an arc of dogleg DL that ends at inclination I2; side 0 turns right, any other
// side turns left.
// Reads I1, A1 of m_stnPrev and I2, DL of m_stnC; writes m_stnC.azi [rad] in [0, 2 pi).
//   From cos DL = cos I1 cos I2 + sin I1 sin I2 cos g: g = acos((cos DL - cos I1 cos I2) / p) with
//   p = sin I1 sin I2, and A2 = deltaz(A1 +- g).
// Degenerate: either end vertical (|p| <= 1e-6) fixes no azimuth change: -1. A dogleg too small or
// too large for the two inclinations gives NaN (acos out of range), handed on as it is.
void CPlan::solve8(int side) {
    const double I1 = m_stnPrev.inc;
    const double I2 = m_stnC.inc;
    const double p = std::sin(I1) * std::sin(I2);
    if (is_zero(p)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    const double g = acos_u((std::cos(m_stnC.dl) - std::cos(I1) * std::cos(I2)) / p);
    m_stnC.azi = deltaz(side == 0 ? m_stnPrev.azi + g : m_stnPrev.azi - g);
}

// End inclination of an arc of dogleg DL that ends at azimuth A2; side 0 takes the upper root, any
// other side the lower one.
// Reads I1, A1 of m_stnPrev and A2, DL of m_stnC; writes m_stnC.inc [rad].
//   cos DL = c1 cos I2 + s1 ca sin I2 (s1, c1 of I1; ca, sa of dA = getdaz(A2 - A1)) is a quadratic
//   in sin I2 with D = 1 - sa^2 s1^2 and Q = ca^2 s1^2 + c1^2 - cd^2 (cd = cos DL):
//   sin I2 = (cd s1 ca +- c1 sqrt(Q)) / D. asin keeps I2 within [-pi/2, pi/2].
// Degenerate: Q < 0 (the dogleg cannot reach that azimuth) or D zero (|D| <= 1e-6: a horizontal
// start turning a right angle): -1.
void CPlan::solve9(int side) {
    const double s1 = std::sin(m_stnPrev.inc);
    const double c1 = std::cos(m_stnPrev.inc);
    const double dA = getdaz(m_stnC.azi - m_stnPrev.azi);
    const double ca = std::cos(dA);
    const double sa = std::sin(dA);
    const double cd = std::cos(m_stnC.dl);
    const double D = 1.0 - sa * sa * s1 * s1;
    const double Q = ca * ca * s1 * s1 + c1 * c1 - cd * cd;
    if (Q < 0.0 || is_zero(D)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    const double r = std::sqrt(Q) * c1;
    const double q = cd * s1 * ca;
    m_stnC.inc = asin_u(side == 0 ? (q + r) / D : (q - r) / D);
}

// Dogleg of the arc started with toolface TF that ends at inclination I2.
// Reads I1 of m_stnPrev and I2, TF of m_stnC; writes m_stnC.dl [rad], 0 on failure.
//   cos I2 = p cos DL + q sin DL with p = cos I1, q = -sin I1 cos TF; with S = p^2 + q^2 the two
//   candidates are d1 = acos(t + r) and d2 = acos(t - r), t = cos I2 p / S,
//   r = q sqrt(S - cos^2 I2) / S. Each candidate is put back into the same relation and kept only
//   when the inclination it gives is within INC_CHECK of I2 (the other root of the squared equation
//   is spurious). Of two good candidates the smaller positive one is taken (d1 if 0 < d1 < d2, else
//   d2 if positive); of one, that one if positive.
// Degenerate: no change of inclination (|I2 - I1| <= 1e-6, even where TF would allow a pure turn)
// or I2 < 0: -14. An end or a start of inclination exactly 0 (compared with 0 on purpose) gives
// DL = I1 or DL = I2. S - cos^2 I2 < 0 (the toolface cannot reach I2) or S zero: -14. No candidate
// left, so that DL is still exactly 0: -14.
void CPlan::solve10() {
    const double I1 = m_stnPrev.inc;
    const double I2 = m_stnC.inc;
    const double TF = m_stnC.tf;
    m_stnC.dl = 0.0;
    if (is_zero(I2 - I1) || I2 < 0.0) {
        m_nError = ERR_INCREASE_INC;
        return;
    }
    if (I2 == 0.0) {
        m_stnC.dl = I1;
        return;
    }
    if (I1 == 0.0) {
        m_stnC.dl = I2;
        return;
    }
    const double p = std::cos(I1);
    const double q = -std::sin(I1) * std::cos(TF);
    const double S = p * p + q * q;
    const double c2 = std::cos(I2);
    if (S - c2 * c2 < 0.0 || is_zero(S)) {
        m_nError = ERR_INCREASE_INC;
        return;
    }
    const double r = q * std::sqrt(S - c2 * c2) / S;
    const double t = c2 * p / S;
    const double d1 = acos_u(t + r);
    const double d2 = acos_u(t - r);
    const double Ia = acos_u(std::cos(d1) * p - std::sin(d1) * std::sin(I1) * std::cos(TF));
    const double Ib = acos_u(std::cos(d2) * p - std::sin(d2) * std::sin(I1) * std::cos(TF));
    const bool good1 = std::fabs(I2 - Ia) < INC_CHECK;
    const bool good2 = std::fabs(I2 - Ib) < INC_CHECK;
    if (good1 && good2) {
        if (d1 > 0.0 && d1 < d2)
            m_stnC.dl = d1;
        else if (d2 > 0.0)
            m_stnC.dl = d2;
    } else if (good1) {
        if (d1 > 0.0) m_stnC.dl = d1;
    } else if (good2) {
        if (d2 > 0.0) m_stnC.dl = d2;
    }
    if (m_stnC.dl == 0.0) m_nError = ERR_INCREASE_INC;
}

// Dogleg at which the arc of curvature K started with toolface TF reaches the vertical depth V2.
// Reads I1, V1 of m_stnPrev and V2, K, TF of m_stnC; writes m_stnC.dl [rad] in [0, pi/2] and, when
// both roots are candidates, m_stnC.inc.
//   Circular arc of radius R = 1/K: dV K = cos I1 sin DL - sin I1 cos TF (1 - cos DL), that is
//   p sin DL + q cos DL = w with p = cos I1, q = sin I1 cos TF, w = dV K + q. With S = p^2 + q^2
//   the candidate sines are lo = b - a and hi = b + a, b = w p / S, a = q sqrt(S - w^2) / S.
//   A negative lo leaves hi (when not negative); lo >= 0 with hi <= 0 leaves lo. When both are
//   positive the smaller arc asin(lo) is tried first: its end inclination is computed by solve4 and
//   it is kept when its minimum-curvature depth gain tan(DL/2) / K (cos I1 + cos I2) matches dV
//   within ARC_DEPTH_MATCH; otherwise DL = asin(hi), unchecked, and the inclination stays the one
//   solve4 gave for the smaller arc (deliberate: the caller recomputes it). Only doglegs up to pi/2
//   are found: a depth reached only by a longer arc gives a dogleg that does not reach it.
// Degenerate: K zero (|K| <= 1e-6): -1. R zero (|R| <= 1e-6) takes w = 0. S - w^2 < 0 (the depth
// is beyond what the arc can reach) or S zero: -17. Both candidate sines negative: -17.
void CPlan::solve11() {
    const double K = m_stnC.dls;
    if (is_zero(K)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    const double I1 = m_stnPrev.inc;
    const double dV = m_stnC.tvd - m_stnPrev.tvd;
    const double R = 1.0 / K;
    const double p = std::cos(I1);
    const double q = std::sin(I1) * std::cos(m_stnC.tf);
    const double w = is_nonzero(R) ? dV / R + q : 0.0;
    const double S = p * p + q * q;
    if (S - w * w < 0.0 || is_zero(S)) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    const double a = std::sqrt(S - w * w) * q / S;
    const double b = w * p / S;
    const double lo = b - a;
    const double hi = b + a;
    if (lo < 0.0) {
        if (hi >= 0.0)
            m_stnC.dl = asin_u(hi);
        else
            m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    if (hi <= 0.0) {
        m_stnC.dl = asin_u(lo);
        return;
    }
    m_stnC.dl = asin_u(lo);
    solve4();
    const double gain = std::tan(m_stnC.dl / 2.0) / K * (std::cos(I1) + std::cos(m_stnC.inc));
    if (!(std::fabs(dV - gain) < ARC_DEPTH_MATCH)) m_stnC.dl = asin_u(hi);
}

// End measured depth at which the arc between the start and end directions reaches the vertical
// depth V2 (minimum curvature).
// Reads M1, I1, A1, V1 of m_stnPrev and I2, A2, V2 of m_stnC; writes m_stnC.dl [rad] and
// m_stnC.md [L].
//   DL = acos(u1 . u2) of the unit directions; a course L gains L tan(DL/2) / DL (v1 + v2) in depth
//   (v the down components), so M2 = M1 + (V2 - V1) DL / (tan(DL/2) (v1 + v2)).
// Degenerate: a straight course (DL zero, |DL| <= 1e-6) gives M2 = M1 + (V2 - V1) / cos I1. A
// straight horizontal course (|cos I1| <= 1e-6), or a bend whose ends average horizontal
// (|v1 + v2| <= 1e-6), cannot reach another depth: -7, md untouched.
void CPlan::solve12() {
    double e1, n1, v1, e2, n2, v2;
    vector(m_stnPrev.inc, m_stnPrev.azi, e1, n1, v1);
    vector(m_stnC.inc, m_stnC.azi, e2, n2, v2);
    const double DL = acos_u(e1 * e2 + n1 * n2 + v1 * v2);
    m_stnC.dl = DL;
    const double dV = m_stnC.tvd - m_stnPrev.tvd;
    if (is_nonzero(DL)) {
        const double s = v1 + v2;
        if (is_nonzero(s)) {
            m_stnC.md = m_stnPrev.md + dV * DL / (std::tan(DL / 2.0) * s);
            return;
        }
    } else if (is_nonzero(v1)) {
        m_stnC.md = m_stnPrev.md + dV / std::cos(m_stnPrev.inc);
        return;
    }
    m_nError = ERR_TVD_HORIZONTAL;
}

// End inclination and measured depth at which the arc of curvature K towards the end azimuth A2
// reaches the vertical depth V2.
// Reads M1, I1, A1, V1 of m_stnPrev and A2, V2, K of m_stnC; writes m_stnC.inc [rad] and
// m_stnC.md [L]. The dogleg is found on the way but not kept: m_stnC.dl is not written.
//   For a trial end inclination x the arc has DL(x) = acos(u1 . vector(x, A2)), the course
//   DL(x) / K and the minimum-curvature depth gain
//   g(x) = (v1 + v2) (DL(x) / K) tan(DL(x)/2) / DL(x). A zero dogleg is read as a zero course that gains 0, the limit of that expression (written
//   literally it would be 0/0).
//   The scan: the first pass steps x = 0, SCAN_STEP, 2 SCAN_STEP, ... up to pi, writing inc = x and
//   md = M1 + DL(x) / K at each point; while V1 + g(x) >= V2, x is the last good inclination, and
//   the first x with V1 + g(x) < V2 (or a NaN gain) ends the pass. The next pass scans from the
//   last good inclination to the x that ended the pass before, with a step SCAN_REFINE times
//   smaller; should it reach that x without ending, that x stays the end of the bracket.
//   Between the last good xa (gain ga) and the ending xb (gain gb) the answer is interpolated
//   linearly: I2 = xa + (xb - xa) ((V2 - V1) - ga) / (gb - ga), and md = M1 + DL(I2) / K.
// Degenerate: a first pass that ends at its first point (x = 0 already short of V2: deeper than the
// arc reaches even ending vertical) or that runs past pi without ending: -18; inc and md then hold
// the last point scanned. K is not tested for zero (the callers give a curvature).
void CPlan::solve13() {
    const double M1 = m_stnPrev.md;
    const double V1 = m_stnPrev.tvd;
    const double V2 = m_stnC.tvd;
    const double A2 = m_stnC.azi;
    const double K = m_stnC.dls;
    double e1, n1, v1;
    vector(m_stnPrev.inc, m_stnPrev.azi, e1, n1, v1);

    // Dogleg of the arc that ends at inclination x on azimuth A2; v2 is the down part of its end.
    const auto dogleg = [&](double x, double& v2) {
        double e2, n2;
        vector(x, A2, e2, n2, v2);
        return acos_u(e1 * e2 + n1 * n2 + v1 * v2);
    };
    // Depth gain of that arc; writes the trial end into m_stnC.
    const auto gain = [&](double x) {
        double v2;
        const double dl = dogleg(x, v2);
        const double course = dl / K;
        m_stnC.inc = x;
        m_stnC.md = M1 + course;
        if (dl == 0.0) return 0.0;
        return (v1 + v2) * course * std::tan(dl / 2.0) / dl;
    };

    double xa = 0.0, ga = 0.0;  // last good inclination [rad] and its gain [L]
    double xb = 0.0, gb = 0.0;  // inclination that ended the pass [rad] and its gain [L]
    double from = 0.0, to = PI, step = SCAN_STEP;
    for (int pass = 0; pass < SCAN_PASSES; ++pass) {
        bool ended = false;
        bool endedFirst = false;
        for (int k = 0;; ++k) {
            const double x = from + k * step;
            if (x > to) break;
            const double g = gain(x);
            if (V1 + g >= V2) {
                xa = x;
                ga = g;
                continue;
            }
            xb = x;
            gb = g;
            ended = true;
            endedFirst = (k == 0);
            break;
        }
        if (pass == 0 && (!ended || endedFirst)) {
            m_nError = ERR_BUILD_SIGN;
            return;
        }
        from = xa;
        to = xb;
        step /= SCAN_REFINE;
    }
    const double I2 = xa + (xb - xa) * ((V2 - V1) - ga) / (gb - ga);
    double v2;
    const double DL = dogleg(I2, v2);
    m_stnC.inc = I2;
    m_stnC.md = M1 + DL / K;
}
