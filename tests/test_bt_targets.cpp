// Build/turn and online target methods (925, 935, 1915, 1930, 1935, 2925, 2930), through whole plans.
//
// Each case is built from a known solution: a path laid by the test's own geometry (a build/turn curve
// integrated numerically by Simpson's rule, a circular arc from its centre, straight holds), whose end
// becomes the target. The method must find that path or a shorter valid one, and every stored part is
// checked on its own against the same independent geometry.
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

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
V dir(double inc, double azi) {
    return {std::sin(inc) * std::sin(azi), std::sin(inc) * std::cos(azi), std::cos(inc)};
}
V dir(const SStation& s) {
    return dir(s.inc, s.azi);
}
V pos(const SStation& s) {
    return {s.ew, s.ns, s.tvd};
}

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

/// The stored part from `a` to `b` is a build/turn curve of its own stored rates.
void expectCurve(const SStation& a, const SStation& b) {
    const double L = b.md - a.md;
    const V end = pos(a) + curve(a, b.build, b.turn, L);
    EXPECT_NEAR((end - pos(b)).len(), 0.0, kPos) << "curve end off the integrated curve";
    EXPECT_NEAR(dot(dir(b), dir(a.inc + b.build * L, a.azi + b.turn * L)), 1.0, kDir * kDir);
}
/// The stored part from `a` to `b` is a straight hold along a's direction.
void expectHold(const SStation& a, const SStation& b) {
    const V d = pos(b) - pos(a);
    EXPECT_NEAR((d - (b.md - a.md) * dir(a)).len(), 0.0, kPos) << "hold not straight";
    EXPECT_NEAR(dot(dir(a), dir(b)), 1.0, kDir * kDir) << "hold turns";
    EXPECT_GE(b.md - a.md, 0.0);
}
/// The stored part from `a` to `b` is a circular arc of curvature k tangent at a.
void expectArc(const SStation& a, const SStation& b, double k) {
    const V t = dir(a), u = dir(b), d = pos(b) - pos(a);
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

/// Codes, target and flag of the line's stations 1 ... n; the last on the target, the line solved.
void expectStations(const CPlan& p, int code, int n, V aim) {
    ASSERT_EQ(p.m_nError, 0);
    EXPECT_EQ(p.m_nPrev, n);
    for (int k = 1; k <= n; ++k) {
        EXPECT_EQ(at(p, k).method, k == 1 ? code : 1) << k;
        EXPECT_EQ(at(p, k).target, k == n ? u"T1" : u"") << k;
        EXPECT_EQ(at(p, k).flag, k == n) << k;
    }
    const SStation last = at(p, n);
    EXPECT_EQ(last.ns, aim.n);
    EXPECT_EQ(last.ew, aim.e);
}

/// Re-solving the plan (PutData(0)) with other settings in the transfer fields gives the same
/// stations: each line solves with its own record. GetData gives back its family and settings.
struct Setting {
    double CPlan::*field;
    double value;
};
void expectReSolveAndReadBack(CPlan& p, int family, std::initializer_list<Setting> settings) {
    const int n = p.m_nPrev;
    SStation before[4];
    for (int k = 0; k <= n; ++k) before[k] = at(p, k);
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
    EXPECT_EQ(p.m_nFamily, family);
    for (const Setting& s : settings) EXPECT_EQ(p.*s.field, s.value);
}

}  // namespace

