// Value arithmetic over random operands of every pair of kinds, beside the bare interval
// functions the values dispatch to (the cost of the tagged dispatch), and enumeration
// combinations up to the default maximum enumeration size.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

const std::size_t kCount = 1024;

// Random operands of one kind: integers in [-1000, 1000], reals in [-1000, 1000],
// intervals of width up to 250, enumerations lists of four members, booleans of the four
// codes.
std::vector<NoxValue> RandomValues(int kind, unsigned seed) {
    std::mt19937_64 rng(seed);
    std::uniform_int_distribution<int> integer(-1000, 1000);
    std::uniform_real_distribution<double> real(-1000, 1000);
    std::uniform_real_distribution<double> width(0, 250);
    std::vector<NoxValue> values;
    for (std::size_t i = 0; i < kCount; ++i) {
        switch (kind) {
        case NoxIntegerType:
            values.emplace_back(integer(rng));
            break;
        case NoxRealType:
            values.emplace_back(real(rng));
            break;
        case NoxIntegerIntervalType: {
            const int lo = integer(rng);
            values.emplace_back(NoxCreateIntegerInterval(lo, lo + static_cast<int>(width(rng))));
            break;
        }
        case NoxRealIntervalType: {
            const double lo = real(rng);
            values.emplace_back(NoxCreateRealInterval(lo, lo + width(rng)));
            break;
        }
        case NoxIntegerEnumType: {
            NoxIntegerEnum e(NoxEnumNil);
            for (int j = 0; j < 4; ++j)
                e.Insert(integer(rng));
            values.emplace_back(e);
            break;
        }
        case NoxRealEnumType: {
            NoxRealEnum e(NoxEnumNil);
            for (int j = 0; j < 4; ++j)
                e.Insert(real(rng), 1e-9);
            values.emplace_back(e);
            break;
        }
        default:
            values.emplace_back(static_cast<NoxBoolean>(integer(rng) & 3));
        }
    }
    return values;
}

// NoxSum of a value of kind range(0) and one of kind range(1), kinds 1 to 7.
void BM_ValueArithmetic_Sum(benchmark::State &state) {
    const std::vector<NoxValue> a = RandomValues(static_cast<int>(state.range(0)), 1);
    const std::vector<NoxValue> b = RandomValues(static_cast<int>(state.range(1)), 2);
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ & (kCount - 1);
        benchmark::DoNotOptimize(NoxSum(env, a[k], b[k]));
        env.ClearError();
    }
}
BENCHMARK(BM_ValueArithmetic_Sum)->ArgsProduct({{1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 7}});

// The bare interval sums over the same operands as the interval kinds above.
void BM_ValueArithmetic_BareIntegerIntervalSum(benchmark::State &state) {
    const std::vector<NoxValue> a = RandomValues(NoxIntegerIntervalType, 1);
    const std::vector<NoxValue> b = RandomValues(NoxIntegerIntervalType, 2);
    std::vector<NoxIntegerInterval> x, y;
    for (std::size_t k = 0; k < kCount; ++k) {
        x.push_back(a[k].GetAsIntegerInterval());
        y.push_back(b[k].GetAsIntegerInterval());
    }
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ & (kCount - 1);
        benchmark::DoNotOptimize(NoxSum(env, x[k], y[k]));
    }
}
BENCHMARK(BM_ValueArithmetic_BareIntegerIntervalSum);

void BM_ValueArithmetic_BareRealIntervalSum(benchmark::State &state) {
    const std::vector<NoxValue> a = RandomValues(NoxRealIntervalType, 1);
    const std::vector<NoxValue> b = RandomValues(NoxRealIntervalType, 2);
    std::vector<NoxRealInterval> x, y;
    for (std::size_t k = 0; k < kCount; ++k) {
        x.push_back(a[k].GetAsRealInterval());
        y.push_back(b[k].GetAsRealInterval());
    }
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ & (kCount - 1);
        benchmark::DoNotOptimize(NoxSum(env, x[k], y[k]));
    }
}
BENCHMARK(BM_ValueArithmetic_BareRealIntervalSum);

// Sine of a real interval value beside the bare interval sine.
void BM_ValueArithmetic_SinOfRealInterval(benchmark::State &state) {
    const std::vector<NoxValue> a = RandomValues(NoxRealIntervalType, 3);
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(NoxSin(env, a[i++ & (kCount - 1)]));
        env.ClearError();
    }
}
BENCHMARK(BM_ValueArithmetic_SinOfRealInterval);

void BM_ValueArithmetic_BareSin(benchmark::State &state) {
    const std::vector<NoxValue> a = RandomValues(NoxRealIntervalType, 3);
    std::vector<NoxRealInterval> x;
    for (const NoxValue &v : a)
        x.push_back(v.GetAsRealInterval());
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(NoxSin(env, x[i++ & (kCount - 1)]));
        env.ClearError();
    }
}
BENCHMARK(BM_ValueArithmetic_BareSin);

// The list of n integers (or reals) from `from` with step `step`.
NoxValue IntegerList(int n, int from, int step) {
    NoxIntegerEnum e(NoxEnumNil);
    for (int j = 0; j < n; ++j)
        e.Append(from + j * step);
    return NoxValue(e);
}

NoxValue RealList(int n, double from, double step) {
    NoxRealEnum e(NoxEnumNil);
    for (int j = 0; j < n; ++j)
        e.Append(from + j * step);
    return NoxValue(e);
}

// Two lists of range(0) members each. Step 1 and step n make every sum distinct (n * n
// members before the result is corrected to its range when above the maximum size);
// steps 1 and 1 give 2n - 1 distinct sums, most of them inserted again and merged.
void BM_ValueArithmetic_IntegerEnumSum(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    const NoxValue a = IntegerList(n, 0, 1);
    const NoxValue b = IntegerList(n, 0, state.range(1) != 0 ? n : 1);
    NoxEnvironment env;
    for (auto _ : state)
        benchmark::DoNotOptimize(NoxSum(env, a, b));
}
BENCHMARK(BM_ValueArithmetic_IntegerEnumSum)->ArgsProduct({{7, 50}, {0, 1}});

void BM_ValueArithmetic_RealEnumSum(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    const NoxValue a = RealList(n, 0.0, 0.5);
    const NoxValue b = RealList(n, 0.0, state.range(1) != 0 ? 0.5 * n : 0.5);
    NoxEnvironment env;
    for (auto _ : state)
        benchmark::DoNotOptimize(NoxSum(env, a, b));
}
BENCHMARK(BM_ValueArithmetic_RealEnumSum)->ArgsProduct({{7, 50}, {0, 1}});

// The interval fall-back of an enumeration combination: a list with a range.
void BM_ValueArithmetic_EnumSumFallBack(benchmark::State &state) {
    const NoxValue a = IntegerList(50, 0, 1);
    const NoxValue b(NoxCreateIntegerInterval(0, 1000));
    NoxEnvironment env;
    for (auto _ : state)
        benchmark::DoNotOptimize(NoxSum(env, a, b));
}
BENCHMARK(BM_ValueArithmetic_EnumSumFallBack);

} // namespace
