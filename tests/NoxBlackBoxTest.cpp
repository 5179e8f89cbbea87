// Black boxes: declaration, evaluation through the box, and forward-difference
// derivatives with the step 1e-4.
#include <NoxBlackBox.h>
#include <NoxFactory.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

const double kStep = 1e-4;

// The function of the two-argument test box, written as the box computes it.
double F(double x, double y) { return x * x * y + 3.0 * y; }

double BoxF(const std::vector<double> &a) { return a[0] * a[0] * a[1] + 3.0 * a[1]; }

// The gradient the node computes at (x, y): one forward difference per argument.
std::array<double, 2> G(double x, double y) {
    return {(F(x + kStep, y) - F(x, y)) / kStep, (F(x, y + kStep) - F(x, y)) / kStep};
}

double Square(const std::vector<double> &a) { return a[0] * a[0]; }

/// A black-box node that shows its protected derivatives.
class ProbeBlackBoxOperator : public NoxBlackBoxOperator {
public:
    using NoxBlackBoxOperator::NoxBlackBoxOperator;
    using NoxBlackBoxOperator::DoEvalFirstDeriv;
    using NoxBlackBoxOperator::DoEvalSecondDeriv;
};

class BlackBoxTest : public ::testing::Test {
protected:
    TestFactory f;
};

} // namespace

// ---- Declaration ----

TEST_F(BlackBoxTest, NewBox_HasNoOperatorAndCopiesShareIt) {
    CountingBox box;
    EXPECT_EQ(box.GetOperator(), nullptr);
    NoxExpression *node = f.Box(box, {});
    CountingBox copy(box);
    EXPECT_EQ(copy.GetOperator(), node);
    CountingBox assigned;
    assigned = box;
    EXPECT_EQ(assigned.GetOperator(), node);
}

TEST_F(BlackBoxTest, DeclareBlackBox_CreatesTheNodeAndGivesItToTheBox) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(2.0);
    CountingBox box;
    NoxExpression *args[2] = {x, c};
    const int before = f.ExpressionCount();
    NoxExpression *node = f.DeclareBlackBox(&box, 2, args);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(f.ExpressionCount(), before + 1);
    EXPECT_EQ(f.LastExpression(), node);
    EXPECT_EQ(node->GetType(), NoxBlackBoxExpr);
    EXPECT_EQ(box.GetOperator(), node);
    EXPECT_EQ(&box.GetOperator()->GetBlackBox(), &box);
    const NoxBlackBoxOperator *constNode = box.GetOperator();
    EXPECT_EQ(&constNode->GetBlackBox(), &box);
    ASSERT_EQ(node->GetNbOfChildren(), 2);
    args[0] = c;
    EXPECT_EQ(node->GetChild(0), x);
    EXPECT_EQ(node->GetChild(1), c);
}

TEST_F(BlackBoxTest, DeclareBlackBoxWithoutABox_GivesNullAndCreatesNothing) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *args[1] = {x};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.DeclareBlackBox(nullptr, 1, args), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

// ---- Evaluation ----

TEST_F(BlackBoxTest, RealAndValueEvaluation_ComeFromTheBox) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, 2.0);
    y->SetValue(NoxValue(NoxRealInterval{1.0, 2.0}), nullptr);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x, y});
    EXPECT_EQ(node->Eval(), 3.5);
    EXPECT_EQ(box.realCalls, 1);
    const NoxValue &v = node->GetValue();
    EXPECT_EQ(v.GetType(), NoxRealType);
    EXPECT_EQ(v.GetRealValue(), 3.5);
    EXPECT_EQ(box.valueCalls, 1);
}

TEST_F(BlackBoxTest, Differentiate_IsNullForEveryVariable) {
    NoxVariable *x = f.CreateVariable();
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->Differentiate(x), nullptr);
    EXPECT_EQ(node->Differentiate(nullptr), nullptr);
    EXPECT_EQ(f.CreateDerivative(node, 1, &x), nullptr);
    EXPECT_EQ(f.CreateDerivative(node, 0, &x), node);
}

