// Logical connective and comparison nodes, evaluated on values only.
#include "NoxOperators.h"

#include "NoxFactory.h"
#include "NoxValueFunctions.h"

namespace {

// The value function of each two-child connective, indexed by type − NoxOrExpr.
using NoxConnective = NoxValue (*)(const NoxValue &, const NoxValue &);
const NoxConnective kConnectives[] = {NoxOr, NoxAnd, NoxEqual, NoxNotEqual, NoxImplication};

} // namespace

NoxBooleanOperator::NoxBooleanOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t)
    : NoxOperator(owner, 1, &child) {
    type = t;
}

NoxBooleanOperator::NoxBooleanOperator(NoxFactory *owner, NoxExpression *const *childArray,
                                       NoxExpressionType t)
    : NoxOperator(owner, 2, childArray) {
    type = t;
}

// Logical nodes have no symbolic derivative, whatever the variable (a null one included).
NoxExpression *NoxBooleanOperator::Differentiate(NoxVariable *) {
    return nullptr;
}

// Negation reads its one child; the other connectives read child 1 before child 0, so a
// child shared by both is evaluated in that order. A missing child (a node built outside
// the factory, with too few or null children) leaves the result as it was.
void NoxBooleanOperator::DoEval(NoxValue &result) {
    if (!children) return;
    switch (type) {
    case NoxNotExpr:
        if (NoxExpression *only = GetChild(0)) result = NoxNot(only->GetValue());
        break;
    case NoxOrExpr:
    case NoxAndExpr:
    case NoxEqualExpr:
    case NoxNotEqualExpr:
    case NoxImplicationExpr: {
        NoxExpression *left = GetChild(0);
        NoxExpression *right = GetChild(1);
        if (!left || !right) break;
        const NoxValue &second = right->GetValue();
        const NoxValue &first = left->GetValue();
        result = kConnectives[type - NoxOrExpr](first, second);
        break;
    }
    default:
        break;
    }
}

// Logical nodes take no part in real evaluation: 0.0, without evaluating the children.
double NoxBooleanOperator::DoEval() {
    return 0.0;
}

// Logical nodes have no gradient: the buffer keeps its contents.
void NoxBooleanOperator::DoEvalGradient(double *) {}

// The Hessian of a logical node is its first child's, for every type.
void NoxBooleanOperator::DoEvalHessian(double **hess) {
    CopyFirstChildHessian(hess);
}
