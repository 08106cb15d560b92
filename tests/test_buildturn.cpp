// Build/turn lines, drop/turn arcs, constant-toolface curves and the dogleg calculator, against
// independent integrations of their curves.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double kPer100 = kDeg / 100.0;  // 1 degree per 100 length units [rad/L]
constexpr double TOL_POS = 1e-6;          // positions [L]
constexpr double TOL_ANG = 1e-9;          // angles [rad]

double X() {
    return std::numeric_limits<double>::quiet_NaN();
}

struct Vec {
    double e, n, v;
};
Vec dir(double inc, double azi) {
    return {std::sin(azi) * std::sin(inc), std::cos(azi) * std::sin(inc), std::cos(inc)};
}

SStation start(double md, double incDeg, double aziDeg) {
    SStation s;
    s.md = md;
    s.inc = incDeg * kDeg;
    s.azi = aziDeg * kDeg;
    s.tvd = 1000.0;
    s.ns = 100.0;
    s.ew = -50.0;
    s.method = 2;
    return s;
}

/// Position change along a curve whose direction at arc length s is t(s), by Simpson's rule.
Vec integrate(const std::function<Vec(double)>& t, double L, int steps = 20000) {
    Vec sum{0, 0, 0};
    const double h = L / steps;
    for (int i = 0; i <= steps; ++i) {
        const double w = (i == 0 || i == steps) ? 1 : (i % 2 ? 4 : 2);
        const Vec d = t(i * h);
        sum.e += w * d.e;
        sum.n += w * d.n;
        sum.v += w * d.v;
    }
    return {sum.e * h / 3, sum.n * h / 3, sum.v * h / 3};
}

void expectAt(const SStation& s, const SStation& from, const Vec& d, double tol) {
    EXPECT_NEAR(s.ew, from.ew + d.e, tol) << "east";
    EXPECT_NEAR(s.ns, from.ns + d.n, tol) << "north";
    EXPECT_NEAR(s.tvd, from.tvd + d.v, tol) << "tvd";
}

}  // namespace

TEST(BuildTurn, PlainTurnModelIsTheExactIntegralOfConstantRates) {
    const struct {
        const char* name;
        double inc, azi, build, turn, len;
    } rows[] = {
        {"build and right turn", 20, 30, 3, 2, 400},
        {"drop and left turn", 60, 350, -2, -4, 300},
        // B - T or B + T zero: the 1e-9 stand-in divisor costs about 1e-9 L^2 / 4 [L].
        {"build equal to turn", 30, 10, 2, 2, 500},
        {"build opposite to turn", 30, 10, 2, -2, 500},
        {"pure turn", 45, 100, 0, 5, 200},
        {"pure build", 10, 200, 4, 0, 300},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_stnPrev = start(2000, r.inc, r.azi);
        p.bttomd(2000 + r.len, r.build * kPer100, r.turn * kPer100);
        ASSERT_EQ(p.m_nError, 0);
        const double I1 = r.inc * kDeg, A1 = r.azi * kDeg;
        const double B = r.build * kPer100, T = r.turn * kPer100;
        const Vec d = integrate([&](double s) { return dir(I1 + B * s, A1 + T * s); }, r.len);
        const bool standIn = std::fabs(std::fabs(r.build) - std::fabs(r.turn)) < 1e-12;
        expectAt(p.m_stnC, p.m_stnPrev, d, standIn ? 1e-4 : 1e-6);
        EXPECT_NEAR(p.m_stnC.inc, I1 + B * r.len, TOL_ANG);
        EXPECT_NEAR(std::remainder(p.m_stnC.azi - (A1 + T * r.len), 2 * kPi), 0.0, TOL_ANG);
    }
}

