// Optimum align and horizontal landing: two circular arcs, with or without a straight hold between
// them, from the start station to a target reached with a given direction.
//
//   2910 "OPT AL DLS"  arc, hold, arc; both dogleg severities given (m_dMethodParam1, 2);
//   2940 "OPT AL TAN"  arc, hold, arc; the hold's length given (m_dMethodParam3), one severity solved
//                      for both arcs;
//   2950 "OPT AL TVD"  arc, hold, arc; the depths where the hold starts and ends given
//                      (m_dMethodParam5, 6), both severities and the hold solved;
//   1940 "OPT AL CUR"  arc, arc; one severity solved for both;
//   1960 "OPT AL CD1"  arc, arc; the first severity given (m_dMethodParam1), the second solved;
//   1970 "OPT AL CD2"  arc, arc; the second severity given (m_dMethodParam2), the first solved;
//   1950 "HZ Landing"  arc, arc of one given severity (m_dMethodParam1) onto the horizontal line through
//                      the target at azimuth m_dMethodParam4, landing anywhere along it.
//
// Geometry, in tangent form. From P0 with direction t0 an arc that turns by d1 into the direction u
// has tangent length T1 = R1 tan(d1/2): its two tangent lines meet at M1 = P0 + T1 t0, and it ends at
// A = M1 + T1 u. A hold of length H along u ends at B = A + H u; the second arc (tangent length
// T2 = R2 tan(d2/2)) turns u into the arrival direction t1 and ends at X = B + T2 (u + t1). So
//     X - P0 = T1 t0 + (T1 + H + T2) u + T2 t1,    cos d1 = t0 . u,   cos d2 = u . t1.
// Each method fixes two of the unknowns (severities, hold, depths), and once one scalar is chosen the
// rest follows in closed form; the scalar is the first arc's half-angle tangent when its severity is
// given, else its tangent length T1 (2950: the hold's vertical part):
//   2910  T1 = R1 tan(d1/2): the second arc and the hold are the tangent from M1 to the circle of
//         radius R2 that leaves X backwards along -t1, in the plane of t1 and M1 - X (the only plane
//         that holds both; the arc cannot curve away from M1 and still point at it within pi).
//         Inside that circle there is no tangent: the residual is carried on continuously there and
//         such candidates are invalid.
//   1960  T1 = R1 tan(d1/2): |X - M1 - T2 t1| = T1 + T2 gives T2 = (|w|^2 - T1^2) / (2 (w . t1 + T1)),
//         w = X - M1. 1970 is 1960 solved backwards from the target.
//   1940, 2940  T1 free: as 1960 with T1 + H in place of T1; the residual is the difference of the
//         two curvatures tan(d/2) / T (times |X - P0|, to make it a pure number).
//   2950  the hold's vertical part z: tvd(A) = P5 gives T1, tvd(B) = P6 gives T2, and u must be the
//         direction from M1 to M2 = X - T2 t1; residual the difference of the two vertical parts.
//   1950  T1 = R tan(d1/2): the second arc from u onto the line, of the same radius, lands where
//         (h - 2R) tau^2 - 2 T1 tau + h = 0, tau = tan(d2/2) and h the distance from M1 to the line;
//         both roots are followed.
// Where the first arc's severity is given the residual is tan((a - d1)/2), a the angle from t0 to u:
// as well conditioned for small arcs as for large (a difference of cosines is flat at zero).
// Every root of the residual over the whole range of the scalar (arcs up to pi) is sought: a scan,
// each sign change closed by regula falsi (Illinois), the edges of the range where the residual is
// defined found by bisection, and where the residual turns back towards zero, or runs into an edge,
// a search for a hidden pair of roots; where M1 passes close to the arrival line (2910, 1950) the
// second arc's plane turns over quickly and the scan closes in there. Each root is rebuilt from its
// hold direction alone and kept only when it is valid; the shortest valid path is the solution.
//
// Readings taken where the rules read two ways:
//   - An arc of given severity may have a zero dogleg (it is a part of zero length); an arc whose
//     severity is solved must turn (dogleg above the zero test), or its severity is undefined.
//   - A part of zero length repeats the station before it with zero rates, its dls 0 as well, even
//     where the line's severity is given.
//   - A severity given negative is read as its magnitude, as putm1d stores severities.
//   - 2940 fails for a tangent below zero; a tangent of exactly zero is a curve-curve of one severity.
//   - 1950 does not test the target against the start (the target is only a point of the line); "on
//     the line" is within the zero test of it.
//   - 2950 stores the solved depths of the hold's ends (within TOL_CLOSE of P5, P6), not P5, P6.
#include <cmath>

