#include <NoxIntervalFunctions.h>

#include "NoxIntervalSampling.h"
#include "NoxPrivate.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

using namespace nox_test;

namespace {

// The expected value of an expression, computed at run time from operands the compiler
// cannot fold.
double V(double x) {
    volatile double v = x;
    return v;
}

NoxRealInterval Norm(double lo, double hi) { return NoxCreateRealInterval(lo, hi); }

// Domain bound t of x^n: NoxMaxReal^(1/n) for n > 0, NoxMinReal^(1/n) for n < 0.
double PowerDomainBound(int n) {
    return n > 0 ? std::pow(V(NoxMaxReal), 1.0 / n) : std::pow(V(NoxMinReal), 1.0 / n);
}

} // namespace

// ---- The scalar power ----

TEST(RealPower, ZeroExponentIsOne) {
    EXPECT_EQ(NoxRealPower(7.5, 0), 1.0);
    EXPECT_EQ(NoxRealPower(0.0, 0), 1.0);
    EXPECT_EQ(NoxRealPower(kNaN, 0), 1.0);
    EXPECT_EQ(NoxRealPower(kInf, 0), 1.0);
}

TEST(RealPower, MultipliesBySquaresOfTheSetBitsFromTheLowest) {
    // n = 5 = 0b101: acc = x, then x^2, x^4; acc = x * x^4.
    const double x = V(1.1);
    const double x2 = x * x;
    const double x4 = x2 * x2;
    EXPECT_EQ(Bits(NoxRealPower(x, 5)), Bits(V(1 * x) * x4));
    // n = 6 = 0b110: acc = x^2 * x^4.
    EXPECT_EQ(Bits(NoxRealPower(x, 6)), Bits(V(1 * x2) * x4));
    EXPECT_EQ(NoxRealPower(2.0, 10), 1024.0);
    EXPECT_EQ(NoxRealPower(-3.0, 3), -27.0);
    EXPECT_EQ(NoxRealPower(-3.0, 4), 81.0);
}

TEST(RealPower, NegativeExponentDividesOneByThePowerOfTheMagnitude) {
    const double x = V(1.1);
    EXPECT_EQ(Bits(NoxRealPower(x, -5)), Bits(1 / NoxRealPower(x, 5)));
    EXPECT_EQ(NoxRealPower(2.0, -2), 0.25);
    EXPECT_EQ(NoxRealPower(0.0, -1), kInf);
}

TEST(RealPower, LowestIntExponentHasNoOverflow) {
    // |INT_MIN| is not an int; the magnitude 2^31 is taken without overflow.
    EXPECT_EQ(NoxRealPower(1.0, INT_MIN), 1.0);
    EXPECT_EQ(NoxRealPower(2.0, INT_MIN), 0.0);
    EXPECT_EQ(NoxRealPower(0.5, INT_MIN), kInf);
    EXPECT_EQ(NoxRealPower(-1.0, INT_MAX), -1.0);
}

// ---- Domain restriction of the power ----

TEST(PowerDomain, BoundsOfTheTextHold) {
    EXPECT_DOUBLE_EQ(PowerDomainBound(2), 1.844674352395373e+19);
    EXPECT_DOUBLE_EQ(1 / PowerDomainBound(2), 5.421011023986243e-20);
    EXPECT_DOUBLE_EQ(PowerDomainBound(3), 6981463519622.324);
    EXPECT_DOUBLE_EQ(PowerDomainBound(8), 65535.999511718735);
    // For negative n the bound is NoxMinReal^(1/n), which agrees with NoxMaxReal^(1/|n|).
    EXPECT_DOUBLE_EQ(PowerDomainBound(-2), PowerDomainBound(2));
}

