// Sum, product, minimum and maximum nodes: real and value evaluation, gradient, Hessian
// and symbolic derivative of every type, absent children, and what the bodies allocate.
#include <NoxFactory.h>
#include <NoxOperators.h>
#include <NoxValueFunctions.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "NoxTestAllocator.h"

namespace {

using nox_test::Bits;
using nox_test::ExpectSameValue;
using nox_test::kNaN;

constexpr double kSentinel = -123.25;

using Matrix = std::vector<std::vector<double>>;
using ValueFunction = NoxValue (*)(const NoxEnvironment &, const NoxValue &, const NoxValue &);

/// The protected bodies, called directly.
class ExposedAlgebraic : public NoxAlgebraicOperator {
public:
    using NoxAlgebraicOperator::NoxAlgebraicOperator;
    using NoxAlgebraicOperator::DoEvalGradient;
    using NoxAlgebraicOperator::DoEvalHessian;
};

class AlgebraicOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        z = f.CreateVariable();
    }

    StubNode *Stub(double real, std::vector<double> gradient = {}, Matrix hessian = {},
                   NoxValue value = NoxValue()) {
        NoxExpression *node = new StubNode(&f, real, std::move(gradient), std::move(hessian),
                                           std::move(value));
        return static_cast<StubNode *>(f.AddExpression(node));
    }

    NoxExpression *Node(NoxExpressionType t, std::vector<NoxExpression *> children) {
        return f.CreateAlgebraicOperator(t, static_cast<int>(children.size()), children.data());
    }

    void Set(double a, double b, double c) {
        SetReal(x, a);
        SetReal(y, b);
        SetReal(z, c);
    }

    std::vector<double> Gradient(NoxExpression *node) {
        const double *g = node->GetGradient();
        return std::vector<double>(g, g + f.GetNbOfVariables());
    }

    Matrix Hessian(NoxExpression *node) {
        double **h = node->GetHessian();
        Matrix m;
        for (int r = 0; r < f.GetNbOfVariables(); ++r)
            m.emplace_back(h[r], h[r] + f.GetNbOfVariables());
        return m;
    }

    // Fills the gradient buffer with a sentinel and computes the gradient again.
    std::vector<double> GradientOverSentinel(NoxExpression *node) {
        double *g = const_cast<double *>(node->GetGradient());
        std::fill(g, g + f.GetNbOfVariables(), kSentinel);
        node->ResetBuffer(0);
        return Gradient(node);
    }

    // Fills the Hessian buffer with a sentinel and computes the Hessian again.
    Matrix HessianOverSentinel(NoxExpression *node) {
        double **h = node->GetHessian();
        for (int r = 0; r < f.GetNbOfVariables(); ++r)
            std::fill(h[r], h[r] + f.GetNbOfVariables(), kSentinel);
        node->ResetBuffer(0);
        return Hessian(node);
    }

    void ExpectSameGradient(const std::vector<double> &actual,
                            const std::vector<double> &expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (size_t k = 0; k < actual.size(); ++k)
            EXPECT_SAME_REAL(actual[k], expected[k]) << " at " << k;
    }

    void ExpectSameMatrix(const Matrix &actual, const Matrix &expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (size_t r = 0; r < actual.size(); ++r)
            ExpectSameGradient(actual[r], expected[r]);
    }

    // A real constant node's value.
    static double ConstantValue(NoxExpression *e) {
        EXPECT_EQ(e->GetType(), NoxConstantExpr);
        EXPECT_EQ(e->GetExprValue().GetType(), NoxRealType);
        return e->GetExprValue().GetAsReal();
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    NoxVariable *z = nullptr;
};

} // namespace

// ---- Real evaluation ----

TEST_F(AlgebraicOperatorTest, SumEval_StartsAtZeroAndAddsTheChildrenInOrder) {
    volatile double a = 0.1, b = 0.2, c = 0.7;
    Set(a, b, c);
    EXPECT_SAME_REAL(Node(NoxSumExpr, {x, y, z})->Eval(), ((0.0 + a) + b) + c);
    EXPECT_SAME_REAL(Node(NoxSumExpr, {z, y, x})->Eval(), ((0.0 + c) + b) + a);
}

TEST_F(AlgebraicOperatorTest, SumEval_OfNegativeZerosIsPositiveZero) {
    Set(-0.0, -0.0, 0.0);
    EXPECT_SAME_REAL(Node(NoxSumExpr, {x, y})->Eval(), 0.0);
}

