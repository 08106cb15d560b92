// The records that cross the interface of CPlan: a station of the plan, a target, and the result of
// an intercept search.
//
// Frame: directions are (east, north, down) = (sin A sin I, cos A sin I, cos I); inclination I from
// the downward vertical, azimuth A clockwise from north. Angles are [rad], rates [rad/L], lengths [L]
// in the application's length unit; positions are held as (tvd, ns, ew), depth positive downwards.
#pragma once

#include <string>

#include "plan/OrrinExport.h"

/// One station of a plan: the end of one planned line, or one stored part of a line.
struct ORRIN_API SStation {
    double md = 0.0;        ///< measured depth [L]
    double inc = 0.0;       ///< inclination from the downward vertical [rad]
    double azi = 0.0;       ///< azimuth clockwise from north [rad]
    double tvd = 0.0;       ///< true vertical depth, down positive [L]
    double ns = 0.0;        ///< north coordinate, north positive [L]
    double ew = 0.0;        ///< east coordinate, east positive [L]
    double dls = 0.0;       ///< dogleg severity of the line ending here, a magnitude [rad/L]
    double tf = 0.0;        ///< toolface of the line [rad]
    double build = 0.0;     ///< build rate of the line [rad/L]
    double turn = 0.0;      ///< turn rate of the line [rad/L]
    double ue = 0.0;        ///< east component of the unit direction [-]
    double un = 0.0;        ///< north component of the unit direction [-]
    double uv = 0.0;        ///< down component of the unit direction [-]
    double aux1 = 0.0;      ///< settings record of target and backward lines [-]
    double aux2 = 0.0;      ///< settings record of target and backward lines [-]
    double dl = 0.0;        ///< dogleg (course) angle of the line [rad]
    short method = 0;       ///< method code; 0 ends the plan, 1 continues the line before
    std::u16string target;  ///< key of the target the line aims at; empty when none
    bool flag = false;      ///< client flag, carried through copies
};

/// One target: a named point, optionally with the direction in which it must be reached.
struct ORRIN_API STarget {
    std::u16string name;     ///< the target key
    bool flag = false;       ///< copied into the flag of the station that aims at the target
    bool hasAngles = false;  ///< the target also fixes inclination and azimuth at arrival
    double ns = 0.0;         ///< north coordinate [L]
    double ew = 0.0;         ///< east coordinate [L]
    double tvd = 0.0;        ///< true vertical depth [L]
    double inc = 0.0;        ///< arrival inclination, used only with hasAngles [rad]
    double azi = 0.0;        ///< arrival azimuth, used only with hasAngles [rad]
};

/// Result of CPlan::scan_exact: a head of result values, then the station found on the line.
///
/// The search runs along the current line (m_stnPrev to m_stnC) and is described by m_stnA before
/// it: its position (tvd, ns, ew) is the point aimed at, and in modes 1 to 3 its direction fields
/// (ue, un, uv) the normal of a plane through that point. Mode 1 to 3 find where the line crosses
/// the plane, any other mode (0) the line's nearest approach to the point, first on the chord; a
/// crossing at or before the start gives the start station, at or beyond the end the end station,
/// and between them a curved line's chord point is moved onto its arc. See CPlan::scan_exact.
///
/// The head describes the way from the station found to the point aimed at: `dist` is its length,
/// (`ue`, `un`, `uv`) its unit direction, `inc` that direction's inclination and `azi` in mode 2
/// its azimuth, in other modes the toolface at the station found that turns the hole towards it
/// (as getfo gives it). A station on the point gives dist 0 and the other head values 0.
/// `dist` is -100.0 when there is no intercept (a line of zero chord, or in modes 1 to 3 a chord
/// parallel to the plane searched); the other head values are then 0 and the station is the start.
struct ORRIN_API SIntercept {
    double dist = 0.0;  ///< distance from the station found to the point aimed at [L]; -100 none
    double ue = 0.0;    ///< east component of the unit direction towards that point [-]
    double un = 0.0;    ///< north component [-]
    double uv = 0.0;    ///< down component [-]
    double inc = 0.0;   ///< inclination of that direction [rad]
    double azi = 0.0;   ///< its azimuth (mode 2) or the toolface towards it (other modes) [rad]
    SStation station;   ///< the station found on the line
};