// ---- Gradient ----

TEST_F(BlackBoxTest, Gradient_IsAForwardDifferenceWithStepOneTenThousandth) {
    volatile double x0 = 0.7, y0 = 1.3;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, x0);
    SetReal(y, y0);
    CountingBox box(BoxF);
    NoxExpression *node = f.Box(box, {x, y});
    const std::array<double, 2> expected = G(x0, y0);
    const double *g = node->GetGradient();
    EXPECT_EQ(g[0], expected[0]);
    EXPECT_EQ(g[1], expected[1]);
    EXPECT_EQ(node->EvalFirstDeriv(y), expected[1]);
}

TEST_F(BlackBoxTest, Gradient_HasEntriesOnlyForArgumentsThatAreVariables) {
    volatile double x0 = 1.25;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, x0);
    SetReal(y, 2.0);
    CountingBox box(Square);
    NoxExpression *node = f.Box(box, {x, f.CreateSum(x, y)});
    const double *g = node->GetGradient();
    EXPECT_EQ(g[0], ((x0 + kStep) * (x0 + kStep) - x0 * x0) / kStep);
    EXPECT_EQ(g[1], 0.0);
}

TEST_F(BlackBoxTest, Gradient_SkipsConstantsAndMissingArguments) {
    volatile double x0 = -0.5;
    NoxVariable *x = f.CreateVariable();
    SetReal(x, x0);
    CountingBox box([](const std::vector<double> &a) { return a[2] * a[2] + a[0]; });
    NoxExpression *node = f.Box(box, {f.CreateRealConstant(4.0), nullptr, x});
    const double *g = node->GetGradient();
    EXPECT_EQ(g[0], (((x0 + kStep) * (x0 + kStep) + 4.0) - (x0 * x0 + 4.0)) / kStep);
}

TEST_F(BlackBoxTest, Gradient_DifferentiatesFixedVariablesLikeTheOthers) {
    volatile double x0 = 3.0;
    NoxVariable *x = f.CreateVariable();
    SetReal(x, x0);
    x->Fix(1);
    CountingBox box(Square);
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->GetGradient()[0], ((x0 + kStep) * (x0 + kStep) - x0 * x0) / kStep);
}

TEST_F(BlackBoxTest, Gradient_CostsTwoBoxEvaluationsPerVariableArgument) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, 1.0);
    SetReal(y, 2.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x, y});
    node->GetGradient();
    EXPECT_EQ(box.realCalls, 4);
    node->GetGradient();
    EXPECT_EQ(box.realCalls, 4);
}

TEST_F(BlackBoxTest, Gradient_ReusesACachedBaseValueForTheFirstArgumentOnly) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, 1.0);
    SetReal(y, 2.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x, y});
    node->Eval();
    node->GetGradient();
    EXPECT_EQ(box.realCalls, 4);
}

TEST_F(BlackBoxTest, Gradient_RestoresPerturbedArgumentsAsReals) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    x->SetValue(NoxValue(3), nullptr);
    y->SetValue(NoxValue(NoxRealInterval{1.0, 2.0}), nullptr);
    CountingBox box;
    double out[2];
    f.Box(box, {x, y})->EvalGradient(out);
    EXPECT_EQ(x->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(x->GetExprValue().GetRealValue(), 3.0);
    EXPECT_EQ(y->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(y->GetExprValue().GetRealValue(), 1.5);
}

// ---- First and second derivatives ----

TEST_F(BlackBoxTest, FirstAndSecondDerivOfNullVariables_AreZero) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *args[1] = {x};
    NoxExpression *node = new ProbeBlackBoxOperator(&f, 1, args, box);
    f.AddExpression(node);
    ProbeBlackBoxOperator *probe = static_cast<ProbeBlackBoxOperator *>(node);
    box.SetOperator(probe);
    EXPECT_EQ(probe->DoEvalFirstDeriv(nullptr), 0.0);
    EXPECT_EQ(probe->DoEvalSecondDeriv(nullptr, x), 0.0);
    EXPECT_EQ(probe->DoEvalSecondDeriv(x, nullptr), 0.0);
    EXPECT_EQ(box.realCalls, 0);
}

