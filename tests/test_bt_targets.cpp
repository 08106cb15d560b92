// Build/turn and online target methods through whole plans: each target is the end of a path laid
// here (Simpson's rule for build/turn curves, circle geometry for arcs), and every stored part is
// checked against that geometry.
#include <gtest/gtest.h>

#include <cmath>

#include "plan/CPlan.h"

namespace {

constexpr double kDeg = M_PI / 180.0;
constexpr double kPer100 = kDeg / 100.0;  ///< 1 degree per 100 [rad/L]
constexpr double kPos = 1e-6;             ///< positions of a part against its own geometry [L]
constexpr double kClose = 1e-4;           ///< closure a solved line must reach [L]
constexpr double kDir = 1e-6;             ///< agreement of a solved direction [rad]
constexpr double kRate = 1e-9;            ///< solved rates against the laid ones [rad/L]

struct V {
    double e, n, v;
    V operator+(V b) const { return {e + b.e, n + b.n, v + b.v}; }
    V operator-(V b) const { return {e - b.e, n - b.n, v - b.v}; }
    friend V operator*(double k, V a) { return {k * a.e, k * a.n, k * a.v}; }
    friend double dot(V a, V b) { return a.e * b.e + a.n * b.n + a.v * b.v; }
    double len() const { return std::sqrt(dot(*this, *this)); }
};
const auto dir = [](double inc, double azi) {
    return V{std::sin(inc) * std::sin(azi), std::sin(inc) * std::cos(azi), std::cos(inc)};
};
const auto dirOf = [](const SStation& s) { return dir(s.inc, s.azi); };
const auto pos = [](const SStation& s) { return V{s.ew, s.ns, s.tvd}; };

SStation tie(double inc = 30 * kDeg, double azi = 40 * kDeg) {
    SStation s;
    s.md = 2000.0, s.tvd = 1900.0, s.ns = 150.0, s.ew = -80.0, s.inc = inc, s.azi = azi;
    s.method = 2;
    return s;
}
const SStation t0 = tie();

/// Displacement along a build/turn curve (I = I0 + B s, A = A0 + T s) by Simpson's rule.
V curve(const SStation& from, double B, double T, double L, int steps = 20000) {
    V sum{0, 0, 0};
    for (int i = 0; i <= steps; ++i) {
        const double s = L * i / steps, w = (i == 0 || i == steps) ? 1.0 : (i % 2 ? 4.0 : 2.0);
        sum = sum + w * dir(from.inc + B * s, from.azi + T * s);
    }
    return (L / steps / 3.0) * sum;
}

/// An arc of radius R turning phi from p in t0's direction towards the side of toolface tf
/// (m = cos tf high + sin tf right): its end and end direction, from the circle's geometry.
struct Arc {
    V end, u;
};
Arc circle(V p, double R, double phi, double tf) {
    const V t = dirOf(t0), high = dir(t0.inc + M_PI / 2, t0.azi);
    const V m = std::cos(tf) * high + std::sin(tf) * V{std::cos(t0.azi), -std::sin(t0.azi), 0};
    return {p + R * std::sin(phi) * t + R * (1 - std::cos(phi)) * m,
            std::cos(phi) * t + std::sin(phi) * m};
}

/// The stored part from `a` to `b` is a build/turn curve of its own stored rates.
void expectCurve(const SStation& a, const SStation& b) {
    const double L = b.md - a.md;
    const V end = pos(a) + curve(a, b.build, b.turn, L);
    EXPECT_NEAR((end - pos(b)).len(), 0.0, kPos) << "curve end off the integrated curve";
    EXPECT_NEAR(dot(dirOf(b), dir(a.inc + b.build * L, a.azi + b.turn * L)), 1.0, kDir * kDir);
}
/// The stored part from `a` to `b` is a straight hold along a's direction.
void expectHold(const SStation& a, const SStation& b) {
    EXPECT_NEAR((pos(b) - pos(a) - (b.md - a.md) * dirOf(a)).len(), 0.0, kPos) << "not straight";
    EXPECT_NEAR(dot(dirOf(a), dirOf(b)), 1.0, kDir * kDir) << "hold turns";
    EXPECT_GE(b.md - a.md, 0.0);
}
/// The stored part from `a` to `b` is a circular arc of curvature k tangent at a.
void expectArc(const SStation& a, const SStation& b, double k) {
    const V t = dirOf(a), u = dirOf(b), d = pos(b) - pos(a);
    const V side = u - dot(t, u) * t, m = (1.0 / side.len()) * side;
    const V r = d - (1.0 / k) * m;  // from the circle's centre to the end
    EXPECT_NEAR(r.len(), 1.0 / k, kPos) << "end off the circle";
    EXPECT_NEAR(dot(r, u), 0.0, kPos) << "end direction not along the circle";
    EXPECT_NEAR(b.md - a.md, std::acos(dot(t, u)) / k, kPos) << "course is not the arc";
    EXPECT_NEAR(b.dls, k, 1e-12) << "dls";
}

struct Line {
    int family, variant = 0;
    V aim;
    double md = 0.0, p1 = 0.0, p4 = 0.0, p7 = 0.0, p8 = 0.0;
};

/// The tie-on and one target line, put through its family.
CPlan put(const Line& l, bool horizontalTurn = false, const SStation& from = t0) {
    CPlan p;
    p.NewData(10);
    p.LoadData(0, from);
    p.m_bHorizontalTurn = horizontalTurn;
    p.m_nFamily = l.family, p.m_nTargetMethod = l.variant, p.m_dMD = l.md;
    p.m_dMethodParam1 = l.p1, p.m_dMethodParam4 = l.p4;
    p.m_dMethodParam7 = l.p7, p.m_dMethodParam8 = l.p8;
    p.m_target.name = u"T1", p.m_target.flag = true;
    p.m_target.ew = l.aim.e, p.m_target.ns = l.aim.n, p.m_target.tvd = l.aim.v;
    p.PutData(-1);
    return p;
}
SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

/// Line `l` solved to stations 1 ... n ending on `end`; re-solving with other transfer fields gives
/// the same stations (each line solves from its own record); GetData gives back its settings.
void expectLine(CPlan& p, const Line& l, int code, int n, V end, bool exactDepth = true) {
    ASSERT_EQ(p.m_nError, 0);
    ASSERT_EQ(p.m_nPrev, n);
    SStation before[4];
    for (int k = 0; k <= n; ++k) before[k] = at(p, k);
    for (int k = 1; k <= n; ++k) EXPECT_EQ(before[k].method, k == 1 ? code : 1) << k;
    EXPECT_EQ(before[n].ns, end.n);
    EXPECT_EQ(before[n].ew, end.e);
    EXPECT_NEAR(before[n].tvd, end.v, exactDepth ? 0.0 : kClose);
    p.m_dMethodParam1 = p.m_dMethodParam4 = p.m_dMethodParam7 = p.m_dMethodParam8 = 0.0123;
    p.PutData(0);
    ASSERT_EQ(p.m_nError, 0);
    for (int k = 0; k <= n; ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(at(p, k).md, before[k].md);
        EXPECT_EQ(at(p, k).tvd, before[k].tvd);
        EXPECT_EQ(at(p, k).turn, before[k].turn);
    }
    p.GetData(1);
    EXPECT_EQ(p.m_nFamily, l.family);
    EXPECT_EQ(p.m_nTargetMethod, l.variant);
    const double want[] = {l.md, l.p1, l.p4, l.p7, l.p8};  // settings left zero: not compared
    const double got[] = {p.m_dMD, p.m_dMethodParam1, p.m_dMethodParam4, p.m_dMethodParam7,
                          p.m_dMethodParam8};
    for (int k = 0; k < 5; ++k)
        EXPECT_EQ(want[k] != 0.0 ? got[k] : 0.0, want[k]) << "setting " << k;
}

}  // namespace

