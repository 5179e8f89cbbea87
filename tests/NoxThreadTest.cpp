// Models on several threads at once: each thread builds its own factory and evaluates it
// (real values, values, gradients, Hessians, derivative entries and symbolic derivatives,
// value arithmetic on enumerations) while the others do the same. The library shares only
// read-only globals and the atomic assertion hook between models, so every thread must
// compute exactly what the same work computes alone; the ThreadSanitizer build (the tsan
// preset) checks that nothing shared is written.
#include <NoxAssert.h>
#include <NoxFactory.h>
#include <NoxValueFunctions.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 60;

/// A host function: the sum of its arguments' real values, or their value sum.
class SumBox : public NoxBlackBox {
public:
    double Eval() override {
        double s = 0.0;
        NoxBlackBoxOperator *node = GetOperator();
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i)
            s += node->GetChild(i)->Eval();
        return s;
    }
    void Eval(NoxValue &result) override {
        NoxBlackBoxOperator *node = GetOperator();
        NoxValue s(0.0);
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i)
            s = NoxSum(node->GetEnvironment(), s, node->GetChild(i)->GetValue());
        result = s;
    }
};

std::uint64_t Bits(double x) {
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}

/// Everything one model computed, as bit patterns, so that NaN compares equal to itself.
struct Trace {
    std::vector<std::uint64_t> entries;
    int closedFormMisses = 0; // rounds where x*y + x or its gradient came out wrong
    void Add(double x) { entries.push_back(Bits(x)); }
    void Add(const NoxValue &v) {
        entries.push_back(static_cast<std::uint64_t>(v.GetType()));
        entries.push_back(Bits(v.GetRealValue()));
        if (v.GetType() == NoxIntegerEnumType)
            entries.push_back(static_cast<std::uint64_t>(v.GetIntegerEnum().GetSize()));
        if (v.GetType() == NoxRealEnumType)
            entries.push_back(static_cast<std::uint64_t>(v.GetRealEnum().GetSize()));
    }
};

std::atomic<long> gReportsA{0};
std::atomic<long> gReportsB{0};
void CountA(const char *, const char *, int) { ++gReportsA; }
void CountB(const char *, const char *, int) { ++gReportsB; }