TEST(BuildTurn, HorizontalTurnModelIntegratesTheAzimuthAndLaysAnArc) {
    // dA/ds = T / sin I: the azimuth change against a numerical integral, the position by the arc
    // between the end directions.
    CPlan p;
    p.m_bHorizontalTurn = true;
    p.m_stnPrev = start(0, 30, 20);
    const double B = 2 * kPer100, T = 3 * kPer100, L = 600;
    p.bttomd(L, B, T);
    ASSERT_EQ(p.m_nError, 0);
    double dA = 0;
    const int n = 100000;
    for (int i = 0; i < n; ++i) dA += T / std::sin(30 * kDeg + B * (i + 0.5) * L / n) * L / n;
    EXPECT_NEAR(p.m_stnC.azi, 20 * kDeg + dA, 1e-8);
    const Vec t1 = dir(p.m_stnPrev.inc, p.m_stnPrev.azi), t2 = dir(p.m_stnC.inc, p.m_stnC.azi);
    const double dl = std::acos(t1.e * t2.e + t1.n * t2.n + t1.v * t2.v);
    const double f = L / dl * std::tan(dl / 2);
    expectAt(p.m_stnC, p.m_stnPrev, {f * (t1.e + t2.e), f * (t1.n + t2.n), f * (t1.v + t2.v)},
             TOL_POS);
}

TEST(BuildTurn, EdgeCasesOfTheStep) {
    {
        // From exactly vertical the start takes the end azimuth and the toolface is that azimuth.
        CPlan p;
        p.m_stnPrev = start(0, 0, 0);
        p.bttomd(100, 3 * kPer100, 0.5 * kPer100);
        EXPECT_NEAR(p.m_stnC.azi, 0.5 * kDeg, TOL_ANG);
        EXPECT_NEAR(p.m_stnPrev.azi, 0.5 * kDeg, TOL_ANG);
        EXPECT_NEAR(p.m_stnC.tf, 0.5 * kDeg, TOL_ANG);
    }
    {
        // A drop below vertical stops at vertical with the rate that just reaches it.
        CPlan p;
        p.m_stnPrev = start(0, 5, 90);
        p.bttomd(300, -3 * kPer100, 0);
        EXPECT_EQ(p.m_stnC.inc, 0.0);
        EXPECT_NEAR(p.m_stnC.build, -5 * kDeg / 300, 1e-12);
    }
    {
        // A build through 180 degrees folds back with the azimuth turned round.
        CPlan p;
        p.m_stnPrev = start(0, 170, 40);
        p.bttomd(500, 4 * kPer100, 0);
        EXPECT_NEAR(p.m_stnC.inc, (360 - 190) * kDeg, TOL_ANG);
        EXPECT_NEAR(p.m_stnC.azi, 220 * kDeg, TOL_ANG);
    }
    {
        // To a depth: the end lies at that depth; an unreachable one names the rate that would do.
        CPlan p;
        p.m_stnPrev = start(0, 20, 40);
        p.bttotvd(1300, 2 * kPer100, 1 * kPer100);
        EXPECT_EQ(p.m_nError, 0);
        EXPECT_NEAR(p.m_stnC.tvd, 1300, TOL_POS);
        p.m_stnPrev = start(0, 20, 40);
        p.bttotvd(3000, 8 * kPer100, 0);
        EXPECT_EQ(p.m_nError, -17);
        EXPECT_NEAR(p.m_stnC.build, (1 - std::sin(20 * kDeg)) / 2000, 1e-12);
        p.m_stnPrev = start(0, 20, 40);
        p.bttomd(0, 1e-3, 0);  // md 0 at md 0: a zero course
        EXPECT_EQ(p.m_nError, -18);
    }
}

namespace {

CPlan planWithTie(double incDeg, double aziDeg) {
    CPlan p;
    p.NewData(10);
    p.LoadData(0, start(1000, incDeg, aziDeg));
    return p;
}

}  // namespace