TEST_F(AlgebraicOperatorTest, ProductEval_StartsAtOneAndMultipliesTheChildrenInOrder) {
    volatile double a = 0.1, b = 3.0, c = 0.7;
    Set(a, b, c);
    EXPECT_SAME_REAL(Node(NoxProductExpr, {x, y, z})->Eval(), ((1.0 * a) * b) * c);
    EXPECT_SAME_REAL(Node(NoxProductExpr, {z, x, y})->Eval(), ((1.0 * c) * a) * b);
}

TEST_F(AlgebraicOperatorTest, ProductEval_KeepsTheSignOfANegativeZeroFactor) {
    Set(-0.0, 2.0, 0.0);
    EXPECT_SAME_REAL(Node(NoxProductExpr, {x, y})->Eval(), -0.0);
}

TEST_F(AlgebraicOperatorTest, ProductEval_OverflowPropagatesWithoutAnErrorBit) {
    Set(1e308, 10.0, 0.0);
    EXPECT_SAME_REAL(Node(NoxProductExpr, {x, y})->Eval(), HUGE_VAL);
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

TEST_F(AlgebraicOperatorTest, MinAndMaxEval_GiveTheSmallestAndLargestChild) {
    Set(5.0, 9.0, 7.0);
    EXPECT_EQ(Node(NoxMinExpr, {x, y, z})->Eval(), 5.0);
    EXPECT_EQ(Node(NoxMaxExpr, {x, y, z})->Eval(), 9.0);
    Set(7.0, 3.0, 1.0);
    NoxExpression *four = f.CreateRealConstant(4.0);
    EXPECT_EQ(Node(NoxMinExpr, {x, y, z, four})->Eval(), 1.0);
    EXPECT_EQ(Node(NoxMaxExpr, {y, z, four, x})->Eval(), 7.0);
}

TEST_F(AlgebraicOperatorTest, MinAndMaxEval_ReplaceOnlyOnAStrictComparison) {
    Set(0.0, -0.0, 0.0);
    EXPECT_SAME_REAL(Node(NoxMinExpr, {x, y})->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxMinExpr, {y, x})->Eval(), -0.0);
    EXPECT_SAME_REAL(Node(NoxMaxExpr, {x, y})->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxMaxExpr, {y, x})->Eval(), -0.0);
}

TEST_F(AlgebraicOperatorTest, MinAndMaxEval_ANaNChild0StaysAndALaterNaNIsPassedOver) {
    Set(kNaN, 1.0, 0.0);
    EXPECT_TRUE(std::isnan(Node(NoxMinExpr, {x, y})->Eval()));
    EXPECT_TRUE(std::isnan(Node(NoxMaxExpr, {x, y})->Eval()));
    EXPECT_EQ(Node(NoxMinExpr, {y, x})->Eval(), 1.0);
    EXPECT_EQ(Node(NoxMaxExpr, {y, x})->Eval(), 1.0);
}

TEST_F(AlgebraicOperatorTest, RealEval_SkipsNullEntries) {
    Set(2.0, 3.0, 0.0);
    EXPECT_EQ(Node(NoxSumExpr, {x, nullptr, y})->Eval(), 5.0);
    EXPECT_EQ(Node(NoxProductExpr, {x, nullptr, y})->Eval(), 6.0);
    EXPECT_EQ(Node(NoxMinExpr, {x, nullptr, y})->Eval(), 2.0);
    EXPECT_EQ(Node(NoxMaxExpr, {x, nullptr, y})->Eval(), 3.0);
}

TEST_F(AlgebraicOperatorTest, RealEval_WithOnlyNullEntriesIsTheStartValue) {
    EXPECT_SAME_REAL(Node(NoxSumExpr, {nullptr, nullptr})->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxProductExpr, {nullptr, nullptr})->Eval(), 1.0);
}

