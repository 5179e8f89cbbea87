#include <NoxEnum.h>

#include "NoxPrivate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "NoxTestAllocator.h"
#include "NoxTestSupport.h"

// ---- Allocation control ----
//
// The library allocates its arrays with nothrow new. The shared test allocator counts the
// nothrow requests and can refuse them, so that the fallbacks taken when memory runs out
// are observable.

namespace {

using nox_test::AllocationFailure;
using nox_test::AllocationForms;

using nox_test::Bits;
using nox_test::Entries;

// Records built entry by entry, without going through Insert.
NoxIntegerEnum IntList(std::initializer_list<int> entries) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(entries.size()));
    int i = 0;
    for (int v : entries)
        e.Set(i++, v);
    return e;
}

NoxRealEnum RealList(std::initializer_list<double> entries) {
    NoxRealEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(entries.size()));
    int i = 0;
    for (double v : entries)
        e.Set(i++, v);
    return e;
}

NoxIntegerEnum IntRange(int lo, int hi) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetAsIntegerInterval(NoxIntegerInterval{lo, hi});
    return e;
}

NoxRealEnum RealRange(double lo, double hi) {
    NoxRealEnum e(NoxEnumNil);
    e.SetAsRealInterval(NoxRealInterval{lo, hi});
    return e;
}

void ExpectRealEntries(const NoxRealEnum &e, std::initializer_list<double> expected) {
    ASSERT_EQ(e.GetSize(), static_cast<int>(expected.size()));
    int i = 0;
    for (double v : expected) {
        EXPECT_EQ(Bits(e.Get(i)), Bits(v)) << "entry " << i << ": " << e.Get(i) << " vs " << v;
        ++i;
    }
}

NoxEnvironment EnvWithMax(int maxSize) {
    NoxEnvironment env;
    env.SetMaxEnumSize(maxSize);
    return env;
}

using Ints = std::vector<int>;

} // namespace

// =====================================================================================
// Construction and copying
// =====================================================================================

TEST(IntegerEnum, ConstructorMapsListToNilAndRangeToAny) {
    EXPECT_TRUE(NoxIntegerEnum(NoxEnumList).IsNil());
    EXPECT_TRUE(NoxIntegerEnum(NoxEnumRange).IsAny());
    EXPECT_EQ(NoxIntegerEnum(NoxEnumAny).GetRep(), NoxEnumAny);
    EXPECT_EQ(NoxIntegerEnum(NoxEnumNil).GetRep(), NoxEnumNil);
    EXPECT_EQ(NoxIntegerEnum(static_cast<NoxEnumRep>(7)).GetRep(), 7);
    EXPECT_EQ(NoxIntegerEnum(static_cast<NoxEnumRep>(-1)).GetRep(), -1);
    EXPECT_EQ(NoxIntegerEnum(NoxEnumList).GetSize(), 0);
}

TEST(RealEnum, ConstructorStoresStateAsGiven) {
    NoxRealEnum list(NoxEnumList);
    EXPECT_EQ(list.GetRep(), NoxEnumList);
    EXPECT_EQ(list.GetSize(), 0);
    NoxRealEnum range(NoxEnumRange);
    EXPECT_EQ(range.GetRep(), NoxEnumRange);
    EXPECT_EQ(range.GetSize(), 0);
    EXPECT_EQ(NoxRealEnum(NoxEnumAny).GetRep(), NoxEnumAny);
    EXPECT_EQ(NoxRealEnum(NoxEnumNil).GetRep(), NoxEnumNil);
    EXPECT_EQ(NoxRealEnum(static_cast<NoxEnumRep>(9)).GetRep(), 9);
}

TEST(EnumAllocation, ConstructionAllocatesNothing) {
    const long before = nox_test::NothrowRequestCount();
    NoxIntegerEnum a(NoxEnumAny);
    NoxRealEnum b(NoxEnumList);
    NoxIntegerEnum c(a);
    NoxRealEnum d(b);
    EXPECT_EQ(nox_test::NothrowRequestCount(), before);
    EXPECT_EQ(a.GetSize() + b.GetSize() + c.GetSize() + d.GetSize(), 0);
}

