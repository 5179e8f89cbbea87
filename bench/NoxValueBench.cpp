// Values: construction, copy and conversion of each kind. A value of a single, interval
// or boolean kind never allocates; an enumeration kind copies only its own array.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

NoxIntegerEnum IntegerList(int n) {
    NoxIntegerEnum e(NoxEnumNil);
    for (int i = 0; i < n; ++i)
        e.Append(3 * i - n);
    return e;
}

NoxRealEnum RealList(int n) {
    NoxRealEnum e(NoxEnumNil);
    for (int i = 0; i < n; ++i)
        e.Append(0.37 * i - n);
    return e;
}

// One value of each kind, numbered by kind.
std::vector<NoxValue> OneOfEachKind() {
    std::vector<NoxValue> v;
    v.emplace_back();
    v.emplace_back(17);
    v.emplace_back(2.75);
    v.emplace_back(NoxIntegerInterval{-4, 9});
    v.emplace_back(NoxRealInterval{0.5, 7.25});
    v.emplace_back(IntegerList(20));
    v.emplace_back(RealList(20));
    v.emplace_back(NoxBoolean_Any);
    return v;
}

void BM_ConstructInteger(benchmark::State &state) {
    int i = 0;
    for (auto _ : state) {
        NoxValue v(i++);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_ConstructInteger);

void BM_ConstructReal(benchmark::State &state) {
    double x = 0.5;
    for (auto _ : state) {
        NoxValue v(x);
        benchmark::DoNotOptimize(v);
        x += 1.0;
    }
}
BENCHMARK(BM_ConstructReal);

void BM_ConstructIntegerInterval(benchmark::State &state) {
    int i = 0;
    for (auto _ : state) {
        NoxValue v(NoxIntegerInterval{i, i + 5});
        benchmark::DoNotOptimize(v);
        ++i;
    }
}
BENCHMARK(BM_ConstructIntegerInterval);

void BM_ConstructRealInterval(benchmark::State &state) {
    double x = 0.5;
    for (auto _ : state) {
        NoxValue v(NoxRealInterval{x, x + 2.0});
        benchmark::DoNotOptimize(v);
        x += 1.0;
    }
}
BENCHMARK(BM_ConstructRealInterval);

void BM_ConstructBoolean(benchmark::State &state) {
    for (auto _ : state) {
        NoxValue v(NoxTrue);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_ConstructBoolean);

// An enumeration value from a list of state.range(0) values.
void BM_ConstructIntegerEnum(benchmark::State &state) {
    const NoxIntegerEnum e = IntegerList(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        NoxValue v(e);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_ConstructIntegerEnum)->Arg(4)->Arg(50);

void BM_ConstructRealEnum(benchmark::State &state) {
    const NoxRealEnum e = RealList(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        NoxValue v(e);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_ConstructRealEnum)->Arg(4)->Arg(50);

// Copy-assignment into an existing value, by the kind of the source (state.range(0)).
void BM_CopyAssign(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &source = kinds[static_cast<std::size_t>(state.range(0))];
    NoxValue target;
    for (auto _ : state) {
        target = source;
        benchmark::DoNotOptimize(target);
    }
}
BENCHMARK(BM_CopyAssign)->DenseRange(0, 7);

// Copy construction, by the kind of the source.
void BM_CopyConstruct(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &source = kinds[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) {
        NoxValue copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(BM_CopyConstruct)->DenseRange(0, 7);

// The scalar and interval conversions of a value of kind state.range(0) (1 to 6).
void BM_GetAsRealInterval(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(v.GetAsRealInterval());
}
BENCHMARK(BM_GetAsRealInterval)->DenseRange(1, 6);

void BM_GetAsIntegerInterval(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(v.GetAsIntegerInterval());
}
BENCHMARK(BM_GetAsIntegerInterval)->DenseRange(1, 6);

void BM_GetAsInteger(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(v.GetAsInteger());
}
BENCHMARK(BM_GetAsInteger)->DenseRange(1, 6);

void BM_GetAsReal(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(v.GetAsReal());
}
BENCHMARK(BM_GetAsReal)->DenseRange(1, 6);

// Enumeration conversions of a value of kind state.range(0) (1 to 6) into a reused record.
void BM_GetAsIntegerEnum(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    NoxIntegerEnum out(NoxEnumNil);
    for (auto _ : state) {
        v.GetAsIntegerEnum(out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_GetAsIntegerEnum)->DenseRange(1, 6);

void BM_GetAsRealEnum(benchmark::State &state) {
    const std::vector<NoxValue> kinds = OneOfEachKind();
    const NoxValue &v = kinds[static_cast<std::size_t>(state.range(0))];
    NoxRealEnum out(NoxEnumNil);
    for (auto _ : state) {
        v.GetAsRealEnum(out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_GetAsRealEnum)->DenseRange(1, 6);

// Assign of a real interval into a value of kind state.range(0) (1 to 6).
void BM_AssignRealInterval(benchmark::State &state) {
    NoxEnvironment env;
    const NoxValue source(NoxRealInterval{0.5, 7.25});
    NoxValue target(static_cast<NoxValueType>(state.range(0)));
    for (auto _ : state) {
        target.Assign(env, source);
        benchmark::DoNotOptimize(target);
    }
}
BENCHMARK(BM_AssignRealInterval)->DenseRange(1, 6);

} // namespace
