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
//   1940, 2940  T1 free: as 1960 with T1 + H in place of T1; the residual compares the squared
//         curvatures of the two arcs.
//   2950  the hold's vertical part z: tvd(A) = P5 gives T1, tvd(B) = P6 gives T2, and u must be the
//         direction from M1 to M2 = X - T2 t1; residual the difference of the two vertical parts,
//         weighted by both tangent lengths (no false zero where one of them grows without bound).
//   1950  T1 = R tan(d1/2): the second arc from u onto the line, of the same radius, lands where
//         (h - 2R) tau^2 - 2 T1 tau + h = 0, tau = tan(d2/2) and h the distance from M1 to the line;
//         both roots are followed.
// Where the first arc's severity is given the residual is sin^2(a/2) - sin^2(d1/2) (times a positive
// factor), a the angle from t0 to u, with sin^2(a/2) = |t0 - u|^2 / 4 taken from the vector
// difference: as exact for small arcs as for large, and smooth where u passes t0, so that a pair of
// roots of very small first arcs is a dip of the residual, not a kink.
// Every root of the residual where a valid path may lie is sought. That range is worked out first in
// closed form where it can be (2910: the hold is not negative; 1940, 1960, 2940: the second tangent
// length is not negative; 2950: both tangent lengths positive), so that the samples are spent there
// and a valid range narrower than a step is not stepped over. Then a scan, a guard step beyond each
// end of the range; each sign change closed by Brent's method to a few units in the last place; the
// edges of the range where the residual is defined found by bisection; where the residual turns back
// towards zero, runs into an edge or ends the range close to zero, a search for a hidden pair of
// roots or a double root. Clusters of samples close in where the residual changes fast: where M1
// passes close to the arrival line (2910, 1950; the second arc's plane turns over), after an arc of
// no turn (a pair of roots of very small first arcs), after the circle's edge (2910; the tangent
// grows as a square root), at 2950's poles of a tangent length and at the ends of the stretches
// where a landing branch has no candidate (they may be narrower than a step). Where the hold comes
// to zero the problem folds and the residual may only touch zero, over a stretch far shorter than
// a step: 2910 gives such points a sample of their own, 2950 scans for them and looks again around
// each. Each root is rebuilt from its hold direction alone and kept only when it is valid; the
// shortest valid path is the solution.
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
#include <limits>

#include "geometry/Numerics.h"
#include "geometry/Vec3.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Intervals of the uniform part of 2910's scan, over the range of holds of zero and more (the only
/// stretch where a valid path lies). The residual is smooth there and turns slowly; roots that come
/// closer than one step are caught by the search at turning points, so the figure sets speed, not
/// what is found.
constexpr int ALIGN_SAMPLES = 16;
/// Intervals of the methods other than 2910, whose residuals bend more (a landing's quadratic, a
/// solved curvature) and which no one solves in a tight loop.
constexpr int FINE_SAMPLES = 96;
/// Intervals of a second scan of the residual over two steps of the first, where 2950's hold comes
/// to zero.
constexpr int LOCAL_SAMPLES = 32;
/// The scan's parameter x runs over [0, X_END]; the scalar is x / (1 - x) (times R1 or |X - P0|), so
/// arcs reach pi - 2e-6 and tangent lengths 1e6 |X - P0|.
constexpr double X_END = 1.0 - 1e-6;
/// Golden-section passes of the search for a hidden pair of roots at a turning point (the interval
/// shrinks to 0.618^40 = 4e-9 of its width).
constexpr int PAIR_PASSES = 40;
/// Bisections that find the edge of the range where a residual is defined, to 1e-14 in the scan's
/// parameter.
constexpr int EDGE_PASSES = 46;
/// Most levels of a cluster of samples at 2^-k of a grid step from a special point, where the
/// residual changes on a far shorter scale than a step and roots crowd: where the first arc's tangent
/// meeting point passes close to the arrival line (the plane of the second arc turns over), the
/// circle's edge, a pole of a tangent length, the end of a stretch without candidates.
constexpr int CLUSTER = 24;
/// A nearest approach further than this many grid steps (in tangent length) needs no cluster.
constexpr double CLUSTER_NEAR = 4.0;
/// Most levels of the cluster after x = 0 (a first arc of nearly no turn), to 2^-40 of a step.
constexpr int START_LEVELS = 40;
/// Most levels of any cluster.
constexpr int MAX_LEVELS = START_LEVELS;
/// A residual at an end of the range where roots may lie that is below this part of the largest
/// residual of the scan counts as zero there (rounding leaves a double root's residual about the
/// size of the rounding of its terms) [-].
constexpr double END_SMALL = 1e-9;
/// A bracket is closed when it spans no more than this many units in the last place of x.
constexpr double BRACKET_ULPS = 4.0;
/// An interpolation step of Brent's method below this many units in the last place of x ends it.
constexpr double STEP_ULPS = 64.0;
/// A residual within this many units in the last place of the residuals at a bracket's ends is zero.
constexpr double NOISE_ULPS = 16.0;
/// Most roots kept from one scan; no method's residual comes near it.
constexpr int MAX_ROOTS = 32;
/// Most special points of one scan: a nearest approach, an arc of no turn and four ends of stretches
/// without candidates (1950).
constexpr int MAX_SPECIALS = 6;
/// Most samples of one scan: the uniform part with two guards and the clusters.
constexpr int MAX_SAMPLES = FINE_SAMPLES + 3 + MAX_SPECIALS * (2 * MAX_LEVELS + 1);

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

/// One value of a residual: where, the value, whether it is defined there, whether the sample is
/// an edge of a range where it is defined, and whether it is an end of the range where roots may lie.
struct Sample {
    double x, r;
    bool ok, edge;
    bool first, last;
};

