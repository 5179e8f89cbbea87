// The model: the factory that creates, owns and deletes every expression node, variable
// and equation, and invalidates evaluation caches when variables change.
#ifndef NOX_FACTORY_H
#define NOX_FACTORY_H

#include "NoxBlackBox.h"
#include "NoxEnvironment.h"
#include "NoxExport.h"
#include "NoxExpression.h"
#include "NoxOperators.h"
#include "NoxTypes.h"
#include "NoxValue.h"

/// One model: its environment, every node created through it (in creation order),
/// its variables (indices 0, 1, 2 ... in creation order) and its equations.
///
/// Each Create... call makes exactly one new node (two for CreatePower and CreateRoot);
/// nothing is simplified or shared. A null argument, or a count below 2 where a list is
/// expected, gives null and creates nothing unless stated. When memory runs short the
/// creator gives null; the variable and equation arrays still receive a null entry then.
/// The arrays grow by steps of 10 and never shrink.
class NOX_API NoxFactory {
public:
    /// An empty model with a default environment.
    NoxFactory();
    /// A member-wise copy: the copy shares the source's arrays and every node, equation
    /// and variable, and copies its flag and environment. Only one of the two factories
    /// may be destroyed.
    NoxFactory(const NoxFactory &other) = default;
    /// Member-wise assignment, as the copy; what the target held is not released.
    NoxFactory &operator=(const NoxFactory &other) = default;
    /// Deletes every registered expression (variables included) in registration order,
    /// the expression array, the variable array, then every equation and the equation
    /// array. Black boxes belong to the host and are not deleted.
    virtual ~NoxFactory();

    // ---- Access ----

    /// The model's environment.
    NoxEnvironment &GetEnvironment() { return environment; }
    /// The model's environment.
    const NoxEnvironment &GetEnvironment() const { return environment; }
    /// The number of variables (null entries left by a failed allocation included).
    int GetNbOfVariables() const { return variableCount; }
    /// The i-th variable; null when i is negative or not below the count.
    NoxVariable *GetVariable(int i);
    /// The number of equations (null entries left by a failed allocation included).
    int GetNbOfEquations() const { return equationCount; }
    /// The i-th equation; null when i is negative or not below the count.
    NoxEquation *GetEquation(int i);
    /// Raises the buffers-in-use flag: a cache has been filled since the last reset.
    void SetBufferUsed() { buffersInUse = 1; }
    /// Does nothing unless the buffers-in-use flag is raised. Otherwise clears the own
    /// flags of every registered expression (expr null) or the flags of expr's whole
    /// sub-graph (expr non-null), then lowers the flag.
    void ResetBuffer(NoxExpression *expr);

    // ---- Leaves ----

    /// A new variable whose index is the variable count before the call; registered and
    /// appended to the variables. Null when memory runs short (the variables still
    /// receive a null entry, so the count grows).
    NoxVariable *CreateVariable();
    /// A new constant holding a copy of `v`.
    NoxExpression *CreateConstant(const NoxValue &v);
    /// A new constant holding the real `x`.
    NoxExpression *CreateRealConstant(double x);
    /// A new constant holding the integer `k`.
    NoxExpression *CreateIntegerConstant(int k);

    // ---- Boolean operators (children in argument order; null for a null child) ----

    /// not a.
    NoxExpression *CreateNot(NoxExpression *a);
    /// a or b.
    NoxExpression *CreateOr(NoxExpression *a, NoxExpression *b);
    /// a and b.
    NoxExpression *CreateAnd(NoxExpression *a, NoxExpression *b);
    /// a equal to b.
    NoxExpression *CreateEqual(NoxExpression *a, NoxExpression *b);
    /// a not equal to b.
    NoxExpression *CreateNotEqual(NoxExpression *a, NoxExpression *b);
    /// a implies b.
    NoxExpression *CreateImplication(NoxExpression *a, NoxExpression *b);

    // ---- Algebraic operators ----

    /// a + b; null when either is null.
    NoxExpression *CreateSum(NoxExpression *a, NoxExpression *b);
    /// The sum of the n terms, copied into the node (entries are not checked for null);
    /// null when n < 2 or terms is null.
    NoxExpression *CreateSum(int n, NoxExpression **terms);
    /// a * b; null when either is null.
    NoxExpression *CreateProduct(NoxExpression *a, NoxExpression *b);
    /// The product of the n terms; null when n < 2 or terms is null.
    NoxExpression *CreateProduct(int n, NoxExpression **terms);
    /// min(a, b); null when either is null.
    NoxExpression *CreateMin(NoxExpression *a, NoxExpression *b);
    /// The minimum of the n terms; null when n < 2 or terms is null.
    NoxExpression *CreateMin(int n, NoxExpression **terms);
    /// max(a, b); null when either is null.
    NoxExpression *CreateMax(NoxExpression *a, NoxExpression *b);
    /// The maximum of the n terms; null when n < 2 or terms is null.
    NoxExpression *CreateMax(int n, NoxExpression **terms);
    /// An algebraic node of type t over the n terms; null when n < 2 or terms is null. A
    /// type other than sum, product, min or max gives a node without children.
    NoxExpression *CreateAlgebraicOperator(NoxExpressionType t, int n, NoxExpression **terms);

