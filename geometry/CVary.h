// CVary: how far a middle value departs from the straight line between two end values, measured as
// the mean height of a half-sine fitted through the departure, for departure, latitude and vertical
// depth in turn.
//
// The client sets the three positions m_dStart, m_dPos, m_dEnd (any one length unit [L], e.g.
// measured depth) and then calls calc_departure, calc_latitude and calc_tvd in that order;
// m_dSumSq then holds the sum of the three squared means.
#pragma once

#include "plan/OrrinExport.h"

class ORRIN_API CVary {
public:
    double m_dSumSq = 0.0;      ///< running sum of the squared means [L^2]
    double m_dDeparture = 0.0;  ///< 100 x the departure mean, i.e. in hundredths of [L]
    double m_dLatitude = 0.0;   ///< 100 x the latitude mean, in hundredths of [L]
    double m_dTVD = 0.0;        ///< 100 x the vertical-depth mean, in hundredths of [L]
    double m_dStart = 0.0;      ///< position of the first end of the interval [L]
    double m_dPos = 0.0;        ///< position of the middle value [L]
    double m_dEnd = 0.0;        ///< position of the second end of the interval [L]
    double m_dMean = 0.0;       ///< mean height of the fitted half-sine, set by calc_area [L]
    double m_dFirst = 0.0;      ///< value at the first end [L]
    double m_dMid = 0.0;        ///< value at the middle position [L]
    double m_dLast = 0.0;       ///< value at the second end [L]

    CVary() = default;
    CVary(const CVary& other) = default;
    /// Copies every member.
    CVary& operator=(const CVary& other);

    /// Mean of the departure values; starts m_dSumSq afresh with its square.
    void calc_departure(double first, double mid, double last);
    /// Mean of the latitude values; adds its square to m_dSumSq.
    void calc_latitude(double first, double mid, double last);
    /// Mean of the vertical-depth values; adds its square to m_dSumSq.
    void calc_tvd(double first, double mid, double last);

private:
    void calc_area();
};
