// Expression nodes: caches and their invalidation, the operator base, constants,
// variables and equations.
#include <NoxExpression.h>
#include <NoxFactory.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class ExpressionTest : public ::testing::Test {
protected:
    TestFactory f;
};

/// An operator node that shows the Hessian-table helpers and counts destructions.
class ProbeOperator : public NoxOperator {
public:
    ProbeOperator(NoxFactory *owner, int n, NoxExpression *const *childArray)
        : NoxOperator(owner, n, childArray) {
        type = NoxSumExpr;
    }
    NoxExpression *Differentiate(NoxVariable *) override { return nullptr; }

    using NoxOperator::CopyHessianTable;
    using NoxOperator::FiniHessianTable;
    using NoxOperator::InitHessianTable;

protected:
    void DoEval(NoxValue &) override {}
    double DoEval() override { return 0.0; }
    void DoEvalGradient(double *) override {}
    void DoEvalHessian(double **) override {}
};

ProbeOperator *AddProbe(TestFactory &f, std::vector<NoxExpression *> children) {
    NoxExpression *node =
        new ProbeOperator(&f, static_cast<int>(children.size()), children.data());
    return static_cast<ProbeOperator *>(f.AddExpression(node));
}

} // namespace

// ---- Caches of the real value and the value ----

TEST_F(ExpressionTest, Eval_TwiceWithoutResetEvaluatesOnce) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 2.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->Eval(), 2.0);
    EXPECT_EQ(node->Eval(), 2.0);
    EXPECT_EQ(box.realCalls, 1);
}

TEST_F(ExpressionTest, GetValue_TwiceWithoutResetEvaluatesOnceAndCopiesOut) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 4.5);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->GetValue().GetRealValue(), 4.5);
    NoxValue out(NoxIntegerType);
    node->Eval(out);
    EXPECT_EQ(out.GetType(), NoxRealType);
    EXPECT_EQ(out.GetRealValue(), 4.5);
    EXPECT_EQ(box.valueCalls, 1);
    EXPECT_EQ(box.realCalls, 0);
}

TEST_F(ExpressionTest, RealAndValueCachesAreFilledIndependently) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    node->GetValue();
    node->Eval();
    node->GetValue();
    node->Eval();
    EXPECT_EQ(box.valueCalls, 1);
    EXPECT_EQ(box.realCalls, 1);
}

TEST_F(ExpressionTest, GetValue_StoresTheFreshValueAsTheExpressionValue) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 3.25);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->GetExprValue().GetType(), NoxUndefinedType);
    node->GetValue();
    EXPECT_EQ(node->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(node->GetExprValue().GetRealValue(), 3.25);
}

TEST_F(ExpressionTest, SetExprValue_OfAnOperatorIsReadBackButFeedsNoEvaluation) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    node->SetExprValue(NoxValue(9));
    EXPECT_EQ(node->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(node->GetExprValue().GetRealValue(), 9.0);
    EXPECT_EQ(node->GetValue().GetRealValue(), 1.0);
}

// ---- Shared sub-expressions and invalidation ----

TEST_F(ExpressionTest, SharedSubExpression_IsComputedOncePerCacheGeneration) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox inner, outer1, outer2;
    NoxExpression *shared = f.Box(inner, {x});
    NoxExpression *a = f.Box(outer1, {shared});
    NoxExpression *b = f.Box(outer2, {shared, shared});
    EXPECT_EQ(a->Eval(), 1.0);
    EXPECT_EQ(b->Eval(), 2.0);
    EXPECT_EQ(inner.realCalls, 1);

    SetReal(x, 5.0);
    EXPECT_EQ(a->Eval(), 5.0);
    EXPECT_EQ(b->Eval(), 10.0);
    EXPECT_EQ(inner.realCalls, 2);
    EXPECT_EQ(outer1.realCalls, 2);
    EXPECT_EQ(outer2.realCalls, 2);
}

TEST_F(ExpressionTest, SharedSubExpression_ValueIsComputedOncePerCacheGeneration) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 2.0);
    CountingBox inner, outer1, outer2;
    NoxExpression *shared = f.Box(inner, {x});
    f.Box(outer1, {shared})->GetValue();
    f.Box(outer2, {shared, shared})->GetValue();
    EXPECT_EQ(inner.valueCalls, 1);
}

