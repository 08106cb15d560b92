// The point of the whole solved plan at a measured depth, vertical depth, inclination, azimuth,
// north or east coordinate: finds the stored part that holds the value and asks the line routine
// of that part's model. See CPlan::PlanPointAt in plan/CPlan.h for the contract.
#include <algorithm>
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Length of the arcs of which constant_toolface chains its curve [L]; the chain lays no arc in
/// the first 1.0 past a line's start.
constexpr double CT_FIRST_ARC = 1.0;

bool isBuildTurn(short code) {
    return code == 105 || code == 115 || code == 125 || code == 135;
}

bool isConstantToolface(short code) {
    return code == 51 || code == 101 || code == 111 || code == 121 || code == 131;
}

/// x lies between the two ends, both included.
bool between(double x, double a, double b) {
    return std::min(a, b) <= x && x <= std::max(a, b);
}

}  // namespace

bool CPlan::PlanPointAt(int quantity, double value) {
    const int cursor = m_nPrev, first = m_nFirst, last = m_nLast;
    const bool walkBounded = m_bWalkBounded;
    const int n = static_cast<int>(GetSize());  // stations 0 ... n-1; lines from station 1

    // Loads part k (station k-1 to station k) and returns the code of its line's first station.
    auto load = [this](int k) {
        m_stnPrev = m_stations[k - 1];
        m_stnC = m_stations[k];
        int j = k;
        while (j >= 2 && codeAt(j) == 1) --j;
        return codeAt(j);
    };

    // The point of part k at measured depth md, by the model of its line.
    auto atDepth = [this, &load](int k, double md) {
        const short code = load(k);
        if (isBuildTurn(code)) {
            btmdint(md, true);
        } else if (!isConstantToolface(code)) {
            mcmdint(md, false);
        } else if (md - m_stnPrev.md >= CT_FIRST_ARC) {
            ctmdint(md, true);
        } else if (md <= m_stnPrev.md) {
            m_stnA = m_stnPrev;
        } else {
            // The first arc of the chain, as constant_toolface would lay it (ctmdint lays none).
            const SStation end = m_stnC;
            if (is_zero(m_stnPrev.inc)) m_stnPrev.azi = m_stnC.azi;
            m_stnC.md = md;
            dttomd(md, end.dls, end.tf);
            m_stnA = m_stnC;
            m_stnC = end;
        }
        return m_nError == ERR_NONE;
    };

    m_nError = ERR_NONE;
    int failure = ERR_NONE;
    bool found = false;
    const bool known = quantity >= PLAN_MD && quantity <= PLAN_EAST;
    if (known && n >= 2 && quantity == PLAN_MD && value > m_stations[n - 1].md) {
        load(n - 1);
        mcmdint(value, false);
        found = true;
    } else if (known) {
        for (int k = 1; k < n && !found; ++k) {
            const SStation& a = m_stations[k - 1];
            const SStation& b = m_stations[k];
            m_nError = ERR_NONE;
            switch (quantity) {
            case PLAN_MD:
                if (!between(value, a.md, b.md)) continue;
                found = atDepth(k, value);
                break;
            case PLAN_TVD:
                if (!between(value, a.tvd, b.tvd)) continue;
                load(k);
                mcvdint(value);
                found = m_nError == ERR_NONE;
                break;
            case PLAN_INC:
                load(k);
                found = rcincint(value, true);
                break;
            case PLAN_AZI:
                load(k);
                found = rcaziint(value, true);
                break;
            case PLAN_NORTH:
                if (!between(value, a.ns, b.ns)) continue;
                load(k);
                mcnsint(value);
                found = true;
                break;
            default:
                if (!between(value, a.ew, b.ew)) continue;
                load(k);
                mcewint(value);
                found = true;
                break;
            }
            if (!found && m_nError != ERR_NONE) failure = m_nError;
        }
    }

    m_nPrev = cursor;
    m_nFirst = first;
    m_nLast = last;
    m_bWalkBounded = walkBounded;
    m_nError = found ? ERR_NONE : (failure != ERR_NONE ? failure : ERR_TVD_UNREACHABLE);
    return found;
}