TEST(BuildTurn, FailuresWriteTheValueThatWouldWorkIntoTheLine) {
    const struct {
        const char* name;
        int sub;
        double md, tvd, incDeg, aziDeg, build, turn;  // rates in degrees per 100
        int error;
        double readBuild, readTurn, readIncDeg;  // what reading the line back shows
    } rows[] = {
        // "BT1 MD": 10 deg dropping at 3/100 over 500 would pass vertical; -10/500 ends vertical.
        {"BT1 through vertical", 1, 1500, 0, 0, 0, -3, 0, -18, -10.0 / 500 * 100, 0, X()},
        // "BT2 TVD" from 1000 to 1500: sin(10) + B dV >= 1 with B = 20/100.
        {"BT2 past horizontal", 2, 0, 1500, 0, 0, 20, 0, -17,
         (1 - std::sin(10 * kDeg)) / 500 / kPer100, 0, X()},
        {"BT2 above vertical", 2, 0, 1500, 0, 0, -10, 0, -17, std::sin(10 * kDeg) / 500 / kPer100,
         0, X()},
        {"BT2 no depth change", 2, 0, 1000, 0, 0, 2, 0, -17, 2, 0, X()},
        {"BT2 wrong sign", 2, 0, 800, 0, 0, 2, 0, -18, -2, 0, X()},
        {"BT3 negative inclination", 3, 0, 0, -5, 0, 2, 0, -14, 2, 0, 0},
        {"BT3 wrong sign", 3, 0, 0, 5, 0, 2, 0, -18, -2, 0, X()},
        {"BT4 wrong turn", 4, 0, 0, 0, 10, 0, 2, -19, 0, -2, X()},
        {"BT4 through vertical", 4, 0, 0, 0, 40, -5, 2, -18, -10.0 / 1000 * 100, 2, X()},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planWithTie(10, 20);
        p.m_nFamily = 30;
        p.m_nSubMethod = 1;  // a good first line, which must come back exactly
        p.m_dMD = 1100;
        p.m_dDLS = 2 * kPer100;
        p.m_dTF = 30 * kDeg;
        p.PutData(-1);
        ASSERT_EQ(p.m_nError, 0);
        SStation good;
        p.DumpData(1, good);
        CPlan q = planWithTie(10, 20);  // the failing line straight after the tie-on
        q.m_nFamily = 40;
        q.m_nSubMethod = r.sub;
        q.m_dMD = r.md;
        q.m_dTVD = r.tvd;
        q.m_dInc = r.incDeg * kDeg;
        q.m_dAzi = r.aziDeg * kDeg;
        q.m_dBuild = r.build * kPer100;
        q.m_dTurn = r.turn * kPer100;
        q.PutData(-1);
        EXPECT_EQ(q.m_nError, r.error);
        q.GetData(1);
        EXPECT_NEAR(q.m_dBuild, r.readBuild * kPer100, 1e-12);
        EXPECT_NEAR(q.m_dTurn, r.readTurn * kPer100, 1e-12);
        if (!std::isnan(r.readIncDeg)) {
            EXPECT_EQ(q.m_dInc, r.readIncDeg * kDeg);
        }
        // In a plan with a solved line before it, that line is restored exactly.
        p.m_nFamily = 40;
        p.m_nSubMethod = r.sub;
        p.m_dMD = r.md ? r.md + 100 : 0;
        p.m_dTVD = r.tvd;
        p.m_dInc = r.incDeg * kDeg;
        p.m_dAzi = r.aziDeg * kDeg;
        p.m_dBuild = r.build * kPer100;
        p.m_dTurn = r.turn * kPer100;
        p.PutData(-1);
        SStation after;
        p.DumpData(1, after);
        EXPECT_EQ(after.md, good.md);
        EXPECT_EQ(after.tvd, good.tvd);
        EXPECT_EQ(after.ns, good.ns);
        EXPECT_EQ(after.azi, good.azi);
    }
}

