// Putting a line: the transfer fields become one or several stored stations, and the plan re-solves.
#include <cmath>
#include <cstdlib>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "plan/SettingsRecord.h"

using namespace orrin;

namespace {

/// Lines numbered beyond this are solved from the tie-on (the solve cursor is reset to 0).
constexpr int MAX_CURSOR_LINE = 100;
/// A line with more extra stations than this keeps them when it is put again as a shorter line
/// (putm1d), or keeps its station count (putm2d, where the bound is "over 6", and putm3d, where the
/// adjustment is made only below 7).
constexpr int MAX_ADJUSTED_EXTRA = 6;

}  // namespace

// First station from index 1 whose code is 0 or an insert point (9999 or more): where a line given
// with a negative number is appended. The array's length when there is none.
int CPlan::GetAddPoint() const {
    int i = 1;
    while (hasStation(i) && m_stations[i].method != 0 && m_stations[i].method < 9999) ++i;
    return i;
}

// Writes a target into a station: position, name and flag, and the arrival direction when the
// target has one.
void CPlan::settar(int station, const STarget& target) {
    if (!hasStation(station)) return;
    SStation& s = m_stations[station];
    s.ns = target.ns;
    s.ew = target.ew;
    s.tvd = target.tvd;
    s.target = target.name;
    s.flag = target.flag;
    if (target.hasAngles) {
        s.inc = target.inc;
        s.azi = target.azi;
    }
}

// The fields common to every one-station line.
// 1. A line that had k = |code| / 1000 extra stations loses k stations at its place (delone(station)
//    k times), so that the old line's last station becomes this one; only while k is below 6 (a line
//    with 6 or more extra stations keeps them: deliberately bounded).
// 2. md = m_dMD; the change of md moves every following station of code 1 or more by the same amount.
// 3. inc, azi, tvd from the transfer fields; a backward station keeps them on the station before it.
// 4. dls = |m_dDLS|, tf, build, turn from the transfer fields.
// 5. A positive m_dVS places the station (ns, ew) by GetVSPoint from the previous station's position
//    along its azimuth.
// 6. The station's target is emptied.
void CPlan::putm1d(int station) {
    if (!hasStation(station)) return;
    const int old = std::abs(m_stations[station].method);
    if (old >= 1000) {
        const int k = old / 1000;
        if (k < MAX_ADJUSTED_EXTRA) {
            for (int n = 0; n < k; ++n) delone(station);
        }
        if (!hasStation(station)) return;
    }
    SStation& s = m_stations[station];
    const double d = m_dMD - s.md;
    s.md = m_dMD;
    if (d != 0.0) {
        for (int k = station + 1; hasStation(k) && m_stations[k].method >= 1; ++k)
            m_stations[k].md += d;
    }
    SStation& angles = (s.method >= 0 || station == 0) ? s : m_stations[station - 1];
    angles.inc = m_dInc;
    angles.azi = m_dAzi;
    angles.tvd = m_dTVD;
    s.dls = std::fabs(m_dDLS);
    s.tf = m_dTF;
    s.build = m_dBuild;
    s.turn = m_dTurn;
    if (m_dVS > 0.0 && station != 0) {
        const SStation& prev = m_stations[station - 1];
        GetVSPoint(m_dVS, prev.ns, prev.ew, prev.azi, s.ns, s.ew);
    }
    s.target.clear();
}

