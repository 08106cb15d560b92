// Points of one line of the plan at a measured depth or a vertical depth.
//
// The line runs from the working station m_stnPrev (its start) to m_stnC (its end); the answer is
// left in the scratch station m_stnA (md, inc, azi, tvd, ns, ew, dls, and for some routines tf,
// build and turn). Four line models: minimum curvature (mcmdint, mcvdint), radius of curvature
// (rcmdint, rcvdint), build/turn lines (btmdint) and constant-toolface lines (ctmdint).
// All angles [rad], rates [rad/L], lengths [L]; directions (east, north, down).
#include <cmath>

#if defined(_MSC_VER)
#include <float.h>
#endif

#include "geometry/Numerics.h"
#include "geometry/TrigMemo.h"
#include "interp/ArcMove.h"
#include "plan/CPlan.h"

using namespace orrin;
using orrin::Vec3;

namespace {

/// A measured depth this close past a line's start is answered with the start station [L].
constexpr double MD_START_BAND = 0.001;
/// A vertical depth this close to a line's start depth is answered with the start station [L].
constexpr double TVD_START_BAND = 0.005;

}  // namespace

double orrin::interp::chord_point_to_arc(const SStation& start, const Vec3& t1, const Vec3& t2,
                                         double cd, double D, double Lt, const Vec3& nrm,
                                         SStation& point) {
    const double W = acos_u(cd);
    const double R = (D / 2.0) / std::sqrt((1.0 - cd) / 2.0);

    // b = t1 x t2, the normal of the arc's plane; w = nrm x b lies in both planes.
    const double be = t1.n * t2.v - t1.v * t2.n;
    const double bn = t1.v * t2.e - t1.e * t2.v;
    const double bv = t1.e * t2.n - t1.n * t2.e;
    double we = nrm.n * bv - nrm.v * bn;
    double wn = nrm.v * be - nrm.e * bv;
    double wv = nrm.e * bn - nrm.n * be;
    CPlan::normalize(we, wn, wv);

    const double k = R / std::sqrt(1.0 - cd * cd);
    double qe = point.ew - (start.ew + k * (t2.e - cd * t1.e));
    double qn = point.ns - (start.ns + k * (t2.n - cd * t1.n));
    double qv = point.tvd - (start.tvd + k * (t2.v - cd * t1.v));
    const double rho = CPlan::normalize(qe, qn, qv);
    const double p = (we * qe + wn * qn + wv * qv) * rho;

    const double disc = R * R + p * p - rho * rho;
    double s = disc >= 0.0 ? std::sqrt(disc) - p : 0.0;
    if (s > Lt / 2.0) s = p != 0.0 ? rho * (R - rho) / p : 0.0;

    point.ew += we * s;
    point.ns += wn * s;
    if (wv != 0.0) point.tvd += wv * s;  // a depth search moves horizontally: tvd stays exact
    return W;
}

