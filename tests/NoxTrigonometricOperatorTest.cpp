// Circular and hyperbolic function nodes and their inverses: real and value evaluation,
// gradients with their guards and signed zeros, the Hessian copied from the child, and the
// nodes their symbolic derivatives create.
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

using ValueFunction = NoxValue (*)(const NoxEnvironment &, const NoxValue &);

using nox_test::kInf;

using nox_test::SameDouble;

// The C library functions on a volatile copy, so that the compiler cannot fold them.
#define NOX_VOLATILE_CALL(name, call)                                                     \
    double name(double u) {                                                                \
        volatile double v = u;                                                             \
        return call(v);                                                                    \
    }
NOX_VOLATILE_CALL(Sin, std::sin)
NOX_VOLATILE_CALL(Cos, std::cos)
NOX_VOLATILE_CALL(Tan, std::tan)
NOX_VOLATILE_CALL(Asin, std::asin)
NOX_VOLATILE_CALL(Acos, std::acos)
NOX_VOLATILE_CALL(Atan, std::atan)
NOX_VOLATILE_CALL(Sinh, std::sinh)
NOX_VOLATILE_CALL(Cosh, std::cosh)
NOX_VOLATILE_CALL(Tanh, std::tanh)
NOX_VOLATILE_CALL(Sqrt, std::sqrt)
NOX_VOLATILE_CALL(Ln, std::log)
#undef NOX_VOLATILE_CALL

// The area formulas, written out here as the node's documentation gives them.
double AreaSine(double u) {
    const double s = u > 0.0 ? 1.0 : (u < 0.0 ? -1.0 : 0.0);
    return s * Ln(Sqrt(u * u + 1) + std::fabs(u));
}
double AreaCosine(double u) { return Ln(Sqrt(u * u - 1) + u); }
double AreaTangent(double u) { return (Ln(u + 1) - Ln(1 - u)) * 0.5; }

struct TrigRow {
    NoxExpressionType type;
    const char *name;
    double (*real)(double);
    ValueFunction value; // null for the inverse circular functions (they take a range)
};

NoxValue AsinValue(const NoxEnvironment &env, const NoxValue &v) {
    return NoxAsin(env, v, nullptr);
}
NoxValue AcosValue(const NoxEnvironment &env, const NoxValue &v) {
    return NoxAcos(env, v, nullptr);
}
NoxValue AtanValue(const NoxEnvironment &env, const NoxValue &v) {
    return NoxAtan(env, v, nullptr);
}

const TrigRow kRows[] = {
    {NoxSinExpr, "sin", Sin, NoxSin},
    {NoxCosExpr, "cos", Cos, NoxCos},
    {NoxTanExpr, "tan", Tan, NoxTan},
    {NoxAsinExpr, "asin", Asin, AsinValue},
    {NoxAcosExpr, "acos", Acos, AcosValue},
    {NoxAtanExpr, "atan", Atan, AtanValue},
    {NoxSinhExpr, "sinh", Sinh, NoxSinh},
    {NoxCoshExpr, "cosh", Cosh, NoxCosh},
    {NoxTanhExpr, "tanh", Tanh, NoxTanh},
    {NoxASinhExpr, "asinh", AreaSine, NoxAsinh},
    {NoxACoshExpr, "acosh", AreaCosine, NoxAcosh},
    {NoxATanhExpr, "atanh", AreaTangent, NoxAtanh},
};

// The gradient entry of each type from the child's value u and entry gu, as documented.
double GradientEntry(NoxExpressionType t, double u, double gu) {
    switch (t) {
    case NoxSinExpr:
        return Cos(u) * gu;
    case NoxCosExpr:
        return -0.0 - Sin(u) * gu;
    case NoxTanExpr: {
        const double c = Cos(u);
        return gu / (c * c);
    }
    case NoxAsinExpr:
        return gu / Sqrt(1 - u * u);
    case NoxAcosExpr:
        return -0.0 - gu / Sqrt(1 - u * u);
    case NoxAtanExpr:
        return gu / (u * u + 1);
    case NoxSinhExpr:
        return Cosh(u) * gu;
    case NoxCoshExpr:
        return Sinh(u) * gu;
    case NoxTanhExpr: {
        const double th = Tanh(u);
        return (1 - th * th) * gu;
    }
    case NoxASinhExpr:
        return (1 / Sqrt(u * u + 1)) * gu;
    case NoxACoshExpr:
        return (1 / Sqrt(u * u - 1)) * gu;
    case NoxATanhExpr:
        return (1 / (1 - u * u)) * gu;
    default:
        return 0.0;
    }
}

class TrigonometricOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        SetReal(x, 0.25);
        SetReal(y, 0.5);
        // A child with a gradient other than a unit vector and a non-zero Hessian:
        // x * x * y, differenced by the black box.
        box = f.Box(boxFunction, {x, y});
    }

    NoxExpression *Node(NoxExpressionType t, NoxExpression *child) {
        return f.CreateTrigonometricOperator(t, child);
    }

    double RealAt(NoxExpressionType t, double u) {
        SetReal(x, u);
        return Node(t, x)->Eval();
    }

    // Gradient over the variable x set to u, copied out: entry 0 has the child's entry
    // 1, entry 1 the child's entry 0.
    std::vector<double> GradientAt(NoxExpressionType t, double u) {
        SetReal(x, u);
        const double *g = Node(t, x)->GetGradient();
        return {g[0], g[1]};
    }

    // The nodes created since `before`, by type.
    std::vector<NoxExpressionType> TypesSince(int before) const {
        std::vector<NoxExpressionType> types;
        for (int i = before; i < f.ExpressionCount(); ++i)
            types.push_back(f.Expression(i)->GetType());
        return types;
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    CountingBox boxFunction{[](const std::vector<double> &a) { return a[0] * a[0] * a[1]; }};
    NoxExpression *box = nullptr;
};

// The power node e^2 (an integer constant exponent 2).
void ExpectSquareOf(const NoxExpression *node, const NoxExpression *e) {
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxPowerExpr);
    ASSERT_EQ(node->GetNbOfChildren(), 2);
    EXPECT_EQ(node->GetChild(0), e);
    ExpectConstant(node->GetChild(1), NoxIntegerType, 2.0);
}

void ExpectChildren(const NoxExpression *node, NoxExpressionType t,
                    std::vector<const NoxExpression *> children) {
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), t);
    ASSERT_EQ(node->GetNbOfChildren(), static_cast<int>(children.size()));
    for (int i = 0; i < node->GetNbOfChildren(); ++i)
        EXPECT_EQ(node->GetChild(i), children[i]) << "child " << i;
}

} // namespace

// ---- Real evaluation ----

TEST_F(TrigonometricOperatorTest, RealEvaluation_IsTheFunctionOfTheChildsValue) {
    const double points[] = {-0.75, -0.1, 0.0, 0.3, 0.9, 1.5, 2.5, -3.0, 20.0};
    for (const TrigRow &row : kRows)
        for (double u : points)
            EXPECT_TRUE(SameDouble(RealAt(row.type, u), row.real(u))) << row.name << " " << u;
}

TEST_F(TrigonometricOperatorTest, RealEvaluation_ReadsACompoundChild) {
    SetReal(x, 0.75);
    SetReal(y, 0.5);
    for (const TrigRow &row : kRows)
        EXPECT_TRUE(SameDouble(Node(row.type, box)->Eval(), row.real(box->Eval()))) << row.name;
}

