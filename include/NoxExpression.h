// Expression nodes: the abstract node with its evaluation caches, the base of every
// operator, the two leaves (constants and variables) and the equation record.
#ifndef NOX_EXPRESSION_H
#define NOX_EXPRESSION_H

#include "NoxEnvironment.h"
#include "NoxExport.h"
#include "NoxTypes.h"
#include "NoxValue.h"

#include <string>

class NoxFactory;
class NoxVariable;

/// A node of an expression graph, created, registered and deleted by its NoxFactory.
///
/// Each node caches four results: its real value (flag bit 1), its gradient over every
/// variable of the factory (bit 2), its Hessian (bit 4) and its value (bit 8). The entry
/// points fill a cache when its bit is clear, through the matching protected slot, and
/// return it until ResetBuffer clears the bits. The gradient and Hessian buffers are
/// allocated on first use, zero-filled, with the factory's variable count of that moment.
/// A buffer found smaller than the current variable count (variables created after it) is
/// replaced by one of the current size and recomputed; when all variables are created
/// before the first evaluation, buffers are allocated once and never resized.
class NOX_API NoxExpression {
public:
    /// Frees the gradient buffer and the Hessian buffer (as many rows as it was allocated
    /// with), then destroys both values.
    virtual ~NoxExpression();

    /// 1 when the node's type is `kind`, else 0. Operators also look through their
    /// children.
    virtual unsigned char ContainsExprOfKind(NoxExpressionType kind) const;
    /// The number of children.
    virtual int GetNbOfChildren() const = 0;
    /// The child at index i; null when there is none at i.
    virtual NoxExpression *GetChild(int i) = 0;
    /// The child at index i; null when there is none at i.
    virtual const NoxExpression *GetChild(int i) const = 0;
    /// A new expression, created through the factory, for the derivative of this node with
    /// respect to `var`; null when the node has no symbolic derivative.
    virtual NoxExpression *Differentiate(NoxVariable *var) = 0;
    /// Sets mask[index] = 1 for every variable of the sub-graph that is not fixed; the
    /// mask has one byte per variable of the factory. A null mask is left alone.
    virtual void FillPresentVariables(unsigned char *mask) const = 0;
    /// Clears the node's cache flags; operators given a non-zero argument clear their
    /// whole sub-graph as well.
    virtual void ResetBuffer(unsigned char recursive);
    /// The node's value as seen by the host (the last value computed, or the last one
    /// set); a constant returns its own value.
    virtual const NoxValue &GetExprValue() const;
    /// Stores `v` as the node's value seen by the host; a variable takes it as its value.
    virtual void SetExprValue(const NoxValue &v);

    /// The node's type.
    NoxExpressionType GetType() const { return type; }
    /// The environment of the owning factory.
    const NoxEnvironment &GetEnvironment() const { return *environment; }

    /// The node's real value, computed once per cache generation.
    double Eval() {
        if (!(bufferFlags & RealFlag))
            FillReal();
        return bufferReal;
    }
    /// Copies the node's value (computed once per cache generation) into `out`.
    void Eval(NoxValue &out);
    /// The node's value, computed once per cache generation.
    const NoxValue &GetValue() {
        if (!(bufferFlags & ValueFlag))
            FillValue();
        return bufferValue;
    }
    /// Copies the gradient (one entry per variable of the factory, by index) into `out`;
    /// nothing is written when `out` is null or no buffer could be allocated.
    void EvalGradient(double *out);
    /// The gradient buffer, one entry per variable of the factory; null only when memory
    /// for it cannot be had.
    const double *GetGradient();
    /// Copies the Hessian (n rows of n entries, n the factory's variable count) into
    /// `out`; nothing is written when `out` is null, n is 0 or no buffer could be had.
    void EvalHessian(double **out);
    /// The Hessian buffer, n rows of n entries; null only when memory for it cannot be
    /// had.
    double **GetHessian();
    /// The gradient entry of `var` (the gradient is computed first); 0.0 when `var` is
    /// null or its index lies outside the factory's variables.
    double EvalFirstDeriv(NoxVariable *var);
    /// The Hessian entry [index of a][index of b] (the Hessian is computed first); 0.0
    /// when either is null or an index lies outside the factory's variables.
    double EvalSecondDeriv(NoxVariable *a, NoxVariable *b);

protected:
    /// Cache flag bits.
    enum : unsigned { RealFlag = 1, GradientFlag = 2, HessianFlag = 4, ValueFlag = 8 };

