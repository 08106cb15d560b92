// The bit walk: a bit turns the hole's azimuth by itself at a rate that depends on the formation, that
// is on vertical depth. The walk table m_walk holds (vertical depth [L], walk rate [rad/L]) entries in
// increasing depth; each rate is a turn rate, read by build_turn like any other, and holds below its
// depth down to the next entry. Above the first entry nothing walks.
//
// wlkpro re-projects the solved plan with the walk applied; CalcWalk moves the point the plan aims at
// until the walked well meets the real target, then makes the walked profile the plan; RestoreWalk
// goes back to the aimed plan without the walk.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Passes of plan-and-walk CalcWalk makes before it gives up with -4.
constexpr int MAX_WALK_PASSES = 50;
/// Distance between the walked end and the real target at which the aim counts as found [L].
constexpr double WALK_CLOSURE = 1.0;
/// Walk stations allowed beyond the plan's array and the one cut per walk-table entry; the array
/// still grows if a walk ever needs more.
constexpr std::size_t WALK_STATION_SPARE = 15;
/// Course given to a cut that falls on its start's own depth, so that the cut station still lies
/// beyond its start [L].
constexpr double CUT_AT_START_COURSE = 1.0;

/// Method codes the walked profile is written with.
constexpr short CODE_DLS_TF_MD = 100;  ///< "DLS TF MD": a line re-laid with its dls and toolface
constexpr short CODE_BT_MD = 105;      ///< "BT1 MD": a build/turn line to a measured depth
constexpr short CODE_BT_TVD = 115;     ///< "BT2 TVD": a build/turn line cut at a walk-table depth

/// Strict weak order of walk-table entries by depth; an entry whose depth is NaN sorts last.
bool shallower(const std::pair<double, double>& a, const std::pair<double, double>& b) {
    if (std::isnan(a.first)) return false;
    if (std::isnan(b.first)) return true;
    return a.first < b.first;
}

}  // namespace

// Stores the walk table: the entries sorted by depth (stably; a NaN depth last), all of them in use.
void CPlan::SetWalkTable(const std::vector<std::pair<double, double>>& entries) {
    m_walk = entries;
    std::stable_sort(m_walk.begin(), m_walk.end(), shallower);
    m_nWalkEntries = static_cast<int>(m_walk.size());
}