TEST_F(ExpressionTest, ResetBufferZero_ClearsOnlyTheNodesOwnFlags) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox inner, outer;
    NoxExpression *child = f.Box(inner, {x});
    NoxExpression *root = f.Box(outer, {child});
    root->Eval();
    root->ResetBuffer(0);
    root->Eval();
    EXPECT_EQ(outer.realCalls, 2);
    EXPECT_EQ(inner.realCalls, 1);
}

TEST_F(ExpressionTest, ResetBufferNonZero_ClearsTheWholeSubGraph) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox inner, outer;
    NoxExpression *child = f.Box(inner, {x});
    NoxExpression *root = f.Box(outer, {child});
    root->Eval();
    root->GetValue();
    root->ResetBuffer(2);
    root->Eval();
    root->GetValue();
    EXPECT_EQ(outer.realCalls, 2);
    EXPECT_EQ(inner.realCalls, 2);
    EXPECT_EQ(outer.valueCalls, 2);
    EXPECT_EQ(inner.valueCalls, 2);
}

TEST_F(ExpressionTest, ResetBuffer_ClearsGradientAndHessianCachesToo) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    node->GetGradient();
    const int afterGradient = box.realCalls;
    node->GetGradient();
    EXPECT_EQ(box.realCalls, afterGradient);
    node->ResetBuffer(0);
    node->GetGradient();
    EXPECT_GT(box.realCalls, afterGradient);

    node->GetHessian();
    const int afterHessian = box.realCalls;
    node->GetHessian();
    EXPECT_EQ(box.realCalls, afterHessian);
    node->ResetBuffer(0);
    node->GetHessian();
    EXPECT_GT(box.realCalls, afterHessian);
}

TEST_F(ExpressionTest, SetValueWithAnExpression_RefreshesOnlyThatSubGraph) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox boxA, boxB;
    NoxExpression *a = f.Box(boxA, {x});
    NoxExpression *b = f.Box(boxB, {x});
    a->Eval();
    b->Eval();
    x->SetValue(NoxValue(7.0), a);
    EXPECT_EQ(a->Eval(), 7.0);
    EXPECT_EQ(b->Eval(), 1.0); // b keeps its cache from before the change
    EXPECT_EQ(boxA.realCalls, 2);
    EXPECT_EQ(boxB.realCalls, 1);
}

TEST_F(ExpressionTest, SetValueWithNull_RefreshesEveryExpression) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox boxA, boxB;
    NoxExpression *a = f.Box(boxA, {x});
    NoxExpression *b = f.Box(boxB, {x});
    a->Eval();
    b->Eval();
    x->SetValue(NoxValue(7.0), nullptr);
    EXPECT_EQ(a->Eval(), 7.0);
    EXPECT_EQ(b->Eval(), 7.0);
}

TEST_F(ExpressionTest, ResetBufferWithFlagLowered_LeavesEveryCacheValid) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox boxA, boxB;
    NoxExpression *a = f.Box(boxA, {x});
    NoxExpression *b = f.Box(boxB, {x});
    a->Eval();
    b->Eval();
    x->SetValue(NoxValue(2.0), a); // resets a's sub-graph and lowers the flag
    EXPECT_EQ(f.BuffersInUse(), 0);
    f.ResetBuffer(nullptr);
    f.ResetBuffer(b);
    x->SetValue(NoxValue(3.0), b); // no evaluation since the last reset: nothing happens
    EXPECT_EQ(b->Eval(), 1.0);
    EXPECT_EQ(boxB.realCalls, 1);
    EXPECT_EQ(a->Eval(), 3.0);
}

TEST_F(ExpressionTest, SetExprValueOnAVariable_SetsItsValueAndRefreshesEverything) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox boxA, boxB;
    NoxExpression *a = f.Box(boxA, {x});
    NoxExpression *b = f.Box(boxB, {x});
    a->Eval();
    b->Eval();
    x->SetExprValue(NoxValue(6.0));
    EXPECT_EQ(x->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(a->Eval(), 6.0);
    EXPECT_EQ(b->Eval(), 6.0);
}

