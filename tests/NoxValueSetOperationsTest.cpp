#include <NoxAssert.h>
#include <NoxValueFunctions.h>

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <random>
#include <sstream>
#include <vector>

#include "NoxTestAllocator.h"
#include "NoxTestSupport.h"

// ---- Allocation accounting ----
//
// The shared test allocator counts the allocations an operation makes and can make every
// allocation fail; the library's enumeration arrays come from it too.

namespace {

constexpr double kTol = 1e-14;

// ---- Builders ----

NoxIntegerEnum IntList(const std::vector<int> &v) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(v.size()));
    for (int i = 0; i < static_cast<int>(v.size()); ++i)
        e.Set(i, v[i]);
    return e;
}

NoxIntegerEnum IntRange(int lo, int hi) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetAsIntegerInterval(NoxIntegerInterval{lo, hi});
    return e;
}

NoxRealEnum RealList(const std::vector<double> &v) {
    NoxRealEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(v.size()));
    for (int i = 0; i < static_cast<int>(v.size()); ++i)
        e.Set(i, v[i]);
    return e;
}

NoxRealEnum RealRange(double lo, double hi) {
    NoxRealEnum e(NoxEnumNil);
    e.SetAsRealInterval(NoxRealInterval{lo, hi});
    return e;
}

NoxValue IntEnumValue(NoxEnumRep rep) { return NoxValue(NoxIntegerEnum(rep)); }
NoxValue RealEnumValue(NoxEnumRep rep) { return NoxValue(NoxRealEnum(rep)); }

// ---- Readers ----

using nox_test::Entries;

void ExpectIntList(const NoxValue &v, const std::vector<int> &expected) {
    ASSERT_EQ(v.GetType(), NoxIntegerEnumType);
    EXPECT_EQ(v.GetIntegerEnum().GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(v.GetIntegerEnum()), expected);
}

void ExpectIntRange(const NoxValue &v, int lo, int hi) {
    ASSERT_EQ(v.GetType(), NoxIntegerEnumType);
    EXPECT_EQ(v.GetIntegerEnum().GetRep(), NoxEnumRange);
    EXPECT_EQ(v.GetIntegerEnum().GetAsIntegerInterval().lower, lo);
    EXPECT_EQ(v.GetIntegerEnum().GetAsIntegerInterval().upper, hi);
}

void ExpectRealList(const NoxValue &v, const std::vector<double> &expected) {
    ASSERT_EQ(v.GetType(), NoxRealEnumType);
    EXPECT_EQ(v.GetRealEnum().GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(v.GetRealEnum()), expected);
}

void ExpectRealRange(const NoxValue &v, double lo, double hi) {
    ASSERT_EQ(v.GetType(), NoxRealEnumType);
    EXPECT_EQ(v.GetRealEnum().GetRep(), NoxEnumRange);
    EXPECT_EQ(v.GetRealEnum().GetAsRealInterval().lower, lo);
    EXPECT_EQ(v.GetRealEnum().GetAsRealInterval().upper, hi);
}

void ExpectIntegerInterval(const NoxValue &v, int lo, int hi) {
    ASSERT_EQ(v.GetType(), NoxIntegerIntervalType);
    EXPECT_EQ(v.GetAsIntegerInterval().lower, lo);
    EXPECT_EQ(v.GetAsIntegerInterval().upper, hi);
}

void ExpectRealInterval(const NoxValue &v, double lo, double hi) {
    ASSERT_EQ(v.GetType(), NoxRealIntervalType);
    EXPECT_EQ(v.GetAsRealInterval().lower, lo);
    EXPECT_EQ(v.GetAsRealInterval().upper, hi);
}

void ExpectBoolean(const NoxValue &v, NoxBoolean b) {
    ASSERT_EQ(v.GetType(), NoxBooleanType);
    EXPECT_EQ(v.GetAsBoolean(), b);
}

// The kinds in which two operands meet, [a][b], as the library documents them.
const int kResultKinds[8][8] = {
    {0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 2, 3, 4, 5, 6, 3}, {0, 2, 2, 4, 4, 6, 6, 0},
    {0, 3, 4, 3, 4, 5, 6, 3}, {0, 4, 4, 4, 4, 6, 6, 0}, {0, 5, 6, 5, 6, 5, 6, 3},
    {0, 6, 6, 6, 6, 6, 6, 0}, {0, 3, 0, 3, 0, 3, 0, 7}};

// Boolean set tables, [a][b] in the order false, true, any, nil.
const NoxBoolean F = NoxFalse, T = NoxTrue, A = NoxBoolean_Any, N = NoxBoolean_Nil;
const NoxBoolean kIntersection[4][4] = {{F, N, F, N}, {N, T, T, N}, {F, T, A, N}, {N, N, N, N}};
const NoxBoolean kUnion[4][4] = {{F, A, A, F}, {A, T, A, T}, {A, A, A, A}, {F, T, A, N}};
const NoxBoolean kExclusion[4][4] = {{N, F, F, F}, {T, N, T, T}, {T, F, A, A}, {N, N, N, N}};

class ValueSetOperations : public ::testing::Test {
protected:
    NoxEnvironment env;
};

// ======================================================================================
// Equality
// ======================================================================================

TEST_F(ValueSetOperations, IsEqual_IntegersCompareExactly) {
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(3), NoxValue(3), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(3), NoxValue(4), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsEqual_RealsCloserThanTolStrictly) {
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(1.0), NoxValue(1.0 + 5e-15), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(1.0), NoxValue(1.5), 0.5)); // |d| = tol
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(1.0), NoxValue(1.25), 0.5));
    // An integer meets a real as a real.
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(2), NoxValue(2.0), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(2), NoxValue(2.5), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsEqual_IntervalsByBounds) {
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxIntegerInterval{1, 5}),
                           NoxValue(NoxIntegerInterval{1, 5}), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(NoxIntegerInterval{1, 5}),
                            NoxValue(NoxIntegerInterval{1, 6}), kTol));
    // A boolean meets an integer as an integer interval.
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxTrue), NoxValue(1), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxBoolean_Any), NoxValue(NoxIntegerInterval{0, 1}), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxRealInterval{1.0, 2.0}),
                           NoxValue(NoxRealInterval{1.0 + 5e-15, 2.0 - 5e-15}), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(NoxRealInterval{1.0, 2.0}),
                            NoxValue(NoxRealInterval{1.0, 2.5}), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsEqual_BooleansByCode_AnyEqualsAnyAndNilEqualsNil) {
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxBoolean_Any), NoxValue(NoxBoolean_Any), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxBoolean_Nil), NoxValue(NoxBoolean_Nil), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(NoxTrue), NoxValue(NoxFalse), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsEqual_UndefinedPairSetsBadOperandTypeAndIsFalse) {
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(1.0), NoxValue(NoxTrue), kTol));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType);
    env.ClearError();
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(), NoxValue(), kTol));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType);
}

TEST_F(ValueSetOperations, IsEqual_ListNeverEqualsRangeWithTheSameMembers) {
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(IntList({1, 2, 3})), NoxValue(IntRange(1, 3)), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(IntRange(1, 3)), NoxValue(IntList({1, 2, 3})), kTol));
    EXPECT_FALSE(
        NoxIsEqual(env, NoxValue(RealList({1.0, 3.0})), NoxValue(RealRange(1.0, 3.0)), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsEqual_RangesWithEqualHullsAreEqual) {
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(IntRange(1, 3)), NoxValue(IntRange(1, 3)), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(IntRange(0, 100)), NoxValue(IntRange(0, 100)), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(IntRange(0, 100)), NoxValue(IntRange(0, 99)), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(RealRange(0.5, 9.5)),
                           NoxValue(RealRange(0.5 + 5e-15, 9.5)), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(RealRange(0.5, 9.5)), NoxValue(RealRange(0.5, 9.0)), kTol));
}

