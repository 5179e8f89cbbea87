// Square root, logarithm, exponential, absolute value, ceiling, floor and rounding nodes:
// real and value evaluation, gradients with their zero guards, the Hessian copied from
// the child, and the nodes their symbolic derivatives create.
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

using RealFunction = double (*)(double);
using ValueFunction = NoxValue (*)(const NoxEnvironment &, const NoxValue &);

using nox_test::SameDouble;

// The C library functions, applied to a volatile copy so that the compiler cannot fold
// them: the expected values are what the library computes at run time.
double Sqrt(double u) {
    volatile double v = u;
    return std::sqrt(v);
}
double Log10(double u) {
    volatile double v = u;
    return std::log10(v);
}
double Ln(double u) {
    volatile double v = u;
    return std::log(v);
}
double Exp(double u) {
    volatile double v = u;
    return std::exp(v);
}
double Ceil(double u) {
    volatile double v = u;
    return std::ceil(v);
}
double Floor(double u) {
    volatile double v = u;
    return std::floor(v);
}
double LnTen() {
    volatile double ten = 10.0;
    return std::log(ten);
}

struct UnaryRow {
    NoxExpressionType type;
    const char *name;
    ValueFunction value;
};

const UnaryRow kRows[] = {
    {NoxSqrtExpr, "sqrt", NoxSqrt},   {NoxLogExpr, "log", NoxLog},
    {NoxLnExpr, "ln", NoxLn},         {NoxExpExpr, "exp", NoxExp},
    {NoxAbsExpr, "abs", NoxAbs},      {NoxCeilExpr, "ceil", NoxCeil},
    {NoxFloorExpr, "floor", NoxFloor}, {NoxRoundExpr, "round", NoxRound},
};

class UnaryOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        SetReal(x, 1.25);
        SetReal(y, 0.75);
        // A child with a gradient other than a unit vector: x * x * y, differenced by the
        // black box, with a non-zero Hessian as well.
        box = f.Box(boxFunction, {x, y});
    }

    // The node of type t over `child`, evaluated afresh.
    NoxExpression *Node(NoxExpressionType t, NoxExpression *child) {
        return f.CreateUnaryOperator(t, child);
    }

    // Real value of type t at the variable x set to u.
    double RealAt(NoxExpressionType t, double u) {
        SetReal(x, u);
        return Node(t, x)->Eval();
    }

    // Gradient of type t over the variable x set to u, copied out.
    std::vector<double> GradientAt(NoxExpressionType t, double u) {
        SetReal(x, u);
        const double *g = Node(t, x)->GetGradient();
        return {g[0], g[1]};
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    CountingBox boxFunction{[](const std::vector<double> &a) { return a[0] * a[0] * a[1]; }};
    NoxExpression *box = nullptr;
};

} // namespace

// ---- Real evaluation ----

TEST_F(UnaryOperatorTest, RealEvaluation_AppliesTheCLibraryFunction) {
    const double points[] = {0.3, 2.0, 17.5, 1e-300, 700.0};
    for (double u : points) {
        EXPECT_TRUE(SameDouble(RealAt(NoxSqrtExpr, u), Sqrt(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxLogExpr, u), Log10(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxLnExpr, u), Ln(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxExpExpr, u), Exp(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxCeilExpr, u), Ceil(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxFloorExpr, u), Floor(u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxCeilExpr, -u), Ceil(-u))) << u;
        EXPECT_TRUE(SameDouble(RealAt(NoxFloorExpr, -u), Floor(-u))) << u;
    }
}

TEST_F(UnaryOperatorTest, RealEvaluation_ReadsTheChildsRealValue) {
    SetReal(x, 1.5);
    SetReal(y, 2.0);
    EXPECT_TRUE(SameDouble(Node(NoxExpExpr, box)->Eval(), Exp(box->Eval())));
}

TEST_F(UnaryOperatorTest, SqrtOfZero_IsZero) {
    EXPECT_TRUE(SameDouble(RealAt(NoxSqrtExpr, 0.0), 0.0));
}

