// Quotient, power, root and modulo nodes: real and value evaluation, gradient, Hessian
// and symbolic derivative of every type, the zero divisors and the real root rule, the
// order in which children are read, and what the bodies allocate.
#include <NoxFactory.h>
#include <NoxInterval.h>
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

const NoxExpressionType kServed[] = {NoxQuotientExpr, NoxPowerExpr, NoxRootExpr, NoxModExpr};

class BinaryOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        z = f.CreateVariable();
    }

    // A stub whose evaluations are logged under `id`.
    StubNode *Stub(int id, double real, std::vector<double> gradient = {}, Matrix hessian = {},
                   NoxValue value = NoxValue()) {
        NoxExpression *node = new StubNode(&f, id, &log, real, std::move(gradient),
                                           std::move(hessian), std::move(value));
        return static_cast<StubNode *>(f.AddExpression(node));
    }

    NoxExpression *Node(NoxExpressionType t, NoxExpression *a, NoxExpression *b) {
        return f.CreateBinaryOperator(t, a, b);
    }

    // A node built by hand, so that a child may be absent.
    NoxExpression *HandNode(NoxExpressionType t, NoxExpression *a, NoxExpression *b) {
        NoxExpression *pair[2] = {a, b};
        NoxExpression *node = new NoxBinaryOperator(&f, pair, t);
        return f.AddExpression(node);
    }

    // The real value of the node of type t over two new real constants u and v.
    double RealOf(NoxExpressionType t, double u, double v) {
        return Node(t, f.CreateRealConstant(u), f.CreateRealConstant(v))->Eval();
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
        node->ResetBuffer(1);
        log.clear();
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

    // The expression at position `before + i` of the factory, checked to be of type t
    // with the given children.
    NoxExpression *Created(int i, NoxExpressionType t, std::vector<NoxExpression *> children) {
        NoxExpression *e = f.Expression(before + i);
        EXPECT_EQ(e->GetType(), t) << " node " << i;
        EXPECT_EQ(e->GetNbOfChildren(), static_cast<int>(children.size())) << " node " << i;
        for (int c = 0; c < static_cast<int>(children.size()); ++c)
            EXPECT_EQ(e->GetChild(c), children[c]) << " node " << i << " child " << c;
        return e;
    }

    // The constant at position `before + i`, checked to hold the value v of type `kind`.
    NoxExpression *CreatedConstant(int i, NoxValueType kind, double v) {
        NoxExpression *e = Created(i, NoxConstantExpr, {});
        EXPECT_EQ(e->GetExprValue().GetType(), kind) << " node " << i;
        EXPECT_SAME_REAL(e->GetExprValue().GetAsReal(), v);
        return e;
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    NoxVariable *z = nullptr;
    std::vector<int> log;
    int before = 0;
};

} // namespace

// ---- Real evaluation: quotient ----

TEST_F(BinaryOperatorTest, QuotientEval_DividesChild0ByChild1) {
    volatile double u = 1.0, v = 3.0;
    EXPECT_SAME_REAL(RealOf(NoxQuotientExpr, u, v), u / v);
    EXPECT_SAME_REAL(RealOf(NoxQuotientExpr, -0.0, v), -0.0 / v);
}

TEST_F(BinaryOperatorTest, QuotientEval_ByAnExactZeroIsZeroWithoutReadingTheDividend) {
    StubNode *u = Stub(0, 1.0);
    EXPECT_SAME_REAL(Node(NoxQuotientExpr, u, Stub(1, 0.0))->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxQuotientExpr, u, Stub(1, -0.0))->Eval(), 0.0);
    EXPECT_EQ(u->realCalls, 0);
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
    EXPECT_SAME_REAL(RealOf(NoxQuotientExpr, 0.0, 1e-320), 0.0);
}

TEST_F(BinaryOperatorTest, QuotientAndModEval_ReadTheDivisorFirst) {
    for (NoxExpressionType t : {NoxQuotientExpr, NoxModExpr}) {
        log.clear();
        Node(t, Stub(0, 7.0), Stub(1, 2.0))->Eval();
        EXPECT_EQ(log, (std::vector<int>{1, 0}));
    }
    for (NoxExpressionType t : {NoxPowerExpr, NoxRootExpr}) {
        log.clear();
        Node(t, Stub(0, 7.0), Stub(1, 2.0))->Eval();
        EXPECT_EQ(log, (std::vector<int>{0, 1}));
    }
}

