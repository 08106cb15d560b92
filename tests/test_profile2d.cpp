// Two-dimensional slant and S-shape profiles, solved through PutData and read back with GetData.
//
// Reference targets are laid by chord geometry, independent of the solver's closure formula: an arc
// of radius R from inclination a to b spans the chord 2 R sin((b - a)/2) at the mean inclination.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct Profile2DTag;
template <>
struct PlanAccess<Profile2DTag> {
    static void angus(CPlan& p) { p.angus(); }
};
using Access = PlanAccess<Profile2DTag>;

namespace {

constexpr double kPos = 1e-4;  ///< positions and depths [L]
constexpr double kAng = 1e-7;  ///< angles [rad]
constexpr double kLen = 1e-3;  ///< solved lengths and radii [L]
constexpr double kDeg = M_PI / 180.0;

/// The seven parameters of a profile: lengths and signed radii [L], inclinations [rad].
struct Shape {
    double kickoff, buildR, holdInc, tangent, dropR, finalInc, finalHold;
};

/// The tie-on of every case: 1000 down, 100 north, 50 west, at inclination inc and azimuth azi.
SStation tie(double inc, double azi) {
    SStation s;
    s.md = 1200.0;
    s.tvd = 1000.0;
    s.ns = 100.0;
    s.ew = -50.0;
    s.inc = inc;
    s.azi = azi;
    s.method = 2;
    return s;
}

/// Where the profile ends, as (down, across) from a start of inclination i0.
std::pair<double, double> reach(const Shape& p, double i0, bool sShape) {
    double down = 0.0, across = 0.0;
    auto hold = [&](double L, double inc) {
        down += L * std::cos(inc);
        across += L * std::sin(inc);
    };
    auto arc = [&](double R, double a, double b) {
        const double chord = 2.0 * R * std::sin(0.5 * (b - a));
        hold(chord, 0.5 * (a + b));
    };
    hold(p.kickoff, i0);
    arc(p.buildR, i0, p.holdInc);
    hold(p.tangent, p.holdInc);
    if (sShape) {
        arc(p.dropR, p.holdInc, p.finalInc);
        hold(p.finalHold, p.finalInc);
    }
    return {down, across};
}

/// A plan of the tie-on and one profile aimed at (down, across) along azimuth azi from the tie-on,
/// whose own azimuth is azi + tieOff. The unknowns u, w are handed over as zero, so nothing of the
/// true shape leaks into them.
CPlan putProfile(bool sShape, Shape p, int u, int w, double i0, double azi, double down,
                 double across, double tieOff = 0.0) {
    for (int k : {u, w}) {
        double* f[] = {nullptr,    &p.kickoff, &p.buildR,   &p.holdInc,
                       &p.tangent, &p.dropR,   &p.finalInc, &p.finalHold};
        *f[k] = 0.0;
    }
    CPlan plan;
    plan.NewData(10);
    const SStation t = tie(i0, azi + tieOff);
    plan.LoadData(0, t);
    plan.m_nFamily = sShape ? 70 : 60;
    plan.m_nSolveFor1 = u;
    plan.m_nSolveFor2 = w;
    plan.m_dLength1 = p.kickoff;
    plan.m_dBuildDLS = p.buildR != 0.0 ? 1.0 / p.buildR : 0.0;
    plan.m_dHoldInc = p.holdInc;
    plan.m_dLength2 = p.tangent;
    plan.m_dDropDLS = p.dropR != 0.0 ? 1.0 / p.dropR : 0.0;
    plan.m_dFinalInc = p.finalInc;
    plan.m_dLength3 = p.finalHold;
    plan.m_target.name = u"T1";
    plan.m_target.tvd = t.tvd + down;
    plan.m_target.ns = t.ns + across * std::cos(azi);
    plan.m_target.ew = t.ew + across * std::sin(azi);
    plan.PutData(-1);
    return plan;
}

SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

}  // namespace