// A node built with no children holds no child array, so every body returns at once:
// the product then evaluates to 0.0 like the sum.
TEST_F(AlgebraicOperatorTest, RealEval_OfANodeWithoutChildrenIsZero) {
    NoxExpression *terms[1] = {x};
    for (NoxExpressionType t : {NoxSumExpr, NoxProductExpr, NoxMinExpr, NoxMaxExpr}) {
        NoxExpression *node = new NoxAlgebraicOperator(&f, 0, terms, t);
        f.AddExpression(node);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetNbOfChildren(), 0);
        EXPECT_SAME_REAL(node->Eval(), 0.0);
        EXPECT_EQ(node->GetValue().GetType(), NoxUndefinedType);
        EXPECT_EQ(node->Differentiate(x), nullptr);
    }
}

// An absent child 0 of the minimum or maximum cannot be skipped; it reads as 0.0.
TEST_F(AlgebraicOperatorTest, MinAndMaxEval_ReadAnAbsentChild0AsZero) {
    Set(3.0, -2.0, 0.0);
    EXPECT_SAME_REAL(Node(NoxMinExpr, {nullptr, x})->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxMinExpr, {nullptr, y})->Eval(), -2.0);
    EXPECT_SAME_REAL(Node(NoxMaxExpr, {nullptr, x})->Eval(), 3.0);
    EXPECT_SAME_REAL(Node(NoxMaxExpr, {nullptr, y})->Eval(), 0.0);
}

TEST_F(AlgebraicOperatorTest, RealEval_ComputesASharedChildOnce) {
    StubNode *s = Stub(1.5);
    EXPECT_EQ(Node(NoxSumExpr, {s, s, s})->Eval(), 4.5);
    EXPECT_EQ(s->realCalls, 1);
}

TEST_F(AlgebraicOperatorTest, InertNode_WithAnotherTypeHasNoChildrenAndDoesNothing) {
    for (NoxExpressionType t : {NoxModExpr, NoxBlackBoxExpr, NoxExpressionType(0)}) {
        NoxExpression *node = Node(t, {x, y});
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), t);
        EXPECT_EQ(node->GetNbOfChildren(), 0);
        EXPECT_EQ(node->Eval(), 0.0);
        EXPECT_EQ(node->GetValue().GetType(), NoxUndefinedType);
        const int before = f.ExpressionCount();
        EXPECT_EQ(node->Differentiate(x), nullptr);
        EXPECT_EQ(node->Differentiate(nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
        for (double g : GradientOverSentinel(node))
            EXPECT_EQ(g, kSentinel);
        for (const std::vector<double> &row : HessianOverSentinel(node))
            for (double h : row)
                EXPECT_EQ(h, kSentinel);
    }
}

// ---- Value evaluation ----

TEST_F(AlgebraicOperatorTest, ValueEval_FoldsTheValueFunctionFromTheLeft) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    const NoxValue b(NoxRealInterval{-3.0, 0.5});
    const NoxValue c(NoxRealInterval{0.25, 4.0});
    x->SetValue(a, nullptr);
    y->SetValue(b, nullptr);
    z->SetValue(c, nullptr);
    const struct {
        NoxExpressionType type;
        ValueFunction function;
    } rows[] = {{NoxSumExpr, NoxSum}, {NoxProductExpr, NoxMul}, {NoxMinExpr, NoxMin},
                {NoxMaxExpr, NoxMax}};
    for (const auto &row : rows) {
        NoxEnvironment env;
        const NoxValue expected = row.function(env, row.function(env, a, b), c);
        EXPECT_EQ(expected.GetType(), NoxRealIntervalType);
        ExpectSameValue(Node(row.type, {x, y, z})->GetValue(), expected);
        const NoxValue reversed = row.function(env, row.function(env, c, b), a);
        ExpectSameValue(Node(row.type, {z, y, x})->GetValue(), reversed);
    }
}

TEST_F(AlgebraicOperatorTest, ValueEval_CombinesKindsAsTheValueFunctionsDo) {
    const NoxValue a(3);
    const NoxValue b(0.5);
    const NoxValue c(NoxIntegerInterval{1, 4});
    x->SetValue(a, nullptr);
    y->SetValue(b, nullptr);
    z->SetValue(c, nullptr);
    NoxEnvironment env;
    ExpectSameValue(Node(NoxSumExpr, {x, y, z})->GetValue(), NoxSum(env, NoxSum(env, a, b), c));
    ExpectSameValue(Node(NoxProductExpr, {x, z})->GetValue(), NoxMul(env, a, c));
    ExpectSameValue(Node(NoxMinExpr, {z, x})->GetValue(), NoxMin(env, c, a));
    ExpectSameValue(Node(NoxMaxExpr, {y, x})->GetValue(), NoxMax(env, b, a));
}

