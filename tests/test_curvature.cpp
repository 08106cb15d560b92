// The curvature steps: minimum curvature, radius of curvature, and the arc to a point.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct CurvatureTag;
template <>
struct PlanAccess<CurvatureTag> {
    static void mincur(CPlan& p) { p.mincur(); }
    static void radcur(CPlan& p) { p.radcur(); }
};
using Curv = PlanAccess<CurvatureTag>;
using orrin::HALF_PI;
using orrin::PI;

namespace {

constexpr double kLenTol = 1e-8;    // positions and depths [L]
constexpr double kAngTol = 1e-9;    // angles [rad]
constexpr double kRateTol = 1e-11;  // dogleg severity, build and turn rates [rad/L]
// An inclination taken as acos of a value within rounding of 1 keeps only half the digits [rad].
constexpr double kNearVerticalTol = 1e-7;

struct Dir {
    double md, inc, azi;
};
struct Pos {
    double tvd, ns, ew;
};

SStation at(Dir d, Pos p = {1000.0, 200.0, -300.0}) {
    SStation s;
    s.md = d.md, s.inc = d.inc, s.azi = d.azi;
    s.tvd = p.tvd, s.ns = p.ns, s.ew = p.ew;
    return s;
}

using Step = void (*)(CPlan&);

/// Runs one curvature step from `from`, placed away from the origin, to `to`; returns the offset.
Pos offsetBy(Step step, Dir from, Dir to, CPlan& p) {
    p.m_stnPrev = at(from);
    p.m_stnC = at(to, {0, 0, 0});
    step(p);
    return {p.m_stnC.tvd - p.m_stnPrev.tvd, p.m_stnC.ns - p.m_stnPrev.ns,
            p.m_stnC.ew - p.m_stnPrev.ew};
}

// Hand geometry. A circular arc of radius R is the same course in both models. The 60-degree right
// turn is not a circle: minimum curvature has dogleg acos(1/4) and offset F (t1 + t2) with
// F = tan(dl/2) L / dl, tan(dl/2) = sqrt((1 - 1/4) / (1 + 1/4)); radius of curvature goes down
// L cos 60 and sweeps H = L sin 60 round a quarter turn, (H / (pi/2)) north and east.
TEST(Curvature, HandGeometryInBothModels) {
    const double fTurn = std::sqrt(0.6) * 100.0 / std::acos(0.25);
    const double hTurn = 100.0 * std::sqrt(3.0) / PI;
    const double r100 = 200.0 / PI;  // radius of a quarter circle 100 long
    struct Row {
        const char* name;
        Dir from, to;
        Pos mc, rc;
    };
    const Row rows[] = {
        {"straight level east",
         {0, HALF_PI, HALF_PI},
         {100, HALF_PI, HALF_PI},
         {0, 0, 100},
         {0, 0, 100}},
        {"quarter circle from vertical to level north, 100 long",
         {0, 0, 0},
         {100, HALF_PI, 0},
         {r100, r100, 0},
         {r100, r100, 0}},
        {"pure build 30 to 90 deg heading east, R 1000",
         {0, PI / 6, HALF_PI},
         {1000 * PI / 3, HALF_PI, HALF_PI},
         {500, 0, 866.0254037844386},
         {500, 0, 866.0254037844386}},
        {"level turn north to east, R 1000",
         {0, HALF_PI, 0},
         {500 * PI, HALF_PI, HALF_PI},
         {0, 1000, 1000},
         {0, 1000, 1000}},
        {"right turn at 60 deg, north to east, 100 long",
         {0, PI / 3, 0},
         {100, PI / 3, HALF_PI},
         {fTurn, fTurn * std::sqrt(0.75), fTurn * std::sqrt(0.75)},
         {50, hTurn, hTurn}},
    };
    for (const Row& r : rows) {
        const struct {
            const char* name;
            Step step;
            Pos want;
        } models[] = {{"minimum curvature", &Curv::mincur, r.mc},
                      {"radius of curvature", &Curv::radcur, r.rc}};
        for (const auto& m : models) {
            SCOPED_TRACE(std::string(r.name) + ", " + m.name);
            CPlan p;
            const Pos got = offsetBy(m.step, r.from, r.to, p);
            EXPECT_NEAR(got.tvd, m.want.tvd, kLenTol);
            EXPECT_NEAR(got.ns, m.want.ns, kLenTol);
            EXPECT_NEAR(got.ew, m.want.ew, kLenTol);
        }
    }

    CPlan p;  // mincur leaves both direction vectors behind
    offsetBy(&Curv::mincur, {0, 0, 0}, {100, HALF_PI, HALF_PI}, p);
    EXPECT_NEAR(p.m_stnPrev.uv, 1.0, kLenTol);
    EXPECT_NEAR(p.m_stnC.ue, 1.0, kLenTol);
}

// Both models are second order: over a course of length L their positions differ by O(L^3), so
// halving the course divides the difference by about 8.
TEST(Curvature, ModelsAgreeAsTheCourseShrinks) {
    double previous = 0.0;
    for (double len : {80.0, 40.0, 20.0, 10.0, 5.0}) {
        SCOPED_TRACE(len);
        CPlan p;
        const Dir from{0, 0.4, 1.0}, to{len, 0.4 + 0.002 * len, 1.0 + 0.003 * len};
        const Pos mc = offsetBy(&Curv::mincur, from, to, p);
        const Pos rc = offsetBy(&Curv::radcur, from, to, p);
        const double diff = std::hypot(mc.tvd - rc.tvd, mc.ns - rc.ns, mc.ew - rc.ew);
        if (previous > 0.0) {
            EXPECT_NEAR(previous / diff, 8.0, 0.2);
        }
        previous = diff;
    }
}

TEST(Curvature, RadcurRatesAndToolface) {
    struct Row {
        const char* name;
        bool horizontalTurn;
        Dir from, to;
        double dls, tf, build, turn, fromAzi, toAzi;
    };
    const double keep = 9.0;  // the toolface m_stnC holds before the step
    const Row rows[] = {
        {"pure build", false, {0, 0.2, 1}, {100, 0.5, 1}, 0.003, HALF_PI, 0.003, 0, 1, 1},
        {"pure drop", false, {0, 0.5, 1}, {100, 0.2, 1}, 0.003, -HALF_PI, -0.003, 0, 1, 1},
        {"level right turn",
         false,
         {0, HALF_PI, 1},
         {100, HALF_PI, 1.3},
         0.003,
         0,
         0,
         0.003,
         1,
         1.3},
        {"level left turn",
         false,
         {0, HALF_PI, 1.3},
         {100, HALF_PI, 1},
         0.003,
         PI,
         0,
         -0.003,
         1.3,
         1},
        {"right turn at 30 deg, plain turn rate",
         false,
         {0, PI / 6, 0},
         {100, PI / 6, 0.2},
         0.001,
         0,
         0,
         0.002,
         0,
         0.2},
        {"right turn at 30 deg, horizontal turn rate",
         true,
         {0, PI / 6, 0},
         {100, PI / 6, 0.2},
         0.001,
         0,
         0,
         0.001,
         0,
         0.2},
        {"from exactly vertical: toolface is the end azimuth",
         false,
         {0, 0, 1},
         {100, 0.5, 4},
         0.005,
         4,
         0.005,
         0,
         4,
         4},
        {"to exactly vertical: end takes the start azimuth",
         false,
         {0, 0.5, 2},
         {100, 0, 5},
         0.005,
         -HALF_PI,
         -0.005,
         0,
         2,
         2},
        {"vertical to vertical keeps the toolface",
         false,
         {0, 0, 1},
         {100, 0, 2},
         0,
         keep,
         0,
         0,
         2,
         2},
        {"no change of direction keeps the toolface",
         false,
         {0, 0.5, 1},
         {100, 0.5, 1},
         0,
         keep,
         0,
         0,
         1,
         1},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_bHorizontalTurn = r.horizontalTurn;
        p.m_stnPrev = at(r.from);
        p.m_stnC = at(r.to);
        p.m_stnC.tf = keep;
        Curv::radcur(p);
        EXPECT_NEAR(p.m_stnC.dls, r.dls, kRateTol);
        EXPECT_NEAR(p.m_stnC.tf, r.tf, kAngTol);
        EXPECT_NEAR(p.m_stnC.build, r.build, kRateTol);
        EXPECT_NEAR(p.m_stnC.turn, r.turn, kRateTol);
        EXPECT_NEAR(p.m_stnPrev.azi, r.fromAzi, kAngTol);
        EXPECT_NEAR(p.m_stnC.azi, r.toAzi, kAngTol);
    }

    // Build and turn together: dls and toolface are those of the course at its mid-point, where the
    // derivative of the direction (a central difference) splits into a build part along the
    // high-side vector and a turn part along the right-hand vector.
    const double i0 = 0.4, a0 = 0.0, di = 0.002, da = 0.003, mid = 50.0, step = 1e-4;
    double e1, n1, v1, e2, n2, v2;
    CPlan::vector(i0 + di * (mid + step), a0 + da * (mid + step), e1, n1, v1);
    CPlan::vector(i0 + di * (mid - step), a0 + da * (mid - step), e2, n2, v2);
    const double de = (e1 - e2) / (2 * step), dn = (n1 - n2) / (2 * step),
                 dv = (v1 - v2) / (2 * step);
    const double im = i0 + di * mid, am = a0 + da * mid;
    const double buildPart =
        de * std::cos(im) * std::sin(am) + dn * std::cos(im) * std::cos(am) - dv * std::sin(im);
    const double turnPart = de * std::cos(am) - dn * std::sin(am);
    CPlan p;
    p.m_stnPrev = at({0, i0, a0});
    p.m_stnC = at({100, i0 + 100 * di, a0 + 100 * da});
    Curv::radcur(p);
    EXPECT_NEAR(p.m_stnC.dls, std::sqrt(de * de + dn * dn + dv * dv), kRateTol);
    EXPECT_NEAR(p.m_stnC.tf, std::atan2(buildPart, turnPart), kAngTol);

    // The vertical tests are exact: inclinations of 1e-9 keep their own azimuths.
    p.m_stnPrev = at({0, 1e-9, 1});
    p.m_stnC = at({100, 1e-9, 2});
    Curv::radcur(p);
    EXPECT_EQ(p.m_stnPrev.azi, 1.0);
    EXPECT_EQ(p.m_stnC.azi, 2.0);

    // A course shorter than the zero band copies the start station whole.
    p.m_stnPrev = at({500, 0.3, 0.2}, {1, 2, 3});
    p.m_stnPrev.method = 30, p.m_stnPrev.target = u"T1", p.m_stnPrev.flag = true;
    p.m_stnPrev.dls = 0.01, p.m_stnPrev.tf = 2.0;
    p.m_stnC = at({500 + 5e-7, 0.9, 2.5}, {7, 8, 9});
    Curv::radcur(p);
    EXPECT_EQ(p.m_stnC.md, 500.0);
    EXPECT_EQ(p.m_stnC.tvd, 1.0);
    EXPECT_EQ(p.m_stnC.tf, 2.0);
    EXPECT_EQ(p.m_stnC.method, 30);
    EXPECT_EQ(p.m_stnC.target, u"T1");
    EXPECT_TRUE(p.m_stnC.flag);
}

// backcal inverts mincur: lay an arc with mincur, aim at its end point from its start, and get the
// end direction and the course length back. The dogleg is checked against the angle between the
// two end directions.
TEST(Curvature, ArcToPointInvertsMinimumCurvature) {
    struct Row {
        const char* name;
        Dir from, to;
    };
    const Row rows[] = {
        {"build and turn", {100, 0.3, 0.5}, {400, 0.9, 1.4}},
        {"drop and turn across north", {100, 1.2, 5.9}, {300, 0.8, 0.3}},
        {"level turn of 2.5 rad", {100, HALF_PI, 0}, {500, HALF_PI, 2.5}},
        {"from vertical", {100, 0, 0}, {350, 0.6, 2.0}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_stnPrev = at(r.from);
        p.m_stnC = at(r.to);
        Curv::mincur(p);
        const double dogleg =
            std::acos(p.m_stnPrev.ue * p.m_stnC.ue + p.m_stnPrev.un * p.m_stnC.un +
                      p.m_stnPrev.uv * p.m_stnC.uv);
        p.m_stnA = at({0, 0, 0}, {p.m_stnC.tvd, p.m_stnC.ns, p.m_stnC.ew});
        EXPECT_NEAR(p.ptoang(), dogleg, kAngTol);
        EXPECT_NEAR(p.m_stnA.md, r.to.md, kLenTol);
        EXPECT_NEAR(p.m_stnA.inc, r.to.inc, kAngTol);
        EXPECT_NEAR(p.m_stnA.azi, r.to.azi, kAngTol);
        EXPECT_NEAR(p.m_stnA.dls, dogleg / (r.to.md - r.from.md), kRateTol);
    }
}

// From level north at md 1000, tvd 500: straight courses for short chords and points on the
// tangent (ahead or behind); arcs otherwise.
TEST(Curvature, ArcToPointStraightAndLimitCases) {
    struct Row {
        const char* name;
        Pos point;
        double md, dogleg, inc, azi, dls;
    };
    const Row rows[] = {
        {"chord 0.2 at right angles: straight", {500, 0, 0.2}, 1000.2, 0, HALF_PI, 0, 0},
        {"chord exactly 0.25 at right angles: straight", {500, 0, 0.25}, 1000.25, 0, HALF_PI, 0, 0},
        {"on the tangent 50 ahead", {500, 50, 0}, 1050, 0, HALF_PI, 0, 0},
        {"on the tangent 50 behind: straight ahead", {500, -50, 0}, 1050, 0, HALF_PI, 0, 0},
        {"chord 0.3 at right angles: half circle",
         {500, 0, 0.3},
         1000 + 0.15 * PI,
         PI,
         HALF_PI,
         PI,
         1 / 0.15},
        {"quarter circle of radius 100 down to vertical",
         {600, 100, 0},
         1000 + 50 * PI,
         HALF_PI,
         0,
         0,
         0.01},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_stnPrev = at({1000, HALF_PI, 0}, {500, 0, 0});
        p.m_stnA = at({0, 0, 0}, r.point);
        EXPECT_NEAR(p.ptoang(), r.dogleg, kAngTol);
        EXPECT_NEAR(p.m_stnA.md, r.md, kLenTol);
        EXPECT_NEAR(p.m_stnA.inc, r.inc, kNearVerticalTol);
        EXPECT_NEAR(p.m_stnA.azi, r.azi, kAngTol);
        EXPECT_NEAR(p.m_stnA.dls, r.dls, kRateTol);
    }
}

}  // namespace
