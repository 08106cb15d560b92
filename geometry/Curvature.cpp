// The curvature steps that carry the plan from the working station m_stnPrev (start of the current
// line) to m_stnC (its end), and the arc from m_stnPrev to a point held in m_stnA.
//
// All angles [rad], rates [rad/L], lengths [L]. Direction vectors are (east, north, down), cached in
// the ue, un, uv fields of a station.
#include "geometry/Numerics.h"
#include "geometry/TrigMemo.h"
#include "plan/CPlan.h"

#include <cmath>

using namespace orrin;

// Minimum curvature: the end position of the circular arc joining the start and end directions.
// Reads  m_stnPrev md, inc, azi, tvd, ns, ew; m_stnC md, inc, azi.
// Writes m_stnPrev ue, un, uv and m_stnC ue, un, uv (the direction vectors of both ends);
//        m_stnC tvd, ns, ew.
// With t1, t2 the unit directions, dl = acos(t1 . t2) the dogleg and dmd the course length, the
// offset is F (t1 + t2) with F = dmd/2 times the ratio factor 2/dl tan(dl/2), i.e. tan(dl/2) dmd / dl.
// A straight course (cos dl >= STRAIGHT_COS, or dl within TOL_ZERO) takes F = dmd/2. Two opposite
// directions give dl = pi and an unbounded F; that is left to the caller.
// Dogleg severity and toolface are not set here: the line methods take them from getfo.
void CPlan::mincur() {
    const double dmd = m_stnC.md - m_stnPrev.md;
    unitOf(m_stnPrev);
    unitOf(m_stnC);
    const double cd =
        m_stnC.un * m_stnPrev.un + m_stnC.ue * m_stnPrev.ue + m_stnC.uv * m_stnPrev.uv;

    double f;
    if (cd >= STRAIGHT_COS) {
        f = dmd / 2.0;
    } else {
        const double dl = acos_u(cd);
        f = is_zero(dl) ? dmd / 2.0 : std::tan(dl / 2.0) * dmd / dl;
    }
    m_stnC.tvd = m_stnPrev.tvd + f * (m_stnPrev.uv + m_stnC.uv);
    m_stnC.ns = m_stnPrev.ns + f * (m_stnC.un + m_stnPrev.un);
    m_stnC.ew = m_stnPrev.ew + f * (m_stnC.ue + m_stnPrev.ue);
}

// Radius of curvature: the course along which inclination and azimuth each change linearly with
// measured depth, with its dogleg severity, toolface, build and turn rates.
// Reads  m_stnPrev md, inc, azi, tvd, ns, ew; m_stnC md, inc, azi.
// Writes m_stnC tvd, ns, ew, dls, tf, build, turn; a vertical end (inclination exactly 0) takes the
//        azimuth of the other end, so m_stnPrev.azi or m_stnC.azi may be overwritten.
// Over dmd with dinc = I2 - I1 and daz = getdaz(A2 - A1):
//   down       = (sin I2 - sin I1) dmd / dinc,  horizontal H = (cos I1 - cos I2) dmd / dinc,
//   north      = (sin A2 - sin A1) H / daz,     east         = (cos A1 - cos A2) H / daz,
// with the straight limits cos I1 dmd, sin I1 dmd (dinc within TOL_ZERO) and cos A1 H, sin A1 H (daz
// within TOL_ZERO). The turn part of the dogleg is taken at the mean inclination,
// s = sin(I1 + dinc/2) daz, and dl = sqrt(s^2 + dinc^2); dls = dl / dmd, build = dinc / dmd and
// turn = daz2hdls(daz, dmd, I1, build), so the turn rate follows the plan's turn model.
// Toolface = getdaz(tangle(dinc, s)) in (-pi, pi]: the build part is deliberately the sine-side
// argument (unlike getfo), so a pure build gives pi/2, a pure right turn 0, a pure drop -pi/2 and a
// pure left turn pi. With no change of direction (dinc and s within TOL_ZERO) m_stnC.tf keeps its
// value. From an exactly vertical start to a non-vertical end the toolface is the end azimuth,
// deltaz(A2) in [0, 2 pi).
// The vertical tests compare with exactly 0, not with TOL_ZERO (deliberate).
// A course of zero length (dmd within TOL_ZERO) copies the whole of m_stnPrev, method code, target
// and flag included, into m_stnC and does nothing else.
void CPlan::radcur() {
    const double dmd = m_stnC.md - m_stnPrev.md;
    if (is_zero(dmd)) {
        m_stnC = m_stnPrev;
        return;
    }
    const double dinc = m_stnC.inc - m_stnPrev.inc;
    if (m_stnPrev.inc == 0.0) m_stnPrev.azi = m_stnC.azi;
    if (m_stnC.inc == 0.0) m_stnC.azi = m_stnPrev.azi;

    const double inc1 = m_stnPrev.inc;
    const double inc2 = m_stnC.inc;
    const double azi1 = m_stnPrev.azi;
    const double azi2 = m_stnC.azi;

    double h;
    if (is_zero(dinc)) {
        m_stnC.tvd = m_stnPrev.tvd + std::cos(inc1) * dmd;
        h = std::sin(inc1) * dmd;
    } else {
        m_stnC.tvd = m_stnPrev.tvd + (std::sin(inc2) - std::sin(inc1)) * dmd / dinc;
        h = (std::cos(inc1) - std::cos(inc2)) * dmd / dinc;
    }

    const double daz = getdaz(azi2 - azi1);
    double de;
    if (is_zero(daz)) {
        m_stnC.ns = m_stnPrev.ns + std::cos(azi1) * h;
        de = std::sin(azi1) * h;
    } else {
        m_stnC.ns = m_stnPrev.ns + (std::sin(azi2) - std::sin(azi1)) * h / daz;
        de = (std::cos(azi1) - std::cos(azi2)) * h / daz;
    }
    m_stnC.ew = m_stnPrev.ew + de;

    const double s = std::sin(dinc / 2.0 + inc1) * daz;
    const double dl = std::sqrt(s * s + dinc * dinc);
    // dmd is nonzero here: a zero course returned above.
    m_stnC.dls = dl / dmd;
    m_stnC.build = dinc / dmd;
    m_stnC.turn = daz2hdls(daz, dmd, inc1, dinc / dmd);

    if (!(is_zero(dinc) && is_zero(s))) m_stnC.tf = getdaz(tangle(dinc, s));
    if (m_stnPrev.inc == 0.0 && m_stnC.inc != 0.0) m_stnC.tf = deltaz(m_stnC.azi);
}

