// The first-family line methods: straight holds, lines to an end inclination and azimuth, lines of
// a given dogleg severity with one end angle, and lines of a given dogleg severity and toolface.
// Each is one circular arc (or a hold) from the station before it, laid by the arc step
// meth_optdl1.
//
// Angles [rad], dogleg severity, build and turn [rad/L], lengths [L].
#include "geometry/Numerics.h"
#include "geometry/TrigMemo.h"
#include "plan/CPlan.h"

#include <cmath>

using namespace orrin;

namespace {

/// A vertical depth given this far or further above the start is not a depth but a depth increment
/// below the start [L]. Deliberately large: no planned line climbs 1000 length units, so such a
/// value can only be meant as an increment.
constexpr double RELATIVE_TVD = -1000.0;
/// Course length taken when neither the given measured depth nor its reading as a course length is
/// positive, and depth increment taken when a relative depth is not positive [L].
constexpr double DEFAULT_STEP = 1.0;
/// Courses this short or shorter are not laid by the arc step: the end keeps the direction and
/// position that the line's solvers left [L].
constexpr double MIN_ARC_COURSE = 0.001;

/// The method codes of the first family, as stored in a station.
enum Code1D : short {
    STRAIGHT_MD = 10,
    STRAIGHT_TVD = 20,
    INC_AZI_MD = 30,
    INC_AZI_TVD = 40,
    INC_AZI_DLS = 50,
    DLS_INC_MD_RIGHT = 60,
    DLS_TF_INC_MD = 70,
    DLS_AZI_MD_UPPER = 80,
    DLS_TF_AZI_MD = 90,
    DLS_TF_MD = 100,
    DLS_TF_TVD = 110,
    DLS_TF_INC = 120,
    DLS_TF_AZI = 130,
    STRAIGHT_VSEC = 140,
    DLS_AZI_TVD = 150,
    DLS_AZI_MD_LOWER = 160,
    DLS_INC_MD_LEFT = 180,
};

/// Methods whose end depth may come from the target the line names.
bool takesTargetDepth(short code) {
    return code == STRAIGHT_TVD || code == STRAIGHT_VSEC || code == INC_AZI_TVD ||
           code == DLS_TF_TVD || code == DLS_AZI_TVD;
}

}  // namespace

// Solves the line after station m_nPrev, a line of the first family, and stores it.
// Reads the start station m_nPrev and the line's own station m_nPrev + 1, whose fields state the
// problem: md [L] (a value not beyond the start is a course length), inc, azi, tf [rad], tvd [L]
// (a value RELATIVE_TVD or more above the start is an increment), dls [rad/L], and the target it
// names; the target's depth replaces the given one for the methods that end at a depth.
//   The missing quantities come from the single-line solvers; meth_optdl1 then lays the arc;
//   build = (I2 - I1) / L and turn = daz2hdls(getdaz(A2 - A1), L, I1, build), the turn only when
//   both inclinations are positive.
// On success the finished station replaces station m_nPrev + 1, m_nPrev moves on by one and
// m_nError is 0. On failure m_nError is negative and neither the stations nor m_nPrev change;
// m_nFirst and m_nLast name the line either way.
// Degenerate: codes outside the family leave the line untouched and return without error. When
// station m_nPrev or m_nPrev + 1 does not exist nothing at all is read or written.
// Deliberate: the dogleg severity lines 60, 180, 70, 80, 160, 90 and 100 keep the given severity
// and course; the arc is laid with them and the toolface the solvers found, so a line whose inputs
// over-determine it (70, 90) ends where severity, course and toolface take it.
// Loads the line after station m_nPrev for a line method: m_stnPrev = station m_nPrev, m_stnC =
// station m_nPrev + 1, and the end depth from the course length L = md - M1; a given MD not beyond
// the start is read as the course length itself, and one of 0 or less as DEFAULT_STEP. False (and
// nothing loaded) when either station lies outside the array.
bool CPlan::loadLine() {
    const int line = m_nPrev + 1;
    if (!hasStation(m_nPrev) || !hasStation(line)) return false;
    m_stnPrev = m_stations[m_nPrev];
    m_stnC = m_stations[line];
    double L = m_stnC.md - m_stnPrev.md;
    if (L <= 0.0) {
        L = m_stnC.md;
        if (L <= 0.0) L = DEFAULT_STEP;
    }
    m_stnC.md = m_stnPrev.md + L;
    return true;
}

void CPlan::meth1d() {
    if (!loadLine()) return;
    const int line = m_nPrev + 1;
    m_nFirst = m_nLast = line;
    if (!firstFamilyStep(line)) return;
    m_stations[line] = m_stnC;
    ++m_nPrev;
    m_nError = ERR_NONE;
}