// Build and hold from a vertical kick-off: with R the build radius, D the depth from the kick-off
// point to the target and X its displacement, the tangent from the point (X, D) to the build circle,
// centred R across, leaves at the inclination a = atan2(X - R, D) + asin(R / rho) with
// rho = hypot(X - R, D), and is sqrt(rho^2 - R^2) long.
TEST(Profile2D, SlantAgainstClosedForm) {
    struct Row {
        const char* name;
        double kickoff, rate, depth, disp;
    } rows[] = {
        {"displacement beyond the radius", 800.0, 2.0 * kDeg / 100.0, 7000.0, 4000.0},
        {"displacement within the radius", 300.0, 3.0 * kDeg / 100.0, 5000.0, 1200.0},
        {"no kick-off hold", 0.0, 1.5 * kDeg / 30.0, 2000.0, 900.0},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const double R = 1.0 / r.rate, D = r.depth - r.kickoff, X = r.disp;
        const double rho = std::hypot(X - R, D);
        const double inc = std::atan2(X - R, D) + std::asin(R / rho);
        const double tangent = std::sqrt(rho * rho - R * R);
        const Shape given{r.kickoff, R, 0.0, 0.0, 0.0, 0.0, 0.0};
        const CPlan p = putProfile(false, given, 3, 4, 0.0, 0.7, r.depth, r.disp);
        ASSERT_EQ(p.m_nError, 0);
        const int last = r.kickoff > 0.0 ? 3 : 2;
        const SStation end = at(p, last), arc = at(p, last - 1);
        EXPECT_NEAR(arc.inc, inc, kAng);
        EXPECT_NEAR(end.inc, inc, kAng);
        EXPECT_NEAR(arc.md, 1200.0 + r.kickoff + R * inc, kPos);
        EXPECT_NEAR(end.md, 1200.0 + r.kickoff + R * inc + tangent, kPos);
        EXPECT_NEAR(end.tvd, p.m_target.tvd, kPos);
        EXPECT_NEAR(end.ns, p.m_target.ns, kPos);
        EXPECT_NEAR(end.ew, p.m_target.ew, kPos);
        EXPECT_EQ(p.m_nPrev, last);
        EXPECT_EQ(at(p, last + 1).method, 0);  // nothing written past the line
    }
}

// Each sensible pair of unknowns is recovered from a profile whose target was laid by chord
// geometry, and the profile reads back with GetData as the family, unknowns and shape it was put as.
TEST(Profile2D, SolveForPairsRecoverTheShape) {
    const Shape slant{400.0, 2500.0, 35.0 * kDeg, 1500.0, 0.0, 0.0, 0.0};
    const Shape sShape{400.0, 2000.0, 40.0 * kDeg, 1200.0, -1800.0, 10.0 * kDeg, 600.0};
    const Shape inclined{300.0, 1500.0, 50.0 * kDeg, 900.0, -2000.0, 20.0 * kDeg, 400.0};
    struct Row {
        const char* name;
        bool sShape;
        Shape shape;
        int u, w;
        double i0;
    } rows[] = {
        {"slant kick-off, inclination", false, slant, 1, 3, 0.0},
        {"slant kick-off, tangent", false, slant, 1, 4, 0.0},
        {"slant radius, inclination", false, slant, 2, 3, 0.0},
        {"slant radius, tangent", false, slant, 2, 4, 0.0},
        {"slant inclination, tangent", false, slant, 3, 4, 0.0},
        {"slant kick-off, radius", false, slant, 1, 2, 0.0},
        {"S inclination, tangent", true, sShape, 3, 4, 0.0},
        {"S tangent, final hold", true, sShape, 4, 7, 0.0},
        {"S kick-off, tangent", true, sShape, 1, 4, 0.0},
        {"S drop radius, final hold", true, sShape, 5, 7, 0.0},
        {"S tangent, final inclination", true, sShape, 4, 6, 0.0},
        {"S from an inclined start", true, inclined, 3, 4, 12.0 * kDeg},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const auto [down, across] = reach(r.shape, r.i0, r.sShape);
        CPlan p = putProfile(r.sShape, r.shape, r.u, r.w, r.i0, 2.0, down, across);
        ASSERT_EQ(p.m_nError, 0);
        const SStation end = at(p, p.m_nPrev);
        EXPECT_NEAR(end.tvd, p.m_target.tvd, kPos);
        EXPECT_NEAR(end.ns, p.m_target.ns, kPos);
        EXPECT_NEAR(end.ew, p.m_target.ew, kPos);
        EXPECT_NEAR(end.inc, r.sShape ? r.shape.finalInc : r.shape.holdInc, kAng);
        p.PutData(0);  // solving the plan again from the tie-on finds the same profile
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_NEAR(at(p, p.m_nPrev).md, end.md, kPos);
        EXPECT_NEAR(at(p, p.m_nPrev).tvd, end.tvd, kPos);

        p.GetData(1);
        EXPECT_EQ(p.m_nFamily, r.sShape ? 70 : 60);
        EXPECT_EQ(p.m_nProfileType, r.sShape ? 2 : 1);
        EXPECT_EQ(p.m_nSolveFor1, r.u);
        EXPECT_EQ(p.m_nSolveFor2, r.w);
        EXPECT_NEAR(p.m_dLength1, r.shape.kickoff, kLen);
        EXPECT_NEAR(1.0 / p.m_dBuildDLS, r.shape.buildR, kLen);
        EXPECT_NEAR(p.m_dHoldInc, r.shape.holdInc, kAng);
        EXPECT_NEAR(p.m_dLength2, r.shape.tangent, kLen);
        if (r.sShape) {
            EXPECT_NEAR(1.0 / p.m_dDropDLS, r.shape.dropR, kLen);
            EXPECT_NEAR(p.m_dFinalInc, r.shape.finalInc, kAng);
            EXPECT_NEAR(p.m_dLength3, r.shape.finalHold, kLen);
        }
    }
}

