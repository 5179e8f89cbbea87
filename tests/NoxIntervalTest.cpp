#include <NoxInterval.h>

#include "NoxPrivate.h"
#include "NoxTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

namespace {

using nox_test::Bits;
using nox_test::ExpectInteger;
using nox_test::ExpectReal;
using nox_test::I;
using nox_test::kInf;
using nox_test::kNaN;
using nox_test::R;

} // namespace

// ---- Limits and constants, bit for bit ----

TEST(IntervalLimits, InitialisedDataHasItsExactValues) {
    EXPECT_EQ(Bits(NoxMaxReal), 0x47EFFFFFE0000000ull);
    EXPECT_EQ(NoxMaxReal, 3.4028234663852886e+38);
    EXPECT_EQ(NoxMaxReal, static_cast<double>(std::numeric_limits<float>::max()));
    EXPECT_EQ(NoxMaxExpReal, 88.72283905206835);
    EXPECT_EQ(NoxMaxHypReal, 89.4159862326283);
    EXPECT_EQ(NoxMaxPowExpReal, 8);
    EXPECT_EQ(NoxMaxInteger, 2147483646);
    EXPECT_EQ(NoxAbsPrecision, 1e-14);
}

TEST(IntervalLimits, ExpAndHypLimitsAreTheLogarithmsOfTheRealLimit) {
    volatile double maxReal = 3.4028234663852886e+38;
    EXPECT_NEAR(NoxMaxExpReal, std::log(maxReal), 1e-13);
    EXPECT_NEAR(NoxMaxHypReal, std::log(2 * maxReal), 1e-13);
}

TEST(IntervalLimits, LoadTimeValuesAreComputedFromTheLimits) {
    volatile double maxReal = NoxMaxReal;
    volatile int maxInt = NoxMaxInteger;
    EXPECT_EQ(Bits(NoxMinReal), Bits(1 / maxReal));
    EXPECT_EQ(NoxMinReal, 2.938736052218037e-39);
    EXPECT_EQ(Bits(NoxSingleReal_Any), Bits(maxReal * 10));
    EXPECT_EQ(NoxSingleReal_Any, 3.4028234663852886e+39);
    EXPECT_EQ(Bits(NoxSingleReal_Nil), Bits(maxReal * (-10)));
    EXPECT_EQ(NoxSingleReal_Nil, -3.4028234663852886e+39);
    EXPECT_EQ(NoxSingleInteger_Any, maxInt + 1);
    EXPECT_EQ(NoxSingleInteger_Any, 2147483647);
    EXPECT_EQ(NoxSingleInteger_Nil, -1 - maxInt);
    EXPECT_EQ(NoxSingleInteger_Nil, -2147483647);
}

TEST(IntervalLimits, LoadTimeIntervalsHaveTheirBounds) {
    ExpectReal(NoxReal_Any, -NoxMaxReal, NoxMaxReal);
    ExpectReal(NoxReal_Nil, NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxReal_Pos, 0, NoxMaxReal);
    ExpectReal(NoxReal_Trig, -1e9, 1e9);
    ExpectReal(NoxReal_TrigInv, -1, 1);
    ExpectInteger(NoxInteger_Any, -2147483646, 2147483646);
    ExpectInteger(NoxInteger_Nil, 2147483646, -2147483646);
}

TEST(IntervalLimits, MarkersLieOutsideTheAdmissibleRange) {
    EXPECT_GT(NoxSingleReal_Any, NoxMaxReal);
    EXPECT_LT(NoxSingleReal_Nil, -NoxMaxReal);
    EXPECT_GT(NoxSingleInteger_Any, NoxMaxInteger);
    EXPECT_LT(NoxSingleInteger_Nil, -NoxMaxInteger);
}

// ---- Constructors ----

TEST(IntervalConstruct, IntegerFromOneValueIsThePoint) {
    ExpectInteger(NoxCreateIntegerInterval(7), 7, 7);
    ExpectInteger(NoxCreateIntegerInterval(INT_MIN), INT_MIN, INT_MIN);
}

TEST(IntervalConstruct, IntegerFromTwoValuesStoresThemAsGiven) {
    ExpectInteger(NoxCreateIntegerInterval(-3, 4), -3, 4);
    ExpectInteger(NoxCreateIntegerInterval(5, 2), 5, 2);
    ExpectInteger(NoxCreateIntegerInterval(INT_MIN, INT_MAX), INT_MIN, INT_MAX);
}

