// Interval powers and elementary functions over random operands, beside Boost.Interval
// with its default rigorous rounding and with non-rounding exact policies.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#if __has_include(<boost/numeric/interval.hpp>)
#include <boost/numeric/interval.hpp>
#define NOX_BENCH_HAS_BOOST_INTERVAL 1
#endif

namespace {

const std::size_t kOperands = 1024;

// Random operands of [-scale, scale], none wider than scale / 4 so that sine sees
// narrow and wide operands alike and exp stays within its domain.
std::vector<NoxRealInterval> RandomOperands(double scale) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> centre(-scale, scale);
    std::uniform_real_distribution<double> width(0, scale / 4);
    std::vector<NoxRealInterval> v(kOperands);
    for (auto &r : v) {
        const double c = centre(rng);
        r = NoxRealInterval{c, c + width(rng)};
    }
    return v;
}

template <class Kernel>
void RunNox(benchmark::State &state, double scale, Kernel kernel) {
    const auto v = RandomOperands(scale);
    NoxEnvironment env;
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(kernel(env, v[i++ & (kOperands - 1)]));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void BM_Elementary_Nox_Pow3(benchmark::State &state) {
    RunNox(state, 100, [](const NoxEnvironment &env, const NoxRealInterval &a) {
        return NoxPow(env, a, 3);
    });
}
BENCHMARK(BM_Elementary_Nox_Pow3);

void BM_Elementary_Nox_Pow4(benchmark::State &state) {
    RunNox(state, 100, [](const NoxEnvironment &env, const NoxRealInterval &a) {
        return NoxPow(env, a, 4);
    });
}
BENCHMARK(BM_Elementary_Nox_Pow4);

void BM_Elementary_Nox_Exp(benchmark::State &state) {
    RunNox(state, 50,
           [](const NoxEnvironment &env, const NoxRealInterval &a) { return NoxExp(env, a); });
}
BENCHMARK(BM_Elementary_Nox_Exp);

void BM_Elementary_Nox_Sin(benchmark::State &state) {
    RunNox(state, 20,
           [](const NoxEnvironment &env, const NoxRealInterval &a) { return NoxSin(env, a); });
}
BENCHMARK(BM_Elementary_Nox_Sin);

#ifdef NOX_BENCH_HAS_BOOST_INTERVAL

namespace bi = boost::numeric::interval_lib;

// The default policies of interval<double> (rounding by switching the rounding mode,
// strict checking), with the standard functions evaluated under directed rounding.
using BoostRigorous = boost::numeric::interval<
    double, bi::policies<bi::save_state<bi::rounded_transc_std<double, bi::rounded_arith_opp<double>>>,
                         bi::checking_strict<double>>>;
// No rounding control and no checks: the arithmetic and functions as they come.
using BoostExact = boost::numeric::interval<
    double,
    bi::policies<bi::save_state_nothing<bi::rounded_transc_exact<double, bi::rounded_arith_exact<double>>>,
                 bi::checking_base<double>>>;

template <class I, class Kernel>
void RunBoost(benchmark::State &state, double scale, Kernel kernel) {
    const auto nox = RandomOperands(scale);
    std::vector<I> v;
    v.reserve(kOperands);
    for (const auto &r : nox)
        v.emplace_back(r.lower, r.upper);
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(kernel(v[i++ & (kOperands - 1)]));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

template <class I>
void BM_Elementary_Boost_Pow3(benchmark::State &state) {
    RunBoost<I>(state, 100, [](const I &a) { return pow(a, 3); });
}
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Pow3, BoostRigorous);
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Pow3, BoostExact);

template <class I>
void BM_Elementary_Boost_Pow4(benchmark::State &state) {
    RunBoost<I>(state, 100, [](const I &a) { return pow(a, 4); });
}
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Pow4, BoostRigorous);
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Pow4, BoostExact);

template <class I>
void BM_Elementary_Boost_Exp(benchmark::State &state) {
    RunBoost<I>(state, 50, [](const I &a) { return exp(a); });
}
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Exp, BoostRigorous);
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Exp, BoostExact);

template <class I>
void BM_Elementary_Boost_Sin(benchmark::State &state) {
    RunBoost<I>(state, 20, [](const I &a) { return sin(a); });
}
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Sin, BoostRigorous);
BENCHMARK_TEMPLATE(BM_Elementary_Boost_Sin, BoostExact);

#endif

} // namespace