TEST(IntegerEnum, CopyIsDeep) {
    NoxIntegerEnum a = IntList({1, 2, 3});
    NoxIntegerEnum b(a);
    b.Set(0, 9);
    b.Insert(7);
    EXPECT_EQ(Entries(a), (Ints{1, 2, 3}));
    EXPECT_EQ(Entries(b), (Ints{9, 2, 3, 7}));
    EXPECT_EQ(b.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, AssignmentCopiesArrayAndState) {
    NoxIntegerEnum a = IntRange(4, 8);
    NoxIntegerEnum b = IntList({1, 2, 3, 5, 6});
    b = a;
    EXPECT_EQ(b.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(b), (Ints{4, 8}));
    a.Set(0, 0);
    EXPECT_EQ(b.Get(0), 4);
}

TEST(IntegerEnum, AssignmentFromRecordWithoutArrayDropsOurs) {
    NoxIntegerEnum b = IntList({1, 2});
    b = NoxIntegerEnum(NoxEnumAny);
    EXPECT_TRUE(b.IsAny());
    EXPECT_EQ(b.GetSize(), 0);
    // A list without an array is what Correct turns into nil; an empty array would stay.
    b.SetRep(NoxEnumList);
    b.Correct(NoxEnvironment());
    EXPECT_TRUE(b.IsNil());
}

TEST(IntegerEnum, AssignmentFromRecordWithEmptyArrayKeepsAnArray) {
    NoxIntegerEnum source(NoxEnumNil);
    source.SetSize(0);
    NoxIntegerEnum b(NoxEnumAny);
    b = source;
    EXPECT_EQ(b.GetRep(), NoxEnumList);
    b.Correct(NoxEnvironment());
    EXPECT_EQ(b.GetRep(), NoxEnumList); // an empty integer array is still an array
}

TEST(IntegerEnum, SelfAssignmentDoesNothing) {
    NoxIntegerEnum a = IntList({1, 2, 3});
    NoxIntegerEnum &alias = a;
    a = alias;
    EXPECT_EQ(Entries(a), (Ints{1, 2, 3}));
    EXPECT_EQ(a.GetRep(), NoxEnumList);
}

TEST(RealEnum, CopyAndAssignmentAreDeep) {
    NoxRealEnum a = RealList({1.5, 2.5});
    NoxRealEnum b(a);
    NoxRealEnum c(NoxEnumNil);
    c = a;
    a.Set(0, 0.0);
    ExpectRealEntries(b, {1.5, 2.5});
    ExpectRealEntries(c, {1.5, 2.5});
    NoxRealEnum &alias = c;
    c = alias;
    ExpectRealEntries(c, {1.5, 2.5});
    c = NoxRealEnum(NoxEnumAny);
    EXPECT_TRUE(c.IsAny());
    EXPECT_EQ(c.GetSize(), 0);
}

// =====================================================================================
// Real enumeration from an integer enumeration
// =====================================================================================

TEST(RealFromIntegerEnum, ListIsConvertedElementByElement) {
    NoxRealEnum r = RealList({9.0, 8.0, 7.0, 6.0});
    r = IntList({-3, 0, 2147483646});
    EXPECT_EQ(r.GetRep(), NoxEnumList);
    ExpectRealEntries(r, {-3.0, 0.0, 2147483646.0});
}

TEST(RealFromIntegerEnum, IntegerAnyBecomesTheBoundedRealRange) {
    NoxRealEnum r(NoxEnumAny);
    r = NoxIntegerEnum(NoxEnumAny);
    EXPECT_EQ(r.GetRep(), NoxEnumRange);
    ExpectRealEntries(r, {-2147483646.0, 2147483646.0});
}

TEST(RealFromIntegerEnum, RangeBecomesRealRangeOfItsEnds) {
    NoxRealEnum r(NoxEnumNil);
    r = IntRange(-4, 9);
    EXPECT_EQ(r.GetRep(), NoxEnumRange);
    ExpectRealEntries(r, {-4.0, 9.0});
    // An inverted integer range goes through the real constructor and comes out nil.
    r = IntRange(5, 3);
    EXPECT_EQ(r.GetRep(), NoxEnumRange);
    ExpectRealEntries(r, {NoxMaxReal, -NoxMaxReal});
}

TEST(RealFromIntegerEnum, RangeWithoutArrayReadsAsNil) {
    NoxIntegerEnum source(NoxEnumAny);
    source.SetRep(NoxEnumRange);
    NoxRealEnum r(NoxEnumList);
    r = source;
    EXPECT_EQ(r.GetRep(), NoxEnumRange);
    ExpectRealEntries(r, {NoxMaxReal, -NoxMaxReal});
    r.Correct(NoxEnvironment());
    EXPECT_TRUE(r.IsNil());
}

TEST(RealFromIntegerEnum, NilEmptiesOurArray) {
    NoxRealEnum r = RealList({1.0, 2.0});
    r = NoxIntegerEnum(NoxEnumNil);
    EXPECT_TRUE(r.IsNil());
    EXPECT_EQ(r.GetSize(), 0);
}

TEST(RealFromIntegerEnum, UnknownSourceStateChangesNothing) {
    NoxRealEnum r = RealList({1.0, 2.0});
    r = NoxIntegerEnum(static_cast<NoxEnumRep>(4));
    r = NoxIntegerEnum(static_cast<NoxEnumRep>(-2));
    EXPECT_EQ(r.GetRep(), NoxEnumList);
    ExpectRealEntries(r, {1.0, 2.0});
}

// =====================================================================================
// State, size and entries
// =====================================================================================

TEST(IntegerEnum, SetRepWritesOnlyTheState) {
    NoxIntegerEnum e = IntList({1, 2});
    e.SetRep(NoxEnumNil);
    EXPECT_TRUE(e.IsNil());
    EXPECT_FALSE(e.IsAny());
    EXPECT_EQ(e.GetSize(), 2);
    e.SetRep(NoxEnumAny);
    EXPECT_TRUE(e.IsAny());
    EXPECT_FALSE(e.IsNil());
}

TEST(IntegerEnum, SetNilAndSetAnyEmptyTheArray) {
    NoxIntegerEnum e = IntList({1, 2});
    e.SetNil();
    EXPECT_EQ(e.GetRep(), NoxEnumNil);
    EXPECT_EQ(e.GetSize(), 0);
    e = IntList({1, 2});
    e.SetAny();
    EXPECT_EQ(e.GetRep(), NoxEnumAny);
    EXPECT_EQ(e.GetSize(), 0);
    NoxIntegerEnum bare(NoxEnumAny);
    bare.SetNil();
    EXPECT_TRUE(bare.IsNil());
}

TEST(RealEnum, SetNilAndSetAnyEmptyTheArray) {
    NoxRealEnum e = RealList({1.0});
    e.SetNil();
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
    e = RealList({1.0});
    e.SetAny();
    EXPECT_TRUE(e.IsAny());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, GetWithoutArrayOrOutsideItIsZero) {
    NoxIntegerEnum e(NoxEnumAny);
    EXPECT_EQ(e.GetSize(), 0);
    EXPECT_EQ(e.Get(0), 0);
    e = IntList({5});
    EXPECT_EQ(e.Get(0), 5);
    EXPECT_EQ(e.Get(1), 0);
    EXPECT_EQ(e.Get(-1), 0);
}

TEST(RealEnum, GetWithoutArrayOrOutsideItIsZero) {
    NoxRealEnum e(NoxEnumRange);
    EXPECT_EQ(Bits(e.Get(0)), Bits(0.0));
    e = RealList({5.5});
    EXPECT_EQ(e.Get(0), 5.5);
    EXPECT_EQ(Bits(e.Get(3)), Bits(0.0));
}

TEST(IntegerEnum, SetSizeCreatesZeroedEntriesAndMakesAList) {
    NoxIntegerEnum e(NoxEnumAny);
    e.SetSize(3);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{0, 0, 0}));
    e.Set(2, 4);
    e.SetSize(1);
    e.SetSize(3);
    EXPECT_EQ(Entries(e), (Ints{0, 0, 0}));
    e.SetSize(-5);
    EXPECT_EQ(e.GetSize(), 0);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(RealEnum, SetSizeCreatesZeroedEntriesAndMakesAList) {
    NoxRealEnum e(NoxEnumNil);
    e.SetSize(2);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    ExpectRealEntries(e, {0.0, 0.0});
}

TEST(IntegerEnum, SetWritesAnEntryWithoutSortingOrChangingTheState) {
    NoxIntegerEnum e = IntRange(1, 5);
    e.Set(0, 9);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{9, 5}));
    e.Set(2, 1); // not a position: ignored
    e.Set(-1, 1);
    EXPECT_EQ(Entries(e), (Ints{9, 5}));
}