#include "geometry/Numerics.h"
#include "geometry/Vec3.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Samples of the scan over the chosen scalar. The residuals are smooth and turn slowly; roots that
/// come closer than one step are caught by the search at turning points, so the figure sets speed,
/// not what is found.
constexpr int ALIGN_SAMPLES = 48;
/// Samples of the methods other than 2910, whose residuals bend more (a landing's quadratic, a
/// solved curvature) and which no one solves in a tight loop.
constexpr int FINE_SAMPLES = 4 * ALIGN_SAMPLES;
/// The scan's parameter x runs over [0, X_END]; the scalar is x / (1 - x) (times R1 or |X - P0|), so
/// arcs reach pi - 2e-6 and tangent lengths 1e6 |X - P0|.
constexpr double X_END = 1.0 - 1e-6;
/// Golden-section passes of the search for a hidden pair of roots at a turning point.
constexpr int PAIR_PASSES = 40;
/// Bisections that find the edge of the range where a residual is defined, to 1e-14 in the scan's
/// parameter.
constexpr int EDGE_PASSES = 46;
/// Samples on each side of a special point, at 2^-k of a grid step from it: where the first arc's
/// tangent meeting point passes close to the arrival line, the plane of the second arc turns over
/// within a short stretch and the roots crowd there.
constexpr int CLUSTER = 24;
/// A nearest approach further than this many grid steps (in tangent length) needs no cluster.
constexpr double CLUSTER_NEAR = 4.0;
/// Most roots kept from one scan; no method's residual comes near it.
constexpr int MAX_ROOTS = 24;

/// The angle d between unit directions a and b and its half-angle tangent tan(d/2), from the sine
/// |a x b| and the cosine a . b (accurate at both ends; opposite directions give tau = inf).
struct Turn {
    double d, tau;
};
Turn turnBetween(Vec3 a, Vec3 b) {
    const double c = dot(a, b), s = norm(cross(a, b));
    return {std::atan2(s, c), s / (1.0 + c)};
}

/// The problem: start point and direction, end point (a point of the landing line for 1950) and
/// arrival direction, and a unit direction square to t1 for the plane of a degenerate second arc.
struct Align {
    Vec3 P0, t0, X, t1, side;
    double D;  ///< |X - P0| [L]
};

/// What a method gives. A severity of 0 is solved; K1 = K2 is imposed when `equal`; H < 0 is solved.
struct Givens {
    int code;
    double K1, K2;  ///< given curvatures [rad/L], 0 when solved
    bool equal;     ///< both arcs of one solved curvature
    double H;       ///< given hold [L]; negative when solved
    double V5, V6;  ///< 2950: depths of the hold's ends [L]
};

/// One solution candidate, and after rebuild() the valid path.
struct Path {
    Vec3 u{0, 0, 0};            ///< direction of the hold (end of the first arc)
    Vec3 X{0, 0, 0};            ///< end of the second arc
    double T1 = 0.0, T2 = 0.0;  ///< tangent lengths of the arcs [L]
    double H = 0.0;             ///< hold [L]
    double d1 = 0.0, d2 = 0.0;  ///< doglegs [rad]
    double K1 = 0.0, K2 = 0.0;  ///< curvatures [rad/L]
    double length = 0.0;        ///< course from P0 to X [L]
};

/// Regula falsi (Illinois) on a bracket [a, b] of f, f(a) f(b) < 0; an undefined or NaN value
/// falls back to bisection. Stops when the residual (an angle or a pure number of that size) is
/// within SOLVE_ANG of zero, when the bracket is below 1e-15 (the scalar lives in [0, 1]) or after
/// MAX_PASSES; the rebuilt path is judged afterwards whatever the stop.
template <typename F>
double closeBracket(const F& f, double a, double fa, double b, double fb) {
    Path scratch;
    for (int pass = 0; pass < MAX_PASSES; ++pass) {
        double c = b - fb * (b - a) / (fb - fa);
        if (!(c > std::fmin(a, b) && c < std::fmax(a, b))) c = 0.5 * (a + b);
        double fc = 0.0;
        if (!f(c, fc, scratch) || !std::isfinite(fc)) {
            c = 0.5 * (a + b);
            if (!f(c, fc, scratch) || !std::isfinite(fc)) return c;
        }
        if (!(std::fabs(fc) > SOLVE_ANG)) return c;
        if (fc * fb < 0.0) {
            a = b;
            fa = fb;
        } else {
            fa *= 0.5;
        }
        b = c;
        fb = fc;
        if (!(std::fabs(b - a) > 1e-15)) break;
    }
    return b;
}

/// A point of the scan to close in on (x < 0: none), with samples at 2^-1 ... 2^-levels of a grid
/// step on each side of it.
struct Special {
    double x;
    int levels;
};