// The solve of one first-family line in the working stations: from m_stnPrev, the line given in
// m_stnC (its course length already read) is completed in m_stnC as meth1d describes; `line` is
// the line's station, from which the methods that end at a target depth load their target. True
// when the line is solved (m_nError 0); false on an error, or for a code of another family (then
// with m_nError 0 and m_stnC as given). No stored station is read or written otherwise, so
// SolveSurvey shares this step with the plan.
bool CPlan::firstFamilyStep(int line) {
    double L = m_stnC.md - m_stnPrev.md;

    if (m_stnC.tvd - m_stnPrev.tvd <= RELATIVE_TVD) {
        if (m_stnC.tvd > 0.0)
            m_stnC.tvd += m_stnPrev.tvd;
        else
            m_stnC.tvd = m_stnPrev.tvd + DEFAULT_STEP;
    }

    m_stnC.dl = L * m_stnC.dls;

    // A target name that is not in the plan's target table makes gettar read the target from the
    // line's own stored station, so its depth is the stored value as given, before the increment
    // reading above. Kept as it is: such a line names its own end point.
    const short code = m_stnC.method;
    if (takesTargetDepth(code)) {
        gettar(line, 0);
        if (IsTargetKeyValid(m_target.name) && !m_target.flag) {
            m_stnC.tvd = m_target.tvd;
            m_stnC.target = m_target.name;
            m_stnC.flag = m_target.flag;
        }
    }

    const double M1 = m_stnPrev.md;
    const double I1 = m_stnPrev.inc;
    // Curvature from the dogleg over the course, 0 for no course.
    const auto rateFromDogleg = [&] { m_stnC.dls = is_nonzero(L) ? m_stnC.dl / L : 0.0; };
    // Course from the dogleg at the given curvature; a zero curvature keeps the given depth.
    const auto depthFromDogleg = [&] {
        if (is_nonzero(m_stnC.dls)) m_stnC.md = m_stnC.dl / m_stnC.dls + M1;
    };
    const auto holdStart = [&] {
        m_stnC.inc = I1;
        m_stnC.azi = m_stnPrev.azi;
    };

    m_nError = ERR_NONE;
    switch (code) {
    case STRAIGHT_MD:
        m_stnC.tf = 0.0;
        m_stnC.dls = 0.0;
        holdStart();
        break;
    case STRAIGHT_TVD:
        m_stnC.tf = 0.0;
        m_stnC.dls = 0.0;
        if (!is_nonzero(I1 - HALF_PI)) {
            m_nError = ERR_TVD_HORIZONTAL;
            break;
        }
        m_stnC.md = M1 + (m_stnC.tvd - m_stnPrev.tvd) / std::cos(I1);
        holdStart();
        break;
    case INC_AZI_MD:
        solve1();
        solve2();
        rateFromDogleg();
        break;
    case INC_AZI_TVD:
        solve12();
        solve1();
        L = m_stnC.md - M1;
        rateFromDogleg();
        break;
    case INC_AZI_DLS:
        solve1();
        solve2();
        depthFromDogleg();
        break;
    case DLS_INC_MD_RIGHT:
        solve8(0);
        solve1();
        break;
    case DLS_INC_MD_LEFT:
        solve8(1);
        solve1();
        break;
    case DLS_TF_INC_MD:
        solve10();
        solve3();
        break;
    case DLS_AZI_MD_UPPER:
        solve9(0);
        solve1();
        break;
    case DLS_AZI_MD_LOWER:
        solve9(1);
        solve1();
        break;
    case DLS_TF_AZI_MD:
        solve6();
        solve2();
        break;
    case DLS_TF_MD:
        solve4();
        solve3();
        break;
    case DLS_TF_TVD:
        // No error test between the solvers: a failure of solve11 stops the line below.
        solve11();
        solve4();
        solve3();
        depthFromDogleg();
        break;
    case DLS_TF_INC:
        solve10();
        solve3();
        if (m_nError != ERR_NONE) return false;
        depthFromDogleg();
        break;
    case DLS_TF_AZI:
        solve6();
        solve2();
        if (m_nError != ERR_NONE) return false;
        depthFromDogleg();
        break;
    case STRAIGHT_VSEC: {
        // Hold along the start direction until the vertical section of the target is reached.
        m_stnC.tf = 0.0;
        m_stnC.dls = 0.0;
        if (IsTargetKeyValid(m_stnC.target) && !m_target.flag) {
            const double vs = GetVS(m_target.ns, m_target.ew);
            GetVSPoint(vs, m_stnPrev.ns, m_stnPrev.ew, m_stnPrev.azi, m_stnC.ns, m_stnC.ew);
        }
        const double h = std::hypot(m_stnC.ew - m_stnPrev.ew, m_stnC.ns - m_stnPrev.ns);
        if (!is_nonzero(I1) || h <= 0.0) {
            m_nError = ERR_IN_LINE;
            break;
        }
        m_stnC.md = h / std::sin(I1) + M1;
        holdStart();
        break;
    }
    case DLS_AZI_TVD:
        solve13();
        solve1();
        break;
    default: return false;
    }
    if (m_nError != ERR_NONE) return false;

    meth_optdl1();

    L = m_stnC.md - M1;
    m_stnC.build = 0.0;
    m_stnC.turn = 0.0;
    if (is_zero(L)) {
        m_nError = ERR_BUILD_TURN;
        return false;
    }
    m_stnC.build = (m_stnC.inc - m_stnPrev.inc) / L;
    if (m_stnPrev.inc > 0.0 && m_stnC.inc > 0.0)
        m_stnC.turn = daz2hdls(getdaz(m_stnC.azi - m_stnPrev.azi), L, m_stnPrev.inc, m_stnC.build);
    m_nError = ERR_NONE;
    return true;
}

