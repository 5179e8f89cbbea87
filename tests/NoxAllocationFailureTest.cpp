// Allocation failure along a whole model: the build of a model through the factory and its
// evaluation (real values, values, gradients, Hessians, derivative entries, symbolic
// derivatives, names, enumeration values) are run once for every allocation they make,
// with that allocation refused (alone, or with every later one), the library's nothrow
// requests and the standard library's throwing ones alike. No exception may leave the
// library, nothing may leak, every operation must take its documented fallback (null
// nodes, null buffers with derivative entries reading 0.0, names left as they were,
// enumerations holding what fit), and the model must compute its exact results again
// once memory is back.
//
// While a failure is armed the test code itself allocates nothing: results go to fixed
// arrays and are checked after the run.
#include <NoxFactory.h>
#include <NoxValueFunctions.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "NoxTestAllocator.h"

namespace {

using nox_test::AllocationFailure;
using nox_test::AllocationForms;

constexpr int kMostAllocations = 20000; // far above what one run makes

/// A host function: the sum of its arguments' real values, or their value sum.
class SumBox : public NoxBlackBox {
public:
    double Eval() override {
        double s = 0.0;
        NoxBlackBoxOperator *node = GetOperator();
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i) {
            NoxExpression *child = node->GetChild(i);
            s += child ? child->Eval() : 0.0;
        }
        return s;
    }
    void Eval(NoxValue &result) override {
        NoxBlackBoxOperator *node = GetOperator();
        NoxValue s(0.0);
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i) {
            NoxExpression *child = node->GetChild(i);
            if (child)
                s = NoxSum(node->GetEnvironment(), s, child->GetValue());
        }
        result = s;
    }
};

// The roots of the model, in a fixed order.
enum Root {
    kSumOfProduct, // x*y + x
    kQuotient,     // x / y^2
    kTrigonometric, // sin(x) + exp(z)
    kBox,          // the black box over (x, y)
    kLogic,        // x or y
    kDerivative,   // d(x*y + x)/dx
    kQuadratic,    // 2*x^2 + 1
    kRoots
};

struct Outcome {
    double real;
    double firstDerivative; // with respect to x
    double secondDerivative; // with respect to x and y
    bool gradientNull;
    bool gradientCopyUntouched; // EvalGradient wrote nothing
    bool hessianNull;
    bool hessianCopyUntouched;  // EvalHessian wrote nothing
};

struct Run {
    NoxVariable *x, *y, *z;
    NoxExpression *root[kRoots];
    NoxExpressionType rootType[kRoots];
    Outcome during[kRoots]; // while memory may be refused
    Outcome after[kRoots];  // once memory is back
    bool complete[kRoots];  // every node of the root's graph holds all its children
    int variableCount;
    NoxEquation *equation;
    bool namesAsBeforeOrAsSet; // each name is its default or the long name set
    bool exceptionEscaped;
};

constexpr double kSentinel = 7.0;

void Evaluate(NoxExpression *root, NoxVariable *x, NoxVariable *y, Outcome &out) {
    if (!root)
        return;
    out.real = root->Eval();
    NoxValue value;
    root->Eval(value);
    double gradient[3] = {kSentinel, kSentinel, kSentinel};
    root->EvalGradient(gradient);
    out.gradientNull = root->GetGradient() == nullptr;
    out.gradientCopyUntouched =
        gradient[0] == kSentinel && gradient[1] == kSentinel && gradient[2] == kSentinel;
    double rowStore[3][3];
    double *rows[3] = {rowStore[0], rowStore[1], rowStore[2]};
    for (auto &row : rowStore)
        for (double &h : row)
            h = kSentinel;
    root->EvalHessian(rows);
    out.hessianNull = root->GetHessian() == nullptr;
    bool untouched = true;
    for (auto &row : rowStore)
        for (double h : row)
            untouched = untouched && h == kSentinel;
    out.hessianCopyUntouched = untouched;
    out.firstDerivative = root->EvalFirstDeriv(x);
    out.secondDerivative = root->EvalSecondDeriv(x, y);
}

