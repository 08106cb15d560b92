// Whole plans through the public interface: put lines, solve, read them back. How each first-family
// line lands, and its agreement with minimum curvature, is tested in test_method1d.cpp.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDeg = kPi / 180.0;
constexpr double TOL_POS = 1e-6;   // positions [L]
constexpr double TOL_ANG = 1e-9;   // angles [rad]
constexpr double TOL_RATE = 1e-9;  // rates [rad/L]

/// A plan tied on at the given md, direction [deg] and tvd, at north 0, east 0.
CPlan planFrom(double md, double incDeg, double aziDeg, double tvd, int room = 10) {
    SStation s;
    s.md = md, s.inc = incDeg * kDeg, s.azi = aziDeg * kDeg, s.tvd = tvd, s.method = 2;
    CPlan p;
    p.NewData(room);
    p.LoadData(0, s);
    p.m_nPrev = 0;
    return p;
}

/// A survey station put as an "Inc Azi MD" line at the end of the plan.
void putSurvey(CPlan& p, double md, double incDeg, double aziDeg) {
    p.m_nFamily = 90, p.m_nSubMethod = 1;
    p.m_dMD = md, p.m_dInc = incDeg * kDeg, p.m_dAzi = aziDeg * kDeg;
    p.PutData(-1);
}

SStation station(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

/// The first n stations of both plans (all when n < 0, and as many in both) are in the same places.
void expectSamePlan(const CPlan& a, const CPlan& b, int n = -1) {
    if (n < 0) {
        ASSERT_EQ(a.GetSize(), b.GetSize());
    }
    for (int i = 0; i < (n < 0 ? static_cast<int>(a.GetSize()) : n); ++i) {
        SCOPED_TRACE(testing::Message() << "station " << i);
        const SStation s = station(a, i), t = station(b, i);
        EXPECT_NEAR(s.md, t.md, TOL_POS);
        EXPECT_NEAR(s.tvd, t.tvd, TOL_POS);
        EXPECT_NEAR(s.ns, t.ns, TOL_POS);
        EXPECT_NEAR(s.ew, t.ew, TOL_POS);
        EXPECT_NEAR(s.inc, t.inc, TOL_ANG);
    }
}

}  // namespace

// The three reference wells put station by station reproduce their published depths: the angles
// are printed to 0.01 degree and the depths come from the exact plans, so they agree to 0.05 [L].
// Well 1's exact plan ends its arcs and holds where closed forms say: vertical to 1200, 2 deg/30 to
// 60 deg at azimuth 75 by 2100, hold to 5100, 3 deg/30 to 90 deg by 5400, hold to 8000.
TEST(PlanSurvey, ReferenceWells) {
    constexpr double TOL_PUBLISHED = 0.05;  // published depths [L]
    struct Row {
        int well;
        double md, inc, azi, tvd;
    };
    std::vector<Row> rows;
    std::ifstream in(std::string(ORRIN_TEST_DATA) + "/iscwsa_test_wells.csv");
    std::string text;
    std::getline(in, text);
    for (char c; std::getline(in, text);) {
        Row r{};
        std::stringstream(text) >> r.well >> c >> r.md >> c >> r.inc >> c >> r.azi >> c >> r.tvd;
        rows.push_back(r);
    }
    ASSERT_GT(rows.size(), 500u);
    const double R1 = 30.0 / (2.0 * kDeg), R2 = 30.0 / (3.0 * kDeg);
    const double s60 = std::sin(60 * kDeg), c60 = std::cos(60 * kDeg);
    const double v1 = 1200 + R1 * s60, h1 = R1 * (1 - c60);
    const double v2 = v1 + 3000 * c60 + R2 * (1 - s60), h2 = h1 + 3000 * s60 + R2 * c60;
    const struct {
        double md, tvd, h;  // md, tvd and horizontal displacement [L]
    } well1[] = {{2100, v1, h1},
                 {5100, v1 + 3000 * c60, h1 + 3000 * s60},
                 {5400, v2, h2},
                 {8000, v2, h2 + 2600}};
    for (int well = 1; well <= 3; ++well) {
        SCOPED_TRACE(testing::Message() << "well " << well);
        std::vector<Row> w;
        for (const Row& r : rows)
            if (r.well == well) w.push_back(r);
        CPlan p = planFrom(w[0].md, w[0].inc, w[0].azi, w[0].tvd, static_cast<int>(w.size()));
        for (std::size_t i = 1; i < w.size(); ++i) putSurvey(p, w[i].md, w[i].inc, w[i].azi);
        ASSERT_EQ(p.m_nError, 0);
        ASSERT_EQ(p.GetSize(), w.size());
        for (std::size_t i = 1; i < w.size(); ++i) {
            const SStation s = station(p, static_cast<int>(i));
            SCOPED_TRACE(testing::Message() << "md " << w[i].md);
            EXPECT_EQ(s.md, w[i].md);
            EXPECT_NEAR(s.tvd, w[i].tvd, TOL_PUBLISHED);
            for (const auto& e : well1) {
                if (well != 1 || s.md != e.md) continue;
                EXPECT_NEAR(s.tvd, e.tvd, TOL_POS);
                EXPECT_NEAR(s.ns, e.h * std::cos(75 * kDeg), TOL_POS);
                EXPECT_NEAR(s.ew, e.h * std::sin(75 * kDeg), TOL_POS);
            }
        }
    }
}