// The arc step: lays a circular arc of constant curvature K from m_stnPrev over the course
// L = M2 - M1, started with toolface TF.
// Reads md, inc, azi, tvd, ns, ew of m_stnPrev [rad, L] and md [L], dls = K [rad/L], tf = TF [rad]
// of m_stnC; writes inc, azi [rad], tvd, ns, ew [L] of m_stnC.
//   The end direction turns the start direction t1 by DL = L K in the plane of the toolface:
//   t2 = cos DL t1 + sin DL (cos TF high side + sin TF right side), with high side
//   (cos I1 sin A1, cos I1 cos A1, -sin I1) and right side (cos A1, -sin A1, 0) in (east, north,
//   down). The position moves by (t1 + t2) tan(DL/2) / K, minimum curvature's (t1 + t2) (L/2) times
//   the ratio factor 2/DL tan(DL/2). I2 = acos(t2 down), A2 = tangle(t2 east, t2 north).
// Degenerate: a course of MIN_ARC_COURSE or less changes nothing. From a vertical start
// (|I1| <= 1e-6) the toolface is read as pointing to the end azimuth: the working start takes the
// end's azimuth and TF = 0; afterwards the line's toolface is its end azimuth, deltaz(A2). A dogleg
// of 1e-6 or less is a straight hold along t1 with the start's direction. A down component of 1 or
// more gives I2 = 0.
bool CPlan::arcStepLays() const {
    return m_stnC.md > m_stnPrev.md + MIN_ARC_COURSE;
}

void CPlan::meth_optdl1() {
    if (!arcStepLays()) return;
    const bool fromVertical = is_zero(m_stnPrev.inc);
    if (fromVertical) {
        m_stnPrev.azi = m_stnC.azi;
        m_stnC.tf = 0.0;
    }
    double L = m_stnC.md - m_stnPrev.md;
    const double K = m_stnC.dls;
    const double TF = m_stnC.tf;
    const double I1 = m_stnPrev.inc;
    const double A1 = m_stnPrev.azi;
    double sI1, cI1, sA1, cA1;
    sincosOf(I1, sI1, cI1);
    sincosOf(A1, sA1, cA1);
    const double t1n = sI1 * cA1;
    const double t1e = sI1 * sA1;
    const double t1v = cI1;

    if (L * K <= TOL_ZERO) {
        m_stnC.inc = I1;
        m_stnC.azi = A1;
        m_stnC.tvd = m_stnPrev.tvd + L * t1v;
        m_stnC.ns = m_stnPrev.ns + L * t1n;
        m_stnC.ew = m_stnPrev.ew + L * t1e;
    } else {
        const double DL = L * K;
        double sd, cd, st, ct;
        sincosOf(DL, sd, cd);
        sincosOf(TF, st, ct);
        const double t2e = cd * sI1 * sA1 + st * sd * cA1 + ct * sd * cI1 * sA1;
        const double t2n = ct * sd * cI1 * cA1 - st * sd * sA1 + cd * sI1 * cA1;
        const double t2v = cd * cI1 - ct * sd * sI1;
        const double f = tanOf(DL / 2.0) / K;
        m_stnC.tvd = m_stnPrev.tvd + (t1v + t2v) * f;
        m_stnC.ns = m_stnPrev.ns + (t1n + t2n) * f;
        m_stnC.ew = m_stnPrev.ew + (t1e + t2e) * f;
        m_stnC.inc = t2v >= 1.0 ? 0.0 : acos_u(t2v);
        m_stnC.azi = tangle(t2e, t2n);
    }
    if (fromVertical) m_stnC.tf = deltaz(m_stnC.azi);
}
