// Two-dimensional slant and S-shape profiles: a whole path from the start station to the target in
// the vertical plane that holds both, made of holds and circular arcs, two of whose seven parameters
// are solved so that the path closes on the target.
//
// The profile vector. The solver works on eight doubles x[0] ... x[7]; x[0] takes no part, the
// others are the profile's parameters:
//   x[1] kick-off hold [L]        x[2] build radius [L]       x[3] tangent inclination [deg]
//   x[4] tangent hold [L]         x[5] drop radius [L]        x[6] final inclination [deg]
//   x[7] final hold [L]
// This is the one place in the library that works in degrees: holding the two angles in degrees
// makes one perturbation step of 0.1 suit every entry, lengths and angles alike. The fields of CPlan
// hold the angles in [rad]; the conversions below use RAD_PER_DEG and DEG_PER_RAD.
//
// Radii are signed: an arc from inclination a to b has length R (b - a), which must not be negative,
// so a build (b > a) needs R > 0 and a drop R < 0.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {

/// Entries of the profile vector, x[0] unused.
constexpr int PROFILE_SIZE = 8;
/// Step by which each unknown is raised to form the forward-difference Jacobian [L or deg]; its
/// reciprocal, 10, scales the differences.
constexpr double JACOBIAN_STEP = 0.1;
/// Corrections the Newton solver makes before it gives up with -4; the hundredth correction always
/// ends in failure, since convergence is recognised only at the top of a pass.
constexpr int NEWTON_PASSES = 100;
/// Sum of the two closure errors at which the profile counts as closed [L].
constexpr double CLOSURE_TOL = 1e-6;
/// The only acceptance test of a solution: each closure error, as last evaluated, within this [L].
/// Deliberately loose: a solver that stops on a singular Jacobian still passes when it is close.
constexpr double ACCEPT_RESIDUAL = 20.0;
/// Start inclination at or below which the start counts as vertical and needs no line-up [rad].
constexpr double VERTICAL_START = 0.0001;
/// Largest azimuth difference between an inclined start and the target that still lines up [rad].
constexpr double LINE_UP_TOL = 0.001;
/// Inclination below which a written station gets azimuth 0, and below which an arc's start counts
/// as vertical for its toolface [rad].
constexpr double VERTICAL_STATION = 1e-5;
/// A solved hold of length in (-HOLD_SLACK, 0) becomes a hold of +HOLD_SLACK, with its own station,
/// rather than a failure [L].
constexpr double HOLD_SLACK = 0.01;
/// Starting values of the unknowns as fractions of the straight distance H to the target: holds
/// and radii, and the tangent hold.
constexpr double GUESS_SHORT = 0.1;
constexpr double GUESS_TANGENT = 0.4;
/// Starting inclinations as fractions of the inclination A of the straight line to the target: the
/// arc that comes first leans less than A, the other more (or the reverse when the drop radius is
/// positive).
constexpr double GUESS_LOW = 0.9;
constexpr double GUESS_HIGH = 1.1;
/// Beyond this many turns an angle is reduced with fmod before the turn-by-turn wrap, so that the
/// wrap ends for any finite value [deg].
constexpr double WRAP_FAR = 360.0 * 1e6;

/// An angle in degrees brought into [0, 360): whole turns are subtracted while it is 360 or more,
/// then added while it is below 0. A value just below 0 may thus end at 360 itself, as the
/// turn-by-turn wrap gives.
double wrapDegrees(double a) {
    if (!std::isfinite(a)) return a;
    if (std::fabs(a) > WRAP_FAR) a = std::fmod(a, 360.0);
    while (a >= 360.0) a -= 360.0;
    while (a < 0.0) a += 360.0;
    return a;
}

}  // namespace

// Closure errors of the profile p (angles in degrees) that starts at inclination m_dStartInc [rad]:
// each hold of length L at inclination I goes (L cos I) down and (L sin I) across, each arc of radius
// R from inclination a to b goes R (sin b - sin a) down and R (cos a - cos b) across, so
//   dv = p1 cos I0 + p2 (sin I1 - sin I0) + p4 cos I1 + p5 (sin I2 - sin I1) + p7 cos I2 - depth,
//   dh = p1 sin I0 + p2 (cos I0 - cos I1) + p4 sin I1 + p5 (cos I1 - cos I2) + p7 sin I2 - disp,
// with depth = m_dDepthToTarget and disp = m_dDisplacement. A slant has p5 = p6 = p7 = 0.
void CPlan::serr(double* p, double& dv, double& dh) {
    const double i0 = m_dStartInc;
    const double i1 = p[3] * RAD_PER_DEG;
    const double i2 = p[6] * RAD_PER_DEG;
    const double s0 = std::sin(i0), c0 = std::cos(i0);
    const double s1 = std::sin(i1), c1 = std::cos(i1);
    const double s2 = std::sin(i2), c2 = std::cos(i2);
    dv = p[1] * c0 + p[2] * (s1 - s0) + p[4] * c1 + p[5] * (s2 - s1) + p[7] * c2 - m_dDepthToTarget;
    dh = p[1] * s0 + p[2] * (c0 - c1) + p[4] * s1 + p[5] * (c1 - c2) + p[7] * s2 - m_dDisplacement;
}