/// Which sides of a special point its cluster covers.
enum Sides { BEFORE = 1, AFTER = 2, AROUND = 3 };
/// A point of the scan to close in on, with samples at 2^-1 ... 2^-levels of a grid step from it
/// before it, after it or on both sides.
struct Special {
    double x = 0.0;
    int levels = 0;
    int sides = AROUND;
};

/// The points of a scan in increasing order into out; returns their number. The uniform part spans
/// [xa, xb] in n intervals, with a guard one step beyond each end that is not an end of [0, X_END]
/// (a root just outside is still bracketed and a turning point at the end still seen); the clusters
/// of the special points sp[0 .. nsp) are merged in.
int scanPoints(double xa, double xb, int n, const Special* sp, int nsp, double* out) {
    int count = 0;
    const double step = (xb - xa) / n;
    auto put = [&](double* to, int& k, double x) {
        if (x >= 0.0 && x <= X_END && (k == 0 || x > to[k - 1])) to[k++] = x;
    };
    if (xa > 0.0) put(out, count, std::fmax(0.0, xa - step));
    for (int i = 0; i <= n; ++i) put(out, count, i == n ? xb : xa + step * i);
    if (xb < X_END) put(out, count, std::fmin(X_END, xb + step));
    for (int j = 0; j < nsp && count > 0; ++j) {
        const Special& c = sp[j];
        if (c.levels <= 0 || !(c.x >= out[0] && c.x <= out[count - 1])) continue;
        double cl[2 * MAX_LEVELS + 1];
        int ncl = 0;
        if (c.sides & BEFORE)
            for (int k = 1; k <= c.levels; ++k) put(cl, ncl, c.x - step * std::ldexp(1.0, -k));
        put(cl, ncl, c.x);
        if (c.sides & AFTER)
            for (int k = c.levels; k >= 1; --k) put(cl, ncl, c.x + step * std::ldexp(1.0, -k));
        double merged[MAX_SAMPLES];
        int m = 0, a = 0, b = 0;
        while ((a < count || b < ncl) && m < MAX_SAMPLES) {
            const double x = b >= ncl || (a < count && out[a] <= cl[b]) ? out[a++] : cl[b++];
            put(merged, m, x);
        }
        for (int k = 0; k < m; ++k) out[k] = merged[k];
        count = m;
    }
    return count;
}

/// Every root of a residual from its samples. F is called as f(x, r) and returns false where the
/// residual is undefined.
template <typename F>
struct RootSearch {
    const F& f;
    double* roots;
    double scale = 0.0;  ///< the largest residual of the scan
    int count = 0;

    void add(double x) {
        if (count < MAX_ROOTS) roots[count++] = x;
    }
    bool at(double x, double& r) const { return f(x, r) && std::isfinite(r); }

    /// Brent's method on a bracket [a, b], f(a) f(b) < 0: inverse quadratic interpolation and
    /// secant steps, each kept only while it shrinks the bracket fast enough, else bisection; an
    /// undefined value inside falls back to the bracket's middle. Closed when the residual is within
    /// NOISE_ULPS units in the last place of the larger residual at the bracket's ends (as near zero
    /// as the residual can be told from it there), when the bracket spans BRACKET_ULPS in the last
    /// place of x (so the roots of a residual that is flat at a double root come out as sharp as its
    /// sign allows) or after MAX_PASSES; the rebuilt path is judged afterwards whatever the stop.
    double close(double a, double fa, double b, double fb) const {
        const double noise = NOISE_ULPS * std::numeric_limits<double>::epsilon() *
                             (std::fabs(fa) > std::fabs(fb) ? std::fabs(fa) : std::fabs(fb));
        double c = a, fc = fa, d = b - a, e = d;
        for (int pass = 0; pass < MAX_PASSES; ++pass) {
            if ((fb > 0.0) == (fc > 0.0)) {
                c = a, fc = fa;
                d = e = b - a;
            }
            if (std::fabs(fc) < std::fabs(fb)) {
                a = b, fa = fb;
                b = c, fb = fc;
                c = a, fc = fa;
            }
            const double tol =
                0.5 * BRACKET_ULPS * std::numeric_limits<double>::epsilon() * std::fabs(b) +
                std::numeric_limits<double>::min();
            const double m = 0.5 * (c - b);
            if (!(std::fabs(m) > tol) || !(std::fabs(fb) > noise)) return b;
            bool interpolated = false;
            if (std::fabs(e) >= tol && std::fabs(fa) > std::fabs(fb)) {
                double p = 0.0, q = 0.0;
                const double sb = fb / fa;
                if (a == c) {
                    p = 2.0 * m * sb;
                    q = 1.0 - sb;
                } else {
                    const double qa = fa / fc, rb = fb / fc;
                    p = sb * (2.0 * m * qa * (qa - rb) - (b - a) * (rb - 1.0));
                    q = (qa - 1.0) * (rb - 1.0) * (sb - 1.0);
                }
                if (p > 0.0)
                    q = -q;
                else
                    p = -p;
                if (2.0 * p < 3.0 * m * q - std::fabs(tol * q) && 2.0 * p < std::fabs(e * q)) {
                    e = d;
                    d = p / q;
                    interpolated = true;
                    // An interpolation that moves x by no more than STEP_ULPS in its last place
                    // has converged (superlinearly): its point is the root.
                    if (std::fabs(d) <=
                        STEP_ULPS * std::numeric_limits<double>::epsilon() * std::fabs(b))
                        return b + d;
                }
            }
            if (!interpolated) d = e = m;
            a = b, fa = fb;
            double next = b + (std::fabs(d) > tol ? d : std::copysign(tol, m));
            if (!at(next, fb)) {
                next = b + m;
                if (!at(next, fb)) return b;
            }
            b = next;
        }
        return b;
    }