// The point of a minimum-curvature line at measured depth md.
// Reads  m_stnPrev and m_stnC (md, inc, azi, tvd, ns, ew; with bConstTF also m_stnC dls, tf, build,
//        turn). Writes m_stnA: md, inc, azi, tvd, ns, ew, dls, tf (build and turn with bConstTF).
//        m_stnPrev and m_stnC get their direction vectors; see the degenerate cases for angles.
// Without bConstTF the line is the circular arc between the end directions t1, t2 (dogleg W over
// Lt): measured from the middle of the arc at phi = ((md - M1)/Lt - 1/2) W, with sh, ch the sine and
// cosine of W/2 and R2 = Lt/(2W), the point lies at start + (t1 - t2) b + (t1 + t2) a,
// a = (sin phi + sh) R2 / ch, b = (cos phi - ch) R2 / sh; backcal then gives its direction, md is set
// back to md and dls = W / Lt (the line's). tf is the toolface getfo gives for the whole line.
// With bConstTF the arc is laid from the start with the line's own dls K and toolface T: dogleg
// dl = (md - M1) K, end direction t1 turned by dl towards toolface T (0 builds, pi/2 turns right),
// position by minimum curvature's F = tan(dl/2) / K.
// Degenerate cases:
//   - a line whose end has exactly the start's north and east is taken as vertical: both stations'
//     inclinations and azimuths become 0;
//   - md within MD_START_BAND past the start (or before it): the start station;
//   - md at or beyond the end: the end station moved straight on along the end direction;
//   - a start within 1e-6 of vertical takes the end azimuth, and m_stnC.tf becomes 0;
//   - a straight line (cos W > 0.999999999), or with bConstTF a dogleg within 1e-6, goes straight on
//     along the start direction.
void CPlan::mcmdint(double md, bool bConstTF) {
    if (m_stnC.ns == m_stnPrev.ns && m_stnC.ew == m_stnPrev.ew) {
        m_stnPrev.inc = m_stnPrev.azi = 0.0;
        m_stnC.inc = m_stnC.azi = 0.0;
    }
    m_stnA = m_stnPrev;
    if (md <= m_stnPrev.md + MD_START_BAND) return;

    if (md >= m_stnC.md) {
        unitOf(m_stnC);
        const double s = md - m_stnC.md;
        m_stnA = m_stnC;
        m_stnA.tvd += s * m_stnC.uv;
        m_stnA.ns += s * m_stnC.un;
        m_stnA.ew += s * m_stnC.ue;
        m_stnA.md = md;
        return;
    }

    if (is_zero(m_stnPrev.inc)) {
        m_stnPrev.azi = m_stnC.azi;
        m_stnC.tf = 0.0;
    }

    if (bConstTF) {
        m_stnA.dls = m_stnC.dls;
        m_stnA.tf = m_stnC.tf;
        m_stnA.build = m_stnC.build;
        m_stnA.turn = m_stnC.turn;
        m_stnA.md = md;
        const double L = md - m_stnPrev.md;
        const double dl = L * m_stnC.dls;
        const double I = m_stnPrev.inc, A = m_stnPrev.azi;
        const double t1e = std::sin(A) * std::sin(I);
        const double t1n = std::cos(A) * std::sin(I);
        if (dl <= TOL_ZERO) {
            m_stnA.inc = I;
            m_stnA.azi = A;
            m_stnA.ew += t1e * L;
            m_stnA.ns += t1n * L;
            m_stnA.tvd += std::cos(I) * L;
            return;
        }
        const double T = m_stnC.tf;
        const double across = std::cos(dl) * std::sin(I) + std::cos(T) * std::sin(dl) * std::cos(I);
        const double t2e = std::sin(A) * across + std::sin(T) * std::sin(dl) * std::cos(A);
        const double t2n = std::cos(A) * across - std::sin(A) * std::sin(T) * std::sin(dl);
        const double t2v = std::cos(I) * std::cos(dl) - std::sin(I) * std::cos(T) * std::sin(dl);
        const double F = std::tan(dl / 2.0) / m_stnA.dls;
        m_stnA.ew += (t2e + t1e) * F;
        m_stnA.ns += (t2n + t1n) * F;
        m_stnA.tvd += (std::cos(I) + t2v) * F;
        m_stnA.inc = acos_u(t2v);
        m_stnA.azi = tangle(t2e, t2n);
        return;
    }

    m_stnA.dls = 0.0;
    SStation& P = m_stnPrev;
    SStation& C = m_stnC;
    unitOf(P);
    unitOf(C);
    const double cd = P.ue * C.ue + P.un * C.un + P.uv * C.uv;
    if (cd > STRAIGHT_COS) {
        const double s = md - P.md;
        m_stnA.ew += P.ue * s;
        m_stnA.ns += P.un * s;
        m_stnA.tvd += P.uv * s;
        m_stnA.md = md;
    } else {
        const double Lt = C.md - P.md;
        const double W = acos_u(cd);
        const double sh = std::sqrt((1.0 - cd) / 2.0);
        const double ch = std::sqrt((1.0 + cd) / 2.0);
        const double R2 = Lt / 2.0 / W;
        const double phi = ((md - P.md) / Lt - 0.5) * W;
        const double a = (std::sin(phi) + sh) * R2 / ch;
        const double b = (std::cos(phi) - ch) * R2 / sh;
        m_stnA.ew += (P.ue - C.ue) * b + (P.ue + C.ue) * a;
        m_stnA.ns += (P.un - C.un) * b + (P.un + C.un) * a;
        m_stnA.tvd += (P.uv - C.uv) * b + (P.uv + C.uv) * a;
        backcal();
        m_stnA.md = md;
        if (Lt > 0.0) m_stnA.dls = W / Lt;
    }
    double dl = 0.0, daz = 0.0;
    m_stnA.tf = getfo(P.inc, P.azi, C.inc, C.azi, dl, daz);
}

