// Integer powers and n-th roots of real intervals. Each first cuts its operand to the
// part of the line on which the result is representable (with a hole around 0 where a
// power underflows below NoxMinReal or a negative power overflows), then evaluates the
// monotone pieces at the bounds.
#include "NoxIntervalFunctions.h"

#include "NoxPrivate.h"

#include <algorithm>
#include <cmath>

namespace {

NoxRealInterval Normalise(double lo, double hi) { return NoxCreateRealInterval(lo, hi); }

// |n| as unsigned: the magnitude of INT_MIN does not fit an int.
unsigned Magnitude(int n) {
    return n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n);
}

// x^m by repeated squaring: for each bit of m from the lowest, multiply the accumulator
// by x when the bit is set, then square x.
double RaiseToMagnitude(double x, unsigned m) {
    double acc = 1;
    for (; m != 0; m >>= 1) {
        if (m & 1u)
            acc *= x;
        x *= x;
    }
    return acc;
}

bool IsOdd(int n) { return n % 2 != 0; }

// ---- Domain restriction and underflow test of the power x^n ----

// t = NoxMaxReal^(1/n) for n > 0 and NoxMinReal^(1/n) for n < 0 bounds the domain
// [-t, t]; u = NoxMinReal^(1/n) bounds the underflow test.
struct PowerBounds {
    double t;
    double u;
};

PowerBounds ComputePowerBounds(int n) {
    const double u = std::pow(NoxMinReal, 1.0 / n);
    return {n > 0 ? std::pow(NoxMaxReal, 1.0 / n) : u, u};
}

// pow dominates the cost of a power, so the bounds of the common exponents are computed
// once, with the limits of that moment, and served while the limits stay the same; a
// host that changes a limit gets them computed afresh. The values are those of
// ComputePowerBounds either way.
constexpr int kTabledExponent = 64;

struct PowerBoundsTable {
    double maxReal;
    double minReal;
    PowerBounds bounds[2 * kTabledExponent + 1];

    PowerBoundsTable() : maxReal(NoxMaxReal), minReal(NoxMinReal), bounds() {
        for (int n = -kTabledExponent; n <= kTabledExponent; ++n)
            if (n != 0)
                bounds[n + kTabledExponent] = ComputePowerBounds(n);
    }
};

PowerBounds PowerBoundsOf(int n) {
    static const PowerBoundsTable table;
    if (n >= -kTabledExponent && n <= kTabledExponent && table.maxReal == NoxMaxReal &&
        table.minReal == NoxMinReal)
        return table.bounds[n + kTabledExponent];
    return ComputePowerBounds(n);
}

// The domain [-t, t] less the hole (-1/t, 1/t), where the power leaves the representable
// magnitudes from the other side.
NoxRealInterval RestrictPower(const NoxEnvironment &env, const NoxRealInterval &a, int n,
                              const PowerBounds &b) {
    if (n == 0)
        return NoxRestrictToDomain(env, a, NoxReal_Any);
    return NoxRestrictToDomain(env, a, Normalise(-b.t, b.t), Normalise(-1 / b.t, 1 / b.t));
}

// [0, 0] when x^n falls below NoxMinReal in magnitude for some x of a, else nil.
NoxRealInterval UnderflowToZero(const NoxRealInterval &a, int n, const PowerBounds &b) {
    if (n == 0)
        return NoxReal_Nil;
    const double u = b.u;
    const bool underflows = n > 0 ? a.upper >= -u && a.lower <= u : a.lower <= -u || a.upper >= u;
    return underflows ? NoxRealInterval{0, 0} : NoxReal_Nil;
}

// ---- The power table: one function per kind of exponent, the columns in the order
// A.lower > 0, A.upper < 0, A holds 0 ----

NoxRealInterval PowerPositiveOdd(const NoxRealInterval &A, int n) {
    if (A.lower > 0)
        return Normalise(NoxRealPower(A.lower, n), NoxRealPower(A.upper, n));
    if (A.upper < 0)
        return Normalise(-NoxRealPower(-A.lower, n), -NoxRealPower(-A.upper, n));
    return Normalise(-NoxRealPower(-A.lower, n), NoxRealPower(A.upper, n));
}