TEST_F(UnaryOperatorTest, DomainFaults_GiveNaNOrMinusInfinityWithoutAnErrorBit) {
    f.GetEnvironment().ClearError();
    EXPECT_TRUE(std::isnan(RealAt(NoxSqrtExpr, -1.0)));
    EXPECT_TRUE(std::isnan(RealAt(NoxLogExpr, -1.0)));
    EXPECT_TRUE(std::isnan(RealAt(NoxLnExpr, -2.0)));
    EXPECT_EQ(RealAt(NoxLogExpr, 0.0), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(RealAt(NoxLnExpr, 0.0), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

TEST_F(UnaryOperatorTest, Abs_NegatesBelowZeroAsMinusZeroMinusU) {
    EXPECT_TRUE(SameDouble(RealAt(NoxAbsExpr, -2.5), 2.5));
    EXPECT_TRUE(SameDouble(RealAt(NoxAbsExpr, 3.0), 3.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxAbsExpr, 0.0), 0.0));
    // -0.0 is not below 0.0, so it is returned as it is.
    EXPECT_TRUE(SameDouble(RealAt(NoxAbsExpr, -0.0), -0.0));
    EXPECT_TRUE(std::isnan(RealAt(NoxAbsExpr, std::nan(""))));
}

TEST_F(UnaryOperatorTest, Round_RoundsHalvesUpward) {
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, -2.5), -2.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, 2.5), 3.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, -0.5), 0.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, 1.4), 1.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, -1.6), -2.0));
}

TEST_F(UnaryOperatorTest, Round_IsFloorOfUPlusHalfInDoubles) {
    // The largest double below 0.5 plus 0.5 rounds to 1.0 in doubles, so its floor is 1.
    EXPECT_TRUE(SameDouble(RealAt(NoxRoundExpr, 0.49999999999999994), 1.0));
}

// ---- Value evaluation ----

TEST_F(UnaryOperatorTest, ValueEvaluation_IsTheValueFunctionOfTheChildsValue) {
    const NoxValue operands[] = {NoxValue(NoxRealInterval{0.25, 4.5}),
                                 NoxValue(NoxRealInterval{-2.5, 3.5}), NoxValue(2.0),
                                 NoxValue(NoxIntegerInterval{-3, 7}), NoxValue(-4)};
    NoxEnvironment &env = f.GetEnvironment();
    for (const UnaryRow &row : kRows) {
        for (const NoxValue &operand : operands) {
            x->SetValue(operand, nullptr);
            env.ClearError();
            NoxExpression *node = Node(row.type, x);
            const NoxValue got = node->GetValue();
            const int gotError = env.GetError();
            env.ClearError();
            const NoxValue want = row.value(env, operand);
            EXPECT_EQ(gotError, env.GetError()) << row.name;
            EXPECT_EQ(got.GetType(), want.GetType()) << row.name;
            const NoxRealInterval g = got.GetAsRealInterval();
            const NoxRealInterval w = want.GetAsRealInterval();
            EXPECT_TRUE(SameDouble(g.lower, w.lower)) << row.name;
            EXPECT_TRUE(SameDouble(g.upper, w.upper)) << row.name;
        }
    }
}

TEST_F(UnaryOperatorTest, ValueEvaluation_OutsideTheDomainReportsThroughTheValueFunction) {
    NoxEnvironment &env = f.GetEnvironment();
    env.ClearError();
    x->SetValue(NoxValue(NoxRealInterval{-3.0, -1.0}), nullptr);
    const NoxValue got = Node(NoxSqrtExpr, x)->GetValue();
    EXPECT_NE(env.GetError() & NoxErrorEmptyResult, 0);
    EXPECT_TRUE(NoxIsEmpty(got.GetAsRealInterval(), 0.0));
}

// ---- Gradient ----

