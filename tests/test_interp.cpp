// Points along one line and along the whole plan: at a measured or vertical depth, an inclination,
// an azimuth, a north or east plane. References are computed here from the geometry of a circle
// (the direction turns uniformly in the arc's plane), by hand, or by integrating a curve's
// direction numerically.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct InterpTag;
template <>
struct PlanAccess<InterpTag> {
    /// The plan's stored stations, to check that asking about the path changes none of them.
    static const std::vector<SStation>& stations(const CPlan& p) { return p.m_stations; }
};
using Access = PlanAccess<InterpTag>;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double kLenTol = 1e-7;    // positions and depths [L]
constexpr double kAngTol = 1e-9;    // angles [rad]
constexpr double kRateTol = 1e-11;  // dogleg severity and rates [rad/L]
// Positions on a whole plan, reached through hundreds of chained arcs or Simpson's rule [L].
constexpr double kPlanLenTol = 1e-6;

struct V3 {
    double e, n, v;
};
V3 dir(double inc, double azi) {
    return {std::sin(azi) * std::sin(inc), std::cos(azi) * std::sin(inc), std::cos(inc)};
}
V3 add(V3 a, V3 b, double k = 1.0) {
    return {a.e + k * b.e, a.n + k * b.n, a.v + k * b.v};
}
double dot(V3 a, V3 b) {
    return a.e * b.e + a.n * b.n + a.v * b.v;
}
/// Angle between two unit vectors, from their chord (accurate for small angles).
double angle(V3 a, V3 b) {
    const V3 d = add(a, b, -1.0);
    return 2.0 * std::asin(std::sqrt(dot(d, d)) / 2.0);
}
/// The direction a fraction f of the way round the circle from t1 to t2.
V3 turned(V3 t1, V3 t2, double f) {
    const double w = angle(t1, t2);
    if (w < 1e-12) return t1;
    const double a = std::sin((1 - f) * w) / std::sin(w), b = std::sin(f * w) / std::sin(w);
    return {a * t1.e + b * t2.e, a * t1.n + b * t2.n, a * t1.v + b * t2.v};
}
/// Offset of a circular arc of length L from direction t1 to t2: R tan(w/2) along each tangent.
V3 arcOffset(V3 t1, V3 t2, double L) {
    const double w = angle(t1, t2);
    const double half = w < 1e-12 ? L / 2 : L / w * std::tan(w / 2);
    return {half * (t1.e + t2.e), half * (t1.n + t2.n), half * (t1.v + t2.v)};
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

/// A circular arc line loaded as the working stations: its end placed by the circle's geometry.
struct Arc {
    const char* name;
    double L, inc1, azi1, inc2, azi2;
};
void loadArc(CPlan& p, const Arc& a) {
    const V3 start{-300.0, 200.0, 1000.0};
    const V3 t1 = dir(a.inc1, a.azi1), t2 = dir(a.inc2, a.azi2);
    p.m_stnPrev = at(2000.0, a.inc1, a.azi1, start);
    p.m_stnC = at(2000.0 + a.L, a.inc2, a.azi2, add(start, arcOffset(t1, t2, a.L)));
    p.m_stnC.dls = angle(t1, t2) / a.L;
}
/// The point of the loaded arc at course length s: position and direction.
void expectOnArc(const CPlan& p, const Arc& a, double s, const char* what) {
    SCOPED_TRACE(what);
    const V3 t1 = dir(a.inc1, a.azi1), t2 = dir(a.inc2, a.azi2);
    const V3 t = turned(t1, t2, s / a.L);
    const V3 want = add(posOf(p.m_stnPrev), arcOffset(t1, t, s));
    EXPECT_NEAR(p.m_stnA.md, p.m_stnPrev.md + s, kLenTol);
    expectAt(p.m_stnA, want, kLenTol);
    EXPECT_NEAR(angle(dir(p.m_stnA.inc, p.m_stnA.azi), t), 0.0, kAngTol);
}

const Arc kArcs[] = {
    {"quarter circle from vertical to level north", 100 * kPi / 2, 0.0, 0.0, kPi / 2, 0.0},
    {"build and right turn, 30/40 to 60/100 deg", 300.0, 30 * kDeg, 40 * kDeg, 60 * kDeg,
     100 * kDeg},
    {"drop and left turn through the north-west", 250.0, 80 * kDeg, 350 * kDeg, 45 * kDeg,
     300 * kDeg},
    {"build heading south-west, north and east falling", 400.0, 20 * kDeg, 200 * kDeg, 70 * kDeg,
     250 * kDeg},
    {"hold at 45/120 deg", 150.0, 45 * kDeg, 120 * kDeg, 45 * kDeg, 120 * kDeg},
};

}  // namespace