TEST_F(TrigonometricOperatorTest, OutsideTheDomain_RealValueIsNaNWithoutAnErrorBit) {
    f.GetEnvironment().ClearError();
    EXPECT_TRUE(std::isnan(RealAt(NoxAsinExpr, 2.0)));
    EXPECT_TRUE(std::isnan(RealAt(NoxAsinExpr, 1.5)));
    EXPECT_TRUE(std::isnan(RealAt(NoxAcosExpr, -1.5)));
    EXPECT_TRUE(std::isnan(RealAt(NoxACoshExpr, 0.5)));
    EXPECT_TRUE(std::isnan(RealAt(NoxATanhExpr, 2.0)));
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

TEST_F(TrigonometricOperatorTest, TanAtHalfPi_IsWhatTheLibraryGives) {
    volatile double half = 1.5707963267948966;
    EXPECT_TRUE(SameDouble(RealAt(NoxTanExpr, half), Tan(half)));
}

TEST_F(TrigonometricOperatorTest, AreaSine_IsExactlyZeroAtZeroAndOdd) {
    EXPECT_TRUE(SameDouble(RealAt(NoxASinhExpr, 0.0), 0.0));
    EXPECT_TRUE(SameDouble(RealAt(NoxASinhExpr, -1.0), -Ln(Sqrt(2.0) + 1.0)));
    for (double u : {0.1, 1.0, 3.5, 1e5})
        EXPECT_TRUE(SameDouble(RealAt(NoxASinhExpr, -u), -RealAt(NoxASinhExpr, u))) << u;
}

TEST_F(TrigonometricOperatorTest, AreaCosineAndTangent_AtTheirEdges) {
    EXPECT_TRUE(SameDouble(RealAt(NoxACoshExpr, 1.0), 0.0));
    EXPECT_EQ(RealAt(NoxATanhExpr, 1.0), kInf);
    EXPECT_EQ(RealAt(NoxATanhExpr, -1.0), -kInf);
    EXPECT_TRUE(SameDouble(RealAt(NoxATanhExpr, 0.5), (Ln(1.5) - Ln(0.5)) * 0.5));
}

// ---- Value evaluation ----

TEST_F(TrigonometricOperatorTest, ValueEvaluation_IsTheValueFunctionOfTheChildsValue) {
    const NoxValue operands[] = {
        NoxValue(NoxRealInterval{0.25, 0.75}), NoxValue(NoxRealInterval{-0.5, 0.5}),
        NoxValue(NoxRealInterval{1.5, 3.0}),   NoxValue(NoxRealInterval{-4.0, 7.0}),
        NoxValue(0.5),                         NoxValue(NoxIntegerInterval{1, 2})};
    NoxEnvironment &env = f.GetEnvironment();
    for (const TrigRow &row : kRows) {
        for (const NoxValue &operand : operands) {
            x->SetValue(operand, nullptr);
            env.ClearError();
            const NoxValue got = Node(row.type, x)->GetValue();
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

// ---- Gradient ----

TEST_F(TrigonometricOperatorTest, Gradient_FollowsTheTableEntryByEntry) {
    SetReal(x, 0.75);
    SetReal(y, 0.5);
    for (const TrigRow &row : kRows) {
        if (row.type == NoxACoshExpr)
            continue; // x * x * y lies below 1 here; see the next test.
        NoxExpression *node = Node(row.type, box);
        const double *g = node->GetGradient();
        const double u = box->Eval();
        const double *gu = box->GetGradient();
        ASSERT_NE(gu[0], 0.0);
        ASSERT_NE(gu[1], 0.0);
        for (int k = 0; k < 2; ++k)
            EXPECT_TRUE(SameDouble(g[k], GradientEntry(row.type, u, gu[k])))
                << row.name << " entry " << k;
    }
}

TEST_F(TrigonometricOperatorTest, AreaCosineGradient_FollowsTheTableAboveOne) {
    SetReal(x, 2.0);
    SetReal(y, 1.5);
    NoxExpression *node = Node(NoxACoshExpr, box);
    const double *g = node->GetGradient();
    const double u = box->Eval();
    const double *gu = box->GetGradient();
    for (int k = 0; k < 2; ++k)
        EXPECT_TRUE(SameDouble(g[k], GradientEntry(NoxACoshExpr, u, gu[k]))) << k;
}

TEST_F(TrigonometricOperatorTest, Gradient_OfAVariableAtSeveralPoints) {
    const double points[] = {-0.6, -0.0, 0.0, 0.2, 0.95};
    for (const TrigRow &row : kRows) {
        for (double u : points) {
            const std::vector<double> g = GradientAt(row.type, u);
            EXPECT_TRUE(SameDouble(g[0], GradientEntry(row.type, u, 1.0))) << row.name << u;
            EXPECT_TRUE(SameDouble(g[1], GradientEntry(row.type, u, 0.0))) << row.name << u;
        }
    }
}

TEST_F(TrigonometricOperatorTest, CosineGradient_FormsTheNegativeAsMinusZeroMinusTheTerm) {
    // sin(0.5) * 0.0 is +0.0, and -0.0 - 0.0 is -0.0.
    const std::vector<double> pos = GradientAt(NoxCosExpr, 0.5);
    EXPECT_TRUE(SameDouble(pos[1], -0.0));
    // sin(-0.5) * 0.0 is -0.0, and -0.0 - -0.0 is +0.0.
    const std::vector<double> neg = GradientAt(NoxCosExpr, -0.5);
    EXPECT_TRUE(SameDouble(neg[1], 0.0));
    // At 0 the variable's own entry is -0.0 - 0.0.
    const std::vector<double> zero = GradientAt(NoxCosExpr, 0.0);
    EXPECT_TRUE(SameDouble(zero[0], -0.0));
    EXPECT_TRUE(SameDouble(pos[0], -0.0 - Sin(0.5)));
}

TEST_F(TrigonometricOperatorTest, ArcCosineGradient_FormsTheNegativeAsMinusZeroMinusTheQuotient) {
    const std::vector<double> g = GradientAt(NoxAcosExpr, 0.5);
    EXPECT_TRUE(SameDouble(g[0], -0.0 - 1.0 / Sqrt(1 - 0.25)));
    EXPECT_TRUE(SameDouble(g[1], -0.0)); // -0.0 - 0.0 / s
}

TEST_F(TrigonometricOperatorTest, ArcSineBeyondOne_IsNaNWithAnAllZeroGradient) {
    EXPECT_TRUE(std::isnan(RealAt(NoxAsinExpr, 1.5)));
    for (NoxExpressionType t : {NoxAsinExpr, NoxAcosExpr}) {
        for (double u : {1.5, -1.5}) {
            const std::vector<double> g = GradientAt(t, u);
            EXPECT_TRUE(SameDouble(g[0], 0.0)) << u;
            EXPECT_TRUE(SameDouble(g[1], 0.0)) << u;
        }
    }
}

TEST_F(TrigonometricOperatorTest, ArcSineAtOne_HasAnInfiniteGradient) {
    // u * u = 1 passes the guard; s = 0, so 1 / 0 is infinite and 0 / 0 is NaN.
    for (double u : {1.0, -1.0}) {
        const std::vector<double> g = GradientAt(NoxAsinExpr, u);
        EXPECT_EQ(g[0], kInf) << u;
        EXPECT_TRUE(std::isnan(g[1])) << u;
        const std::vector<double> a = GradientAt(NoxAcosExpr, u);
        EXPECT_EQ(a[0], -kInf) << u;
        EXPECT_TRUE(std::isnan(a[1])) << u;
    }
}

TEST_F(TrigonometricOperatorTest, Guards_DoNotFetchTheChildsGradient) {
    SetReal(x, 2.0);
    SetReal(y, 1.0); // the child is 4
    for (NoxExpressionType t : {NoxAsinExpr, NoxAcosExpr}) {
        boxFunction.realCalls = 0;
        box->ResetBuffer(0);
        const double *g = Node(t, box)->GetGradient();
        EXPECT_EQ(g[0], 0.0);
        EXPECT_EQ(g[1], 0.0);
        EXPECT_EQ(boxFunction.realCalls, 1);
    }
}

TEST_F(TrigonometricOperatorTest, TangentNearAPole_DividesByTheSquaredCosine) {
    // The guard holds only when cos(u) is exactly 0.0, which no finite double reaches:
    // at the double nearest to pi/2 the cosine is about 6e-17 and the entry is 1 / c^2.
    volatile double half = 1.5707963267948966;
    const double c = Cos(half);
    ASSERT_NE(c, 0.0);
    const std::vector<double> g = GradientAt(NoxTanExpr, half);
    EXPECT_TRUE(SameDouble(g[0], 1.0 / (c * c)));
    EXPECT_TRUE(SameDouble(g[1], 0.0));
}

TEST_F(TrigonometricOperatorTest, InverseHyperbolicCosineAndTangent_HaveNoGuard) {
    const std::vector<double> below = GradientAt(NoxACoshExpr, 0.5);
    EXPECT_TRUE(std::isnan(below[0]));
    EXPECT_TRUE(std::isnan(below[1]));
    const std::vector<double> one = GradientAt(NoxACoshExpr, 1.0);
    EXPECT_EQ(one[0], kInf);
    EXPECT_TRUE(std::isnan(one[1])); // infinity times 0
    const std::vector<double> pole = GradientAt(NoxATanhExpr, 1.0);
    EXPECT_EQ(pole[0], kInf);
    EXPECT_TRUE(std::isnan(pole[1]));
}

TEST_F(TrigonometricOperatorTest, InverseHyperbolicGradients_MultiplyByTheReciprocal) {
    // The reciprocal is formed once and multiplies each entry.
    const double u = 0.7;
    const std::vector<double> s = GradientAt(NoxASinhExpr, u);
    EXPECT_TRUE(SameDouble(s[0], (1 / Sqrt(u * u + 1)) * 1.0));
    const std::vector<double> t = GradientAt(NoxATanhExpr, u);
    EXPECT_TRUE(SameDouble(t[0], (1 / (1 - u * u)) * 1.0));
}

// ---- Hessian ----

TEST_F(TrigonometricOperatorTest, HessianOfSinOfAVariable_IsTheVariablesZerosNotMinusSin) {
    SetReal(x, 1.0);
    double **h = Node(NoxSinExpr, x)->GetHessian();
    double **hx = x->GetHessian();
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            EXPECT_TRUE(SameDouble(h[i][j], 0.0));
            EXPECT_TRUE(SameDouble(h[i][j], hx[i][j]));
        }
}

TEST_F(TrigonometricOperatorTest, Hessian_IsTheChildsHessianForEveryType) {
    double **hc = box->GetHessian();
    ASSERT_NE(hc[0][0], 0.0);
    for (const TrigRow &row : kRows) {
        double **h = Node(row.type, box)->GetHessian();
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_TRUE(SameDouble(h[i][j], hc[i][j])) << row.name;
    }
}

// ---- Symbolic differentiation: the nodes, in the order they are created ----

TEST_F(TrigonometricOperatorTest, DifferentiateWithANullVariable_IsTheNodeItself) {
    for (const TrigRow &row : kRows) {
        NoxExpression *node = Node(row.type, x);
        const int before = f.ExpressionCount();
        EXPECT_EQ(node->Differentiate(nullptr), node) << row.name;
        EXPECT_EQ(f.ExpressionCount(), before) << row.name;
    }
}

TEST_F(TrigonometricOperatorTest, DifferentiateSin_IsANewCosTimesTheDerivative) {
    NoxExpression *node = Node(NoxSinExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxCosExpr, NoxConstantExpr, NoxProductExpr}));
    ExpectChildren(f.Expression(n), NoxCosExpr, {x});
    ExpectRealConstant(f.Expression(n + 1), 1.0);
    EXPECT_EQ(d, f.Expression(n + 2));
    ExpectChildren(d, NoxProductExpr, {f.Expression(n), f.Expression(n + 1)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateCos_IsAThreeFactorProduct) {
    NoxExpression *node = Node(NoxCosExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(y);
    EXPECT_EQ(TypesSince(n), (std::vector<NoxExpressionType>{NoxConstantExpr, NoxSinExpr,
                                                              NoxConstantExpr, NoxProductExpr}));
    ExpectRealConstant(f.Expression(n), -1.0);
    ExpectChildren(f.Expression(n + 1), NoxSinExpr, {x});
    ExpectRealConstant(f.Expression(n + 2), 0.0); // x with respect to y
    EXPECT_EQ(d, f.Expression(n + 3));
    ExpectChildren(d, NoxProductExpr, {f.Expression(n), f.Expression(n + 1), f.Expression(n + 2)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateTan_IsTheDerivativeOverTheSquaredCos) {
    NoxExpression *node = Node(NoxTanExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxCosExpr, NoxConstantExpr, NoxPowerExpr,
                                              NoxConstantExpr, NoxQuotientExpr}));
    ExpectChildren(f.Expression(n), NoxCosExpr, {x});
    ExpectSquareOf(f.Expression(n + 2), f.Expression(n));
    EXPECT_EQ(f.Expression(n + 2)->GetChild(1), f.Expression(n + 1));
    ExpectRealConstant(f.Expression(n + 3), 1.0);
    EXPECT_EQ(d, f.Expression(n + 4));
    ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 3), f.Expression(n + 2)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateAsin_IsTheDerivativeOverSqrtOfOneMinusUSquared) {
    NoxExpression *node = Node(NoxAsinExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    // -1 * x^2 + 1: the power, the coefficient and product, the constant term and sum.
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxConstantExpr, NoxPowerExpr, NoxConstantExpr,
                                              NoxProductExpr, NoxConstantExpr, NoxSumExpr,
                                              NoxSqrtExpr, NoxConstantExpr, NoxQuotientExpr}));
    NoxExpression *square = f.Expression(n + 1);
    ExpectSquareOf(square, x);
    ExpectRealConstant(f.Expression(n + 2), -1.0);
    ExpectChildren(f.Expression(n + 3), NoxProductExpr, {f.Expression(n + 2), square});
    ExpectRealConstant(f.Expression(n + 4), 1.0);
    ExpectChildren(f.Expression(n + 5), NoxSumExpr, {f.Expression(n + 4), f.Expression(n + 3)});
    ExpectChildren(f.Expression(n + 6), NoxSqrtExpr, {f.Expression(n + 5)});
    ExpectRealConstant(f.Expression(n + 7), 1.0);
    EXPECT_EQ(d, f.Expression(n + 8));
    ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 7), f.Expression(n + 6)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateAcos_NegatesTheDerivativeByALinearTerm) {
    NoxExpression *node = Node(NoxAcosExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    // The root as for the arc sine, then u', then -1 * u' (the constant 0 is left out).
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{
                  NoxConstantExpr, NoxPowerExpr, NoxConstantExpr, NoxProductExpr,
                  NoxConstantExpr, NoxSumExpr, NoxSqrtExpr, NoxConstantExpr, NoxConstantExpr,
                  NoxProductExpr, NoxQuotientExpr}));
    ExpectSquareOf(f.Expression(n + 1), x);
    ExpectChildren(f.Expression(n + 6), NoxSqrtExpr, {f.Expression(n + 5)});
    ExpectRealConstant(f.Expression(n + 7), 1.0);
    ExpectRealConstant(f.Expression(n + 8), -1.0);
    ExpectChildren(f.Expression(n + 9), NoxProductExpr, {f.Expression(n + 8), f.Expression(n + 7)});
    EXPECT_EQ(d, f.Expression(n + 10));
    ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 9), f.Expression(n + 6)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateAtan_IsTheDerivativeOverUSquaredPlusOne) {
    NoxExpression *node = Node(NoxAtanExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    // The coefficient 1 is left out: 1 + x^2.
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxConstantExpr, NoxPowerExpr, NoxConstantExpr,
                                              NoxSumExpr, NoxConstantExpr, NoxQuotientExpr}));
    ExpectSquareOf(f.Expression(n + 1), x);
    ExpectRealConstant(f.Expression(n + 2), 1.0);
    ExpectChildren(f.Expression(n + 3), NoxSumExpr, {f.Expression(n + 2), f.Expression(n + 1)});
    ExpectRealConstant(f.Expression(n + 4), 1.0);
    EXPECT_EQ(d, f.Expression(n + 5));
    ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 4), f.Expression(n + 3)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateSinhAndCosh_AreTheOtherFunctionTimesTheDerivative) {
    const NoxExpressionType pairs[][2] = {{NoxSinhExpr, NoxCoshExpr}, {NoxCoshExpr, NoxSinhExpr}};
    for (const auto &pair : pairs) {
        NoxExpression *node = Node(pair[0], x);
        const int n = f.ExpressionCount();
        NoxExpression *d = node->Differentiate(x);
        EXPECT_EQ(TypesSince(n),
                  (std::vector<NoxExpressionType>{pair[1], NoxConstantExpr, NoxProductExpr}));
        ExpectChildren(f.Expression(n), pair[1], {x});
        ExpectRealConstant(f.Expression(n + 1), 1.0);
        EXPECT_EQ(d, f.Expression(n + 2));
        ExpectChildren(d, NoxProductExpr, {f.Expression(n), f.Expression(n + 1)});
    }
}