/// Every root of f(x, r, path) over [0, X_END] into roots[0 .. count). f returns false where the
/// residual is undefined; no bracket spans such a sample.
/// The samples, in order, are the grid points and the edges of the ranges where the residual is
/// defined (found by bisection between a defined and an undefined grid point: near an edge the
/// construction changes fast, a tangent length growing as a square root, so roots crowd there).
/// A sign change between two consecutive samples is closed by closeBracket. A sample where the
/// residual turns back towards zero without reaching it may hide a pair of roots within the two
/// neighbouring intervals: when the steeper side, carried on for one more step, would reach zero, a
/// golden-section search for the residual's extreme over the two intervals decides, and a crossing found gives two brackets. An interval that ends at
/// an edge, where the residual bends like a square root and no parabola says how far, is always
/// searched so.
template <int Samples, typename F>
int scanRoots(const F& f, double* roots, Special special) {
    int count = 0;
    auto add = [&](double x) {
        if (count < MAX_ROOTS) roots[count++] = x;
    };
    struct Sample {
        double x = 0.0, r = 0.0;
        bool ok = false;
        bool edge = false;  ///< an edge of a range where the residual is defined
    } last2, last, grid;
    Path scratch;
    // Golden-section search of [s0.x, s2.x] for the residual's extreme towards zero; a crossing
    // found gives two brackets.
    auto probe = [&](const Sample& s0, const Sample& s2) {
        const double sgn = s0.r > 0.0 ? 1.0 : -1.0;
        double lo = s0.x, hi = s2.x;
        const double g = 0.3819660112501051;  // (3 - sqrt 5) / 2
        for (int pass = 0; pass < PAIR_PASSES; ++pass) {
            const double m1 = lo + g * (hi - lo), m2 = hi - g * (hi - lo);
            double r1 = 0.0, r2 = 0.0;
            if (!f(m1, r1, scratch) || !f(m2, r2, scratch)) return;
            if (r1 * sgn < 0.0 || r2 * sgn < 0.0) {
                const double m = r1 * sgn < 0.0 ? m1 : m2, rm = r1 * sgn < 0.0 ? r1 : r2;
                add(closeBracket(f, s0.x, s0.r, m, rm));
                add(closeBracket(f, m, rm, s2.x, s2.r));
                return;
            }
            if (r1 * sgn < r2 * sgn)
                hi = m2;
            else
                lo = m1;
        }
    };
    // A turning point s1 between s0 and s2 is searched when the steeper of its two sides, carried
    // on for one more step, would reach zero: a dip that deep may be a kink (the first arc's plane
    // turning over as u passes t0) as well as a smooth bend.
    auto turning = [&](const Sample& s0, const Sample& s1, const Sample& s2) {
        const double sgn = s1.r > 0.0 ? 1.0 : -1.0;
        if (!(sgn * (s1.r - s0.r) < 0.0 && sgn * (s2.r - s1.r) > 0.0)) return;
        const double rise = std::fmax(std::fabs(s0.r - s1.r), std::fabs(s2.r - s1.r));
        if (std::fabs(s1.r) < rise) probe(s0, s2);
    };
    auto push = [&](const Sample& c) {
        if (c.ok && c.r == 0.0) add(c.x);
        if (c.ok && last.ok && last.r * c.r < 0.0) add(closeBracket(f, last.x, last.r, c.x, c.r));
        if (c.ok && last.ok && last.r * c.r > 0.0 && (c.edge || last.edge)) probe(last, c);
        if (c.ok && last.ok && last2.ok && last2.r * last.r > 0.0 && last.r * c.r > 0.0 &&
            !c.edge && !last.edge && !last2.edge)
            turning(last2, last, c);
        last2 = last;
        last = c;
    };
    // The grid, with a cluster of samples closing in on the special point from both sides.
    double xs[Samples + 2 * CLUSTER + 2];
    int nx = 0;
    const double step = X_END / Samples;
    for (int i = 0; i <= Samples; ++i) {
        const double x = step * i;
        if (special.x > x - step && special.x < x) {
            for (int k = 1; k <= special.levels; ++k) {
                const double xk = special.x - step * std::ldexp(1.0, -k);
                if (xk > x - step) xs[nx++] = xk;
            }
            xs[nx++] = special.x;
            for (int k = special.levels; k >= 1; --k) {
                const double xk = special.x + step * std::ldexp(1.0, -k);
                if (xk < x) xs[nx++] = xk;
            }
        }
        xs[nx++] = x;
    }
    // The samples are independent of each other: evaluated first, in one loop, they overlap in
    // the processor (each alone is a chain of square roots and divisions).
    double rs[sizeof xs / sizeof xs[0]];
    bool oks[sizeof xs / sizeof xs[0]];
    for (int i = 0; i < nx; ++i) {
        Path own;
        oks[i] = f(xs[i], rs[i], own) && std::isfinite(rs[i]);
    }
    for (int i = 0; i < nx; ++i) {
        Sample cur;
        cur.x = xs[i];
        cur.r = rs[i];
        cur.ok = oks[i];
        if (i > 0 && cur.ok != grid.ok) {
            Sample edge = cur.ok ? cur : grid;
            double out = cur.ok ? grid.x : cur.x;
            for (int pass = 0; pass < EDGE_PASSES; ++pass) {
                const double mid = 0.5 * (edge.x + out);
                double r = 0.0;
                if (f(mid, r, scratch) && std::isfinite(r))
                    edge.x = mid, edge.r = r;
                else
                    out = mid;
            }
            edge.edge = true;
            if (edge.x != cur.x && edge.x != grid.x) push(edge);
        }
        push(cur);
        grid = cur;
    }
    return count;
}

