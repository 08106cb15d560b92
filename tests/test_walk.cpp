// The bit walk: walked lines against closed-form geometry, the cuts at walk-table depths, the lines
// that keep their own shape, the aiming loop and its failures.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct WalkTag;
template <>
struct PlanAccess<WalkTag> {
    static void wlkpro(CPlan& p) { p.wlkpro(); }
};
using Walk = PlanAccess<WalkTag>;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double kRate = kDeg / 100.0;  // 1 degree per 100 length units [rad/L]
constexpr double TOL_POS = 1e-6;        // positions and depths [L]
constexpr double TOL_ANG = 1e-9;        // angles [rad]
constexpr double TOL_RATE = 1e-12;      // rates [rad/L]
constexpr double CLOSURE = 1.0;         // the walk's closure on its target [L]

using Table = std::vector<std::pair<double, double>>;

SStation stn(double md, double incDeg, double tvd, short code, std::u16string target = u"") {
    SStation s;
    s.md = md, s.inc = incDeg * kDeg, s.azi = 40.0 * kDeg, s.tvd = tvd, s.ns = 100.0, s.ew = 50.0;
    s.method = code, s.target = std::move(target);
    return s;
}
const SStation kTie = stn(1000.0, 30.0, 900.0, 2);  // heading azimuth 40 like every station here

/// A plan of the given stations, saved as CalcWalk expects to find it.
CPlan loaded(const std::vector<SStation>& stations) {
    CPlan p;
    p.NewData(static_cast<int>(stations.size()));
    for (std::size_t i = 0; i < stations.size(); ++i) p.LoadData(static_cast<int>(i), stations[i]);
    p.SaveData();
    p.m_nPrev = 0;
    return p;
}

/// Puts one line after the plan's last station through PutData.
void put(CPlan& p, int family, double md, double incDeg = 0, double aziDeg = 0, double build = 0,
         double turn = 0) {
    p.m_nFamily = family, p.m_nSubMethod = 1, p.m_dMD = md;
    p.m_dInc = incDeg * kDeg, p.m_dAzi = aziDeg * kDeg, p.m_dBuild = build, p.m_dTurn = turn;
    p.PutData(-1);
    ASSERT_EQ(p.m_nError, 0);
}

/// A course L of constant inclination I turning at T from a: in plan view a circle of radius
/// sin I / T, a straight line for T = 0; depth goes L cos I.
void expectTurnedHold(const SStation& a, const SStation& b, double T) {
    const double L = b.md - a.md, sI = std::sin(a.inc), A = a.azi, A2 = A + T * L;
    const double dn = T == 0.0 ? L * sI * std::cos(A) : sI / T * (std::sin(A2) - std::sin(A));
    const double de = T == 0.0 ? L * sI * std::sin(A) : sI / T * (std::cos(A) - std::cos(A2));
    EXPECT_NEAR(b.inc, a.inc, TOL_ANG) << "inclination";
    EXPECT_NEAR(std::remainder(b.azi - A2, 2 * kPi), 0.0, TOL_ANG) << "azimuth";
    EXPECT_NEAR(b.tvd, a.tvd + L * std::cos(a.inc), TOL_POS) << "tvd";
    EXPECT_NEAR(b.ns, a.ns + dn, TOL_POS) << "north";
    EXPECT_NEAR(b.ew, a.ew + de, TOL_POS) << "east";
}

}  // namespace