TEST(IntegerEnum, SetCreatesTheArrayWhenMissing) {
    NoxIntegerEnum e(NoxEnumNil);
    e.Set(0, 3);
    EXPECT_EQ(e.GetSize(), 0);
    EXPECT_TRUE(e.IsNil());
    // The array now exists: Correct on a list state keeps an empty integer list.
    e.SetRep(NoxEnumList);
    e.Correct(NoxEnvironment());
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(RealEnum, SetWritesAnEntryWithoutSorting) {
    NoxRealEnum e = RealList({1.0, 2.0});
    e.Set(0, 3.0);
    ExpectRealEntries(e, {3.0, 2.0});
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

// =====================================================================================
// Find, FindLT, FindGT
// =====================================================================================

TEST(IntegerEnum, FindWithoutEntriesIsMinusOne) {
    EXPECT_EQ(NoxIntegerEnum(NoxEnumNil).Find(3), -1);
    NoxIntegerEnum empty(NoxEnumNil);
    empty.SetSize(0);
    EXPECT_EQ(empty.Find(3), -1);
}

TEST(IntegerEnum, FindReturnsTheMatchOrWhereTheSearchEnded) {
    NoxIntegerEnum e = IntList({1, 3, 5, 7, 9});
    EXPECT_EQ(e.Find(1), 0);
    EXPECT_EQ(e.Find(5), 2);
    EXPECT_EQ(e.Find(9), 4);
    // Misses: mid 2 (5), then 0 (1), then 1 (3) for 4; the last mid examined.
    EXPECT_EQ(e.Find(4), 1);
    EXPECT_EQ(e.Find(6), 3);
    EXPECT_EQ(e.Find(0), 0);
    EXPECT_EQ(e.Find(10), 4);
}

TEST(RealEnum, FindMatchesWithinTolerance) {
    NoxRealEnum e = RealList({1.0, 2.0, 3.0});
    EXPECT_EQ(e.Find(2.0, 0.0), 1);
    EXPECT_EQ(e.Find(2.05, 0.1), 1);
    EXPECT_EQ(e.Find(1.95, 0.1), 1);
    // Without the tolerance 2.05 is a miss; the search ends on the 3.
    EXPECT_EQ(e.Find(2.05, 0.0), 2);
    EXPECT_EQ(NoxRealEnum(NoxEnumList).Find(1.0, 0.5), -1);
}

TEST(RealEnum, FindToleranceBoundsAreInclusive) {
    volatile double one = 1.0, half = 0.5;
    NoxRealEnum e = RealList({1.0});
    EXPECT_EQ(e.Find(one + half, half), 0);
    EXPECT_EQ(e.Find(one - half, half), 0);
}

TEST(IntegerEnum, FindLTAndFindGTGiveTheNeighbours) {
    NoxIntegerEnum e = IntList({1, 3, 5});
    EXPECT_EQ(e.FindLT(4), 1);
    EXPECT_EQ(e.FindGT(4), 2);
    EXPECT_EQ(e.FindGT(9), 3);
    EXPECT_EQ(e.FindLT(0), -1);
    EXPECT_EQ(e.FindLT(3), 0);
    EXPECT_EQ(e.FindGT(3), 2);
    EXPECT_EQ(e.FindGT(0), 0);
    EXPECT_EQ(e.FindLT(9), 2);
}

TEST(IntegerEnum, FindLTAndFindGTWithoutEntriesAreMinusOne) {
    NoxIntegerEnum e(NoxEnumNil);
    EXPECT_EQ(e.FindLT(1), -1);
    EXPECT_EQ(e.FindGT(1), -1);
}

TEST(RealEnum, FindLTAndFindGTSearchWithoutTolerance) {
    NoxRealEnum e = RealList({1.0, 3.0, 5.0});
    EXPECT_EQ(e.FindLT(4.0), 1);
    EXPECT_EQ(e.FindGT(4.0), 2);
    EXPECT_EQ(e.FindGT(9.0), 3);
    EXPECT_EQ(e.FindLT(3.0), 0);
    EXPECT_EQ(e.FindGT(3.0), 2);
    EXPECT_EQ(e.FindLT(3.0000000000000004), 1);
    EXPECT_EQ(NoxRealEnum(NoxEnumList).FindGT(1.0), -1);
}

// =====================================================================================
// Insert
// =====================================================================================

TEST(IntegerEnum, InsertIntoNilBuildsASortedListWithoutRepeats) {
    NoxIntegerEnum e(NoxEnumNil);
    e.Insert(5);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{5}));
    e.Insert(3);
    e.Insert(5);
    e.Insert(4);
    EXPECT_EQ(Entries(e), (Ints{3, 4, 5}));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, InsertPlacesValuesAtFrontMiddleAndEnd) {
    NoxIntegerEnum e = IntList({10, 20, 30});
    e.Insert(5);
    e.Insert(25);
    e.Insert(35);
    e.Insert(15);
    e.Insert(20);
    EXPECT_EQ(Entries(e), (Ints{5, 10, 15, 20, 25, 30, 35}));
}

TEST(IntegerEnum, InsertIntoAnyDoesNothing) {
    NoxIntegerEnum e(NoxEnumAny);
    e.Insert(3);
    EXPECT_TRUE(e.IsAny());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, InsertIntoRangeExpandsIt) {
    NoxIntegerEnum e = IntRange(2, 5);
    e.Insert(3);
    EXPECT_EQ(Entries(e), (Ints{2, 5}));
    e.Insert(-1);
    EXPECT_EQ(Entries(e), (Ints{-1, 5}));
    e.Insert(8);
    EXPECT_EQ(Entries(e), (Ints{-1, 8}));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
}

TEST(IntegerEnum, InsertIntoRangeWithoutBoundsMakesThePointRange) {
    NoxIntegerEnum e(NoxEnumAny);
    e.SetRep(NoxEnumRange);
    e.Insert(7);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{7, 7}));
}

TEST(IntegerEnum, InsertIntoEmptyListStartsTheList) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(0);
    e.Insert(4);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{4}));
}

TEST(IntegerEnum, InsertIntoNilWithLeftoverEntriesAppendsAfterThem) {
    // SetRep leaves the array alone; inserting into nil appends to what is there.
    NoxIntegerEnum e = IntList({5, 6});
    e.SetRep(NoxEnumNil);
    e.Insert(1);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{5, 6, 1}));
}

TEST(IntegerEnum, InsertInUnknownStateStartsAList) {
    NoxIntegerEnum e(static_cast<NoxEnumRep>(7));
    e.Insert(2);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{2}));
}

TEST(IntegerEnum, InsertHandlesExtremeValuesWithoutOverflow) {
    NoxIntegerEnum e = IntList({INT_MIN, 0, INT_MAX});
    e.Insert(INT_MAX - 1);
    e.Insert(INT_MIN + 1);
    e.Insert(INT_MAX);
    EXPECT_EQ(Entries(e), (Ints{INT_MIN, INT_MIN + 1, 0, INT_MAX - 1, INT_MAX}));
}

TEST(RealEnum, InsertWithinToleranceOfTheFoundNeighbourIsARepeat) {
    NoxRealEnum e = RealList({1.0, 2.0});
    e.Insert(2.0000000001, 1e-6);
    ExpectRealEntries(e, {1.0, 2.0});
    e.Insert(2.0000000001, 1e-12);
    ExpectRealEntries(e, {1.0, 2.0, 2.0000000001});
}

TEST(RealEnum, InsertComparesWithTheFoundNeighbourOnly) {
    // The search for 1.0000001 ends on 2.0; the 1.0 within the tolerance is not looked at.
    NoxRealEnum e = RealList({1.0, 2.0});
    e.Insert(1.0000001, 1e-3);
    ExpectRealEntries(e, {1.0, 1.0000001, 2.0});
}

TEST(RealEnum, InsertBelowWithinToleranceIsARepeat) {
    NoxRealEnum e = RealList({1.0, 2.0});
    e.Insert(1.9999999, 1e-3);
    ExpectRealEntries(e, {1.0, 2.0});
}

TEST(RealEnum, InsertIntoNilAnyAndRange) {
    NoxRealEnum nil(NoxEnumNil);
    nil.Insert(2.5, 1e-9);
    nil.Insert(1.5, 1e-9);
    EXPECT_EQ(nil.GetRep(), NoxEnumList);
    ExpectRealEntries(nil, {1.5, 2.5});

    NoxRealEnum any(NoxEnumAny);
    any.Insert(2.5, 1e-9);
    EXPECT_TRUE(any.IsAny());
    EXPECT_EQ(any.GetSize(), 0);

    NoxRealEnum range = RealRange(1.0, 2.0);
    range.Insert(3.0, 1e-9);
    range.Insert(-1.0, 1e-9);
    range.Insert(0.5, 1e-9);
    EXPECT_EQ(range.GetRep(), NoxEnumRange);
    ExpectRealEntries(range, {-1.0, 3.0});

    NoxRealEnum bare(NoxEnumRange);
    bare.Insert(4.0, 1e-9);
    ExpectRealEntries(bare, {4.0, 4.0});

    NoxRealEnum emptyList(NoxEnumList);
    emptyList.Insert(4.0, 1e-9);
    EXPECT_EQ(emptyList.GetRep(), NoxEnumList);
    ExpectRealEntries(emptyList, {4.0});
}

// =====================================================================================
// Append
// =====================================================================================

