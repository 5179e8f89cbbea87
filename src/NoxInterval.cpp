#include "NoxInterval.h"

#include "NoxPrivate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

// Initialised data.
double NoxMaxReal = 3.4028234663852886e+38;
double NoxMaxExpReal = 88.72283905206835;
double NoxMaxHypReal = 89.4159862326283;
int NoxMaxPowExpReal = 8;
int NoxMaxInteger = 2147483646;
double NoxAbsPrecision = 1e-14;

namespace {
// -1 - NoxMaxInteger and NoxMaxInteger + 1 in 64 bits, so that a host that changes the
// limit before load cannot make the library overflow.
int SingleIntegerAny() { return NoxWrapToInt(std::int64_t{NoxMaxInteger} + 1); }
int SingleIntegerNil() { return NoxWrapToInt(-1 - std::int64_t{NoxMaxInteger}); }
int NegatedMaxInteger() { return NoxWrapToInt(-std::int64_t{NoxMaxInteger}); }
} // namespace

// Derived at load, in this order, from the limits above. They live in this one source so
// that their order of initialisation is the order of definition.
double NoxMinReal = 1 / NoxMaxReal;
double NoxSingleReal_Any = NoxMaxReal * 10;
double NoxSingleReal_Nil = NoxMaxReal * (-10);
int NoxSingleInteger_Any = SingleIntegerAny();
int NoxSingleInteger_Nil = SingleIntegerNil();
NoxRealInterval NoxReal_Any = NoxCreateRealInterval(-NoxMaxReal, NoxMaxReal);
NoxRealInterval NoxReal_Nil = NoxCreateRealInterval(NoxMaxReal, -NoxMaxReal);
NoxRealInterval NoxReal_Pos = NoxCreateRealInterval(0, NoxMaxReal);
NoxRealInterval NoxReal_Trig = NoxCreateRealInterval(-1e9, 1e9);
NoxRealInterval NoxReal_TrigInv = NoxCreateRealInterval(-1, 1);
NoxIntegerInterval NoxInteger_Any = NoxCreateIntegerInterval(NegatedMaxInteger(), NoxMaxInteger);
NoxIntegerInterval NoxInteger_Nil = NoxCreateIntegerInterval(NoxMaxInteger, NegatedMaxInteger());

namespace {
NoxIntegerInterval IntegerNil() { return {NoxMaxInteger, NegatedMaxInteger()}; }
NoxRealInterval RealNil() { return {NoxMaxReal, -NoxMaxReal}; }

// Smallest integer not below lo, forgiving NoxAbsPrecision; lo lies within the integer
// limits or is NaN (which truncates to INT_MIN).
int InwardLower(double lo) {
    const double eps = NoxAbsPrecision;
    int n;
    if (lo < 0) {
        n = NoxTruncToInt(lo - eps);
        if (n - lo > 1 - eps)
            n = NoxWrapToInt(std::int64_t{n} - 1);
    } else {
        n = NoxTruncToInt(lo + eps);
        if (lo - n > eps)
            n = NoxWrapToInt(std::int64_t{n} + 1);
    }
    return n;
}

// Largest integer not above hi, forgiving NoxAbsPrecision.
int InwardUpper(double hi) {
    const double eps = NoxAbsPrecision;
    int m;
    if (hi < 0) {
        m = NoxTruncToInt(hi - eps);
        if (m - hi > eps)
            m = NoxWrapToInt(std::int64_t{m} - 1);
    } else {
        m = NoxTruncToInt(hi + eps);
        if (hi - m > 1 - eps)
            m = NoxWrapToInt(std::int64_t{m} + 1);
    }
    return m;
}
} // namespace

NoxIntegerInterval NoxCreateIntegerInterval(int v) { return {v, v}; }

NoxIntegerInterval NoxCreateIntegerInterval(int lo, int hi) { return {lo, hi}; }

NoxIntegerInterval NoxCreateIntegerInterval(const NoxRealInterval &r) {
    const double maxInt = NoxMaxInteger;
    const double lo = std::max(r.lower, -maxInt);
    const double hi = std::min(r.upper, maxInt);
    if (lo > hi)
        return IntegerNil();
    const int n = InwardLower(lo);
    const int m = InwardUpper(hi);
    if (n > m)
        return IntegerNil();
    return {n, m};
}

NoxRealInterval NoxCreateRealInterval(double v) { return {v, v}; }

NoxRealInterval NoxCreateRealInterval(double lo, double hi) {
    if (lo > hi || lo > NoxMaxReal || hi < -NoxMaxReal)
        return RealNil();
    return {std::max(lo, -NoxMaxReal), std::min(hi, NoxMaxReal)};
}