// A hold (inclination 30, azimuth 40, tvd 900 to 1766.03) under two tables: each walked part is
// a constant-inclination turn at the rate in force from its start, cut exactly at each table depth
// (code 115) and otherwise walked whole (105).
TEST(Walk, HoldsTurnAtTheRateInForceAndAreCutAtTableDepths) {
    struct Row {
        const char* name;
        Table table;
        std::vector<double> turns;
    } rows[] = {
        {"two depths cut it into three (given unsorted)",
         {{1500.0, -2 * kRate}, {1200.0, kRate}},
         {0.0, kRate, -2 * kRate}},
        {"a depth below leaves it straight", {{5000.0, kRate}}, {0.0}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = loaded({kTie});
        put(p, 20, 2000.0);
        const SStation plan = p.m_stations[1];
        p.SetWalkTable(r.table);
        Walk::wlkpro(p);
        ASSERT_EQ(p.m_nError, 0);
        ASSERT_EQ(p.m_nWalkStations, static_cast<int>(r.turns.size()) + 1);
        for (int j = 1; j < p.m_nWalkStations; ++j) {
            SCOPED_TRACE(j);
            const SStation &a = p.m_walkStations[j - 1], &b = p.m_walkStations[j];
            EXPECT_EQ(b.method, j + 1 < p.m_nWalkStations ? 115 : 105);
            EXPECT_NEAR(b.turn, r.turns[j - 1], TOL_RATE);
            if (b.method == 115) {
                EXPECT_EQ(b.tvd, p.m_walk[j - 1].first);  // SetWalkTable sorted the table
            }
            expectTurnedHold(a, b, r.turns[j - 1]);
        }
        EXPECT_NEAR(p.m_walkStations[p.m_nWalkStations - 1].md, plan.md, TOL_POS);
    }
}

// Lines that change azimuth, and vertical holds, are re-laid from the walked start with their own
// build and turn rates (105) or their own dogleg severity and toolface (100): from the plan's own
// start they come out as planned.
TEST(Walk, OtherLinesKeepTheirOwnShape) {
    struct Row {
        const char* name;
        double tieInc;
        int family;
        double incDeg, aziDeg, build, turn;
        short code;
    } rows[] = {
        {"build/turn line", 30.0, 40, 0.0, 0.0, 2 * kRate, 3 * kRate, 105},
        {"inc/azi line", 30.0, 90, 45.0, 70.0, 0.0, 0.0, 100},
        {"vertical hold", 0.0, 20, 0.0, 0.0, 0.0, 0.0, 100},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = loaded({stn(1000.0, r.tieInc, 900.0, 2)});
        put(p, r.family, 1500.0, r.incDeg, r.aziDeg, r.build, r.turn);
        const SStation plan = p.m_stations[1];
        p.SetWalkTable({{0.0, 2 * kRate}});
        Walk::wlkpro(p);
        ASSERT_EQ(p.m_nWalkStations, 2);
        const SStation& b = p.m_walkStations[1];
        EXPECT_EQ(b.method, r.code);
        EXPECT_NEAR(r.code == 105 ? b.build : b.dls, r.code == 105 ? r.build : plan.dls, TOL_RATE);
        EXPECT_NEAR(r.code == 105 ? b.turn - r.turn : std::remainder(b.tf - plan.tf, 2 * kPi), 0.0,
                    TOL_RATE);
        EXPECT_NEAR(b.inc, plan.inc, TOL_ANG);
        for (auto f : {&SStation::md, &SStation::tvd, &SStation::ns, &SStation::ew})
            EXPECT_NEAR(b.*f, plan.*f, TOL_POS);
    }
}

// Failures. A straight line that cannot reach the next table depth: -17 (the depth relation's sine
// is 1 or more) or -18 (the depth is reached behind the start), and the walk stops at once. -16:
// nothing to aim at: a flagged target, a backward line's start or a one-station line's target.
TEST(Walk, FailuresAndTheirCodes) {
    struct Row {
        const char* name;
        double incDeg, build;
        int error;
    } rows[] = {
        {"sine beyond 1", 80.0, 0.05, -17},
        {"depth behind the start", 100.0, 1e-4, -18},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        SStation line = stn(1100.0, r.incDeg, 950.0, 10);
        line.build = r.build;
        CPlan p = loaded({stn(1000.0, r.incDeg, 900.0, 2), line});
        p.SetWalkTable({{910.0, kRate}});
        Walk::wlkpro(p);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nWalkStations, 1);
    }

    SStation flagged = stn(1500.0, 30.0, 1333.0, 1, u"T1");
    flagged.flag = true;
    const struct {
        const char* name;
        std::vector<SStation> stations;
    } plans[] = {
        {"back target only",
         {kTie, stn(1500.0, 30.0, 1333.0, 1, CPlan::K_BACKTARGET), stn(1800.0, 30.0, 1592.0, -20)}},
        {"flagged target", {kTie, stn(1200.0, 30.0, 1073.0, 10), flagged}},
        {"target on a one-station line", {kTie, stn(1500.0, 30.0, 1333.0, 40, u"T1")}},
    };
    for (const auto& r : plans) {
        SCOPED_TRACE(r.name);
        CPlan p = loaded(r.stations);
        p.SetWalkTable({{0.0, kRate}});
        p.CalcWalk();
        EXPECT_EQ(p.m_nError, -16);
    }
}

