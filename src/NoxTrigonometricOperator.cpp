// Circular and hyperbolic function nodes and their inverses.
#include "NoxOperators.h"

#include "NoxFactory.h"
#include "NoxPrivate.h"
#include "NoxValueFunctions.h"

#include <algorithm>
#include <cmath>

namespace {

using Combine = NoxGradientCombine;

// a * e^2 + b through the factory, the coefficients as real values held for the call.
NoxExpression *Quadratic(NoxFactory *factory, double a, NoxExpression *e, double b) {
    return factory->CreateQuadraticTerm(NoxValue(a), e, NoxValue(b));
}

} // namespace

NoxTrigonometricOperator::NoxTrigonometricOperator(NoxFactory *owner, NoxExpression *child,
                                                   NoxExpressionType t)
    : NoxOperator(owner, 1, &child) {
    type = t;
}

NoxExpression *NoxTrigonometricOperator::Differentiate(NoxVariable *var) {
    if (!children)
        return nullptr;
    if (!var)
        return this;
    NoxExpression *c = children[0];
    switch (type) {
    case NoxSinExpr: { // cos(u) * u'
        NoxExpression *cosine = factory->CreateCos(c);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateProduct(cosine, d);
    }
    case NoxCosExpr: { // (-1) * sin(u) * u'
        NoxExpression *m = factory->CreateRealConstant(-1.0);
        NoxExpression *s = factory->CreateSin(c);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        // The list form does not check its entries: a child without a derivative leaves
        // the product with a null factor, which its evaluation passes over.
        NoxExpression *factors[3] = {m, s, d};
        return factory->CreateProduct(3, factors);
    }
    case NoxTanExpr: { // u' / cos(u)^2
        NoxExpression *p = factory->CreatePower(factory->CreateCos(c), 2);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, p);
    }
    case NoxAsinExpr: { // u' / sqrt(-1 * u^2 + 1)
        NoxExpression *r = factory->CreateSqrt(Quadratic(factory, -1.0, c, 1.0));
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, r);
    }
    case NoxAcosExpr: { // (-1 * u' + 0) / sqrt(-1 * u^2 + 1)
        NoxExpression *r = factory->CreateSqrt(Quadratic(factory, -1.0, c, 1.0));
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        NoxExpression *n = factory->CreateLinearTerm(NoxValue(-1.0), d, NoxValue(0.0));
        return factory->CreateQuotient(n, r);
    }
    case NoxAtanExpr: { // u' / (1 * u^2 + 1)
        NoxExpression *q = Quadratic(factory, 1.0, c, 1.0);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, q);
    }
    case NoxSinhExpr: { // cosh(u) * u'
        NoxExpression *h = factory->CreateCosh(c);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateProduct(h, d);
    }
    case NoxCoshExpr: { // sinh(u) * u'
        NoxExpression *h = factory->CreateSinh(c);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateProduct(h, d);
    }
    case NoxTanhExpr: { // (-1 * tanh(u)^2 + 1) * u', the node itself squared
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        NoxExpression *q = Quadratic(factory, -1.0, this, 1.0);
        return factory->CreateProduct(q, d);
    }
    case NoxASinhExpr: { // u' / sqrt(1 * u^2 + 1)
        NoxExpression *r = factory->CreateSqrt(Quadratic(factory, 1.0, c, 1.0));
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, r);
    }
    case NoxACoshExpr: { // u' / sqrt(1 * u^2 - 1)
        NoxExpression *r = factory->CreateSqrt(Quadratic(factory, 1.0, c, -1.0));
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, r);
    }
    case NoxATanhExpr: { // u' / (-1 * u^2 + 1)
        NoxExpression *q = Quadratic(factory, -1.0, c, 1.0);
        NoxExpression *d = factory->CreateDerivative(c, 1, &var);
        return factory->CreateQuotient(d, q);
    }
    default:
        return nullptr;
    }
}