TEST(IntervalConstruct, RealFromOneValueNeitherChecksNorClamps) {
    ExpectReal(NoxCreateRealInterval(1e40), 1e40, 1e40);
    NoxRealInterval n = NoxCreateRealInterval(kNaN);
    EXPECT_TRUE(std::isnan(n.lower) && std::isnan(n.upper));
}

TEST(IntervalConstruct, RealInvertedPairIsNil) {
    ExpectReal(NoxCreateRealInterval(5, 4), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxCreateRealInterval(1, 1 - 1e-15), NoxMaxReal, -NoxMaxReal);
}

TEST(IntervalConstruct, RealBeyondBothLimitsClampsToAny) {
    ExpectReal(NoxCreateRealInterval(-1e40, 1e40), NoxReal_Any.lower, NoxReal_Any.upper);
    ExpectReal(NoxCreateRealInterval(-kInf, kInf), -NoxMaxReal, NoxMaxReal);
}

TEST(IntervalConstruct, RealWhollyAboveOrBelowTheLimitIsNil) {
    ExpectReal(NoxCreateRealInterval(1e39, 2e39), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxCreateRealInterval(-2e39, -1e39), NoxMaxReal, -NoxMaxReal);
}

TEST(IntervalConstruct, RealClampsOneSide) {
    ExpectReal(NoxCreateRealInterval(-1e40, 5), -NoxMaxReal, 5);
    ExpectReal(NoxCreateRealInterval(-5, 1e40), -5, NoxMaxReal);
    ExpectReal(NoxCreateRealInterval(2, 2), 2, 2);
}

TEST(IntervalConstruct, RealWithNaNBoundPassesItThrough) {
    NoxRealInterval a = NoxCreateRealInterval(kNaN, 1);
    EXPECT_TRUE(std::isnan(a.lower));
    EXPECT_EQ(a.upper, 1);
    NoxRealInterval b = NoxCreateRealInterval(1, kNaN);
    EXPECT_EQ(b.lower, 1);
    EXPECT_TRUE(std::isnan(b.upper));
}

// ---- Inward rounding of a real interval to integers ----

TEST(IntervalInward, ExamplesRoundInward) {
    ExpectInteger(NoxCreateIntegerInterval(R(0.5, 2.5)), 1, 2);
    ExpectInteger(NoxCreateIntegerInterval(R(-2.5, -0.5)), -2, -1);
    ExpectInteger(NoxCreateIntegerInterval(R(1.999999999999999, 3.0000000000000004)), 2, 3);
    ExpectInteger(NoxCreateIntegerInterval(R(0.2, 0.8)), NoxMaxInteger, -NoxMaxInteger);
    ExpectInteger(NoxCreateIntegerInterval(R(-0.5, 0.5)), 0, 0);
}

TEST(IntervalInward, WholeRealLineClampsToIntegerAny) {
    ExpectInteger(NoxCreateIntegerInterval(R(-1e12, 1e12)), NoxInteger_Any.lower,
                  NoxInteger_Any.upper);
    ExpectInteger(NoxCreateIntegerInterval(NoxReal_Any), -NoxMaxInteger, NoxMaxInteger);
    ExpectInteger(NoxCreateIntegerInterval(R(-kInf, kInf)), -NoxMaxInteger, NoxMaxInteger);
}

TEST(IntervalInward, InvertedAfterClampingIsNil) {
    ExpectInteger(NoxCreateIntegerInterval(R(5, 4)), NoxMaxInteger, -NoxMaxInteger);
    // Entirely above the integer limit: the clamped upper end falls below the lower.
    ExpectInteger(NoxCreateIntegerInterval(R(1e12, 2e12)), NoxMaxInteger, -NoxMaxInteger);
    ExpectInteger(NoxCreateIntegerInterval(R(-2e12, -1e12)), NoxMaxInteger, -NoxMaxInteger);
    ExpectInteger(NoxCreateIntegerInterval(NoxReal_Nil), NoxMaxInteger, -NoxMaxInteger);
}

TEST(IntervalInward, NegativeLowerBoundWithinEpsilonOfIntegerIsThatInteger) {
    // lo < 0: truncation of lo - eps, no correction needed.
    ExpectInteger(NoxCreateIntegerInterval(R(-2.000000000000001, 5)), -2, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(-3, 5)), -3, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(-2.9, 5)), -2, 5);
}

TEST(IntervalInward, NegativeLowerBoundBeyondEpsilonRoundsUp) {
    // lo = -2.00000000001: truncation of lo - eps gives -2, the smallest integer above.
    ExpectInteger(NoxCreateIntegerInterval(R(-2.00000000001, 5)), -2, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(-0.3, 5)), 0, 5);
}

