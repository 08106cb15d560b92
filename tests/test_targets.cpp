// Curve-to-target methods and the 3D dispatch, against circle geometry: an arc of radius R from p0
// along t bending towards m is at p0 + R sin(phi) t + R (1 - cos phi) m after the angle phi.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "plan/CPlan.h"
#include "targets/TargetSolvers.h"

namespace {

constexpr double kPos = 1e-6;    ///< positions and depths [L]
constexpr double kAng = 1e-9;    ///< angles and unit-vector components [rad]
constexpr double kRate = 1e-12;  ///< dogleg severities [rad/L]
// 910 and 930 iterate until the course changes by less than 1e-4: their results are that close.
constexpr double kPosIter = 1e-4;   ///< positions and depths it solves [L]
constexpr double kAngIter = 1e-6;   ///< angles it solves [rad]
constexpr double kRateIter = 1e-9;  ///< dogleg severities it solves [rad/L]

struct V {
    double e, n, v;
    V operator+(V b) const { return {e + b.e, n + b.n, v + b.v}; }
    V operator-(V b) const { return {e - b.e, n - b.n, v - b.v}; }
    friend V operator*(double k, V a) { return {k * a.e, k * a.n, k * a.v}; }
    friend double dot(V a, V b) { return a.e * b.e + a.n * b.n + a.v * b.v; }
    friend V cross(V a, V b) {
        return {a.n * b.v - a.v * b.n, a.v * b.e - a.e * b.v, a.e * b.n - a.n * b.e};
    }
};
V dir(double inc, double azi) {
    return {std::sin(inc) * std::sin(azi), std::sin(inc) * std::cos(azi), std::cos(inc)};
}
V pos(const SStation& s) {
    return {s.ew, s.ns, s.tvd};
}

/// The tie-on: inclined, with build and turn rates of its own (which 1920 carries over).
SStation tie(double inc = 0.5, double azi = 0.8) {
    SStation s;
    s.md = 1000.0, s.tvd = 900.0, s.ns = 50.0, s.ew = 20.0;
    s.inc = inc, s.azi = azi, s.build = 0.001, s.turn = 0.002, s.method = 2;
    return s;
}
const SStation t0 = tie();
const V ahead = dir(t0.inc, t0.azi);

/// The unit side direction of toolface tf at the tie-on: tf 0 is the high side (a pure build), pi/2
/// the right.
V side(double tf) {
    const V high{std::cos(t0.inc) * std::sin(t0.azi), std::cos(t0.inc) * std::cos(t0.azi),
                 -std::sin(t0.inc)};
    return std::cos(tf) * high + std::sin(tf) * V{std::cos(t0.azi), -std::sin(t0.azi), 0.0};
}

/// A plan of the tie-on and one line to target T1 at `aim`, put through the family and variant.
CPlan put(int family, int variant, V aim, double dls = 0.0, double inc = 0.0, double md = 0.0,
          const SStation& from = t0) {
    CPlan p;
    p.NewData(10);
    p.LoadData(0, from);
    p.m_nFamily = family, p.m_nTargetMethod = variant;
    p.m_dMethodParam1 = dls, p.m_dMethodParam4 = inc, p.m_dMD = md;
    p.m_target.name = u"T1", p.m_target.flag = true;
    p.m_target.ew = aim.e, p.m_target.ns = aim.n, p.m_target.tvd = aim.v;
    p.PutData(-1);
    return p;
}

SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

void expectAt(const SStation& s, V want, double tolDown = kPos) {
    EXPECT_NEAR(s.tvd, want.v, tolDown) << "tvd";
    EXPECT_NEAR(s.ns, want.n, kPos) << "north";
    EXPECT_NEAR(s.ew, want.e, kPos) << "east";
}

/// The stored course from station `from` to station `to` is a circular arc of curvature k, tangent
/// to the direction at `from`.
void expectArc(const SStation& from, const SStation& to, double k, double tol = kPos) {
    const V t = dir(from.inc, from.azi), b = dir(to.inc, to.azi), d = pos(to) - pos(from);
    const V u = b - dot(t, b) * t, m = (1.0 / std::sqrt(dot(u, u))) * u, r = d - (1.0 / k) * m;
    EXPECT_NEAR(std::sqrt(dot(r, r)), 1.0 / k, tol) << "end off the circle";
    EXPECT_NEAR(dot(r, b), 0.0, tol) << "end direction not along the circle";
    EXPECT_NEAR(dot(d, cross(t, m)), 0.0, tol) << "arc out of its plane";
    EXPECT_NEAR(to.md - from.md, std::acos(dot(t, b)) / k, tol) << "course is not the arc";
}

}  // namespace