    /// Golden-section search of [s0.x, s2.x] for the residual's extreme towards zero: a crossing
    /// found gives two brackets; else the extreme itself is kept (a double root, where the residual
    /// only touches zero, lies there), and so is an end of the range where roots may lie among
    /// s0, s2 (a double root at a validity bound, a hold of zero, is found no sharper than the
    /// rounding of the residual allows, and the bound itself is the better candidate).
    void probe(const Sample& s0, const Sample& s2) {
        const double sgn = s0.r > 0.0 ? 1.0 : -1.0;
        const double g = 0.3819660112501051;  // (3 - sqrt 5) / 2
        double lo = s0.x, hi = s2.x;
        double m1 = lo + g * (hi - lo), m2 = hi - g * (hi - lo), r1 = 0.0, r2 = 0.0;
        if (!at(m1, r1) || !at(m2, r2)) return;
        for (int pass = 0; pass < PAIR_PASSES; ++pass) {
            if (r1 * sgn <= 0.0 || r2 * sgn <= 0.0) {
                const double m = r1 * sgn <= 0.0 ? m1 : m2, rm = r1 * sgn <= 0.0 ? r1 : r2;
                if (rm == 0.0) return add(m);
                add(close(s0.x, s0.r, m, rm));
                add(close(m, rm, s2.x, s2.r));
                return;
            }
            if (r1 * sgn < r2 * sgn) {
                hi = m2, m2 = m1, r2 = r1;
                m1 = lo + g * (hi - lo);
                if (!at(m1, r1)) return;
            } else {
                lo = m1, m1 = m2, r1 = r2;
                m2 = hi - g * (hi - lo);
                if (!at(m2, r2)) return;
            }
        }
        add(r1 * sgn < r2 * sgn ? m1 : m2);
        if (s0.first) add(s0.x);
        if (s2.last) add(s2.x);
    }

    /// A turning point s1 between s0 and s2 is searched when the steeper of its two sides, carried
    /// on across the wider of its two intervals, would reach zero: a dip that deep may hide a pair of
    /// roots.
    void turning(const Sample& s0, const Sample& s1, const Sample& s2) {
        const double sgn = s1.r > 0.0 ? 1.0 : -1.0;
        if (!(sgn * (s1.r - s0.r) < 0.0 && sgn * (s2.r - s1.r) > 0.0)) return;
        const double h0 = s1.x - s0.x, h2 = s2.x - s1.x;
        const double slope = std::fmax(std::fabs(s1.r - s0.r) / h0, std::fabs(s2.r - s1.r) / h2);
        if (std::fabs(s1.r) < slope * std::fmax(h0, h2)) probe(s0, s2);
    }

    /// The roots from samples s[0 .. n) in increasing x. Between a defined and an undefined sample
    /// the edge of the defined range is found by bisection and taken as a sample: near an edge the
    /// construction changes fast (a length growing as a square root), so roots crowd there, and an
    /// interval that ends at an edge is always searched for a hidden pair. A sign change between
    /// consecutive samples is closed by close(); a turning point towards zero by turning(). At the
    /// start and the end of the range where roots may lie the residual need not turn (the range is
    /// cut where a validity bound is reached, such as a hold of zero, and a double root, where the
    /// residual only touches zero, may sit right there): the first and the last interval inside it
    /// are searched when the residual at the range's end, carried on by its change over the
    /// interval, would reach zero.
    void scan(const Sample* s, int n) {
        Sample last2{}, last{};
        auto near = [](const Sample& end, const Sample& other) {
            return std::fabs(end.r) < std::fabs(other.r - end.r);
        };
        auto push = [&](const Sample& c) {
            if (c.ok && c.r == 0.0) add(c.x);
            if (c.ok && last.ok && last.r * c.r < 0.0) add(close(last.x, last.r, c.x, c.r));
            if (c.ok && last.ok && last.r * c.r > 0.0 &&
                (c.edge || last.edge || (last.first && near(last, c)) || (c.last && near(c, last))))
                probe(last, c);
            if (c.ok && last.ok && last2.ok && last2.r * last.r > 0.0 && last.r * c.r > 0.0)
                turning(last2, last, c);
            last2 = last;
            last = c;
        };
        for (int i = 0; i < n; ++i) {
            if (i > 0 && s[i].ok != s[i - 1].ok) {
                Sample edge = s[i].ok ? s[i] : s[i - 1];
                double out = s[i].ok ? s[i - 1].x : s[i].x;
                for (int pass = 0; pass < EDGE_PASSES; ++pass) {
                    const double mid = 0.5 * (edge.x + out);
                    double r = 0.0;
                    if (at(mid, r))
                        edge.x = mid, edge.r = r;
                    else
                        out = mid;
                }
                edge.edge = true;
                if (edge.x != s[i].x && edge.x != s[i - 1].x) push(edge);
            }
            push(s[i]);
        }
        // An end of the range whose residual is as small as rounding leaves it is kept as it is:
        // a double root at a validity bound may not even show a turning point.
        for (int i = 0; i < n; ++i)
            if (s[i].ok && (s[i].first || s[i].last) && std::fabs(s[i].r) <= END_SMALL * scale)
                add(s[i].x);
    }
};

/// The cluster after x = 0 of a scan that starts with a first arc of no turn, so that a pair of
/// roots of very small first arcs is not lost inside the first step [0, x1]. At a root the first
/// arc's chord |t0 - u| = 2 sin(d1/2) is at most 2 x / (1 - x), and u moves from u(0) at about the
/// speed |u(x1) - u(0)| / x1 (u is smooth in x), so no root lies below
///     xmin = |t0 - u(0)| / (2 / (1 - x1) + speed)
/// and none at all in the step when xmin > 2 x1 (twice: the speed is an estimate). The samples go
/// down to a quarter of xmin, at most START_LEVELS halvings; when u(0) = t0, x = 0 is a root itself
/// and all START_LEVELS are taken.
template <typename F>
Special fromNoTurn(const F& f, Vec3 t0, double x1) {
    const Special none{0.0, 0, AFTER};
    Path p0, p1;
    if (!(x1 > 0.0) || !f.candidate(0.0, p0) || !f.candidate(x1, p1)) return none;
    const Vec3 u0 = (1.0 / norm(p0.u)) * p0.u, u1 = (1.0 / norm(p1.u)) * p1.u;
    const double speed = norm(u1 - u0) / x1;
    const double xmin = norm(t0 - u0) / (2.0 / (1.0 - x1) + speed);
    if (!(xmin > 0.0)) return {0.0, START_LEVELS, AFTER};
    if (xmin > 2.0 * x1) return none;
    return {0.0, static_cast<int>(std::fmin(std::ceil(std::log2(4.0 * x1 / xmin)), START_LEVELS)),
            AFTER};
}