    // ---- Binary operators ----

    /// a / b.
    NoxExpression *CreateQuotient(NoxExpression *a, NoxExpression *b);
    /// a to the power k. The integer constant k is created first, always (even when a is
    /// null).
    NoxExpression *CreatePower(NoxExpression *a, int k);
    /// The k-th root of a. The integer constant k is created first, always.
    NoxExpression *CreateRoot(NoxExpression *a, int k);
    /// a modulo b.
    NoxExpression *CreateMod(NoxExpression *a, NoxExpression *b);
    /// A binary node of type t (unchecked) with children (a, b); null when either is null.
    NoxExpression *CreateBinaryOperator(NoxExpressionType t, NoxExpression *a,
                                        NoxExpression *b);

    // ---- Unary operators ----

    NoxExpression *CreateSqrt(NoxExpression *a);  ///< Square root of a.
    NoxExpression *CreateLog(NoxExpression *a);   ///< Decimal logarithm of a.
    NoxExpression *CreateLn(NoxExpression *a);    ///< Natural logarithm of a.
    NoxExpression *CreateExp(NoxExpression *a);   ///< Exponential of a.
    NoxExpression *CreateAbs(NoxExpression *a);   ///< Absolute value of a.
    NoxExpression *CreateCeil(NoxExpression *a);  ///< Ceiling of a.
    NoxExpression *CreateFloor(NoxExpression *a); ///< Floor of a.
    NoxExpression *CreateRound(NoxExpression *a); ///< a rounded, halves upward.
    /// A unary node of type t (unchecked) over a; null when a is null.
    NoxExpression *CreateUnaryOperator(NoxExpressionType t, NoxExpression *a);

    // ---- Trigonometric operators ----

    NoxExpression *CreateSin(NoxExpression *a);   ///< Sine of a.
    NoxExpression *CreateCos(NoxExpression *a);   ///< Cosine of a.
    NoxExpression *CreateTan(NoxExpression *a);   ///< Tangent of a.
    NoxExpression *CreateAsin(NoxExpression *a);  ///< Arc sine of a.
    NoxExpression *CreateAcos(NoxExpression *a);  ///< Arc cosine of a.
    NoxExpression *CreateAtan(NoxExpression *a);  ///< Arc tangent of a.
    NoxExpression *CreateSinh(NoxExpression *a);  ///< Hyperbolic sine of a.
    NoxExpression *CreateCosh(NoxExpression *a);  ///< Hyperbolic cosine of a.
    NoxExpression *CreateTanh(NoxExpression *a);  ///< Hyperbolic tangent of a.
    NoxExpression *CreateASinh(NoxExpression *a); ///< Inverse hyperbolic sine of a.
    NoxExpression *CreateACosh(NoxExpression *a); ///< Inverse hyperbolic cosine of a.
    NoxExpression *CreateATanh(NoxExpression *a); ///< Inverse hyperbolic tangent of a.
    /// A trigonometric node of type t (unchecked) over a; null when a is null.
    NoxExpression *CreateTrigonometricOperator(NoxExpressionType t, NoxExpression *a);

    // ---- Black boxes, derivatives, equations ----

    /// A black-box node over the n argument expressions (copied into the node), which
    /// evaluates through `box` and is given to it with SetOperator. Null for a null box
    /// or when memory runs short; the box is not owned.
    NoxExpression *DeclareBlackBox(NoxBlackBox *box, int n, NoxExpression **arguments);
    /// The successive partial derivatives of expr with respect to vars[0], ..., vars[n-1]
    /// (Differentiate, stopping at the first null). Null when vars or expr is null; expr
    /// itself when n <= 0.
    NoxExpression *CreateDerivative(NoxExpression *expr, int n, NoxVariable **vars);
    /// A new equation of index the equation count before the call, with root `root` and
    /// type `t`. Null for a null root (nothing added) or when memory runs short (the
    /// equations then receive a null entry).
    NoxEquation *AddEquation(NoxExpression *root, NoxEquationType t);

    // ---- Composite builders: terms and interpolating polynomials ----
    // Each builds ordinary registered nodes through the creators above, in a fixed
    // order. Constants introduced are real constants (CreateConstant of a real value);
    // powers are CreatePower with an integer exponent.