// Solves the two unknowns x[u], x[w] (u = m_nSolveFor1, w = m_nSolveFor2) of the profile vector by
// Newton's method with a forward-difference Jacobian, so that serr vanishes.
//   - Reads m_dDisplacement, m_dDepthToTarget, m_dStartInc and the seven parameter fields; on success
//     writes all seven back (angles in [rad]) and leaves m_nError as it was.
//   - -12 when the displacement is not positive or the depth to the target is zero (|.| <= 1e-6).
//   - Starting values, with H the straight distance to the target and A the inclination of that
//     straight line [deg]: holds and radii 0.1 H, tangent 0.4 H, the final hold its given length
//     (0.1 H when that is zero), and the inclinations 0.9 A (tangent) and 1.1 A (final), swapped
//     when the drop radius is positive.
//   - The given values are checked once the starting values are in (so the unknowns pass): kick-off
//     below 0 gives -9, build radius exactly 0 gives -1, tangent inclination below 0 gives -14,
//     tangent hold below 0 gives -10. Drop radius, final inclination and final hold are not checked.
//   - Each pass raises u and then w by 0.1 to get J = -(de/dx) and solves J (du, dw) = E. The loop
//     ends on a singular Jacobian (|D| or |J11| below 1e-6), or when |E1| + |E2| <= 1e-6; these tests
//     are written so that a NaN ends the loop too. The 100th correction fails with -4.
//   - The one acceptance test: the errors last evaluated, which are those with w raised by 0.1, must
//     both lie within 20 [L]; otherwise (or when they are NaN) -4. A near-singular case that is
//     already close is thereby accepted: deliberate.
//   - The two angles are wrapped into [0, 360) degrees before they are written back.
// An unknown index outside 0 ... 7 cannot address the vector and fails with -4; index 0 addresses
// the unused entry, whose Jacobian column is zero, so the loop stops at once and the acceptance test
// alone decides.
void CPlan::angus() {
    if (m_dDisplacement <= 0.0 || is_zero(m_dDepthToTarget)) {
        m_nError = ERR_IN_LINE;
        return;
    }
    const int u = m_nSolveFor1;
    const int w = m_nSolveFor2;
    if (u < 0 || u >= PROFILE_SIZE || w < 0 || w >= PROFILE_SIZE) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }
    const double H = std::hypot(m_dDisplacement, m_dDepthToTarget);
    const double A = std::atan2(m_dDisplacement, m_dDepthToTarget) * DEG_PER_RAD;

    double x[PROFILE_SIZE] = {0.0,
                              m_dLength1,
                              m_dBuildRadius,
                              m_dHoldInc * DEG_PER_RAD,
                              m_dLength2,
                              m_dDropRadius,
                              m_dFinalInc * DEG_PER_RAD,
                              m_dLength3};
    double g[PROFILE_SIZE] = {0.0,
                              GUESS_SHORT * H,
                              GUESS_SHORT * H,
                              0.0,
                              GUESS_TANGENT * H,
                              GUESS_SHORT * H,
                              0.0,
                              is_zero(m_dLength3) ? GUESS_SHORT * H : m_dLength3};
    g[3] = (m_dDropRadius > 0.0 ? GUESS_LOW : GUESS_HIGH) * A;
    g[6] = (m_dDropRadius > 0.0 ? GUESS_HIGH : GUESS_LOW) * A;
    x[u] = g[u];
    x[w] = g[w];

    if (x[1] < 0.0) {
        m_nError = ERR_KICKOFF_OVERLAP;
        return;
    }
    if (x[2] == 0.0) {
        m_nError = ERR_BUILD_TURN;
        return;
    }
    if (x[3] < 0.0) {
        m_nError = ERR_INCREASE_INC;
        return;
    }
    if (x[4] < 0.0) {
        m_nError = ERR_TANGENT_OVERLAP;
        return;
    }

    const double scale = 1.0 / JACOBIAN_STEP;
    double e1 = 0.0, e2 = 0.0;
    serr(x, e1, e2);
    int passes = 1;
    for (;;) {
        const double E1 = e1;
        const double E2 = e2;
        x[u] += JACOBIAN_STEP;
        serr(x, e1, e2);
        const double J11 = (E1 - e1) * scale;
        const double J21 = (E2 - e2) * scale;
        x[u] -= JACOBIAN_STEP;
        x[w] += JACOBIAN_STEP;
        serr(x, e1, e2);
        const double J12 = (E1 - e1) * scale;
        const double J22 = (E2 - e2) * scale;
        x[w] -= JACOBIAN_STEP;

        const double D = J12 * J21 - J11 * J22;
        if (!(std::fabs(D) >= TOL_ZERO)) break;
        if (!(std::fabs(J11) >= TOL_ZERO)) break;
        if (!(std::fabs(E1) + std::fabs(E2) > CLOSURE_TOL)) break;

        const double dw = (J21 * E1 - J11 * E2) / D;
        const double du = (E1 - J12 * dw) / J11;
        x[u] += du;
        x[w] += dw;
        serr(x, e1, e2);
        if (++passes > NEWTON_PASSES) {
            m_nError = ERR_UNKNOWN_SOLUTION;
            return;
        }
    }
    if (!(std::fabs(e1) <= ACCEPT_RESIDUAL && std::fabs(e2) <= ACCEPT_RESIDUAL)) {
        m_nError = ERR_UNKNOWN_SOLUTION;
        return;
    }

    x[3] = wrapDegrees(x[3]);
    x[6] = wrapDegrees(x[6]);
    m_dLength1 = x[1];
    m_dBuildRadius = x[2];
    m_dHoldInc = x[3] * RAD_PER_DEG;
    m_dLength2 = x[4];
    m_dDropRadius = x[5];
    m_dFinalInc = x[6] * RAD_PER_DEG;
    m_dLength3 = x[7];
}