TEST(IntegerEnum, AppendAddsAtTheEndWithoutOrderCheck) {
    NoxIntegerEnum e = IntList({5});
    e.Append(1);
    e.Append(5);
    EXPECT_EQ(Entries(e), (Ints{5, 1, 5}));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, AppendToNilStartsAList) {
    NoxIntegerEnum e(NoxEnumNil);
    e.Append(3);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{3}));
}

TEST(IntegerEnum, AppendToAnyDoesNothingAndToRangeExpandsIt) {
    NoxIntegerEnum any(NoxEnumAny);
    any.Append(3);
    EXPECT_TRUE(any.IsAny());
    EXPECT_EQ(any.GetSize(), 0);
    NoxIntegerEnum range = IntRange(0, 1);
    range.Append(4);
    EXPECT_EQ(range.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(range), (Ints{0, 4}));
}

TEST(RealEnum, AppendFollowsTheSameStates) {
    NoxRealEnum e(NoxEnumNil);
    e.Append(2.0);
    e.Append(1.0);
    ExpectRealEntries(e, {2.0, 1.0});
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    NoxRealEnum any(NoxEnumAny);
    any.Append(2.0);
    EXPECT_TRUE(any.IsAny());
    NoxRealEnum range = RealRange(0.0, 1.0);
    range.Append(-2.0);
    ExpectRealEntries(range, {-2.0, 1.0});
}

// =====================================================================================
// Remove
// =====================================================================================

TEST(IntegerEnum, RemoveFromRangeOnlyAtAnEnd) {
    NoxIntegerEnum e = IntRange(1, 5);
    e.Remove(3);
    EXPECT_EQ(Entries(e), (Ints{1, 5}));
    e.Remove(1);
    EXPECT_EQ(Entries(e), (Ints{2, 5}));
    e.Remove(5);
    EXPECT_EQ(Entries(e), (Ints{2, 4}));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
}

TEST(IntegerEnum, RemoveFromPointRangeInvertsItAndCorrectMakesItNil) {
    NoxIntegerEnum e = IntRange(4, 4);
    e.Remove(4);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{5, 3}));
    e.Correct(NoxEnvironment());
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, RemoveFromRangeWithoutBoundsDoesNothing) {
    NoxIntegerEnum e(NoxEnumAny);
    e.SetRep(NoxEnumRange);
    e.Remove(4);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, RemoveFromAnyIgnoresInteriorValues) {
    NoxIntegerEnum e(NoxEnumAny);
    e.Remove(7);
    e.Remove(2147483645);
    EXPECT_TRUE(e.IsAny());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, RemoveAnEndOfTheLineFromAnyMakesARange) {
    NoxIntegerEnum e(NoxEnumAny);
    e.Remove(2147483646);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{-2147483646, 2147483645}));
    NoxIntegerEnum f(NoxEnumAny);
    f.Remove(-2147483646);
    EXPECT_EQ(f.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(f), (Ints{-2147483645, 2147483646}));
}

TEST(IntegerEnum, RemoveFromNilDoesNothing) {
    NoxIntegerEnum e = IntList({1, 2});
    e.SetRep(NoxEnumNil);
    e.Remove(1);
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(Entries(e), (Ints{1, 2}));
}

TEST(IntegerEnum, RemoveInUnknownStateDoesNothing) {
    NoxIntegerEnum e = IntList({1, 2});
    e.SetRep(static_cast<NoxEnumRep>(6));
    e.Remove(1);
    EXPECT_EQ(e.GetRep(), 6);
    EXPECT_EQ(Entries(e), (Ints{1, 2}));
}

TEST(IntegerEnum, RemoveFromListTakesOutThePresentValueOnly) {
    NoxIntegerEnum e = IntList({1, 3, 5});
    e.Remove(4);
    EXPECT_EQ(Entries(e), (Ints{1, 3, 5}));
    e.Remove(3);
    EXPECT_EQ(Entries(e), (Ints{1, 5}));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, RemoveOfTheLastListValueMakesNil) {
    NoxIntegerEnum e = IntList({3});
    e.Remove(3);
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, RemoveFromEmptyListWithArrayMakesNil) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(0);
    e.Remove(3);
    EXPECT_TRUE(e.IsNil());
}

TEST(IntegerEnum, RemoveFromListWithoutArrayDoesNothing) {
    NoxIntegerEnum e(NoxEnumAny);
    e.SetRep(NoxEnumList);
    e.Remove(3);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, RemoveAtTheEndsOfTheIntRangeWrapsWithoutTrapping) {
    NoxIntegerEnum e = IntRange(INT_MAX, INT_MAX);
    e.Remove(INT_MAX);
    EXPECT_EQ(Entries(e), (Ints{INT_MIN, INT_MAX - 1}));
}

