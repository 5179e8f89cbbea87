// Test helpers for the expression tests: a black box that counts its evaluations, a
// factory that exposes its protected members, and checks of the nodes built.
#ifndef NOX_EXPRESSION_TEST_SUPPORT_H
#define NOX_EXPRESSION_TEST_SUPPORT_H

#include <NoxBlackBox.h>
#include <NoxExpression.h>
#include <NoxFactory.h>

#include "NoxTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

/// A black box whose value is a function of its arguments' real values (the sum by
/// default) and which counts its real and value evaluations.
class CountingBox : public NoxBlackBox {
public:
    using Function = std::function<double(const std::vector<double> &)>;

    explicit CountingBox(Function f = Sum) : function(std::move(f)) {}

    double Eval() override {
        ++realCalls;
        return function(Arguments([](NoxExpression *e) { return e->Eval(); }));
    }

    void Eval(NoxValue &result) override {
        ++valueCalls;
        result = NoxValue(
            function(Arguments([](NoxExpression *e) { return e->GetValue().GetRealValue(); })));
    }

    int realCalls = 0;
    int valueCalls = 0;

private:
    static double Sum(const std::vector<double> &args) {
        double s = 0.0;
        for (double a : args)
            s += a;
        return s;
    }

    template <class Read> std::vector<double> Arguments(Read read) {
        std::vector<double> args;
        NoxBlackBoxOperator *node = GetOperator();
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i) {
            NoxExpression *child = node->GetChild(i);
            args.push_back(child ? read(child) : 0.0);
        }
        return args;
    }

    Function function;
};

/// A factory that shows its protected members to the tests.
class TestFactory : public NoxFactory {
public:
    using NoxFactory::AddExpression;

    int ExpressionCount() const { return expressionCount; }
    int ExpressionCapacity() const { return expressionCapacity; }
    NoxExpression *Expression(int i) const { return expressions[i]; }
    NoxExpression *LastExpression() const { return expressions[expressionCount - 1]; }
    int VariableCapacity() const { return variableCapacity; }
    int EquationCapacity() const { return equationCapacity; }
    unsigned char BuffersInUse() const { return buffersInUse; }

    /// A black-box node over `args` with a new counting box kept by the factory's user.
    NoxExpression *Box(CountingBox &box, std::vector<NoxExpression *> args) {
        return DeclareBlackBox(&box, static_cast<int>(args.size()), args.data());
    }
};

/// Sets a variable to a real value, refreshing every registered expression.
inline void SetReal(NoxVariable *x, double v) { x->SetValue(NoxValue(v), nullptr); }

/// No node of the graph below `node` lists some children but misses others, as a factor
/// list holding a null entry would. (A node whose child array could not be allocated has
/// no child at all; that is the factory's own fallback.)
inline bool HasNoMissingFactor(const NoxExpression *node) {
    int missing = 0;
    for (int i = 0; i < node->GetNbOfChildren(); ++i) {
        const NoxExpression *child = node->GetChild(i);
        if (!child)
            ++missing;
        else if (!HasNoMissingFactor(child))
            return false;
    }
    return missing == 0 || missing == node->GetNbOfChildren();
}

/// A constant node of the given kind whose real reading is v (bit for bit, or both NaN).
inline void ExpectConstant(const NoxExpression *node, NoxValueType kind, double v) {
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetType(), NoxConstantExpr);
    EXPECT_EQ(node->GetExprValue().GetType(), kind);
    EXPECT_TRUE(nox_test::SameDouble(node->GetExprValue().GetAsReal(), v));
}

/// A real constant node whose reading is v.
inline void ExpectRealConstant(const NoxExpression *node, double v) {
    ExpectConstant(node, NoxRealType, v);
}

#endif
