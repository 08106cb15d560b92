// Dogleg/toolface arcs (drop/turn) and constant-toolface curves.
//
// A dogleg/toolface arc is one circular arc of dogleg severity K whose plane is set by the toolface
// TF at its start. A constant-toolface curve keeps its toolface relative to the hole's high side all
// the way; it is built as a chain of such arcs, each 1.0 length unit long.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Most arcs one constant-toolface walk may lay: 10,000 steps of 1.0 is 10 km in metres or 10,000
/// ft, longer than any constant-toolface line of a real well (at 1 degree per 100 ft it would turn
/// through 100 degrees). A walk that would go further (a curve that never reaches its depth or
/// azimuth, a dogleg severity of zero, a line of absurd length) stops there and fails with -17
/// instead of running on; the bound also keeps every such call to a millisecond or so.
constexpr long MAX_CT_STEPS = 10000;

/// Arcs of CT_STEP can be laid from md: a depth one CT_STEP beyond it is exact. Not so from a start
/// of 2^52 or more (or none at all), where the chain's depths could not be told apart and a walk
/// would lay thousands of meaningless arcs; such a walk ends at once as at its bound.
bool arcsFit(double md) {
    return md + CT_STEP - md == CT_STEP;
}

/// What a walk's judge says of the arc just laid.
enum WalkStep { WALK_ON, WALK_DONE, WALK_GIVE_UP };

/// Arcs between two marked arcs of a constant-toolface walk: a point of a curve is reached from the
/// last mark before it in at most this many arcs, and the marks of the longest walk take
/// MAX_CT_STEPS / WALK_MARK_EVERY * MARK_SIZE doubles (60 kB).
constexpr long WALK_MARK_EVERY = 32;
/// Doubles per mark: the 11 fields a walk writes into m_stnC, then m_nError.
constexpr std::size_t MARK_SIZE = 12;

// The fields a constant-toolface walk writes into m_stnC, into v[0 .. 10] in the order its memo
// keeps them.
void keepArc(const SStation& s, double* v) {
    const double f[11] = {s.md,  s.inc, s.azi, s.tvd,   s.ns,  s.ew,
                          s.dls, s.tf,  s.dl,  s.build, s.turn};
    std::copy(f, f + 11, v);
}
void putArc(const double* v, SStation& s) {
    s.md = v[0], s.inc = v[1], s.azi = v[2], s.tvd = v[3], s.ns = v[4], s.ew = v[5];
    s.dls = v[6], s.tf = v[7], s.dl = v[8], s.build = v[9], s.turn = v[10];
}

}  // namespace

// A constant-toolface walk: arcs of CT_STEP from m_stnPrev (dttomd with dls and tf, each from the
// last arc's end) until `judge` (asked after each arc, with the arc's start in m_stnPrev and its end
// in m_stnC) says WALK_DONE or WALK_GIVE_UP. After MAX_CT_STEPS arcs the walk stops with
// m_bWalkBounded set, as it does at once from a start where arcs do not fit (arcsFit).
// m_stnPrev is put back afterwards; m_stnC holds what the last arc or the judge left.
template <typename Judge>
void CPlan::walkArcs(double dls, double tf, Judge judge) {
    const SStation s0 = m_stnPrev;
    walkMemoFor(s0, dls, tf);
    double md = s0.md + CT_STEP;
    const bool fits = arcsFit(s0.md);
    bool full = fits;  // every arc so far of full length
    for (long steps = 0;; ++steps) {
        if (steps >= MAX_CT_STEPS || !fits) {
            m_bWalkBounded = true;
            break;
        }
        const double before = m_stnPrev.md;
        m_stnC.md = md;
        dttomd(md, dls, tf);
        full = full && m_stnC.md == md && md > before;
        if (full) markArc(steps + 1);
        if (judge() != WALK_ON) break;
        m_stnPrev = m_stnC;
        md += CT_STEP;
    }
    m_stnPrev = s0;
}