TEST_F(ValueSetOperations, IsEqual_OperandOfAnotherKindIsConvertedAndCorrected) {
    // [1, 3] becomes the range 1..3, which correction turns into the list {1, 2, 3}.
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(NoxIntegerInterval{1, 3}),
                           NoxValue(IntList({1, 2, 3})), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(IntList({7})), NoxValue(7), kTol));
    // A wide interval stays a range and equals a range of the same hull.
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(IntRange(0, 100)), NoxValue(NoxIntegerInterval{0, 100}), kTol));
    EXPECT_TRUE(
        NoxIsEqual(env, NoxValue(RealRange(0.5, 2.5)), NoxValue(NoxRealInterval{0.5, 2.5}), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(RealList({2.5})), NoxValue(2.5), kTol));
}

// Every pair of representations, integer and real.
TEST_F(ValueSetOperations, IsEqual_EveryEnumerationRepresentationPair) {
    const NoxEnumRep reps[4] = {NoxEnumList, NoxEnumRange, NoxEnumAny, NoxEnumNil};
    auto intOf = [](NoxEnumRep r) {
        return r == NoxEnumList ? IntList({1, 60, 150})
                                : r == NoxEnumRange ? IntRange(0, 100) : NoxIntegerEnum(r);
    };
    auto realOf = [](NoxEnumRep r) {
        return r == NoxEnumList ? RealList({0.5, 60.5})
                                : r == NoxEnumRange ? RealRange(0.0, 100.0) : NoxRealEnum(r);
    };
    for (NoxEnumRep p : reps)
        for (NoxEnumRep q : reps) {
            SCOPED_TRACE(testing::Message() << "p " << p << " q " << q);
            // The same sample for both sides: equal exactly when the states agree.
            EXPECT_EQ(NoxIsEqual(env, NoxValue(intOf(p)), NoxValue(intOf(q)), kTol), p == q);
            EXPECT_EQ(NoxIsEqual(env, NoxValue(realOf(p)), NoxValue(realOf(q)), kTol), p == q);
        }
    EXPECT_EQ(env.GetError(), 0);
    // Lists differing in size or in an entry.
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(IntList({1, 2})), NoxValue(IntList({1, 2, 3})), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(IntList({1, 2})), NoxValue(IntList({1, 3})), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(IntList({})), NoxValue(IntList({})), kTol));
    EXPECT_TRUE(NoxIsEqual(env, NoxValue(RealList({1.0, 2.0})),
                           NoxValue(RealList({1.0 + 5e-15, 2.0 - 5e-15})), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(RealList({1.0, 2.0})), NoxValue(RealList({1.0, 2.1})), kTol));
    EXPECT_FALSE(NoxIsEqual(env, NoxValue(RealList({1.0})), NoxValue(RealList({1.0, 2.0})), kTol));
}

// ======================================================================================
// Containment
// ======================================================================================

TEST_F(ValueSetOperations, Contains_SingleKindsAsEquality) {
    EXPECT_TRUE(NoxContains(env, NoxValue(3), NoxValue(3), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(3), NoxValue(4), kTol));
    EXPECT_TRUE(NoxContains(env, NoxValue(3.0), NoxValue(3.0 + 5e-15), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(3.0), NoxValue(3.5), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Contains_IntervalsByHull) {
    EXPECT_TRUE(NoxContains(env, NoxValue(NoxIntegerInterval{1, 5}), NoxValue(3), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(NoxIntegerInterval{1, 5}), NoxValue(6), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(3), NoxValue(NoxIntegerInterval{1, 5}), kTol));
    EXPECT_TRUE(NoxContains(env, NoxValue(NoxRealInterval{1.0, 2.0}),
                            NoxValue(NoxRealInterval{1.0 - 5e-15, 2.0}), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(NoxRealInterval{1.0, 2.0}),
                             NoxValue(NoxRealInterval{0.5, 2.0}), kTol));
    // An integer interval with a boolean: NoxTrue is [1, 1].
    EXPECT_TRUE(NoxContains(env, NoxValue(NoxIntegerInterval{0, 5}), NoxValue(NoxTrue), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Contains_ListWithGapsContainsAnythingInItsHull) {
    EXPECT_TRUE(NoxContains(env, NoxValue(IntList({1, 5})), NoxValue(3), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(IntList({1, 5})), NoxValue(6), kTol));
    EXPECT_TRUE(NoxContains(env, NoxValue(RealList({1.0, 5.0})), NoxValue(2.5), kTol));
    EXPECT_FALSE(NoxContains(env, NoxValue(RealList({1.0, 5.0})), NoxValue(5.5), kTol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Contains_BooleansAndUndefinedPairsSetBadOperandType) {
    EXPECT_FALSE(NoxContains(env, NoxValue(NoxBoolean_Any), NoxValue(NoxTrue), kTol));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType);
    env.ClearError();
    EXPECT_FALSE(NoxContains(env, NoxValue(NoxRealInterval{0.0, 1.0}), NoxValue(NoxTrue), kTol));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType);
    env.ClearError();
    EXPECT_FALSE(NoxContains(env, NoxValue(), NoxValue(1), kTol));
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType);
}

// ======================================================================================
// Indefiniteness
// ======================================================================================

TEST_F(ValueSetOperations, IsIndefinite_ByOwnKind) {
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxSingleInteger_Any)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(NoxMaxInteger)));
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxSingleReal_Any)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(NoxMaxReal))); // not above the limit
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxInteger_Any)));
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxIntegerInterval{INT_MIN, INT_MAX})));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(NoxIntegerInterval{-NoxMaxInteger, NoxMaxInteger - 1})));
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxReal_Any)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(NoxRealInterval{-NoxMaxReal, 0.0})));
    EXPECT_TRUE(NoxIsIndefinite(env, IntEnumValue(NoxEnumAny)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(IntRange(-NoxMaxInteger, NoxMaxInteger))));
    EXPECT_TRUE(NoxIsIndefinite(env, RealEnumValue(NoxEnumAny)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(RealList({1.0}))));
    EXPECT_TRUE(NoxIsIndefinite(env, NoxValue(NoxBoolean_Any)));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(NoxTrue)));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, IsIndefinite_UndefinedValueIsFalseWithoutError) {
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue()));
    EXPECT_FALSE(NoxIsIndefinite(env, NoxValue(static_cast<NoxValueType>(9))));
    EXPECT_EQ(env.GetError(), 0);
}

// ======================================================================================
// Intersection
// ======================================================================================

TEST_F(ValueSetOperations, Intersect_EqualIntegersLeaveAUnchanged) {
    NoxValue a(3);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(3), kTol));
    EXPECT_EQ(a.GetType(), NoxIntegerType);
    EXPECT_EQ(a.GetAsInteger(), 3);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_DifferentIntegersGiveTheEmptyIntegerAndReportChange) {
    NoxValue a(3);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(4), kTol));
    EXPECT_EQ(a.GetType(), NoxIntegerType);
    EXPECT_EQ(a.GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_RealsWithinTolAreKept_OthersGiveTheEmptyReal) {
    NoxValue a(1.0);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(1.0 + 5e-15), kTol));
    EXPECT_EQ(a.GetAsReal(), 1.0);
    EXPECT_EQ(env.GetError(), 0);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(2), kTol));
    EXPECT_EQ(a.GetType(), NoxRealType);
    EXPECT_EQ(a.GetAsReal(), NoxSingleReal_Nil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_RealWithBooleanSetsBadOperandType) {
    NoxValue a(1.5);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxTrue), kTol));
    // The result of the undefined pair is an undefined value, which counts as empty.
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
    EXPECT_EQ(a.GetType(), NoxUndefinedType);
}

