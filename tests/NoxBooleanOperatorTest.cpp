// Logical connective and comparison nodes: value evaluation through the four-valued truth
// tables, child evaluation order, and the slots in which they take no part (real value,
// gradient, derivative) or pass the first child through (Hessian).
#include <NoxFactory.h>
#include <NoxOperators.h>
#include <NoxValueFunctions.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

constexpr double kSentinel = -77.5;
constexpr NoxBoolean kCodes[] = {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil};

// The truth tables of the connectives, first operand by row, second by column, codes
// 0 false, 1 true, 2 any, 3 nil.
constexpr int kOr[4][4] = {{0, 1, 2, 3}, {1, 1, 1, 3}, {2, 1, 2, 3}, {3, 3, 3, 3}};
constexpr int kAnd[4][4] = {{0, 0, 0, 3}, {0, 1, 2, 3}, {0, 2, 2, 3}, {3, 3, 3, 3}};
constexpr int kEqual[4][4] = {{1, 0, 2, 3}, {0, 1, 2, 3}, {2, 2, 2, 3}, {3, 3, 3, 3}};
constexpr int kNotEqual[4][4] = {{0, 1, 2, 3}, {1, 0, 2, 3}, {2, 2, 2, 3}, {3, 3, 3, 3}};
constexpr int kImplication[4][4] = {{1, 1, 1, 3}, {0, 1, 2, 3}, {2, 1, 2, 3}, {3, 3, 3, 3}};
constexpr int kNot[4] = {1, 0, 2, 3};

using Creator = NoxExpression *(NoxFactory::*)(NoxExpression *, NoxExpression *);

struct Connective {
    const char *name;
    Creator create;
    NoxExpressionType type;
    const int (*table)[4];
};

const Connective kConnectives[] = {
    {"or", &NoxFactory::CreateOr, NoxOrExpr, kOr},
    {"and", &NoxFactory::CreateAnd, NoxAndExpr, kAnd},
    {"equal", &NoxFactory::CreateEqual, NoxEqualExpr, kEqual},
    {"not-equal", &NoxFactory::CreateNotEqual, NoxNotEqualExpr, kNotEqual},
    {"implication", &NoxFactory::CreateImplication, NoxImplicationExpr, kImplication}};

// A black box that appends its name to a shared log on every value evaluation and gives
// a fixed truth value.
class LoggingBox : public NoxBlackBox {
public:
    LoggingBox(std::vector<std::string> &sink, std::string label, NoxBoolean truth)
        : log(sink), name(std::move(label)), value(truth) {}
    double Eval() override { return 1.0; }
    void Eval(NoxValue &result) override {
        log.push_back(name);
        result = NoxValue(value);
    }

private:
    std::vector<std::string> &log;
    std::string name;
    NoxBoolean value;
};

class BooleanOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        y = f.CreateVariable();
        SetReal(x, 0.5);
        SetReal(y, 1.5);
        child = f.Box(childBox, {x, y});
    }

    NoxExpression *Truth(NoxBoolean b) { return f.CreateConstant(NoxValue(b)); }

    // A black-box node without arguments that evaluates through `box`.
    NoxExpression *Leaf(LoggingBox &box) { return f.DeclareBlackBox(&box, 0, nullptr); }

    // Every two-child node over `first` and `second`, then the negation of `first`.
    std::vector<NoxExpression *> EveryType(NoxExpression *first, NoxExpression *second) {
        std::vector<NoxExpression *> nodes;
        for (const Connective &c : kConnectives)
            nodes.push_back((f.*c.create)(first, second));
        nodes.push_back(f.CreateNot(first));
        return nodes;
    }

    TestFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *y = nullptr;
    // A child whose gradient and Hessian are not zero: x * x * y, differenced by the box.
    CountingBox childBox{[](const std::vector<double> &a) { return a[0] * a[0] * a[1]; }};
    NoxExpression *child = nullptr;
};

} // namespace

// ---- Value evaluation ----

TEST_F(BooleanOperatorTest, Negation_FollowsItsTruthTableForEveryCode) {
    for (int i = 0; i < 4; ++i) {
        NoxExpression *node = f.CreateNot(Truth(kCodes[i]));
        ASSERT_NE(node, nullptr);
        const NoxValue &v = node->GetValue();
        EXPECT_EQ(v.GetType(), NoxBooleanType) << i;
        EXPECT_EQ(v.GetAsBoolean(), kNot[i]) << i;
    }
}