TEST(PowerDomain, PositiveExponentCutsTheOperandToPlusMinusT) {
    NoxEnvironment env;
    const double t = PowerDomainBound(3);
    const NoxRealInterval r = NoxPow(env, R(-1e30, 1e30), 3);
    ExpectReal(r, Norm(-NoxRealPower(t, 3), NoxRealPower(t, 3)));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerDomain, BoundsFollowTheExponentAndTheLimitsOfTheMoment) {
    NoxEnvironment env;
    for (int n : {3, 63, 65, 101, 1001}) {
        const double t = PowerDomainBound(n);
        ExpectReal(NoxPow(env, R(-1e300, 1e300), n),
                   Norm(-NoxRealPower(t, n), NoxRealPower(t, n)));
    }
    // A host that narrows the limits gets bounds computed from the new limits.
    const double savedMax = NoxMaxReal, savedMin = NoxMinReal;
    NoxMaxReal = 1e30;
    NoxMinReal = 1e-30;
    const double t = PowerDomainBound(3);
    const NoxRealInterval r = NoxPow(env, R(-1e20, 1e20), 3);
    NoxMaxReal = savedMax;
    NoxMinReal = savedMin;
    ExpectReal(r, NoxRealInterval{-NoxRealPower(t, 3), NoxRealPower(t, 3)});
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerDomain, OperandBeyondTheDomainIsNilWithError) {
    NoxEnvironment env;
    ExpectNil(NoxPow(env, R(1e20, 1e21), 2));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();
    ExpectNil(NoxPow(env, R(-1e21, -1e20), 3));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerDomain, PositiveExponentHoleIsCoveredByTheUnderflowZero) {
    // [1e-30, 2] squared: the lower bound lies inside (-1/t, 1/t) and moves to 1/t, whose
    // square is about NoxMinReal; the underflow test adds 0, which takes its place.
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(1e-30, 2), 2), 0, 4);
    // [-2, -1e-30] cubed: the upper bound moves to -1/t, and 0 is added again.
    ExpectReal(NoxPow(env, R(-2, -1e-30), 3), -8, 0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerDomain, NegativeExponentHoleKeepsThePowerBelowTheLimit) {
    // [1e-30, 1]^-2: the lower bound lies in the hole (-1/t, 1/t), t = NoxMinReal^(-1/2),
    // and moves to 1/t; no underflow is possible (a stays below t).
    NoxEnvironment env;
    const double h = 1 / PowerDomainBound(-2);
    const NoxRealInterval r = NoxPow(env, R(1e-30, 1), -2);
    ExpectReal(r, Norm(NoxRealPower(1.0, -2), NoxRealPower(h, -2)));
    // [-1, -1e-30]^-2: the upper bound moves to -1/t.
    const NoxRealInterval s = NoxPow(env, R(-1, -1e-30), -2);
    ExpectReal(s, Norm(1 / NoxRealPower(1.0, 2), 1 / NoxRealPower(h, 2)));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerDomain, ZeroExponentKeepsTheWholeLine) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(-1e39, 1e39), 0), 0, 1);
    EXPECT_EQ(env.GetError(), 0);
    // Wholly beyond the line: the restriction is empty and nothing underflows.
    ExpectNil(NoxPow(env, R(2e39, 3e39), 0));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// ---- Underflow to zero ----

TEST(PowerUnderflow, OperandInsideTheHoleGivesZeroAndClearsTheError) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(1e-30, 1e-25), 2), 0, 0);
    EXPECT_EQ(env.GetError(), 0);
    ExpectReal(NoxPow(env, R(-1e-25, -1e-30), 3), 0, 0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerUnderflow, PositiveExponentTestsBothSidesAgainstU) {
    NoxEnvironment env;
    const double u = std::pow(V(NoxMinReal), 1.0 / 2);
    // a.upper >= -u and a.lower <= u: [u, 1] holds a point whose square underflows.
    ExpectReal(NoxPow(env, R(u, 1), 2), 0, 1);
    // a.lower just above u: no zero.
    const double above = std::nextafter(std::nextafter(u, 1), 1);
    const NoxRealInterval r = NoxPow(env, R(above, 1), 2);
    EXPECT_GT(r.lower, 0.0);
    // a.upper just below -u: no zero either.
    const NoxRealInterval s = NoxPow(env, R(-1, -above), 2);
    EXPECT_GT(s.lower, 0.0);
}

