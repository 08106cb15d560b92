// Optimum align (2910, 2940, 2950, 1940, 1960, 1970) and horizontal landing (1950) through whole
// plans. Paths are built with circle geometry of the test's own (an arc of radius R bending towards
// side m turns t into cos(d) t + sin(d) m over p + R sin(d) t + R (1 - cos d) m); a solved line is
// checked the other way round: each arc on its circle, the hold straight, the end on the target.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "plan/CPlan.h"

namespace {

constexpr double kDeg = M_PI / 180.0;
constexpr double kPos = 1e-4;      ///< closure of a solved line on its target or givens [L]
constexpr double kArc = 1e-6;      ///< an arc's end on its circle, relative to its radius [-]
constexpr double kAng = 1e-6;      ///< directions [rad]
constexpr double kShorter = 1e-4;  ///< a solved line is no longer than the one built [L]
constexpr double kNudge = 1e-3;    ///< how far the plan moves a station that a part of zero
                                   ///< length leaves on the one before it [L]

struct V {
    double e, n, v;
    V operator+(V b) const { return {e + b.e, n + b.n, v + b.v}; }
    V operator-(V b) const { return {e - b.e, n - b.n, v - b.v}; }
    friend V operator*(double k, V a) { return {k * a.e, k * a.n, k * a.v}; }
    friend double dot(V a, V b) { return a.e * b.e + a.n * b.n + a.v * b.v; }
    friend double len(V a) { return std::sqrt(dot(a, a)); }
    friend V cross(V a, V b) {
        return {a.n * b.v - a.v * b.n, a.v * b.e - a.e * b.v, a.e * b.n - a.n * b.e};
    }
};
const auto dir = [](double inc, double azi) {
    return V{std::sin(inc) * std::sin(azi), std::sin(inc) * std::cos(azi), std::cos(inc)};
};
const auto dirOf = [](const SStation& s) { return dir(s.inc, s.azi); };
const auto pos = [](const SStation& s) { return V{s.ew, s.ns, s.tvd}; };
const auto incOf = [](V t) { return std::acos(std::fmax(-1.0, std::fmin(1.0, t.v))); };
const auto aziOf = [](V t) {
    const double a = std::atan2(t.e, t.n);
    return a < 0.0 ? a + 2.0 * M_PI : a;
};
/// The side of toolface tf square to t: tf 0 the high side, pi/2 the right.
V side(V t, double tf) {
    const double I = incOf(t), A = std::fabs(std::sin(I)) > 1e-9 ? aziOf(t) : 0.0;
    const V high{std::cos(I) * std::sin(A), std::cos(I) * std::cos(A), -std::sin(I)};
    return std::cos(tf) * high + std::sin(tf) * V{std::cos(A), -std::sin(A), 0.0};
}

/// A path built from its parts: arc 1, hold, arc 2.
struct Built {
    V A, B, X, t1;  ///< ends of arc 1 and of the hold, the end, its direction
    double md;      ///< course from the start [L]
};
Built build(const SStation& from, double d1, double tf1, double R1, double H, double d2, double tf2,
            double R2) {
    const V t = dirOf(from), m1 = side(t, tf1);
    const V A = pos(from) + R1 * std::sin(d1) * t + R1 * (1.0 - std::cos(d1)) * m1;
    const V u = std::cos(d1) * t + std::sin(d1) * m1;
    const V B = A + H * u, m2 = side(u, tf2);
    return {A, B, B + R2 * std::sin(d2) * u + R2 * (1.0 - std::cos(d2)) * m2,
            std::cos(d2) * u + std::sin(d2) * m2, d1 * R1 + H + d2 * R2};
}

SStation tie(V p = {300.0, 200.0, 1500.0}, double inc = 0.6, double azi = 0.4) {
    SStation s;
    s.md = 1200.0, s.ew = p.e, s.ns = p.n, s.tvd = p.v, s.inc = inc, s.azi = azi, s.method = 2;
    return s;
}

/// A path built backwards from its end X, arriving along t1: arc 2, the hold, arc 1. Each arc, run
/// backwards from its end direction e, starts at e turned by d away from the side m at toolface tf
/// about e: start direction cos(d) e - sin(d) m, bending towards sin(d) e + cos(d) m. `from` gets
/// the start.
Built buildBack(V X, V t1, double d1, double tf1, double R1, double H, double d2, double tf2,
                double R2, SStation& from) {
    const V m2 = side(t1, tf2), u = std::cos(d2) * t1 - std::sin(d2) * m2;
    const V n2 = std::sin(d2) * t1 + std::cos(d2) * m2;
    const V B = X - R2 * std::sin(d2) * u - R2 * (1.0 - std::cos(d2)) * n2, A = B - H * u;
    const V m1 = side(u, tf1), t0 = std::cos(d1) * u - std::sin(d1) * m1;
    const V n1 = std::sin(d1) * u + std::cos(d1) * m1;
    from = tie(A - R1 * std::sin(d1) * t0 - R1 * (1.0 - std::cos(d1)) * n1, incOf(t0), aziOf(t0));
    return {A, B, X, t1, d1 * R1 + H + d2 * R2};
}

/// Settings of one line: the family, the target variant and the method parameters.
struct Line {
    int family, variant;
    double p1, p2, p3, p4, p5, p6;
};
constexpr double CPlan::*kParams[] = {&CPlan::m_dMethodParam1, &CPlan::m_dMethodParam2,
                                      &CPlan::m_dMethodParam3, &CPlan::m_dMethodParam4,
                                      &CPlan::m_dMethodParam5, &CPlan::m_dMethodParam6};

CPlan put(const SStation& from, const Line& l, V X, V t1, bool angles = true) {
    CPlan p;
    p.NewData(12);
    p.LoadData(0, from);
    p.m_nFamily = l.family, p.m_nTargetMethod = l.variant;
    const double* given = &l.p1;
    for (int k = 0; k < 6; ++k) p.*kParams[k] = given[k];
    p.m_target.name = u"T1", p.m_target.flag = true, p.m_target.hasAngles = angles;
    p.m_target.ew = X.e, p.m_target.ns = X.n, p.m_target.tvd = X.v;
    p.m_target.inc = incOf(t1), p.m_target.azi = aziOf(t1);
    if (!angles) {  // a target of the plan, without arrival angles
        p.NewTarget(1);
        p.LoadTarget(0, p.m_target);
    }
    p.PutData(-1);
    return p;
}
SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}
/// Station i with the depth the line laid it at: a part of zero length ends on the station before
/// it, and the plan then moves that end kNudge deeper.
SStation laid(const CPlan& p, int i) {
    SStation s = at(p, i);
    if (i == 0) return s;
    const SStation b = laid(p, i - 1);
    if (len(pos(s) - pos(b)) < kPos && std::fabs(s.md - at(p, i - 1).md - kNudge) < 1e-9)
        s.md = b.md;
    return s;
}