TEST(ConstantToolface, ChainOfArcsAgainstRotatedCircles) {
    // The curve is a chain of circular arcs of 1.0, each leaving with the same toolface measured
    // from its own high side. Reference: each arc by rotating the direction t towards the unit
    // curvature vector k = cos TF h + sin TF r (h the high side, r the right side) by K ds, the
    // position moving by (sin(K ds) t + (1 - cos(K ds)) k) / K.
    const struct {
        const char* name;
        double inc, azi, dls, tf, len;
    } rows[] = {
        {"build and turn right", 30, 40, 3, 60, 500},
        {"drop and turn left", 70, 300, 4, -120, 400},
        {"short last arc", 45, 10, 2, 30, 250.5},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_stnPrev = start(500, r.inc, r.azi);
        p.cttomd(r.len, r.dls * kPer100, r.tf * kDeg);
        ASSERT_EQ(p.m_nError, 0);
        const double K = r.dls * kPer100, TF = r.tf * kDeg;
        double I = r.inc * kDeg, A = r.azi * kDeg;
        Vec pos{0, 0, 0};
        for (double done = 0; done < r.len - 1e-9;) {
            const double ds = std::fmin(1.0, r.len - done);
            const Vec t = dir(I, A);
            const Vec h{std::cos(I) * std::sin(A), std::cos(I) * std::cos(A), -std::sin(I)};
            const Vec rs{std::cos(A), -std::sin(A), 0};
            const Vec k{std::cos(TF) * h.e + std::sin(TF) * rs.e,
                        std::cos(TF) * h.n + std::sin(TF) * rs.n,
                        std::cos(TF) * h.v + std::sin(TF) * rs.v};
            const double a = K * ds, c1 = std::sin(a) / K, c2 = (1 - std::cos(a)) / K;
            pos = {pos.e + c1 * t.e + c2 * k.e, pos.n + c1 * t.n + c2 * k.n,
                   pos.v + c1 * t.v + c2 * k.v};
            const Vec t2{std::cos(a) * t.e + std::sin(a) * k.e,
                         std::cos(a) * t.n + std::sin(a) * k.n,
                         std::cos(a) * t.v + std::sin(a) * k.v};
            I = std::acos(t2.v);
            A = std::atan2(t2.e, t2.n);
            done += ds;
        }
        expectAt(p.m_stnC, p.m_stnPrev, pos, 1e-6);
        EXPECT_NEAR(p.m_stnC.md, 500 + r.len, TOL_POS);
        EXPECT_NEAR(p.m_stnC.inc, I, 1e-9);
        EXPECT_NEAR(std::remainder(p.m_stnC.azi - A, 2 * kPi), 0.0, 1e-9);
        // The chain stays close to the continuous constant-toolface curve, on which
        // dI/ds = K cos TF: within the second-order drift of 1.0 arcs.
        EXPECT_NEAR(p.m_stnC.inc, (r.inc + r.dls * std::cos(TF) * r.len / 100) * kDeg, 1e-4);
    }
}

TEST(ConstantToolface, DepthsWalksAndTheirBound) {
    CPlan p;
    p.m_stnPrev = start(0, 30, 40);
    p.dttotvd(1200, 3 * kPer100, 60 * kDeg);
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_NEAR(p.m_stnC.tvd, 1200, TOL_POS);
    p.m_stnPrev = start(0, 30, 40);
    p.cttotvd(1200, 3 * kPer100, 60 * kDeg);
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_NEAR(p.m_stnC.tvd, 1200, TOL_POS);
    // A flat turn on the horizontal never changes depth: the walk stops at its bound.
    p.m_stnPrev = start(0, 90, 40);
    p.cttotvd(1200, 3 * kPer100, 90 * kDeg);
    EXPECT_EQ(p.m_nError, -17);
    // Turning away from the depth gives up at once.
    p.m_stnPrev = start(0, 30, 40);
    p.cttotvd(900, 3 * kPer100, 0);
    EXPECT_EQ(p.m_nError, -17);
    // A depth not beyond the start is a course length: 5 at md 10 ends at 15; 0 is no course.
    p.m_stnPrev = start(10, 30, 40);
    p.cttomd(5, 3 * kPer100, 0);
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_NEAR(p.m_stnC.md, 15, TOL_POS);
    p.m_stnPrev = start(10, 30, 40);
    p.cttomd(0, 3 * kPer100, 0);
    EXPECT_EQ(p.m_nError, -18);
}

