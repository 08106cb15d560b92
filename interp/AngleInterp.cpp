// Points of one line of the plan where the inclination, the azimuth, the north coordinate or the
// east coordinate takes a wanted value, and the intercept search behind the last two.
//
// The line runs from the working station m_stnPrev (its start) to m_stnC (its end); the answer is
// left in the scratch station m_stnA. All angles [rad], rates [rad/L], lengths [L]; directions
// (east, north, down).
#include <cmath>

#include "geometry/Numerics.h"
#include "geometry/TrigMemo.h"
#include "interp/ArcMove.h"
#include "plan/CPlan.h"

using namespace orrin;
using orrin::Vec3;

namespace {

/// How far outside a line's range of inclination a wanted inclination is still answered, with the
/// nearer end station [rad]: covers end inclinations read back through degree conversions.
constexpr double INC_END_BAND = 0.0001;
/// Head distance of an SIntercept when the search found no intercept [L].
constexpr double NO_INTERCEPT = -100.0;

}  // namespace

// Completes a point of the current line whose md, inc and azi stand in m_stnA: the position from the
// start by radius of curvature (radcur: also dls, tf, build, turn), or with bMinCur by minimum
// curvature (mincur), with dls the line's own (m_stnC's) and tf the toolface getfo gives from the
// start to the point. m_stnC is saved and put back.
void CPlan::pointAtAngles(bool bMinCur) {
    const SStation saved = m_stnC;
    m_stnC = m_stnA;
    if (bMinCur) {
        mincur();
        m_stnC.dls = saved.dls;
        double dl = 0.0, daz = 0.0;
        m_stnC.tf = getfo(m_stnPrev.inc, m_stnPrev.azi, m_stnC.inc, m_stnC.azi, dl, daz);
    } else {
        radcur();
    }
    m_stnA = m_stnC;
    m_stnC = saved;
}

// The point of the line at inclination inc; true when the line holds it (the point in m_stnA).
// Inclination and azimuth are taken linear in measured depth: L = (inc - I1) dmd / dI from the start,
// A = deltaz(getdaz(A2 - A1) L / dmd + A1); the position by pointAtAngles.
// Reads m_stnPrev, m_stnC (md, inc, azi, tvd, ns, ew, and m_stnC.dls with bMinCur). Writes m_stnA;
// an exactly vertical end takes the start azimuth, then an exactly vertical start the end azimuth.
// Answers without a search:
//   - a wanted value up to INC_END_BAND beyond the line's range: true with the nearer end station;
//     further beyond: false with the same station (the start when it is the nearer end);
//   - a line of exactly constant inclination: true with the start station when inc equals it
//     exactly, false otherwise; a change within 1e-6: true with the start station;
//   - a line of zero or negative length: false with the start station.
bool CPlan::rcincint(double inc, bool bMinCur) {
    const double dinc = m_stnC.inc - m_stnPrev.inc;
    m_stnA = m_stnPrev;
    m_stnA.dls = 0.0;
    if (dinc == 0.0 && m_stnPrev.inc != inc) return false;
    if (dinc > 0.0) {
        if (m_stnC.inc < inc) {
            m_stnA = m_stnC;
            return inc <= m_stnC.inc + INC_END_BAND;
        }
        if (m_stnPrev.inc > inc) return m_stnPrev.inc - INC_END_BAND <= inc;
    }
    if (dinc < 0.0) {
        if (m_stnC.inc > inc) {
            m_stnA = m_stnC;
            return m_stnC.inc - INC_END_BAND <= inc;
        }
        if (m_stnPrev.inc < inc) return m_stnPrev.inc + INC_END_BAND >= inc;
    }
    if (is_zero(dinc)) return true;
    const double dmd = m_stnC.md - m_stnPrev.md;
    if (dmd <= 0.0) return false;

    if (m_stnC.inc == 0.0) m_stnC.azi = m_stnPrev.azi;
    if (m_stnPrev.inc == 0.0) m_stnPrev.azi = m_stnC.azi;
    const double daz = getdaz(m_stnC.azi - m_stnPrev.azi);
    const double L = (inc - m_stnPrev.inc) * dmd / dinc;
    m_stnA.md = m_stnPrev.md + L;
    m_stnA.inc = inc;
    m_stnA.azi = deltaz(daz * L / dmd + m_stnPrev.azi);
    pointAtAngles(bMinCur);
    return true;
}

