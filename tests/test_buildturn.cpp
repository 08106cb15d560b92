// Build/turn lines, drop/turn arcs, constant-toolface curves and the dogleg calculator, against
// independent integrations of their curves.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double kPer100 = kDeg / 100.0;  // 1 degree per 100 length units [rad/L]
constexpr double TOL_POS = 1e-6;          // positions [L]
constexpr double TOL_ANG = 1e-9;          // angles [rad]
constexpr double TOL_RATE = 1e-12;        // rates [rad/L]
constexpr double X = std::numeric_limits<double>::quiet_NaN();  // not checked

struct Vec {
    double e, n, v;
    Vec operator+(Vec b) const { return {e + b.e, n + b.n, v + b.v}; }
    friend Vec operator*(double k, Vec a) { return {k * a.e, k * a.n, k * a.v}; }
};
Vec dir(double inc, double azi) {
    return {std::sin(azi) * std::sin(inc), std::cos(azi) * std::sin(inc), std::cos(inc)};
}

SStation start(double md, double incDeg, double aziDeg) {
    SStation s;
    s.md = md, s.inc = incDeg * kDeg, s.azi = aziDeg * kDeg;
    s.tvd = 1000.0, s.ns = 100.0, s.ew = -50.0, s.method = 2;
    return s;
}

/// Position change along a curve whose direction at arc length s is t(s), by Simpson's rule.
Vec integrate(const std::function<Vec(double)>& t, double L, int steps = 20000) {
    Vec sum{0, 0, 0};
    for (int i = 0; i <= steps; ++i) {
        sum = sum + ((i == 0 || i == steps) ? 1.0 : (i % 2 ? 4.0 : 2.0)) * t(i * L / steps);
    }
    return (L / steps / 3) * sum;
}

void expectAt(const SStation& s, const SStation& from, const Vec& d, double tol) {
    EXPECT_NEAR(s.ew, from.ew + d.e, tol) << "east";
    EXPECT_NEAR(s.ns, from.ns + d.n, tol) << "north";
    EXPECT_NEAR(s.tvd, from.tvd + d.v, tol) << "tvd";
}

/// Checks a quantity unless its expected value is X.
void expectNear(double got, double want, double tol, const char* what) {
    if (!std::isnan(want)) {
        EXPECT_NEAR(got, want, tol) << what;
    }
}

CPlan planWithTie(double incDeg, double aziDeg) {
    CPlan p;
    p.NewData(10);
    p.LoadData(0, start(1000, incDeg, aziDeg));
    return p;
}

/// Puts one line; angles in degrees, rates in degrees per 100.
void putLine(CPlan& p, int family, int sub, double md, double tvd, double incDeg, double aziDeg,
             double build, double turn, double dls = 0, double tfDeg = 0) {
    p.m_nFamily = family, p.m_nSubMethod = sub, p.m_dMD = md, p.m_dTVD = tvd;
    p.m_dInc = incDeg * kDeg, p.m_dAzi = aziDeg * kDeg;
    p.m_dBuild = build * kPer100, p.m_dTurn = turn * kPer100;
    p.m_dDLS = dls * kPer100, p.m_dTF = tfDeg * kDeg;
    p.PutData(-1);
}

}  // namespace

