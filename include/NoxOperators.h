// The five operator node classes. Each keeps its kind in the node's type and decides in
// every evaluation body by that type; for a type it does not serve, real evaluation gives
// 0.0, value evaluation leaves its result untouched, the gradient is not written and
// Differentiate gives null. Nodes are created by the factory's Create... members.
#ifndef NOX_OPERATORS_H
#define NOX_OPERATORS_H

#include "NoxExport.h"
#include "NoxExpression.h"
#include "NoxTypes.h"
#include "NoxValue.h"

class NoxFactory;

/// Sum, product, minimum and maximum of any number of children.
class NOX_API NoxAlgebraicOperator : public NoxOperator {
public:
    /// An operator of type t over the n children copied from `childArray`. A type other
    /// than sum, product, min or max gives an inert node: no children, real value 0.0,
    /// value result untouched, nothing written, no derivative.
    NoxAlgebraicOperator(NoxFactory *owner, int n, NoxExpression *const *childArray,
                         NoxExpressionType t);
    /// Frees the child array (not the children).
    ~NoxAlgebraicOperator() override = default;
    /// The derivative expression with respect to `var`; the node itself for a null
    /// `var`; null for an inert node or a type without a symbolic derivative.
    NoxExpression *Differentiate(NoxVariable *var) override;

protected:
    NoxAlgebraicOperator(const NoxAlgebraicOperator &other) = default;
    /// Folds the children's values; an unserved type leaves `result` untouched.
    void DoEval(NoxValue &result) override;
    /// Folds the children's real values; 0.0 for an unserved type.
    double DoEval() override;
    /// Writes the gradient; nothing for an unserved type or a null buffer.
    void DoEvalGradient(double *grad) override;
    /// Writes the Hessian; nothing for an unserved type or a null buffer.
    void DoEvalHessian(double **hess) override;
};

/// Quotient, power, root and modulo of two children (left operand first).
class NOX_API NoxBinaryOperator : public NoxOperator {
public:
    /// An operator of type t (unchecked) over the two children of `childArray`.
    NoxBinaryOperator(NoxFactory *owner, NoxExpression *const *childArray, NoxExpressionType t);
    /// Frees the child array (not the children).
    ~NoxBinaryOperator() override = default;
    /// The derivative expression with respect to `var`; the node itself for a null
    /// `var`; null without children or for a type without a symbolic derivative.
    NoxExpression *Differentiate(NoxVariable *var) override;

protected:
    NoxBinaryOperator(const NoxBinaryOperator &other) = default;
    /// Combines the children's values; an unserved type leaves `result` untouched.
    void DoEval(NoxValue &result) override;
    /// Combines the children's real values; 0.0 for an unserved type.
    double DoEval() override;
    /// Writes the gradient; nothing for an unserved type or a null buffer.
    void DoEvalGradient(double *grad) override;
    /// Builds and frees the table of the children's Hessians; an unserved type writes
    /// nothing.
    void DoEvalHessian(double **hess) override;
};

/// Square root, logarithms, exponential, absolute value, ceiling, floor and rounding of
/// one child.
class NOX_API NoxUnaryOperator : public NoxOperator {
public:
    /// An operator of type t (unchecked) over `child`.
    NoxUnaryOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t);
    /// Frees the child array (not the child).
    ~NoxUnaryOperator() override = default;
    /// The derivative expression with respect to `var`; the node itself for a null
    /// `var`; null without a child or for a type without a symbolic derivative.
    NoxExpression *Differentiate(NoxVariable *var) override;

protected:
    NoxUnaryOperator(const NoxUnaryOperator &other) = default;
    /// The function of the child's value; an unserved type leaves `result` untouched.
    void DoEval(NoxValue &result) override;
    /// The function of the child's real value; 0.0 for an unserved type.
    double DoEval() override;
    /// Writes the gradient; nothing for an unserved type or a null buffer.
    void DoEvalGradient(double *grad) override;
    /// Copies the child's Hessian, whatever the type.
    void DoEvalHessian(double **hess) override;
};

/// Circular and hyperbolic functions and their inverses of one child.
class NOX_API NoxTrigonometricOperator : public NoxOperator {
public:
    /// An operator of type t (unchecked) over `child`.
    NoxTrigonometricOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t);
    /// Frees the child array (not the child).
    ~NoxTrigonometricOperator() override = default;
    /// The derivative expression with respect to `var`; the node itself for a null
    /// `var`; null without a child or for an unserved type.
    NoxExpression *Differentiate(NoxVariable *var) override;

protected:
    NoxTrigonometricOperator(const NoxTrigonometricOperator &other) = default;
    /// The function of the child's value; an unserved type leaves `result` untouched.
    void DoEval(NoxValue &result) override;
    /// The function of the child's real value; 0.0 for an unserved type.
    double DoEval() override;
    /// Writes the gradient; nothing for an unserved type or a null buffer.
    void DoEvalGradient(double *grad) override;
    /// Copies the child's Hessian, whatever the type; nothing without a child or for a
    /// null buffer.
    void DoEvalHessian(double **hess) override;
};

/// Negation (one child), disjunction, conjunction, equality, inequality and implication
/// (two children), evaluated on values only.
class NOX_API NoxBooleanOperator : public NoxOperator {
public:
    /// A one-child operator of type t (unchecked), for negation.
    NoxBooleanOperator(NoxFactory *owner, NoxExpression *child, NoxExpressionType t);
    /// A two-child operator of type t (unchecked) over the children of `childArray`.
    NoxBooleanOperator(NoxFactory *owner, NoxExpression *const *childArray, NoxExpressionType t);
    /// Frees the child array (not the children).
    ~NoxBooleanOperator() override = default;
    /// Null, for every type and variable (a null variable included).
    NoxExpression *Differentiate(NoxVariable *var) override;

protected:
    NoxBooleanOperator(const NoxBooleanOperator &other) = default;
    /// The connective of the children's values; an unserved type leaves `result`
    /// untouched.
    void DoEval(NoxValue &result) override;
    /// 0.0, whatever the children; they are not evaluated.
    double DoEval() override;
    /// Writes nothing.
    void DoEvalGradient(double *grad) override;
    /// Copies the first child's Hessian, whatever the type.
    void DoEvalHessian(double **hess) override;
};

#endif