TEST_F(UnaryOperatorTest, Gradient_FollowsTheChainRuleEntryByEntry) {
    SetReal(x, 1.5);
    SetReal(y, 2.0);
    for (const UnaryRow &row : kRows) {
        NoxExpression *node = Node(row.type, box);
        const double *g = node->GetGradient();
        const double u = box->Eval();
        const double *gu = box->GetGradient();
        ASSERT_NE(gu[0], 0.0);
        ASSERT_NE(gu[1], 0.0);
        for (int k = 0; k < 2; ++k) {
            double want = 0.0;
            switch (row.type) {
            case NoxSqrtExpr:
                want = gu[k] / (2 * Sqrt(u));
                break;
            case NoxLogExpr:
                want = gu[k] / (u * LnTen());
                break;
            case NoxLnExpr:
                want = gu[k] / u;
                break;
            case NoxExpExpr:
                want = Exp(u) * gu[k];
                break;
            case NoxAbsExpr:
                want = 1.0 * gu[k];
                break;
            default:
                want = 0.0;
                break;
            }
            EXPECT_TRUE(SameDouble(g[k], want)) << row.name << " entry " << k;
        }
    }
}

TEST_F(UnaryOperatorTest, Gradient_DividesEachEntryRatherThanMultiplyingByTheReciprocal) {
    // ln(exp(x)): the child's entry and the denominator are both exp(x), so a division
    // gives exactly 1 where a multiplication by the reciprocal need not.
    double point = 0.0;
    for (int k = 1; k <= 200 && point == 0.0; ++k) {
        const double e = Exp(0.37 * k);
        if (e * (1.0 / e) != 1.0)
            point = 0.37 * k;
    }
    ASSERT_NE(point, 0.0);
    SetReal(x, point);
    NoxExpression *node = Node(NoxLnExpr, Node(NoxExpExpr, x));
    EXPECT_TRUE(SameDouble(node->GetGradient()[0], 1.0));
}

TEST_F(UnaryOperatorTest, SqrtAtZero_HasAnAllZeroGradient) {
    const std::vector<double> g = GradientAt(NoxSqrtExpr, 0.0);
    EXPECT_TRUE(SameDouble(g[0], 0.0));
    EXPECT_TRUE(SameDouble(g[1], 0.0));
}

TEST_F(UnaryOperatorTest, LnAndLogAtZero_HaveAnAllZeroGradient) {
    for (NoxExpressionType t : {NoxLnExpr, NoxLogExpr}) {
        const std::vector<double> g = GradientAt(t, 0.0);
        EXPECT_TRUE(SameDouble(g[0], 0.0));
        EXPECT_TRUE(SameDouble(g[1], 0.0));
        // -0.0 equals 0.0, so the guard holds for it too.
        const std::vector<double> h = GradientAt(t, -0.0);
        EXPECT_TRUE(SameDouble(h[0], 0.0));
        EXPECT_TRUE(SameDouble(h[1], 0.0));
    }
}

TEST_F(UnaryOperatorTest, ZeroGuard_DoesNotFetchTheChildsGradient) {
    SetReal(x, 0.0);
    for (NoxExpressionType t : {NoxSqrtExpr, NoxLogExpr, NoxLnExpr}) {
        boxFunction.realCalls = 0;
        box->ResetBuffer(0);
        NoxExpression *node = Node(t, box);
        const double *g = node->GetGradient();
        EXPECT_EQ(g[0], 0.0);
        EXPECT_EQ(g[1], 0.0);
        // Only the child's real value was asked for; differencing it would call it more.
        EXPECT_EQ(boxFunction.realCalls, 1);
    }
}

TEST_F(UnaryOperatorTest, NegativeArguments_AreNotCaughtByTheGuards) {
    // sqrt: 2 * sqrt(-1) is NaN, not 0.0, so every entry is NaN.
    const std::vector<double> s = GradientAt(NoxSqrtExpr, -1.0);
    EXPECT_TRUE(std::isnan(s[0]));
    EXPECT_TRUE(std::isnan(s[1]));
    // ln: the denominator is u itself.
    const std::vector<double> l = GradientAt(NoxLnExpr, -2.0);
    EXPECT_TRUE(SameDouble(l[0], 1.0 / -2.0));
    EXPECT_TRUE(SameDouble(l[1], -0.0));
    const std::vector<double> d = GradientAt(NoxLogExpr, -2.0);
    EXPECT_TRUE(SameDouble(d[0], 1.0 / (-2.0 * LnTen())));
    EXPECT_TRUE(SameDouble(d[1], -0.0));
}