// A dogleg/toolface arc from m_stnPrev to measured depth md (a course length when it is not beyond
// the start), with dogleg severity dls and toolface tf (wrapped into (-pi, pi]): end direction by
// solve4 and solve3 for the dogleg L dls, position by the arc step meth_optdl1, then build
// (I2 - I1) / L and turn from the azimuth change. A course of zero (|L| <= 1e-6) fails with -18.
// Sets m_nPrev = 1 and clears m_nError first.
void CPlan::dttomd(double md, double dls, double tf) {
    m_nError = ERR_NONE;
    m_nPrev = 1;
    m_stnC.tf = getdaz(tf);
    m_stnC.dls = dls;
    if (md <= m_stnPrev.md) md += m_stnPrev.md;
    m_stnC.md = md;
    const double L = md - m_stnPrev.md;
    if (is_zero(L)) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    m_stnC.dl = L * dls;
    // The arc step sets the end direction itself wherever it lays an arc, reading solve3's azimuth
    // only from a vertical start; what it would overwrite is not worked out (a constant-toolface
    // walk lays thousands of these arcs).
    const bool laid = arcStepLays();
    if (!laid) solve4();
    if (!laid || is_zero(m_stnPrev.inc)) solve3();
    meth_optdl1();
    m_stnC.turn = 0.0;
    m_stnC.build = (m_stnC.inc - m_stnPrev.inc) / L;
    m_stnC.turn = daz2hdls(getdaz(m_stnC.azi - m_stnPrev.azi), L, m_stnPrev.inc, m_stnC.build);
}

// A dogleg/toolface arc from m_stnPrev to vertical depth tvd: the dogleg that reaches the depth on
// the circle (solve11; its error does not stop the step), then the end direction (solve4, solve3),
// the length dl / dls and the arc step. A line of no length (|L| <= 1e-6, e.g. dls zero) fails with
// -17. Sets m_nPrev = 1 and clears m_nError first.
void CPlan::dttotvd(double tvd, double dls, double tf) {
    m_stnC.tf = getdaz(tf);
    m_nPrev = 1;
    m_nError = ERR_NONE;
    m_stnC.dls = dls;
    m_stnC.tvd = tvd;
    solve11();
    solve4();
    solve3();
    double L = 0.0;
    if (is_nonzero(dls)) {
        L = m_stnC.dl / dls;
        m_stnC.md = m_stnPrev.md + L;
    }
    meth_optdl1();
    m_stnC.build = 0.0;
    m_stnC.turn = 0.0;
    if (is_zero(L)) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    m_stnC.build = (m_stnC.inc - m_stnPrev.inc) / L;
    m_stnC.turn = daz2hdls(getdaz(m_stnC.azi - m_stnPrev.azi), L, m_stnPrev.inc, m_stnC.build);
}

