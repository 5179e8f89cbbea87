// Sum, product, minimum and maximum nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"
#include "NoxValueFunctions.h"

#include <algorithm>
#include <new>

namespace {

bool NoxIsAlgebraicType(NoxExpressionType t) {
    return t == NoxSumExpr || t == NoxProductExpr || t == NoxMinExpr || t == NoxMaxExpr;
}

// Scratch storage of n entries: a fixed buffer for up to 8 entries, the heap beyond.
// get() is null when the heap has no room.
template <class T> class Scratch {
public:
    explicit Scratch(int n) : data(n <= Fixed ? fixed : new (std::nothrow) T[n]) {}
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch() {
        if (data != fixed)
            delete[] data;
    }
    T *get() const { return data; }

private:
    static constexpr int Fixed = 8;
    T fixed[Fixed] = {};
    T *data;
};

// An absent child (a null entry of the caller's array) is skipped wherever it can be:
// in the folds, in the gradients (it adds nothing and counts as a factor 1.0 in the
// product rule) and in the walk of the minimum and maximum. Child 0 of the minimum and
// maximum and of the value fold cannot be skipped: absent, it reads as 0.0 and as an
// undefined value. A null gradient (an absent child, or memory that ran short for the
// child's buffer) adds nothing.
double RealOf(NoxExpression *child) { return child ? child->Eval() : 0.0; }

const NoxValue &ValueOf(NoxExpression *child) {
    static const NoxValue undefined;
    return child ? child->GetValue() : undefined;
}

const double *GradientOf(NoxExpression *child) { return child ? child->GetGradient() : nullptr; }

using ValueFunction = NoxValue (*)(const NoxEnvironment &, const NoxValue &, const NoxValue &);

// result := child 0's value, then f(result, child i's value) for every non-null child
// i >= 1, each intermediate assigned into result.
void FoldValues(NoxExpression *const *children, int n, const NoxEnvironment &env,
                ValueFunction f, NoxValue &result) {
    result = ValueOf(children[0]);
    for (int i = 1; i < n; ++i)
        if (children[i])
            result = f(env, result, children[i]->GetValue());
}

double RealSum(NoxExpression *const *children, int n) {
    double r = 0.0;
    for (int i = 0; i < n; ++i)
        if (children[i])
            r += children[i]->Eval();
    return r;
}

double RealProduct(NoxExpression *const *children, int n) {
    double r = 1.0;
    for (int i = 0; i < n; ++i)
        if (children[i])
            r *= children[i]->Eval();
    return r;
}

// The running value starts at child 0 and is replaced by a child that is strictly
// smaller (strictly larger for the maximum).
double RealExtreme(NoxExpression *const *children, int n, bool maximum) {
    double r = RealOf(children[0]);
    for (int i = 1; i < n; ++i) {
        if (!children[i])
            continue;
        const double c = children[i]->Eval();
        if (maximum ? c > r : r > c)
            r = c;
    }
    return r;
}

void SumGradient(NoxExpression *const *children, int n, double *grad, int v) {
    std::fill(grad, grad + v, 0.0);
    for (int i = 0; i < n; ++i) {
        const double *g = GradientOf(children[i]);
        if (!g)
            continue;
        for (int k = 0; k < v; ++k)
            grad[k] += g[k];
    }
}

// Product rule: each child's gradient times the product of the other children's values,
// formed afresh for every child (no division, so a zero factor needs no care).
void ProductGradient(NoxExpression *const *children, int n, double *grad, int v) {
    std::fill(grad, grad + v, 0.0);
    Scratch<double> scratch(n);
    double *values = scratch.get();
    if (!values)
        return;
    for (int i = 0; i < n; ++i)
        values[i] = children[i] ? children[i]->Eval() : 1.0;
    for (int i = 0; i < n; ++i) {
        const double *g = GradientOf(children[i]);
        if (!g)
            continue;
        double f = 1.0;
        for (int j = 0; j < n; ++j)
            if (j != i)
                f *= values[j];
        for (int k = 0; k < v; ++k)
            grad[k] += f * g[k];
    }
}

// The gradient of the last child that beats child 0 (strictly smaller, or strictly
// larger for the maximum); child 0's when none does. Every child is compared with
// child 0, never with the running selection.
void ExtremeGradient(NoxExpression *const *children, int n, bool maximum, double *grad, int v) {
    std::fill(grad, grad + v, 0.0);
    if (n < 1)
        return;
    const double r0 = RealOf(children[0]);
    int selected = 0;
    for (int i = 1; i < n; ++i) {
        if (!children[i])
            continue;
        const double r = children[i]->Eval();
        if (maximum ? r > r0 : r < r0)
            selected = i;
    }
    const double *g = GradientOf(children[selected]);
    if (g)
        std::copy(g, g + v, grad);
}

// hess := the entry-by-entry sum of the children's Hessians, in child order; an absent
// Hessian adds nothing. A table that could not be had leaves hess unwritten.
void AddHessians(double ***table, int n, double **hess, int v) {
    if (!table)
        return;
    for (int r = 0; r < v; ++r)
        std::fill(hess[r], hess[r] + v, 0.0);
    for (int r = 0; r < v; ++r)
        for (int c = 0; c < v; ++c)
            for (int i = 0; i < n; ++i)
                if (table[i])
                    hess[r][c] += table[i][r][c];
}

} // namespace