// The point of the line at azimuth azi; true when the line holds it (the point in m_stnA).
// The end azimuth is first made continuous with the start, m_stnC.azi = A1 + getdaz(A2 - A1) (it
// may then lie outside [0, 2 pi) and is left so), and the wanted azimuth is taken the same way,
// target = A1 + getdaz(azi - A1), so a line that turns through north is searched as one range.
// L = dmd (target - A1) / daz; the inclination is linear in L; the position by pointAtAngles.
// Reads m_stnPrev, m_stnC (md, inc, azi, tvd, ns, ew, and m_stnC.dls with bMinCur). Writes m_stnA.
// False, with the start station in m_stnA: either end exactly vertical (no azimuth there); a line of
// exactly constant azimuth other than the target; a target outside the line's range (no band is
// granted beyond the ends); a line of zero or negative length. A change of azimuth within 1e-6
// that holds the target: true with the start station.
bool CPlan::rcaziint(double azi, bool bMinCur) {
    const double daz = getdaz(m_stnC.azi - m_stnPrev.azi);
    m_stnC.azi = m_stnPrev.azi + daz;
    const double target = getdaz(azi - m_stnPrev.azi) + m_stnPrev.azi;
    m_stnA = m_stnPrev;
    m_stnA.dls = 0.0;
    if (m_stnC.inc == 0.0 || m_stnPrev.inc == 0.0) return false;
    if (daz == 0.0 && target != m_stnPrev.azi) return false;
    if (daz > 0.0 && (m_stnC.azi < target || m_stnPrev.azi > target)) return false;
    if (daz < 0.0 && (target < m_stnC.azi || target > m_stnPrev.azi)) return false;
    if (is_zero(daz)) return true;
    const double dmd = m_stnC.md - m_stnPrev.md;
    if (dmd <= 0.0) return false;

    const double L = dmd * (target - m_stnPrev.azi) / daz;
    m_stnA.md = m_stnPrev.md + L;
    m_stnA.azi = deltaz(target);
    m_stnA.inc = (m_stnC.inc - m_stnPrev.inc) * L / dmd + m_stnPrev.inc;
    pointAtAngles(bMinCur);
    return true;
}

// How far the start of the line lies from the plane or point described in m_stnA, with
// d = m_stnA position - m_stnPrev position (dn, de, dv):
//   mode 1 and 3: d . (un, ue, uv) of m_stnA, the signed distance of the start from the plane
//                 through m_stnA with that normal, negated (positive when the start lies behind it);
//   mode 2:       dv, the depth of m_stnA below the start;
//   other modes:  dn^2 + de^2 + dv^2, the squared distance to the point [L^2].
double CPlan::scan_approx(int mode) {
    const double dn = m_stnA.ns - m_stnPrev.ns;
    const double de = m_stnA.ew - m_stnPrev.ew;
    const double dv = m_stnA.tvd - m_stnPrev.tvd;
    switch (mode) {
    case 1:
    case 3: return dn * m_stnA.un + de * m_stnA.ue + dv * m_stnA.uv;
    case 2: return dv;
    default: return dn * dn + de * de + dv * dv;
    }
}

