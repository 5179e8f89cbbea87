// Elementary functions of real intervals. Each function but ceil, floor and round first
// cuts its operand to a fixed domain and gives up on any error bit; it then evaluates the
// C library function at the bounds, using monotonicity and, for the periodic functions,
// a quadrant table that says where extremes or poles lie between the bounds.
#include "NoxIntervalFunctions.h"

#include "NoxPrivate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

NoxRealInterval Normalise(double lo, double hi) { return NoxCreateRealInterval(lo, hi); }

// ---- Quadrant tables: row the quadrant of the lower bound, column that of the upper ----

// Sine and cosine: bit 1, a maximum lies between the bounds; bit 2, a minimum does.
const unsigned char kMaximumInside = 1;
const unsigned char kMinimumInside = 2;

static const unsigned char kSineTable[4][4] = {
    {0, 1, 1, 3},
    {2, 0, 0, 2},
    {2, 3, 0, 2},
    {0, 1, 1, 0},
};

static const unsigned char kCosineTable[4][4] = {
    {0, 0, 2, 2},
    {3, 0, 2, 2},
    {1, 1, 0, 0},
    {1, 1, 3, 0},
};

// Tangent: 3, a pole lies between the bounds.
const unsigned char kPoleInside = 3;

static const unsigned char kTangentTable[4][4] = {
    {0, 3, 3, 3},
    {3, 0, 0, 3},
    {3, 3, 0, 3},
    {0, 3, 3, 0},
};

const double kFourPi = 2 * NoxTwoPi;

// Quadrant of x modulo 2*pi, 0 to 3 ([0, pi/2) is 0): floor(x * 2/pi) + 4, its remainder
// by 4, plus 4 if negative. The floor goes to int through the safe truncation (a NaN or
// a huge bound gives INT_MIN), and the sum is taken in 64 bits.
int Quadrant(double x) {
    std::int64_t q = std::int64_t{NoxTruncToInt(std::floor(x * 2 / NoxPi))} + 4;
    q %= 4;
    if (q < 0)
        q += 4;
    return static_cast<int>(q);
}

// Sine and cosine: the sorted values at the bounds, widened to 1 or -1 where the table
// puts an extreme between them.
template <class F>
NoxRealInterval SineOrCosine(const NoxEnvironment &env, const NoxRealInterval &a, F f,
                             const unsigned char (&table)[4][4]) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Trig);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    const double w = A.upper - A.lower;
    if (w >= NoxTwoPi)
        return NoxReal_TrigInv;
    const int ql = Quadrant(A.lower);
    const int qu = Quadrant(A.upper);
    // Both bounds in the same quadrant of different periods: almost a full turn.
    if (ql == qu && w > NoxPi)
        return NoxReal_TrigInv;
    const double fl = f(A.lower);
    const double fu = f(A.upper);
    NoxRealInterval R = {std::min(fl, fu), std::max(fl, fu)};
    const unsigned char extremes = table[ql][qu];
    if (extremes & kMaximumInside)
        R.upper = 1;
    if (extremes & kMinimumInside)
        R.lower = -1;
    return R;
}

// The angles of the branch pieces Y (the one that comes first within a period) and X,
// repeated with period 2*pi, that lie in the range r: from the lowest piece that reaches
// the range's lower end to the highest that reaches its upper end, cut to the range. The
// whole line as r stands for the environment's trigonometric limits. The pair is
// returned as it stands, inverted when no piece meets the range.
NoxRealInterval PlaceInRange(const NoxEnvironment &env, const NoxRealInterval &X,
                             const NoxRealInterval &Y, const NoxRealInterval &r) {
    NoxRealInterval R = r;
    if (NoxIsInfinite(r))
        env.GetTrigonometricLimits(R.lower, R.upper);
    R = NoxIntersect(R, NoxReal_Trig, NoxAbsPrecision);

    const double k = std::floor(R.lower * NoxInvTwoPi) * NoxTwoPi;
    double lower;
    if (Y.upper + k >= R.lower)
        lower = k + Y.lower;
    else if (X.upper + k >= R.lower)
        lower = k + X.lower;
    else if (Y.upper + k + NoxTwoPi >= R.lower)
        lower = k + Y.lower + NoxTwoPi;
    else if (X.upper + k + NoxTwoPi >= R.lower)
        lower = k + X.lower + NoxTwoPi;
    else
        lower = k + Y.lower + kFourPi;
    lower = std::max(lower, R.lower);

    const double m = std::ceil(R.upper * NoxInvTwoPi) * NoxTwoPi;
    double upper;
    if (R.upper >= m + X.lower)
        upper = m + X.upper;
    else if (R.upper >= m + Y.lower)
        upper = m + Y.upper;
    else if (R.upper >= m + X.lower - NoxTwoPi)
        upper = m + X.upper - NoxTwoPi;
    else if (R.upper >= m + Y.lower - NoxTwoPi)
        upper = m + Y.upper - NoxTwoPi;
    else
        upper = m + X.upper - kFourPi;
    upper = std::min(upper, R.upper);

    return {lower, upper};
}