// ---- Real evaluation: power ----

TEST_F(BinaryOperatorTest, PowerEval_IsTheStandardPowerUnguarded) {
    volatile double u = 1.7, v = 2.3, w = -2.0, k = 3.0, h = 0.5;
    EXPECT_SAME_REAL(RealOf(NoxPowerExpr, u, v), std::pow(u, v));
    EXPECT_SAME_REAL(RealOf(NoxPowerExpr, w, k), std::pow(w, k));
    EXPECT_TRUE(std::isnan(RealOf(NoxPowerExpr, w, h)));
    EXPECT_SAME_REAL(RealOf(NoxPowerExpr, 0.0, -1.0), HUGE_VAL);
    SetReal(x, u);
    EXPECT_SAME_REAL(f.CreatePower(x, 3)->Eval(), std::pow(u, k));
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

// ---- Real evaluation: root ----

TEST_F(BinaryOperatorTest, RootEval_OddRootOfANegativeRadicandKeepsItsSign) {
    volatile double u = 8.0, three = 3.0;
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 3.0), -std::pow(u, 1.0 / three));
    EXPECT_EQ(RealOf(NoxRootExpr, -8.0, 3.0), -2.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, -3.0), -std::pow(u, 1.0 / -three));
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -1.0, 1.0), -1.0);
    SetReal(x, -27.0);
    EXPECT_SAME_REAL(f.CreateRoot(x, 3)->Eval(), -std::pow(27.0, 1.0 / three));
}

TEST_F(BinaryOperatorTest, RootEval_PositiveRadicandTakesThePowerOfTheInverseIndex) {
    volatile double u = 8.0, v = 3.0, w = 2.0, h = 0.5, n = -3.0;
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, u, v), std::pow(u, 1.0 / v));
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, w, h), std::pow(w, 1.0 / h));
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, u, n), std::pow(u, 1.0 / n));
    EXPECT_TRUE(std::isnan(RealOf(NoxRootExpr, u, kNaN)));
}

TEST_F(BinaryOperatorTest, RootEval_GivesZeroOutsideTheRealRoots) {
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 2.0), 0.0);              // even index
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 3.0000000000001), 0.0);  // off 3 by 1e-13
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 3.0 + 2e-14), 0.0);      // off 3 by 2e-14
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 2.5), 0.0);              // rounds to 3
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, 1e300), 0.0);            // no int index
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, kNaN), 0.0);             // no int index
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, 0.0, 3.0), 0.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -0.0, 3.0), 0.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, 0.0, 2.0), 0.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, 0.0, 0.5), 0.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, 27.0, 0.0), 0.0);              // index 0
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, 27.0, 1e-15), 0.0);            // below 1e-14
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -27.0, -1e-15), 0.0);
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

TEST_F(BinaryOperatorTest, RootEval_AnIndexWithin1e14OfAnOddIntegerCounts) {
    volatile double u = 8.0, v = 3.0 + 4e-15;
    ASSERT_NE(v, 3.0);
    EXPECT_SAME_REAL(RealOf(NoxRootExpr, -8.0, v), -std::pow(u, 1.0 / v));
}

// The tolerance is the global NoxAbsPrecision as it stands at the call; set here to
// binary fractions so that the comparisons meet it exactly.
TEST_F(BinaryOperatorTest, RootEval_ComparesWithTheToleranceStrictly) {
    const double saved = NoxAbsPrecision;
    NoxAbsPrecision = 0x1p-40;
    volatile double u = 1.0, v = 3.0 + 0x1p-40, w = 0x1p-40;
    const double atTolerance = RealOf(NoxRootExpr, -8.0, v);
    const double indexAtTolerance = RealOf(NoxRootExpr, u, w);
    const double indexBelow = RealOf(NoxRootExpr, u, 0x1p-41);
    NoxAbsPrecision = saved;
    EXPECT_SAME_REAL(atTolerance, 0.0);                            // |k - v| = eps
    EXPECT_SAME_REAL(indexAtTolerance, std::pow(u, 1.0 / w));      // eps = |v|
    EXPECT_SAME_REAL(indexBelow, 0.0);                             // eps > |v|
}

// ---- Real evaluation: modulo ----