// A plan that cannot be solved (its target station follows a one-station line, which no method
// takes): every pass fails to solve but the passes go on, each moving the aim by the same miss, and
// after 50 of them -4; the target array gets its unmoved target back.
TEST(Walk, FiftyPassesWithoutClosureGiveMinus4) {
    STarget real;
    real.name = u"T1", real.tvd = 1400.0, real.ns = 500.0, real.ew = 400.0;
    SStation end = stn(1600.0, 30.0, real.tvd, 1, u"T1");
    end.ns = real.ns, end.ew = real.ew;
    CPlan p = loaded({kTie, stn(1200.0, 30.0, 1073.0, 10), end});
    p.NewTarget(1);
    p.LoadTarget(0, real);
    p.SetWalkTable({{0.0, kRate}});
    p.CalcWalk();
    EXPECT_EQ(p.m_nError, -4);
    EXPECT_EQ(p.m_targets[0].ns, real.ns);
    EXPECT_EQ(p.m_targets[0].tvd, real.tvd);
    EXPECT_NEAR(p.m_stations[2].ns, real.ns + 50 * (real.ns - p.m_dWalkedNS), TOL_POS);
    EXPECT_NEAR(p.m_stations[2].ew, real.ew + 50 * (real.ew - p.m_dWalkedEW), TOL_POS);
}

// A slant profile from a vertical kick-off to a target 4000 down and 1500 across, drilled with a
// walk to the right below 1300 and to the left below 3000. After CalcWalk the walked profile is the
// plan and meets the target; RestoreWalk re-solves the plan as last saved: with the target in the
// target array that is the plan to the real target again; with the target only in the station it is
// the aimed plan, whose walk is the profile CalcWalk gave.
TEST(Walk, AimingOffMeetsTheTargetAndRestores) {
    for (const bool inArray : {true, false}) {
        SCOPED_TRACE(inArray ? "target in the array" : "target in the station only");
        SStation tie = stn(1200.0, 0.0, 1000.0, 2);
        tie.azi = 0.0;
        CPlan p = loaded({tie});
        STarget real;
        real.name = u"T1", real.tvd = 5000.0;
        real.ns = 100.0 + 1500.0 * std::cos(0.7), real.ew = 50.0 + 1500.0 * std::sin(0.7);
        if (inArray) {
            p.NewTarget(1);
            p.LoadTarget(0, real);
        }
        p.m_target = real;
        p.m_nFamily = 60, p.m_nSolveFor1 = 3, p.m_nSolveFor2 = 4;
        p.m_dLength1 = 400.0, p.m_dBuildDLS = 1.0 / 2500.0;
        p.PutData(-1);
        ASSERT_EQ(p.m_nError, 0);
        const std::vector<SStation> unwalked = p.m_stations;
        const int size = static_cast<int>(p.GetSize());

        p.SetWalkTable({{1300.0, kRate}, {3000.0, -0.5 * kRate}});
        p.CalcWalk();
        ASSERT_EQ(p.m_nError, 0);
        const std::vector<SStation> walked = p.m_stations;
        const int n = static_cast<int>(p.GetSize());
        ASSERT_EQ(n, size + 1);  // the tangent is cut at 3000
        const SStation& end = walked[n - 1];
        EXPECT_EQ(end.target, u"T1");
        EXPECT_LT(std::hypot(end.ns - real.ns, end.ew - real.ew, end.tvd - real.tvd), CLOSURE);
        EXPECT_EQ(walked[n - 2].tvd, 3000.0);

        p.RestoreWalk();
        ASSERT_EQ(p.m_nError, 0);
        ASSERT_EQ(static_cast<int>(p.GetSize()), size);
        for (int i = 1; i < size; ++i) EXPECT_EQ(p.m_stations[i].method, unwalked[i].method);
        const SStation& aim = p.m_stations[size - 1];
        if (inArray) {
            EXPECT_NEAR(aim.ns, unwalked[size - 1].ns, TOL_POS);
            EXPECT_NEAR(aim.ew, unwalked[size - 1].ew, TOL_POS);
            continue;
        }
        EXPECT_GT(std::hypot(aim.ns - real.ns, aim.ew - real.ew), CLOSURE);
        p.m_nWalkLine = size - 1;
        Walk::wlkpro(p);
        ASSERT_EQ(p.m_nWalkStations, n);
        for (int i = 1; i < n; ++i) {
            EXPECT_NEAR(p.m_walkStations[i].ns, walked[i].ns, TOL_POS);
            EXPECT_NEAR(p.m_walkStations[i].ew, walked[i].ew, TOL_POS);
            EXPECT_NEAR(p.m_walkStations[i].tvd, walked[i].tvd, TOL_POS);
        }
    }
}
