// Solving the plan: backward lines from the bottom up, forward lines from the cursor, then a check
// that measured depth rises along the plan. A failing forward line puts the plan back as it stood.
#include <cmath>
#include <cstdlib>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Lines solved in one forward pass before the solver gives up with -4: a line method that does not
/// advance the cursor would otherwise hold the solver for ever.
constexpr int MAX_LINES_SOLVED = 1000;
/// Method code of an insert point, a line still to be filled by PutData.
constexpr short INSERT_POINT = 9999;

}  // namespace

// True when every solved value of stations first ... last (those inside the array) is finite.
bool CPlan::finiteStations(int first, int last) const {
    for (int k = first; k <= last && hasStation(k); ++k) {
        const SStation& s = m_stations[k];
        for (double v : {s.md, s.inc, s.azi, s.tvd, s.ns, s.ew, s.dls, s.tf, s.build, s.turn})
            if (!std::isfinite(v)) return false;
    }
    return true;
}

// Re-solves the plan after a change; outcome in m_nError, m_nFirst/m_nLast (the failing line's
// stations) and m_nPrev (the cursor).
//
// 1. The station array is saved; S is the starting cursor (a negative one counts as 0).
// 2. Backward lines (negative codes) are solved from the bottom up by DoBackwards; a change of a
//    backward line's measured depth moves every station after it, up to the first of code 0 or
//    below. A failing backward line returns at once, without putting the plan back. Once a backward
//    line is solved the forward pass starts from the tie-on.
// 3. An insert point at or after the cursor fails with -6 and puts the plan back.
// 4. Forward lines from the cursor, each handed to its family by its code q (r = |q| mod 1000):
//    r >= 900 target methods (meth3d); q > 1000 two-dimensional profiles (meth2d; 1000 itself is
//    nothing); 0 <= q < 1000 by the last digit: 1 constant toolface (meth1c), 0 the first family
//    (meth1d), 2 to 9 build/turn (meth1b); q < 0 a backward line already solved, whose stored course
//    length is turned into its end depth. A change of a line's end depth moves every station after
//    it. More than 1000 lines in one pass fails with -4.
// 5. Measured depth must rise: a station less than 0.001 deeper than the one before is pushed to
//    exactly 0.001 below it; one that lies shallower by more than 0.001 fails with -10.
// 6. On failure the saved array is put back, the cursor returns to S, and the target transfer
//    record is loaded again for the line after S. The one exception is the failing line's own
//    stored record when its method corrected it to a value that would work (m_nSuggested): it keeps
//    the correction, so that the client reads the suggestion back.
void CPlan::solval() {
    m_nError = ERR_NONE;
    m_nSuggested = -1;
    if (m_nPrev < 0) m_nPrev = 0;
    m_saved = m_stations;
    const int start = m_nPrev;

    // The plan's length: solving writes stations but never ends the plan earlier or later (no line
    // method writes a code of 0), so it is counted once.
    const int size = static_cast<int>(GetSize());

    // Moves every station after `after` by d, as long as they belong to forward lines.
    auto shiftFollowing = [this, size](int after, double d) {
        if (d == 0.0) return;
        for (int k = after + 1; k < size && codeAt(k) >= 1; ++k) m_stations[k].md += d;
    };

    unsigned i = static_cast<unsigned>(size) - 1;
    while (i != 0 && hasStation(static_cast<int>(i))) {
        if (m_stations[i].method >= 0) {
            --i;
            continue;
        }
        const double m0 = m_stations[i].md;
        DoBackwards(i);
        if (!hasStation(static_cast<int>(i))) break;
        if (i >= 1 && m_stations[i - 1].method == INSERT_POINT) m_stations[i - 1].method = 1;
        if (m_nError != ERR_NONE) {
            m_nFirst = m_nLast = static_cast<int>(i);
            return;
        }
        shiftFollowing(static_cast<int>(i), m_stations[i].md - m0);
        m_nPrev = 0;
        --i;
    }

    for (int k = 0; hasStation(k); ++k) {
        if (m_stations[k].method != INSERT_POINT) continue;
        if (k >= m_nPrev) {
            m_nError = ERR_INSERT_TIE;
            m_stations = m_saved;
            m_nPrev = m_nLast = m_nFirst = 0;
            return;
        }
        break;
    }

    if (m_nPrev < size) {
        int passes = 0;
        for (;;) {
            const short q = codeAt(m_nPrev + 1);
            const int p = std::abs(q) / 1000;
            const int r = std::abs(q) % 1000;
            const int e = m_nPrev + 1 + p;
            const double e0 = hasStation(e) ? m_stations[e].md : 0.0;
            if (++passes > MAX_LINES_SOLVED) {
                m_nError = ERR_UNKNOWN_SOLUTION;
                m_nFirst = m_nLast = m_nPrev + 1;
                break;
            }
            if (q == 0) break;
            const int startOfLine = m_nPrev;
            if (r >= 900) {
                meth3d();
            } else if (q >= 1000) {
                if (q > 1000) meth2d();
            } else if (q >= 0) {
                switch (q % 10) {
                case 1: meth1c(); break;
                case 0: meth1d(); break;
                default: meth1b(); break;
                }
            } else {
                // A backward line holds its course length; its end depth follows from its start.
                m_stations[m_nPrev + 1].md += m_stations[m_nPrev].md;
                ++m_nPrev;
            }
            // A line whose formulas ran out of the numbers (an infinity or NaN in what it wrote)
            // is not stored: it fails as an unknown solution problem.
            if (m_nError == ERR_NONE && !finiteStations(startOfLine + 1, m_nPrev)) {
                m_nPrev = startOfLine;
                m_nError = ERR_UNKNOWN_SOLUTION;
            }
            if (m_nError != ERR_NONE) {
                m_nFirst = m_nLast = m_nPrev + 1;
                while (m_nLast > 0 && codeAt(m_nLast) == 1) --m_nLast;
                break;
            }
            if (hasStation(e)) shiftFollowing(e, m_stations[e].md - e0);
            if (m_nPrev >= size) break;
        }
    }

    if (m_nError == ERR_NONE) {
        for (int k = 1; k < size && m_stations[k].method != 0; ++k) {
            const double above = m_stations[k - 1].md;
            if (above < m_stations[k].md) continue;
            if (above - DEPTH_NUDGE > m_stations[k].md) {
                m_nError = ERR_TANGENT_OVERLAP;
                m_nFirst = m_nLast = k;
                break;
            }
            m_stations[k].md = above + DEPTH_NUDGE;
        }
        if (m_nError == ERR_NONE) return;
    }

    const bool suggested =
        hasStation(m_nSuggested) && static_cast<std::size_t>(m_nSuggested) < m_saved.size();
    const SStation corrected = suggested ? m_stations[m_nSuggested] : SStation();
    m_stations = m_saved;
    if (suggested) {
        // Only the values a line method corrects; depths and positions stay as saved.
        SStation& s = m_stations[m_nSuggested];
        s.inc = corrected.inc;
        s.build = corrected.build;
        s.turn = corrected.turn;
    }
    m_nPrev = start;
    const short q = codeAt(start + 1);
    gettar(start + std::abs(q) / 1000 + 1, q);
}
