// Online target methods: a curve that ends heading straight at the target, then a hold to it.
//
//   1930 "DT7 OL TVD"   an arc (its curvature solved) ending at a given depth, then a hold;
//   1935 "BT7 OL TVD"   the same with a build/turn curve;
//   2930 "DT8 HCH Inc"  a kick-off hold, an arc of given dogleg severity ending at a given
//                       inclination, then a hold.
//
// Called by meth3d as every target method (see targets/BuildTurnTargets.cpp): m_stnPrev is the start
// P0 with its unit direction t0 in ue, un, uv, m_target the target X, the line's settings in
// m_dMethodParamN. Parts are computed first and stored only when the line is solved. Angles [rad],
// rates [rad/L], lengths [L].
#include <array>
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "targets/TargetSolvers.h"

using namespace orrin;

namespace {

/// True when X lies on the start's course straight ahead (cosine at least STRAIGHT_COS) or within
/// 1e-6 of it: no curve to the target has a direction to turn to.
bool straightAhead(const SStation& start, Vec3 X) {
    const Vec3 d = X - posOf(start);
    const double D = norm(d);
    return !(D > TOL_ZERO) || dot(dirOf(start), d) / D >= STRAIGHT_COS;
}

/// A circular arc of radius R from Q, tangent to t, followed by a hold that ends on X: the arc
/// turns in the plane of t and X - Q.
struct ArcHold {
    bool exists = false;
    Vec3 u;           ///< the arc's end direction, along the hold
    double hold = 0;  ///< the hold's length [L]
};

/// The arc-then-hold from Q (direction t) to X at curvature K, the geometry of 1910's join: in the
/// plane of t and the side direction m towards X, X lies a ahead and h aside; the turning circle is
/// centred R = 1/K aside, rho = hypot(a, h - R) from X, and the hold is the tangent from X to the
/// circle, H = sqrt(rho^2 - R^2). The arc's dogleg phi solves R sin phi + H cos phi = a,
/// H sin phi - R cos phi = h - R: phi = atan2(h - R, a) + atan2(R, H), taken into [0, 2 pi).
/// It exists when X lies off the course (side offset above 1e-6 of the distance), outside the
/// circle (rho >= R), and the arc is shorter than pi (phi < pi - 1e-6).
ArcHold arcHold(Vec3 Q, Vec3 t, Vec3 X, double K) {
    ArcHold out;
    const Vec3 w = X - Q;
    const double D = norm(w);
    if (!(D > TOL_ZERO) || !(K > TOL_ZERO)) return out;
    const double q = dot(t, w) / D;
    const double s = std::sqrt(std::fmax(0.0, 1.0 - q * q));
    if (!(s > TOL_ZERO)) return out;
    const Vec3 m = (1.0 / s) * ((1.0 / D) * w - q * t);
    const double a = D * q, h = D * s, R = 1.0 / K;
    const double rho = std::hypot(a, h - R);
    if (!(rho >= R)) return out;
    const double H = std::sqrt(rho * rho - R * R);
    double phi = std::atan2(h - R, a) + std::atan2(R, H);
    if (phi < 0.0) phi += TWO_PI;
    if (!(phi < PI - TOL_ZERO)) return out;
    out.exists = true;
    out.u = std::cos(phi) * t + std::sin(phi) * m;
    out.hold = H;
    return out;
}

}  // namespace

// The arc of given tangent length T that leaves the start m_stnPrev along its direction
// t = (ue, un, uv) and ends heading straight at the target m_target: the inverse of manic, which
// gives T from the end direction. The two tangent lines of the arc meet at M = start + T t; the end
// direction is u = unit(X - M), written to (e, n, v); the dogleg is DL = acos(t . u) and the
// curvature K = tan(DL / 2) / T, returned. The arc ends at M + T u. M goes into m_stnC (tvd, ns, ew)
// and T into m_stnC.md, as manic leaves them.
// T not above 1e-6, or X within 1e-6 of M, gives u = t and K = 0 (no arc).
double CPlan::maniac(double T, double& e, double& n, double& v) {
    const Vec3 t = dirOf(m_stnPrev), M = posOf(m_stnPrev) + T * t;
    m_stnC.tvd = M.v, m_stnC.ns = M.n, m_stnC.ew = M.e;
    m_stnC.md = T;
    e = m_target.ew - M.e, n = m_target.ns - M.n, v = m_target.tvd - M.v;
    const double dist = normalize(e, n, v);
    if (!(T > TOL_ZERO) || !(dist > TOL_ZERO)) {
        e = t.e, n = t.n, v = t.v;
        return 0.0;
    }
    return std::tan(acos_u(e * t.e + n * t.n + v * t.v) / 2.0) / T;
}

