// Angle wrapping, vectors, toolface and dogleg, the turn-rate models, and the vertical section.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "support/PlanAccess.h"

struct AnglesTag;
template <>
struct PlanAccess<AnglesTag> {
    static constexpr auto tarvec = &CPlan::tarvec;
    static constexpr auto lasvec = &CPlan::lasvec;
    static constexpr auto getfo = &CPlan::getfo;
    static constexpr auto hdls2daz = &CPlan::hdls2daz;
    static constexpr auto daz2hdls = &CPlan::daz2hdls;
    static constexpr auto dazhdls2md = &CPlan::dazhdls2md;
};
using Angles = PlanAccess<AnglesTag>;
using orrin::HALF_PI;
using orrin::PI;

namespace {

constexpr double kAngTol = 1e-10;   // angles [rad]
constexpr double kRateTol = 1e-14;  // turn rates [rad/L]
constexpr double kLenTol = 1e-9;    // lengths and vector components [L]
// A dogleg taken as acos of a value within rounding of 1 keeps only half the digits [rad].
constexpr double kSmallDoglegTol = 1e-7;

// getdaz wraps into (-pi, pi] and deltaz into [0, 2 pi), each with one correction only; tangle
// gives the azimuth of (east, north) and 0 inside the zero band.
TEST(Angles, WrapsWithOneCorrectionAndAzimuthOfAVector) {
    struct Row {
        const char* name;
        double got, expected;
    };
    const Row rows[] = {
        {"getdaz(-pi) is pi", CPlan::getdaz(-PI), PI},
        {"getdaz(3.5 pi): one correction", CPlan::getdaz(3.5 * PI), 1.5 * PI},
        {"deltaz(2 pi) is 0", CPlan::deltaz(2.0 * PI), 0.0},
        {"deltaz(-pi/2) is 1.5 pi", CPlan::deltaz(-HALF_PI), 1.5 * PI},
        {"deltaz(-2.5 pi): one correction", CPlan::deltaz(-2.5 * PI), -0.5 * PI},
        {"tangle: both inside the zero band", CPlan::tangle(1e-6, -1e-6), 0.0},
        {"tangle: cosine just outside the band", CPlan::tangle(1e-6, 2e-6), std::atan(0.5)},
        {"tangle: west", CPlan::tangle(-1.0, 0.0), 1.5 * PI},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_NEAR(r.got, r.expected, kAngTol);
    }
    EXPECT_TRUE(std::signbit(CPlan::deltaz(-0.0)));
}

TEST(Angles, Vectors) {
    double x = 0.0, y = 0.0, z = 1e-7;
    EXPECT_EQ(CPlan::normalize(x, y, z), 0.0);
    EXPECT_EQ(z, 1e-7);  // too short to divide

    double e, n, v;  // a 3-4-12 box of diagonal 13
    EXPECT_NEAR(CPlan::canvec(1.0, 2.0, 3.0, 13.0, 5.0, 7.0, e, n, v), 13.0, kLenTol);
    EXPECT_NEAR(e, 4.0 / 13.0, kLenTol);
    EXPECT_NEAR(n, 3.0 / 13.0, kLenTol);
    EXPECT_NEAR(v, 12.0 / 13.0, kLenTol);

    // tarvec from (0, 0): 5 / sin 30 to (3, 4) at 30 degrees; vertical: straight down, 0 back.
    CPlan p;
    EXPECT_NEAR((p.*Angles::tarvec)(0, 0, PI / 6.0, 3.0, 4.0, e, n, v), 10.0, kLenTol);
    EXPECT_NEAR(e, 0.4, kLenTol);
    EXPECT_NEAR(n, 0.3, kLenTol);
    EXPECT_EQ((p.*Angles::tarvec)(0, 0, 0.0, 3.0, 4.0, e, n, v), 0.0);
    EXPECT_EQ(v, 1.0);

    p.m_stnA.tvd = 100.0;
    EXPECT_NEAR((p.*Angles::lasvec)(100.0, 0.0, -10.0), 10.0, kLenTol);  // due west, level
    EXPECT_NEAR(p.m_stnA.inc, HALF_PI, kAngTol);
    EXPECT_NEAR(p.m_stnA.azi, 1.5 * PI, kAngTol);
}

TEST(Angles, ToolfaceAndDogleg) {
    struct Row {
        const char* name;
        double i1, a1, i2, a2, tf, dl, daz;
    };
    const double across = 2 * PI - 6.1;  // from 6.2 right across north to 0.1
    const Row rows[] = {
        {"from vertical: the target azimuth in [0, 2 pi)", 0.0, 1.0, 0.5, 4.0, 4.0, 0.5, 3.0},
        {"pure drop", 0.7, 2.0, 0.3, 2.0, PI, 0.4, 0.0},
        {"level right turn across north", HALF_PI, 6.2, HALF_PI, 0.1, HALF_PI, across, across},
        {"level left turn", HALF_PI, 0.4, HALF_PI, 0.0, -HALF_PI, 0.4, -0.4},
        {"no change of direction", 0.5, 1.0, 0.5, 1.0, 0.0, 0.0, 0.0},
    };
    CPlan p;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        double dl = -1.0, daz = -1.0;
        EXPECT_NEAR((p.*Angles::getfo)(r.i1, r.a1, r.i2, r.a2, dl, daz), r.tf, kAngTol);
        EXPECT_NEAR(dl, r.dl, kSmallDoglegTol);
        EXPECT_NEAR(daz, r.daz, kAngTol);
    }
}

