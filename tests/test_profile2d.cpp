// Two-dimensional slant and S-shape profiles, solved through PutData and read back with GetData.
//
// Reference targets are laid by chord geometry, independent of the solver's closure formula: an arc
// of radius R from inclination a to b spans the chord 2 R sin((b - a)/2) at the mean inclination.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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
constexpr double X = std::numeric_limits<double>::quiet_NaN();  ///< taken from the shape

/// The seven parameters of a profile, indexed 1..7 as the unknowns are: lengths and signed radii
/// [L], inclinations [rad]. Index 0 is unused.
struct Shape {
    double f[8];
    Shape with(int k, double value) const {
        Shape s = *this;
        s.f[k] = value;
        return s;
    }
};
/// A slant; its drop fields are set to values a slant must not use.
Shape slantOf(double kickoff, double R, double inc, double tangent) {
    return {{0.0, kickoff, R, inc, tangent, -1000.0, 0.1, 300.0}};
}
const Shape kSlant = slantOf(500.0, 2000.0, 30.0 * kDeg, 1500.0);
const Shape kS{{0.0, 400.0, 2000.0, 40.0 * kDeg, 1200.0, -1800.0, 10.0 * kDeg, 600.0}};
const Shape kInclinedS{{0.0, 300.0, 1500.0, 50.0 * kDeg, 900.0, -2000.0, 20.0 * kDeg, 400.0}};

/// Where the profile ends, as (down, across) from a start of inclination i0.
std::pair<double, double> reach(const Shape& s, double i0, bool sShape) {
    double down = 0.0, across = 0.0;
    auto hold = [&](double L, double inc) {
        down += L * std::cos(inc);
        across += L * std::sin(inc);
    };
    auto arc = [&](double R, double a, double b) {
        hold(2.0 * R * std::sin(0.5 * (b - a)), 0.5 * (a + b));
    };
    hold(s.f[1], i0);
    arc(s.f[2], i0, s.f[3]);
    hold(s.f[4], s.f[3]);
    if (sShape) {
        arc(s.f[5], s.f[3], s.f[6]);
        hold(s.f[7], s.f[6]);
    }
    return {down, across};
}

/// A plan of the tie-on (md 1200, 1000 down, 100 north, 50 west, inclination i0) and one profile
/// aimed at (down, across) along azimuth 2.0, or at the shape's own end where these are X. The
/// tie-on's azimuth is 2.0 + tieOff. The unknowns u, w are handed over as zero, so nothing of the
/// true shape leaks into them.
CPlan putProfile(bool sShape, const Shape& s, int u, int w, double i0 = 0.0, double down = X,
                 double across = X, double tieOff = 0.0) {
    const auto [d, a] = reach(s, i0, sShape);
    const Shape given = s.with(u, 0.0).with(w, 0.0);
    const double* g = given.f;
    SStation t;
    t.md = 1200.0, t.tvd = 1000.0, t.ns = 100.0, t.ew = -50.0;
    t.inc = i0, t.azi = 2.0 + tieOff, t.method = 2;
    CPlan plan;
    plan.NewData(10);
    plan.LoadData(0, t);
    plan.m_nFamily = sShape ? 70 : 60;
    plan.m_nSolveFor1 = u, plan.m_nSolveFor2 = w;
    plan.m_dLength1 = g[1], plan.m_dHoldInc = g[3], plan.m_dLength2 = g[4];
    plan.m_dFinalInc = g[6], plan.m_dLength3 = g[7];
    plan.m_dBuildDLS = g[2] != 0.0 ? 1.0 / g[2] : 0.0;
    plan.m_dDropDLS = g[5] != 0.0 ? 1.0 / g[5] : 0.0;
    plan.m_target.name = u"T1";
    plan.m_target.tvd = t.tvd + (std::isnan(down) ? d : down);
    plan.m_target.ns = t.ns + (std::isnan(across) ? a : across) * std::cos(2.0);
    plan.m_target.ew = t.ew + (std::isnan(across) ? a : across) * std::sin(2.0);
    plan.PutData(-1);
    return plan;
}

