// Helpers shared by the library's sources; never installed.
#ifndef NOX_PRIVATE_H
#define NOX_PRIVATE_H

#include "NoxEnvironment.h"
#include "NoxInterval.h"
#include "NoxTypes.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

// The constants of the trigonometric code, correctly rounded to double; 2*pi and pi/2
// are exact scalings of NoxPi.
constexpr double NoxPi = 3.141592653589793;
constexpr double NoxTwoPi = 6.283185307179586;
constexpr double NoxHalfPi = 1.5707963267948966;
constexpr double NoxInvPi = 0.3183098861837907;
constexpr double NoxInvTwoPi = 0.15915494309189535;

/// Turns an absolute tolerance into a relative one for large magnitudes: |x| * tol when
/// |x| > 1, else tol.
inline double NoxScaledTolerance(double x, double tol) {
    return std::fabs(x) > 1 ? std::fabs(x) * tol : tol;
}

/// Narrows a 64-bit integer to int the way a two's complement machine does (wraps).
inline int NoxWrapToInt(std::int64_t v) {
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v)));
}

/// a + b clamped to +-NoxMaxInteger, computed in 64 bits so that no operand (INT_MIN,
/// the negation of INT_MIN, a host-changed NoxMaxInteger) can overflow. `overflow` is
/// set to 1 when the sum was clamped, else to 0.
inline int NoxSaturatingAdd64(std::int64_t a, std::int64_t b, unsigned char &overflow) {
    const std::int64_t maxInt = NoxMaxInteger;
    if (b > 0 && a > maxInt - b) {
        overflow = 1;
        return NoxMaxInteger;
    }
    if (b <= 0 && a < -(maxInt + b)) {
        overflow = 1;
        return NoxWrapToInt(-maxInt);
    }
    overflow = 0;
    return NoxWrapToInt(a + b);
}

/// a + b clamped to +-NoxMaxInteger; `overflow` tells whether it was clamped.
inline int NoxSaturatingAdd(int a, int b, unsigned char &overflow) {
    return NoxSaturatingAdd64(a, b, overflow);
}

/// Truncation of a double toward zero, as the library's arithmetic casts it. A value
/// outside the int range, or NaN, gives INT_MIN: what x86-64's truncating conversion
/// yields, obtained here without undefined behaviour.
inline int NoxTruncToInt(double x) {
    if (x > -2147483649.0 && x < 2147483648.0)
        return static_cast<int>(x);
    return INT_MIN;
}

/// The single-value markers: a real above NoxMaxReal stands for any value, a real below
/// -NoxMaxReal for none; the integer markers are NoxSingleInteger_Any and _Nil.
inline bool NoxIsSingleRealAny(double x) { return x > NoxMaxReal; }
inline bool NoxIsSingleRealNil(double x) { return x < -NoxMaxReal; }
inline bool NoxIsSingleIntegerAny(int i) { return i == NoxSingleInteger_Any; }
inline bool NoxIsSingleIntegerNil(int i) { return i == NoxSingleInteger_Nil; }

/// Kind of the combination of a first operand of kind `a` and a second of kind `b`, for
/// the binary value arithmetic, comparisons and set operations: real beats integer,
/// interval beats single, enumeration beats interval, a boolean combines only with the
/// integer kinds (as an integer interval), anything undefined gives no kind (0). Codes
/// outside the listed kinds give no kind as well.
inline NoxValueType NoxResultKind(NoxValueType a, NoxValueType b) {
    static const NoxValueType table[8][8] = {
        {NoxUndefinedType, NoxUndefinedType, NoxUndefinedType, NoxUndefinedType,
         NoxUndefinedType, NoxUndefinedType, NoxUndefinedType, NoxUndefinedType},
        {NoxUndefinedType, NoxIntegerType, NoxRealType, NoxIntegerIntervalType,
         NoxRealIntervalType, NoxIntegerEnumType, NoxRealEnumType, NoxIntegerIntervalType},
        {NoxUndefinedType, NoxRealType, NoxRealType, NoxRealIntervalType, NoxRealIntervalType,
         NoxRealEnumType, NoxRealEnumType, NoxUndefinedType},
        {NoxUndefinedType, NoxIntegerIntervalType, NoxRealIntervalType, NoxIntegerIntervalType,
         NoxRealIntervalType, NoxIntegerEnumType, NoxRealEnumType, NoxIntegerIntervalType},
        {NoxUndefinedType, NoxRealIntervalType, NoxRealIntervalType, NoxRealIntervalType,
         NoxRealIntervalType, NoxRealEnumType, NoxRealEnumType, NoxUndefinedType},
        {NoxUndefinedType, NoxIntegerEnumType, NoxRealEnumType, NoxIntegerEnumType,
         NoxRealEnumType, NoxIntegerEnumType, NoxRealEnumType, NoxIntegerIntervalType},
        {NoxUndefinedType, NoxRealEnumType, NoxRealEnumType, NoxRealEnumType, NoxRealEnumType,
         NoxRealEnumType, NoxRealEnumType, NoxUndefinedType},
        {NoxUndefinedType, NoxIntegerIntervalType, NoxUndefinedType, NoxIntegerIntervalType,
         NoxUndefinedType, NoxIntegerIntervalType, NoxUndefinedType, NoxBooleanType}};
    if (a < 0 || a > 7 || b < 0 || b > 7)
        return NoxUndefinedType;
    return table[a][b];
}