void NoxTrigonometricOperator::DoEval(NoxValue &result) {
    if (!children)
        return;
    const NoxEnvironment &env = *environment;
    switch (type) {
    case NoxSinExpr:
        result = NoxSin(env, children[0]->GetValue());
        break;
    case NoxCosExpr:
        result = NoxCos(env, children[0]->GetValue());
        break;
    case NoxTanExpr:
        result = NoxTan(env, children[0]->GetValue());
        break;
    case NoxAsinExpr: // The inverse circular functions take no range of angles here.
        result = NoxAsin(env, children[0]->GetValue(), nullptr);
        break;
    case NoxAcosExpr:
        result = NoxAcos(env, children[0]->GetValue(), nullptr);
        break;
    case NoxAtanExpr:
        result = NoxAtan(env, children[0]->GetValue(), nullptr);
        break;
    case NoxSinhExpr:
        result = NoxSinh(env, children[0]->GetValue());
        break;
    case NoxCoshExpr:
        result = NoxCosh(env, children[0]->GetValue());
        break;
    case NoxTanhExpr:
        result = NoxTanh(env, children[0]->GetValue());
        break;
    case NoxASinhExpr:
        result = NoxAsinh(env, children[0]->GetValue());
        break;
    case NoxACoshExpr:
        result = NoxAcosh(env, children[0]->GetValue());
        break;
    case NoxATanhExpr:
        result = NoxAtanh(env, children[0]->GetValue());
        break;
    default: // Not served: the result is left untouched.
        break;
    }
}

// No domain guard and no error bit: asin(2) is NaN. The inverse hyperbolic functions use
// the library's own formulas, the ones the interval functions use.
double NoxTrigonometricOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    case NoxSinExpr:
        return std::sin(children[0]->Eval());
    case NoxCosExpr:
        return std::cos(children[0]->Eval());
    case NoxTanExpr:
        return std::tan(children[0]->Eval());
    case NoxAsinExpr:
        return std::asin(children[0]->Eval());
    case NoxAcosExpr:
        return std::acos(children[0]->Eval());
    case NoxAtanExpr:
        return std::atan(children[0]->Eval());
    case NoxSinhExpr:
        return std::sinh(children[0]->Eval());
    case NoxCoshExpr:
        return std::cosh(children[0]->Eval());
    case NoxTanhExpr:
        return std::tanh(children[0]->Eval());
    case NoxASinhExpr:
        return NoxRealAsinh(children[0]->Eval());
    case NoxACoshExpr:
        return NoxRealAcosh(children[0]->Eval());
    case NoxATanhExpr:
        return NoxRealAtanh(children[0]->Eval());
    default:
        return 0.0;
    }
}

// Tangent, arc sine and arc cosine have guards that give an all-zero gradient; at
// |u| = 1 the arc guards pass and the entries become infinite or NaN. The inverse
// hyperbolic cosine and tangent have none.
void NoxTrigonometricOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    NoxExpression *c = children[0];
    NoxGradientRule rule;
    switch (type) {
    case NoxSinExpr:
        rule = {std::cos(c->Eval()), Combine::Times, false};
        break;
    case NoxCosExpr:
        rule = {std::sin(c->Eval()), Combine::MinusTimes, false};
        break;
    case NoxTanExpr: {
        const double cu = std::cos(c->Eval());
        rule = {cu * cu, Combine::Over, cu == 0.0};
        break;
    }
    case NoxAsinExpr: {
        const double u = c->Eval();
        rule = {std::sqrt(1 - u * u), Combine::Over, u * u > 1.0};
        break;
    }
    case NoxAcosExpr: {
        const double u = c->Eval();
        rule = {std::sqrt(1 - u * u), Combine::MinusOver, u * u > 1.0};
        break;
    }
    case NoxAtanExpr: {
        const double u = c->Eval();
        rule = {u * u + 1, Combine::Over, false};
        break;
    }
    case NoxSinhExpr:
        rule = {std::cosh(c->Eval()), Combine::Times, false};
        break;
    case NoxCoshExpr:
        rule = {std::sinh(c->Eval()), Combine::Times, false};
        break;
    case NoxTanhExpr: {
        const double t = std::tanh(c->Eval());
        rule = {1 - t * t, Combine::Times, false};
        break;
    }
    case NoxASinhExpr: {
        const double u = c->Eval();
        rule = {1 / std::sqrt(u * u + 1), Combine::Times, false};
        break;
    }
    case NoxACoshExpr: {
        const double u = c->Eval();
        rule = {1 / std::sqrt(u * u - 1), Combine::Times, false};
        break;
    }
    case NoxATanhExpr: {
        const double u = c->Eval();
        rule = {1 / (1 - u * u), Combine::Times, false};
        break;
    }
    default: // Not served: nothing is written.
        return;
    }
    NoxApplyGradientRule(rule, c, grad, GetNbOfVariables());
}

// The Hessian of a trigonometric node is its child's, for every type: the second
// derivative of the function itself is not formed.
void NoxTrigonometricOperator::DoEvalHessian(double **hess) {
    if (!children || !hess)
        return;
    CopyFirstChildHessian(hess);
}