// 925: one build/turn curve laid with chosen rates, its end the target; 935: the same kind of curve
// of a given length, the target giving only its north and east (its depth wrong on purpose). The
// method finds those rates and that length. Straight ahead is a hold.
TEST(BuildTurnTargets, CurveToTarget) {
    const struct {
        const char* name;
        int variant;
        double B, T, L;
    } rows[] = {
        {"925 build, turn right", 1, 3 * kPer100, 2 * kPer100, 900.0},
        {"925 turn only", 1, 0.0, 3 * kPer100, 800.0},
        {"925 straight ahead", 1, 0.0, 0.0, 1200.0},
        {"935 build, turn right", 2, 2 * kPer100, 3 * kPer100, 1000.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const bool ne = r.variant == 2;
        const V end = pos(t0) + curve(t0, r.B, r.T, r.L);
        const Line l{125, r.variant, end + V{0, 0, ne ? 777.0 : 0.0}, ne ? t0.md + r.L : 0.0};
        CPlan p = put(l);
        expectLine(p, l, ne ? 935 : 925, 1, end, !ne);
        const SStation s = at(p, 1);
        EXPECT_NEAR(s.md, t0.md + r.L, ne ? 0.0 : kClose);
        EXPECT_NEAR(s.build, r.B, kRate);
        EXPECT_NEAR(s.turn, r.T, kRate);
        expectCurve(t0, s);
    }
    // The horizontal-turn model lays its curves its own way; the line still ends on the target.
    const Line l{125, 1, pos(t0) + V{600.0, 900.0, 700.0}};
    CPlan p = put(l, true);
    expectLine(p, l, 925, 1, l.aim);
}

// Lines of two or three parts (kick-off hold, curve or arc, hold) laid here, their end the target:
// the settings are kept exactly and the laid path found (1930, 1935: that or a shorter one).
TEST(TargetLines, LaidPaths) {
    const struct {
        const char* name;
        int code;
        double H1, B, T, L, hold;  // arcs (1930, 2930): turning B [rad] at toolface T, radius L
    } rows[] = {
        {"1915 build, turn right", 1915, 0, 2 * kPer100, 1.5 * kPer100, 2000.0, 1500.0},
        {"1930 build and turn right", 1930, 0, 0.5, 0.6, 1000.0, 900.0},
        {"1935 build, turn right", 1935, 0, 2 * kPer100, 1.5 * kPer100, 900.0, 1200.0},
        {"2925 drop, turn left", 2925, 300, -2 * kPer100, -3 * kPer100, 600.0, 1500.0},
        {"2925 no kick-off", 2925, 0, 2 * kPer100, 0.0, 1000.0, 700.0},
        {"2930 drop, turn left", 2930, 200, 0.3, -2.6, 1000.0, 2000.0},
        {"2930 no kick-off", 2930, 0, 0.8, 0.2, 1200.0, 700.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const bool arc = r.code == 1930 || r.code == 2930, free = r.code == 1930 || r.code == 1935;
        const int n = r.code > 2000 ? 3 : 2;
        const V start = pos(t0) + r.H1 * dirOf(t0);
        const Arc a = arc ? circle(start, r.L, r.B, r.T)
                          : Arc{start + curve(t0, r.B, r.T, r.L),
                                dir(t0.inc + r.B * r.L, t0.azi + r.T * r.L)};
        const V aim = a.end + r.hold * a.u;
        const double inc = std::acos(a.u.v), course = arc ? r.B * r.L : r.L;
        Line l{r.code == 1930 ? 130 : 135, 0, aim, 0, 0, a.end.v};
        switch (r.code) {
        case 1915: l = {55, 0, aim + V{0, 0, -300.0}, 0, 0, inc, r.B}; break;
        case 2925: l = {85, 0, aim, 0, 0, 0, r.B, r.T}; break;
        case 2930: l = {45, 2, aim, 0, 1.0 / r.L, inc}; break;
        }
        CPlan p = put(l);
        expectLine(p, l, r.code, n, aim, r.code != 1915);
        const SStation k = at(p, n - 2), c = at(p, n - 1), h = at(p, n);
        switch (r.code) {  // the given settings, kept exactly
        case 1915:
            EXPECT_EQ(c.inc, inc);
            EXPECT_EQ(c.build, r.B);
            EXPECT_NEAR(c.turn, r.T, kRate);
            break;
        case 2925:
            EXPECT_EQ(c.build, r.B);
            EXPECT_EQ(c.turn, r.T);
            break;
        case 2930:
            EXPECT_EQ(c.inc, inc);
            EXPECT_EQ(c.dls, 1.0 / r.L);
            break;
        }
        EXPECT_NEAR(c.tvd, a.end.v, kClose);
        EXPECT_NEAR(k.md - t0.md, r.H1, kClose);
        if (free) {
            EXPECT_LE(h.md - t0.md, course + r.hold + kClose) << "longer than laid";
        } else {
            EXPECT_NEAR(c.md - k.md, course, kClose);
        }
        expectHold(t0, k);
        if (arc) {
            expectArc(k, c, c.dls);
        } else {
            expectCurve(k, c);
        }
        expectHold(c, h);
    }
}

// Every failure code of these methods; a failing line leaves the plan as it was.
TEST(BuildTurnTargets, FailureCodes) {
    const double B = 3 * kPer100, T = 2 * kPer100;
    const V o = pos(t0), t = dirOf(t0), high = dir(t0.inc + M_PI / 2, t0.azi);
    const V far = o + V{2000, 2000, 2000}, wide = o + 2000.0 * t + 1500.0 * high;
    const V bend = curve(t0, B, T, 1200.0), tEnd = dir(t0.inc + B * 1200, t0.azi + T * 1200);
    const V back = o - 900.0 * t + bend + 300.0 * tEnd;
    const struct {
        const char* name;
        Line line;
        int error;
    } rows[] = {
        {"925 target on the start", {125, 1, o}, -12},
        {"925 straight behind", {125, 1, o - 500.0 * t}, -4},
        {"935 no course", {125, 2, o + V{100, 100, 100}, t0.md}, -18},
        {"935 out of reach", {125, 2, o + V{3000, 0, 0}, t0.md + 500.0}, -10},
        {"1915 no build", {55, 0, far, 0, 0, 60 * kDeg, 0.0}, -18},
        {"1915 vertical end", {55, 0, far, 0, 0, 0.0, -2 * kPer100}, -14},
        {"1915 under the curve's turning", {55, 0, o + V{0, 0, 500}, 0, 0, 80 * kDeg, kPer100}, -1},
        {"1930 straight ahead", {130, 0, o + 800.0 * t, 0, 0, 2500}, -12},
        {"1930 depth above the start", {130, 0, o + V{900, 900, 900}, 0, 0, t0.tvd - 50}, -17},
        {"1935 straight ahead", {135, 0, o + 800.0 * t, 0, 0, 2500}, -12},
        {"1935 depth above the start", {135, 0, o + V{900, 900, 900}, 0, 0, t0.tvd - 50}, -17},
        {"2925 no build, no turn", {85, 0, o + V{500, 500, 500}}, -18},
        {"2925 kick-off would run backwards", {85, 0, back, 0, 0, 0, B, T}, -9},
        {"2925 below a build in its plane",
         {85, 0, o + 1000.0 * t - 100.0 * high, 0, 0, 0, B},
         -10},
        {"2930 straight ahead", {45, 2, o + 900.0 * t, 0, 1e-3, 0.7}, -12},
        {"2930 inside the turning circle", {45, 2, o + 20.0 * t + V{30, 0, 0}, 0, 1e-2, 0.7}, -1},
        {"2930 end inclination below every join", {45, 2, wide, 0, 1e-3, 1 * kDeg}, -14},
        {"2930 end inclination above every join", {45, 2, wide, 0, 1e-3, 179 * kDeg}, -15},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = put(r.line);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nPrev, 0);
    }
    // A turn in the horizontal plane never reaches a target below that plane.
    const SStation flat = tie(M_PI / 2, 0.0);
    EXPECT_EQ(put({85, 0, pos(flat) + V{800, 800, 300}, 0, 0, 0, 0.0, T}, false, flat).m_nError,
              -4);
}