TEST(PlanSolving, AFailingLineLeavesTheLastGoodSolution) {
    CPlan p = planFrom(0, 0, 0, 0);
    putSurvey(p, 500, 0, 0);
    putSurvey(p, 1400, 90, 30);  // horizontal at its end
    ASSERT_EQ(p.m_nError, 0);
    const SStation before = station(p, 2);
    p.m_nFamily = 20, p.m_nSubMethod = 2;  // "Straight TVD" cannot leave a horizontal start
    p.m_target.name = u"";
    p.m_dTVD = 2000, p.m_dMD = 0;
    p.PutData(-1);
    EXPECT_EQ(p.m_nError, -7);
    EXPECT_EQ(p.m_nFirst, 3);
    EXPECT_EQ(p.ErrorMessage(), u"Line 4: Can't project to TVD from horizontal");
    EXPECT_EQ(station(p, 2).tvd, before.tvd);
    EXPECT_EQ(station(p, 2).ns, before.ns);
    EXPECT_EQ(station(p, 3).method, 20);  // stored as put, unsolved, for the client to correct
    EXPECT_EQ(p.m_nPrev, 2);
}

TEST(PlanSolving, DepthOrderPassLimitAndInsertPoints) {
    // Stations loaded out of order: a reversal under 0.001 is nudged, a larger one fails with -10.
    for (double reversal : {0.0004, 5.0}) {
        SCOPED_TRACE(reversal);
        CPlan p = planFrom(0, 0, 0, 0);
        SStation a;
        a.md = 100, a.tvd = 100, a.method = 30;
        p.LoadData(1, a);
        a.md = 100 - reversal;
        p.LoadData(2, a);
        putSurvey(p, 300, 0, 0);  // solves only the new line, from station 2
        EXPECT_EQ(p.m_nError, reversal < 0.001 ? 0 : -10);
        EXPECT_DOUBLE_EQ(station(p, 2).md, reversal < 0.001 ? 100.001 : 95.0);
    }
    {
        // A line whose method never advances the solve stops the solver after 1000 passes.
        CPlan p = planFrom(0, 0, 0, 0);
        SStation odd;
        odd.method = 1000;
        p.LoadData(1, odd);
        p.PutData(0);
        EXPECT_EQ(p.m_nError, -4);
        EXPECT_EQ(p.ErrorMessage(), u"Line 2: Unknown Solution problem");
        // "DLS Azi TVD" with no dogleg severity: the arc length DL / K has no value, also -4.
        p = planFrom(0, 0.2 / kDeg, 0, 0);
        p.m_nFamily = 90, p.m_nSubMethod = 6;
        p.m_dAzi = 0.7, p.m_dTVD = 2000, p.m_dDLS = 0.0;
        p.PutData(-1);
        EXPECT_EQ(p.m_nError, -4);
    }
    // Solving past an empty insert point fails with -6; filling it solves as if put in order.
    CPlan p = planFrom(0, 0, 0, 0), direct = planFrom(0, 0, 0, 0);
    putSurvey(p, 100, 5, 0);
    putSurvey(p, 200, 10, 0);
    p.Insert(2, false);
    p.PutData(0);
    EXPECT_EQ(p.m_nError, -6);
    EXPECT_EQ(p.ErrorMessage(), u"Line 1: Can't insert before the tie line");
    p.m_nFamily = 90, p.m_nSubMethod = 1;
    p.m_dMD = 150, p.m_dInc = 7 * kDeg, p.m_dAzi = 0;
    p.PutData(2);
    EXPECT_EQ(p.m_nError, 0);
    putSurvey(direct, 100, 5, 0);
    putSurvey(direct, 150, 7, 0);
    expectSamePlan(p, direct, 3);
    EXPECT_EQ(p.GetSize(), 4u);
    EXPECT_NEAR(station(p, 3).inc, 10 * kDeg, TOL_ANG);
}

// Deleting a line solves the lines after it as if the plan had been put that way.
TEST(PlanEditing, DeleteResolvesTheLinesAfter) {
    CPlan p = planFrom(0, 0, 0, 0);
    putSurvey(p, 300, 10, 40);
    putSurvey(p, 600, 20, 50);
    putSurvey(p, 900, 25, 60);
    p.Delete(2);
    EXPECT_EQ(p.m_nError, 0);
    CPlan direct = planFrom(0, 0, 0, 0);
    putSurvey(direct, 300, 10, 40);
    putSurvey(direct, 900, 25, 60);
    expectSamePlan(p, direct);
}