TEST_F(BinaryOperatorTest, ModEval_IsTheRemainderWithTheSignOfTheDividend) {
    volatile double u = 5.5, v = 2.0, w = -5.5, m = -2.0;
    EXPECT_SAME_REAL(RealOf(NoxModExpr, u, v), std::fmod(u, v));
    EXPECT_SAME_REAL(RealOf(NoxModExpr, w, v), std::fmod(w, v));
    EXPECT_SAME_REAL(RealOf(NoxModExpr, u, m), std::fmod(u, m));
    EXPECT_SAME_REAL(RealOf(NoxModExpr, w, v), -1.5);
}

TEST_F(BinaryOperatorTest, ModEval_ByAnExactZeroIsZeroWithoutReadingTheDividend) {
    StubNode *u = Stub(0, 5.0);
    EXPECT_SAME_REAL(Node(NoxModExpr, u, Stub(1, 0.0))->Eval(), 0.0);
    EXPECT_SAME_REAL(Node(NoxModExpr, u, Stub(1, -0.0))->Eval(), 0.0);
    EXPECT_EQ(u->realCalls, 0);
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

// A child left out of a node built by hand reads as 0.0.
TEST_F(BinaryOperatorTest, RealEval_ReadsAnAbsentChildAsZero) {
    Set(2.0, 0.5, 0.0);
    EXPECT_SAME_REAL(HandNode(NoxQuotientExpr, x, nullptr)->Eval(), 0.0);
    EXPECT_SAME_REAL(HandNode(NoxQuotientExpr, nullptr, x)->Eval(), 0.0);
    EXPECT_SAME_REAL(HandNode(NoxPowerExpr, x, nullptr)->Eval(), 1.0);
    EXPECT_SAME_REAL(HandNode(NoxRootExpr, nullptr, x)->Eval(), 0.0);
    EXPECT_SAME_REAL(HandNode(NoxModExpr, x, nullptr)->Eval(), 0.0);
}

// ---- Value evaluation ----

TEST_F(BinaryOperatorTest, ValueEval_AppliesTheValueFunctionToChild0AndChild1) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    const NoxValue b(NoxRealInterval{4.0, 8.0});
    const NoxValue n(3);
    NoxEnvironment env;
    const struct {
        NoxExpressionType type;
        NoxValue right;
        NoxValue expected;
    } rows[] = {{NoxQuotientExpr, b, NoxDiv(env, a, b)},
                {NoxPowerExpr, n, NoxPow(env, a, n)},
                {NoxRootExpr, n, NoxRoot(env, a, n, nullptr)},
                {NoxModExpr, b, NoxMod(env, a, b)}};
    ASSERT_EQ(env.GetError(), 0);
    for (const auto &row : rows) {
        EXPECT_EQ(row.expected.GetType(), NoxRealIntervalType);
        x->SetValue(a, nullptr);
        y->SetValue(row.right, nullptr);
        ExpectSameValue(Node(row.type, x, y)->GetValue(), row.expected);
        EXPECT_EQ(f.GetEnvironment().GetError(), 0);
    }
}

TEST_F(BinaryOperatorTest, ValueEval_RootCoversTheWholeLine) {
    const NoxValue a(NoxRealInterval{-8.0, 27.0});
    const NoxValue n(3);
    NoxEnvironment env;
    const NoxValue expected = NoxRoot(env, a, n, nullptr);
    x->SetValue(a, nullptr);
    ExpectSameValue(f.CreateRoot(x, 3)->GetValue(), expected);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
}

TEST_F(BinaryOperatorTest, ValueEval_FetchesChild1BeforeChild0) {
    for (NoxExpressionType t : kServed) {
        log.clear();
        Node(t, Stub(0, 1.0, {}, {}, NoxValue(9.0)), Stub(1, 1.0, {}, {}, NoxValue(2)))
            ->GetValue();
        EXPECT_EQ(log, (std::vector<int>{1, 0})) << " type " << t;
    }
}

TEST_F(BinaryOperatorTest, ValueEval_ReportsThroughTheNodesEnvironment) {
    const NoxValue a(7);
    const NoxValue zero(0);
    NoxEnvironment env;
    const NoxValue quotient = NoxDiv(env, a, zero);
    ASSERT_NE(env.GetError(), 0);
    x->SetValue(a, nullptr);
    y->SetValue(zero, nullptr);
    ExpectSameValue(f.CreateQuotient(x, y)->GetValue(), quotient);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
    f.GetEnvironment().ClearError();
    env.ClearError();
    const NoxValue remainder = NoxMod(env, a, zero);
    ExpectSameValue(f.CreateMod(x, y)->GetValue(), remainder);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
}