TEST_F(AlgebraicOperatorTest, ValueEval_SkipsNullEntriesAfterChild0) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    const NoxValue b(NoxRealInterval{-3.0, 0.5});
    x->SetValue(a, nullptr);
    y->SetValue(b, nullptr);
    NoxEnvironment env;
    ExpectSameValue(Node(NoxSumExpr, {x, nullptr, y})->GetValue(), NoxSum(env, a, b));
    ExpectSameValue(Node(NoxMaxExpr, {x, nullptr})->GetValue(), a);
}

// An absent child 0 reads as an undefined value, which the value function then meets.
TEST_F(AlgebraicOperatorTest, ValueEval_ReadsAnAbsentChild0AsAnUndefinedValue) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    x->SetValue(a, nullptr);
    NoxEnvironment env;
    const NoxValue expected = NoxMin(env, NoxValue(), a);
    ExpectSameValue(Node(NoxMinExpr, {nullptr, x})->GetValue(), expected);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
}

TEST_F(AlgebraicOperatorTest, ValueEval_ReportsThroughTheNodesEnvironment) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    const NoxValue b(NoxTrue);
    x->SetValue(a, nullptr);
    y->SetValue(b, nullptr);
    NoxEnvironment env;
    const NoxValue expected = NoxSum(env, a, b);
    ASSERT_NE(env.GetError(), 0);
    f.GetEnvironment().ClearError();
    ExpectSameValue(Node(NoxSumExpr, {x, y})->GetValue(), expected);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
}

TEST_F(AlgebraicOperatorTest, ValueEval_ComputesEachChildOnceAndNoRealValue) {
    StubNode *s = Stub(1.0, {}, {}, NoxValue(2.0));
    NoxExpression *node = Node(NoxProductExpr, {s, s, s});
    EXPECT_EQ(node->GetValue().GetAsReal(), 8.0);
    EXPECT_EQ(s->valueCalls, 1);
    EXPECT_EQ(s->realCalls, 0);
}

// ---- Gradient ----

TEST_F(AlgebraicOperatorTest, SumGradient_AddsTheChildGradientsToZeros) {
    volatile double a0 = 0.1, a1 = -0.0, a2 = 3.5, b0 = 0.2, b1 = -0.0, b2 = 1e-17, c0 = 0.7,
                    c1 = -0.0, c2 = -3.5;
    StubNode *a = Stub(0.0, {a0, a1, a2});
    StubNode *b = Stub(0.0, {b0, b1, b2});
    StubNode *c = Stub(0.0, {c0, c1, c2});
    ExpectSameGradient(GradientOverSentinel(Node(NoxSumExpr, {a, b, c})),
                       {((0.0 + a0) + b0) + c0, ((0.0 + a1) + b1) + c1, ((0.0 + a2) + b2) + c2});
}

TEST_F(AlgebraicOperatorTest, SumGradient_CountsAVariableOncePerOccurrence) {
    Set(1.0, 2.0, 3.0);
    ExpectSameGradient(Gradient(Node(NoxSumExpr, {x, x, y})), {2.0, 1.0, 0.0});
}

TEST_F(AlgebraicOperatorTest, SumGradient_AnAbsentChildAddsNothing) {
    ExpectSameGradient(GradientOverSentinel(Node(NoxSumExpr, {x, nullptr, z})), {1.0, 0.0, 1.0});
}

TEST_F(AlgebraicOperatorTest, ProductGradient_IsTheProductRuleInChildOrder) {
    volatile double ra = 0.3, rb = -1.7, rc = 2.9;
    volatile double ga0 = 0.1, ga1 = 1.0, ga2 = -0.5, gb0 = 2.0, gb1 = 0.25, gb2 = 0.0,
                    gc0 = -1.0, gc1 = 0.7, gc2 = 3.0;
    StubNode *a = Stub(ra, {ga0, ga1, ga2});
    StubNode *b = Stub(rb, {gb0, gb1, gb2});
    StubNode *c = Stub(rc, {gc0, gc1, gc2});
    const double fa = (1.0 * rb) * rc, fb = (1.0 * ra) * rc, fc = (1.0 * ra) * rb;
    ExpectSameGradient(GradientOverSentinel(Node(NoxProductExpr, {a, b, c})),
                       {((0.0 + fa * ga0) + fb * gb0) + fc * gc0,
                        ((0.0 + fa * ga1) + fb * gb1) + fc * gc1,
                        ((0.0 + fa * ga2) + fb * gb2) + fc * gc2});
}

