// Moving a point of a curved line's chord onto the line's circular arc: the step shared by the
// interpolation at vertical depth (mcvdint) and the intercept search (scan_exact).
// Internal header: not installed.
#pragma once

#include "geometry/Vec3.h"
#include "plan/Records.h"

namespace orrin::interp {

using orrin::Vec3;

/// Moves `point` (its tvd, ns, ew) from the chord of a minimum-curvature line onto the line's arc,
/// along the direction that lies both in the plane of the arc and in the plane through the point
/// with normal `nrm`; returns the line's dogleg W = acos(cd) [rad].
///
/// The line starts at `start` with unit direction t1 and ends with unit direction t2 (cd = t1 . t2,
/// below the straight-course cosine), its chord is D long [L] and its measured length Lt [L]:
///   R = (D/2) / sqrt((1 - cd)/2) is the arc's radius, and its centre lies at
///   start + k (t2 - cd t1), k = R / sqrt(1 - cd^2);
///   w = nrm x (t1 x t2), normalised (with nrm straight down, w = (t1.e t2.v - t1.v t2.e,
///   t2.v t1.n - t2.n t1.v, 0): the horizontal direction in the arc's plane);
///   q = point - centre, rho = |q|, p = w . q; the move s along w solves |q + s w| = R:
///   s = sqrt(R^2 + p^2 - rho^2) - p, or 0 when the root is imaginary.
/// The root chosen is the outer one when w points away from the centre, which it does when nrm has
/// a positive part along t1. Otherwise the root lies across the circle: a step longer than Lt/2 is
/// replaced by the first-order step rho (R - rho) / p (0 when p is exactly 0), which stays near the
/// chord; this is how the depth interpolation answers on lines that start upwards (deliberate).
/// An arc whose plane is normal to nrm gives w = 0 and leaves the point on the chord.
double chord_point_to_arc(const SStation& start, const Vec3& t1, const Vec3& t2, double cd,
                          double D, double Lt, const Vec3& nrm, SStation& point);

}  // namespace orrin::interp