// Every failure of the profile, through whole plans: the plan is put back as it stood before the
// solve and the error names the line's stations.
TEST(Profile2D, FailureCodes) {
    const Shape slant{500.0, 2000.0, 30.0 * kDeg, 1500.0, 0.0, 0.0, 0.0};
    const Shape sShape{400.0, 2000.0, 40.0 * kDeg, 1200.0, -1800.0, 10.0 * kDeg, 600.0};
    auto with = [](Shape s, int field, double value) {
        double* f[] = {nullptr,    &s.kickoff, &s.buildR,   &s.holdInc,
                       &s.tangent, &s.dropR,   &s.finalInc, &s.finalHold};
        *f[field] = value;
        return s;
    };
    struct Row {
        const char* name;
        bool sShape;
        Shape shape;
        int u, w;
        double i0, aziOff;
        bool straightDown, level;
        int error;
    } rows[] = {
        {"target straight below", false, slant, 3, 4, 0.0, 0.0, true, false, -12},
        {"target level with the start", false, slant, 3, 4, 0.0, 0.0, false, true, -12},
        {"inclined start 0.0011 rad off", false, slant, 3, 4, 0.2, 0.0011, false, false, -3},
        {"kick-off solved to -200", false, with(slant, 1, -200.0), 1, 4, 0.0, 0.0, false, false,
         -9},
        {"build radius against the build", false, with(slant, 2, -2000.0), 1, 4, 0.0, 0.0, false,
         false, -1},
        {"no build rate", false, with(slant, 2, 0.0), 3, 4, 0.0, 0.0, false, false, -1},
        {"drop radius against the drop", true, with(sShape, 5, 1800.0), 3, 4, 0.0, 0.0, false,
         false, -2},
        {"given tangent inclination negative", false, with(slant, 3, -5.0 * kDeg), 1, 4, 0.0, 0.0,
         false, false, -14},
        {"tangent solved to -300", false, with(slant, 4, -300.0), 1, 4, 0.0, 0.0, false, false,
         -10},
        {"final hold solved to -300", true, with(sShape, 7, -300.0), 4, 7, 0.0, 0.0, false, false,
         -11},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        auto [down, across] = reach(r.shape, r.i0, r.sShape);
        if (r.straightDown) across = 0.0;
        if (r.level) down = 0.0;
        CPlan p = putProfile(r.sShape, r.shape, r.u, r.w, r.i0, 2.0, down, across, r.aziOff);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nFirst, 1);
        EXPECT_EQ(p.m_nLast, 1);
        EXPECT_EQ(p.m_nPrev, 0);
        EXPECT_EQ(at(p, 0).tvd, 1000.0);
    }
    {
        SCOPED_TRACE("target inside the build circle: no solution");
        const CPlan p = putProfile(false, with(slant, 2, 3000.0), 3, 4, 0.0, 2.0, 1000.0, 500.0);
        EXPECT_EQ(p.m_nError, -4);
    }
}