TEST_F(AlgebraicOperatorTest, ProductGradient_AZeroFactorIsHarmless) {
    Set(0.0, 3.0, 5.0);
    ExpectSameGradient(Gradient(Node(NoxProductExpr, {x, y, z})), {15.0, 0.0, 0.0});
}

TEST_F(AlgebraicOperatorTest, ProductGradient_AVariableInSeveralFactorsAccumulates) {
    volatile double a = 3.1, b = 0.7;
    Set(a, b, 0.0);
    ExpectSameGradient(Gradient(Node(NoxProductExpr, {x, x, y})),
                       {(0.0 + (1.0 * a) * b) + (1.0 * a) * b, (1.0 * a) * a, 0.0});
}

TEST_F(AlgebraicOperatorTest, ProductGradient_EvaluatesEachChildOnce) {
    StubNode *a = Stub(2.0, {1.0, 0.0, 0.0});
    StubNode *b = Stub(3.0, {0.0, 1.0, 0.0});
    NoxExpression *node = Node(NoxProductExpr, {a, b, a});
    ExpectSameGradient(Gradient(node), {12.0, 4.0, 0.0});
    EXPECT_EQ(a->realCalls, 1);
    EXPECT_EQ(b->realCalls, 1);
    EXPECT_EQ(a->gradientCalls, 1);
    EXPECT_EQ(node->Eval(), 12.0);
    EXPECT_EQ(a->realCalls, 1);
}

// An absent factor is skipped as in the real value: it counts as 1.0 and adds no term.
TEST_F(AlgebraicOperatorTest, ProductGradient_SkipsAnAbsentFactor) {
    Set(2.0, 3.0, 0.0);
    ExpectSameGradient(GradientOverSentinel(Node(NoxProductExpr, {x, nullptr, y})),
                       {3.0, 2.0, 0.0});
}

// Up to 8 factors the scratch values stay off the heap; beyond, the same rule runs on a
// heap array. Both give the rule's result.
TEST_F(AlgebraicOperatorTest, ProductGradient_HoldsForSmallAndLargeChildCounts) {
    for (int n : {2, 7, 8, 9, 12}) {
        std::vector<NoxExpression *> children;
        std::vector<double> values;
        std::vector<std::vector<double>> gradients;
        for (int i = 0; i < n; ++i) {
            const double r = 0.5 + 0.125 * i;
            std::vector<double> g = {1.0 / (i + 1), (i % 3) - 1.0, 0.1 * i};
            values.push_back(r);
            gradients.push_back(g);
            children.push_back(Stub(r, g));
        }
        std::vector<double> expected(3, 0.0);
        for (int i = 0; i < n; ++i) {
            double fi = 1.0;
            for (int j = 0; j < n; ++j)
                if (j != i)
                    fi *= values[j];
            for (int k = 0; k < 3; ++k)
                expected[k] += fi * gradients[i][k];
        }
        ExpectSameGradient(Gradient(Node(NoxProductExpr, children)), expected);
    }
}

TEST_F(AlgebraicOperatorTest, ProductGradient_AllocatesOnlyBeyondEightChildren) {
    Set(1.5, 2.5, 0.5);
    NoxExpression *small = Node(NoxProductExpr, {x, y, z, x, y, z, x, y});
    NoxExpression *large = Node(NoxProductExpr, {x, y, z, x, y, z, x, y, z});
    small->GetGradient();
    large->GetGradient();
    small->ResetBuffer(0);
    large->ResetBuffer(0);
    long before = nox_test::AllocationCount();
    small->GetGradient();
    EXPECT_EQ(nox_test::AllocationCount() - before, 0);
    before = nox_test::AllocationCount();
    large->GetGradient();
    EXPECT_EQ(nox_test::AllocationCount() - before, 1);
}