TEST_F(TrigonometricOperatorTest, DifferentiateTanh_SquaresTheNodeItself) {
    NoxExpression *node = Node(NoxTanhExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    // u' first, then -1 * self^2 + 1, then the product.
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxConstantExpr, NoxConstantExpr, NoxPowerExpr,
                                              NoxConstantExpr, NoxProductExpr, NoxConstantExpr,
                                              NoxSumExpr, NoxProductExpr}));
    ExpectRealConstant(f.Expression(n), 1.0);
    ExpectSquareOf(f.Expression(n + 2), node);
    ExpectRealConstant(f.Expression(n + 3), -1.0);
    ExpectChildren(f.Expression(n + 4), NoxProductExpr, {f.Expression(n + 3), f.Expression(n + 2)});
    ExpectRealConstant(f.Expression(n + 5), 1.0);
    ExpectChildren(f.Expression(n + 6), NoxSumExpr, {f.Expression(n + 5), f.Expression(n + 4)});
    EXPECT_EQ(d, f.Expression(n + 7));
    ExpectChildren(d, NoxProductExpr, {f.Expression(n + 6), f.Expression(n)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateAsinhAndAcosh_AreTheDerivativeOverASqrt) {
    const struct {
        NoxExpressionType type;
        double constant;
    } cases[] = {{NoxASinhExpr, 1.0}, {NoxACoshExpr, -1.0}};
    for (const auto &c : cases) {
        NoxExpression *node = Node(c.type, x);
        const int n = f.ExpressionCount();
        NoxExpression *d = node->Differentiate(x);
        // x^2 + constant, the coefficient 1 left out.
        EXPECT_EQ(TypesSince(n),
                  (std::vector<NoxExpressionType>{NoxConstantExpr, NoxPowerExpr, NoxConstantExpr,
                                                  NoxSumExpr, NoxSqrtExpr, NoxConstantExpr,
                                                  NoxQuotientExpr}));
        ExpectSquareOf(f.Expression(n + 1), x);
        ExpectRealConstant(f.Expression(n + 2), c.constant);
        ExpectChildren(f.Expression(n + 3), NoxSumExpr, {f.Expression(n + 2), f.Expression(n + 1)});
        ExpectChildren(f.Expression(n + 4), NoxSqrtExpr, {f.Expression(n + 3)});
        ExpectRealConstant(f.Expression(n + 5), 1.0);
        EXPECT_EQ(d, f.Expression(n + 6));
        ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 5), f.Expression(n + 4)});
    }
}

