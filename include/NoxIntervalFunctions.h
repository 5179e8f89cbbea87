// Interval arithmetic, powers, roots and elementary functions on integer and real
// intervals. Every function takes the model's environment first, reports failures by
// setting bits of its error code and returns the documented fallback; nothing throws.
#ifndef NOX_INTERVAL_FUNCTIONS_H
#define NOX_INTERVAL_FUNCTIONS_H

#include "NoxEnvironment.h"
#include "NoxInterval.h"

// ---- Arithmetic: sum, difference, product, quotient, minimum, maximum, abs, modulo ----

// Every operation begins the same way: when an operand is empty (an integer interval
// with lower > upper, a real one with lower - upper > NoxAbsPrecision) it sets
// NoxErrorEmptyResult and returns the nil interval of the operands' kind. Real results
// are normalised like NoxCreateRealInterval(lo, hi): clamped to +-NoxMaxReal, and
// NoxReal_Nil without an error when inverted or lying wholly beyond a limit.

/// [a.lower + b.lower, a.upper + b.upper], each bound saturated at +-NoxMaxInteger. A lower
/// bound saturated at +NoxMaxInteger or an upper bound saturated at -NoxMaxInteger (the
/// whole sum beyond the range) gives NoxInteger_Nil and NoxErrorEmptyResult; an overflow
/// toward the open side is clamped silently.
NOX_API NoxIntegerInterval NoxSum(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [a.lower + b.lower, a.upper + b.upper], normalised.
NOX_API NoxRealInterval NoxSum(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// [a.lower - b.upper, a.upper - b.lower], saturated and checked like the integer NoxSum.
NOX_API NoxIntegerInterval NoxSub(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [a.lower - b.upper, a.upper - b.lower], normalised.
NOX_API NoxRealInterval NoxSub(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// [min, max] of the four bound products, each saturated at +-NoxMaxInteger. When all
/// four overflowed and the result lies at the far limit (lower = +NoxMaxInteger or
/// upper = -NoxMaxInteger), NoxInteger_Nil and NoxErrorEmptyResult.
NOX_API NoxIntegerInterval NoxMul(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [min, max] of the four bound products, normalised.
NOX_API NoxRealInterval NoxMul(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// [min, max] of the four quotients truncated toward zero; NoxInteger_Any, without an
/// error, when b holds 0. INT_MIN / -1 wraps to INT_MIN.
NOX_API NoxIntegerInterval NoxDiv(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [min, max] of the four quotients, normalised; NoxReal_Any, without an error, when
/// b.lower <= 0 <= b.upper (no tolerance: [1e-300, 1] is a valid divisor).
NOX_API NoxRealInterval NoxDiv(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// [min(a.lower, b.lower), min(a.upper, b.upper)].
NOX_API NoxIntegerInterval NoxMin(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [min(a.lower, b.lower), min(a.upper, b.upper)], not normalised.
NOX_API NoxRealInterval NoxMin(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// [max(a.lower, b.lower), max(a.upper, b.upper)].
NOX_API NoxIntegerInterval NoxMax(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);
/// [max(a.lower, b.lower), max(a.upper, b.upper)], not normalised.
NOX_API NoxRealInterval NoxMax(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);

/// a when a.lower >= 0; [-a.upper, -a.lower] when a.upper <= 0; otherwise
/// [0, max(-a.lower, a.upper)]. A negated INT_MIN wraps to INT_MIN.
NOX_API NoxIntegerInterval NoxAbs(const NoxEnvironment &env, const NoxIntegerInterval &a);
/// a when a.lower > 0; [-a.upper, -a.lower] when a.upper < 0; otherwise
/// [0, max(|a.lower|, |a.upper|)]; always normalised, so an interval slightly inverted
/// across zero (such as [0, -1e-15]) gives NoxReal_Nil without an error.
NOX_API NoxRealInterval NoxAbs(const NoxEnvironment &env, const NoxRealInterval &a);

/// Truncating modulo: an enclosure of x - k*|d| for x in a, d in b, k the integer
/// quotient, with the sign of x. The non-negative and the negated negative part of a are
/// reduced separately and united. A divisor reaching zero gives the trivial enclosure
/// [0, min(x, |d|)) on each side. When the reduction runs over the quotients it clears
/// the whole error code on the way out (bits set before the call included). An empty
/// final result gives NoxReal_Nil and NoxErrorEmptyResult.
NOX_API NoxRealInterval NoxMod(const NoxEnvironment &env, const NoxRealInterval &a,
                               const NoxRealInterval &b);
/// The real NoxMod of the operands converted to real intervals, rounded inward to the
/// integers inside it (NoxInteger_Nil when there are none); errors as the real NoxMod.
NOX_API NoxIntegerInterval NoxMod(const NoxEnvironment &env, const NoxIntegerInterval &a,
                                  const NoxIntegerInterval &b);

// ---- Powers and roots ----

// A power or root first cuts its operand to the part of the line on which the result is
// representable: for x^n with n != 0 to |x| <= NoxMaxReal^(1/|n|), less the open hole
// |x| < NoxMaxReal^(-1/|n|) where the power underflows below NoxMinReal (or overflows
// for negative n); for an even root to [0, NoxMaxReal]; for a root of negative order
// less the hole |x| < NoxMinReal. A bound inside the hole moves to the hole's edge.
// Results are evaluated at the bounds and not widened outward.

/// x raised to n by repeated squaring (x^0 is 1); for negative n, 1 divided by x^|n|.
NOX_API double NoxRealPower(double x, int n);
/// Enclosure of x^n for x in a, normalised. A power that can underflow for some point of
/// a adds [0, 0] to the result. A bit already set on entry makes the power itself nil, so
/// only that zero can remain. Clears the whole error code (bits set before the call
/// included); then sets NoxErrorEmptyResult and returns NoxReal_Nil if the result is
/// empty. Negative n over an interval holding 0 gives NoxReal_Any for odd n and
/// [max(a.upper, -a.lower)^n, NoxMaxReal] for even n (nil if that power exceeds
/// NoxMaxReal).
NOX_API NoxRealInterval NoxPow(const NoxEnvironment &env, const NoxRealInterval &a, int n);
/// Enclosure of the non-negative n-th roots x^(1/n) of the points of a, normalised;
/// NoxReal_Any for n = 0 (a within [0, 1]). NoxReal_Nil without an error when a lies
/// wholly below 0. NoxReal_Nil with NoxErrorEmptyResult when a lies outside the domain
/// or the error code is already non-zero on entry.
NOX_API NoxRealInterval NoxRootPositive(const NoxEnvironment &env, const NoxRealInterval &a,
                                        int n);
/// Enclosure of the non-positive n-th roots of the points of a (-x^(1/n) for even n, the
/// real root of negative x for odd n), normalised; NoxReal_Any for n = 0 and where no
/// bound can be given. NoxReal_Nil without an error when an odd root has no negative
/// branch over a. Errors as NoxRootPositive.
NOX_API NoxRealInterval NoxRootNegative(const NoxEnvironment &env, const NoxRealInterval &a,
                                        int n);
/// The n-th roots of the points of a that lie in r: the positive branch when r lies above
/// 0, the negative one when r lies below 0, otherwise the hull of both branches, each
/// intersected with r as the reference (a root bound within the scaled NoxAbsPrecision of
/// a bound of r snaps to it). In the last case the error code is cleared after each
/// branch, and NoxErrorEmptyResult with NoxReal_Nil reports an empty hull.
NOX_API NoxRealInterval NoxRoot(const NoxEnvironment &env, const NoxRealInterval &a, int n,
                                const NoxRealInterval &r);

// ---- Elementary functions ----

// Each function but NoxCeil, NoxFloor and NoxRound first cuts a to its domain: when
// nothing is left it sets NoxErrorEmptyResult, and it returns NoxReal_Nil whenever the
// error code is then non-zero, a bit left from an earlier operation included (clear the
// code before a chain of evaluations). The function is then evaluated at the bounds of
// the cut operand; results are not widened outward. "Normalised" results are clamped to
// +-NoxMaxReal, or NoxReal_Nil without an error when they lie wholly beyond a limit.

/// Enclosure of sin over a cut to NoxReal_Trig: [-1, 1] when a spans 2*pi or, starting
/// and ending in the same quadrant, more than pi; otherwise the sorted values at the
/// bounds, widened to 1 or -1 where a maximum or minimum lies between them.
NOX_API NoxRealInterval NoxSin(const NoxEnvironment &env, const NoxRealInterval &a);
/// Enclosure of cos over a cut to NoxReal_Trig, by the same rule as NoxSin.
NOX_API NoxRealInterval NoxCos(const NoxEnvironment &env, const NoxRealInterval &a);
/// [tan(a.lower), tan(a.upper)] over a cut to NoxReal_Trig, not sorted; NoxReal_Any when
/// a is wider than pi or a pole lies inside.
NOX_API NoxRealInterval NoxTan(const NoxEnvironment &env, const NoxRealInterval &a);
/// The angles in the range r whose sine lies in a cut to [-1, 1]: the hull of the branch
/// pieces [asin, asin] and [pi - asin, pi - asin], repeated with period 2*pi, that meet r
/// cut to NoxReal_Trig; r the whole line stands for the environment's trigonometric
/// limits. Inverted, without an error, when no piece meets the range.
NOX_API NoxRealInterval NoxAsin(const NoxEnvironment &env, const NoxRealInterval &a,
                                const NoxRealInterval &r);
/// The angles in the range r whose cosine lies in a cut to [-1, 1], from the pieces
/// [acos, acos] and [-acos, -acos], placed as by NoxAsin.
NOX_API NoxRealInterval NoxAcos(const NoxEnvironment &env, const NoxRealInterval &a,
                                const NoxRealInterval &r);
/// The angles in the range r whose tangent lies in a, from the pieces [atan, atan] and
/// [pi + atan, pi + atan], placed as by NoxAsin.
NOX_API NoxRealInterval NoxAtan(const NoxEnvironment &env, const NoxRealInterval &a,
                                const NoxRealInterval &r);
/// [sinh(a.lower), sinh(a.upper)] over a cut to +-2*NoxMaxHypReal, normalised.
NOX_API NoxRealInterval NoxSinh(const NoxEnvironment &env, const NoxRealInterval &a);
/// Enclosure of cosh over a cut to +-2*NoxMaxHypReal, normalised; [1, cosh(max(|a.lower|,
/// |a.upper|))] when a holds 0.
NOX_API NoxRealInterval NoxCosh(const NoxEnvironment &env, const NoxRealInterval &a);
/// [tanh(a.lower), tanh(a.upper)], normalised.
NOX_API NoxRealInterval NoxTanh(const NoxEnvironment &env, const NoxRealInterval &a);
/// [asinh(a.lower), asinh(a.upper)] with asinh(x) = sign(x) * ln(|x| + sqrt(x^2 + 1)),
/// normalised.
NOX_API NoxRealInterval NoxAsinh(const NoxEnvironment &env, const NoxRealInterval &a);
/// [acosh(a.lower), acosh(a.upper)] over a cut to [1, NoxMaxReal] with
/// acosh(x) = ln(x + sqrt(x^2 - 1)), normalised.
NOX_API NoxRealInterval NoxAcosh(const NoxEnvironment &env, const NoxRealInterval &a);
/// [atanh(a.lower), atanh(a.upper)] over a cut to [NoxAbsPrecision - 1,
/// 1 - NoxAbsPrecision] with atanh(x) = 0.5 * (ln(1 + x) - ln(1 - x)), normalised.
NOX_API NoxRealInterval NoxAtanh(const NoxEnvironment &env, const NoxRealInterval &a);
/// [sqrt(a.lower), sqrt(a.upper)] over a cut to [0, NoxMaxReal].
NOX_API NoxRealInterval NoxSqrt(const NoxEnvironment &env, const NoxRealInterval &a);
/// Decimal logarithm [log10(a.lower), log10(a.upper)] over a cut to
/// [NoxMinReal, NoxMaxReal].
NOX_API NoxRealInterval NoxLog(const NoxEnvironment &env, const NoxRealInterval &a);
/// Natural logarithm [ln(a.lower), ln(a.upper)] over a cut to [NoxMinReal, NoxMaxReal].
NOX_API NoxRealInterval NoxLn(const NoxEnvironment &env, const NoxRealInterval &a);
/// [exp(a.lower), exp(a.upper)] over a cut to [-NoxMaxReal, 2*NoxMaxExpReal], normalised
/// (an overflowing upper bound is clamped to NoxMaxReal).
NOX_API NoxRealInterval NoxExp(const NoxEnvironment &env, const NoxRealInterval &a);
/// [ceil(a.lower), ceil(a.upper)], normalised. Neither tests nor reports: computes
/// normally whatever the error code holds, and leaves it as it is.
NOX_API NoxRealInterval NoxCeil(const NoxEnvironment &env, const NoxRealInterval &a);
/// [floor(a.lower), floor(a.upper)], normalised; no test, no error, as NoxCeil.
NOX_API NoxRealInterval NoxFloor(const NoxEnvironment &env, const NoxRealInterval &a);
/// [floor(a.lower + 0.5), floor(a.upper + 0.5)], normalised; no test, no error, as NoxCeil.
NOX_API NoxRealInterval NoxRound(const NoxEnvironment &env, const NoxRealInterval &a);

#endif
