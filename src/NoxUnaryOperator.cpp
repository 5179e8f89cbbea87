// Square root, logarithm, exponential, absolute value, ceiling, floor and rounding nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"
#include "NoxPrivate.h"
#include "NoxValueFunctions.h"

#include <algorithm>
#include <cmath>

namespace {

// 1.0 above zero, -1.0 below, 0.0 at zero and for NaN.
double Sign(double u) { return u > 0.0 ? 1.0 : (u < 0.0 ? -1.0 : 0.0); }

// grad[k] = factor * gu[k] over the child's gradient gu.
void ScaleChildGradient(NoxExpression *child, double factor, double *grad, int n) {
    NoxApplyGradientRule({factor, NoxGradientCombine::Times, false}, child, grad, n);
}

// grad[k] = gu[k] / d, one division per entry. A denominator of exactly 0.0 gives an
// all-zero gradient instead, without fetching the child's gradient.
void DivideChildGradient(NoxExpression *child, double d, double *grad, int n) {
    NoxApplyGradientRule({d, NoxGradientCombine::Over, d == 0.0}, child, grad, n);
}

} // namespace

NoxUnaryOperator::NoxUnaryOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t)
    : NoxOperator(owner, 1, &child) {
    type = t;
}

NoxExpression *NoxUnaryOperator::Differentiate(NoxVariable *var) {
    if (!children)
        return nullptr;
    if (!var)
        return this;
    NoxExpression *c = children[0];
    switch (type) {
    case NoxSqrtExpr: { // u' / (2 * sqrt(u))
        NoxExpression *s = factory->CreateSqrt(c);
        NoxExpression *two = factory->CreateRealConstant(2.0);
        NoxExpression *p = factory->CreateProduct(two, s);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, p);
    }
    case NoxLogExpr: { // u' / (u * ln 10)
        NoxExpression *k = factory->CreateRealConstant(std::log(10.0));
        NoxExpression *p = factory->CreateProduct(c, k);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, p);
    }
    case NoxLnExpr: { // u' / u
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, c);
    }
    case NoxExpExpr: { // exp(u) * u'
        NoxExpression *e = factory->CreateExp(c);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateProduct(e, d);
    }
    case NoxCeilExpr:
    case NoxFloorExpr:
    case NoxRoundExpr: // Piecewise constant: the derivative is taken as 0 everywhere.
        return factory->CreateRealConstant(0.0);
    default: // The absolute value has no symbolic derivative; other types are not served.
        return nullptr;
    }
}

void NoxUnaryOperator::DoEval(NoxValue &result) {
    if (!children)
        return;
    const NoxEnvironment &env = *environment;
    switch (type) {
    case NoxSqrtExpr:
        result = NoxSqrt(env, children[0]->GetValue());
        break;
    case NoxLogExpr:
        result = NoxLog(env, children[0]->GetValue());
        break;
    case NoxLnExpr:
        result = NoxLn(env, children[0]->GetValue());
        break;
    case NoxExpExpr:
        result = NoxExp(env, children[0]->GetValue());
        break;
    case NoxAbsExpr:
        result = NoxAbs(env, children[0]->GetValue());
        break;
    case NoxCeilExpr:
        result = NoxCeil(env, children[0]->GetValue());
        break;
    case NoxFloorExpr:
        result = NoxFloor(env, children[0]->GetValue());
        break;
    case NoxRoundExpr:
        result = NoxRound(env, children[0]->GetValue());
        break;
    default: // Not served: the result is left untouched.
        break;
    }
}

// No domain guard and no error bit: a negative argument of sqrt or a logarithm gives
// NaN, a zero one -infinity for the logarithms.
double NoxUnaryOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    case NoxSqrtExpr:
        return std::sqrt(children[0]->Eval());
    case NoxLogExpr:
        return std::log10(children[0]->Eval());
    case NoxLnExpr:
        return std::log(children[0]->Eval());
    case NoxExpExpr:
        return std::exp(children[0]->Eval());
    case NoxAbsExpr: {
        const double u = children[0]->Eval();
        return u < 0.0 ? -0.0 - u : u;
    }
    case NoxCeilExpr:
        return std::ceil(children[0]->Eval());
    case NoxFloorExpr:
        return std::floor(children[0]->Eval());
    case NoxRoundExpr: // Halves round upward: -2.5 gives -2.0.
        return std::floor(children[0]->Eval() + 0.5);
    default:
        return 0.0;
    }
}

void NoxUnaryOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    NoxExpression *c = children[0];
    const int n = GetNbOfVariables();
    switch (type) {
    case NoxSqrtExpr:
        DivideChildGradient(c, 2 * std::sqrt(c->Eval()), grad, n);
        break;
    case NoxLogExpr:
        DivideChildGradient(c, c->Eval() * std::log(10.0), grad, n);
        break;
    case NoxLnExpr:
        DivideChildGradient(c, c->Eval(), grad, n);
        break;
    case NoxExpExpr:
        ScaleChildGradient(c, std::exp(c->Eval()), grad, n);
        break;
    case NoxAbsExpr: // The sign is 0.0 at zero, so the gradient there is all zeros.
        ScaleChildGradient(c, Sign(c->Eval()), grad, n);
        break;
    case NoxCeilExpr:
    case NoxFloorExpr:
    case NoxRoundExpr:
        std::fill(grad, grad + n, 0.0);
        break;
    default: // Not served: nothing is written.
        break;
    }
}

// The Hessian of a unary node is its child's, for every type: the second derivative of
// the function itself is not formed.
void NoxUnaryOperator::DoEvalHessian(double **hess) { CopyFirstChildHessian(hess); }
