// Whole models beside the tools a user would pick instead. One formula family, the sum of
// m terms c * sin(x[a] * d) * sin(x[b] + e), each sine with its own argument (8 nodes a
// term, 10^3 to 10^5 nodes), is
//   - evaluated in reals by Nox, by the same formula compiled as C++ (written out at
//     configure time by bench/GenerateModelFamily.cmake: the limit) and by muParser;
//   - evaluated over intervals by Nox and by the same C++ over Boost.Interval with the
//     non-rounding policy (rounded_arith_exact, as Nox computes its bounds);
//   - differentiated (the gradient over 2, 10 and 100 variables) by Nox and by the same
//     C++ over Eigen's forward-mode AutoDiffScalar.
// Every iteration moves the point, so every iteration is a full evaluation: for Nox that
// includes the cache reset that a host pays when it gives the variables new values.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include "NoxModelFamily.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#if __has_include(<boost/numeric/interval.hpp>)
#include <boost/numeric/interval.hpp>
#define NOX_MODEL_BENCH_HAS_BOOST 1
#endif
#ifdef NOX_BENCH_HAS_MUPARSER
#include <muParser.h>
#endif
#ifdef NOX_BENCH_HAS_EIGEN
#include <Eigen/Core>
#include <unsupported/Eigen/AutoDiff>
#endif

namespace {

// The family's constants, as in bench/GenerateModelFamily.cmake.
const double kC[] = {1.0, 1.125, 1.25, 1.375, 1.5, 1.625, 1.75};
double CoefficientD(int i) { return 1.0 + i / 1024.0; }
double CoefficientE(int i) { return i / 1024.0; }

int IndexA(int i, int n) { return i % n; }
int IndexB(int i, int n) { return (3 * i + 1) % n; }

// Nodes of the Nox graph: the variables, 8 per term, the root sum.
long Nodes(int m, int n) { return static_cast<long>(n) + 8L * m + 1; }

// The family as a Nox graph.
struct NoxModel {
    NoxFactory factory;
    std::vector<NoxVariable *> vars;
    NoxExpression *root = nullptr;

