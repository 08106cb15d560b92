// Measured surveys of any length, solved by the plan's own "Inc Azi MD" line step.
#include "plan/CPlan.h"

int CPlan::SolveSurvey(const SStation& tieOn, std::size_t count, const double* md,
                       const double* inc, const double* azi, SStation* out) {
    if (count == 0) return orrin::ERR_NONE;
    if (md == nullptr || inc == nullptr || azi == nullptr || out == nullptr)
        return orrin::ERR_UNKNOWN_SOLUTION;
    // One scratch plan holds the working stations; the stations themselves live only in `out`.
    CPlan work;
    SStation line;
    line.method = 30;  // "Inc Azi MD"
    for (std::size_t i = 0; i < count; ++i) {
        const SStation& prev = i == 0 ? tieOn : out[i - 1];
        if (!(md[i] > prev.md)) return orrin::ERR_TANGENT_OVERLAP;
        work.m_stnPrev = prev;
        SStation& c = work.m_stnC;
        c = line;
        c.md = md[i];
        c.inc = inc[i];
        c.azi = azi[i];
        work.m_nError = orrin::ERR_NONE;
        if (!work.firstFamilyStep(-1)) return work.m_nError;
        out[i] = c;
    }
    return orrin::ERR_NONE;
}
