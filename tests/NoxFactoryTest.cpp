// The factory: creators and their null rules, growth by tens, derivatives, equations,
// cache invalidation, member-wise copies, destruction, allocation failures and leaks.
//
// This test program replaces the global allocation functions through the shared test
// allocator, so that it can count live allocations and make the library's nothrow
// allocations fail on demand. Under valgrind, run it with
// --soname-synonyms=somalloc=nouserintercepts so that these replacements stay in force.
#include <NoxFactory.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "NoxTestAllocator.h"

using nox_test::AllocationFailure;
using nox_test::AllocationForms;
using nox_test::LiveAllocationCount;

namespace {

/// Makes the k-th nothrow allocation from now fail (k = 0: the next one).
struct FailNthNothrow : AllocationFailure {
    explicit FailNthNothrow(int k)
        : AllocationFailure(AllocationForms::Nothrow, k, AllocationFailure::RefuseOne) {}
};

/// Makes every nothrow allocation fail while it lives.
struct FailAllNothrow : AllocationFailure {
    FailAllNothrow() : AllocationFailure(AllocationForms::Nothrow) {}
};

} // namespace

namespace {

class FactoryTest : public ::testing::Test {
protected:
    TestFactory f;
};

/// A node that appends its id to a log when it is destroyed.
class LoggingNode : public NoxConstant {
public:
    LoggingNode(NoxFactory *owner, int nodeId, std::vector<int> &destroyed)
        : NoxConstant(owner, NoxValue(0.0)), id(nodeId), log(destroyed) {}
    ~LoggingNode() override { log.push_back(id); }

private:
    int id;
    std::vector<int> &log;
};

// Builds a model that uses every creator, evaluates it every way and destroys it.
void BuildEvaluateAndDestroyAModel() {
    TestFactory model;
    NoxVariable *x = model.CreateVariable();
    NoxVariable *y = model.CreateVariable();
    x->SetValue(NoxValue(NoxRealInterval{1.0, 2.0}), nullptr);
    y->SetValue(NoxValue(0.5), nullptr);
    x->SetName("a rather long name that needs memory of its own");
    NoxExpression *c = model.CreateConstant(NoxValue(NoxIntegerInterval{1, 3}));
    NoxExpression *terms[3] = {x, y, c};
    NoxExpression *nodes[] = {
        model.CreateSum(x, y), model.CreateProduct(3, terms), model.CreateMin(x, c),
        model.CreateMax(3, terms), model.CreateQuotient(x, y), model.CreatePower(x, 2),
        model.CreateRoot(y, 3), model.CreateMod(x, c), model.CreateSqrt(x), model.CreateLog(x),
        model.CreateLn(x), model.CreateExp(x), model.CreateAbs(x), model.CreateCeil(x),
        model.CreateFloor(x), model.CreateRound(x), model.CreateSin(x), model.CreateCos(x),
        model.CreateTan(x), model.CreateAsin(x), model.CreateAcos(x), model.CreateAtan(x),
        model.CreateSinh(x), model.CreateCosh(x), model.CreateTanh(x), model.CreateASinh(x),
        model.CreateACosh(x), model.CreateATanh(x), model.CreateNot(x), model.CreateOr(x, y),
        model.CreateAnd(x, y), model.CreateEqual(x, y), model.CreateNotEqual(x, y),
        model.CreateImplication(x, y), model.CreateAlgebraicOperator(NoxAbsExpr, 3, terms)};
    CountingBox box;
    NoxExpression *args[2] = {x, nodes[0]};
    NoxExpression *black = model.DeclareBlackBox(&box, 2, args);
    NoxVariable *vars[2] = {x, y};
    model.CreateDerivative(model.CreateSum(c, x), 2, vars);
    model.AddEquation(black, NoxDefaultEquation)->SetName("an equation with a long name");
    for (NoxExpression *node : nodes) {
        node->Eval();
        node->GetValue();
        node->GetGradient();
        node->GetHessian();
        model.AddEquation(node, NoxDefaultEquation)->GetName();
    }
    black->GetHessian();
    x->Fix(1);
    black->GetGradient();
    x->GetName();
}

} // namespace

// ---- Construction and access ----