// Without memory for the scratch values the gradient stays at the zeros written first.
TEST_F(AlgebraicOperatorTest, ProductGradient_WithoutScratchMemoryIsZero) {
    Set(1.5, 2.5, 0.5);
    NoxExpression *node = Node(NoxProductExpr, {x, y, z, x, y, z, x, y, z});
    double *g = const_cast<double *>(node->GetGradient());
    std::fill(g, g + 3, kSentinel);
    node->ResetBuffer(0);
    {
        nox_test::AllocationFailure failure(nox_test::AllocationForms::Nothrow);
        node->GetGradient();
    }
    ExpectSameGradient(Gradient(node), {0.0, 0.0, 0.0});
}

TEST_F(AlgebraicOperatorTest, MaxGradient_IsTheLastChildThatBeatsChild0) {
    Set(5.0, 9.0, 7.0);
    NoxExpression *node = Node(NoxMaxExpr, {x, y, z});
    EXPECT_EQ(node->Eval(), 9.0);
    ExpectSameGradient(GradientOverSentinel(node), {0.0, 0.0, 1.0});
}

TEST_F(AlgebraicOperatorTest, MinGradient_IsTheLastChildThatBeatsChild0) {
    StubNode *a = Stub(5.0, {1.0, -0.0, 0.5});
    StubNode *b = Stub(3.0, {2.0, 0.0, 0.0});
    StubNode *c = Stub(1.0, {3.0, 0.0, 0.0});
    StubNode *d = Stub(4.0, {4.0, -0.0, 0.25});
    NoxExpression *node = Node(NoxMinExpr, {a, b, c, d});
    EXPECT_EQ(node->Eval(), 1.0);
    ExpectSameGradient(GradientOverSentinel(node), {4.0, -0.0, 0.25});
    EXPECT_EQ(b->gradientCalls, 0);
    EXPECT_EQ(c->gradientCalls, 0);
}

TEST_F(AlgebraicOperatorTest, MinAndMaxGradient_KeepChild0OnTies) {
    Set(2.0, 2.0, 2.0);
    ExpectSameGradient(GradientOverSentinel(Node(NoxMinExpr, {x, y, z})), {1.0, 0.0, 0.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMaxExpr, {y, x, z})), {0.0, 1.0, 0.0});
    Set(0.0, -0.0, 2.0);
    ExpectSameGradient(Gradient(Node(NoxMinExpr, {x, y})), {1.0, 0.0, 0.0});
}

TEST_F(AlgebraicOperatorTest, MinAndMaxGradient_CopyTheSelectedChildWhole) {
    StubNode *a = Stub(1.0, {-0.0, kNaN, 2.0});
    StubNode *b = Stub(2.0, {7.0, 7.0, 7.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMinExpr, {a, b})), {-0.0, kNaN, 2.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMaxExpr, {b, a})), {7.0, 7.0, 7.0});
}

TEST_F(AlgebraicOperatorTest, MinAndMaxGradient_SkipAbsentChildrenInTheWalk) {
    Set(1.0, 0.5, 0.0);
    ExpectSameGradient(GradientOverSentinel(Node(NoxMinExpr, {x, nullptr, y})), {0.0, 1.0, 0.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMaxExpr, {y, x, nullptr})), {1.0, 0.0, 0.0});
}

// An absent child 0 reads as 0.0; when it stays selected the gradient is all zeros.
TEST_F(AlgebraicOperatorTest, MinAndMaxGradient_WithAnAbsentChild0) {
    Set(-1.0, 1.0, 0.0);
    ExpectSameGradient(GradientOverSentinel(Node(NoxMinExpr, {nullptr, x})), {1.0, 0.0, 0.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMinExpr, {nullptr, y})), {0.0, 0.0, 0.0});
    ExpectSameGradient(GradientOverSentinel(Node(NoxMaxExpr, {nullptr, y})), {0.0, 1.0, 0.0});
}

TEST_F(AlgebraicOperatorTest, Bodies_WithANullBufferWriteNothingAndEvaluateNothing) {
    StubNode *s = Stub(1.0, {1.0, 2.0, 3.0});
    NoxExpression *terms[2] = {s, s};
    for (NoxExpressionType t : {NoxSumExpr, NoxProductExpr, NoxMinExpr, NoxMaxExpr}) {
        ExposedAlgebraic node(&f, 2, terms, t);
        node.DoEvalGradient(nullptr);
        node.DoEvalHessian(nullptr);
    }
    EXPECT_EQ(s->realCalls, 0);
    EXPECT_EQ(s->gradientCalls, 0);
    EXPECT_EQ(s->hessianCalls, 0);
}

// ---- Hessian ----