TEST(PowerUnderflow, NegativeExponentUnderflowsForLargeOperands) {
    NoxEnvironment env;
    const double u = std::pow(V(NoxMinReal), 1.0 / -2);
    // a.upper >= u: the power of the large points underflows; the domain cuts them.
    ExpectReal(NoxPow(env, R(1, 1e30), -2), 0, 1);
    // a.lower <= -u, odd exponent: negative values up to 0.
    const NoxRealInterval r = NoxPow(env, R(-1e30, -1), -3);
    EXPECT_EQ(r.lower, -1.0);
    EXPECT_EQ(r.upper, 0.0);
    // Neither: [1, u / 2] has no zero.
    EXPECT_GT(NoxPow(env, R(1, u / 2), -2).lower, 0.0);
    EXPECT_EQ(env.GetError(), 0);
}

// ---- The power table, row by row ----

TEST(PowerTable, ZeroExponentTestsTheOperandItself) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(2, 3), 0), 1, 1);
    ExpectReal(NoxPow(env, R(-3, -2), 0), 1, 1);
    ExpectReal(NoxPow(env, R(-1, 1), 0), 0, 1);
    ExpectReal(NoxPow(env, R(0, 1), 0), 0, 1);
}

TEST(PowerTable, PositiveOddExponent) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(2, 3), 3), 8, 27);
    ExpectReal(NoxPow(env, R(-3, -2), 3), -27, -8);
    ExpectReal(NoxPow(env, R(-2, 3), 3), -8, 27);
    const double x = V(1.1);
    ExpectReal(NoxPow(env, R(-x, x), 5), -NoxRealPower(x, 5), NoxRealPower(x, 5));
}

TEST(PowerTable, PositiveEvenExponent) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(2, 3), 2), 4, 9);
    ExpectReal(NoxPow(env, R(-3, -2), 2), 4, 9);
    ExpectReal(NoxPow(env, R(-2, 3), 2), 0, 9);
    ExpectReal(NoxPow(env, R(-4, 3), 2), 0, 16);
}

TEST(PowerTable, NegativeOddExponent) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(2, 4), -1), 0.25, 0.5);
    const double x = V(3.0);
    ExpectReal(NoxPow(env, R(-4, -2), -1), -1 / V(2.0), -1 / V(4.0));
    ExpectReal(NoxPow(env, R(-3, -2), -3), -1 / NoxRealPower(2, 3), -1 / NoxRealPower(x, 3));
    ExpectAny(NoxPow(env, R(-1, 2), -1));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerTable, NegativeEvenExponent) {
    NoxEnvironment env;
    ExpectReal(NoxPow(env, R(2, 4), -2), 0.0625, 0.25);
    ExpectReal(NoxPow(env, R(-4, -2), -2), 0.0625, 0.25);
    ExpectReal(NoxPow(env, R(-1, 2), -2), 0.25, NoxMaxReal);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerTable, NegativeEvenOverZeroIsNilWhenThePowerExceedsTheLimit) {
    // [-h, h] with h = 1/t at the edges of the hole holds 0; h^-8 rounds above NoxMaxReal.
    NoxEnvironment env;
    const double h = 1 / PowerDomainBound(-8);
    ASSERT_GT(NoxRealPower(h, -8), NoxMaxReal);
    ExpectNil(NoxPow(env, R(-h, h), -8));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    // For n = -2 the power stays at the limit: [NoxMaxReal, NoxMaxReal].
    const double h2 = 1 / PowerDomainBound(-2);
    ASSERT_LE(NoxRealPower(h2, -2), NoxMaxReal);
    env.ClearError();
    ExpectReal(NoxPow(env, R(-h2, h2), -2), NoxRealPower(h2, -2), NoxMaxReal);
    EXPECT_EQ(env.GetError(), 0);
}