TEST_F(FactoryTest, NewFactory_IsEmptyWithADefaultEnvironment) {
    EXPECT_EQ(f.GetNbOfVariables(), 0);
    EXPECT_EQ(f.GetNbOfEquations(), 0);
    EXPECT_EQ(f.ExpressionCount(), 0);
    EXPECT_EQ(f.ExpressionCapacity(), 0);
    EXPECT_EQ(f.VariableCapacity(), 0);
    EXPECT_EQ(f.EquationCapacity(), 0);
    EXPECT_EQ(f.BuffersInUse(), 0);
    EXPECT_EQ(f.GetVariable(0), nullptr);
    EXPECT_EQ(f.GetEquation(0), nullptr);
    EXPECT_EQ(f.GetEnvironment().GetTolerance(), 1e-9);
    EXPECT_EQ(f.GetEnvironment().GetError(), 0);
    const NoxFactory &cf = f;
    EXPECT_EQ(&cf.GetEnvironment(), &f.GetEnvironment());
}

TEST_F(FactoryTest, ResetBufferRightAfterConstruction_DoesNothing) {
    f.ResetBuffer(nullptr);
    NoxExpression *c = f.CreateRealConstant(1.0);
    f.ResetBuffer(c);
    EXPECT_EQ(f.BuffersInUse(), 0);
    EXPECT_EQ(c->Eval(), 1.0);
}

TEST_F(FactoryTest, NodesReachTheFactorysEnvironment) {
    NoxExpression *c = f.CreateRealConstant(1.0);
    EXPECT_EQ(&c->GetEnvironment(), &f.GetEnvironment());
}

TEST_F(FactoryTest, CreateVariable_NumbersVariablesInCreationOrder) {
    for (int i = 0; i < 3; ++i) {
        NoxVariable *v = f.CreateVariable();
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(v->GetIdx(), i);
        EXPECT_EQ(f.GetVariable(i), v);
        EXPECT_EQ(f.LastExpression(), v);
    }
    EXPECT_EQ(f.GetNbOfVariables(), 3);
    EXPECT_EQ(f.ExpressionCount(), 3);
}

TEST_F(FactoryTest, GetVariableAndGetEquation_OutsideTheirRangeAreNull) {
    NoxVariable *x = f.CreateVariable();
    f.AddEquation(x, NoxDefaultEquation);
    EXPECT_EQ(f.GetVariable(f.GetNbOfVariables()), nullptr);
    EXPECT_EQ(f.GetVariable(-1), nullptr);
    EXPECT_EQ(f.GetEquation(f.GetNbOfEquations()), nullptr);
    EXPECT_EQ(f.GetEquation(-1), nullptr);
}

TEST_F(FactoryTest, Arrays_GrowByStepsOfTenKeepingTheirEntries) {
    std::vector<NoxExpression *> created;
    for (int i = 0; i < 10; ++i)
        created.push_back(f.CreateIntegerConstant(i));
    EXPECT_EQ(f.ExpressionCapacity(), 10);
    created.push_back(f.CreateIntegerConstant(10));
    EXPECT_EQ(f.ExpressionCapacity(), 20);
    for (int i = 0; i < 11; ++i)
        EXPECT_EQ(f.Expression(i), created[i]);
    for (int i = 0; i < 21; ++i)
        f.CreateVariable();
    EXPECT_EQ(f.VariableCapacity(), 30);
    EXPECT_EQ(f.ExpressionCapacity(), 40);
    for (int i = 0; i < 21; ++i)
        EXPECT_EQ(f.GetVariable(i)->GetIdx(), i);
    for (int i = 0; i < 10; ++i)
        f.AddEquation(created[0], NoxDefaultEquation);
    EXPECT_EQ(f.EquationCapacity(), 10);
    f.AddEquation(created[0], NoxDefaultEquation);
    EXPECT_EQ(f.EquationCapacity(), 20);
}

// ---- Leaves ----