TEST(ConstantToolface, PlanLinesEndOnTheirGivenAngles) {
    const struct {
        const char* name;
        int family, sub;
        double md, incDeg, aziDeg, dls, tfDeg;
        double endMD, endIncDeg, endAziDeg, readTFDeg;
    } rows[] = {
        // A flat turn at 30 degrees: toolface 90, length sin 30 * 30 deg / K = 500.
        {"Inc Azi DCT, flat", 90, 11, 0, 30, 50, 3, 0, 1500, 30, 50, 90},
        {"Inc Azi DCT, flat left", 90, 11, 0, 30, 350, 3, 0, 1500, 30, 350, -90},
        // "CT3 Inc.": inclination rises at K cos TF: 20 degrees at 3 cos 60 per 100 is 1333.33.
        {"CT3 Inc.", 30, 3, 0, 50, 0, 3, 60, 1000 + 20 / 1.5 * 100, 50, X(), 60},
        {"CT1 MD", 30, 1, 2400, X(), X(), 3, 60, 1400, X(), X(), 60},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planWithTie(30, 20);
        // A hold first, so that the curve is not the plan's first line.
        p.m_nFamily = 20;
        p.m_nSubMethod = 1;
        p.m_dMD = 1000;
        p.PutData(-1);
        p.m_nFamily = r.family;
        p.m_nSubMethod = r.sub;
        p.m_bConstTF = 1;
        p.m_dMD = r.md;
        p.m_dInc = std::isnan(r.incDeg) ? 0 : r.incDeg * kDeg;
        p.m_dAzi = std::isnan(r.aziDeg) ? 0 : r.aziDeg * kDeg;
        p.m_dDLS = r.dls * kPer100;
        p.m_dTF = r.tfDeg * kDeg;
        p.PutData(-1);
        ASSERT_EQ(p.m_nError, 0);
        p.GetData(2);
        EXPECT_NEAR(p.m_dMD, r.endMD + 1000, 1e-6);
        if (!std::isnan(r.endIncDeg)) {
            EXPECT_EQ(p.m_dInc, r.endIncDeg * kDeg);
        }
        if (!std::isnan(r.endAziDeg)) {
            EXPECT_EQ(p.m_dAzi, r.endAziDeg * kDeg);
        }
        EXPECT_NEAR(p.m_dTF, r.readTFDeg * kDeg, 1e-9);
        EXPECT_EQ(p.m_bConstTF, r.family == 30 ? 1 : 0);
    }
}

TEST(Ouija, AgreesWithTheLineOfTheSameInputsAndProjects) {
    CPlan line = planWithTie(10, 20);
    line.m_nFamily = 90;
    line.m_nSubMethod = 1;
    line.m_dMD = 1300;
    line.m_dInc = 25 * kDeg;
    line.m_dAzi = 60 * kDeg;
    line.PutData(-1);
    ASSERT_EQ(line.m_nError, 0);
    SStation end;
    line.DumpData(1, end);

    CPlan o;
    o.m_stnPrev = start(1000, 10, 20);
    SStation plane;  // the horizontal plane at depth 2000
    plane.tvd = 2000;
    plane.uv = 1;
    EXPECT_EQ(o.OuijaCalcs(1300, true, 25 * kDeg, true, 60 * kDeg, false, 0, false, 0, plane), 0);
    EXPECT_NEAR(o.m_stnC.tvd, end.tvd, TOL_POS);
    EXPECT_NEAR(o.m_stnC.ns, end.ns, TOL_POS);
    EXPECT_NEAR(o.m_stnC.ew, end.ew, TOL_POS);
    EXPECT_NEAR(o.m_stnC.dls, end.dls, 1e-12);
    // The straight continuation meets the plane: depth 2000, along the end direction.
    const Vec t = dir(25 * kDeg, 60 * kDeg);
    const double along = (2000 - end.tvd) / t.v;
    EXPECT_NEAR(o.m_stnA.tvd, 2000, TOL_POS);
    EXPECT_NEAR(o.m_stnA.ns, end.ns + along * t.n, TOL_POS);
    EXPECT_NEAR(o.m_stnA.md, 1300 + along, TOL_POS);

    // Given inclination, azimuth and DLS, the length is solved and md is not used.
    o.m_stnPrev = start(1000, 10, 20);
    EXPECT_EQ(o.OuijaCalcs(5, true, 25 * kDeg, true, 60 * kDeg, true, end.dls, false, 0, plane), 0);
    EXPECT_NEAR(o.m_stnC.md, 1300, 1e-6);
    // A plane behind the end, one parallel to the end direction, a zero course.
    SStation behind = plane;
    behind.tvd = 0;
    o.m_stnPrev = start(1000, 10, 20);
    EXPECT_EQ(o.OuijaCalcs(300, true, 25 * kDeg, true, 60 * kDeg, false, 0, false, 0, behind), -10);
    o.m_stnPrev = start(1000, 10, 20);
    EXPECT_EQ(o.OuijaCalcs(300, true, 90 * kDeg, true, 60 * kDeg, false, 0, false, 0, plane), -17);
    o.m_stnPrev = start(0, 10, 20);
    EXPECT_EQ(o.OuijaCalcs(0, true, 25 * kDeg, false, 0, false, 0, false, 0, plane), -18);
}

