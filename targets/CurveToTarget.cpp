// Curve-to-target methods: the target is reached from the start station m_stnPrev by one circular arc
// of constant curvature (minimum-curvature model), alone or joined to a straight hold.
//
//   910  one arc of given dogleg severity ending at a given inclination, lined up on the target;
//   920  one arc from the start to the target;
//   930  one arc of given course length to the target's north and east, its depth solved;
//   1910 an arc of given dogleg severity, then a hold to the target;
//   1920 a hold, then an arc of given dogleg severity to the target.
//
// Each is called by meth3d, which has cleared m_nError, loaded m_stnPrev and m_target, and stored the
// start direction t = (ue, un, uv) in m_stnPrev. Arcs are laid by stagg into the scratch station
// m_stnA; stagj finds where an arc of given curvature and a hold join. Angles [rad], rates [rad/L],
// lengths [L]. A line whose stations are missing from the array (a plan loaded short) fails with -4
// rather than being written past the array's end.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Passes of the 910 search for the arc's end direction before it fails with -1.
constexpr int ONLINE_PASSES = 1000;
/// A course to the target beyond this counts as none: the 910 search has run away [L].
constexpr double ONLINE_RUNAWAY = 1e9;
/// The 910 search stops when the course to the target changes by less than this [L].
constexpr double ONLINE_STOP = 0.0001;
/// Passes of the 930 depth iteration after which it stops whatever the shortfall.
constexpr int DEPTH_PASSES = 101;
/// 930 succeeds only when it stops within this many passes.
constexpr int DEPTH_PASSES_OK = 99;
/// The 930 iteration stops when the course-length shortfall is below this [L].
constexpr double DEPTH_STOP = 0.0001;
/// Added to a single arc's dogleg severity when 1910 or 1920 must raise the requested one, so that
/// the arc is strictly tighter than the single arc and leaves room for a hold [rad/L].
constexpr double DLS_MARGIN = 1e-6;
/// Radius, as a fraction of the side offset h, taken by the hold-first join when 2R <= h. With it
/// 1 - h/R falls below -1 and the join angle is undefined (NaN); the factor is kept as it stands,
/// and the caller reports the NaN hold as no join.
constexpr double HOLD_FIRST_RADIUS = 0.4999;

}  // namespace

// The arc of curvature k that turns the start direction t = (m_stnPrev.ue, un, uv) into the unit
// direction (e, n, v), laid by its two tangent lines: each of length T = tan(dl/2) / k, where
// dl = acos(t . (e, n, v)) is the dogleg. The tangents meet at start + T t, which goes into m_stnC
// (tvd, ns, ew) with T in m_stnC.md. Returns the arc length dl / k.
// A direction straight ahead (t . (e, n, v) >= 1), a dogleg or a curvature within 1e-6 of zero gives
// T = 0 and length 0: the meeting point is the start.
double CPlan::manic(double e, double n, double v, double k) {
    const double q = e * m_stnPrev.ue + n * m_stnPrev.un + v * m_stnPrev.uv;
    double T = 0.0, length = 0.0;
    if (q < 1.0) {
        const double dl = acos_u(q);
        if (is_nonzero(dl) && is_nonzero(k)) {
            T = std::tan(dl / 2.0) / k;
            length = dl / k;
        }
    }
    m_stnC.tvd = m_stnPrev.tvd + T * m_stnPrev.uv;
    m_stnC.ns = m_stnPrev.ns + T * m_stnPrev.un;
    m_stnC.ew = m_stnPrev.ew + T * m_stnPrev.ue;
    m_stnC.md = T;
    return length;
}