// A child left out of a node built by hand reads as an undefined value.
TEST_F(BinaryOperatorTest, ValueEval_ReadsAnAbsentChildAsAnUndefinedValue) {
    const NoxValue a(NoxRealInterval{1.0, 2.0});
    x->SetValue(a, nullptr);
    NoxEnvironment env;
    const NoxValue expected = NoxDiv(env, a, NoxValue());
    ExpectSameValue(HandNode(NoxQuotientExpr, x, nullptr)->GetValue(), expected);
    EXPECT_EQ(f.GetEnvironment().GetError(), env.GetError());
}

// ---- Gradient: quotient ----

TEST_F(BinaryOperatorTest, QuotientGradient_IsTheQuotientRule) {
    volatile double u = 1.3, v = -2.9, gu0 = 0.5, gu1 = -0.0, gu2 = 2.0, gv0 = 0.25,
                    gv1 = -0.0, gv2 = -7.0;
    NoxExpression *node =
        Node(NoxQuotientExpr, Stub(0, u, {gu0, gu1, gu2}), Stub(1, v, {gv0, gv1, gv2}));
    ExpectSameGradient(GradientOverSentinel(node), {(v * gu0 - u * gv0) / (v * v),
                                                    (v * gu1 - u * gv1) / (v * v),
                                                    (v * gu2 - u * gv2) / (v * v)});
}

// With a negative divisor an entry of a variable that occurs nowhere is -0.0.
TEST_F(BinaryOperatorTest, QuotientGradient_OfXOverYWithANegativeDivisor) {
    volatile double a = 1.0, b = -2.0, one = 1.0, zero = 0.0;
    Set(a, b, 5.0);
    const std::vector<double> g = Gradient(f.CreateQuotient(x, y));
    ExpectSameGradient(g, {(b * one - a * zero) / (b * b), (b * zero - a * one) / (b * b),
                           (b * zero - a * zero) / (b * b)});
    EXPECT_TRUE(std::signbit(g[2]));
}

TEST_F(BinaryOperatorTest, QuotientGradient_ByAnExactZeroIsAllZeros) {
    StubNode *u = Stub(0, 1.0, {1.0, 2.0, 3.0});
    StubNode *v = Stub(1, -0.0, {4.0, 5.0, 6.0});
    NoxExpression *node = Node(NoxQuotientExpr, u, v);
    ExpectSameGradient(GradientOverSentinel(node), {0.0, 0.0, 0.0});
    EXPECT_EQ(log, (std::vector<int>{1}));
    EXPECT_EQ(u->gradientCalls, 0);
    EXPECT_EQ(v->gradientCalls, 0);
}

TEST_F(BinaryOperatorTest, OneOverZero_EvaluatesToZeroWithAZeroGradient) {
    Set(0.0, 0.0, 0.0);
    NoxExpression *node = f.CreateQuotient(f.CreateRealConstant(1.0), x);
    EXPECT_SAME_REAL(node->Eval(), 0.0);
    ExpectSameGradient(GradientOverSentinel(node), {0.0, 0.0, 0.0});
}

// ---- Gradient: power ----

TEST_F(BinaryOperatorTest, PowerGradient_DifferentiatesTheBaseAndTheExponent) {
    volatile double u = 1.7, v = 2.3, gu0 = 1.0, gu1 = 0.5, gu2 = -0.0, gv0 = 0.0, gv1 = 2.0,
                    gv2 = -0.0;
    NoxExpression *node =
        Node(NoxPowerExpr, Stub(0, u, {gu0, gu1, gu2}), Stub(1, v, {gv0, gv1, gv2}));
    const double p = std::pow(u, v), l = std::log(u), r = v / u;
    ExpectSameGradient(GradientOverSentinel(node), {(l * gv0 + r * gu0) * p,
                                                    (l * gv1 + r * gu1) * p,
                                                    (l * gv2 + r * gu2) * p});
}

TEST_F(BinaryOperatorTest, PowerGradient_OfAnIntegerPower) {
    volatile double a = 1.5, k = 3.0, one = 1.0, zero = 0.0;
    SetReal(x, a);
    const double p = std::pow(a, k), l = std::log(a), r = k / a;
    ExpectSameGradient(Gradient(f.CreatePower(x, 3)),
                       {(l * zero + r * one) * p, (l * zero + r * zero) * p,
                        (l * zero + r * zero) * p});
}

