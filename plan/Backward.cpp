// Backward lines: lines solved from their end (a target with its arrival direction) back to their
// start.
//
// Station i of a backward line (codes -10 ... -60) is its end T, with the arrival direction
// t_e = t(I_e, A_e) stored in its inc, azi, the curvature K in dls and the arrival toolface TF in tf;
// station i - 1 is its start, which the solve computes and writes. The start quantity that closes
// the line is kept in aux1, aux2 of station i (see putBackward):
//
//   code  name             given at the start                 solved by (reversed frame)
//   -20   "BACK to CL"     course length CL (aux1)            solve4 + solve3 at DL = K CL
//   -30   "BACK to TVD"    start depth V_s (aux1)             the circle's depth roots, solve4 +
//                                                             solve3; solve12 when K is zero
//   -40   "BACK to Inc"    start inclination I_s (aux1)       solve10 + solve3 (+ solve4)
//   -60   "BACK to IncAz"  start direction I_s, A_s (aux1, 2) solve1 + solve2
//   -50   "BACK Surface"   the tie-on's depth V0              straight back along t_e
//   -10   "BACK Target"    back-target B (station i - 1)      backcal through ptoang
//
// The toolface is the arrival toolface: the curvature vector at the end is
// kappa = cos TF h + sin TF r, with h = (cos I sin A, cos I cos A, -sin I) the high side and
// r = (cos A, -sin A, 0) the right side of the arrival direction, so TF = 0 arrives building. With
// R = 1/K the arc turned back by the dogleg DL from the end starts at
//   P = T - R sin DL t_e + R (1 - cos DL) kappa, heading t_s = cos DL t_e - sin DL kappa.
// The solvers work forwards, so salvo drills the line backwards: from T along -t_e, which is the
// direction (pi - I_e, A_e + pi); that direction has the same high side and the opposite right side,
// so the same curve leaves T with the toolface -TF. The reversed line's end, turned round, is the
// start.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// A direction turned round: (inc, azi) of -t(inc, azi).
void reverse(double& inc, double& azi) {
    inc = PI - inc;
    azi = CPlan::deltaz(azi + PI);
}

}  // namespace

