// Interval sum, product and quotient over random operands, beside Boost.Interval with its
// default rigorous policies and with the non-rounding rounded_arith_exact policy.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#if __has_include(<boost/numeric/interval.hpp>)
#include <boost/numeric/interval.hpp>
#define NOX_BENCH_ARITHMETIC_HAS_BOOST 1
#endif

namespace {

const std::size_t kPairs = 1024;

struct Operands {
    std::vector<NoxRealInterval> a, b;
};

// Left operands: centres uniform in [-1000, 1000], widths up to 250 (a quarter straddle
// zero). Right operands the same, except that divisors keep away from zero (centre
// magnitude at least 1, width below half of it), so that the quotient does its four
// divisions instead of returning the whole line.
Operands RandomOperands(bool zeroFreeRight) {
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> centre(-1000, 1000);
    std::uniform_real_distribution<double> unit(0, 1);
    Operands ops;
    for (std::size_t i = 0; i < kPairs; ++i) {
        const double c = centre(rng);
        ops.a.push_back({c, c + 250 * unit(rng)});
        double d = centre(rng);
        if (zeroFreeRight) {
            d = d < 0 ? d - 1 : d + 1;
            const double w = 0.5 * (d < 0 ? -d : d) * unit(rng);
            ops.b.push_back(d < 0 ? NoxRealInterval{d - w, d} : NoxRealInterval{d, d + w});
        } else {
            ops.b.push_back({d, d + 250 * unit(rng)});
        }
    }
    return ops;
}

template <class Kernel>
void RunNox(benchmark::State &state, bool zeroFreeRight, Kernel kernel) {
    const Operands ops = RandomOperands(zeroFreeRight);
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ & (kPairs - 1);
        benchmark::DoNotOptimize(kernel(env, ops.a[k], ops.b[k]));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_Arithmetic_Nox_Sum(benchmark::State &state) {
    RunNox(state, false, [](const NoxEnvironment &env, const NoxRealInterval &a,
                            const NoxRealInterval &b) { return NoxSum(env, a, b); });
}
BENCHMARK(BM_Arithmetic_Nox_Sum);

void BM_Arithmetic_Nox_Mul(benchmark::State &state) {
    RunNox(state, false, [](const NoxEnvironment &env, const NoxRealInterval &a,
                            const NoxRealInterval &b) { return NoxMul(env, a, b); });
}
BENCHMARK(BM_Arithmetic_Nox_Mul);

void BM_Arithmetic_Nox_Div(benchmark::State &state) {
    RunNox(state, true, [](const NoxEnvironment &env, const NoxRealInterval &a,
                           const NoxRealInterval &b) { return NoxDiv(env, a, b); });
}
BENCHMARK(BM_Arithmetic_Nox_Div);

#ifdef NOX_BENCH_ARITHMETIC_HAS_BOOST

namespace bil = boost::numeric::interval_lib;

// The default: rounding mode switched around each operation, strict checking.
using ArithBoostRigorous = boost::numeric::interval<double>;
// No rounding control, no checks: round-to-nearest bounds, as Nox computes them.
using ArithBoostExact = boost::numeric::interval<
    double, bil::policies<bil::save_state_nothing<bil::rounded_arith_exact<double>>,
                          bil::checking_base<double>>>;

template <class I, class Kernel>
void RunBoost(benchmark::State &state, bool zeroFreeRight, Kernel kernel) {
    const Operands ops = RandomOperands(zeroFreeRight);
    std::vector<I> a, b;
    for (std::size_t k = 0; k < kPairs; ++k) {
        a.emplace_back(ops.a[k].lower, ops.a[k].upper);
        b.emplace_back(ops.b[k].lower, ops.b[k].upper);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ & (kPairs - 1);
        benchmark::DoNotOptimize(kernel(a[k], b[k]));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

template <class I> void BM_Arithmetic_Boost_Sum(benchmark::State &state) {
    RunBoost<I>(state, false, [](const I &a, const I &b) { return a + b; });
}
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Sum, ArithBoostRigorous);
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Sum, ArithBoostExact);

template <class I> void BM_Arithmetic_Boost_Mul(benchmark::State &state) {
    RunBoost<I>(state, false, [](const I &a, const I &b) { return a * b; });
}
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Mul, ArithBoostRigorous);
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Mul, ArithBoostExact);

template <class I> void BM_Arithmetic_Boost_Div(benchmark::State &state) {
    RunBoost<I>(state, true, [](const I &a, const I &b) { return a / b; });
}
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Div, ArithBoostRigorous);
BENCHMARK_TEMPLATE(BM_Arithmetic_Boost_Div, ArithBoostExact);

#endif

} // namespace