SStation at(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

void expectOnTarget(const CPlan& p, const SStation& s) {
    EXPECT_NEAR(s.tvd, p.m_target.tvd, kPos) << "tvd";
    EXPECT_NEAR(s.ns, p.m_target.ns, kPos) << "north";
    EXPECT_NEAR(s.ew, p.m_target.ew, kPos) << "east";
}

}  // namespace

// Build and hold from vertical: the tangent from the target (X, D) to the build circle of radius R
// leaves at atan2(X - R, D) + asin(R / rho), rho = hypot(X - R, D), and is sqrt(rho^2 - R^2) long.
TEST(Profile2D, SlantAgainstClosedForm) {
    const struct {
        const char* name;
        double kickoff, rate, depth, disp;
    } rows[] = {
        {"displacement beyond the radius", 800.0, 2.0 * kDeg / 100.0, 7000.0, 4000.0},
        {"no kick-off hold", 0.0, 1.5 * kDeg / 30.0, 2000.0, 900.0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const double R = 1.0 / r.rate, D = r.depth - r.kickoff, rho = std::hypot(r.disp - R, D);
        const double inc = std::atan2(r.disp - R, D) + std::asin(R / rho);
        const CPlan p =
            putProfile(false, slantOf(r.kickoff, R, 0.0, 0.0), 3, 4, 0.0, r.depth, r.disp);
        ASSERT_EQ(p.m_nError, 0);
        const int last = r.kickoff > 0.0 ? 3 : 2;
        const SStation end = at(p, last), arc = at(p, last - 1);
        EXPECT_NEAR(arc.inc, inc, kAng);
        EXPECT_NEAR(end.inc, inc, kAng);
        EXPECT_NEAR(arc.md, 1200.0 + r.kickoff + R * inc, kPos);
        EXPECT_NEAR(end.md - arc.md, std::sqrt(rho * rho - R * R), kPos);
        EXPECT_NEAR(arc.dls, r.rate, 1e-15);
        EXPECT_NEAR(arc.tf, 2.0, 1e-12);
        expectOnTarget(p, end);
        EXPECT_EQ(p.m_nPrev, last);
        EXPECT_EQ(at(p, last + 1).method, 0);  // nothing written past the line
    }
}

// Each sensible pair of unknowns is recovered from a profile whose target was laid by chord
// geometry, solving again from the tie-on finds the same profile, and it reads back with GetData as
// the family, unknowns and shape it was put as.
TEST(Profile2D, SolveForPairsRecoverTheShape) {
    const struct {
        const char* name;
        bool sShape;
        Shape shape;
        int u, w;
        double i0;
    } rows[] = {
        {"slant kick-off, inclination", false, kSlant, 1, 3, 0.0},
        {"slant radius, tangent", false, kSlant, 2, 4, 0.0},
        {"slant inclination, tangent", false, kSlant, 3, 4, 0.0},
        {"slant kick-off, radius", false, kSlant, 1, 2, 0.0},
        {"S inclination, tangent", true, kS, 3, 4, 0.0},
        {"S tangent, final hold", true, kS, 4, 7, 0.0},
        {"S drop radius, final hold", true, kS, 5, 7, 0.0},
        {"S from an inclined start", true, kInclinedS, 3, 4, 12.0 * kDeg},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p = putProfile(r.sShape, r.shape, r.u, r.w, r.i0);
        ASSERT_EQ(p.m_nError, 0);
        const SStation end = at(p, p.m_nPrev);
        expectOnTarget(p, end);
        EXPECT_NEAR(end.inc, r.shape.f[r.sShape ? 6 : 3], kAng);
        p.PutData(0);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_NEAR(at(p, p.m_nPrev).md, end.md, kPos);

        p.GetData(1);
        EXPECT_EQ(p.m_nFamily, r.sShape ? 70 : 60);
        EXPECT_EQ(p.m_nSolveFor1, r.u);
        EXPECT_EQ(p.m_nSolveFor2, r.w);
        const double got[] = {0.0,          p.m_dLength1,       1.0 / p.m_dBuildDLS, p.m_dHoldInc,
                              p.m_dLength2, 1.0 / p.m_dDropDLS, p.m_dFinalInc,       p.m_dLength3};
        for (int k = 1; k <= (r.sShape ? 7 : 4); ++k) {
            EXPECT_NEAR(got[k], r.shape.f[k], k == 3 || k == 6 ? kAng : kLen) << "parameter " << k;
        }
    }
}

// Every failure of the profile, through whole plans: the plan is put back as it stood before the
// solve and the error names the line's stations.
TEST(Profile2D, FailureCodes) {
    const struct {
        const char* name;
        bool sShape;
        Shape shape;
        int u, w;
        double i0, aziOff, down, across;  // X: the shape's own end
        int error;
    } rows[] = {
        {"target straight below", false, kSlant, 3, 4, 0.0, 0.0, X, 0.0, -12},
        {"inclined start 0.0011 rad off", false, kSlant, 3, 4, 0.2, 0.0011, X, X, -3},
        {"target inside the build circle", false, kSlant.with(2, 3000.0), 3, 4, 0.0, 0.0, 1000.0,
         500.0, -4},
        {"kick-off solved to -200", false, kSlant.with(1, -200.0), 1, 4, 0.0, 0.0, X, X, -9},
        {"build radius against the build", false, kSlant.with(2, -2000.0), 1, 4, 0.0, 0.0, X, X,
         -1},
        {"drop radius against the drop", true, kS.with(5, 1800.0), 3, 4, 0.0, 0.0, X, X, -2},
        {"given tangent inclination negative", false, kSlant.with(3, -5.0 * kDeg), 1, 4, 0.0, 0.0,
         X, X, -14},
        {"tangent solved to -300", false, kSlant.with(4, -300.0), 1, 4, 0.0, 0.0, X, X, -10},
        {"final hold solved to -300", true, kS.with(7, -300.0), 4, 7, 0.0, 0.0, X, X, -11},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = putProfile(r.sShape, r.shape, r.u, r.w, r.i0, r.down, r.across, r.aziOff);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nLast, 1);
        EXPECT_EQ(p.m_nPrev, 0);
    }
}