TEST(IntervalInward, NonNegativeLowerBoundBeyondEpsilonIsCorrectedUp) {
    // lo >= 0: truncation of lo + eps is below lo by more than eps, so n + 1.
    volatile double lo = 2.00000000001;
    ASSERT_GT(lo - NoxTruncToInt(lo + NoxAbsPrecision), NoxAbsPrecision);
    ExpectInteger(NoxCreateIntegerInterval(R(lo, 5)), 3, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(0.5, 5)), 1, 5);
}

TEST(IntervalInward, NonNegativeLowerBoundWithinEpsilonIsNotCorrected) {
    ExpectInteger(NoxCreateIntegerInterval(R(2.000000000000005, 5)), 2, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(0, 5)), 0, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(1.999999999999995, 5)), 2, 5);
}

TEST(IntervalInward, NegativeUpperBoundBeyondEpsilonIsCorrectedDown) {
    // hi < 0: truncation of hi - eps lies above hi by more than eps, so m - 1.
    volatile double hi = -3.00000000001;
    ASSERT_GT(NoxTruncToInt(hi - NoxAbsPrecision) - hi, NoxAbsPrecision);
    ExpectInteger(NoxCreateIntegerInterval(R(-9, hi)), -9, -4);
    ExpectInteger(NoxCreateIntegerInterval(R(-9, -0.5)), -9, -1);
}

TEST(IntervalInward, NegativeUpperBoundWithinEpsilonIsNotCorrected) {
    ExpectInteger(NoxCreateIntegerInterval(R(-9, -2.999999999999995)), -9, -3);
    ExpectInteger(NoxCreateIntegerInterval(R(-9, -3.000000000000005)), -9, -3);
}

TEST(IntervalInward, NonNegativeUpperBoundTruncates) {
    ExpectInteger(NoxCreateIntegerInterval(R(-9, 4.7)), -9, 4);
    ExpectInteger(NoxCreateIntegerInterval(R(-9, 4.999999999999995)), -9, 5);
    ExpectInteger(NoxCreateIntegerInterval(R(-9, 0)), -9, 0);
}

// The corrections guarded by 1 - eps compensate a truncation that lands a whole unit
// off; for truncation toward zero that cannot happen, and no double input reaches them.
// The steps are kept, and the rounding agrees with ceil(lo - eps) and floor(hi + eps)
// over a dense sample around integers of every magnitude.
TEST(IntervalInward, AgreesWithCeilAndFloorForgivingEpsilonOnSamples) {
    std::mt19937_64 rng(20261122);
    const double eps = NoxAbsPrecision;
    for (int i = 0; i < 200000; ++i) {
        const double k = static_cast<double>(static_cast<std::int64_t>(rng() % 2000001) - 1000000);
        const double offset = std::ldexp(static_cast<double>(rng() % 4097) - 2048.0,
                                         -static_cast<int>(rng() % 48) - 8);
        volatile double x = k + offset;
        NoxIntegerInterval r = NoxCreateIntegerInterval(R(x, x + 3));
        const double n = std::ceil(x - eps);
        ASSERT_EQ(r.lower, static_cast<int>(n)) << "seed 20261122, x = " << x;
        NoxIntegerInterval s = NoxCreateIntegerInterval(R(x - 3, x));
        const double m = std::floor(x + eps);
        ASSERT_EQ(s.upper, static_cast<int>(m)) << "seed 20261122, x = " << x;
    }
}

TEST(IntervalInward, NaNBoundTruncatesToIntMinWithoutUndefinedBehaviour) {
    // A NaN lower bound survives the clamp and truncates to INT_MIN.
    ExpectInteger(NoxCreateIntegerInterval(R(kNaN, 1)), INT_MIN, 1);
    // A NaN upper bound truncates to INT_MIN, below the lower bound: nil.
    ExpectInteger(NoxCreateIntegerInterval(R(1, kNaN)), NoxMaxInteger, -NoxMaxInteger);
}

// ---- Predicates ----

TEST(IntervalPredicates, RealEmptinessForgivesTheTolerance) {
    EXPECT_FALSE(NoxIsEmpty(R(1, 1 - 1e-15), 1e-14));
    EXPECT_TRUE(NoxIsEmpty(R(1, 0.9), 1e-14));
    EXPECT_TRUE(NoxIsEmpty(NoxReal_Nil, 6.7e38));
    EXPECT_TRUE(NoxIsEmpty(NoxReal_Nil, 0));
    EXPECT_FALSE(NoxIsEmpty(NoxReal_Nil, 6.9e38));
    // lower - upper equal to the tolerance is not empty (strict).
    EXPECT_FALSE(NoxIsEmpty(R(1, 0.5), 0.5));
    EXPECT_TRUE(NoxIsConsistent(R(1, 0.5), 0.5));
    EXPECT_FALSE(NoxIsConsistent(R(1, 0.9), 1e-14));
}