// The single arc from m_stnPrev, tangent to its direction, through the point (tvd, ns, ew); returns
// its dogleg angle and leaves the arc's end in m_stnA.
//   - ptoang (minimum curvature, arc to a point) gives m_stnA's md, inc, azi; over the course
//     L = m_stnA.md - m_stnPrev.md, dls = dogleg / L and build = (change of inclination) / L.
//   - The toolface is getfo's from the start direction to the end direction; for an arc of pi or
//     more (as ptoang reports it) it is turned by pi and wrapped once into (-pi, pi].
//   - The turn rate is daz2hdls of getfo's azimuth change over L, in the plan's turn model.
//   - A course within 1e-6 of zero leaves dls, build, tf and turn at 0.
// The dogleg returned is the one getfo recomputes from the two directions.
double CPlan::stagg(double tvd, double ns, double ew) {
    m_stnA.tvd = tvd;
    m_stnA.ns = ns;
    m_stnA.ew = ew;
    double dl = ptoang();
    const double L = m_stnA.md - m_stnPrev.md;
    if (is_zero(L)) {
        m_stnA.dls = m_stnA.build = m_stnA.tf = m_stnA.turn = 0.0;
        return dl;
    }
    m_stnA.dls = dl / L;
    m_stnA.build = (m_stnA.inc - m_stnPrev.inc) / L;
    const double arc = dl;
    double daz = 0.0;
    const double tf = getfo(m_stnPrev.inc, m_stnPrev.azi, m_stnA.inc, m_stnA.azi, dl, daz);
    if (arc < PI) {
        m_stnA.tf = tf;
    } else {
        m_stnA.tf = tf + PI;
        if (m_stnA.tf > PI) m_stnA.tf -= TWO_PI;
    }
    m_stnA.turn = daz2hdls(daz, L, m_stnPrev.inc, m_stnA.build);
    return dl;
}

// Where an arc of curvature k and a hold join on the way from m_stnPrev to the point (tvd, ns, ew);
// returns the hold's length, or 0 when there is no join.
// In the plane of the start direction t and the unit chord u (D long), the point lies a = D q ahead
// and h = D s to the side, q = t . u, s = sqrt(1 - q^2); R = 1 / k. No join for k, D or s within 1e-6
// of zero, or for a point straight ahead (q >= 1).
//   mode 2, hold then arc: the arc of radius R tangent to the hold must rise by h, so its dogleg is
//     acos(1 - h/R) and the hold H = a - R sin(dogleg). m_stnPrev is moved forward along t by H, and
//     stagg lays the arc from there to m_target into m_stnA. When 2R <= h no such arc exists: R is
//     then set to 0.4999 h, which leaves the dogleg undefined (NaN), kept as it stands.
//   any other mode, arc then hold: the turning circle is centred R to the side of the start; with
//     rho = hypot(h - R, a) the distance from its centre to the point, the hold is the tangent from
//     the point to the circle, H = sqrt(rho^2 - R^2), and the arc's dogleg is
//     phi = atan((h - R) / a) + asin(R / rho), plus pi when that is negative; atan's angle is taken
//     as pi when |a| is within 1e-6 (kept as it stands). The arc ends at
//     start + t R sin(phi) + m R (1 - cos(phi)), m = (u - q t) / s the unit side direction, and stagg
//     lays it into m_stnA. No join when the point lies behind within the turning band (a < 0 and
//     h < 2R) or inside the turning circle (rho < R).
double CPlan::stagj(double tvd, double ns, double ew, double k, int mode) {
    if (is_zero(k)) return 0.0;
    double R = 1.0 / k;
    double ue = ew - m_stnPrev.ew, un = ns - m_stnPrev.ns, uv = tvd - m_stnPrev.tvd;
    const double D = normalize(ue, un, uv);
    if (is_zero(D)) return 0.0;
    double te = 0.0, tn = 0.0, tv = 0.0;
    vector(m_stnPrev.inc, m_stnPrev.azi, te, tn, tv);
    const double q = te * ue + tn * un + tv * uv;
    if (q >= 1.0) return 0.0;
    const double s = std::sqrt(1.0 - q * q);
    if (is_zero(s)) return 0.0;
    const double a = D * q;
    const double h = D * s;

    if (mode == 2) {
        if (2.0 * R <= h) R = HOLD_FIRST_RADIUS * h;
        const double dogleg = acos_u(1.0 - h / R);
        const double H = a - R * std::sin(dogleg);
        m_stnPrev.md += H;
        m_stnPrev.tvd += H * tv;
        m_stnPrev.ns += H * tn;
        m_stnPrev.ew += H * te;
        stagg(m_target.tvd, m_target.ns, m_target.ew);
        return H;
    }

    if (a < 0.0 && h < 2.0 * R) return 0.0;
    const double rho = std::hypot(h - R, a);
    if (rho < R) return 0.0;
    const double alpha = is_nonzero(a) ? std::atan((h - R) / a) : PI;
    double phi = alpha + asin_u(R / rho);
    if (phi < 0.0) phi += PI;
    const double ahead = R * std::sin(phi);
    const double side = R * (1.0 - std::cos(phi));
    const double me = (ue - q * te) / s, mn = (un - q * tn) / s, mv = (uv - q * tv) / s;
    const double H = std::sqrt(rho * rho - R * R);
    stagg(m_stnPrev.tvd + ahead * tv + side * mv, m_stnPrev.ns + ahead * tn + side * mn,
          m_stnPrev.ew + ahead * te + side * me);
    return H;
}