NoxRealInterval PowerPositiveEven(const NoxRealInterval &A, int n) {
    if (A.lower > 0)
        return Normalise(NoxRealPower(A.lower, n), NoxRealPower(A.upper, n));
    if (A.upper < 0)
        return Normalise(NoxRealPower(-A.upper, n), NoxRealPower(-A.lower, n));
    return Normalise(0, NoxRealPower(std::max(A.upper, -A.lower), n));
}

NoxRealInterval PowerNegativeOdd(const NoxRealInterval &A, int n) {
    if (A.lower > 0)
        return Normalise(NoxRealPower(A.upper, n), NoxRealPower(A.lower, n));
    if (A.upper < 0) {
        const unsigned m = Magnitude(n);
        return Normalise(-1 / RaiseToMagnitude(-A.upper, m), -1 / RaiseToMagnitude(-A.lower, m));
    }
    return NoxReal_Any;
}

NoxRealInterval PowerNegativeEven(const NoxRealInterval &A, int n) {
    if (A.lower > 0)
        return Normalise(NoxRealPower(A.upper, n), NoxRealPower(A.lower, n));
    if (A.upper < 0) {
        const unsigned m = Magnitude(n);
        return Normalise(1 / RaiseToMagnitude(-A.lower, m), 1 / RaiseToMagnitude(-A.upper, m));
    }
    const double p = NoxRealPower(std::max(A.upper, -A.lower), n);
    if (p > NoxMaxReal)
        return NoxReal_Nil;
    return Normalise(p, NoxMaxReal);
}

// x^0 is 1, and 0 where the operand itself (not its restriction) may hold 0.
NoxRealInterval PowerZero(const NoxRealInterval &a) {
    if (a.lower > 0 || a.upper < 0)
        return Normalise(1, 1);
    return Normalise(0, 1);
}

NoxRealInterval PowerCore(const NoxRealInterval &a, const NoxRealInterval &A, int n) {
    if (n == 0)
        return PowerZero(a);
    if (n > 0)
        return IsOdd(n) ? PowerPositiveOdd(A, n) : PowerPositiveEven(A, n);
    return IsOdd(n) ? PowerNegativeOdd(A, n) : PowerNegativeEven(A, n);
}

// ---- Roots ----

// Domain of the n-th root: [0, 1] for n = 0, [0, NoxMaxReal] for even n, the whole line
// for odd n; a negative order also removes the hole (-NoxMinReal, NoxMinReal), whose
// roots would exceed the representable magnitudes.
NoxRealInterval RestrictRoot(const NoxEnvironment &env, const NoxRealInterval &a, int n) {
    if (n == 0)
        return NoxRestrictToDomain(env, a, NoxRealInterval{0, 1});
    const NoxRealInterval &domain = IsOdd(n) ? NoxReal_Any : NoxReal_Pos;
    if (n > 0)
        return NoxRestrictToDomain(env, a, domain);
    return NoxRestrictToDomain(env, a, domain, Normalise(-NoxMinReal, NoxMinReal));
}

// The negative branch: one function per kind of order, the columns in the order
// A.lower > 0, A.upper < 0, A holds 0; e = 1/n.

NoxRealInterval NegativeRootPositiveOdd(const NoxRealInterval &A, double e) {
    if (A.lower > 0)
        return NoxReal_Nil;
    if (A.upper < 0)
        return Normalise(-std::pow(-A.lower, e), -std::pow(-A.upper, e));
    return Normalise(-std::pow(-A.lower, e), 0);
}

NoxRealInterval NegativeRootPositiveEven(const NoxRealInterval &A, double e) {
    if (A.lower > 0)
        return Normalise(-std::pow(A.upper, e), -std::pow(A.lower, e));
    if (A.upper < 0)
        return NoxReal_Any;
    return Normalise(-std::pow(A.upper, e), 0);
}

