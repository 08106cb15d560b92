// A vector of the library's frame (east, north, down) with the few operations the solvers need.
// Internal header: not installed.
#pragma once

#include <cmath>

namespace orrin {

struct Vec3 {
    double e = 0.0, n = 0.0, v = 0.0;
    Vec3 operator+(Vec3 b) const { return {e + b.e, n + b.n, v + b.v}; }
    Vec3 operator-(Vec3 b) const { return {e - b.e, n - b.n, v - b.v}; }
    friend Vec3 operator*(double k, Vec3 a) { return {k * a.e, k * a.n, k * a.v}; }
    friend double dot(Vec3 a, Vec3 b) { return a.e * b.e + a.n * b.n + a.v * b.v; }
    friend Vec3 cross(Vec3 a, Vec3 b) {
        return {a.n * b.v - a.v * b.n, a.v * b.e - a.e * b.v, a.e * b.n - a.n * b.e};
    }
    friend double norm(Vec3 a) { return std::sqrt(dot(a, a)); }
};

}  // namespace orrin