// The arc of 1930: the one of the arcs laid by maniac whose end lies at the vertical depth `tvd`,
// with the smallest tangent length T > 0. Its end direction goes to (e, n, v), its curvature to K.
// T ranges over (0, Tmax): with D = |X - P0| and p = t0 . (X - P0), Tmax = D^2 / (2 p) when p > 0
// (the arc's end reaches X there, and beyond it the hold would run backwards), else 1000 D. The
// depth of the end, P0.tvd + T (t0.v + u.v), is scanned over that range (SCAN_STEPS, bisection to
// SOLVE_POS) and the first root is taken.
// Returns 0, -12 for X straight ahead or at the start, -17 when no T reaches the depth.
int CPlan::onlineArc(double tvd, double& e, double& n, double& v, double& K) {
    const Vec3 P0 = posOf(m_stnPrev), t0 = dirOf(m_stnPrev), X = targetPoint(m_target);
    if (straightAhead(m_stnPrev, X)) return ERR_IN_LINE;
    const double D = norm(X - P0), p = dot(t0, X - P0);
    const double Tmax = p > 0.0 ? D * D / (2.0 * p) : 1000.0 * D;
    auto depthMiss = [&](double T) {
        double ue = 0.0, un = 0.0, uv = 0.0;
        maniac(T, ue, un, uv);
        return P0.v + T * (t0.v + uv) - tvd;
    };
    double T = NAN;
    scanRoots(depthMiss, 0.0, Tmax, SOLVE_POS, [&T, Tmax](double root, double miss) {
        if (!(root > TOL_ZERO && root < Tmax && std::fabs(miss) <= TOL_CLOSE)) return false;
        T = root;
        return true;
    });
    if (std::isnan(T)) return ERR_TVD_UNREACHABLE;
    K = maniac(T, e, n, v);
    return ERR_NONE;
}