void SetPoint(Run &run) {
    if (run.x)
        run.x->SetValue(NoxValue(0.5), nullptr);
    if (run.y)
        run.y->SetValue(NoxValue(2.0), nullptr);
    if (run.z)
        run.z->SetValue(NoxValue(-1.0), nullptr);
}

/// True when every node under `node` holds all of its children: no allocation of the
/// sub-graph was refused.
bool Complete(const NoxExpression *node) {
    if (!node)
        return false;
    for (int i = 0; i < node->GetNbOfChildren(); ++i)
        if (!Complete(node->GetChild(i)))
            return false;
    return true;
}

/// Builds the model and evaluates every root; `arm` is called when the failure should
/// start (before the build), `disarm` when memory is back (before the second evaluation).
template <class Arm, class Disarm> void BuildAndEvaluate(Run &run, Arm arm, Disarm disarm) {
    const std::string longName(48, 'n'); // longer than a string holds without allocating
    SumBox box;
    NoxFactory f;
    run.exceptionEscaped = false;
    try {
        arm();
        run.x = f.CreateVariable();
        run.y = f.CreateVariable();
        run.z = f.CreateVariable();
        run.variableCount = f.GetNbOfVariables();
        NoxVariable *x = run.x, *y = run.y, *z = run.z;
        run.root[kSumOfProduct] = f.CreateSum(f.CreateProduct(x, y), x);
        run.root[kQuotient] = f.CreateQuotient(x, f.CreatePower(y, 2));
        run.root[kTrigonometric] = f.CreateSum(f.CreateSin(x), f.CreateExp(z));
        NoxExpression *args[2] = {x, y};
        run.root[kBox] = f.DeclareBlackBox(&box, 2, args);
        run.root[kLogic] = f.CreateOr(x, y);
        run.root[kDerivative] =
            run.root[kSumOfProduct] ? run.root[kSumOfProduct]->Differentiate(x) : nullptr;
        run.root[kQuadratic] = f.CreateQuadraticTerm(NoxValue(2.0), x, NoxValue(1.0));
        run.equation = f.AddEquation(run.root[kSumOfProduct], NoxDefaultEquation);
        if (x)
            x->SetName(longName);
        if (run.equation)
            run.equation->SetName(longName);
        SetPoint(run);
        for (int r = 0; r < kRoots; ++r)
            Evaluate(run.root[r], x, y, run.during[r]);
        disarm();
        run.namesAsBeforeOrAsSet =
            (!x || x->GetName() == "va0" || x->GetName() == longName) &&
            (!run.equation || run.equation->GetName() == "eq0" ||
             run.equation->GetName() == longName);
        SetPoint(run);
        for (int r = 0; r < kRoots; ++r) {
            run.rootType[r] = run.root[r] ? run.root[r]->GetType() : NoxExpressionType(0);
            run.complete[r] = Complete(run.root[r]);
            Evaluate(run.root[r], x, y, run.after[r]);
        }
    } catch (...) {
        disarm();
        run.exceptionEscaped = true;
    }
}

std::uint64_t Bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

/// Checks one run against the run without failure. `refusalsLast` tells that a refusal
/// lasts until memory is back, so a buffer found null stays null for the later calls.
void CheckRun(const Run &run, const Run &reference, bool refusalsLast, const char *mode,
              long k) {
    SCOPED_TRACE(testing::Message() << mode << ", allocation " << k);
    ASSERT_FALSE(run.exceptionEscaped);
    // A variable either exists with its index or leaves a null entry (or no entry at all
    // when the variable array could not grow).
    EXPECT_GE(run.variableCount, 0);
    EXPECT_LE(run.variableCount, 3);
    EXPECT_TRUE(run.namesAsBeforeOrAsSet);
    for (int r = 0; r < kRoots; ++r) {
        SCOPED_TRACE(testing::Message() << "root " << r);
        if (!run.root[r])
            continue; // a null node: the creators' fallback
        EXPECT_EQ(run.rootType[r], reference.rootType[r]);
        const Outcome &during = run.during[r];
        // A buffer that could not be had: null, nothing copied out, entries read 0.0.
        if (refusalsLast && during.gradientNull) {
            EXPECT_TRUE(during.gradientCopyUntouched);
            EXPECT_EQ(during.firstDerivative, 0.0);
        }
        if (refusalsLast && during.hessianNull) {
            EXPECT_TRUE(during.hessianCopyUntouched);
            EXPECT_EQ(during.secondDerivative, 0.0);
        }
        // Once memory is back, a model whose nodes are all there computes what the model
        // built without failure computes.
        const Outcome &after = run.after[r];
        if (!run.complete[r] || !run.x || !run.y || !run.z)
            continue;
        EXPECT_FALSE(after.gradientNull);
        EXPECT_FALSE(after.hessianNull);
        EXPECT_EQ(Bits(after.real), Bits(reference.after[r].real));
        EXPECT_EQ(Bits(after.firstDerivative), Bits(reference.after[r].firstDerivative));
        EXPECT_EQ(Bits(after.secondDerivative), Bits(reference.after[r].secondDerivative));
    }
}

