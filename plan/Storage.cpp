// The plan object's life and the storage operations on its station and target arrays.
//
// Every index from a caller is checked: an index outside its array does nothing. Growing an array
// that the machine cannot hold leaves it as it was and sets m_nError to -4.
#include "plan/CPlan.h"

#include <cstddef>
#include <new>

namespace {

/// Stations added at a time when the plan runs short of spare stations.
constexpr int GROW_BY = 20;
/// Spare stations kept beyond the plan after every resize (the test is GetSize() + 6 >= length).
constexpr unsigned SPARE = 6;

}  // namespace

CPlan::CPlan() = default;
CPlan::CPlan(const CPlan& other) = default;
CPlan& CPlan::operator=(const CPlan& other) = default;
CPlan::~CPlan() = default;

bool CPlan::hasStation(int i) const {
    return i >= 0 && static_cast<std::size_t>(i) < m_stations.size();
}

short CPlan::codeAt(int i) const {
    return hasStation(i) ? m_stations[i].method : 0;
}

// Resets the line fields of a station: the ten doubles md ... turn, the code, target and flag. The
// direction cache (ue, un, uv), aux1, aux2 and dl are kept.
void CPlan::SetZero(SStation& s) {
    s.md = s.inc = s.azi = s.tvd = s.ns = s.ew = 0.0;
    s.dls = s.tf = s.build = s.turn = 0.0;
    s.method = 0;
    s.target.clear();
    s.flag = false;
}

void CPlan::NewData(int n) {
    const std::size_t want = static_cast<std::size_t>(n < 0 ? 0 : n) + GROW_BY;
    try {
        m_stations.resize(want);
    } catch (const std::exception&) {
        m_nError = orrin::ERR_UNKNOWN_SOLUTION;
        return;
    }
    for (SStation& s : m_stations) SetZero(s);
}

void CPlan::NewTarget(int n) {
    try {
        m_targets.resize(static_cast<std::size_t>(n < 0 ? 0 : n));
    } catch (const std::exception&) {
        m_nError = orrin::ERR_UNKNOWN_SOLUTION;
    }
}

void CPlan::LoadData(int i, const SStation& s) {
    if (!hasStation(i)) return;
    m_stations[i] = s;
    m_nPrev = m_nLast = m_nFirst = i;
}

void CPlan::LoadTarget(int i, const STarget& t) {
    if (i < 0 || static_cast<std::size_t>(i) >= m_targets.size()) return;
    m_targets[i] = t;
}

void CPlan::DumpData(int i, SStation& s) const {
    if (hasStation(i)) s = m_stations[i];
}

unsigned CPlan::GetSize() const {
    std::size_t i = 1;
    while (i < m_stations.size() && m_stations[i].method != 0) ++i;
    return static_cast<unsigned>(i);
}

void CPlan::ClearAll() {
    m_targets.clear();
    m_stations.clear();
    m_saved.clear();
    m_walkStations.clear();
}

void CPlan::SaveData() {
    m_saved = m_stations;
}

void CPlan::RestoreData() {
    m_stations = m_saved;
}

void CPlan::resize() {
    if (GetSize() + SPARE < m_stations.size()) return;
    try {
        m_stations.resize(m_stations.size() + GROW_BY);  // new stations are default, hence reset
    } catch (const std::exception&) {
        m_nError = orrin::ERR_UNKNOWN_SOLUTION;
    }
}

// Opens a gap at i by shifting stations i ... length - 2 up by one; the array keeps its length, so the
// last station is lost.
void CPlan::addone(int i) {
    if (i < 0) return;
    const int len = static_cast<int>(m_stations.size());
    for (int k = len - 2; k >= i; --k) m_stations[k + 1] = m_stations[k];
}

void CPlan::delone(int i) {
    if (hasStation(i)) m_stations.erase(m_stations.begin() + i);
}

void CPlan::Insert(int line, bool backward) {
    m_nError = orrin::ERR_NONE;
    if (line == 0 || (hasStation(line) && m_stations[line].method < 0)) {
        m_nError = orrin::ERR_INSERT_TIE;
        return;
    }
    if (!hasStation(line)) return;
    resize();
    if (backward) {
        if (!hasStation(line + 1)) return;
        addone(line);
        m_stations[line].method = 1;
        m_stations[line].target = K_BACKTARGET;
        SStation& back = m_stations[line + 1];
        back.method = -20;  // "BACK to CL"
        back.dls = back.tf = back.build = back.turn = 0.0;
        m_nFirst = m_nLast = line;
        m_nPrev = line - 1;
        return;
    }
    int i = line;
    while (i > 1 && m_stations[i].method == 1) --i;
    addone(i);
    m_stations[i].method = 9999;  // an insert point, to be filled by PutData(i)
    m_nFirst = m_nLast = i;
    m_nPrev = i - 1;
}

void CPlan::Delete(int line) {
    m_nError = orrin::ERR_NONE;
    if (line == 0) {
        m_nError = orrin::ERR_DELETE_TIE;
        return;
    }
    if (!hasStation(line)) return;
    int i = line;
    while (i > 1 && m_stations[i].method == 1) --i;
    const short q = m_stations[i].method;
    delone(i);
    m_nPrev = i - 1;
    // The line's continuation stations go with it; a line of code 2001 or more also takes the
    // backward lines that follow it.
    while (hasStation(i) && (m_stations[i].method == 1 || (q >= 2001 && m_stations[i].method < 0)))
        delone(i);
    m_nLast = m_nPrev;
    if (m_nPrev < 0) {
        m_nFirst = m_nPrev;
    } else {
        int f = m_nPrev;
        while (f > 0 && m_stations[f].method == 1) --f;
        m_nFirst = f;
    }
    solval();
}