TEST_F(FactoryTest, Constants_HoldTheirValues) {
    NoxExpression *r = f.CreateRealConstant(2.5);
    NoxExpression *i = f.CreateIntegerConstant(-4);
    NoxExpression *v = f.CreateConstant(NoxValue(NoxBoolean_Any));
    EXPECT_EQ(r->GetType(), NoxConstantExpr);
    EXPECT_EQ(r->GetExprValue().GetType(), NoxRealType);
    EXPECT_EQ(r->GetExprValue().GetAsReal(), 2.5);
    EXPECT_EQ(i->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(i->GetExprValue().GetAsInteger(), -4);
    EXPECT_EQ(v->GetExprValue().GetType(), NoxBooleanType);
    EXPECT_EQ(v->GetExprValue().GetAsBoolean(), NoxBoolean_Any);
}

// ---- Operators ----

TEST_F(FactoryTest, BooleanCreators_GiveTheirTypesAndChildrenInOrder) {
    NoxVariable *a = f.CreateVariable();
    NoxVariable *b = f.CreateVariable();
    struct Case {
        NoxExpression *(NoxFactory::*create)(NoxExpression *, NoxExpression *);
        NoxExpressionType type;
    };
    const Case cases[] = {{&NoxFactory::CreateOr, NoxOrExpr},
                          {&NoxFactory::CreateAnd, NoxAndExpr},
                          {&NoxFactory::CreateEqual, NoxEqualExpr},
                          {&NoxFactory::CreateNotEqual, NoxNotEqualExpr},
                          {&NoxFactory::CreateImplication, NoxImplicationExpr}};
    for (const Case &c : cases) {
        NoxExpression *node = (f.*c.create)(a, b);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), c.type);
        EXPECT_NE(dynamic_cast<NoxBooleanOperator *>(node), nullptr);
        ASSERT_EQ(node->GetNbOfChildren(), 2);
        EXPECT_EQ(node->GetChild(0), a);
        EXPECT_EQ(node->GetChild(1), b);
        const int before = f.ExpressionCount();
        EXPECT_EQ((f.*c.create)(nullptr, b), nullptr);
        EXPECT_EQ((f.*c.create)(a, nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
    NoxExpression *negation = f.CreateNot(a);
    EXPECT_EQ(negation->GetType(), NoxNotExpr);
    EXPECT_NE(dynamic_cast<NoxBooleanOperator *>(negation), nullptr);
    EXPECT_EQ(f.CreateNot(nullptr), nullptr);
}

TEST_F(FactoryTest, AlgebraicPairCreators_GiveTheirTypesAndTwoChildren) {
    NoxVariable *a = f.CreateVariable();
    NoxVariable *b = f.CreateVariable();
    struct Case {
        NoxExpression *(NoxFactory::*create)(NoxExpression *, NoxExpression *);
        NoxExpressionType type;
    };
    const Case cases[] = {{&NoxFactory::CreateSum, NoxSumExpr},
                          {&NoxFactory::CreateProduct, NoxProductExpr},
                          {&NoxFactory::CreateMin, NoxMinExpr},
                          {&NoxFactory::CreateMax, NoxMaxExpr}};
    for (const Case &c : cases) {
        NoxExpression *node = (f.*c.create)(a, b);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), c.type);
        EXPECT_NE(dynamic_cast<NoxAlgebraicOperator *>(node), nullptr);
        ASSERT_EQ(node->GetNbOfChildren(), 2);
        EXPECT_EQ(node->GetChild(0), a);
        EXPECT_EQ(node->GetChild(1), b);
        const int before = f.ExpressionCount();
        EXPECT_EQ((f.*c.create)(nullptr, b), nullptr);
        EXPECT_EQ((f.*c.create)(a, nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
}

TEST_F(FactoryTest, AlgebraicListCreators_NeedTwoTermsAndCopyThePointers) {
    NoxVariable *a = f.CreateVariable();
    NoxVariable *b = f.CreateVariable();
    NoxExpression *terms[3] = {a, b, nullptr};
    struct Case {
        NoxExpression *(NoxFactory::*create)(int, NoxExpression **);
        NoxExpressionType type;
    };
    const Case cases[] = {{&NoxFactory::CreateSum, NoxSumExpr},
                          {&NoxFactory::CreateProduct, NoxProductExpr},
                          {&NoxFactory::CreateMin, NoxMinExpr},
                          {&NoxFactory::CreateMax, NoxMaxExpr}};
    for (const Case &c : cases) {
        const int before = f.ExpressionCount();
        EXPECT_EQ((f.*c.create)(1, terms), nullptr);
        EXPECT_EQ((f.*c.create)(0, terms), nullptr);
        EXPECT_EQ((f.*c.create)(-2, terms), nullptr);
        EXPECT_EQ((f.*c.create)(2, nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
        NoxExpression *two = (f.*c.create)(2, terms);
        ASSERT_NE(two, nullptr);
        EXPECT_EQ(two->GetType(), c.type);
        ASSERT_EQ(two->GetNbOfChildren(), 2);
        EXPECT_EQ(two->GetChild(0), a);
        EXPECT_EQ(two->GetChild(1), b);
        NoxExpression *three = (f.*c.create)(3, terms); // entries are not checked
        ASSERT_NE(three, nullptr);
        EXPECT_EQ(three->GetNbOfChildren(), 3);
        EXPECT_EQ(three->GetChild(2), nullptr);
    }
}

TEST_F(FactoryTest, CreateAlgebraicOperator_NeedsTwoTermsAndAcceptsAnyType) {
    NoxVariable *a = f.CreateVariable();
    NoxExpression *terms[2] = {a, a};
    EXPECT_EQ(f.CreateAlgebraicOperator(NoxSumExpr, 1, terms), nullptr);
    NoxExpression *sum = f.CreateAlgebraicOperator(NoxSumExpr, 2, terms);
    EXPECT_EQ(sum->GetNbOfChildren(), 2);
    NoxExpression *inert = f.CreateAlgebraicOperator(NoxModExpr, 2, terms);
    ASSERT_NE(inert, nullptr);
    EXPECT_EQ(inert->GetType(), NoxModExpr);
    EXPECT_EQ(inert->GetNbOfChildren(), 0);
}

TEST_F(FactoryTest, SameSumTwice_GivesTwoDistinctNodes) {
    NoxVariable *a = f.CreateVariable();
    NoxVariable *b = f.CreateVariable();
    NoxExpression *first = f.CreateSum(a, b);
    NoxExpression *second = f.CreateSum(a, b);
    EXPECT_NE(first, second);
    EXPECT_EQ(f.ExpressionCount(), 4);
}

TEST_F(FactoryTest, BinaryCreators_GiveTheirTypesAndChildrenInOrder) {
    NoxVariable *a = f.CreateVariable();
    NoxVariable *b = f.CreateVariable();
    NoxExpression *q = f.CreateQuotient(a, b);
    NoxExpression *m = f.CreateMod(a, b);
    NoxExpression *t = f.CreateBinaryOperator(NoxCosExpr, a, b);
    EXPECT_EQ(q->GetType(), NoxQuotientExpr);
    EXPECT_EQ(m->GetType(), NoxModExpr);
    EXPECT_EQ(t->GetType(), NoxCosExpr);
    for (NoxExpression *node : {q, m, t}) {
        EXPECT_NE(dynamic_cast<NoxBinaryOperator *>(node), nullptr);
        ASSERT_EQ(node->GetNbOfChildren(), 2);
        EXPECT_EQ(node->GetChild(0), a);
        EXPECT_EQ(node->GetChild(1), b);
    }
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateQuotient(nullptr, b), nullptr);
    EXPECT_EQ(f.CreateMod(a, nullptr), nullptr);
    EXPECT_EQ(f.CreateBinaryOperator(NoxQuotientExpr, nullptr, nullptr), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryTest, CreatePowerAndRoot_CreateTheIntegerConstantFirst) {
    NoxVariable *a = f.CreateVariable();
    NoxExpression *p = f.CreatePower(a, 3);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->GetType(), NoxPowerExpr);
    EXPECT_EQ(f.ExpressionCount(), 3);
    EXPECT_EQ(f.Expression(1), p->GetChild(1));
    EXPECT_EQ(f.Expression(2), p);
    EXPECT_EQ(p->GetChild(0), a);
    EXPECT_EQ(p->GetChild(1)->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(p->GetChild(1)->GetExprValue().GetAsInteger(), 3);
    NoxExpression *r = f.CreateRoot(a, -2);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->GetType(), NoxRootExpr);
    EXPECT_EQ(r->GetChild(1)->GetExprValue().GetAsInteger(), -2);
    EXPECT_EQ(f.ExpressionCount(), 5);
}

TEST_F(FactoryTest, CreatePowerOfNull_GivesNullButLeavesTheConstantRegistered) {
    EXPECT_EQ(f.CreatePower(nullptr, 3), nullptr);
    ASSERT_EQ(f.ExpressionCount(), 1);
    EXPECT_EQ(f.Expression(0)->GetType(), NoxConstantExpr);
    EXPECT_EQ(f.Expression(0)->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(f.Expression(0)->GetExprValue().GetAsInteger(), 3);
    EXPECT_EQ(f.CreateRoot(nullptr, 5), nullptr);
    ASSERT_EQ(f.ExpressionCount(), 2);
    EXPECT_EQ(f.Expression(1)->GetExprValue().GetAsInteger(), 5);
}

TEST_F(FactoryTest, UnaryCreators_GiveTheirTypes) {
    NoxVariable *a = f.CreateVariable();
    struct Case {
        NoxExpression *(NoxFactory::*create)(NoxExpression *);
        NoxExpressionType type;
    };
    const Case cases[] = {
        {&NoxFactory::CreateSqrt, NoxSqrtExpr},   {&NoxFactory::CreateLog, NoxLogExpr},
        {&NoxFactory::CreateLn, NoxLnExpr},       {&NoxFactory::CreateExp, NoxExpExpr},
        {&NoxFactory::CreateAbs, NoxAbsExpr},     {&NoxFactory::CreateCeil, NoxCeilExpr},
        {&NoxFactory::CreateFloor, NoxFloorExpr}, {&NoxFactory::CreateRound, NoxRoundExpr}};
    for (const Case &c : cases) {
        NoxExpression *node = (f.*c.create)(a);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), c.type);
        EXPECT_NE(dynamic_cast<NoxUnaryOperator *>(node), nullptr);
        ASSERT_EQ(node->GetNbOfChildren(), 1);
        EXPECT_EQ(node->GetChild(0), a);
        const int before = f.ExpressionCount();
        EXPECT_EQ((f.*c.create)(nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
    EXPECT_EQ(f.CreateUnaryOperator(NoxTanExpr, a)->GetType(), NoxTanExpr);
    EXPECT_EQ(f.CreateUnaryOperator(NoxSqrtExpr, nullptr), nullptr);
}

TEST_F(FactoryTest, TrigonometricCreators_GiveTypesEighteenToTwentyNineInOrder) {
    NoxVariable *a = f.CreateVariable();
    NoxExpression *(NoxFactory::*creators[])(NoxExpression *) = {
        &NoxFactory::CreateSin,  &NoxFactory::CreateCos,   &NoxFactory::CreateTan,
        &NoxFactory::CreateAsin, &NoxFactory::CreateAcos,  &NoxFactory::CreateAtan,
        &NoxFactory::CreateSinh, &NoxFactory::CreateCosh,  &NoxFactory::CreateTanh,
        &NoxFactory::CreateASinh, &NoxFactory::CreateACosh, &NoxFactory::CreateATanh};
    int expected = NoxSinExpr;
    for (auto create : creators) {
        NoxExpression *node = (f.*create)(a);
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), expected++);
        EXPECT_NE(dynamic_cast<NoxTrigonometricOperator *>(node), nullptr);
        ASSERT_EQ(node->GetNbOfChildren(), 1);
        EXPECT_EQ(node->GetChild(0), a);
        const int before = f.ExpressionCount();
        EXPECT_EQ((f.*create)(nullptr), nullptr);
        EXPECT_EQ(f.ExpressionCount(), before);
    }
    EXPECT_EQ(expected, NoxATanhExpr + 1);
    EXPECT_EQ(f.CreateTrigonometricOperator(NoxExpExpr, a)->GetType(), NoxExpExpr);
    EXPECT_EQ(f.CreateTrigonometricOperator(NoxSinExpr, nullptr), nullptr);
}

// ---- Derivatives ----

TEST_F(FactoryTest, CreateDerivative_NullVariablesOrExpressionGiveNull) {
    NoxVariable *x = f.CreateVariable();
    EXPECT_EQ(f.CreateDerivative(x, 1, nullptr), nullptr);
    EXPECT_EQ(f.CreateDerivative(nullptr, 1, &x), nullptr);
    EXPECT_EQ(f.CreateDerivative(nullptr, 0, &x), nullptr);
    EXPECT_EQ(f.ExpressionCount(), 1);
}

TEST_F(FactoryTest, CreateDerivative_WithNoVariablesGivesTheExpressionItself) {
    NoxVariable *x = f.CreateVariable();
    EXPECT_EQ(f.CreateDerivative(x, 0, &x), x);
    EXPECT_EQ(f.CreateDerivative(x, -1, &x), x);
}

TEST_F(FactoryTest, CreateDerivative_DifferentiatesInTheOrderOfTheVariables) {
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    NoxExpression *dx = f.CreateDerivative(x, 1, &x);
    ASSERT_NE(dx, nullptr);
    EXPECT_EQ(dx->Eval(), 1.0);
    NoxVariable *yx[2] = {y, x};
    const int before = f.ExpressionCount();
    NoxExpression *dyx = f.CreateDerivative(x, 2, yx);
    ASSERT_NE(dyx, nullptr);
    EXPECT_EQ(dyx->GetType(), NoxConstantExpr);
    EXPECT_EQ(dyx->Eval(), 0.0);
    EXPECT_EQ(f.ExpressionCount(), before + 2); // d/dy x = 0, then d/dx 0 = 0
    NoxVariable *withNull[2] = {nullptr, x};
    EXPECT_EQ(f.CreateDerivative(x, 2, withNull)->Eval(), 1.0); // x itself, then d/dx
}

TEST_F(FactoryTest, CreateDerivative_StopsAtTheFirstNull) {
    NoxVariable *x = f.CreateVariable();
    CountingBox box;
    NoxExpression *node = f.Box(box, {x});
    NoxVariable *xx[3] = {x, x, x};
    EXPECT_EQ(f.CreateDerivative(node, 3, xx), nullptr);
}

// ---- Equations ----

TEST_F(FactoryTest, AddEquation_NumbersEquationsAndRefusesANullRoot) {
    NoxVariable *x = f.CreateVariable();
    EXPECT_EQ(f.AddEquation(nullptr, NoxDefaultEquation), nullptr);
    EXPECT_EQ(f.GetNbOfEquations(), 0);
    NoxEquation *e0 = f.AddEquation(x, NoxDefaultEquation);
    NoxEquation *e1 = f.AddEquation(x, NoxEquationType(3));
    EXPECT_EQ(f.GetNbOfEquations(), 2);
    EXPECT_EQ(f.GetEquation(0), e0);
    EXPECT_EQ(f.GetEquation(1), e1);
    EXPECT_EQ(e0->GetName(), "eq0");
    EXPECT_EQ(e1->GetName(), "eq1");
    EXPECT_EQ(e1->GetType(), 3);
    EXPECT_EQ(e1->GetRoot(), x);
}

// ---- Registration by a derived factory ----

TEST_F(FactoryTest, AddExpression_RegistersAndReturnsTheNodeAndRefusesNull) {
    NoxExpression *none = nullptr;
    EXPECT_EQ(f.AddExpression(none), nullptr);
    EXPECT_EQ(f.ExpressionCount(), 0);
    NoxExpression *node = new NoxConstant(&f, NoxValue(1.5));
    EXPECT_EQ(f.AddExpression(node), node);
    EXPECT_EQ(f.ExpressionCount(), 1);
    EXPECT_EQ(f.Expression(0), node);
}

// ---- Cache invalidation ----

TEST_F(FactoryTest, ResetBufferWithNull_ClearsEachRegisteredExpressionsOwnFlags) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox inner, outer;
    NoxExpression *child = f.Box(inner, {x});
    NoxExpression *root = f.Box(outer, {child});
    root->Eval();
    f.ResetBuffer(nullptr);
    EXPECT_EQ(f.BuffersInUse(), 0);
    root->Eval();
    EXPECT_EQ(inner.realCalls, 2);
    EXPECT_EQ(outer.realCalls, 2);
}

TEST_F(FactoryTest, ResetBufferWithAnExpression_ClearsOnlyItsSubGraph) {
    NoxVariable *x = f.CreateVariable();
    SetReal(x, 1.0);
    CountingBox inner, outer, other;
    NoxExpression *child = f.Box(inner, {x});
    NoxExpression *root = f.Box(outer, {child});
    NoxExpression *elsewhere = f.Box(other, {x});
    root->Eval();
    elsewhere->Eval();
    f.ResetBuffer(root);
    EXPECT_EQ(f.BuffersInUse(), 0);
    root->Eval();
    elsewhere->Eval();
    EXPECT_EQ(inner.realCalls, 2);
    EXPECT_EQ(outer.realCalls, 2);
    EXPECT_EQ(other.realCalls, 1);
}

// ---- Copies and destruction ----

TEST_F(FactoryTest, Copy_SharesEverythingAndCopiesTheFlagAndEnvironment) {
    NoxVariable *x = f.CreateVariable();
    NoxEquation *eq = f.AddEquation(x, NoxDefaultEquation);
    f.GetEnvironment().SetTolerance(1e-3);
    f.GetEnvironment().SetError(2);
    x->Eval();
    // The copy shares the source's arrays: only the source may be destroyed, so the copy
    // lives in storage whose destructor is never run.
    alignas(TestFactory) unsigned char storage[sizeof(TestFactory)];
    TestFactory *copy = new (storage) TestFactory(f);
    EXPECT_EQ(copy->GetVariable(0), x);
    EXPECT_EQ(copy->GetEquation(0), eq);
    EXPECT_EQ(copy->ExpressionCount(), 1);
    EXPECT_EQ(copy->Expression(0), x);
    EXPECT_EQ(copy->BuffersInUse(), 1);
    EXPECT_EQ(copy->GetEnvironment().GetTolerance(), 1e-3);
    EXPECT_EQ(copy->GetEnvironment().GetError(), 2);
    EXPECT_NE(&copy->GetEnvironment(), &f.GetEnvironment());
}

TEST_F(FactoryTest, Assignment_IsMemberWiseLikeTheCopy) {
    NoxVariable *x = f.CreateVariable();
    f.GetEnvironment().SetMaxEnumSize(7);
    alignas(TestFactory) unsigned char storage[sizeof(TestFactory)];
    TestFactory *target = new (storage) TestFactory();
    *target = f;
    EXPECT_EQ(target->GetVariable(0), x);
    EXPECT_EQ(target->GetNbOfVariables(), 1);
    EXPECT_EQ(target->GetEnvironment().GetMaxEnumSize(), 7);
}

TEST_F(FactoryTest, Destruction_DeletesExpressionsInRegistrationOrder) {
    std::vector<int> destroyed;
    {
        TestFactory model;
        for (int id = 0; id < 12; ++id) {
            NoxExpression *node = new LoggingNode(&model, id, destroyed);
            model.AddExpression(node);
        }
    }
    ASSERT_EQ(destroyed.size(), 12u);
    for (int id = 0; id < 12; ++id)
        EXPECT_EQ(destroyed[id], id);
}

TEST_F(FactoryTest, Destruction_LeavesTheHostsBlackBoxesAlone) {
    CountingBox box;
    {
        TestFactory model;
        model.Box(box, {model.CreateVariable()});
    }
    // The box lives on the stack: a factory that deleted it would free memory it does
    // not own, which the sanitized and valgrind runs report.
    EXPECT_EQ(box.realCalls, 0);
}

// ---- Allocation failures ----

TEST_F(FactoryTest, FailedVariable_GivesNullButStillTakesAnIndex) {
    NoxVariable *failed;
    {
        FailNthNothrow failNode(0);
        failed = f.CreateVariable();
    }
    EXPECT_EQ(failed, nullptr);
    EXPECT_EQ(f.GetNbOfVariables(), 1);
    EXPECT_EQ(f.GetVariable(0), nullptr);
    EXPECT_EQ(f.ExpressionCount(), 0);
    NoxVariable *next = f.CreateVariable();
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->GetIdx(), 1);
    EXPECT_EQ(next->GetName(), "va1");
}

TEST_F(FactoryTest, FailedEquation_GivesNullButStillTakesAnIndex) {
    NoxVariable *x = f.CreateVariable();
    NoxEquation *failed;
    {
        FailNthNothrow failNode(0);
        failed = f.AddEquation(x, NoxDefaultEquation);
    }
    EXPECT_EQ(failed, nullptr);
    EXPECT_EQ(f.GetNbOfEquations(), 1);
    EXPECT_EQ(f.GetEquation(0), nullptr);
    EXPECT_EQ(f.AddEquation(x, NoxDefaultEquation)->GetName(), "eq1");
}

TEST_F(FactoryTest, FailedOperatorOrConstant_GivesNullAndRegistersNothing) {
    NoxVariable *x = f.CreateVariable();
    FailAllNothrow failAll;
    EXPECT_EQ(f.CreateSum(x, x), nullptr);
    EXPECT_EQ(f.CreateSin(x), nullptr);
    EXPECT_EQ(f.CreateRealConstant(1.0), nullptr);
    EXPECT_EQ(f.CreatePower(x, 2), nullptr);
    CountingBox box;
    EXPECT_EQ(f.Box(box, {x}), nullptr);
    EXPECT_EQ(box.GetOperator(), nullptr);
    EXPECT_EQ(f.ExpressionCount(), 1);
}

TEST_F(FactoryTest, FailedGrowth_DeletesTheNewNodeAndKeepsTheCounts) {
    for (int i = 0; i < 10; ++i)
        f.CreateRealConstant(i);
    const long live = LiveAllocationCount();
    {
        FailNthNothrow failGrowth(1); // the node is allocation 0, the grown array 1
        EXPECT_EQ(f.CreateRealConstant(10.0), nullptr);
    }
    EXPECT_EQ(LiveAllocationCount(), live);
    EXPECT_EQ(f.ExpressionCount(), 10);
    EXPECT_EQ(f.ExpressionCapacity(), 10);
    NoxExpression *node = new NoxConstant(&f, NoxValue(1.0));
    {
        FailAllNothrow failAll;
        EXPECT_EQ(f.AddExpression(node), nullptr);
    }
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(LiveAllocationCount(), live);
    EXPECT_NE(f.CreateRealConstant(10.0), nullptr);
    EXPECT_EQ(f.ExpressionCapacity(), 20);
}

TEST_F(FactoryTest, FailedVariableArrayGrowth_ChangesNothing) {
    for (int i = 0; i < 10; ++i)
        f.CreateVariable();
    const long live = LiveAllocationCount();
    {
        FailNthNothrow failVariableArray(1); // the node is allocation 0
        EXPECT_EQ(f.CreateVariable(), nullptr);
    }
    EXPECT_EQ(LiveAllocationCount(), live);
    EXPECT_EQ(f.GetNbOfVariables(), 10);
    EXPECT_EQ(f.ExpressionCount(), 10);
    EXPECT_EQ(f.CreateVariable()->GetIdx(), 10);
}

TEST_F(FactoryTest, FailedRegistrationOfAVariable_LeavesANullEntryAndTakesTheIndex) {
    for (int i = 0; i < 10; ++i)
        f.CreateRealConstant(i);
    const long live = LiveAllocationCount();
    NoxVariable *v;
    {
        // Allocation 0 is the node, 1 the variable array, 2 the grown expression array.
        FailNthNothrow failExpressionArray(2);
        v = f.CreateVariable();
    }
    EXPECT_EQ(v, nullptr);
    EXPECT_EQ(f.GetNbOfVariables(), 1);
    EXPECT_EQ(f.GetVariable(0), nullptr);
    EXPECT_EQ(f.ExpressionCount(), 10);
    EXPECT_EQ(LiveAllocationCount(), live + 1); // the variable array
    EXPECT_EQ(f.CreateVariable()->GetIdx(), 1);
}

TEST_F(FactoryTest, FailedEquationArrayGrowth_GivesNullAndKeepsTheCount) {
    NoxVariable *x = f.CreateVariable();
    const long live = LiveAllocationCount();
    {
        FailNthNothrow failGrowth(1);
        EXPECT_EQ(f.AddEquation(x, NoxDefaultEquation), nullptr);
    }
    EXPECT_EQ(f.GetNbOfEquations(), 0);
    EXPECT_EQ(LiveAllocationCount(), live);
}

TEST_F(FactoryTest, FailedChildArray_LeavesAnOperatorWithoutChildren) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *sum;
    {
        FailNthNothrow failChildArray(1); // the node is allocation 0
        sum = f.CreateSum(x, x);
    }
    ASSERT_NE(sum, nullptr);
    EXPECT_EQ(sum->GetNbOfChildren(), 2);
    EXPECT_EQ(sum->GetChild(0), nullptr);
    EXPECT_EQ(sum->Eval(), 0.0);
}

TEST_F(FactoryTest, FailedBuffers_GiveNullAndZeroAndWriteNothing) {
    NoxVariable *x = f.CreateVariable();
    f.CreateVariable();
    double out[2] = {7.0, 7.0};
    double row0[2] = {7.0, 7.0}, row1[2] = {7.0, 7.0};
    double *rows[2] = {row0, row1};
    FailAllNothrow failAll;
    EXPECT_EQ(x->GetGradient(), nullptr);
    x->EvalGradient(out);
    EXPECT_EQ(out[0], 7.0);
    EXPECT_EQ(x->EvalFirstDeriv(x), 0.0);
    EXPECT_EQ(x->GetHessian(), nullptr);
    x->EvalHessian(rows);
    EXPECT_EQ(row0[0], 7.0);
    EXPECT_EQ(x->EvalSecondDeriv(x, x), 0.0);
}

TEST_F(FactoryTest, FailedHessianRow_FreesThePartialBufferAndAllowsALaterTry) {
    NoxVariable *x = f.CreateVariable();
    f.CreateVariable();
    f.CreateVariable();
    const long live = LiveAllocationCount();
    {
        FailNthNothrow failSecondRow(2); // the row table is allocation 0
        EXPECT_EQ(x->GetHessian(), nullptr);
    }
    EXPECT_EQ(LiveAllocationCount(), live);
    double **h = x->GetHessian();
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h[2][2], 0.0);
}

