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
/// union table. An empty b or an indefinite a leaves a as it is. An empty result sets
/// NoxErrorEmptyResult, a pair without a common kind sets NoxErrorBadOperandType and
/// leaves a undefined.
NOX_API void NoxUnite(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol);

// ---- Arithmetic, functions and logic ----

#endif