TEST(IntervalPredicates, IntegerEmptinessIsInversion) {
    EXPECT_TRUE(NoxIsEmpty(I(3, 2)));
    EXPECT_FALSE(NoxIsEmpty(I(2, 2)));
    EXPECT_TRUE(NoxIsEmpty(NoxInteger_Nil));
    EXPECT_TRUE(NoxIsConsistent(I(2, 2)));
    EXPECT_FALSE(NoxIsConsistent(I(3, 2)));
}

TEST(IntervalPredicates, NaNBoundsAreNeitherEmptyNorInfinite) {
    EXPECT_FALSE(NoxIsEmpty(R(kNaN, 1), 1e-14));
    EXPECT_TRUE(NoxIsConsistent(R(kNaN, 1), 1e-14));
    EXPECT_FALSE(NoxIsInfinite(R(kNaN, kNaN)));
    EXPECT_TRUE(NoxIsFinite(R(kNaN, kNaN)));
}

TEST(IntervalPredicates, InfiniteMeansTheWholeLine) {
    EXPECT_FALSE(NoxIsInfinite(R(0, NoxMaxReal)));
    EXPECT_TRUE(NoxIsFinite(R(0, NoxMaxReal)));
    EXPECT_TRUE(NoxIsInfinite(NoxReal_Any));
    EXPECT_FALSE(NoxIsFinite(NoxReal_Any));
    EXPECT_TRUE(NoxIsInfinite(R(-kInf, kInf)));
    EXPECT_FALSE(NoxIsInfinite(R(-NoxMaxReal, 0)));
    EXPECT_TRUE(NoxIsInfinite(NoxInteger_Any));
    EXPECT_FALSE(NoxIsFinite(NoxInteger_Any));
    EXPECT_TRUE(NoxIsInfinite(I(INT_MIN, INT_MAX)));
    EXPECT_FALSE(NoxIsInfinite(I(0, NoxMaxInteger)));
    EXPECT_TRUE(NoxIsFinite(I(-NoxMaxInteger + 1, NoxMaxInteger)));
}

TEST(IntervalPredicates, RealEqualityIsStrictWithinTolerance) {
    EXPECT_TRUE(NoxIsEqual(R(0, 1), R(0.4, 1.4), 0.5));
    EXPECT_FALSE(NoxIsEqual(R(0, 1), R(0.5, 1), 0.5));
    EXPECT_FALSE(NoxIsEqual(R(0, 1), R(0, 1.5), 0.5));
    EXPECT_TRUE(NoxIsEqual(R(1, 2), R(1, 2), 1e-14));
    EXPECT_FALSE(NoxIsEqual(R(1, 2), R(1, 2), 0));
}

TEST(IntervalPredicates, IntegerEqualityComparesBothBounds) {
    EXPECT_TRUE(NoxIsEqual(I(1, 2), I(1, 2)));
    EXPECT_FALSE(NoxIsEqual(I(1, 2), I(1, 3)));
    EXPECT_FALSE(NoxIsEqual(I(0, 2), I(1, 2)));
}

TEST(IntervalPredicates, RealContainmentIsStrictWithinTolerance) {
    EXPECT_TRUE(NoxContains(R(0, 10), R(1, 2), 1e-14));
    EXPECT_TRUE(NoxContains(R(0, 10), R(-0.4, 10.4), 0.5));
    EXPECT_FALSE(NoxContains(R(0, 10), R(-0.5, 5), 0.5));
    EXPECT_FALSE(NoxContains(R(0, 10), R(5, 10.5), 0.5));
    EXPECT_FALSE(NoxContains(R(0, 10), R(0, 10), 0));
    EXPECT_FALSE(NoxContains(R(1, 2), R(0, 10), 1e-14));
}

TEST(IntervalPredicates, IntegerContainmentIncludesTheEnds) {
    EXPECT_TRUE(NoxContains(I(0, 10), I(0, 10)));
    EXPECT_TRUE(NoxContains(I(0, 10), I(3, 4)));
    EXPECT_FALSE(NoxContains(I(0, 10), I(-1, 4)));
    EXPECT_FALSE(NoxContains(I(0, 10), I(3, 11)));
}