TEST_F(ExpressionTest, Fix_RefreshesOnlyWhenTheFlagChanges) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    node->Eval();
    x->Fix(0);
    node->Eval();
    EXPECT_EQ(box.realCalls, 1);
    EXPECT_EQ(f.BuffersInUse(), 1);
    x->Fix(1);
    EXPECT_EQ(x->IsFixed(), 1);
    EXPECT_EQ(f.BuffersInUse(), 0);
    node->Eval();
    EXPECT_EQ(box.realCalls, 2);
    x->Fix(1);
    node->Eval();
    EXPECT_EQ(box.realCalls, 2);
    x->Fix(0);
    EXPECT_EQ(x->IsFixed(), 0);
    node->Eval();
    EXPECT_EQ(box.realCalls, 3);
}

TEST_F(ExpressionTest, EvaluationRaisesTheFactoryFlagOnlyWhenACacheIsFilled) {
    NoxExpression *c = f.CreateRealConstant(1.0);
    EXPECT_EQ(f.BuffersInUse(), 0);
    c->Eval();
    EXPECT_EQ(f.BuffersInUse(), 1);
    f.ResetBuffer(nullptr);
    EXPECT_EQ(f.BuffersInUse(), 0);
    c->Eval();
    EXPECT_EQ(f.BuffersInUse(), 1);
    f.ResetBuffer(c);
    c->Eval();
    f.ResetBuffer(c); // c was filled again: the flag was raised, so the reset happens
    EXPECT_EQ(f.BuffersInUse(), 0);
    c->ResetBuffer(0);
    EXPECT_EQ(f.BuffersInUse(), 0);
}

// ---- Gradient and Hessian entry points ----

TEST_F(ExpressionTest, EvalFirstDerivOfNull_IsZeroAfterComputingTheGradient) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->EvalFirstDeriv(nullptr), 0.0);
    EXPECT_GT(box.realCalls, 0);
}

TEST_F(ExpressionTest, EvalSecondDerivWithANullVariable_IsZeroAfterComputingTheHessian) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    EXPECT_EQ(node->EvalSecondDeriv(nullptr, x), 0.0);
    EXPECT_GT(box.realCalls, 0);
    EXPECT_EQ(node->EvalSecondDeriv(x, nullptr), 0.0);
}

TEST_F(ExpressionTest, EvalFirstAndSecondDeriv_ReadTheEntriesAtTheVariablesIndices) {
    NoxVariable *x0 = f.CreateVariable();
    NoxVariable *x1 = f.CreateVariable();
    NoxVariable *x2 = f.CreateVariable();
    EXPECT_EQ(x1->EvalFirstDeriv(x0), 0.0);
    EXPECT_EQ(x1->EvalFirstDeriv(x1), 1.0);
    EXPECT_EQ(x1->EvalFirstDeriv(x2), 0.0);
    EXPECT_EQ(x1->EvalSecondDeriv(x1, x1), 0.0);
}

TEST_F(ExpressionTest, DerivativesForAVariableOfAnotherFactory_AreZero) {
    NoxFactory other;
    other.CreateVariable();
    other.CreateVariable();
    NoxVariable *foreign = other.CreateVariable();
    NoxVariable *x = f.CreateVariable();
    EXPECT_EQ(x->EvalFirstDeriv(foreign), 0.0);
    EXPECT_EQ(x->EvalSecondDeriv(foreign, x), 0.0);
}

TEST_F(ExpressionTest, EvalGradient_CopiesOneEntryPerVariable) {
    f.CreateVariable();
    NoxVariable *x1 = f.CreateVariable();
    f.CreateVariable();
    double out[4] = {7, 7, 7, 7};
    x1->EvalGradient(out);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 1.0);
    EXPECT_EQ(out[2], 0.0);
    EXPECT_EQ(out[3], 7.0);
    x1->EvalGradient(nullptr);
}

TEST_F(ExpressionTest, EvalHessian_CopiesNRowsOfNEntries) {
    f.CreateVariable();
    NoxVariable *x1 = f.CreateVariable();
    double r0[3] = {7, 7, 7}, r1[3] = {7, 7, 7}, r2[3] = {7, 7, 7};
    double *out[3] = {r0, r1, r2};
    x1->EvalHessian(out);
    EXPECT_EQ(r0[0], 0.0);
    EXPECT_EQ(r0[1], 0.0);
    EXPECT_EQ(r1[0], 0.0);
    EXPECT_EQ(r1[1], 0.0);
    EXPECT_EQ(r0[2], 7.0);
    EXPECT_EQ(r2[0], 7.0);
    x1->EvalHessian(nullptr);
}