unsigned char NoxIsEmpty(const NoxIntegerInterval &a) { return a.lower > a.upper; }

unsigned char NoxIsEmpty(const NoxRealInterval &a, double tol) { return a.lower - a.upper > tol; }

unsigned char NoxIsConsistent(const NoxIntegerInterval &a) { return a.lower <= a.upper; }

unsigned char NoxIsConsistent(const NoxRealInterval &a, double tol) {
    return !(a.lower - a.upper > tol);
}

unsigned char NoxIsInfinite(const NoxIntegerInterval &a) {
    return a.lower <= -std::int64_t{NoxMaxInteger} && a.upper >= NoxMaxInteger;
}

unsigned char NoxIsInfinite(const NoxRealInterval &a) {
    return a.lower <= -NoxMaxReal && a.upper >= NoxMaxReal;
}

unsigned char NoxIsFinite(const NoxIntegerInterval &a) { return !NoxIsInfinite(a); }

unsigned char NoxIsFinite(const NoxRealInterval &a) { return !NoxIsInfinite(a); }

unsigned char NoxIsEqual(const NoxIntegerInterval &a, const NoxIntegerInterval &b) {
    return a.lower == b.lower && a.upper == b.upper;
}

unsigned char NoxIsEqual(const NoxRealInterval &a, const NoxRealInterval &b, double tol) {
    return std::fabs(a.lower - b.lower) < tol && std::fabs(a.upper - b.upper) < tol;
}

unsigned char NoxContains(const NoxIntegerInterval &a, const NoxIntegerInterval &b) {
    return a.lower <= b.lower && a.upper >= b.upper;
}

unsigned char NoxContains(const NoxRealInterval &a, const NoxRealInterval &b, double tol) {
    return a.lower - b.lower < tol && b.upper - a.upper < tol;
}

unsigned char NoxIsExact(const NoxIntegerInterval &a) { return NoxWidth(a) == 0; }

unsigned char NoxIsExact(const NoxRealInterval &a, double tol) {
    return std::fabs(a.upper - a.lower) < tol;
}

int NoxWidth(const NoxIntegerInterval &a) {
    // The negation is taken in 64 bits: -INT_MIN does not fit an int.
    unsigned char overflow;
    return NoxSaturatingAdd64(a.upper, -std::int64_t{a.lower}, overflow);
}

double NoxWidth(const NoxRealInterval &a) { return a.upper - a.lower; }

double NoxMiddle(const NoxRealInterval &a) { return (a.upper + a.lower) * 0.5; }

int NoxMAG(const NoxIntegerInterval &a) {
    // Magnitudes in 64 bits; |INT_MIN| does not fit an int and saturates to INT_MAX.
    const std::int64_t lo = std::llabs(a.lower);
    const std::int64_t hi = std::llabs(a.upper);
    const std::int64_t mag = hi > lo ? hi : lo;
    return mag > INT_MAX ? INT_MAX : static_cast<int>(mag);
}

double NoxMAG(const NoxRealInterval &a) {
    const double lo = std::fabs(a.lower);
    const double hi = std::fabs(a.upper);
    return hi > lo ? hi : lo;
}

int NoxSignum(const NoxRealInterval &a) {
    if (a.lower > 0)
        return 1;
    if (a.upper < 0)
        return -1;
    return 0;
}

NoxIntegerInterval NoxIntersect(const NoxIntegerInterval &a, const NoxIntegerInterval &b) {
    return {std::max(a.lower, b.lower), std::min(a.upper, b.upper)};
}

NoxRealInterval NoxIntersect(const NoxRealInterval &a, const NoxRealInterval &b, double tol) {
    const double tl = std::min(NoxScaledTolerance(a.lower / 10, tol), 0.05);
    const double th = std::min(NoxScaledTolerance(a.upper / 10, tol), 0.05);

    double lo;
    if (b.lower <= a.lower + tl)
        lo = a.lower;
    else if (b.lower > a.upper && b.lower <= a.upper + th)
        lo = a.upper;
    else
        lo = b.lower;

    double hi;
    if (b.upper >= a.upper - th)
        hi = a.upper;
    else if (b.upper < a.lower && b.upper >= a.lower - tl)
        hi = a.lower;
    else
        hi = b.upper;

    return NoxCreateRealInterval(lo, hi);
}

NoxIntegerInterval NoxUnite(const NoxIntegerInterval &a, const NoxIntegerInterval &b) {
    return {std::min(a.lower, b.lower), std::max(a.upper, b.upper)};
}

NoxRealInterval NoxUnite(const NoxRealInterval &a, const NoxRealInterval &b, double) {
    return NoxCreateRealInterval(std::min(a.lower, b.lower), std::max(a.upper, b.upper));
}
