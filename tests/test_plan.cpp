// Whole plans through the public interface: put lines, solve, read them back.
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

SStation tieOn(double md, double incDeg, double aziDeg, double tvd, double ns, double ew) {
    SStation s;
    s.md = md;
    s.inc = incDeg * kDeg;
    s.azi = aziDeg * kDeg;
    s.tvd = tvd;
    s.ns = ns;
    s.ew = ew;
    s.method = 2;
    return s;
}

CPlan planFrom(const SStation& tie, int room = 10) {
    CPlan p;
    p.NewData(room);
    p.LoadData(0, tie);
    p.m_nPrev = 0;
    return p;
}

/// A survey station put as an "Inc Azi MD" line at the end of the plan.
void putSurvey(CPlan& p, double md, double incDeg, double aziDeg) {
    p.m_nFamily = 90;
    p.m_nSubMethod = 1;
    p.m_dMD = md;
    p.m_dInc = incDeg * kDeg;
    p.m_dAzi = aziDeg * kDeg;
    p.PutData(-1);
}

SStation station(const CPlan& p, int i) {
    SStation s;
    p.DumpData(i, s);
    return s;
}

/// Unit direction (east, north, down).
void unit(double inc, double azi, double t[3]) {
    t[0] = std::sin(azi) * std::sin(inc);
    t[1] = std::cos(azi) * std::sin(inc);
    t[2] = std::cos(inc);
}

/// The end of the circular arc between two stations' directions over their course, by the
/// tangent construction of a circle: the arc's two tangent lines meet R tan(DL/2) from each end.
void expectOnArc(const SStation& a, const SStation& b) {
    double t1[3], t2[3];
    unit(a.inc, a.azi, t1);
    unit(b.inc, b.azi, t2);
    // The dogleg from the chord between the unit vectors, accurate for small angles too.
    const double chord = std::hypot(t2[0] - t1[0], t2[1] - t1[1], t2[2] - t1[2]);
    const double dl = 2.0 * std::asin(std::fmin(1.0, chord / 2.0));
    const double L = b.md - a.md;
    const double half = dl < 1e-9 ? L / 2.0 : (L / dl) * std::tan(dl / 2.0);  // R tan(DL/2)
    EXPECT_NEAR(b.ew, a.ew + half * (t1[0] + t2[0]), TOL_POS) << "east";
    EXPECT_NEAR(b.ns, a.ns + half * (t1[1] + t2[1]), TOL_POS) << "north";
    EXPECT_NEAR(b.tvd, a.tvd + half * (t1[2] + t2[2]), TOL_POS) << "tvd";
    if (L > 0.0) {
        EXPECT_NEAR(b.dls, dl / L, TOL_RATE) << "dls of the solved arc";
    }
}

struct SurveyRow {
    int well;
    double md, inc, azi, tvd;
};

std::vector<SurveyRow> readWells() {
    std::ifstream in(std::string(ORRIN_TEST_DATA) + "/iscwsa_test_wells.csv");
    std::vector<SurveyRow> rows;
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) {
        std::stringstream ss(line);
        SurveyRow r{};
        char comma;
        ss >> r.well >> comma >> r.md >> comma >> r.inc >> comma >> r.azi >> comma >> r.tvd;
        rows.push_back(r);
    }
    return rows;
}

}  // namespace

TEST(PlanSurvey, ReferenceWellsReproduceTheirPublishedDepths) {
    const std::vector<SurveyRow> rows = readWells();
    ASSERT_GT(rows.size(), 500u);
    for (int well = 1; well <= 3; ++well) {
        SCOPED_TRACE(well);
        std::vector<SurveyRow> w;
        for (const SurveyRow& r : rows)
            if (r.well == well) w.push_back(r);
        CPlan p = planFrom(tieOn(w[0].md, w[0].inc, w[0].azi, w[0].tvd, 0.0, 0.0),
                           static_cast<int>(w.size()));
        for (std::size_t i = 1; i < w.size(); ++i) putSurvey(p, w[i].md, w[i].inc, w[i].azi);
        ASSERT_EQ(p.m_nError, 0) << std::string(p.ErrorMessage().begin(), p.ErrorMessage().end());
        ASSERT_EQ(p.GetSize(), w.size());
        for (std::size_t i = 1; i < w.size(); ++i) {
            const SStation s = station(p, static_cast<int>(i));
            EXPECT_NEAR(s.md, w[i].md, 1e-9);
            // Printed angles are rounded to 0.01 degree; the published depths come from the
            // exact plan, so they agree to 0.05 of a unit.
            EXPECT_NEAR(s.tvd, w[i].tvd, 0.05) << "md " << w[i].md;
            expectOnArc(station(p, static_cast<int>(i) - 1), s);
        }
    }
}