TEST_F(ExpressionTest, EvalHessianWithoutVariables_WritesNothing) {
    NoxExpression *c = f.CreateRealConstant(2.0);
    double r0[1] = {7};
    double *out[1] = {r0};
    c->EvalHessian(out);
    EXPECT_EQ(r0[0], 7.0);
    EXPECT_NE(c->GetHessian(), nullptr);
    EXPECT_NE(c->GetGradient(), nullptr);
}

TEST_F(ExpressionTest, Buffers_AreAllocatedOnceAndKeptAcrossGenerations) {
    NoxVariable *x = f.CreateVariable();
    const double *g = x->GetGradient();
    double **h = x->GetHessian();
    SetReal(x, 3.0);
    EXPECT_EQ(x->GetGradient(), g);
    EXPECT_EQ(x->GetHessian(), h);
}

TEST_F(ExpressionTest, BuffersFromBeforeANewVariable_AreReplacedBySizedOnesAndRecomputed) {
    NoxVariable *x0 = f.CreateVariable();
    EXPECT_EQ(x0->GetGradient()[0], 1.0);
    x0->GetHessian();
    NoxVariable *x1 = f.CreateVariable();
    const double *g = x0->GetGradient();
    EXPECT_EQ(g[0], 1.0);
    EXPECT_EQ(g[1], 0.0);
    EXPECT_EQ(x0->EvalFirstDeriv(x1), 0.0);
    double **h = x0->GetHessian();
    EXPECT_EQ(h[1][1], 0.0);
    EXPECT_EQ(x1->GetGradient()[1], 1.0);
}

// ---- Operator base ----

TEST_F(ExpressionTest, OperatorGetChild_OutsideTheChildrenIsNull) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(1.0);
    NoxExpression *sum = f.CreateSum(x, c);
    const NoxExpression *constSum = sum;
    ASSERT_EQ(sum->GetNbOfChildren(), 2);
    EXPECT_EQ(sum->GetChild(0), x);
    EXPECT_EQ(sum->GetChild(1), c);
    EXPECT_EQ(sum->GetChild(-1), nullptr);
    EXPECT_EQ(sum->GetChild(2), nullptr);
    EXPECT_EQ(constSum->GetChild(1), c);
    EXPECT_EQ(constSum->GetChild(-1), nullptr);
    EXPECT_EQ(constSum->GetChild(2), nullptr);
}

TEST_F(ExpressionTest, OperatorWithoutChildArray_KeepsItsCountButHasNoChild) {
    CountingBox box;
    NoxExpression *node = f.DeclareBlackBox(&box, 2, nullptr);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetNbOfChildren(), 2);
    EXPECT_EQ(node->GetChild(0), nullptr);
    EXPECT_EQ(node->GetChild(1), nullptr);
    EXPECT_EQ(node->ContainsExprOfKind(NoxVariableExpr), 0);
    unsigned char mask[1] = {0};
    node->FillPresentVariables(mask);
    node->ResetBuffer(1);
}

TEST_F(ExpressionTest, OperatorWithANegativeCount_HasNoChildren) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *args[1] = {x};
    CountingBox box;
    NoxExpression *node = f.DeclareBlackBox(&box, -3, args);
    EXPECT_EQ(node->GetNbOfChildren(), 0);
    EXPECT_EQ(node->GetChild(0), nullptr);
}

TEST_F(ExpressionTest, OperatorChildArray_IsACopyOfTheCallersArray) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    NoxExpression *args[2] = {x, y};
    NoxExpression *sum = f.CreateSum(2, args);
    args[0] = y;
    EXPECT_EQ(sum->GetChild(0), x);
}

TEST_F(ExpressionTest, ContainsExprOfKind_LooksThroughNonNullChildren) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateIntegerConstant(2);
    NoxExpression *terms[3] = {c, nullptr, x};
    NoxExpression *sum = f.CreateSum(3, terms);
    NoxExpression *root = f.CreateSin(sum);
    EXPECT_EQ(root->ContainsExprOfKind(NoxSinExpr), 1);
    EXPECT_EQ(root->ContainsExprOfKind(NoxSumExpr), 1);
    EXPECT_EQ(root->ContainsExprOfKind(NoxVariableExpr), 1);
    EXPECT_EQ(root->ContainsExprOfKind(NoxConstantExpr), 1);
    EXPECT_EQ(root->ContainsExprOfKind(NoxCosExpr), 0);
    EXPECT_EQ(c->ContainsExprOfKind(NoxConstantExpr), 1);
    EXPECT_EQ(c->ContainsExprOfKind(NoxVariableExpr), 0);
    EXPECT_EQ(x->ContainsExprOfKind(NoxVariableExpr), 1);
    EXPECT_EQ(x->ContainsExprOfKind(NoxConstantExpr), 0);
}