/// The course from `a` to `b` is a circular arc of its stored severity, tangent at both ends.
void expectArc(const SStation& a, const SStation& b) {
    const V t = dirOf(a), e = dirOf(b), d = pos(b) - pos(a);
    const double dl = std::acos(std::fmax(-1.0, std::fmin(1.0, dot(t, e))));
    if (dl < 1e-9) return;  // a part of zero turn
    const double R = 1.0 / b.dls;
    const V w = e - dot(t, e) * t, m = (1.0 / len(w)) * w, r = d - R * m;
    EXPECT_NEAR(len(r) / R, 1.0, kArc) << "end off the circle";
    EXPECT_NEAR(dot(r, e) / R, 0.0, kArc) << "end direction not along the circle";
    EXPECT_NEAR(dot(d, cross(t, m)) / R, 0.0, kArc) << "arc out of its plane";
    EXPECT_NEAR((b.md - a.md) / R, dl, kArc) << "course is not the arc";
}

/// Line `l` solved to n stations after the tie-on: arcs and (n = 3) a straight hold, ending at X
/// with direction t1, the target on the last station only. The settings given are kept: the first
/// (p1; a landing's both) and last (p2) severity exactly, the tangent (p3) and the hold's depths
/// (p5, p6); 2940 and 1940 lay both arcs with one severity. An arc of no turn is a part of zero
/// length and stores no severity.
void expectLine(const CPlan& p, const Line& l, int code, V X, V t1) {
    const int n = code / 1000 + 1;
    const SStation s1 = laid(p, 1), s2 = laid(p, 2), sl = laid(p, n);
    EXPECT_EQ(s1.method, code);
    EXPECT_TRUE(s1.target.empty() && sl.target == u"T1" && sl.flag);
    expectArc(at(p, 0), s1);
    expectArc(laid(p, n - 1), sl);
    if (n == 3) {
        EXPECT_EQ(s2.method, 1);
        EXPECT_NEAR(len(pos(s2) - pos(s1)), s2.md - s1.md, kPos) << "hold not straight";
        EXPECT_NEAR(dot(dirOf(s1), dirOf(s2)), 1.0, kAng);
    }
    EXPECT_NEAR(len(pos(sl) - X), 0.0, kPos) << "end off the target";
    EXPECT_NEAR(dot(dirOf(sl), t1), 1.0, kAng) << "arrival direction";
    const double pl = code == 1950 ? l.p1 : l.p2;
    const double want[] = {l.p1, pl, l.p3, l.p5, l.p6};  // settings left zero: not compared
    const double got[] = {s1.dl > 0.0 ? s1.dls : l.p1, sl.dl > 0.0 ? sl.dls : pl, s2.md - s1.md,
                          s1.tvd, s2.tvd};
    for (int k = 0; k < 5; ++k) {
        const double tol = k < 2 ? 0.0 : kPos;  // [rad/L] for the severities, else [L]
        EXPECT_NEAR(want[k] != 0.0 ? got[k] : 0.0, want[k], tol) << "setting " << k;
    }
    if ((code == 2940 || code == 1940) && s1.dl > 0.0 && sl.dl > 0.0) {
        EXPECT_NEAR(s1.dls, sl.dls, 1e-12) << "one severity";
    }
}