// 1930 "DT7 OL TVD": an arc from the start whose end E lies at the depth P4 = m_dMethodParam4 and
// heads straight at the target, then a hold from E to the target. The arc's curvature, toolface and
// dogleg are solved (onlineArc: the smallest tangent length that reaches P4).
//   - X straight ahead or at the start: -12. No arc reaches P4: -17.
// The arc's station is E as the circle gives it (its depth P4 within TOL_CLOSE), with dls the solved
// curvature; the hold's station ends on the target's position exactly.
void CPlan::meth_dtolt() {
    const int s = m_nPrev + 1;
    if (!hasStation(s + 1)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const Vec3 X = targetPoint(m_target);
    double e = 0.0, n = 0.0, v = 0.0, K = 0.0;
    const int err = onlineArc(m_dMethodParam4, e, n, v, K);
    if (err != ERR_NONE) {
        m_nError = err;
        return;
    }
    const SStation arc = arcpart(start, e, n, v, K);
    SStation h = holdpart(arc, norm(X - posOf(arc)));
    if (!(std::fabs(arc.tvd - m_dMethodParam4) <= TOL_CLOSE && norm(posOf(h) - X) <= TOL_CLOSE)) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    h.tvd = X.v, h.ns = X.n, h.ew = X.e;
    storeLine(1930, {arc, h});
}

// 1935 "BT7 OL TVD": a build/turn curve from the start whose end E lies at the depth
// P4 = m_dMethodParam4 and heads straight at the target, then a hold from E to the target.
//   - Starting guess: the arc of 1930 (onlineArc), read as a curve: its course, inclination change
//     and azimuth change. X straight ahead or at the start: -12; no such arc: -17.
//   - Newton on (dI, dA, L), B = dI / L, T = daz2hdls(dA, L, I0, B), for three conditions in [L]:
//     E's depth - P4, and the offsets of X from the line through E along the end direction, along
//     the end's high side and right side. Not converged, a solution outside the range of a build/turn
//     target curve (curveInRange), or an end heading away from X or more than TOL_DIR off
//     it: -4.
// The curve's station stores the solved B, T; the hold's station ends on the target exactly.
void CPlan::meth_btolt() {
    const int s = m_nPrev + 1;
    if (!hasStation(s + 1)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const Vec3 X = targetPoint(m_target);
    const double P4 = m_dMethodParam4;
    double e = 0.0, n = 0.0, v = 0.0, K = 0.0;
    const int err = onlineArc(P4, e, n, v, K);
    if (err != ERR_NONE) {
        m_nError = err;
        return;
    }
    const SStation arc = arcpart(start, e, n, v, K);
    std::array<double, 3> x{arc.inc - start.inc, getdaz(arc.azi - start.azi), arc.md - start.md};

    auto curve = [this, &start](const std::array<double, 3>& y) {
        const double B = y[0] / y[2];
        return btpart(start, B, daz2hdls(y[1], y[2], start.inc, B), y[2]);
    };
    auto residual = [&](const std::array<double, 3>& y, std::array<double, 3>& r) {
        if (!(y[2] > 0.0)) return false;
        const SStation c = curve(y);
        const Vec3 w = X - posOf(c);
        const double cI = std::cos(c.inc), sI = std::sin(c.inc);
        const double cA = std::cos(c.azi), sA = std::sin(c.azi);
        r = {c.tvd - P4, dot(w, Vec3{cI * sA, cI * cA, -sI}), dot(w, Vec3{cA, -sA, 0.0})};
        return std::isfinite(maxAbs(r));
    };
    double size = 0.0;
    const NewtonResult res = newton(residual, x, SOLVE_POS, TOL_CLOSE, size);
    if (res == NewtonResult::failed || !curveInRange(start.inc, x[0], x[1], x[2])) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation c = curve(x);
    const Vec3 w = X - posOf(c);
    const double H = dot(dirOf(c), w);
    const double off = norm(w - H * dirOf(c));
    if (!(H >= -TOL_CLOSE) || !(off <= TOL_DIR * std::fmax(H, 1.0))) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    SStation h = holdpart(c, std::fmax(H, 0.0));
    h.tvd = X.v, h.ns = X.n, h.ew = X.e;
    storeLine(1935, {c, h});
}

// 2930 "DT8 HCH Inc": a kick-off hold H1 along the start direction to Q, an arc of dogleg severity
// K = m_dMethodParam1 from Q to E, ending at the inclination I4 = m_dMethodParam4, and a hold from E
// to the target.
//   - For a kick-off H1 the arc-then-hold from Q = P0 + H1 t0 to X (arcHold) fixes the arc's end
//     direction u(H1); H1 is solved for inc(u(H1)) = I4.
//   - X straight ahead or at the start: -12. No arc-then-hold at H1 = 0 (X inside the turning
//     circle, or an arc of pi or more): -1.
//   - Hmax, the first kick-off at which the arc-then-hold stops existing, is found by a scan of
//     [0, 2 |X - P0|] (SCAN_STEPS) and bisection of the step where it stops (MAX_PASSES); 2 |X - P0|
//     when it never stops. inc(u(H1)) - I4 is then scanned over [0, Hmax] and its first root taken
//     (bisection to SOLVE_ANG, accepted within TOL_DIR): the smallest kick-off.
//   - No root: -14 when I4 lies below inc(u(0)) (the arc already ends steeper than asked: increase
//     the inclination), else -15.
// The arc's station stores dls = K and inc = I4 exactly; the last station the target's position.
void CPlan::meth_dtholi() {
    const int s = m_nPrev + 1;
    if (!hasStation(s + 2)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const Vec3 P0 = posOf(start), t0 = dirOf(start), X = targetPoint(m_target);
    const double K = m_dMethodParam1, I4 = m_dMethodParam4;
    if (straightAhead(start, X)) {
        m_nError = ERR_IN_LINE;
        return;
    }
    auto join = [&](double H1) { return arcHold(P0 + H1 * t0, t0, X, K); };
    const ArcHold first = join(0.0);
    if (!first.exists) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    double lo = 0.0, Hmax = 2.0 * norm(X - P0);
    for (int j = 1; j <= SCAN_STEPS; ++j) {
        const double H1 = Hmax * j / SCAN_STEPS;
        if (join(H1).exists) {
            lo = H1;
            continue;
        }
        double hi = H1;
        for (int k = 0; k < MAX_PASSES && hi - lo > SOLVE_POS; ++k) {
            const double mid = 0.5 * (lo + hi);
            (join(mid).exists ? lo : hi) = mid;
        }
        Hmax = lo;
        break;
    }
    auto incMiss = [&](double H1) {
        const ArcHold j = join(H1);
        return j.exists ? acos_u(j.u.v) - I4 : NAN;
    };
    double H1 = NAN;
    scanRoots(incMiss, 0.0, Hmax, SOLVE_ANG, [&H1](double root, double miss) {
        if (!(std::fabs(miss) <= TOL_DIR)) return false;
        H1 = root;
        return true;
    });
    if (std::isnan(H1)) {
        m_nError = I4 < acos_u(first.u.v) ? ERR_INCREASE_INC : ERR_DECREASE_INC;
        return;
    }
    const ArcHold j = join(H1);
    const SStation kick = holdpart(start, H1);
    SStation arc = arcpart(kick, j.u.e, j.u.n, j.u.v, K);
    SStation h = holdpart(arc, j.hold);
    if (!(norm(posOf(h) - X) <= TOL_CLOSE)) {
        m_nError = ERR_DECREASE_INC;
        return;
    }
    // The arc ends at I4 to within TOL_DIR; both stations of that direction store I4 itself.
    for (SStation* p : {&arc, &h}) {
        p->inc = I4;
        vector(p->inc, p->azi, p->ue, p->un, p->uv);
    }
    h.tvd = X.v, h.ns = X.n, h.ew = X.e;
    storeLine(2930, {kick, arc, h});
}