    NoxModel(int m, int n) {
        for (int j = 0; j < n; ++j)
            vars.push_back(factory.CreateVariable());
        std::vector<NoxExpression *> terms;
        for (int i = 0; i < m; ++i) {
            NoxExpression *c = factory.CreateRealConstant(kC[i % 7]);
            NoxExpression *s1 = factory.CreateSin(
                factory.CreateProduct(vars[IndexA(i, n)], factory.CreateRealConstant(CoefficientD(i))));
            NoxExpression *s2 = factory.CreateSin(
                factory.CreateSum(vars[IndexB(i, n)], factory.CreateRealConstant(CoefficientE(i))));
            NoxExpression *factors[3] = {c, s1, s2};
            terms.push_back(factory.CreateProduct(3, factors));
        }
        root = factory.CreateSum(m, terms.data());
    }
};

// The point of evaluation: x_j, moved by `shift` on every other iteration.
std::vector<double> Point(int n) {
    std::vector<double> x(n);
    for (int j = 0; j < n; ++j)
        x[j] = 0.1 + 0.37 * j - 0.013 * j * j;
    return x;
}
const double kShift = 1e-3;
const double kHalfWidth = 0.05; // half-width of the variables' intervals

bool Close(double a, double b, double rel) {
    return std::fabs(a - b) <= rel * (1.0 + std::fabs(a) + std::fabs(b));
}

// The compiled family of m terms over 10 variables.
template <class T> T Compiled10(int m, const T *x) {
    switch (m) {
    case 125: return family::F125x10(x);
    case 1250: return family::F1250x10(x);
    default: return family::F12500x10(x);
    }
}

void SetCounters(benchmark::State &state, int m, int n) {
    state.counters["nodes"] = static_cast<double>(Nodes(m, n));
    state.counters["ns/node"] = benchmark::Counter(
        static_cast<double>(Nodes(m, n)) * static_cast<double>(state.iterations()),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// ---- Real evaluation ----

void BM_ModelReal_Nox(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = 10;
    NoxModel model(m, n);
    const std::vector<double> x = Point(n);
    for (int j = 0; j < n; ++j)
        model.vars[j]->SetValue(NoxValue(x[j]), nullptr);
    if (!Close(model.root->Eval(), Compiled10<double>(m, x.data()), 1e-12)) {
        state.SkipWithError("Nox and the compiled formula disagree");
        return;
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        for (int j = 0; j < n; ++j)
            model.vars[j]->SetValue(NoxValue(x[j] + (flip ? kShift : 0.0)), nullptr);
        benchmark::DoNotOptimize(model.root->Eval());
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelReal_Nox)->Arg(125)->Arg(1250)->Arg(12500);

void BM_ModelReal_Compiled(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = 10;
    const std::vector<double> x = Point(n);
    std::vector<double> xs = x;
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        for (int j = 0; j < n; ++j)
            xs[j] = x[j] + (flip ? kShift : 0.0);
        benchmark::DoNotOptimize(xs.data());
        benchmark::DoNotOptimize(Compiled10<double>(m, xs.data()));
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelReal_Compiled)->Arg(125)->Arg(1250)->Arg(12500);

#ifdef NOX_BENCH_HAS_MUPARSER
// muParser takes at most 20000 characters an expression, so the family is given to it
// in pieces of 400 terms, one parser each, whose results are added: what a user of it
// would do for a formula this long.
void BM_ModelReal_MuParser(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = 10;
    const std::vector<double> x = Point(n);
    std::vector<double> xs = x;
    std::vector<std::unique_ptr<mu::Parser>> parsers;
    try {
        for (int start = 0; start < m; start += 400) {
            std::string text;
            for (int i = start; i < m && i < start + 400; ++i) {
                char term[128];
                std::snprintf(term, sizeof term, "%s%.17g*sin(x%d*%.17g)*sin(x%d+%.17g)",
                              i > start ? "+" : "", kC[i % 7], IndexA(i, n), CoefficientD(i),
                              IndexB(i, n), CoefficientE(i));
                text += term;
            }
            std::unique_ptr<mu::Parser> p(new mu::Parser);
            for (int j = 0; j < n; ++j)
                p->DefineVar("x" + std::to_string(j), &xs[j]);
            p->SetExpr(text);
            parsers.push_back(std::move(p));
        }
        double total = 0.0;
        for (auto &p : parsers)
            total += p->Eval();
        if (!Close(total, Compiled10<double>(m, x.data()), 1e-9)) {
            state.SkipWithError("muParser and the compiled formula disagree");
            return;
        }
    } catch (mu::Parser::exception_type &e) {
        state.SkipWithError(e.GetMsg().c_str());
        return;
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        for (int j = 0; j < n; ++j)
            xs[j] = x[j] + (flip ? kShift : 0.0);
        double total = 0.0;
        for (auto &p : parsers)
            total += p->Eval();
        benchmark::DoNotOptimize(total);
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelReal_MuParser)->Arg(125)->Arg(1250)->Arg(12500);
#endif

// ---- Interval evaluation ----

void BM_ModelInterval_Nox(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = 10;
    NoxModel model(m, n);
    const std::vector<double> x = Point(n);
    const NoxEnvironment &env = model.factory.GetEnvironment();
    for (int j = 0; j < n; ++j)
        model.vars[j]->SetValue(NoxValue(NoxCreateRealInterval(x[j] - kHalfWidth, x[j] + kHalfWidth)),
                                nullptr);
    env.ClearError();
    const NoxRealInterval r = model.root->GetValue().GetAsRealInterval();
    const double mid = Compiled10<double>(m, x.data());
    if (!(r.lower <= mid && mid <= r.upper)) {
        state.SkipWithError("the Nox enclosure misses the value at the centre");
        return;
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        const double s = flip ? kShift : 0.0;
        for (int j = 0; j < n; ++j)
            model.vars[j]->SetValue(
                NoxValue(NoxCreateRealInterval(x[j] - kHalfWidth + s, x[j] + kHalfWidth + s)),
                nullptr);
        // Interval functions give nil when an error bit is set on entry: a host clears
        // the code before each evaluation.
        env.ClearError();
        benchmark::DoNotOptimize(&model.root->GetValue());
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelInterval_Nox)->Arg(125)->Arg(1250)->Arg(12500);

#ifdef NOX_MODEL_BENCH_HAS_BOOST
namespace bil = boost::numeric::interval_lib;
// No rounding control and no checks: round-to-nearest bounds, as Nox computes them.
using ExactInterval = boost::numeric::interval<
    double, bil::policies<bil::save_state_nothing<bil::rounded_transc_exact<
                              double, bil::rounded_arith_exact<double>>>,
                          bil::checking_base<double>>>;

void BM_ModelInterval_BoostExact(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = 10;
    const std::vector<double> x = Point(n);
    std::vector<ExactInterval> xs;
    for (int j = 0; j < n; ++j)
        xs.emplace_back(x[j] - kHalfWidth, x[j] + kHalfWidth);
    const ExactInterval r = Compiled10<ExactInterval>(m, xs.data());
    const double mid = Compiled10<double>(m, x.data());
    if (!(r.lower() <= mid && mid <= r.upper())) {
        state.SkipWithError("the Boost enclosure misses the value at the centre");
        return;
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        const double s = flip ? kShift : 0.0;
        for (int j = 0; j < n; ++j)
            xs[j].assign(x[j] - kHalfWidth + s, x[j] + kHalfWidth + s);
        benchmark::DoNotOptimize(xs.data());
        benchmark::DoNotOptimize(Compiled10<ExactInterval>(m, xs.data()));
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelInterval_BoostExact)->Arg(125)->Arg(1250)->Arg(12500);
#endif

// ---- Gradients ----

void BM_ModelGradient_Nox(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
    NoxModel model(m, n);
    const std::vector<double> x = Point(n);
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        for (int j = 0; j < n; ++j)
            model.vars[j]->SetValue(NoxValue(x[j] + (flip ? kShift : 0.0)), nullptr);
        benchmark::DoNotOptimize(model.root->GetGradient());
    }
    SetCounters(state, m, n);
}
BENCHMARK(BM_ModelGradient_Nox)
    ->Args({125, 2})->Args({125, 10})->Args({125, 100})
    ->Args({1250, 2})->Args({1250, 10});

#ifdef NOX_BENCH_HAS_EIGEN
template <int N> using AD = Eigen::AutoDiffScalar<Eigen::Matrix<double, N, 1>>;

template <int N> AD<N> CompiledAD(int m, const AD<N> *x);
template <> AD<2> CompiledAD<2>(int m, const AD<2> *x) {
    return m == 125 ? family::F125x2(x) : family::F1250x2(x);
}
template <> AD<10> CompiledAD<10>(int m, const AD<10> *x) {
    return m == 125 ? family::F125x10(x) : family::F1250x10(x);
}
template <> AD<100> CompiledAD<100>(int, const AD<100> *x) { return family::F125x100(x); }

template <int N> void BM_ModelGradient_Eigen(benchmark::State &state) {
    const int m = static_cast<int>(state.range(0));
    const std::vector<double> x = Point(N);
    std::vector<AD<N>> xs(N);
    for (int j = 0; j < N; ++j)
        xs[j] = AD<N>(x[j], N, j);
    {
        // The gradients agree before anything is timed.
        const AD<N> r = CompiledAD<N>(m, xs.data());
        NoxModel model(m, N);
        for (int j = 0; j < N; ++j)
            model.vars[j]->SetValue(NoxValue(x[j]), nullptr);
        const double *g = model.root->GetGradient();
        for (int j = 0; j < N; ++j)
            if (!Close(g[j], r.derivatives()[j], 1e-12)) {
                state.SkipWithError("Nox and Eigen gradients disagree");
                return;
            }
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        for (int j = 0; j < N; ++j)
            xs[j].value() = x[j] + (flip ? kShift : 0.0);
        AD<N> r = CompiledAD<N>(m, xs.data());
        benchmark::DoNotOptimize(r.derivatives().data());
    }
    SetCounters(state, m, N);
}
BENCHMARK_TEMPLATE(BM_ModelGradient_Eigen, 2)->Arg(125)->Arg(1250);
BENCHMARK_TEMPLATE(BM_ModelGradient_Eigen, 10)->Arg(125)->Arg(1250);
// 100 variables over 10^3 nodes only: the fixed-size derivative vectors of 100 entries
// make the compiled 10^4-node instance take minutes to build.
BENCHMARK_TEMPLATE(BM_ModelGradient_Eigen, 100)->Arg(125);
#endif

} // namespace