NoxRealInterval NegativeRootNegativeOdd(const NoxRealInterval &A, double e) {
    if (A.lower > 0)
        return NoxReal_Nil;
    if (A.upper < 0)
        return Normalise(-std::pow(-A.upper, e), -std::pow(-A.lower, e));
    return Normalise(-NoxMaxReal, -std::pow(-A.lower, e));
}

NoxRealInterval NegativeRootNegativeEven(const NoxRealInterval &A, double e) {
    if (A.lower > 0)
        return Normalise(-std::pow(A.lower, e), -std::pow(A.upper, e));
    return NoxReal_Any;
}

} // namespace

double NoxRealPower(double x, int n) {
    const double acc = RaiseToMagnitude(x, Magnitude(n));
    return n < 0 ? 1 / acc : acc;
}

NoxRealInterval NoxPow(const NoxEnvironment &env, const NoxRealInterval &a, int n) {
    const PowerBounds bounds = n != 0 ? PowerBoundsOf(n) : PowerBounds{0, 0};
    const NoxRealInterval A = RestrictPower(env, a, n, bounds);
    const NoxRealInterval core = env.GetError() != 0 ? NoxReal_Nil : PowerCore(a, A, n);
    const NoxRealInterval R = NoxUnite(core, UnderflowToZero(a, n, bounds), NoxAbsPrecision);
    // The bit of an operand outside the domain, and any bit set before the call, go: the
    // result alone says whether the power is empty.
    env.ClearError();
    if (NoxIsEmpty(R, NoxAbsPrecision)) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return R;
}

NoxRealInterval NoxRootPositive(const NoxEnvironment &env, const NoxRealInterval &a, int n) {
    const NoxRealInterval A = RestrictRoot(env, a, n);
    if (env.GetError() != 0) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    if (n == 0)
        return NoxReal_Any;
    const double e = 1.0 / n;
    if (n > 0) {
        if (A.lower > 0)
            return Normalise(std::pow(A.lower, e), std::pow(A.upper, e));
        if (A.upper < 0)
            return NoxReal_Nil;
        return Normalise(0, std::pow(A.upper, e));
    }
    if (A.lower > 0)
        return Normalise(std::pow(A.upper, e), std::pow(A.lower, e));
    if (A.upper < 0)
        return NoxReal_Nil;
    return Normalise(std::pow(A.upper, e), NoxMaxReal);
}

NoxRealInterval NoxRootNegative(const NoxEnvironment &env, const NoxRealInterval &a, int n) {
    const NoxRealInterval A = RestrictRoot(env, a, n);
    if (env.GetError() != 0) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    if (n == 0)
        return NoxReal_Any;
    const double e = 1.0 / n;
    if (n > 0)
        return IsOdd(n) ? NegativeRootPositiveOdd(A, e) : NegativeRootPositiveEven(A, e);
    return IsOdd(n) ? NegativeRootNegativeOdd(A, e) : NegativeRootNegativeEven(A, e);
}

NoxRealInterval NoxRoot(const NoxEnvironment &env, const NoxRealInterval &a, int n,
                        const NoxRealInterval &r) {
    if (r.lower > 0)
        return NoxRootPositive(env, a, n);
    if (r.upper < 0)
        return NoxRootNegative(env, a, n);
    // r is the reference of both intersections: a root bound close to a bound of r snaps
    // to it. Each branch's error is dropped; only an empty hull is reported.
    const NoxRealInterval N = NoxIntersect(r, NoxRootNegative(env, a, n), NoxAbsPrecision);
    env.ClearError();
    const NoxRealInterval P = NoxIntersect(r, NoxRootPositive(env, a, n), NoxAbsPrecision);
    env.ClearError();
    const NoxRealInterval R = NoxUnite(P, N, NoxAbsPrecision);
    if (NoxIsEmpty(R, NoxAbsPrecision)) {
        env.SetError(NoxErrorEmptyResult);
        return NoxReal_Nil;
    }
    return R;
}
