// Square root, logarithm, exponential, absolute value, ceiling, floor and rounding nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"

NoxUnaryOperator::NoxUnaryOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t)
    : NoxOperator(owner, 1, &child) {
    type = t;
}

NoxExpression *NoxUnaryOperator::Differentiate(NoxVariable *var) {
    if (!children)
        return nullptr;
    if (!var)
        return this;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return nullptr;
    }
}

void NoxUnaryOperator::DoEval([[maybe_unused]] NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

double NoxUnaryOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return 0.0;
    }
}

void NoxUnaryOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

// The Hessian of a unary node is its child's, for every type: the second derivative of
// the function itself is not formed.
void NoxUnaryOperator::DoEvalHessian(double **hess) { CopyFirstChildHessian(hess); }
