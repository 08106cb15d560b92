// The variation area: mean height of the half-sine through a middle value's departure from the line
// between the end values.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry/CVary.h"

namespace {

constexpr double kLenTol = 1e-9;  // means and values [L]

// Second method: the mean over [0, span] of the half-sine that rises to dev at a, by Simpson's rule.
// a, span and dev carry the 0.0001 [L] pads and the 1e-7 [L] nudge of the library's definition.
double simpsonHalfSineMean(double start, double pos, double end, double first, double mid,
                           double last) {
    const double a = pos - start + 0.0001, span = end - start + 0.0001;
    const double dev = mid - (first + (last - first) * a / span) + 1e-7;
    const double pi = std::acos(-1.0);
    const double amplitude = dev / std::sin(pi * a / span);
    const int steps = 10000;
    double sum = 0.0;
    for (int i = 0; i <= steps; ++i) {
        const double w = (i == 0 || i == steps) ? 1.0 : (i % 2 ? 4.0 : 2.0);
        sum += w * amplitude * std::sin(pi * i / steps);
    }
    return sum / (3.0 * steps);  // (span / steps / 3) sum, divided by span
}

TEST(CVary, HalfSineMeans) {
    struct Row {
        const char* name;
        double start, pos, end, first, mid, last;
    };
    const Row rows[] = {
        {"middle above the line", 100, 130, 200, 0, 5, 10},
        {"middle below the line, falling values", 0, 25, 40, 20, -3, -10},
        {"short interval", 5, 5.5, 6, 1, 1.2, 1},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        CVary v;
        v.m_dStart = r.start, v.m_dPos = r.pos, v.m_dEnd = r.end;
        v.calc_departure(r.first, r.mid, r.last);
        const double mean = simpsonHalfSineMean(r.start, r.pos, r.end, r.first, r.mid, r.last);
        EXPECT_NEAR(v.m_dMean, mean, kLenTol);
        EXPECT_NEAR(v.m_dDeparture, 100.0 * mean, 100.0 * kLenTol);
        EXPECT_NEAR(v.m_dSumSq, mean * mean, kLenTol);
    }

    CVary v;  // a middle value on a level line still gives a tiny positive mean
    v.m_dStart = 0, v.m_dPos = 50, v.m_dEnd = 100;
    v.calc_departure(20, 20, 20);
    EXPECT_GT(v.m_dMean, 0.0);
    EXPECT_LT(v.m_dMean, 1e-6);
}

TEST(CVary, SumOfSquaresAndCopy) {
    CVary v;
    v.m_dStart = 0, v.m_dPos = 50, v.m_dEnd = 100;
    v.m_dSumSq = 5.0;
    v.calc_latitude(0, 2, 0);  // before calc_departure: adds to whatever the sum held
    const double lat = v.m_dMean;
    EXPECT_NEAR(v.m_dSumSq, 5.0 + lat * lat, kLenTol);

    v.calc_departure(0, 1, 0);  // starts the sum afresh
    const double dep = v.m_dMean;
    v.calc_latitude(0, 2, 0);
    v.calc_tvd(0, -3, 0);
    const double tvd = v.m_dMean;
    EXPECT_NEAR(v.m_dSumSq, dep * dep + lat * lat + tvd * tvd, kLenTol);
    EXPECT_NEAR(v.m_dDeparture / dep, 100.0, kLenTol);
    EXPECT_NEAR(v.m_dLatitude / lat, 100.0, kLenTol);
    EXPECT_NEAR(v.m_dTVD / tvd, 100.0, kLenTol);

    CVary copy;
    copy = v;
    const double CVary::*members[] = {&CVary::m_dSumSq, &CVary::m_dDeparture, &CVary::m_dLatitude,
                                      &CVary::m_dTVD,   &CVary::m_dStart,     &CVary::m_dPos,
                                      &CVary::m_dEnd,   &CVary::m_dMean,      &CVary::m_dFirst,
                                      &CVary::m_dMid,   &CVary::m_dLast};
    for (auto m : members) EXPECT_EQ(copy.*m, v.*m);
}

}  // namespace