Run Reference() {
    Run run{};
    BuildAndEvaluate(
        run, [] {}, [] {});
    return run;
}

// Refuses allocation k of `forms`, alone (RefuseOne) or with every later one (RefuseAll),
// for every k until a run makes fewer than k allocations.
void EveryAllocation(AllocationForms forms, AllocationFailure::Then then, const char *mode) {
    const Run reference = Reference();
    // The model without failure: the closed forms of the algebraic roots.
    ASSERT_NE(reference.root[kSumOfProduct], nullptr);
    EXPECT_EQ(reference.after[kSumOfProduct].real, 0.5 * 2.0 + 0.5);
    EXPECT_EQ(reference.after[kSumOfProduct].firstDerivative, 2.0 + 1.0);
    // The Hessian of a product is its first child's (here a variable's zeros), and that
    // of a sum the sum of its children's.
    EXPECT_EQ(reference.after[kSumOfProduct].secondDerivative, 0.0);
    EXPECT_EQ(reference.after[kQuotient].real, 0.5 / 4.0);
    EXPECT_EQ(reference.after[kQuadratic].real, 2.0 * 0.25 + 1.0);
    EXPECT_EQ(reference.after[kDerivative].real, 2.0 + 1.0);

    long k = 0;
    for (; k < kMostAllocations; ++k) {
        const long liveBefore = nox_test::LiveAllocationCount();
        const long refusedBefore = nox_test::RefusalCount();
        Run run{};
        std::optional<AllocationFailure> failure;
        BuildAndEvaluate(
            run, [&] { failure.emplace(forms, k, then); }, [&] { failure.reset(); });
        failure.reset();
        EXPECT_EQ(nox_test::LiveAllocationCount(), liveBefore) << mode << ", allocation " << k;
        const bool refused = nox_test::RefusalCount() != refusedBefore;
        CheckRun(run, reference, then == AllocationFailure::RefuseAll, mode, k);
        if (!refused)
            break; // the run made fewer than k + 1 allocations of these forms
        if (testing::Test::HasFatalFailure())
            return;
    }
    testing::Test::RecordProperty("allocations", static_cast<int>(k));
    EXPECT_LT(k, kMostAllocations);
    EXPECT_GT(k, 10) << mode; // the model does allocate
}

TEST(AllocationFailure, EachNothrowAllocationRefusedAlone_TakesItsFallbackAndLeaksNothing) {
    EveryAllocation(AllocationForms::Nothrow, AllocationFailure::RefuseOne, "nothrow, one");
}

TEST(AllocationFailure, NothrowAllocationsRefusedFromEachPointOn_TakeTheirFallbacks) {
    EveryAllocation(AllocationForms::Nothrow, AllocationFailure::RefuseAll, "nothrow, all");
}

TEST(AllocationFailure, EachAllocationOfAnyFormRefusedAlone_LetsNoExceptionOut) {
    EveryAllocation(AllocationForms::All, AllocationFailure::RefuseOne, "any form, one");
}

TEST(AllocationFailure, AllocationsOfAnyFormRefusedFromEachPointOn_LetNoExceptionOut) {
    EveryAllocation(AllocationForms::All, AllocationFailure::RefuseAll, "any form, all");
}

// ---- Names ----