TEST_F(BinaryOperatorTest, PowerGradient_WithABaseOfZeroIsAllZeros) {
    StubNode *v = Stub(1, 2.0, {1.0, 1.0, 1.0});
    NoxExpression *node = Node(NoxPowerExpr, Stub(0, -0.0, {1.0, 2.0, 3.0}), v);
    ExpectSameGradient(GradientOverSentinel(node), {0.0, 0.0, 0.0});
    EXPECT_EQ(log, (std::vector<int>{0}));
    EXPECT_EQ(v->gradientCalls, 0);
}

// The logarithm of a negative base is NaN, and NaN times a zero entry is NaN: every entry
// is NaN, whether the exponent varies or not.
TEST_F(BinaryOperatorTest, PowerGradient_WithANegativeBaseIsNaN) {
    Set(-2.0, 3.0, 0.0);
    for (double g : Gradient(f.CreateBinaryOperator(NoxPowerExpr, x, y)))
        EXPECT_TRUE(std::isnan(g));
    for (double g : Gradient(f.CreatePower(x, 2)))
        EXPECT_TRUE(std::isnan(g));
}

// ---- Gradient: root ----

TEST_F(BinaryOperatorTest, RootGradient_TreatsTheIndexAsAConstant) {
    volatile double u = 4.12, v = 4.47, gu0 = 1.0, gu1 = -0.5, gu2 = 0.0;
    StubNode *n = Stub(1, v, {9.0, 9.0, 9.0});
    NoxExpression *node = Node(NoxRootExpr, Stub(0, u, {gu0, gu1, gu2}), n);
    const double root = std::pow(u, 1.0 / v), fct = root / (v * u);
    ASSERT_NE(fct, root / v / u); // the order of the division shows
    ExpectSameGradient(GradientOverSentinel(node), {fct * gu0, fct * gu1, fct * gu2});
    EXPECT_EQ(n->gradientCalls, 0);
    EXPECT_EQ(log, (std::vector<int>{0, 1}));
}

TEST_F(BinaryOperatorTest, RootGradient_OfARootOfANegativeRadicand) {
    volatile double u = -8.0, v = 3.0, one = 1.0, zero = 0.0;
    SetReal(x, u);
    const double fct = -std::pow(-u, 1.0 / v) / (v * u);
    ExpectSameGradient(Gradient(f.CreateRoot(x, 3)), {fct * one, fct * zero, fct * zero});
}

// A negative factor makes the entries of the variables that occur nowhere -0.0.
TEST_F(BinaryOperatorTest, RootGradient_KeepsTheSignOfANegativeFactor) {
    volatile double u = 8.0, v = -3.0, w = -8.0, even = 2.0, one = 1.0, zero = 0.0;
    SetReal(x, u);
    double fct = std::pow(u, 1.0 / v) / (v * u);
    std::vector<double> g = Gradient(f.CreateRoot(x, -3));
    ExpectSameGradient(g, {fct * one, fct * zero, fct * zero});
    EXPECT_TRUE(std::signbit(g[1]));
    SetReal(x, w);
    fct = 0.0 / (even * w);
    g = Gradient(f.CreateRoot(x, 2));
    ExpectSameGradient(g, {fct * one, fct * zero, fct * zero});
    EXPECT_TRUE(std::signbit(g[0]));
}

TEST_F(BinaryOperatorTest, RootGradient_IsAllZerosWhenIndexTimesRadicandIsZero) {
    Set(0.0, 3.0, 0.0);
    ExpectSameGradient(GradientOverSentinel(f.CreateBinaryOperator(NoxRootExpr, x, y)),
                       {0.0, 0.0, 0.0});
    Set(5.0, 0.0, 0.0);
    ExpectSameGradient(GradientOverSentinel(f.CreateBinaryOperator(NoxRootExpr, x, y)),
                       {0.0, 0.0, 0.0});
    Set(1e-200, 1e-200, 0.0);
    ExpectSameGradient(GradientOverSentinel(f.CreateBinaryOperator(NoxRootExpr, x, y)),
                       {0.0, 0.0, 0.0});
}

// ---- Gradient: modulo ----

TEST_F(BinaryOperatorTest, ModGradient_IsNeverWritten) {
    StubNode *u = Stub(0, 5.0, {1.0, 2.0, 3.0});
    StubNode *v = Stub(1, 2.0, {4.0, 5.0, 6.0});
    NoxExpression *node = Node(NoxModExpr, u, v);
    ExpectSameGradient(Gradient(node), {0.0, 0.0, 0.0});
    ExpectSameGradient(GradientOverSentinel(node), {kSentinel, kSentinel, kSentinel});
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(u->gradientCalls, 0);
    EXPECT_EQ(v->gradientCalls, 0);
}