TEST_F(ExpressionTest, FillPresentVariables_MarksEveryVariableThatIsNotFixed) {
    NoxVariable *x0 = f.CreateVariable();
    NoxVariable *x1 = f.CreateVariable();
    NoxVariable *x2 = f.CreateVariable();
    f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(1.0);
    NoxExpression *terms[4] = {x0, nullptr, c, f.CreateExp(x2)};
    NoxExpression *sum = f.CreateSum(4, terms);
    NoxExpression *root = f.CreateProduct(sum, x1);
    x1->Fix(1);
    unsigned char mask[4] = {0, 0, 0, 0};
    root->FillPresentVariables(mask);
    EXPECT_EQ(mask[0], 1);
    EXPECT_EQ(mask[1], 0);
    EXPECT_EQ(mask[2], 1);
    EXPECT_EQ(mask[3], 0);
    root->FillPresentVariables(nullptr);
    c->FillPresentVariables(mask);
}

TEST_F(ExpressionTest, InitHessianTable_HoldsEachChildsHessianAndNullForAMissingChild) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(1.0);
    ProbeOperator *probe = AddProbe(f, {x, nullptr, c});
    double ***table = probe->InitHessianTable();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table[0], x->GetHessian());
    EXPECT_EQ(table[1], nullptr);
    EXPECT_EQ(table[2], c->GetHessian());
    probe->FiniHessianTable(table);
    EXPECT_EQ(table, nullptr);
}

TEST_F(ExpressionTest, CopyHessianTable_CopiesTheFirstChildsRows) {
    f.CreateVariable();
    f.CreateVariable();
    CountingBox box([](const std::vector<double> &) { return 0.0; });
    NoxExpression *child = f.Box(box, {});
    ProbeOperator *probe = AddProbe(f, {child});
    double **childHessian = child->GetHessian();
    childHessian[0][0] = 1.5;
    childHessian[0][1] = 2.5;
    childHessian[1][0] = 3.5;
    childHessian[1][1] = 4.5;
    double r0[3] = {0, 0, 9}, r1[3] = {0, 0, 9};
    double *dest[2] = {r0, r1};
    double ***table = probe->InitHessianTable();
    probe->CopyHessianTable(table, dest);
    EXPECT_EQ(r0[0], 1.5);
    EXPECT_EQ(r0[1], 2.5);
    EXPECT_EQ(r1[0], 3.5);
    EXPECT_EQ(r1[1], 4.5);
    EXPECT_EQ(r0[2], 9.0);
    probe->CopyHessianTable(table, nullptr);
    probe->CopyHessianTable(nullptr, dest);
    probe->FiniHessianTable(table);
}

TEST_F(ExpressionTest, CopyHessianTable_WithoutChildrenOrFirstChildCopiesNothing) {
    f.CreateVariable();
    ProbeOperator *empty = AddProbe(f, {});
    ProbeOperator *missingFirst = AddProbe(f, {nullptr, f.GetVariable(0)});
    double r0[1] = {9};
    double *dest[1] = {r0};
    double ***table = empty->InitHessianTable();
    empty->CopyHessianTable(table, dest);
    empty->FiniHessianTable(table);
    table = missingFirst->InitHessianTable();
    missingFirst->CopyHessianTable(table, dest);
    missingFirst->FiniHessianTable(table);
    EXPECT_EQ(r0[0], 9.0);
}

// ---- Constants ----

TEST_F(ExpressionTest, Constant_EvaluatesToTheQuickRealReadingOfItsValue) {
    EXPECT_EQ(f.CreateRealConstant(2.5)->Eval(), 2.5);
    EXPECT_EQ(f.CreateIntegerConstant(7)->Eval(), 7.0);
    EXPECT_EQ(f.CreateConstant(NoxValue(NoxRealInterval{1.0, 2.0}))->Eval(), 1.5);
    EXPECT_EQ(f.CreateConstant(NoxValue(NoxIntegerInterval{1, 4}))->Eval(), 2.5);
}