// ---- Domains of the powers, roots and elementary functions ----

/// Cuts `a` to `domain`: [max(a.lower, domain.lower), min(a.upper, domain.upper)]. When
/// nothing is left, sets NoxErrorEmptyResult and returns NoxReal_Nil. The callers then
/// give up whenever the error code is non-zero, a bit set before the call included.
inline NoxRealInterval NoxRestrictToDomain(const NoxEnvironment &env, const NoxRealInterval &a,
                                           const NoxRealInterval &domain) {
    const double lo = std::max(a.lower, domain.lower);
    const double hi = std::min(a.upper, domain.upper);
    if (lo > hi) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return {lo, hi};
}

/// Cuts `a` to `domain` less the open `hole` (hole.lower, hole.upper): a bound inside the
/// hole moves to its edge, so an operand wholly inside the hole is empty. Empty results
/// set NoxErrorEmptyResult and give NoxReal_Nil.
inline NoxRealInterval NoxRestrictToDomain(const NoxEnvironment &env, const NoxRealInterval &a,
                                           const NoxRealInterval &domain,
                                           const NoxRealInterval &hole) {
    double lo = std::max(a.lower, domain.lower);
    double hi = std::min(a.upper, domain.upper);
    if (lo > hi) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    if (hole.lower < lo && lo < hole.upper)
        lo = hole.upper;
    if (hole.lower < hi && hi < hole.upper)
        hi = hole.lower;
    if (lo > hi) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return {lo, hi};
}

// ---- Scalar inverse hyperbolic functions, shared by the interval functions and the
// expression operators: the library's own formulas, not the C library's ----

/// s * ln(|x| + sqrt(x*x + 1)), s the sign of x (1, -1, or 0 for x = 0).
inline double NoxRealAsinh(double x) {
    const double s = x > 0 ? 1.0 : (x < 0 ? -1.0 : 0.0);
    return s * std::log(std::fabs(x) + std::sqrt(x * x + 1));
}

/// ln(x + sqrt(x*x - 1)).
inline double NoxRealAcosh(double x) { return std::log(x + std::sqrt(x * x - 1)); }

/// 0.5 * (ln(1 + x) - ln(1 - x)).
inline double NoxRealAtanh(double x) { return 0.5 * (std::log(1 + x) - std::log(1 - x)); }

// ---- Gradients of the one-child operator nodes ----

/// How a gradient entry is formed from the child's entry gu[k] and the node's factor f.
enum class NoxGradientCombine {
    Times,      // f * gu[k]
    MinusTimes, // -0.0 - f * gu[k]
    Over,       // gu[k] / f
    MinusOver   // -0.0 - gu[k] / f
};

/// The factor of a node's gradient at the child's current value, how it combines with
/// the child's gradient, and whether a guard holds (then the gradient is all zeros).
struct NoxGradientRule {
    double factor;
    NoxGradientCombine combine;
    bool zero;
};

/// Writes the n entries of a one-child node's gradient by `rule`. Under a guard the
/// entries are zeros and the child's gradient is not fetched; a child without a gradient
/// leaves `grad` untouched. `Node` is the expression class, complete where this is used.
template <class Node>
void NoxApplyGradientRule(const NoxGradientRule &rule, Node *child, double *grad, int n) {
    if (rule.zero) {
        std::fill(grad, grad + n, 0.0);
        return;
    }
    const double *gu = child->GetGradient();
    if (!gu)
        return;
    const double f = rule.factor;
    switch (rule.combine) {
    case NoxGradientCombine::Times:
        for (int k = 0; k < n; ++k)
            grad[k] = f * gu[k];
        break;
    case NoxGradientCombine::MinusTimes:
        for (int k = 0; k < n; ++k)
            grad[k] = -0.0 - f * gu[k];
        break;
    case NoxGradientCombine::Over:
        for (int k = 0; k < n; ++k)
            grad[k] = gu[k] / f;
        break;
    case NoxGradientCombine::MinusOver:
        for (int k = 0; k < n; ++k)
            grad[k] = -0.0 - gu[k] / f;
        break;
    }
}

#endif
