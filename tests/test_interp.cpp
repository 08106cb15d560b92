// Points along one line and along the whole plan, against circle geometry, hand values, or a
// curve's direction integrated numerically.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double kLenTol = 1e-7;      // positions and depths [L]
constexpr double kAngTol = 1e-9;      // angles [rad]
constexpr double kRateTol = 1e-11;    // dogleg severity and rates [rad/L]
constexpr double kPlanLenTol = 1e-6;  // positions on a whole plan, through chained arcs [L]

struct V3 {
    double e, n, v;
    V3 operator+(V3 b) const { return {e + b.e, n + b.n, v + b.v}; }
    V3 operator-(V3 b) const { return {e - b.e, n - b.n, v - b.v}; }
    V3 operator*(double k) const { return {k * e, k * n, k * v}; }
    double dot(V3 b) const { return e * b.e + n * b.n + v * b.v; }
};
V3 dir(double inc, double azi) {
    return {std::sin(azi) * std::sin(inc), std::cos(azi) * std::sin(inc), std::cos(inc)};
}
/// Angle between two unit vectors, from their chord (accurate for small angles).
double angle(V3 a, V3 b) {
    return 2.0 * std::asin(std::sqrt((a - b).dot(a - b)) / 2.0);
}
/// The direction a fraction f of the way round the circle from t1 to t2.
V3 turned(V3 t1, V3 t2, double f) {
    const double w = angle(t1, t2);
    return w < 1e-12 ? t1 : (t1 * std::sin((1 - f) * w) + t2 * std::sin(f * w)) * (1 / std::sin(w));
}
/// Offset of a circular arc of length L from direction t1 to t2: R tan(w/2) along each tangent.
V3 arcOffset(V3 t1, V3 t2, double L) {
    const double w = angle(t1, t2);
    return (t1 + t2) * (w < 1e-12 ? L / 2 : L / w * std::tan(w / 2));
}
SStation at(double md, double inc, double azi, V3 pos) {
    SStation s;
    s.md = md, s.inc = inc, s.azi = azi;
    s.ew = pos.e, s.ns = pos.n, s.tvd = pos.v;
    return s;
}
V3 posOf(const SStation& s) {
    return {s.ew, s.ns, s.tvd};
}
void expectAt(const SStation& s, V3 want, double tol) {
    EXPECT_NEAR(s.ew, want.e, tol) << "east";
    EXPECT_NEAR(s.ns, want.n, tol) << "north";
    EXPECT_NEAR(s.tvd, want.v, tol) << "tvd";
}

/// A circular arc line, angles in degrees.
struct Arc {
    const char* name;
    double L, inc1, azi1, inc2, azi2;
    V3 t1() const { return dir(inc1 * kDeg, azi1 * kDeg); }
    V3 t2() const { return dir(inc2 * kDeg, azi2 * kDeg); }
    bool hold() const { return inc1 == inc2 && azi1 == azi2; }
};
const Arc kArcs[] = {
    {"quarter circle from vertical to level north", 50 * kPi, 0, 0, 90, 0},
    {"build and right turn", 300.0, 30, 40, 60, 100},
    {"drop and left turn through the north-west", 250.0, 80, 350, 45, 300},
    {"hold", 150.0, 45, 120, 45, 120},
};
/// Loads the arc as the working stations, its end placed by the circle's geometry.
void loadArc(CPlan& p, const Arc& a) {
    const V3 start{-300.0, 200.0, 1000.0};
    p.m_stnPrev = at(2000.0, a.inc1 * kDeg, a.azi1 * kDeg, start);
    p.m_stnC =
        at(2000.0 + a.L, a.inc2 * kDeg, a.azi2 * kDeg, start + arcOffset(a.t1(), a.t2(), a.L));
    p.m_stnC.dls = angle(a.t1(), a.t2()) / a.L;
}

