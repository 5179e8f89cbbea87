// Helpers of the interval property tests: random operand intervals of every shape (tiny,
// huge, straddling zero, touching the limits, points), points sampled inside them,
// bitwise comparison and closeness in ulps.
#ifndef NOX_INTERVAL_SAMPLING_H
#define NOX_INTERVAL_SAMPLING_H

#include <NoxInterval.h>

#include "NoxTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

namespace nox_test {

inline void ExpectNil(const NoxRealInterval &r) { ExpectReal(r, NoxMaxReal, -NoxMaxReal); }

inline void ExpectAny(const NoxRealInterval &r) { ExpectReal(r, -NoxMaxReal, NoxMaxReal); }

/// y lies in [r.lower, r.upper] up to `ulps` units in the last place of y, plus an
/// absolute slack `abs` (magnitudes below NoxMinReal count as zero).
inline bool WithinUlps(double y, const NoxRealInterval &r, double ulps, double abs) {
    const double slack = ulps * std::fabs(y) * std::numeric_limits<double>::epsilon() + abs;
    return y >= r.lower - slack && y <= r.upper + slack;
}

/// x lies on the line [-NoxMaxReal, NoxMaxReal], where the functions promise anything.
inline bool OnTheLine(double x) { return x >= -NoxMaxReal && x <= NoxMaxReal; }

/// Random bound: a signed power of ten from 1e-45 to 1e39 with a random mantissa, or one
/// of the special values 0, +-1, +-NoxMinReal, +-NoxMaxReal.
inline double RandomBound(std::mt19937_64 &rng) {
    std::uniform_int_distribution<int> kind(0, 9);
    const int k = kind(rng);
    const double sign = (rng() & 1) ? 1.0 : -1.0;
    if (k == 0)
        return 0.0;
    if (k == 1)
        return sign;
    if (k == 2)
        return sign * NoxMaxReal;
    if (k == 3)
        return sign * NoxMinReal;
    std::uniform_real_distribution<double> exponent(-45, 39);
    std::uniform_real_distribution<double> mantissa(1, 10);
    return sign * mantissa(rng) * std::pow(10.0, std::floor(exponent(rng)));
}

/// Random operand: moderate (within +-20), tiny around a point, or between two random
/// bounds (so possibly huge, straddling zero or touching a limit), sometimes a point.
inline NoxRealInterval RandomInterval(std::mt19937_64 &rng) {
    std::uniform_int_distribution<int> kind(0, 3);
    std::uniform_real_distribution<double> moderate(-20, 20);
    double a;
    double b;
    switch (kind(rng)) {
    case 0:
        a = moderate(rng);
        b = moderate(rng);
        break;
    case 1:
        a = moderate(rng);
        b = a + std::ldexp(1.0, -static_cast<int>(rng() % 50));
        break;
    case 2:
        a = RandomBound(rng);
        b = a;
        break;
    default:
        a = RandomBound(rng);
        b = RandomBound(rng);
        break;
    }
    return a <= b ? R(a, b) : R(b, a);
}

/// A point of [lo, hi] (a proper interval): a bound, 0 when inside, a uniform point, or
/// a log-uniform point of the positive or negative part.
inline double SamplePoint(std::mt19937_64 &rng, const NoxRealInterval &a) {
    std::uniform_real_distribution<double> u(0, 1);
    switch (rng() % 5) {
    case 0:
        return a.lower;
    case 1:
        return a.upper;
    case 2:
        if (a.lower <= 0 && a.upper >= 0)
            return 0.0;
        return a.lower;
    case 3: {
        const double x = a.lower + (a.upper - a.lower) * u(rng);
        return x < a.lower ? a.lower : (x > a.upper ? a.upper : x);
    }
    default: {
        // Log-uniform between the magnitudes of a sign-definite part.
        double lo = a.lower;
        double hi = a.upper;
        double sign = 1;
        if (hi <= 0) {
            lo = -a.upper;
            hi = -a.lower;
            sign = -1;
        }
        if (lo <= 0)
            lo = std::fmin(hi, 1e-300);
        if (lo <= 0)
            return a.lower;
        const double x = std::exp(std::log(lo) + (std::log(hi) - std::log(lo)) * u(rng));
        const double m = x < lo ? lo : (x > hi ? hi : x);
        return sign * m;
    }
    }
}

} // namespace nox_test

#endif
