// Expression graphs: building a model of 10^5 nodes, a cached evaluation, and the
// forward-difference gradient of a black box beside the same differences written by hand.
#include <Nox.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr int kModelNodes = 100000;
constexpr int kModelVariables = 1000;

// A black box whose value is the sum of its arguments' real values.
class SumBox : public NoxBlackBox {
public:
    double Eval() override {
        double s = 0.0;
        NoxBlackBoxOperator *node = GetOperator();
        for (int i = 0; i < node->GetNbOfChildren(); ++i)
            s += node->GetChild(i)->Eval();
        return s;
    }
    void Eval(NoxValue &result) override { result = NoxValue(Eval()); }
};

// 1000 variables, then sums, products and sines over earlier nodes until the factory
// holds 10^5 nodes; the factory is destroyed with the iteration.
void BM_BuildModelOf100kNodes(benchmark::State &state) {
    for (auto _ : state) {
        NoxFactory f;
        std::vector<NoxExpression *> nodes;
        nodes.reserve(kModelNodes);
        for (int i = 0; i < kModelVariables; ++i)
            nodes.push_back(f.CreateVariable());
        for (std::size_t i = 0; nodes.size() < kModelNodes; ++i) {
            NoxExpression *a = nodes[i];
            NoxExpression *b = nodes[i + 1];
            switch (i % 3) {
            case 0:
                nodes.push_back(f.CreateSum(a, b));
                break;
            case 1:
                nodes.push_back(f.CreateProduct(a, b));
                break;
            default:
                nodes.push_back(f.CreateSin(a));
                break;
            }
        }
        benchmark::DoNotOptimize(nodes.back());
    }
    state.SetItemsProcessed(state.iterations() * kModelNodes);
}
BENCHMARK(BM_BuildModelOf100kNodes)->Unit(benchmark::kMillisecond);

void BM_CachedEvalHit(benchmark::State &state) {
    NoxFactory f;
    NoxVariable *x = f.CreateVariable();
    x->SetValue(NoxValue(2.0), nullptr);
    SumBox box;
    NoxExpression *args[1] = {x};
    NoxExpression *node = f.DeclareBlackBox(&box, 1, args);
    node->Eval();
    for (auto _ : state)
        benchmark::DoNotOptimize(node->Eval());
}
BENCHMARK(BM_CachedEvalHit);

// The gradient of a black box over n variables: two box evaluations per variable.
void BM_BlackBoxGradient(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    NoxFactory f;
    std::vector<NoxExpression *> args;
    for (int i = 0; i < n; ++i) {
        NoxVariable *x = f.CreateVariable();
        x->SetValue(NoxValue(1.0 + i), nullptr);
        args.push_back(x);
    }
    SumBox box;
    NoxExpression *node = f.DeclareBlackBox(&box, n, args.data());
    for (auto _ : state) {
        node->ResetBuffer(0);
        benchmark::DoNotOptimize(node->GetGradient());
    }
}
BENCHMARK(BM_BlackBoxGradient)->Arg(1)->Arg(10)->Arg(100);

// The same forward differences written by hand over a plain array: the limit the node's
// caching and perturbation machinery is measured against.
void BM_HandWrittenForwardDifference(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> x(n), g(n);
    for (int i = 0; i < n; ++i)
        x[i] = 1.0 + i;
    auto sum = [&x] {
        double s = 0.0;
        for (double v : x)
            s += v;
        return s;
    };
    for (auto _ : state) {
        for (int i = 0; i < n; ++i) {
            const double f0 = sum();
            const double y = x[i];
            x[i] = y + 1e-4;
            const double f1 = sum();
            x[i] = y;
            g[i] = (f1 - f0) / 1e-4;
        }
        benchmark::DoNotOptimize(g.data());
    }
}
BENCHMARK(BM_HandWrittenForwardDifference)->Arg(1)->Arg(10)->Arg(100);

} // namespace