/// Every root of f over the points xs[0 .. n) into roots, [xa, xb] the range where roots may lie;
/// returns their number. The samples are independent of each other: evaluated first, in one loop,
/// they overlap in the processor (each alone is a chain of square roots and divisions).
template <typename F>
int findRoots(const F& f, const double* xs, int n, double xa, double xb, double* roots) {
    RootSearch<F> search{f, roots};
    Sample s[MAX_SAMPLES];
    for (int i = 0; i < n; ++i) {
        s[i].x = xs[i];
        s[i].r = 0.0;
        s[i].ok = search.at(xs[i], s[i].r);
        s[i].edge = false;
        s[i].first = xs[i] == xa;
        s[i].last = xs[i] == xb;
        if (s[i].ok && std::fabs(s[i].r) > search.scale) search.scale = std::fabs(s[i].r);
    }
    search.scan(s, n);
    return search.count;
}

/// The candidate rebuilt from its hold direction u alone, and judged. The doglegs are the angles
/// t0 -> u and u -> t1 (each below pi - 1e-6); a given curvature is used as given, a solved one is
/// tan(d/2) / T of the candidate (one value for both arcs when they must agree: the mean), and must
/// exceed the zero test; the tangent lengths follow, and the hold is the given one or the projection
/// on u of what the arcs leave. Valid when the hold is not negative (beyond TOL_CLOSE, then taken as
/// 0: a hold that short is a rounding of a curve-curve, and the closure test below decides), the
/// path closes on its end within TOL_CLOSE and within TOL_DIR of either arc's radius (the line's
/// end is stored on the target, so the last arc stays an arc of its severity within TOL_DIR; a
/// solved severity may come out huge where an arc shrinks to nothing) and, for 2950, its hold
/// starts and ends at the given depths within TOL_CLOSE.
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
    if (!(H >= -TOL_CLOSE)) return false;
    H = std::fmax(H, 0.0);
    const double gap = norm(rest - H * p.u);
    if (!(gap <= TOL_CLOSE && gap * std::fmax(K1, K2) <= TOL_DIR)) return false;
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

/// The residual of a first arc of given curvature: 4 (sin^2(a/2) - sin^2(d/2)) (x^2 + (1 - x)^2) for
/// a the angle from t0 to u and d the angle of half-angle tangent x / (1 - x), zero exactly where
/// the first arc turns t0 into u. 4 sin^2(a/2) = |t0 - u|^2 comes from the caller as the squared
/// parts of t0 - u along and square to a direction, so that it is as exact for small arcs as for
/// large, and 4 sin^2(d/2) (x^2 + (1 - x)^2) = 4 x^2 (the positive factor spares a division). Unlike
/// the angles themselves the residual is smooth where u passes close to t0, and a pair of roots of
/// very small arcs is a smooth dip, not a kink.
double arcGap(double along, Vec3 square, double x) {
    const double y = 1.0 - x;
    return (along * along + dot(square, square)) * (x * x + y * y) - 4.0 * x * x;
}

/// 2910: the second arc and the hold as the tangent from M1 = P0 + T1 t0 to the circle of radius R2
/// that leaves X backwards. In the plane of e = -t1 and the side m towards M1, M1 lies `ahead` along
/// e and h aside; the circle's centre is R2 aside. With y = h - R2, rho^2 = ahead^2 + y^2 and L the
/// tangent's length sqrt(rho^2 - R2^2) (none when M1 is inside the circle), the backward direction at
/// the touching point is ((L ahead - R2 y), (L y + R2 ahead)) / rho^2; the second dogleg is its
/// angle from e. M1 - X moves linearly with T1: ahead = a0 - c T1 and its part square to t1 is
/// q0 + T1 q1 (c = t0 . t1), so one sample costs two square roots and a few divisions.
struct Chc {
    const Align& g;
    double K1, R1, R2;
    Vec3 w0, q0, q1;  ///< P0 - X; its part square to t1; the part of t0 square to t1
    double a0, c;     ///< how far P0 lies behind X along t1; t0 . t1

    Chc(const Align& g_, double K1_, double K2) : g(g_), K1(K1_), R1(1.0 / K1_), R2(1.0 / K2) {
        w0 = g.P0 - g.X;
        c = dot(g.t0, g.t1);
        a0 = -dot(w0, g.t1);
        q0 = w0 + a0 * g.t1;
        q1 = g.t0 - c * g.t1;
    }