TEST_F(ExpressionTest, Constant_ValueIsACopyOfItsOwnValue) {
    NoxExpression *c = f.CreateConstant(NoxValue(NoxRealInterval{1.0, 2.0}));
    EXPECT_EQ(c->GetType(), NoxConstantExpr);
    const NoxValue &v = c->GetValue();
    EXPECT_EQ(v.GetType(), NoxRealIntervalType);
    EXPECT_EQ(v.GetAsRealInterval().lower, 1.0);
    EXPECT_EQ(v.GetAsRealInterval().upper, 2.0);
    EXPECT_EQ(c->GetExprValue().GetType(), NoxRealIntervalType);
}

TEST_F(ExpressionTest, Constant_HasNoChildren) {
    NoxExpression *c = f.CreateRealConstant(1.0);
    const NoxExpression *cc = c;
    EXPECT_EQ(c->GetNbOfChildren(), 0);
    EXPECT_EQ(c->GetChild(0), nullptr);
    EXPECT_EQ(cc->GetChild(0), nullptr);
}

TEST_F(ExpressionTest, Constant_GradientAndHessianAreZero) {
    f.CreateVariable();
    f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(3.0);
    const double *g = c->GetGradient();
    EXPECT_EQ(g[0], 0.0);
    EXPECT_EQ(g[1], 0.0);
    double **h = c->GetHessian();
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j)
            EXPECT_EQ(h[i][j], 0.0);
}

