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

/// A leaf with a fixed real value, value, gradient and Hessian, which counts how often
/// each is computed and, given a log, appends its id to it on every real or value
/// evaluation.
class StubNode : public NoxExpression {
public:
    using Matrix = std::vector<std::vector<double>>;

    StubNode(NoxFactory *owner, double r, std::vector<double> g, Matrix h, NoxValue v)
        : StubNode(owner, 0, nullptr, r, std::move(g), std::move(h), std::move(v)) {}
    StubNode(NoxFactory *owner, int ident, std::vector<int> *sink, double r,
             std::vector<double> g, Matrix h, NoxValue v)
        : NoxExpression(owner), id(ident), log(sink), real(r), gradient(std::move(g)),
          hessian(std::move(h)), value(std::move(v)) {
        type = NoxBlackBoxExpr;
    }
    int GetNbOfChildren() const override { return 0; }
    NoxExpression *GetChild(int) override { return nullptr; }
    const NoxExpression *GetChild(int) const override { return nullptr; }
    NoxExpression *Differentiate(NoxVariable *) override { return nullptr; }
    void FillPresentVariables(unsigned char *) const override {}

    int realCalls = 0;
    int valueCalls = 0;
    int gradientCalls = 0;
    int hessianCalls = 0;

protected:
    double DoEval() override {
        ++realCalls;
        if (log)
            log->push_back(id);
        return real;
    }
    void DoEval(NoxValue &result) override {
        ++valueCalls;
        if (log)
            log->push_back(id);
        result = value;
    }
    void DoEvalGradient(double *g) override {
        ++gradientCalls;
        for (int k = 0; k < GetNbOfVariables(); ++k)
            g[k] = k < static_cast<int>(gradient.size()) ? gradient[k] : 0.0;
    }
    void DoEvalHessian(double **h) override {
        ++hessianCalls;
        const int n = GetNbOfVariables();
        for (int r = 0; r < n; ++r)
            for (int c = 0; c < n; ++c)
                h[r][c] = r < static_cast<int>(hessian.size()) ? hessian[r][c] : 0.0;
    }

private:
    int id;
    std::vector<int> *log;
    double real;
    std::vector<double> gradient;
    Matrix hessian;
    NoxValue value;
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