TEST_F(ValueSetOperations, Intersect_IndefiniteBNeverChangesA) {
    NoxValue a(NoxIntegerInterval{1, 5});
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxInteger_Any), kTol));
    ExpectIntegerInterval(a, 1, 5);
    NoxValue r(2.5);
    EXPECT_FALSE(NoxIntersect(env, r, NoxValue(NoxSingleReal_Any), kTol));
    EXPECT_EQ(r.GetAsReal(), 2.5);
    NoxValue l(IntList({1, 2}));
    EXPECT_FALSE(NoxIntersect(env, l, RealEnumValue(NoxEnumAny), kTol));
    ExpectIntList(l, {1, 2});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_IndefiniteAAssignsBIntoItsKind) {
    NoxValue a(NoxInteger_Any);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(4), kTol));
    ExpectIntegerInterval(a, 4, 4);
    NoxValue b(NoxBoolean_Any);
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(NoxIntegerInterval{2, 3}), kTol));
    ExpectBoolean(b, NoxTrue);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_IndefiniteAWithIndefiniteBReportsNoChange) {
    NoxValue a(NoxReal_Any);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxSingleReal_Any), kTol));
    ExpectRealInterval(a, -NoxMaxReal, NoxMaxReal);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_IndefiniteAAssignedAnEmptyConversionReportsEmpty) {
    // 2.5 holds no integer: assigned into the integer interval it is the empty interval.
    NoxValue a(NoxInteger_Any);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(2.5), kTol));
    EXPECT_TRUE(a.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_EmptyBIsAssignedAndReportsEmpty) {
    NoxValue a(NoxIntegerInterval{1, 5});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxInteger_Nil), kTol));
    EXPECT_TRUE(a.IsEmpty(env));
    EXPECT_EQ(a.GetType(), NoxIntegerIntervalType);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_UndefinedBCountsAsEmptyAndIsAssigned) {
    // An undefined value reads as the whole line in an interval kind.
    NoxValue a(NoxIntegerInterval{1, 5});
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(), kTol));
    ExpectIntegerInterval(a, -NoxMaxInteger, NoxMaxInteger);
    EXPECT_EQ(env.GetError(), 0);
}

int g_reportLine = 0;
void RecordLine(const char *, const char *, int line) { g_reportLine = line; }