/// The candidate rebuilt from its hold direction u alone, and judged. The doglegs are the angles
/// t0 -> u and u -> t1 (each below pi - 1e-6); a given curvature is used as given, a solved one is
/// tan(d/2) / T of the candidate (one value for both arcs when they must agree: the mean), and must
/// exceed the zero test; the tangent lengths follow, and the hold is the given one or the projection
/// on u of what the arcs leave. Valid when the hold is not negative (beyond SOLVE_POS, then taken as
/// 0), the path closes on its end within TOL_CLOSE and, for 2950, its hold starts and ends at the
/// given depths within TOL_CLOSE.
bool rebuild(const Align& g, const Givens& giv, Path& p) {
    if (!(p.T1 >= 0.0 && p.T2 >= 0.0)) return false;
    p.u = (1.0 / norm(p.u)) * p.u;
    const Turn a = turnBetween(g.t0, p.u), b = turnBetween(p.u, g.t1);
    if (!(a.d <= PI - TOL_ZERO && b.d <= PI - TOL_ZERO)) return false;
    double K1 = giv.K1 > 0.0 ? giv.K1 : a.tau / p.T1;
    double K2 = giv.K2 > 0.0 ? giv.K2 : b.tau / p.T2;
    if (giv.equal) K1 = K2 = 0.5 * (K1 + K2);
    if (!(K1 > TOL_ZERO && K2 > TOL_ZERO) || !std::isfinite(K1) || !std::isfinite(K2)) return false;
    const double T1 = a.tau / K1, T2 = b.tau / K2;
    const Vec3 rest = p.X - g.P0 - T1 * (g.t0 + p.u) - T2 * (p.u + g.t1);
    double H = giv.H >= 0.0 ? giv.H : dot(rest, p.u);
    if (!(H >= -SOLVE_POS)) return false;
    H = std::fmax(H, 0.0);
    if (!(norm(rest - H * p.u) <= TOL_CLOSE)) return false;
    if (giv.code == 2950) {
        const double tvdA = g.P0.v + T1 * (g.t0.v + p.u.v);
        if (!(std::fabs(tvdA - giv.V5) <= TOL_CLOSE)) return false;
        if (!(std::fabs(tvdA + H * p.u.v - giv.V6) <= TOL_CLOSE)) return false;
    }
    p.T1 = T1, p.T2 = T2, p.H = H, p.d1 = a.d, p.d2 = b.d, p.K1 = K1, p.K2 = K2;
    p.length = a.d / K1 + H + b.d / K2;
    return true;
}

/// x in [0, 1) to the half-angle tangent x / (1 - x).
double halfAngle(double x) {
    return x / (1.0 - x);
}

/// tan((a - d) / 2) for a the angle from t0 to u and d the angle of half-angle tangent tau: the
/// residual of a first arc of given curvature, bounded and as well conditioned for small arcs as
/// for large ones (a cosine difference is flat at zero).
double angleGap(Vec3 t0, Vec3 u, double tau) {
    // tan(a/2) = s / (1 + c) with s, c the sine and cosine of a; one division for the difference.
    const double c1 = 1.0 + dot(t0, u), s = norm(cross(t0, u));
    return (s - tau * c1) / (c1 + tau * s);
}

/// The residuals of the methods (see the head of the file). Each fills the candidate's u, X, T1, T2
/// (and H where it is part of the construction) and returns false where the construction fails.
struct Residuals {
    const Align& g;
    const Givens& giv;