// 920 is given a known circle's point; 930 its north, east and course length, and finds the depth.
TEST(CurveToTarget, SingleArcOnKnownCircles) {
    const struct {
        const char* name;
        double tf, R, phi;
    } rows[] = {
        {"pure build", 0.0, 1000.0, 0.6},
        {"drop to the left", -2.5, 1500.0, 0.3},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V m = side(r.tf), heading = std::cos(r.phi) * ahead + std::sin(r.phi) * m;
        const V end = pos(t0) + r.R * std::sin(r.phi) * ahead + r.R * (1.0 - std::cos(r.phi)) * m;
        for (int variant : {1, 2}) {
            SCOPED_TRACE(variant == 1 ? "920" : "930");
            const bool iter = variant == 2;
            const CPlan p = put(120, variant, end + V{0.0, 0.0, iter ? 500.0 : 0.0}, 0.0, 0.0,
                                t0.md + r.R * r.phi);
            ASSERT_EQ(p.m_nError, 0);
            const SStation s = at(p, 1);
            EXPECT_EQ(s.method, iter ? 930 : 920);
            EXPECT_NEAR(s.md, t0.md + r.R * r.phi, iter ? kPosIter : kPos);
            expectAt(s, end, iter ? kPosIter : kPos);
            EXPECT_NEAR(dot(dir(s.inc, s.azi), heading), 1.0, iter ? kAngIter : kAng);
            EXPECT_NEAR(s.dls, 1.0 / r.R, iter ? kRateIter : kRate);
            EXPECT_NEAR(s.tf, r.tf, iter ? kAngIter : kAng);
        }
    }
}

// Straight ahead is a straight course; 930 vertical to its own north/east is a vertical course;
// 930 that cannot reach sideways fails with -10 and leaves the line as put.
TEST(CurveToTarget, SingleArcSpecialValues) {
    CPlan p = put(120, 1, pos(t0) + 700.0 * ahead);
    ASSERT_EQ(p.m_nError, 0);
    const SStation s = at(p, 1);
    EXPECT_NEAR(s.md, t0.md + 700.0, kPos);
    EXPECT_EQ(std::tie(s.dls, s.tf, s.build, s.turn), std::make_tuple(0.0, 0.0, 0.0, 0.0));
    p = put(120, 2, pos(t0), 0.0, 0.0, t0.md + 400.0, tie(0.0, 0.0));
    ASSERT_EQ(p.m_nError, 0);
    EXPECT_NEAR(at(p, 1).tvd, t0.tvd + 400.0, kPos);
    p = put(120, 2, pos(t0) + V{600.0, 0.0, 0.0}, 0.0, 0.0, t0.md + 300.0);
    EXPECT_EQ(p.m_nError, -10);
    EXPECT_EQ(at(p, 1).md, t0.md + 300.0);
}

// 910: an arc of the severity to the inclination, heading over the target; too near a target: -1.
TEST(CurveToTarget, OnlineInclination) {
    const struct {
        const char* name;
        V offset;
        double dls, inc;
        int error;
    } rows[] = {
        {"build and turn right", {4000.0, 1000.0, 3000.0}, 3e-4, 1.2, 0},
        {"drop and turn left", {-900.0, 600.0, 2500.0}, 5e-4, 0.2, 0},
        {"target within the tangent length", {30.0, 20.0, 100.0}, 1e-4, 1.4, -1},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const V aim = pos(t0) + r.offset;
        const CPlan p = put(50, 0, aim, r.dls, r.inc);
        ASSERT_EQ(p.m_nError, r.error);
        if (r.error != 0) continue;
        const SStation s = at(p, 1);
        EXPECT_EQ(s.method, 910);
        EXPECT_NEAR(s.inc, r.inc, kAng);
        EXPECT_EQ(s.dls, r.dls);
        const V over = aim - pos(s), h = dir(M_PI / 2.0, s.azi);
        EXPECT_NEAR(over.e * h.n - over.n * h.e, 0.0, kPosIter) << "heading not over the target";
        EXPECT_GT(dot(over, h), 0.0);
        expectArc(t0, s, r.dls, kPosIter);
    }
}