TEST_F(TrigonometricOperatorTest, DifferentiateAtanh_IsTheDerivativeOverOneMinusUSquared) {
    NoxExpression *node = Node(NoxATanhExpr, x);
    const int n = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxConstantExpr, NoxPowerExpr, NoxConstantExpr,
                                              NoxProductExpr, NoxConstantExpr, NoxSumExpr,
                                              NoxConstantExpr, NoxQuotientExpr}));
    ExpectSquareOf(f.Expression(n + 1), x);
    ExpectRealConstant(f.Expression(n + 2), -1.0);
    ExpectChildren(f.Expression(n + 3), NoxProductExpr, {f.Expression(n + 2), f.Expression(n + 1)});
    ExpectRealConstant(f.Expression(n + 4), 1.0);
    ExpectChildren(f.Expression(n + 5), NoxSumExpr, {f.Expression(n + 4), f.Expression(n + 3)});
    ExpectRealConstant(f.Expression(n + 6), 1.0);
    EXPECT_EQ(d, f.Expression(n + 7));
    ExpectChildren(d, NoxQuotientExpr, {f.Expression(n + 6), f.Expression(n + 5)});
}

TEST_F(TrigonometricOperatorTest, DifferentiateOverAChildWithoutDerivative_FollowsTheCreators) {
    NoxExpression *absolute = f.CreateAbs(x);
    // sin: cos(u) is made, the product refuses the missing derivative.
    NoxExpression *s = Node(NoxSinExpr, absolute);
    int n = f.ExpressionCount();
    EXPECT_EQ(s->Differentiate(x), nullptr);
    EXPECT_EQ(TypesSince(n), (std::vector<NoxExpressionType>{NoxCosExpr}));
    // cos: the list form of the product takes the missing derivative as a null factor.
    NoxExpression *c = Node(NoxCosExpr, absolute);
    n = f.ExpressionCount();
    NoxExpression *dc = c->Differentiate(x);
    EXPECT_EQ(TypesSince(n),
              (std::vector<NoxExpressionType>{NoxConstantExpr, NoxSinExpr, NoxProductExpr}));
    ASSERT_NE(dc, nullptr);
    ASSERT_EQ(dc->GetNbOfChildren(), 3);
    EXPECT_EQ(dc->GetChild(0), f.Expression(n));
    EXPECT_EQ(dc->GetChild(1), f.Expression(n + 1));
    EXPECT_EQ(dc->GetChild(2), nullptr);
    // acos: the linear term makes its -1 and then refuses the missing derivative.
    NoxExpression *a = Node(NoxAcosExpr, absolute);
    n = f.ExpressionCount();
    EXPECT_EQ(a->Differentiate(x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), n + 8);
}

