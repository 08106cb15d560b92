// Measured surveys of any length, solved by the plan's own "Inc Azi MD" line step.
#include "plan/CPlan.h"

int CPlan::SolveSurvey(const SStation& tieOn, std::size_t count, const double* md,
                       const double* inc, const double* azi, SStation* out) {
    if (count == 0) return orrin::ERR_NONE;
    if (md == nullptr || inc == nullptr || azi == nullptr || out == nullptr)
        return orrin::ERR_UNKNOWN_SOLUTION;
    // One scratch plan holds the working stations; the stations themselves live only in `out`.
    CPlan work;
    for (std::size_t i = 0; i < count; ++i) {
        const SStation& prev = i == 0 ? tieOn : out[i - 1];
        if (!(md[i] > prev.md)) return orrin::ERR_TANGENT_OVERLAP;
        SStation line;
        line.md = md[i];
        line.inc = inc[i];
        line.azi = azi[i];
        line.method = 30;  // "Inc Azi MD"
        work.m_stnPrev = prev;
        work.m_stnC = line;
        work.m_nError = orrin::ERR_NONE;
        if (!work.firstFamilyStep(-1)) return work.m_nError;
        out[i] = work.m_stnC;
    }
    return orrin::ERR_NONE;
}