TEST_F(UnaryOperatorTest, Exp_GradientIsExpTimesTheChildsEntries) {
    const std::vector<double> g = GradientAt(NoxExpExpr, 0.5);
    EXPECT_TRUE(SameDouble(g[0], Exp(0.5) * 1.0));
    EXPECT_TRUE(SameDouble(g[1], 0.0));
}

TEST_F(UnaryOperatorTest, AbsGradient_IsTheSignTimesTheChildsEntries) {
    const std::vector<double> neg = GradientAt(NoxAbsExpr, -3.0);
    EXPECT_TRUE(SameDouble(neg[0], -1.0));
    EXPECT_TRUE(SameDouble(neg[1], -0.0)); // -1.0 * 0.0
    const std::vector<double> pos = GradientAt(NoxAbsExpr, 3.0);
    EXPECT_TRUE(SameDouble(pos[0], 1.0));
    EXPECT_TRUE(SameDouble(pos[1], 0.0));
}

TEST_F(UnaryOperatorTest, AbsAtZero_HasAZeroGradient) {
    for (double u : {0.0, -0.0, std::nan("")}) {
        const std::vector<double> g = GradientAt(NoxAbsExpr, u);
        EXPECT_TRUE(SameDouble(g[0], 0.0)) << u;
        EXPECT_TRUE(SameDouble(g[1], 0.0)) << u;
    }
}

TEST_F(UnaryOperatorTest, CeilFloorRound_HaveAnAllZeroGradientWithoutTouchingTheChild) {
    SetReal(x, 1.5);
    for (NoxExpressionType t : {NoxCeilExpr, NoxFloorExpr, NoxRoundExpr}) {
        boxFunction.realCalls = 0;
        box->ResetBuffer(0);
        NoxExpression *node = Node(t, box);
        double *g = const_cast<double *>(node->GetGradient());
        g[0] = g[1] = 7.0;
        node->ResetBuffer(0);
        g = const_cast<double *>(node->GetGradient());
        EXPECT_TRUE(SameDouble(g[0], 0.0));
        EXPECT_TRUE(SameDouble(g[1], 0.0));
        EXPECT_EQ(boxFunction.realCalls, 0);
    }
}

// ---- Hessian ----

TEST_F(UnaryOperatorTest, HessianOfExpOfAVariable_IsTheVariablesAllZeroHessian) {
    NoxExpression *node = Node(NoxExpExpr, x);
    double **h = node->GetHessian();
    double **hx = x->GetHessian();
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            EXPECT_TRUE(SameDouble(h[i][j], 0.0));
            EXPECT_TRUE(SameDouble(h[i][j], hx[i][j]));
        }
}

TEST_F(UnaryOperatorTest, Hessian_IsTheChildsHessianForEveryType) {
    double **hc = box->GetHessian();
    ASSERT_NE(hc[0][0], 0.0);
    for (const UnaryRow &row : kRows) {
        NoxExpression *node = Node(row.type, box);
        double **h = node->GetHessian();
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_TRUE(SameDouble(h[i][j], hc[i][j])) << row.name;
    }
}

// ---- Symbolic differentiation ----

TEST_F(UnaryOperatorTest, DifferentiateWithANullVariable_IsTheNodeItself) {
    for (const UnaryRow &row : kRows) {
        NoxExpression *node = Node(row.type, x);
        const int before = f.ExpressionCount();
        EXPECT_EQ(node->Differentiate(nullptr), node) << row.name;
        EXPECT_EQ(f.ExpressionCount(), before) << row.name;
    }
}