NoxAlgebraicOperator::NoxAlgebraicOperator(NoxFactory *owner, int n,
                                           NoxExpression *const *childArray,
                                           NoxExpressionType t)
    : NoxOperator(owner, n, childArray) {
    type = t;
    if (NoxIsAlgebraicType(t))
        return;
    // An unserved type makes the node inert: every body returns at once without children.
    delete[] children;
    children = nullptr;
    childCount = 0;
}

NoxExpression *NoxAlgebraicOperator::Differentiate(NoxVariable *var) {
    if (!children)
        return nullptr;
    if (!var)
        return this;
    const int n = childCount;
    switch (type) {
    case NoxSumExpr: { // the sum of the children's derivatives
        Scratch<NoxExpression *> derivatives(n);
        NoxExpression **d = derivatives.get();
        if (!d)
            return nullptr;
        for (int i = 0; i < n; ++i)
            d[i] = factory->CreateDerivative(children[i], 1, &var);
        return factory->CreateSum(n, d);
    }
    case NoxProductExpr: { // the sum over i of the product with child i differentiated
        Scratch<NoxExpression *> factorScratch(n);
        Scratch<NoxExpression *> termScratch(n);
        NoxExpression **factors = factorScratch.get();
        NoxExpression **terms = termScratch.get();
        if (!factors || !terms)
            return nullptr;
        for (int i = 0; i < n; ++i) {
            std::copy(children, children + n, factors);
            factors[i] = factory->CreateDerivative(children[i], 1, &var);
            terms[i] = factory->CreateProduct(n, factors);
        }
        return factory->CreateSum(n, terms);
    }
    default: // The minimum, the maximum and unserved types have no symbolic derivative.
        return nullptr;
    }
}

void NoxAlgebraicOperator::DoEval(NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    case NoxSumExpr:
        FoldValues(children, childCount, GetEnvironment(), NoxSum, result);
        break;
    case NoxProductExpr:
        FoldValues(children, childCount, GetEnvironment(), NoxMul, result);
        break;
    case NoxMinExpr:
        FoldValues(children, childCount, GetEnvironment(), NoxMin, result);
        break;
    case NoxMaxExpr:
        FoldValues(children, childCount, GetEnvironment(), NoxMax, result);
        break;
    default:
        break;
    }
}

double NoxAlgebraicOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    case NoxSumExpr:
        return RealSum(children, childCount);
    case NoxProductExpr:
        return RealProduct(children, childCount);
    case NoxMinExpr:
        return RealExtreme(children, childCount, false);
    case NoxMaxExpr:
        return RealExtreme(children, childCount, true);
    default:
        return 0.0;
    }
}

void NoxAlgebraicOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    const int v = GetNbOfVariables();
    switch (type) {
    case NoxSumExpr:
        SumGradient(children, childCount, grad, v);
        break;
    case NoxProductExpr:
        ProductGradient(children, childCount, grad, v);
        break;
    case NoxMinExpr:
        ExtremeGradient(children, childCount, false, grad, v);
        break;
    case NoxMaxExpr:
        ExtremeGradient(children, childCount, true, grad, v);
        break;
    default:
        break;
    }
}

void NoxAlgebraicOperator::DoEvalHessian(double **hess) {
    if (!children || !hess)
        return;
    double ***table = InitHessianTable();
    switch (type) {
    case NoxSumExpr:
        AddHessians(table, childCount, hess, GetNbOfVariables());
        break;
    case NoxProductExpr:
    case NoxMinExpr:
    case NoxMaxExpr:
        // Child 0's Hessian, as it is: no second derivative of the operator is formed.
        CopyHessianTable(table, hess);
        break;
    default:
        break;
    }
    FiniHessianTable(table);
}