// Walks the solved plan into m_walkStations, from station 0 (the tie-on, copied as it is) to the
// first station of code below 1 or the end of the array; m_nWalkStations counts what was written.
// Reads of each plan station: md, inc, azi, tvd [rad, L], dls, build, turn [rad/L], tf [rad], code.
// Writes each walked station with an empty target and a clear flag, except that the station walked
// from plan station m_nWalkLine carries m_strWalkTarget, and its position goes to
// m_dWalkedNS/EW/TVD.
//
// Walk table: with k the next entry and w the rate in force, before each line the entries at or
// above the walked start's depth are passed (w takes the rate of the last one passed, 0 above the
// first). Entries in use are m_nWalkEntries, bounded by the table's length.
//
// A line whose plan azimuth does not change (|getdaz(A2 - A1)| <= 1e-6) and which is not vertical at
// both ends is walked: it becomes a build/turn curve (build_turn, radius-of-curvature model) with its
// own build rate and the walk rate as turn rate, code 105. When the next table depth B lies above
// its end, the line is first cut at B into a station of code 115 at exactly depth B, and the same
// plan station is walked again from the cut. The course to B, dV = B - V1:
//   - |dV| <= 1e-6: a course of CUT_AT_START_COURSE;
//   - no build rate (|build| <= 1e-6) and I1 < pi/2: a hold, dV / cos I1;
//   - otherwise the circular depth relation sin I = sin I1 + dV build: I = asin of it, course
//     (I - I1) / build. A sine below 0 or at 1 or more fails with -17 (the depth is not reached); a
//     course that is not positive (NaN included) fails with -18.
// Every other line keeps its shape from the walked start: with a build/turn family digit (the code's
// last digit, carried through continuation stations) and both plan inclinations above 0, bttomd with
// its build and turn rates (code 105); else dttomd with its dogleg severity and toolface (code 100).
// Their own errors are left in m_nError and do not stop the walk.
//
// Reading taken: the walk target is recorded at the plan station m_nWalkLine itself. A cut station
// (115) belongs to the line being walked and is not that station, even where the plan station before
// the cut line is m_nWalkLine; so m_dWalked... is always the walked position of m_nWalkLine.
void CPlan::wlkpro() {
    const int entries = std::max(0, std::min(m_nWalkEntries, static_cast<int>(m_walk.size())));
    m_nWalkStations = 0;
    if (!hasStation(0)) return;

    auto append = [this](const SStation& s) {
        const std::size_t at = static_cast<std::size_t>(m_nWalkStations);
        if (at < m_walkStations.size())
            m_walkStations[at] = s;
        else
            m_walkStations.push_back(s);
        ++m_nWalkStations;
    };

    m_stnPrev = m_stations[0];
    append(m_stnPrev);

    int k = 0;
    double w = 0.0;
    int u = 0;
    for (int i = 1; hasStation(i) && m_stations[i].method >= 1; ++i) {
        const int walked = i;
        const SStation& plan = m_stations[i];
        const SStation& planBefore = m_stations[i - 1];
        m_stnC = plan;
        m_stnC.target.clear();
        m_stnC.flag = false;
        if (plan.method > 1) u = plan.method % 10;

        while (k < entries && m_walk[k].first <= m_stnPrev.tvd) {
            w = m_walk[k].second;
            ++k;
        }

        const double daz = getdaz(plan.azi - planBefore.azi);
        const bool bothVertical = is_zero(planBefore.inc) && is_zero(plan.inc);
        bool isCut = false;
        if (is_zero(daz) && !bothVertical) {
            m_stnC.method = CODE_BT_MD;
            double cut = 0.0;
            isCut = k < entries && m_walk[k].first < m_stnC.tvd;
            if (isCut) {
                cut = m_walk[k].first;
                m_stnC.tvd = cut;
                const double dv = cut - m_stnPrev.tvd;
                if (is_zero(dv)) {
                    m_stnC.md = m_stnPrev.md + CUT_AT_START_COURSE;
                } else if (is_zero(m_stnC.build) && m_stnPrev.inc < HALF_PI) {
                    m_stnC.md = m_stnPrev.md + dv / std::cos(m_stnPrev.inc);
                } else {
                    const double s = std::sin(m_stnPrev.inc) + dv * m_stnC.build;
                    if (s < 0.0 || s >= 1.0) {
                        m_nError = ERR_TVD_UNREACHABLE;
                        return;
                    }
                    m_stnC.inc = std::asin(s);
                    m_stnC.md = (m_stnC.inc - m_stnPrev.inc) / m_stnC.build + m_stnPrev.md;
                    if (!(m_stnC.md > m_stnPrev.md)) {
                        m_nError = ERR_BUILD_SIGN;
                        return;
                    }
                }
                m_stnC.method = CODE_BT_TVD;
                --i;  // the same plan station is walked again from the cut
            }
            m_stnC.turn = w;
            build_turn();
            if (isCut) m_stnC.tvd = cut;
        } else if (u > 0 && planBefore.inc > 0.0 && plan.inc > 0.0) {
            bttomd(m_stnC.md, m_stnC.build, m_stnC.turn);
            m_stnC.method = CODE_BT_MD;
        } else {
            dttomd(m_stnC.md, m_stnC.dls, m_stnC.tf);
            m_stnC.method = CODE_DLS_TF_MD;
        }

        if (walked == m_nWalkLine && !isCut) {
            m_stnC.target = m_strWalkTarget;
            m_dWalkedNS = m_stnC.ns;
            m_dWalkedEW = m_stnC.ew;
            m_dWalkedTVD = m_stnC.tvd;
        }
        append(m_stnC);
        m_stnPrev = m_stnC;
    }
}