// mcmdint lays the arc between the ends' directions (and, with bConstTF, from the line's own dls
// and toolface): both must give the circle's own point; the ends come back unchanged.
TEST(InterpLine, MeasuredDepthOnTheArcAndRoundTrips) {
    for (const Arc& a : kArcs) {
        SCOPED_TRACE(a.name);
        for (double f : {0.25, 0.5, 0.8}) {
            CPlan p;
            loadArc(p, a);
            p.mcmdint(p.m_stnPrev.md + f * a.L, false);
            expectOnArc(p, a, f * a.L, "end directions");
            if (a.inc1 != a.inc2 || a.azi1 != a.azi2) {
                EXPECT_NEAR(p.m_stnA.dls, p.m_stnC.dls, kRateTol);
                // The same arc laid from the start by its dogleg severity and toolface: the toolface
                // is the angle of the arc's turn from the start's high side towards its right side.
                const V3 t1 = dir(a.inc1, a.azi1), t2 = dir(a.inc2, a.azi2);
                const V3 m = add(t2, t1, -dot(t1, t2));
                const V3 high = {std::cos(a.inc1) * std::sin(a.azi1),
                                 std::cos(a.inc1) * std::cos(a.azi1), -std::sin(a.inc1)};
                const V3 right = {std::cos(a.azi1), -std::sin(a.azi1), 0.0};
                loadArc(p, a);
                p.m_stnC.tf = std::atan2(dot(m, right), dot(m, high));
                p.mcmdint(p.m_stnPrev.md + f * a.L, true);
                expectOnArc(p, a, f * a.L, "own dls and toolface");
            }
        }
        CPlan p;
        loadArc(p, a);
        const SStation end = p.m_stnC;
        p.mcmdint(end.md, false);
        expectAt(p.m_stnA, posOf(end), 0.0);
        p.mcmdint(p.m_stnPrev.md, false);
        expectAt(p.m_stnA, posOf(p.m_stnPrev), 0.0);
        p.mcmdint(end.md + 50.0, false);  // beyond the end: straight on along the end direction
        expectAt(p.m_stnA, add(posOf(end), dir(end.inc, end.azi), 50.0), kLenTol);
    }
}