// The point of a minimum-curvature line at vertical depth tvd, in closed form: the chord point at
// that depth moved horizontally onto the arc.
// Reads  m_stnPrev and m_stnC md, inc, azi, tvd, ns, ew. Writes m_stnA md, inc, azi, tvd, ns, ew,
//        dls; m_nError (0, or -17); the direction vectors of m_stnPrev and m_stnC.
// With u the unit chord of length D, the depth lies r = dV / u.v along the chord (dV = tvd - V1);
// the chord point is moved horizontally within the arc's plane onto the arc (chord_point_to_arc with
// the vertical as the plane's normal), backcal gives md, inc, azi and dls, and dls is then the line's
// own, W / Lt.
// Degenerate cases:
//   - tvd within TVD_START_BAND of the start depth: the start station, no error;
//   - a horizontal chord (u.v within 1e-6, or not a number), a chord of zero length, or r within
//     1e-6: m_nError = -17 with m_stnA the start station;
//   - r >= D (at or below the end of the chord): the end station moved straight on along the end
//     direction to the depth (no move when the end is horizontal); its dls is the end station's;
//   - a straight line (cos W > 0.999999999): the chord point.
void CPlan::mcvdint(double tvd) {
    m_stnA = m_stnPrev;
    m_stnA.dls = 0.0;
    m_nError = ERR_NONE;
    const double dV = tvd - m_stnPrev.tvd;
    if (std::fabs(dV) < TVD_START_BAND) return;

    double un = m_stnC.ns - m_stnPrev.ns;
    double ue = m_stnC.ew - m_stnPrev.ew;
    double uv = m_stnC.tvd - m_stnPrev.tvd;
    const double D = normalize(un, ue, uv);
    // The two tests of u.v differ only for a NaN, which the second catches.
    if (is_zero(uv) || !is_nonzero(uv)) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }
    const double r = dV / uv;
    if (is_zero(r) || is_zero(D)) {
        m_nError = ERR_TVD_UNREACHABLE;
        return;
    }

    if (r >= D) {
        unitOf(m_stnC);
        const double s = is_nonzero(m_stnC.uv) ? (tvd - m_stnC.tvd) / m_stnC.uv : 0.0;
        m_stnA = m_stnC;
        m_stnA.tvd = tvd;
        m_stnA.ns += m_stnC.un * s;
        m_stnA.ew += m_stnC.ue * s;
        m_stnA.md += s;
        return;
    }

    m_stnA.md += r;
    m_stnA.ew += ue * r;
    m_stnA.ns += un * r;
    m_stnA.tvd = tvd;

    SStation& P = m_stnPrev;
    SStation& C = m_stnC;
    unitOf(P);
    unitOf(C);
    const double cd = C.un * P.un + P.ue * C.ue + C.uv * P.uv;
    if (cd > STRAIGHT_COS) return;

    const double Lt = C.md - P.md;
    const Vec3 down{0.0, 0.0, 1.0};
    const double W = interp::chord_point_to_arc(P, {P.ue, P.un, P.uv}, {C.ue, C.un, C.uv}, cd, D,
                                                Lt, down, m_stnA);
    backcal();
    if (Lt > 0.0) m_stnA.dls = W / Lt;
}

// The point of a radius-of-curvature line at measured depth md: inclination and azimuth linear in
// measured depth, f = (md - M1) / (M2 - M1), I = I1 + f dI, A = deltaz(getdaz(A2 - A1) f + A1), and
// the position, dls, tf, build and turn by radcur from the start to that point.
// Reads m_stnPrev, m_stnC (md, inc, azi, tvd, ns, ew). Writes m_stnA md, inc, azi, tvd, ns, ew, dls,
// tf, build, turn. m_stnC is saved and put back; an exactly vertical start takes the end azimuth.
// Depths outside the line extrapolate (f is not bounded). The line's length divides without a test:
// a line of zero length gives a point that is not a number.
void CPlan::rcmdint(double md) {
    const SStation saved = m_stnC;
    const double f = (md - m_stnPrev.md) / (m_stnC.md - m_stnPrev.md);
    m_stnA.md = md;
    m_stnA.inc = m_stnPrev.inc + f * (m_stnC.inc - m_stnPrev.inc);
    if (m_stnC.inc == 0.0) m_stnC.azi = m_stnPrev.azi;
    if (m_stnPrev.inc == 0.0) m_stnPrev.azi = m_stnC.azi;
    m_stnA.azi = deltaz(getdaz(m_stnC.azi - m_stnPrev.azi) * f + m_stnPrev.azi);
    m_stnC = m_stnA;
    radcur();
    m_stnA = m_stnC;
    m_stnC = saved;
}