TEST(IntervalPredicates, ExactnessIsZeroWidthOrWidthBelowTolerance) {
    EXPECT_TRUE(NoxIsExact(I(3, 3)));
    EXPECT_FALSE(NoxIsExact(I(3, 4)));
    EXPECT_TRUE(NoxIsExact(R(1, 1.4), 0.5));
    EXPECT_FALSE(NoxIsExact(R(1, 1.5), 0.5));
    EXPECT_TRUE(NoxIsExact(R(1.4, 1), 0.5));
    EXPECT_FALSE(NoxIsExact(R(2, 2), 0));
}

// ---- Measures ----

TEST(IntervalMeasures, IntegerWidthSaturates) {
    EXPECT_EQ(NoxWidth(NoxInteger_Any), NoxMaxInteger);
    EXPECT_EQ(NoxWidth(NoxInteger_Nil), -NoxMaxInteger);
    EXPECT_EQ(NoxWidth(I(3, 10)), 7);
    EXPECT_EQ(NoxWidth(I(10, 3)), -7);
    EXPECT_EQ(NoxWidth(I(INT_MIN, INT_MAX)), NoxMaxInteger);
    EXPECT_EQ(NoxWidth(I(INT_MAX, INT_MIN)), -NoxMaxInteger);
    EXPECT_EQ(NoxWidth(I(0, NoxMaxInteger)), NoxMaxInteger);
    EXPECT_EQ(NoxWidth(I(-1, NoxMaxInteger)), NoxMaxInteger);
}

TEST(IntervalMeasures, RealWidthIsNeitherClampedNorSigned) {
    EXPECT_EQ(NoxWidth(R(1, 3.5)), 2.5);
    EXPECT_EQ(NoxWidth(R(3, 1)), -2);
    volatile double m = NoxMaxReal;
    EXPECT_EQ(NoxWidth(NoxReal_Any), m - (-m));
}

TEST(IntervalMeasures, MiddleIsHalfTheSum) {
    EXPECT_EQ(NoxMiddle(R(1, 4)), 2.5);
    volatile double m = NoxMaxReal;
    EXPECT_EQ(NoxMiddle(NoxReal_Any), (m + -m) * 0.5);
    volatile double a = 0.1, b = 0.7;
    EXPECT_EQ(Bits(NoxMiddle(R(a, b))), Bits((b + a) * 0.5));
}

TEST(IntervalMeasures, RealMagnitudePrefersLowerUnlessUpperStrictlyLarger) {
    EXPECT_EQ(NoxMAG(R(-3, 2)), 3);
    EXPECT_EQ(NoxMAG(R(-2, 3)), 3);
    EXPECT_EQ(NoxMAG(R(-3, 3)), 3);
    // The upper magnitude replaces the lower one only when strictly larger, so a NaN
    // lower bound is kept and a NaN upper bound is ignored.
    EXPECT_TRUE(std::isnan(NoxMAG(R(kNaN, 2))));
    EXPECT_EQ(NoxMAG(R(2, kNaN)), 2);
}

TEST(IntervalMeasures, IntegerMagnitude) {
    EXPECT_EQ(NoxMAG(I(-5, 3)), 5);
    EXPECT_EQ(NoxMAG(I(-3, 5)), 5);
    EXPECT_EQ(NoxMAG(NoxInteger_Any), NoxMaxInteger);
    // |INT_MIN| does not fit an int: it saturates to INT_MAX.
    EXPECT_EQ(NoxMAG(I(INT_MIN, 0)), INT_MAX);
}

TEST(IntervalMeasures, SignumHasNoTolerance) {
    EXPECT_EQ(NoxSignum(R(0, 5)), 0);
    EXPECT_EQ(NoxSignum(R(1e-300, 5)), 1);
    EXPECT_EQ(NoxSignum(R(-5, -1e-300)), -1);
    EXPECT_EQ(NoxSignum(R(-5, 0)), 0);
    EXPECT_EQ(NoxSignum(R(-1, 1)), 0);
    EXPECT_EQ(NoxSignum(R(2, -3)), 1);
    EXPECT_EQ(NoxSignum(R(kNaN, kNaN)), 0);
}

// ---- Set operations ----

TEST(IntervalSetOps, IntegerIntersectionIsNotNormalised) {
    ExpectInteger(NoxIntersect(I(0, 5), I(3, 9)), 3, 5);
    ExpectInteger(NoxIntersect(I(0, 2), I(5, 7)), 5, 2);
    ExpectInteger(NoxIntersect(NoxInteger_Any, I(-4, 4)), -4, 4);
}