// The solver on its own: given holds that are negative fail before any pass; with no unknown to
// move (index 0, the unused entry) the Jacobian is singular at once and the loose acceptance bound
// of 20 [L] alone decides.
TEST(Profile2D, SolverChecksAndAcceptanceBound) {
    const struct {
        const char* name;
        double kickoff, tangent, missBy;
        int u, w, error;
    } rows[] = {
        {"given kick-off negative", -1.0, 100.0, 0.0, 3, 4, -9},
        {"given tangent negative", 100.0, -1.0, 0.0, 1, 3, -10},
        {"singular, 15 off: accepted", 100.0, 100.0, 15.0, 0, 0, 0},
        {"singular, 25 off: refused", 100.0, 100.0, 25.0, 0, 0, -4},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        CPlan p;
        p.m_nSolveFor1 = r.u, p.m_nSolveFor2 = r.w;
        p.m_dLength1 = r.kickoff, p.m_dLength2 = r.tangent;
        p.m_dBuildRadius = 1000.0, p.m_dHoldInc = M_PI / 2.0;
        // Vertical kick-off, a quarter circle of 1000, then a flat tangent.
        p.m_dDepthToTarget = r.kickoff + 1000.0 + r.missBy;
        p.m_dDisplacement = 1000.0 + r.tangent;
        Access::angus(p);
        EXPECT_EQ(p.m_nError, r.error);
    }
}
