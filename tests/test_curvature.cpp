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

/// Runs one curvature step from `from`, placed away from the origin, to `to`; returns the offset.
Pos offsetBy(void (*step)(CPlan&), Dir from, Dir to, CPlan& p) {
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
    const double f = std::sqrt(0.6) * 100.0 / std::acos(0.25), fs = f * std::sqrt(0.75);
    const double h = 100.0 * std::sqrt(3.0) / PI, q = HALF_PI, L3 = 1000 * PI / 3;
    const double r = 200.0 / PI, s60 = 866.0254037844386;  // radius of a quarter circle 100 long
    struct Row {
        const char* name;
        Dir from, to;
        Pos mc, rc;
    };
    const Row rows[] = {
        {"quarter circle vertical to north", {0, 0, 0}, {100, q, 0}, {r, r, 0}, {r, r, 0}},
        {"build 30-90 east, R 1000", {0, PI / 6, q}, {L3, q, q}, {500, 0, s60}, {500, 0, s60}},
        {"level N to E, R 1000", {0, q, 0}, {500 * PI, q, q}, {0, 1000, 1000}, {0, 1000, 1000}},
        {"right turn at 60 deg", {0, PI / 3, 0}, {100, PI / 3, q}, {f, fs, fs}, {50, h, h}},
    };
    for (const Row& row : rows) {
        for (bool mc : {true, false}) {
            SCOPED_TRACE(std::string(row.name) + (mc ? ", minimum" : ", radius of") + " curvature");
            CPlan p;
            const Pos got = offsetBy(mc ? &Curv::mincur : &Curv::radcur, row.from, row.to, p);
            const Pos& want = mc ? row.mc : row.rc;
            EXPECT_NEAR(got.tvd, want.tvd, kLenTol);
            EXPECT_NEAR(got.ns, want.ns, kLenTol);
            EXPECT_NEAR(got.ew, want.ew, kLenTol);
        }
    }
}

