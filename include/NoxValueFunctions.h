// Arithmetic, elementary functions, four-valued logic and set operations on values.
// Every function takes the model's environment first, returns its result by value (or
// narrows its first argument) and reports failures only through the environment's error
// code; nothing throws.
#ifndef NOX_VALUE_FUNCTIONS_H
#define NOX_VALUE_FUNCTIONS_H

#include "NoxEnvironment.h"
#include "NoxValue.h"

// ---- Set operations and comparisons ----
// The two operands meet in the kind the result-kind table gives for their pair; a pair
// without a kind (a real with a boolean, anything with an undefined value) sets
// NoxErrorBadOperandType. Error bits are only ever added, never cleared.

/// True when a and b stand for the same set, compared in their common kind: integers
/// equal, reals closer than tol (strict), intervals by bounds (reals within tol),
/// enumerations by representation (a list never equals a range), booleans by code.
/// False with NoxErrorBadOperandType for a pair without a common kind.
NOX_API unsigned char NoxIsEqual(const NoxEnvironment &env, const NoxValue &a,
                                 const NoxValue &b, double tol);
/// True when a contains b: single kinds as for NoxIsEqual, intervals and enumerations by
/// their hulls only (reals within tol). False with NoxErrorBadOperandType for booleans
/// and for a pair without a common kind.
NOX_API unsigned char NoxContains(const NoxEnvironment &env, const NoxValue &a,
                                  const NoxValue &b, double tol);
/// True when a stands for everything of its own kind: the any marker of a single kind,
/// an interval holding the whole line, an enumeration in the any state, NoxBoolean_Any.
/// An undefined value is not indefinite; no error is ever set.
NOX_API unsigned char NoxIsIndefinite(const NoxEnvironment &env, const NoxValue &a);
/// Narrows a to a intersected with b; returns 1 when a changed. An empty a sets NoxErrorEmptyResult and
/// stays; an empty b or an indefinite a is assigned into a; an indefinite b leaves a as
/// it is. An empty result sets NoxErrorEmptyResult, a pair without a common kind sets
/// NoxErrorBadOperandType and leaves a undefined.
NOX_API unsigned char NoxIntersect(const NoxEnvironment &env, NoxValue &a, const NoxValue &b,
                                   double tol);
/// Takes the single value b out of a, when b is exact: a single value equal to it
/// becomes nil, an interval end equal to it moves inwards (reals just past the tolerance
/// band), an enumeration loses it, a boolean follows the exclusion table. An empty
/// result sets NoxErrorEmptyResult. A b that is not exact changes nothing.
NOX_API void NoxExclude(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol);
/// Widens a to its union with b: two different single values give the any marker, intervals their
/// hull, enumerations the union of their lists (or the hull as a range), booleans the
/// union table. An empty b or an indefinite a leaves a as it is; an empty a or an
/// indefinite b becomes a copy of b. An empty result sets
/// NoxErrorEmptyResult, a pair without a common kind sets NoxErrorBadOperandType and
/// leaves a undefined.
NOX_API void NoxUnite(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol);

// ---- Arithmetic, functions and logic ----

// Four-valued logic. An operand takes part through GetAsBoolean() when it is convertible
// to a boolean (integer, integer interval, integer enumeration, boolean); otherwise, and
// for a boolean code outside 0..3, the result is NoxBoolean_Nil. NoxBoolean_Nil absorbs
// everything; NoxBoolean_Any is the unknown truth value. No error is ever reported.

/// Negation: false and true swap, any and nil stay.
NOX_API NoxValue NoxNot(const NoxValue &a);
/// Disjunction: true when either is true, any when undecided, nil with a nil operand.
NOX_API NoxValue NoxOr(const NoxValue &a, const NoxValue &b);
/// Conjunction: false when either is false (unless the other is nil), any when undecided.
NOX_API NoxValue NoxAnd(const NoxValue &a, const NoxValue &b);
/// Equivalence of two truth values; any with an any operand.
NOX_API NoxValue NoxEqual(const NoxValue &a, const NoxValue &b);
/// Exclusive or of two truth values; any with an any operand.
NOX_API NoxValue NoxNotEqual(const NoxValue &a, const NoxValue &b);
/// a implies b: true when a is false or b is true, any when undecided.
NOX_API NoxValue NoxImplication(const NoxValue &a, const NoxValue &b);

// Binary arithmetic. The kind of the result comes from the operands' kinds (real beats
// integer, interval beats single, enumeration beats interval, a boolean combines with the
// integer kinds as an integer interval). Single integers and reals go through scalar
// kernels that return the any and nil markers; intervals through the interval functions;
// enumerations element by element, falling back to the interval function on their hulls
// when an operand is not a list or an element result is unbounded. An element result
// without value is skipped and clears the whole error code (earlier bits included), so
// read the code after the call only. A pair of kinds without a result kind (a real with
// a boolean, anything with an undefined value) sets NoxErrorBadOperandType and gives the
// real interval NoxReal_Nil.

