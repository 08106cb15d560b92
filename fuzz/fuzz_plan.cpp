// Fuzzing one plan object with any sequence of client calls.
//
// The input is read as a stream of calls: one byte picks the operation, the bytes after it its
// arguments (a byte for small selectors, eight for a double, taken either raw — NaN, infinities,
// huge values — or, when a leading flag byte is even, mapped into a physical range). After every
// call the plan must hold: m_nError is 0 or one of -1 ... -20 and ErrorMessage gives a text; a call
// that re-solved the plan and failed left the station array as it was before the call (a backward
// line may leave its own stations, as the solver returns on it without restoring); no call takes
// more than 10 ms of processor time (100 ms once a value outside the physical ranges was passed;
// CalcWalk, which solves the plan up to 50 times, 50 times that); and when every value passed so far
// was finite and physical, a plan that reports no error holds only finite numbers. A broken
// invariant aborts, which libFuzzer reports.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kPi = 3.141592653589793;
/// Longest a single call may take [ms].
constexpr double MAX_CALL_MS = 10.0;
/// Longest a single call may take once a value outside the physical ranges has been passed [ms]:
/// the sine of an angle of 1e20 takes the maths library's exact argument reduction, a hundred times
/// slower than a real angle's, and a plan can hold such angles then.
constexpr double MAX_CALL_MS_UNPHYSICAL = 100.0;
/// Solves CalcWalk makes at most (plan and walk, up to 50 passes): its limit is that many calls'.
constexpr double WALK_SOLVES = 50.0;

class Input {
public:
    Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool empty() const { return pos_ >= size_; }
    uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
    int small(int n) { return byte() % n; }
    double raw() {
        double v = 0.0;
        uint8_t b[8] = {};
        for (uint8_t& x : b) x = byte();
        std::memcpy(&v, b, sizeof v);
        return v;
    }
    /// A value in [lo, hi], from two bytes.
    double in(double lo, double hi) {
        const int v = (byte() << 8) | byte();
        return lo + (hi - lo) * v / 65535.0;
    }
    /// Either a raw double (anything at all) or a value in [lo, hi]; `physical` turns false for
    /// good when a raw value is taken.
    double value(double lo, double hi, bool& physical) {
        if (byte() & 1) {
            physical = false;
            return raw();
        }
        return in(lo, hi);
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

/// The operation under way, named in a report, with its arguments where they are written down.
int g_op = -1;
char g_call[400] = "";

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "invariant broken after operation %d %s: %s\n", g_op, g_call, what);
    std::abort();
}

/// The processor time this thread has used [ms]: the time a call takes is measured by it, so that
/// other work on the machine does not count against the call.
double cpuMilliseconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

bool finiteStation(const SStation& s) {
    for (double v : {s.md, s.inc, s.azi, s.tvd, s.ns, s.ew, s.dls, s.tf, s.build, s.turn})
        if (!std::isfinite(v)) return false;
    return true;
}

/// The station array after a failing solve against the one the solve started from: every field the
/// same, except the inclination, build and turn of one stored line, which a failing line method may
/// correct to a value that would work.
bool restored(const std::vector<SStation>& now, const std::vector<SStation>& saved) {
    if (now.size() != saved.size()) return false;
    int corrected = 0;
    for (size_t i = 0; i < now.size(); ++i) {
        const SStation& a = now[i];
        const SStation& b = saved[i];
        const auto same = [](double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; };
        for (auto [x, y] : {std::pair{a.md, b.md},
                            {a.azi, b.azi},
                            {a.tvd, b.tvd},
                            {a.ns, b.ns},
                            {a.ew, b.ew},
                            {a.dls, b.dls},
                            {a.tf, b.tf},
                            {a.ue, b.ue},
                            {a.un, b.un},
                            {a.uv, b.uv},
                            {a.aux1, b.aux1},
                            {a.aux2, b.aux2},
                            {a.dl, b.dl}})
            if (!same(x, y)) return false;
        if (a.method != b.method || a.target != b.target || a.flag != b.flag) return false;
        if (!same(a.inc, b.inc) || !same(a.build, b.build) || !same(a.turn, b.turn)) ++corrected;
    }
    return corrected <= 1;
}

