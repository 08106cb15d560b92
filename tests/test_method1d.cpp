// First-family lines through meth1d: each method lands where its inputs say, its end agrees with
// minimum curvature between its end directions, and its failures leave the plan as it was.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "plan/CPlan.h"

namespace {

constexpr double ANG_TOL = 1e-9;  ///< angles [rad]
constexpr double LEN_TOL = 1e-6;  ///< lengths, depths and coordinates [L]
const double PI_ = std::acos(-1.0);
const double X = NAN;  ///< an expected value that the row does not check
double deg(double d) {
    return d * PI_ / 180.0;
}

/// A tie-on at md 1000, tvd 900, north 100, east -50.
SStation tie(double inc, double azi, double tvd = 900.0) {
    SStation s;
    s.md = 1000.0, s.inc = inc, s.azi = azi, s.tvd = tvd, s.ns = 100.0, s.ew = -50.0, s.method = 2;
    return s;
}
SStation line(short code, double md, double inc = 0, double azi = 0, double tvd = 0, double dls = 0,
              double tf = 0, const char16_t* target = u"", bool flag = false) {
    SStation s;
    s.method = code, s.md = md, s.inc = inc, s.azi = azi, s.tvd = tvd, s.dls = dls, s.tf = tf;
    s.target = target, s.flag = flag;
    return s;
}
const SStation T0 = tie(deg(30), deg(40));
const SStation H = tie(deg(90), 0.0);  // horizontal, heading north
const SStation V = tie(0.0, 0.0);      // vertical

/// A plan of a tie-on and one line, the vertical section along north from (0, 0), and targets:
/// T on the section at 600 and 500 cos 30 below the tie-on; F, flagged, that lines must not take
/// their depth from.
CPlan solved(const SStation& t, const SStation& l) {
    CPlan p;
    p.NewData(2);
    p.LoadData(0, t);
    p.LoadData(1, l);
    p.SetVS(0.0, 0.0, 0.0);
    p.NewTarget(2);
    p.LoadTarget(0, {u"T", false, false, 600.0, 0.0, 900.0 + 500.0 * std::cos(deg(30)), 0.0, 0.0});
    p.LoadTarget(1, {u"F", true, false, 0.0, 0.0, 5000.0, 0.0, 0.0});
    p.m_nPrev = 0;
    p.meth1d();
    return p;
}

/// The end of the line against minimum curvature between its end directions, written out here:
/// position change (t1 + t2) (L/2) (2/DL) tan(DL/2); and its dogleg severity times L is DL.
void expectMinimumCurvature(const SStation& a, const SStation& b) {
    const auto unit = [](const SStation& s) {
        return std::array<double, 3>{std::sin(s.inc) * std::sin(s.azi),
                                     std::sin(s.inc) * std::cos(s.azi), std::cos(s.inc)};
    };
    const std::array<double, 3> t1 = unit(a), t2 = unit(b);
    const double chord = std::hypot(t2[0] - t1[0], t2[1] - t1[1], t2[2] - t1[2]);
    const double DL = 2.0 * std::asin(chord / 2.0);
    const double L = b.md - a.md;
    const double f = DL > 1e-12 ? 2.0 / DL * std::tan(DL / 2.0) : 1.0;
    EXPECT_NEAR(b.ew, a.ew + (t1[0] + t2[0]) * L / 2.0 * f, LEN_TOL) << "east";
    EXPECT_NEAR(b.ns, a.ns + (t1[1] + t2[1]) * L / 2.0 * f, LEN_TOL) << "north";
    EXPECT_NEAR(b.tvd, a.tvd + (t1[2] + t2[2]) * L / 2.0 * f, LEN_TOL) << "tvd";
    EXPECT_NEAR(b.dls * L, DL, ANG_TOL) << "dls";
}

}  // namespace

