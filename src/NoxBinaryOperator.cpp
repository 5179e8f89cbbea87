// Quotient, power, root and modulo nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"
#include "NoxPrivate.h"
#include "NoxValueFunctions.h"

#include <algorithm>
#include <cmath>

namespace {

// An absent child (a node built by hand with a null entry) reads as 0.0, as an undefined
// value and as a zero gradient (a null gradient, also what a child gives when memory for
// its buffer runs short).
double RealOf(NoxExpression *child) { return child ? child->Eval() : 0.0; }

const NoxValue &ValueOf(NoxExpression *child) {
    static const NoxValue undefined;
    return child ? child->GetValue() : undefined;
}

const double *GradientOf(NoxExpression *child) { return child ? child->GetGradient() : nullptr; }

double Entry(const double *g, int k) { return g ? g[k] : 0.0; }

using ValueFunction = NoxValue (*)(const NoxEnvironment &, const NoxValue &, const NoxValue &);

// result := f(child 0's value, child 1's value), child 1's value being fetched first.
void CombineValues(NoxExpression *const *children, const NoxEnvironment &env, ValueFunction f,
                   NoxValue &result) {
    const NoxValue &b = ValueOf(children[1]);
    const NoxValue &a = ValueOf(children[0]);
    result = f(env, a, b);
}

// The roots of x of index n over the whole line.
NoxValue RootOnTheWholeLine(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n) {
    return NoxRoot(env, x, n, nullptr);
}

// The real v-th root of u: 0.0 for an index below NoxAbsPrecision in magnitude, for a
// radicand that is not positive unless the index is an odd integer and the radicand
// negative; the odd root of a negative radicand keeps its sign.
double RealRoot(double u, double v) {
    const double eps = NoxAbsPrecision;
    if (eps > std::fabs(v))
        return 0.0;
    if (u > 0.0)
        return std::pow(u, 1.0 / v);
    const int k = NoxTruncToInt(std::floor(v + 0.5));
    if (k % 2 == 0 || !(u < 0.0))
        return 0.0;
    if (!(std::fabs(k - v) < eps))
        return 0.0;
    return -std::pow(-u, 1.0 / v);
}

// The divisor is evaluated first; an exact zero gives 0.0 without evaluating the dividend.
double RealQuotient(NoxExpression *dividend, NoxExpression *divisor) {
    const double v = RealOf(divisor);
    if (v == 0.0)
        return 0.0;
    return RealOf(dividend) / v;
}

double RealMod(NoxExpression *dividend, NoxExpression *divisor) {
    const double v = RealOf(divisor);
    if (v == 0.0)
        return 0.0;
    return std::fmod(RealOf(dividend), v);
}

// (v gu - u gv) / v^2; all zeros for a divisor of exactly 0.0.
void QuotientGradient(NoxExpression *c0, NoxExpression *c1, double *grad, int n) {
    const double v = RealOf(c1);
    if (v == 0.0) {
        std::fill(grad, grad + n, 0.0);
        return;
    }
    const double u = RealOf(c0);
    const double *gu = GradientOf(c0);
    const double *gv = GradientOf(c1);
    for (int k = 0; k < n; ++k)
        grad[k] = (v * Entry(gu, k) - u * Entry(gv, k)) / (v * v);
}

// (ln u gv + (v / u) gu) u^v: the exponent is differentiated too. All zeros for a base
// of exactly 0.0; a negative base gives NaN through the logarithm.
void PowerGradient(NoxExpression *c0, NoxExpression *c1, double *grad, int n) {
    const double u = RealOf(c0);
    if (u == 0.0) {
        std::fill(grad, grad + n, 0.0);
        return;
    }
    const double v = RealOf(c1);
    const double p = std::pow(u, v);
    const double l = std::log(u);
    const double r = v / u;
    const double *gu = GradientOf(c0);
    const double *gv = GradientOf(c1);
    for (int k = 0; k < n; ++k)
        grad[k] = (l * Entry(gv, k) + r * Entry(gu, k)) * p;
}

// root(u, v) / (v u) gu: the index counts as a constant, its gradient is not read. All
// zeros when v u is exactly 0.0.
void RootGradient(NoxExpression *c0, NoxExpression *c1, double *grad, int n) {
    const double u = RealOf(c0);
    const double v = RealOf(c1);
    if (v * u == 0.0) {
        std::fill(grad, grad + n, 0.0);
        return;
    }
    const double f = RealRoot(u, v) / (v * u);
    const double *gu = GradientOf(c0);
    for (int k = 0; k < n; ++k)
        grad[k] = f * Entry(gu, k);
}

} // namespace