TEST(PlanSurvey, Well1AgainstItsExactPlan) {
    // Vertical to 1200, a 2 deg/30 m arc to 60 deg at azimuth 75 by 2100, hold to 5100, a 3 deg/30 m
    // arc to 90 deg by 5400, hold to 8000: circles and lines whose ends are known in closed form.
    const std::vector<SurveyRow> rows = readWells();
    CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0), 300);
    for (const SurveyRow& r : rows)
        if (r.well == 1 && r.md > 0) putSurvey(p, r.md, r.inc, r.azi);
    ASSERT_EQ(p.m_nError, 0);
    const double R1 = 30.0 / (2.0 * kDeg), R2 = 30.0 / (3.0 * kDeg);
    const double s60 = std::sin(60 * kDeg), c60 = std::cos(60 * kDeg);
    struct {
        double md, tvd, h;
    } const ends[] = {
        {2100, 1200 + R1 * s60, R1 * (1 - c60)},
        {5100, 1200 + R1 * s60 + 3000 * c60, R1 * (1 - c60) + 3000 * s60},
        {5400, 1200 + R1 * s60 + 3000 * c60 + R2 * (1 - s60),
         R1 * (1 - c60) + 3000 * s60 + R2 * c60},
        {8000, 1200 + R1 * s60 + 3000 * c60 + R2 * (1 - s60),
         R1 * (1 - c60) + 3000 * s60 + R2 * c60 + 2600},
    };
    for (const auto& e : ends) {
        SCOPED_TRACE(e.md);
        for (int i = 1; i < static_cast<int>(p.GetSize()); ++i) {
            const SStation s = station(p, i);
            if (s.md != e.md) continue;
            EXPECT_NEAR(s.tvd, e.tvd, 1e-6);
            EXPECT_NEAR(s.ns, e.h * std::cos(75 * kDeg), 1e-6);
            EXPECT_NEAR(s.ew, e.h * std::sin(75 * kDeg), 1e-6);
        }
    }
}

TEST(PlanSolving, AFailingLineLeavesTheLastGoodSolution) {
    CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
    putSurvey(p, 500, 0, 0);
    putSurvey(p, 1400, 90, 30);  // horizontal at its end
    ASSERT_EQ(p.m_nError, 0);
    const SStation before = station(p, 2);
    p.m_nFamily = 20;  // "Straight TVD" cannot leave a horizontal start
    p.m_nSubMethod = 2;
    p.m_target.name = u"";
    p.m_dTVD = 2000;
    p.m_dMD = 0;
    p.PutData(-1);
    EXPECT_EQ(p.m_nError, -7);
    EXPECT_EQ(p.m_nFirst, 3);
    EXPECT_EQ(p.ErrorMessage(), u"Line 4: Can't project to TVD from horizontal");
    const SStation after = station(p, 2);
    EXPECT_EQ(after.tvd, before.tvd);
    EXPECT_EQ(after.ns, before.ns);
    EXPECT_EQ(after.md, before.md);
    // The failing line stays stored as it was put, unsolved, for the client to correct.
    EXPECT_EQ(station(p, 3).method, 20);
    EXPECT_EQ(p.m_nPrev, 2);
}