/// a + b. A single integer sum beyond NoxMaxInteger is the nil integer without an error.
NOX_API NoxValue NoxSum(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// a - b. A single integer difference beyond NoxMaxInteger is the nil integer without an
/// error.
NOX_API NoxValue NoxSub(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// a * b; 0 times anything, the any marker included, is 0. A single integer product
/// beyond NoxMaxInteger is the nil integer with NoxErrorEmptyResult.
NOX_API NoxValue NoxMul(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// a / b, single integers truncated toward zero. 0 / 0 is the any marker without an
/// error; another quotient by 0 is nil with NoxErrorEmptyResult.
NOX_API NoxValue NoxDiv(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// The remainder of a / b with the sign of a; by 0, nil with NoxErrorEmptyResult.
NOX_API NoxValue NoxMod(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// The smaller of a and b (the first when equal); of two booleans, NoxAnd(a, b).
NOX_API NoxValue NoxMin(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);
/// The larger of a and b (the first when equal); of two booleans, NoxOr(a, b).
NOX_API NoxValue NoxMax(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b);

// Power and root. The exponent must be a single integer (else NoxErrorBadOperandType and
// NoxReal_Nil); the result keeps the kind of x, converted by Assign (so a power of an
// integer that is not an integer, such as 2^-1, is the nil integer). An empty x is
// returned as it is; the nil exponent gives nil with NoxErrorEmptyResult.

/// x^n: the interval power of x's real interval, or of each member of an enumeration. The
/// any exponent gives NoxReal_Pos when x lies above 0, else NoxReal_Any.
NOX_API NoxValue NoxPow(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n);
/// The n-th roots of x lying in `range` (null: the whole line). For an enumeration both
/// branches are mapped member by member, each cut to the range, and united; the error
/// code is cleared on the way. The any exponent gives NoxReal_Any.
NOX_API NoxValue NoxRoot(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n,
                         const NoxValue *range);

// Elementary functions. Single integers and reals give a single real from a scalar kernel
// (nil with NoxErrorEmptyResult outside the domain, the any real for the any marker);
// intervals give the real interval function's result; enumerations are mapped member by
// member into a real enumeration (the interval function on the hull when x is not a list
// or a member gives the any real). Undefined values and booleans set
// NoxErrorBadOperandType and give NoxReal_Nil.

NOX_API NoxValue NoxSin(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxCos(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxTan(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxSinh(const NoxEnvironment &env, const NoxValue &x);
/// For an indefinite single operand, the real interval [1, NoxMaxReal].
NOX_API NoxValue NoxCosh(const NoxEnvironment &env, const NoxValue &x);
/// For an indefinite single operand, the real interval [-1, 1].
NOX_API NoxValue NoxTanh(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxAsinh(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxAcosh(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxAtanh(const NoxEnvironment &env, const NoxValue &x);
NOX_API NoxValue NoxSqrt(const NoxEnvironment &env, const NoxValue &x);
/// Decimal logarithm.
NOX_API NoxValue NoxLog(const NoxEnvironment &env, const NoxValue &x);
/// Natural logarithm.
NOX_API NoxValue NoxLn(const NoxEnvironment &env, const NoxValue &x);
/// For an indefinite single operand, the real interval NoxReal_Pos. A single real up to
/// 2*NoxMaxExpReal gives its exponential, even beyond NoxMaxReal, without an error.
NOX_API NoxValue NoxExp(const NoxEnvironment &env, const NoxValue &x);
/// |x| in x's own kind: integers stay integers.
NOX_API NoxValue NoxAbs(const NoxEnvironment &env, const NoxValue &x);
/// Integers and integer intervals are returned unchanged, an integer enumeration as its
/// hull (an integer interval); reals, real intervals and real enumerations are rounded
/// up.
NOX_API NoxValue NoxCeil(const NoxEnvironment &env, const NoxValue &x);
/// As NoxCeil, rounding down.
NOX_API NoxValue NoxFloor(const NoxEnvironment &env, const NoxValue &x);
/// As NoxCeil, rounding to floor(x + 0.5).
NOX_API NoxValue NoxRound(const NoxEnvironment &env, const NoxValue &x);

// Inverse trigonometric functions with the range in which the angle is sought (null:
// the whole line, placed within the environment's trigonometric limits). A single
// operand ignores the range. An enumeration with a range gives the members of the range
// whose sine (cosine, tangent) lies within the environment's tolerance of a member of x;
// without a range, or when either is not a list, the real interval function on the hulls.

NOX_API NoxValue NoxAsin(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range);
NOX_API NoxValue NoxAcos(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range);
NOX_API NoxValue NoxAtan(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range);

#endif