// A constant-toolface curve from m_stnPrev to m_stnC.md with m_stnC.dls and m_stnC.tf: arcs of 1.0
// from the start, each starting where the last ended with the same toolface measured from its own
// high side; the last arc is shortened to end exactly at the end depth. A line shorter than 1.0 is
// left as it was loaded. m_stnPrev is put back afterwards; m_stnC holds the end. A curve longer than
// MAX_CT_STEPS arcs fails with -17 (m_bWalkBounded set) without laying an arc, as does one from a
// start where arcs do not fit (arcsFit).
// Arcs already laid from the same start with the same severity and toolface are not laid again
// (m_walkMemos): the same walk is copied whole, and a walk to any depth goes on from the last marked
// arc at least CT_STEP short of it, which that walk would lay just the same (the shortening of the
// last arc only starts within CT_STEP of the end). Arcs count as of full length, and may be marked,
// while each ends exactly at its own depth, one CT_STEP beyond the one before.
void CPlan::constant_toolface() {
    const SStation s0 = m_stnPrev;
    const double K = m_stnC.dls, TF = m_stnC.tf, end = m_stnC.md;
    const bool exact = arcsFit(s0.md);
    // From a start where arcs do not fit, and to an end beyond MAX_CT_STEPS full arcs, the walk
    // would stop at its bound: it stops there at once, laying nothing.
    if ((!exact && s0.md + CT_STEP <= end) ||
        (exact && s0.md + static_cast<double>(MAX_CT_STEPS + 1) * CT_STEP <= end)) {
        m_bWalkBounded = true;
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    const bool known = walkMemoFor(s0, K, TF);
    SWalkMemo& memo = m_walkMemos[m_walkAt];
    if (known && memo.hasEnd && memo.endKey == bits_of(end)) {
        if (memo.laid) {
            putArc(memo.end, m_stnC);
            m_nPrev = 1;
            m_nError = memo.error;
            if (memo.bounded) m_bWalkBounded = true;
        }
        return;
    }

    double step = CT_STEP;
    double md = s0.md + CT_STEP;
    long steps = 0;
    bool full = exact;  // every arc so far of full length
    // The last mark at least CT_STEP short of the end (marks lie at increasing depths).
    std::size_t usable = memo.marks.size() / MARK_SIZE;
    while (usable > 0 && end - CT_STEP < memo.marks[(usable - 1) * MARK_SIZE]) --usable;
    if (usable > 0) {
        const double* mark = &memo.marks[(usable - 1) * MARK_SIZE];
        putArc(mark, m_stnC);
        m_stnPrev = m_stnC;
        m_nPrev = 1;
        m_nError = static_cast<int>(mark[11]);
        steps = static_cast<long>(usable) * WALK_MARK_EVERY;
        md = mark[0] + CT_STEP;
    }
    bool bounded = false;
    while (md <= end) {
        if (++steps > MAX_CT_STEPS) {
            bounded = m_bWalkBounded = true;
            m_nError = ERR_TVD_UNREACHABLE;
            break;
        }
        const double before = m_stnPrev.md;
        full = full && step == CT_STEP;
        m_stnC.md = md;
        dttomd(md, K, TF);
        m_stnPrev = m_stnC;
        full = full && m_stnC.md == md && md > before;
        if (full) markArc(steps);
        if (end - step < m_stnC.md && m_stnC.md < end) step = end - m_stnC.md;
        md += step;
    }
    m_stnPrev = s0;
    if (!memo.valid) return;
    memo.hasEnd = true;
    memo.endKey = bits_of(end);
    memo.laid = steps > 0;
    keepArc(m_stnC, memo.end);
    memo.error = m_nError;
    memo.bounded = bounded;
}

// Points m_walkAt at the memo of the walks from s0 with dogleg severity K and toolface TF (as dttomd
// is given them) in the present curvature model, and says whether it held them already; a start not
// held takes the memo used longest ago, emptied. Only a start where arcs fit is recorded: its first
// arc is of full length, so a walk from it writes every field the memo keeps.
bool CPlan::walkMemoFor(const SStation& s0, double K, double TF) {
    const std::uint64_t key[9] = {bits_of(s0.md),  bits_of(s0.inc), bits_of(s0.azi),
                                  bits_of(s0.tvd), bits_of(s0.ns),  bits_of(s0.ew),
                                  bits_of(K),      bits_of(TF),     m_bHorizontalTurn};
    const bool exact = arcsFit(s0.md);
    for (unsigned i = 0; exact && i < WALK_STARTS; ++i) {
        if (m_walkMemos[i].valid && std::equal(key, key + 9, m_walkMemos[i].key)) {
            m_walkAt = i;
            return true;
        }
    }
    m_walkAt = m_walkNext;
    m_walkNext = (m_walkNext + 1) % WALK_STARTS;
    SWalkMemo& memo = m_walkMemos[m_walkAt];
    memo.valid = exact;
    std::copy(key, key + 9, memo.key);
    memo.hasEnd = false;
    memo.marks.clear();
    return false;
}

// Marks arc `arc` of the walk under way (just laid into m_stnC, every arc before it of full length)
// in its memo when it is the next one to be marked.
void CPlan::markArc(long arc) {
    SWalkMemo& memo = m_walkMemos[m_walkAt];
    const std::size_t n = memo.marks.size();
    if (!memo.valid || arc % WALK_MARK_EVERY != 0 ||
        static_cast<std::size_t>(arc / WALK_MARK_EVERY) != n / MARK_SIZE + 1)
        return;
    memo.marks.resize(n + MARK_SIZE);
    keepArc(m_stnC, &memo.marks[n]);
    memo.marks[n + 11] = m_nError;
}

// A constant-toolface curve from m_stnPrev to measured depth md (a course length when it is not
// beyond the start); a course of exactly zero fails with -18. Sets m_nPrev = 1 and clears m_nError.
void CPlan::cttomd(double md, double dls, double tf) {
    m_nPrev = 1;
    m_nError = ERR_NONE;
    m_bWalkBounded = false;
    if (md <= m_stnPrev.md) md += m_stnPrev.md;
    m_stnC.md = md;
    if (m_stnPrev.md == md) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    m_stnC.dls = dls;
    m_stnC.tf = tf;
    constant_toolface();
}

// A constant-toolface curve from m_stnPrev to vertical depth tvd: arcs of 1.0 until an arc passes the
// depth, then one dogleg/toolface arc from that arc's start to the depth. The walk gives up (-17)
// when an arc's depth change turns against the wanted one (the curve turns away from the depth), or
// after MAX_CT_STEPS arcs (a curve whose depth never changes would otherwise walk for ever); a depth
// that is not a number ends it at once as at that bound. Sets m_nPrev = 1 and clears m_nError first.
void CPlan::cttotvd(double tvd, double dls, double tf) {
    m_stnC.tvd = tvd;
    const double D = tvd - m_stnPrev.tvd;
    m_nPrev = 1;
    m_nError = ERR_NONE;
    m_bWalkBounded = false;
    if (std::isnan(D)) {
        // A depth that is not a number is never reached: the walk ends as at its bound.
        m_bWalkBounded = true;
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    bool found = false;
    walkArcs(dls, tf, [&]() {
        const double d = m_stnC.tvd - m_stnPrev.tvd;
        const bool down = D > 0.0;
        if (down ? d < 0.0 : d > 0.0) return WALK_GIVE_UP;
        if (down ? tvd < m_stnC.tvd : tvd > m_stnC.tvd) {
            dttotvd(tvd, dls, tf);
            found = true;
            return WALK_DONE;
        }
        return WALK_ON;
    });
    if (found) {
        m_stnC.dls = dls;
        m_stnC.tf = tf;
    } else {
        m_nError = ERR_TVD_UNREACHABLE;
    }
}

// Solves the constant-toolface line after station m_nPrev and commits it:
//   101 "CT1 MD": the curve to the line's measured depth;
//   111 "CT2 TVD": the curve to the depth of the line's target (when valid), else its own depth;
//   121 "CT3 Inc.": inclination changes at K cos TF per unit length, so M2 = M1 + dI / cos TF / K;
//   131 "CT4 Azm.": the end azimuth reached by turning the way the toolface turns (the long way when
//        the azimuth lies the other way); a walk of arcs of 1.0 finds the arc that passes it;
//   51 "Inc Azi DCT": toolface and length of the constant-toolface curve between two directions: in
//        a constant-toolface curve dA / d(ln tan(I/2)) = tan TF, so tan TF = |dA| / ln(tan(I2/2) /
//        tan(I1/2)) (toolface +-pi/2 and length sin I1 |dA| / K for a flat turn).
// The curve is then laid by constant_toolface to the depth found, and the end angles the user gave
// are put back exactly (inclination for 121 and 51, azimuth for 131 and 51). Errors of the steps are
// cleared when the line is committed, except a walk stopped at its step bound, which fails the line
// with -17.
void CPlan::meth1c() {
    if (!loadLine()) return;
    // The single-line steps used below move the cursor (they set m_nPrev to 1 for their own
    // callers); the line's own place is kept here.
    const int prev = m_nPrev;
    const int line = prev + 1;
    SStation& C = m_stnC;
    const double M1 = m_stnPrev.md, I1 = m_stnPrev.inc;
    m_nError = ERR_NONE;
    m_bWalkBounded = false;
    const double K = C.dls, TF = C.tf;

    switch (C.method) {
    case 101: cttomd(C.md, K, TF); break;
    case 111:
        gettar(line, 0);
        if (IsTargetKeyValid(m_target.name) && !m_target.flag) {
            C.tvd = m_target.tvd;
            C.target = m_target.name;
            C.flag = m_target.flag;
        }
        cttotvd(C.tvd, K, TF);
        break;
    case 121: C.md = (C.inc - I1) / std::cos(TF) / K + M1; break;
    case 131: {
        const double dA = getdaz(C.azi - m_stnPrev.azi);
        double aim = m_stnPrev.azi + dA;
        if (TF >= 0.0 && dA < 0.0) aim += TWO_PI;
        if (TF < 0.0 && dA > 0.0) aim -= TWO_PI;
        C.azi = aim;
        walkToAzimuth(aim, K, TF);
        break;
    }
    case 51: {
        const double I2 = C.inc;
        double A2 = C.azi;
        if (I2 == 0.0) A2 = m_stnPrev.azi;
        if (I1 == 0.0) m_stnPrev.azi = A2;
        const double dI = I2 - I1;
        const double dA = getdaz(A2 - m_stnPrev.azi);
        if (dI == 0.0) {
            C.tf = dA < 0.0 ? -HALF_PI : HALF_PI;
            C.build = 0.0;
            C.md = M1 + std::sin(I1) * std::fabs(dA) / K;
        } else {
            double tf = std::atan(std::fabs(dA) / std::log(std::tan(I2 / 2) / std::tan(I1 / 2)));
            if (tf < 0.0) tf += PI;
            if (dA < 0.0) tf = -tf;
            C.tf = tf;
            C.build = std::cos(tf) * K;
            C.md = M1 + dI / std::cos(tf) / K;
        }
        break;
    }
    default: return;
    }
    if (!m_bWalkBounded) constant_toolface();
    m_nPrev = prev;
    if (m_bWalkBounded) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    const SStation& given = m_stations[line];
    if (C.method == 121 || C.method == 51) C.inc = given.inc;
    if (C.method == 131 || C.method == 51) C.azi = given.azi;
    m_stations[line] = m_stnC;
    m_nPrev = prev + 1;
    m_nError = ERR_NONE;
}

// The walk of "CT4 Azm.": arcs of 1.0 (dttomd with K and TF from each arc's end) until one passes the
// aim azimuth. Turning right (TF > 0) the walk gives up when an arc turns left and ends when the aim
// lies below an arc's end azimuth; turning left (TF <= 0) the other way round. Azimuths are compared
// as they stand, without wrapping, so a turn through north gives up.
// On ending, m_stnC.md is first set to the depth interpolated on that last arc at the aim azimuth,
// and then the arc from that last arc's start is laid again to the depth m_stnC held before the walk,
// which replaces the interpolated one: this order is the line method's long-standing behaviour and is
// kept, so the line ends at its stored depth. The start station is put back afterwards. A walk of
// MAX_CT_STEPS arcs stops with m_bWalkBounded set, as does at once an aim that is not a number.
void CPlan::walkToAzimuth(double aim, double K, double TF) {
    if (std::isnan(aim)) {
        // An azimuth that is not a number is never passed: the walk ends as at its bound.
        m_bWalkBounded = true;
        return;
    }
    const SStation c0 = m_stnC;
    const bool right = c0.tf > 0.0;
    walkArcs(K, TF, [&]() {
        const double a1 = m_stnPrev.azi, a2 = m_stnC.azi;
        if (right ? a2 - a1 < 0.0 : a2 - a1 > 0.0) return WALK_GIVE_UP;
        if (right ? aim < a2 : aim > a2) {
            m_stnC.md = m_stnPrev.md + (m_stnC.md - m_stnPrev.md) * (aim - a1) / (a2 - a1);
            dttomd(c0.md, K, TF);
            return WALK_DONE;
        }
        return WALK_ON;
    });
}