// A slant (variant 1) or S-shape (variant 2) profile: one station per part that exists.
// The unknowns m_nSolveFor1/2 name entries of the profile (1 kick-off hold, 2 build radius,
// 3 tangent inclination, 4 tangent hold, 5 drop radius, 6 final inclination, 7 final hold); a hold
// that is unknown is set to 1.0 so that it counts as present. With h1, h2, h3 the presence of the
// three holds, the line has P = h1 + h2 + h3 + variant - 1 extra stations and the code
//   1000 P + 100 (h1 + 2 h2 + 4 h3) + 10 m_nSolveFor1 + m_nSolveFor2,
// whose hundreds digit gettyp decodes back into the profile type. Unknowns outside 0 ... 9 cannot be
// written into the code and are taken as 0.
// Holds longer than 1.0 get their end depth here; an unknown hold (exactly 1.0) gets none, and
// meth2d lays every part when it solves the profile. Arcs get their rate (build, and its magnitude as
// dls) and end inclination.
void CPlan::putm2d(int variant) {
    m_nProfileType = variant;
    if (variant == 1) m_dLength3 = m_dDropDLS = m_dFinalInc = 0.0;
    auto digit = [](int v) { return (v >= 0 && v <= 9) ? v : 0; };
    m_nSolveFor1 = digit(m_nSolveFor1);
    m_nSolveFor2 = digit(m_nSolveFor2);
    for (int unknown : {m_nSolveFor1, m_nSolveFor2}) {
        if (unknown == 1) m_dLength1 = 1.0;
        if (unknown == 4) m_dLength2 = 1.0;
        if (unknown == 7) m_dLength3 = 1.0;
    }
    const int h1 = m_dLength1 > 0.0 ? 1 : 0;
    const int h2 = m_dLength2 > 0.0 ? 1 : 0;
    const int h3 = m_dLength3 > 0.0 ? 1 : 0;
    const int P = h1 + h2 + h3 + variant - 1;
    const int code = 1000 * P + 100 * (h1 + 2 * h2 + 4 * h3) + 10 * m_nSolveFor1 + m_nSolveFor2;

    const int first = m_nPrev + 1;
    if (!hasStation(first)) return;
    const int o = std::abs(m_stations[first].method) / 1000;
    if (o <= MAX_ADJUSTED_EXTRA) {
        for (int n = o; n < P; ++n) addone(first);
        for (int n = P; n < o; ++n) delone(first);
    }
    const int last = m_nPrev + P + 1;
    if (!hasStation(last)) return;

    const int s0 = m_nPrev;
    if (m_dLength1 > 1.0) m_stations[s0 + h1].md = m_stations[s0].md + m_dLength1;
    const int k1 = s0 + h1 + 1;
    m_stations[k1].dls = std::fabs(m_dBuildDLS);
    m_stations[k1].build = m_dBuildDLS;
    m_stations[k1].inc = m_dHoldInc;
    if (m_dLength2 > 1.0) m_stations[s0 + h1 + h2 + 1].md = m_stations[k1].md + m_dLength2;
    if (variant != 1) {
        const int k2 = s0 + h1 + h2 + 2;
        m_stations[k2].dls = std::fabs(m_dDropDLS);
        m_stations[k2].build = m_dDropDLS;
        m_stations[k2].inc = m_dFinalInc;
        if (m_dLength3 > 1.0) m_stations[s0 + h1 + h2 + h3 + 2].md = m_stations[k2].md + m_dLength3;
    }
    for (int k = first; k <= last; ++k) {
        m_stations[k].method = static_cast<short>(k == first ? code : 1);
        m_stations[k].target.clear();
        m_stations[k].flag = false;
    }
    settar(last, m_target);
}

