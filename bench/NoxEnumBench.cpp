// Enumerations: building a list up to the default maximum size, and searching it.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

// The default maximum enumeration size of an environment.
const int kListSize = NoxEnvironment().GetMaxEnumSize();

std::vector<int> RandomIntegers(std::size_t n) {
    std::mt19937 rng(42);
    std::uniform_int_distribution<int> d(-1000, 1000);
    std::vector<int> v(n);
    for (int &x : v)
        x = d(rng);
    return v;
}

std::vector<double> RandomReals(std::size_t n) {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> d(-1e3, 1e3);
    std::vector<double> v(n);
    for (double &x : v)
        x = d(rng);
    return v;
}

// Inserts random values into a nil record until the list holds the default maximum.
void BM_IntegerEnumInsertToMaxSize(benchmark::State &state) {
    const auto values = RandomIntegers(4096);
    std::size_t next = 0;
    for (auto _ : state) {
        NoxIntegerEnum e(NoxEnumNil);
        while (e.GetSize() < kListSize)
            e.Insert(values[next++ & 4095]);
        benchmark::DoNotOptimize(e.GetSize());
    }
    state.SetItemsProcessed(state.iterations() * kListSize);
}
BENCHMARK(BM_IntegerEnumInsertToMaxSize);

void BM_RealEnumInsertToMaxSize(benchmark::State &state) {
    const auto values = RandomReals(4096);
    std::size_t next = 0;
    for (auto _ : state) {
        NoxRealEnum e(NoxEnumNil);
        while (e.GetSize() < kListSize)
            e.Insert(values[next++ & 4095], 1e-9);
        benchmark::DoNotOptimize(e.GetSize());
    }
    state.SetItemsProcessed(state.iterations() * kListSize);
}
BENCHMARK(BM_RealEnumInsertToMaxSize);

void BM_IntegerEnumFind(benchmark::State &state) {
    const auto values = RandomIntegers(4096);
    NoxIntegerEnum e(NoxEnumNil);
    for (std::size_t i = 0; e.GetSize() < kListSize; ++i)
        e.Insert(values[i]);
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(e.Find(values[next++ & 4095]));
}
BENCHMARK(BM_IntegerEnumFind);

void BM_RealEnumFind(benchmark::State &state) {
    const auto values = RandomReals(4096);
    NoxRealEnum e(NoxEnumNil);
    for (std::size_t i = 0; e.GetSize() < kListSize; ++i)
        e.Insert(values[i], 1e-9);
    std::size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(e.Find(values[next++ & 4095], 1e-9));
}
BENCHMARK(BM_RealEnumFind);

} // namespace