TEST_F(ValueSetOperations, Intersect_UndefinedBIntoSingleIntegerGoesThroughTheConversion) {
    // Assigning the undefined b into a single integer is the integer conversion of an
    // undefined value: it reports to the assertion hook and gives 0.
    const NoxAssertionHook previous = NoxSetAssertionHook(&RecordLine);
    g_reportLine = 0;
    NoxValue a(3);
    const unsigned char changed = NoxIntersect(env, a, NoxValue(), kTol);
    NoxSetAssertionHook(previous);
    EXPECT_TRUE(changed);
    EXPECT_EQ(g_reportLine, 461);
    EXPECT_EQ(a.GetType(), NoxIntegerType);
    EXPECT_EQ(a.GetAsInteger(), 0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_EmptyAReportsEmptyAndStays) {
    NoxValue a(NoxSingleInteger_Nil);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(3), kTol));
    EXPECT_EQ(a.GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();
    NoxValue u;
    EXPECT_FALSE(NoxIntersect(env, u, NoxValue(3), kTol));
    EXPECT_EQ(u.GetType(), NoxUndefinedType);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_IntegerIntervalsMeet) {
    NoxValue a(NoxIntegerInterval{1, 5});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{3, 9}), kTol));
    ExpectIntegerInterval(a, 3, 5);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{0, 9}), kTol));
    ExpectIntegerInterval(a, 3, 5);
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{7, 9}), kTol));
    EXPECT_TRUE(a.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_BooleanWithIntegerMeetsAsIntegerInterval) {
    // NoxTrue is [1, 1]: the set is unchanged, but a takes the kind of the pair.
    NoxValue a(NoxTrue);
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{0, 4}), kTol));
    ExpectIntegerInterval(a, 1, 1);
    NoxValue b(NoxTrue);
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(NoxIntegerInterval{2, 4}), kTol));
    EXPECT_TRUE(b.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_RealIntervalsMeetWithAAsReference) {
    NoxValue a(NoxRealInterval{0.0, 10.0});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxRealInterval{5.0, 20.0}), kTol));
    ExpectRealInterval(a, 5.0, 10.0);
    // A bound of b within the tolerance of a's bound gives way to it: no change.
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxRealInterval{5.0 + 5e-15, 12.0}), kTol));
    ExpectRealInterval(a, 5.0, 10.0);
    // An integer meets a real interval as a real interval: the same set, in the
    // pair's kind.
    NoxValue i(3);
    EXPECT_FALSE(NoxIntersect(env, i, NoxValue(NoxRealInterval{2.5, 3.5}), kTol));
    ExpectRealInterval(i, 3.0, 3.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_ResultTakesTheKindOfThePair) {
    // The end of the intersection copies the result into a, kind included.
    NoxValue a(NoxIntegerInterval{0, 10});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxRealInterval{2.5, 3.5}), kTol));
    ExpectRealInterval(a, 2.5, 3.5);
    NoxValue b(NoxTrue);
    EXPECT_FALSE(NoxIntersect(env, b, NoxValue(IntList({1, 2})), kTol));
    ExpectIntegerInterval(b, 1, 1);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_IntegerEnumerationsByRepresentation) {
    NoxValue a(IntList({1, 60, 150}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(IntList({60, 70, 300})), kTol));
    ExpectIntList(a, {60});

    NoxValue b(IntList({1, 60, 150}));
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(IntRange(0, 100)), kTol));
    ExpectIntList(b, {1, 60});

    NoxValue c(IntRange(0, 100));
    EXPECT_TRUE(NoxIntersect(env, c, NoxValue(IntList({60, 70, 300})), kTol));
    ExpectIntList(c, {60, 70});

    NoxValue d(IntRange(0, 100));
    EXPECT_TRUE(NoxIntersect(env, d, NoxValue(IntRange(50, 200)), kTol));
    ExpectIntRange(d, 50, 100); // width 50 is not below the maximum size 50

    NoxValue e(IntRange(0, 100));
    EXPECT_TRUE(NoxIntersect(env, e, NoxValue(IntRange(97, 200)), kTol));
    ExpectIntList(e, {97, 98, 99, 100}); // a short range is corrected into its list
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_IntegerListsWithNothingInCommonAreEmpty) {
    NoxValue a(IntList({1, 3}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(IntList({2, 4})), kTol));
    EXPECT_TRUE(a.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();
    // Filtering by a range between two entries leaves nothing.
    NoxValue b(IntList({1, 500}));
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(IntRange(100, 200)), kTol));
    EXPECT_TRUE(b.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_EnumerationWithSingleAndIntervalKinds) {
    NoxValue a(IntList({1, 3, 5}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{2, 9}), kTol));
    ExpectIntList(a, {3, 5});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(5), kTol));
    ExpectIntList(a, {5});
    NoxValue i(4);
    EXPECT_FALSE(NoxIntersect(env, i, NoxValue(IntList({2, 4})), kTol)); // {4} equals 4
    ExpectIntList(i, {4});
    NoxValue j(3);
    EXPECT_TRUE(NoxIntersect(env, j, NoxValue(IntList({2, 4})), kTol));
    EXPECT_EQ(j.GetType(), NoxIntegerEnumType);
    EXPECT_TRUE(j.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_RealEnumerationsMatchWithinTolKeepingAsEntries) {
    NoxValue a(RealList({1.0, 2.0, 4.0}));
    const double nearOne = 1.0 + 5e-15;
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(RealList({nearOne, 3.0, 4.0})), kTol));
    ExpectRealList(a, {1.0, 4.0});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_RealListFilteredToTheRangeWidenedByTol) {
    const double justBelow = 1.0 - 5e-15;
    const double justAbove = 3.0 + 5e-15;
    NoxValue a(RealList({0.5, justBelow, 2.0, justAbove, 4.0}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(RealRange(1.0, 3.0)), kTol));
    ExpectRealList(a, {justBelow, 2.0, justAbove});

    NoxValue b(RealRange(1.0, 3.0));
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(RealList({0.5, justBelow, 2.0, 4.0})), kTol));
    ExpectRealList(b, {justBelow, 2.0});

    NoxValue c(RealRange(0.0, 100.0));
    EXPECT_TRUE(NoxIntersect(env, c, NoxValue(RealRange(50.0, 200.0)), kTol));
    ExpectRealRange(c, 50.0, 100.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_RealEnumerationMeetsIntegerKindsThroughTheirIntegers) {
    // [1, 3] takes part as the integers {1, 2, 3}, so 1.5 is not kept.
    NoxValue a(RealList({1.5, 2.0}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{1, 3}), kTol));
    ExpectRealList(a, {2.0});
    // A real interval takes part as a real range, so 1.5 is kept.
    NoxValue b(RealList({1.5, 2.0, 3.5}));
    EXPECT_TRUE(NoxIntersect(env, b, NoxValue(NoxRealInterval{1.0, 3.0}), kTol));
    ExpectRealList(b, {1.5, 2.0});
    // An integer enumeration meeting a real interval gives a real enumeration.
    NoxValue c(IntList({1, 2, 5}));
    EXPECT_TRUE(NoxIntersect(env, c, NoxValue(NoxRealInterval{0.5, 2.5}), kTol));
    ExpectRealList(c, {1.0, 2.0});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_NilEnumerationReachedAfterConversion) {
    // A real interval inverted by less than NoxAbsPrecision is not empty as a value, but
    // its range corrects to nil: the enumeration intersection then gives nil.
    const NoxRealInterval barely{0.5, 0.5 - 5e-15};
    NoxValue a(RealList({0.5}));
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(barely), kTol));
    EXPECT_EQ(a.GetRealEnum().GetRep(), NoxEnumNil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();
    // As a real enumeration a itself reads as nil, so the result equals it: no change.
    NoxValue b(barely);
    EXPECT_FALSE(NoxIntersect(env, b, NoxValue(RealList({0.5})), kTol));
    EXPECT_EQ(b.GetRealEnum().GetRep(), NoxEnumNil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// Every pair of representations through values; any and nil operands take the value
// level's shortcuts (empty and indefinite), with the same outcome as the enumeration rules.
TEST_F(ValueSetOperations, Intersect_IntegerEnumerationRepresentationPairsWithAnyOrNil) {
    const std::vector<NoxValue> definite = {NoxValue(IntList({1, 60})), NoxValue(IntRange(0, 100))};
    for (const NoxValue &x : definite) {
        NoxValue a(x);
        EXPECT_FALSE(NoxIntersect(env, a, IntEnumValue(NoxEnumAny), kTol));
        EXPECT_TRUE(NoxIsEqual(env, a, x, kTol));
        NoxValue b = IntEnumValue(NoxEnumAny);
        EXPECT_TRUE(NoxIntersect(env, b, x, kTol));
        EXPECT_TRUE(NoxIsEqual(env, b, x, kTol));
        EXPECT_EQ(env.GetError(), 0);
        NoxValue c(x);
        EXPECT_TRUE(NoxIntersect(env, c, IntEnumValue(NoxEnumNil), kTol));
        EXPECT_EQ(c.GetIntegerEnum().GetRep(), NoxEnumNil);
        EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
        env.ClearError();
        NoxValue d = IntEnumValue(NoxEnumNil);
        EXPECT_FALSE(NoxIntersect(env, d, x, kTol));
        EXPECT_EQ(d.GetIntegerEnum().GetRep(), NoxEnumNil);
        EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
        env.ClearError();
    }
    NoxValue any = IntEnumValue(NoxEnumAny);
    EXPECT_FALSE(NoxIntersect(env, any, IntEnumValue(NoxEnumAny), kTol));
    EXPECT_EQ(any.GetIntegerEnum().GetRep(), NoxEnumAny);
    EXPECT_TRUE(NoxIntersect(env, any, IntEnumValue(NoxEnumNil), kTol));
    EXPECT_EQ(any.GetIntegerEnum().GetRep(), NoxEnumNil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Intersect_RealEnumerationRepresentationPairsWithAnyOrNil) {
    const std::vector<NoxValue> definite = {NoxValue(RealList({0.5, 60.5})),
                                            NoxValue(RealRange(0.0, 100.0))};
    for (const NoxValue &x : definite) {
        NoxValue a(x);
        EXPECT_FALSE(NoxIntersect(env, a, RealEnumValue(NoxEnumAny), kTol));
        EXPECT_TRUE(NoxIsEqual(env, a, x, kTol));
        NoxValue b = RealEnumValue(NoxEnumAny);
        EXPECT_TRUE(NoxIntersect(env, b, x, kTol));
        EXPECT_TRUE(NoxIsEqual(env, b, x, kTol));
        EXPECT_EQ(env.GetError(), 0);
        NoxValue c(x);
        EXPECT_TRUE(NoxIntersect(env, c, RealEnumValue(NoxEnumNil), kTol));
        EXPECT_EQ(c.GetRealEnum().GetRep(), NoxEnumNil);
        EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
        env.ClearError();
    }
}

TEST_F(ValueSetOperations, Intersect_EveryBooleanTableCell) {
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 4; ++y) {
            SCOPED_TRACE(testing::Message() << "a " << x << " b " << y);
            env.ClearError();
            NoxValue a(static_cast<NoxBoolean>(x));
            NoxIntersect(env, a, NoxValue(static_cast<NoxBoolean>(y)), kTol);
            ExpectBoolean(a, kIntersection[x][y]);
            EXPECT_EQ((env.GetError() & NoxErrorEmptyResult) != 0, kIntersection[x][y] == N);
            EXPECT_EQ(env.GetError() & NoxErrorBadOperandType, 0);
        }
}

TEST_F(ValueSetOperations, Intersect_ChangedFlagComparesOldAWithTheResult) {
    NoxValue a(IntList({1, 2, 3}));
    // Correction turns [0, 10] into a list that holds all of a: nothing changes.
    EXPECT_FALSE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{0, 10}), kTol));
    ExpectIntList(a, {1, 2, 3});
    EXPECT_TRUE(NoxIntersect(env, a, NoxValue(NoxIntegerInterval{2, 10}), kTol));
    ExpectIntList(a, {2, 3});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Intersect_EnumerationOutOfMemoryEndsNilWithEmptyResult) {
    NoxValue a(IntList({1, 2, 3}));
    const NoxValue b(IntList({2, 3, 4}));
    unsigned char changed;
    {
        nox_test::AllocationFailure failure(nox_test::AllocationForms::All);
        changed = NoxIntersect(env, a, b, kTol);
    }
    EXPECT_TRUE(changed);
    EXPECT_TRUE(a.IsEmpty(env));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// ======================================================================================
// Union
// ======================================================================================

TEST_F(ValueSetOperations, Unite_DifferentRealsGiveTheIndefiniteReal) {
    NoxValue a(1.0);
    NoxUnite(env, a, NoxValue(2.0), kTol);
    EXPECT_EQ(a.GetType(), NoxRealType);
    EXPECT_EQ(a.GetAsReal(), NoxSingleReal_Any);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_RealsWithinTolLeaveA) {
    NoxValue a(1.0);
    NoxUnite(env, a, NoxValue(1.0 + 1e-15), kTol);
    EXPECT_EQ(a.GetAsReal(), 1.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_IntegersEqualOrIndefinite) {
    NoxValue a(3);
    NoxUnite(env, a, NoxValue(3), kTol);
    EXPECT_EQ(a.GetAsInteger(), 3);
    NoxUnite(env, a, NoxValue(4), kTol);
    EXPECT_EQ(a.GetType(), NoxIntegerType);
    EXPECT_EQ(a.GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_IntervalsGiveTheHull) {
    NoxValue a(NoxIntegerInterval{1, 3});
    NoxUnite(env, a, NoxValue(NoxIntegerInterval{5, 7}), kTol);
    ExpectIntegerInterval(a, 1, 7);
    NoxValue b(NoxIntegerInterval{3, 5});
    NoxUnite(env, b, NoxValue(NoxTrue), kTol);
    ExpectIntegerInterval(b, 1, 5);
    NoxValue c(NoxRealInterval{0.5, 1.5});
    NoxUnite(env, c, NoxValue(NoxRealInterval{2.5, 3.5}), kTol);
    ExpectRealInterval(c, 0.5, 3.5);
    NoxValue d(2);
    NoxUnite(env, d, NoxValue(NoxRealInterval{2.5, 3.5}), kTol);
    ExpectRealInterval(d, 2.0, 3.5);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_EmptyBOrIndefiniteALeavesA) {
    NoxValue a(NoxIntegerInterval{1, 3});
    NoxUnite(env, a, NoxValue(NoxInteger_Nil), kTol);
    ExpectIntegerInterval(a, 1, 3);
    NoxUnite(env, a, NoxValue(), kTol); // undefined counts as empty
    ExpectIntegerInterval(a, 1, 3);
    NoxValue b(NoxBoolean_Any);
    NoxUnite(env, b, NoxValue(NoxFalse), kTol);
    ExpectBoolean(b, NoxBoolean_Any);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_EmptyAOrIndefiniteBCopiesB) {
    // The copy brings b's kind: the union of nothing and 2.5 is 2.5, not its integer.
    NoxValue a(NoxSingleInteger_Nil);
    NoxUnite(env, a, NoxValue(2.5), kTol);
    EXPECT_EQ(a.GetType(), NoxRealType);
    EXPECT_EQ(a.GetAsReal(), 2.5);
    NoxValue u;
    NoxUnite(env, u, NoxValue(IntList({1, 2})), kTol);
    ExpectIntList(u, {1, 2});
    NoxValue c(NoxIntegerInterval{1, 3});
    NoxUnite(env, c, NoxValue(NoxReal_Any), kTol);
    ExpectRealInterval(c, -NoxMaxReal, NoxMaxReal);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_RealWithBooleanSetsBadOperandType) {
    NoxValue a(NoxRealInterval{0.0, 1.0});
    NoxUnite(env, a, NoxValue(NoxFalse), kTol);
    EXPECT_EQ(env.GetError(), NoxErrorBadOperandType | NoxErrorEmptyResult);
    EXPECT_EQ(a.GetType(), NoxUndefinedType);
}

TEST_F(ValueSetOperations, Unite_IntegerEnumerationsByRepresentation) {
    NoxValue a(IntList({1, 60, 150}));
    NoxUnite(env, a, NoxValue(IntList({60, 70, 300})), kTol);
    ExpectIntList(a, {1, 60, 70, 150, 300});

    NoxValue b(IntList({1, 60, 150}));
    NoxUnite(env, b, NoxValue(IntRange(0, 100)), kTol);
    ExpectIntRange(b, 0, 150);

    NoxValue c(IntRange(0, 100));
    NoxUnite(env, c, NoxValue(IntList({60, 70, 300})), kTol);
    ExpectIntRange(c, 0, 300);

    NoxValue d(IntRange(0, 100));
    NoxUnite(env, d, NoxValue(IntRange(50, 200)), kTol);
    ExpectIntRange(d, 0, 200);

    // A union of short ranges is corrected into its list.
    NoxValue e(IntRange(1, 2));
    NoxUnite(env, e, NoxValue(IntRange(5, 6)), kTol);
    ExpectIntList(e, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_IntegerEnumerationRepresentationPairsWithAnyOrNil) {
    const std::vector<NoxValue> definite = {NoxValue(IntList({1, 60})), NoxValue(IntRange(0, 100))};
    for (const NoxValue &x : definite) {
        NoxValue a(x);
        NoxUnite(env, a, IntEnumValue(NoxEnumAny), kTol);
        EXPECT_EQ(a.GetIntegerEnum().GetRep(), NoxEnumAny);
        NoxValue b = IntEnumValue(NoxEnumAny);
        NoxUnite(env, b, x, kTol);
        EXPECT_EQ(b.GetIntegerEnum().GetRep(), NoxEnumAny);
        NoxValue c(x);
        NoxUnite(env, c, IntEnumValue(NoxEnumNil), kTol);
        EXPECT_TRUE(NoxIsEqual(env, c, x, kTol));
        NoxValue d = IntEnumValue(NoxEnumNil);
        NoxUnite(env, d, x, kTol);
        EXPECT_TRUE(NoxIsEqual(env, d, x, kTol));
    }
    NoxValue nil = IntEnumValue(NoxEnumNil);
    NoxUnite(env, nil, IntEnumValue(NoxEnumNil), kTol);
    EXPECT_EQ(nil.GetIntegerEnum().GetRep(), NoxEnumNil);
    NoxUnite(env, nil, IntEnumValue(NoxEnumAny), kTol);
    EXPECT_EQ(nil.GetIntegerEnum().GetRep(), NoxEnumAny);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_IntegerListsBeyondTheMaximumSizeBecomeTheirRange) {
    env.SetMaxEnumSize(3);
    NoxValue a(IntList({1, 2}));
    NoxUnite(env, a, NoxValue(IntList({10, 20})), kTol);
    ExpectIntRange(a, 1, 20);
}

TEST_F(ValueSetOperations, Unite_RealEnumerationsInsertWithinTol) {
    NoxValue a(RealList({1.0, 2.0}));
    NoxUnite(env, a, NoxValue(RealList({2.0 + 5e-15, 3.0})), kTol);
    ExpectRealList(a, {1.0, 2.0, 3.0});
    // Insertion compares with the one neighbour its search ends on (2.0 here), so a
    // value within tol of the other neighbour enters.
    const double nearOne = 1.0 + 5e-15;
    NoxValue n(RealList({1.0, 2.0}));
    NoxUnite(env, n, NoxValue(RealList({nearOne})), kTol);
    ExpectRealList(n, {1.0, nearOne, 2.0});

    NoxValue b(RealList({0.5, 150.5}));
    NoxUnite(env, b, NoxValue(RealRange(0.0, 100.0)), kTol);
    ExpectRealRange(b, 0.0, 150.5);

    NoxValue c(RealRange(0.0, 100.0));
    NoxUnite(env, c, NoxValue(RealRange(50.0, 200.0)), kTol);
    ExpectRealRange(c, 0.0, 200.0);

    NoxValue d(RealRange(0.0, 100.0));
    NoxUnite(env, d, NoxValue(RealList({-1.5, 2.0})), kTol);
    ExpectRealRange(d, -1.5, 100.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_RealEnumerationWithIntegerKindsThroughTheirIntegers) {
    NoxValue a(RealList({0.5}));
    NoxUnite(env, a, NoxValue(NoxIntegerInterval{1, 3}), kTol);
    ExpectRealList(a, {0.5, 1.0, 2.0, 3.0});
    NoxValue b(RealList({0.5}));
    NoxUnite(env, b, NoxValue(NoxRealInterval{1.0, 3.0}), kTol);
    ExpectRealRange(b, 0.5, 3.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_RealEnumerationRepresentationPairsWithAnyOrNil) {
    const std::vector<NoxValue> definite = {NoxValue(RealList({0.5, 60.5})),
                                            NoxValue(RealRange(0.0, 100.0))};
    for (const NoxValue &x : definite) {
        NoxValue a(x);
        NoxUnite(env, a, RealEnumValue(NoxEnumAny), kTol);
        EXPECT_EQ(a.GetRealEnum().GetRep(), NoxEnumAny);
        NoxValue c(x);
        NoxUnite(env, c, RealEnumValue(NoxEnumNil), kTol);
        EXPECT_TRUE(NoxIsEqual(env, c, x, kTol));
        NoxValue d = RealEnumValue(NoxEnumNil);
        NoxUnite(env, d, x, kTol);
        EXPECT_TRUE(NoxIsEqual(env, d, x, kTol));
    }
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Unite_EveryBooleanTableCell) {
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 4; ++y) {
            SCOPED_TRACE(testing::Message() << "a " << x << " b " << y);
            env.ClearError();
            NoxValue a(static_cast<NoxBoolean>(x));
            NoxUnite(env, a, NoxValue(static_cast<NoxBoolean>(y)), kTol);
            ExpectBoolean(a, kUnion[x][y]);
            EXPECT_EQ(env.GetError(), 0);
        }
}

// ======================================================================================
// Exclusion
// ======================================================================================

TEST_F(ValueSetOperations, Exclude_InnerValueOfIntegerIntervalIsNotRemoved) {
    NoxValue a(NoxIntegerInterval{3, 7});
    NoxExclude(env, a, NoxValue(5), kTol);
    ExpectIntegerInterval(a, 3, 7);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_EndOfIntegerIntervalMovesInwards) {
    NoxValue a(NoxIntegerInterval{3, 7});
    NoxExclude(env, a, NoxValue(7), kTol);
    ExpectIntegerInterval(a, 3, 6);
    NoxExclude(env, a, NoxValue(3), kTol);
    ExpectIntegerInterval(a, 4, 6);
    NoxExclude(env, a, NoxValue(NoxTrue), kTol); // a boolean converts to an integer
    ExpectIntegerInterval(a, 4, 6);
    NoxValue b(NoxIntegerInterval{1, 4});
    NoxExclude(env, b, NoxValue(NoxTrue), kTol);
    ExpectIntegerInterval(b, 2, 4);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_OnlyValueOfIntegerIntervalGivesInvertedPairAndEmpty) {
    NoxValue a(NoxIntegerInterval{3, 3});
    NoxExclude(env, a, NoxValue(3), kTol);
    ExpectIntegerInterval(a, 4, 2);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Exclude_IntegerIntervalIgnoresRealsAndIntervals) {
    NoxValue a(NoxIntegerInterval{3, 7});
    NoxExclude(env, a, NoxValue(3.0), kTol); // a real is not convertible to an integer
    ExpectIntegerInterval(a, 3, 7);
    NoxExclude(env, a, NoxValue(NoxIntegerInterval{3, 3}), kTol);
    ExpectIntegerInterval(a, 3, 7);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_EndsOfTheWholeIntegerLineMoveInwards) {
    NoxValue a(NoxInteger_Any);
    NoxExclude(env, a, NoxValue(NoxMaxInteger), kTol);
    NoxExclude(env, a, NoxValue(-NoxMaxInteger), kTol);
    ExpectIntegerInterval(a, -NoxMaxInteger + 1, NoxMaxInteger - 1);
    // The markers are not exact values: they exclude nothing.
    NoxExclude(env, a, NoxValue(NoxSingleInteger_Nil), kTol);
    NoxExclude(env, a, NoxValue(NoxSingleInteger_Any), kTol);
    ExpectIntegerInterval(a, -NoxMaxInteger + 1, NoxMaxInteger - 1);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_RealIntervalEndPushedPastTheScaledToleranceBand) {
    const double tol = 1e-14;
    NoxValue a(NoxRealInterval{0.5, 5.0});
    NoxExclude(env, a, NoxValue(0.5), tol);
    ExpectRealInterval(a, 0.5 + 1.01 * tol, 5.0); // |0.5| <= 1: the tolerance itself

    NoxValue b(NoxRealInterval{2.0, 5.0});
    NoxExclude(env, b, NoxValue(2.0), tol);
    ExpectRealInterval(b, 2.0 + 1.01 * (2.0 * tol), 5.0);

    NoxValue c(NoxRealInterval{0.0, 200.0});
    NoxExclude(env, c, NoxValue(200.0), tol);
    ExpectRealInterval(c, 0.0, 200.0 - 1.01 * (200.0 * tol));

    // No convertibility test: an integer excludes its real.
    NoxValue d(NoxRealInterval{2.0, 5.0});
    NoxExclude(env, d, NoxValue(5), tol);
    ExpectRealInterval(d, 2.0, 5.0 - 1.01 * (5.0 * tol));
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_RealIntervalProximityUsesAbsolutePrecisionNotTol) {
    const double tol = 1e-6;
    // Within tol of the lower end but not within NoxAbsPrecision: nothing moves.
    NoxValue a(NoxRealInterval{0.5, 5.0});
    NoxExclude(env, a, NoxValue(0.5 + 1e-10), tol);
    ExpectRealInterval(a, 0.5, 5.0);
    // Within NoxAbsPrecision: the end moves by 1.01 * tol from x.
    const double x = 0.5 + 5e-15;
    NoxExclude(env, a, NoxValue(x), tol);
    ExpectRealInterval(a, x + 1.01 * tol, 5.0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_PointRealIntervalBecomesEmpty) {
    NoxValue a(NoxRealInterval{2.0, 2.0});
    NoxExclude(env, a, NoxValue(2.0), 1e-3);
    ExpectRealInterval(a, 2.0 + 1.01 * (2.0 * 1e-3), 2.0 - 1.01 * (2.0 * 1e-3));
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Exclude_NotExactBChangesNothingAndSetsNoError) {
    NoxValue a(NoxIntegerInterval{3, 7});
    NoxExclude(env, a, NoxValue(NoxIntegerInterval{3, 4}), kTol);
    ExpectIntegerInterval(a, 3, 7);
    NoxValue e(NoxSingleInteger_Nil);
    NoxExclude(env, e, NoxValue(NoxRealInterval{1.0, 2.0}), kTol);
    EXPECT_EQ(e.GetAsInteger(), NoxSingleInteger_Nil);
    NoxValue b(NoxTrue);
    NoxExclude(env, b, NoxValue(NoxBoolean_Any), kTol);
    ExpectBoolean(b, NoxTrue);
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_SingleValues) {
    NoxValue a(3);
    NoxExclude(env, a, NoxValue(4), kTol);
    EXPECT_EQ(a.GetAsInteger(), 3);
    NoxExclude(env, a, NoxValue(3.0), kTol); // a real does not convert to an integer
    EXPECT_EQ(a.GetAsInteger(), 3);
    EXPECT_EQ(env.GetError(), 0);
    NoxExclude(env, a, NoxValue(3), kTol);
    EXPECT_EQ(a.GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();

    NoxValue r(2.0);
    NoxExclude(env, r, NoxValue(2.5), kTol);
    EXPECT_EQ(r.GetAsReal(), 2.0);
    EXPECT_EQ(env.GetError(), 0);
    NoxExclude(env, r, NoxValue(2), kTol); // an integer converts to a real
    EXPECT_EQ(r.GetAsReal(), NoxSingleReal_Nil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

TEST_F(ValueSetOperations, Exclude_EnumerationsRemoveTheValue) {
    NoxValue a(IntList({1, 2, 3}));
    NoxExclude(env, a, NoxValue(2), kTol);
    ExpectIntList(a, {1, 3});
    NoxExclude(env, a, NoxValue(2.0), kTol); // not convertible to an integer
    ExpectIntList(a, {1, 3});
    EXPECT_EQ(env.GetError(), 0);
    NoxValue s(IntList({5}));
    NoxExclude(env, s, NoxValue(5), kTol);
    EXPECT_EQ(s.GetIntegerEnum().GetRep(), NoxEnumNil);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
    env.ClearError();

    NoxValue r(RealList({1.0, 2.0, 3.0}));
    NoxExclude(env, r, NoxValue(2.0 + 5e-15), kTol);
    ExpectRealList(r, {1.0, 3.0});
    NoxExclude(env, r, NoxValue(1), kTol); // an integer converts to a real
    ExpectRealList(r, {3.0});
    EXPECT_EQ(env.GetError(), 0);
}

TEST_F(ValueSetOperations, Exclude_EveryBooleanTableCell) {
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 4; ++y) {
            SCOPED_TRACE(testing::Message() << "a " << x << " b " << y);
            env.ClearError();
            NoxValue a(static_cast<NoxBoolean>(x));
            NoxExclude(env, a, NoxValue(static_cast<NoxBoolean>(y)), kTol);
            ExpectBoolean(a, kExclusion[x][y]);
            // Any and nil are not exact: they change nothing and report nothing.
            const bool exact = y < 2;
            EXPECT_EQ(env.GetError(), exact && kExclusion[x][y] == N ? NoxErrorEmptyResult : 0);
        }
    // An integer excludes its truth value.
    NoxValue a(NoxTrue);
    NoxExclude(env, a, NoxValue(5), kTol);
    ExpectBoolean(a, NoxBoolean_Nil);
}

TEST_F(ValueSetOperations, Exclude_FromUndefinedValueReportsEmpty) {
    NoxValue a;
    NoxExclude(env, a, NoxValue(1), kTol);
    EXPECT_EQ(a.GetType(), NoxUndefinedType);
    EXPECT_EQ(env.GetError(), NoxErrorEmptyResult);
}

// ======================================================================================
// The value's members
// ======================================================================================

TEST_F(ValueSetOperations, Members_UseAbsolutePrecisionWhateverTheEnvironmentTolerance) {
    env.SetTolerance(0.5);
    const NoxValue one(1.0);
    const NoxValue near(1.2);
    EXPECT_TRUE(NoxIsEqual(env, one, near, env.GetTolerance()));
    EXPECT_FALSE(one.IsEqualTo(env, near));
    EXPECT_TRUE(one.IsEqualTo(env, NoxValue(1.0 + 5e-15)));

    NoxValue a(1.0);
    EXPECT_FALSE(a.Intersect(env, NoxValue(1.0 + 5e-15)));
    EXPECT_TRUE(a.Intersect(env, near));
    EXPECT_EQ(a.GetAsReal(), NoxSingleReal_Nil);
    env.ClearError();

    NoxValue u(1.0);
    u.Unite(env, near);
    EXPECT_EQ(u.GetAsReal(), NoxSingleReal_Any);

    NoxValue e(NoxRealInterval{0.5, 5.0});
    e.Exclude(env, NoxValue(0.5));
    ExpectRealInterval(e, 0.5 + 1.01 * 1e-14, 5.0);

    EXPECT_TRUE(NoxValue(NoxReal_Any).IsIndefinite(env));
    EXPECT_FALSE(NoxValue().IsIndefinite(env));
    EXPECT_EQ(env.GetError(), 0);
}

// ======================================================================================
// The result-kind table, every cell
// ======================================================================================

// One definite, non-empty, non-indefinite sample of each kind, chosen so that no two
// samples of single kinds are equal.
NoxValue Sample(int kind) {
    switch (kind) {
    case 1:
        return NoxValue(3);
    case 2:
        return NoxValue(3.5);
    case 3:
        return NoxValue(NoxIntegerInterval{1, 5});
    case 4:
        return NoxValue(NoxRealInterval{0.5, 4.5});
    case 5:
        return NoxValue(IntList({1, 3, 5}));
    case 6:
        return NoxValue(RealList({0.5, 3.0}));
    case 7:
        return NoxValue(NoxTrue);
    default:
        return NoxValue();
    }
}

TEST_F(ValueSetOperations, ResultKindTable_EveryCellThroughTheSetOperations) {
    for (int x = 0; x < 8; ++x)
        for (int y = 0; y < 8; ++y) {
            SCOPED_TRACE(testing::Message() << "a kind " << x << " b kind " << y);
            const int cell = kResultKinds[x][y];
            env.ClearError();
            NoxIsEqual(env, Sample(x), Sample(y), kTol);
            EXPECT_EQ(env.GetError() == NoxErrorBadOperandType, cell == 0);
            env.ClearError();
            NoxContains(env, Sample(x), Sample(y), kTol);
            EXPECT_EQ(env.GetError() == NoxErrorBadOperandType, cell == 0 || cell == 7);
            if (x == 0 || y == 0)
                continue; // an undefined operand is empty: the shortcuts come first
            NoxValue a = Sample(x);
            NoxIntersect(env, a, Sample(y), kTol);
            EXPECT_EQ(a.GetType(), cell);
            NoxValue u = Sample(x);
            NoxUnite(env, u, Sample(y), kTol);
            EXPECT_EQ(u.GetType(), cell);
        }
}

// ======================================================================================
// Allocation
// ======================================================================================

TEST_F(ValueSetOperations, SingleIntervalAndBooleanKindsDoNotAllocate) {
    const std::vector<NoxValue> values = {
        NoxValue(3), NoxValue(3.5), NoxValue(NoxIntegerInterval{1, 5}),
        NoxValue(NoxRealInterval{0.5, 4.5}), NoxValue(NoxTrue), NoxValue(NoxBoolean_Any)};
    for (const NoxValue &x : values)
        for (const NoxValue &y : values) {
            NoxValue a(x);
            NoxValue u(x);
            NoxValue e(x);
            const long before = nox_test::AllocationCount();
            NoxIsEqual(env, x, y, kTol);
            NoxContains(env, x, y, kTol);
            NoxIsIndefinite(env, x);
            NoxIntersect(env, a, y, kTol);
            NoxUnite(env, u, y, kTol);
            NoxExclude(env, e, y, kTol);
            EXPECT_EQ(nox_test::AllocationCount(), before);
        }
}

// ======================================================================================
// Property: random pairs of every kind
// ======================================================================================

class RandomValues {
public:
    explicit RandomValues(unsigned seed) : rng(seed) {}

    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
    double Real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }
    bool OneIn(int n) { return Int(0, n - 1) == 0; }

    int Integer() {
        static const int special[] = {NoxSingleInteger_Any, NoxSingleInteger_Nil, NoxMaxInteger,
                                      -NoxMaxInteger, INT_MIN, 0};
        return OneIn(4) ? special[Int(0, 5)] : Int(-20, 20);
    }

    double RealNumber() {
        static const double special[] = {NoxSingleReal_Any,
                                         NoxSingleReal_Nil,
                                         NoxMaxReal,
                                         -NoxMaxReal,
                                         std::numeric_limits<double>::quiet_NaN(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         0.0};
        if (OneIn(4))
            return special[Int(0, 7)];
        return OneIn(2) ? Int(-20, 20) : Real(-20.0, 20.0);
    }

    NoxIntegerEnum IntegerEnum() {
        switch (Int(0, 4)) {
        case 0:
            return NoxIntegerEnum(NoxEnumAny);
        case 1:
            return NoxIntegerEnum(NoxEnumNil);
        case 2: {
            const int lo = Integer();
            return IntRange(lo, OneIn(3) ? Integer() : Int(-20, 200));
        }
        default: {
            std::vector<int> v;
            const int n = OneIn(3) ? Int(50, 150) : Int(0, 8);
            int x = Int(-30, 10);
            for (int i = 0; i < n; ++i) {
                x += Int(1, 4);
                v.push_back(x);
            }
            if (OneIn(8) && n > 1)
                std::swap(v[0], v[n - 1]); // unsorted, as Set(n, values) allows
            return IntList(v);
        }
        }
    }

    NoxRealEnum RealEnum() {
        switch (Int(0, 4)) {
        case 0:
            return NoxRealEnum(NoxEnumAny);
        case 1:
            return NoxRealEnum(NoxEnumNil);
        case 2: {
            const double lo = RealNumber();
            return RealRange(lo, OneIn(3) ? RealNumber() : lo + Real(-1e-14, 50.0));
        }
        default: {
            std::vector<double> v;
            const int n = OneIn(3) ? Int(50, 150) : Int(0, 8);
            double x = Real(-30.0, 10.0);
            for (int i = 0; i < n; ++i) {
                x += OneIn(4) ? 5e-15 : Real(0.0, 3.0);
                v.push_back(OneIn(3) ? std::round(x) : x);
            }
            return RealList(v);
        }
        }
    }

    NoxValue Value() {
        switch (Int(0, 8)) {
        case 0:
            return NoxValue();
        case 1:
            return NoxValue(Integer());
        case 2:
            return NoxValue(RealNumber());
        case 3:
            return OneIn(4) ? NoxValue(OneIn(2) ? NoxInteger_Any : NoxInteger_Nil)
                            : NoxValue(NoxIntegerInterval{Integer(), Integer()});
        case 4:
            return OneIn(4) ? NoxValue(OneIn(2) ? NoxReal_Any : NoxReal_Nil)
                            : NoxValue(NoxRealInterval{RealNumber(), RealNumber()});
        case 5:
            return NoxValue(IntegerEnum());
        case 6:
            return NoxValue(RealEnum());
        case 7:
            return NoxValue(static_cast<NoxBoolean>(Int(0, 3)));
        default:
            return NoxValue(static_cast<NoxValueType>(9)); // a code outside the kinds
        }
    }

    double Tolerance() {
        static const double tols[] = {1e-14, 1e-9, 0.5};
        return tols[Int(0, 2)];
    }

private:
    std::mt19937 rng;
};

int KindCell(const NoxValue &a, const NoxValue &b) {
    const int x = a.GetType();
    const int y = b.GetType();
    return x >= 0 && x < 8 && y >= 0 && y < 8 ? kResultKinds[x][y] : 0;
}

std::string Describe(const NoxValue &v) {
    std::ostringstream s;
    s << "kind " << v.GetType();
    return s.str();
}

TEST_F(ValueSetOperations, Property_EveryOperationSetsOnlyTheAllowedBits) {
    const unsigned seed = 20240601u;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    RandomValues random(seed);
    for (int iteration = 0; iteration < 30000; ++iteration) {
        const NoxValue a = random.Value();
        const NoxValue b = random.Value();
        const double tol = random.Tolerance();
        const int cell = KindCell(a, b);
        SCOPED_TRACE(testing::Message() << "iteration " << iteration << " a " << Describe(a)
                                        << " b " << Describe(b) << " tol " << tol);

        env.ClearError();
        NoxIsEqual(env, a, b, tol);
        ASSERT_EQ(env.GetError(), cell == 0 ? NoxErrorBadOperandType : 0);

        env.ClearError();
        NoxContains(env, a, b, tol);
        ASSERT_EQ(env.GetError(), cell == 0 || cell == 7 ? NoxErrorBadOperandType : 0);

        env.ClearError();
        NoxIsIndefinite(env, a);
        ASSERT_EQ(env.GetError(), 0);

        env.ClearError();
        NoxValue i(a);
        NoxIntersect(env, i, b, tol);
        const int intersectBits = env.GetError();
        ASSERT_EQ(intersectBits & ~(NoxErrorEmptyResult | NoxErrorBadOperandType), 0);
        ASSERT_TRUE((intersectBits & NoxErrorBadOperandType) == 0 || cell == 0);
        // Whatever the path, the empty-result bit tells whether a ended empty.
        ASSERT_EQ((intersectBits & NoxErrorEmptyResult) != 0, i.IsEmpty(env));

        env.ClearError();
        NoxValue u(a);
        NoxUnite(env, u, b, tol);
        const int uniteBits = env.GetError();
        ASSERT_EQ(uniteBits & ~(NoxErrorEmptyResult | NoxErrorBadOperandType), 0);
        ASSERT_TRUE((uniteBits & NoxErrorBadOperandType) == 0 || cell == 0);
        ASSERT_TRUE((uniteBits & NoxErrorEmptyResult) == 0 || u.IsEmpty(env));

        env.ClearError();
        NoxValue e(a);
        NoxExclude(env, e, b, tol);
        ASSERT_EQ((env.GetError() & NoxErrorEmptyResult) != 0, b.IsExact(env) && e.IsEmpty(env));
        ASSERT_EQ(env.GetError() & ~NoxErrorEmptyResult, 0);

        // The members are the free functions at NoxAbsPrecision.
        NoxEnvironment other;
        ASSERT_EQ(a.IsEqualTo(env, b), NoxIsEqual(other, a, b, NoxAbsPrecision) != 0);
        NoxValue m(a);
        NoxValue f(a);
        ASSERT_EQ(m.Intersect(env, b), NoxIntersect(other, f, b, NoxAbsPrecision) != 0);
        ASSERT_TRUE(m.GetType() == f.GetType());

        // An operand may be the value it narrows.
        NoxValue self(a);
        NoxIntersect(env, self, self, tol);
        NoxValue selfUnion(a);
        NoxUnite(env, selfUnion, selfUnion, tol);
        NoxValue selfExclusion(a);
        NoxExclude(env, selfExclusion, selfExclusion, tol);
    }
}

} // namespace
