// Interval arithmetic: sum, difference, product, quotient, minimum, maximum, absolute
// value and modulo on integer and real intervals. These are the innermost kernels: no
// exception, no allocation, no virtual call. Integer bounds that could overflow are formed
// in 64 bits and narrowed explicitly, so no input is undefined behaviour.
#include "NoxIntervalFunctions.h"

#include "NoxPrivate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

// ---- Operand emptiness and the nil of each kind ----

bool IsEmptyOperand(const NoxIntegerInterval &a) { return NoxIsEmpty(a); }
// Real operands use the fixed precision, not the environment's tolerance.
bool IsEmptyOperand(const NoxRealInterval &a) { return NoxIsEmpty(a, NoxAbsPrecision); }

NoxIntegerInterval NilLike(const NoxIntegerInterval &) { return NoxInteger_Nil; }
NoxRealInterval NilLike(const NoxRealInterval &) { return NoxReal_Nil; }

// The end of the common prologue: an empty operand makes the result nil.
template <class Interval> Interval EmptyOperand(const NoxEnvironment &env, const Interval &a) {
    env.SetError(NoxErrorEmptyResult);
    return NilLike(a);
}

template <class Interval> bool AnyEmpty(const Interval &a, const Interval &b) {
    return IsEmptyOperand(a) || IsEmptyOperand(b);
}

NoxRealInterval Normalise(double lo, double hi) { return NoxCreateRealInterval(lo, hi); }

template <class T> T Min4(T p1, T p2, T p3, T p4) {
    return std::min(std::min(std::min(p1, p2), p3), p4);
}

template <class T> T Max4(T p1, T p2, T p3, T p4) {
    return std::max(std::max(std::max(p1, p2), p3), p4);
}

// [min, max] of four real candidates, normalised.
NoxRealInterval NormalisedHull4(double p1, double p2, double p3, double p4) {
    return Normalise(Min4(p1, p2, p3, p4), Max4(p1, p2, p3, p4));
}

// ---- Integer sum and difference ----

// [lo1 + lo2, hi1 + hi2] through the saturating addition. The addends are 64-bit so that
// the difference can pass a negated INT_MIN. A lower bound saturated upward or an upper
// bound saturated downward means the whole result lies beyond the range.
NoxIntegerInterval SaturatingBounds(const NoxEnvironment &env, std::int64_t lo1,
                                    std::int64_t lo2, std::int64_t hi1, std::int64_t hi2) {
    unsigned char overflow;
    const int lower = NoxSaturatingAdd64(lo1, lo2, overflow);
    if (overflow && lower == NoxMaxInteger) {
        env.SetError(NoxErrorEmptyResult);
        return NoxInteger_Nil;
    }
    const int upper = NoxSaturatingAdd64(hi1, hi2, overflow);
    if (overflow && upper == -std::int64_t{NoxMaxInteger}) {
        env.SetError(NoxErrorEmptyResult);
        return NoxInteger_Nil;
    }
    return {lower, upper};
}

// ---- Integer product ----

int Sign(int x) { return (x > 0) - (x < 0); }

// x * y clamped to +-NoxMaxInteger; every clamp adds 1 to `overflows`.
int SaturatingMul(int x, int y, int &overflows) {
    if (y == 0)
        return 0;
    const std::int64_t absX = std::llabs(x);
    const std::int64_t absY = std::llabs(y);
    if (absX > NoxMaxInteger / absY) {
        ++overflows;
        return NoxWrapToInt(std::int64_t{Sign(x)} * Sign(y) * NoxMaxInteger);
    }
    return NoxWrapToInt(std::int64_t{x} * y);
}

// ---- Integer quotient ----

// Truncating division; y is never 0 here. INT_MIN / -1 wraps to INT_MIN.
int TruncDiv(int x, int y) { return NoxWrapToInt(std::int64_t{x} / y); }

// Negation of an int bound; -INT_MIN wraps to INT_MIN, as the machine's negation does.
int Negate(int x) { return NoxWrapToInt(-std::int64_t{x}); }

// ---- Minimum and maximum: the same rule for both kinds ----

template <class Interval> Interval BoundMin(const Interval &a, const Interval &b) {
    return {std::min(a.lower, b.lower), std::min(a.upper, b.upper)};
}

template <class Interval> Interval BoundMax(const Interval &a, const Interval &b) {
    return {std::max(a.lower, b.lower), std::max(a.upper, b.upper)};
}

// ---- Real modulo ----

// |b| as an interval.
NoxRealInterval DivisorMagnitude(const NoxRealInterval &b) {
    if (b.lower > 0)
        return b;
    if (b.upper < 0)
        return Normalise(-b.upper, -b.lower);
    return Normalise(0, std::max(b.upper, -b.lower));
}

// The trivial enclosure [0, min(x, divisor)) of a positive modulo.
NoxRealInterval TrivialRemainder(const NoxRealInterval &x, const NoxRealInterval &divisor) {
    double h = x.upper;
    if (x.upper >= divisor.upper)
        h = divisor.upper - NoxScaledTolerance(divisor.upper, NoxAbsPrecision);
    return Normalise(0, h);
}