/// The settings that the method of `code` takes from a built path.
Line settingsOf(int code, const Built& b, double R1, double R2, double H) {
    switch (code) {
    case 2910: return {110, 1, 1.0 / R1, 1.0 / R2, 0, 0, 0, 0};
    case 2940: return {110, 4, 0, 0, H, 0, 0, 0};
    case 2950: return {110, 5, 0, 0, 0, 0, b.A.v, b.B.v};
    case 1940: return {110, 8, 0, 0, 0, 0, 0, 0};
    case 1960: return {110, 6, 1.0 / R1, 0, 0, 0, 0, 0};
    case 1970: return {110, 7, 0, 1.0 / R2, 0, 0, 0, 0};
    default: return {140, 0, 1.0 / R1, 0, 0, aziOf(b.t1), 0, 0};
    }
}

/// Line `l` keeps its settings: read back with GetData, and a later edit re-solves it to the same
/// stations (the line's own settings, not the stray transfer fields of the edit).
void expectReSolveAndReadBack(CPlan p, const Line& l, int n) {
    const SStation before = at(p, n);
    for (auto m : kParams) p.*m = 7.0;
    p.m_nFamily = 20, p.m_nSubMethod = 1, p.m_dMD = before.md + 300.0;  // a hold after it
    p.PutData(-1);
    ASSERT_EQ(p.m_nError, 0);
    EXPECT_EQ(at(p, n).md, before.md);
    EXPECT_EQ(at(p, n).ew, before.ew);
    p.GetData(1);
    EXPECT_EQ(p.m_nFamily, l.family);
    EXPECT_EQ(p.m_nTargetMethod, l.variant);
    const double* want = &l.p1;  // settings left zero: not compared
    for (int k = 0; k < 6; ++k)
        EXPECT_EQ(want[k] != 0.0 ? p.*kParams[k] : 0.0, want[k]) << "p" << k + 1;
}

}  // namespace

// SPE-204111-PA (2021), Example 2: "OPT AL DLS" with radii 1250 and 1750 ft; the published tangent,
// arcs and total course to their published digits.
TEST(OptimumAlign, PublishedCurveHoldCurve) {
    const V X{8800.0, 9500.0, 6500.0}, t1 = dir(85 * kDeg, 30 * kDeg);
    const Line l{110, 1, 1.0 / 1250, 1.0 / 1750, 0, 0, 0, 0};  // the severities, kept exactly
    const CPlan p = put(tie({8000.0, 8000.0, 6000.0}, 75 * kDeg, 15 * kDeg), l, X, t1);
    ASSERT_EQ(p.m_nError, 0);
    expectLine(p, l, 2910, X, t1);
    const SStation s1 = at(p, 1), s2 = at(p, 2), s3 = at(p, 3);
    EXPECT_NEAR(s2.md - s1.md, 1072.6, 0.05) << "tangent [ft]";
    EXPECT_NEAR(s1.dl / kDeg, 13.953, 0.0005) << "first arc [deg]";
    EXPECT_NEAR(s3.dl / kDeg, 13.109, 0.0005) << "second arc [deg]";
    EXPECT_NEAR(s3.md - 1200.0, 1777.40, 0.005) << "total course [ft]";
}