    /// A node of `owner`, which must not be null: no cache valid, no buffer, both values
    /// undefined.
    explicit NoxExpression(NoxFactory *owner);
    /// A member-wise copy that shares the source's gradient and Hessian buffers: only one
    /// of the two may be destroyed.
    NoxExpression(const NoxExpression &other);
    NoxExpression &operator=(const NoxExpression &) = delete;

    /// Writes the node's value into `result`.
    virtual void DoEval(NoxValue &result) = 0;
    /// The node's real value.
    virtual double DoEval() = 0;
    /// Writes the gradient into `grad` (one entry per variable of the factory).
    virtual void DoEvalGradient(double *grad) = 0;
    /// Writes the Hessian into `hess` (n rows of n entries).
    virtual void DoEvalHessian(double **hess) = 0;

    /// The number of variables of the owning factory.
    int GetNbOfVariables() const;

    NoxExpressionType type;
    NoxFactory *factory;
    const NoxEnvironment *environment;
    unsigned bufferFlags;
    double bufferReal;
    double *bufferGradient;
    double **bufferHessian;
    NoxValue bufferValue;
    NoxValue exprValue;
    // Sizes the buffers were allocated with, so that they are freed and read within
    // their bounds whatever the variable count has become.
    int gradientSize;
    int hessianSize;

private:
    void FillReal();
    void FillValue();
    bool EnsureGradient(int n);
    bool EnsureHessian(int n);
    void FreeHessian();
};

/// The base of every operator node: an owned array of child pointers (the children
/// themselves belong to the factory).
class NOX_API NoxOperator : public NoxExpression {
public:
    /// Frees the child array (not the children).
    ~NoxOperator() override;

    /// 1 when the node's type is `kind` or any non-null child contains it (searched in
    /// child order, stopping at the first yes), else 0.
    unsigned char ContainsExprOfKind(NoxExpressionType kind) const override;
    /// The child count given at construction (0 for a negative count).
    int GetNbOfChildren() const override { return childCount; }
    /// The child at index i; null when i is negative, not below the count, or the node
    /// holds no child array.
    NoxExpression *GetChild(int i) override;
    /// The child at index i; null when i is negative, not below the count, or the node
    /// holds no child array.
    const NoxExpression *GetChild(int i) const override;
    /// Passes the mask to every non-null child, in order.
    void FillPresentVariables(unsigned char *mask) const override;
    /// Clears the node's flags; with a non-zero argument also every non-null child's
    /// sub-graph.
    void ResetBuffer(unsigned char recursive) override;

protected:
    /// An operator of `owner` with `count` children copied from `children`. When the array
    /// is null, the count is not positive or memory runs short, the node holds no child
    /// array; a negative count is stored as 0.
    NoxOperator(NoxFactory *owner, int count, NoxExpression *const *children);
    /// A shallow copy: the copy shares the source's child array and buffers; only one of
    /// the two may be destroyed.
    NoxOperator(const NoxOperator &other) = default;

    /// A table with each child's Hessian (GetHessian, in child order; null for a missing
    /// child); null when memory runs short. Free it with FiniHessianTable.
    double ***InitHessianTable();
    /// When the node has children, copies the n rows of table[0] (the first child's
    /// Hessian) into `dest`; nothing when the table, its first entry or `dest` is null.
    void CopyHessianTable(double ***table, double **dest) const;
    /// Frees the table (not the children's Hessians) and sets it to null.
    void FiniHessianTable(double ***&table) const;
    /// Builds the table, copies the first child's Hessian into `dest` and frees the
    /// table: every child's Hessian is computed (or taken from its cache) on the way.
    void CopyFirstChildHessian(double **dest);

    int childCount;
    NoxExpression **children;
};

/// A leaf holding a fixed value.
class NOX_API NoxConstant : public NoxExpression {
public:
    /// A constant of `owner` holding a copy of `v` (type NoxConstantExpr).
    NoxConstant(NoxFactory *owner, const NoxValue &v);
    /// Destroys the constant's value.
    ~NoxConstant() override = default;

    /// 0: a constant has no children.
    int GetNbOfChildren() const override { return 0; }
    /// Null: a constant has no children.
    NoxExpression *GetChild(int) override { return nullptr; }
    /// Null: a constant has no children.
    const NoxExpression *GetChild(int) const override { return nullptr; }
    /// Null for a null `var`, else a new real constant 0.0.
    NoxExpression *Differentiate(NoxVariable *var) override;
    /// Leaves the mask alone: a constant holds no variable.
    void FillPresentVariables(unsigned char *) const override {}
    /// The constant's own value.
    const NoxValue &GetExprValue() const override { return value; }

protected:
    NoxConstant(const NoxConstant &other) = default;