TEST(AllocationFailure, NamesUnderEveryRefusedAllocation_KeepTheOldNameOrTakeTheNew) {
    const std::string longName(64, 'n');
    const std::string longer(80, 'm');
    for (long k = 0; k < 8; ++k) {
        SCOPED_TRACE(testing::Message() << "allocation " << k);
        NoxFactory f;
        NoxVariable *x = f.CreateVariable();
        NoxEquation *eq = f.AddEquation(x, NoxDefaultEquation);
        ASSERT_NE(eq, nullptr);
        x->SetName(longName);
        eq->SetName(longName);
        const long liveBefore = nox_test::LiveAllocationCount();
        bool escaped = false;
        const std::string *variableName = nullptr;
        const std::string *equationName = nullptr;
        alignas(NoxEquation) unsigned char copyStore[sizeof(NoxEquation)];
        NoxEquation *copy = nullptr;
        {
            AllocationFailure failure(AllocationForms::All, k);
            try {
                x->SetName(longer);
                eq->SetName(longer);
                copy = new (copyStore) NoxEquation(*eq);
                *copy = *eq;
                variableName = &x->GetName();
                equationName = &eq->GetName();
            } catch (...) {
                escaped = true;
            }
        }
        ASSERT_FALSE(escaped);
        EXPECT_TRUE(*variableName == longName || *variableName == longer);
        EXPECT_TRUE(*equationName == longName || *equationName == longer);
        // The copy's name is the source's, or empty (read back as the default) when it
        // could not be had, and the assignment leaves it as it was.
        const std::string &copied = copy->GetName();
        EXPECT_TRUE(copied == *equationName || copied == "eq0") << copied;
        copy->~NoxEquation();
        EXPECT_EQ(nox_test::LiveAllocationCount(), liveBefore);
    }
}

// ---- Enumeration values ----

TEST(AllocationFailure, EnumerationValueSetUnderEveryRefusedAllocation_HoldsWhatFit) {
    int list[40];
    for (int i = 0; i < 40; ++i)
        list[i] = 3 * i - 20;
    for (long k = 0; k < 12; ++k) {
        SCOPED_TRACE(testing::Message() << "allocation " << k);
        const long liveBefore = nox_test::LiveAllocationCount();
        {
            NoxValue v(NoxIntegerEnumType);
            {
                AllocationFailure failure(AllocationForms::All, k);
                v.Set(40, list);
            }
            const NoxIntegerEnum &e = v.GetIntegerEnum();
            EXPECT_EQ(v.GetType(), NoxIntegerEnumType);
            ASSERT_LE(e.GetSize(), 40);
            for (int i = 0; i < e.GetSize(); ++i)
                EXPECT_EQ(e.Get(i), list[i]);
        }
        EXPECT_EQ(nox_test::LiveAllocationCount(), liveBefore);
    }
}

TEST(AllocationFailure, EnumerationArithmeticUnderEveryRefusedAllocation_LeavesOperandsAsTheyWere) {
    NoxEnvironment env;
    NoxValue a(NoxIntegerEnumType);
    NoxValue b(NoxRealEnumType);
    const int ints[] = {1, 2, 3, 5, 8};
    const double reals[] = {0.5, 1.5, 2.5};
    a.Set(5, ints);
    b.Set(3, reals);
    for (long k = 0; k < 40; ++k) {
        SCOPED_TRACE(testing::Message() << "allocation " << k);
        const long liveBefore = nox_test::LiveAllocationCount();
        {
            NoxValue sum, product, sine, intersection(a);
            {
                AllocationFailure failure(AllocationForms::All, k);
                sum = NoxSum(env, a, b);
                product = NoxMul(env, a, a);
                sine = NoxSin(env, b);
                NoxIntersect(env, intersection, b, 1e-9);
            }
            EXPECT_EQ(sum.GetType(), NoxRealEnumType);
            EXPECT_EQ(product.GetType(), NoxIntegerEnumType);
            EXPECT_EQ(a.GetIntegerEnum().GetSize(), 5);
            EXPECT_EQ(b.GetRealEnum().GetSize(), 3);
        }
        EXPECT_EQ(nox_test::LiveAllocationCount(), liveBefore);
        env.ClearError();
    }
}

} // namespace