// The circular arc from m_stnPrev, tangent to its direction, that ends at the point m_stnA: the
// inverse of the minimum-curvature step. Returns the dogleg of the arc (0 for a straight course).
// Reads  m_stnPrev md, inc, azi, tvd, ns, ew and its direction ue, un, uv (which must be current);
//        m_stnA tvd, ns, ew.
// Writes m_stnA md, inc, azi, dls, ue, un, uv.
// With u the unit chord of length D and q = t1 . u the cosine of the angle theta between the start
// direction t1 and the chord, theta is half the dogleg; the end direction is t1 mirrored about the
// chord, t2 = 2q u - t1, and the arc length is D theta / sin(theta). dls = 2 theta / arc length.
// An end direction exactly vertical (|t2.v| >= 1) gives inclination and azimuth 0.
// Straight course: a chord of MIN_CHORD or less (an absolute length: points that close are reached
// straight whatever their direction), or a point on the start tangent (|q| > STRAIGHT_COS), keeps the
// start direction and adds D to the depth with dls 0. A point straight behind the start is thus
// treated as straight ahead at the chord distance, without error (deliberate).
double CPlan::backcal() {
    double ue = m_stnA.ew - m_stnPrev.ew;
    double un = m_stnA.ns - m_stnPrev.ns;
    double uv = m_stnA.tvd - m_stnPrev.tvd;
    const double chord = normalize(ue, un, uv);
    const double q = m_stnPrev.un * un + m_stnPrev.ue * ue + m_stnPrev.uv * uv;

    if (chord > MIN_CHORD && std::fabs(q) <= STRAIGHT_COS) {
        const double theta = acos_u(q);
        m_stnA.ue = 2.0 * q * ue - m_stnPrev.ue;
        m_stnA.un = 2.0 * q * un - m_stnPrev.un;
        m_stnA.uv = 2.0 * q * uv - m_stnPrev.uv;
        m_stnA.md = m_stnPrev.md + theta * chord / std::sqrt(1.0 - q * q);
        if (m_stnA.uv > -1.0 && m_stnA.uv < 1.0) {
            m_stnA.inc = acos_u(m_stnA.uv);
            m_stnA.azi = tangle(m_stnA.ue, m_stnA.un);
        } else {
            m_stnA.inc = 0.0;
            m_stnA.azi = 0.0;
        }
        m_stnA.dls = 0.0;
        if (m_stnPrev.md < m_stnA.md) m_stnA.dls = 2.0 * theta / (m_stnA.md - m_stnPrev.md);
        return 2.0 * theta;
    }

    m_stnA.ue = m_stnPrev.ue;
    m_stnA.un = m_stnPrev.un;
    m_stnA.uv = m_stnPrev.uv;
    m_stnA.inc = m_stnPrev.inc;
    m_stnA.azi = m_stnPrev.azi;
    m_stnA.md = m_stnPrev.md + chord;
    m_stnA.dls = 0.0;
    return 0.0;
}

// The arc from m_stnPrev to the point already standing in m_stnA (tvd, ns, ew), as backcal, with the
// start direction of m_stnPrev (ue, un, uv) first refreshed from its inclination and azimuth, and
// m_stnA's md, inc and azi first set to those of m_stnPrev. Returns the dogleg of the arc.
double CPlan::ptoang() {
    m_stnA.md = m_stnPrev.md;
    m_stnA.inc = m_stnPrev.inc;
    m_stnA.azi = m_stnPrev.azi;
    unitOf(m_stnPrev);
    return backcal();
}
