// Build/turn lines: inclination changes at a constant build rate B and azimuth at a constant turn
// rate T along the measured depth.
#include <cmath>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

using namespace orrin;

namespace {
/// Stand-in for a sum or difference of build and turn rates that is zero (|.| <= 1e-6) in the
/// closed-form integration, where it divides [rad/L]; it keeps one formula for every case.
constexpr double RATE_FLOOR = 1e-9;
}  // namespace

// The end of a build/turn line: from m_stnPrev over L = m_stnC.md - m_stnPrev.md with the build rate
// B = m_stnC.build and turn rate T = m_stnC.turn, writes m_stnC inc, azi, tvd, ns, ew, dls, tf.
//   - A start exactly vertical (inc == 0) turns its own azimuth by L T at once (m_stnPrev.azi becomes
//     the end azimuth) and the line then builds without turning.
//   - B and T exactly 0: a straight hold; dls = tf = 0.
//   - Plain turn model (m_bHorizontalTurn clear): I = I1 + B s and A = A1 + T s integrated in closed
//     form (the radius-of-curvature model): V2 = V1 + (sin(I1 + B L) - sin I1) / B (cos I1 L with no
//     build); east and north from the products sin I sin A, sin I cos A written as cosines of
//     (I -+ A), whose rates B -+ T are replaced by 1e-9 when zero. dls = hypot(B, T sin Im) at the
//     mid-course inclination Im; tf = getdaz(tangle(T sin Im, B)), 0 when both parts are zero.
//   - Horizontal-turn model (m_bHorizontalTurn set): the azimuth change is hdls2daz(T, L, I1, B) and
//     the position the minimum-curvature step between the end directions; a course of zero length
//     (|L| <= 1e-6) copies the start. dls = hypot(dI, sin(I1 + dI/2) dA) / L.
//   - From an exactly vertical start to an inclined end the toolface is the end azimuth.
//   - Clean-up: an inclination carried to pi or beyond folds back (2 pi - I2, azimuth + pi; exactly pi
//     folds too, deliberately); one carried below 0 stops at vertical and the build rate becomes the
//     rate that just reaches it, -I1 / L. tf is wrapped into (-pi, pi], the azimuth into [0, 2 pi).
// No error is reported.
void CPlan::build_turn() {
    SStation& P = m_stnPrev;
    SStation& C = m_stnC;
    const double L = C.md - P.md;
    const double B = C.build;
    double T = C.turn;
    double A2 = P.azi;
    if (P.inc == 0.0) {
        A2 = P.azi + L * T;
        P.azi = A2;
        T = 0.0;
    }
    const double I1 = P.inc, A1 = P.azi;
    double I2 = I1;
    double tf = 0.0;

    if (B == 0.0 && T == 0.0) {
        C.inc = I1;
        C.azi = A1;
        C.dls = 0.0;
        C.tf = 0.0;
        C.ew = P.ew + std::sin(I1) * L * std::sin(A1);
        C.ns = P.ns + std::sin(I1) * L * std::cos(A1);
        C.tvd = P.tvd + std::cos(I1) * L;
        return;
    }

    if (!m_bHorizontalTurn) {
        C.tvd = is_nonzero(B) ? P.tvd + (std::sin(I1 + B * L) - std::sin(I1)) / B
                              : P.tvd + std::cos(I1) * L;
        double p = B + T, m = B - T;
        if (is_zero(p)) p = RATE_FLOOR;
        if (is_zero(m)) m = RATE_FLOOR;
        const double Sp = std::sin(p * L) / (2 * p), Cp = (std::cos(p * L) - 1) / (2 * p);
        const double Sm = std::sin(m * L) / (2 * m), Cm = (std::cos(m * L) - 1) / (2 * m);
        const double sA = std::sin(A1), cA = std::cos(A1), sI = std::sin(I1), cI = std::cos(I1);
        C.ew = P.ew + cA * cI * (Sm - Sp) + sA * sI * (Sm + Sp) + cA * sI * (Cm - Cp) -
               sA * cI * (Cm + Cp);
        C.ns = P.ns + cA * sI * (Sm + Sp) - sA * sI * (Cm - Cp) - cA * cI * (Cm + Cp) -
               sA * cI * (Sm - Sp);
        const double h = T * std::sin(I1 + B * L / 2);
        C.dls = std::hypot(B, h);
        if (is_nonzero(B) || is_nonzero(h)) tf = getdaz(tangle(h, B));
        I2 = I1 + B * L;
        A2 = A1 + T * L;
    } else {
        if (is_zero(L)) {
            C = P;
            return;
        }
        const double dI = B * L;
        I2 = I1 + dI;
        const double dA = hdls2daz(T, L, I1, B);
        // A vertical end has no azimuth of its own; it keeps the start's. (Read so because a later
        // assignment of the turned azimuth would leave this case without effect.)
        A2 = I2 == 0.0 ? A1 : A1 + dA;
        C.inc = I2;
        C.azi = A2;
        mincur();
        const double h = std::sin(I1 + dI / 2) * dA;
        C.dls = std::hypot(dI, h) / L;
        if (is_nonzero(dI) || is_nonzero(h)) tf = getdaz(tangle(h, dI));
    }
    if (I1 == 0.0 && I2 != 0.0) tf = deltaz(A2);

    if (I2 >= PI) {
        I2 = TWO_PI - I2;
        A2 += PI;
    }
    if (I2 < 0.0) {
        I2 = 0.0;
        C.build = (0.0 - I1) / L;
    }
    C.inc = I2;
    C.azi = deltaz(A2);
    C.tf = getdaz(tf);
}

