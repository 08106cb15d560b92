// Build/turn target methods: lines whose curve is a build/turn curve (constant build rate B and turn
// rate T along the measured depth, laid by build_turn in the plan's turn model), alone or with holds:
//
//   925  "BT6 Curve"    one curve from the start to the target; B, T and its length solved;
//   935  "BT6 MDNSEW"   one curve of given length to the target's north and east; B, T solved, the
//                       depth reached is a result;
//   1915 "BT8 OL Inc"   a curve of given build to a given inclination, turned so that it heads over
//                       the target, then a hold to the target's vertical line;
//   1935 "BT7 OL TVD"   a curve ending at a given depth heading at the target, then a hold to it
//                       (targets/OnlineTargets.cpp, beside its arc twin 1930);
//   2925 "BT5 CH Tang"  a kick-off hold, a curve of given build and turn, a hold to the target.
//
// Each is called by meth3d, which has cleared m_nError, loaded m_stnPrev (with its unit direction in
// ue, un, uv), m_target and the line's settings (m_dMethodParamN from the settings record). Every
// part is computed first; the stations are written only once the line is solved, so a failure
// leaves the plan as it was. The curves are solved in the variables (dI, dA, L): the inclination
// change, the azimuth change and the course; B = dI / L and T = daz2hdls(dA, L, I0, B), which in
// either turn model gives the azimuth change dA. A line whose stations are missing from the array
// (a plan loaded short) fails with -4. Angles [rad], rates [rad/L], lengths [L].
#include <array>
#include <cmath>
#include <limits>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "targets/TargetSolvers.h"

using namespace orrin;

