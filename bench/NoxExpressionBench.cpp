// Operator nodes on generated models: real evaluation, interval value evaluation, gradient
// and symbolic differentiation of random smooth formulas (tests/NoxRandomFormula.h) of
// 10^3, 10^4 and 10^5 nodes over 2, 10 and 100 variables.
#include "../tests/NoxRandomFormula.h"

#include <Nox.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace {

/// A factory that tells how many nodes it holds.
class Factory : public NoxFactory {
public:
    int Nodes() const { return expressionCount; }
};

/// A factory holding one generated formula.
struct Model {
    Model(int nodes, int variables) {
        for (int i = 0; i < variables; ++i)
            vars.push_back(factory.CreateVariable());
        // Without absolute values, minima and maxima, which have no symbolic derivative (a
        // null derivative would cut the differentiation of their ancestors short), and
        // without ceilings, floors and roundings, whose zero gradient and constant
        // derivative skip their whole operand: every node is then on the path of each of
        // the four operations.
        noxformula::Options options;
        options.kinks = false;
        options.steps = false;
        noxformula::Generator generator(factory, vars, 0x6265u + static_cast<unsigned>(nodes + variables),
                                        options);
        root = generator.Grow(nodes);
        created = generator.Created();
        for (int i = 0; i < variables; ++i)
            vars[i]->SetValue(NoxValue(-1.0 + 2.0 * (i + 0.5) / variables), nullptr);
    }

    /// Gives every variable an interval of width 0.2 around its point.
    void SetIntervals() {
        const int n = static_cast<int>(vars.size());
        for (int i = 0; i < n; ++i) {
            const double c = -1.0 + 2.0 * (i + 0.5) / n;
            vars[i]->SetValue(NoxValue(NoxCreateRealInterval(c - 0.1, c + 0.1)), nullptr);
        }
    }

    Factory factory;
    std::vector<NoxVariable *> vars;
    NoxExpression *root = nullptr;
    int created = 0;
};

/// One model per shape, built on first use and kept for the run: real, value and gradient
/// benchmarks of a shape share it.
Model &Shared(int nodes, int variables) {
    static std::map<std::pair<int, int>, std::unique_ptr<Model>> models;
    std::unique_ptr<Model> &m = models[{nodes, variables}];
    if (!m)
        m = std::make_unique<Model>(nodes, variables);
    return *m;
}

void Label(benchmark::State &state, const Model &m) {
    state.counters["nodes"] = m.created;
    state.SetItemsProcessed(state.iterations() * m.created);
}

// Asks the root of the shared model of the state's shape for a result after each reset:
// SetValue on a variable clears every registered node's cache, so the root recomputes
// each node once.
template <class Ask> void AfterReset(benchmark::State &state, Ask ask) {
    Model &m = Shared(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    NoxVariable *x = m.vars[0];
    double value = 0.25;
    for (auto _ : state) {
        value = -value;
        x->SetValue(NoxValue(value), nullptr);
        benchmark::DoNotOptimize(ask(*m.root));
    }
    Label(state, m);
}

// Real evaluation of the whole model after a reset.
void BM_ExpressionEval(benchmark::State &state) {
    AfterReset(state, [](NoxExpression &root) { return root.Eval(); });
}

// Value evaluation over intervals of width 0.2 of every variable, after a reset, with the
// error code cleared before each chain.
void BM_ExpressionIntervalValue(benchmark::State &state) {
    Model &m = Shared(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    m.SetIntervals();
    NoxVariable *x = m.vars[0];
    const NoxRealInterval a = NoxCreateRealInterval(-0.35, -0.15);
    const NoxRealInterval b = NoxCreateRealInterval(0.15, 0.35);
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        x->SetValue(NoxValue(flip ? a : b), nullptr);
        m.factory.GetEnvironment().ClearError();
        benchmark::DoNotOptimize(m.root->GetValue().GetType());
    }
    for (NoxVariable *v : m.vars)
        v->SetValue(NoxValue(0.25), nullptr);
    Label(state, m);
}

// The gradient over every variable after a reset: each node's gradient buffer holds one
// entry per variable, so the work grows with nodes times variables.
void BM_ExpressionGradient(benchmark::State &state) {
    AfterReset(state, [](NoxExpression &root) { return root.GetGradient(); });
}

// Symbolic differentiation with respect to one variable (a different one each iteration).
// The derivatives stay in the factory, which grows with every iteration, so the model is
// built here, untimed, and the iteration count is fixed (see the registration below).
// The count of nodes created per derivative is reported as new_nodes.
void BM_ExpressionDifferentiate(benchmark::State &state) {
    Model m(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const int before = m.factory.Nodes();
    std::size_t i = 0;
    for (auto _ : state) {
        NoxVariable *x = m.vars[i++ % m.vars.size()];
        benchmark::DoNotOptimize(m.root->Differentiate(x));
    }
    Label(state, m);
    state.counters["new_nodes"] = benchmark::Counter(m.factory.Nodes() - before, benchmark::Counter::kAvgIterations);
}

// The creation of one node in a factory already holding range(0) nodes: the share of
// the factory's array growth in the cost of Differentiate on large models. The count of
// iterations is fixed, so that the factory grows by 2000 nodes only.
void BM_ExpressionCreateNodeInFactoryOf(benchmark::State &state) {
    Factory f;
    for (int i = 0; i < state.range(0); ++i)
        f.CreateRealConstant(1.0);
    for (auto _ : state)
        benchmark::DoNotOptimize(f.CreateRealConstant(2.0));
    state.counters["held_at_end"] = f.Nodes();
}

void Shapes(benchmark::internal::Benchmark *b) {
    for (int nodes : {1000, 10000, 100000})
        for (int variables : {2, 10, 100})
            b->Args({nodes, variables});
    b->ArgNames({"nodes", "vars"});
}

// Differentiation runs 2 * 10^4 / nodes times (at least once): each run adds a derivative
// of about three times the model's size to the factory, and the factory's arrays grow by
// 10 entries at a time, copying every entry, so that creating a node costs time in
// proportion to the number of nodes already held. The factory is kept below half a
// million nodes.
[[maybe_unused]] const int registered = [] {
    for (int nodes : {1000, 10000, 100000})
        for (int variables : {2, 10, 100})
            benchmark::RegisterBenchmark("BM_ExpressionDifferentiate", BM_ExpressionDifferentiate)
                ->Args({nodes, variables})
                ->ArgNames({"nodes", "vars"})
                ->Iterations(std::max(1, 20000 / nodes))
                ->Unit(benchmark::kMicrosecond);
    return 0;
}();

} // namespace

BENCHMARK(BM_ExpressionEval)->Apply(Shapes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ExpressionIntervalValue)->Apply(Shapes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ExpressionGradient)->Apply(Shapes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ExpressionCreateNodeInFactoryOf)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Arg(300000)
    ->Iterations(2000);