TEST(PlanSolving, DepthOrderPassLimitAndInsertPoints) {
    // Stations loaded out of order: a reversal under 0.001 is nudged, a larger one fails with -10.
    for (double reversal : {0.0004, 5.0}) {
        SCOPED_TRACE(reversal);
        CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
        SStation a;
        a.md = 100;
        a.tvd = 100;
        a.method = 30;
        SStation b = a;
        b.md = 100 - reversal;
        p.LoadData(1, a);
        p.LoadData(2, b);
        putSurvey(p, 300, 0, 0);  // solves only the new line, from station 2
        if (reversal < 0.001) {
            EXPECT_EQ(p.m_nError, 0);
            EXPECT_DOUBLE_EQ(station(p, 2).md, 100.001);
        } else {
            EXPECT_EQ(p.m_nError, -10);
            EXPECT_EQ(p.ErrorMessage(),
                      u"Line 3: Tangent depth overlap, try increasing build or drop rate");
            EXPECT_EQ(station(p, 2).md, 95.0);
        }
    }
    {
        // A line whose method never advances the solve stops the solver after 1000 passes.
        CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
        SStation odd;
        odd.method = 1000;
        p.LoadData(1, odd);
        p.PutData(0);
        EXPECT_EQ(p.m_nError, -4);
        EXPECT_EQ(p.ErrorMessage(), u"Line 2: Unknown Solution problem");
        EXPECT_EQ(p.m_nFamily, 10);
    }
    {
        // Solving past an insert point that is still empty fails with -6.
        CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
        putSurvey(p, 100, 5, 0);
        putSurvey(p, 200, 10, 0);
        p.Insert(2, false);
        EXPECT_EQ(p.m_nError, 0);
        p.GetData(2);
        EXPECT_EQ(p.m_nFamily, 0);
        EXPECT_TRUE(p.m_bGivenMD && p.m_bGivenInc && p.m_bLineStartCopy);
        EXPECT_FALSE(p.m_bBackIncFollows);
        p.PutData(0);
        EXPECT_EQ(p.m_nError, -6);
        EXPECT_EQ(p.ErrorMessage(), u"Line 1: Can't insert before the tie line");
        // Filling the point solves the plan again, with the old line 2 now line 3.
        p.m_nFamily = 90;
        p.m_nSubMethod = 1;
        p.m_dMD = 150;
        p.m_dInc = 7 * kDeg;
        p.m_dAzi = 0;
        p.PutData(2);
        EXPECT_EQ(p.m_nError, 0);
        EXPECT_EQ(p.GetSize(), 4u);
        EXPECT_NEAR(station(p, 2).md, 150, TOL_POS);
        expectOnArc(station(p, 2), station(p, 3));
    }
}

TEST(PlanEditing, DeleteAndReputResolveTheLinesAfter) {
    CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
    putSurvey(p, 300, 10, 40);
    putSurvey(p, 600, 20, 50);
    putSurvey(p, 900, 25, 60);
    p.Delete(2);
    EXPECT_EQ(p.m_nError, 0);
    ASSERT_EQ(p.GetSize(), 3u);
    expectOnArc(station(p, 1), station(p, 2));  // the old line 3 now starts from line 1
    EXPECT_NEAR(station(p, 2).inc, 25 * kDeg, TOL_ANG);

    // Line 1 put again as a hold: line 2 follows it.
    p.m_nFamily = 20;
    p.m_nSubMethod = 1;
    p.m_dMD = 300;
    p.PutData(1);
    EXPECT_EQ(p.m_nError, 0);
    EXPECT_NEAR(station(p, 1).tvd, 300, TOL_POS);
    expectOnArc(station(p, 1), station(p, 2));
    p.GetData(1);
    EXPECT_EQ(p.m_nFamily, 20);
    EXPECT_EQ(p.m_nSubMethod, 1);
    EXPECT_TRUE(p.m_bGivenMD);
    EXPECT_FALSE(p.m_bGivenInc);

    // A positive vertical section places the line's end on its start's azimuth line.
    p.SetVS(0.0, 0.0, 0.0);
    p.m_nFamily = 90;
    p.m_nSubMethod = 1;
    p.m_dMD = 1200;
    p.m_dInc = 25 * kDeg;
    p.m_dAzi = 60 * kDeg;
    p.m_dVS = 0.0;
    p.PutData(2);
    p.GetData(2);
    EXPECT_NEAR(p.m_dVS, station(p, 2).ns, TOL_POS);  // section azimuth north
}