TEST_F(BooleanOperatorTest, TwoChildConnectives_FollowTheirTruthTablesForEveryPairOfCodes) {
    for (const Connective &c : kConnectives)
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                NoxExpression *node = (f.*c.create)(Truth(kCodes[i]), Truth(kCodes[j]));
                ASSERT_NE(node, nullptr);
                EXPECT_EQ(node->GetType(), c.type);
                const NoxValue &v = node->GetValue();
                EXPECT_EQ(v.GetType(), NoxBooleanType) << c.name << " " << i << " " << j;
                EXPECT_EQ(v.GetAsBoolean(), c.table[i][j]) << c.name << " " << i << " " << j;
            }
}

TEST_F(BooleanOperatorTest, Implication_ReadsChildZeroAsTheHypothesis) {
    // false implies true is true, true implies false is false: the operands are not
    // swapped although child 1 is read first.
    EXPECT_EQ(f.CreateImplication(Truth(NoxFalse), Truth(NoxTrue))->GetValue().GetAsBoolean(),
              NoxTrue);
    EXPECT_EQ(f.CreateImplication(Truth(NoxTrue), Truth(NoxFalse))->GetValue().GetAsBoolean(),
              NoxFalse);
}

TEST_F(BooleanOperatorTest, NestedConnectives_CombineTheirChildrensValues) {
    // not (true and any) or (false implies nil) = not any or nil = nil; the inner
    // results are computed by the value functions.
    NoxExpression *t = Truth(NoxTrue);
    NoxExpression *a = Truth(NoxBoolean_Any);
    NoxExpression *left = f.CreateNot(f.CreateAnd(t, a));
    NoxExpression *right = f.CreateImplication(Truth(NoxFalse), Truth(NoxBoolean_Nil));
    NoxExpression *root = f.CreateOr(left, right);
    const NoxValue expected = NoxOr(NoxNot(NoxAnd(NoxValue(NoxTrue), NoxValue(NoxBoolean_Any))),
                                    NoxImplication(NoxValue(NoxFalse), NoxValue(NoxBoolean_Nil)));
    EXPECT_EQ(root->GetValue().GetAsBoolean(), expected.GetAsBoolean());
    EXPECT_EQ(left->GetValue().GetAsBoolean(), NoxBoolean_Any);
}

TEST_F(BooleanOperatorTest, OperandsOfOtherKinds_AreLeftToTheValueFunctions) {
    NoxExpression *zero = f.CreateIntegerConstant(0);
    NoxExpression *seven = f.CreateIntegerConstant(7);
    NoxExpression *real = f.CreateRealConstant(2.5);
    f.GetEnvironment().ClearError();
    EXPECT_EQ(f.CreateAnd(zero, seven)->GetValue().GetAsBoolean(),
              NoxAnd(NoxValue(0), NoxValue(7)).GetAsBoolean());
    EXPECT_EQ(f.CreateOr(zero, seven)->GetValue().GetAsBoolean(),
              NoxOr(NoxValue(0), NoxValue(7)).GetAsBoolean());
    EXPECT_EQ(f.CreateNot(real)->GetValue().GetAsBoolean(), NoxNot(NoxValue(2.5)).GetAsBoolean());
    EXPECT_EQ(f.CreateEqual(real, seven)->GetValue().GetAsBoolean(),
              NoxEqual(NoxValue(2.5), NoxValue(7)).GetAsBoolean());
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
}

TEST_F(BooleanOperatorTest, VariablesAsChildren_GiveTheirCurrentValues) {
    x->SetValue(NoxValue(NoxTrue), nullptr);
    y->SetValue(NoxValue(NoxBoolean_Any), nullptr);
    NoxExpression *node = f.CreateAnd(x, y);
    EXPECT_EQ(node->GetValue().GetAsBoolean(), kAnd[1][2]);
    y->SetValue(NoxValue(NoxFalse), node);
    EXPECT_EQ(node->GetValue().GetAsBoolean(), kAnd[1][0]);
}

TEST_F(BooleanOperatorTest, TwoChildConnectives_EvaluateChildOneBeforeChildZero) {
    for (const Connective &c : kConnectives) {
        std::vector<std::string> log;
        LoggingBox first(log, "child0", NoxTrue);
        LoggingBox second(log, "child1", NoxFalse);
        NoxExpression *node = (f.*c.create)(Leaf(first), Leaf(second));
        ASSERT_NE(node, nullptr);
        node->GetValue();
        EXPECT_EQ(log, (std::vector<std::string>{"child1", "child0"})) << c.name;
    }
}

