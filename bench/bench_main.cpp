// Speed of the library on real sizes. Every figure is also printed as a ratio to the floor: the
// trigonometric calls that one minimum-curvature step needs (two direction vectors, one acos, one
// tan), timed in the same run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "plan/CPlan.h"

namespace {

constexpr double kDeg = 3.141592653589793 / 180.0;

/// A smooth synthetic well every 30 units: vertical to 600, a build of 2.5 per 30 through 90 to
/// 95 degrees with a slow turn, then a hold above the horizontal.
struct Survey {
    std::vector<double> md, inc, azi;
    explicit Survey(std::size_t n) {
        md.reserve(n), inc.reserve(n), azi.reserve(n);
        for (std::size_t i = 0; i < n; ++i) {
            const double s = 30.0 * static_cast<double>(i + 1);
            md.push_back(s);
            inc.push_back(s < 600 ? 0.0 : std::fmin(95.0, (s - 600) * 2.5 / 30) * kDeg);
            azi.push_back(std::fmod(40.0 + 0.001 * s, 360.0) * kDeg);
        }
    }
};

void BM_Floor(benchmark::State& state) {
    double inc1 = 0.3, azi1 = 1.1, inc2 = 0.31, azi2 = 1.12;
    for (auto _ : state) {
        const double e1 = std::sin(azi1) * std::sin(inc1), n1 = std::cos(azi1) * std::sin(inc1);
        const double e2 = std::sin(azi2) * std::sin(inc2), n2 = std::cos(azi2) * std::sin(inc2);
        const double c = e1 * e2 + n1 * n2 + std::cos(inc1) * std::cos(inc2);
        const double dl = std::acos(std::fmin(1.0, c));
        benchmark::DoNotOptimize(std::tan(dl / 2));
        benchmark::DoNotOptimize(inc1 += 1e-9);
        benchmark::DoNotOptimize(azi2 += 1e-9);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Floor);

void BM_SolveSurvey(benchmark::State& state) {
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    const Survey s(n);
    std::vector<SStation> out(n);
    SStation tie;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            CPlan::SolveSurvey(tie, n, s.md.data(), s.inc.data(), s.azi.data(), out.data()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(n));
}
BENCHMARK(BM_SolveSurvey)->Arg(1000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_AppendLines(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Survey s(static_cast<std::size_t>(n));
    for (auto _ : state) {
        CPlan plan;
        plan.NewData(10);
        plan.LoadData(0, SStation());
        plan.m_nFamily = 90;
        plan.m_nSubMethod = 1;
        for (int i = 0; i < n; ++i) {
            plan.m_dMD = s.md[i];
            plan.m_dInc = s.inc[i];
            plan.m_dAzi = s.azi[i];
            plan.PutData(-1);
        }
        benchmark::DoNotOptimize(plan.m_nError);
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_AppendLines)->Arg(100)->Arg(900)->Unit(benchmark::kMillisecond);

/// A plan of a solved 10,000-station survey, loaded station by station.
CPlan surveyPlan(std::size_t n) {
    const Survey s(n);
    std::vector<SStation> out(n);
    CPlan::SolveSurvey(SStation(), n, s.md.data(), s.inc.data(), s.azi.data(), out.data());
    CPlan plan;
    plan.NewData(static_cast<int>(n) + 1);
    plan.LoadData(0, SStation());
    for (std::size_t i = 0; i < n; ++i) plan.LoadData(static_cast<int>(i) + 1, out[i]);
    return plan;
}

void BM_PlanPoint(benchmark::State& state) {
    const int quantity = static_cast<int>(state.range(0));
    CPlan plan = surveyPlan(10000);
    SStation last;
    plan.DumpData(static_cast<int>(plan.GetSize()) - 1, last);
    const double top = quantity == CPlan::PLAN_MD ? last.md : last.tvd;
    const std::size_t points = 10000;
    std::vector<double> values(points);
    for (std::size_t i = 0; i < points; ++i) values[i] = top * static_cast<double>(i) / points;
    std::vector<SStation> out(points);
    for (auto _ : state) {
        benchmark::DoNotOptimize(plan.PlanPointsAt(quantity, points, values.data(), out.data()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(points));
}
BENCHMARK(BM_PlanPoint)->Arg(CPlan::PLAN_MD)->Arg(CPlan::PLAN_TVD)->Unit(benchmark::kMillisecond);

/// Points every unit along a constant-toolface line 5,000 long: each point lies on the chain of
/// arcs of 1.0 from the line's start, so sorted points go on along the chain.
void BM_PlanPointConstantToolface(benchmark::State& state) {
    CPlan plan;
    plan.NewData(10);
    SStation tie;
    tie.inc = 30 * kDeg, tie.azi = 40 * kDeg;
    plan.LoadData(0, tie);
    plan.m_nFamily = 30, plan.m_nSubMethod = 1, plan.m_bConstTF = 1;
    plan.m_dMD = 5000, plan.m_dDLS = 0.5 * kDeg / 100, plan.m_dTF = 45 * kDeg;
    plan.PutData(-1);
    const std::size_t points = 5000;
    std::vector<double> values(points);
    for (std::size_t i = 0; i < points; ++i) values[i] = static_cast<double>(i) + 0.5;
    std::vector<SStation> out(points);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            plan.PlanPointsAt(CPlan::PLAN_MD, points, values.data(), out.data()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(points));
}
BENCHMARK(BM_PlanPointConstantToolface)->Unit(benchmark::kMillisecond);

/// The end station of a plan.
SStation endOf(const CPlan& plan) {
    SStation s;
    plan.DumpData(static_cast<int>(plan.GetSize()) - 1, s);
    return s;
}

/// A target `ahead` along the end's horizontal direction, `side` to its right and `down` below it.
STarget targetAhead(const SStation& e, double ahead, double side, double down) {
    STarget t;
    t.name.assign(1, u'T');
    t.ns = e.ns + ahead * std::cos(e.azi) - side * std::sin(e.azi);
    t.ew = e.ew + ahead * std::sin(e.azi) + side * std::cos(e.azi);
    t.tvd = e.tvd + down;
    return t;
}

/// A 100-line plan that uses every family that solves: blocks of ten lines (an inclination/azimuth
/// line, a drop/turn arc, a constant-toolface curve, a build/turn curve, a single arc to a target,
/// an arc and tangent to a target, a slant, an S-shape, a hold to a vertical depth, a hold), each
/// target placed from the end of the line before. Returns false (with the line) if one fails.
/// With `arcsForCurves` the constant-toolface curves are put as single drop/turn arcs instead.
bool mixedPlan(CPlan& plan, std::string& failed, bool arcsForCurves) {
    plan = CPlan();
    plan.NewData(200);
    SStation tie;
    tie.method = 2;
    plan.LoadData(0, tie);
    for (int line = 0; line < 100; ++line) {
        const SStation e = endOf(plan);
        plan.m_bConstTF = 0;
        plan.m_nSubMethod = 1;
        plan.m_nTargetMethod = 1;
        plan.m_dMD = e.md + 300;
        switch (line % 10) {
        case 0:  // "Inc Azi MD"
            plan.m_nFamily = 90;
            plan.m_dInc = 30 * kDeg;
            plan.m_dAzi = std::fmod(40.0 + 3 * line, 360.0) * kDeg;
            break;
        case 1:  // "DT1 MD"
        case 2:  // "CT1 MD"
            plan.m_nFamily = 30;
            plan.m_bConstTF = line % 10 == 2 && !arcsForCurves;
            plan.m_dDLS = 2 * kDeg / 100;
            plan.m_dTF = (line % 10 == 1 ? 60 : -60) * kDeg;
            break;
        case 3:  // "BT1 MD"
            plan.m_nFamily = 40;
            plan.m_dBuild = 1 * kDeg / 100;
            plan.m_dTurn = 0.5 * kDeg / 100;
            break;
        case 4:  // "DT6 Curve"
            plan.m_nFamily = 120;
            plan.m_target = targetAhead(e, 400, 30, 200);
            break;
        case 5:  // "DT5 CH Tang"
            plan.m_nFamily = 80;
            plan.m_dMethodParam1 = 3 * kDeg / 100;
            plan.m_target = targetAhead(e, 900, 80, 600);
            break;
        case 6:  // Slant: tangent inclination and length solved
            plan.m_nFamily = 60;
            plan.m_nSolveFor1 = 3;
            plan.m_nSolveFor2 = 4;
            plan.m_dLength1 = 100;
            plan.m_dBuildDLS = 2 * kDeg / 100;
            plan.m_target = targetAhead(e, 1200, 0, 1500);
            break;
        case 7:  // S-shape: a build of 10 degrees, tangent and final hold at 20 degrees solved
            plan.m_nFamily = 70;
            plan.m_nSolveFor1 = 4;
            plan.m_nSolveFor2 = 7;
            plan.m_dLength1 = 100;
            plan.m_dBuildDLS = 2 * kDeg / 100;
            plan.m_dHoldInc = e.inc + 10 * kDeg;
            plan.m_dDropDLS = -2 * kDeg / 100;
            plan.m_dFinalInc = 20 * kDeg;
            plan.m_target = targetAhead(e, 3000, 0, 3000);
            break;
        case 8:  // "Straight TVD"
            plan.m_nFamily = 20;
            plan.m_nSubMethod = 2;
            plan.m_target = STarget();
            plan.m_dTVD = e.tvd + 100;
            break;
        default:  // "Straight MD"
            plan.m_nFamily = 20;
            break;
        }
        plan.PutData(-1);
        if (plan.m_nError != 0) {
            const std::u16string m = plan.ErrorMessage();
            failed = "line " + std::to_string(line) + ": " + std::string(m.begin(), m.end());
            return false;
        }
    }
    return true;
}

void BM_MixedPlanResolve(benchmark::State& state) {
    CPlan plan;
    std::string failed;
    if (!mixedPlan(plan, failed, state.range(0) == 1)) {
        failed.insert(0, "the mixed plan fails at ");
        state.SkipWithError(failed.c_str());
        return;
    }
    bool longer = false;
    for (auto _ : state) {
        plan.GetData(1);  // a client's edit of the first line: read it back, change its depth
        longer = !longer;
        plan.m_dMD += longer ? 0.5 : -0.5;
        plan.PutData(1);  // which re-solves the whole plan
        benchmark::DoNotOptimize(plan.m_nError);
    }
    if (plan.m_nError != 0) state.SkipWithError("the re-solve fails");
    state.SetItemsProcessed(state.iterations());
}
// 0: every family; 1: the same with its ten constant-toolface curves (each a chain of 300 arcs of
// 1.0) put as single drop/turn arcs.
BENCHMARK(BM_MixedPlanResolve)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

/// One target line after an inclined tie-on, put once; each iteration re-solves the plan from the
/// tie-on (PutData(0)), so the figure is one solve of the line with the plan's bookkeeping around it.
/// The single-arc methods 920, 930 and 1910 stand beside the build/turn and online ones for scale.
void BM_TargetLine(benchmark::State& state) {
    const int code = static_cast<int>(state.range(0));
    CPlan plan;
    plan.NewData(10);
    SStation tie;
    tie.md = 2000, tie.tvd = 1900, tie.inc = 30 * kDeg, tie.azi = 40 * kDeg, tie.method = 2;
    plan.LoadData(0, tie);
    plan.m_target.name = u"T1";
    plan.m_target.tvd = 4500, plan.m_target.ns = 2400, plan.m_target.ew = 1700;
    const double per100 = kDeg / 100;
    switch (code) {
    case 920: plan.m_nFamily = 120, plan.m_nTargetMethod = 1; break;
    case 930: plan.m_nFamily = 120, plan.m_nTargetMethod = 2, plan.m_dMD = 6500; break;
    case 1910:
        plan.m_nFamily = 80, plan.m_nTargetMethod = 1, plan.m_dMethodParam1 = 3 * per100;
        break;
    case 925: plan.m_nFamily = 125, plan.m_nTargetMethod = 1; break;
    case 935: plan.m_nFamily = 125, plan.m_nTargetMethod = 2, plan.m_dMD = 6500; break;
    case 1915:
        plan.m_nFamily = 55, plan.m_dMethodParam4 = 60 * kDeg, plan.m_dMethodParam7 = 2 * per100;
        break;
    case 1930: plan.m_nFamily = 130, plan.m_dMethodParam4 = 3000; break;
    case 1935: plan.m_nFamily = 135, plan.m_dMethodParam4 = 3000; break;
    case 2925:  // a target laid by a hold of 500, the curve over 1000 and a hold of 1500
        plan.m_nFamily = 85, plan.m_dMethodParam7 = 2 * per100, plan.m_dMethodParam8 = 1 * per100;
        plan.m_target.tvd = 4059.36, plan.m_target.ns = 1379.02, plan.m_target.ew = 1495.32;
        break;
    case 2930:
        plan.m_nFamily = 45, plan.m_nTargetMethod = 2, plan.m_dMethodParam1 = 3 * per100;
        plan.m_dMethodParam4 = 60 * kDeg;
        break;
    default: break;
    }
    plan.PutData(-1);
    if (plan.m_nError != 0) {
        state.SkipWithError("the line does not solve");
        return;
    }
    for (auto _ : state) {
        plan.PutData(0);
        benchmark::DoNotOptimize(plan.m_nError);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_TargetLine)
    ->Arg(920)
    ->Arg(930)
    ->Arg(1910)
    ->Arg(925)
    ->Arg(935)
    ->Arg(1915)
    ->Arg(1930)
    ->Arg(1935)
    ->Arg(2925)
    ->Arg(2930)
    ->Unit(benchmark::kMicrosecond);

/// One curve-hold-curve solve ("OPT AL DLS") of the published example (SPE-204111-PA, 2021,
/// Example 2): start 75/15 deg, target 1500 ft north and 800 ft east of it, 500 ft deeper, reached at
/// 85/30 deg with radii 1250 and 1750 ft. The line is put once; each iteration solves it again from
/// the start station as the dispatch prepares it.
void BM_OptimumAlign(benchmark::State& state) {
    CPlan plan;
    plan.NewData(10);
    SStation tie;
    tie.tvd = 6000.0, tie.ns = 8000.0, tie.ew = 8000.0, tie.inc = 75 * kDeg, tie.azi = 15 * kDeg;
    tie.method = 2;
    plan.LoadData(0, tie);
    plan.m_nFamily = 110;
    plan.m_nTargetMethod = 1;
    plan.m_dMethodParam1 = 1.0 / 1250.0;
    plan.m_dMethodParam2 = 1.0 / 1750.0;
    plan.m_target.name = u"T1";
    plan.m_target.tvd = 6500.0, plan.m_target.ns = 9500.0, plan.m_target.ew = 8800.0;
    plan.m_target.inc = 85 * kDeg, plan.m_target.azi = 30 * kDeg, plan.m_target.hasAngles = true;
    plan.PutData(-1);
    const STarget target = plan.m_target;
    SStation start;
    plan.DumpData(0, start);
    CPlan::vector(start.inc, start.azi, start.ue, start.un, start.uv);
    for (auto _ : state) {
        plan.m_nPrev = 0;
        plan.m_stnPrev = start;
        plan.m_target = target;
        plan.meth_optdls();
        benchmark::DoNotOptimize(plan.m_nError);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_OptimumAlign);

/// Prints the usual console table, then each benchmark's time per item beside the floor's.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs) {
            const auto it = r.counters.find("items_per_second");
            if (it == r.counters.end() || it->second.value <= 0) continue;
            const double ns = 1e9 / it->second.value;
            if (r.benchmark_name().rfind("BM_Floor", 0) == 0) floor_ = ns;
            rows_.push_back({r.benchmark_name(), ns});
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-32s %14s %10s\n", "benchmark", "ns per item", "x floor");
        for (const Row& row : rows_)
            std::printf("%-32s %14.1f %10.1f\n", row.name.c_str(), row.ns,
                        floor_ > 0 ? row.ns / floor_ : 0.0);
    }

private:
    struct Row {
        std::string name;
        double ns;
    };
    std::vector<Row> rows_;
    double floor_ = 0.0;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
