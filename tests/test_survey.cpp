// Surveys of any length: SolveSurvey against the plan's own solve of the same stations.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kDeg = 3.141592653589793 / 180.0;

/// A smooth well of n stations from a vertical tie-on at 0: vertical, a build through 90 degrees
/// to 95 with a slow turn, then a hold; solved by SolveSurvey into `out`.
struct Survey {
    std::vector<double> md, inc, azi;
    SStation tie;
    std::vector<SStation> out;
    explicit Survey(std::size_t n) : out(n) {
        for (std::size_t i = 0; i < n; ++i) {
            const double s = 30.0 * (i + 1);
            md.push_back(s);
            inc.push_back(s < 600 ? 0.0 : std::fmin(95.0, (s - 600) * 2.5 / 30) * kDeg);
            azi.push_back(std::fmod(40.0 + 0.01 * s, 360.0) * kDeg);
        }
        tie.method = 2;
    }
    int solve() {
        return CPlan::SolveSurvey(tie, n(), md.data(), inc.data(), azi.data(), out.data());
    }
    std::size_t n() const { return md.size(); }
};

bool sameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

TEST(Survey, SameStationsAsThePlanToTheLastBit) {
    Survey sv(90);
    ASSERT_EQ(sv.solve(), 0);
    CPlan plan;
    plan.NewData(static_cast<int>(sv.n()));
    plan.LoadData(0, sv.tie);
    plan.m_nFamily = 90;
    plan.m_nSubMethod = 1;
    for (std::size_t i = 0; i < sv.n(); ++i) {
        plan.m_dMD = sv.md[i], plan.m_dInc = sv.inc[i], plan.m_dAzi = sv.azi[i];
        plan.PutData(-1);
        ASSERT_EQ(plan.m_nError, 0);
    }
    for (std::size_t i = 0; i < sv.n(); ++i) {
        SCOPED_TRACE(i);
        SStation p;
        plan.DumpData(static_cast<int>(i) + 1, p);
        const SStation& s = sv.out[i];
        for (double SStation::*f : {&SStation::md, &SStation::inc, &SStation::azi, &SStation::tvd,
                                    &SStation::ns, &SStation::ew, &SStation::dls, &SStation::tf,
                                    &SStation::build, &SStation::turn, &SStation::ue, &SStation::un,
                                    &SStation::uv, &SStation::aux1, &SStation::aux2, &SStation::dl})
            EXPECT_TRUE(sameBits(p.*f, s.*f)) << p.*f << " vs " << s.*f;
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
    EXPECT_EQ(CPlan::SolveSurvey(tie, 2, md, nullptr, azi, out.data()), -4);
}

// A well past horizontal turns its depth back: the first part holding a depth is not the last one,
// and the batch's bisection must find the same part as the walk from the top.
TEST(Survey, ManyPointsAtOnceAreThePointsOneByOne) {
    Survey sv(400);
    ASSERT_EQ(sv.solve(), 0);
    CPlan plan;
    plan.NewData(static_cast<int>(sv.n()));
    plan.LoadData(0, sv.tie);
    for (std::size_t i = 0; i < sv.n(); ++i) plan.LoadData(static_cast<int>(i) + 1, sv.out[i]);
    for (int q : {CPlan::PLAN_MD, CPlan::PLAN_TVD, CPlan::PLAN_NORTH, CPlan::PLAN_INC}) {
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
