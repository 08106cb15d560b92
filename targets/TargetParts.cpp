// The parts of the build/turn and online target lines: a build/turn curve, a circular arc and a
// straight hold, each computed from the station before it into a station of its own, and the step
// that stores a computed part in the plan.
//
// Fields of a part (angles [rad], rates [rad/L], lengths [L]); ue, un, uv always hold its end
// direction (sin A sin I, cos A sin I, cos I):
//   hold H >= 0:     md + H, direction kept, position + H t; dls, tf, build, turn, dl all 0.
//   arc K, dogleg DL: md + DL / K, the given end direction, the exact circle's end (the
//                    minimum-curvature step); dls K, tf getfo's toolface, build = change of
//                    inclination / course, turn = daz2hdls of getdaz(change of azimuth), dl DL.
//   build/turn B, T over L: md + L, inc, azi, position, dls and tf as build_turn gives them in the
//                    plan's turn model; build B, turn T, dl = acos(t(start) . t(end)).
// A part of zero length repeats the station before it with zero rates.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"
#include "targets/TargetSolvers.h"

using namespace orrin;

namespace {

Vec3 angleDir(const SStation& s) {
    return {std::sin(s.inc) * std::sin(s.azi), std::sin(s.inc) * std::cos(s.azi), std::cos(s.inc)};
}

/// `from` as a part of zero length: its md, position and direction, with zero rates.
SStation zeroPart(const SStation& from) {
    SStation p = from;
    p.dls = p.tf = p.build = p.turn = p.dl = 0.0;
    CPlan::vector(p.inc, p.azi, p.ue, p.un, p.uv);
    return p;
}

}  // namespace

// A straight hold of length H along the direction of `from`.
SStation CPlan::holdpart(const SStation& from, double H) {
    SStation p = zeroPart(from);
    p.md = from.md + H;
    p.tvd = from.tvd + H * p.uv;
    p.ns = from.ns + H * p.un;
    p.ew = from.ew + H * p.ue;
    return p;
}

// The circular arc of curvature K from `from`, tangent to its direction t, that ends heading along
// the unit direction u = (e, n, v). With DL = acos(t . u) the course is DL / K and the end lies
// tan(DL/2) / K (t + u) from the start (the two tangent lines of the arc, each tan(DL/2) / K long).
// A dogleg within 1e-6 of zero, or K not above 1e-6, gives a part of zero length (no arc exists);
// the callers only ask for arcs shorter than pi. The end's azimuth is tangle(e, n), 0 when vertical.
SStation CPlan::arcpart(const SStation& from, double e, double n, double v, double K) {
    const Vec3 t = angleDir(from), u{e, n, v};
    const double DL = acos_u(dot(t, u));
    if (!is_nonzero(DL) || !(K > TOL_ZERO)) return zeroPart(from);
    SStation p = from;
    const double L = DL / K;
    const double F = std::tan(DL / 2.0) / K;
    p.md = from.md + L;
    p.inc = acos_u(v);
    p.azi = tangle(e, n);
    p.ue = e, p.un = n, p.uv = v;
    p.tvd = from.tvd + F * (t.v + v);
    p.ns = from.ns + F * (t.n + n);
    p.ew = from.ew + F * (t.e + e);
    double dl = 0.0, daz = 0.0;
    p.tf = getfo(from.inc, from.azi, p.inc, p.azi, dl, daz);
    p.dls = K;
    p.build = (p.inc - from.inc) / L;
    p.turn = daz2hdls(getdaz(p.azi - from.azi), L, from.inc, p.build);
    p.dl = DL;
    return p;
}

// The build/turn curve from `from` over the course L at build rate B and turn rate T, laid by
// build_turn in the plan's turn model (m_bHorizontalTurn as it stands). build_turn works on the
// working stations; m_stnPrev (which it turns when the start is exactly vertical) is put back
// afterwards, m_stnC is left holding the curve's end. A course not above 1e-6 gives a part of zero
// length.
SStation CPlan::btpart(const SStation& from, double B, double T, double L) {
    if (!(L > TOL_ZERO)) return zeroPart(from);
    const SStation start = m_stnPrev;
    m_stnPrev = from;
    m_stnC = from;
    m_stnC.md = from.md + L;
    m_stnC.build = B;
    m_stnC.turn = T;
    build_turn();
    SStation p = m_stnC;
    m_stnPrev = start;
    p.build = B;
    p.turn = T;
    vector(p.inc, p.azi, p.ue, p.un, p.uv);
    p.dl = acos_u(dot(angleDir(from), Vec3{p.ue, p.un, p.uv}));
    return p;
}

// Writes the computed part into station k: every solved value (md, inc, azi, tvd, ns, ew, dls, tf,
// build, turn, ue, un, uv, dl), then its code and, on the line's last station, the target's name and
// flag (tagStation). aux1 and aux2 are not touched: they hold the line's settings record.
void CPlan::storePart(int k, const SStation& part, short code, bool last) {
    SStation& s = m_stations[k];
    s.md = part.md, s.inc = part.inc, s.azi = part.azi;
    s.tvd = part.tvd, s.ns = part.ns, s.ew = part.ew;
    s.dls = part.dls, s.tf = part.tf, s.build = part.build, s.turn = part.turn;
    s.ue = part.ue, s.un = part.un, s.uv = part.uv, s.dl = part.dl;
    tagStation(k, code, last);
}

// Writes a solved target line: its parts into the stations after m_nPrev (the first with the line's
// code, the others 1, the last aiming at the target), advances m_nPrev past them and clears
// m_nError.
void CPlan::storeLine(short code, std::initializer_list<SStation> parts) {
    int k = m_nPrev + 1;
    for (const SStation& part : parts) {
        storePart(k, part, k == m_nPrev + 1 ? code : 1,
                  k == m_nPrev + static_cast<int>(parts.size()));
        ++k;
    }
    m_nPrev += static_cast<int>(parts.size());
    m_nError = ERR_NONE;
}