TEST(IntervalSetOps, IntegerUnionIsTheHull) {
    ExpectInteger(NoxUnite(I(0, 2), I(5, 7)), 0, 7);
    ExpectInteger(NoxUnite(NoxInteger_Nil, I(5, 7)), 5, 7);
    ExpectInteger(NoxUnite(NoxInteger_Nil, NoxInteger_Nil), NoxMaxInteger, -NoxMaxInteger);
}

TEST(IntervalSetOps, RealUnionIsTheNormalisedHull) {
    ExpectReal(NoxUnite(NoxReal_Nil, R(1, 2), 1e-9), 1, 2);
    ExpectReal(NoxUnite(R(1, 2), NoxReal_Nil, 1e-9), 1, 2);
    ExpectReal(NoxUnite(NoxReal_Nil, NoxReal_Nil, 1e-9), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxUnite(R(0, 1), R(3, 4), 1e-9), 0, 4);
    ExpectReal(NoxUnite(R(-1e40, 0), R(3, 1e40), 1e-9), -NoxMaxReal, NoxMaxReal);
    // The tolerance is not used.
    ExpectReal(NoxUnite(R(0, 1), R(3, 4), 1e300), 0, 4);
}

TEST(IntervalSetOps, RealIntersectStartingJustPastTheEndCollapsesOntoIt) {
    ExpectReal(NoxIntersect(R(0, 1), R(1.000000000000005, 2), 1e-14), 1, 1);
    ExpectReal(NoxIntersect(R(0, 1), R(1.1, 2), 1e-14), NoxMaxReal, -NoxMaxReal);
}

TEST(IntervalSetOps, RealIntersectScalesTheToleranceWithATenthOfTheBound) {
    ExpectReal(NoxIntersect(R(0, 100), R(100.00000000000001, 200), 1e-14), 100, 100);
    ExpectReal(NoxIntersect(R(0, 100), R(99.99999999999999, 200), 1e-14), 99.99999999999999,
               100);
    // 5e-14 past 100 is within the scaled 1e-13, past 10 it is beyond the unscaled 1e-14
    // (a tenth of 10 is 1, not above 1).
    ExpectReal(NoxIntersect(R(0, 100), R(100.00000000000005, 200), 1e-14), 100, 100);
    ExpectReal(NoxIntersect(R(0, 10), R(10.000000000000002, 20), 1e-14), 10, 10);
    ExpectReal(NoxIntersect(R(0, 10), R(10.00000000000005, 20), 1e-14), NoxMaxReal,
               -NoxMaxReal);
    // The lower end scales with its own magnitude, sign ignored.
    ExpectReal(NoxIntersect(R(-100, 0), R(-200, -100.00000000000005), 1e-14), -100, -100);
    ExpectReal(NoxIntersect(R(-10, 0), R(-20, -10.00000000000005), 1e-14), NoxMaxReal,
               -NoxMaxReal);
}

TEST(IntervalSetOps, RealIntersectCapsTheToleranceAtFiveHundredths) {
    // tol 0.25 would allow 0.25 of slack; the cap keeps it at 0.05.
    ExpectReal(NoxIntersect(R(0, 1), R(0, 0.96), 0.25), 0, 1);
    ExpectReal(NoxIntersect(R(0, 1), R(0, 0.94), 0.25), 0, 0.94);
    ExpectReal(NoxIntersect(R(0, 1), R(0.04, 1), 0.25), 0, 1);
    ExpectReal(NoxIntersect(R(0, 1), R(0.06, 1), 0.25), 0.06, 1);
    // Large bounds: the scaled tolerance 1e10 is capped too.
    // Large bounds: a tenth of 1e9 times 1e-9 is 0.1, capped at 0.05 as well.
    volatile double big = 1e9;
    ExpectReal(NoxIntersect(R(big, 1e20), R(big + 0.06, 1e20), 1e-9), big + 0.06, 1e20);
    ExpectReal(NoxIntersect(R(big, 1e20), R(big + 0.04, 1e20), 1e-9), big, 1e20);
}

TEST(IntervalSetOps, RealIntersectLowerBoundBranches) {
    // b.lower <= a.lower + tl, equality included: a's lower end.
    volatile double tl = 0.05;
    ExpectReal(NoxIntersect(R(0, 1), R(tl, 1), 0.25), 0, 1);
    ExpectReal(NoxIntersect(R(0, 10), R(-5, 20), 1e-14), 0, 10);
    // b.lower past a.upper but within th: a's upper end.
    ExpectReal(NoxIntersect(R(0, 1), R(1.04, 2), 0.25), 1, 1);
    // b.lower past a.upper by more than th: b.lower, and the pair is inverted: nil.
    ExpectReal(NoxIntersect(R(0, 1), R(1.06, 2), 0.25), NoxMaxReal, -NoxMaxReal);
    // Otherwise b.lower.
    ExpectReal(NoxIntersect(R(0, 10), R(3, 20), 1e-14), 3, 10);
}