// Solves one backward line in the reversed frame.
// On entry m_stnPrev holds the end reversed: T's tvd, ns, ew, inc pi - I_e, azi A_e + pi, md 0 and
// its unit direction; m_stnC holds the givens reversed: dls K, tf -TF, and by code md CL (-20), tvd
// V_s (-30, -50), inc pi - I_s (-40, -60), azi A_s + pi (-60); m_stnA holds B's tvd, ns, ew (-10).
// On exit m_stnC holds the reversed start: md = L (the course length), inc, azi, tvd, ns, ew; dl the
// dogleg DL and tf the toolface of the reversed arc at T (the arrival toolface negated). m_nError is
// 0 or the line's failure code; on failure m_stnC is scratch.
//   -20  DL = K CL, L = CL; a zero K is a straight line of length CL. CL <= TOL_ZERO: -18.
//   -30  K > 0: the smallest DL in (0, pi/2] at which the arc reaches V_s; L = DL / K. Its depth
//        relation dV K = cos I' sin DL - sin I' cos TF' (1 - cos DL) (I', TF' reversed) reads
//        sqrt(S) sin(DL + phi) = w with p = cos I', q = sin I' cos TF', S = p^2 + q^2,
//        phi = atan2(q, p), w = dV K + q, so its roots are DL = alpha - phi and pi - alpha - phi,
//        alpha = asin(w / sqrt(S)). Both roots are taken here, not through solve11: solve11 keeps
//        one of its two candidates, not always the smaller. No root in (0, pi/2] (S zero, |w| above
//        sqrt(S), both roots outside): -17. K zero: straight, L = (T.tvd - V_s) / cos I_e by solve12;
//        cos I_e within TOL_ZERO of 0 is -7 (solve12's own test), L <= 0 is -17.
//   -40  K zero: -1. The smallest DL in (0, pi] at which the start inclination is I_s (solve10,
//        which takes the smaller of its two checked candidates); L = DL / K. I_s = I_e within
//        TOL_ZERO, or no such DL: -14.
//   -60  K zero: -1. DL and the toolface from the two directions (solve2, solve1); L = DL / K. DL
//        within TOL_ZERO of zero is a zero DL and L = 0: the start is the target.
//   -50  straight back to the tie-on depth V0: L = (T.tvd - V0) / cos I_e. cos I_e <= TOL_ZERO (a
//        level or rising arrival) or L < 0 (the target above the tie-on): -7.
//   -10  the one circle through B tangent to t_e at T (backcal): DL = its dogleg, L its length.
//        Straight (DL = 0, L = |T - B|) when B lies on the arrival line behind T or within
//        MIN_CHORD of it. |T - B| <= TOL_ZERO, or B on the arrival line ahead of T (the cosine
//        between the reversed direction and the chord at or below -STRAIGHT_COS): -12.
// Every arc but the -10 circle must be shorter than pi (DL <= pi - TOL_ZERO), the bound of every
// arc of the plan: the minimum-curvature step that lays it, and every later reading of the line,
// cannot tell a longer arc from its shorter complement. Reading taken where the codes name no
// failure for it: a longer -20 or -60 arc fails with -4, a longer -40 arc counts as no such DL
// (-14). The -10 circle is laid by backcal itself and is the one circle there is, so it keeps any
// dogleg below 2 pi.
void CPlan::salvo(int code) {
    m_nError = ERR_NONE;
    const double K = m_stnC.dls;
    const auto fail = [this](int error) { m_nError = error; };
    const auto tooLong = [](double dl) { return dl > PI - TOL_ZERO; };
    const double Vs = m_stnC.tvd;  // the start depth wanted by -30 [L]

    switch (code) {
    case -20: {
        const double CL = m_stnC.md;
        if (!(CL > TOL_ZERO)) return fail(ERR_BUILD_SIGN);
        m_stnC.dl = is_zero(K) ? 0.0 : K * CL;
        if (tooLong(m_stnC.dl)) return fail(ERR_UNKNOWN_SOLUTION);
        solve4();
        solve3();
        break;
    }
    case -30: {
        if (is_zero(K)) {
            m_stnC.inc = m_stnPrev.inc;
            m_stnC.azi = m_stnPrev.azi;
            solve12();
            if (m_nError != ERR_NONE) return;
            if (!(m_stnC.md > 0.0)) return fail(ERR_TVD_UNREACHABLE);
            m_stnC.dl = 0.0;
            break;
        }
        const double I1 = m_stnPrev.inc;
        const double p = std::cos(I1);
        const double q = std::sin(I1) * std::cos(m_stnC.tf);
        const double S = p * p + q * q;
        const double w = (Vs - m_stnPrev.tvd) * K + q;
        if (is_zero(S) || w * w > S) return fail(ERR_TVD_UNREACHABLE);
        const double alpha = asin_u(w / std::sqrt(S));
        const double phi = std::atan2(q, p);
        double best = -1.0;
        for (double dl : {getdaz(alpha - phi), getdaz(PI - alpha - phi)}) {
            if (dl > TOL_ZERO && dl <= HALF_PI && (best < 0.0 || dl < best)) best = dl;
        }
        if (best < 0.0) return fail(ERR_TVD_UNREACHABLE);
        m_stnC.dl = best;
        solve4();
        solve3();
        break;
    }
    case -40:
        if (is_zero(K)) return fail(ERR_BUILD_TURN);
        solve10();
        if (m_nError != ERR_NONE) return;
        if (tooLong(m_stnC.dl)) return fail(ERR_INCREASE_INC);
        solve4();
        solve3();
        break;
    case -60:
        if (is_zero(K)) return fail(ERR_BUILD_TURN);
        solve1();
        solve2();
        if (is_zero(m_stnC.dl)) m_stnC.dl = m_stnC.tf = 0.0;
        if (tooLong(m_stnC.dl)) return fail(ERR_UNKNOWN_SOLUTION);
        break;
    case -50: {
        const double c = -m_stnPrev.uv;  // cos I_e
        if (c <= TOL_ZERO) return fail(ERR_TVD_HORIZONTAL);
        const double L = (m_stnPrev.tvd - m_stnC.tvd) / c;
        if (L < 0.0) return fail(ERR_TVD_HORIZONTAL);
        m_stnC.inc = m_stnPrev.inc;
        m_stnC.azi = m_stnPrev.azi;
        m_stnC.md = L;
        m_stnC.dl = m_stnC.tf = 0.0;
        break;
    }
    case -10: {
        double ue = 0.0, un = 0.0, uv = 0.0;
        const double D = canvec(m_stnPrev.tvd, m_stnPrev.ns, m_stnPrev.ew, m_stnA.tvd, m_stnA.ns,
                                m_stnA.ew, ue, un, uv);
        if (!(D > TOL_ZERO)) return fail(ERR_IN_LINE);
        const double cosine = ue * m_stnPrev.ue + un * m_stnPrev.un + uv * m_stnPrev.uv;
        if (cosine <= -STRAIGHT_COS) return fail(ERR_IN_LINE);
        // The chord lies in the circle's plane on the side it bends to, less than pi from the
        // reversed direction whatever the dogleg: its direction gives the toolface.
        m_stnC.inc = acos_u(uv);
        m_stnC.azi = tangle(ue, un);
        solve1();
        m_stnC.dl = ptoang();  // m_stnA keeps B and gains the arc's md, inc, azi
        if (m_stnC.dl == 0.0) m_stnC.tf = 0.0;
        m_stnC.md = m_stnA.md;
        m_stnC.inc = m_stnA.inc;
        m_stnC.azi = m_stnA.azi;
        m_stnC.tvd = m_stnA.tvd;
        m_stnC.ns = m_stnA.ns;
        m_stnC.ew = m_stnA.ew;
        return;
    }
    default: return fail(ERR_UNKNOWN_SOLUTION);
    }

    // -20 and -50 carry their course already, as does a straight -30 (from solve12).
    if ((code == -30 || code == -40 || code == -60) && is_nonzero(K)) m_stnC.md = m_stnC.dl / K;
    mincur();
    if (code == -30) {
        if (!(std::fabs(m_stnC.tvd - Vs) <= TOL_CLOSE)) return fail(ERR_TVD_UNREACHABLE);
        m_stnC.tvd = Vs;
    }
}

