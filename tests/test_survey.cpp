// Surveys of any length: SolveSurvey against the plan's own solve of the same stations.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kDeg = 3.141592653589793 / 180.0;

/// A smooth well: vertical, a build through 90 degrees to 95 with a slow turn, then a hold.
void syntheticSurvey(std::size_t n, std::vector<double>& md, std::vector<double>& inc,
                     std::vector<double>& azi) {
    for (std::size_t i = 0; i < n; ++i) {
        const double s = 30.0 * (i + 1);
        md.push_back(s);
        inc.push_back(s < 600 ? 0.0 : std::fmin(95.0, (s - 600) * 2.5 / 30) * kDeg);
        azi.push_back(std::fmod(40.0 + 0.01 * s, 360.0) * kDeg);
    }
}

bool sameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

TEST(Survey, SameStationsAsThePlanToTheLastBit) {
    std::vector<double> md, inc, azi;
    syntheticSurvey(90, md, inc, azi);
    SStation tie;
    tie.method = 2;
    std::vector<SStation> out(md.size());
    ASSERT_EQ(CPlan::SolveSurvey(tie, md.size(), md.data(), inc.data(), azi.data(), out.data()), 0);

    CPlan plan;
    plan.NewData(static_cast<int>(md.size()));
    plan.LoadData(0, tie);
    plan.m_nFamily = 90;
    plan.m_nSubMethod = 1;
    for (std::size_t i = 0; i < md.size(); ++i) {
        plan.m_dMD = md[i];
        plan.m_dInc = inc[i];
        plan.m_dAzi = azi[i];
        plan.PutData(-1);
        ASSERT_EQ(plan.m_nError, 0);
    }
    for (std::size_t i = 0; i < md.size(); ++i) {
        SCOPED_TRACE(i);
        SStation p;
        plan.DumpData(static_cast<int>(i) + 1, p);
        const SStation& s = out[i];
        for (auto [a, b] : {std::pair{p.md, s.md},
                            {p.inc, s.inc},
                            {p.azi, s.azi},
                            {p.tvd, s.tvd},
                            {p.ns, s.ns},
                            {p.ew, s.ew},
                            {p.dls, s.dls},
                            {p.tf, s.tf},
                            {p.build, s.build},
                            {p.turn, s.turn},
                            {p.ue, s.ue},
                            {p.un, s.un},
                            {p.uv, s.uv},
                            {p.aux1, s.aux1},
                            {p.aux2, s.aux2},
                            {p.dl, s.dl}})
            EXPECT_TRUE(sameBits(a, b)) << a << " vs " << b;
        EXPECT_EQ(p.method, s.method);
        EXPECT_EQ(p.target, s.target);
        EXPECT_EQ(p.flag, s.flag);
    }
}

TEST(Survey, DepthsThatDoNotRiseStopTheSurvey) {
    const double md[] = {100, 200, 200, 300};
    const double inc[] = {0.1, 0.2, 0.3, 0.4};
    const double azi[] = {0, 0, 0, 0};
    SStation tie;
    tie.md = 50;
    std::vector<SStation> out(4);
    EXPECT_EQ(CPlan::SolveSurvey(tie, 4, md, inc, azi, out.data()), -10);
    EXPECT_EQ(out[1].md, 200.0);  // solved up to the repeat
    EXPECT_EQ(out[2].method, 0);  // not written
    tie.md = 100;                 // the first station not beyond the tie-on
    EXPECT_EQ(CPlan::SolveSurvey(tie, 4, md, inc, azi, out.data()), -10);
    EXPECT_EQ(CPlan::SolveSurvey(tie, 0, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(CPlan::SolveSurvey(tie, 2, md, nullptr, azi, out.data()), -4);
}

TEST(Survey, ManyPointsAtOnceAreThePointsOneByOne) {
    // A well that goes past horizontal, so its depth turns back: the first part holding a depth is
    // not the last one, and the batch's bisection must find the same part as the walk from the top.
    std::vector<double> md, inc, azi;
    syntheticSurvey(400, md, inc, azi);
    std::vector<SStation> out(md.size());
    SStation tie;
    tie.method = 2;
    ASSERT_EQ(CPlan::SolveSurvey(tie, md.size(), md.data(), inc.data(), azi.data(), out.data()), 0);
    CPlan plan;
    plan.NewData(static_cast<int>(md.size()));
    plan.LoadData(0, tie);
    for (std::size_t i = 0; i < out.size(); ++i) plan.LoadData(static_cast<int>(i) + 1, out[i]);
    for (int q :
         {CPlan::PLAN_MD, CPlan::PLAN_TVD, CPlan::PLAN_NORTH, CPlan::PLAN_EAST, CPlan::PLAN_INC}) {
        SCOPED_TRACE(q);
        std::vector<double> values;
        for (int i = -3; i < 60; ++i) values.push_back(i * (q == CPlan::PLAN_INC ? 0.03 : 230.0));
        std::vector<SStation> many(values.size());
        std::unique_ptr<bool[]> found(new bool[values.size()]);
        plan.PlanPointsAt(q, values.size(), values.data(), many.data(), found.get());
        for (std::size_t i = 0; i < values.size(); ++i) {
            const bool one = plan.PlanPointAt(q, values[i]);
            EXPECT_EQ(found[i], one) << values[i];
            if (one) {
                EXPECT_TRUE(sameBits(many[i].md, plan.m_stnA.md)) << values[i];
                EXPECT_TRUE(sameBits(many[i].tvd, plan.m_stnA.tvd)) << values[i];
            }
        }
    }
}
