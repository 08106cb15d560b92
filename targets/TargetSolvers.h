// The small solvers shared by the build/turn and online target methods: a damped Newton iteration
// with a difference Jacobian, and a scan-and-bisect root finder. Both follow the library's rules for
// iterations: a named pass cap (MAX_PASSES, SCAN_STEPS), a stop on the residual (SOLVE_POS or
// SOLVE_ANG, given by the caller), "did not converge" kept apart from "no root", and a NaN ending the
// loop as a failure (every comparison is written so that a NaN fails it). Internal header: not
// installed.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "geometry/Numerics.h"
#include "geometry/Vec3.h"
#include "plan/Records.h"

namespace orrin {

/// Position (east, north, down) of a station, its stored unit direction (ue, un, uv), and a
/// target's position.
inline Vec3 posOf(const SStation& s) {
    return {s.ew, s.ns, s.tvd};
}
inline Vec3 dirOf(const SStation& s) {
    return {s.ue, s.un, s.uv};
}
inline Vec3 targetPoint(const STarget& t) {
    return {t.ew, t.ns, t.tvd};
}

/// A solved build/turn curve from inclination I0, changing inclination by dI and azimuth by dA over
/// the course L, counts only when L is above 1e-6, it turns less than half a turn in inclination and
/// at most half a turn in azimuth, and its inclination stays within [0, pi) all along (build_turn
/// folds an inclination carried past either end, which would leave the stored end off the curve).
inline bool curveInRange(double I0, double dI, double dA, double L) {
    const double I2 = I0 + dI;
    return L > TOL_ZERO && std::fabs(dI) < PI && std::fabs(dA) <= PI && I2 >= 0.0 && I2 < PI;
}

/// Outcome of a Newton solve.
enum class NewtonResult {
    converged,  ///< the residual fell below the stop value
    accepted,   ///< not converged within MAX_PASSES, but within the accepted closure
    failed,     ///< not converged: the residual stayed above the accepted closure, or became NaN
};

/// Halvings of one Newton step while it fails to reduce the residual; after them the solve stops.
constexpr int STEP_HALVINGS = 40;
/// Difference step of the Jacobian, relative to 1 + |x| in each variable's own unit [-]. Central
/// differences of this step are exact to about 1e-14 relative, far below what the stop needs.
constexpr double DIFF_STEP = 1e-7;

/// Largest component of r: the residual size every Newton solve here tests; NaN when one is NaN.
template <std::size_t N>
double maxAbs(const std::array<double, N>& r) {
    double m = 0.0;
    for (double x : r) {
        if (std::isnan(x)) return x;
        m = std::fmax(m, std::fabs(x));
    }
    return m;
}

/// Solves J d = b in place by Gaussian elimination with partial pivoting; false when a pivot is zero
/// or the answer is not finite (a singular or NaN Jacobian).
template <std::size_t N>
bool solveLinear(std::array<std::array<double, N>, N> J, std::array<double, N>& b) {
    for (std::size_t c = 0; c < N; ++c) {
        std::size_t p = c;
        for (std::size_t r = c + 1; r < N; ++r)
            if (std::fabs(J[r][c]) > std::fabs(J[p][c])) p = r;
        if (!(std::fabs(J[p][c]) > 0.0)) return false;
        std::swap(J[p], J[c]);
        std::swap(b[p], b[c]);
        for (std::size_t r = c + 1; r < N; ++r) {
            const double f = J[r][c] / J[c][c];
            for (std::size_t k = c; k < N; ++k) J[r][k] -= f * J[c][k];
            b[r] -= f * b[c];
        }
    }
    for (std::size_t c = N; c-- > 0;) {
        for (std::size_t k = c + 1; k < N; ++k) b[c] -= J[c][k] * b[k];
        b[c] /= J[c][c];
        if (!std::isfinite(b[c])) return false;
    }
    return true;
}

/// Newton's method on residual(x, r) = 0 from the starting guess in x; `residual` returns false when
/// x lies outside its domain (a course not positive, a NaN). Each pass takes the Jacobian by central
/// differences, solves for the full step and halves it (at most STEP_HALVINGS times) until the
/// largest residual component decreases. Stops when that component is below `stop`; after
/// MAX_PASSES, or when no step reduces it, the result is `accepted` if it is within `accept`, else
/// `failed`. x holds the last (best) point either way, and `size` its residual size.
template <std::size_t N, typename F>
NewtonResult newton(F&& residual, std::array<double, N>& x, double stop, double accept,
                    double& size) {
    std::array<double, N> r{};
    if (!residual(x, r)) {
        size = NAN;
        return NewtonResult::failed;
    }
    size = maxAbs(r);
    for (int pass = 0; pass < MAX_PASSES && !(size < stop); ++pass) {
        std::array<std::array<double, N>, N> J{};
        for (std::size_t j = 0; j < N; ++j) {
            const double h = DIFF_STEP * (1.0 + std::fabs(x[j]));
            std::array<double, N> xp = x, xm = x, rp{}, rm{};
            xp[j] += h;
            xm[j] -= h;
            const bool okP = residual(xp, rp), okM = residual(xm, rm);
            for (std::size_t i = 0; i < N; ++i) {
                if (okP && okM)
                    J[i][j] = (rp[i] - rm[i]) / (2.0 * h);
                else if (okP)
                    J[i][j] = (rp[i] - r[i]) / h;
                else if (okM)
                    J[i][j] = (r[i] - rm[i]) / h;
                else
                    J[i][j] = NAN;
            }
        }
        std::array<double, N> d = r;
        if (!solveLinear(J, d)) break;
        bool reduced = false;
        double lambda = 1.0;
        for (int k = 0; k <= STEP_HALVINGS && !reduced; ++k, lambda *= 0.5) {
            std::array<double, N> xt = x, rt{};
            for (std::size_t i = 0; i < N; ++i) xt[i] -= lambda * d[i];
            if (!residual(xt, rt)) continue;
            const double st = maxAbs(rt);
            if (st < size) {
                x = xt, r = rt, size = st;
                reduced = true;
            }
        }
        if (!reduced) break;
    }
    if (size < stop) return NewtonResult::converged;
    return size <= accept ? NewtonResult::accepted : NewtonResult::failed;
}

/// Bisects the bracket [x0, x1] of f (f0 = f(x0), of the other sign than f(x1)) as scanRoots does:
/// at most MAX_PASSES times, until |f| falls below `stop` or the bracket stops shrinking. Leaves the
/// last midpoint in x and its value in fx; false when f gave a NaN on the way.
template <typename F>
bool bisectBracket(F& f, double x0, double x1, double f0, double stop, double& x, double& fx) {
    double lo = x0, hi = x1, flo = f0;
    x = x0, fx = f0;
    for (int k = 0; k < MAX_PASSES; ++k) {
        x = 0.5 * (lo + hi);
        fx = f(x);
        if (std::isnan(fx)) return false;
        if (std::fabs(fx) < stop || x == lo || x == hi) break;
        if ((fx < 0.0) == (flo < 0.0)) {
            lo = x, flo = fx;
        } else {
            hi = x;
        }
    }
    return true;
}

/// Visits the roots of f on [a, b] in increasing order of x: the interval is cut into SCAN_STEPS
/// steps, every step whose ends have values of opposite signs (or a grid point where f is exactly 0)
/// is a bracket, and each bracket is bisected (bisectBracket). visit(x, f(x)) returns true to end
/// the search; a step with a NaN at either end holds no bracket, and a NaN inside a bracket ends its
/// bisection unvisited. Returns true when some visit ended the search. A zero of f is told from a
/// jump of f through its sign only by the caller, from the value it is handed.
template <typename F, typename Visit>
bool scanRoots(F&& f, double a, double b, double stop, Visit&& visit) {
    double x0 = a, f0 = f(a);
    for (int j = 1; j <= SCAN_STEPS; ++j) {
        const double x1 = a + (b - a) * j / SCAN_STEPS;
        const double f1 = f(x1);
        if (f0 == 0.0) {
            if (visit(x0, f0)) return true;
        } else if ((f0 < 0.0 && f1 > 0.0) || (f0 > 0.0 && f1 < 0.0)) {
            double x, fx;
            if (bisectBracket(f, x0, x1, f0, stop, x, fx) && visit(x, fx)) return true;
        }
        x0 = x1, f0 = f1;
    }
    return f0 == 0.0 && visit(x0, f0);
}

/// Of the roots scanRoots(f, a, b, stop, ...) would visit, the one of least |x| that accept(x, f(x))
/// takes (of two as near, the one scanRoots visits first), or NaN when it takes none. The steps are
/// searched outwards from x = 0, nearest first, and the search ends once no step left can hold a
/// nearer root, so that f is worked out only where it must be; the brackets and their bisection are
/// scanRoots' own, and so is the answer.
template <typename F, typename Accept>
double nearestRoot(F&& f, double a, double b, double stop, Accept&& accept) {
    // Grid point k is a + (b - a) k / SCAN_STEPS; step j runs from point j - 1 to point j, and
    // "step" SCAN_STEPS + 1 is the last grid point alone (scanRoots visits it last when f is 0 there).
    double grid[SCAN_STEPS + 1];
    double value[SCAN_STEPS + 1];
    bool known[SCAN_STEPS + 1] = {};
    for (int k = 0; k <= SCAN_STEPS; ++k) grid[k] = a + (b - a) * k / SCAN_STEPS;
    const auto at = [&](int k) {
        if (!known[k]) value[k] = f(grid[k]), known[k] = true;
        return value[k];
    };
    // Least |x| over a step: 0 for a step across x = 0.
    const auto reach = [&](int j) {
        if (j > SCAN_STEPS) return std::fabs(grid[SCAN_STEPS]);
        const double lo = grid[j - 1], hi = grid[j];
        if (lo <= 0.0 && 0.0 <= hi) return 0.0;
        return std::fmin(std::fabs(lo), std::fabs(hi));
    };
    // The step holding 0 (or the step nearest to it), then outwards on both sides.
    int right = 1;
    while (right < SCAN_STEPS && grid[right] < 0.0) ++right;
    int left = right - 1;
    double best = NAN;
    int bestStep = 0;
    const auto offer = [&](double x, double fx, int j) {
        if (!accept(x, fx)) return;
        const double d = std::fabs(x), bd = std::fabs(best);
        if (std::isnan(best) || d < bd || (d == bd && j < bestStep)) best = x, bestStep = j;
    };
    for (;;) {
        const bool hasRight = right <= SCAN_STEPS + 1, hasLeft = left >= 1;
        if (!hasRight && !hasLeft) break;
        const int j = !hasLeft || (hasRight && reach(right) <= reach(left)) ? right++ : left--;
        if (!std::isnan(best) && reach(j) > std::fabs(best)) break;
        if (j > SCAN_STEPS) {
            if (at(SCAN_STEPS) == 0.0) offer(grid[SCAN_STEPS], 0.0, j);
            continue;
        }
        const double f0 = at(j - 1), f1 = at(j);
        if (f0 == 0.0) {
            offer(grid[j - 1], f0, j);
        } else if ((f0 < 0.0 && f1 > 0.0) || (f0 > 0.0 && f1 < 0.0)) {
            double x, fx;
            if (bisectBracket(f, grid[j - 1], grid[j], f0, stop, x, fx)) offer(x, fx, j);
        }
    }
    return best;
}

}  // namespace orrin
