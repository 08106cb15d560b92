#!/usr/bin/env python3
"""Writes the plan fuzzer's seed corpus: one input per line family, each a tie-on, two targets and a
line of that family with physical values (then a hold after it), encoded as fuzz_plan.cpp reads
its input. Most of the lines solve; "DT8 HCH Inc" and "HZ Landing" fail on these values, which
still takes the fuzzer into their solvers. Run from the repository root: fuzz/make_corpus.py"""
import math
import os

DEG = math.pi / 180
PER100 = DEG / 100

# The families the fuzzer picks from, in its order, with the sub-method put and a name for the seed
# file (after the line that family and sub-method put; 10, 5 and 200 put none).
FAMILIES = [(10, 1, "no-line"), (20, 1, "straight-md"), (30, 1, "ct1-md"),
            (40, 1, "bt1-md"), (45, 1, "dt8-hch-inc"), (50, 1, "online-inc"),
            (55, 1, "bt8-ol-inc"), (60, 1, "slant"), (70, 1, "s-shape"), (80, 1, "dt5-ch-tang"),
            (85, 1, "bt5-ch-tang"), (90, 1, "inc-azi-md"), (100, 2, "dls-tf-inc-md"),
            (110, 1, "opt-al-dls"), (120, 1, "dt6-curve"), (125, 1, "bt6-curve"),
            (130, 1, "dt7-ol-tvd"), (135, 1, "bt7-ol-tvd"), (140, 1, "hz-landing"),
            (150, 1, "backward"), (5, 1, "no-line-5"), (200, 1, "no-line-200")]


def u16(x, lo, hi):
    """Two bytes that the fuzzer maps back to x in [lo, hi]."""
    v = max(0, min(65535, round((x - lo) / (hi - lo) * 65535)))
    return bytes([v >> 8, v & 255])


def value(x, lo, hi):
    """A physical value: an even flag byte, then two bytes."""
    return b"\x00" + u16(x, lo, hi)


def target(tvd, ns, ew, inc, azi):
    return (u16(tvd, 0, 10000) + u16(ns, -5000, 5000) + u16(ew, -5000, 5000) + b"\x01" +
            u16(inc, 0, math.pi) + u16(azi, 0, 2 * math.pi - 1e-9))


def put(family_index, sub, target_method, const_tf, md, inc, azi, tvd, dls, tf, build, turn,
        params=(6 * PER100, 5 * PER100, 200.0, 30 * DEG, 2000.0, 3000.0, 2 * PER100, 1 * PER100)):
    """Operation 0: a line of the given family, put at the end of the plan (index -1)."""
    b = bytes([0, family_index, sub, target_method, const_tf])
    b += value(md, 0, 100000) + value(inc, 0, math.pi) + value(azi, 0, 2 * math.pi - 1e-9)
    b += value(tvd, 0, 100000) + value(dls, 0, 1) + value(tf, -math.pi, math.pi)
    b += value(build, -1, 1) + value(turn, -1, 1)
    b += b"\x00"  # no vertical section
    b += bytes([3, 4])  # solve for
    b += value(300, 0, 100000) + value(200, 0, 100000) + value(100, 0, 100000)
    b += value(2 * PER100, -1, 1) + value(-2 * PER100, -1, 1)
    b += value(40 * DEG, 0, math.pi) + value(20 * DEG, 0, math.pi)
    b += value(params[0], 0, 1) + value(params[1], 0, 1) + value(params[2], 0, 100000)
    b += value(params[3], 0, math.pi) + value(params[4], 0, 100000) + value(params[5], 0, 100000)
    b += value(params[6], -1, 1) + value(params[7], -1, 1)
    b += bytes([0, 1, 1])  # target T1, named T1 on the line and in m_strTarget
    b += bytes([1])  # PutData(-1)
    return b


def main():
    head = bytes([20]) + target(6000, 3000, 2000, 60 * DEG, 30 * DEG) + \
        target(5000, 2000, 1500, 90 * DEG, 45 * DEG)
    os.makedirs("fuzz/corpus", exist_ok=True)
    for i, (family, sub, name) in enumerate(FAMILIES):
        data = head
        turn = -1 * PER100 if family in (55, 85) else 1 * PER100
        data += put(i, sub, 1, 1 if family == 30 else 0, 1500, 30 * DEG, 40 * DEG, 1400,
                    3 * PER100, 45 * DEG, 2 * PER100, turn)
        data += put(1, 1, 0, 0, 300, 0, 0, 0, 0, 0, 0, 0)  # a hold ("Straight MD") after it
        with open(os.path.join("fuzz/corpus", f"{family:03d}-{name}"), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()