TEST_F(BooleanOperatorTest, ASharedChild_IsEvaluatedOnce) {
    std::vector<std::string> log;
    LoggingBox box(log, "shared", NoxBoolean_Any);
    NoxExpression *shared = Leaf(box);
    EXPECT_EQ(f.CreateEqual(shared, shared)->GetValue().GetAsBoolean(), kEqual[2][2]);
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(BooleanOperatorTest, ValueIsCachedUntilReset) {
    std::vector<std::string> log;
    LoggingBox box(log, "b", NoxTrue);
    NoxExpression *node = f.CreateNot(Leaf(box));
    node->GetValue();
    node->GetValue();
    EXPECT_EQ(log.size(), 1u);
    EXPECT_EQ(node->GetExprValue().GetAsBoolean(), NoxFalse);
}

TEST_F(BooleanOperatorTest, TwoChildTypeWithOneChild_LeavesTheValueUntouched) {
    // Only a node built outside the factory can lack its second child.
    NoxExpression *node = new NoxBooleanOperator(&f, Truth(NoxTrue), NoxOrExpr);
    f.AddExpression(node);
    EXPECT_EQ(node->GetNbOfChildren(), 1);
    EXPECT_EQ(node->GetValue().GetType(), NoxUndefinedType);
}

TEST_F(BooleanOperatorTest, NegationTypeWithTwoChildren_NegatesChildZero) {
    NoxExpression *pair[2] = {Truth(NoxFalse), Truth(NoxFalse)};
    NoxExpression *node = new NoxBooleanOperator(&f, pair, NoxNotExpr);
    f.AddExpression(node);
    EXPECT_EQ(node->GetValue().GetAsBoolean(), NoxTrue);
}

// ---- Real evaluation, gradient, Hessian, derivative ----

TEST_F(BooleanOperatorTest, RealEvaluation_IsZeroEvenWhenTheValueIsTrue) {
    NoxExpression *t = Truth(NoxTrue);
    NoxExpression *u = Truth(NoxFalse);
    NoxExpression *nodes[] = {f.CreateNot(u),         f.CreateOr(t, u),
                              f.CreateAnd(t, t),      f.CreateEqual(u, u),
                              f.CreateNotEqual(t, u), f.CreateImplication(u, t)};
    for (NoxExpression *node : nodes) {
        EXPECT_EQ(node->GetValue().GetAsBoolean(), NoxTrue) << node->GetType();
        EXPECT_EQ(node->Eval(), 0.0) << node->GetType();
    }
}

TEST_F(BooleanOperatorTest, RealEvaluation_DoesNotEvaluateTheChildren) {
    for (NoxExpression *node : EveryType(child, x))
        EXPECT_EQ(node->Eval(), 0.0);
    EXPECT_EQ(childBox.realCalls, 0);
    EXPECT_EQ(childBox.valueCalls, 0);
}

TEST_F(BooleanOperatorTest, Gradient_IsNeverWritten) {
    for (NoxExpression *node : EveryType(child, x)) {
        double *g = const_cast<double *>(node->GetGradient());
        ASSERT_NE(g, nullptr);
        g[0] = kSentinel;
        g[1] = kSentinel;
        node->ResetBuffer(0);
        const double *again = node->GetGradient();
        EXPECT_EQ(again[0], kSentinel) << node->GetType();
        EXPECT_EQ(again[1], kSentinel) << node->GetType();
        EXPECT_EQ(node->EvalFirstDeriv(x), kSentinel);
    }
}

TEST_F(BooleanOperatorTest, Hessian_IsTheFirstChildsForEveryType) {
    double **expected = child->GetHessian();
    ASSERT_NE(expected[0][0], 0.0);
    for (NoxExpression *node : EveryType(child, x)) {
        double **h = node->GetHessian();
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                EXPECT_EQ(h[i][j], expected[i][j]) << node->GetType() << " " << i << j;
    }
}

TEST_F(BooleanOperatorTest, Hessian_EvaluatesEveryChildsHessian) {
    CountingBox secondBox{[](const std::vector<double> &a) { return a[0] * a[1]; }};
    NoxExpression *second = f.Box(secondBox, {x, y});
    NoxExpression *node = f.CreateOr(child, second);
    node->GetHessian();
    EXPECT_GT(secondBox.realCalls, 0);
}

TEST_F(BooleanOperatorTest, Differentiate_IsNullForEveryTypeAndVariable) {
    const std::vector<NoxExpression *> nodes = EveryType(child, x);
    const int before = f.ExpressionCount();
    for (NoxExpression *node : nodes) {
        EXPECT_EQ(node->Differentiate(x), nullptr);
        EXPECT_EQ(node->Differentiate(y), nullptr);
        EXPECT_EQ(node->Differentiate(nullptr), nullptr);
    }
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(BooleanOperatorTest, CreateDerivative_OfABooleanNodeIsNull) {
    NoxVariable *vars[1] = {x};
    EXPECT_EQ(f.CreateDerivative(f.CreateNot(x), 1, vars), nullptr);
}