// The point found at an md (also from the line's own dls and toolface), tvd, north or east has that
// value and is the circle's own point and direction; the ends come back exactly, beyond is straight.
TEST(InterpLine, PointsLandOnTheArc) {
    const char* what[] = {"md", "md, own dls and toolface", "tvd", "north", "east"};
    for (const Arc& a : kArcs) {
        for (int k = 0; k < 5; ++k) {
            SCOPED_TRACE(std::string(a.name) + ", " + what[k]);
            CPlan p;
            loadArc(p, a);
            const SStation s = p.m_stnPrev, e = p.m_stnC;
            const double from[] = {s.md, s.md, s.tvd, s.ns, s.ew};
            const double to[] = {e.md, e.md, e.tvd, e.ns, e.ew};
            if ((k == 1 && a.hold()) || (k > 2 && std::fabs(to[k] - from[k]) < 1.0)) continue;
            // The toolface: the arc's turn m from the start's high side towards its right.
            const V3 m = a.t2() - a.t1() * a.t1().dot(a.t2());
            const double i1 = a.inc1 * kDeg, a1 = a.azi1 * kDeg;
            p.m_stnC.tf =
                std::atan2(m.dot(dir(kPi / 2, a1 + kPi / 2)), m.dot(dir(i1 + kPi / 2, a1)));
            const double value = from[k] + 0.3 * (to[k] - from[k]);
            if (k < 2) p.mcmdint(value, k == 1);
            if (k == 2) p.mcvdint(value);
            if (k == 3) p.mcnsint(value);
            if (k == 4) p.mcewint(value);
            EXPECT_EQ(p.m_nError, 0);
            const SStation& got = p.m_stnA;
            const double gotValue[] = {got.md, got.md, got.tvd, got.ns, got.ew};
            EXPECT_NEAR(gotValue[k], value, kLenTol);
            const double len = got.md - s.md;
            const V3 t = turned(a.t1(), a.t2(), len / a.L);
            expectAt(got, posOf(s) + arcOffset(a.t1(), t, len), kLenTol);
            EXPECT_NEAR(angle(dir(got.inc, got.azi), t), 0.0, kAngTol);
            if (!a.hold()) {
                EXPECT_NEAR(got.dls, e.dls, kRateTol);
            }
        }
        SCOPED_TRACE(a.name);
        CPlan p;
        loadArc(p, a);
        const SStation end = p.m_stnC;
        p.mcmdint(end.md, false);
        expectAt(p.m_stnA, posOf(end), 0.0);
        p.mcmdint(p.m_stnPrev.md, false);
        expectAt(p.m_stnA, posOf(p.m_stnPrev), 0.0);
        p.mcmdint(end.md + 50.0, false);
        expectAt(p.m_stnA, posOf(end) + dir(end.inc, end.azi) * 50.0, kLenTol);
    }
}

TEST(InterpLine, DepthEdges) {
    CPlan p;
    p.m_stnPrev = at(0.0, kPi / 2, 0.0, {0, 0, 500});
    p.m_stnC = at(100.0, kPi / 2, 0.0, {0, 100, 500});
    p.mcvdint(600.0);  // a level line never reaches another depth
    EXPECT_EQ(p.m_nError, -17);
    p.mcvdint(500.004);  // within 0.005 of the start: the start, no error
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_EQ(p.m_stnA.md, 0.0);
    p.rcvdint(510.0);  // radius of curvature held level: the start is the answer
    EXPECT_EQ(p.m_stnA.md, 0.0);

    // Radius of curvature building 0.2 to 0.4 rad over 100 north: halfway, closed-form depth and
    // north; rcvdint at that depth finds the same point again.
    p.m_stnPrev = at(1000.0, 0.2, 0.0, {0, 0, 900});
    p.m_stnC = at(1100.0, 0.4, 0.0, {0, 0, 0});
    p.rcmdint(1050.0);
    const SStation half = p.m_stnA;
    EXPECT_NEAR(half.inc, 0.3, kAngTol);
    const double dn = 500 * (std::cos(0.2) - std::cos(0.3)),
                 dv = 500 * (std::sin(0.3) - std::sin(0.2));
    expectAt(half, {0, dn, 900 + dv}, kLenTol);
    EXPECT_NEAR(half.build, 0.002, kRateTol);
    EXPECT_NEAR(half.tf, kPi / 2, kAngTol);
    p.rcvdint(half.tvd);
    EXPECT_NEAR(p.m_stnA.md, 1050.0, kLenTol);
    EXPECT_NEAR(p.m_stnA.ns, half.ns, kLenTol);
}

