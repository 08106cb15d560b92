// The plan's memo of sines, cosines and tangents, inline for the arc steps that ask it many times
// per arc.
#pragma once

#include <cmath>
#include <cstdint>
#include <utility>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

// The memo is two-way set-associative: the angle's bits, spread by a Fibonacci multiplier, pick a
// set of two slots; a new angle takes the slot used longer ago. So the angles a walk asks for in
// every arc (its dogleg and toolface) stay while each arc's own angles come and go. Bit patterns,
// not values, are compared, so -0.0 and +0.0 keep their own signed sines.
inline void CPlan::sincosOf(double x, double& s, double& c) {
    static_assert(TRIG_SETS == 16, "the set is the top four bits of the spread key");
    const std::uint64_t key = orrin::bits_of(x);
    STrigSlot* set = m_trig[(key * 0x9E3779B97F4A7C15ull) >> 60];
    if (set[0].key != key) {
        if (set[1].key == key) {
            std::swap(set[0], set[1]);
        } else {
            set[1] = set[0];
            set[0].key = key;
            set[0].sin = std::sin(x);
            set[0].cos = std::cos(x);
        }
    }
    s = set[0].sin;
    c = set[0].cos;
}

inline void CPlan::unitOf(SStation& st) {
    double sI, cI, sA, cA;
    sincosOf(st.inc, sI, cI);
    sincosOf(st.azi, sA, cA);
    st.ue = sA * sI;
    st.un = cA * sI;
    st.uv = cI;
}

inline double CPlan::tanOf(double x) {
    const std::uint64_t key = orrin::bits_of(x);
    if (key != m_tanKey) {
        m_tanKey = key;
        m_tanValue = std::tan(x);
    }
    return m_tanValue;
}