// Solves the backward line whose end is station i (see the top of this file): prepares the reversed
// frame, runs salvo, turns the start round and writes the two stations. i is left as it is.
//   Station i - 1 (the start): tvd, ns, ew = P; inc, azi = t_s, with the given start values exactly
//   where the line is given them (-30 tvd = V_s, -40 inc = I_s, -60 inc, azi = I_s, A_s); ue, un, uv
//   of its direction. Its md, rates, target, flag and aux are not touched.
//   Station i (the end): md = L, the course length (the solver's forward pass adds the start's
//   depth); tvd, ns, ew, inc, azi unchanged; dls = K as given (-20, -30, -40, -60), DL / L (-10), 0
//   (-50); tf = TF as given (-20, -30, -40), the solved arrival toolface (-60, -10), 0 (-50);
//   build = (I_e - I_s) / L; turn = f getdaz(A_e - A_s) / L, f as in GetDeltas, 0 when either
//   inclination is exactly 0; dl = DL. build and turn are 0 when L <= TOL_ZERO. Reading taken: a
//   given curvature stays in dls even then (only a "BACK to IncAz" line whose start is its end gets
//   there with a K), because dls is where the line keeps its K: zeroing it would make the next
//   solve of the same line fail with -1. The solved -10 curvature is 0 there, as is -50's.
// The start quantities come from the line's record (aux1, aux2 of station i). A "BACK to CL" line
// without one (aux1 <= TOL_ZERO: a line made by Insert(line, true) or read from an older plan) takes
// its stored course, md(i) - md(i - 1) when that is positive, else md(i). The other lines read an
// empty record as 0: -30 a start at depth 0, -40 and -60 a vertical start (azimuth 0).
// On failure m_nError is set and both stations are left as they were.
void CPlan::DoBackwards(unsigned& i) {
    m_nError = ERR_NONE;
    const int k = static_cast<int>(i);
    if (k < 1 || !hasStation(k)) return;
    const SStation& end = m_stations[k];
    const SStation& before = m_stations[k - 1];
    const short code = end.method;

    m_stnPrev = SStation();
    m_stnPrev.tvd = end.tvd;
    m_stnPrev.ns = end.ns;
    m_stnPrev.ew = end.ew;
    m_stnPrev.inc = end.inc;
    m_stnPrev.azi = end.azi;
    reverse(m_stnPrev.inc, m_stnPrev.azi);
    vector(m_stnPrev.inc, m_stnPrev.azi, m_stnPrev.ue, m_stnPrev.un, m_stnPrev.uv);

    m_stnC = SStation();
    m_stnC.dls = end.dls;
    m_stnC.tf = -end.tf;
    double Is = 0.0, As = 0.0;  // given start direction of -40, -60 [rad]
    switch (code) {
    case -20: {
        double CL = end.aux1;
        if (!(CL > TOL_ZERO)) CL = end.md > before.md ? end.md - before.md : end.md;
        m_stnC.md = CL;
        break;
    }
    case -30: m_stnC.tvd = end.aux1; break;
    case -40:
    case -60:
        Is = end.aux1;
        As = code == -60 ? end.aux2 : 0.0;
        m_stnC.inc = Is;
        m_stnC.azi = As;
        reverse(m_stnC.inc, m_stnC.azi);
        break;
    case -50: m_stnC.tvd = m_stations[0].tvd; break;
    case -10:
        m_stnA = SStation();
        m_stnA.tvd = before.tvd;
        m_stnA.ns = before.ns;
        m_stnA.ew = before.ew;
        break;
    default: break;
    }

    salvo(code);
    if (m_nError != ERR_NONE) return;

    const double L = m_stnC.md;
    const double DL = m_stnC.dl;
    const double arrivalTF = getdaz(-m_stnC.tf);

    SStation& start = m_stations[k - 1];
    start.tvd = m_stnC.tvd;
    start.ns = m_stnC.ns;
    start.ew = m_stnC.ew;
    start.inc = m_stnC.inc;
    start.azi = m_stnC.azi;
    reverse(start.inc, start.azi);
    if (code == -40 || code == -60) start.inc = Is;
    if (code == -60) start.azi = As;
    vector(start.inc, start.azi, start.ue, start.un, start.uv);

    SStation& e = m_stations[k];
    e.md = L;
    if (code == -10) e.dls = L > TOL_ZERO ? DL / L : 0.0;
    if (code == -50) e.dls = 0.0;
    if (code == -60 || code == -10) e.tf = arrivalTF;
    if (code == -50) e.tf = 0.0;
    e.dl = DL;
    e.build = e.turn = 0.0;
    if (L > TOL_ZERO) {
        e.build = (e.inc - start.inc) / L;
        if (e.inc != 0.0 && start.inc != 0.0) {
            const double f = m_bHorizontalTurn ? std::sin(0.5 * (start.inc + e.inc)) : 1.0;
            e.turn = f * getdaz(e.azi - start.azi) / L;
        }
    }
}