    /// a·x + b with the neutral elements left out: x itself when a equals the real 1
    /// (IsEqualTo), else the product (constant a, x); then, unless b equals the real 0,
    /// the sum (constant b, term). The constants keep the kinds of a and b. A null x
    /// gives null, but the constants are created first.
    NoxExpression *CreateLinearTerm(const NoxValue &a, NoxExpression *x, const NoxValue &b);
    /// CreateLinearTerm(a, x to the power 2, b); the power is created first.
    NoxExpression *CreateQuadraticTerm(const NoxValue &a, NoxExpression *x, const NoxValue &b);
    /// c[0]·x^(n−1) + ... + c[n−2]·x + c[n−1], built from the highest degree down: each
    /// new term is the first operand of the sum with what was built before. A null c[i]
    /// leaves its term out (its power of x is still created). Null when c or x is null;
    /// a new real constant 0 when n <= 0 or every c[i] is null.
    NoxExpression *CreatePolynomialTerm(int n, NoxExpression **c, NoxExpression *x);
    /// The line through (x0, y0) and (x1, y1), in x. Null when an argument is null or
    /// the system has no determinant.
    NoxExpression *CreateLinearInterpolation2P(NoxExpression *x0, NoxExpression *y0,
                                               NoxExpression *x1, NoxExpression *y1,
                                               NoxExpression *x);
    /// The parabola through three points, in x. Null as for the line.
    NoxExpression *CreateQuadraticInterpolation3P(NoxExpression *x0, NoxExpression *y0,
                                                  NoxExpression *x1, NoxExpression *y1,
                                                  NoxExpression *x2, NoxExpression *y2,
                                                  NoxExpression *x);
    /// The cubic through four points, in x. Null as for the line.
    NoxExpression *CreateCubicInterpolation4P(NoxExpression *x0, NoxExpression *y0,
                                              NoxExpression *x1, NoxExpression *y1,
                                              NoxExpression *x2, NoxExpression *y2,
                                              NoxExpression *x3, NoxExpression *y3,
                                              NoxExpression *x);
    /// The cubic with values y0, y1 and slopes d0, d1 at x0, x1, in x. Null as for the
    /// line.
    NoxExpression *CreateCubicInterpolation2P2D(NoxExpression *x0, NoxExpression *y0,
                                                NoxExpression *d0, NoxExpression *x1,
                                                NoxExpression *y1, NoxExpression *d1,
                                                NoxExpression *x);
    /// (b + (−1)·a)·t + a; null when an argument is null.
    NoxExpression *CreateLinearInterpolation01(NoxExpression *a, NoxExpression *b,
                                               NoxExpression *t);
    /// CreateLinearInterpolation01(a, b, −2t³ + 3t²); the constants −2 and 3 are created
    /// first. Null when an argument is null.
    NoxExpression *CreateCubicInterpolation01(NoxExpression *a, NoxExpression *b, NoxExpression *t);
    // ---- End of the composite builders ----

protected:
    /// Registers a node made elsewhere (by a derived factory), which the factory then owns
    /// and deletes, and returns it. Null for a null node. When the expression array cannot
    /// grow the node is deleted, `expr` is set to null and null is returned.
    NoxExpression *AddExpression(NoxExpression *&expr);

    // ---- Composite builders: determinants and Cramer's rule ----

    /// The determinant of the k×k sub-matrix of m (16 entries, row by row: element (r, c)
    /// at r·4 + c; a null entry stands for zero) made of the listed rows and columns,
    /// expanded by cofactors along the first listed row. Zero entries and zero minors
    /// (null, or constants reading 0) are skipped, and constant factors folded, so a
    /// matrix whose expansion skips every term gives null, not a zero constant. k = 1
    /// gives the listed entry itself. Null when k < 1 or k > 4, when m, rows or cols is
    /// null, or when a listed row or column lies outside 0..3.
    NoxExpression *CreateDeterminant(NoxExpression **m, int *rows, int *cols, int k);
    /// The polynomial in x whose coefficients p solve m·p = y over the leading k×k block
    /// of m (Cramer's rule): the determinants with column j replaced by y give the
    /// coefficients of x^(k−1−j), divided by the determinant of m. m is restored before
    /// the call returns. Null when m, y or x is null, k >= 5, or the determinant of m is
    /// null; a new real constant 0 when the polynomial comes out null (memory
    /// runs short).
    NoxExpression *CreateInterpolation(NoxExpression **m, NoxExpression **y, NoxExpression *x,
                                       int k);
    // ---- End of the composite builders ----

    int expressionCount;
    int expressionCapacity;
    NoxExpression **expressions;
    int variableCount;
    int variableCapacity;
    NoxVariable **variables;
    int equationCount;
    int equationCapacity;
    NoxEquation **equations;
    unsigned char buffersInUse;
    NoxEnvironment environment;

private:
    NoxExpression *Register(NoxExpression *node);
    NoxExpression *CreateAlgebraicPair(NoxExpressionType t, NoxExpression *a, NoxExpression *b);
    NoxExpression *CreateBooleanPair(NoxExpressionType t, NoxExpression *a, NoxExpression *b);
};

#endif