// A target method of the given code: the line's first station s = m_nPrev + 1 and |code| / 1000
// continuation stations, holding the method's settings as form storage until the line is solved.
// The settings written are those the description of each method reads; for codes of 2000 and above,
// 2930 keeps only its target: its dogleg severity and inclination come from the method parameters,
// and the extra form storage (dls, inc of the middle station) is written for the other codes.
// Last, the line's settings record goes into aux1, aux2 of its last station (plan/SettingsRecord.h):
// the solved line overwrites the form storage, the record stays for every later re-solve.
void CPlan::putm3d(short code) {
    const int s = m_nPrev + 1;
    if (!hasStation(s)) return;
    const int o = std::abs(m_stations[s].method) / 1000;
    const int n = std::abs(code) / 1000;
    if (o <= MAX_ADJUSTED_EXTRA) {
        for (int k = o; k < n; ++k) addone(s);
        for (int k = n; k < o; ++k) delone(s);
    }
    if (!hasStation(s + n)) return;

    SStation& first = m_stations[s];
    first.method = code;
    first.target.clear();
    first.flag = false;
    if (code != 920 && code != 925 && code != 2930 && code != 930 && code != 935) {
        first.dls = m_dMethodParam1;
        first.build = m_dMethodParam7;
        first.turn = m_dMethodParam8;
    }
    if (code >= 1000 && code < 2000) {
        SStation& second = m_stations[s + 1];
        second.method = 1;
        if (code == 1930 || code == 1935) first.tvd = m_dMethodParam4;
        if (code == 1915) second.inc = m_dMethodParam4;
        if (code == 1950) second.azi = m_dMethodParam4;
        if (code != 1920) first.dls = 0.0;
        if (code == 1920 || code == 1950) second.dls = m_dMethodParam1;
        first.target.clear();
        first.flag = false;
        settar(s + 1, m_target);
        if (code == 1940 || code == 1960 || code == 1970) {
            first.dls = m_dMethodParam1;
            second.dls = m_dMethodParam2;
        }
    } else if (code >= 2000) {
        SStation& second = m_stations[s + 1];
        SStation& third = m_stations[s + 2];
        for (SStation* c : {&second, &third}) {
            c->method = 1;
            c->target.clear();
            c->flag = false;
        }
        if (code == 2950) {
            first.tvd = m_dMethodParam5;
            second.tvd = m_dMethodParam6;
        }
        second.md = first.md + m_dMethodParam3;
        if (code != 2930) {
            third.dls = m_dMethodParam2;
            if (code < 3000) {
                first.dls = 0.0;
                second.dls = m_dMethodParam1;
                second.inc = m_dMethodParam4;
                third.dls = 0.0;
            }
        }
        settar(s + 2, m_target);
    }
    if (code >= 1000) {
        m_stations[s + n].inc = m_target.inc;
        m_stations[s + n].azi = m_target.azi;
    } else {
        if (code == 910) first.inc = m_dMethodParam4;
        if (code == 930 || code == 935) first.md = m_dMD;
        settar(s, m_target);
    }

    // The settings record on the line's last station; a code without a record leaves it empty.
    SStation& last = m_stations[s + n];
    last.aux1 = last.aux2 = 0.0;
    if (const SettingsRow* row = settingsRow(code)) {
        if (row->aux1 != 0) last.aux1 = this->*methodParam(row->aux1);
        if (row->aux2 != 0) last.aux2 = this->*methodParam(row->aux2);
    }
}

// Stores the line described by the transfer fields at `line` and re-solves the plan.
// `line` 0 re-solves the tie line (the family is forced to 10); a negative number appends the line at
// GetAddPoint(); a continuation station stands for the first station of its line. A family outside
// 20 ... 150 only re-solves. A line number outside the station array stores nothing.
void CPlan::PutData(int line) {
    resize();
    if (line == 0) {
        m_nFamily = 10;
    } else if (line < 0) {
        line = GetAddPoint();
    } else {
        while (line >= 2 && codeAt(line) == 1) --line;
    }
    if (!hasStation(line)) return;
    // Lines numbered beyond MAX_CURSOR_LINE are solved from the tie-on. The cursor is reset only
    // for the solve: the profile and target lines are stored at m_nPrev + 1, which must be the
    // line's own place, or a long plan would have its first line written over.
    const bool solveFromTie = line - 1 < 0 || line - 1 > MAX_CURSOR_LINE;
    m_nPrev = line < 1 ? 0 : line - 1;

    if (m_nFamily < 20 || m_nFamily > 150) {
        if (solveFromTie) m_nPrev = 0;
        solval();
        return;
    }

    // One-station lines: the common fields, then the code (0 keeps the stored one), then the target.
    auto putOne = [this, line](short code, bool withTarget) {
        putm1d(line);
        if (!hasStation(line)) return;
        if (code != 0) m_stations[line].method = code;
        if (withTarget) {
            m_stations[line].target = m_target.name;
            m_stations[line].flag = m_target.flag;
        }
    };
    auto ct = [this](short plain, short constTF) { return m_bConstTF ? constTF : plain; };

    switch (m_nFamily) {
    case 20:
        if (m_nSubMethod == 1)
            putOne(10, false);
        else if (m_nSubMethod == 2)
            putOne(20, true);
        else if (m_nSubMethod == 3)
            putOne(140, true);
        break;
    case 30:
        if (m_nSubMethod == 1)
            putOne(ct(100, 101), false);
        else if (m_nSubMethod == 2)
            putOne(ct(110, 111), true);
        else if (m_nSubMethod == 3)
            putOne(ct(120, 121), false);
        else if (m_nSubMethod == 4)
            putOne(ct(130, 131), false);
        break;
    case 40:
        if (m_nSubMethod == 1)
            putOne(105, false);
        else if (m_nSubMethod == 2)
            putOne(115, true);
        else if (m_nSubMethod == 3)
            putOne(125, false);
        else if (m_nSubMethod == 4)
            putOne(135, false);
        break;
    case 45: putm3d(2930); break;
    case 50: putm3d(910); break;
    case 55: putm3d(1915); break;
    case 60: putm2d(1); break;
    case 70: putm2d(2); break;
    case 80: putm3d(m_nTargetMethod == 2 ? 1920 : 1910); break;
    case 85: putm3d(2925); break;
    case 90:
        switch (m_nSubMethod) {
        case 1: putOne(30, false); break;
        case 2: putOne(40, true); break;
        case 3: putOne(50, false); break;
        case 4:
        case 5: putOne(0, false); break;
        case 6: putOne(150, false); break;
        case 7: putOne(80, false); break;
        case 8: putOne(160, false); break;
        case 9: putOne(60, false); break;
        case 10: putOne(180, false); break;
        case 11: putOne(51, false); break;
        default: break;
        }
        break;
    case 100:
        if (m_nSubMethod == 2)
            putOne(70, false);
        else if (m_nSubMethod == 3)
            putOne(80, false);
        else if (m_nSubMethod == 4)
            putOne(90, false);
        else
            putOne(0, false);
        break;
    case 110:
        switch (m_nTargetMethod) {
        case 1: putm3d(2910); break;
        case 4: putm3d(2940); break;
        case 5: putm3d(2950); break;
        case 6: putm3d(1960); break;
        case 7: putm3d(1970); break;
        case 8: putm3d(1940); break;
        default: break;
        }
        break;
    case 120: putm3d(m_nTargetMethod == 2 ? 930 : 920); break;
    case 125: putm3d(m_nTargetMethod == 2 ? 935 : 925); break;
    case 130: putm3d(1930); break;
    case 135: putm3d(1935); break;
    case 140: putm3d(1950); break;
    case 150: putBackward(line); break;
    default: break;
    }
    if (solveFromTie) m_nPrev = 0;
    solval();
}