// The quotients k that x / divisor can truncate to, rounded inward to the integers.
NoxIntegerInterval QuotientRange(const NoxRealInterval &x, const NoxRealInterval &divisor) {
    NoxRealInterval q = Normalise(std::floor(x.lower / divisor.upper), x.upper / divisor.lower);
    if (q.lower < 0)
        q.lower = 0;
    return NoxCreateIntegerInterval(q);
}

// The divisors in `divisor` for which the quotient of x.upper is k.
NoxRealInterval DivisorsOfQuotient(const NoxRealInterval &x, const NoxRealInterval &divisor,
                                   std::int64_t k) {
    const double eps = NoxAbsPrecision;
    if (k == 0)
        return NoxCreateRealInterval(0, 0);
    const double kd = static_cast<double>(k);
    const NoxRealInterval t = Normalise(x.upper / static_cast<double>(k + 1) - eps, x.upper / kd);
    return NoxIntersect(divisor, t, eps);
}

// The remainders x - k*d over x in `x` and d in `d`.
NoxRealInterval RemaindersOfQuotient(const NoxEnvironment &env, const NoxRealInterval &x,
                                     const NoxRealInterval &d, std::int64_t k) {
    const double eps = NoxAbsPrecision;
    const double kd = static_cast<double>(k);
    const NoxRealInterval kD = Normalise(kd * d.lower, kd * d.upper);
    if (NoxIsEmpty(x, eps) || NoxIsEmpty(kD, eps)) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return Normalise(x.lower - kd * d.upper, x.upper - kd * d.lower);
}

// Rounds of the positive modulo whose divisor set is certainly empty: for k >= 1 the
// divisors of quotient k lie in T = [x.upper/(k+1) - eps, x.upper/k], which falls as k
// grows. A T lying more than 1 (beyond every snapping tolerance of NoxIntersect, at most
// 0.05) above or below |b| meets nothing, so the round gives the nil divisor set, adds
// nothing to the enclosure, and takes the same stop decision as the round before it.
bool DivisorsWhollyAbove(const NoxRealInterval &x, const NoxRealInterval &divisor,
                         std::int64_t k) {
    return x.upper / static_cast<double>(k + 1) - NoxAbsPrecision > divisor.upper + 1.0;
}

bool DivisorsWhollyBelow(const NoxRealInterval &x, const NoxRealInterval &divisor,
                         std::int64_t k) {
    return x.upper / static_cast<double>(k) < divisor.lower - 1.0;
}

// The last quotient in [k, last] whose divisors lie wholly above |b|, when k's do: the
// test is monotone in k, so a binary search finds it.
std::int64_t LastWhollyAbove(const NoxRealInterval &x, const NoxRealInterval &divisor,
                             std::int64_t k, std::int64_t last) {
    while (k < last) {
        const std::int64_t mid = k + (last - k + 1) / 2;
        if (DivisorsWhollyAbove(x, divisor, mid))
            k = mid;
        else
            last = mid - 1;
    }
    return k;
}

// Modulo of x, a part of [0, inf), by b: the remainders of every quotient k, each cut to
// the trivial enclosure and united. The loop ends by clearing the whole error code, on
// purpose: an empty set of divisors for one k is not a failure of the modulo.
NoxRealInterval PositiveMod(const NoxEnvironment &env, const NoxRealInterval &x,
                            const NoxRealInterval &b) {
    const double eps = NoxAbsPrecision;
    if (NoxIsEmpty(x, eps))
        return NoxReal_Nil;
    const NoxRealInterval divisor = DivisorMagnitude(b);
    const NoxRealInterval r0 = TrivialRemainder(x, divisor);
    if (divisor.lower < eps)
        return r0;
    const NoxIntegerInterval q = QuotientRange(x, divisor);
    if (NoxIsEmpty(q) || static_cast<double>(q.upper) - static_cast<double>(q.lower) >= r0.upper)
        return r0;
    // Quotients are never negative; a negative first quotient comes only from a NaN bound
    // (truncated to INT_MIN) and would make the loop run some 2^32 rounds.
    if (q.lower < 0)
        return r0;
    NoxRealInterval acc = NoxReal_Nil;
    for (std::int64_t k = q.lower; k <= q.upper; ++k) {
        const NoxRealInterval d = DivisorsOfQuotient(x, divisor, k);
        const NoxRealInterval m = RemaindersOfQuotient(env, x, d, k);
        acc = NoxUnite(acc, NoxIntersect(r0, m, eps), eps);
        if (acc.lower == 0 && acc.upper >= std::min(d.upper, r0.upper))
            break;
        // After a round that met nothing and did not stop, the rounds that meet nothing
        // as well change nothing and do not stop: the loop goes on at the first quotient
        // whose divisors can meet |b|, and ends once they have all passed below it. The
        // enclosure is the one the full walk gives (up to 2^31 rounds otherwise).
        if (k > 0 && DivisorsWhollyBelow(x, divisor, k))
            break;
        if (k > 0 && DivisorsWhollyAbove(x, divisor, k))
            k = LastWhollyAbove(x, divisor, k, q.upper);
    }
    env.ClearError();
    return acc;
}

