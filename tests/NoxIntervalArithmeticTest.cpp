#include <NoxIntervalFunctions.h>

#include "NoxPrivate.h"
#include "NoxTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nox_test::Bits;
using nox_test::ExpectInteger;
using nox_test::ExpectReal;
using nox_test::I;
using nox_test::kInf;
using nox_test::kNaN;
using nox_test::R;

void ExpectRealNil(const NoxRealInterval &r) { ExpectReal(r, NoxMaxReal, -NoxMaxReal); }
void ExpectRealAny(const NoxRealInterval &r) { ExpectReal(r, -NoxMaxReal, NoxMaxReal); }
void ExpectIntegerNil(const NoxIntegerInterval &r) {
    ExpectInteger(r, NoxMaxInteger, -NoxMaxInteger);
}
void ExpectIntegerAny(const NoxIntegerInterval &r) {
    ExpectInteger(r, -NoxMaxInteger, NoxMaxInteger);
}

const double kEps = 1e-14; // NoxAbsPrecision

// 3 - NoxScaledTolerance(3, eps), the top of the trivial remainder enclosure for a
// divisor reaching 3, computed at run time: 2.99999999999997.
double JustBelowThree() {
    volatile double three = 3, eps = kEps;
    return three - three * eps;
}

// An environment whose error code is zero, or carries `code`.
struct Env {
    NoxEnvironment env;
    explicit Env(int code = 0) { env.SetError(code); }
    int Error() const { return env.GetError(); }
};

} // namespace

// ---- Common prologue: an empty operand gives nil and the empty-result bit ----