// Both models are second order: over a course of length L their positions differ by O(L^3), so
// halving the course divides the difference by about 8.
TEST(Curvature, ModelsAgreeAsTheCourseShrinks) {
    double previous = 0.0;
    for (double len : {80.0, 40.0, 20.0, 10.0}) {
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

// Rates and toolface of radcur over a course of 100 from inclination/azimuth (i1, a1) to (i2, a2);
// an exactly vertical end takes the other end's azimuth, and no change keeps the old toolface.
TEST(Curvature, RadcurRatesAndToolface) {
    struct Row {
        const char* name;
        bool hTurn;
        double i1, a1, i2, a2, dls, tf, build, turn, a1out, a2out;
    };
    // keep: the toolface m_stnC holds before the step.
    const double keep = 9.0, q = HALF_PI, s = PI / 6;
    const Row rows[] = {
        {"pure build", false, 0.2, 1, 0.5, 1, 0.003, q, 0.003, 0, 1, 1},
        {"level left turn", false, q, 1.3, q, 1, 0.003, PI, 0, -0.003, 1.3, 1},
        {"30 deg right, plain rate", false, s, 0, s, 0.2, 0.001, 0, 0, 0.002, 0, 0.2},
        {"30 deg right, horizontal rate", true, s, 0, s, 0.2, 0.001, 0, 0, 0.001, 0, 0.2},
        {"from vertical: tf is the end azimuth", false, 0, 1, 0.5, 4, 0.005, 4, 0.005, 0, 4, 4},
        {"to vertical: the start azimuth", false, 0.5, 2, 0, 5, 0.005, -q, -0.005, 0, 2, 2},
        {"no change of direction", false, 0.5, 1, 0.5, 1, 0, keep, 0, 0, 1, 1},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_bHorizontalTurn = r.hTurn;
        p.m_stnPrev = at({0, r.i1, r.a1});
        p.m_stnC = at({100, r.i2, r.a2});
        p.m_stnC.tf = keep;
        Curv::radcur(p);
        EXPECT_NEAR(p.m_stnC.dls, r.dls, kRateTol);
        EXPECT_NEAR(p.m_stnC.tf, r.tf, kAngTol);
        EXPECT_NEAR(p.m_stnC.build, r.build, kRateTol);
        EXPECT_NEAR(p.m_stnC.turn, r.turn, kRateTol);
        EXPECT_NEAR(p.m_stnPrev.azi, r.a1out, kAngTol);
        EXPECT_NEAR(p.m_stnC.azi, r.a2out, kAngTol);
    }

    // Build and turn together: dls and toolface are those of the course at its mid-point, where the
    // derivative of the direction (a central difference) splits into a build part along the
    // high-side vector and a turn part along the right-hand vector.
    const double i0 = 0.4, di = 0.002, da = 0.003, im = i0 + 50 * di, am = 50 * da, ds = 1e-4;
    double e1, n1, v1, e2, n2, v2;
    CPlan::vector(im + di * ds, am + da * ds, e1, n1, v1);
    CPlan::vector(im - di * ds, am - da * ds, e2, n2, v2);
    const double de = (e1 - e2) / (2 * ds), dn = (n1 - n2) / (2 * ds), dv = (v1 - v2) / (2 * ds);
    const double buildPart =
        de * std::cos(im) * std::sin(am) + dn * std::cos(im) * std::cos(am) - dv * std::sin(im);
    CPlan p;
    p.m_stnPrev = at({0, i0, 0});
    p.m_stnC = at({100, i0 + 100 * di, 100 * da});
    Curv::radcur(p);
    EXPECT_NEAR(p.m_stnC.dls, std::sqrt(de * de + dn * dn + dv * dv), kRateTol);
    EXPECT_NEAR(p.m_stnC.tf, std::atan2(buildPart, de * std::cos(am) - dn * std::sin(am)), kAngTol);

    // The vertical tests are exact: inclinations of 1e-9 keep their own azimuths.
    p.m_stnPrev = at({0, 1e-9, 1});
    p.m_stnC = at({100, 1e-9, 2});
    Curv::radcur(p);
    EXPECT_EQ(p.m_stnPrev.azi, 1.0);
    EXPECT_EQ(p.m_stnC.azi, 2.0);

    // A course shorter than the zero band copies the start station whole.
    p.m_stnPrev = at({500, 0.3, 0.2}, {1, 2, 3});
    p.m_stnPrev.method = 30, p.m_stnPrev.target = u"T1";
    p.m_stnC = at({500 + 5e-7, 0.9, 2.5}, {7, 8, 9});
    Curv::radcur(p);
    EXPECT_EQ(p.m_stnC.md, 500.0);
    EXPECT_EQ(p.m_stnC.tvd, 1.0);
    EXPECT_EQ(p.m_stnC.method, 30);
    EXPECT_EQ(p.m_stnC.target, u"T1");
}

// backcal inverts mincur: lay an arc with mincur, aim at its end point from its start, and get the
// end direction and the course length back; the dogleg is the angle between the end directions.
TEST(Curvature, ArcToPointInvertsMinimumCurvature) {
    struct Row {
        const char* name;
        Dir from, to;
    };
    const Row rows[] = {
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
        const SStation &a = p.m_stnPrev, &c = p.m_stnC;
        const double dogleg = std::acos(a.ue * c.ue + a.un * c.un + a.uv * c.uv);
        p.m_stnA = at({0, 0, 0}, {c.tvd, c.ns, c.ew});
        EXPECT_NEAR(p.ptoang(), dogleg, kAngTol);
        EXPECT_NEAR(p.m_stnA.md, r.to.md, kLenTol);
        EXPECT_NEAR(p.m_stnA.inc, r.to.inc, kAngTol);
        EXPECT_NEAR(p.m_stnA.azi, r.to.azi, kAngTol);
        EXPECT_NEAR(p.m_stnA.dls, dogleg / (r.to.md - r.from.md), kRateTol);
    }
}

// From level north at md 1000, tvd 500: a straight course for chords up to 0.25 and points on the
// tangent (ahead or behind); arcs otherwise.
TEST(Curvature, ArcToPointStraightAndLimitCases) {
    struct Row {
        const char* name;
        Pos point;
        double md, dogleg, inc, azi, dls;
    };
    const Row rows[] = {
        {"chord 0.25 across: straight", {500, 0, 0.25}, 1000.25, 0, HALF_PI, 0, 0},
        {"on the tangent 50 ahead", {500, 50, 0}, 1050, 0, HALF_PI, 0, 0},
        {"50 behind: straight ahead", {500, -50, 0}, 1050, 0, HALF_PI, 0, 0},
        {"chord 0.3: half circle", {500, 0, 0.3}, 1000 + 0.15 * PI, PI, HALF_PI, PI, 1 / 0.15},
        {"R 100 down to vertical", {600, 100, 0}, 1000 + 50 * PI, HALF_PI, 0, 0, 0.01},
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