    /// Copies the constant's value into `result`.
    void DoEval(NoxValue &result) override;
    /// The quick real reading of the constant's value (NoxValue::GetRealValue).
    double DoEval() override;
    /// n zeros; nothing for a null array.
    void DoEvalGradient(double *grad) override;
    /// n rows of n zeros; nothing for a null array.
    void DoEvalHessian(double **hess) override;

    NoxValue value;
};

/// A variable of the model: a constant whose value the host sets. Its index is its place
/// among the factory's variables.
class NOX_API NoxVariable : public NoxConstant {
public:
    /// The variable of index `idx` of `owner` (type NoxVariableExpr), with an undefined
    /// value, no preferred value, not fixed, divided flag 1 and an empty name.
    NoxVariable(NoxFactory *owner, int idx);
    /// Destroys the name.
    ~NoxVariable() override = default;

    /// Itself for a null `var`; a new real constant 1.0 when `var` is this variable
    /// (fixed or not), otherwise a new real constant 0.0.
    NoxExpression *Differentiate(NoxVariable *var) override;
    /// Sets mask[index] = 1 when the mask is non-null and the variable is not fixed.
    void FillPresentVariables(unsigned char *mask) const override;
    /// Takes `v` as the variable's value, then refreshes every registered expression
    /// (the factory's ResetBuffer with null).
    void SetExprValue(const NoxValue &v) override;

    /// The variable's index among the factory's variables.
    int GetIdx() const { return index; }
    /// Takes `v` (its kind included) as the variable's value, then refreshes the
    /// sub-graph of `expr` through the factory's ResetBuffer (every registered expression
    /// when `expr` is null).
    void SetValue(const NoxValue &v, NoxExpression *expr);
    /// Stores a preferred value and marks it as set.
    void SetPreferedValue(double x);
    /// Writes the preferred value into `out` and returns 1; returns 0 and leaves `out`
    /// untouched when none was set.
    unsigned char GetPreferedValue(double &out) const;
    /// Stores the fixed flag; when it changes, every registered expression is refreshed
    /// first (the factory's ResetBuffer with null). A fixed variable has a zero gradient
    /// and is left out of FillPresentVariables.
    void Fix(unsigned char flag);
    /// The fixed flag as last stored.
    unsigned char IsFixed() const { return fixed; }
    /// Stores the divided flag (read by the host only).
    void SetDividedFlag(int flag) { divided = flag; }
    /// The divided flag, 1 until set.
    int GetDividedFlag() const { return divided; }
    /// Sets the name; when memory runs short the name is left as it was.
    void SetName(const std::string &n);
    /// The name; an empty name is first replaced by "va" followed by the index.
    const std::string &GetName();

protected:
    NoxVariable(const NoxVariable &other) = default;

    /// n zeros, then 1.0 at the variable's index unless it is fixed; nothing for a null
    /// array.
    void DoEvalGradient(double *grad) override;

    int index;
    double preferedValue;
    unsigned char hasPreferedValue;
    unsigned char fixed;
    int divided;
    std::string name;
};

/// An equation of the model: a named root expression (not owned) with a type that the
/// host defines.
class NOX_API NoxEquation {
public:
    /// The equation of index `idx` of `owner`, with root `root` and type `t`; empty name.
    NoxEquation(NoxFactory &owner, NoxExpression *root, NoxEquationType t, int idx);
    /// A copy of every field; when memory for the name runs short the copy's name is
    /// empty.
    NoxEquation(const NoxEquation &other);
    /// Copies every field; when memory for the name runs short the name is left as it
    /// was.
    NoxEquation &operator=(const NoxEquation &other);
    /// Forgets the root (it belongs to the factory) and destroys the name.
    ~NoxEquation();

    /// Replaces the root expression.
    void SetRoot(NoxExpression *root) { rootExpr = root; }
    /// The root expression.
    NoxExpression *GetRoot() const { return rootExpr; }
    /// The type, unchanged from construction.
    NoxEquationType GetType() const { return type; }
    /// Sets the name; when memory runs short the name is left as it was.
    void SetName(const std::string &n);
    /// The name; an empty name is first replaced by "eq" followed by the index.
    const std::string &GetName();

private:
    NoxFactory *factory;
    NoxExpression *rootExpr;
    NoxEquationType type;
    int index;
    std::string name;
};

#endif