// Solves the 2D profile whose first station follows m_nPrev, and writes one station per part:
// kick-off hold (when its length is not zero), build arc, tangent hold (when not zero), and for an
// S-shape the drop arc and the final hold (when not zero).
//   - The start station and the profile's given values come from readLine(-1), GetData without its cursor guard; a rate within 1e-6 of
//     zero leaves its radius as it was, otherwise radius = 1 / rate.
//   - The profile lies in the vertical plane of azimuth theta = tangle(dE, dN) from the start to the
//     target; the displacement is hypot(dN, dE) and the depth to the target dV.
//   - An inclined start (inc above 0.0001 rad, at a depth that is not negative) must already point
//     along theta within 0.001 rad (-3). A vertical start needs no line-up: the vertical stations at
//     and above it (inc below 0.0001) get azimuth 0 instead.
//   - angus solves the two unknowns; then rates = 1 / radius for radii outside +-1e-6.
//   - A hold solved to a length in (-0.01, 0) is written as a hold of 0.01; a shorter one fails:
//     -9 kick-off, -10 tangent, -11 final hold. An arc whose length R (b - a) is negative fails: -1
//     build, -2 drop.
//   - Each station's position is stepped from the one before: a hold of length L at inclination I
//     by (L cos I) down and (L sin I) across, an arc by its radius as in serr; "across" goes
//     (cos theta) north and (sin theta) east. Stations get azimuth theta, or 0 below inclination
//     1e-5. Holds have zero rates; an arc has dls |rate|, signed build, no turn, and toolface theta
//     when it kicks off from vertical, otherwise 0 for a build and pi for a drop or a flat arc.
// Only md, inc, azi, tvd, ns, ew, dls, tf, build and turn of the stations are written; on success
// m_nError is 0 and m_nPrev the last station written.
void CPlan::meth2d() {
    readLine(-1);
    if (is_nonzero(m_dBuildDLS)) m_dBuildRadius = 1.0 / m_dBuildDLS;
    if (is_nonzero(m_dDropDLS)) m_dDropRadius = 1.0 / m_dDropDLS;

    const double dN = m_target.ns - m_stnPrev.ns;
    const double dE = m_target.ew - m_stnPrev.ew;
    m_dDepthToTarget = m_target.tvd - m_stnPrev.tvd;
    m_dDisplacement = std::hypot(dN, dE);
    const double theta = tangle(dE, dN);

    if (m_dStartInc > VERTICAL_START && !(m_stnPrev.md < 0.0)) {
        if (std::fabs(getdaz(theta - m_stnPrev.azi)) > LINE_UP_TOL) {
            m_nError = ERR_NOT_LINED_UP;
            return;
        }
    } else {
        for (int k = m_nPrev; k >= 0 && hasStation(k); --k) {
            if (!(m_stations[k].inc < VERTICAL_START)) break;
            m_stations[k].azi = 0.0;
        }
    }
    m_stnPrev.azi = theta;

    if (m_nProfileType == 1) m_dDropRadius = m_dFinalInc = m_dLength3 = 0.0;

    angus();
    if (m_nError != ERR_NONE) return;

    if (is_nonzero(m_dBuildRadius)) m_dBuildDLS = 1.0 / m_dBuildRadius;
    if (is_nonzero(m_dDropRadius)) m_dDropDLS = 1.0 / m_dDropRadius;

    const double st = std::sin(theta), ct = std::cos(theta);
    const double i0 = m_dStartInc, i1 = m_dHoldInc, i2 = m_dFinalInc;
    const double s0 = std::sin(i0), c0 = std::cos(i0);
    const double s1 = std::sin(i1), c1 = std::cos(i1);
    const double s2 = std::sin(i2), c2 = std::cos(i2);

    for (double* L : {&m_dLength1, &m_dLength2, &m_dLength3}) {
        if (*L > -HOLD_SLACK && *L < 0.0) *L = HOLD_SLACK;
    }

    int k = m_nPrev + 1;
    // Writes station k from station k - 1 over the given course: depth, inclination, position step
    // and rates. A course that would end above station k - 1 fails with `backwards` instead.
    auto lay = [&](double course, double inc, double down, double across, double dls, double tf,
                   double rate, PlanError backwards) -> bool {
        if (!hasStation(k) || !hasStation(k - 1)) {
            m_nError = ERR_UNKNOWN_SOLUTION;
            return false;
        }
        const SStation& prev = m_stations[k - 1];
        const double md = prev.md + course;
        if (md < prev.md) {
            m_nError = backwards;
            return false;
        }
        SStation& s = m_stations[k];
        s.md = md;
        s.inc = inc;
        s.azi = inc < VERTICAL_STATION ? 0.0 : theta;
        s.tvd = prev.tvd + down;
        s.ns = prev.ns + across * ct;
        s.ew = prev.ew + across * st;
        s.dls = dls;
        s.tf = tf;
        s.build = rate;
        s.turn = 0.0;
        ++k;
        return true;
    };
    // A hold of length L at inclination I (cosine c, sine s), laid when L is positive; a negative L
    // fails with `overlap`, a zero one is no part.
    auto hold = [&](double L, double inc, double c, double s, PlanError overlap) -> bool {
        if (L < 0.0) {
            m_nError = overlap;
            return false;
        }
        return !(L > 0.0) || lay(L, inc, L * c, L * s, 0.0, 0.0, 0.0, overlap);
    };
    // The toolface of an arc from inclination a to b: along the azimuth when it leaves the vertical,
    // otherwise 0 for a build and pi for a drop (or no change).
    auto arcTF = [theta](bool leavesVertical, double a, double b) {
        return leavesVertical ? deltaz(theta) : (b <= a ? PI : 0.0);
    };

    if (!hold(m_dLength1, i0, c0, s0, ERR_KICKOFF_OVERLAP)) return;
    if (!lay((i1 - i0) * m_dBuildRadius, i1, m_dBuildRadius * (s1 - s0), m_dBuildRadius * (c0 - c1),
             std::fabs(m_dBuildDLS), arcTF(i0 < VERTICAL_STATION && i1 > 0.0, i0, i1), m_dBuildDLS,
             ERR_BUILD_TURN))
        return;
    if (!hold(m_dLength2, i1, c1, s1, ERR_TANGENT_OVERLAP)) return;
    if (m_nProfileType != 1) {
        if (!lay((i2 - i1) * m_dDropRadius, i2, m_dDropRadius * (s2 - s1),
                 m_dDropRadius * (c1 - c2), std::fabs(m_dDropDLS),
                 arcTF(is_zero(i1) && is_nonzero(i2), i1, i2), m_dDropDLS, ERR_BUILD_TURN2))
            return;
        if (!hold(m_dLength3, i2, c2, s2, ERR_FINAL_OVERLAP)) return;
    }

    m_nError = ERR_NONE;
    m_nPrev = k - 1;
}