/// Runs the calls an input encodes on a new plan, checking every invariant after each. A call over
/// its time limit ends the run with false when `slowFails` is off; with it on, it aborts.
bool runCalls(const uint8_t* data, size_t size, bool slowFails) {
    Input in(data, size);
    CPlan plan;
    plan.NewData(in.small(40));
    SStation tie;
    tie.method = 2;
    plan.LoadData(0, tie);
    bool physical = true;
    const char16_t* names[] = {u"", u"T1", u"T2", u"BACKTARGET"};
    plan.NewTarget(2);
    for (int t = 0; t < 2; ++t) {
        STarget target;
        target.name = names[t + 1];
        target.tvd = in.in(0, 10000), target.ns = in.in(-5000, 5000),
        target.ew = in.in(-5000, 5000);
        target.hasAngles = in.byte() & 1;
        target.inc = in.in(0, kPi), target.azi = in.in(0, 2 * kPi - 1e-9);
        plan.LoadTarget(t, target);
    }

    for (int calls = 0; calls < 64 && !in.empty(); ++calls) {
        const std::vector<SStation> before = plan.m_stations;
        bool solves = false;    // the call re-solves the plan (and restores it on failure)
        bool backward = false;  // a backward line may fail without the plan being put back
        for (const SStation& s : before) backward = backward || s.method < 0;
        plan.m_nError = 0;  // so that an error after the call is this call's
        const double t0 = cpuMilliseconds();
        g_op = in.small(14);
        g_call[0] = 0;
        switch (g_op) {
        case 0:
        case 1: {  // put a line of any family
            const int families[] = {10, 20,  30,  40,  45,  50,  55,  60,  70,  80, 85,
                                    90, 100, 110, 120, 125, 130, 135, 140, 150, 5,  200};
            plan.m_nFamily = families[in.small(22)];
            plan.m_nSubMethod = in.small(13);
            plan.m_nTargetMethod = in.small(9);
            plan.m_bConstTF = in.byte() & 1;
            plan.m_dMD = in.value(0, 100000, physical);
            plan.m_dInc = in.value(0, kPi, physical);
            plan.m_dAzi = in.value(0, 2 * kPi - 1e-9, physical);
            plan.m_dTVD = in.value(0, 100000, physical);
            plan.m_dDLS = in.value(0, 1, physical);
            plan.m_dTF = in.value(-kPi, kPi, physical);
            plan.m_dBuild = in.value(-1, 1, physical);
            plan.m_dTurn = in.value(-1, 1, physical);
            plan.m_dVS = in.byte() & 1 ? in.value(0, 100000, physical) : 0.0;
            plan.m_nSolveFor1 = in.small(8);
            plan.m_nSolveFor2 = in.small(8);
            plan.m_dLength1 = in.value(0, 100000, physical);
            plan.m_dLength2 = in.value(0, 100000, physical);
            plan.m_dLength3 = in.value(0, 100000, physical);
            plan.m_dBuildDLS = in.value(-1, 1, physical);
            plan.m_dDropDLS = in.value(-1, 1, physical);
            plan.m_dHoldInc = in.value(0, kPi, physical);
            plan.m_dFinalInc = in.value(0, kPi, physical);
            plan.m_dMethodParam1 = in.value(0, 1, physical);
            plan.m_dMethodParam2 = in.value(0, 1, physical);
            plan.m_dMethodParam3 = in.value(0, 100000, physical);
            plan.m_dMethodParam4 = in.value(0, kPi, physical);
            plan.m_dMethodParam5 = in.value(0, 100000, physical);
            plan.m_dMethodParam6 = in.value(0, 100000, physical);
            plan.m_dMethodParam7 = in.value(-1, 1, physical);
            plan.m_dMethodParam8 = in.value(-1, 1, physical);
            plan.m_target = plan.m_targets[in.small(2)];
            plan.m_target.name = names[in.small(4)];
            plan.m_strTarget = names[in.small(4)];
            std::snprintf(g_call, sizeof g_call,
                          "put family %d: md %g inc %g azi %g tvd %g dls %g tf %g build %g turn %g "
                          "params %g %g %g %g %g %g %g %g",
                          plan.m_nFamily, plan.m_dMD, plan.m_dInc, plan.m_dAzi, plan.m_dTVD,
                          plan.m_dDLS, plan.m_dTF, plan.m_dBuild, plan.m_dTurn,
                          plan.m_dMethodParam1, plan.m_dMethodParam2, plan.m_dMethodParam3,
                          plan.m_dMethodParam4, plan.m_dMethodParam5, plan.m_dMethodParam6,
                          plan.m_dMethodParam7, plan.m_dMethodParam8);
            plan.PutData(static_cast<int>(in.small(12)) - 2);
            solves = true;
            break;
        }
        case 2: plan.Insert(in.small(12) - 1, in.byte() & 1); break;
        case 3:
            plan.Delete(in.small(12) - 1);
            solves = true;
            break;
        case 4: plan.GetData(in.small(14) - 2); break;
        case 5: {
            SStation s;
            plan.DumpData(in.small(60) - 5, s);
            if (in.byte() & 1) {
                s.md = in.value(0, 100000, physical);
                s.inc = in.value(0, kPi, physical);
                s.method = static_cast<short>(in.small(4) == 0 ? in.byte() * 131 - 16000 : 30);
                physical = false;  // a station loaded as it stands is not checked
                plan.LoadData(in.small(60) - 5, s);
            }
            break;
        }
        case 6: plan.PlanPointAt(in.small(8) - 1, in.value(-1000, 100000, physical)); break;
        case 7: {
            const int k = in.small(12);
            SStation a, c;
            plan.DumpData(k, a);
            plan.DumpData(k + 1, c);
            plan.m_stnPrev = a;
            plan.m_stnC = c;
            const double v = in.value(0, 10000, physical);
            switch (in.small(12)) {
            case 0: plan.mcmdint(v, in.byte() & 1); break;
            case 1: plan.mcvdint(v); break;
            case 2: plan.rcmdint(v); break;
            case 3: plan.rcvdint(v); break;
            case 4: plan.btmdint(v, in.byte() & 1); break;
            case 5: plan.ctmdint(v, in.byte() & 1); break;
            case 6: plan.rcincint(v / 1000, in.byte() & 1); break;
            case 7: plan.rcaziint(v / 1000, in.byte() & 1); break;
            case 8: plan.mcnsint(v); break;
            case 9: plan.mcewint(v); break;
            case 10: plan.scan_exact(in.small(5)); break;
            default: plan.stagg(v, v / 2, -v / 3); break;
            }
            break;
        }
        case 8: {
            SStation plane;
            plane.tvd = in.value(0, 10000, physical);
            plane.uv = 1.0;
            plan.m_stnPrev = before.empty() ? SStation() : before[0];
            plan.OuijaCalcs(in.value(0, 10000, physical), in.byte() & 1, in.value(0, kPi, physical),
                            in.byte() & 1, in.value(0, 6.28, physical), in.byte() & 1,
                            in.value(0, 1, physical), in.byte() & 1, in.value(-kPi, kPi, physical),
                            plane);
            break;
        }
        case 9: {
            plan.m_stnPrev = before.empty() ? SStation() : before[0];
            const double a = in.value(0, 10000, physical), b = in.value(0, 1, physical),
                         c = in.value(-kPi, kPi, physical);
            const int step = in.small(6);
            std::snprintf(g_call, sizeof g_call,
                          "single-line step %d (%g, %g, %g) from md %g inc %g", step, a, b, c,
                          plan.m_stnPrev.md, plan.m_stnPrev.inc);
            switch (step) {
            case 0: plan.bttomd(a, b / 10, c / 10); break;
            case 1: plan.bttotvd(a, b / 10, c / 10); break;
            case 2: plan.dttomd(a, b, c); break;
            case 3: plan.dttotvd(a, b, c); break;
            case 4: plan.cttomd(a, b, c); break;
            default: plan.cttotvd(a, b, c); break;
            }
            break;
        }
        case 10: {
            std::vector<std::pair<double, double>> table;
            for (int n = in.small(4); n > 0; --n)
                table.push_back({in.value(0, 10000, physical), in.value(-0.01, 0.01, physical)});
            plan.SetWalkTable(table);
            plan.CalcWalk();
            break;
        }
        case 11:
            plan.RestoreWalk();
            solves = true;
            break;
        case 12: plan.ClearAll(); break;
        default: plan.NewData(in.small(30)); break;
        }
        const double ms = cpuMilliseconds() - t0;
        const double limit =
            (g_op == 10 ? WALK_SOLVES : 1.0) * (physical ? MAX_CALL_MS : MAX_CALL_MS_UNPHYSICAL);
        if (ms > limit && !slowFails) return false;
        if (ms > limit) {
            for (unsigned i = 0; i < plan.m_stations.size() && i < 40; ++i)
                std::fprintf(stderr, "station %u: method %d md %g\n", i, plan.m_stations[i].method,
                             plan.m_stations[i].md);
            std::fprintf(stderr, "the call took %.1f ms (every value physical: %d)\n", ms,
                         physical);
            fail("a call took longer than its time limit");
        }
        if (plan.m_nError > 0 || plan.m_nError < -20) fail("m_nError outside 0 ... -20");
        if (plan.ErrorMessage().empty()) fail("empty error message");
        for (const SStation& s : plan.m_stations) backward = backward || s.method < 0;
        if (solves && plan.m_nError != 0 && plan.m_nError != -5 && !backward &&
            !restored(plan.m_stations, plan.m_saved))
            fail("a failing solve did not put the plan back");
        if (physical && plan.m_nError == 0) {
            for (unsigned i = 0; i < plan.GetSize() && i < plan.m_stations.size(); ++i)
                if (!finiteStation(plan.m_stations[i]))
                    fail("a non-finite number in a solved plan");
        }
    }
    return true;
}

}  // namespace

// A slow call is only reported when the same input is slow on three runs: page faults or the
// sanitizer's allocator recycling its quarantine can hold up a call now and then.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (!runCalls(data, size, false) && !runCalls(data, size, false)) runCalls(data, size, true);
    return 0;
}