// 925: one build/turn curve laid with chosen rates; its end is the target. The method finds those
// rates and that length. Straight ahead is a hold; the start itself is no target.
TEST(BuildTurnTargets, CurveToTarget) {
    const struct {
        const char* name;
        double B, T, L;
    } rows[] = {
        {"build, turn right", 3 * kPer100, 2 * kPer100, 900.0},
        {"drop, turn left", -2 * kPer100, -4 * kPer100, 700.0},
        {"turn only", 0.0, 3 * kPer100, 800.0},
        {"straight ahead", 0.0, 0.0, 1200.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V aim = pos(t0) + curve(t0, r.B, r.T, r.L);
        CPlan p = put({125, 1, aim});
        expectStations(p, 925, 1, aim);
        const SStation s = at(p, 1);
        EXPECT_EQ(s.tvd, aim.v);
        EXPECT_NEAR(s.md - t0.md, r.L, kClose);
        EXPECT_NEAR(s.build, r.B, kRate);
        EXPECT_NEAR(s.turn, r.T, kRate);
        expectCurve(t0, s);
        expectReSolveAndReadBack(p, 125, {});
    }
    EXPECT_EQ(put({125, 1, pos(t0)}).m_nError, -12);
    EXPECT_EQ(put({125, 1, pos(t0) - 500.0 * dir(t0)}).m_nError, -4);  // straight behind

    // The horizontal-turn model lays its curves its own way; the line still ends on the target.
    const V aim = pos(t0) + V{600.0, 900.0, 700.0};
    CPlan p = put({125, 1, aim}, true);
    expectStations(p, 925, 1, aim);
    expectReSolveAndReadBack(p, 125, {});
}

// 935: a curve of chosen rates and length; the target gives only its north and east (its depth is
// wrong on purpose). The method finds the rates; the depth reached is the curve's.
TEST(BuildTurnTargets, CurveOfLengthToNorthEast) {
    const struct {
        const char* name;
        double B, T, L;
    } rows[] = {
        {"build, turn right", 2 * kPer100, 3 * kPer100, 1000.0},
        {"drop, turn left", -1.5 * kPer100, -2 * kPer100, 600.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V end = pos(t0) + curve(t0, r.B, r.T, r.L);
        CPlan p = put({125, 2, end + V{0, 0, 777.0}, t0.md + r.L});
        expectStations(p, 935, 1, end);
        const SStation s = at(p, 1);
        EXPECT_EQ(s.md, t0.md + r.L);
        EXPECT_NEAR(s.tvd, end.v, kClose);
        EXPECT_NEAR(s.build, r.B, kRate);
        EXPECT_NEAR(s.turn, r.T, kRate);
        expectCurve(t0, s);
        p.GetData(1);
        EXPECT_EQ(p.m_dMD, t0.md + r.L);
        EXPECT_EQ(p.m_nTargetMethod, 2);
    }
    EXPECT_EQ(put({125, 2, pos(t0) + V{100, 100, 100}, t0.md}).m_nError, -18);
    EXPECT_EQ(put({125, 2, pos(t0) + V{3000, 0, 0}, t0.md + 500.0}).m_nError, -10);
}

// 1915: a curve of chosen build and turn to the end inclination, then a hold; the target lies over
// the hold's end, at another depth. The method turns as little as lines the curve up: the chosen turn.
TEST(BuildTurnTargets, OnlineInclination) {
    const struct {
        const char* name;
        double B, T, inc, hold;
    } rows[] = {
        {"build, turn right", 2 * kPer100, 1.5 * kPer100, 70 * kDeg, 1500.0},
        {"drop, turn left", -2 * kPer100, -1 * kPer100, 10 * kDeg, 800.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const double L = (r.inc - t0.inc) / r.B;
        const V end = pos(t0) + curve(t0, r.B, r.T, L);
        const V over = end + r.hold * dir(r.inc, t0.azi + r.T * L);
        CPlan p = put({55, 0, over + V{0, 0, -300.0}, 0, 0, r.inc, r.B});
        expectStations(p, 1915, 2, over);
        const SStation c = at(p, 1), h = at(p, 2);
        EXPECT_EQ(c.inc, r.inc);
        EXPECT_EQ(c.build, r.B);
        EXPECT_NEAR(c.turn, r.T, kRate);
        expectCurve(t0, c);
        expectHold(c, h);
        EXPECT_NEAR(h.tvd, over.v, kClose);
        expectReSolveAndReadBack(
            p, 55, {{&CPlan::m_dMethodParam4, r.inc}, {&CPlan::m_dMethodParam7, r.B}});
    }
    const V far = pos(t0) + V{2000, 2000, 2000};
    const struct {
        const char* name;
        double inc, B;
        int error;
    } fails[] = {
        {"no build", 60 * kDeg, 0.0, -18},
        {"build of the wrong sign", 60 * kDeg, -2 * kPer100, -18},
        {"vertical end", 0.0, -2 * kPer100, -14},
        {"target under the curve's turning", 80 * kDeg, 1 * kPer100, -1},
    };
    for (const auto& f : fails) {
        SCOPED_TRACE(f.name);
        const V aim = f.error == -1 ? pos(t0) + V{0, 0, 500} : far;
        EXPECT_EQ(put({55, 0, aim, 0, 0, f.inc, f.B}).m_nError, f.error);
    }
}

// 1930 and 1935: an arc (1930) or a build/turn curve (1935) laid from the start, then a hold along its
// end direction; the target is the hold's end and the given depth the curve's end depth. The line
// must end the curve at that depth heading at the target.
TEST(OnlineTargets, CurveToADepthThenHold) {
    const struct {
        const char* name;
        int family;
        double B, T, L;  // 1935: the curve; 1930: an arc of dogleg B * L at toolface T [rad]
        double hold;
    } rows[] = {
        {"1930 build and turn right", 130, 0.5, 0.6, 1000.0, 900.0},
        {"1930 drop to the left", 130, 0.3, -2.4, 700.0, 1500.0},
        {"1935 build, turn right", 135, 2 * kPer100, 1.5 * kPer100, 900.0, 1200.0},
        {"1935 drop, turn left", 135, -1 * kPer100, -2 * kPer100, 700.0, 600.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        V end, u;
        if (r.family == 130) {  // the circle of curvature 1/R through the start, bending to side m
            const V t = dir(t0), high = dir(t0.inc + M_PI / 2, t0.azi);
            const V m =
                std::cos(r.T) * high + std::sin(r.T) * V{std::cos(t0.azi), -std::sin(t0.azi), 0};
            const double R = r.L, phi = r.B;
            end = pos(t0) + R * std::sin(phi) * t + R * (1 - std::cos(phi)) * m;
            u = std::cos(phi) * t + std::sin(phi) * m;
        } else {
            end = pos(t0) + curve(t0, r.B, r.T, r.L);
            u = dir(t0.inc + r.B * r.L, t0.azi + r.T * r.L);
        }
        const V aim = end + r.hold * u;
        CPlan p = put({r.family, 0, aim, 0, 0, end.v});
        expectStations(p, r.family == 130 ? 1930 : 1935, 2, aim);
        const SStation c = at(p, 1), h = at(p, 2);
        EXPECT_EQ(h.tvd, aim.v);
        EXPECT_NEAR(c.tvd, end.v, kClose);
        EXPECT_NEAR(dot(dir(c), (1.0 / (aim - pos(c)).len()) * (aim - pos(c))), 1.0, kDir * kDir);
        if (r.family == 130) {
            expectArc(t0, c, c.dls);
        } else {
            expectCurve(t0, c);
        }
        expectHold(c, h);
        EXPECT_LE(h.md - t0.md, r.L * (r.family == 130 ? r.B : 1.0) + r.hold + kClose) << "longer";
        expectReSolveAndReadBack(p, r.family, {{&CPlan::m_dMethodParam4, end.v}});
    }
    for (int family : {130, 135}) {
        SCOPED_TRACE(family);
        EXPECT_EQ(put({family, 0, pos(t0) + 800.0 * dir(t0), 0, 0, 2500}).m_nError, -12);
        EXPECT_EQ(put({family, 0, pos(t0) + V{900, 900, 900}, 0, 0, t0.tvd - 50}).m_nError, -17);
    }
}

// 2925: kick-off hold, build/turn curve of the given rates, hold; laid with chosen lengths, its end is
// the target. The method finds the shortest curve that fits (the chosen one here) and keeps the
// rates exactly.
TEST(BuildTurnTargets, HoldCurveHold) {
    const struct {
        const char* name;
        double B, T, H1, L, H2;
    } rows[] = {
        {"build, turn right", 3 * kPer100, 2 * kPer100, 500.0, 1200.0, 800.0},
        {"drop, turn left", -2 * kPer100, -3 * kPer100, 300.0, 600.0, 1500.0},
        {"no kick-off", 2 * kPer100, 0.0, 0.0, 1000.0, 700.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V kick = pos(t0) + r.H1 * dir(t0);
        const V end = kick + curve(t0, r.B, r.T, r.L);
        const V aim = end + r.H2 * dir(t0.inc + r.B * r.L, t0.azi + r.T * r.L);
        CPlan p = put({85, 0, aim, 0, 0, 0, r.B, r.T});
        expectStations(p, 2925, 3, aim);
        const SStation k = at(p, 1), c = at(p, 2), h = at(p, 3);
        EXPECT_EQ(h.tvd, aim.v);
        EXPECT_EQ(c.build, r.B);
        EXPECT_EQ(c.turn, r.T);
        EXPECT_NEAR(k.md - t0.md, r.H1, kClose);
        EXPECT_NEAR(c.md - k.md, r.L, kClose);
        expectHold(t0, k);
        expectCurve(k, c);
        expectHold(c, h);
        expectReSolveAndReadBack(p, 85,
                                 {{&CPlan::m_dMethodParam7, r.B}, {&CPlan::m_dMethodParam8, r.T}});
    }
    const double B = 3 * kPer100, T = 2 * kPer100;
    const V bend = curve(t0, B, T, 1200.0), tEnd = dir(t0.inc + B * 1200, t0.azi + T * 1200);
    const struct {
        const char* name;
        double B, T;
        V aim;
        int error;
    } fails[] = {
        {"no build, no turn", 0.0, 0.0, pos(t0) + V{500, 500, 500}, -18},
        {"kick-off would run backwards", B, T, pos(t0) - 900.0 * dir(t0) + bend + 300.0 * tEnd, -9},
        {"target below a build in its plane", B, 0.0,
         pos(t0) + 1000.0 * dir(t0) - 100.0 * dir(t0.inc + M_PI / 2, t0.azi), -10},
    };
    for (const auto& f : fails) {
        SCOPED_TRACE(f.name);
        EXPECT_EQ(put({85, 0, f.aim, 0, 0, 0, f.B, f.T}).m_nError, f.error);
    }
    // A turn in the horizontal plane never reaches a target below that plane.
    const SStation flat = tie(M_PI / 2, 0.0);
    EXPECT_EQ(put({85, 0, pos(flat) + V{800, 800, 300}, 0, 0, 0, 0.0, T}, false, flat).m_nError,
              -4);
}

// 2930: kick-off hold, arc of the given severity, hold; laid with a chosen kick-off and arc (its end
// inclination is the one given), its end is the target. The method finds the smallest kick-off:
// the chosen one, as the end inclination changes monotonically with the kick-off here.
TEST(OnlineTargets, HoldArcHoldToAnInclination) {
    const struct {
        const char* name;
        double H1, R, phi, tf, hold;
    } rows[] = {
        {"build, turn right", 400.0, 1500.0, 0.6, 0.5, 1000.0},
        {"drop, turn left", 200.0, 1000.0, 0.3, -2.6, 2000.0},
        {"no kick-off", 0.0, 1200.0, 0.8, 0.2, 700.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V t = dir(t0), high = dir(t0.inc + M_PI / 2, t0.azi);
        const V m =
            std::cos(r.tf) * high + std::sin(r.tf) * V{std::cos(t0.azi), -std::sin(t0.azi), 0};
        const V u = std::cos(r.phi) * t + std::sin(r.phi) * m;
        const V end =
            pos(t0) + r.H1 * t + r.R * std::sin(r.phi) * t + r.R * (1 - std::cos(r.phi)) * m;
        const V aim = end + r.hold * u;
        const double inc = std::acos(u.v);
        CPlan p = put({45, 2, aim, 0, 1.0 / r.R, inc});
        expectStations(p, 2930, 3, aim);
        const SStation k = at(p, 1), a = at(p, 2), h = at(p, 3);
        EXPECT_EQ(h.tvd, aim.v);
        EXPECT_EQ(a.inc, inc);
        EXPECT_EQ(a.dls, 1.0 / r.R);
        EXPECT_NEAR(k.md - t0.md, r.H1, kClose);
        expectHold(t0, k);
        expectArc(k, a, 1.0 / r.R);
        expectHold(a, h);
        expectReSolveAndReadBack(
            p, 45, {{&CPlan::m_dMethodParam1, 1.0 / r.R}, {&CPlan::m_dMethodParam4, inc}});
    }
    const V aim = pos(t0) + 2000.0 * dir(t0) + 1500.0 * dir(t0.inc + M_PI / 2, t0.azi);
    const struct {
        const char* name;
        V aim;
        double dls, inc;
        int error;
    } fails[] = {
        {"straight ahead", pos(t0) + 900.0 * dir(t0), 1e-3, 0.7, -12},
        {"inside the turning circle", pos(t0) + 20.0 * dir(t0) + V{30, 0, 0}, 1e-2, 0.7, -1},
        {"end inclination below every join", aim, 1e-3, 1 * kDeg, -14},
        {"end inclination above every join", aim, 1e-3, 179 * kDeg, -15},
    };
    for (const auto& f : fails) {
        SCOPED_TRACE(f.name);
        EXPECT_EQ(put({45, 2, f.aim, 0, f.dls, f.inc}).m_nError, f.error);
    }
}