NoxBinaryOperator::NoxBinaryOperator(NoxFactory *owner, NoxExpression *const *childArray,
                                     NoxExpressionType t)
    : NoxOperator(owner, 2, childArray) {
    type = t;
}

NoxExpression *NoxBinaryOperator::Differentiate(NoxVariable *var) {
    if (!children)
        return nullptr;
    if (!var)
        return this;
    NoxExpression *c0 = children[0];
    NoxExpression *c1 = children[1];
    switch (type) {
    case NoxQuotientExpr: { // (u'v - u v') / v^2
        NoxExpression *a = factory->CreateDerivative(c0, 1, &var);
        NoxExpression *b = factory->CreateDerivative(c1, 1, &var);
        NoxExpression *t1 = factory->CreateProduct(a, c1);
        NoxExpression *m = factory->CreateRealConstant(-1.0);
        NoxExpression *factors[3] = {m, c0, b};
        NoxExpression *t2 = factory->CreateProduct(3, factors);
        NoxExpression *num = factory->CreateSum(t1, t2);
        NoxExpression *den = factory->CreatePower(c1, 2);
        return factory->CreateQuotient(num, den);
    }
    case NoxPowerExpr: { // u^v (v' ln u + v u' / u)
        NoxExpression *a = factory->CreateDerivative(c0, 1, &var);
        NoxExpression *b = factory->CreateDerivative(c1, 1, &var);
        NoxExpression *l = factory->CreateLn(c0);
        NoxExpression *t1 = factory->CreateProduct(b, l);
        NoxExpression *t2 = factory->CreateProduct(c1, a);
        NoxExpression *t3 = factory->CreateQuotient(t2, c0);
        NoxExpression *s = factory->CreateSum(t1, t3);
        return factory->CreateProduct(this, s);
    }
    case NoxRootExpr: { // root(u, n) u' / (u n)
        NoxExpression *p = factory->CreateProduct(c0, c1);
        NoxExpression *a = factory->CreateDerivative(c0, 1, &var);
        NoxExpression *q = factory->CreateQuotient(a, p);
        return factory->CreateProduct(this, q);
    }
    default: // The modulo and unserved types have no symbolic derivative.
        return nullptr;
    }
}

void NoxBinaryOperator::DoEval(NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    case NoxQuotientExpr:
        CombineValues(children, GetEnvironment(), NoxDiv, result);
        break;
    case NoxPowerExpr:
        CombineValues(children, GetEnvironment(), NoxPow, result);
        break;
    case NoxRootExpr:
        CombineValues(children, GetEnvironment(), RootOnTheWholeLine, result);
        break;
    case NoxModExpr:
        CombineValues(children, GetEnvironment(), NoxMod, result);
        break;
    default:
        break;
    }
}

double NoxBinaryOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    case NoxQuotientExpr:
        return RealQuotient(children[0], children[1]);
    case NoxPowerExpr: {
        const double u = RealOf(children[0]);
        return std::pow(u, RealOf(children[1]));
    }
    case NoxRootExpr: {
        const double u = RealOf(children[0]);
        return RealRoot(u, RealOf(children[1]));
    }
    case NoxModExpr:
        return RealMod(children[0], children[1]);
    default:
        return 0.0;
    }
}

void NoxBinaryOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    const int n = GetNbOfVariables();
    switch (type) {
    case NoxQuotientExpr:
        QuotientGradient(children[0], children[1], grad, n);
        break;
    case NoxPowerExpr:
        PowerGradient(children[0], children[1], grad, n);
        break;
    case NoxRootExpr:
        RootGradient(children[0], children[1], grad, n);
        break;
    default: // The modulo and unserved types never write: the buffer keeps its contents.
        break;
    }
}

void NoxBinaryOperator::DoEvalHessian(double **hess) {
    if (!children || !hess)
        return;
    // The table is built and freed for every type, so each child's Hessian is computed.
    double ***table = InitHessianTable();
    switch (type) {
    case NoxQuotientExpr:
    case NoxPowerExpr:
    case NoxRootExpr:
    case NoxModExpr:
        // Child 0's Hessian, as it is: no second derivative of the operator is formed.
        CopyHessianTable(table, hess);
        break;
    default:
        break;
    }
    FiniHessianTable(table);
}
