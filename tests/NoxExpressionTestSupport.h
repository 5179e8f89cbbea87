// Test helpers for the expression tests: a black box that counts its evaluations and a
// factory that exposes its protected members.
#ifndef NOX_EXPRESSION_TEST_SUPPORT_H
#define NOX_EXPRESSION_TEST_SUPPORT_H

#include <NoxBlackBox.h>
#include <NoxExpression.h>
#include <NoxFactory.h>

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

#endif