// A build/turn line from m_stnPrev to measured depth md (a course length when it is not beyond the
// start) at the given build and turn rates; the end in m_stnC. A course of exactly zero fails with
// -18. Sets m_nPrev = 1 and clears m_nError first.
void CPlan::bttomd(double md, double build, double turn) {
    m_nPrev = 1;
    m_nError = ERR_NONE;
    const double M1 = m_stnPrev.md;
    if (md <= M1) md += M1;
    m_stnC.md = md;
    if (M1 == md) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    m_stnC.inc = (md - M1) * build + m_stnPrev.inc;
    m_stnC.azi = hdls2daz(turn, md - M1, m_stnPrev.inc, build) + m_stnPrev.azi;
    m_stnC.build = build;
    m_stnC.turn = turn;
    build_turn();
}

// A build/turn line from m_stnPrev to vertical depth tvd. With a build rate the inclination reaching
// the depth follows from the circular depth relation sin I2 = sin I1 + B dV; past the horizontal
// (|sin I2| >= 1) or above the vertical (sin I2 < 0) fails with -17 and leaves in m_stnC.build the
// rate that would just reach horizontal, (1 - sin I1) / dV, or vertical, sin I1 / dV; an end depth
// not beyond the start fails with -18 and leaves the negated build. Without a build rate the line
// holds its inclination. Sets m_nPrev = 1 and clears m_nError first.
void CPlan::bttotvd(double tvd, double build, double turn) {
    m_stnC.tvd = tvd;
    m_nPrev = 1;
    m_nError = ERR_NONE;
    const double M1 = m_stnPrev.md, I1 = m_stnPrev.inc;
    const double dV = tvd - m_stnPrev.tvd;
    if (is_nonzero(build)) {
        const double s = build * dV + std::sin(I1);
        if (std::fabs(s) >= 1.0) {
            m_nError = ERR_TVD_UNREACHABLE;
            m_stnC.build = (1.0 - std::sin(I1)) / dV;
            return;
        }
        if (s < 0.0) {
            m_nError = ERR_TVD_UNREACHABLE;
            m_stnC.build = std::sin(I1) / dV;
            return;
        }
        m_stnC.inc = std::asin(s);
        m_stnC.md = (m_stnC.inc - I1) / build + M1;
        if (m_stnC.md <= M1) {
            m_nError = ERR_BUILD_SIGN;
            m_stnC.build = -build;
            return;
        }
    } else {
        m_stnC.md = dV / std::cos(I1) + M1;
        m_stnC.inc = I1;
    }
    if (M1 == m_stnC.md) {
        m_nError = ERR_BUILD_SIGN;
        return;
    }
    m_stnC.azi = hdls2daz(turn, m_stnC.md - M1, I1, build) + m_stnPrev.azi;
    m_stnC.build = build;
    m_stnC.turn = turn;
    build_turn();
}