// The point of a radius-of-curvature line at vertical depth tvd.
// Reads m_stnPrev, m_stnC (md, inc, azi, tvd, ns, ew). Writes m_stnA md, inc, azi, tvd, ns, ew, dls,
// tf, build, turn; an exactly vertical end takes the start azimuth and an exactly vertical start the
// end azimuth, in the stations themselves.
// Along the line sin I grows linearly with depth: tvd - V1 = (sin I - sin I1) dmd / dI, so
// I = asin(sin I1 + (tvd - V1) dI / dmd) and the course L = (I - I1) dmd / dI; with no change of
// inclination L = (tvd - V1) / cos I1. The azimuth follows L linearly and radcur gives the position.
// Degenerate cases, each answered with the start station (dls 0):
//   - a line of zero length (dmd within 1e-6);
//   - a line held level (dI within 1e-6 and I1 within 1e-6 of pi/2): it reaches no other depth;
//   - sin I1 + (tvd - V1) dI / dmd >= 1: the depth lies beyond the horizontal.
// Only that upper bound is tested, and asin gives inclinations of at most pi/2: a line that passes
// the horizontal is answered on its near branch.
//
// The floating-point exception masks are set to mask every exception except division by zero
// (control value 0x80017 under mask 0x8001F) and are not restored. That setting is made only where
// the runtime has _control87 (MSVC builds). Elsewhere nothing is changed: unmasking the
// divide-by-zero trap for the rest of the host process would turn every division that the library
// lets run to an IEEE infinity (ctmdint's toolface from a vertical start, rcmdint on a line of zero
// length) into a crash of the host, and no answer of this routine depends on the setting.
void CPlan::rcvdint(double tvd) {
#if defined(_MSC_VER)
    _control87(0x80017, 0x8001F);
#endif
    const double dmd = m_stnC.md - m_stnPrev.md;
    const double dinc = m_stnC.inc - m_stnPrev.inc;
    m_stnA = m_stnPrev;
    m_stnA.dls = 0.0;
    if (is_zero(dmd)) return;

    if (m_stnC.inc == 0.0) m_stnC.azi = m_stnPrev.azi;
    if (m_stnPrev.inc == 0.0) m_stnPrev.azi = m_stnC.azi;
    const double daz = getdaz(m_stnC.azi - m_stnPrev.azi);

    double L;
    if (is_zero(dinc)) {
        if (is_zero(m_stnPrev.inc - HALF_PI)) return;
        m_stnA.inc = m_stnPrev.inc;
        L = (tvd - m_stnPrev.tvd) / std::cos(m_stnPrev.inc);
    } else {
        const double x = std::sin(m_stnPrev.inc) + (tvd - m_stnPrev.tvd) * dinc / dmd;
        if (x >= 1.0) return;
        m_stnA.inc = asin_u(x);
        L = (m_stnA.inc - m_stnPrev.inc) * dmd / dinc;
    }
    m_stnA.md = m_stnPrev.md + L;
    m_stnA.azi = deltaz(L * daz / dmd + m_stnPrev.azi);

    const SStation saved = m_stnC;
    m_stnC = m_stnA;
    radcur();
    m_stnA = m_stnC;
    m_stnC = saved;
}