    /// 2910: the second arc and the hold as the tangent from M1 to the circle of radius R2 that
    /// leaves X backwards. In the plane of e = -t1 and the side m towards M1, M1 lies p ahead and h
    /// aside; the circle's centre is R2 aside. With y = h - R2, rho^2 = p^2 + y^2 and L the tangent's
    /// length sqrt(rho^2 - R2^2) (none when M1 is inside the circle), the backward direction at the
    /// touching point is ((L p - R2 y), (L y + R2 p)) / rho^2; the second dogleg is its angle from e.
    bool chc(double x, double& r, Path& p) const {
        const double tau1 = halfAngle(x);
        const double R2 = 1.0 / giv.K2;
        p.T1 = tau1 / giv.K1;
        const Vec3 w = g.P0 + p.T1 * g.t0 - g.X;
        const double ahead = -dot(w, g.t1);
        const Vec3 q = w + ahead * g.t1;
        const double h = norm(q);
        const Vec3 m = h > TOL_ZERO ? (1.0 / h) * q : g.side;
        const double y = h - R2;
        const double rho2 = ahead * ahead + y * y;
        const double L2 = rho2 - R2 * R2;
        if (!(rho2 > 0.0)) return false;
        // Inside the circle there is no tangent: the residual is carried on with L = 0 (the
        // direction normalised), continuous across the circle, and the candidate marked invalid.
        const double L = L2 > 0.0 ? std::sqrt(L2) : 0.0;
        const double k = L2 > 0.0 ? 1.0 / rho2 : 1.0 / (R2 * std::sqrt(rho2));
        const double vx = k * (L * ahead - R2 * y), vy = k * (L * y + R2 * ahead);
        p.u = vx * g.t1 - vy * m;
        p.X = g.X;
        p.H = L - p.T1;
        // A second arc beyond pi, or no tangent at all, is no solution.
        p.T2 = vy >= 0.0 && L2 >= 0.0 ? R2 * vy / (1.0 + vx) : -1.0;
        r = angleGap(g.t0, p.u, tau1);
        return true;
    }

    /// 1940, 1960, 2940: given T1 and the hold Hg (0 for a curve-curve), T2 from
    /// |w - T2 t1| = T1 + Hg + T2, w = X - M1.
    bool second(double T1, double Hg, Path& p) const {
        const Vec3 w = g.X - (g.P0 + T1 * g.t0);
        const double a = T1 + Hg;
        const double den = 2.0 * (dot(w, g.t1) + a);
        if (!(std::fabs(den) > 0.0)) return false;
        p.T1 = T1;
        p.T2 = (dot(w, w) - a * a) / den;
        const double S = a + p.T2;
        if (!(S > TOL_ZERO)) return false;
        p.u = (1.0 / S) * (w - p.T2 * g.t1);
        p.X = g.X;
        p.H = Hg;
        return true;
    }

    /// 1960 (and 1970 backwards): the first curvature given.
    bool cd1(double x, double& r, Path& p) const {
        const double tau1 = halfAngle(x);
        if (!second(tau1 / giv.K1, 0.0, p)) return false;
        r = angleGap(g.t0, p.u, tau1);
        return true;
    }

    /// 1940 and 2940: one curvature for both arcs; the residual is D (K1 - K2).
    bool equal(double x, double& r, Path& p) const {
        const double T1 = g.D * x / (1.0 - x);
        if (!(T1 > 0.0) || !second(T1, giv.H, p) || !(p.T2 > 0.0)) return false;
        r = g.D * (turnBetween(g.t0, p.u).tau / p.T1 - turnBetween(p.u, g.t1).tau / p.T2);
        return true;
    }

    /// 2950: the hold from depth V5 to V6. With z the hold's vertical part, tvd(A) = V5 gives
    /// T1 = (V5 - P0.tvd) / (t0.v + z) and tvd(B) = V6 gives T2 = (X.tvd - V6) / (z + t1.v); the hold
    /// then runs from M1 to M2 = X - T2 t1 and must have that vertical part. z covers [-1, 1].
    bool tvd(double x, double& r, Path& p) const {
        const double z = 2.0 * x / X_END - 1.0;
        const double den1 = g.t0.v + z, den2 = g.t1.v + z;
        if (!is_nonzero(den1) || !is_nonzero(den2)) return false;
        p.T1 = (giv.V5 - g.P0.v) / den1;
        p.T2 = (g.X.v - giv.V6) / den2;
        if (!(p.T1 > 0.0 && p.T2 > 0.0)) return false;
        const Vec3 w = g.X - p.T2 * g.t1 - (g.P0 + p.T1 * g.t0);
        const double S = norm(w);
        if (!(S > TOL_ZERO)) return false;
        p.u = (1.0 / S) * w;
        p.X = g.X;
        p.H = S - p.T1 - p.T2;
        r = p.u.v - z;
        return true;
    }