TEST_F(UnaryOperatorTest, DifferentiateSqrt_BuildsDerivativeOverTwoTimesANewSqrt) {
    NoxExpression *node = Node(NoxSqrtExpr, x);
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 5);
    // Created in order: sqrt(u), 2.0, 2.0 * sqrt(u), u', u' / (2.0 * sqrt(u)).
    NoxExpression *s = f.Expression(before);
    NoxExpression *two = f.Expression(before + 1);
    NoxExpression *p = f.Expression(before + 2);
    NoxExpression *du = f.Expression(before + 3);
    EXPECT_EQ(f.Expression(before + 4), d);
    EXPECT_EQ(s->GetType(), NoxSqrtExpr);
    EXPECT_NE(s, node);
    EXPECT_EQ(s->GetChild(0), x);
    ExpectRealConstant(two, 2.0);
    EXPECT_EQ(p->GetType(), NoxProductExpr);
    ASSERT_EQ(p->GetNbOfChildren(), 2);
    EXPECT_EQ(p->GetChild(0), two);
    EXPECT_EQ(p->GetChild(1), s);
    ExpectRealConstant(du, 1.0);
    EXPECT_EQ(d->GetType(), NoxQuotientExpr);
    EXPECT_EQ(d->GetChild(0), du);
    EXPECT_EQ(d->GetChild(1), p);
}

TEST_F(UnaryOperatorTest, DifferentiateLog_BuildsDerivativeOverUTimesLnTen) {
    NoxExpression *node = Node(NoxLogExpr, x);
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(y);
    ASSERT_EQ(f.ExpressionCount(), before + 4);
    NoxExpression *k = f.Expression(before);
    NoxExpression *p = f.Expression(before + 1);
    NoxExpression *du = f.Expression(before + 2);
    EXPECT_EQ(f.Expression(before + 3), d);
    ExpectRealConstant(k, LnTen());
    EXPECT_EQ(p->GetType(), NoxProductExpr);
    EXPECT_EQ(p->GetChild(0), x);
    EXPECT_EQ(p->GetChild(1), k);
    ExpectRealConstant(du, 0.0); // x with respect to y
    EXPECT_EQ(d->GetType(), NoxQuotientExpr);
    EXPECT_EQ(d->GetChild(0), du);
    EXPECT_EQ(d->GetChild(1), p);
}

TEST_F(UnaryOperatorTest, DifferentiateLn_BuildsDerivativeOverTheChildItself) {
    NoxExpression *node = Node(NoxLnExpr, x);
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 2);
    ExpectRealConstant(f.Expression(before), 1.0);
    EXPECT_EQ(f.Expression(before + 1), d);
    EXPECT_EQ(d->GetType(), NoxQuotientExpr);
    EXPECT_EQ(d->GetChild(0), f.Expression(before));
    EXPECT_EQ(d->GetChild(1), x);
}

TEST_F(UnaryOperatorTest, DifferentiateExp_BuildsANewExpTimesTheDerivative) {
    NoxExpression *node = Node(NoxExpExpr, x);
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 3);
    NoxExpression *e = f.Expression(before);
    NoxExpression *du = f.Expression(before + 1);
    EXPECT_EQ(f.Expression(before + 2), d);
    EXPECT_EQ(e->GetType(), NoxExpExpr);
    EXPECT_NE(e, node);
    EXPECT_EQ(e->GetChild(0), x);
    ExpectRealConstant(du, 1.0);
    EXPECT_EQ(d->GetType(), NoxProductExpr);
    ASSERT_EQ(d->GetNbOfChildren(), 2);
    EXPECT_EQ(d->GetChild(0), e);
    EXPECT_EQ(d->GetChild(1), du);
}

TEST_F(UnaryOperatorTest, DifferentiateCeilFloorRound_IsAConstantZeroNeverNull) {
    for (NoxExpressionType t : {NoxCeilExpr, NoxFloorExpr, NoxRoundExpr}) {
        NoxExpression *node = Node(t, x);
        const int before = f.ExpressionCount();
        NoxExpression *d = node->Differentiate(x);
        ASSERT_EQ(f.ExpressionCount(), before + 1);
        EXPECT_EQ(f.Expression(before), d);
        ExpectRealConstant(d, 0.0);
    }
}