TEST(RealEnum, RemoveTakesOutTheRunCloserThanTolerance) {
    NoxRealEnum e = RealList({1.0, 1.9, 1.95, 2.0, 2.05, 2.1, 3.0});
    e.Remove(2.0, 0.08);
    ExpectRealEntries(e, {1.0, 1.9, 2.1, 3.0});
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(RealEnum, RemoveComparesStrictly) {
    NoxRealEnum e = RealList({1.0, 2.0});
    e.Remove(2.0, 0.0); // nothing is closer than 0
    ExpectRealEntries(e, {1.0, 2.0});
    volatile double one = 1.0, half = 0.5;
    NoxRealEnum f = RealList({one, one + half});
    f.Remove(one, half); // 1.5 is exactly half away: kept
    ExpectRealEntries(f, {one + half});
}

TEST(RealEnum, RemoveLooksBackwardFromBeforeTheEntryFound) {
    // The search for 2.5 ends on 3.0, which is not close; the 2.45 before it is.
    NoxRealEnum e = RealList({1.0, 2.45, 3.0});
    e.Remove(2.5, 0.1);
    ExpectRealEntries(e, {1.0, 3.0});
}

TEST(RealEnum, RemoveStopsAtOnceWhenTheEntryFoundIsNotClose) {
    // The search for 1.95 ends on 1.0, which is not close: the 2.0 after it stays.
    NoxRealEnum e = RealList({1.0, 2.0, 3.0, 4.0});
    e.Remove(1.95, 0.1);
    ExpectRealEntries(e, {1.0, 2.0, 3.0, 4.0});
}

TEST(RealEnum, RemoveOfEverythingMakesNil) {
    NoxRealEnum e = RealList({1.0, 1.01});
    e.Remove(1.0, 0.1);
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(RealEnum, RemoveFromListWithoutEntriesDoesNothing) {
    NoxRealEnum e(NoxEnumList);
    e.Remove(1.0, 0.1);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    NoxRealEnum f(NoxEnumNil);
    f.SetSize(0);
    f.Remove(1.0, 0.1);
    EXPECT_EQ(f.GetRep(), NoxEnumList);
}

TEST(RealEnum, RemoveFromNilAndUnknownStateDoesNothing) {
    NoxRealEnum e = RealList({1.0});
    e.SetRep(NoxEnumNil);
    e.Remove(1.0, 0.1);
    EXPECT_TRUE(e.IsNil());
    ExpectRealEntries(e, {1.0});
    e.SetRep(static_cast<NoxEnumRep>(5));
    e.Remove(1.0, 0.1);
    ExpectRealEntries(e, {1.0});
}

TEST(RealEnum, RemoveFromRangeMovesAnEndWithinTolerance) {
    volatile double lo = 1.0, hi = 5.0, v = 5.0000001, eps = NoxAbsPrecision;
    NoxRealEnum e = RealRange(lo, hi);
    e.Remove(3.0, 1e-3);
    ExpectRealEntries(e, {1.0, 5.0});
    e.Remove(v, 1e-3);
    const double upper = hi - 1.01 * (std::fabs(v) * eps);
    ExpectRealEntries(e, {1.0, upper});
    volatile double w = 0.5;
    NoxRealEnum f = RealRange(w, 3.0);
    f.Remove(w, 0.0);
    const double lower = w + 1.01 * eps; // |0.5| <= 1: the tolerance is not scaled
    ExpectRealEntries(f, {lower, 3.0});
    EXPECT_EQ(f.GetRep(), NoxEnumRange);
}

TEST(RealEnum, RemoveFromPointRangeMovesBothEnds) {
    volatile double p = 2.0, eps = NoxAbsPrecision;
    NoxRealEnum e = RealRange(p, p);
    e.Remove(p, 0.0);
    const double step = 1.01 * (std::fabs(p) * eps);
    ExpectRealEntries(e, {p + step, p - step});
    e.Correct(NoxEnvironment()); // inverted: the real constructor makes it nil
    EXPECT_TRUE(e.IsNil());
}

TEST(RealEnum, RemoveFromRangeWithoutBoundsDoesNothing) {
    NoxRealEnum e(NoxEnumRange);
    e.Remove(1.0, 1.0);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(RealEnum, RemoveFromAnyOnlyAtAnEndOfTheLine) {
    NoxRealEnum e(NoxEnumAny);
    e.Remove(1e38, 1e38);
    EXPECT_TRUE(e.IsAny());
    volatile double maxReal = NoxMaxReal, eps = NoxAbsPrecision;
    e.Remove(maxReal, 0.0);
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    const double upper = maxReal - 1.01 * (std::fabs(maxReal) * eps);
    ExpectRealEntries(e, {-maxReal, upper});
    NoxRealEnum f(NoxEnumAny);
    f.Remove(-maxReal, 0.0);
    const double lower = -maxReal + 1.01 * (std::fabs(-maxReal) * eps);
    ExpectRealEntries(f, {lower, maxReal});
}

// =====================================================================================
// RemovePosition
// =====================================================================================

TEST(IntegerEnum, RemovePositionCutsTheCountAtTheEnd) {
    NoxIntegerEnum e = IntList({1, 2, 3, 4, 5});
    e.RemovePosition(1, 2);
    EXPECT_EQ(Entries(e), (Ints{1, 4, 5}));
    e.RemovePosition(1, 100);
    EXPECT_EQ(Entries(e), (Ints{1}));
    e.RemovePosition(0, INT_MAX);
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, RemovePositionOutsideTheArrayDoesNothing) {
    NoxIntegerEnum e = IntList({1, 2});
    e.RemovePosition(2, 1);
    e.RemovePosition(INT_MAX, 1);
    e.RemovePosition(-1, 1);
    e.RemovePosition(0, 0);
    e.RemovePosition(0, -3);
    EXPECT_EQ(Entries(e), (Ints{1, 2}));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    NoxIntegerEnum bare(NoxEnumAny);
    bare.RemovePosition(0, 1);
    EXPECT_TRUE(bare.IsAny());
}

TEST(IntegerEnum, RemovePositionLeavingAnEmptyArrayMakesNilFromAnyState) {
    NoxIntegerEnum e = IntRange(1, 5);
    e.RemovePosition(0, 2);
    EXPECT_TRUE(e.IsNil());
}

TEST(IntegerEnum, RemovePositionThatRemovesNothingKeepsTheState) {
    NoxIntegerEnum e = IntList({1});
    e.SetAny(); // an empty array remains
    e.RemovePosition(0, 1);
    EXPECT_TRUE(e.IsAny());
    NoxIntegerEnum list = IntList({1});
    list.RemovePosition(0, 0);
    EXPECT_EQ(list.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(list), (Ints{1}));
}

TEST(RealEnum, RemovePositionLeavesTheStateAlone) {
    NoxRealEnum e = RealList({1.0, 2.0, 3.0});
    e.RemovePosition(2, 5);
    ExpectRealEntries(e, {1.0, 2.0});
    e.RemovePosition(0, 2);
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(e.GetSize(), 0);
    e.Correct(NoxEnvironment());
    EXPECT_TRUE(e.IsNil());
}

// =====================================================================================
// Ranges and hulls
// =====================================================================================

TEST(IntegerEnum, SetAsIntegerIntervalStoresTheRangeAsGiven) {
    NoxIntegerEnum e = IntList({1, 2, 3, 4});
    e.SetAsIntegerInterval(NoxIntegerInterval{7, -7});
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{7, -7}));
}

TEST(RealEnum, SetAsRealIntervalStoresTheRangeAsGiven) {
    NoxRealEnum e(NoxEnumAny);
    e.SetAsRealInterval(NoxRealInterval{2.0, 1e40});
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    ExpectRealEntries(e, {2.0, 1e40});
}

TEST(IntegerEnum, GetAsIntegerIntervalByState) {
    NoxIntegerInterval r = NoxIntegerEnum(NoxEnumAny).GetAsIntegerInterval();
    EXPECT_TRUE(NoxIsEqual(r, NoxInteger_Any));
    r = NoxIntegerEnum(NoxEnumNil).GetAsIntegerInterval();
    EXPECT_TRUE(NoxIsEqual(r, NoxInteger_Nil));
    r = IntList({2, 4, 9}).GetAsIntegerInterval();
    EXPECT_EQ(r.lower, 2);
    EXPECT_EQ(r.upper, 9);
    r = IntList({9, 2}).GetAsIntegerInterval(); // unchecked pair
    EXPECT_EQ(r.lower, 9);
    EXPECT_EQ(r.upper, 2);
    r = IntList({6}).GetAsIntegerInterval();
    EXPECT_EQ(r.lower, 6);
    EXPECT_EQ(r.upper, 6);
    r = IntRange(-3, 3).GetAsIntegerInterval();
    EXPECT_EQ(r.lower, -3);
    EXPECT_EQ(r.upper, 3);
}

TEST(IntegerEnum, HullWithoutEntriesIsNil) {
    NoxIntegerEnum noArray(NoxEnumAny);
    noArray.SetRep(NoxEnumList);
    EXPECT_TRUE(NoxIsEqual(noArray.GetAsIntegerInterval(), NoxInteger_Nil));
    NoxIntegerEnum empty(NoxEnumNil);
    empty.SetSize(0);
    EXPECT_TRUE(NoxIsEqual(empty.GetAsIntegerInterval(), NoxInteger_Nil));
    NoxIntegerEnum shortRange = IntList({4});
    shortRange.SetRep(NoxEnumRange);
    EXPECT_TRUE(NoxIsEqual(shortRange.GetAsIntegerInterval(), NoxInteger_Nil));
}

TEST(RealEnum, GetAsRealIntervalByState) {
    NoxRealInterval r = NoxRealEnum(NoxEnumAny).GetAsRealInterval();
    EXPECT_EQ(r.lower, NoxReal_Any.lower);
    EXPECT_EQ(r.upper, NoxReal_Any.upper);
    r = NoxRealEnum(NoxEnumNil).GetAsRealInterval();
    EXPECT_EQ(r.lower, NoxReal_Nil.lower);
    EXPECT_EQ(r.upper, NoxReal_Nil.upper);
    r = RealList({1.5, 2.5, 7.5}).GetAsRealInterval();
    EXPECT_EQ(r.lower, 1.5);
    EXPECT_EQ(r.upper, 7.5);
    // Through the real constructor: clamped, and nil when inverted.
    r = RealRange(-1e40, 3.0).GetAsRealInterval();
    EXPECT_EQ(r.lower, -NoxMaxReal);
    EXPECT_EQ(r.upper, 3.0);
    r = RealList({2.0, 1.0}).GetAsRealInterval();
    EXPECT_EQ(r.lower, NoxMaxReal);
    EXPECT_EQ(r.upper, -NoxMaxReal);
}

TEST(RealEnum, HullWithoutEntriesIsNil) {
    NoxRealInterval r = NoxRealEnum(NoxEnumList).GetAsRealInterval();
    EXPECT_EQ(r.lower, NoxMaxReal);
    EXPECT_EQ(r.upper, -NoxMaxReal);
    NoxRealEnum shortRange = RealList({4.0});
    shortRange.SetRep(NoxEnumRange);
    r = shortRange.GetAsRealInterval();
    EXPECT_EQ(r.lower, NoxMaxReal);
    EXPECT_EQ(r.upper, -NoxMaxReal);
}

// =====================================================================================
// Correct
// =====================================================================================

TEST(IntegerEnum, CorrectLeavesAnyAndNilAlone) {
    NoxIntegerEnum any = IntList({1, 2});
    any.SetRep(NoxEnumAny);
    any.Correct(EnvWithMax(0));
    EXPECT_TRUE(any.IsAny());
    EXPECT_EQ(any.GetSize(), 2);
    NoxIntegerEnum nil(NoxEnumNil);
    nil.Correct(EnvWithMax(0));
    EXPECT_TRUE(nil.IsNil());
}

TEST(IntegerEnum, CorrectWithoutArrayMakesNil) {
    NoxIntegerEnum list(NoxEnumAny);
    list.SetRep(NoxEnumList);
    list.Correct(NoxEnvironment());
    EXPECT_TRUE(list.IsNil());
    NoxIntegerEnum range(NoxEnumAny);
    range.SetRep(NoxEnumRange);
    range.Correct(NoxEnvironment());
    EXPECT_TRUE(range.IsNil());
    NoxIntegerEnum unknown(static_cast<NoxEnumRep>(7));
    unknown.Correct(NoxEnvironment());
    EXPECT_TRUE(unknown.IsNil());
}

TEST(IntegerEnum, CorrectInUnknownStateWithArrayDoesNothing) {
    NoxIntegerEnum e = IntList({1, 2, 3});
    e.SetRep(static_cast<NoxEnumRep>(7));
    e.Correct(EnvWithMax(1));
    EXPECT_EQ(e.GetRep(), 7);
    EXPECT_EQ(Entries(e), (Ints{1, 2, 3}));
}

TEST(IntegerEnum, CorrectKeepsAListUpToTheMaximumSize) {
    NoxIntegerEnum e = IntList({1, 3, 5});
    e.Correct(EnvWithMax(3));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{1, 3, 5}));
    NoxIntegerEnum empty(NoxEnumNil);
    empty.SetSize(0);
    empty.Correct(EnvWithMax(0));
    EXPECT_EQ(empty.GetRep(), NoxEnumList);
}

