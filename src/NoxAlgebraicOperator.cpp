// Sum, product, minimum and maximum nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"

namespace {

bool NoxIsAlgebraicType(NoxExpressionType t) {
    return t == NoxSumExpr || t == NoxProductExpr || t == NoxMinExpr || t == NoxMaxExpr;
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
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return nullptr;
    }
}

void NoxAlgebraicOperator::DoEval([[maybe_unused]] NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

double NoxAlgebraicOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return 0.0;
    }
}

void NoxAlgebraicOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

void NoxAlgebraicOperator::DoEvalHessian(double **hess) {
    if (!children || !hess)
        return;
    double ***table = InitHessianTable();
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
    FiniHessianTable(table);
}