// A backward line (family 150): its end is the target with its arrival direction; the station
// before it names its start (a named back-target for "BACK Target", K_BACKTARGET otherwise).
// The line keeps its start quantity in aux1, aux2 of its own station, so that every re-solve solves
// it with its own inputs (DoBackwards reads them there):
//   -20 "BACK to CL"     aux1 = course length: m_dMD when it is not beyond the start's depth,
//                        else m_dMD minus that depth (an end depth given);
//   -30 "BACK to TVD"    aux1 = start vertical depth m_dTVD;
//   -40 "BACK to Inc"    aux1 = start inclination m_dInc;
//   -60 "BACK to IncAz"  aux1, aux2 = start inclination m_dInc and azimuth m_dAzi;
//   -10, -50             nothing (the back-target point, the tie-on's depth): both 0.
// The curvature (m_dDLS) and arrival toolface (m_dTF) stay where putm1d stores them, in dls and tf.
void CPlan::putBackward(int line) {
    putm1d(line);
    settar(line, m_target);
    if (!hasStation(line)) return;
    SStation& end = m_stations[line];
    end.inc = m_target.inc;
    end.azi = m_target.azi;
    if (m_nSubMethod >= 1 && m_nSubMethod <= 6) end.aux1 = end.aux2 = 0.0;
    const int before = line - 1;
    switch (m_nSubMethod) {
    case 1: {
        end.method = -10;
        STarget back;
        back.name = m_strTarget;
        back.flag = m_bTargetFlag;
        back.tvd = m_dLength1;
        back.ns = m_dLength2;
        back.ew = m_dLength3;
        settar(before, back);
        return;
    }
    case 2: {
        end.method = -20;
        const double startMD = hasStation(before) ? m_stations[before].md : 0.0;
        end.aux1 = m_dMD > startMD ? m_dMD - startMD : m_dMD;
        break;
    }
    case 3:
        end.method = -30;
        end.aux1 = m_dTVD;
        break;
    case 4:
        end.method = -40;
        end.aux1 = m_dInc;
        break;
    case 5:
        end.method = -60;
        end.aux1 = m_dInc;
        end.aux2 = m_dAzi;
        break;
    case 6: end.method = -50; break;
    default: return;
    }
    if (hasStation(before)) m_stations[before].target = K_BACKTARGET;
}
