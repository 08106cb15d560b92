// The free-standing dogleg calculator.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

// Solves one arc from m_stnPrev as it stands, given a measured depth and any sufficient set of end
// inclination, end azimuth, dogleg severity and toolface, and projects its end straight ahead onto a
// plane. Returns m_nError (0 on success); changes no line of the plan.
//   - inc, azi, dls and tf are stored into m_stnC first; those not given are then solved. tfGiven is
//     not consulted: the toolface is solved whenever the other flags leave it unknown.
//   - inc, azi and dls all given: the toolface (solve1) and dogleg (solve2); the length is dl / dls
//     (0 with no dogleg severity), and md is not used.
//   - otherwise md (a course length when not beyond the start) fixes the length L; a zero L (within
//     1e-6) fails with -18, and the solver pair is chosen by the given flags:
//       neither inc nor azi: solve4, solve3 (from dogleg L dls and toolface; without a given dls the
//       dogleg is whatever m_stnC.dl holds), azi only: solve6, solve2; azi and dls: solve9(0),
//       solve1; inc and azi: solve1, solve2; inc and dls: solve8(0), solve1; inc only: solve10,
//       solve3. Where dls is not given it becomes dl / L.
//   - the arc step meth_optdl1 lays the end; build and turn follow from the end angles.
//   - projection (only without error and with L > 0): the straight line from the end along its
//     direction v meets the plane through (plane.tvd, ns, ew) with normal (plane.ue, un, uv) at
//     t = ((point - end) . n) / (n . v): into m_stnA (md = M2 + |t|, rates 0). A direction parallel to
//     the plane (|n . v| <= 1e-6) fails with -17, a plane behind the end (t < 0) with -10.
// Sets m_nPrev = 1.
int CPlan::OuijaCalcs(double md, bool incGiven, double inc, bool aziGiven, double azi,
                      bool dlsGiven, double dls, bool /*tfGiven*/, double tf, SStation plane) {
    SStation& C = m_stnC;
    C.tf = tf;
    C.dls = dls;
    C.inc = inc;
    C.azi = azi;
    m_nError = ERR_NONE;
    m_nPrev = 1;
    const double M1 = m_stnPrev.md;
    double L = 0.0;
    if (incGiven && aziGiven && dlsGiven) {
        solve1();
        solve2();
        L = is_nonzero(C.dls) ? C.dl / C.dls : 0.0;
        C.md = M1 + L;
    } else {
        if (md <= M1) md += M1;
        C.md = md;
        L = md - M1;
        if (is_zero(L)) {
            m_nError = ERR_BUILD_SIGN;
            return m_nError;
        }
        if (dlsGiven) C.dl = L * dls;
        if (!incGiven && !aziGiven) {
            solve4();
            solve3();
            if (!dlsGiven) C.dls = C.dl / L;
        } else if (!incGiven && !dlsGiven) {
            solve6();
            solve2();
            C.dls = C.dl / L;
        } else if (!incGiven) {
            solve9(0);
            solve1();
        } else if (aziGiven) {
            solve1();
            solve2();
            C.dls = C.dl / L;
        } else if (dlsGiven) {
            solve8(0);
            solve1();
        } else {
            solve10();
            solve3();
            C.dls = C.dl / L;
        }
    }
    meth_optdl1();
    C.turn = 0.0;
    C.build = (C.inc - m_stnPrev.inc) / L;
    C.turn = daz2hdls(getdaz(C.azi - m_stnPrev.azi), L, m_stnPrev.inc, C.build);

    if (m_nError == ERR_NONE && L > 0.0) {
        double ve = 0.0, vn = 0.0, vv = 0.0;
        vector(C.inc, C.azi, ve, vn, vv);
        const double den = plane.un * vn + plane.ue * ve + plane.uv * vv;
        if (is_zero(den)) {
            m_nError = ERR_TVD_UNREACHABLE;
            return m_nError;
        }
        const double t = ((plane.ns - C.ns) * plane.un + (plane.ew - C.ew) * plane.ue +
                          (plane.tvd - C.tvd) * plane.uv) /
                         den;
        if (t < 0.0) {
            m_nError = ERR_TANGENT_OVERLAP;
            return m_nError;
        }
        m_stnA.ew = C.ew + t * ve;
        m_stnA.ns = C.ns + t * vn;
        m_stnA.tvd = C.tvd + t * vv;
        m_stnA.md = C.md + std::fabs(t);
        m_stnA.dls = m_stnA.tf = m_stnA.build = m_stnA.turn = 0.0;
    }
    return m_nError;
}
