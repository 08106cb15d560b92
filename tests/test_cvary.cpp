// The variation area: mean height of the half-sine through a middle value's departure from the line
// between the end values.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry/CVary.h"

namespace {

constexpr double kLenTol = 1e-9;  // means and values [L]

// Closed form: a half-sine over [0, span] rising to dev at a has mean (2 / pi) dev / sin(pi a /
// span), with the library's 0.0001 [L] pads and 1e-7 [L] nudge. Each mean goes into its field
// times 100; calc_departure starts the sum of squares afresh, the other two add to it.
TEST(CVary, HalfSineMeansAndSumOfSquares) {
    struct Row {
        const char* name;
        double start, pos, end, first, mid, last;
    };
    const Row rows[] = {
        {"middle above the line", 100, 130, 200, 0, 5, 10},
        {"middle below the line, falling values", 0, 25, 40, 20, -3, -10},
        {"short interval", 5, 5.5, 6, 1, 1.2, 1},
    };
    void (CVary::*const calc[])(double, double, double) = {&CVary::calc_departure,
                                                           &CVary::calc_latitude, &CVary::calc_tvd};
    const double pi = std::acos(-1.0);
    double means[3], sumSq = 0.0;
    CVary v;
    v.m_dSumSq = 5.0;  // thrown away by calc_departure
    for (int i = 0; i < 3; ++i) {
        const Row& r = rows[i];
        SCOPED_TRACE(r.name);
        const double a = r.pos - r.start + 0.0001, span = r.end - r.start + 0.0001;
        const double dev = r.mid - (r.first + (r.last - r.first) * a / span) + 1e-7;
        means[i] = 2.0 / pi * dev / std::sin(pi * a / span);
        sumSq += means[i] * means[i];
        v.m_dStart = r.start, v.m_dPos = r.pos, v.m_dEnd = r.end;
        (v.*calc[i])(r.first, r.mid, r.last);
        EXPECT_NEAR(v.m_dMean, means[i], kLenTol);
    }
    EXPECT_NEAR(v.m_dDeparture, 100.0 * means[0], 100.0 * kLenTol);
    EXPECT_NEAR(v.m_dLatitude, 100.0 * means[1], 100.0 * kLenTol);
    EXPECT_NEAR(v.m_dTVD, 100.0 * means[2], 100.0 * kLenTol);
    EXPECT_NEAR(v.m_dSumSq, sumSq, kLenTol);
}

}  // namespace
