// Positions to survey: a path given by its stations' positions becomes a chain of arcs.
#include "plan/CPlan.h"

using namespace orrin;

// See the declaration in plan/CPlan.h. m_stnPrev is each station i - 1 as already converted, so the
// arcs join tangentially; m_stnA carries station i's position into ptoang and its end back out.
int CPlan::ferranti(int first, int last) {
    m_nError = ERR_NONE;
    if (first < 1) first = 1;
    const int top = static_cast<int>(GetSize()) - 1;
    if (last > top) last = top;
    int converted = 0;
    for (int i = first; i <= last; ++i) {
        m_stnPrev = m_stations[i - 1];
        SStation& s = m_stations[i];
        m_stnA = s;
        const double dl = ptoang();
        s.md = m_stnA.md;
        s.inc = m_stnA.inc;
        s.azi = m_stnA.azi;
        GetDeltas(i);
        s.dl = dl;
        s.method = 30;
        ++converted;
    }
    return converted;
}