// Inclination and azimuth searches, with the 0.0001 rad band beyond a line's inclination range and
// no band for azimuth, in both position models. The line runs from md 1000 to 1100.
TEST(InterpLine, InclinationAndAzimuthBands) {
    struct Row {
        const char* name;
        double inc1, inc2, azi1, azi2;
        bool byInc;
        double ask;
        bool ok;
        double md;
    };
    const double north = 1000 + 100 * (0.05 + 2 * kPi - 6.2) / (0.1 + 2 * kPi - 6.2);
    const Row rows[] = {
        {"inside", 0.2, 0.4, 1.0, 1.0, true, 0.3, true, 1050},
        {"just past the end", 0.2, 0.4, 1.0, 1.0, true, 0.40005, true, 1100},
        {"just past the band", 0.2, 0.4, 1.0, 1.0, true, 0.4002, false, 1100},
        {"dropping, inside", 0.4, 0.2, 1.0, 1.0, true, 0.25, true, 1075},
        {"held elsewhere", 0.3, 0.3, 1.0, 1.0, true, 0.31, false, 1000},
        {"azimuth through north", 0.3, 0.3, 6.2, 0.1, false, 0.05, true, north},
        {"azimuth outside", 0.3, 0.3, 1.0, 2.0, false, 2.001, false, 1000},
        {"azimuth from vertical", 0.0, 0.3, 1.0, 2.0, false, 1.5, false, 1000},
    };
    for (const Row& r : rows) {
        for (bool minCur : {false, true}) {
            SCOPED_TRACE(std::string(r.name) + (minCur ? ", minimum curvature" : ""));
            CPlan p;
            p.m_stnPrev = at(1000.0, r.inc1, r.azi1, {0, 0, 0});
            p.m_stnC = at(1100.0, r.inc2, r.azi2, {0, 0, 0});
            const bool ok = r.byInc ? p.rcincint(r.ask, minCur) : p.rcaziint(r.ask, minCur);
            EXPECT_EQ(ok, r.ok);
            EXPECT_NEAR(p.m_stnA.md, r.md, kLenTol);
            if (ok && (!r.byInc || (r.inc1 != r.inc2 && r.ask > 0.2 && r.ask < 0.4))) {
                EXPECT_NEAR(r.byInc ? p.m_stnA.inc : p.m_stnA.azi, r.ask, kAngTol);
            }
        }
    }
}

TEST(InterpLine, InterceptRecord) {
    CPlan p;
    p.m_stnPrev = at(0.0, 0.0, 0.0, {0, 0, 100});
    p.m_stnA = at(0.0, 0.0, 0.0, {0, 0, 130});
    EXPECT_EQ(p.scan_approx(2), 30.0);  // depth of m_stnA below the start

    // A level line north at depth 100 and the point (tvd 100, ns 40, ew 30): the nearest point of
    // the line is 40 north, 30 away due east of it, at right angles to the line (toolface pi/2).
    p.m_stnPrev = at(0.0, kPi / 2, 0.0, {0, 0, 100});
    p.m_stnC = at(100.0, kPi / 2, 0.0, {0, 100, 100});
    p.m_stnA = at(0.0, 0.0, 0.0, {30, 40, 100});
    SIntercept x = p.scan_exact(0);
    EXPECT_NEAR(x.station.md, 40.0, kLenTol);
    EXPECT_NEAR(x.dist, 30.0, kLenTol);
    EXPECT_NEAR(x.azi, kPi / 2, kAngTol);
    // A plane the line runs along (east = 0 with the line on it): no intercept, the start station.
    p.m_stnA = at(0.0, 0.0, 0.0, {0, 0, 0});
    p.m_stnA.ue = 1.0;
    x = p.scan_exact(1);
    EXPECT_EQ(x.dist, -100.0);
    EXPECT_EQ(x.ue, 0.0);
    EXPECT_EQ(x.station.md, 0.0);
}

