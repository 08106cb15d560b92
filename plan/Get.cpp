// Reading a line back: the transfer fields from the stored stations of a line.
#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "plan/SettingsRecord.h"

#include <cmath>
#include <cstdlib>

using namespace orrin;

// Loads m_target with the target that station `station`, the last station of a line of code `code`,
// aims at, and the line's settings record into the method parameters.
//   - Settings: for the codes of plan/SettingsRecord.h, aux1 and aux2 of the station go back into
//     their m_dMethodParamN; every other m_dMethodParamN, and all of them for other codes (0 among
//     them), are left as they are. So meth3d, through GetData(-1), hands each line its own settings.
//   - The start of a backward line (the station's key is K_BACKTARGET, or the station after it has
//     a negative code): the target is the station itself, its name, flag, position (tvd, ns, ew) and
//     direction (inc, azi) with hasAngles set, as the backward solve fixed them. A forward line that
//     ends there thus aims at the backward line's solved start.
//   - Otherwise, when the plan's target array has an entry with the station's target name and flag,
//     that entry is the target, so that editing a target moves every line aimed at it.
//   - Otherwise the target is what settar stored in the station, read as for a backward start.
// A station outside the array leaves m_target and the parameters as they were.
void CPlan::gettar(int station, int code) {
    if (!hasStation(station)) return;
    const SStation& s = m_stations[station];
    if (const SettingsRow* row = settingsRow(code)) {
        if (row->aux1 != 0) this->*methodParam(row->aux1) = s.aux1;
        if (row->aux2 != 0) this->*methodParam(row->aux2) = s.aux2;
    }
    const bool backStart = s.target == K_BACKTARGET || codeAt(station + 1) < 0;
    if (!backStart && !s.target.empty()) {
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

namespace {

/// Lines of an older numbering that packed backward lines into an optimum-align code, rewritten in
/// place when read: {old code, new code, code of station line + 3, code of station line + 4}.
struct OldCode {
    short old, code, third, fourth;
};
constexpr OldCode kOldCodes[] = {
    {2920, 2925, 0, 0},     {3910, 2910, -10, 0},   {3918, 2910, -20, 0}, {3940, 2940, -10, 0},
    {3948, 2940, -20, 0},   {3950, 2950, -10, 0},   {3958, 2950, -20, 0}, {4918, 2910, -20, -10},
    {4948, 2940, -20, -10}, {4958, 2950, -20, -10},
};

/// Family, variant (m_nSubMethod), target variant (m_nTargetMethod) and constant-toolface flag of
/// every code that reads back through the table; the inverse of PutData's family table, except that
/// code 80, which family 100 variant 3 also stores, reads back as family 90 variant 7.
struct Selector {
    short code;
    int family, sub, targetMethod;
    bool constTF;
};
constexpr Selector kSelectors[] = {
    {2, 10, 0, 0, false},     {10, 20, 1, 0, false},    {20, 20, 2, 0, false},
    {140, 20, 3, 0, false},   {30, 90, 1, 0, false},    {40, 90, 2, 0, false},
    {50, 90, 3, 0, false},    {51, 90, 11, 0, false},   {60, 90, 9, 0, false},
    {180, 90, 10, 0, false},  {80, 90, 7, 0, false},    {160, 90, 8, 0, false},
    {150, 90, 6, 0, false},   {70, 100, 2, 0, false},   {90, 100, 4, 0, false},
    {100, 30, 1, 0, false},   {101, 30, 1, 0, true},    {110, 30, 2, 0, false},
    {111, 30, 2, 0, true},    {120, 30, 3, 0, false},   {121, 30, 3, 0, true},
    {130, 30, 4, 0, false},   {131, 30, 4, 0, true},    {105, 40, 1, 0, false},
    {115, 40, 2, 0, false},   {125, 40, 3, 0, false},   {135, 40, 4, 0, false},
    {-10, 150, 1, 0, false},  {-20, 150, 2, 0, false},  {-30, 150, 3, 0, false},
    {-40, 150, 4, 0, false},  {-60, 150, 5, 0, false},  {-50, 150, 6, 0, false},
    {910, 50, 0, 0, false},   {920, 120, 0, 1, false},  {930, 120, 0, 2, false},
    {925, 125, 0, 1, false},  {935, 125, 0, 2, false},  {1910, 80, 0, 1, false},
    {1920, 80, 0, 2, false},  {1915, 55, 0, 0, false},  {1930, 130, 0, 0, false},
    {1935, 135, 0, 0, false}, {1950, 140, 0, 0, false}, {1940, 110, 0, 8, false},
    {1960, 110, 0, 6, false}, {1970, 110, 0, 7, false}, {2910, 110, 0, 1, false},
    {2940, 110, 0, 4, false}, {2950, 110, 0, 5, false}, {2925, 85, 0, 0, false},
    {2930, 45, 0, 2, false},
};

}  // namespace

// Sets the m_bGiven... flags: which of the line's fields its method takes as input.
void CPlan::setGivenFlags(short code) {
    bool md = false, inc = false, azi = false, tvd = false, dls = false, tf = false;
    bool build = false, turn = false, vs = false, target = false, params = false;
    switch (code) {
    case 2: md = inc = azi = tvd = true; break;
    case 10: md = true; break;
    case 20: tvd = target = true; break;
    case 140: vs = target = true; break;
    case 30: md = inc = azi = true; break;
    case 40: inc = azi = tvd = target = true; break;
    case 50:
    case 51: inc = azi = dls = true; break;
    case 60:
    case 180: dls = inc = md = true; break;
    case 80:
    case 160: dls = azi = md = true; break;
    case 150: dls = azi = tvd = true; break;
    case 70: dls = tf = inc = md = true; break;
    case 90: dls = tf = azi = md = true; break;
    case 100:
    case 101: dls = tf = md = true; break;
    case 110:
    case 111: dls = tf = tvd = target = true; break;
    case 120:
    case 121: dls = tf = inc = true; break;
    case 130:
    case 131: dls = tf = azi = true; break;
    case 105: md = build = turn = true; break;
    case 115: tvd = build = turn = target = true; break;
    case 125: inc = build = turn = true; break;
    case 135: azi = build = turn = true; break;
    case -20: md = dls = tf = target = true; break;
    case -30: tvd = dls = tf = target = true; break;
    case -40: inc = dls = tf = target = true; break;
    case -60: inc = azi = dls = target = true; break;
    case -50: target = true; break;
    case -10: target = params = true; break;
    default:
        if (code > 1000 || code >= 900) {
            // Profiles and target methods: a target and the method's own settings; the two that
            // run to a given measured depth take it too.
            target = params = true;
            md = code == 930 || code == 935;
        }
        break;
    }
    m_bGivenMD = md;
    m_bGivenInc = inc;
    m_bGivenAzi = azi;
    m_bGivenTVD = tvd;
    m_bGivenDLS = dls;
    m_bGivenTF = tf;
    m_bGivenBuild = build;
    m_bGivenTurn = turn;
    m_bGivenVS = vs;
    m_bGivenTarget = target;
    m_bGivenParams = params;
}

// The profile fields of a 2D line back from its stations and its code: the inverse of putm2d.
// The code's digits give the holds present (hundreds: 1 kick-off, 2 tangent, 4 final hold) and the
// two unknowns (tens and units); hold lengths are the measured-depth differences of their stations,
// the arcs give their signed rate (build) and end inclination, and the station before the line
// gives the profile's start inclination. `previous` is the station before the line, `line` its
// first station.
void CPlan::getm2d(int previous, int line) {
    const short q = codeAt(line);
    m_dStartInc = hasStation(previous) ? m_stations[previous].inc : 0.0;
    const int mask = (q % 1000) / 100;
    m_nSolveFor1 = (q % 100) / 10;
    m_nSolveFor2 = q % 10;
    m_dLength1 = m_dLength2 = m_dLength3 = 0.0;
    const int type = gettyp(q);
    const int last = line + q / 1000;
    auto md = [this](int k) { return hasStation(k) ? m_stations[k].md : 0.0; };
    int k = line;
    if (mask & 1) {
        m_dLength1 = md(k) - md(previous);
        ++k;
    }
    if (k > last || !hasStation(k)) return;
    const int k1 = k++;
    m_dBuildDLS = m_stations[k1].build;
    m_dHoldInc = m_stations[k1].inc;
    if (mask & 2) {
        m_dLength2 = md(k) - md(k1);
        ++k;
    }
    if (type == 1 || k > last || !hasStation(k)) return;
    const int k2 = k++;
    m_dDropDLS = m_stations[k2].build;
    m_dFinalInc = m_stations[k2].inc;
    if (mask & 4) m_dLength3 = md(k) - md(k2);
}

// Fills the transfer fields with line `line`: its end values, the family and variant selectors from
// which a client rebuilds its form, the target, the range m_nFirst/m_nLast, m_stnPrev (the station
// before the line) and the transfer flags.
//   - `line` 0 is the tie line: only the family (10) and the range are set; its values are read with
//     DumpData. A negative `line` reads the line after the cursor; a continuation station stands for
//     the first station of its line, and the cursor moves to the station before the line.
//   - Codes of an older numbering are rewritten in place (see kOldCodes); this call still spans the
//     old line's stations, the next call sees the new codes.
//   - An insert point reads back as an empty line (family 0) whose every field is input.
//   - The line values come from the line's first station; a backward line keeps its start angles and
//     depth on the station before it and reports those. The vertical section is GetVS of the
//     station's position.
//   - A backward line whose start names a real back-target returns that target's depth, north and
//     east in m_dLength1...3 and its name and flag in m_strTarget, m_bTargetFlag; m_target keeps the
//     line's own (end) target.
// A line number outside the station array changes nothing.
void CPlan::GetData(int line) {
    // A client's cursor from a stale plan is brought back to the tie-on before it is used.
    if (m_nPrev > 100 || m_nPrev < 0) m_nPrev = 0;
    readLine(line);
}

// GetData without its cursor guard: the line methods of the solver read the line after the solve
// cursor through it, wherever the cursor stands. (With the guard, a profile or target line past
// station 100 would read station 1 instead of itself and never solve.)
void CPlan::readLine(int line) {
    if (m_nPrev < 0) m_nPrev = 0;
    if (line == 0) {
        m_nPrev = m_nLast = m_nFirst = 0;
        m_nFamily = 10;
        return;
    }
    const bool afterCursor = line < 0;
    if (afterCursor) line = m_nPrev + 1;
    const int requested = line;
    if (!afterCursor) {
        while (line > 1 && codeAt(line) == 1) --line;
    }
    if (!hasStation(line)) return;
    if (!afterCursor) m_nPrev = line - 1;

    m_bLineStart = m_bGivenMD = m_bGivenInc = m_bGivenAzi = m_bGivenTVD = m_bGivenDLS = false;
    m_bGivenTF = m_bGivenBuild = m_bGivenTurn = m_bGivenVS = m_bGivenTarget = m_bGivenParams =
        false;
    m_bBackIncFollows = m_bLineStartCopy = false;
    m_stnPrev = m_stations[m_nPrev];

    const short q = m_stations[line].method;
    short current = q;  // the code under the current numbering
    for (const OldCode& o : kOldCodes) {
        if (o.old != q) continue;
        m_stations[line].method = current = o.code;
        if (o.third != 0 && hasStation(line + 3)) m_stations[line + 3].method = o.third;
        if (o.fourth != 0 && hasStation(line + 4)) m_stations[line + 4].method = o.fourth;
        break;
    }

    if (q == 9999) {
        m_bLineStart = m_bGivenMD = m_bGivenInc = m_bGivenAzi = m_bGivenTVD = m_bGivenDLS = true;
        m_bGivenTF = m_bGivenBuild = m_bGivenTurn = m_bGivenVS = m_bGivenTarget = true;
        m_bGivenParams = true;
        m_bBackIncFollows = false;
        m_bLineStartCopy = true;
        m_nFamily = 0;
        m_nFirst = m_nLast = line;
        return;
    }

    m_nFirst = line;
    m_nLast = line + std::abs(q) / 1000;
    gettar(m_nLast, q);
    const short next = codeAt(m_nLast + 1);
    const short n = next < 0 ? next : 0;

    const SStation& s = m_stations[line];
    m_dMD = s.md;
    m_dInc = s.inc;
    m_dAzi = s.azi;
    m_dTVD = s.tvd;
    m_dDLS = std::fabs(s.dls);
    m_dTF = s.tf;
    m_dBuild = s.build;
    m_dTurn = s.turn;
    m_dVS = GetVS(s.ns, s.ew);
    m_dLength1 = m_dLength2 = m_dLength3 = 0.0;
    m_nSolveFor1 = m_nSolveFor2 = m_nProfileType = 0;
    m_bConstTF = 0;
    if (q < 0) {
        const SStation& start = m_stations[line - 1];
        m_dInc = start.inc;
        m_dAzi = start.azi;
        m_dTVD = start.tvd;
    }

    m_nSubMethod = 0;
    m_nTargetMethod = 0;
    if (q > 1000 && std::abs(q) % 1000 < 900) {
        getm2d(line - 1, line);
        m_nProfileType = gettyp(q);
        m_nFamily = m_nProfileType == 1 ? 60 : 70;
    } else {
        m_nFamily = 0;
        // The selectors follow the rewritten code, so that an old line reads back as the family it
        // now is; the range above still spans the old line's stations.
        for (const Selector& sel : kSelectors) {
            if (sel.code != current) continue;
            m_nFamily = sel.family;
            m_nSubMethod = sel.sub;
            m_nTargetMethod = sel.targetMethod;
            m_bConstTF = sel.constTF ? 1 : 0;
            break;
        }
    }
    if (m_nFamily == 150 && IsTargetKeyValid(m_stations[line - 1].target)) {
        const STarget own = m_target;
        gettar(line - 1, 0);
        m_dLength1 = m_target.tvd;
        m_dLength2 = m_target.ns;
        m_dLength3 = m_target.ew;
        m_strTarget = m_target.name;
        m_bTargetFlag = m_target.flag;
        m_target = own;
    }

    setGivenFlags(current);
    m_bLineStart = m_bLineStartCopy = requested == line;
    m_bBackIncFollows = n == -40 || n == -60;
    m_bBackIncAziFollows = n == -60;
}

// Recomputes the rates of station i from its direction and that of the station before it, over the
// course L = md(i) - md(i - 1): dls = dogleg / L, tf = getfo's toolface, build = change of inclination
// / L, turn = f change of azimuth / L with f = 1, or sin of the mean inclination in the
// horizontal-turn model; turn is 0 when either inclination is exactly 0. All four stay 0 for the
// tie-on, a course that is not positive, or an index outside the array.
void CPlan::GetDeltas(int i) {
    if (!hasStation(i)) return;
    SStation& s = m_stations[i];
    s.dls = s.tf = s.build = s.turn = 0.0;
    if (i == 0) return;
    const SStation& p = m_stations[i - 1];
    const double L = s.md - p.md;
    if (!(L > 0.0)) return;
    double dl = 0.0, daz = 0.0;
    const double t = getfo(p.inc, p.azi, s.inc, s.azi, dl, daz);
    s.dls = dl / L;
    s.tf = t;
    s.build = (s.inc - p.inc) / L;
    const double f = m_bHorizontalTurn ? std::sin(0.5 * (p.inc + s.inc)) : 1.0;
    s.turn = f * daz / L;
    if (s.inc == 0.0 || p.inc == 0.0) s.turn = 0.0;
}

// The first and last stored station of a line in m_nFirst, m_nLast (an insert point is one station);
// 0 and 0 for a line number below 1 or outside the array.
void CPlan::GetLines(int line) {
    m_nFirst = m_nLast = 0;
    if (line < 1 || !hasStation(line)) return;
    while (line >= 2 && codeAt(line) == 1) --line;
    m_nFirst = line;
    const short q = m_stations[line].method;
    m_nLast = q == 9999 ? line : line + std::abs(q) / 1000;
}