TEST_F(AlgebraicOperatorTest, SumHessian_AddsTheChildHessiansToZeros) {
    volatile double p = 0.1, q = 0.2, r = 0.7;
    const Matrix ha = {{p, -0.0, 1.0}, {2.0, q, -0.0}, {0.0, 0.0, r}};
    const Matrix hb = {{q, -0.0, 3.0}, {r, p, -0.0}, {1e-17, 0.0, q}};
    const Matrix hc = {{r, -0.0, -4.0}, {p, r, -0.0}, {1.0, 0.0, p}};
    NoxExpression *node =
        Node(NoxSumExpr, {Stub(0.0, {}, ha), Stub(0.0, {}, hb), Stub(0.0, {}, hc)});
    Matrix expected(3, std::vector<double>(3));
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            expected[i][j] = ((0.0 + ha[i][j]) + hb[i][j]) + hc[i][j];
    ExpectSameMatrix(HessianOverSentinel(node), expected);
}

TEST_F(AlgebraicOperatorTest, SumHessian_AnAbsentChildAddsNothing) {
    const Matrix h = {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, -0.0}};
    const Matrix expected = {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 0.0}};
    ExpectSameMatrix(HessianOverSentinel(Node(NoxSumExpr, {nullptr, Stub(0.0, {}, h)})),
                     expected);
}

TEST_F(AlgebraicOperatorTest, ProductHessianOfXY_IsChild0sZeroHessian) {
    Set(2.0, 3.0, 0.0);
    ExpectSameMatrix(HessianOverSentinel(Node(NoxProductExpr, {x, y})),
                     Matrix(3, std::vector<double>(3, 0.0)));
}

TEST_F(AlgebraicOperatorTest, ProductMinMaxHessian_IsChild0sWhateverTheSelection) {
    const Matrix ha = {{1.0, 2.0, -0.0}, {2.0, 5.0, 6.0}, {-0.0, 6.0, kNaN}};
    const Matrix hb = {{9.0, 9.0, 9.0}, {9.0, 9.0, 9.0}, {9.0, 9.0, 9.0}};
    for (NoxExpressionType t : {NoxProductExpr, NoxMinExpr, NoxMaxExpr}) {
        StubNode *a = Stub(5.0, {}, ha);
        StubNode *b = Stub(t == NoxMinExpr ? 1.0 : 9.0, {}, hb);
        NoxExpression *node = Node(t, {a, b});
        ExpectSameMatrix(HessianOverSentinel(node), ha);
        EXPECT_EQ(b->hessianCalls, 1);
    }
}

// ---- Symbolic derivative ----

TEST_F(AlgebraicOperatorTest, SumDerivative_IsTheSumOfTheChildDerivatives) {
    NoxExpression *c = f.CreateRealConstant(2.5);
    NoxExpression *node = Node(NoxSumExpr, {x, y, c});
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 4);
    EXPECT_EQ(ConstantValue(f.Expression(before)), 1.0);
    EXPECT_EQ(ConstantValue(f.Expression(before + 1)), 0.0);
    EXPECT_EQ(ConstantValue(f.Expression(before + 2)), 0.0);
    ASSERT_EQ(d, f.Expression(before + 3));
    EXPECT_EQ(d->GetType(), NoxSumExpr);
    ASSERT_EQ(d->GetNbOfChildren(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(d->GetChild(i), f.Expression(before + i));
}

TEST_F(AlgebraicOperatorTest, SumDerivative_KeepsAChildWithoutDerivativeAsANullEntry) {
    NoxExpression *m = f.CreateMin(x, y);
    NoxExpression *node = Node(NoxSumExpr, {m, x});
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 2);
    EXPECT_EQ(ConstantValue(f.Expression(before)), 1.0);
    ASSERT_EQ(d, f.Expression(before + 1));
    ASSERT_EQ(d->GetNbOfChildren(), 2);
    EXPECT_EQ(d->GetChild(0), nullptr);
    EXPECT_EQ(d->GetChild(1), f.Expression(before));
    EXPECT_EQ(d->Eval(), 1.0);
}