// Arc, constant-toolface, build/turn and arc lines: stations come back at their own depth, inner
// points match curves laid here, each quantity finds its value or -17, and nothing stored moves.
TEST(InterpPlan, WholePlanPoints) {
    CPlan p;
    p.NewData(10);
    SStation tie = at(500.0, 0.0, 0.0, {0, 0, 500.0});
    tie.method = 2;
    p.LoadData(0, tie);
    p.m_nPrev = 0;
    const double K = 0.004, TF = 1.0, B = 0.002, T = 0.003;  // [rad/L], [rad], [rad/L], [rad/L]
    const struct {
        int family;
        double md, inc, azi, dls, tf, build, turn;
    } lines[] = {{90, 1000.0, 30 * kDeg, 45 * kDeg, 0, 0, 0, 0},
                 {30, 1400.5, 0, 0, K, TF, 0, 0},
                 {40, 1800.0, 0, 0, 0, 0, B, T},
                 {90, 2300.0, 80 * kDeg, 120 * kDeg, 0, 0, 0, 0}};
    for (const auto& l : lines) {
        p.m_nFamily = l.family, p.m_nSubMethod = 1, p.m_bConstTF = l.family == 30, p.m_dMD = l.md;
        p.m_dInc = l.inc, p.m_dAzi = l.azi, p.m_dDLS = l.dls, p.m_dTF = l.tf;
        p.m_dBuild = l.build, p.m_dTurn = l.turn;
        p.PutData(-1);
        ASSERT_EQ(p.m_nError, 0) << "line to md " << l.md;
    }
    ASSERT_EQ(p.GetSize(), 5u);
    const std::vector<SStation> stored = p.m_stations;
    const SStation &ct = stored[1], &bt = stored[2], &last = stored[4];
    p.m_nPrev = 3;

    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE("station " + std::to_string(i));
        ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, stored[i].md));
        expectAt(p.m_stnA, posOf(stored[i]), kPlanLenTol);
        EXPECT_NEAR(p.m_stnA.inc, stored[i].inc, kAngTol);
    }

    // The build/turn line: direction (I1 + B s, A1 + T s) by Simpson's rule over 300 of its 400.
    V3 sum{0, 0, 0};
    for (int k = 0, n = 3000; k <= n; ++k) {
        const double w = (k == 0 || k == n) ? 1 : (k % 2 ? 4 : 2), h = 300.0 / n;
        sum = sum + dir(bt.inc + B * k * h, bt.azi + T * k * h) * (w * h / 3);
    }
    ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, bt.md + 300.0));
    expectAt(p.m_stnA, posOf(bt) + sum, kPlanLenTol);

    // The constant-toolface line: a chain of arcs of 1.0, each turning t by K s at toolface TF.
    V3 pos = posOf(ct), t = dir(ct.inc, ct.azi);
    for (double done = 0.0, step = 1.0; done < 250.25; done += step) {
        step = std::fmin(1.0, 250.25 - done);
        const double inc = std::acos(t.v), azi = std::atan2(t.e, t.n), dl = K * step;
        const V3 plane =
            dir(inc + kPi / 2, azi) * std::cos(TF) + dir(kPi / 2, azi + kPi / 2) * std::sin(TF);
        const V3 t2 = t * std::cos(dl) + plane * std::sin(dl);
        pos = pos + (t + t2) * (std::tan(dl / 2) / K);
        t = t2;
    }
    ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, ct.md + 250.25));
    expectAt(p.m_stnA, pos, kPlanLenTol);
    EXPECT_NEAR(p.m_stnA.inc, std::acos(t.v), kAngTol);
    ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, 2400.0));  // beyond the end: straight on
    expectAt(p.m_stnA, posOf(last) + dir(last.inc, last.azi) * 100.0, kLenTol);

    struct Ask {
        const char* name;
        int q;
        double value;
        bool found;
    };
    const Ask asks[] = {
        {"tvd in the build/turn line", CPlan::PLAN_TVD, 0.5 * (bt.tvd + stored[3].tvd), true},
        {"inclination in the first arc", CPlan::PLAN_INC, 20 * kDeg, true},
        {"azimuth in the last arc", CPlan::PLAN_AZI, 0.5 * (stored[3].azi + last.azi), true},
        {"north in the constant-toolface line", CPlan::PLAN_NORTH, 0.5 * (ct.ns + bt.ns), true},
        {"east in the last arc", CPlan::PLAN_EAST, 0.5 * (stored[3].ew + last.ew), true},
        {"md above the tie-on", CPlan::PLAN_MD, 400.0, false},
        {"inclination never reached", CPlan::PLAN_INC, 3.0, false},
        {"unknown quantity", 9, 1000.0, false},
    };
    for (const Ask& a : asks) {
        SCOPED_TRACE(a.name);
        ASSERT_EQ(p.PlanPointAt(a.q, a.value), a.found);
        EXPECT_EQ(p.m_nError, a.found ? 0 : -17);
        const SStation& g = p.m_stnA;
        const double got[] = {g.md, g.tvd, g.inc, g.azi, g.ns, g.ew};
        const bool angular = a.q == CPlan::PLAN_INC || a.q == CPlan::PLAN_AZI;
        if (a.found) {
            EXPECT_NEAR(got[a.q], a.value, angular ? kAngTol : kLenTol);
        }
    }

    EXPECT_EQ(p.m_nPrev, 3);  // the solve cursor and the stored stations did not move
    for (std::size_t i = 0; i < stored.size(); ++i) EXPECT_EQ(p.m_stations[i].ns, stored[i].ns);
}

}  // namespace