// Each row's end direction [deg] and md are hand geometry (holds, quarter circles of radius 1000,
// pure builds whose tvd gain is 1000 (sin I2 - sin I1)); its position follows by minimum curvature.
TEST(Method1D, EachMethodLandsWhereItsInputsSay) {
    const double v30 = 900 + 500 * std::cos(deg(30));  // tvd of a hold at 30 to md 1500
    const double b20 = 1000 + 1000 * deg(20);          // md of a 20 degree build
    const double q = 1000.0 + 500.0 * PI_;             // md after a quarter circle of radius 1000
    const double i08 = std::asin(0.8) / deg(1), i025 = std::asin(0.25) / deg(1);  // [deg]
    const double v50 = 400 + 1000 * std::sin(deg(50));  // tvd after building 30 to 50 at 1e-3
    const double k = 1e-3, k20 = deg(20) / 500;         // [rad/L]
    const struct {
        const char* name;
        SStation tie, line;
        double inc, azi, md, tf;
    } rows[] = {
        {"20 hold to tvd", T0, line(20, 0, 0, 0, v30), 30, 40, 1500, X},
        {"20 depth of target T", T0, line(20, 0, 0, 0, 0, 0, 0, u"T"), 30, 40, 1500, X},
        {"20 flagged F ignored", T0, line(20, 0, 0, 0, v30, 0, 0, u"F", true), 30, 40, 1500, X},
        {"30 quarter down to east", V, line(30, q, deg(90), deg(90)), 90, 90, q, 90},
        {"40 build to tvd", T0, line(40, 0, deg(50), deg(40), v50), 50, 40, b20, X},
        {"50 build at dls", T0, line(50, 0, deg(50), deg(40), 0, k), 50, 40, b20, X},
        {"80 upper root", T0, line(80, 1500, 0, deg(40), 0, k20), 50, 40, 1500, X},
        {"160 lower root", T0, line(160, 1500, 0, deg(40), 0, k20), 10, 40, 1500, X},
        {"120 build to inc", T0, line(120, 0, deg(50), 0, 0, k), 50, 40, b20, X},
        {"110 build to tvd", T0, line(110, 0, 0, 0, 1200, k), i08, 40, 1000 + deg(i08 - 30) / k, X},
        {"150 drop to tvd", T0, line(150, 0, 0, deg(40), 1150, k), i025, 40,
         1000 + deg(30 - i025) / k, X},
        // From north on the horizontal a right angle at toolface 45 ends east, 45 degrees up.
        {"70 dls tf inc md", H, line(70, q, deg(135), 0, 0, k, deg(45)), 135, 90, q, X},
        {"90 dls tf azi md", H, line(90, q, 0, deg(90), 0, k, deg(45)), 135, 90, q, X},
        {"100 dls tf md", H, line(100, q, 0, 0, 0, k, deg(45)), 135, 90, q, X},
        {"130 dls tf to azi", H, line(130, 0, 0, deg(90), 0, k, deg(45)), 135, 90, q, X},
        {"100 from vertical: tf = azi", V, line(100, 1300, 0, 0, 0, deg(20) / 300, deg(200)), 20,
         200, 1300, 200},
        // Hold on the start azimuth 40 from section 100 to target T's section 600.
        {"140 hold to section", T0, line(140, 0, 0, 0, 0, 0, 0, u"T"), 30, 40,
         1000 + 1000 / std::cos(deg(40)), X},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = solved(r.tie, r.line);
        ASSERT_EQ(p.m_nError, 0);
        EXPECT_EQ(p.m_nPrev, 1);
        const SStation& e = p.m_stations[1];
        EXPECT_NEAR(e.inc, deg(r.inc), ANG_TOL);
        EXPECT_NEAR(e.azi, deg(r.azi), ANG_TOL);
        EXPECT_NEAR(e.md, r.md, LEN_TOL);
        if (!std::isnan(r.tf)) {
            EXPECT_NEAR(e.tf, deg(r.tf), ANG_TOL);
        }
        expectMinimumCurvature(p.m_stations[0], e);
    }
}