// 1910 (arc, hold) and 1920 (hold, arc): a tangent arc of the severity, a straight hold, on the
// target; failures (-12 straight ahead, -1 behind within the band or too far aside) leave the tie-on.
TEST(CurveToTarget, ArcAndHold) {
    const V m = side(1.0), ahead2 = pos(t0) + 2500.0 * ahead + 900.0 * m;
    const V behind = pos(t0) - 200.0 * ahead + 300.0 * side(0.4);
    const struct {
        const char* name;
        int variant;
        V aim;
        double dls;
        int error;
    } rows[] = {
        {"1910 ahead", 1, ahead2, 1e-3, 0},
        {"1920 ahead", 2, ahead2, 4e-4, 0},
        {"1910 behind, beyond the band: an arc of more than 90 degrees", 1,
         pos(t0) - 300.0 * ahead + 2500.0 * m, 1e-3, 0},
        {"1910 straight ahead", 1, pos(t0) + 800.0 * ahead, 1e-3, -12},
        {"1920 behind, within the band", 2, behind, 1e-3, -1},
        {"1920 more than two radii aside", 2, pos(t0) + 1500.0 * ahead + 2500.0 * side(0.4), 1e-3,
         -1},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = put(80, r.variant, r.aim, r.dls);
        ASSERT_EQ(p.m_nError, r.error);
        if (r.error != 0) {
            EXPECT_EQ(p.m_nPrev, 0);
            continue;
        }
        const SStation s1 = at(p, 1), s2 = at(p, 2);
        EXPECT_EQ(s1.method, r.variant == 1 ? 1910 : 1920);
        EXPECT_EQ(s2.method, 1);
        expectAt(s2, r.aim);
        const SStation& arcFrom = r.variant == 1 ? t0 : s1;
        const SStation& arcTo = r.variant == 1 ? s1 : s2;
        const SStation& holdFrom = r.variant == 1 ? s1 : t0;
        const SStation& holdTo = r.variant == 1 ? s2 : s1;
        expectArc(arcFrom, arcTo, r.dls);
        EXPECT_NEAR(arcTo.dls, r.dls, kRate);
        const V hold = pos(holdTo) - pos(holdFrom), holdDir = dir(holdFrom.inc, holdFrom.azi);
        EXPECT_NEAR(dot(hold, holdDir), holdTo.md - holdFrom.md, kPos);
        EXPECT_NEAR(dot(dir(holdTo.inc, holdTo.azi), holdDir), 1.0, kAng);
        if (r.variant == 2) {  // carried over from the start station
            EXPECT_EQ(std::tie(s1.build, s1.turn, s1.dls), std::make_tuple(t0.build, t0.turn, 0.0));
        }
    }
}

// Requested severity gentler than the single arc's: raised to it + 1e-6, and the hold is short.
TEST(CurveToTarget, ArcAndHoldRaisesAGentleSeverity) {
    const double R = 1000.0, phi = 0.8;
    const V m = side(0.4);
    const CPlan p =
        put(80, 1, pos(t0) + R * std::sin(phi) * ahead + R * (1 - std::cos(phi)) * m, 0.5 / R);
    ASSERT_EQ(p.m_nError, 0);
    EXPECT_NEAR(at(p, 1).dls, 1.0 / R + 1e-6, kRateIter);
    EXPECT_LT(at(p, 2).md - at(p, 1).md, 50.0);  // the hold grows as the root of the raise
    EXPECT_GT(at(p, 2).md - at(p, 1).md, 0.0);
}

TEST(RootScan, NearestRootIsTheFullScansNearest) {
    // The search outwards from 0 gives the root of least |x| (the first of two as near) that a scan
    // of every step gives: smooth roots, wrapped-angle jumps, exact zeros, ranges off zero.
    const struct {
        const char* name;
        double (*f)(double);
        double a, b;
    } rows[] = {
        {"many smooth roots", [](double x) { return std::sin(23 * x + 1.1) - 0.3; }, -3, 3},
        {"wrapped angle", [](double x) { return std::remainder(7 * x + 0.4, 2 * orrin::PI); }, -3,
         3},
        {"zero on a grid point", [](double x) { return x == -1.5 ? 0.0 : x + 1.0; }, -3, 3},
        {"zero at the end only", [](double x) { return x == 2.0 ? 0.0 : 1.0; }, -2, 2},
        {"symmetric roots", [](double x) { return std::cos(5 * x); }, -3, 3},
        {"range above zero", [](double x) { return std::sin(9 * x); }, 0.5, 3},
        {"no root", [](double x) { return 2 + std::sin(x); }, -3, 3},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const auto accept = [](double, double g) { return std::fabs(g) <= 1e-3; };
        double best = NAN;
        orrin::scanRoots(r.f, r.a, r.b, 1e-12, [&](double x, double g) {
            if (accept(x, g) && !(std::fabs(best) <= std::fabs(x))) best = x;
            return false;
        });
        const double nearest = orrin::nearestRoot(r.f, r.a, r.b, 1e-12, accept);
        if (std::isnan(best))
            EXPECT_TRUE(std::isnan(nearest));
        else
            EXPECT_EQ(nearest, best);
    }
}