// Gives station k of a target line its code, and the line's target name and flag when it is the
// line's last station (aimsAtTarget); earlier stations get an empty target and a clear flag.
void CPlan::tagStation(int k, short code, bool aimsAtTarget) {
    SStation& s = m_stations[k];
    s.method = code;
    s.target = aimsAtTarget ? m_target.name : std::u16string();
    s.flag = aimsAtTarget && m_target.flag;
}

// 910: one arc of dogleg severity k = m_dMethodParam1 that ends at inclination I = m_dMethodParam4
// with its end direction pointing horizontally at the target's north and east.
//   The end direction (e, n, v) is the one of inclination I that points horizontally from the arc's
//   tangent meeting point at the target (tarvec); the meeting point depends on that direction
//   (manic), so both are taken again until the course from the meeting point to the target changes
//   by less than 0.0001. The arc ends T beyond the meeting point along (e, n, v), T the tangent
//   length; its course is the arc length.
//   The station after m_nPrev gets that end, inc = acos(v), azi = tangle(e, n), its rates from
//   GetDeltas and then dls = k, the code 910 and the target's name and flag.
// Fails with -1 after 1000 passes, when the course exceeds 1e9 (the search runs away), or when the
// target lies closer to the meeting point than the tangent length (the arc would overshoot it). A
// vertical I (within 1e-6) makes tarvec return 0: the passes stop at once and the last test decides.
// The target's depth is not used.
void CPlan::meth_dtoli() {
    const double I = m_dMethodParam4;
    const double k = m_dMethodParam1;
    const int k1 = m_nPrev + 1;
    double e = 0.0, n = 0.0, v = 0.0;
    double d = tarvec(m_stnPrev.ns, m_stnPrev.ew, I, m_target.ns, m_target.ew, e, n, v);
    double L = 0.0;
    for (int pass = 1;; ++pass) {
        if (pass > ONLINE_PASSES || d > ONLINE_RUNAWAY) {
            m_nError = ERR_BUILD_TURN;
            return;
        }
        const double d0 = d;
        L = manic(e, n, v, k);
        d = tarvec(m_stnC.ns, m_stnC.ew, I, m_target.ns, m_target.ew, e, n, v);
        if (std::fabs(d0 - d) < ONLINE_STOP) break;
    }
    if (d < m_stnC.md || !hasStation(k1)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    const double T = m_stnC.md;
    SStation& s = m_stations[k1];
    s.ew = m_stnC.ew + T * e;
    s.ns = m_stnC.ns + T * n;
    s.tvd = m_stnC.tvd + T * v;
    s.md = m_stations[m_nPrev].md + L;
    s.inc = acos_u(v);
    s.azi = tangle(e, n);
    GetDeltas(k1);
    s.dls = k;
    tagStation(k1, 910, true);
    ++m_nPrev;
}

// 920: the single arc from the start to the target (stagg), stored as the station after m_nPrev
// with the code 920 and the target's name and flag. The geometry cannot fail: a target straight
// ahead gives a straight course with zero rates.
void CPlan::meth_dtctt() {
    const int k1 = m_nPrev + 1;
    if (!hasStation(k1)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    stagg(m_target.tvd, m_target.ns, m_target.ew);
    storeLine(920, {m_stnA});
}

// 930: the single arc of course length L to the target's north and east, whose vertical depth is
// solved. The line's station holds the wanted measured depth, so L = its md - md of the start.
// A fixed-point iteration on the depth: start from the depth of a vertical course of length L, lay
// the arc (stagg) and add the course shortfall L - (arc length) to the depth; stop after 101 passes
// (tested first) or when the shortfall is below 0.0001. Stopping within 99 passes succeeds: the last
// arc is stored with the code 930 and the target's name and flag, and m_target.tvd keeps the
// solved depth. Stopping later, or not converging, fails with -10, the text this method reports for
// non-convergence.
void CPlan::meth_dtctmd() {
    const int k1 = m_nPrev + 1;
    if (!hasStation(k1)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const SStation& start = m_stations[m_nPrev];
    const double L = m_stations[k1].md - start.md;
    m_target.tvd = start.tvd + L;
    int passes = 0;
    for (;;) {
        ++passes;
        stagg(m_target.tvd, m_target.ns, m_target.ew);
        const double d = L - (m_stnA.md - start.md);
        m_target.tvd += d;
        if (passes >= DEPTH_PASSES) break;
        if (std::fabs(d) < DEPTH_STOP) break;
    }
    if (passes > DEPTH_PASSES_OK) {
        m_nError = ERR_TANGENT_OVERLAP;
        return;
    }
    storeLine(930, {m_stnA});
}

// 1910: an arc of dogleg severity m_dMethodParam1, then a hold to the target.
//   1. The single arc to the target (stagg): a zero severity means the target is straight ahead,
//      -12. A requested severity not above the single arc's is raised to it + 1e-6 (in
//      m_dMethodParam1 too), since only a tighter arc leaves room for a hold.
//   2. stagj (arc then hold) gives the hold and leaves the arc's end in m_stnA; no join is -1.
//   3. The first station is the arc's end with the code 1910, no target; the second ends the hold
//      at the target: the arc's direction, the target's position, md = arc's md + hold, zero rates,
//      code 1 and the target's name and flag.
void CPlan::meth_dtsch() {
    const int k1 = m_nPrev + 1, k2 = m_nPrev + 2;
    if (!hasStation(k1) || !hasStation(k2)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    stagg(m_target.tvd, m_target.ns, m_target.ew);
    if (m_stnA.dls == 0.0) {
        m_nError = ERR_IN_LINE;
        return;
    }
    if (m_dMethodParam1 <= m_stnA.dls)
        m_dMethodParam1 = m_stations[k1].dls = m_stnA.dls + DLS_MARGIN;
    const double H = stagj(m_target.tvd, m_target.ns, m_target.ew, m_dMethodParam1, 1);
    if (!(H > 0.0)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    m_stations[k1] = m_stnA;
    tagStation(k1, 1910, false);

    SStation& s = m_stations[k2];
    s.md = m_stnA.md + H;
    s.inc = m_stnA.inc;
    s.azi = m_stnA.azi;
    s.tvd = m_target.tvd;
    s.ns = m_target.ns;
    s.ew = m_target.ew;
    s.dls = s.tf = s.turn = s.build = 0.0;
    tagStation(k2, 1, true);
    m_nPrev += 2;
}

// 1920: a hold along the start direction, then an arc of dogleg severity m_dMethodParam1 to the
// target.
//   1. As 1910: -12 for a target straight ahead, and a requested severity not above the single
//      arc's raised to it + 1e-6.
//   2. stagj (hold then arc) gives the hold, moves m_stnPrev to its end and lays the arc from there
//      into m_stnA. A hold that is not positive is no join, -1; so is an undefined (NaN) hold, which
//      stagj gives when the target lies more than two radii to the side.
//   3. The first station ends the hold (the moved m_stnPrev) with zero dls and toolface, the code
//      1920 and no target. Its build and turn stay those of the start station: deliberately carried
//      over, as the library has always written this line. The second station is the arc's end at
//      the target, with code 1 and the target's name and flag.
// After the call m_stnPrev stands at the end of the hold.
void CPlan::meth_dtshc() {
    const int k1 = m_nPrev + 1, k2 = m_nPrev + 2;
    if (!hasStation(k1) || !hasStation(k2)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    stagg(m_target.tvd, m_target.ns, m_target.ew);
    if (m_stnA.dls == 0.0) {
        m_nError = ERR_IN_LINE;
        return;
    }
    if (m_dMethodParam1 <= m_stnA.dls) {
        m_dMethodParam1 = m_stations[k1].dls = m_stnA.dls + DLS_MARGIN;
        m_stations[k2].dls = m_dMethodParam1;
    }
    const double H = stagj(m_target.tvd, m_target.ns, m_target.ew, m_dMethodParam1, 2);
    if (!(H > 0.0)) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    SStation hold = m_stnPrev;
    hold.dls = hold.tf = 0.0;
    storeLine(1920, {hold, m_stnA});
}