// Solves the build/turn line after station m_nPrev ("BT1 MD" 105, "BT2 TVD" 115, "BT3 Inc." 125,
// "BT4 Azm." 135) and commits it as meth1d does. The line's end is found from its given quantity,
// then laid by build_turn. On failure the rate, sign or inclination that would work is written into
// the line's stored record (and the line is remembered in m_nSuggested, so that the solver keeps the
// suggestion when it puts the plan back):
//   105: a build carrying the line through vertical: build = I1 / (M1 - M2) (ends exactly vertical),
//        -18.
//   115: the depth from the line's target when it has a valid one. Plain turn model: no depth change
//        -17; past horizontal or above vertical -17 with the build that just reaches horizontal or
//        vertical; an end not beyond the start -18 with the build negated. Horizontal-turn model: the
//        length comes from the dogleg arc of the line's stored dls and tf that reaches the depth
//        (solve11, solve4, solve3), and a solver error does not stop the line.
//   125: a negative end inclination -14 (stored inclination 0); an end not beyond the start -18 with
//        the build negated.
//   135: a turn that does not reach the azimuth forwards -19 with the turn negated; a build carrying
//        the line through vertical -18 with build = I1 / (M1 - M2).
void CPlan::meth1b() {
    if (!loadLine()) return;
    const int line = m_nPrev + 1;
    SStation& stored = m_stations[line];
    SStation& C = m_stnC;
    const double M1 = m_stnPrev.md, I1 = m_stnPrev.inc;
    m_nError = ERR_NONE;
    const double B = C.build, T = C.turn;

    auto fail = [this, line](int code) {
        m_nError = code;
        m_nSuggested = line;
    };

    switch (C.method) {
    case 105:
        if ((C.md - M1) * B + I1 < 0.0) {
            stored.build = I1 / (M1 - C.md);
            return fail(ERR_BUILD_SIGN);
        }
        break;
    case 115: {
        gettar(line, 0);
        if (IsTargetKeyValid(m_target.name) && !m_target.flag) {
            C.tvd = m_target.tvd;
            C.target = m_target.name;
            C.flag = m_target.flag;
        }
        if (!m_bHorizontalTurn) {
            const double dV = C.tvd - m_stnPrev.tvd;
            if (is_zero(dV)) return fail(ERR_TVD_UNREACHABLE);
            if (is_zero(B)) {
                C.md = dV / std::cos(I1) + M1;
            } else {
                const double s = B * dV + std::sin(I1);
                if (std::fabs(s) >= 1.0) {
                    stored.build = (1.0 - std::sin(I1)) / dV;
                    return fail(ERR_TVD_UNREACHABLE);
                }
                if (s < 0.0) {
                    stored.build = std::sin(I1) / dV;
                    return fail(ERR_TVD_UNREACHABLE);
                }
                C.inc = std::asin(s);
                C.md = (C.inc - I1) / B + M1;
                if (C.md <= M1) {
                    stored.build = -B;
                    return fail(ERR_BUILD_SIGN);
                }
            }
        } else {
            solve11();
            solve4();
            solve3();
            if (is_nonzero(C.dls)) C.md = C.dl / C.dls + M1;
        }
        break;
    }
    case 125:
        if (C.inc < 0.0) {
            stored.inc = 0.0;
            return fail(ERR_INCREASE_INC);
        }
        C.md = 0.0;
        if (is_nonzero(B)) C.md = (C.inc - I1) / B + M1;
        if (C.md <= M1) {
            stored.build = -B;
            return fail(ERR_BUILD_SIGN);
        }
        break;
    case 135:
        C.md = 0.0;
        if (is_nonzero(T)) C.md = dazhdls2md(getdaz(C.azi - m_stnPrev.azi), T, I1, B) + M1;
        if (C.md <= M1) {
            stored.turn = -T;
            return fail(ERR_TURN_SIGN);
        }
        if ((C.md - M1) * B + I1 < 0.0) {
            stored.build = I1 / (M1 - C.md);
            return fail(ERR_BUILD_SIGN);
        }
        break;
    default: return;
    }
    build_turn();
    m_stations[line] = m_stnC;
    ++m_nPrev;
    m_nError = ERR_NONE;
}
