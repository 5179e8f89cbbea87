// Black boxes: functions that the host supplies as code, and the node through which they
// take part in expressions. Values come from the box; derivatives are forward differences.
#ifndef NOX_BLACK_BOX_H
#define NOX_BLACK_BOX_H

#include "NoxExport.h"
#include "NoxExpression.h"
#include "NoxTypes.h"
#include "NoxValue.h"

class NoxFactory;
class NoxBlackBoxOperator;

/// A function the host supplies. The host derives from it and declares it to a factory
/// (NoxFactory::DeclareBlackBox), which gives it its operator node. The box reads its
/// arguments through GetOperator(): the node's children, in declaration order.
class NOX_API NoxBlackBox {
public:
    /// A box not yet declared: its operator is null.
    NoxBlackBox() : op(nullptr) {}
    /// A box sharing the operator of `other`.
    NoxBlackBox(const NoxBlackBox &other) = default;
    /// Takes the operator of `other`.
    NoxBlackBox &operator=(const NoxBlackBox &other) = default;
    /// Forgets the operator (the node belongs to the factory).
    virtual ~NoxBlackBox();

    /// Writes the box's value over the current values of its arguments into `result`.
    virtual void Eval(NoxValue &result) = 0;
    /// The box's real value at the current real values of its arguments.
    virtual double Eval() = 0;

    /// Sets the operator node of the box.
    void SetOperator(NoxBlackBoxOperator *node) { op = node; }
    /// The operator node of the box; null until declared.
    NoxBlackBoxOperator *GetOperator() const { return op; }

private:
    NoxBlackBoxOperator *op;
};

/// The node of a black box (type NoxBlackBoxExpr); its children are the box's arguments.
/// Derivatives are forward differences with the fixed step 1e-4: a variable is perturbed
/// by setting its value to the real y + 1e-4 (y its real reading), the node evaluated,
/// and the variable restored to the real y, each setting refreshing this node's sub-graph
/// through the factory.
class NOX_API NoxBlackBoxOperator : public NoxOperator {
public:
    /// The node of `box` over the n arguments copied from `arguments`.
    NoxBlackBoxOperator(NoxFactory *owner, int n, NoxExpression *const *arguments,
                        NoxBlackBox &box);
    /// Frees the argument array; the box and the arguments are not deleted.
    ~NoxBlackBoxOperator() override = default;

    /// Null for every variable: a black box has no symbolic derivative.
    NoxExpression *Differentiate(NoxVariable *var) override;

    /// The box.
    NoxBlackBox &GetBlackBox() { return *blackBox; }
    /// The box.
    const NoxBlackBox &GetBlackBox() const { return *blackBox; }

protected:
    /// A member-wise copy sharing the argument array, the buffers and the box; only one
    /// of the two may be destroyed.
    NoxBlackBoxOperator(const NoxBlackBoxOperator &other) = default;

    /// The box's value, written into `result`.
    void DoEval(NoxValue &result) override;
    /// The box's real value.
    double DoEval() override;
    /// n zeros, then the forward difference for each argument that is a variable of the
    /// factory (other arguments contribute nothing); nothing for a null buffer.
    void DoEvalGradient(double *grad) override;
    /// For every pair (i, j) of the factory's variables, the forward difference of the
    /// gradient entry of variable i when variable j is perturbed; nothing for a null
    /// buffer or no variables.
    void DoEvalHessian(double **hess) override;
    /// (f(x + h) - f(x)) / h with f this node's real value; 0.0 for a null x.
    double DoEvalFirstDeriv(NoxVariable *x);
    /// (g(b + h) - g(b)) / h with g this node's gradient entry of a; 0.0 when either is
    /// null.
    double DoEvalSecondDeriv(NoxVariable *a, NoxVariable *b);

private:
    NoxBlackBox *blackBox;
};

#endif
