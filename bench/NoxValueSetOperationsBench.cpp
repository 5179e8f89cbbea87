// Value intersection for every pair of kinds, beside the bare interval intersection it
// dispatches to: the difference is the cost of the tagged dispatch, the emptiness and
// indefiniteness tests and the changed flag. Each iteration narrows a fresh copy of the
// first operand (the copy of an enumeration includes its array).
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr double kTol = 1e-14;

NoxIntegerEnum IntegerList(int n) {
    NoxIntegerEnum e(NoxEnumNil);
    for (int i = 0; i < n; ++i)
        e.Append(2 * i - n);
    return e;
}

NoxRealEnum RealList(int n) {
    NoxRealEnum e(NoxEnumNil);
    for (int i = 0; i < n; ++i)
        e.Append(0.5 * i - 10.0);
    return e;
}

// One definite value of each kind, numbered by kind; the enumerations hold 40 entries,
// below the default maximum size, and overlap the other samples.
NoxValue Sample(int kind) {
    switch (kind) {
    case 1:
        return NoxValue(3);
    case 2:
        return NoxValue(2.5);
    case 3:
        return NoxValue(NoxIntegerInterval{-4, 9});
    case 4:
        return NoxValue(NoxRealInterval{0.25, 7.25});
    case 5:
        return NoxValue(IntegerList(40));
    case 6:
        return NoxValue(RealList(40));
    default:
        return NoxValue(NoxTrue);
    }
}

void BM_ValueIntersect(benchmark::State &state) {
    NoxEnvironment env;
    const NoxValue a = Sample(static_cast<int>(state.range(0)));
    const NoxValue b = Sample(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        NoxValue narrowed(a);
        benchmark::DoNotOptimize(NoxIntersect(env, narrowed, b, kTol));
        benchmark::DoNotOptimize(narrowed);
        env.ClearError();
    }
}
BENCHMARK(BM_ValueIntersect)
    ->ArgsProduct({{1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 7}})
    ->ArgNames({"a", "b"});

void BM_BareRealIntervalIntersect(benchmark::State &state) {
    const NoxRealInterval a{0.25, 7.25};
    const NoxRealInterval b{-4.0, 9.0};
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(NoxIntersect(a, b, kTol));
    }
}
BENCHMARK(BM_BareRealIntervalIntersect);

void BM_BareIntegerIntervalIntersect(benchmark::State &state) {
    const NoxIntegerInterval a{-4, 9};
    const NoxIntegerInterval b{0, 7};
    for (auto _ : state) {
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(NoxIntersect(a, b));
    }
}
BENCHMARK(BM_BareIntegerIntervalIntersect);

} // namespace