/// Builds one model, evaluates it over `kRounds` points that depend on `seed`, and
/// records every result, and counts the rounds where the first root misses its closed form.
Trace RunModel(int seed) {
    Trace trace;
    SumBox box;
    NoxFactory f;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    NoxVariable *z = f.CreateVariable();
    NoxExpression *args[2] = {x, y};
    std::vector<NoxExpression *> roots = {
        f.CreateSum(f.CreateProduct(x, y), x), // x*y + x: gradient (y + 1, x, 0)
        f.CreateSum(f.CreateSin(x), f.CreateCos(y)),
        f.CreateQuotient(f.CreateExp(x), f.CreateSum(f.CreateRealConstant(1.0), f.CreatePower(y, 2))),
        f.CreateSum(f.CreateSqrt(f.CreateAbs(z)), f.CreateLn(f.CreateAbs(x))),
        f.CreateMax(f.CreateMin(x, y), z),
        f.CreateRoot(f.CreateProduct(z, z), 2),
        f.CreateMod(x, f.CreateRealConstant(0.3)),
        f.CreateAtan(f.CreateTanh(f.CreateProduct(x, z))),
        f.DeclareBlackBox(&box, 2, args),
        f.CreateOr(f.CreateEqual(x, y), f.CreateNot(z)),
        f.CreateQuadraticTerm(NoxValue(2.0), x, NoxValue(1.0)),
        f.CreateLinearInterpolation2P(f.CreateRealConstant(0.0), f.CreateRealConstant(1.0),
                                      f.CreateRealConstant(2.0), f.CreateRealConstant(5.0), y),
    };
    const std::size_t firstOrder = roots.size();
    for (std::size_t i = 0; i < firstOrder; ++i)
        if (roots[i])
            roots.push_back(roots[i]->Differentiate(x));
    for (NoxExpression *root : roots)
        if (root)
            f.AddEquation(root, NoxDefaultEquation);

    const NoxEnvironment &env = f.GetEnvironment();
    double *rows[3];
    double hessian[3][3];
    for (int i = 0; i < 3; ++i)
        rows[i] = hessian[i];
    for (int round = 0; round < kRounds; ++round) {
        const double px = 0.25 + 0.01 * round + 0.1 * seed;
        const double py = -0.5 + 0.02 * round;
        const double pz = 1.5 - 0.03 * seed;
        x->SetValue(NoxValue(px), nullptr);
        y->SetValue(NoxValue(py), nullptr);
        z->SetValue(NoxValue(pz), nullptr);
        f.GetEnvironment().ClearError();
        for (NoxExpression *root : roots) {
            if (!root)
                continue;
            trace.Add(root->Eval());
            trace.Add(root->GetValue());
            double gradient[3];
            root->EvalGradient(gradient);
            for (double g : gradient)
                trace.Add(g);
            root->EvalHessian(rows);
            for (auto &row : hessian)
                for (double h : row)
                    trace.Add(h);
            trace.Add(root->EvalFirstDeriv(y));
            trace.Add(root->EvalSecondDeriv(x, z));
        }
        if (!roots[0] || std::fabs(roots[0]->Eval() - (px * py + px)) > 1e-12 ||
            std::fabs(roots[0]->EvalFirstDeriv(x) - (py + 1.0)) > 1e-12 ||
            std::fabs(roots[0]->EvalFirstDeriv(y) - px) > 1e-12)
            ++trace.closedFormMisses;
        // Interval and enumeration values through the same graph.
        x->SetValue(NoxValue(NoxRealInterval{px - 0.5, px + 0.5}), nullptr);
        NoxValue members(NoxIntegerEnumType);
        const int list[] = {round % 5, 7, 11 + seed, 40};
        members.Set(4, list);
        y->SetValue(members, nullptr);
        for (NoxExpression *root : roots)
            if (root)
                trace.Add(root->GetValue());
        trace.Add(NoxMul(env, members, NoxSum(env, members, NoxValue(round))));
        // Conversions that report through the assertion hook.
        NoxValue(NoxTrue).GetAsReal();
        trace.Add(static_cast<double>(env.GetError()));
    }
    return trace;
}

TEST(ThreadTest, OneFactoryPerThread_ComputesWhatTheSameWorkComputesAlone) {
    std::vector<Trace> alone;
    for (int t = 0; t < kThreads; ++t)
        alone.push_back(RunModel(t));

    std::vector<Trace> together(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &together] { together[t] = RunModel(t); });
    for (std::thread &thread : threads)
        thread.join();

    for (int t = 0; t < kThreads; ++t) {
        ASSERT_FALSE(alone[t].entries.empty());
        EXPECT_EQ(alone[t].closedFormMisses, 0) << "thread " << t;
        EXPECT_EQ(together[t].closedFormMisses, 0) << "thread " << t;
        EXPECT_EQ(together[t].entries, alone[t].entries) << "thread " << t;
    }
}

TEST(ThreadTest, AssertionHookSwappedWhileModelsReport_EveryReportReachesAHook) {
    const NoxAssertionHook previous = NoxSetAssertionHook(CountA);
    gReportsA = 0;
    gReportsB = 0;
    std::atomic<bool> stop{false};
    std::thread swapper([&stop] {
        for (int i = 0; !stop.load(); ++i)
            NoxSetAssertionHook(i % 2 ? CountA : CountB);
    });
    constexpr int kReportsPerThread = 2000;
    std::vector<std::thread> reporters;
    for (int t = 0; t < kThreads; ++t)
        reporters.emplace_back([] {
            const NoxValue truth(NoxTrue);
            for (int i = 0; i < kReportsPerThread; ++i)
                truth.GetAsReal(); // a boolean has no real reading: reported
        });
    for (std::thread &reporter : reporters)
        reporter.join();
    stop = true;
    swapper.join();
    NoxSetAssertionHook(previous);
    EXPECT_EQ(gReportsA.load() + gReportsB.load(), long{kThreads} * kReportsPerThread);
}

} // namespace