// ---- Error handling of the power ----

TEST(PowerErrors, ErrorBeforeTheCallMakesTheCoreNilAndIsCleared) {
    NoxEnvironment env;
    env.SetError(NoxErrorBadOperandType);
    // The core is nil and nothing underflows: nil, and only the empty-result bit.
    ExpectNil(NoxPow(env, R(2, 3), 2));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    // The core is nil but the underflow test holds: [0, 0] and a cleared code.
    env.SetError(NoxErrorBadOperandType);
    ExpectReal(NoxPow(env, R(-1, 1), 2), 0, 0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerErrors, SuccessfulPowerClearsEarlierBits) {
    NoxEnvironment env;
    env.SetError(NoxErrorEmptyResult | NoxErrorBadOperandType);
    // n = 0 has no underflow: the core is nil and so is the result.
    ExpectNil(NoxPow(env, R(2, 3), 0));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerErrors, InvertedOperandIsEmpty) {
    NoxEnvironment env;
    ExpectNil(NoxPow(env, R(3, 2), 2));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// ---- Roots: domain ----

TEST(PowerRootDomain, ZeroOrderAcceptsZeroToOneAndGivesTheWholeLine) {
    NoxEnvironment env;
    ExpectAny(NoxRootPositive(env, R(0.5, 2), 0));
    ExpectAny(NoxRootNegative(env, R(-1, 0.5), 0));
    EXPECT_EQ(env.GetError(), 0);
    ExpectNil(NoxRootPositive(env, R(2, 3), 0));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerRootDomain, EvenOrderCutsToTheNonNegativeLine) {
    NoxEnvironment env;
    ExpectReal(NoxRootPositive(env, R(-4, 9), 2), 0, 3);
    ExpectNil(NoxRootPositive(env, R(-9, -4), 2));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerRootDomain, NegativeEvenOrderRemovesTheHoleAroundZero) {
    NoxEnvironment env;
    const double e = 1.0 / -2;
    // The lower bound 0 lies in (-NoxMinReal, NoxMinReal) and moves to NoxMinReal.
    ExpectReal(NoxRootPositive(env, R(0, 4), -2),
               Norm(std::pow(V(4.0), e), std::pow(V(NoxMinReal), e)));
    EXPECT_EQ(env.GetError(), 0);
    // Wholly inside the hole: empty.
    ExpectNil(NoxRootPositive(env, R(0, 1e-40), -2));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerRootDomain, OddOrderTakesTheWholeLine) {
    NoxEnvironment env;
    ExpectReal(NoxRootPositive(env, R(-8, 27), 3), Norm(0, std::pow(V(27.0), 1.0 / 3)));
    ExpectReal(NoxRootNegative(env, R(-1e39, -8), 3),
               Norm(-std::pow(V(NoxMaxReal), 1.0 / 3), -std::pow(V(8.0), 1.0 / 3)));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerRootDomain, NegativeOddOrderRemovesTheHoleAroundZero) {
    NoxEnvironment env;
    const double e = 1.0 / -3;
    // The upper bound 0 lies in the hole and moves to -NoxMinReal.
    ExpectReal(NoxRootNegative(env, R(-8, 0), -3),
               Norm(-std::pow(V(NoxMinReal), e), -std::pow(V(8.0), e)));
    ExpectNil(NoxRootNegative(env, R(-1e-40, 1e-40), -3));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// ---- Roots: the positive branch ----

TEST(PowerRootPositive, PositiveOrder) {
    NoxEnvironment env;
    ExpectReal(NoxRootPositive(env, R(4, 9), 2), 2, 3);
    ExpectNil(NoxRootPositive(env, R(-8, -1), 3));
    EXPECT_EQ(env.GetError(), 0);
    ExpectReal(NoxRootPositive(env, R(-8, 8), 3), Norm(0, std::pow(V(8.0), 1.0 / 3)));
}

TEST(PowerRootPositive, NegativeOrder) {
    NoxEnvironment env;
    const double e = 1.0 / -2;
    ExpectReal(NoxRootPositive(env, R(4, 9), -2), Norm(std::pow(V(9.0), e), std::pow(V(4.0), e)));
    ExpectNil(NoxRootPositive(env, R(-8, -1), -3));
    EXPECT_EQ(env.GetError(), 0);
    ExpectReal(NoxRootPositive(env, R(-8, 27), -3), Norm(std::pow(V(27.0), 1.0 / -3), NoxMaxReal));
}

TEST(PowerRootPositive, ErrorOnEntryGivesNilAndTheEmptyBit) {
    NoxEnvironment env;
    env.SetError(NoxErrorBadOperandType);
    ExpectNil(NoxRootPositive(env, R(4, 9), 2));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
    env.ClearError();
    env.SetError(NoxErrorBadOperandType);
    ExpectNil(NoxRootPositive(env, R(0.5, 0.5), 0));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
}

// ---- Roots: the negative branch, cell by cell ----

TEST(PowerRootNegative, PositiveOddOrder) {
    NoxEnvironment env;
    const double e = 1.0 / 3;
    ExpectNil(NoxRootNegative(env, R(1, 8), 3));
    EXPECT_EQ(env.GetError(), 0);
    ExpectReal(NoxRootNegative(env, R(-8, -1), 3), -2, -1);
    ExpectReal(NoxRootNegative(env, R(-27, 8), 3), Norm(-std::pow(V(27.0), e), 0));
}

TEST(PowerRootNegative, PositiveEvenOrder) {
    NoxEnvironment env;
    ExpectReal(NoxRootNegative(env, R(4, 9), 2), -3, -2);
    // A wholly negative operand is cut away; only a NaN lower bound survives the
    // restriction with a negative upper bound.
    ExpectAny(NoxRootNegative(env, R(kNaN, -1), 2));
    ExpectReal(NoxRootNegative(env, R(-4, 9), 2), -3, 0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerRootNegative, NegativeOddOrder) {
    NoxEnvironment env;
    const double e = 1.0 / -3;
    ExpectNil(NoxRootNegative(env, R(1, 8), -3));
    EXPECT_EQ(env.GetError(), 0);
    ExpectReal(NoxRootNegative(env, R(-8, -1), -3),
               Norm(-std::pow(V(1.0), e), -std::pow(V(8.0), e)));
    ExpectReal(NoxRootNegative(env, R(-8, 27), -3), Norm(-NoxMaxReal, -std::pow(V(8.0), e)));
}

TEST(PowerRootNegative, NegativeEvenOrder) {
    NoxEnvironment env;
    const double e = 1.0 / -2;
    ExpectReal(NoxRootNegative(env, R(4, 9), -2), Norm(-std::pow(V(4.0), e), -std::pow(V(9.0), e)));
    // After the restriction A lies above 0; NaN lower bounds reach the other cells.
    ExpectAny(NoxRootNegative(env, R(kNaN, -1), -2));
    ExpectAny(NoxRootNegative(env, R(kNaN, 4), -2));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerRootNegative, ErrorOnEntryGivesNilAndTheEmptyBit) {
    NoxEnvironment env;
    env.SetError(NoxErrorBadOperandType);
    ExpectNil(NoxRootNegative(env, R(4, 9), 2));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
}

// ---- NoxRoot over the branches ----

TEST(PowerRoot, RangeAboveZeroTakesThePositiveBranch) {
    NoxEnvironment env;
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(1, 10)), 2, 3);
    // No intersection with r: the branch is returned as it is.
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(100, 200)), 2, 3);
}