NoxRealInterval ToReal(const NoxIntegerInterval &a) {
    return Normalise(static_cast<double>(a.lower), static_cast<double>(a.upper));
}

} // namespace

// ---- Sum and difference ----

NoxIntegerInterval NoxSum(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return SaturatingBounds(env, a.lower, b.lower, a.upper, b.upper);
}

NoxRealInterval NoxSum(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return Normalise(a.lower + b.lower, a.upper + b.upper);
}

NoxIntegerInterval NoxSub(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return SaturatingBounds(env, a.lower, -std::int64_t{b.upper}, a.upper, -std::int64_t{b.lower});
}

NoxRealInterval NoxSub(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return Normalise(a.lower - b.upper, a.upper - b.lower);
}

// ---- Product and quotient ----

NoxIntegerInterval NoxMul(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    int overflows = 0;
    const int p1 = SaturatingMul(a.lower, b.lower, overflows);
    const int p2 = SaturatingMul(a.lower, b.upper, overflows);
    const int p3 = SaturatingMul(a.upper, b.lower, overflows);
    const int p4 = SaturatingMul(a.upper, b.upper, overflows);
    const int lower = Min4(p1, p2, p3, p4);
    const int upper = Max4(p1, p2, p3, p4);
    const bool atFarLimit = lower == NoxMaxInteger || upper == -std::int64_t{NoxMaxInteger};
    if (atFarLimit && overflows == 4) {
        env.SetError(NoxErrorEmptyResult);
        return NoxInteger_Nil;
    }
    return {lower, upper};
}

NoxRealInterval NoxMul(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return NormalisedHull4(a.lower * b.lower, a.lower * b.upper, a.upper * b.lower,
                           a.upper * b.upper);
}

NoxIntegerInterval NoxDiv(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    if (b.lower <= 0 && b.upper >= 0)
        return NoxInteger_Any;
    const int q1 = TruncDiv(a.lower, b.lower);
    const int q2 = TruncDiv(a.lower, b.upper);
    const int q3 = TruncDiv(a.upper, b.lower);
    const int q4 = TruncDiv(a.upper, b.upper);
    return {Min4(q1, q2, q3, q4), Max4(q1, q2, q3, q4)};
}

NoxRealInterval NoxDiv(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    if (b.lower <= 0 && b.upper >= 0)
        return NoxReal_Any;
    return NormalisedHull4(a.lower / b.lower, a.lower / b.upper, a.upper / b.lower,
                           a.upper / b.upper);
}

// ---- Minimum and maximum ----

NoxIntegerInterval NoxMin(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return BoundMin(a, b);
}

NoxRealInterval NoxMin(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return BoundMin(a, b);
}

NoxIntegerInterval NoxMax(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return BoundMax(a, b);
}

NoxRealInterval NoxMax(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    return BoundMax(a, b);
}

// ---- Absolute value ----

NoxIntegerInterval NoxAbs(const NoxEnvironment &env, const NoxIntegerInterval &a) {
    if (IsEmptyOperand(a))
        return EmptyOperand(env, a);
    if (a.lower >= 0)
        return a;
    if (a.upper <= 0)
        return {Negate(a.upper), Negate(a.lower)};
    return {0, std::max(Negate(a.lower), std::abs(a.upper))};
}

NoxRealInterval NoxAbs(const NoxEnvironment &env, const NoxRealInterval &a) {
    if (IsEmptyOperand(a))
        return EmptyOperand(env, a);
    if (a.lower > 0)
        return Normalise(a.lower, a.upper);
    if (a.upper < 0)
        return Normalise(-a.upper, -a.lower);
    return Normalise(0, NoxMAG(a));
}

// ---- Modulo ----

NoxRealInterval NoxMod(const NoxEnvironment &env, const NoxRealInterval &a,
                       const NoxRealInterval &b) {
    const double eps = NoxAbsPrecision;
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    const NoxRealInterval nonNegative = Normalise(std::max(a.lower, 0.0), a.upper);
    const NoxRealInterval r1 = PositiveMod(env, nonNegative, b);
    const NoxRealInterval negated = Normalise(std::max(-a.upper, 0.0), -a.lower);
    const NoxRealInterval r2 = PositiveMod(env, negated, b);
    NoxRealInterval result = r1;
    if (!NoxIsEmpty(r2, eps))
        result = NoxUnite(r1, Normalise(-r2.upper, -r2.lower), eps);
    if (NoxIsEmpty(result, eps)) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return result;
}

NoxIntegerInterval NoxMod(const NoxEnvironment &env, const NoxIntegerInterval &a,
                          const NoxIntegerInterval &b) {
    if (AnyEmpty(a, b))
        return EmptyOperand(env, a);
    const NoxRealInterval realB = ToReal(b);
    const NoxRealInterval realA = ToReal(a);
    return NoxCreateIntegerInterval(NoxMod(env, realA, realB));
}