TEST(IntervalSetOps, RealIntersectUpperBoundBranches) {
    // b.upper >= a.upper - th, equality included: a's upper end.
    volatile double th = 0.05;
    ExpectReal(NoxIntersect(R(0, 1), R(0, 1 - th), 0.25), 0, 1);
    // b.upper before a.lower but within tl: a's lower end.
    ExpectReal(NoxIntersect(R(1, 2), R(0, 1 - 0.5e-14), 1e-14), 1, 1);
    ExpectReal(NoxIntersect(R(1, 2), R(0, 0.96), 0.25), 1, 1);
    // b.upper before a.lower by more than tl: b.upper, and the pair is inverted: nil.
    ExpectReal(NoxIntersect(R(1, 2), R(0, 0.94), 0.25), NoxMaxReal, -NoxMaxReal);
    // Otherwise b.upper.
    ExpectReal(NoxIntersect(R(0, 10), R(-3, 4), 1e-14), 0, 4);
}

TEST(IntervalSetOps, RealIntersectIsAsymmetric) {
    ExpectReal(NoxIntersect(R(1.000000000000005, 2), R(0, 1), 1e-14), 1.000000000000005,
               1.000000000000005);
    ExpectReal(NoxIntersect(R(0, 1), R(1.000000000000005, 2), 1e-14), 1, 1);
}

TEST(IntervalSetOps, RealIntersectNormalisesTheResult) {
    ExpectReal(NoxIntersect(R(-1e40, 1e40), R(-1e40, 1e40), 1e-9), -NoxMaxReal, NoxMaxReal);
    ExpectReal(NoxIntersect(NoxReal_Nil, R(0, 1), 1e-9), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxIntersect(R(0, 1), NoxReal_Nil, 1e-9), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxIntersect(NoxReal_Any, R(-3, 4), 1e-9), -3, 4);
}

TEST(IntervalSetOps, NaNAndInfiniteBoundsNeverCrash) {
    const double specials[] = {kNaN, kInf, -kInf, 0.0, -0.0, 1e308, -1e308, NoxMaxReal};
    for (double a : specials)
        for (double b : specials)
            for (double c : specials) {
                NoxRealInterval x = R(a, b), y = R(c, a);
                (void)NoxIntersect(x, y, 1e-9);
                (void)NoxUnite(x, y, 1e-9);
                (void)NoxCreateIntegerInterval(x);
                (void)NoxMAG(x);
                (void)NoxSignum(x);
                (void)NoxIsEqual(x, y, 1e-9);
                (void)NoxContains(x, y, 1e-9);
            }
    SUCCEED();
}

// ---- Private helpers ----

TEST(IntervalHelpers, ScaledToleranceGrowsBeyondMagnitudeOne) {
    EXPECT_EQ(NoxScaledTolerance(1, 1e-9), 1e-9);
    EXPECT_EQ(NoxScaledTolerance(-1, 1e-9), 1e-9);
    EXPECT_EQ(NoxScaledTolerance(0.5, 1e-9), 1e-9);
    volatile double x = -250;
    EXPECT_EQ(NoxScaledTolerance(x, 1e-9), 250 * 1e-9);
}

