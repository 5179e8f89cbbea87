// The operator class frame: constructors, children, and the results every body gives for
// a type that its class does not serve.
#include <NoxFactory.h>
#include <NoxOperators.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

constexpr double kSentinel = -123.25;

class OperatorFrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        SetReal(x, 0.5);
        SetReal(y, 1.5);
        // A child whose Hessian is not zero: x * x * y, differenced by the black box.
        child = f.Box(childBox, {x, y});
    }

    // Fills the node's gradient buffer with a sentinel, clears the node's own cache and
    // asks for the gradient again: the sentinel stays where nothing is written.
    bool GradientIsNotWritten(NoxExpression *node) {
        double *g = const_cast<double *>(node->GetGradient());
        for (int i = 0; i < f.GetNbOfVariables(); ++i)
            g[i] = kSentinel;
        node->ResetBuffer(0);
        g = const_cast<double *>(node->GetGradient());
        for (int i = 0; i < f.GetNbOfVariables(); ++i)
            if (g[i] != kSentinel)
                return false;
        return true;
    }

    // The same for the Hessian buffer.
    bool HessianIsNotWritten(NoxExpression *node) {
        const int n = f.GetNbOfVariables();
        double **h = node->GetHessian();
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                h[i][j] = kSentinel;
        node->ResetBuffer(0);
        h = node->GetHessian();
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if (h[i][j] != kSentinel)
                    return false;
        return true;
    }

    // The node's Hessian, computed after a sentinel fill, equals the child's entry by
    // entry.
    bool HessianIsTheChilds(NoxExpression *node, NoxExpression *first) {
        const int n = f.GetNbOfVariables();
        double **h = node->GetHessian();
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                h[i][j] = kSentinel;
        node->ResetBuffer(0);
        h = node->GetHessian();
        double **c = first->GetHessian();
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if (h[i][j] != c[i][j])
                    return false;
        return true;
    }

    // Real evaluation 0.0, value untouched (the cache stays undefined), no gradient
    // written, no derivative.
    void ExpectUnservedResults(NoxExpression *node) {
        EXPECT_EQ(node->Eval(), 0.0);
        EXPECT_EQ(node->GetValue().GetType(), NoxUndefinedType);
        EXPECT_TRUE(GradientIsNotWritten(node));
        EXPECT_EQ(node->Differentiate(x), nullptr);
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    CountingBox childBox{[](const std::vector<double> &a) { return a[0] * a[0] * a[1]; }};
    NoxExpression *child = nullptr;
};

} // namespace

TEST_F(OperatorFrameTest, ChildWithNonZeroHessian_IsAUsefulReference) {
    double **h = child->GetHessian();
    EXPECT_NE(h[0][0], 0.0);
    EXPECT_NE(h[0][1], 0.0);
}

// ---- Algebraic class ----

TEST_F(OperatorFrameTest, AlgebraicServedTypes_KeepTheirChildren) {
    const NoxExpressionType types[] = {NoxSumExpr, NoxProductExpr, NoxMinExpr, NoxMaxExpr};
    NoxExpression *terms[3] = {x, y, child};
    for (NoxExpressionType t : types) {
        NoxExpression *node = f.CreateAlgebraicOperator(t, 3, terms);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), t);
        ASSERT_EQ(node->GetNbOfChildren(), 3);
        EXPECT_EQ(node->GetChild(0), x);
        EXPECT_EQ(node->GetChild(1), y);
        EXPECT_EQ(node->GetChild(2), child);
    }
}

TEST_F(OperatorFrameTest, AlgebraicWithAnotherType_IsInertWithoutChildren) {
    NoxExpression *terms[2] = {x, child};
    NoxExpression *node = f.CreateAlgebraicOperator(NoxQuotientExpr, 2, terms);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxQuotientExpr);
    EXPECT_EQ(node->GetNbOfChildren(), 0);
    EXPECT_EQ(node->GetChild(0), nullptr);
    ExpectUnservedResults(node);
    EXPECT_EQ(node->Differentiate(nullptr), nullptr);
    EXPECT_TRUE(HessianIsNotWritten(node));
    EXPECT_EQ(node->ContainsExprOfKind(NoxVariableExpr), 0);
    EXPECT_EQ(node->ContainsExprOfKind(NoxQuotientExpr), 1);
    unsigned char mask[2] = {0, 0};
    node->FillPresentVariables(mask);
    EXPECT_EQ(mask[0], 0);
    EXPECT_EQ(childBox.realCalls, 0);
}

// ---- Binary class ----

