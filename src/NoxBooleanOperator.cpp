// Logical connective and comparison nodes, evaluated on values only.
#include "NoxOperators.h"

#include "NoxFactory.h"

NoxBooleanOperator::NoxBooleanOperator(NoxFactory *owner, NoxExpression *child,
                                       NoxExpressionType t)
    : NoxOperator(owner, 1, &child) {
    type = t;
}

NoxBooleanOperator::NoxBooleanOperator(NoxFactory *owner, NoxExpression *const *childArray,
                                       NoxExpressionType t)
    : NoxOperator(owner, 2, childArray) {
    type = t;
}

// Logical nodes have no symbolic derivative, whatever the variable.
NoxExpression *NoxBooleanOperator::Differentiate(NoxVariable *) { return nullptr; }

void NoxBooleanOperator::DoEval([[maybe_unused]] NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

// Logical nodes take no part in real evaluation: 0.0, without evaluating the children.
double NoxBooleanOperator::DoEval() { return 0.0; }

// Logical nodes have no gradient: the buffer keeps its contents.
void NoxBooleanOperator::DoEvalGradient(double *) {}

// The Hessian of a logical node is its first child's, for every type.
void NoxBooleanOperator::DoEvalHessian(double **hess) { CopyFirstChildHessian(hess); }