TEST(Ouija, EveryCombinationOfGivenValues) {
    // From inclination 20, azimuth 30 at md 1000, a line to md 1300 (or its DLS). Each row gives
    // some of inclination 35, azimuth 70, DLS and toolface; the same line put as the first-family
    // method of those inputs (or, where there is none, the given values themselves) is the
    // reference for the end.
    const double dls = 8 * kPer100, tf = 50 * kDeg;
    const struct {
        const char* name;
        bool inc, azi, dls;
        int family, sub;  // the matching line, 0 when none
    } rows[] = {
        {"toolface and dls", false, false, true, 30, 1},  // "DT1 MD"
        {"azimuth", false, true, false, 0, 0},
        {"azimuth and dls", false, true, true, 90, 7},  // "DLS Azi MD", upper root
        {"inclination and azimuth", true, true, false, 90, 1},
        {"inclination and dls", true, false, true, 90, 9},  // "DLS Inc MD", turning right
        {"inclination", true, false, false, 0, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan o;
        o.m_stnPrev = start(1000, 20, 30);
        SStation plane;
        plane.tvd = 5000;
        plane.uv = 1;
        ASSERT_EQ(
            o.OuijaCalcs(1300, r.inc, 35 * kDeg, r.azi, 70 * kDeg, r.dls, dls, true, tf, plane), 0);
        const SStation& e = o.m_stnC;
        EXPECT_NEAR(e.md, 1300, TOL_POS);
        if (r.inc) {
            EXPECT_NEAR(e.inc, 35 * kDeg, TOL_ANG);
        }
        if (r.azi) {
            EXPECT_NEAR(e.azi, 70 * kDeg, TOL_ANG);
        }
        if (r.dls) {
            EXPECT_NEAR(e.dls, dls, 1e-12);
        }
        if (r.family != 0) {
            CPlan p = planWithTie(20, 30);
            p.m_nFamily = r.family;
            p.m_nSubMethod = r.sub;
            p.m_dMD = 1300;
            p.m_dInc = 35 * kDeg;
            p.m_dAzi = 70 * kDeg;
            p.m_dDLS = dls;
            p.m_dTF = tf;
            p.PutData(-1);
            ASSERT_EQ(p.m_nError, 0);
            SStation line;
            p.DumpData(1, line);
            EXPECT_NEAR(e.tvd, line.tvd, TOL_POS);
            EXPECT_NEAR(e.ns, line.ns, TOL_POS);
            EXPECT_NEAR(e.ew, line.ew, TOL_POS);
            EXPECT_NEAR(e.inc, line.inc, TOL_ANG);
            EXPECT_NEAR(e.azi, line.azi, TOL_ANG);
        }
    }
}
