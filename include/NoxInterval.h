// Closed real and integer intervals: the records, the library-wide limits that stand in
// for infinity, the any and nil constants, constructors, predicates, measures,
// intersection and union. None of these operations takes the environment or reports an
// error; tolerances are passed in by the caller.
#ifndef NOX_INTERVAL_H
#define NOX_INTERVAL_H

#include "NoxExport.h"

/// A closed real interval. Empty (nil) when its bounds are inverted by more than the
/// tolerance in use; the canonical nil is [NoxMaxReal, -NoxMaxReal].
struct NoxRealInterval {
    double lower;
    double upper;
};

/// A closed interval of 32-bit integers. Empty when lower > upper; the canonical nil is
/// [NoxMaxInteger, -NoxMaxInteger].
struct NoxIntegerInterval {
    int lower;
    int upper;
};

// Library-wide limits, mutable globals. There are no infinities: a bound on a limit
// means unbounded on that side.

/// The end of the real line: 3.4028234663852886e+38, the largest single-precision float.
extern NOX_API double NoxMaxReal;
/// Natural logarithm of NoxMaxReal: 88.72283905206835.
extern NOX_API double NoxMaxExpReal;
/// Natural logarithm of twice NoxMaxReal: 89.4159862326283.
extern NOX_API double NoxMaxHypReal;
/// Published for the host; read by no operation of the library: 8.
extern NOX_API int NoxMaxPowExpReal;
/// The end of the integer line: 2147483646, one less than the largest int.
extern NOX_API int NoxMaxInteger;
/// Fixed absolute precision: 1e-14.
extern NOX_API double NoxAbsPrecision;

// Derived at load, in this order, from NoxMaxReal and NoxMaxInteger.

/// 1 / NoxMaxReal.
extern NOX_API double NoxMinReal;
/// Marker of a single real standing for any value: NoxMaxReal * 10.
extern NOX_API double NoxSingleReal_Any;
/// Marker of a single real standing for no value: NoxMaxReal * (-10).
extern NOX_API double NoxSingleReal_Nil;
/// Marker of a single integer standing for any value: NoxMaxInteger + 1.
extern NOX_API int NoxSingleInteger_Any;
/// Marker of a single integer standing for no value: -1 - NoxMaxInteger.
extern NOX_API int NoxSingleInteger_Nil;
/// The whole real line [-NoxMaxReal, NoxMaxReal].
extern NOX_API NoxRealInterval NoxReal_Any;
/// The empty real interval [NoxMaxReal, -NoxMaxReal].
extern NOX_API NoxRealInterval NoxReal_Nil;
/// The non-negative half line [0, NoxMaxReal].
extern NOX_API NoxRealInterval NoxReal_Pos;
/// The range to which the trigonometric functions restrict their argument: [-1e9, 1e9].
extern NOX_API NoxRealInterval NoxReal_Trig;
/// The domain of the inverse trigonometric functions: [-1, 1].
extern NOX_API NoxRealInterval NoxReal_TrigInv;
/// The whole integer line [-NoxMaxInteger, NoxMaxInteger].
extern NOX_API NoxIntegerInterval NoxInteger_Any;
/// The empty integer interval [NoxMaxInteger, -NoxMaxInteger].
extern NOX_API NoxIntegerInterval NoxInteger_Nil;

// Constructors.

/// [v, v]; no check.
NOX_API NoxIntegerInterval NoxCreateIntegerInterval(int v);
/// [lo, hi] as given; an inverted pair is stored as it is.
NOX_API NoxIntegerInterval NoxCreateIntegerInterval(int lo, int hi);
/// The integers inside `r`, a bound within NoxAbsPrecision of an integer being taken as
/// that integer; NoxInteger_Nil when there are none.
NOX_API NoxIntegerInterval NoxCreateIntegerInterval(const NoxRealInterval &r);
/// [v, v]; no check, no clamping.
NOX_API NoxRealInterval NoxCreateRealInterval(double v);
/// [lo, hi] clamped to +-NoxMaxReal; NoxReal_Nil when lo > hi or the pair lies wholly
/// beyond a limit.
NOX_API NoxRealInterval NoxCreateRealInterval(double lo, double hi);

// Predicates: 1 or 0.

