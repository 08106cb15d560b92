// The point of the whole solved plan at a measured depth, vertical depth, inclination, azimuth,
// north or east coordinate: finds the stored part that holds the value and asks the line routine
// of that part's model. See CPlan::PlanPointAt in plan/CPlan.h for the contract.
#include <algorithm>
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

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

// The value of a station that a part of the plan is searched by: md, tvd, ns or ew.
double stationValue(const SStation& s, int quantity) {
    switch (quantity) {
    case CPlan::PLAN_MD: return s.md;
    case CPlan::PLAN_TVD: return s.tvd;
    case CPlan::PLAN_NORTH: return s.ns;
    default: return s.ew;
    }
}

}  // namespace

// Loads part k (station k-1 to station k) into m_stnPrev/m_stnC and returns the code of its line's
// first station, which chooses the line's model.
short CPlan::loadPart(int k) {
    m_stnPrev = m_stations[k - 1];
    m_stnC = m_stations[k];
    int j = k;
    while (j >= 2 && codeAt(j) == 1) --j;
    return codeAt(j);
}

// The point of part k at measured depth md, by the model of its line; true when found.
bool CPlan::partAtDepth(int k, double md) {
    const short code = loadPart(k);
    if (isBuildTurn(code)) {
        btmdint(md, true);
    } else if (!isConstantToolface(code)) {
        mcmdint(md, false);
    } else if (md - m_stnPrev.md >= CT_STEP) {  // the chain lays no arc in its first CT_STEP
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
}

// Searches parts from..n-1 of a plan of n stations for `value` as PlanPointAt describes, with the
// answer in m_stnA; the cursor, range and walk flag are put back and m_nError set as it says.
bool CPlan::pointFromPart(int quantity, double value, int from, int n) {
    const int cursor = m_nPrev, first = m_nFirst, last = m_nLast;
    const bool walkBounded = m_bWalkBounded;
    m_nError = ERR_NONE;
    int failure = ERR_NONE;
    bool found = false;
    const bool known = quantity >= PLAN_MD && quantity <= PLAN_EAST;
    if (known && n >= 2 && quantity == PLAN_MD && value > m_stations[n - 1].md) {
        loadPart(n - 1);
        mcmdint(value, false);
        found = true;
    } else if (known) {
        for (int k = std::max(from, 1); k < n && !found; ++k) {
            const SStation& a = m_stations[k - 1];
            const SStation& b = m_stations[k];
            m_nError = ERR_NONE;
            switch (quantity) {
            case PLAN_INC:
                loadPart(k);
                found = rcincint(value, true);
                break;
            case PLAN_AZI:
                loadPart(k);
                found = rcaziint(value, true);
                break;
            default:
                if (!between(value, stationValue(a, quantity), stationValue(b, quantity))) continue;
                if (quantity == PLAN_MD) {
                    found = partAtDepth(k, value);
                } else {
                    loadPart(k);
                    if (quantity == PLAN_TVD) mcvdint(value);
                    if (quantity == PLAN_NORTH) mcnsint(value);
                    if (quantity == PLAN_EAST) mcewint(value);
                    found = m_nError == ERR_NONE;
                }
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

bool CPlan::PlanPointAt(int quantity, double value) {
    return pointFromPart(quantity, value, 1, static_cast<int>(GetSize()));
}

// Many points in one pass. For md, tvd, north and east the first part that holds a value is found
// by bisection: along the plan, the range of station values seen so far (prefix minimum and maximum)
// only widens, and since the stations join up, the first part whose prefix range takes in the value
// is the first part that holds it. Inclination and azimuth are searched part by part.
std::size_t CPlan::PlanPointsAt(int quantity, std::size_t count, const double* values,
                                SStation* out, bool* found) {
    if (count == 0 || values == nullptr || out == nullptr) return 0;
    const int n = static_cast<int>(GetSize());
    const bool ranged = quantity == PLAN_MD || quantity == PLAN_TVD || quantity == PLAN_NORTH ||
                        quantity == PLAN_EAST;
    std::vector<double> low, high;  // prefix range of station values over stations 0 ... k
    if (ranged && hasStation(n - 1)) {
        low.resize(static_cast<std::size_t>(n));
        high.resize(static_cast<std::size_t>(n));
        for (int k = 0; k < n; ++k) {
            const double v = stationValue(m_stations[k], quantity);
            low[k] = k == 0 ? v : std::min(low[k - 1], v);
            high[k] = k == 0 ? v : std::max(high[k - 1], v);
        }
    }
    std::size_t hits = 0;
    int hint = 1;  // the part the value before was found from
    for (std::size_t i = 0; i < count; ++i) {
        int from = 1;
        if (!low.empty()) {
            // The first k >= 1 with low[k] <= v <= high[k]: both tests only turn true along k.
            // Sorted values find theirs where the value before did, or in the next part; any other
            // value by bisection.
            const double v = values[i];
            const auto holds = [&](int k) { return low[k] <= v && v <= high[k]; };
            const auto isFirst = [&](int k) {
                return k < n && holds(k) && (k == 1 || !holds(k - 1));
            };
            if (isFirst(hint)) {
                from = hint;
            } else if (isFirst(hint + 1)) {
                from = hint + 1;
            } else {
                int lo = 1, hi = n;  // answer in [lo, hi]; hi = n means none
                while (lo < hi) {
                    const int mid = lo + (hi - lo) / 2;
                    if (holds(mid))
                        hi = mid;
                    else
                        lo = mid + 1;
                }
                from = lo;
            }
            hint = from;
        }
        const bool ok = pointFromPart(quantity, values[i], from, n);
        out[i] = m_stnA;
        if (found != nullptr) found[i] = ok;
        if (ok) ++hits;
    }
    return hits;
}
