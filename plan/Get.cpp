// Reading a line back: the transfer fields from the stored stations of a line.
#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

// Loads m_target with the target that station `station` aims at.
//   - When the plan's target array has an entry with the station's target name and flag, that entry
//     is the target, so that editing a target moves every line aimed at it.
//   - Otherwise the target is what settar stored in the station: its name, flag, position (tvd, ns,
//     ew) and direction (inc, azi), with hasAngles set.
// A station outside the array leaves m_target as it was.
void CPlan::gettar(int station, int /*code*/) {
    if (!hasStation(station)) return;
    const SStation& s = m_stations[station];
    if (!s.target.empty()) {
        for (const STarget& t : m_targets) {
            if (t.name == s.target && t.flag == s.flag) {
                m_target = t;
                return;
            }
        }
    }
    m_target = STarget();
    m_target.name = s.target;
    m_target.flag = s.flag;
    m_target.hasAngles = true;
    m_target.ns = s.ns;
    m_target.ew = s.ew;
    m_target.tvd = s.tvd;
    m_target.inc = s.inc;
    m_target.azi = s.azi;
}
