// The variation area of a middle value against the straight line between two end values.
#include "geometry/CVary.h"

#include "geometry/Numerics.h"

#include <cmath>

using namespace orrin;

namespace {
/// Added to both the middle position and the interval length, so that a zero-length interval does
/// not divide by zero [L].
constexpr double SPAN_PAD = 0.0001;
/// Added to the departure from the line, so that a middle value lying on the line does not divide
/// by zero; such a value gives a tiny positive mean instead of 0 [L].
constexpr double DEV_PAD = 1e-7;
}  // namespace

CVary& CVary::operator=(const CVary& other) = default;

// Mean height m_dMean of the half-sine over the interval that passes through the middle value's
// departure from the straight line between m_dFirst and m_dLast.
// With a = m_dPos - m_dStart + SPAN_PAD, span = m_dEnd - m_dStart + SPAN_PAD, k = pi / span:
//   dev  = m_dMid - (m_dFirst + (m_dLast - m_dFirst) a / span) + DEV_PAD,
//   the half-sine is (dev / sin(a k)) sin(x k) on [0, span]; half its area is
//   g = 1 / ((sin(a k) / dev) k), and its mean height is 2 g / span.
// The sign follows dev. A middle position at m_dEnd makes sin(a k) vanish to rounding and the mean
// unbounded.
void CVary::calc_area() {
    const double a = (m_dPos - m_dStart) + SPAN_PAD;
    const double span = (m_dEnd - m_dStart) + SPAN_PAD;
    const double k = PI / span;
    const double s = std::sin(a * k);
    const double line = m_dFirst + (m_dLast - m_dFirst) * a / span;
    const double dev = m_dMid - line + DEV_PAD;
    const double g = 1.0 / ((s / dev) * k);
    m_dMean = 2.0 * g / span;
}

void CVary::calc_departure(double first, double mid, double last) {
    m_dFirst = first;
    m_dMid = mid;
    m_dLast = last;
    calc_area();
    m_dSumSq = m_dMean * m_dMean;
    m_dDeparture = m_dMean * 100.0;
}

void CVary::calc_latitude(double first, double mid, double last) {
    m_dFirst = first;
    m_dMid = mid;
    m_dLast = last;
    calc_area();
    m_dSumSq += m_dMean * m_dMean;
    m_dLatitude = m_dMean * 100.0;
}

void CVary::calc_tvd(double first, double mid, double last) {
    m_dFirst = first;
    m_dMid = mid;
    m_dLast = last;
    calc_area();
    m_dSumSq += m_dMean * m_dMean;
    m_dTVD = m_dMean * 100.0;
}