TEST(IntegerEnum, CorrectTurnsALongListIntoItsRange) {
    NoxIntegerEnum e(NoxEnumNil);
    for (int v = 1; v <= 11; ++v)
        e.Insert(2 * v);
    e.Correct(EnvWithMax(10));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{2, 22}));
}

TEST(IntegerEnum, CorrectUsesTheDefaultMaximumOfFifty) {
    NoxIntegerEnum e(NoxEnumNil);
    for (int v = 0; v < 50; ++v)
        e.Insert(v);
    e.Correct(NoxEnvironment());
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    e.Insert(50);
    e.Correct(NoxEnvironment());
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{0, 50}));
}

TEST(IntegerEnum, CorrectOfALongInvertedListIsNil) {
    NoxIntegerEnum e = IntList({5, 1});
    e.Correct(EnvWithMax(1));
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, CorrectOfALongListOverTheWholeLineIsAny) {
    NoxIntegerEnum e = IntList({-2147483646, 0, 2147483646});
    e.Correct(EnvWithMax(2));
    EXPECT_TRUE(e.IsAny());
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(IntegerEnum, CorrectWithNegativeMaximumMakesAnEmptyListNil) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(0);
    e.Correct(EnvWithMax(-1));
    EXPECT_TRUE(e.IsNil());
}

TEST(IntegerEnum, CorrectWithMaximumZeroMakesOneValueAPointRange) {
    NoxIntegerEnum e = IntList({4});
    e.Correct(EnvWithMax(0));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{4, 4}));
    e.Correct(EnvWithMax(0)); // width 0 is not below 0: stays a range
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
}

TEST(IntegerEnum, CorrectTurnsANarrowRangeIntoItsIntegers) {
    NoxIntegerEnum e = IntRange(1, 5);
    e.Correct(EnvWithMax(10));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(e), (Ints{1, 2, 3, 4, 5}));
    NoxIntegerEnum ten = IntRange(1, 10);
    ten.Correct(EnvWithMax(10));
    EXPECT_EQ(ten.GetRep(), NoxEnumList);
    EXPECT_EQ(Entries(ten), (Ints{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(IntegerEnum, CorrectKeepsARangeAsWideAsTheMaximum) {
    NoxIntegerEnum e = IntRange(1, 11);
    e.Correct(EnvWithMax(10));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{1, 11}));
}

TEST(IntegerEnum, CorrectOfAnInvertedRangeIsNilAndOfTheWholeLineAny) {
    NoxIntegerEnum inverted = IntRange(5, 3);
    inverted.Correct(EnvWithMax(10));
    EXPECT_TRUE(inverted.IsNil());
    EXPECT_EQ(inverted.GetSize(), 0);
    NoxIntegerEnum whole = IntRange(INT_MIN, INT_MAX);
    whole.Correct(EnvWithMax(10));
    EXPECT_TRUE(whole.IsAny());
    EXPECT_EQ(whole.GetSize(), 0);
}

TEST(IntegerEnum, CorrectOfARangeWithOneEntryIsNil) {
    NoxIntegerEnum e = IntList({3});
    e.SetRep(NoxEnumRange);
    e.Correct(EnvWithMax(10));
    EXPECT_TRUE(e.IsNil());
}

TEST(IntegerEnum, CorrectOfAWideRangeNearTheLimitsKeepsIt) {
    // The width saturates at NoxMaxInteger, which is not below a maximum of as much.
    NoxIntegerEnum e = IntRange(-2147483646, 2147483645);
    e.Correct(EnvWithMax(2147483646));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{-2147483646, 2147483645}));
}

TEST(RealEnum, CorrectLeavesAnyAndNilAlone) {
    NoxRealEnum any(NoxEnumAny);
    any.Correct(EnvWithMax(0));
    EXPECT_TRUE(any.IsAny());
    NoxRealEnum nil = RealList({1.0});
    nil.SetRep(NoxEnumNil);
    nil.Correct(EnvWithMax(0));
    EXPECT_TRUE(nil.IsNil());
    EXPECT_EQ(nil.GetSize(), 1);
}