TEST_F(AlgebraicOperatorTest, ProductDerivative_SumsTheProductsWithOneFactorDifferentiated) {
    NoxExpression *node = Node(NoxProductExpr, {x, y, z});
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(y);
    ASSERT_EQ(f.ExpressionCount(), before + 7);
    // D(x), x'y z; D(y), x y' z; D(z), x y z'; then the sum of the three terms.
    const double derivatives[3] = {0.0, 1.0, 0.0};
    NoxExpression *factors[3] = {x, y, z};
    for (int i = 0; i < 3; ++i) {
        NoxExpression *di = f.Expression(before + 2 * i);
        NoxExpression *term = f.Expression(before + 2 * i + 1);
        EXPECT_EQ(ConstantValue(di), derivatives[i]);
        EXPECT_EQ(term->GetType(), NoxProductExpr);
        ASSERT_EQ(term->GetNbOfChildren(), 3);
        for (int j = 0; j < 3; ++j)
            EXPECT_EQ(term->GetChild(j), j == i ? di : factors[j]);
    }
    ASSERT_EQ(d, f.Expression(before + 6));
    EXPECT_EQ(d->GetType(), NoxSumExpr);
    ASSERT_EQ(d->GetNbOfChildren(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(d->GetChild(i), f.Expression(before + 2 * i + 1));
}

TEST_F(AlgebraicOperatorTest, ProductDerivative_EvaluatesToTheGradientEntry) {
    Set(1.25, -0.75, 3.5);
    NoxExpression *node = Node(NoxProductExpr, {x, y, z, x});
    NoxVariable *vars[3] = {x, y, z};
    for (int k = 0; k < 3; ++k)
        EXPECT_DOUBLE_EQ(node->Differentiate(vars[k])->Eval(), node->GetGradient()[k]);
    NoxExpression *sum = Node(NoxSumExpr, {x, node, z});
    for (int k = 0; k < 3; ++k)
        EXPECT_DOUBLE_EQ(sum->Differentiate(vars[k])->Eval(), sum->GetGradient()[k]);
}

TEST_F(AlgebraicOperatorTest, MinAndMaxDerivative_IsNullAndBuildsNothing) {
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateMin(x, y)->Differentiate(x), nullptr);
    EXPECT_EQ(f.CreateMax(x, y)->Differentiate(y), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before + 2);
}

TEST_F(AlgebraicOperatorTest, DerivativeForANullVariable_IsTheNodeItself) {
    for (NoxExpressionType t : {NoxSumExpr, NoxProductExpr, NoxMinExpr, NoxMaxExpr}) {
        NoxExpression *node = Node(t, {x, y});
        const int before = f.ExpressionCount();
        EXPECT_EQ(node->Differentiate(nullptr), node);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
}

// Beyond eight children the derivative needs heap scratch arrays; without them it is
// null and nothing is built.
TEST_F(AlgebraicOperatorTest, Derivative_WithoutScratchMemoryIsNull) {
    for (NoxExpressionType t : {NoxSumExpr, NoxProductExpr}) {
        NoxExpression *node = Node(t, {x, y, z, x, y, z, x, y, z});
        const int before = f.ExpressionCount();
        nox_test::AllocationFailure failure(nox_test::AllocationForms::Nothrow);
        EXPECT_EQ(node->Differentiate(x), nullptr);
        failure.End();
        EXPECT_EQ(f.ExpressionCount(), before);
    }
}

TEST_F(AlgebraicOperatorTest, Derivative_OfManyChildrenBuildsEveryTerm) {
    NoxExpression *node = Node(NoxProductExpr, {x, y, z, x, y, z, x, y, z});
    const int before = f.ExpressionCount();
    ASSERT_NE(node->Differentiate(x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before + 9 * 2 + 1);
}

// ---- Allocation ----

TEST_F(AlgebraicOperatorTest, Evaluation_OfSmallNodesAllocatesNothing) {
    Set(1.5, -2.5, 0.5);
    std::vector<NoxExpression *> nodes;
    for (NoxExpressionType t : {NoxSumExpr, NoxProductExpr, NoxMinExpr, NoxMaxExpr})
        nodes.push_back(Node(t, {x, y, z, x, y, z, x, y}));
    for (NoxExpression *node : nodes) {
        node->Eval();
        node->GetValue();
        node->GetGradient();
        node->ResetBuffer(0);
    }
    const long before = nox_test::AllocationCount();
    for (NoxExpression *node : nodes) {
        node->Eval();
        node->GetValue();
        node->GetGradient();
    }
    EXPECT_EQ(nox_test::AllocationCount() - before, 0);
}
