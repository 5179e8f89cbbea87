// Black boxes and their operator node: values from the box, forward-difference
// derivatives.
#include "NoxBlackBox.h"

#include "NoxFactory.h"

#include <algorithm>

namespace {

// The fixed step of every forward difference.
constexpr double NoxBlackBoxStep = 1e-4;

} // namespace

NoxBlackBox::~NoxBlackBox() { op = nullptr; }

NoxBlackBoxOperator::NoxBlackBoxOperator(NoxFactory *owner, int n,
                                         NoxExpression *const *arguments, NoxBlackBox &box)
    : NoxOperator(owner, n, arguments), blackBox(&box) {
    type = NoxBlackBoxExpr;
}

NoxExpression *NoxBlackBoxOperator::Differentiate(NoxVariable *) { return nullptr; }

void NoxBlackBoxOperator::DoEval(NoxValue &result) { blackBox->Eval(result); }

double NoxBlackBoxOperator::DoEval() { return blackBox->Eval(); }

// Runs `measure` with x set to the real (its reading + h), then sets x back to the real
// reading; each setting refreshes this node's sub-graph through the factory.
template <class Measure>
static double NoxPerturbed(NoxVariable *x, NoxExpression *node, Measure measure) {
    const double y = x->Eval();
    x->SetValue(NoxValue(y + NoxBlackBoxStep), node);
    const double result = measure();
    x->SetValue(NoxValue(y), node);
    return result;
}

double NoxBlackBoxOperator::DoEvalFirstDeriv(NoxVariable *x) {
    if (!x)
        return 0.0;
    const double f0 = Eval();
    const double f1 = NoxPerturbed(x, this, [this] { return Eval(); });
    return (f1 - f0) / NoxBlackBoxStep;
}

double NoxBlackBoxOperator::DoEvalSecondDeriv(NoxVariable *a, NoxVariable *b) {
    if (!a || !b)
        return 0.0;
    const double g0 = EvalFirstDeriv(a);
    const double g1 = NoxPerturbed(b, this, [this, a] { return EvalFirstDeriv(a); });
    return (g1 - g0) / NoxBlackBoxStep;
}

void NoxBlackBoxOperator::DoEvalGradient(double *grad) {
    if (!grad)
        return;
    const int n = GetNbOfVariables();
    std::fill(grad, grad + n, 0.0);
    for (int i = 0; i < childCount; ++i) {
        NoxExpression *child = GetChild(i);
        // Only arguments that are variables themselves get a derivative (no chain rule);
        // a variable must also lie among the factory's variables to have an entry.
        NoxVariable *x = child && child->GetType() == NoxVariableExpr
                             ? dynamic_cast<NoxVariable *>(child)
                             : nullptr;
        if (x && x->GetIdx() >= 0 && x->GetIdx() < n)
            grad[x->GetIdx()] = DoEvalFirstDeriv(x);
    }
}

// Every pair of the factory's variables, arguments or not, without using symmetry. The
// settings restoring a perturbed variable may find the factory's buffers-in-use flag
// lowered and then refresh nothing, so a gradient cached at the perturbed point can serve
// as the base of the next pair: the rules are kept as they are.
void NoxBlackBoxOperator::DoEvalHessian(double **hess) {
    const int n = GetNbOfVariables();
    if (!hess || n == 0)
        return;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            hess[i][j] = DoEvalSecondDeriv(factory->GetVariable(i), factory->GetVariable(j));
}