// 925 "BT6 Curve": one build/turn curve from the start to the target X.
//   - |X - P0| within 1e-6: -12. X straight ahead (cosine to the start direction at least
//     STRAIGHT_COS): a hold of length |X - P0| with B = T = 0. Read so even though such a hold
//     may pass up to |X - P0| 4.5e-5 from X: the station still stores X, as every line that ends
//     on its target does.
//   - Otherwise Newton on (dI, dA, L) for curve end = X (three equations in [L]). Starting guess:
//     the single arc of 920 (stagg) to X, whose length, inclination change and azimuth change a
//     build/turn curve reproduces exactly for a pure build and closely for small turns.
//   - Not converged (beyond TOL_CLOSE after MAX_PASSES, or a NaN), or a solution outside the range
//     of curveInRange (L not positive among them): -4.
// The station ends on the target's position exactly; B, T, L are the solved ones.
void CPlan::meth_btctt() {
    const int s = m_nPrev + 1;
    if (!hasStation(s)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const Vec3 X = targetPoint(m_target), d = X - posOf(start);
    const double D = norm(d);
    if (!(D > TOL_ZERO)) {
        m_nError = ERR_IN_LINE;
        return;
    }
    SStation part;
    if (dot(dirOf(start), d) / D >= STRAIGHT_COS) {
        part = btpart(start, 0.0, 0.0, D);
    } else {
        stagg(X.v, X.n, X.e);
        std::array<double, 3> x{m_stnA.inc - start.inc, getdaz(m_stnA.azi - start.azi),
                                m_stnA.md - start.md};
        auto curve = [this, &start](const std::array<double, 3>& y) {
            const double B = y[0] / y[2];
            return btpart(start, B, daz2hdls(y[1], y[2], start.inc, B), y[2]);
        };
        auto residual = [&](const std::array<double, 3>& y, std::array<double, 3>& r) {
            if (!(y[2] > 0.0)) return false;
            const Vec3 miss = posOf(curve(y)) - X;
            r = {miss.e, miss.n, miss.v};
            return std::isfinite(maxAbs(r));
        };
        double size = 0.0;
        const NewtonResult res = newton(residual, x, SOLVE_POS, TOL_CLOSE, size);
        if (res == NewtonResult::failed || !curveInRange(start.inc, x[0], x[1], x[2])) {
            m_nError = ERR_UNKNOWN_SOLUTION;
            return;
        }
        part = curve(x);
    }
    part.tvd = X.v, part.ns = X.n, part.ew = X.e;
    storeLine(925, {part});
}

// 935 "BT6 MDNSEW": one build/turn curve of course L = md(s) - md(start), the measured depth stored
// with the line (as 930 reads it), that ends over the target's north and east; its depth is a result.
//   - L within 1e-6 (or below): -18.
//   - Starting guess: the arc of 930 of course L to the target's vertical line, found as 930 finds
//     it (the depth moved by the course shortfall until the shortfall is below SOLVE_POS, at most
//     MAX_PASSES passes); when that gives no finite arc, the hold (dI = dA = 0).
//   - Newton on (dI, dA) for the end's (north, east) = the target's. Not converged, or a solution
//     outside the range of curveInRange: -10, the code 930 reports for no convergence.
// The station stores md(s) as it was, the target's north and east exactly and the depth reached,
// which also goes into m_target.tvd (as 930 leaves it).
void CPlan::meth_btctmd() {
    const int s = m_nPrev + 1;
    if (!hasStation(s)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const double mdEnd = m_stations[s].md;
    const double L = mdEnd - start.md;
    if (!(L > TOL_ZERO)) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    double tvd = start.tvd + L;
    for (int pass = 0; pass < MAX_PASSES; ++pass) {
        stagg(tvd, m_target.ns, m_target.ew);
        const double shortfall = L - (m_stnA.md - start.md);
        tvd += shortfall;
        if (!(std::fabs(shortfall) >= SOLVE_POS)) break;  // converged, or NaN: stop either way
    }
    std::array<double, 2> x{m_stnA.inc - start.inc, getdaz(m_stnA.azi - start.azi)};
    if (!std::isfinite(x[0]) || !std::isfinite(x[1])) x = {0.0, 0.0};

    auto curve = [this, &start, L](const std::array<double, 2>& y) {
        const double B = y[0] / L;
        return btpart(start, B, daz2hdls(y[1], L, start.inc, B), L);
    };
    auto residual = [&](const std::array<double, 2>& y, std::array<double, 2>& r) {
        const SStation e = curve(y);
        r = {e.ns - m_target.ns, e.ew - m_target.ew};
        return std::isfinite(maxAbs(r));
    };
    double size = 0.0;
    const NewtonResult res = newton(residual, x, SOLVE_POS, TOL_CLOSE, size);
    if (res == NewtonResult::failed || !curveInRange(start.inc, x[0], x[1], L)) {
        m_nError = ERR_TANGENT_OVERLAP;
        return;
    }
    SStation part = curve(x);
    part.md = mdEnd;
    part.ns = m_target.ns, part.ew = m_target.ew;
    m_target.tvd = part.tvd;
    storeLine(935, {part});
}

// 1915 "BT8 OL Inc": a build/turn curve of build B = m_dMethodParam7 to the inclination
// I4 = m_dMethodParam4 (course L = (I4 - I0) / B), whose turn is chosen so that its end azimuth
// points horizontally at the target; then a hold at (I4, that azimuth) to the target's vertical line.
//   - B within 1e-6 of zero, or L not above 1e-6 (a build of the wrong sign): -18.
//   - I4 not above 1e-6 or not below pi - 1e-6 (no horizontal heading to aim): -14.
//   - The miss g(dA) = getdaz(bearing from the curve's end to the target - end azimuth) is scanned
//     over dA in [-pi, pi] (SCAN_STEPS steps, then bisection to SOLVE_ANG). A sign change of g is
//     either a zero or a jump through +-pi (the heading swinging past the bearing away from the
//     target); only a root where |g| is within TOL_DIR counts. An end exactly over the target
//     (within 1e-6 horizontally) counts as lined up. Of the roots, the one with the smallest |dA|
//     is taken. None: -1.
// The curve's station stores inc = I4 exactly; the hold's station the target's north and east
// exactly and the depth it reaches (not the target's).
void CPlan::meth_btoli() {
    const int s = m_nPrev + 1;
    if (!hasStation(s + 1)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const double B = m_dMethodParam7, I4 = m_dMethodParam4;
    const double L = is_zero(B) ? 0.0 : (I4 - start.inc) / B;
    if (!(L > TOL_ZERO)) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    if (!(I4 > TOL_ZERO && I4 < PI - TOL_ZERO)) {
        m_nError = ERR_INCREASE_INC;
        return;
    }
    auto curve = [this, &start, B, L, I4](double dA) {
        SStation e = btpart(start, B, daz2hdls(dA, L, start.inc, B), L);
        e.inc = I4;
        vector(e.inc, e.azi, e.ue, e.un, e.uv);
        return e;
    };
    auto miss = [this, &curve](double dA) {
        const SStation e = curve(dA);
        const double de = m_target.ew - e.ew, dn = m_target.ns - e.ns;
        const double across = std::hypot(de, dn);
        if (std::isnan(across)) return across;
        if (across <= TOL_ZERO) return 0.0;
        return getdaz(std::atan2(de, dn) - e.azi);
    };
    const double best = nearestRoot(miss, -PI, PI, SOLVE_ANG,
                                    [](double, double g) { return std::fabs(g) <= TOL_DIR; });
    if (std::isnan(best)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    const SStation c = curve(best);
    const double across = std::hypot(m_target.ew - c.ew, m_target.ns - c.ns);
    SStation h = holdpart(c, across / std::sin(I4));
    if (!(std::hypot(m_target.ew - h.ew, m_target.ns - h.ns) <= TOL_CLOSE)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    h.ns = m_target.ns, h.ew = m_target.ew;
    storeLine(1915, {c, h});
}

// 2925 "BT5 CH Tang": a kick-off hold H1 along the start direction t0, a build/turn curve of build
// B = m_dMethodParam7 and turn T = m_dMethodParam8 over the course L, and a hold H2 along the curve's
// end direction t(L) to the target: X - P0 = H1 t0 + C(L) + H2 t(L), C(L) the curve's displacement
// (the same wherever the curve starts on the hold).
//   - B and T both within 1e-6 of zero: -18 (no curve to speak of).
//   - L ranges over (0, Lmax], Lmax the least of: the course where I0 + B L reaches 0 or pi, a full
//     turn 2 pi / |T|, and 100 |X - P0|. The three vectors t0, t(L), X - P0 - C(L) must lie in one
//     plane: the roots of their determinant are scanned (SCAN_STEPS, bisection to SOLVE_POS) in
//     increasing L, and each root gives H1, H2 by least squares; a root counts when that fit closes
//     within TOL_CLOSE and t(L) is not parallel to t0.
//   - The smallest counted L with H1 >= 0 and H2 >= 0 is taken (a hold negative by no more than
//     TOL_CLOSE, rounding, is read as 0). When the target lies in the plane of a curve that stays in
//     it (no turn), every course fits; the smallest is then where one hold reaches 0, found by
//     bisection between the last step that fails and the first that fits. No counted root: -4;
//     every one with H1 < 0: -9; some with H1 >= 0, but all of those with H2 < 0: -10.
// The curve's station stores B and T exactly, the last station the target's position exactly.
void CPlan::meth_btsch() {
    const int s = m_nPrev + 1;
    if (!hasStation(s + 2)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation start = m_stnPrev;
    const double B = m_dMethodParam7, T = m_dMethodParam8;
    if (is_zero(B) && is_zero(T)) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    const Vec3 P0 = posOf(start), t0 = dirOf(start), X = targetPoint(m_target);
    double Lmax = 100.0 * norm(X - P0);
    if (B > 0.0) Lmax = std::fmin(Lmax, (PI - start.inc) / B);
    if (B < 0.0) Lmax = std::fmin(Lmax, start.inc / -B);
    if (T != 0.0) Lmax = std::fmin(Lmax, TWO_PI / std::fabs(T));

    auto curve = [this, &start, B, T](double L) { return btpart(start, B, T, L); };
    // The holds that fit the curve of course L best (least squares), and whether they close.
    struct Fit {
        bool closes = false;
        double h1 = 0.0, h2 = 0.0;
    };
    auto fit = [&](double L) {
        Fit f;
        const SStation c = curve(L);
        const Vec3 t = dirOf(c), r = X - posOf(c);
        const double cosTT = dot(t0, t), det = 1.0 - cosTT * cosTT;
        if (!(det > TOL_ZERO)) return f;
        const double a = dot(t0, r), b = dot(t, r);
        f.h1 = (a - cosTT * b) / det, f.h2 = (b - cosTT * a) / det;
        f.closes = norm(f.h1 * t0 + f.h2 * t - r) <= TOL_CLOSE;
        return f;
    };
    // The determinant, read as exactly 0 within SOLVE_POS: a target in the plane of a curve that
    // does not turn out of it makes every course a root, and the scan then visits every step.
    auto coplanar = [&](double L) {
        const SStation c = curve(L);
        const Vec3 t = dirOf(c), r = X - posOf(c);
        const double det = t0.e * (t.n * r.v - t.v * r.n) - t0.n * (t.e * r.v - t.v * r.e) +
                           t0.v * (t.e * r.n - t.n * r.e);
        return std::fabs(det) <= SOLVE_POS ? 0.0 : det;
    };
    const double step = Lmax / SCAN_STEPS;
    bool counted = false, kickoffOk = false, found = false;
    double L = 0.0, H1 = 0.0, H2 = 0.0, prev = NAN;
    scanRoots(coplanar, 0.0, Lmax, SOLVE_POS, [&](double root, double) {
        if (!(root > TOL_ZERO)) return false;
        const Fit f = fit(root);
        if (!f.closes) return false;
        counted = true;
        const double before = prev;
        prev = root;
        if (f.h1 < -TOL_CLOSE) return false;
        kickoffOk = true;
        if (f.h2 < -TOL_CLOSE) return false;
        L = root, H1 = f.h1, H2 = f.h2;
        found = true;
        // Roots on neighbouring steps: the courses between fit too, and the smallest with both holds
        // non-negative lies where the smaller hold reaches 0; bisect for it.
        if (root - before <= step * (1.0 + SOLVE_POS)) {
            double lo = before;
            for (int k = 0; k < MAX_PASSES && L - lo > SOLVE_POS; ++k) {
                const double mid = 0.5 * (lo + L);
                const Fit g = fit(mid);
                if (g.closes && g.h1 >= 0.0 && g.h2 >= 0.0) {
                    L = mid, H1 = g.h1, H2 = g.h2;
                } else {
                    lo = mid;
                }
            }
        }
        H1 = std::fmax(H1, 0.0), H2 = std::fmax(H2, 0.0);
        return true;
    });
    if (!found) {
        m_nError = !counted ? ERR_UNKNOWN_SOLUTION
                            : (!kickoffOk ? ERR_KICKOFF_OVERLAP : ERR_TANGENT_OVERLAP);
        return;
    }
    const SStation kick = holdpart(start, H1);
    const SStation c = btpart(kick, B, T, L);
    SStation h = holdpart(c, H2);
    if (!(norm(posOf(h) - X) <= TOL_CLOSE)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    h.tvd = X.v, h.ns = X.n, h.ew = X.e;
    storeLine(2925, {kick, c, h});
}
