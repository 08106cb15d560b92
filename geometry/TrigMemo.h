// The plan's memo of sines, cosines and tangents, inline for the arc steps that ask it many times per arc.
#pragma once

#include <cmath>
#include <cstdint>

#include "geometry/Numerics.h"
#include "plan/CPlan.h"

// The memo is direct-mapped: the angle's bits, spread by a Fibonacci multiplier, pick one slot, which
// a new angle takes over. Bit patterns, not values, are compared, so -0.0 and +0.0 keep their own
// signed sines.
inline void CPlan::sincosOf(double x, double& s, double& c) {
    static_assert(TRIG_SLOTS == 16, "the slot is the top four bits of the spread key");
    const std::uint64_t key = orrin::bits_of(x);
    STrigSlot& slot = m_trig[(key * 0x9E3779B97F4A7C15ull) >> 60];
    if (slot.key != key) {
        slot.key = key;
        slot.sin = std::sin(x);
        slot.cos = std::cos(x);
    }
    s = slot.sin;
    c = slot.cos;
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