TEST(ArithmeticPrologue, EmptyIntegerOperandGivesIntegerNilAndErrorBitForEveryOperation) {
    const NoxIntegerInterval empty = I(3, 2), ok = I(1, 4), zeroDivisor = I(-1, 1);
    using Binary = NoxIntegerInterval (*)(const NoxEnvironment &, const NoxIntegerInterval &,
                                          const NoxIntegerInterval &);
    const Binary ops[] = {NoxSum, NoxSub, NoxMul, NoxDiv, NoxMin, NoxMax, NoxMod};
    for (Binary op : ops) {
        Env e1, e2, e3;
        ExpectIntegerNil(op(e1.env, empty, ok));
        EXPECT_EQ(e1.Error(), NoxErrorEmptyResult);
        ExpectIntegerNil(op(e2.env, ok, empty));
        EXPECT_EQ(e2.Error(), NoxErrorEmptyResult);
        // Nothing else is computed: a divisor holding zero does not give the whole line.
        ExpectIntegerNil(op(e3.env, empty, zeroDivisor));
        EXPECT_EQ(e3.Error(), NoxErrorEmptyResult);
    }
    Env e;
    ExpectIntegerNil(NoxAbs(e.env, empty));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(ArithmeticPrologue, EmptyRealOperandGivesRealNilAndErrorBitForEveryOperation) {
    const NoxRealInterval empty = R(2, 1), ok = R(1, 4), zeroDivisor = R(-1, 1);
    using Binary = NoxRealInterval (*)(const NoxEnvironment &, const NoxRealInterval &,
                                       const NoxRealInterval &);
    const Binary ops[] = {NoxSum, NoxSub, NoxMul, NoxDiv, NoxMin, NoxMax, NoxMod};
    for (Binary op : ops) {
        Env e1, e2, e3;
        ExpectRealNil(op(e1.env, empty, ok));
        EXPECT_EQ(e1.Error(), NoxErrorEmptyResult);
        ExpectRealNil(op(e2.env, ok, empty));
        EXPECT_EQ(e2.Error(), NoxErrorEmptyResult);
        ExpectRealNil(op(e3.env, ok, empty));
        ExpectRealNil(op(e3.env, empty, zeroDivisor));
        EXPECT_EQ(e3.Error(), NoxErrorEmptyResult);
    }
    Env e;
    ExpectRealNil(NoxAbs(e.env, empty));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(ArithmeticPrologue, RealEmptinessUsesTheFixedPrecisionNotTheEnvironmentTolerance) {
    Env e;
    e.env.SetTolerance(1.0);
    // Inverted by 2e-14, more than NoxAbsPrecision: empty although within the tolerance.
    volatile double one = 1;
    ExpectRealNil(NoxSum(e.env, R(one, one - 2e-14), R(0, 0)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(ArithmeticPrologue, PrologueAddsToAnErrorAlreadySet) {
    Env e(NoxErrorBadOperandType);
    ExpectIntegerNil(NoxSum(e.env, I(2, 1), I(0, 0)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult | NoxErrorBadOperandType);
}

// ---- Integer sum and difference ----

TEST(IntegerSum, AddsBounds) {
    Env e;
    ExpectInteger(NoxSum(e.env, I(-3, 4), I(10, 20)), 7, 24);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerSum, OverflowTowardTheOpenSideIsClampedSilently) {
    Env e;
    ExpectInteger(NoxSum(e.env, I(1, 2), I(3, NoxMaxInteger)), 4, NoxMaxInteger);
    ExpectInteger(NoxSum(e.env, I(0, NoxMaxInteger), I(0, 5)), 0, NoxMaxInteger);
    ExpectInteger(NoxSum(e.env, I(-NoxMaxInteger, 0), I(-5, 0)), -NoxMaxInteger, 0);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerSum, LowerBoundSaturatedUpwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxSum(e.env, I(NoxMaxInteger, NoxMaxInteger), I(1, 1)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerSum, UpperBoundSaturatedDownwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxSum(e.env, I(-NoxMaxInteger, -NoxMaxInteger), I(-1, -1)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerSum, ReachingTheLimitWithoutOverflowIsNoError) {
    Env e;
    ExpectInteger(NoxSum(e.env, I(NoxMaxInteger - 1, NoxMaxInteger - 1), I(1, 1)),
                  NoxMaxInteger, NoxMaxInteger);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerSum, IntMinBoundSaturatesWithoutUndefinedBehaviour) {
    Env e;
    ExpectInteger(NoxSum(e.env, I(INT_MIN, 0), I(0, 0)), -NoxMaxInteger, 0);
    EXPECT_EQ(e.Error(), 0);
    ExpectIntegerNil(NoxSum(e.env, I(INT_MIN, INT_MIN), I(INT_MIN, INT_MIN)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerSub, SubtractsOppositeBounds) {
    Env e;
    ExpectInteger(NoxSub(e.env, I(5, 10), I(1, 3)), 2, 9);
    ExpectInteger(NoxSub(e.env, I(0, NoxMaxInteger), I(-5, 0)), 0, NoxMaxInteger);
    ExpectInteger(NoxSub(e.env, I(-NoxMaxInteger, 0), I(0, 5)), -NoxMaxInteger, 0);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerSub, LowerBoundSaturatedUpwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxSub(e.env, I(NoxMaxInteger, NoxMaxInteger), I(-1, -1)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerSub, UpperBoundSaturatedDownwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxSub(e.env, I(-NoxMaxInteger, -NoxMaxInteger), I(1, 1)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerSub, NegatingIntMinDoesNotOverflow) {
    // 0 - INT_MIN is 2^31: the lower bound saturates upward, the whole result is above.
    Env e;
    ExpectIntegerNil(NoxSub(e.env, I(0, 0), I(INT_MIN, INT_MIN)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
    Env f;
    ExpectInteger(NoxSub(f.env, I(-5, 0), I(INT_MIN, 0)), -5, NoxMaxInteger);
    EXPECT_EQ(f.Error(), 0);
}

// ---- Integer product ----

TEST(IntegerMul, MinAndMaxOfTheFourProducts) {
    Env e;
    ExpectInteger(NoxMul(e.env, I(2, 3), I(-4, 5)), -12, 15);
    ExpectInteger(NoxMul(e.env, I(-2, 3), I(-4, 5)), -12, 15);
    ExpectInteger(NoxMul(e.env, I(-3, -2), I(-5, -4)), 8, 15);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMul, AllFourOverflowingUpwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxMul(e.env, I(100000, 100000), I(100000, 100000)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
    Env f;
    ExpectIntegerNil(NoxMul(f.env, I(-100000, -100000), I(-100000, -100000)));
    EXPECT_EQ(f.Error(), NoxErrorEmptyResult);
}

TEST(IntegerMul, AllFourOverflowingDownwardIsNilWithError) {
    Env e;
    ExpectIntegerNil(NoxMul(e.env, I(-100000, -100000), I(100000, 100000)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(IntegerMul, AllFourOverflowingBothWaysIsTheWholeLineWithoutError) {
    Env e;
    ExpectIntegerAny(NoxMul(e.env, I(-100000, 100000), I(100000, 100000)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMul, SomeProductsOverflowingAreClampedSilently) {
    Env e;
    ExpectInteger(NoxMul(e.env, I(100000, 100000), I(1, 100000)), 100000, NoxMaxInteger);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMul, FarLimitWithoutOverflowIsNoError) {
    // The products equal NoxMaxInteger exactly: lower is at the far limit, but nothing
    // overflowed.
    Env e;
    ExpectInteger(NoxMul(e.env, I(NoxMaxInteger, NoxMaxInteger), I(1, 1)), NoxMaxInteger,
                  NoxMaxInteger);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMul, ZeroSecondFactorGivesZeroWithoutOverflow) {
    Env e;
    ExpectInteger(NoxMul(e.env, I(NoxMaxInteger, NoxMaxInteger), I(0, 0)), 0, 0);
    ExpectInteger(NoxMul(e.env, I(INT_MIN, INT_MIN), I(0, 0)), 0, 0);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMul, IntMinFactorsSaturateWithoutUndefinedBehaviour) {
    Env e;
    ExpectInteger(NoxMul(e.env, I(0, 0), I(INT_MIN, INT_MIN)), 0, 0);
    ExpectInteger(NoxMul(e.env, I(-1, 1), I(INT_MIN, INT_MIN)), -NoxMaxInteger, NoxMaxInteger);
    EXPECT_EQ(e.Error(), 0);
    ExpectIntegerNil(NoxMul(e.env, I(INT_MIN, INT_MIN), I(INT_MIN, INT_MIN)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

// ---- Integer quotient ----

TEST(IntegerDiv, DivisorHoldingZeroIsTheWholeLineWithoutError) {
    Env e;
    ExpectIntegerAny(NoxDiv(e.env, I(7, 9), I(-1, 2)));
    ExpectIntegerAny(NoxDiv(e.env, I(7, 9), I(0, 0)));
    ExpectIntegerAny(NoxDiv(e.env, I(7, 9), I(0, 3)));
    ExpectIntegerAny(NoxDiv(e.env, I(7, 9), I(-3, 0)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerDiv, QuotientsTruncateTowardZero) {
    Env e;
    ExpectInteger(NoxDiv(e.env, I(7, 9), I(2, 3)), 2, 4);
    ExpectInteger(NoxDiv(e.env, I(1, 1), I(2, 2)), 0, 0);
    ExpectInteger(NoxDiv(e.env, I(-3, -3), I(2, 2)), -1, -1);
    ExpectInteger(NoxDiv(e.env, I(7, 9), I(-3, -2)), -4, -2);
    ExpectInteger(NoxDiv(e.env, I(-7, 9), I(2, 3)), -3, 4);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerDiv, IntMinByMinusOneWrapsToIntMin) {
    Env e;
    ExpectInteger(NoxDiv(e.env, I(INT_MIN, INT_MIN), I(-1, -1)), INT_MIN, INT_MIN);
    EXPECT_EQ(e.Error(), 0);
}

// ---- Real sum and difference ----

TEST(RealSum, AddsBoundsAsComputed) {
    Env e;
    volatile double a = 0.1, b = 0.7, c = 0.2, d = 0.3;
    ExpectReal(NoxSum(e.env, R(a, b), R(c, d)), a + c, b + d);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSum, ClampsAtTheLimit) {
    Env e;
    volatile double a = 1e38;
    ExpectReal(NoxSum(e.env, R(1e38, 3e38), R(1e38, 3e38)), a + a, NoxMaxReal);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSum, WhollyBeyondTheLimitIsNilWithoutError) {
    Env e;
    ExpectRealNil(NoxSum(e.env, R(3e38, 3e38), R(3e38, 3e38)));
    ExpectRealNil(NoxSum(e.env, R(-3e38, -3e38), R(-3e38, -3e38)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSum, InfiniteIntermediateIsClamped) {
    Env e;
    ExpectRealAny(NoxSum(e.env, R(-1e308, 1e308), R(-1e308, 1e308)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSum, SlightlyInvertedOperandIsNotEmptyButTheInvertedSumNormalisesToNil) {
    // [1, 1 - 1e-15] passes the emptiness test; the summed pair is inverted and
    // normalisation makes it nil, without an error.
    Env e;
    volatile double one = 1;
    ExpectRealNil(NoxSum(e.env, R(one, one - 1e-15), R(0, 0)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSub, SubtractsOppositeBounds) {
    Env e;
    volatile double a = 1, b = 2, c = 0.1, d = 0.3;
    ExpectReal(NoxSub(e.env, R(a, b), R(c, d)), a - d, b - c);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealSub, ClampsAndGivesNilBeyondTheLimitWithoutError) {
    Env e;
    ExpectReal(NoxSub(e.env, R(-3e38, 0), R(0, 3e38)), -NoxMaxReal, 0);
    ExpectRealNil(NoxSub(e.env, R(-3e38, -3e38), R(3e38, 3e38)));
    ExpectRealNil(NoxSub(e.env, R(3e38, 3e38), R(-3e38, -3e38)));
    EXPECT_EQ(e.Error(), 0);
}

// ---- Real product and quotient ----

TEST(RealMul, MinAndMaxOfTheFourProducts) {
    Env e;
    volatile double a = -0.2, b = 0.3, c = -0.5, d = 0.7;
    const double p[] = {a * c, a * d, b * c, b * d};
    ExpectReal(NoxMul(e.env, R(a, b), R(c, d)), *std::min_element(p, p + 4),
               *std::max_element(p, p + 4));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMul, ClampsAndGivesNilBeyondTheLimitWithoutError) {
    Env e;
    ExpectRealAny(NoxMul(e.env, R(-1e20, 1e20), R(1e20, 1e20)));
    ExpectReal(NoxMul(e.env, R(1, 1e20), R(1, 1e20)), 1, NoxMaxReal);
    ExpectRealNil(NoxMul(e.env, R(1e20, 1e20), R(1e20, 1e20)));
    ExpectRealNil(NoxMul(e.env, R(1e300, 1e300), R(1e300, 1e300))); // infinite product
    ExpectRealAny(NoxMul(e.env, R(-1e300, 1e300), R(1e300, 1e300)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealDiv, DivisorHoldingZeroIsTheWholeLineWithoutError) {
    Env e;
    ExpectRealAny(NoxDiv(e.env, R(1, 2), R(0, 1)));
    ExpectRealAny(NoxDiv(e.env, R(1, 2), R(-1, 0)));
    ExpectRealAny(NoxDiv(e.env, R(1, 2), R(0, 0)));
    ExpectRealAny(NoxDiv(e.env, R(1, 2), R(-1, 1)));
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealDiv, TinyDivisorWithoutZeroIsValid) {
    Env e;
    volatile double one = 1, two = 2, tiny = 1e-300;
    (void)tiny;
    ExpectReal(NoxDiv(e.env, R(1, 2), R(1e-300, 1)), one / one, NoxMaxReal);
    ExpectReal(NoxDiv(e.env, R(1, 2), R(4, 8)), one / 8, two / 4);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealDiv, NegativeTinyDivisorClampsTheLowerBound) {
    Env e;
    volatile double one = 1, lo = -1e-38;
    ExpectReal(NoxDiv(e.env, R(1, 2), R(-1e-38, -1e-39)), -NoxMaxReal, one / lo);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealDiv, QuotientWhollyBelowTheLimitIsNilWithoutError) {
    Env e;
    ExpectRealNil(NoxDiv(e.env, R(1, 2), R(-1e-300, -1e-301)));
    EXPECT_EQ(e.Error(), 0);
}

// ---- Minimum and maximum ----

TEST(IntervalMinMax, IntegerBoundByBound) {
    Env e;
    ExpectInteger(NoxMin(e.env, I(1, 9), I(3, 5)), 1, 5);
    ExpectInteger(NoxMax(e.env, I(1, 9), I(3, 5)), 3, 9);
    ExpectInteger(NoxMin(e.env, I(INT_MIN, 0), I(-1, INT_MAX)), INT_MIN, 0);
    ExpectInteger(NoxMax(e.env, I(INT_MIN, 0), I(-1, INT_MAX)), -1, INT_MAX);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntervalMinMax, RealBoundByBoundWithoutNormalisation) {
    Env e;
    volatile double one = 1;
    const double justBelowOne = one - 1e-15;
    ExpectReal(NoxMin(e.env, R(-1, 9), R(3, 5)), -1, 5);
    ExpectReal(NoxMax(e.env, R(-1, 9), R(3, 5)), 3, 9);
    // Neither clamped nor turned into nil.
    ExpectReal(NoxMin(e.env, R(1e39, 2e39), R(1e39, 3e39)), 1e39, 2e39);
    ExpectReal(NoxMax(e.env, R(-3e39, -2e39), R(-4e39, -3e39)), -3e39, -2e39);
    ExpectReal(NoxMin(e.env, R(one, justBelowOne), R(2, 3)), one, justBelowOne);
    ExpectReal(NoxMax(e.env, R(one, justBelowOne), R(0, 0.5)), one, justBelowOne);
    EXPECT_EQ(e.Error(), 0);
}

// ---- Absolute value ----

TEST(IntegerAbs, ThreeCases) {
    Env e;
    ExpectInteger(NoxAbs(e.env, I(2, 5)), 2, 5);
    ExpectInteger(NoxAbs(e.env, I(0, 5)), 0, 5);
    ExpectInteger(NoxAbs(e.env, I(-3, -2)), 2, 3);
    ExpectInteger(NoxAbs(e.env, I(-3, 0)), 0, 3);
    ExpectInteger(NoxAbs(e.env, I(-3, 2)), 0, 3);
    ExpectInteger(NoxAbs(e.env, I(-2, 3)), 0, 3);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerAbs, NegatedIntMinWrapsToIntMinWithoutUndefinedBehaviour) {
    Env e;
    ExpectInteger(NoxAbs(e.env, I(INT_MIN, -1)), 1, INT_MIN);
    ExpectInteger(NoxAbs(e.env, I(INT_MIN, 5)), 0, 5);
    ExpectInteger(NoxAbs(e.env, I(-NoxMaxInteger, -NoxMaxInteger)), NoxMaxInteger, NoxMaxInteger);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealAbs, ThreeCasesNormalised) {
    Env e;
    ExpectReal(NoxAbs(e.env, R(2, 5)), 2, 5);
    ExpectReal(NoxAbs(e.env, R(-3, -2)), 2, 3);
    ExpectReal(NoxAbs(e.env, R(-3, 2)), 0, 3);
    ExpectReal(NoxAbs(e.env, R(-2, 3)), 0, 3);
    ExpectReal(NoxAbs(e.env, R(0, 3)), 0, 3);
    // Each case normalises: clamped, or nil when wholly beyond the limit.
    ExpectReal(NoxAbs(e.env, R(1, 1e39)), 1, NoxMaxReal);
    ExpectRealNil(NoxAbs(e.env, R(1e39, 2e39)));
    ExpectRealNil(NoxAbs(e.env, R(-2e39, -1e39)));
    ExpectReal(NoxAbs(e.env, R(-1e39, 1)), 0, NoxMaxReal);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealAbs, UpperMagnitudeWinsOnlyWhenStrictlyLarger) {
    Env e;
    const NoxRealInterval nanUpper = NoxAbs(e.env, R(-3, kNaN));
    ExpectReal(nanUpper, 0, 3);
    const NoxRealInterval nanLower = NoxAbs(e.env, R(kNaN, 3));
    EXPECT_EQ(Bits(nanLower.lower), Bits(0.0));
    EXPECT_TRUE(std::isnan(nanLower.upper));
}

TEST(RealAbs, SlightlyInvertedAcrossZeroIsNilWithoutError) {
    Env e;
    ExpectRealNil(NoxAbs(e.env, R(0, -1e-15)));
    EXPECT_EQ(e.Error(), 0);
}

// ---- Real modulo ----

TEST(RealMod, PointByPoint) {
    Env e;
    ExpectReal(NoxMod(e.env, R(5, 5), R(3, 3)), 2, 2);
    ExpectReal(NoxMod(e.env, R(-5, -5), R(3, 3)), -2, -2);
    ExpectReal(NoxMod(e.env, R(5, 5), R(-3, -3)), 2, 2);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMod, StraddlingZeroUnitesBothSides) {
    Env e;
    const double h = JustBelowThree();
    const NoxRealInterval r = NoxMod(e.env, R(-7, 5), R(3, 3));
    ExpectReal(r, -h, h);
    EXPECT_NEAR(r.upper, 2.99999999999997, 1e-15);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMod, DivisorReachingZeroGivesTheTrivialEnclosure) {
    Env e;
    const double h = JustBelowThree();
    ExpectReal(NoxMod(e.env, R(0, 10), R(0, 3)), 0, h);
    // |b| of a divisor across zero is [0, max(b.upper, -b.lower)].
    ExpectReal(NoxMod(e.env, R(0, 10), R(-3, 1)), 0, h);
    ExpectReal(NoxMod(e.env, R(0, 10), R(-1, 3)), 0, h);
    // Below NoxAbsPrecision the divisor counts as reaching zero.
    ExpectReal(NoxMod(e.env, R(0, 10), R(1e-15, 3)), 0, h);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMod, TrivialEnclosureStopsAtTheOperandWhenBelowTheDivisor) {
    Env e;
    ExpectReal(NoxMod(e.env, R(1, 2), R(0, 5)), 0, 2);
    // X.upper equal to the divisor's upper bound is cut below it.
    ExpectReal(NoxMod(e.env, R(0, 3), R(0, 3)), 0, JustBelowThree());
    // A divisor magnitude of at most 1 is cut by the unscaled precision.
    volatile double half = 0.5;
    ExpectReal(NoxMod(e.env, R(0, 1), R(0, 0.5)), 0, half - kEps);
}

TEST(RealMod, DivisorSetsComeFromTheUpperEndOfTheOperandOnly) {
    Env e;
    ExpectReal(NoxMod(e.env, R(5, 7), R(3, 3)), 0, 1);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMod, QuotientRangeBeyondTheIntegersGivesTheTrivialEnclosure) {
    // 1e10 / 1 has no integer quotient within the limits: Q is empty.
    Env e;
    volatile double one = 1;
    ExpectReal(NoxMod(e.env, R(1e10, 1e10), R(1, 1)), 0, one - kEps);
}

TEST(RealMod, ManyQuotientsGiveTheTrivialEnclosure) {
    // Q = [0, 33]: 33 quotients are no better than [0, 3).
    Env e;
    ExpectReal(NoxMod(e.env, R(0, 100), R(3, 3)), 0, JustBelowThree());
    // A tiny divisor bound above the precision: Q reaches the integer limit.
    ExpectReal(NoxMod(e.env, R(5, 5), R(1e-14, 3)), 0, JustBelowThree());
}

TEST(RealMod, QuotientCountEqualToTheTrivialBoundSkipsTheLoop) {
    // [1, 2] mod [1, 4]: Q = [0, 2], its width 2 equals R0.upper = 2, so R0 is returned
    // and, without the loop, the error code is left as it was.
    Env e(NoxErrorBadOperandType);
    ExpectReal(NoxMod(e.env, R(1, 2), R(1, 4)), 0, 2);
    EXPECT_EQ(e.Error(), NoxErrorBadOperandType);
}

TEST(RealMod, LoopStopsEarlyOnceTheEnclosureCannotGrow) {
    // [7, 7] mod [2, 10]: k = 0 gives [7, 7], k = 1 reaches down to 0 and up to
    // min(D.upper, R0.upper) = 7, and the loop stops before k = 2, 3.
    Env e;
    ExpectReal(NoxMod(e.env, R(7, 7), R(2, 10)), 0, 7);
    EXPECT_EQ(e.Error(), 0);
}

TEST(RealMod, LoopClearsTheWholeErrorCode) {
    // A bit set before the call is erased.
    Env e(NoxErrorEmptyResult | NoxErrorBadOperandType);
    ExpectReal(NoxMod(e.env, R(5, 5), R(3, 3)), 2, 2);
    EXPECT_EQ(e.Error(), 0);
    // The bit set for the empty divisor set of k = 1 is erased too.
    Env f;
    ExpectReal(NoxMod(f.env, R(5, 7), R(3, 3)), 0, 1);
    EXPECT_EQ(f.Error(), 0);
}

TEST(RealMod, TrivialEnclosureLeavesTheErrorCodeAsItWas) {
    Env e(NoxErrorBadOperandType);
    ExpectReal(NoxMod(e.env, R(0, 10), R(0, 3)), 0, JustBelowThree());
    EXPECT_EQ(e.Error(), NoxErrorBadOperandType);
}

TEST(RealMod, EmptyFinalResultIsNilWithError) {
    // Not empty by NoxAbsPrecision, but both the non-negative and the negated negative
    // part normalise to nil.
    Env e;
    ExpectRealNil(NoxMod(e.env, R(1e-15, -1e-15), R(3, 3)));
    EXPECT_EQ(e.Error(), NoxErrorEmptyResult);
}

TEST(RealMod, NaNLowerBoundGivesTheTrivialEnclosureInsteadOfLooping) {
    // A NaN lower bound truncates to INT_MIN as the first quotient; the loop would run
    // some 2^32 rounds, so the trivial enclosure is returned, leaving the error code.
    Env e(NoxErrorBadOperandType);
    ExpectReal(NoxMod(e.env, R(kNaN, 1e308), R(1, 1e308)), 0, NoxMaxReal);
    EXPECT_EQ(e.Error(), NoxErrorBadOperandType);
    Env f(NoxErrorBadOperandType);
    ExpectReal(NoxMod(f.env, R(1, 1e10), R(1, kNaN)), 0, 1e10);
    EXPECT_EQ(f.Error(), NoxErrorBadOperandType);
}

// The raise of a negative quotient lower bound to 0 guards a value that the operation
// never produces: the part of a it reduces starts at max(a.lower, 0) or max(-a.upper, 0).

// ---- Integer modulo ----

TEST(IntegerMod, ThroughTheRealModuloRoundedInward) {
    Env e;
    ExpectInteger(NoxMod(e.env, I(5, 5), I(3, 3)), 2, 2);
    ExpectInteger(NoxMod(e.env, I(-5, -5), I(3, 3)), -2, -2);
    ExpectInteger(NoxMod(e.env, I(-7, 5), I(3, 3)), -2, 2);
    ExpectInteger(NoxMod(e.env, I(0, 10), I(0, 3)), 0, 2);
    ExpectInteger(NoxMod(e.env, I(5, 7), I(3, 3)), 0, 1);
    ExpectInteger(NoxMod(e.env, I(17, 17), I(-5, -5)), 2, 2);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMod, ModuloMinusOneAtTheLimitIsZero) {
    Env e;
    ExpectInteger(NoxMod(e.env, I(-NoxMaxInteger, -NoxMaxInteger), I(-1, -1)), 0, 0);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMod, IntMinModuloMinusOneEnclosesZeroWithoutTrap) {
    // 2^31 / 1 lies beyond the integer limits, so no quotient range: the trivial
    // enclosure (-1, 0] comes back, and its lower end, within NoxAbsPrecision of -1,
    // rounds inward to -1.
    Env e;
    volatile double one = 1, eps = kEps;
    const NoxIntegerInterval expected = NoxCreateIntegerInterval(R(-(one - one * eps), -0.0));
    const NoxIntegerInterval r = NoxMod(e.env, I(INT_MIN, INT_MIN), I(-1, -1));
    ExpectInteger(r, expected.lower, expected.upper);
    ExpectInteger(r, -1, 0);
    EXPECT_EQ(e.Error(), 0);
}

TEST(IntegerMod, ErrorsAreThoseOfTheRealModulo) {
    Env e(NoxErrorBadOperandType);
    ExpectInteger(NoxMod(e.env, I(5, 5), I(3, 3)), 2, 2);
    EXPECT_EQ(e.Error(), 0);
    Env f(NoxErrorBadOperandType);
    ExpectInteger(NoxMod(f.env, I(0, 10), I(0, 3)), 0, 2);
    EXPECT_EQ(f.Error(), NoxErrorBadOperandType);
}

// ---- Properties over random operands ----

namespace {

constexpr std::uint64_t kSeed = 20261122;

// Random real operands of every shape: tiny, ordinary, huge, straddling zero, points,
// touching or crossing the limits.
NoxRealInterval RandomReal(std::mt19937_64 &rng) {
    std::uniform_real_distribution<double> unit(0, 1);
    const double maxReal = NoxMaxReal;
    auto magnitude = [&](double lo, double hi) { return std::pow(10.0, lo + (hi - lo) * unit(rng)); };
    auto sign = [&] { return rng() % 2 ? 1.0 : -1.0; };
    switch (rng() % 7) {
    case 0: { // tiny
        const double c = sign() * magnitude(-3, 3);
        return R(c, c + magnitude(-14, -8));
    }
    case 1: { // ordinary
        double a = sign() * magnitude(-3, 3), b = sign() * magnitude(-3, 3);
        return R(std::min(a, b), std::max(a, b));
    }
    case 2: { // huge
        double a = sign() * magnitude(20, 38.5), b = sign() * magnitude(20, 38.5);
        return R(std::min(a, b), std::max(a, b));
    }
    case 3: // straddling zero
        return R(-magnitude(-5, 5), magnitude(-5, 5));
    case 4: { // a point
        const double c = sign() * magnitude(-10, 10);
        return R(c, c);
    }
    case 5: // touching a limit
        return rng() % 2 ? R(-maxReal, sign() * magnitude(-3, 38)) : R(sign() * magnitude(-3, 38), maxReal);
    default: // the whole line
        return R(-maxReal, maxReal);
    }
}

double SampleIn(std::mt19937_64 &rng, const NoxRealInterval &a) {
    switch (rng() % 4) {
    case 0: return a.lower;
    case 1: return a.upper;
    default: {
        const double u = std::uniform_real_distribution<double>(0, 1)(rng);
        // A weighted mean of the bounds: no overflow, even across the whole line.
        const double x = a.lower * (1 - u) + a.upper * u;
        return std::min(std::max(x, a.lower), a.upper);
    }
    }
}

NoxIntegerInterval RandomInteger(std::mt19937_64 &rng) {
    const std::int64_t maxInt = NoxMaxInteger;
    auto pick = [&]() -> std::int64_t {
        switch (rng() % 5) {
        case 0: return static_cast<std::int64_t>(rng() % 21) - 10;
        case 1: return static_cast<std::int64_t>(rng() % 200001) - 100000;
        case 2: return static_cast<std::int64_t>(rng() % (2 * maxInt + 1)) - maxInt;
        case 3: return rng() % 2 ? maxInt : -maxInt;
        default: return static_cast<std::int64_t>(rng() % 2000001) - 1000000;
        }
    };
    std::int64_t a = pick(), b = pick();
    return I(static_cast<int>(std::min(a, b)), static_cast<int>(std::max(a, b)));
}

int SampleIn(std::mt19937_64 &rng, const NoxIntegerInterval &a) {
    const std::uint64_t width = static_cast<std::uint64_t>(std::int64_t{a.upper} - a.lower);
    return static_cast<int>(a.lower + static_cast<std::int64_t>(rng() % (width + 1)));
}

double Clamp(double x) { return std::min(std::max(x, -NoxMaxReal), NoxMaxReal); }

// `x` lies in `r` widened by four ulps on each side.
bool InWithinUlps(double x, const NoxRealInterval &r) {
    double lo = r.lower, hi = r.upper;
    for (int i = 0; i < 4; ++i) {
        lo = std::nextafter(lo, -kInf);
        hi = std::nextafter(hi, kInf);
    }
    return lo <= x && x <= hi;
}

bool IsRealNil(const NoxRealInterval &r) {
    return r.lower == NoxMaxReal && r.upper == -NoxMaxReal;
}

using RealOp = NoxRealInterval (*)(const NoxEnvironment &, const NoxRealInterval &,
                                   const NoxRealInterval &);
using PointOp = double (*)(double, double);

// For random operands and sampled points, op(x, y) clamped to the limits lies in the
// result; a nil result means that op(x, y) lies wholly beyond a limit.
void CheckRealEnclosure(const char *name, RealOp op, PointOp f) {
    std::mt19937_64 rng(kSeed);
    for (int i = 0; i < 20000; ++i) {
        const NoxRealInterval a = RandomReal(rng), b = RandomReal(rng);
        NoxEnvironment env;
        const NoxRealInterval r = op(env, a, b);
        ASSERT_EQ(env.GetError(), 0) << name << " seed " << kSeed << " round " << i;
        for (int j = 0; j < 8; ++j) {
            const double x = SampleIn(rng, a), y = SampleIn(rng, b);
            const double v = f(x, y);
            if (std::isnan(v))
                continue;
            if (IsRealNil(r)) {
                ASSERT_GT(std::fabs(v), NoxMaxReal * (1 - 1e-15))
                    << name << " seed " << kSeed << " round " << i << ": [" << a.lower << ", "
                    << a.upper << "], [" << b.lower << ", " << b.upper << "] at " << x << ", "
                    << y;
                continue;
            }
            ASSERT_TRUE(InWithinUlps(Clamp(v), r))
                << name << " seed " << kSeed << " round " << i << ": [" << a.lower << ", "
                << a.upper << "], [" << b.lower << ", " << b.upper << "] at " << x << ", " << y
                << " gives " << v << " outside [" << r.lower << ", " << r.upper << "]";
        }
    }
}

std::int64_t ClampInt(std::int64_t x) {
    const std::int64_t maxInt = NoxMaxInteger;
    return std::min(std::max(x, -maxInt), maxInt);
}

using IntegerOp = NoxIntegerInterval (*)(const NoxEnvironment &, const NoxIntegerInterval &,
                                         const NoxIntegerInterval &);
using IntegerPointOp = std::int64_t (*)(std::int64_t, std::int64_t);

// op(x, y) clamped to the limits lies in the result exactly; a nil result comes with the
// error bit and means that op(x, y) lies at or beyond a limit.
void CheckIntegerEnclosure(const char *name, IntegerOp op, IntegerPointOp f, bool nonZeroY) {
    std::mt19937_64 rng(kSeed);
    for (int i = 0; i < 20000; ++i) {
        const NoxIntegerInterval a = RandomInteger(rng), b = RandomInteger(rng);
        NoxEnvironment env;
        const NoxIntegerInterval r = op(env, a, b);
        const bool nil = r.lower == NoxMaxInteger && r.upper == -NoxMaxInteger;
        ASSERT_EQ(env.GetError(), nil ? NoxErrorEmptyResult : 0)
            << name << " seed " << kSeed << " round " << i;
        for (int j = 0; j < 8; ++j) {
            const std::int64_t x = SampleIn(rng, a), y = SampleIn(rng, b);
            if (nonZeroY && y == 0)
                continue;
            const std::int64_t v = ClampInt(f(x, y));
            const std::string where = std::string(name) + " seed " + std::to_string(kSeed) +
                                      " round " + std::to_string(i) + ": [" +
                                      std::to_string(a.lower) + ", " + std::to_string(a.upper) +
                                      "], [" + std::to_string(b.lower) + ", " +
                                      std::to_string(b.upper) + "] at " + std::to_string(x) +
                                      ", " + std::to_string(y);
            if (nil) {
                ASSERT_EQ(std::llabs(v), NoxMaxInteger) << where;
                continue;
            }
            ASSERT_TRUE(r.lower <= v && v <= r.upper) << where << " gives " << v;
        }
    }
}

} // namespace

TEST(ArithmeticProperty, RealSumEnclosesSampledSums) {
    CheckRealEnclosure("sum", NoxSum, [](double x, double y) { return x + y; });
}

TEST(ArithmeticProperty, RealSubEnclosesSampledDifferences) {
    CheckRealEnclosure("sub", NoxSub, [](double x, double y) { return x - y; });
}

TEST(ArithmeticProperty, RealMulEnclosesSampledProducts) {
    CheckRealEnclosure("mul", NoxMul, [](double x, double y) { return x * y; });
}

TEST(ArithmeticProperty, RealDivEnclosesSampledQuotients) {
    CheckRealEnclosure("div", NoxDiv, [](double x, double y) {
        return y == 0 ? std::numeric_limits<double>::quiet_NaN() : x / y;
    });
}

TEST(ArithmeticProperty, RealMinAndMaxEncloseSampledMinimaAndMaxima) {
    CheckRealEnclosure("min", NoxMin, [](double x, double y) { return std::min(x, y); });
    CheckRealEnclosure("max", NoxMax, [](double x, double y) { return std::max(x, y); });
}

TEST(ArithmeticProperty, RealAbsEnclosesSampledMagnitudes) {
    CheckRealEnclosure("abs", [](const NoxEnvironment &env, const NoxRealInterval &a,
                                 const NoxRealInterval &) { return NoxAbs(env, a); },
                       [](double x, double) { return std::fabs(x); });
}

TEST(ArithmeticProperty, IntegerSumSubMulEncloseSampledResults) {
    CheckIntegerEnclosure("sum", NoxSum, [](std::int64_t x, std::int64_t y) { return x + y; }, false);
    CheckIntegerEnclosure("sub", NoxSub, [](std::int64_t x, std::int64_t y) { return x - y; }, false);
    CheckIntegerEnclosure("mul", NoxMul, [](std::int64_t x, std::int64_t y) { return x * y; }, false);
}

TEST(ArithmeticProperty, IntegerDivEnclosesSampledTruncatingQuotients) {
    CheckIntegerEnclosure("div", NoxDiv, [](std::int64_t x, std::int64_t y) { return x / y; }, true);
}

TEST(ArithmeticProperty, IntegerMinMaxAbsEncloseSampledResults) {
    CheckIntegerEnclosure("min", NoxMin, [](std::int64_t x, std::int64_t y) { return std::min(x, y); }, false);
    CheckIntegerEnclosure("max", NoxMax, [](std::int64_t x, std::int64_t y) { return std::max(x, y); }, false);
    CheckIntegerEnclosure("abs", [](const NoxEnvironment &env, const NoxIntegerInterval &a,
                                    const NoxIntegerInterval &) { return NoxAbs(env, a); },
                          [](std::int64_t x, std::int64_t) -> std::int64_t { return x < 0 ? -x : x; }, false);
}

// The modulo derives its divisor sets from the upper end of the operand, so it encloses
// the remainders of a point operand (over every divisor of b), not of every point of a
// wide operand. Its bounds carry the precision NoxAbsPrecision, scaled by the magnitude.
TEST(ArithmeticProperty, RealModEnclosesRemaindersOfAPointOperand) {
    std::mt19937_64 rng(kSeed);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int i = 0; i < 20000; ++i) {
        const double x = (rng() % 2 ? 1 : -1) * std::pow(10.0, -2 + 8 * unit(rng));
        double d1 = (rng() % 2 ? 1 : -1) * std::pow(10.0, -3 + 6 * unit(rng));
        double d2 = rng() % 3 ? d1 * (1 + unit(rng)) : -d1 * unit(rng);
        const NoxRealInterval b = R(std::min(d1, d2), std::max(d1, d2));
        NoxEnvironment env;
        const NoxRealInterval r = NoxMod(env, R(x, x), b);
        ASSERT_EQ(env.GetError(), 0) << "seed " << kSeed << " round " << i;
        const double slack = 4 * (NoxScaledTolerance(x, kEps) + NoxScaledTolerance(NoxMAG(b), kEps));
        for (int j = 0; j < 8; ++j) {
            const double d = SampleIn(rng, b);
            if (d == 0)
                continue;
            const double v = std::fmod(x, d);
            ASSERT_TRUE(r.lower - slack <= v && v <= r.upper + slack)
                << "seed " << kSeed << " round " << i << ": " << x << " mod [" << b.lower
                << ", " << b.upper << "] at " << d << " gives " << v << " outside ["
                << r.lower << ", " << r.upper << "]";
        }
    }
}

TEST(ArithmeticProperty, IntegerModEnclosesRemaindersOfAPointOperand) {
    std::mt19937_64 rng(kSeed);
    for (int i = 0; i < 20000; ++i) {
        const NoxIntegerInterval b = RandomInteger(rng);
        const int x = SampleIn(rng, RandomInteger(rng));
        NoxEnvironment env;
        const NoxIntegerInterval r = NoxMod(env, I(x, x), b);
        for (int j = 0; j < 8; ++j) {
            const std::int64_t d = SampleIn(rng, b);
            if (d == 0)
                continue;
            const std::int64_t v = x % d;
            ASSERT_TRUE(r.lower <= v && v <= r.upper)
                << "seed " << kSeed << " round " << i << ": " << x << " mod [" << b.lower
                << ", " << b.upper << "] at " << d << " gives " << v << " outside ["
                << r.lower << ", " << r.upper << "]";
        }
    }
}

// No bound, however odd (NaN, infinite, inverted, at or beyond the limits, INT_MIN),
// crashes or is undefined behaviour; the sanitizer build checks the latter.
TEST(ArithmeticProperty, OddRealBoundsNeverCrash) {
    const double specials[] = {kNaN, kInf, -kInf, 0.0, -0.0, 1e-300, -1e-300, 1.0, -3.0,
                               1e308, -1e308, 3.4028234663852886e+38, -3.4028234663852886e+38};
    for (double a : specials)
        for (double b : specials)
            for (double c : specials) {
                NoxEnvironment env;
                const NoxRealInterval x = R(a, b), y = R(c, a), z = R(b, c);
                (void)NoxSum(env, x, y);
                (void)NoxSub(env, x, y);
                (void)NoxMul(env, x, y);
                (void)NoxDiv(env, x, y);
                (void)NoxMin(env, x, y);
                (void)NoxMax(env, x, y);
                (void)NoxAbs(env, x);
                (void)NoxMod(env, x, y);
                (void)NoxMod(env, z, x);
            }
    SUCCEED();
}

TEST(ArithmeticProperty, OddIntegerBoundsNeverCrash) {
    const int specials[] = {INT_MIN, INT_MIN + 1, -2147483646, -100000, -1, 0, 1, 100000,
                            2147483646, INT_MAX};
    for (int a : specials)
        for (int b : specials)
            for (int c : specials) {
                NoxEnvironment env;
                const NoxIntegerInterval x = I(a, b), y = I(c, a), z = I(b, c);
                (void)NoxSum(env, x, y);
                (void)NoxSub(env, x, y);
                (void)NoxMul(env, x, y);
                (void)NoxDiv(env, x, y);
                (void)NoxMin(env, x, y);
                (void)NoxMax(env, x, y);
                (void)NoxAbs(env, x);
                (void)NoxMod(env, x, y);
                (void)NoxMod(env, z, x);
            }
    SUCCEED();
}

// ---- Public interval test vectors (IEEE 1788, ITL format) ----
//
// The vectors give the tightest outward-rounded enclosures, with infinities and empty
// sets. Kept: the undecorated add, sub, mul and div cases whose operands and results are
// finite and within +-NoxMaxReal; compared within two ulps (the library rounds each bound
// to nearest, the vectors outward). Skipped, and why:
// - decorated test cases (`_dec`): the library has no decorations;
// - [empty] and [entire] operands or results, and infinite bounds: there are no
//   infinities, and an empty operand is an inverted pair here;
// - bounds beyond NoxMaxReal in operands or results: the library clamps them;
// - quotients by a divisor holding 0: the library gives the whole line, the vectors the
//   hull of the two branches (or nothing, for [0, 0]).

namespace {

std::string ArithmeticItlPath() {
    std::string here = __FILE__;
    const std::size_t slash = here.find_last_of('/');
    here = slash == std::string::npos ? std::string(".") : here.substr(0, slash);
    return here + "/../../shared/itl/libieeep1788_tests_elem.itl";
}

// "[lo,hi]" of finite bounds within +-NoxMaxReal; false for anything else.
bool ParseFiniteInterval(const std::string &text, NoxRealInterval &r) {
    if (text.size() < 5 || text.front() != '[' || text.back() != ']')
        return false;
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos)
        return false;
    const std::string lo = text.substr(1, comma - 1), hi = text.substr(comma + 1, text.size() - comma - 2);
    char *end = nullptr;
    r.lower = std::strtod(lo.c_str(), &end);
    if (end == lo.c_str() || *end != '\0')
        return false;
    r.upper = std::strtod(hi.c_str(), &end);
    if (end == hi.c_str() || *end != '\0')
        return false;
    const double m = NoxMaxReal;
    return std::isfinite(r.lower) && std::isfinite(r.upper) && std::fabs(r.lower) <= m &&
           std::fabs(r.upper) <= m;
}

// The first three "[...]" groups of a line, blanks removed.
void BracketGroups(const std::string &line, std::string &x, std::string &y, std::string &z) {
    std::string *groups[] = {&x, &y, &z};
    std::size_t at = 0;
    for (std::string *g : groups) {
        const std::size_t open = line.find('[', at);
        const std::size_t close = line.find(']', open == std::string::npos ? at : open);
        if (open == std::string::npos || close == std::string::npos)
            return;
        for (std::size_t i = open; i <= close; ++i)
            if (line[i] != ' ')
                g->push_back(line[i]);
        at = close + 1;
    }
}

bool WithinTwoUlps(double ours, double theirs) {
    const double lo = std::nextafter(std::nextafter(theirs, -kInf), -kInf);
    const double hi = std::nextafter(std::nextafter(theirs, kInf), kInf);
    return lo <= ours && ours <= hi;
}

} // namespace

TEST(ArithmeticVectors, AgreeWithThePublicVectorsWhereTheSemanticsMeet) {
    std::ifstream in(ArithmeticItlPath());
    if (!in)
        GTEST_SKIP() << "no vectors at " << ArithmeticItlPath();
    const struct {
        const char *testcase;
        const char *op;
        RealOp f;
    } ops[] = {{"minimal_add_test", "add", NoxSum},
               {"minimal_sub_test", "sub", NoxSub},
               {"minimal_mul_test", "mul", NoxMul},
               {"minimal_div_test", "div", NoxDiv}};
    std::string line, current;
    int compared = 0;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first == "testcase") {
            words >> current;
            continue;
        }
        for (const auto &op : ops) {
            if (current != op.testcase || first != op.op)
                continue;
            // "op [a,b] [c,d] = [e,f];", blanks allowed inside the brackets.
            std::string x, y, z;
            BracketGroups(line, x, y, z);
            NoxRealInterval a, b, expected;
            if (!ParseFiniteInterval(x, a) || !ParseFiniteInterval(y, b) ||
                !ParseFiniteInterval(z, expected))
                continue;
            if (op.f == static_cast<RealOp>(NoxDiv) && b.lower <= 0 && b.upper >= 0)
                continue;
            NoxEnvironment env;
            const NoxRealInterval r = op.f(env, a, b);
            EXPECT_EQ(env.GetError(), 0) << line;
            EXPECT_TRUE(WithinTwoUlps(r.lower, expected.lower) &&
                        WithinTwoUlps(r.upper, expected.upper))
                << line << " gives [" << r.lower << ", " << r.upper << "]";
            ++compared;
        }
    }
    EXPECT_GE(compared, 50); // the parser still finds the cases it should
    std::cout << "[ vectors  ] " << compared << " arithmetic cases compared\n";
}