TEST(PlanEditing, EveryFamilyReadsBackAsItWasPut) {
    struct {
        int family, sub, targetMethod;
        bool constTF;
        int readFamily, readSub, readTM;
    } const rows[] = {
        {20, 1, 0, false, 20, 1, 0},   {20, 2, 0, false, 20, 2, 0},   {20, 3, 0, false, 20, 3, 0},
        {30, 1, 0, false, 30, 1, 0},   {30, 2, 0, true, 30, 2, 0},    {30, 3, 0, true, 30, 3, 0},
        {30, 4, 0, false, 30, 4, 0},   {40, 1, 0, false, 40, 1, 0},   {40, 2, 0, false, 40, 2, 0},
        {40, 3, 0, false, 40, 3, 0},   {40, 4, 0, false, 40, 4, 0},   {90, 1, 0, false, 90, 1, 0},
        {90, 2, 0, false, 90, 2, 0},   {90, 3, 0, false, 90, 3, 0},   {90, 6, 0, false, 90, 6, 0},
        {90, 7, 0, false, 90, 7, 0},   {90, 8, 0, false, 90, 8, 0},   {90, 9, 0, false, 90, 9, 0},
        {90, 10, 0, false, 90, 10, 0}, {90, 11, 0, false, 90, 11, 0}, {100, 2, 0, false, 100, 2, 0},
        {100, 3, 0, false, 90, 7, 0},  // stored as code 80, the "DLS Azi MD" of family 90
        {100, 4, 0, false, 100, 4, 0}, {45, 0, 2, false, 45, 0, 2},   {50, 0, 0, false, 50, 0, 0},
        {55, 0, 0, false, 55, 0, 0},   {80, 0, 1, false, 80, 0, 1},   {80, 0, 2, false, 80, 0, 2},
        {85, 0, 0, false, 85, 0, 0},   {110, 0, 1, false, 110, 0, 1}, {110, 0, 4, false, 110, 0, 4},
        {110, 0, 5, false, 110, 0, 5}, {110, 0, 6, false, 110, 0, 6}, {110, 0, 7, false, 110, 0, 7},
        {110, 0, 8, false, 110, 0, 8}, {120, 0, 1, false, 120, 0, 1}, {120, 0, 2, false, 120, 0, 2},
        {125, 0, 1, false, 125, 0, 1}, {125, 0, 2, false, 125, 0, 2}, {130, 0, 0, false, 130, 0, 0},
        {135, 0, 0, false, 135, 0, 0}, {140, 0, 0, false, 140, 0, 0}, {150, 2, 0, false, 150, 2, 0},
        {150, 3, 0, false, 150, 3, 0}, {150, 4, 0, false, 150, 4, 0}, {150, 5, 0, false, 150, 5, 0},
        {150, 6, 0, false, 150, 6, 0}, {60, 0, 0, false, 60, 0, 0},   {70, 0, 0, false, 70, 0, 0},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(::testing::Message() << r.family << "/" << r.sub << "/" << r.targetMethod);
        CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
        putSurvey(p, 500, 10, 30);
        p.m_nFamily = r.family;
        p.m_nSubMethod = r.sub;
        p.m_nTargetMethod = r.targetMethod;
        p.m_bConstTF = r.constTF;
        p.m_nSolveFor1 = 1;
        p.m_nSolveFor2 = 4;
        p.m_dMD = 900;
        p.m_target.name = u"T";
        p.m_target.tvd = 1500;
        p.m_target.ns = 300;
        p.m_target.ew = 200;
        p.PutData(-1);
        p.GetData(2);
        EXPECT_EQ(p.m_nFamily, r.readFamily);
        EXPECT_EQ(p.m_nSubMethod, r.readSub);
        EXPECT_EQ(p.m_nTargetMethod, r.readTM);
        EXPECT_EQ(p.m_bConstTF != 0, r.constTF);
        p.GetLines(2);
        EXPECT_EQ(p.m_nFirst, 2);
        EXPECT_EQ(p.m_nLast, 2 + std::abs(station(p, 2).method) / 1000);
    }
}

TEST(PlanEditing, OlderCodesAreRewrittenWhenRead) {
    CPlan p = planFrom(tieOn(0, 0, 0, 0, 0, 0));
    const short old[] = {3918, 1, 1, 1, 30};
    for (int i = 0; i < 5; ++i) {
        SStation s;
        s.md = 100.0 * (i + 1);
        s.method = old[i];
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
    p.GetData(0);
    EXPECT_EQ(p.m_nFamily, 10);
    EXPECT_EQ(p.m_nFirst, 0);
    p.GetLines(500);
    EXPECT_EQ(p.m_nFirst, 0);
    EXPECT_EQ(p.m_nLast, 0);
}

TEST(PlanEditing, GetDeltasFromTwoDirections) {
    // A pure right turn at 90 degrees over 100: dogleg 30 deg, toolface +90 deg, no build.
    CPlan p = planFrom(tieOn(0, 90, 10, 0, 0, 0));
    SStation s;
    s.md = 100;
    s.inc = 90 * kDeg;
    s.azi = 40 * kDeg;
    s.method = 30;
    p.LoadData(1, s);
    p.GetDeltas(1);
    const SStation r = station(p, 1);
    EXPECT_NEAR(r.dls, 30 * kDeg / 100, TOL_RATE);
    EXPECT_NEAR(r.tf, 90 * kDeg, TOL_ANG);
    EXPECT_NEAR(r.build, 0.0, TOL_RATE);
    EXPECT_NEAR(r.turn, 30 * kDeg / 100, TOL_RATE);
    p.GetDeltas(0);
    p.GetDeltas(99);
    EXPECT_EQ(station(p, 0).dls, 0.0);
}