TEST_F(ExpressionTest, Constant_DifferentiatesToNullForNullElseToANewRealZero) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(3.0);
    const int before = f.ExpressionCount();
    EXPECT_EQ(c->Differentiate(nullptr), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
    NoxExpression *d = c->Differentiate(x);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(f.ExpressionCount(), before + 1);
    EXPECT_EQ(f.LastExpression(), d);
    EXPECT_EQ(d->GetType(), NoxConstantExpr);
    EXPECT_EQ(d->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(d->Eval(), 0.0);
}

TEST_F(ExpressionTest, ConstantSetExprValue_DoesNotChangeWhatGetExprValueReturns) {
    NoxExpression *c = f.CreateRealConstant(3.0);
    c->SetExprValue(NoxValue(8));
    EXPECT_EQ(c->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(c->GetExprValue().GetRealValue(), 3.0);
}

// ---- Variables ----

TEST_F(ExpressionTest, NewVariable_HasItsDefaults) {
    f.CreateVariable();
    NoxVariable *x = f.CreateVariable();
    EXPECT_EQ(x->GetType(), NoxVariableExpr);
    EXPECT_EQ(x->GetIdx(), 1);
    EXPECT_EQ(x->GetExprValue().GetType(), NoxUndefinedType);
    EXPECT_EQ(x->IsFixed(), 0);
    EXPECT_EQ(x->GetDividedFlag(), 1);
    EXPECT_EQ(x->GetNbOfChildren(), 0);
    double out = 42.0;
    EXPECT_EQ(x->GetPreferedValue(out), 0);
    EXPECT_EQ(out, 42.0);
}

TEST_F(ExpressionTest, SetValue_TakesTheValueWithItsKind) {
    NoxVariable *x = f.CreateVariable();
    x->SetValue(NoxValue(NoxRealInterval{1.0, 3.0}), nullptr);
    EXPECT_EQ(x->GetExprValue().GetType(), NoxRealIntervalType);
    EXPECT_EQ(x->Eval(), 2.0);
    EXPECT_EQ(x->GetValue().GetType(), NoxRealIntervalType);
    x->SetValue(NoxValue(4), nullptr);
    EXPECT_EQ(x->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(x->Eval(), 4.0);
}

TEST_F(ExpressionTest, PreferedValue_IsReturnedOnceSet) {
    NoxVariable *x = f.CreateVariable();
    x->SetPreferedValue(2.5);
    double out = 0.0;
    EXPECT_EQ(x->GetPreferedValue(out), 1);
    EXPECT_EQ(out, 2.5);
}

TEST_F(ExpressionTest, DividedFlag_IsStoredAndReturned) {
    NoxVariable *x = f.CreateVariable();
    x->SetDividedFlag(-5);
    EXPECT_EQ(x->GetDividedFlag(), -5);
}

TEST_F(ExpressionTest, VariableName_DefaultsToVaAndTheIndex) {
    NoxVariable *x0 = f.CreateVariable();
    for (int i = 1; i < 12; ++i)
        f.CreateVariable();
    EXPECT_EQ(x0->GetName(), "va0");
    EXPECT_EQ(f.GetVariable(11)->GetName(), "va11");
    x0->SetName("width");
    EXPECT_EQ(x0->GetName(), "width");
    x0->SetName("");
    EXPECT_EQ(x0->GetName(), "va0");
}

TEST_F(ExpressionTest, VariableGradient_IsOneAtItsIndexUnlessFixed) {
    f.CreateVariable();
    NoxVariable *x1 = f.CreateVariable();
    f.CreateVariable();
    const double *g = x1->GetGradient();
    EXPECT_EQ(g[0], 0.0);
    EXPECT_EQ(g[1], 1.0);
    EXPECT_EQ(g[2], 0.0);
    x1->Fix(1);
    g = x1->GetGradient();
    EXPECT_EQ(g[0], 0.0);
    EXPECT_EQ(g[1], 0.0);
    EXPECT_EQ(g[2], 0.0);
}

TEST_F(ExpressionTest, FixedVariable_ContributesNothingButItsOwnDerivativeIsStillOne) {
    NoxVariable *x = f.CreateVariable();
    x->Fix(1);
    unsigned char mask[1] = {0};
    x->FillPresentVariables(mask);
    EXPECT_EQ(mask[0], 0);
    EXPECT_EQ(x->GetGradient()[0], 0.0);
    NoxExpression *d = x->Differentiate(x);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->GetType(), NoxConstantExpr);
    EXPECT_EQ(d->Eval(), 1.0);
}

TEST_F(ExpressionTest, VariableDifferentiate_GivesItselfOneOrZero) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    const int before = f.ExpressionCount();
    EXPECT_EQ(x->Differentiate(nullptr), x);
    EXPECT_EQ(f.ExpressionCount(), before);
    NoxExpression *one = x->Differentiate(x);
    NoxExpression *zero = x->Differentiate(y);
    EXPECT_EQ(f.ExpressionCount(), before + 2);
    EXPECT_EQ(one->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(one->Eval(), 1.0);
    EXPECT_EQ(zero->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(zero->Eval(), 0.0);
    y->Fix(1);
    EXPECT_EQ(x->Differentiate(y)->Eval(), 0.0);
}

// ---- Equations ----

TEST_F(ExpressionTest, Equation_KeepsItsRootTypeAndIndex) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *c = f.CreateRealConstant(1.0);
    f.AddEquation(x, NoxDefaultEquation);
    f.AddEquation(x, NoxDefaultEquation);
    f.AddEquation(x, NoxDefaultEquation);
    NoxEquation *eq = f.AddEquation(c, NoxEquationType(42));
    ASSERT_NE(eq, nullptr);
    EXPECT_EQ(eq->GetRoot(), c);
    EXPECT_EQ(eq->GetType(), 42);
    EXPECT_EQ(eq->GetName(), "eq3");
    eq->SetRoot(x);
    EXPECT_EQ(eq->GetRoot(), x);
    eq->SetName("balance");
    EXPECT_EQ(eq->GetName(), "balance");
}

TEST_F(ExpressionTest, EquationCopy_CopiesEveryField) {
    NoxVariable *x = f.CreateVariable();
    NoxEquation *eq = f.AddEquation(x, NoxEquationType(7));
    eq->SetName("energy");
    NoxEquation copy(*eq);
    EXPECT_EQ(copy.GetRoot(), x);
    EXPECT_EQ(copy.GetType(), 7);
    EXPECT_EQ(copy.GetName(), "energy");
    NoxEquation other(f, nullptr, NoxDefaultEquation, 5);
    EXPECT_EQ(other.GetName(), "eq5");
    other = *eq;
    EXPECT_EQ(other.GetRoot(), x);
    EXPECT_EQ(other.GetName(), "energy");
    NoxEquation unnamed(f, nullptr, NoxDefaultEquation, 2);
    NoxEquation unnamedCopy(unnamed);
    EXPECT_EQ(unnamedCopy.GetName(), "eq2");
}