TEST_F(UnaryOperatorTest, DifferentiateAbs_IsNullAndCreatesNothing) {
    NoxExpression *node = Node(NoxAbsExpr, x);
    const int before = f.ExpressionCount();
    EXPECT_EQ(node->Differentiate(x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(UnaryOperatorTest, DifferentiateOverAChildWithoutDerivative_IsNullAfterItsOwnNodes) {
    NoxExpression *node = Node(NoxSqrtExpr, Node(NoxAbsExpr, x));
    const int before = f.ExpressionCount();
    EXPECT_EQ(node->Differentiate(x), nullptr);
    // sqrt, 2.0 and the product are made before the child's derivative turns out null.
    EXPECT_EQ(f.ExpressionCount(), before + 3);
    NoxExpression *e = Node(NoxExpExpr, Node(NoxAbsExpr, x));
    const int beforeExp = f.ExpressionCount();
    EXPECT_EQ(e->Differentiate(x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), beforeExp + 1);
}

TEST_F(UnaryOperatorTest, DifferentiateOfANestedChild_DifferentiatesTheChild) {
    NoxExpression *inner = Node(NoxExpExpr, x);
    NoxExpression *node = Node(NoxLnExpr, inner);
    const int before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    // The child's derivative exp(x) * 1 takes three nodes, then the quotient.
    ASSERT_EQ(f.ExpressionCount(), before + 4);
    EXPECT_EQ(f.Expression(before + 2)->GetType(), NoxProductExpr);
    EXPECT_EQ(d->GetChild(0), f.Expression(before + 2));
    EXPECT_EQ(d->GetChild(1), inner);
}

// ---- Values of the derivatives (through the quotient and product nodes) ----

TEST_F(UnaryOperatorTest, DerivativeOfSqrt_EvaluatesToTheGradient) {
    SetReal(x, 4.0);
    NoxExpression *node = Node(NoxSqrtExpr, x);
    EXPECT_DOUBLE_EQ(node->Differentiate(x)->Eval(), node->GetGradient()[0]);
    EXPECT_DOUBLE_EQ(node->Differentiate(x)->Eval(), 0.25);
}

TEST_F(UnaryOperatorTest, DerivativeOfSqrtAtZero_EvaluatesToZeroThroughTheQuotient) {
    // 1 / (2 * sqrt(0)) is a division by an exact zero, which the quotient node gives as
    // 0.0.
    SetReal(x, 0.0);
    NoxExpression *d = Node(NoxSqrtExpr, x)->Differentiate(x);
    EXPECT_TRUE(SameDouble(d->Eval(), 0.0));
}

TEST_F(UnaryOperatorTest, DerivativesOfLogLnExp_EvaluateToTheGradient) {
    SetReal(x, 2.5);
    for (NoxExpressionType t : {NoxLogExpr, NoxLnExpr, NoxExpExpr}) {
        NoxExpression *node = Node(t, x);
        EXPECT_DOUBLE_EQ(node->Differentiate(x)->Eval(), node->GetGradient()[0]);
        EXPECT_DOUBLE_EQ(node->Differentiate(y)->Eval(), 0.0);
    }
}

// ---- Memory ----

TEST_F(UnaryOperatorTest, EvaluationAfterTheFirst_AllocatesNothing) {
    x->SetValue(NoxValue(NoxRealInterval{0.25, 0.5}), nullptr);
    for (const UnaryRow &row : kRows) {
        NoxExpression *node = Node(row.type, x);
        node->Eval();
        node->GetValue();
        node->GetGradient(); // allocates the gradient buffer once
        node->ResetBuffer(1);
        const long before = nox_test::AllocationCount();
        node->Eval();
        node->GetValue();
        node->GetGradient();
        EXPECT_EQ(nox_test::AllocationCount(), before) << row.name;
    }
}

TEST_F(UnaryOperatorTest, DifferentiateWhenMemoryRunsShort_NeverListsANullFactor) {
    for (const UnaryRow &row : kRows) {
        NoxExpression *node = Node(row.type, x);
        for (long k = 0; k < 16; ++k) {
            NoxExpression *d = nullptr;
            {
                nox_test::AllocationFailure fail(nox_test::AllocationForms::Nothrow, k,
                                                 nox_test::AllocationFailure::RefuseOne);
                d = node->Differentiate(x);
            }
            if (d) {
                EXPECT_TRUE(HasNoMissingFactor(d)) << row.name << " refusal " << k;
            }
        }
    }
}
