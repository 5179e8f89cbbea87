// Regressions found by fuzzing, each named after the behaviour it protects.
#include <NoxInterval.h>
#include <NoxIntervalFunctions.h>

#include "NoxPrivate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdint>
#include <random>

namespace {

// The positive modulo walked round by round over every quotient, as the rules give it,
// without skipping: the reference for the modulo's result.
NoxRealInterval WalkedPositiveMod(const NoxEnvironment &env, const NoxRealInterval &x,
                                  const NoxRealInterval &b) {
    const double eps = NoxAbsPrecision;
    if (NoxIsEmpty(x, eps))
        return NoxReal_Nil;
    NoxRealInterval d = b;
    if (!(b.lower > 0))
        d = b.upper < 0 ? NoxCreateRealInterval(-b.upper, -b.lower)
                        : NoxCreateRealInterval(0, std::max(b.upper, -b.lower));
    double h = x.upper;
    if (x.upper >= d.upper)
        h = d.upper - NoxScaledTolerance(d.upper, eps);
    const NoxRealInterval r0 = NoxCreateRealInterval(0, h);
    if (d.lower < eps)
        return r0;
    NoxRealInterval qr = NoxCreateRealInterval(std::floor(x.lower / d.upper), x.upper / d.lower);
    qr.lower = std::max(qr.lower, 0.0);
    const NoxIntegerInterval q = NoxCreateIntegerInterval(qr);
    if (NoxIsEmpty(q) || static_cast<double>(q.upper) - static_cast<double>(q.lower) >= r0.upper)
        return r0;
    NoxRealInterval acc = NoxReal_Nil;
    for (std::int64_t k = q.lower; k <= q.upper; ++k) {
        const double kd = static_cast<double>(k);
        const NoxRealInterval divisors =
            k == 0 ? NoxCreateRealInterval(0, 0)
                   : NoxIntersect(d,
                                  NoxCreateRealInterval(x.upper / (kd + 1) - eps, x.upper / kd),
                                  eps);
        const NoxRealInterval kD = NoxCreateRealInterval(kd * divisors.lower, kd * divisors.upper);
        NoxRealInterval m = NoxReal_Nil;
        if (!NoxIsEmpty(x, eps) && !NoxIsEmpty(kD, eps))
            m = NoxCreateRealInterval(x.lower - kd * divisors.upper, x.upper - kd * divisors.lower);
        acc = NoxUnite(acc, NoxIntersect(r0, m, eps), eps);
        if (acc.lower == 0 && acc.upper >= std::min(divisors.upper, r0.upper))
            break;
    }
    env.ClearError();
    return acc;
}

NoxRealInterval WalkedMod(const NoxEnvironment &env, const NoxRealInterval &a,
                          const NoxRealInterval &b) {
    const double eps = NoxAbsPrecision;
    const NoxRealInterval r1 =
        WalkedPositiveMod(env, NoxCreateRealInterval(std::max(a.lower, 0.0), a.upper), b);
    const NoxRealInterval r2 =
        WalkedPositiveMod(env, NoxCreateRealInterval(std::max(-a.upper, 0.0), -a.lower), b);
    NoxRealInterval result = r1;
    if (!NoxIsEmpty(r2, eps))
        result = NoxUnite(r1, NoxCreateRealInterval(-r2.upper, -r2.lower), eps);
    return NoxIsEmpty(result, eps) ? NoxReal_Nil : result;
}

double SecondsOf(void (*work)()) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(RealModRegression, DivisorFarBelowAHugeOperand_SkipsTheQuotientsThatMeetNothing) {
    // |b| = 2^31 against x up to NoxMaxReal: about 2^31 quotients, none of whose divisor
    // sets meets |b|. Only the quotient 0 contributes: [143.375, 2^31 - 2^31 * 1e-14].
    static NoxRealInterval result;
    static NoxEnvironment env;
    const double seconds = SecondsOf([] {
        result = NoxMod(env, NoxRealInterval{143.375, NoxMaxReal},
                        NoxRealInterval{double(INT_MIN), double(INT_MIN)});
    });
    EXPECT_EQ(result.lower, 143.375);
    EXPECT_EQ(result.upper, 2147483648.0 - 2147483648.0 * 1e-14);
    EXPECT_EQ(env.GetError(), 0);
    EXPECT_LT(seconds, 1.0);
}

TEST(RealModRegression, WideOperandFarFromZero_EndsWithoutWalkingEveryQuotient) {
    // [5e16, 1e17] mod 1e9: the quotients from 5e7 to 1e8 - 2 have divisor sets above
    // 1e9; 1e8 - 1 reaches every remainder below 1e9, which ends the walk.
    static NoxRealInterval result;
    static NoxEnvironment env;
    const double seconds = SecondsOf([] {
        result = NoxMod(env, NoxRealInterval{5e16, 1e17}, NoxRealInterval{1e9, 1e9});
    });
    EXPECT_EQ(result.lower, 0.0);
    EXPECT_EQ(result.upper, 1e9 - 1e9 * 1e-14);
    EXPECT_LT(seconds, 1.0);
}

TEST(RealModRegression, SkippingRoundsThatMeetNothing_GivesWhatTheFullWalkGives) {
    const unsigned seed = 20261122;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::uniform_int_distribution<int> scale(-3, 6);
    NoxEnvironment env;
    for (int i = 0; i < 4000; ++i) {
        const double sx = std::pow(10.0, scale(rng));
        const double sb = std::pow(10.0, scale(rng) - 1);
        double al = (unit(rng) - 0.3) * sx, au = al + unit(rng) * sx;
        double bl = (unit(rng) - 0.2) * sb, bu = bl + unit(rng) * unit(rng) * sb;
        if (i % 5 == 0)
            bu = bl; // a point divisor
        const NoxRealInterval a{al, au}, b{bl, bu};
        env.ClearError();
        const NoxRealInterval expected = WalkedMod(env, a, b);
        env.ClearError();
        const NoxRealInterval got = NoxMod(env, a, b);
        ASSERT_EQ(got.lower, expected.lower) << "seed " << seed << ", case " << i;
        ASSERT_EQ(got.upper, expected.upper) << "seed " << seed << ", case " << i;
    }
}

} // namespace