// The start shared by the curve interpolations at a measured depth (btmdint, ctmdint):
// m_stnA.md = md; a start within 1e-6 of vertical takes the end azimuth and the line no turn.
// With bLineRates m_stnA takes the line's dls, tf, build and turn from m_stnC and the result is
// true. Otherwise m_stnA.inc and m_stnA.azi are the angles interpolated linearly at md (an end
// exactly vertical takes the other end's azimuth), daz is the line's azimuth change wrapped by
// getdaz, and the result is false: the caller derives the rates from the line's ends.
bool CPlan::curvePointAngles(double md, bool bLineRates, double& daz) {
    m_stnA.md = md;
    if (is_zero(m_stnPrev.inc)) {
        m_stnPrev.azi = m_stnC.azi;
        m_stnC.turn = 0.0;
    }
    if (bLineRates) {
        m_stnA.dls = m_stnC.dls;
        m_stnA.tf = m_stnC.tf;
        m_stnA.build = m_stnC.build;
        m_stnA.turn = m_stnC.turn;
        return true;
    }
    const double f = (md - m_stnPrev.md) / (m_stnC.md - m_stnPrev.md);
    m_stnA.inc = m_stnPrev.inc + f * (m_stnC.inc - m_stnPrev.inc);
    if (m_stnC.inc == 0.0) m_stnC.azi = m_stnPrev.azi;
    if (m_stnPrev.inc == 0.0) m_stnPrev.azi = m_stnC.azi;
    daz = getdaz(m_stnC.azi - m_stnPrev.azi);
    m_stnA.azi = deltaz(daz * f + m_stnPrev.azi);
    return false;
}

// The point of a build/turn line at measured depth md, by build_turn from the start.
// Reads m_stnPrev and m_stnC (md, inc, azi; with bLineRates the line's dls, tf, build and turn).
// Writes m_stnA md, inc, azi, tvd, ns, ew, dls, tf and the rates; m_stnC is saved and put back.
// With bLineRates the line's own rates are followed. Otherwise the rates are those that join the
// ends: build = dI / dmd and turn = daz2hdls(getdaz(A2 - A1), dmd, I1, build) (both left as they
// were when dmd is within 1e-6), with the inclination and azimuth at md interpolated linearly.
// A start within 1e-6 of vertical takes the end azimuth and the line no turn. Depths outside the
// line extrapolate along the build/turn curve.
void CPlan::btmdint(double md, bool bLineRates) {
    const SStation saved = m_stnC;
    double daz = 0.0;
    if (!curvePointAngles(md, bLineRates, daz)) {
        const double dmd = m_stnC.md - m_stnPrev.md;
        if (is_nonzero(dmd)) {
            m_stnA.build = (m_stnC.inc - m_stnPrev.inc) / dmd;
            m_stnA.turn = daz2hdls(daz, dmd, m_stnPrev.inc, m_stnA.build);
        }
    }
    m_stnC = m_stnA;
    build_turn();
    m_stnA = m_stnC;
    m_stnC = saved;
}

// The point of a constant-toolface line at measured depth md, by constant_toolface from the start.
// Reads m_stnPrev and m_stnC (md, inc, azi; with bLineRates the line's dls, tf, build and turn).
// Writes m_stnA md, inc, azi, tvd, ns, ew, dls, tf; m_stnC is saved and put back. The curve is laid
// with dttomd, which sets m_nPrev to 1 and m_nError.
// With bLineRates the line's own dogleg severity and toolface are followed. Otherwise they are
// derived from the line's ends: along a constant-toolface curve dA / d(ln tan(I/2)) = tan TF, so
// tf = atan(daz / ln(tan(I2/2) / tan(I1/2))) over the whole line (not the part up to md), and
// dls = (dI / cos tf) / dmd, or (daz / sin I1) / dmd for a line of exactly constant inclination.
// The inclination and azimuth at md are interpolated linearly (they are replaced by the curve's).
// A start within 1e-6 of vertical takes the end azimuth and the line no turn.
// As constant_toolface lays no arc shorter than 1.0 from the start, a depth less than 1.0 past the
// start leaves m_stnA's position as it stood (the caller places it).
void CPlan::ctmdint(double md, bool bLineRates) {
    const SStation saved = m_stnC;
    double daz = 0.0;
    if (!curvePointAngles(md, bLineRates, daz)) {
        const double dmd = m_stnC.md - m_stnPrev.md;
        const double dinc = m_stnC.inc - m_stnPrev.inc;
        m_stnA.tf =
            std::atan(daz / std::log(std::tan(m_stnC.inc / 2.0) / std::tan(m_stnPrev.inc / 2.0)));
        if (dinc == 0.0) {
            m_stnA.dls = (daz / std::sin(m_stnPrev.inc)) / dmd;
        } else {
            m_stnA.dls = (dinc / std::cos(m_stnA.tf)) / dmd;
        }
    }
    m_stnC = m_stnA;
    constant_toolface();
    m_stnA = m_stnC;
    m_stnC = saved;
}