// SPE-204111-PA (2021), Example 4: "HZ Landing" with radius 469.94 on the line through (0, 0,
// 3280.8) at azimuth 340; the published landing point and arcs.
TEST(OptimumAlign, PublishedLanding) {
    const SStation from = tie({-81.72, 167.78, 3293.92}, 82 * kDeg, 328 * kDeg);
    const Line l{140, 0, 1.0 / 469.94, 0, 0, 340 * kDeg, 0, 0};
    const CPlan p = put(from, l, {0.0, 0.0, 3280.8}, dir(M_PI / 2, 340 * kDeg));
    ASSERT_EQ(p.m_nError, 0);
    const SStation s2 = at(p, 2);
    // The published start is rounded to 0.01: the landing point agrees to one unit in that digit.
    EXPECT_NEAR(s2.ns, 533.30, 0.01);
    EXPECT_NEAR(s2.ew, -194.11, 0.01);
    EXPECT_EQ(s2.tvd, 3280.8);
    EXPECT_EQ(std::make_pair(s2.inc, s2.azi), std::make_pair(M_PI / 2, 340 * kDeg));
    EXPECT_NEAR(at(p, 1).dl / kDeg, 30.774, 0.0005);
    EXPECT_NEAR(s2.dl / kDeg, 16.385, 0.0005);
    expectLine(p, l, 1950, pos(s2), dir(M_PI / 2, 340 * kDeg));
}

// Paths built from chosen arcs and holds, their end taken as the target: each method finds that
// path or a shorter valid one, with the given settings exactly, and keeps them through a re-solve.
// Long arcs, short holds and arcs turning far round are among them.
TEST(OptimumAlign, KnownPaths) {
    const struct {
        const char* name;
        int code;
        double d1, tf1, R1, H, d2, tf2, R2;
    } rows[] = {
        {"2910 long arcs, short hold", 2910, 2.6, 2.0, 500, 5, 2.4, -0.5, 700},
        {"2910 drop back past vertical", 2910, 1.2, M_PI, 600, 300, 0.3, 1.0, 1500},
        {"2940 tangent of 600", 2940, 0.8, 1.0, 900, 600, 0.4, 2.5, 900},
        {"2950 depths of the hold", 2950, 0.6, 0.2, 1000, 900, 0.9, -2.0, 700},
        {"1940 S-curve", 1940, 0.7, 0.5, 800, 0, 1.1, 2.8, 800},
        {"1960 first arc given", 1960, 1.0, -1.0, 600, 0, 0.5, 1.2, 1400},
        {"1970 second arc given", 1970, 0.4, 2.0, 1600, 0, 1.3, -0.3, 500},
    };
    const SStation from = tie();
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const Built b = build(from, r.d1, r.tf1, r.R1, r.H, r.d2, r.tf2, r.R2);
        const Line l = settingsOf(r.code, b, r.R1, r.R2, r.H);
        const CPlan p = put(from, l, b.X, b.t1);
        ASSERT_EQ(p.m_nError, 0);
        expectLine(p, l, r.code, b.X, b.t1);
        const int n = r.code / 1000 + 1;
        EXPECT_LE(at(p, n).md - from.md, b.md + kShorter);
        expectReSolveAndReadBack(p, l, n);
    }
}