TEST_F(FactoryTest, FailedHessianTable_LeavesTheOperatorsHessianUnwritten) {
    NoxVariable *x = f.CreateVariable();
    NoxExpression *unary = f.CreateExp(x);
    double **h = unary->GetHessian();
    h[0][0] = 5.0;
    unary->ResetBuffer(0);
    {
        FailAllNothrow failAll;
        EXPECT_EQ(unary->GetHessian(), h);
    }
    EXPECT_EQ(h[0][0], 5.0);
}

TEST_F(FactoryTest, NamesThatCannotBeAllocated_LeaveTheOldName) {
    NoxVariable *x = f.CreateVariable();
    NoxEquation *eq = f.AddEquation(x, NoxDefaultEquation);
    const std::string longName(100, 'n');
    AllocationFailure names(AllocationForms::Throwing);
    x->SetName(longName);
    eq->SetName(longName);
    NoxEquation copy(*eq);
    names.End();
    EXPECT_EQ(x->GetName(), "va0");
    EXPECT_EQ(eq->GetName(), "eq0");
    eq->SetName(longName);
    AllocationFailure copies(AllocationForms::Throwing);
    NoxEquation failedCopy(*eq);
    copies.End();
    EXPECT_EQ(failedCopy.GetName(), "eq0");
}

// ---- Leaks ----

TEST_F(FactoryTest, ModelBuiltAndDestroyedAThousandTimes_LeavesNothingBehind) {
    BuildEvaluateAndDestroyAModel(); // lets the test framework make its own first allocations
    const long live = LiveAllocationCount();
    for (int i = 0; i < 1000; ++i)
        BuildEvaluateAndDestroyAModel();
    EXPECT_EQ(LiveAllocationCount(), live);
}