TEST(BuildTurn, PlainTurnModelIsTheExactIntegralOfConstantRates) {
    const struct {
        const char* name;
        double inc, azi, build, turn, len;
    } rows[] = {
        {"build and right turn", 20, 30, 3, 2, 400},
        // B - T zero: the 1e-9 stand-in divisor costs about 1e-9 L^2 / 4 [L].
        {"build opposite to turn", 30, 10, 2, -2, 500},
        {"pure turn", 45, 100, 0, 5, 200},
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
        expectAt(p.m_stnC, p.m_stnPrev, d, standIn ? 1e-4 : TOL_POS);
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
    expectAt(p.m_stnC, p.m_stnPrev, (L / dl * std::tan(dl / 2)) * (t1 + t2), TOL_POS);
}

TEST(BuildTurn, EdgeCasesOfTheStep) {
    CPlan p;
    // From exactly vertical the start takes the end azimuth and the toolface is that azimuth.
    p.m_stnPrev = start(0, 0, 0);
    p.bttomd(100, 3 * kPer100, 0.5 * kPer100);
    EXPECT_NEAR(p.m_stnC.azi, 0.5 * kDeg, TOL_ANG);
    EXPECT_NEAR(p.m_stnPrev.azi, 0.5 * kDeg, TOL_ANG);
    EXPECT_NEAR(p.m_stnC.tf, 0.5 * kDeg, TOL_ANG);
    // A drop below vertical stops at vertical with the rate that just reaches it.
    p.m_stnPrev = start(0, 5, 90);
    p.bttomd(300, -3 * kPer100, 0);
    EXPECT_EQ(p.m_stnC.inc, 0.0);
    EXPECT_NEAR(p.m_stnC.build, -5 * kDeg / 300, TOL_RATE);
}

TEST(BuildTurn, ToADepthOrLength) {
    // Each routine from md `md0` at inclination 30, azimuth 40 (depth 1000); a depth not beyond
    // the start of a course-length routine is a course length.
    const struct {
        const char* name;
        void (CPlan::*step)(double, double, double);
        double md0, incDeg, to, rate, angle;  // rate [rad/L], angle: turn [rad/L] or toolface [rad]
        int error;
        double tvd, md;  // expected end
    } rows[] = {
        {"build/turn to a depth", &CPlan::bttotvd, 0, 20, 1300, 2 * kPer100, kPer100, 0, 1300, X},
        {"drop/turn to a depth", &CPlan::dttotvd, 0, 30, 1200, 3 * kPer100, 60 * kDeg, 0, 1200, X},
        {"constant toolface to a depth", &CPlan::cttotvd, 0, 30, 1200, 3 * kPer100, 60 * kDeg, 0,
         1200, X},
        // A flat turn on the horizontal never changes depth: the walk stops at its bound.
        {"flat turn never deepens", &CPlan::cttotvd, 0, 90, 1200, 3 * kPer100, 90 * kDeg, -17, X,
         X},
        {"toolface, length 5 from md 10", &CPlan::cttomd, 10, 30, 5, 3 * kPer100, 0, 0, X, 15},
        {"toolface, zero course", &CPlan::cttomd, 10, 30, 0, 3 * kPer100, 0, -18, X, X},
        {"build/turn, zero course", &CPlan::bttomd, 0, 20, 0, 1e-3, 0, -18, X, X},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_stnPrev = start(r.md0, r.incDeg, 40);
        (p.*r.step)(r.to, r.rate, r.angle);
        EXPECT_EQ(p.m_nError, r.error);
        expectNear(p.m_stnC.tvd, r.tvd, TOL_POS, "tvd");
        expectNear(p.m_stnC.md, r.md, TOL_POS, "md");
    }
}

TEST(BuildTurn, FailuresWriteTheValueThatWouldWorkIntoTheLine) {
    const struct {
        const char* name;
        int sub;
        double md, tvd, incDeg, aziDeg, build, turn;  // rates in degrees per 100
        int error;
        double readBuild, readTurn, readIncDeg;  // what reading the line back shows
    } rows[] = {
        // "BT1 MD": 10 deg dropping at 3/100 over 500 would pass vertical; -10/500 ends vertical.
        {"BT1 through vertical", 1, 1500, 0, 0, 0, -3, 0, -18, -10.0 / 500 * 100, 0, X},
        // "BT2 TVD" from 1000 to 1500: sin(10) + B dV >= 1 with B = 20/100.
        {"BT2 past horizontal", 2, 0, 1500, 0, 0, 20, 0, -17,
         (1 - std::sin(10 * kDeg)) / 500 / kPer100, 0, X},
        {"BT2 wrong sign", 2, 0, 800, 0, 0, 2, 0, -18, -2, 0, X},
        {"BT3 negative inclination", 3, 0, 0, -5, 0, 2, 0, -14, 2, 0, 0},
        {"BT3 wrong sign", 3, 0, 0, 5, 0, 2, 0, -18, -2, 0, X},
        {"BT4 wrong turn", 4, 0, 0, 0, 10, 0, 2, -19, 0, -2, X},
        {"BT4 through vertical", 4, 0, 0, 0, 40, -5, 2, -18, -10.0 / 1000 * 100, 2, X},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan q = planWithTie(10, 20);  // the failing line straight after the tie-on
        putLine(q, 40, r.sub, r.md, r.tvd, r.incDeg, r.aziDeg, r.build, r.turn);
        EXPECT_EQ(q.m_nError, r.error);
        q.GetData(1);
        EXPECT_NEAR(q.m_dBuild, r.readBuild * kPer100, TOL_RATE);
        EXPECT_NEAR(q.m_dTurn, r.readTurn * kPer100, TOL_RATE);
        expectNear(q.m_dInc, r.readIncDeg * kDeg, 0, "inc");
        // After a solved line the failing one leaves that line exactly as it was.
        CPlan p = planWithTie(10, 20);
        putLine(p, 30, 1, 1100, 0, 0, 0, 0, 0, 2, 30);
        ASSERT_EQ(p.m_nError, 0);
        SStation good, after;
        p.DumpData(1, good);
        putLine(p, 40, r.sub, r.md ? r.md + 100 : 0, r.tvd, r.incDeg, r.aziDeg, r.build, r.turn);
        p.DumpData(1, after);
        EXPECT_EQ(std::tie(after.md, after.tvd, after.ns, after.azi),
                  std::tie(good.md, good.tvd, good.ns, good.azi));
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
        for (double done = 0; done < r.len - 1e-9; done += 1.0) {
            const double a = K * std::fmin(1.0, r.len - done);
            const Vec t = dir(I, A);
            const Vec k = std::cos(TF) * Vec{std::cos(I) * std::sin(A), std::cos(I) * std::cos(A),
                                             -std::sin(I)} +
                          std::sin(TF) * Vec{std::cos(A), -std::sin(A), 0};
            pos = pos + (std::sin(a) / K) * t + ((1 - std::cos(a)) / K) * k;
            const Vec t2 = std::cos(a) * t + std::sin(a) * k;
            I = std::acos(t2.v);
            A = std::atan2(t2.e, t2.n);
        }
        expectAt(p.m_stnC, p.m_stnPrev, pos, TOL_POS);
        EXPECT_NEAR(p.m_stnC.md, 500 + r.len, TOL_POS);
        EXPECT_NEAR(p.m_stnC.inc, I, TOL_ANG);
        EXPECT_NEAR(std::remainder(p.m_stnC.azi - A, 2 * kPi), 0.0, TOL_ANG);
        // The chain stays close to the continuous constant-toolface curve, on which
        // dI/ds = K cos TF: within the second-order drift of 1.0 arcs.
        EXPECT_NEAR(p.m_stnC.inc, (r.inc + r.dls * std::cos(TF) * r.len / 100) * kDeg, 1e-4);
    }
}

TEST(ConstantToolface, PlanLinesEndOnTheirGivenAngles) {
    const struct {
        const char* name;
        int family, sub;
        double md, tvd, incDeg, aziDeg, dls, tfDeg;
        double endMD, endIncDeg, endAziDeg, readTFDeg, endTVD;
    } rows[] = {
        // A flat turn at 30 degrees: toolface 90, length sin 30 * 30 deg / K = 500.
        {"Inc Azi DCT, flat", 90, 11, 0, 0, 30, 50, 3, 0, 1500, 30, 50, 90, X},
        // "CT3 Inc.": inclination rises at K cos TF: 20 degrees at 3 cos 60 per 100 is 1333.33.
        {"CT3 Inc.", 30, 3, 0, 0, 50, 0, 3, 60, 1000 + 20 / 1.5 * 100, 50, X, 60, X},
        // "CT2 TVD": the chain laid again to the depth where the walk of arcs met 2300 ends there.
        {"CT2 TVD", 30, 2, 0, 2300, 0, 0, 3, 60, X, X, X, 60, 2300},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = planWithTie(30, 20);
        putLine(p, 20, 1, 1000, 0, 0, 0, 0, 0);  // a hold first: the curve is not the first line
        p.m_bConstTF = 1;
        putLine(p, r.family, r.sub, r.md, r.tvd, r.incDeg, r.aziDeg, 0, 0, r.dls, r.tfDeg);
        ASSERT_EQ(p.m_nError, 0);
        p.GetData(2);
        expectNear(p.m_dMD, r.endMD + 1000, TOL_POS, "md");
        expectNear(p.m_dInc, r.endIncDeg * kDeg, 0, "inc");
        expectNear(p.m_dAzi, r.endAziDeg * kDeg, 0, "azi");
        expectNear(p.m_dTVD, r.endTVD, TOL_POS, "tvd");
        EXPECT_NEAR(p.m_dTF, r.readTFDeg * kDeg, TOL_ANG);
    }
}

TEST(ConstantToolface, ACurveLaidBeforeDoesNotChangeTheNext) {
    // A plan lays each curve again on every re-solve and for each point asked of it: after a curve
    // of length 200.5 from md 500, a curve differing in its start, its turn model or its length must
    // come out exactly as on a new plan object.
    const struct {
        const char* name;
        double dinc, len;  // change of the start inclination; the second curve's length
        bool flipModel;
    } rows[] = {
        {"the same curve", 0, 200.5, false},
        {"start inclination", 1e-9, 200.5, false},
        {"turn model", 0, 200.5, true},
        {"longer", 0, 250.5, false},
        {"half an arc past arc 192", 0, 192.5, false},
        // To md 10600.5: 10,100 arcs are more than a walk may lay, -17.
        {"beyond the step bound", 0, 10600.5, false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        SStation from = start(500, 40, 30);
        const double K = 3 * kPer100, TF = 60 * kDeg;
        CPlan used, fresh;
        used.m_bHorizontalTurn = true;
        used.m_stnPrev = from;
        used.cttomd(200.5, K, TF);
        from.inc += r.dinc;
        for (CPlan* q : {&used, &fresh}) {
            q->m_bHorizontalTurn = !r.flipModel;
            q->m_stnPrev = from;
            q->cttomd(r.len, K, TF);
        }
        const SStation &a = used.m_stnC, &b = fresh.m_stnC;
        EXPECT_EQ(used.m_nError, fresh.m_nError);
        if (fresh.m_nError != 0) continue;  // a failed walk's end is not a result
        EXPECT_EQ(std::tie(a.md, a.inc, a.azi, a.tvd, a.ns, a.ew, a.dls, a.tf, a.build, a.turn),
                  std::tie(b.md, b.inc, b.azi, b.tvd, b.ns, b.ew, b.dls, b.tf, b.build, b.turn));
    }
}

TEST(Ouija, EveryCombinationOfGivenValues) {
    // From inclination 20, azimuth 30 at md 1000 to md 1300, given some of inclination 35, azimuth
    // 70, DLS and toolface: the plan line of those same inputs is the reference.
    const double dls = 8 * kPer100;
    const struct {
        const char* name;
        bool inc, azi, dls;
        int family, sub;  // the matching line
    } rows[] = {
        {"toolface and dls", false, false, true, 30, 1},  // "DT1 MD"
        {"azimuth and dls", false, true, true, 90, 7},    // "DLS Azi MD", upper root
        {"inclination and azimuth", true, true, false, 90, 1},
    };
    SStation plane;
    plane.tvd = 5000, plane.uv = 1;
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan o;
        o.m_stnPrev = start(1000, 20, 30);
        ASSERT_EQ(o.OuijaCalcs(1300, r.inc, 35 * kDeg, r.azi, 70 * kDeg, r.dls, dls, true,
                               50 * kDeg, plane),
                  0);
        const SStation& e = o.m_stnC;
        EXPECT_NEAR(e.md, 1300, TOL_POS);
        expectNear(e.inc, r.inc ? 35 * kDeg : X, TOL_ANG, "inc");
        expectNear(e.azi, r.azi ? 70 * kDeg : X, TOL_ANG, "azi");
        expectNear(e.dls, r.dls ? dls : X, TOL_RATE, "dls");
        CPlan p = planWithTie(20, 30);
        putLine(p, r.family, r.sub, 1300, 0, 35, 70, 0, 0, 8, 50);
        ASSERT_EQ(p.m_nError, 0);
        SStation line;
        p.DumpData(1, line);
        expectAt(e, line, {0, 0, 0}, TOL_POS);
        EXPECT_NEAR(e.inc, line.inc, TOL_ANG);
        EXPECT_NEAR(e.azi, line.azi, TOL_ANG);
        EXPECT_NEAR(e.dls, line.dls, TOL_RATE);
    }
}

TEST(Ouija, ProjectsToThePlaneAndSolvesTheLength) {
    CPlan o;
    SStation plane;  // the horizontal plane at depth 2000
    plane.tvd = 2000, plane.uv = 1;
    const auto ouija = [&](double md, double incDeg, bool azi, double dls, const SStation& pl) {
        o.m_stnPrev = start(md == 0 ? 0 : 1000, 10, 20);
        return o.OuijaCalcs(md, true, incDeg * kDeg, azi, 60 * kDeg, dls > 0, dls, false, 0, pl);
    };
    EXPECT_EQ(ouija(1300, 25, true, 0, plane), 0);
    const SStation end = o.m_stnC;
    // The straight continuation meets the plane: depth 2000, along the end direction.
    const Vec t = dir(25 * kDeg, 60 * kDeg);
    const double along = (2000 - end.tvd) / t.v;
    EXPECT_NEAR(o.m_stnA.tvd, 2000, TOL_POS);
    EXPECT_NEAR(o.m_stnA.ns, end.ns + along * t.n, TOL_POS);
    EXPECT_NEAR(o.m_stnA.md, 1300 + along, TOL_POS);
    // Given inclination, azimuth and DLS, the length is solved and md is not used.
    EXPECT_EQ(ouija(5, 25, true, end.dls, plane), 0);
    EXPECT_NEAR(o.m_stnC.md, 1300, TOL_POS);
    // A plane behind the end, one parallel to the end direction, a zero course.
    SStation behind = plane;
    behind.tvd = 0;
    EXPECT_EQ(ouija(300, 25, true, 0, behind), -10);
    EXPECT_EQ(ouija(300, 90, true, 0, plane), -17);
    EXPECT_EQ(ouija(0, 25, false, 0, plane), -18);
}