// Every failure code, in the order the methods test them; a failing line leaves the plan as it was.
TEST(OptimumAlign, FailureCodes) {
    const SStation from = tie(), flat = tie(pos(from), M_PI / 2, from.azi);
    const V t0 = dirOf(from), ahead = pos(from) + 900.0 * t0;
    const V far = pos(from) + V{400.0, 300.0, 700.0}, t1 = dir(1.2, 2.0);
    const V near = pos(from) + V{30.0, 0.0, 20.0};
    const struct {
        const char* name;
        Line line;
        V X, t1;
        int error;
        bool angles = true, flatStart = false;  // a horizontal start heading along the line
    } rows[] = {
        {"2910 no arrival angles", {110, 1, 1e-3, 1e-3, 0, 0, 0, 0}, far, t1, -16, false},
        {"2910 target on the start", {110, 1, 1e-3, 1e-3, 0, 0, 0, 0}, pos(from), t1, -12},
        {"2910 DLS1 zero", {110, 1, 0, 1e-3, 0, 0, 0, 0}, far, t1, -1},
        {"2910 DLS2 zero", {110, 1, 1e-3, 0, 0, 0, 0, 0}, far, t1, -2},
        {"2940 tangent negative", {110, 4, 0, 0, -5, 0, 0, 0}, far, t1, -13},
        {"2950 depths unreachable", {110, 5, 0, 0, 0, 0, 900, 800}, far, t1, -17},
        {"1940 no curve needed", {110, 8, 0, 0, 0, 0, 0, 0}, ahead, t0, -12},
        {"1960 no curve needed", {110, 6, 1e-3, 0, 0, 0, 0, 0}, ahead, t0, -12},
        {"1960 too gentle", {110, 6, 2e-6, 0, 0, 0, 0, 0}, near, t1, -1},
        {"1970 no curve needed", {110, 7, 0, 1e-3, 0, 0, 0, 0}, ahead, t0, -12},
        {"1970 too gentle", {110, 7, 0, 2e-6, 0, 0, 0, 0}, near, t1, -2},
        {"1950 DLS zero", {140, 0, 0, 0, 0, from.azi, 0, 0}, far, t1, -1},
        {"1950 on the line along it",
         {140, 0, 1e-3, 0, 0, from.azi, 0, 0},
         pos(from),
         t1,
         -12,
         true,
         true},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = put(r.flatStart ? flat : from, r.line, r.X, r.t1, r.angles);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nPrev, 0);
        EXPECT_EQ(p.m_nFirst, 1);
    }
}

// Random poses from paths built backwards from their end: arcs of 1e-4 to 2.5 rad (a third of them
// below 0.1, on a log scale), holds of zero, of 1e-3 to 10 (a quarter each, on a log scale) and up
// to 2000, radii of 100 to 5000; a landing ends horizontally on a line through the target, anywhere
// along it. Every method finds the built path or a shorter one, with every arc of the given severity.
TEST(OptimumAlign, RandomPosesNoneMissed) {
    std::mt19937 gen(14);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    auto arc = [&] {
        return u(gen) < 1.0 / 3 ? std::pow(10.0, -4.0 + 3.0 * u(gen)) : 0.1 + 2.4 * u(gen);
    };
    auto hold = [&] {
        const double k = u(gen);
        return k < 0.25 ? 0.0 : k < 0.5 ? std::pow(10.0, -3.0 + 4.0 * u(gen)) : 2000.0 * u(gen);
    };
    for (int k = 0; k < 100; ++k) {
        for (int code : {2910, 2940, 2950, 1940, 1960, 1970, 1950}) {
            const bool landing = code == 1950;
            const V X{u(gen) * 500, u(gen) * 500, 3000 + u(gen) * 500};
            const V t1 = dir(landing ? M_PI / 2 : std::acos(1.0 - 2.0 * u(gen)), 6.2 * u(gen));
            const double R1 = 100 + 4900 * u(gen);
            const double R2 = code == 2940 || code == 1940 || landing ? R1 : 100 + 4900 * u(gen);
            const double H = code > 2000 ? hold() : 0.0;
            SStation from;
            const Built b =
                buildBack(X, t1, arc(), 6.2 * u(gen), R1, H, arc(), 6.2 * u(gen), R2, from);
            SCOPED_TRACE(testing::Message() << "pose " << k << " code " << code);
            const Line l = settingsOf(code, b, R1, R2, H);
            const V target = landing ? X + (2000.0 * u(gen) - 1000.0) * t1 : X;
            const CPlan p = put(from, l, target, t1);
            ASSERT_EQ(p.m_nError, 0);
            const int n = code / 1000 + 1;
            const V end = pos(at(p, n)), off = end - target;
            EXPECT_LE(laid(p, n).md - from.md, b.md + kShorter);
            EXPECT_NEAR(len(off - dot(off, t1) * t1), 0.0, kPos) << "off the target's line";
            expectLine(p, l, code, landing ? end : target, t1);
        }
    }
}
