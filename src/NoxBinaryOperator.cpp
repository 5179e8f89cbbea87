// Quotient, power, root and modulo nodes.
#include "NoxOperators.h"

#include "NoxFactory.h"

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
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return nullptr;
    }
}

void NoxBinaryOperator::DoEval([[maybe_unused]] NoxValue &result) {
    if (!children)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

double NoxBinaryOperator::DoEval() {
    if (!children)
        return 0.0;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        return 0.0;
    }
}

void NoxBinaryOperator::DoEvalGradient(double *grad) {
    if (!children || !grad)
        return;
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
}

void NoxBinaryOperator::DoEvalHessian(double **hess) {
    if (!children || !hess)
        return;
    // The table is built and freed for every type, so each child's Hessian is computed.
    double ***table = InitHessianTable();
    switch (type) {
    default: // The rules of the served types are added with the operator bodies.
        break;
    }
    FiniHessianTable(table);
}