    /// The tangent at x: T1, the tangent's length L, whether M1 lies outside the circle, and its
    /// direction u = vx t1 - vy m = vx t1 - vq mq, with m = q / h the unit side towards M1 and
    /// mq = q, vq = vy / h (one division for both; on the line, h = 0, mq is the fixed side square
    /// to t1 and vq = vy). Inside the circle there is no tangent: the construction is carried on with
    /// L = 0 (the direction normalised), continuous across the circle, and the candidate is invalid.
    struct Tangent {
        double T1, L, vx, vy, vq;
        Vec3 mq;
        bool outside;
    };
    bool tangent(double x, Tangent& t) const {
        t.T1 = R1 * x / (1.0 - x);
        const Vec3 q = q0 + t.T1 * q1;
        const double h = norm(q);
        const double ahead = a0 - c * t.T1;
        const double y = h - R2;
        const double rho2 = ahead * ahead + y * y;
        if (!(rho2 > 0.0)) return false;
        const double L2 = rho2 - R2 * R2;
        t.outside = L2 >= 0.0;
        t.L = t.outside ? std::sqrt(L2) : 0.0;
        const double hs = h > 0.0 ? h : 1.0;
        const double inv = 1.0 / ((t.outside ? rho2 : R2 * std::sqrt(rho2)) * hs);
        const double along = t.L * ahead - R2 * y, aside = t.L * y + R2 * ahead;
        t.vx = along * hs * inv;
        t.vy = aside * hs * inv;
        t.vq = aside * inv;
        t.mq = h > 0.0 ? q : g.side;
        return true;
    }
    /// The residual: t0 - u = (c - vx) t1 + (q1 + vq mq), the second part square to t1.
    bool operator()(double x, double& r) const {
        Tangent t;
        if (!tangent(x, t)) return false;
        r = arcGap(c - t.vx, q1 + t.vq * t.mq, x);
        return true;
    }
    /// A second arc beyond pi, or no tangent at all, is no solution (T2 < 0).
    bool candidate(double x, Path& p) const {
        Tangent t;
        if (!tangent(x, t)) return false;
        p.u = t.vx * g.t1 - t.vq * t.mq;
        p.X = g.X;
        p.T1 = t.T1;
        p.H = t.L - t.T1;
        p.T2 = t.vy >= 0.0 && t.outside ? R2 * t.vy / (1.0 + t.vx) : -1.0;
        return true;
    }

    /// L^2 = |M1 - X|^2 - 2 R2 h at x: negative inside the circle.
    double tangent2(double x) const {
        const double T1 = halfAngle(x) / K1;
        const Vec3 w = w0 + T1 * g.t0;
        return dot(w, w) - 2.0 * R2 * norm(q0 + T1 * q1);
    }
    /// The hold L - T1 at x (L = 0 inside the circle).
    double hold(double x) const {
        const double L2 = tangent2(x);
        return (L2 > 0.0 ? std::sqrt(L2) : 0.0) - halfAngle(x) / K1;
    }
    /// The cluster after the start xa of the hold's range when the circle's edge (L = 0) lies close
    /// before it: there L grows as the square root of the distance from the edge, and roots of a
    /// short first arc and a short hold crowd within that distance. L^2 is smooth, so its value at
    /// xa against its change over the first step tells the distance in steps; the samples close in
    /// to a quarter of it (at most CLUSTER levels). None when the edge is further than a quarter step.
    Special nearEdge(double xa, double step) const {
        const double l0 = tangent2(xa), l1 = tangent2(std::fmin(X_END, xa + step));
        const double rise = l1 - l0;
        if (!(rise > 0.0) || !(l0 < 0.25 * rise)) return {xa, 0, AFTER};
        const double levels = l0 > 0.0 ? std::ceil(std::log2(rise / l0)) + 2.0 : CLUSTER;
        return {xa, static_cast<int>(std::fmin(std::fmax(levels, 1.0), CLUSTER)), AFTER};
    }

    /// The range [lo, hi] of x where the hold L - T1 is not below -d; false when there is none.
    /// L >= T1 - d reads
    ///     F(T1) = |w0|^2 - d^2 + 2 (t0 . w0 + d) T1 - 2 R2 h(T1) >= 0
    /// (L^2 = |M1 - X|^2 - 2 R2 h), and h(T1) = |q0 + T1 q1| is convex, so F is concave and the range
    /// is one interval. Its ends are roots of the quadratic that squaring F = 0 gives, kept where
    /// the left side stays positive; which pieces between them belong to the range is read from the
    /// sign of F inside each. The range is only where the scan looks: it is widened by a guard step
    /// at each end, so rounding in the quadratic loses nothing.
    bool holdRange(double d, double& lo, double& hi) const {
        const double A0 = dot(w0, w0) - d * d, E = dot(g.t0, w0) + d;
        auto F = [&](double T) { return A0 + 2.0 * E * T - 2.0 * R2 * norm(q0 + T * q1); };
        const double qa = 4.0 * (E * E - R2 * R2 * dot(q1, q1));
        const double qb = 4.0 * (A0 * E - 2.0 * R2 * R2 * dot(q0, q1));
        const double qc = A0 * A0 - 4.0 * R2 * R2 * dot(q0, q0);
        double z[4] = {0.0, 0.0, 0.0, 0.0};
        int nz = 1;  // z[0] = 0, then the positive roots in increasing order
        const double disc = qb * qb - 4.0 * qa * qc;
        auto keep = [&](double t) {
            if (t > 0.0 && std::isfinite(t)) z[nz++] = t;
        };
        if (std::fabs(qa) > 1e-12 * (std::fabs(qb) + std::fabs(qc)) && disc >= 0.0) {
            const double s = -0.5 * (qb + std::copysign(std::sqrt(disc), qb));
            const double t1 = s / qa, t2 = s != 0.0 ? qc / s : t1;
            keep(std::fmin(t1, t2));
            keep(std::fmax(t1, t2));
        } else if (qb != 0.0) {
            keep(-qc / qb);
        }
        // The pieces [z[i], z[i + 1]] and [z[last], inf) in the range, judged at their middles (the
        // last at twice its start plus one step of the largest length in play).
        const double big = 2.0 * z[nz - 1] + norm(w0) + R2;
        double tlo = -1.0, thi = -1.0;
        for (int i = 0; i < nz; ++i) {
            const bool lastPiece = i == nz - 1;
            const double mid = lastPiece ? big : 0.5 * (z[i] + z[i + 1]);
            if (!(F(mid) >= 0.0)) continue;
            if (tlo < 0.0) tlo = z[i];
            thi = lastPiece ? HUGE_VAL : z[i + 1];
        }
        if (tlo < 0.0) return false;
        const double tauLo = tlo * K1, tauHi = thi * K1;
        lo = tauLo / (1.0 + tauLo);
        hi = std::isfinite(tauHi) ? std::fmin(X_END, tauHi / (1.0 + tauHi)) : X_END;
        return lo <= hi;
    }
};