TEST(RealEnum, CorrectWithoutEntriesMakesNil) {
    NoxRealEnum noArray(NoxEnumList);
    noArray.Correct(NoxEnvironment());
    EXPECT_TRUE(noArray.IsNil());
    NoxRealEnum empty(NoxEnumNil);
    empty.SetSize(0);
    empty.Correct(NoxEnvironment());
    EXPECT_TRUE(empty.IsNil());
    NoxRealEnum range(NoxEnumRange);
    range.Correct(NoxEnvironment());
    EXPECT_TRUE(range.IsNil());
    NoxRealEnum unknown(static_cast<NoxEnumRep>(8));
    unknown.Correct(NoxEnvironment());
    EXPECT_TRUE(unknown.IsNil());
}

TEST(RealEnum, CorrectInUnknownStateWithEntriesDoesNothing) {
    NoxRealEnum e = RealList({1.0, 2.0});
    e.SetRep(static_cast<NoxEnumRep>(8));
    e.Correct(EnvWithMax(0));
    EXPECT_EQ(e.GetRep(), 8);
    ExpectRealEntries(e, {1.0, 2.0});
}

TEST(RealEnum, CorrectTurnsALongListIntoItsHull) {
    NoxRealEnum e = RealList({0.5, 1.5, 2.5});
    e.Correct(EnvWithMax(3));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    e.Correct(EnvWithMax(2));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    ExpectRealEntries(e, {0.5, 2.5});
}

TEST(RealEnum, CorrectOfALongListClampsItsHull) {
    NoxRealEnum e = RealList({-1e39, 0.0, 5.0});
    e.Correct(EnvWithMax(2));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    ExpectRealEntries(e, {-NoxMaxReal, 5.0});
}

TEST(RealEnum, CorrectOfALongInvertedOrWholeLineListIsNilOrAny) {
    NoxRealEnum inverted = RealList({2.0, 1.0});
    inverted.Correct(EnvWithMax(1));
    EXPECT_TRUE(inverted.IsNil());
    EXPECT_EQ(inverted.GetSize(), 0);
    NoxRealEnum whole = RealList({-1e39, 1e39});
    whole.Correct(EnvWithMax(1));
    EXPECT_TRUE(whole.IsAny());
    EXPECT_EQ(whole.GetSize(), 0);
}

TEST(RealEnum, CorrectTurnsAnExactRangeIntoTheListOfItsLowerBound) {
    volatile double one = 1.0;
    NoxRealEnum e = RealRange(one, one + 1e-15);
    e.Correct(NoxEnvironment());
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    ExpectRealEntries(e, {1.0});
    NoxRealEnum point = RealRange(3.0, 3.0);
    point.Correct(NoxEnvironment());
    EXPECT_EQ(point.GetRep(), NoxEnumList);
    ExpectRealEntries(point, {3.0});
}

TEST(RealEnum, CorrectKeepsARangeWiderThanThePrecision) {
    NoxRealEnum e = RealRange(1.0, 1.0001);
    e.Correct(EnvWithMax(100000));
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    ExpectRealEntries(e, {1.0, 1.0001});
    NoxRealEnum edge = RealRange(0.0, 1e-14); // |width| < precision is strict
    edge.Correct(NoxEnvironment());
    EXPECT_EQ(edge.GetRep(), NoxEnumRange);
}

TEST(RealEnum, CorrectOfAnInvertedOrWholeLineRangeIsNilOrAny) {
    volatile double one = 1.0;
    NoxRealEnum barely = RealRange(one, one - 1e-15); // inverted: the constructor nils it
    barely.Correct(NoxEnvironment());
    EXPECT_TRUE(barely.IsNil());
    NoxRealEnum whole = RealRange(-1e39, 1e39);
    whole.Correct(NoxEnvironment());
    EXPECT_TRUE(whole.IsAny());
    EXPECT_EQ(whole.GetSize(), 0);
}

TEST(RealEnum, CorrectOfARangeWithOneEntryIsNil) {
    NoxRealEnum e = RealList({3.0});
    e.SetRep(NoxEnumRange);
    e.Correct(NoxEnvironment());
    EXPECT_TRUE(e.IsNil());
}

// =====================================================================================
// Memory exhaustion
// =====================================================================================

TEST(EnumAllocation, InsertIntoNilWithoutMemoryLeavesTheRecordAsItWas) {
    NoxIntegerEnum e(NoxEnumNil);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        e.Insert(3);
        e.Append(3);
    }
    EXPECT_TRUE(e.IsNil());
    EXPECT_EQ(e.GetSize(), 0);
    NoxRealEnum r(NoxEnumNil);
    {
        // The array, but not its storage.
        AllocationFailure arrayOnly(AllocationForms::Nothrow, 1);
        r.Insert(3.0, 0.0);
    }
    EXPECT_TRUE(r.IsNil());
    EXPECT_EQ(r.GetSize(), 0);
}

TEST(EnumAllocation, InsertIntoFullListWithoutMemoryLeavesItAsItWas) {
    NoxIntegerEnum e = IntList({1, 3, 5, 7, 9}); // sized exactly: no room to spare
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        e.Insert(2);
        e.Insert(0);
        e.Insert(10);
        e.Append(11);
    }
    EXPECT_EQ(Entries(e), (Ints{1, 3, 5, 7, 9}));
    EXPECT_EQ(e.GetRep(), NoxEnumList);
}

TEST(EnumAllocation, RangeOperationsWithoutMemoryMakeNil) {
    NoxIntegerEnum e(NoxEnumAny);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        e.SetAsIntegerInterval(NoxIntegerInterval{1, 2});
    }
    EXPECT_TRUE(e.IsNil());
    NoxRealEnum r(NoxEnumRange);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        r.Insert(1.0, 0.0); // the range cannot be widened
    }
    EXPECT_TRUE(r.IsNil());
    NoxRealEnum s(NoxEnumRange);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        s.Remove(1.0, 0.0); // nor reduced
    }
    EXPECT_TRUE(s.IsNil());
    NoxIntegerEnum any(NoxEnumAny);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        any.Remove(NoxMaxInteger);
    }
    EXPECT_TRUE(any.IsNil());
}

TEST(EnumAllocation, SetSizeWithoutMemorySetsOnlyTheState) {
    NoxIntegerEnum e(NoxEnumAny);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        e.SetSize(4);
    }
    EXPECT_EQ(e.GetRep(), NoxEnumList);
    EXPECT_EQ(e.GetSize(), 0);
}

TEST(EnumAllocation, CopyWithoutMemoryIsNil) {
    NoxIntegerEnum source = IntList({1, 2, 3});
    NoxIntegerEnum target(NoxEnumAny);
    NoxRealEnum realSource = RealList({1.0});
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        target = source;
        NoxRealEnum copy(realSource);
        EXPECT_TRUE(copy.IsNil());
        EXPECT_EQ(copy.GetSize(), 0);
    }
    EXPECT_TRUE(target.IsNil());
    EXPECT_EQ(target.GetSize(), 0);
    EXPECT_EQ(Entries(source), (Ints{1, 2, 3}));
}

TEST(EnumAllocation, CopyIntoAnArrayWithRoomNeedsNoMemory) {
    NoxRealEnum source = RealList({1.0});
    NoxRealEnum target = RealList({5.0, 6.0});
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        target = source;
    }
    EXPECT_EQ(target.GetRep(), NoxEnumList);
    ExpectRealEntries(target, {1.0});
}