// The point found at a vertical depth, a north or an east coordinate has it, and lies on the arc at
// the measured depth reported (the circle's own point there).
TEST(InterpLine, DepthAndPlanesLandOnTheArc) {
    for (const Arc& a : kArcs) {
        for (double f : {0.3, 0.7}) {
            CPlan p;
            loadArc(p, a);
            const SStation s = p.m_stnPrev, e = p.m_stnC;
            const struct {
                const char* what;
                int kind;
                double value;
            } asks[] = {
                {"tvd", 0, s.tvd + f * (e.tvd - s.tvd)},
                {"north", 1, s.ns + f * (e.ns - s.ns)},
                {"east", 2, s.ew + f * (e.ew - s.ew)},
            };
            for (const auto& q : asks) {
                SCOPED_TRACE(std::string(a.name) + ", " + q.what + " at " + std::to_string(f));
                if (q.kind != 0 && std::fabs(q.kind == 1 ? e.ns - s.ns : e.ew - s.ew) < 1.0)
                    continue;
                loadArc(p, a);
                if (q.kind == 0) p.mcvdint(q.value);
                if (q.kind == 1) p.mcnsint(q.value);
                if (q.kind == 2) p.mcewint(q.value);
                EXPECT_EQ(p.m_nError, 0);
                const double got = q.kind == 0   ? p.m_stnA.tvd
                                   : q.kind == 1 ? p.m_stnA.ns
                                                 : p.m_stnA.ew;
                EXPECT_NEAR(got, q.value, kLenTol);
                expectOnArc(p, a, p.m_stnA.md - s.md, "on the arc");
            }
        }
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

    // Below the end of a 60-degree hold: straight on, 100 deeper is 200 further along.
    p.m_stnPrev = at(0.0, kPi / 3, kPi / 2, {0, 0, 0});
    p.m_stnC = at(100.0, kPi / 3, kPi / 2, {100 * std::sqrt(0.75), 0, 50});
    p.mcvdint(150.0);
    EXPECT_NEAR(p.m_stnA.md, 300.0, kLenTol);
    EXPECT_NEAR(p.m_stnA.ew, 300.0 * std::sqrt(0.75), kLenTol);

    // Radius of curvature, building 0.2 to 0.4 rad over 100 heading north: halfway the inclination
    // is 0.3, and over the first 50 the depth is (sin 0.3 - sin 0.2) 50 / 0.1 and the horizontal
    // (cos 0.2 - cos 0.3) 50 / 0.1, all of it north; a pure build has toolface pi/2.
    p.m_stnPrev = at(1000.0, 0.2, 0.0, {0, 0, 900});
    p.m_stnC = at(1100.0, 0.4, 0.0, {0, 0, 0});
    p.rcmdint(1050.0);
    EXPECT_NEAR(p.m_stnA.inc, 0.3, kAngTol);
    EXPECT_NEAR(p.m_stnA.tvd, 900 + 500 * (std::sin(0.3) - std::sin(0.2)), kLenTol);
    EXPECT_NEAR(p.m_stnA.ns, 500 * (std::cos(0.2) - std::cos(0.3)), kLenTol);
    EXPECT_NEAR(p.m_stnA.ew, 0.0, kLenTol);
    EXPECT_NEAR(p.m_stnA.build, 0.002, kRateTol);
    EXPECT_NEAR(p.m_stnA.tf, kPi / 2, kAngTol);
    // rcvdint at that depth finds the same point again.
    const SStation half = p.m_stnA;
    p.rcvdint(half.tvd);
    EXPECT_NEAR(p.m_stnA.md, 1050.0, kLenTol);
    EXPECT_NEAR(p.m_stnA.ns, half.ns, kLenTol);

    p.m_stnPrev = at(0.0, kPi / 2, 0.0, {0, 0, 500});  // held level: the start is the answer
    p.m_stnC = at(100.0, kPi / 2, 0.0, {0, 100, 500});
    p.rcvdint(510.0);
    EXPECT_EQ(p.m_stnA.md, 0.0);
}

// Inclination and azimuth searches, with the 0.0001 rad band beyond a line's inclination range and
// no band for azimuth. The line builds 0.2 to 0.4 over 100 (md 1000 to 1100).
TEST(InterpLine, InclinationAndAzimuthBands) {
    struct Row {
        const char* name;
        double inc1, inc2, azi1, azi2;
        bool byInc;
        double ask;
        bool ok;
        double md;
    };
    const Row rows[] = {
        {"inside", 0.2, 0.4, 1.0, 1.0, true, 0.3, true, 1050},
        {"just past the end", 0.2, 0.4, 1.0, 1.0, true, 0.40005, true, 1100},
        {"just past the band", 0.2, 0.4, 1.0, 1.0, true, 0.4002, false, 1100},
        {"well past the end", 0.2, 0.4, 1.0, 1.0, true, 0.41, false, 1100},
        {"just before the start", 0.2, 0.4, 1.0, 1.0, true, 0.19995, true, 1000},
        {"dropping, inside", 0.4, 0.2, 1.0, 1.0, true, 0.25, true, 1075},
        {"held at the value", 0.3, 0.3, 1.0, 1.0, true, 0.3, true, 1000},
        {"held elsewhere", 0.3, 0.3, 1.0, 1.0, true, 0.31, false, 1000},
        {"azimuth through north", 0.3, 0.3, 6.2, 0.1, false, 0.05, true,
         1000 + 100 * (0.05 + 2 * kPi - 6.2) / (0.1 + 2 * kPi - 6.2)},
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
            if (ok && r.byInc && r.inc1 != r.inc2 && r.ask > 0.2 && r.ask < 0.4) {
                EXPECT_NEAR(p.m_stnA.inc, r.ask, kAngTol);
            }
            if (ok && !r.byInc) {
                EXPECT_NEAR(p.m_stnA.azi, r.ask, kAngTol);
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
    // the line is 40 north, 30 away due east of it, at right angles to the line.
    p.m_stnPrev = at(0.0, kPi / 2, 0.0, {0, 0, 100});
    p.m_stnC = at(100.0, kPi / 2, 0.0, {0, 100, 100});
    p.m_stnA = at(0.0, 0.0, 0.0, {30, 40, 100});
    SIntercept x = p.scan_exact(0);
    EXPECT_NEAR(x.station.md, 40.0, kLenTol);
    EXPECT_NEAR(x.dist, 30.0, kLenTol);
    EXPECT_NEAR(x.ue, 1.0, kLenTol);
    EXPECT_NEAR(x.inc, kPi / 2, kAngTol);
    EXPECT_NEAR(x.azi, kPi / 2, kAngTol);  // toolface: a quarter turn right of the line
    // A plane the line runs along (east = 0 with the line on it): no intercept, the start station.
    p.m_stnA = at(0.0, 0.0, 0.0, {0, 0, 0});
    p.m_stnA.ue = 1.0;
    x = p.scan_exact(1);
    EXPECT_EQ(x.dist, -100.0);
    EXPECT_EQ(x.ue, 0.0);
    EXPECT_EQ(x.station.md, 0.0);
}

namespace {

/// A plan: tie-on at 500 vertical, an "Inc Azi MD" arc, a constant-toolface line, a build/turn
/// line and a last "Inc Azi MD" arc. (The constant-toolface line is the second line because the
/// arcs it is laid with set the solve cursor to 1, so one further down does not solve.)
CPlan mixedPlan() {
    CPlan p;
    p.NewData(10);
    SStation tie;
    tie.md = tie.tvd = 500.0;
    tie.method = 2;
    p.LoadData(0, tie);
    p.m_nPrev = 0;
    auto put = [&p](int family, int sub, bool constTF, double md) {
        p.m_nFamily = family;
        p.m_nSubMethod = sub;
        p.m_bConstTF = constTF;
        p.m_dMD = md;
        p.PutData(-1);
        EXPECT_EQ(p.m_nError, 0) << "line to md " << md;
    };
    p.m_dInc = 30 * kDeg, p.m_dAzi = 45 * kDeg;
    put(90, 1, false, 1000.0);
    p.m_dDLS = 0.004, p.m_dTF = 1.0;
    put(30, 1, true, 1400.5);  // "CT1 MD"
    p.m_dBuild = 0.002, p.m_dTurn = 0.003;
    put(40, 1, false, 1800.0);  // "BT1 MD"
    p.m_dInc = 80 * kDeg, p.m_dAzi = 120 * kDeg;
    put(90, 1, false, 2300.0);
    return p;
}

}  // namespace

TEST(InterpPlan, WholePlanPoints) {
    CPlan p = mixedPlan();
    ASSERT_EQ(p.GetSize(), 5u);
    const std::vector<SStation> stored = Access::stations(p);
    p.m_nPrev = 3;

    // Every station's own depth gives the station back, whatever the line's model.
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE("station " + std::to_string(i));
        const SStation& s = stored[i];
        ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, s.md));
        expectAt(p.m_stnA, posOf(s), kPlanLenTol);
        EXPECT_NEAR(p.m_stnA.inc, s.inc, kAngTol);
    }

    // The build/turn line followed along its own curve: the direction (I1 + B s, A1 + T s)
    // integrated by Simpson's rule over 300 of its 400.
    {
        const SStation& s0 = stored[2];
        const int n = 3000;
        const double h = 300.0 / n;
        V3 sum{0, 0, 0};
        for (int k = 0; k <= n; ++k) {
            const double w = (k == 0 || k == n) ? 1 : (k % 2 ? 4 : 2);
            sum = add(sum, dir(s0.inc + 0.002 * k * h, s0.azi + 0.003 * k * h), w * h / 3);
        }
        ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, s0.md + 300.0));
        expectAt(p.m_stnA, add(posOf(s0), sum), kPlanLenTol);
    }

    // The constant-toolface line is a chain of arcs of 1.0 (the last one shorter), each turning its
    // start direction t by K s towards toolface TF from t's own high side; laid here afresh.
    // Half a unit past its start the point is half a unit from it.
    {
        const SStation& s0 = stored[1];
        const double K = 0.004, TF = 1.0;
        V3 pos = posOf(s0), t = dir(s0.inc, s0.azi);
        for (double done = 0.0, step = 1.0; done < 250.25; done += step) {
            step = std::fmin(1.0, 250.25 - done);
            const double inc = std::acos(t.v), azi = std::atan2(t.e, t.n), dl = K * step;
            const V3 high{std::cos(inc) * std::sin(azi), std::cos(inc) * std::cos(azi),
                          -std::sin(inc)};
            const V3 right{std::cos(azi), -std::sin(azi), 0.0};
            const V3 plane =
                add(V3{std::cos(TF) * high.e, std::cos(TF) * high.n, std::cos(TF) * high.v}, right,
                    std::sin(TF));
            const V3 t2 = add(V3{std::cos(dl) * t.e, std::cos(dl) * t.n, std::cos(dl) * t.v}, plane,
                              std::sin(dl));
            pos = add(pos, add(t, t2), std::tan(dl / 2) / K);
            t = t2;
        }
        ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, s0.md + 250.25));
        expectAt(p.m_stnA, pos, kPlanLenTol);
        EXPECT_NEAR(p.m_stnA.inc, std::acos(t.v), kAngTol);
        ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, s0.md + 0.5));
        const V3 d = add(posOf(p.m_stnA), posOf(s0), -1.0);
        EXPECT_NEAR(std::sqrt(dot(d, d)), 0.5, kPlanLenTol);
    }

    // Depth, inclination, azimuth and the planes: the point found has the value asked for.
    struct Ask {
        const char* name;
        int q;
        double value;
        double tol;
    };
    const Ask asks[] = {
        {"tvd in the first arc", CPlan::PLAN_TVD, 700.0, kLenTol},
        {"tvd in the build/turn line", CPlan::PLAN_TVD, 0.5 * (stored[2].tvd + stored[3].tvd),
         kLenTol},
        {"inclination in the first arc", CPlan::PLAN_INC, 20 * kDeg, kAngTol},
        {"azimuth in the last arc", CPlan::PLAN_AZI, 0.5 * (stored[3].azi + 120 * kDeg), kAngTol},
        {"north in the constant-toolface line", CPlan::PLAN_NORTH,
         0.5 * (stored[1].ns + stored[2].ns), kLenTol},
        {"east in the last arc", CPlan::PLAN_EAST, 0.5 * (stored[3].ew + stored[4].ew), kLenTol},
    };
    for (const Ask& a : asks) {
        SCOPED_TRACE(a.name);
        ASSERT_TRUE(p.PlanPointAt(a.q, a.value));
        const double got[] = {p.m_stnA.md,  p.m_stnA.tvd, p.m_stnA.inc,
                              p.m_stnA.azi, p.m_stnA.ns,  p.m_stnA.ew};
        EXPECT_NEAR(got[a.q], a.value, a.tol);
        EXPECT_EQ(p.m_nError, 0);
    }

    // Beyond the plan's end: straight on along the last direction.
    ASSERT_TRUE(p.PlanPointAt(CPlan::PLAN_MD, 2400.0));
    expectAt(p.m_stnA, add(posOf(stored[4]), dir(stored[4].inc, stored[4].azi), 100.0), kLenTol);

    // Values no line holds.
    for (const Ask& a : {Ask{"md above the tie-on", CPlan::PLAN_MD, 400.0, 0},
                         Ask{"inclination never reached", CPlan::PLAN_INC, 3.0, 0},
                         Ask{"tvd above the tie-on", CPlan::PLAN_TVD, 100.0, 0},
                         Ask{"unknown quantity", 9, 1000.0, 0}}) {
        SCOPED_TRACE(a.name);
        EXPECT_FALSE(p.PlanPointAt(a.q, a.value));
        EXPECT_EQ(p.m_nError, -17);
    }

    // Nothing stored moved, and the solve cursor is where it was.
    EXPECT_EQ(p.m_nPrev, 3);
    const std::vector<SStation>& now = Access::stations(p);
    for (std::size_t i = 0; i < stored.size(); ++i) {
        EXPECT_EQ(now[i].md, stored[i].md);
        EXPECT_EQ(now[i].azi, stored[i].azi);
        EXPECT_EQ(now[i].ns, stored[i].ns);
    }
}