// The solver on its own: given holds that are negative fail before any pass; with no unknown to
// move (index 0, the unused entry) the Jacobian is singular at once and the loose acceptance bound
// of 20 [L] alone decides.
TEST(Profile2D, SolverChecksAndAcceptanceBound) {
    struct Row {
        const char* name;
        double kickoff, tangent, missBy;
        int u, w, error;
    } rows[] = {
        {"given kick-off negative", -1.0, 100.0, 0.0, 3, 4, -9},
        {"given tangent negative", 100.0, -1.0, 0.0, 1, 3, -10},
        {"singular, 15 off: accepted", 100.0, 100.0, 15.0, 0, 0, 0},
        {"singular, 25 off: refused", 100.0, 100.0, 25.0, 0, 0, -4},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_nSolveFor1 = r.u;
        p.m_nSolveFor2 = r.w;
        p.m_dLength1 = r.kickoff;
        p.m_dBuildRadius = 1000.0;
        p.m_dHoldInc = M_PI / 2.0;
        p.m_dLength2 = r.tangent;
        // Vertical kick-off, a quarter circle of 1000, then a flat tangent: 1100 down, 1100 across.
        p.m_dDepthToTarget = r.kickoff + 1000.0 + r.missBy;
        p.m_dDisplacement = 1000.0 + r.tangent;
        Access::angus(p);
        EXPECT_EQ(p.m_nError, r.error);
    }
}

// Laying out the parts: line-up of an inclined start, the vertical start's azimuths, toolfaces, the
// short negative hold written as 0.01, and a slant that never writes a drop.
TEST(Profile2D, LayoutDetails) {
    const Shape slant{500.0, 2000.0, 30.0 * kDeg, 1500.0, 0.0, 0.0, 0.0};
    {
        SCOPED_TRACE("inclined start 0.0009 rad off: laid along the target azimuth");
        const Shape s{300.0, 1500.0, 40.0 * kDeg, 900.0, -2000.0, 20.0 * kDeg, 400.0};
        const auto [down, across] = reach(s, 0.2, true);
        const CPlan p = putProfile(true, s, 3, 4, 0.2, 2.0, down, across, 0.0009);
        ASSERT_EQ(p.m_nError, 0);
        const double tf[] = {0.0, 0.0, 0.0, M_PI, 0.0};  // hold, build, hold, drop, hold
        for (int i = 1; i <= 5; ++i) {
            EXPECT_NEAR(at(p, i).azi, 2.0, 1e-12) << "station " << i;
            EXPECT_EQ(at(p, i).tf, tf[i - 1]) << "station " << i;
        }
        EXPECT_EQ(at(p, 0).azi, 2.0009);
    }
    {
        SCOPED_TRACE("vertical start: azimuth 0 above and on the kick-off, toolface along theta");
        const auto [down, across] = reach(slant, 0.0, false);
        const CPlan p = putProfile(false, slant, 3, 4, 0.0, 2.0, down, across);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_EQ(at(p, 0).azi, 0.0);
        EXPECT_EQ(at(p, 1).azi, 0.0);
        EXPECT_NEAR(at(p, 2).tf, 2.0, 1e-12);
        EXPECT_NEAR(at(p, 2).azi, 2.0, 1e-12);
        EXPECT_NEAR(at(p, 2).dls, 1.0 / 2000.0, 1e-15);
    }
    {
        SCOPED_TRACE("dropping build arc from an inclined start: toolface pi");
        const Shape s{200.0, -1500.0, 10.0 * kDeg, 800.0, 0.0, 0.0, 0.0};
        const auto [down, across] = reach(s, 20.0 * kDeg, false);
        const CPlan p = putProfile(false, s, 3, 4, 20.0 * kDeg, 2.0, down, across);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_EQ(at(p, 2).tf, M_PI);
        EXPECT_NEAR(at(p, 2).build, -1.0 / 1500.0, 1e-15);
    }
    {
        SCOPED_TRACE("tangent solved to -0.005: a hold of 0.01");
        Shape s = slant;
        s.tangent = -0.005;
        const auto [down, across] = reach(s, 0.0, false);
        const CPlan p = putProfile(false, s, 1, 4, 0.0, 2.0, down, across);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_NEAR(at(p, 3).md - at(p, 2).md, 0.01, 1e-9);
    }
    {
        SCOPED_TRACE("a slant with drop fields set writes no drop");
        const Shape s{0.0, 2000.0, 30.0 * kDeg, 1500.0, -1000.0, 0.1, 300.0};
        const auto [down, across] = reach(s, 0.0, false);
        const CPlan p = putProfile(false, s, 3, 4, 0.0, 2.0, down, across);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_EQ(at(p, 1).method, 1234);  // build and tangent: 1000 P + 100 mask + 34, P = 1
        EXPECT_EQ(at(p, 3).method, 0);
        EXPECT_NEAR(at(p, 2).tvd, p.m_target.tvd, kPos);
    }
}