    /// 1950: the landing of one curvature K = K1 = K2 on the line X + k t1; `branch` picks the
    /// smaller (0) or larger (1) root tau of (h - 2R) tau^2 - 2 T1 tau + h = 0.
    bool land(double x, double& r, Path& p, int branch) const {
        const double tau1 = halfAngle(x);
        const double R = 1.0 / giv.K1;
        p.T1 = R * tau1;
        const Vec3 w0 = g.X - (g.P0 + p.T1 * g.t0);
        const double along = dot(w0, g.t1);
        const Vec3 wp = w0 - along * g.t1;
        const double h = norm(wp);
        if (!(h > TOL_ZERO)) return false;
        const double a = h - 2.0 * R;
        const double disc = p.T1 * p.T1 - a * h;
        if (!(disc >= 0.0)) return false;
        const double sq = std::sqrt(disc);
        double tau2 = 0.0;
        if (branch == 0) {
            if (!(p.T1 + sq > 0.0)) return false;
            tau2 = h / (p.T1 + sq);
        } else {
            if (!(a > 0.0)) return false;
            tau2 = (p.T1 + sq) / a;
        }
        const double s2 = 2.0 * tau2 / (1.0 + tau2 * tau2);
        const double c2 = (1.0 - tau2 * tau2) / (1.0 + tau2 * tau2);
        p.u = (s2 / h) * wp + c2 * g.t1;
        p.T2 = R * tau2;
        const double k = h * c2 / s2 + p.T2 - along;
        p.X = g.X + k * g.t1;
        p.H = 0.0;
        r = angleGap(g.t0, p.u, tau1);
        return true;
    }
};

/// The scan parameter x (tangent length R tan(d1/2), R = 1/K1) at which the first arc's tangent
/// meeting point P0 + T1 t0 comes nearest to the line through X along t1, when it comes near enough
/// for the second arc's plane to turn over between two grid samples (nearer than CLUSTER_NEAR grid
/// steps of T1 there), with as many levels of samples as close in from a grid step to the miss
/// distance and three more (at most CLUSTER). None when the lines do not come that near, when the
/// nearest point is behind the start or the two lines are parallel (then the distance changes
/// slowly everywhere).
Special nearestApproach(const Align& g, double K1, int samples) {
    const Special none{-1.0, 0};
    const double c = dot(g.t0, g.t1), den = 1.0 - c * c;
    if (!(den > TOL_ZERO)) return none;
    const Vec3 w = g.X - g.P0;
    const double T = (dot(w, g.t0) - c * dot(w, g.t1)) / den;
    if (!(T > 0.0)) return none;
    const double lambda = T * c - dot(w, g.t1);
    const double miss = norm(g.P0 + T * g.t0 - (g.X + lambda * g.t1));
    const double tau = T * K1, x = tau / (1.0 + tau);
    const double gridStep = (X_END / samples) / ((1.0 - x) * (1.0 - x) * K1);
    if (!(miss < CLUSTER_NEAR * gridStep)) return none;
    const double levels = miss > 0.0 ? std::ceil(std::log2(gridStep / miss)) + 3.0 : CLUSTER;
    return {x, static_cast<int>(std::fmin(std::fmax(levels, 1.0), CLUSTER))};
}

/// The shortest valid path of the method, or false when there is none.
bool solveAlign(const Align& g, const Givens& giv, Path& best) {
    const Residuals res{g, giv};
    bool found = false;
    double roots[MAX_ROOTS];
    auto consider = [&](Path p) {
        if (rebuild(g, giv, p) && (!found || p.length < best.length)) {
            best = p;
            found = true;
        }
    };
    const bool fine = giv.code != 2910;
    const int samples = fine ? FINE_SAMPLES : ALIGN_SAMPLES;
    auto run = [&](const auto& f, Special special) {
        const int count = fine ? scanRoots<FINE_SAMPLES>(f, roots, special)
                               : scanRoots<ALIGN_SAMPLES>(f, roots, special);
        for (int i = 0; i < count; ++i) {
            Path p;
            double r = 0.0;
            if (f(roots[i], r, p)) consider(p);
        }
    };
    switch (giv.code) {
    case 2910:
        run([&res](double x, double& r, Path& p) { return res.chc(x, r, p); },
            nearestApproach(g, giv.K1, samples));
        break;
    case 1940:
    case 2940:
        run([&res](double x, double& r, Path& p) { return res.equal(x, r, p); }, Special{-1.0, 0});
        break;
    case 2950:
        run([&res](double x, double& r, Path& p) { return res.tvd(x, r, p); }, Special{-1.0, 0});
        break;
    case 1960:
        run([&res](double x, double& r, Path& p) { return res.cd1(x, r, p); }, Special{-1.0, 0});
        break;
    case 1950:
        for (int branch = 0; branch < 2; ++branch)
            run([&res, branch](double x, double& r, Path& p) { return res.land(x, r, p, branch); },
                nearestApproach(g, giv.K1, samples));
        break;
    default: break;
    }
    return found;
}

/// A unit direction square to t (for the plane of an arc whose plane the geometry leaves open).
Vec3 squareTo(Vec3 t) {
    const Vec3 axis = std::fabs(t.v) < 0.9 ? Vec3{0.0, 0.0, 1.0} : Vec3{1.0, 0.0, 0.0};
    const Vec3 s = cross(t, axis);
    return (1.0 / norm(s)) * s;
}

/// The problem from P0, t0 to X, t1.
Align makeAlign(Vec3 P0, Vec3 t0, Vec3 X, Vec3 t1) {
    return {P0, t0, X, t1, squareTo(t1), norm(X - P0)};
}