TEST(Method1D, TurnSidesAndDepthReadings) {
    // 60 turns right and 180 left, by the same amount, for the same inputs.
    const CPlan right = solved(T0, line(60, 1500, deg(40), 0, 0, deg(15) / 500));
    const CPlan left = solved(T0, line(180, 1500, deg(40), 0, 0, deg(15) / 500));
    for (const CPlan* p : {&right, &left}) {
        ASSERT_EQ(p->m_nError, 0);
        EXPECT_NEAR(p->m_stations[1].inc, deg(40), ANG_TOL);
        expectMinimumCurvature(p->m_stations[0], p->m_stations[1]);
    }
    const double turnRight = right.m_stations[1].azi - deg(40);
    EXPECT_GT(turnRight, 0.0);
    EXPECT_NEAR(left.m_stations[1].azi - deg(40), -turnRight, ANG_TOL);

    // A measured depth not beyond the start (1000) is a course length, none at all a course of 1; a
    // depth 1000 or more above the start (1500) is an increment below it, a non-positive one 1.
    const struct {
        double md, mdEnd, tvd, tvdEnd;
    } rows[] = {{1500, 1500, 500, 2000}, {300, 1300, 501, 501}, {0, 1001, -100, 1501}};
    for (const auto& r : rows) {
        SCOPED_TRACE(testing::Message() << "md given " << r.md << ", tvd given " << r.tvd);
        EXPECT_NEAR(solved(T0, line(10, r.md)).m_stations[1].md, r.mdEnd, LEN_TOL);
        const CPlan p = solved(tie(deg(30), 0, 1500), line(20, 0, 0, 0, r.tvd));
        EXPECT_NEAR(p.m_stations[1].tvd, r.tvdEnd, LEN_TOL);
        if (r.tvdEnd > 1500) {
            EXPECT_NEAR(p.m_stations[1].md, 1000 + (r.tvdEnd - 1500) / std::cos(deg(30)), LEN_TOL);
        }
    }
    // A course of 0.001 or less is not laid: the end keeps the solved direction and given position.
    const SStation s = solved(T0, line(30, 1000.0005, deg(50), deg(70))).m_stations[1];
    EXPECT_NEAR(s.inc, deg(50), ANG_TOL);
    EXPECT_EQ(s.tvd, 0.0);
}

// Failures, and codes of other families, leave the stations and the cursor as they were.
TEST(Method1D, FailuresLeaveThePlanAsItWas) {
    const struct {
        const char* name;
        SStation tie, line;
        int error;
    } rows[] = {
        {"20 from horizontal", H, line(20, 0, 0, 0, 1000), -7},
        {"140 from vertical", V, line(140, 0, 0, 0, 0, 0, 0, u"T"), -12},
        {"90 pure build toolface", T0, line(90, 1500, 0, deg(60), 0, 1e-3, 0), -8},
        {"60 from vertical", V, line(60, 1300, deg(20), 0, 0, 1e-3, 0), -1},
        {"120 no change of inclination", T0, line(120, 0, deg(30), 0, 0, 1e-3, deg(90)), -14},
        {"110 deeper than the radius", V, line(110, 0, 0, 0, 2400, 1e-3, 0), -17},
        {"150 deeper than a vertical end", T0, line(150, 0, 0, deg(40), 5900, 1e-3, 0), -18},
        {"105 belongs to another family", T0, line(105, 1500, deg(50), 0, 0, 1e-3, 0), 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        const CPlan p = solved(r.tie, r.line);
        EXPECT_EQ(p.m_nError, r.error);
        EXPECT_EQ(p.m_nPrev, 0);
        EXPECT_EQ(p.m_stations[1].md, r.line.md);
        EXPECT_EQ(p.m_stations[1].tvd, r.line.tvd);
        EXPECT_EQ(p.m_stations[1].inc, r.line.inc);
    }
}

// Without a station before the line, or one for the line, meth1d touches nothing.
TEST(Method1D, MissingStationsAreLeftAlone) {
    for (int prev : {-1, 21}) {  // NewData(2) makes 22 stations
        SCOPED_TRACE(testing::Message() << "m_nPrev " << prev);
        CPlan p;
        p.NewData(2);
        p.m_nPrev = prev, p.m_nError = -5;
        p.meth1d();
        EXPECT_EQ(p.m_nError, -5);
        EXPECT_EQ(p.m_nPrev, prev);
    }
}