// Every family, sub-method and target method put reads back the same, and its line spans the
// stations its code says; "DLS Azi MD" of family 100 is stored as code 80 and reads back as the
// same method of family 90.
TEST(PlanEditing, EveryFamilyReadsBackAsItWasPut) {
    const struct {
        int family, sub, targetMethod;
        bool constTF;
    } rows[] = {
        {20, 3, 0, 0},  {30, 2, 0, 1},  {30, 4, 0, 0},  {40, 4, 0, 0},  {90, 11, 0, 0},
        {100, 2, 0, 0}, {100, 3, 0, 0}, {45, 0, 2, 0},  {50, 0, 0, 0},  {55, 0, 0, 0},
        {80, 0, 2, 0},  {85, 0, 0, 0},  {110, 0, 8, 0}, {120, 0, 2, 0}, {125, 0, 2, 0},
        {130, 0, 0, 0}, {135, 0, 0, 0}, {140, 0, 0, 0}, {150, 6, 0, 0}, {60, 0, 0, 0},
        {70, 0, 0, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(::testing::Message() << r.family << "/" << r.sub << "/" << r.targetMethod);
        CPlan p = planFrom(0, 0, 0, 0);
        putSurvey(p, 500, 10, 30);
        p.m_nFamily = r.family, p.m_nSubMethod = r.sub, p.m_nTargetMethod = r.targetMethod;
        p.m_bConstTF = r.constTF;
        p.m_nSolveFor1 = 1, p.m_nSolveFor2 = 4;
        p.m_dMD = 900;
        p.m_target.name = u"T";
        p.m_target.tvd = 1500, p.m_target.ns = 300, p.m_target.ew = 200;
        p.PutData(-1);
        p.GetData(2);
        const bool code80 = r.family == 100 && r.sub == 3;
        EXPECT_EQ(p.m_nFamily, code80 ? 90 : r.family);
        EXPECT_EQ(p.m_nSubMethod, code80 ? 7 : r.sub);
        EXPECT_EQ(p.m_nTargetMethod, r.targetMethod);
        EXPECT_EQ(p.m_bConstTF != 0, r.constTF);
        p.GetLines(2);
        EXPECT_EQ(p.m_nFirst, 2);
        EXPECT_EQ(p.m_nLast, 2 + std::abs(station(p, 2).method) / 1000);
    }
}

TEST(PlanEditing, OlderCodesAreRewrittenWhenRead) {
    CPlan p = planFrom(0, 0, 0, 0);  // old single-line target code 3918 and a coded survey
    const short old[] = {3918, 1, 1, 1, 30};
    for (int i = 0; i < 5; ++i) {
        SStation s;
        s.md = 100.0 * (i + 1), s.method = old[i];
        p.LoadData(i + 1, s);
    }
    p.GetData(1);
    EXPECT_EQ(p.m_nFamily, 110);
    EXPECT_EQ(p.m_nTargetMethod, 1);
    EXPECT_EQ(p.m_nLast, 4);  // this call still spans the old line
    EXPECT_EQ(station(p, 1).method, 2910);
    EXPECT_EQ(station(p, 4).method, -20);
    p.GetData(4);
    EXPECT_EQ(p.m_nFamily, 150);
    EXPECT_EQ(p.m_nSubMethod, 2);
}

TEST(PlanEditing, GetDeltasFromTwoDirections) {
    // A pure right turn at 90 degrees over 100: dogleg 30 deg, toolface +90 deg, no build.
    CPlan p = planFrom(0, 90, 10, 0);
    SStation s;
    s.md = 100, s.inc = 90 * kDeg, s.azi = 40 * kDeg, s.method = 30;
    p.LoadData(1, s);
    p.GetDeltas(1);
    const SStation r = station(p, 1);
    EXPECT_NEAR(r.dls, 30 * kDeg / 100, TOL_RATE);
    EXPECT_NEAR(r.tf, 90 * kDeg, TOL_ANG);
    EXPECT_NEAR(r.build, 0.0, TOL_RATE);
    EXPECT_NEAR(r.turn, 30 * kDeg / 100, TOL_RATE);
}

TEST(PlanEditing, ALongPlanKeepsItsFirstLineWhenATargetLineIsAppended) {
    // Past 100 stations a put re-solves from the tie-on; the new line still goes to its own place.
    CPlan p = planFrom(0, 0, 0, 0, 130);
    for (int i = 1; i <= 110; ++i) putSurvey(p, 10.0 * i, 0.001 * i / kDeg, 0.5 / kDeg);
    ASSERT_EQ(p.m_nError, 0);
    const SStation end = station(p, 110);
    p.m_nFamily = 120, p.m_nTargetMethod = 1;  // "DT6 Curve"
    p.m_target = STarget();
    p.m_target.name = u"T";
    p.m_target.tvd = end.tvd + 300, p.m_target.ns = end.ns + 100, p.m_target.ew = end.ew + 120;
    p.PutData(-1);
    ASSERT_EQ(p.m_nError, 0);
    EXPECT_EQ(station(p, 1).method, 30);
    EXPECT_EQ(station(p, 111).method, 920);
    EXPECT_NEAR(station(p, 111).tvd, end.tvd + 300, TOL_POS);
}