// Finds where the plan must aim so that the walked well meets its target, and makes the walked
// profile the plan. Does nothing at all (m_nError untouched) when no walk-table entry is in use.
//   1. Starts from the plan as last saved (RestoreData), m_nError = 0.
//   2. The walk target: the first station, from 1 on along the lines (code 1 or more), of code exactly
//      1 (the last station of a multi-station line) whose target is named, not K_BACKTARGET and not
//      flagged. None: -16. Its target (gettar) is the real target O, kept unmoved, and the first aim A.
//   3. Up to MAX_WALK_PASSES passes: solve the whole plan, walk it, move A by the miss (real target
//      minus walked end); stop when the miss is below WALK_CLOSURE (the plan was then solved with the
//      previous aim); else write A into the walk line (settar) and into every target-array entry of
//      A's name and flag.
//   4. Converged with m_nError 0: the walked profile replaces the plan (NewData, LoadData). All passes
//      spent: -4, whatever m_nError held. Any other error stays, with the plan as the last pass left it.
//   5. In every case O is written back over every target-array entry of its name and flag.
// Deliberate: the passes end on a positive m_nError only, which no operation sets, so a failed solve
// or walk does not end them; the next pass simply tries again.
// A miss that is NaN can never close: the passes end there and the outcome is that of spent passes.
void CPlan::CalcWalk() {
    const int entries = std::min(m_nWalkEntries, static_cast<int>(m_walk.size()));
    if (entries < 1) return;

    m_walkStations.resize(static_cast<std::size_t>(entries) + WALK_STATION_SPARE +
                          m_stations.size());
    RestoreData();
    m_nError = ERR_NONE;

    m_nWalkLine = 1;
    while (codeAt(m_nWalkLine) >= 1) {
        const SStation& s = m_stations[m_nWalkLine];
        if (s.method == 1 && !s.target.empty() && s.target != K_BACKTARGET && !s.flag) break;
        ++m_nWalkLine;
    }
    if (codeAt(m_nWalkLine) < 1) {
        m_nError = ERR_NO_TARGET;
        return;
    }

    gettar(m_nWalkLine, 0);
    m_strWalkTarget = m_target.name;
    m_dWalkTargetNS = m_target.ns;
    m_dWalkTargetEW = m_target.ew;
    m_dWalkTargetTVD = m_target.tvd;
    STarget aim = m_target;
    const STarget real = m_target;

    auto writeTargets = [this](const STarget& t) {
        for (STarget& entry : m_targets)
            if (entry.name == t.name && entry.flag == t.flag) entry = t;
    };

    int pass = 0;
    for (; pass < MAX_WALK_PASSES; ++pass) {
        m_nPrev = 0;
        solval();
        if (m_nError > 0) break;
        wlkpro();
        if (m_nError > 0) break;

        const double dN = m_dWalkTargetNS - m_dWalkedNS;
        const double dE = m_dWalkTargetEW - m_dWalkedEW;
        const double dV = m_dWalkTargetTVD - m_dWalkedTVD;
        aim.ns += dN;
        aim.ew += dE;
        aim.tvd += dV;
        const double miss = std::sqrt(dN * dN + dE * dE + dV * dV);
        if (miss < WALK_CLOSURE) break;
        if (std::isnan(miss)) {
            pass = MAX_WALK_PASSES;
            break;
        }

        settar(m_nWalkLine, aim);
        writeTargets(aim);
    }

    if (pass < MAX_WALK_PASSES) {
        if (m_nError == ERR_NONE) {
            const int n = m_nWalkStations;
            NewData(n);
            for (int i = 0; i < n && static_cast<std::size_t>(i) < m_walkStations.size(); ++i)
                LoadData(i, m_walkStations[i]);
        }
    } else {
        m_nError = ERR_UNKNOWN_SOLUTION;
    }
    writeTargets(real);
}

// The plan as last saved, solved again from the tie-on. After a successful CalcWalk that is the
// aimed plan without the walk (solval saved it before its last solve).
// Reading taken: the solve starts from the tie-on (m_nPrev = 0). After CalcWalk the cursor points
// into the walked profile, which is longer than the plan whenever a line was cut, so a solve from
// the cursor would leave the restored plan unsolved.
void CPlan::RestoreWalk() {
    RestoreData();
    m_nPrev = 0;
    solval();
}