// A child left out of a node built by hand reads as 0.0 with a zero gradient.
TEST_F(BinaryOperatorTest, Gradient_ReadsAnAbsentChildAsZero) {
    Set(2.0, 0.5, 0.0);
    ExpectSameGradient(GradientOverSentinel(HandNode(NoxQuotientExpr, x, nullptr)),
                       {0.0, 0.0, 0.0});
    volatile double v = 0.5, one = 1.0;
    ExpectSameGradient(GradientOverSentinel(HandNode(NoxQuotientExpr, nullptr, y)),
                       {0.0, (v * 0.0 - 0.0 * one) / (v * v), 0.0});
}

// ---- Hessian ----

TEST_F(BinaryOperatorTest, HessianOfXOverY_IsTheZeroHessianOfX) {
    Set(2.0, 3.0, 0.0);
    ExpectSameMatrix(HessianOverSentinel(f.CreateQuotient(x, y)),
                     Matrix(3, std::vector<double>(3, 0.0)));
}

TEST_F(BinaryOperatorTest, Hessian_IsChild0sForEveryServedType) {
    const Matrix h0 = {{1.0, 2.0, -0.0}, {2.0, 5.0, 6.0}, {-0.0, 6.0, kNaN}};
    const Matrix h1 = {{9.0, 9.0, 9.0}, {9.0, 9.0, 9.0}, {9.0, 9.0, 9.0}};
    for (NoxExpressionType t : kServed) {
        StubNode *b = Stub(1, 2.0, {}, h1);
        ExpectSameMatrix(HessianOverSentinel(Node(t, Stub(0, 4.0, {}, h0), b)), h0);
        EXPECT_EQ(b->hessianCalls, 1);
    }
}

// ---- Symbolic derivative ----

TEST_F(BinaryOperatorTest, QuotientDerivative_BuildsTheQuotientRule) {
    NoxExpression *node = f.CreateQuotient(x, y);
    before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 9);
    NoxExpression *a = CreatedConstant(0, NoxRealType, 1.0);
    NoxExpression *b = CreatedConstant(1, NoxRealType, 0.0);
    NoxExpression *t1 = Created(2, NoxProductExpr, {a, y});
    NoxExpression *m = CreatedConstant(3, NoxRealType, -1.0);
    NoxExpression *t2 = Created(4, NoxProductExpr, {m, x, b});
    NoxExpression *num = Created(5, NoxSumExpr, {t1, t2});
    NoxExpression *two = CreatedConstant(6, NoxIntegerType, 2.0);
    NoxExpression *den = Created(7, NoxPowerExpr, {y, two});
    EXPECT_EQ(d, Created(8, NoxQuotientExpr, {num, den}));
}

TEST_F(BinaryOperatorTest, QuotientDerivative_EvaluatesToTheGradientEntries) {
    Set(1.25, -0.75, 3.5);
    NoxExpression *node = f.CreateQuotient(f.CreateProduct(x, z), f.CreateSum(y, z));
    NoxVariable *vars[3] = {x, y, z};
    for (int k = 0; k < 3; ++k)
        EXPECT_DOUBLE_EQ(node->Differentiate(vars[k])->Eval(), node->GetGradient()[k]);
}

TEST_F(BinaryOperatorTest, PowerDerivative_BuildsTheRuleForAVariableExponent) {
    NoxExpression *node = f.CreateBinaryOperator(NoxPowerExpr, x, y);
    before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 8);
    NoxExpression *a = CreatedConstant(0, NoxRealType, 1.0);
    NoxExpression *b = CreatedConstant(1, NoxRealType, 0.0);
    NoxExpression *l = Created(2, NoxLnExpr, {x});
    NoxExpression *t1 = Created(3, NoxProductExpr, {b, l});
    NoxExpression *t2 = Created(4, NoxProductExpr, {y, a});
    NoxExpression *t3 = Created(5, NoxQuotientExpr, {t2, x});
    NoxExpression *s = Created(6, NoxSumExpr, {t1, t3});
    EXPECT_EQ(d, Created(7, NoxProductExpr, {node, s}));
}