// The intercept of the current line with the plane, or its nearest approach to the point, that
// m_stnA describes before the search: its position (tvd, ns, ew) is the point aimed at, its
// direction fields (ue, un, uv) the plane's normal (of any length) in modes 1 to 3.
//   Mode 1 to 3: t = ((point - start) . normal) / (u . normal) along the unit chord u (length D).
//   Any other mode (0): the foot of the point on the chord, t = (point - start) . u, kept in [0, D].
// A t at or before the start gives the start station, at or beyond the end the end station.
// Between them the chord point start + t u, at md M1 + t, is the answer on a straight line
// (cos of the dogleg above 0.999999999); on a curved line it is moved onto the arc by
// chord_point_to_arc and completed by backcal (md, inc, azi, dls). The depth search moves its chord
// point horizontally; here that move is read as a move within the plane searched, of which the
// horizontal is the depth search's own case, because a horizontal move would carry the point off a
// north or east plane. The plane's normal is oriented along the start direction, so the outer root
// is taken. In mode 0 the move is horizontal, as for a depth.
// The station found is left in m_stnA and returned after the head (see SIntercept): the way from
// it to the point aimed at, its length, unit direction, inclination, and for mode 2 its azimuth
// (tangle), for other modes the toolface (getfo) that turns the station's direction towards it.
// No intercept (head dist -100, other head values 0, station and m_stnA the start station): a chord
// within 1e-6 of zero length, or in modes 1 to 3 a chord parallel to the plane (|u . normal| within
// 1e-6). The direction vectors of m_stnPrev and m_stnC are refreshed on a line of two points.
SIntercept CPlan::scan_exact(int mode) {
    SIntercept out;
    const SStation aim = m_stnA;
    const bool plane = mode >= 1 && mode <= 3;
    const SStation& P = m_stnPrev;
    const SStation& C = m_stnC;

    double ue = C.ew - P.ew, un = C.ns - P.ns, uv = C.tvd - P.tvd;
    const double D = normalize(ue, un, uv);
    const double pe = aim.ew - P.ew, pn = aim.ns - P.ns, pv = aim.tvd - P.tvd;
    double t = 0.0;
    bool none = is_zero(D);
    if (!none && plane) {
        const double across = ue * aim.ue + un * aim.un + uv * aim.uv;
        none = is_zero(across);
        if (!none) t = (pe * aim.ue + pn * aim.un + pv * aim.uv) / across;
    } else if (!none) {
        t = pe * ue + pn * un + pv * uv;
        if (t < 0.0) t = 0.0;
        if (t > D) t = D;
    }
    if (none) {
        m_stnA = P;
        out.dist = NO_INTERCEPT;
        out.station = P;
        return out;
    }

    if (t <= 0.0) {
        m_stnA = P;
    } else if (t >= D) {
        m_stnA = C;
    } else {
        m_stnA = P;
        m_stnA.dls = 0.0;
        m_stnA.md = P.md + t;
        m_stnA.ew = P.ew + ue * t;
        m_stnA.ns = P.ns + un * t;
        m_stnA.tvd = P.tvd + uv * t;
        unitOf(m_stnPrev);
        unitOf(m_stnC);
        const Vec3 t1{P.ue, P.un, P.uv}, t2{C.ue, C.un, C.uv};
        const double cd = t1.e * t2.e + t1.n * t2.n + t1.v * t2.v;
        if (cd <= STRAIGHT_COS) {
            Vec3 nrm{0.0, 0.0, 1.0};
            if (plane) {
                nrm = {aim.ue, aim.un, aim.uv};
                if (nrm.e * t1.e + nrm.n * t1.n + nrm.v * t1.v < 0.0)
                    nrm = {-nrm.e, -nrm.n, -nrm.v};
            }
            interp::chord_point_to_arc(P, t1, t2, cd, D, C.md - P.md, nrm, m_stnA);
            backcal();
        }
    }

    out.station = m_stnA;
    double de = aim.ew - m_stnA.ew, dn = aim.ns - m_stnA.ns, dv = aim.tvd - m_stnA.tvd;
    out.dist = normalize(de, dn, dv);
    if (out.dist > 0.0) {
        out.ue = de;
        out.un = dn;
        out.uv = dv;
        out.inc = acos_u(dv);
        const double azi = tangle(de, dn);
        double dl = 0.0, daz = 0.0;
        out.azi = mode == 2 ? azi : getfo(m_stnA.inc, m_stnA.azi, out.inc, azi, dl, daz);
    }
    return out;
}

// The point of the line on the plane north = ns: scan_exact(1) with the plane (normal (0, 1, 0)
// through (tvd 0, ns, ew 0)) described in m_stnA, whose station is left in m_stnA.
void CPlan::mcnsint(double ns) {
    m_stnA.ue = 0.0;
    m_stnA.un = 1.0;
    m_stnA.uv = 0.0;
    m_stnA.tvd = 0.0;
    m_stnA.ns = ns;
    m_stnA.ew = 0.0;
    m_stnA = scan_exact(1).station;
}

// The point of the line on the plane east = ew, as mcnsint with normal (1, 0, 0) through
// (tvd 0, ns 0, ew).
void CPlan::mcewint(double ew) {
    m_stnA.ue = 1.0;
    m_stnA.un = 0.0;
    m_stnA.uv = 0.0;
    m_stnA.tvd = 0.0;
    m_stnA.ns = 0.0;
    m_stnA.ew = ew;
    m_stnA = scan_exact(1).station;
}