TEST(PowerRoot, RangeBelowZeroTakesTheNegativeBranch) {
    NoxEnvironment env;
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(-10, -1)), -3, -2);
}

TEST(PowerRoot, RangeAcrossZeroTakesTheHullOfBothBranches) {
    NoxEnvironment env;
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(-10, 10)), -3, 3);
    ExpectReal(NoxRoot(env, R(-8, 27), 3, R(-10, 10)), Norm(-2, std::pow(V(27.0), 1.0 / 3)));
    EXPECT_EQ(env.GetError(), 0);
}

TEST(PowerRoot, BranchBoundsWithinTheScaledToleranceSnapToTheRange) {
    NoxEnvironment env;
    // -3 lies within 1e-14 of r.lower: the result starts at r.lower.
    const double lo = V(-3.0000000000000004);
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(lo, 10)), lo, 3);
    const double hi = V(2.9999999999999996);
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(-10, hi)), -3, hi);
    // The range cuts both branches.
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(-2.5, 2.5)), -2.5, 2.5);
}

TEST(PowerRoot, EmptyHullIsNilWithError) {
    NoxEnvironment env;
    ExpectNil(NoxRoot(env, R(4, 9), 2, R(-1, 1)));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerRoot, BranchErrorsAreClearedBetweenTheBranches) {
    NoxEnvironment env;
    // A bit set before the call makes the negative branch nil; the code is then cleared
    // and the positive branch computes.
    env.SetError(NoxErrorBadOperandType);
    ExpectReal(NoxRoot(env, R(4, 9), 2, R(-10, 10)), 2, 3);
    EXPECT_EQ(env.GetError(), 0);
    // An operand outside the even domain: both branches fail, the hull is empty.
    ExpectNil(NoxRoot(env, R(-9, -4), 2, R(-10, 10)));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST(PowerRoot, OneSidedRangeKeepsTheBranchError) {
    NoxEnvironment env;
    env.SetError(NoxErrorBadOperandType);
    ExpectNil(NoxRoot(env, R(4, 9), 2, R(1, 10)));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
}

TEST(PowerRoot, ZeroOrderAcrossZeroIsTheRange) {
    NoxEnvironment env;
    ExpectReal(NoxRoot(env, R(0.5, 0.7), 0, R(-10, 10)), -10, 10);
}

// ---- Properties ----

namespace {

int RandomExponent(std::mt19937_64 &rng) { return static_cast<int>(rng() % 25) - 12; }

// x^n where the text promises an enclosure: a representable power (or one that
// underflows, which counts as 0).
bool PowerIsPromised(double y) { return std::fabs(y) <= NoxMaxReal * (1 + 1e-14); }

} // namespace

TEST(PowerProperty, EnclosesThePowersOfSampledPoints) {
    const unsigned seed = 20261122;
    std::mt19937_64 rng(seed);
    int checked = 0;
    for (int i = 0; i < 40000; ++i) {
        const NoxRealInterval a = RandomInterval(rng);
        const int n = RandomExponent(rng);
        NoxEnvironment env;
        const NoxRealInterval r = NoxPow(env, a, n);
        for (int j = 0; j < 6; ++j) {
            const double x = SamplePoint(rng, a);
            const double y = std::pow(x, static_cast<double>(n));
            if (!OnTheLine(x) || !PowerIsPromised(y))
                continue;
            ++checked;
            ASSERT_TRUE(WithinUlps(y, r, 8, NoxMinReal))
                << "seed " << seed << ": [" << a.lower << ", " << a.upper << "]^" << n
                << " = [" << r.lower << ", " << r.upper << "] misses " << x << "^" << n << " = "
                << y;
        }
    }
    EXPECT_GT(checked, 10000);
}

TEST(PowerRootProperty, BranchesEncloseTheRootsOfSampledPoints) {
    const unsigned seed = 20261123;
    std::mt19937_64 rng(seed);
    for (int i = 0; i < 40000; ++i) {
        const NoxRealInterval a = RandomInterval(rng);
        int n = RandomExponent(rng);
        if (n == 0)
            n = 1;
        const double e = 1.0 / n;
        NoxEnvironment env;
        const NoxRealInterval pos = NoxRootPositive(env, a, n);
        env.ClearError();
        const NoxRealInterval neg = NoxRootNegative(env, a, n);
        for (int j = 0; j < 6; ++j) {
            const double x = SamplePoint(rng, a);
            // Points beyond the line are outside every domain, and a negative order has no
            // admissible root inside (-NoxMinReal, NoxMinReal).
            if (!OnTheLine(x) || (n < 0 && std::fabs(x) < NoxMinReal))
                continue;
            if (x >= 0) {
                const double y = std::pow(x, e);
                ASSERT_TRUE(WithinUlps(y, pos, 4, 0))
                    << "seed " << seed << ": root " << n << " of " << x << " = " << y
                    << " not in [" << pos.lower << ", " << pos.upper << "]";
                if (n % 2 == 0) {
                    ASSERT_TRUE(WithinUlps(-y, neg, 4, 0))
                        << "seed " << seed << ": negative root " << n << " of " << x;
                }
            } else if (n % 2 != 0) {
                const double y = -std::pow(-x, e);
                ASSERT_TRUE(WithinUlps(y, neg, 4, 0))
                    << "seed " << seed << ": root " << n << " of " << x << " = " << y
                    << " not in [" << neg.lower << ", " << neg.upper << "]";
            }
        }
    }
}

TEST(PowerRootProperty, RootInTheRangeEnclosesTheRootsThatLieInIt) {
    const unsigned seed = 20261124;
    std::mt19937_64 rng(seed);
    int checked = 0;
    for (int i = 0; i < 40000; ++i) {
        const NoxRealInterval a = RandomInterval(rng);
        const NoxRealInterval range = RandomInterval(rng);
        int n = RandomExponent(rng);
        if (n == 0)
            n = 2;
        const double e = 1.0 / n;
        NoxEnvironment env;
        const NoxRealInterval r = NoxRoot(env, a, n, range);
        for (int j = 0; j < 6; ++j) {
            const double x = SamplePoint(rng, a);
            if (!OnTheLine(x) || (n < 0 && std::fabs(x) < NoxMinReal))
                continue;
            double roots[2];
            int count = 0;
            if (x >= 0) {
                roots[count++] = std::pow(x, e);
                if (n % 2 == 0)
                    roots[count++] = -std::pow(x, e);
            } else if (n % 2 != 0) {
                roots[count++] = -std::pow(-x, e);
            }
            for (int k = 0; k < count; ++k) {
                const double y = roots[k];
                if (!(y >= range.lower && y <= range.upper))
                    continue;
                ++checked;
                ASSERT_TRUE(WithinUlps(y, r, 4, 0))
                    << "seed " << seed << ": root " << n << " of " << x << " = " << y << " in ["
                    << range.lower << ", " << range.upper << "] not in [" << r.lower << ", "
                    << r.upper << "]";
            }
        }
    }
    EXPECT_GT(checked, 1000);
}

TEST(PowerRobustness, SpecialOperandsNeverCrash) {
    const double values[] = {kNaN, -kInf, kInf, -NoxMaxReal, NoxMaxReal, -1e39, 1e39, 0.0,
                             -0.0, NoxMinReal, -NoxMinReal, 1e-320, -1.0, 1.0};
    const int exponents[] = {INT_MIN, INT_MIN + 1, -3, -2, -1, 0, 1, 2, 3, INT_MAX - 1, INT_MAX};
    const NoxRealInterval ranges[] = {NoxReal_Any, NoxReal_Nil, R(kNaN, kNaN), R(-1, 1), R(1, 2),
                                      R(-2, -1)};
    for (double lo : values)
        for (double hi : values)
            for (int n : exponents) {
                NoxEnvironment env;
                const NoxRealInterval a = R(lo, hi);
                NoxPow(env, a, n);
                NoxRootPositive(env, a, n);
                env.ClearError();
                NoxRootNegative(env, a, n);
                for (const NoxRealInterval &range : ranges) {
                    env.ClearError();
                    NoxRoot(env, a, n, range);
                }
            }
    SUCCEED();
}