TEST_F(BinaryOperatorTest, RootDerivative_BuildsRootTimesDerivativeOverIndexTimesRadicand) {
    NoxExpression *node = f.CreateRoot(x, 3);
    NoxExpression *three = node->GetChild(1);
    before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 4);
    NoxExpression *p = Created(0, NoxProductExpr, {x, three});
    NoxExpression *a = CreatedConstant(1, NoxRealType, 1.0);
    NoxExpression *q = Created(2, NoxQuotientExpr, {a, p});
    EXPECT_EQ(d, Created(3, NoxProductExpr, {node, q}));
}

TEST_F(BinaryOperatorTest, RootDerivative_EvaluatesToTheGradientEntries) {
    Set(1.25, -0.75, 3.5);
    NoxExpression *node = f.CreateRoot(f.CreateProduct(x, z), 3);
    NoxVariable *vars[3] = {x, y, z};
    for (int k = 0; k < 3; ++k)
        EXPECT_DOUBLE_EQ(node->Differentiate(vars[k])->Eval(), node->GetGradient()[k]);
}

TEST_F(BinaryOperatorTest, ModDerivative_IsNullAndBuildsNothing) {
    NoxExpression *node = f.CreateMod(x, y);
    before = f.ExpressionCount();
    EXPECT_EQ(node->Differentiate(x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(BinaryOperatorTest, DerivativeForANullVariable_IsTheNodeItself) {
    for (NoxExpressionType t : kServed) {
        NoxExpression *node = Node(t, x, y);
        before = f.ExpressionCount();
        EXPECT_EQ(node->Differentiate(nullptr), node);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
}

// A child without a derivative makes the creators that receive it give null; the other
// nodes are still built, in the same order.
TEST_F(BinaryOperatorTest, QuotientDerivative_OfAChildWithoutDerivativeIsNull) {
    NoxExpression *mod = f.CreateMod(x, y);
    NoxExpression *node = f.CreateQuotient(mod, y);
    before = f.ExpressionCount();
    EXPECT_EQ(node->Differentiate(x), nullptr);
    ASSERT_EQ(f.ExpressionCount(), before + 5);
    NoxExpression *b = CreatedConstant(0, NoxRealType, 0.0);
    NoxExpression *m = CreatedConstant(1, NoxRealType, -1.0);
    Created(2, NoxProductExpr, {m, mod, b});
    NoxExpression *two = CreatedConstant(3, NoxIntegerType, 2.0);
    Created(4, NoxPowerExpr, {y, two});
}

// The list form of the product takes the null derivative of the divisor as a factor, as
// the rule lists it; evaluation then skips that factor.
TEST_F(BinaryOperatorTest, QuotientDerivative_OfADivisorWithoutDerivativeHoldsANullFactor) {
    NoxExpression *mod = f.CreateMod(x, y);
    NoxExpression *node = f.CreateQuotient(x, mod);
    before = f.ExpressionCount();
    NoxExpression *d = node->Differentiate(x);
    ASSERT_EQ(f.ExpressionCount(), before + 8);
    NoxExpression *a = CreatedConstant(0, NoxRealType, 1.0);
    NoxExpression *t1 = Created(1, NoxProductExpr, {a, mod});
    NoxExpression *m = CreatedConstant(2, NoxRealType, -1.0);
    NoxExpression *t2 = Created(3, NoxProductExpr, {m, x, nullptr});
    NoxExpression *num = Created(4, NoxSumExpr, {t1, t2});
    NoxExpression *two = CreatedConstant(5, NoxIntegerType, 2.0);
    NoxExpression *den = Created(6, NoxPowerExpr, {mod, two});
    EXPECT_EQ(d, Created(7, NoxQuotientExpr, {num, den}));
}

// ---- Allocation ----

TEST_F(BinaryOperatorTest, Evaluation_AllocatesNothing) {
    Set(1.5, 2.5, 0.5);
    std::vector<NoxExpression *> nodes;
    for (NoxExpressionType t : kServed)
        nodes.push_back(Node(t, x, y));
    for (NoxExpression *node : nodes) {
        node->Eval();
        node->GetValue();
        node->GetGradient();
        node->ResetBuffer(0);
    }
    const long allocations = nox_test::AllocationCount();
    for (NoxExpression *node : nodes) {
        node->Eval();
        node->GetValue();
        node->GetGradient();
    }
    EXPECT_EQ(nox_test::AllocationCount() - allocations, 0);
}