TEST_F(BlackBoxTest, SecondDeriv_DifferencesTheGradientEntryWhenTheOtherVariableMoves) {
    volatile double x0 = 0.7, y0 = 1.3;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, x0);
    SetReal(y, y0);
    CountingBox box(BoxF);
    NoxExpression *args[2] = {x, y};
    NoxExpression *node = new ProbeBlackBoxOperator(&f, 2, args, box);
    f.AddExpression(node);
    ProbeBlackBoxOperator *probe = static_cast<ProbeBlackBoxOperator *>(node);
    box.SetOperator(probe);
    EXPECT_EQ(probe->DoEvalFirstDeriv(x), G(x0, y0)[0]);
    EXPECT_EQ(probe->DoEvalSecondDeriv(x, y), (G(x0, y0 + kStep)[0] - G(x0, y0)[0]) / kStep);
    EXPECT_EQ(y->GetExprValue().GetRealValue(), y0);
}

// ---- Hessian ----

// After each restore the factory's buffers-in-use flag is already lowered (the gradient
// computed at the perturbed point ended with a reset), so the restore refreshes nothing
// and the next pair starts from the gradient cached at the perturbed point.
TEST_F(BlackBoxTest, Hessian_ReusesTheGradientCachedAtThePerturbedPoint) {
    volatile double x0 = 0.7, y0 = 1.3;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    SetReal(x, x0);
    SetReal(y, y0);
    CountingBox box(BoxF);
    NoxExpression *node = f.Box(box, {x, y});
    const std::array<double, 2> base = G(x0, y0);
    const std::array<double, 2> xMoved = G(x0 + kStep, y0);
    const std::array<double, 2> yMoved = G(x0, y0 + kStep);
    double **h = node->GetHessian();
    EXPECT_EQ(h[0][0], (xMoved[0] - base[0]) / kStep);
    EXPECT_EQ(h[0][1], (yMoved[0] - xMoved[0]) / kStep);
    EXPECT_EQ(h[1][0], (xMoved[1] - yMoved[1]) / kStep);
    EXPECT_EQ(h[1][1], (yMoved[1] - xMoved[1]) / kStep);
    EXPECT_EQ(node->EvalSecondDeriv(x, y), (yMoved[0] - xMoved[0]) / kStep);
    // The gradient cache is left as computed at the last perturbed point.
    EXPECT_EQ(node->GetGradient()[1], yMoved[1]);
    EXPECT_EQ(x->GetExprValue().GetRealValue(), x0);
    EXPECT_EQ(y->GetExprValue().GetRealValue(), y0);
}

TEST_F(BlackBoxTest, Hessian_CoversEveryVariableAndRestoresThemAsReals) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *z = f.CreateVariable();
    x->SetValue(NoxValue(2), nullptr);
    const double zReading = z->GetExprValue().GetRealValue();
    CountingBox box(Square);
    NoxExpression *node = f.Box(box, {x});
    double **h = node->GetHessian();
    EXPECT_EQ(h[1][0], 0.0);
    EXPECT_EQ(h[1][1], 0.0);
    EXPECT_EQ(x->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(x->GetExprValue().GetRealValue(), 2.0);
    EXPECT_EQ(z->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(z->GetExprValue().GetRealValue(), zReading);
}

TEST_F(BlackBoxTest, HessianWithoutVariables_WritesNothing) {
    CountingBox box;
    NoxExpression *node = f.Box(box, {f.CreateRealConstant(1.0)});
    EXPECT_NE(node->GetHessian(), nullptr);
    double r0[1] = {9.0};
    double *out[1] = {r0};
    node->EvalHessian(out);
    EXPECT_EQ(r0[0], 9.0);
    EXPECT_EQ(box.realCalls, 0);
}