/// lower > upper.
NOX_API unsigned char NoxIsEmpty(const NoxIntegerInterval &a);
/// lower - upper > tol: bounds crossing by no more than tol still make a point.
NOX_API unsigned char NoxIsEmpty(const NoxRealInterval &a, double tol);
/// lower <= upper.
NOX_API unsigned char NoxIsConsistent(const NoxIntegerInterval &a);
/// Not NoxIsEmpty(a, tol).
NOX_API unsigned char NoxIsConsistent(const NoxRealInterval &a, double tol);
/// The whole line: lower <= -NoxMaxInteger and upper >= NoxMaxInteger.
NOX_API unsigned char NoxIsInfinite(const NoxIntegerInterval &a);
/// The whole line: lower <= -NoxMaxReal and upper >= NoxMaxReal ([0, NoxMaxReal] is not).
NOX_API unsigned char NoxIsInfinite(const NoxRealInterval &a);
/// Not NoxIsInfinite(a).
NOX_API unsigned char NoxIsFinite(const NoxIntegerInterval &a);
/// Not NoxIsInfinite(a).
NOX_API unsigned char NoxIsFinite(const NoxRealInterval &a);
/// Both bounds equal.
NOX_API unsigned char NoxIsEqual(const NoxIntegerInterval &a, const NoxIntegerInterval &b);
/// Both bounds closer than tol (strict).
NOX_API unsigned char NoxIsEqual(const NoxRealInterval &a, const NoxRealInterval &b, double tol);
/// a contains b.
NOX_API unsigned char NoxContains(const NoxIntegerInterval &a, const NoxIntegerInterval &b);
/// a contains b up to tol: a.lower - b.lower < tol and b.upper - a.upper < tol (strict).
NOX_API unsigned char NoxContains(const NoxRealInterval &a, const NoxRealInterval &b, double tol);
/// NoxWidth(a) == 0.
NOX_API unsigned char NoxIsExact(const NoxIntegerInterval &a);
/// |upper - lower| < tol (strict).
NOX_API unsigned char NoxIsExact(const NoxRealInterval &a, double tol);

// Measures.

/// upper + (-lower) through the saturating addition: NoxMaxInteger or -NoxMaxInteger
/// when -lower is positive or not and the sum passes that limit; otherwise the plain
/// difference (so [0, INT_MAX] gives INT_MAX).
NOX_API int NoxWidth(const NoxIntegerInterval &a);
/// upper - lower; no clamping, negative for an inverted interval.
NOX_API double NoxWidth(const NoxRealInterval &a);
/// (upper + lower) * 0.5.
NOX_API double NoxMiddle(const NoxRealInterval &a);
/// max(|lower|, |upper|). |INT_MIN| saturates to INT_MAX.
NOX_API int NoxMAG(const NoxIntegerInterval &a);
/// max(|lower|, |upper|); the upper bound's magnitude wins only when strictly larger.
NOX_API double NoxMAG(const NoxRealInterval &a);
/// 1 if lower > 0, else -1 if upper < 0, else 0 (no tolerance).
NOX_API int NoxSignum(const NoxRealInterval &a);

// Set operations.

/// [max(lowers), min(uppers)], stored as computed (may be inverted).
NOX_API NoxIntegerInterval NoxIntersect(const NoxIntegerInterval &a, const NoxIntegerInterval &b);
/// Tolerant intersection with `a` as the reference: a bound of `b` within a tolerance of
/// a bound of `a` gives way to it. The tolerance of each end of `a` is tol scaled by a
/// tenth of that end's magnitude when the tenth exceeds 1, capped at 0.05. The result is
/// normalised like NoxCreateRealInterval(lo, hi).
NOX_API NoxRealInterval NoxIntersect(const NoxRealInterval &a, const NoxRealInterval &b,
                                     double tol);
/// [min(lowers), max(uppers)]: the hull.
NOX_API NoxIntegerInterval NoxUnite(const NoxIntegerInterval &a, const NoxIntegerInterval &b);
/// The hull, normalised like NoxCreateRealInterval(lo, hi); `tol` is not used. The hull
/// of nil and an interval is that interval.
NOX_API NoxRealInterval NoxUnite(const NoxRealInterval &a, const NoxRealInterval &b, double tol);

#endif