TEST(IntervalHelpers, SaturatingAddClampsAndFlags) {
    unsigned char ovf = 7;
    EXPECT_EQ(NoxSaturatingAdd(3, 4, ovf), 7);
    EXPECT_EQ(ovf, 0);
    EXPECT_EQ(NoxSaturatingAdd(NoxMaxInteger - 1, 1, ovf), NoxMaxInteger);
    EXPECT_EQ(ovf, 0);
    EXPECT_EQ(NoxSaturatingAdd(NoxMaxInteger, 1, ovf), NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
    EXPECT_EQ(NoxSaturatingAdd(-NoxMaxInteger, 0, ovf), -NoxMaxInteger);
    EXPECT_EQ(ovf, 0);
    EXPECT_EQ(NoxSaturatingAdd(-NoxMaxInteger, -1, ovf), -NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
    EXPECT_EQ(NoxSaturatingAdd(INT_MIN, 0, ovf), -NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
    EXPECT_EQ(NoxSaturatingAdd(INT_MAX, INT_MAX, ovf), NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
    EXPECT_EQ(NoxSaturatingAdd(INT_MIN, INT_MIN, ovf), -NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
    // -(NoxMaxInteger + INT_MIN) is 2, and 5 is not below it: the plain sum.
    EXPECT_EQ(NoxSaturatingAdd(5, INT_MIN, ovf), -2147483643);
    EXPECT_EQ(ovf, 0);
    EXPECT_EQ(NoxSaturatingAdd(1, INT_MIN, ovf), -NoxMaxInteger);
    EXPECT_EQ(ovf, 1);
}

TEST(IntervalHelpers, SingleValueMarkers) {
    EXPECT_TRUE(NoxIsSingleRealAny(NoxSingleReal_Any));
    EXPECT_FALSE(NoxIsSingleRealAny(NoxMaxReal));
    EXPECT_TRUE(NoxIsSingleRealNil(NoxSingleReal_Nil));
    EXPECT_FALSE(NoxIsSingleRealNil(-NoxMaxReal));
    EXPECT_FALSE(NoxIsSingleRealAny(kNaN));
    EXPECT_FALSE(NoxIsSingleRealNil(kNaN));
    EXPECT_TRUE(NoxIsSingleIntegerAny(2147483647));
    EXPECT_FALSE(NoxIsSingleIntegerAny(NoxMaxInteger));
    EXPECT_TRUE(NoxIsSingleIntegerNil(-2147483647));
    EXPECT_FALSE(NoxIsSingleIntegerNil(INT_MIN));
}

TEST(IntervalHelpers, TruncationOutsideIntRangeGivesIntMin) {
    EXPECT_EQ(NoxTruncToInt(2147483647.9), 2147483647);
    EXPECT_EQ(NoxTruncToInt(-2147483648.9), INT_MIN);
    EXPECT_EQ(NoxTruncToInt(-2.7), -2);
    EXPECT_EQ(NoxTruncToInt(2147483648.0), INT_MIN);
    EXPECT_EQ(NoxTruncToInt(-2147483649.0), INT_MIN);
    EXPECT_EQ(NoxTruncToInt(kNaN), INT_MIN);
    EXPECT_EQ(NoxTruncToInt(kInf), INT_MIN);
    EXPECT_EQ(NoxTruncToInt(-kInf), INT_MIN);
}

TEST(IntervalHelpers, PiConstantsAreTheCorrectlyRoundedValues) {
    volatile double pi = NoxPi;
    EXPECT_EQ(NoxPi, std::acos(-1.0));
    EXPECT_EQ(NoxTwoPi, 2 * pi);
    EXPECT_EQ(NoxHalfPi, pi / 2);
    EXPECT_NEAR(NoxInvPi * pi, 1.0, 2e-16);
    EXPECT_NEAR(NoxInvTwoPi * 2 * pi, 1.0, 2e-16);
}

TEST(IntervalHelpers, ResultKindTableIsSymmetricAndHasItsListedRows) {
    const int expected[8][8] = {{0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 2, 3, 4, 5, 6, 3},
                                {0, 2, 2, 4, 4, 6, 6, 0}, {0, 3, 4, 3, 4, 5, 6, 3},
                                {0, 4, 4, 4, 4, 6, 6, 0}, {0, 5, 6, 5, 6, 5, 6, 3},
                                {0, 6, 6, 6, 6, 6, 6, 0}, {0, 3, 0, 3, 0, 3, 0, 7}};
    for (int a = 0; a < 8; ++a)
        for (int b = 0; b < 8; ++b) {
            const NoxValueType ka = static_cast<NoxValueType>(a);
            const NoxValueType kb = static_cast<NoxValueType>(b);
            EXPECT_EQ(NoxResultKind(ka, kb), expected[a][b]) << a << ", " << b;
            EXPECT_EQ(NoxResultKind(ka, kb), NoxResultKind(kb, ka));
        }
    EXPECT_EQ(NoxResultKind(static_cast<NoxValueType>(8), NoxIntegerType), NoxUndefinedType);
    EXPECT_EQ(NoxResultKind(NoxIntegerType, static_cast<NoxValueType>(-1)), NoxUndefinedType);
}

TEST(IntervalMeasures, IntegerWidthClampsOnlyThroughTheSaturatingTest) {
    // -lower is 0: the upward test never fires, and INT_MAX comes back as it is.
    EXPECT_EQ(NoxWidth(I(0, INT_MAX)), INT_MAX);
}