TEST_F(OperatorFrameTest, BinaryWithAnUnservedType_GivesTheUnservedResults) {
    NoxExpression *node = f.CreateBinaryOperator(NoxSumExpr, child, x);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxSumExpr);
    ASSERT_EQ(node->GetNbOfChildren(), 2);
    EXPECT_EQ(node->GetChild(0), child);
    EXPECT_EQ(node->GetChild(1), x);
    ExpectUnservedResults(node);
    EXPECT_EQ(node->Differentiate(nullptr), node);
}

TEST_F(OperatorFrameTest, BinaryHessianWithAnUnservedType_ComputesTheChildHessiansButWritesNothing) {
    NoxExpression *node = f.CreateBinaryOperator(NoxSinExpr, child, x);
    EXPECT_EQ(childBox.realCalls, 0);
    node->GetHessian();
    EXPECT_GT(childBox.realCalls, 0);
    EXPECT_TRUE(HessianIsNotWritten(node));
}

// ---- Unary class ----

TEST_F(OperatorFrameTest, UnaryWithATrigonometricType_GivesTheUnservedResults) {
    NoxExpression *node = f.CreateUnaryOperator(NoxSinExpr, child);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxSinExpr);
    ASSERT_EQ(node->GetNbOfChildren(), 1);
    EXPECT_EQ(node->GetChild(0), child);
    ExpectUnservedResults(node);
    EXPECT_EQ(node->Differentiate(nullptr), node);
}

TEST_F(OperatorFrameTest, UnaryHessian_IsTheChildsForUnservedAndServedTypes) {
    EXPECT_TRUE(HessianIsTheChilds(f.CreateUnaryOperator(NoxSinExpr, child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateUnaryOperator(NoxOrExpr, child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateExp(child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateRound(child), child));
}

// ---- Trigonometric class ----

TEST_F(OperatorFrameTest, TrigonometricWithAUnaryType_GivesTheUnservedResults) {
    NoxExpression *node = f.CreateTrigonometricOperator(NoxSqrtExpr, child);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxSqrtExpr);
    ASSERT_EQ(node->GetNbOfChildren(), 1);
    EXPECT_EQ(node->GetChild(0), child);
    ExpectUnservedResults(node);
    EXPECT_EQ(node->Differentiate(nullptr), node);
}

TEST_F(OperatorFrameTest, TrigonometricHessian_IsTheChildsForUnservedAndServedTypes) {
    EXPECT_TRUE(HessianIsTheChilds(f.CreateTrigonometricOperator(NoxAbsExpr, child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateSin(child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateATanh(child), child));
}

// ---- Boolean class ----

TEST_F(OperatorFrameTest, BooleanNegation_HasOneChild) {
    NoxExpression *node = f.CreateNot(child);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxNotExpr);
    ASSERT_EQ(node->GetNbOfChildren(), 1);
    EXPECT_EQ(node->GetChild(0), child);
}

TEST_F(OperatorFrameTest, BooleanNodes_EvaluateToZeroWithoutEvaluatingTheirChildren) {
    NoxExpression *nodes[] = {f.CreateNot(child),          f.CreateOr(child, x),
                              f.CreateAnd(child, x),       f.CreateEqual(child, x),
                              f.CreateNotEqual(child, x), f.CreateImplication(child, x)};
    for (NoxExpression *node : nodes)
        EXPECT_EQ(node->Eval(), 0.0);
    EXPECT_EQ(childBox.realCalls, 0);
}

TEST_F(OperatorFrameTest, BooleanNodes_HaveNoDerivativeEvenForANullVariable) {
    NoxExpression *node = f.CreateAnd(child, x);
    EXPECT_EQ(node->Differentiate(x), nullptr);
    EXPECT_EQ(node->Differentiate(nullptr), nullptr);
    EXPECT_EQ(f.CreateNot(x)->Differentiate(nullptr), nullptr);
}

TEST_F(OperatorFrameTest, BooleanGradient_IsNeverWritten) {
    EXPECT_TRUE(GradientIsNotWritten(f.CreateNot(child)));
    EXPECT_TRUE(GradientIsNotWritten(f.CreateEqual(child, x)));
}

TEST_F(OperatorFrameTest, BooleanHessian_IsTheFirstChildsForEveryType) {
    EXPECT_TRUE(HessianIsTheChilds(f.CreateNot(child), child));
    EXPECT_TRUE(HessianIsTheChilds(f.CreateImplication(child, x), child));
    NoxExpression *pair[2] = {child, x};
    NoxExpression *unserved = new NoxBooleanOperator(&f, pair, NoxSumExpr);
    f.AddExpression(unserved);
    EXPECT_TRUE(HessianIsTheChilds(unserved, child));
    EXPECT_EQ(unserved->Eval(), 0.0);
    EXPECT_EQ(unserved->GetValue().GetType(), NoxUndefinedType);
}