/// 1970: the problem run backwards (from X against t1 to P0 against t0) as a 1960 with the second
/// curvature first, and the result turned forwards again.
bool solveBackwards(const Align& g, double K2, Path& best) {
    const Align back = makeAlign(g.X, -1.0 * g.t1, g.P0, -1.0 * g.t0);
    const Givens giv{1960, K2, 0.0, false, 0.0, 0.0, 0.0};
    Path p;
    if (!solveAlign(back, giv, p)) return false;
    best = p;
    best.u = -1.0 * p.u;
    best.X = g.X;
    best.T1 = p.T2, best.T2 = p.T1, best.d1 = p.d2, best.d2 = p.d1, best.K1 = p.K2, best.K2 = p.K1;
    return true;
}

}  // namespace

// Solves a line of optimum align (2910, 2940, 2950, 1940, 1960, 1970) or a landing (1950) from
// m_stnPrev (unit direction stored) and writes it when `store`. The landing takes its severity and
// azimuth from the arguments, the other codes their settings from m_dMethodParamN (a negative
// severity read as its magnitude, as putm1d stores severities). Returns m_nError.
// The end of the first arc goes into m_stnA, the end of the line into m_stnC (md from
// m_stnPrev.md); stored, the line's stations are these and, for the curve-hold-curve, the end of the
// hold between them: code on the first, 1 on the others, the target on the last, aux1 and aux2 (the
// settings record) kept. An arc has dls, getfo's toolface, build, turn by daz2hdls and dl; a hold zero
// rates; a part of zero length repeats the station before it with zero rates. The end takes the
// target's position and arrival direction exactly (a landing: the target's depth, its own north and
// east on the line, inc pi/2 and the landing azimuth).
// Failures, tested in this order: -4 when the plan lacks the line's stations (stored lines only);
// for the optimum-align codes -16 when the target has no arrival direction and -12 when it lies
// within the zero test of the start; then
//   2910  -1 DLS1 zero, -2 DLS2 zero, -1 no valid path;
//   2940  -13 tangent negative, or no valid path;
//   2950  -17 no valid path;
//   1940  -12 no curve needed (arriving with the start direction on the start line, both within
//         STRAIGHT_COS), -4 no valid path;
//   1960  -1 DLS1 zero, -12 as 1940, -1 no valid path;
//   1970  -2 DLS2 zero, -12 as 1940, -2 no valid path;
//   1950  -1 severity zero, -12 the start already on the line (within the zero test) heading along
//         it (within STRAIGHT_COS), -1 no landing.
int CPlan::optalign(int code, double dls, double azi, bool store) {
    const int n = code / 1000 + 1;
    if (store && !hasStation(m_nPrev + n)) return m_nError = ERR_UNKNOWN_SOLUTION;
    const bool landing = code == 1950;
    if (!landing && !m_target.hasAngles) return m_nError = ERR_NO_TARGET;
    Vec3 t1{0, 0, 0};
    vector(landing ? HALF_PI : m_target.inc, landing ? azi : m_target.azi, t1.e, t1.n, t1.v);
    if (landing) t1.v = 0.0;
    const Align g = makeAlign({m_stnPrev.ew, m_stnPrev.ns, m_stnPrev.tvd},
                              {m_stnPrev.ue, m_stnPrev.un, m_stnPrev.uv},
                              {m_target.ew, m_target.ns, m_target.tvd}, t1);
    if (!landing && !is_nonzero(g.D)) return m_nError = ERR_IN_LINE;
    const double K1 = std::fabs(landing ? dls : m_dMethodParam1), K2 = std::fabs(m_dMethodParam2);
    const bool noCurve =
        dot(g.t0, g.t1) >= STRAIGHT_COS && dot(g.t0, g.X - g.P0) >= STRAIGHT_COS * g.D;
    Givens giv{code, 0.0, 0.0, false, -1.0, 0.0, 0.0};
    int none = ERR_UNKNOWN_SOLUTION;  // the code of "no valid path"
    switch (code) {
    case 2910:
        if (is_zero(K1)) return m_nError = ERR_BUILD_TURN;
        if (is_zero(K2)) return m_nError = ERR_BUILD_TURN2;
        giv.K1 = K1, giv.K2 = K2, none = ERR_BUILD_TURN;
        break;
    case 2940:
        if (m_dMethodParam3 < 0.0) return m_nError = ERR_REDUCE_TANGENT;
        giv.equal = true, giv.H = m_dMethodParam3, none = ERR_REDUCE_TANGENT;
        break;
    case 2950:
        giv.V5 = m_dMethodParam5, giv.V6 = m_dMethodParam6, none = ERR_TVD_UNREACHABLE;
        break;
    case 1940:
    case 1960:
    case 1970:
        if (code == 1960 && is_zero(K1)) return m_nError = ERR_BUILD_TURN;
        if (code == 1970 && is_zero(K2)) return m_nError = ERR_BUILD_TURN2;
        if (noCurve) return m_nError = ERR_IN_LINE;
        giv.H = 0.0;
        giv.equal = code == 1940;
        if (code == 1960) giv.K1 = K1, none = ERR_BUILD_TURN;
        if (code == 1970) giv.K2 = K2, none = ERR_BUILD_TURN2;
        break;
    case 1950: {
        if (is_zero(K1)) return m_nError = ERR_BUILD_TURN;
        const Vec3 off = g.P0 - g.X;
        if (dot(g.t0, t1) >= STRAIGHT_COS && !is_nonzero(norm(off - dot(off, t1) * t1)))
            return m_nError = ERR_IN_LINE;
        giv.K1 = giv.K2 = K1, giv.H = 0.0, none = ERR_BUILD_TURN;
        break;
    }
    default: return m_nError = ERR_UNKNOWN_SOLUTION;
    }

    Path p;
    const bool found =
        code == 1970 ? solveBackwards(g, K2, p) && rebuild(g, giv, p) : solveAlign(g, giv, p);
    if (!found) return m_nError = none;

    auto arc = [this](const SStation& from, SStation& to, double d, double K) {
        const double L = d > 0.0 ? d / K : 0.0;
        to.md = from.md + L;
        to.dls = to.tf = to.build = to.turn = to.dl = 0.0;
        if (!(L > 0.0)) return;
        double dl = 0.0, daz = 0.0;
        to.dls = K;
        to.tf = getfo(from.inc, from.azi, to.inc, to.azi, dl, daz);
        to.build = (to.inc - from.inc) / L;
        to.turn = daz2hdls(getdaz(to.azi - from.azi), L, from.inc, to.build);
        to.dl = d;
    };
    SStation a = m_stnPrev;
    a.tvd = m_stnPrev.tvd + p.T1 * (m_stnPrev.uv + p.u.v);
    a.ns = m_stnPrev.ns + p.T1 * (m_stnPrev.un + p.u.n);
    a.ew = m_stnPrev.ew + p.T1 * (m_stnPrev.ue + p.u.e);
    if (p.d1 > 0.0) {
        a.inc = acos_u(p.u.v);
        a.azi = tangle(p.u.e, p.u.n);
    }
    vector(a.inc, a.azi, a.ue, a.un, a.uv);
    arc(m_stnPrev, a, p.d1, p.K1);

    SStation mid = a;
    mid.md = a.md + p.H;
    mid.tvd = a.tvd + p.H * p.u.v;
    mid.ns = a.ns + p.H * p.u.n;
    mid.ew = a.ew + p.H * p.u.e;
    mid.dls = mid.tf = mid.build = mid.turn = mid.dl = 0.0;

    SStation c = mid;
    c.tvd = m_target.tvd;
    c.ns = landing ? p.X.n : m_target.ns;
    c.ew = landing ? p.X.e : m_target.ew;
    const double endInc = landing ? HALF_PI : m_target.inc, endAzi = landing ? azi : m_target.azi;
    if (p.d2 > 0.0) c.inc = endInc, c.azi = endAzi;
    vector(c.inc, c.azi, c.ue, c.un, c.uv);
    arc(mid, c, p.d2, p.K2);
    // The stored end direction is the one asked for, even after a second arc of zero length.
    c.inc = endInc, c.azi = endAzi;
    vector(c.inc, c.azi, c.ue, c.un, c.uv);
    m_stnA = a;
    m_stnC = c;
    if (!store) return m_nError = ERR_NONE;

    if (n == 3)
        storeLine(static_cast<short>(code), {m_stnA, mid, m_stnC});
    else
        storeLine(static_cast<short>(code), {m_stnA, m_stnC});
    return m_nError;
}

void CPlan::meth_optdls() {
    optalign(2910, 0.0, 0.0, true);
}
void CPlan::meth_opttan() {
    optalign(2940, 0.0, 0.0, true);
}
void CPlan::meth_opttvd() {
    optalign(2950, 0.0, 0.0, true);
}
// Variant 0 "OPT AL CUR" (1940), 1 "OPT AL CD1" (1960), 2 "OPT AL CD2" (1970); any other -4.
void CPlan::meth_optcc(int variant) {
    static constexpr int kCodes[] = {1940, 1960, 1970};
    if (variant < 0 || variant > 2) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    optalign(kCodes[variant], 0.0, 0.0, true);
}

int CPlan::meth_horlanc(double dls, double azi) {
    vector(m_stnPrev.inc, m_stnPrev.azi, m_stnPrev.ue, m_stnPrev.un, m_stnPrev.uv);
    return optalign(1950, dls, azi, false);
}

void CPlan::meth_horlan() {
    optalign(1950, m_dMethodParam1, m_dMethodParam4, true);
}