/// 1940, 1960, 2940: given T1 and the hold Hg (0 for a curve-curve), T2 from
/// |w - T2 t1| = T1 + Hg + T2, w = X - M1.
bool second(const Align& g, double T1, double Hg, Path& p) {
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

/// The range of the scan parameter x (T1 = scale x / (1 - x)) where second() gives a candidate
/// (T2 >= 0 and S = T1 + Hg + T2 > 0); false when there is none. With w = D - T1 t0 (D = X - P0) and
/// a = T1 + Hg, T2 = N / Q with N = |w|^2 - a^2 = |D|^2 - Hg^2 - 2 T1 (t0 . D + Hg) and
/// Q = 2 (w . t1 + a) = 2 (D . t1 + Hg + (1 - t0 . t1) T1), both linear in T1, and S = |w + a t1|^2 / Q;
/// so the range is Q > 0 (T1 beyond a bound, Q rising) with N >= 0 (T1 on one side of another): one
/// interval. Rounding at its ends is covered by the scan's guard steps.
bool secondRange(const Align& g, double Hg, double scale, double& lo, double& hi) {
    const Vec3 D = g.X - g.P0;
    const double n0 = dot(D, D) - Hg * Hg, n1 = 2.0 * (dot(g.t0, D) + Hg);
    const double q0 = 2.0 * (dot(D, g.t1) + Hg), q1 = 2.0 * (1.0 - dot(g.t0, g.t1));
    double tlo = 0.0, thi = HUGE_VAL;
    if (q1 > 0.0)
        tlo = std::fmax(tlo, -q0 / q1);
    else if (!(q0 > 0.0))
        return false;
    if (n1 > 0.0)
        thi = n0 / n1;
    else if (n1 < 0.0)
        tlo = std::fmax(tlo, n0 / n1);
    else if (!(n0 >= 0.0))
        return false;
    if (!(tlo <= thi)) return false;
    lo = tlo / (scale + tlo);
    hi = std::isfinite(thi) ? std::fmin(X_END, thi / (scale + thi)) : X_END;
    return lo <= hi;
}

/// The residual at x of a candidate whose first arc turns through the angle of half-angle tangent
/// x / (1 - x) into p.u.
double firstArcGap(const Align& g, const Path& p, double x) {
    const double along = dot(g.t0 - p.u, g.t1);
    return arcGap(along, g.t0 - p.u - along * g.t1, x);
}

/// 1960 (and 1970 backwards): the first curvature given.
struct Cd1 {
    const Align& g;
    double K1;
    bool candidate(double x, Path& p) const { return second(g, halfAngle(x) / K1, 0.0, p); }
    bool operator()(double x, double& r) const {
        Path p;
        if (!candidate(x, p)) return false;
        r = firstArcGap(g, p, x);
        return true;
    }
};

/// 1940 and 2940: one curvature for both arcs, T1 = |X - P0| x / (1 - x). The residual compares the
/// squared curvatures K^2 = |a - b|^2 / (|a + b|^2 T^2) of the two arcs (a, b the directions at
/// their ends), as (K1^2 - K2^2) / (K1^2 + K2^2): bounded, and smooth where an arc has nearly no
/// turn.
struct Equal {
    const Align& g;
    double H;
    bool candidate(double x, Path& p) const {
        const double T1 = g.D * halfAngle(x);
        return T1 > 0.0 && second(g, T1, H, p) && p.T2 > 0.0;
    }
    bool operator()(double x, double& r) const {
        Path p;
        if (!candidate(x, p)) return false;
        const Vec3 d1 = g.t0 - p.u, s1 = g.t0 + p.u, d2 = p.u - g.t1, s2 = p.u + g.t1;
        const double k1 = dot(d1, d1) * dot(s2, s2) * p.T2 * p.T2;
        const double k2 = dot(d2, d2) * dot(s1, s1) * p.T1 * p.T1;
        if (!(k1 + k2 > 0.0)) return false;
        r = (k1 - k2) / (k1 + k2);
        return true;
    }
};

/// 2950: the hold from depth V5 to V6. With z the hold's vertical part, tvd(A) = V5 gives
/// T1 = (V5 - P0.tvd) / (t0.v + z) and tvd(B) = V6 gives T2 = (X.tvd - V6) / (z + t1.v); the hold
/// then runs from M1 to M2 = X - T2 t1 and must have that vertical part. z covers [-1, 1]. Where a
/// tangent length grows without bound (z nears -t0.v or -t1.v) the hold turns along t0 or against t1
/// and u.v - z goes to zero with 1 / T; the residual (u.v - z) T1 T2 / |X - P0|^2 keeps the sign and
/// the roots and has no such false zero at the ends of the range.
struct Tvd {
    const Align& g;
    double V5, V6;
    bool eval(double x, double& r, Path& p) const {
        const double z = 2.0 * x / X_END - 1.0;
        const double den1 = g.t0.v + z, den2 = g.t1.v + z;
        if (den1 == 0.0 || den2 == 0.0) return false;
        p.T1 = (V5 - g.P0.v) / den1;
        p.T2 = (g.X.v - V6) / den2;
        if (!(p.T1 > 0.0 && p.T2 > 0.0)) return false;
        const Vec3 w = g.X - p.T2 * g.t1 - (g.P0 + p.T1 * g.t0);
        const double S = norm(w);
        if (!(S > TOL_ZERO)) return false;
        p.u = (1.0 / S) * w;
        p.X = g.X;
        p.H = S - p.T1 - p.T2;
        r = (p.u.v - z) * (p.T1 / g.D) * (p.T2 / g.D);
        return true;
    }
    bool candidate(double x, Path& p) const {
        double r = 0.0;
        return eval(x, r, p);
    }
    bool operator()(double x, double& r) const {
        Path p;
        return eval(x, r, p);
    }
    /// The range of x where both tangent lengths are positive: T1 > 0 puts z on the side of
    /// -t0.v that V5 - P0.tvd gives, T2 > 0 on the side of -t1.v that X.tvd - V6 gives. An end of
    /// the range where a tangent length grows without bound gets a cluster (into sp, counted by nsp):
    /// T = c / (z - pole), so the path changes on the scale of the distance from the pole, and a short
    /// arc of little depth lies close to it.
    bool range(double& lo, double& hi, Special* sp, int& nsp) const {
        double zlo = -1.0, zhi = 1.0;
        bool poleLo = false, poleHi = false;
        auto side = [&](double rise, double pole) {
            if (rise > 0.0 && pole > zlo)
                zlo = pole, poleLo = true;
            else if (rise < 0.0 && pole < zhi)
                zhi = pole, poleHi = true;
            else if (rise == 0.0)
                zhi = -2.0;
        };
        side(V5 - g.P0.v, -g.t0.v);
        side(g.X.v - V6, -g.t1.v);
        lo = 0.5 * (zlo + 1.0) * X_END;
        hi = 0.5 * (zhi + 1.0) * X_END;
        if (poleLo) sp[nsp++] = {lo, CLUSTER, AFTER};
        if (poleHi) sp[nsp++] = {hi, CLUSTER, BEFORE};
        return zlo < zhi;
    }
};

/// The hold of the candidates of F as a residual: its roots are the candidates of zero hold.
template <typename F>
struct HoldOf {
    const F& f;
    bool candidate(double x, Path& p) const { return f.candidate(x, p); }
    bool operator()(double x, double& r) const {
        Path p;
        if (!f.candidate(x, p)) return false;
        r = p.H;
        return true;
    }
};

/// 1950: the landing of one curvature K = K1 = K2 on the line X + k t1; `branch` picks the
/// smaller (0) or larger (1) root tau of (h - 2R) tau^2 - 2 T1 tau + h = 0.
struct Land {
    const Align& g;
    double K;
    int branch;
    bool candidate(double x, Path& p) const {
        const double tau1 = halfAngle(x);
        const double R = 1.0 / K;
        p.T1 = R * tau1;
        const Vec3 w0 = g.X - (g.P0 + p.T1 * g.t0);
        const double along = dot(w0, g.t1);
        const Vec3 wp = w0 - along * g.t1;
        const double h = norm(wp);
        if (!(h > 0.0)) return false;
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
        return true;
    }
    bool operator()(double x, double& r) const {
        Path p;
        if (!candidate(x, p)) return false;
        r = firstArcGap(g, p, x);
        return true;
    }

    /// Clusters (into sp; returns their number) at the ends of the stretches of x where the branch
    /// has no candidate, which may be narrower than a step and so stepped over: where the
    /// discriminant T1^2 - (h - 2R) h is negative (convex in T1, as h = |p0 - T1 p1| is, so one
    /// stretch around its least value, found by golden section, with its ends by bisection) and, for
    /// the larger root, where h <= 2R (one stretch, its ends from the quadratic h^2 = 4 R^2).
    int gaps(Special* sp) const {
        int n = 0;
        const double R = 1.0 / K;
        const Vec3 D = g.X - g.P0;
        const Vec3 p0 = D - dot(D, g.t1) * g.t1, p1 = g.t0 - dot(g.t0, g.t1) * g.t1;
        auto disc = [&](double x) {
            const double T1 = R * halfAngle(x), h = norm(p0 - T1 * p1);
            return T1 * T1 - (h - 2.0 * R) * h;
        };
        auto edge = [&](double in, double out) {
            for (int pass = 0; pass < EDGE_PASSES; ++pass) {
                const double mid = 0.5 * (in + out);
                (disc(mid) < 0.0 ? in : out) = mid;
            }
            sp[n++] = {out, CLUSTER, AROUND};
        };
        const double gr = 0.3819660112501051;  // (3 - sqrt 5) / 2
        double lo = 0.0, hi = X_END, m1 = lo + gr * (hi - lo), m2 = hi - gr * (hi - lo);
        double d1 = disc(m1), d2 = disc(m2);
        for (int pass = 0; pass < 2 * EDGE_PASSES && d1 >= 0.0 && d2 >= 0.0; ++pass) {
            if (d1 < d2)
                hi = m2, m2 = m1, d2 = d1, m1 = lo + gr * (hi - lo), d1 = disc(m1);
            else
                lo = m1, m1 = m2, d1 = d2, m2 = hi - gr * (hi - lo), d2 = disc(m2);
        }
        const double least = d1 < d2 ? m1 : m2;
        if (disc(least) < 0.0) {
            if (disc(0.0) >= 0.0) edge(least, 0.0);
            if (disc(X_END) >= 0.0) edge(least, X_END);
        }
        if (branch == 1) {
            const double a = dot(p1, p1), b = -dot(p0, p1), c = dot(p0, p0) - 4.0 * R * R;
            const double q = b * b - a * c;
            if (a > 0.0 && q > 0.0)
                for (double T1 : {(-b - std::sqrt(q)) / a, (-b + std::sqrt(q)) / a})
                    if (T1 > 0.0) sp[n++] = {T1 / (R + T1), CLUSTER, AROUND};
        }
        return n;
    }
};

/// The scan parameter x (tangent length R tan(d1/2), R = 1/K1) at which the first arc's tangent
/// meeting point P0 + T1 t0 comes nearest to the line through X along t1, when it comes near enough
/// for the second arc's plane to turn over between two grid samples (nearer than CLUSTER_NEAR grid
/// steps of T1 there, `step` the grid step in x), with as many levels of samples as close in from a
/// grid step to the miss distance and three more (at most CLUSTER). None (no levels) when the lines do
/// not come that near, when the nearest point is behind the start or the two lines are parallel
/// (then the distance changes slowly everywhere).
Special nearestApproach(const Align& g, double K1, double step) {
    const Special none{0.0, 0, AROUND};
    const double c = dot(g.t0, g.t1), den = 1.0 - c * c;
    if (!(den > TOL_ZERO)) return none;
    const Vec3 w = g.X - g.P0;
    const double T = (dot(w, g.t0) - c * dot(w, g.t1)) / den;
    if (!(T > 0.0)) return none;
    const double lambda = T * c - dot(w, g.t1);
    const double miss = norm(g.P0 + T * g.t0 - (g.X + lambda * g.t1));
    const double tau = T * K1, x = tau / (1.0 + tau);
    const double gridStep = step / ((1.0 - x) * (1.0 - x) * K1);
    if (!(miss < CLUSTER_NEAR * gridStep)) return none;
    const double levels = miss > 0.0 ? std::ceil(std::log2(gridStep / miss)) + 3.0 : CLUSTER;
    return {x, static_cast<int>(std::fmin(std::fmax(levels, 1.0), CLUSTER)), AROUND};
}

/// The shortest valid path of the method, or false when there is none.
bool solveAlign(const Align& g, const Givens& giv, Path& best) {
    bool found = false;
    double roots[MAX_ROOTS];
    double xs[MAX_SAMPLES];
    // The roots of f over [xa, xb] in n steps with the special points sp; for a method whose first
    // arc has a given curvature (`noTurn`) and a range from 0, the cluster after an arc of no turn.
    auto scan = [&](const auto& f, double xa, double xb, int n, Special* sp, int nsp, bool noTurn) {
        if (noTurn && xa == 0.0) sp[nsp++] = fromNoTurn(f, g.t0, xb / n);
        const int nx = scanPoints(xa, xb, n, sp, nsp, xs);
        return findRoots(f, xs, nx, xa, xb, roots);
    };
    auto judge = [&](const auto& f, int count) {
        for (int i = 0; i < count; ++i) {
            Path p;
            if (f.candidate(roots[i], p) && rebuild(g, giv, p) &&
                (!found || p.length < best.length)) {
                best = p;
                found = true;
            }
        }
    };
    auto run = [&](const auto& f, double xa, double xb, int n, Special* sp, int nsp, bool noTurn) {
        judge(f, scan(f, xa, xb, n, sp, nsp, noTurn));
    };
    Special sp[MAX_SPECIALS];
    double lo = 0.0, hi = X_END;
    switch (giv.code) {
    case 2910: {
        // The scan spans the holds of zero and more, so that a curve-curve, where the residual
        // may only touch zero (a fold of the problem), has a sample of its own. Where the holds
        // of that range are all about zero (within 2 TOL_CLOSE in its middle: a fold again, the
        // range a mere point), the scan spans the holds down to -TOL_CLOSE, and the points of zero
        // hold are judged as they are.
        const Chc chc(g, giv.K1, giv.K2);
        double lo0 = 0.0, hi0 = 0.0;
        const bool zero = chc.holdRange(0.0, lo0, hi0);
        const bool narrow = !zero || !(chc.hold(0.5 * (lo0 + hi0)) > 2.0 * TOL_CLOSE);
        if (!narrow)
            lo = lo0, hi = hi0;
        else if (!chc.holdRange(TOL_CLOSE, lo, hi))
            return false;
        const double step = (hi - lo) / ALIGN_SAMPLES;
        sp[0] = nearestApproach(g, giv.K1, step);
        sp[1] = chc.nearEdge(lo, step);
        run(chc, lo, hi, ALIGN_SAMPLES, sp, 2, true);
        if (zero && narrow) {
            roots[0] = lo0, roots[1] = hi0;
            judge(chc, 2);
        }
        break;
    }
    case 1940:
    case 2940:
        if (!secondRange(g, giv.H, g.D, lo, hi)) return false;
        run(Equal{g, giv.H}, lo, hi, FINE_SAMPLES, sp, 0, false);
        break;
    case 2950: {
        // Where the hold comes to zero the residual may only touch zero, over a stretch far shorter
        // than a step (the problem folds there, as for 2910): the points of zero hold are scanned for
        // as well, judged as candidates, and the residual is scanned again around each of them.
        const Tvd tvd{g, giv.V5, giv.V6};
        int nsp = 0;
        if (!tvd.range(lo, hi, sp, nsp)) return false;
        run(tvd, lo, hi, FINE_SAMPLES, sp, nsp, false);
        const HoldOf<Tvd> hold{tvd};
        const int nh = scan(hold, lo, hi, FINE_SAMPLES, sp, nsp, false);
        double zeros[MAX_ROOTS];
        for (int i = 0; i < nh; ++i) zeros[i] = roots[i];
        judge(hold, nh);
        const double step = (hi - lo) / FINE_SAMPLES;
        for (int i = 0; i < nh; ++i)
            run(tvd, std::fmax(lo, zeros[i] - step), std::fmin(hi, zeros[i] + step), LOCAL_SAMPLES,
                sp, 0, false);
        break;
    }
    case 1960:
        if (!secondRange(g, 0.0, 1.0 / giv.K1, lo, hi)) return false;
        run(Cd1{g, giv.K1}, lo, hi, FINE_SAMPLES, sp, 0, true);
        break;
    case 1950:
        for (int branch = 0; branch < 2; ++branch) {
            const Land land{g, giv.K1, branch};
            sp[0] = nearestApproach(g, giv.K1, X_END / FINE_SAMPLES);
            run(land, 0.0, X_END, FINE_SAMPLES, sp, 1 + land.gaps(sp + 1), true);
        }
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