// ---- Values of the derivatives ----

TEST_F(TrigonometricOperatorTest, Derivatives_EvaluateToTheGradient) {
    const struct {
        NoxExpressionType type;
        double u;
    } cases[] = {{NoxSinExpr, 0.7},   {NoxCosExpr, 0.7},   {NoxTanExpr, 0.7},
                 {NoxAsinExpr, 0.3},  {NoxAcosExpr, 0.3},  {NoxAtanExpr, 1.7},
                 {NoxSinhExpr, 0.7},  {NoxCoshExpr, 0.7},  {NoxTanhExpr, 0.7},
                 {NoxASinhExpr, 1.7}, {NoxACoshExpr, 1.7}, {NoxATanhExpr, 0.3}};
    for (const auto &c : cases) {
        SetReal(x, c.u);
        NoxExpression *node = Node(c.type, x);
        const double g = node->GetGradient()[0];
        EXPECT_NEAR(node->Differentiate(x)->Eval(), g, 1e-14 * std::fabs(g)) << c.type;
        EXPECT_EQ(node->Differentiate(y)->Eval(), 0.0) << c.type;
    }
}

TEST_F(TrigonometricOperatorTest, DerivativeOfAsinAtOne_EvaluatesToZeroThroughTheQuotient) {
    // 1 / sqrt(-1 * 1^2 + 1) divides by an exact zero, which the quotient node gives as
    // 0.0, while the gradient at the same point is infinite.
    SetReal(x, 1.0);
    NoxExpression *node = Node(NoxAsinExpr, x);
    EXPECT_TRUE(SameDouble(node->Differentiate(x)->Eval(), 0.0));
    EXPECT_EQ(node->GetGradient()[0], kInf);
}

TEST_F(TrigonometricOperatorTest, DerivativeOfTanh_ReadsTheNodesOwnValue) {
    SetReal(x, 0.4);
    NoxExpression *node = Node(NoxTanhExpr, x);
    NoxExpression *d = node->Differentiate(x);
    const double th = Tanh(0.4);
    EXPECT_DOUBLE_EQ(d->Eval(), -1.0 * (th * th) + 1.0);
}

// ---- Memory ----

TEST_F(TrigonometricOperatorTest, EvaluationAfterTheFirst_AllocatesNothing) {
    x->SetValue(NoxValue(NoxRealInterval{0.25, 0.5}), nullptr);
    for (const TrigRow &row : kRows) {
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

TEST_F(TrigonometricOperatorTest, DifferentiateWhenMemoryRunsShort_ListsNoNullFactorButTheCosineRule) {
    for (const TrigRow &row : kRows) {
        // The cosine's list-form product keeps a factor that could not be made as null.
        if (row.type == NoxCosExpr)
            continue;
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