TEST(EnumAllocation, RealFromIntegerListWithoutMemoryCopiesTheStateOnly) {
    NoxIntegerEnum source = IntList({1, 2, 3});
    NoxRealEnum r(NoxEnumAny);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        r = source;
    }
    EXPECT_EQ(r.GetRep(), NoxEnumList);
    EXPECT_EQ(r.GetSize(), 0);
    NoxRealEnum s(NoxEnumAny);
    {
        AllocationFailure arrayOnly(AllocationForms::Nothrow, 1);
        s = source;
    }
    EXPECT_EQ(s.GetRep(), NoxEnumList);
    EXPECT_EQ(s.GetSize(), 0);
    NoxRealEnum t(NoxEnumAny);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        t = NoxIntegerEnum(NoxEnumAny);
    }
    EXPECT_TRUE(t.IsNil());
}

TEST(EnumAllocation, CorrectWithoutMemoryForTheListKeepsTheRange) {
    NoxIntegerEnum e = IntRange(1, 5);
    {
        AllocationFailure none(AllocationForms::Nothrow, 0);
        e.Correct(EnvWithMax(10));
    }
    EXPECT_EQ(e.GetRep(), NoxEnumRange);
    EXPECT_EQ(Entries(e), (Ints{1, 5}));
}

// =====================================================================================
// Properties
// =====================================================================================

namespace {

bool StrictlyIncreasing(const std::vector<int> &v) {
    for (std::size_t i = 1; i < v.size(); ++i)
        if (!(v[i - 1] < v[i]))
            return false;
    return true;
}

bool StrictlyIncreasing(const std::vector<double> &v) {
    for (std::size_t i = 1; i < v.size(); ++i)
        if (!(v[i - 1] < v[i]))
            return false;
    return true;
}

} // namespace

TEST(EnumProperty, IntegerListFollowsASetModel) {
    const unsigned seed = 20260501;
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> value(-40, 40);
    std::uniform_int_distribution<int> op(0, 3);
    for (int round = 0; round < 200; ++round) {
        NoxIntegerEnum e(NoxEnumNil);
        std::set<int> model;
        for (int step = 0; step < 200; ++step) {
            const int v = value(rng);
            switch (op(rng)) {
            case 0:
            case 1:
                e.Insert(v);
                model.insert(v);
                break;
            case 2:
                e.Remove(v);
                model.erase(v);
                break;
            default: {
                const int pos = std::abs(v) % 8;
                const int count = std::abs(v) % 3;
                if (pos < static_cast<int>(model.size()) && count > 0) {
                    auto first = std::next(model.begin(), pos);
                    auto last = first;
                    for (int k = 0; k < count && last != model.end(); ++k)
                        ++last;
                    model.erase(first, last);
                }
                e.RemovePosition(pos, count);
            }
            }
            const std::vector<int> expected(model.begin(), model.end());
            ASSERT_EQ(Entries(e), expected) << "seed " << seed << " round " << round;
            ASSERT_EQ(e.GetRep(), model.empty() ? NoxEnumNil : NoxEnumList)
                << "seed " << seed << " round " << round;
        }
    }
}

TEST(EnumProperty, RandomOperationsKeepEveryStateWellFormed) {
    const unsigned seed = 777;
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> value(-30, 30);
    std::uniform_int_distribution<int> op(0, 8);
    std::uniform_int_distribution<int> maxSize(-1, 12);
    for (int round = 0; round < 300; ++round) {
        NoxIntegerEnum e(static_cast<NoxEnumRep>(op(rng) % 4));
        NoxRealEnum r(static_cast<NoxEnumRep>(op(rng) % 4));
        const NoxEnvironment env = EnvWithMax(maxSize(rng));
        const double tol = (op(rng) % 3) * 0.25;
        for (int step = 0; step < 100; ++step) {
            const int v = value(rng);
            const double x = v * 0.1;
            switch (op(rng)) {
            case 0:
            case 1:
                e.Insert(v);
                r.Insert(x, tol);
                break;
            case 2:
                e.Remove(v);
                r.Remove(x, tol);
                break;
            case 3:
                e.Correct(env);
                r.Correct(env);
                break;
            case 4:
                if (e.GetRep() != NoxEnumList || e.GetSize() == 0 || e.Get(e.GetSize() - 1) < v)
                    e.Append(v);
                if (r.GetRep() != NoxEnumList || r.GetSize() == 0 ||
                    r.Get(r.GetSize() - 1) + tol < x)
                    r.Append(x);
                break;
            case 5:
                e.SetAsIntegerInterval(NoxIntegerInterval{v, v + std::abs(value(rng))});
                r.SetAsRealInterval(NoxRealInterval{x, x + std::abs(value(rng)) * 0.1});
                break;
            case 6: // on lists: a range keeps its two entries
                if (e.GetRep() == NoxEnumList)
                    e.RemovePosition(std::abs(v) % 5, std::abs(v) % 3);
                if (r.GetRep() == NoxEnumList)
                    r.RemovePosition(std::abs(v) % 5, std::abs(v) % 3);
                break;
            case 7: {
                NoxIntegerEnum copy(e);
                e = copy;
                NoxRealEnum realCopy(r);
                r = realCopy;
                if (v % 5 == 0)
                    r = e;
                break;
            }
            default:
                if (v % 2) {
                    e.SetNil();
                    r.SetAny();
                } else {
                    e.SetAny();
                    r.SetNil();
                }
            }
            const std::string where =
                "seed " + std::to_string(seed) + " round " + std::to_string(round);
            if (e.GetRep() == NoxEnumList) {
                ASSERT_TRUE(StrictlyIncreasing(Entries(e))) << where;
            }
            if (e.GetRep() == NoxEnumRange) {
                ASSERT_EQ(e.GetSize(), 2) << where;
            }
            if (r.GetRep() == NoxEnumList) {
                ASSERT_TRUE(StrictlyIncreasing(Entries(r))) << where;
            }
            if (r.GetRep() == NoxEnumRange) {
                ASSERT_TRUE(r.GetSize() == 0 || r.GetSize() == 2) << where;
            }
            ASSERT_GE(e.GetRep(), NoxEnumList) << where;
            ASSERT_LE(e.GetRep(), NoxEnumNil) << where;
            ASSERT_GE(r.GetRep(), NoxEnumList) << where;
            ASSERT_LE(r.GetRep(), NoxEnumNil) << where;
        }
        // After a correction every state is one of the four, and a list respects M.
        e.Correct(env);
        r.Correct(env);
        if (e.GetRep() == NoxEnumList) {
            ASSERT_LE(e.GetSize(), env.GetMaxEnumSize()) << "seed " << seed;
        }
    }
}

TEST(EnumProperty, RealInsertKeepsTheListIncreasingAndFindsEachValue) {
    const unsigned seed = 4242;
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> value(-10.0, 10.0);
    std::uniform_int_distribution<int> pick(0, 4);
    for (int round = 0; round < 100; ++round) {
        NoxRealEnum r(NoxEnumNil);
        const double tol = pick(rng) * 0.01;
        for (int step = 0; step < 300; ++step) {
            double x = value(rng);
            if (pick(rng) == 0 && r.GetSize() > 0)
                x = r.Get(static_cast<int>(rng() % r.GetSize())) + tol * 0.5; // near an entry
            if (pick(rng) == 1) {
                r.Remove(x, tol);
            } else {
                r.Insert(x, tol);
                const int p = r.Find(x, tol);
                ASSERT_GE(p, 0) << "seed " << seed;
                ASSERT_TRUE(r.Get(p) - tol <= x && x <= r.Get(p) + tol)
                    << "seed " << seed << " x " << x;
            }
            if (r.GetRep() == NoxEnumList) {
                ASSERT_TRUE(StrictlyIncreasing(Entries(r))) << "seed " << seed;
            }
        }
    }
}