// The horizontal-plane turn model integrates h / sin(I) along the course; Simpson's rule is the
// second method. Each routine is checked against it and against the other two (round trips).
TEST(Angles, TurnModels) {
    struct Row {
        const char* name;
        double h, len, inc0, build;
    };
    const Row rows[] = {
        {"building from 0.5", 0.001, 300.0, 0.5, 0.002},
        {"dropping from 1.2, turning left", -0.002, 200.0, 1.2, -0.003},
    };
    CPlan p;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const int steps = 100000;
        double simpson = 0.0;
        for (int i = 0; i <= steps; ++i) {
            const double w = (i == 0 || i == steps) ? 1.0 : (i % 2 ? 4.0 : 2.0);
            simpson += w * r.h / std::sin(r.inc0 + r.build * i * r.len / steps) * r.len / steps / 3;
        }
        p.m_bHorizontalTurn = true;
        const double daz = (p.*Angles::hdls2daz)(r.h, r.len, r.inc0, r.build);
        EXPECT_NEAR(daz, simpson, kAngTol);
        EXPECT_NEAR((p.*Angles::daz2hdls)(daz, r.len, r.inc0, r.build), r.h, kRateTol);
        p.m_stnPrev.inc = r.inc0;
        EXPECT_NEAR((p.*Angles::dazhdls2md)(daz, r.h, r.inc0, r.build), r.len, kLenTol);
    }
    p.m_bHorizontalTurn = false;  // plain model: daz = h len whatever the inclination
    EXPECT_NEAR((p.*Angles::hdls2daz)(0.001, 300.0, 0.5, 0.002), 0.3, kAngTol);
    EXPECT_NEAR((p.*Angles::dazhdls2md)(0.3, 0.001, 0.5, 0.002), 300.0, kLenTol);

    p.m_bHorizontalTurn = true;  // a vertical start turns as the plain model
    EXPECT_NEAR((p.*Angles::hdls2daz)(0.001, 100.0, 1e-6, 0.002), 0.1, kAngTol);
    // No course, or no rate to turn with: nothing to divide by, 0 back.
    EXPECT_EQ((p.*Angles::daz2hdls)(0.1, -5.0, 0.5, 0.002), 0.0);
    EXPECT_EQ((p.*Angles::dazhdls2md)(0.1, 1e-6, 0.5, 0.002), 0.0);
}

TEST(VerticalSection, ProjectionAndCourseToSection) {
    CPlan p;
    p.SetVS(0.6, 3.0, 4.0);
    EXPECT_NEAR(p.GetVS(3.0, 4.0), 0.0, kLenTol);
    EXPECT_NEAR(p.GetVS(3.0 + 10.0 * std::cos(0.6), 4.0 + 10.0 * std::sin(0.6)), 10.0, kLenTol);

    // Section north from 0; a course from (0, 0) to section 10 runs 10 / cos(azi), its sine moving
    // the first output and its cosine the second; exactly 90 degrees off is refused.
    p.SetVS(0.0, 0.0, 0.0);
    double out1 = 7.0, out2 = 7.0;
    EXPECT_NEAR(p.GetVSPoint(10.0, 0.0, 0.0, HALF_PI, out1, out2), -1.0, kLenTol);
    EXPECT_EQ(out1, 7.0);
    const double left = -100.0 * PI / 180.0, t = 10.0 / std::cos(left);  // negative distance
    EXPECT_NEAR(p.GetVSPoint(10.0, 0.0, 0.0, left, out1, out2), t, kLenTol);
    EXPECT_NEAR(out1, t * std::sin(left), kLenTol);
    EXPECT_NEAR(out2, 10.0, kLenTol);
}

}  // namespace