NoxRealInterval HyperbolicDomain() { return Normalise(-2 * NoxMaxHypReal, 2 * NoxMaxHypReal); }

} // namespace

NoxRealInterval NoxSin(const NoxEnvironment &env, const NoxRealInterval &a) {
    return SineOrCosine(env, a, [](double x) { return std::sin(x); }, kSineTable);
}

NoxRealInterval NoxCos(const NoxEnvironment &env, const NoxRealInterval &a) {
    return SineOrCosine(env, a, [](double x) { return std::cos(x); }, kCosineTable);
}

NoxRealInterval NoxTan(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Trig);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    if (A.upper - A.lower > NoxPi)
        return NoxReal_Any;
    if (kTangentTable[Quadrant(A.lower)][Quadrant(A.upper)] == kPoleInside)
        return NoxReal_Any;
    return {std::tan(A.lower), std::tan(A.upper)};
}

NoxRealInterval NoxAsin(const NoxEnvironment &env, const NoxRealInterval &a,
                        const NoxRealInterval &r) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_TrigInv);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    const double lo = std::asin(A.lower);
    const double hi = std::asin(A.upper);
    return PlaceInRange(env, Normalise(NoxPi - hi, NoxPi - lo), Normalise(lo, hi), r);
}

NoxRealInterval NoxAcos(const NoxEnvironment &env, const NoxRealInterval &a,
                        const NoxRealInterval &r) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_TrigInv);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    const double lo = std::acos(A.lower);
    const double hi = std::acos(A.upper);
    return PlaceInRange(env, Normalise(hi, lo), Normalise(-lo, -hi), r);
}

NoxRealInterval NoxAtan(const NoxEnvironment &env, const NoxRealInterval &a,
                        const NoxRealInterval &r) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Any);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    const double lo = std::atan(A.lower);
    const double hi = std::atan(A.upper);
    return PlaceInRange(env, Normalise(NoxPi + lo, NoxPi + hi), Normalise(lo, hi), r);
}

NoxRealInterval NoxSinh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, HyperbolicDomain());
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(std::sinh(A.lower), std::sinh(A.upper));
}

NoxRealInterval NoxCosh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, HyperbolicDomain());
    if (env.GetError() != 0)
        return NoxReal_Nil;
    if (A.lower > 0)
        return Normalise(std::cosh(A.lower), std::cosh(A.upper));
    if (A.upper >= 0)
        return Normalise(1, std::cosh(std::max(std::fabs(A.lower), std::fabs(A.upper))));
    return Normalise(std::cosh(A.upper), std::cosh(A.lower));
}

NoxRealInterval NoxTanh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Any);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(std::tanh(A.lower), std::tanh(A.upper));
}

NoxRealInterval NoxAsinh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Any);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(NoxRealAsinh(A.lower), NoxRealAsinh(A.upper));
}

NoxRealInterval NoxAcosh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, Normalise(1, NoxMaxReal));
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(NoxRealAcosh(A.lower), NoxRealAcosh(A.upper));
}

NoxRealInterval NoxAtanh(const NoxEnvironment &env, const NoxRealInterval &a) {
    const double eps = NoxAbsPrecision;
    const NoxRealInterval A = NoxRestrictToDomain(env, a, Normalise(eps - 1, 1 - eps));
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(NoxRealAtanh(A.lower), NoxRealAtanh(A.upper));
}

NoxRealInterval NoxSqrt(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, NoxReal_Pos);
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return {std::sqrt(A.lower), std::sqrt(A.upper)};
}

NoxRealInterval NoxLog(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, Normalise(NoxMinReal, NoxMaxReal));
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return {std::log10(A.lower), std::log10(A.upper)};
}

NoxRealInterval NoxLn(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A = NoxRestrictToDomain(env, a, Normalise(NoxMinReal, NoxMaxReal));
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return {std::log(A.lower), std::log(A.upper)};
}

NoxRealInterval NoxExp(const NoxEnvironment &env, const NoxRealInterval &a) {
    const NoxRealInterval A =
        NoxRestrictToDomain(env, a, Normalise(-NoxMaxReal, 2 * NoxMaxExpReal));
    if (env.GetError() != 0)
        return NoxReal_Nil;
    return Normalise(std::exp(A.lower), std::exp(A.upper));
}

// Ceil, floor and round cut nothing and report nothing: they compute whatever the error
// code holds.

NoxRealInterval NoxCeil(const NoxEnvironment &, const NoxRealInterval &a) {
    return Normalise(std::ceil(a.lower), std::ceil(a.upper));
}

NoxRealInterval NoxFloor(const NoxEnvironment &, const NoxRealInterval &a) {
    return Normalise(std::floor(a.lower), std::floor(a.upper));
}

NoxRealInterval NoxRound(const NoxEnvironment &, const NoxRealInterval &a) {
    return Normalise(std::floor(a.lower + 0.5), std::floor(a.upper + 0.5));
}
