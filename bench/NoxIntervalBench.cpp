// Interval records: construction, tolerant intersection and inward rounding.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

std::vector<NoxRealInterval> RandomIntervals(std::size_t n) {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> d(-1e3, 1e3);
    std::vector<NoxRealInterval> v(n);
    for (auto &r : v) {
        double a = d(rng), b = d(rng);
        r = a < b ? NoxRealInterval{a, b} : NoxRealInterval{b, a};
    }
    return v;
}

void BM_RealIntersect(benchmark::State &state) {
    const auto v = RandomIntervals(1024);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(NoxIntersect(v[i & 1023], v[(i + 1) & 1023], 1e-9));
        ++i;
    }
}
BENCHMARK(BM_RealIntersect);

void BM_IntegerFromReal(benchmark::State &state) {
    const auto v = RandomIntervals(1024);
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(NoxCreateIntegerInterval(v[i++ & 1023]));
}
BENCHMARK(BM_IntegerFromReal);

} // namespace
