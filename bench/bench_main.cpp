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
    const int points = 10000;
    for (auto _ : state) {
        for (int i = 0; i < points; ++i)
            benchmark::DoNotOptimize(plan.PlanPointAt(quantity, top * i / points));
    }
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_PlanPoint)->Arg(CPlan::PLAN_MD)->Arg(CPlan::PLAN_TVD)->Unit(benchmark::kMillisecond);

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
