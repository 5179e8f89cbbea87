#include <NoxAssert.h>
#include <NoxValue.h>

#include "NoxPrivate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "NoxTestAllocator.h"
#include "NoxTestSupport.h"

// ---- Allocation accounting ----
//
// The shared test allocator counts the allocations an operation makes and can make every
// allocation fail. The library's arrays are allocated through it too.

namespace {

// Makes every allocation fail while it lives.
struct AllocationFailure : nox_test::AllocationFailure {
    AllocationFailure() : nox_test::AllocationFailure(nox_test::AllocationForms::All) {}
};

// ---- Assertion reports ----

struct Report {
    std::string condition;
    std::string file;
    int line;
};
std::vector<Report> *g_reports = nullptr;

void RecordReport(const char *condition, const char *file, int line) {
    if (g_reports != nullptr)
        g_reports->push_back(Report{condition, file, line});
}

// Installs a hook that records every report while it lives, then restores the previous.
class ReportRecorder {
public:
    ReportRecorder() : previous(NoxSetAssertionHook(&RecordReport)) { g_reports = &reports; }
    ~ReportRecorder() {
        NoxSetAssertionHook(previous);
        g_reports = nullptr;
    }
    ReportRecorder(const ReportRecorder &) = delete;
    ReportRecorder &operator=(const ReportRecorder &) = delete;

    std::vector<Report> reports;

private:
    NoxAssertionHook previous;
};

void ExpectOneReport(const ReportRecorder &r, int line) {
    ASSERT_EQ(r.reports.size(), 1u);
    EXPECT_EQ(r.reports[0].condition, "0");
    EXPECT_EQ(r.reports[0].file, "src/NoxValue");
    EXPECT_EQ(r.reports[0].line, line);
}

// ---- Builders and readers ----

using nox_test::Bits;
using nox_test::Entries;
using nox_test::ExpectInteger;
using nox_test::ExpectReal;
using nox_test::ExpectSameReal;
using nox_test::I;
using nox_test::kNaN;
using nox_test::R;

NoxIntegerEnum IntegerList(const std::vector<int> &v) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(v.size()));
    for (std::size_t i = 0; i < v.size(); ++i)
        e.Set(static_cast<int>(i), v[i]);
    return e;
}

NoxRealEnum RealList(const std::vector<double> &v) {
    NoxRealEnum e(NoxEnumNil);
    e.SetSize(static_cast<int>(v.size()));
    for (std::size_t i = 0; i < v.size(); ++i)
        e.Set(static_cast<int>(i), v[i]);
    return e;
}

NoxIntegerEnum IntegerRange(int lo, int hi) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetAsIntegerInterval(I(lo, hi));
    return e;
}

NoxRealEnum RealRange(double lo, double hi) {
    NoxRealEnum e(NoxEnumNil);
    e.SetAsRealInterval(R(lo, hi));
    return e;
}

NoxIntegerEnum IntegerEnumIn(NoxEnumRep rep) {
    NoxIntegerEnum e(NoxEnumNil);
    e.SetRep(rep);
    return e;
}

NoxRealEnum RealEnumIn(NoxEnumRep rep) {
    NoxRealEnum e(NoxEnumNil);
    e.SetRep(rep);
    return e;
}

void ExpectIntegerEnum(const NoxIntegerEnum &e, NoxEnumRep rep, const std::vector<int> &v) {
    EXPECT_EQ(e.GetRep(), rep);
    EXPECT_EQ(Entries(e), v);
}

void ExpectRealEnum(const NoxRealEnum &e, NoxEnumRep rep, const std::vector<double> &v) {
    EXPECT_EQ(e.GetRep(), rep);
    const std::vector<double> actual = Entries(e);
    ASSERT_EQ(actual.size(), v.size());
    for (std::size_t i = 0; i < v.size(); ++i)
        ExpectSameReal(actual[i], v[i]);
}

NoxValueType Kind(int code) { return static_cast<NoxValueType>(code); }

// A value of an unknown kind whose numeric slot still holds what `holder` put there:
// copying a value of an unknown kind copies only the kind.
NoxValue WithUnknownKind(const NoxValue &holder, int code) {
    NoxValue v(holder);
    v = NoxValue(Kind(code));
    return v;
}

// The slot's lower 32-bit integer of a value holding the real x there.
int LowerIntegerOfReal(double x) {
    int v;
    std::memcpy(&v, &x, sizeof v);
    return v;
}

const int kUnknownKinds[] = {-1, 8, 99};

} // namespace

// ---- Construction ----

TEST(ValueConstruct, DefaultIsUndefined) {
    NoxValue v;
    EXPECT_EQ(v.GetType(), NoxUndefinedType);
    EXPECT_TRUE(v.IsAKindOf(NoxUndefinedType));
}

TEST(ValueConstruct, KindConstructorZeroesTheNumericSlot) {
    EXPECT_EQ(NoxValue(NoxIntegerType).GetAsInteger(), 0);
    ExpectSameReal(NoxValue(NoxRealType).GetAsReal(), 0.0);
    ExpectInteger(NoxValue(NoxIntegerIntervalType).GetAsIntegerInterval(), 0, 0);
    ExpectReal(NoxValue(NoxRealIntervalType).GetAsRealInterval(), 0.0, 0.0);
    EXPECT_EQ(NoxValue(NoxBooleanType).GetAsBoolean(), NoxFalse);
    for (int k = 0; k <= 7; ++k)
        EXPECT_EQ(NoxValue(Kind(k)).GetType(), Kind(k));
}

TEST(ValueConstruct, EveryConstructorStartsBothEnumerationsAny) {
    const NoxValue values[] = {NoxValue(),
                               NoxValue(NoxIntegerEnumType),
                               NoxValue(NoxRealEnumType),
                               NoxValue(3),
                               NoxValue(2.5),
                               NoxValue(I(1, 2)),
                               NoxValue(R(1, 2)),
                               NoxValue(NoxTrue),
                               NoxValue(Kind(42))};
    for (const NoxValue &v : values) {
        EXPECT_EQ(v.GetIntegerEnum().GetRep(), NoxEnumAny);
        EXPECT_EQ(v.GetRealEnum().GetRep(), NoxEnumAny);
        EXPECT_EQ(v.GetIntegerEnum().GetSize(), 0);
        EXPECT_EQ(v.GetRealEnum().GetSize(), 0);
    }
}

TEST(ValueConstruct, UnknownKindCodeIsStoredAndReadsAsZero) {
    NoxValue v(Kind(42));
    EXPECT_EQ(static_cast<int>(v.GetType()), 42);
    ExpectSameReal(v.GetRealValue(), 0.0);
}

TEST(ValueConstruct, SingleValuesAreStoredAsPoints) {
    NoxValue i(7);
    EXPECT_EQ(i.GetType(), NoxIntegerType);
    EXPECT_EQ(i.GetAsInteger(), 7);
    NoxValue r(2.5);
    EXPECT_EQ(r.GetType(), NoxRealType);
    ExpectSameReal(r.GetAsReal(), 2.5);
    // Markers are stored as given.
    EXPECT_EQ(NoxValue(NoxSingleInteger_Any).GetAsInteger(), NoxSingleInteger_Any);
    ExpectSameReal(NoxValue(NoxSingleReal_Nil).GetAsReal(), NoxSingleReal_Nil);
}

TEST(ValueConstruct, IntervalsAreCopiedAsIs) {
    NoxValue i(I(5, 2));
    EXPECT_EQ(i.GetType(), NoxIntegerIntervalType);
    ExpectInteger(i.GetAsIntegerInterval(), 5, 2);
    NoxValue r(R(3, -1e40));
    EXPECT_EQ(r.GetType(), NoxRealIntervalType);
    ExpectReal(r.GetAsRealInterval(), 3, -1e40);
}

TEST(ValueConstruct, BooleanStoresItsCode) {
    NoxValue b(NoxBoolean_Nil);
    EXPECT_EQ(b.GetType(), NoxBooleanType);
    EXPECT_EQ(b.GetAsBoolean(), NoxBoolean_Nil);
    EXPECT_EQ(NoxValue(static_cast<NoxBoolean>(9)).GetAsInteger(), 9);
}

TEST(ValueConstruct, EnumerationsAreCopiedIntoTheirMember) {
    NoxValue i(IntegerList({4, 1, 7}));
    EXPECT_EQ(i.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(i.GetIntegerEnum(), NoxEnumList, {4, 1, 7});
    EXPECT_EQ(i.GetRealEnum().GetRep(), NoxEnumAny);
    NoxValue r(RealRange(0.5, 1.5));
    EXPECT_EQ(r.GetType(), NoxRealEnumType);
    ExpectRealEnum(r.GetRealEnum(), NoxEnumRange, {0.5, 1.5});
    EXPECT_EQ(r.GetIntegerEnum().GetRep(), NoxEnumAny);
}

// ---- Copying ----

TEST(ValueCopy, CopiesTheKindAndItsContent) {
    const NoxValue sources[] = {NoxValue(7),        NoxValue(-2.5),
                                NoxValue(I(-3, 4)), NoxValue(R(0.25, 0.5)),
                                NoxValue(NoxTrue),  NoxValue(IntegerList({1, 2})),
                                NoxValue(RealList({0.5}))};
    for (const NoxValue &s : sources) {
        NoxValue c(s);
        EXPECT_EQ(c.GetType(), s.GetType());
        ExpectSameReal(c.GetRealValue(), s.GetRealValue());
        NoxValue a(NoxRealType);
        a = s;
        EXPECT_EQ(a.GetType(), s.GetType());
        ExpectSameReal(a.GetRealValue(), s.GetRealValue());
    }
    NoxValue c(NoxValue(IntegerList({1, 2})));
    ExpectIntegerEnum(c.GetIntegerEnum(), NoxEnumList, {1, 2});
    NoxValue d(NoxValue(RealList({0.5, 0.75})));
    ExpectRealEnum(d.GetRealEnum(), NoxEnumList, {0.5, 0.75});
}

TEST(ValueCopy, LeavesTheEnumerationOfTheOtherKindAsItWas) {
    NoxValue v(RealList({1.5}));
    v = NoxValue(IntegerList({3}));
    EXPECT_EQ(v.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {3});
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {1.5});

    NoxValue w(IntegerList({8, 9}));
    w = NoxValue(R(1, 2));
    EXPECT_EQ(w.GetType(), NoxRealIntervalType);
    ExpectIntegerEnum(w.GetIntegerEnum(), NoxEnumList, {8, 9});
}

TEST(ValueCopy, SelfAssignmentChangesNothing) {
    NoxValue v(IntegerList({5, 6}));
    NoxValue &alias = v;
    v = alias;
    EXPECT_EQ(v.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {5, 6});
}

TEST(ValueCopy, UndefinedAndUnknownKindsCopyOnlyTheKind) {
    NoxValue v(I(5, 9));
    v = NoxValue();
    EXPECT_EQ(v.GetType(), NoxUndefinedType);
    NoxValue w(I(5, 9));
    w = NoxValue(Kind(77));
    EXPECT_EQ(static_cast<int>(w.GetType()), 77);
    ReportRecorder recorder;
    ExpectInteger(w.GetAsIntegerInterval(), 5, 9); // the slot is the one it had
}

TEST(ValueCopy, BooleanCopiesOnlyTheLowerInteger) {
    NoxValue v(I(5, 9));
    v = NoxValue(NoxTrue);
    v = NoxValue(Kind(50));
    ReportRecorder recorder;
    ExpectInteger(v.GetAsIntegerInterval(), 1, 9);
}

TEST(ValueCopy, SingleIntervalAndBooleanKindsNeverAllocate) {
    long before = nox_test::AllocationCount();
    NoxValue a(3), b(2.5), c(I(1, 2)), d(R(1, 2)), e(NoxTrue), f, g(NoxIntegerEnumType);
    NoxValue copies[] = {a, b, c, d, e, f, g};
    copies[0] = d;
    copies[1].Set(4.5);
    copies[2].SetIndefinite();
    EXPECT_EQ(nox_test::AllocationCount(), before);
}

TEST(ValueCopy, CopiesOnlyTheArrayOfTheEnumerationItsKindUses) {
    // v holds arrays in both enumeration members but is now a real interval.
    NoxValue v(IntegerList({1, 2, 3}));
    v = NoxValue(RealList({1.5, 2.5}));
    v = NoxValue(R(0, 1));
    ASSERT_EQ(v.GetIntegerEnum().GetSize(), 3);
    ASSERT_EQ(v.GetRealEnum().GetSize(), 2);
    long before = nox_test::AllocationCount();
    NoxValue copy(v);
    EXPECT_EQ(nox_test::AllocationCount(), before);
    EXPECT_EQ(copy.GetIntegerEnum().GetSize(), 0);

    NoxValue e(IntegerList({1, 2, 3}));
    before = nox_test::AllocationCount();
    NoxValue copyOfEnum(e);
    EXPECT_GT(nox_test::AllocationCount(), before);
    ExpectIntegerEnum(copyOfEnum.GetIntegerEnum(), NoxEnumList, {1, 2, 3});
    EXPECT_EQ(copyOfEnum.GetRealEnum().GetSize(), 0);
}

TEST(ValueCopy, CloneIsAnIndependentHeapCopy) {
    NoxValue v(IntegerList({2, 4}));
    NoxValue *c = v.Clone();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(c->GetIntegerEnum(), NoxEnumList, {2, 4});
    c->Set(9);
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {2, 4});
    delete c;
}

TEST(ValueCopy, CloneGivesNullWhenMemoryCannotBeHad) {
    NoxValue v(2.5);
    NoxValue *c;
    {
        AllocationFailure failure;
        c = v.Clone();
    }
    EXPECT_EQ(c, nullptr);
}

// ---- Kinds ----

TEST(ValueKinds, IsAKindOfIsEqualityOfKinds) {
    for (int k = -1; k <= 8; ++k)
        for (int t = -1; t <= 8; ++t)
            EXPECT_EQ(NoxValue(Kind(k)).IsAKindOf(Kind(t)), k == t) << k << " " << t;
}

TEST(ValueKinds, IsConvertibleFollowsItsTableExactly) {
    // Rows: target kind 0..7; columns: the value's kind 0..7, then an unknown code.
    const bool table[8][9] = {
        /* 0 */ {1, 0, 0, 0, 0, 0, 0, 0, 0},
        /* 1 */ {0, 1, 0, 0, 0, 0, 0, 1, 0},
        /* 2 */ {0, 1, 1, 0, 0, 0, 0, 0, 0},
        /* 3 */ {1, 1, 1, 1, 1, 1, 1, 1, 1},
        /* 4 */ {1, 1, 1, 1, 1, 1, 1, 0, 1},
        /* 5 */ {0, 0, 0, 0, 0, 1, 0, 0, 0},
        /* 6 */ {0, 0, 0, 0, 0, 0, 1, 0, 0},
        /* 7 */ {0, 1, 0, 1, 0, 1, 0, 1, 0},
    };
    for (int t = 0; t <= 7; ++t)
        for (int k = 0; k <= 8; ++k) {
            const int kind = k == 8 ? 99 : k;
            EXPECT_EQ(NoxValue(Kind(kind)).IsConvertible(Kind(t)), table[t][k])
                << "target " << t << ", kind " << kind;
        }
}

TEST(ValueKinds, IsConvertibleToAnUnknownKindOnlyWhenEqual) {
    for (int k = 0; k <= 7; ++k)
        EXPECT_FALSE(NoxValue(Kind(k)).IsConvertible(Kind(12)));
    EXPECT_TRUE(NoxValue(Kind(12)).IsConvertible(Kind(12)));
}

TEST(ValueKinds, IsConvertibleIsNarrowerThanTheConversions) {
    EXPECT_TRUE(NoxValue(2.5).IsConvertible(NoxIntegerIntervalType));
    EXPECT_FALSE(NoxValue(I(1, 2)).IsConvertible(NoxRealType));
    EXPECT_FALSE(NoxValue(R(1, 2)).IsConvertible(NoxIntegerEnumType));
}

// ---- Setters ----

TEST(ValueSet, FirstSetGivesAnUndefinedValueItsKind) {
    NoxValue a;
    a.Set(4);
    EXPECT_EQ(a.GetType(), NoxIntegerType);
    EXPECT_EQ(a.GetAsInteger(), 4);
    NoxValue b;
    b.Set(2.5);
    EXPECT_EQ(b.GetType(), NoxRealType);
    NoxValue c;
    c.Set(I(1, 3));
    EXPECT_EQ(c.GetType(), NoxIntegerIntervalType);
    ExpectInteger(c.GetAsIntegerInterval(), 1, 3);
    NoxValue d;
    d.Set(R(1, 3));
    EXPECT_EQ(d.GetType(), NoxRealIntervalType);
    ExpectReal(d.GetAsRealInterval(), 1, 3);
    NoxValue e;
    e.Set(IntegerRange(2, 8));
    EXPECT_EQ(e.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(e.GetIntegerEnum(), NoxEnumRange, {2, 8});
    NoxValue f;
    f.Set(RealList({0.5}));
    EXPECT_EQ(f.GetType(), NoxRealEnumType);
    ExpectRealEnum(f.GetRealEnum(), NoxEnumList, {0.5});
    NoxValue g;
    const int ints[] = {3, 1, 2};
    g.Set(3, ints);
    EXPECT_EQ(g.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(g.GetIntegerEnum(), NoxEnumList, {3, 1, 2});
    NoxValue h;
    const double reals[] = {2.5, -1.0};
    h.Set(2, reals);
    EXPECT_EQ(h.GetType(), NoxRealEnumType);
    ExpectRealEnum(h.GetRealEnum(), NoxEnumList, {2.5, -1.0});
    NoxValue b7;
    b7.Set(NoxBoolean_Any);
    EXPECT_EQ(b7.GetType(), NoxBooleanType);
    EXPECT_EQ(b7.GetAsBoolean(), NoxBoolean_Any);
}

TEST(ValueSet, RealValueIgnoresAnInteger) {
    NoxValue v;
    v.Set(2.5);
    EXPECT_EQ(v.GetType(), NoxRealType);
    v.Set(7);
    EXPECT_EQ(v.GetType(), NoxRealType);
    ExpectSameReal(v.GetAsReal(), 2.5);
}

TEST(ValueSet, IntegerIntervalTakesAnIntegerAsAPoint) {
    NoxValue v(NoxIntegerIntervalType);
    v.Set(4);
    EXPECT_EQ(v.GetType(), NoxIntegerIntervalType);
    ExpectInteger(v.GetAsIntegerInterval(), 4, 4);
}

TEST(ValueSet, IntegerEnumerationTakesAnIntegerAsAOneElementList) {
    NoxValue v(IntegerRange(1, 9));
    v.Set(4);
    EXPECT_EQ(v.GetType(), NoxIntegerEnumType);
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {4});
    NoxValue w(NoxIntegerEnumType); // any, without an array
    w.Set(-6);
    ExpectIntegerEnum(w.GetIntegerEnum(), NoxEnumList, {-6});
}

TEST(ValueSet, BooleanTakesAnIntegerAsItsTruth) {
    NoxValue v(NoxBooleanType);
    v.Set(5);
    EXPECT_EQ(v.GetType(), NoxBooleanType);
    EXPECT_EQ(v.GetAsBoolean(), NoxTrue);
    v.Set(0);
    EXPECT_EQ(v.GetAsBoolean(), NoxFalse);
    v.Set(-1);
    EXPECT_EQ(v.GetAsBoolean(), NoxTrue);
}

TEST(ValueSet, RealIntervalAndRealEnumerationTakeAReal) {
    NoxValue v(R(0, 9));
    v.Set(1.25);
    EXPECT_EQ(v.GetType(), NoxRealIntervalType);
    ExpectReal(v.GetAsRealInterval(), 1.25, 1.25);
    NoxValue w(RealRange(0, 9));
    w.Set(1.25);
    EXPECT_EQ(w.GetType(), NoxRealEnumType);
    ExpectRealEnum(w.GetRealEnum(), NoxEnumList, {1.25});
}

TEST(ValueSet, SetterOfAnotherKindIsIgnored) {
    const NoxValue kinds[] = {NoxValue(7),       NoxValue(2.5),
                              NoxValue(I(1, 2)), NoxValue(R(1, 2)),
                              NoxValue(IntegerList({1, 3})), NoxValue(RealList({0.5})),
                              NoxValue(NoxBoolean_Any), NoxValue(Kind(42))};
    const int ints[] = {9};
    const double reals[] = {9.5};
    for (const NoxValue &original : kinds) {
        const int k = original.GetType();
        std::vector<NoxValue> targets(9, original);
        if (k != NoxIntegerType && k != NoxIntegerIntervalType && k != NoxIntegerEnumType &&
            k != NoxBooleanType)
            targets[0].Set(3);
        if (k != NoxRealType && k != NoxRealIntervalType && k != NoxRealEnumType)
            targets[1].Set(3.5);
        if (k != NoxIntegerIntervalType)
            targets[2].Set(I(5, 6));
        if (k != NoxRealIntervalType)
            targets[3].Set(R(5, 6));
        if (k != NoxIntegerEnumType) {
            targets[4].Set(IntegerList({5}));
            targets[5].Set(1, ints);
        }
        if (k != NoxRealEnumType) {
            targets[6].Set(RealList({5.5}));
            targets[7].Set(1, reals);
        }
        if (k != NoxBooleanType)
            targets[8].Set(NoxTrue);
        for (const NoxValue &t : targets) {
            EXPECT_EQ(t.GetType(), original.GetType());
            ExpectSameReal(t.GetRealValue(), original.GetRealValue());
            EXPECT_EQ(Entries(t.GetIntegerEnum()), Entries(original.GetIntegerEnum()));
            EXPECT_EQ(Entries(t.GetRealEnum()), Entries(original.GetRealEnum()));
            EXPECT_EQ(t.GetIntegerEnum().GetRep(), original.GetIntegerEnum().GetRep());
            EXPECT_EQ(t.GetRealEnum().GetRep(), original.GetRealEnum().GetRep());
        }
    }
}

TEST(ValueSet, OwnKindSettersReplaceTheContent) {
    NoxValue i(1);
    i.Set(NoxSingleInteger_Nil);
    EXPECT_EQ(i.GetAsInteger(), NoxSingleInteger_Nil);
    NoxValue ii(I(1, 2));
    ii.Set(I(7, 3));
    ExpectInteger(ii.GetAsIntegerInterval(), 7, 3);
    NoxValue ri(R(1, 2));
    ri.Set(R(-4, -3));
    ExpectReal(ri.GetAsRealInterval(), -4, -3);
    NoxValue ie(IntegerList({1}));
    ie.Set(IntegerEnumIn(NoxEnumNil));
    ExpectIntegerEnum(ie.GetIntegerEnum(), NoxEnumNil, {});
    NoxValue re(RealList({1}));
    re.Set(RealRange(2, 3));
    ExpectRealEnum(re.GetRealEnum(), NoxEnumRange, {2, 3});
    NoxValue b(NoxTrue);
    b.Set(NoxBoolean_Nil);
    EXPECT_EQ(b.GetAsBoolean(), NoxBoolean_Nil);
}

TEST(ValueSet, ArrayOfValuesMakesAnUnsortedList) {
    NoxValue v(IntegerRange(0, 100));
    const int ints[] = {5, 5, -2, 9};
    v.Set(4, ints);
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {5, 5, -2, 9});
    NoxValue w(RealEnumIn(NoxEnumAny));
    const double reals[] = {3.5, 1.5};
    w.Set(2, reals);
    ExpectRealEnum(w.GetRealEnum(), NoxEnumList, {3.5, 1.5});
}

TEST(ValueSet, ArrayOfValuesWithNegativeCountOrNullPointerIsTheEmptyList) {
    const int ints[] = {1, 2};
    NoxValue a(IntegerList({7, 8}));
    a.Set(-3, ints);
    ExpectIntegerEnum(a.GetIntegerEnum(), NoxEnumList, {});
    NoxValue b(IntegerList({7, 8}));
    b.Set(2, static_cast<const int *>(nullptr));
    ExpectIntegerEnum(b.GetIntegerEnum(), NoxEnumList, {});
    NoxValue c(RealList({7, 8}));
    c.Set(5, static_cast<const double *>(nullptr));
    ExpectRealEnum(c.GetRealEnum(), NoxEnumList, {});
    NoxValue d(NoxRealEnumType);
    d.Set(0, static_cast<const double *>(nullptr));
    ExpectRealEnum(d.GetRealEnum(), NoxEnumList, {});
}

TEST(ValueSet, ListSettersWithoutMemoryLeaveAListWithoutElements) {
    NoxValue v(NoxIntegerEnumType);
    NoxValue w(NoxRealEnumType);
    const int ints[] = {1, 2, 3};
    const double reals[] = {1.5};
    {
        AllocationFailure failure;
        v.Set(3, ints);
        w.Set(1, reals);
        v.Set(4);
        w.Set(4.5);
    }
    EXPECT_EQ(v.GetIntegerEnum().GetRep(), NoxEnumList);
    EXPECT_EQ(v.GetIntegerEnum().GetSize(), 0);
    EXPECT_EQ(w.GetRealEnum().GetRep(), NoxEnumList);
    EXPECT_EQ(w.GetRealEnum().GetSize(), 0);
}

// ---- SetIndefinite ----

TEST(ValueSetIndefinite, MakesIntervalsEnumerationsAndBooleansAny) {
    NoxValue a(I(1, 2));
    a.SetIndefinite();
    ExpectInteger(a.GetAsIntegerInterval(), NoxInteger_Any.lower, NoxInteger_Any.upper);
    NoxValue b(R(1, 2));
    b.SetIndefinite();
    ExpectReal(b.GetAsRealInterval(), NoxReal_Any.lower, NoxReal_Any.upper);
    NoxValue c(IntegerList({1, 2}));
    c.SetIndefinite();
    ExpectIntegerEnum(c.GetIntegerEnum(), NoxEnumAny, {});
    NoxValue d(RealList({1, 2}));
    d.SetIndefinite();
    ExpectRealEnum(d.GetRealEnum(), NoxEnumAny, {});
    NoxValue e(NoxFalse);
    e.SetIndefinite();
    EXPECT_EQ(e.GetAsBoolean(), NoxBoolean_Any);
    for (const NoxValue *v : {&a, &b, &c, &d, &e})
        EXPECT_NE(v->GetType(), NoxUndefinedType);
}

TEST(ValueSetIndefinite, LeavesSingleValuesAndUndefinedUnchanged) {
    NoxValue i(5);
    i.SetIndefinite();
    EXPECT_EQ(i.GetType(), NoxIntegerType);
    EXPECT_EQ(i.GetAsInteger(), 5);
    NoxValue r(-2.5);
    r.SetIndefinite();
    ExpectSameReal(r.GetAsReal(), -2.5);
    NoxValue u;
    u.SetIndefinite();
    EXPECT_EQ(u.GetType(), NoxUndefinedType);
    NoxValue k(Kind(13));
    k.SetIndefinite();
    EXPECT_EQ(static_cast<int>(k.GetType()), 13);
}

// ---- GetAsInteger ----

TEST(ValueGetAsInteger, IntegerPassesThroughMarkersIncluded) {
    EXPECT_EQ(NoxValue(-12).GetAsInteger(), -12);
    EXPECT_EQ(NoxValue(NoxSingleInteger_Any).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(NoxSingleInteger_Nil).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(INT_MIN).GetAsInteger(), INT_MIN);
}

TEST(ValueGetAsInteger, BooleanGivesItsCode) {
    EXPECT_EQ(NoxValue(NoxFalse).GetAsInteger(), 0);
    EXPECT_EQ(NoxValue(NoxTrue).GetAsInteger(), 1);
    EXPECT_EQ(NoxValue(NoxBoolean_Any).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(NoxBoolean_Nil).GetAsInteger(), 3);
}

TEST(ValueGetAsInteger, RealMarkersBecomeIntegerMarkers) {
    EXPECT_EQ(NoxValue(NoxSingleReal_Any).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(NoxSingleReal_Nil).GetAsInteger(), NoxSingleInteger_Nil);
    // Just beyond the limits counts as a marker too.
    volatile double above = NoxMaxReal;
    EXPECT_EQ(NoxValue(above * 1.5).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(-above * 1.5).GetAsInteger(), NoxSingleInteger_Nil);
}

TEST(ValueGetAsInteger, RealTruncatesForgivingAShortfallOfAbsPrecision) {
    EXPECT_EQ(NoxValue(2.999999999999995).GetAsInteger(), 3);
    EXPECT_EQ(NoxValue(2.99999999999998).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(2.6).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(-4.7).GetAsInteger(), -4);
    EXPECT_EQ(NoxValue(-2.999999999999995).GetAsInteger(), -3);
    EXPECT_EQ(NoxValue(0.0).GetAsInteger(), 0);
    EXPECT_EQ(NoxValue(-0.0).GetAsInteger(), 0);
}

TEST(ValueGetAsInteger, RealOutsideTheIntRangeGivesIntMinWithoutUndefinedBehaviour) {
    EXPECT_EQ(NoxValue(1e20).GetAsInteger(), INT_MIN);
    EXPECT_EQ(NoxValue(-1e20).GetAsInteger(), INT_MIN);
    EXPECT_EQ(NoxValue(2147483648.0).GetAsInteger(), INT_MIN);
    EXPECT_EQ(NoxValue(2147483647.0).GetAsInteger(), INT_MAX);
    EXPECT_EQ(NoxValue(kNaN).GetAsInteger(), INT_MIN);
}

TEST(ValueGetAsInteger, IntegerIntervalIsNilExactOrAny) {
    EXPECT_EQ(NoxValue(I(4, 4)).GetAsInteger(), 4);
    EXPECT_EQ(NoxValue(I(4, 3)).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(I(3, 4)).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(NoxInteger_Nil).GetAsInteger(), NoxSingleInteger_Nil);
}

TEST(ValueGetAsInteger, IntegerEnumerationReadsItsHull) {
    EXPECT_EQ(NoxValue(IntegerList({6})).GetAsInteger(), 6);
    EXPECT_EQ(NoxValue(IntegerList({1, 6})).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(IntegerRange(6, 1)).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(IntegerEnumIn(NoxEnumNil)).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(IntegerEnumIn(NoxEnumAny)).GetAsInteger(), NoxSingleInteger_Any);
}

TEST(ValueGetAsInteger, RealIntervalIsRoundedInwardFirst) {
    EXPECT_EQ(NoxValue(R(2.0, 2.0)).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(R(1.2, 1.2)).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(R(1.2, 3.4)).GetAsInteger(), NoxSingleInteger_Any);
    EXPECT_EQ(NoxValue(R(1.2, 2.4)).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(NoxReal_Nil).GetAsInteger(), NoxSingleInteger_Nil);
}

TEST(ValueGetAsInteger, RealEnumerationReadsItsHullRoundedInward) {
    EXPECT_EQ(NoxValue(RealList({1.2, 2.4})).GetAsInteger(), 2);
    EXPECT_EQ(NoxValue(RealRange(1.2, 1.4)).GetAsInteger(), NoxSingleInteger_Nil);
    EXPECT_EQ(NoxValue(RealEnumIn(NoxEnumAny)).GetAsInteger(), NoxSingleInteger_Any);
}

TEST(ValueGetAsInteger, UndefinedAndUnknownKindsReport461AndGiveZero) {
    {
        ReportRecorder recorder;
        EXPECT_EQ(NoxValue().GetAsInteger(), 0);
        ExpectOneReport(recorder, 461);
    }
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        EXPECT_EQ(WithUnknownKind(NoxValue(5), code).GetAsInteger(), 0);
        ExpectOneReport(recorder, 461);
    }
}

// ---- GetAsReal ----

TEST(ValueGetAsReal, IntegerGivesItsDoubleOrTheRealMarkers) {
    ExpectSameReal(NoxValue(-7).GetAsReal(), -7.0);
    ExpectSameReal(NoxValue(NoxSingleInteger_Any).GetAsReal(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(NoxSingleInteger_Nil).GetAsReal(), NoxSingleReal_Nil);
    ExpectSameReal(NoxValue(INT_MIN).GetAsReal(), -2147483648.0);
}

TEST(ValueGetAsReal, RealIsAsStored) {
    ExpectSameReal(NoxValue(0.1).GetAsReal(), 0.1);
    ExpectSameReal(NoxValue(NoxSingleReal_Any).GetAsReal(), NoxSingleReal_Any);
    EXPECT_TRUE(std::isnan(NoxValue(kNaN).GetAsReal()));
}

TEST(ValueGetAsReal, IntegerIntervalAndEnumerationAreNilExactOrAny) {
    ExpectSameReal(NoxValue(I(3, 3)).GetAsReal(), 3.0);
    ExpectSameReal(NoxValue(I(3, 2)).GetAsReal(), NoxSingleReal_Nil);
    ExpectSameReal(NoxValue(I(2, 3)).GetAsReal(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(IntegerList({-5})).GetAsReal(), -5.0);
    ExpectSameReal(NoxValue(IntegerList({-5, 5})).GetAsReal(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(IntegerEnumIn(NoxEnumNil)).GetAsReal(), NoxSingleReal_Nil);
}

TEST(ValueGetAsReal, RealIntervalAndEnumerationCompareTheirWidthWithAbsPrecision) {
    ExpectSameReal(NoxValue(R(2, 2)).GetAsReal(), 2.0);
    ExpectSameReal(NoxValue(R(2, 1.9)).GetAsReal(), NoxSingleReal_Nil);
    // Inverted by any amount is nil, even within the precision.
    ExpectSameReal(NoxValue(R(1, 1 - 1e-15)).GetAsReal(), NoxSingleReal_Nil);
    // A width of up to NoxAbsPrecision gives the lower bound.
    volatile double lo = 1.0;
    volatile double hi = lo + 1e-14;
    ASSERT_LE(hi - lo, NoxAbsPrecision);
    ExpectSameReal(NoxValue(R(lo, hi)).GetAsReal(), 1.0);
    ExpectSameReal(NoxValue(R(1, 1.0001)).GetAsReal(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(RealList({0.5})).GetAsReal(), 0.5);
    ExpectSameReal(NoxValue(RealRange(0.5, 0.75)).GetAsReal(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(RealEnumIn(NoxEnumNil)).GetAsReal(), NoxSingleReal_Nil);
}

TEST(ValueGetAsReal, UndefinedBooleanAndUnknownKindsReport490AndGiveZero) {
    {
        ReportRecorder recorder;
        ExpectSameReal(NoxValue().GetAsReal(), 0.0);
        ExpectOneReport(recorder, 490);
    }
    {
        ReportRecorder recorder;
        ExpectSameReal(NoxValue(NoxTrue).GetAsReal(), 0.0);
        ExpectOneReport(recorder, 490);
    }
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        ExpectSameReal(WithUnknownKind(NoxValue(2.5), code).GetAsReal(), 0.0);
        ExpectOneReport(recorder, 490);
    }
}

// ---- GetAsIntegerInterval ----

TEST(ValueGetAsIntegerInterval, UndefinedIsAny) {
    ReportRecorder recorder;
    ExpectInteger(NoxValue().GetAsIntegerInterval(), -NoxMaxInteger, NoxMaxInteger);
    EXPECT_TRUE(recorder.reports.empty());
}

TEST(ValueGetAsIntegerInterval, IntegerIsAPointOrTheMarkerInterval) {
    ExpectInteger(NoxValue(8).GetAsIntegerInterval(), 8, 8);
    ExpectInteger(NoxValue(NoxSingleInteger_Nil).GetAsIntegerInterval(), NoxMaxInteger,
                  -NoxMaxInteger);
    ExpectInteger(NoxValue(NoxSingleInteger_Any).GetAsIntegerInterval(), -NoxMaxInteger,
                  NoxMaxInteger);
}

TEST(ValueGetAsIntegerInterval, RealIsRoundedInward) {
    ExpectInteger(NoxValue(2.999999999999995).GetAsIntegerInterval(), 3, 3);
    ExpectInteger(NoxValue(2.5).GetAsIntegerInterval(), NoxMaxInteger, -NoxMaxInteger);
    ExpectInteger(NoxValue(-4.0).GetAsIntegerInterval(), -4, -4);
    ExpectInteger(NoxValue(NoxSingleReal_Nil).GetAsIntegerInterval(), NoxMaxInteger,
                  -NoxMaxInteger);
    ExpectInteger(NoxValue(NoxSingleReal_Any).GetAsIntegerInterval(), -NoxMaxInteger,
                  NoxMaxInteger);
}

TEST(ValueGetAsIntegerInterval, IntervalsAndEnumerations) {
    ExpectInteger(NoxValue(I(9, -9)).GetAsIntegerInterval(), 9, -9);
    ExpectInteger(NoxValue(R(0.5, 2.5)).GetAsIntegerInterval(), 1, 2);
    ExpectInteger(NoxValue(R(0.2, 0.8)).GetAsIntegerInterval(), NoxMaxInteger, -NoxMaxInteger);
    ExpectInteger(NoxValue(IntegerList({2, 5, 11})).GetAsIntegerInterval(), 2, 11);
    ExpectInteger(NoxValue(IntegerEnumIn(NoxEnumAny)).GetAsIntegerInterval(), -NoxMaxInteger,
                  NoxMaxInteger);
    ExpectInteger(NoxValue(RealList({-1.5, 0.5, 3.5})).GetAsIntegerInterval(), -1, 3);
    ExpectInteger(NoxValue(RealEnumIn(NoxEnumNil)).GetAsIntegerInterval(), NoxMaxInteger,
                  -NoxMaxInteger);
}

TEST(ValueGetAsIntegerInterval, BooleanGivesZeroToOneForAnyAndNilForNil) {
    ExpectInteger(NoxValue(NoxBoolean_Any).GetAsIntegerInterval(), 0, 1);
    ExpectInteger(NoxValue(NoxBoolean_Nil).GetAsIntegerInterval(), NoxMaxInteger,
                  -NoxMaxInteger);
    ExpectInteger(NoxValue(NoxFalse).GetAsIntegerInterval(), 0, 0);
    ExpectInteger(NoxValue(NoxTrue).GetAsIntegerInterval(), 1, 1);
}

TEST(ValueGetAsIntegerInterval, UnknownKindReports524AndReadsTheSlot) {
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        ExpectInteger(WithUnknownKind(NoxValue(I(-3, 12)), code).GetAsIntegerInterval(), -3, 12);
        ExpectOneReport(recorder, 524);
    }
    // A slot holding a real pair is read as the integers of its bytes.
    ReportRecorder recorder;
    NoxIntegerInterval expected;
    const NoxRealInterval bytes = R(1.5, -2.25);
    std::memcpy(&expected, &bytes, sizeof expected);
    ExpectInteger(WithUnknownKind(NoxValue(bytes), 8).GetAsIntegerInterval(), expected.lower,
                  expected.upper);
    ExpectOneReport(recorder, 524);
}

// ---- GetAsRealInterval ----

TEST(ValueGetAsRealInterval, UndefinedIsAny) {
    ReportRecorder recorder;
    ExpectReal(NoxValue().GetAsRealInterval(), -NoxMaxReal, NoxMaxReal);
    EXPECT_TRUE(recorder.reports.empty());
}

TEST(ValueGetAsRealInterval, SingleValuesArePointsOrMarkerIntervals) {
    ExpectReal(NoxValue(3).GetAsRealInterval(), 3.0, 3.0);
    ExpectReal(NoxValue(NoxSingleInteger_Nil).GetAsRealInterval(), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxValue(NoxSingleInteger_Any).GetAsRealInterval(), -NoxMaxReal, NoxMaxReal);
    ExpectReal(NoxValue(0.1).GetAsRealInterval(), 0.1, 0.1);
    ExpectReal(NoxValue(NoxSingleReal_Nil).GetAsRealInterval(), NoxMaxReal, -NoxMaxReal);
    ExpectReal(NoxValue(NoxSingleReal_Any).GetAsRealInterval(), -NoxMaxReal, NoxMaxReal);
}

TEST(ValueGetAsRealInterval, IntegerIntervalConvertsItsBoundsEmptyStaysEmpty) {
    ExpectReal(NoxValue(I(-2, 5)).GetAsRealInterval(), -2.0, 5.0);
    ExpectReal(NoxValue(I(5, -2)).GetAsRealInterval(), 5.0, -2.0);
    ExpectReal(NoxValue(NoxInteger_Nil).GetAsRealInterval(), 2147483646.0, -2147483646.0);
}

TEST(ValueGetAsRealInterval, RealIntervalAndEnumerations) {
    ExpectReal(NoxValue(R(7, 1)).GetAsRealInterval(), 7, 1);
    ExpectReal(NoxValue(IntegerList({-1, 4})).GetAsRealInterval(), -1.0, 4.0);
    ExpectReal(NoxValue(IntegerEnumIn(NoxEnumAny)).GetAsRealInterval(), -2147483646.0,
               2147483646.0);
    ExpectReal(NoxValue(RealList({0.25, 0.5})).GetAsRealInterval(), 0.25, 0.5);
    ExpectReal(NoxValue(RealEnumIn(NoxEnumAny)).GetAsRealInterval(), -NoxMaxReal, NoxMaxReal);
}

TEST(ValueGetAsRealInterval, BooleanReports548AndReadsTheSlot) {
    ReportRecorder recorder;
    NoxValue b(NoxTrue);
    NoxRealInterval expected;
    const NoxIntegerInterval bytes[2] = {I(NoxTrue, 0), I(0, 0)};
    std::memcpy(&expected, bytes, sizeof expected);
    ExpectReal(b.GetAsRealInterval(), expected.lower, expected.upper);
    ExpectOneReport(recorder, 548);
}

TEST(ValueGetAsRealInterval, UnknownKindReports548AndReadsTheSlot) {
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        ExpectReal(WithUnknownKind(NoxValue(R(1.5, 2.5)), code).GetAsRealInterval(), 1.5, 2.5);
        ExpectOneReport(recorder, 548);
    }
}

// ---- GetAsBoolean ----

TEST(ValueGetAsBoolean, UndefinedIsAny) {
    ReportRecorder recorder;
    EXPECT_EQ(NoxValue().GetAsBoolean(), NoxBoolean_Any);
    EXPECT_TRUE(recorder.reports.empty());
}

TEST(ValueGetAsBoolean, IntegerIsTrueWhenNotZeroMarkersIncluded) {
    EXPECT_EQ(NoxValue(0).GetAsBoolean(), NoxFalse);
    EXPECT_EQ(NoxValue(-3).GetAsBoolean(), NoxTrue);
    EXPECT_EQ(NoxValue(NoxSingleInteger_Nil).GetAsBoolean(), NoxTrue);
    EXPECT_EQ(NoxValue(NoxSingleInteger_Any).GetAsBoolean(), NoxTrue);
}

TEST(ValueGetAsBoolean, IntegerIntervalIsNilFalseTrueOrAny) {
    EXPECT_EQ(NoxValue(I(-3, 5)).GetAsBoolean(), NoxBoolean_Any);
    EXPECT_EQ(NoxValue(I(0, 0)).GetAsBoolean(), NoxFalse);
    EXPECT_EQ(NoxValue(I(2, 5)).GetAsBoolean(), NoxTrue);
    EXPECT_EQ(NoxValue(I(-5, -2)).GetAsBoolean(), NoxTrue);
    EXPECT_EQ(NoxValue(I(5, 2)).GetAsBoolean(), NoxBoolean_Nil);
    EXPECT_EQ(NoxValue(I(0, 3)).GetAsBoolean(), NoxBoolean_Any);
    EXPECT_EQ(NoxValue(I(-3, 0)).GetAsBoolean(), NoxBoolean_Any);
}

TEST(ValueGetAsBoolean, IntegerEnumerationReadsItsHull) {
    EXPECT_EQ(NoxValue(IntegerList({0})).GetAsBoolean(), NoxFalse);
    EXPECT_EQ(NoxValue(IntegerList({-1, 1})).GetAsBoolean(), NoxBoolean_Any);
    EXPECT_EQ(NoxValue(IntegerList({1, 4})).GetAsBoolean(), NoxTrue);
    EXPECT_EQ(NoxValue(IntegerEnumIn(NoxEnumNil)).GetAsBoolean(), NoxBoolean_Nil);
}

TEST(ValueGetAsBoolean, BooleanIsItsCode) {
    for (NoxBoolean b : {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil})
        EXPECT_EQ(NoxValue(b).GetAsBoolean(), b);
}

TEST(ValueGetAsBoolean, RealKindsAndUnknownKindsReport572AndReadTheLowerInteger) {
    const NoxValue values[] = {NoxValue(2.5), NoxValue(R(1.5, 2.5)),
                               NoxValue(NoxRealEnumType)};
    const double lowers[] = {2.5, 1.5, 0.0};
    for (int i = 0; i < 3; ++i) {
        ReportRecorder recorder;
        EXPECT_EQ(static_cast<int>(values[i].GetAsBoolean()), LowerIntegerOfReal(lowers[i]));
        ExpectOneReport(recorder, 572);
    }
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        EXPECT_EQ(WithUnknownKind(NoxValue(NoxBoolean_Any), code).GetAsBoolean(),
                  NoxBoolean_Any);
        ExpectOneReport(recorder, 572);
    }
}

// ---- GetAsIntegerEnum ----

TEST(ValueGetAsIntegerEnum, EmptiesTheOutputAndKeepsItsState) {
    NoxIntegerEnum out = IntegerList({1, 2, 3});
    NoxValue().GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {});
    NoxIntegerEnum range = IntegerRange(1, 5);
    NoxValue().GetAsIntegerEnum(range);
    ExpectIntegerEnum(range, NoxEnumRange, {});
    NoxIntegerEnum nil(NoxEnumNil);
    NoxValue().GetAsIntegerEnum(nil);
    ExpectIntegerEnum(nil, NoxEnumNil, {});
}

TEST(ValueGetAsIntegerEnum, IntegerIsNilAnyOrAOneElementList) {
    NoxIntegerEnum out = IntegerList({1, 2});
    NoxValue(NoxSingleInteger_Nil).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumNil, {});
    NoxValue(NoxSingleInteger_Any).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumAny, {});
    NoxValue(-8).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {-8});
}

TEST(ValueGetAsIntegerEnum, RealIsNilAnyOrItsTruncation) {
    NoxIntegerEnum out(NoxEnumAny);
    NoxValue(NoxSingleReal_Nil).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumNil, {});
    NoxValue(NoxSingleReal_Any).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumAny, {});
    NoxValue(2.999999999999995).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {3});
    NoxValue(-4.7).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {-4});
    NoxValue(1e30).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {INT_MIN});
}

TEST(ValueGetAsIntegerEnum, IntegerIntervalIsAnyNilOrARange) {
    NoxIntegerEnum out(NoxEnumNil);
    NoxValue(NoxInteger_Any).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumAny, {});
    NoxValue(I(INT_MIN, INT_MAX)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumAny, {});
    NoxValue(I(4, 2)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumNil, {});
    NoxValue(I(2, 4)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {2, 4});
    NoxValue(I(-NoxMaxInteger, 0)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {-NoxMaxInteger, 0});
}

TEST(ValueGetAsIntegerEnum, RealIntervalIsTheRangeOfItsIntegersWithoutInfinityTest) {
    NoxIntegerEnum out(NoxEnumNil);
    NoxValue(R(0.5, 3.5)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {1, 3});
    NoxValue(NoxReal_Any).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {-NoxMaxInteger, NoxMaxInteger});
    NoxValue(R(0.2, 0.8)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {NoxMaxInteger, -NoxMaxInteger});
}

TEST(ValueGetAsIntegerEnum, RealEnumerationNotAListIsTheRangeOfItsHull) {
    NoxIntegerEnum out(NoxEnumNil);
    NoxValue(RealRange(-1.5, 2.5)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {-1, 2});
    NoxValue(RealEnumIn(NoxEnumAny)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {-NoxMaxInteger, NoxMaxInteger});
    NoxValue(RealEnumIn(NoxEnumNil)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {NoxMaxInteger, -NoxMaxInteger});
}

TEST(ValueGetAsIntegerEnum, RealListDropsRepeatsOfTheLastConvertedElement) {
    NoxIntegerEnum out(NoxEnumAny);
    NoxValue(RealList({1.0, 1.0000000000000002, 2.4, 2.6})).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {1, 2});
    // Only the last one appended counts: an unsorted list can repeat earlier integers.
    NoxValue(RealList({1.5, 2.5, 1.2})).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {1, 2, 1});
    NoxValue(RealList({})).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {});
}

TEST(ValueGetAsIntegerEnum, IntegerEnumerationIsCopied) {
    NoxIntegerEnum out(NoxEnumAny);
    NoxValue(IntegerList({3, 1})).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumList, {3, 1});
    NoxValue(IntegerRange(0, 9)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumRange, {0, 9});
    NoxValue(IntegerEnumIn(NoxEnumNil)).GetAsIntegerEnum(out);
    ExpectIntegerEnum(out, NoxEnumNil, {});
}

TEST(ValueGetAsIntegerEnum, IntoTheValuesOwnMemberKeepsIt) {
    NoxValue v(IntegerList({4, 5}));
    v.GetAsIntegerEnum(v.GetIntegerEnum());
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {4, 5});
}

TEST(ValueGetAsIntegerEnum, BooleanAndUnknownKindsReport691AndLeaveTheOutputEmpty) {
    {
        ReportRecorder recorder;
        NoxIntegerEnum out = IntegerList({1, 2});
        NoxValue(NoxTrue).GetAsIntegerEnum(out);
        ExpectIntegerEnum(out, NoxEnumList, {});
        ExpectOneReport(recorder, 691);
    }
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        NoxIntegerEnum out = IntegerRange(1, 2);
        WithUnknownKind(NoxValue(5), code).GetAsIntegerEnum(out);
        ExpectIntegerEnum(out, NoxEnumRange, {});
        ExpectOneReport(recorder, 691);
    }
}

// ---- GetAsRealEnum ----

TEST(ValueGetAsRealEnum, EmptiesTheOutputAndKeepsItsState) {
    NoxRealEnum out = RealList({1, 2});
    NoxValue().GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumList, {});
    NoxRealEnum range = RealRange(1, 2);
    NoxValue().GetAsRealEnum(range);
    ExpectRealEnum(range, NoxEnumRange, {});
}

TEST(ValueGetAsRealEnum, SingleValuesAreNilAnyOrAOneElementList) {
    NoxRealEnum out(NoxEnumAny);
    NoxValue(NoxSingleInteger_Nil).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumNil, {});
    NoxValue(NoxSingleInteger_Any).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumAny, {});
    NoxValue(6).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumList, {6.0});
    NoxValue(NoxSingleReal_Nil).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumNil, {});
    NoxValue(NoxSingleReal_Any).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumAny, {});
    NoxValue(0.1).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumList, {0.1});
}

TEST(ValueGetAsRealEnum, IntegerKindsGoThroughTheIntegerEnumeration) {
    NoxRealEnum out(NoxEnumNil);
    NoxValue(I(2, 4)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {2.0, 4.0});
    // An integer any becomes the bounded real range, not a real any.
    NoxValue(NoxInteger_Any).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {-2147483646.0, 2147483646.0});
    NoxValue(I(4, 2)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumNil, {});
    NoxValue(IntegerList({1, 3})).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumList, {1.0, 3.0});
    NoxValue(IntegerRange(-2, 2)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {-2.0, 2.0});
}

TEST(ValueGetAsRealEnum, RealIntervalIsAnyNilOrARange) {
    NoxRealEnum out(NoxEnumList);
    NoxValue(NoxReal_Any).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumAny, {});
    NoxValue(R(2, 1)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumNil, {});
    // Crossing by less than NoxAbsPrecision is not empty.
    NoxValue(R(1, 1 - 1e-15)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {1, 1 - 1e-15});
    NoxValue(R(0.5, 1.5)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {0.5, 1.5});
    NoxValue(R(0, NoxMaxReal)).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumRange, {0, NoxMaxReal});
}

TEST(ValueGetAsRealEnum, RealEnumerationIsCopied) {
    NoxRealEnum out(NoxEnumAny);
    NoxValue(RealList({0.5, 0.25})).GetAsRealEnum(out);
    ExpectRealEnum(out, NoxEnumList, {0.5, 0.25});
    NoxValue v(RealList({4.5}));
    v.GetAsRealEnum(v.GetRealEnum());
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {4.5});
}

TEST(ValueGetAsRealEnum, BooleanAndUnknownKindsReport624AndLeaveTheOutputEmpty) {
    {
        ReportRecorder recorder;
        NoxRealEnum out = RealList({1, 2});
        NoxValue(NoxBoolean_Nil).GetAsRealEnum(out);
        ExpectRealEnum(out, NoxEnumList, {});
        ExpectOneReport(recorder, 624);
    }
    for (int code : kUnknownKinds) {
        ReportRecorder recorder;
        NoxRealEnum out(NoxEnumAny);
        WithUnknownKind(NoxValue(2.5), code).GetAsRealEnum(out);
        ExpectRealEnum(out, NoxEnumAny, {});
        ExpectOneReport(recorder, 624);
    }
}

TEST(ValueGetAsEnum, WithoutMemoryTheOutputIsLeftWithoutElements) {
    NoxIntegerEnum integers(NoxEnumAny);
    NoxRealEnum reals(NoxEnumAny);
    {
        AllocationFailure failure;
        NoxValue(5).GetAsIntegerEnum(integers);
        NoxValue(RealList({})).GetAsIntegerEnum(integers);
        NoxValue(2.5).GetAsRealEnum(reals);
        NoxValue(I(1, 3)).GetAsRealEnum(reals);
    }
    EXPECT_EQ(integers.GetSize(), 0);
    EXPECT_EQ(reals.GetSize(), 0);
}

// ---- Assign ----

TEST(ValueAssign, IntoAnIntegerUsesGetAsIntegerOnTheLowerMemberOnly) {
    NoxEnvironment env;
    NoxValue v(7);
    v.Assign(env, NoxValue(R(1.2, 3.4)));
    EXPECT_EQ(v.GetType(), NoxIntegerType);
    EXPECT_EQ(v.GetAsInteger(), NoxSingleInteger_Any);
    v.Assign(env, NoxValue(R(2.0, 2.0)));
    EXPECT_EQ(v.GetAsInteger(), 2);
    v.Assign(env, NoxValue(NoxBoolean_Nil));
    EXPECT_EQ(v.GetAsInteger(), 3);
    // The upper integer of the slot keeps what the constructor put there.
    NoxValue w(9);
    w.Assign(env, NoxValue(4));
    ReportRecorder recorder;
    ExpectInteger(WithUnknownKind(w, 8).GetAsIntegerInterval(), 4, 9);
}

TEST(ValueAssign, IntoARealUsesGetAsRealOnTheLowerMemberOnly) {
    NoxEnvironment env;
    NoxValue v(0.5);
    v.Assign(env, NoxValue(NoxSingleInteger_Nil));
    ExpectSameReal(v.GetAsReal(), NoxSingleReal_Nil);
    v.Assign(env, NoxValue(I(4, 4)));
    ExpectSameReal(v.GetAsReal(), 4.0);
    NoxValue w(0.5);
    w.Assign(env, NoxValue(1.5));
    ReportRecorder recorder;
    ExpectReal(WithUnknownKind(w, 8).GetAsRealInterval(), 1.5, 0.5);
}

TEST(ValueAssign, IntoIntervalsUsesTheIntervalConversions) {
    NoxEnvironment env;
    NoxValue a(NoxIntegerIntervalType);
    a.Assign(env, NoxValue(R(0.5, 2.5)));
    EXPECT_EQ(a.GetType(), NoxIntegerIntervalType);
    ExpectInteger(a.GetAsIntegerInterval(), 1, 2);
    a.Assign(env, NoxValue(NoxBoolean_Any));
    ExpectInteger(a.GetAsIntegerInterval(), 0, 1);
    NoxValue b(NoxRealIntervalType);
    b.Assign(env, NoxValue(IntegerList({-3, 8})));
    EXPECT_EQ(b.GetType(), NoxRealIntervalType);
    ExpectReal(b.GetAsRealInterval(), -3.0, 8.0);
    b.Assign(env, NoxValue());
    ExpectReal(b.GetAsRealInterval(), -NoxMaxReal, NoxMaxReal);
}

TEST(ValueAssign, IntoAnIntegerEnumerationCorrectsToTheMaximumSize) {
    NoxEnvironment env;
    env.SetMaxEnumSize(10);
    NoxValue v(NoxIntegerEnumType);
    v.Assign(env, NoxValue(I(1, 5)));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {1, 2, 3, 4, 5});
    v.Assign(env, NoxValue(I(1, 11)));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumRange, {1, 11});
    v.Assign(env, NoxValue(IntegerList({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 20})));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumRange, {1, 20});
    v.Assign(env, NoxValue(R(0.5, 3.5)));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumList, {1, 2, 3});
    v.Assign(env, NoxValue(R(0.2, 0.8)));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumNil, {});
    v.Assign(env, NoxValue(NoxReal_Any));
    ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumAny, {});
    EXPECT_EQ(v.GetType(), NoxIntegerEnumType);
}

TEST(ValueAssign, IntoARealEnumerationCorrectsIntegerSourcesAsIntegers) {
    NoxEnvironment env;
    env.SetMaxEnumSize(10);
    NoxValue v(NoxRealEnumType);
    // A short integer range becomes the list of its integers before it turns real.
    v.Assign(env, NoxValue(I(1, 3)));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {1.0, 2.0, 3.0});
    v.Assign(env, NoxValue(IntegerRange(-1, 1)));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {-1.0, 0.0, 1.0});
    v.Assign(env, NoxValue(7));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {7.0});
    v.Assign(env, NoxValue(I(1, 30)));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumRange, {1.0, 30.0});
    v.Assign(env, NoxValue(NoxSingleInteger_Nil));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumNil, {});
    EXPECT_EQ(v.GetType(), NoxRealEnumType);
}

TEST(ValueAssign, IntoARealEnumerationCorrectsRealSourcesAsReals) {
    NoxEnvironment env;
    env.SetMaxEnumSize(3);
    NoxValue v(NoxRealEnumType);
    v.Assign(env, NoxValue(R(1, 3)));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumRange, {1, 3});
    v.Assign(env, NoxValue(R(2, 2)));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {2});
    v.Assign(env, NoxValue(RealList({1, 2, 3, 4})));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumRange, {1, 4});
    v.Assign(env, NoxValue(0.5));
    ExpectRealEnum(v.GetRealEnum(), NoxEnumList, {0.5});
    // An undefined source leaves a list without elements, which Correct makes nil.
    v.Assign(env, NoxValue());
    ExpectRealEnum(v.GetRealEnum(), NoxEnumNil, {});
}

TEST(ValueAssign, IntoABooleanUsesGetAsBoolean) {
    NoxEnvironment env;
    NoxValue v(NoxFalse);
    v.Assign(env, NoxValue(I(-1, 1)));
    EXPECT_EQ(v.GetAsBoolean(), NoxBoolean_Any);
    v.Assign(env, NoxValue(4));
    EXPECT_EQ(v.GetAsBoolean(), NoxTrue);
    v.Assign(env, NoxValue());
    EXPECT_EQ(v.GetAsBoolean(), NoxBoolean_Any);
}

TEST(ValueAssign, UndefinedValueStaysUndefined) {
    NoxEnvironment env;
    NoxValue v;
    v.Assign(env, NoxValue(3));
    EXPECT_EQ(v.GetType(), NoxUndefinedType);
    v.Assign(env, NoxValue(IntegerList({1})));
    EXPECT_EQ(v.GetType(), NoxUndefinedType);
    EXPECT_EQ(v.GetIntegerEnum().GetRep(), NoxEnumAny);
}

TEST(ValueAssign, UnsupportedSourceReportsAndWritesTheFallback) {
    NoxEnvironment env;
    {
        ReportRecorder recorder;
        NoxValue v(5);
        v.Assign(env, NoxValue());
        EXPECT_EQ(v.GetAsInteger(), 0);
        ExpectOneReport(recorder, 461);
    }
    {
        ReportRecorder recorder;
        NoxValue v(5.5);
        v.Assign(env, NoxValue(NoxTrue));
        ExpectSameReal(v.GetAsReal(), 0.0);
        ExpectOneReport(recorder, 490);
    }
    {
        ReportRecorder recorder;
        NoxValue v(NoxIntegerEnumType);
        v.Assign(env, NoxValue(NoxTrue));
        ExpectOneReport(recorder, 691);
        // The emptied any record is left as it was by Correct.
        ExpectIntegerEnum(v.GetIntegerEnum(), NoxEnumAny, {});
    }
    {
        ReportRecorder recorder;
        NoxValue v(RealList({1}));
        v.Assign(env, NoxValue(NoxTrue));
        ExpectOneReport(recorder, 624);
        ExpectRealEnum(v.GetRealEnum(), NoxEnumNil, {});
    }
    {
        ReportRecorder recorder;
        NoxValue v(NoxTrue);
        v.Assign(env, NoxValue(2.5));
        ExpectOneReport(recorder, 572);
    }
}

TEST(ValueAssign, FromItselfKeepsTheContent) {
    NoxEnvironment env;
    NoxValue a(IntegerList({2, 3}));
    a.Assign(env, a);
    ExpectIntegerEnum(a.GetIntegerEnum(), NoxEnumList, {2, 3});
    NoxValue b(RealList({0.5, 0.75}));
    b.Assign(env, b);
    ExpectRealEnum(b.GetRealEnum(), NoxEnumList, {0.5, 0.75});
    NoxValue c(I(1, 4));
    c.Assign(env, c);
    ExpectInteger(c.GetAsIntegerInterval(), 1, 4);
}

TEST(ValueAssign, LeavesTheErrorCodeAlone) {
    NoxEnvironment env;
    NoxValue v(NoxIntegerEnumType);
    v.Assign(env, NoxValue(NoxReal_Nil));
    NoxValue w(2);
    w.Assign(env, NoxValue(NoxSingleReal_Nil));
    EXPECT_EQ(env.GetError(), 0);
}

// ---- Emptiness and exactness ----

TEST(ValuePredicates, UndefinedIsEmptyAndExact) {
    NoxEnvironment env;
    NoxValue v;
    EXPECT_TRUE(v.IsEmpty(env));
    EXPECT_TRUE(v.IsExact(env));
    EXPECT_FALSE(v.IsConsistent(env));
    NoxValue k(Kind(20));
    EXPECT_TRUE(k.IsEmpty(env));
    EXPECT_TRUE(k.IsExact(env));
}

TEST(ValuePredicates, SingleValuesAreEmptyOnlyAsNilAndExactUnlessAMarker) {
    NoxEnvironment env;
    EXPECT_FALSE(NoxValue(3).IsEmpty(env));
    EXPECT_TRUE(NoxValue(3).IsExact(env));
    EXPECT_TRUE(NoxValue(NoxSingleInteger_Nil).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxSingleInteger_Nil).IsExact(env));
    EXPECT_FALSE(NoxValue(NoxSingleInteger_Any).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxSingleInteger_Any).IsExact(env));
    EXPECT_FALSE(NoxValue(INT_MIN).IsEmpty(env));
    EXPECT_FALSE(NoxValue(2.5).IsEmpty(env));
    EXPECT_TRUE(NoxValue(2.5).IsExact(env));
    EXPECT_TRUE(NoxValue(NoxSingleReal_Nil).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxSingleReal_Nil).IsExact(env));
    EXPECT_FALSE(NoxValue(NoxSingleReal_Any).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxSingleReal_Any).IsExact(env));
    EXPECT_TRUE(NoxValue(NoxMaxReal).IsExact(env));
}

TEST(ValuePredicates, IntegerIntervalAndEnumerationUseTheirIntegerInterval) {
    NoxEnvironment env;
    EXPECT_TRUE(NoxValue(I(2, 1)).IsEmpty(env));
    EXPECT_FALSE(NoxValue(I(1, 2)).IsEmpty(env));
    EXPECT_FALSE(NoxValue(I(1, 2)).IsExact(env));
    EXPECT_TRUE(NoxValue(I(2, 2)).IsExact(env));
    EXPECT_TRUE(NoxValue(IntegerEnumIn(NoxEnumNil)).IsEmpty(env));
    EXPECT_FALSE(NoxValue(IntegerList({4, 9})).IsEmpty(env));
    EXPECT_TRUE(NoxValue(IntegerList({4})).IsExact(env));
    // An enumeration is empty only through its hull: an inverted list is empty.
    EXPECT_TRUE(NoxValue(IntegerList({9, 4})).IsEmpty(env));
    // A range with fewer than two entries reads as nil.
    EXPECT_TRUE(NoxValue(IntegerEnumIn(NoxEnumRange)).IsEmpty(env));
}

TEST(ValuePredicates, RealIntervalAndEnumerationUseAbsPrecision) {
    NoxEnvironment env;
    env.SetTolerance(0.5); // not used: the precision is fixed
    EXPECT_FALSE(NoxValue(R(1, 1 - 1e-15)).IsEmpty(env));
    EXPECT_TRUE(NoxValue(R(1, 0.9)).IsEmpty(env));
    EXPECT_TRUE(NoxValue(R(1, 1 + 1e-15)).IsExact(env));
    EXPECT_FALSE(NoxValue(R(1, 1.1)).IsExact(env));
    EXPECT_TRUE(NoxValue(RealEnumIn(NoxEnumNil)).IsEmpty(env));
    EXPECT_FALSE(NoxValue(RealRange(0, 1)).IsEmpty(env));
    EXPECT_TRUE(NoxValue(RealList({0.5})).IsExact(env));
    EXPECT_FALSE(NoxValue(RealList({0.5, 0.6})).IsExact(env));
}

TEST(ValuePredicates, BooleanIsEmptyAsNilAndExactAsFalseOrTrue) {
    NoxEnvironment env;
    EXPECT_TRUE(NoxValue(NoxBoolean_Nil).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxBoolean_Any).IsEmpty(env));
    EXPECT_FALSE(NoxValue(NoxTrue).IsEmpty(env));
    EXPECT_TRUE(NoxValue(NoxFalse).IsExact(env));
    EXPECT_TRUE(NoxValue(NoxTrue).IsExact(env));
    EXPECT_FALSE(NoxValue(NoxBoolean_Any).IsExact(env));
    EXPECT_FALSE(NoxValue(NoxBoolean_Nil).IsExact(env));
    // Codes below 2 count as exact, negative ones included.
    EXPECT_TRUE(NoxValue(static_cast<NoxBoolean>(-4)).IsExact(env));
}

TEST(ValuePredicates, ConsistentIsNotEmptyForEveryKind) {
    NoxEnvironment env;
    const NoxValue values[] = {NoxValue(),
                               NoxValue(NoxSingleInteger_Nil),
                               NoxValue(4),
                               NoxValue(NoxSingleReal_Nil),
                               NoxValue(I(2, 1)),
                               NoxValue(R(0, 1)),
                               NoxValue(IntegerList({1})),
                               NoxValue(RealEnumIn(NoxEnumNil)),
                               NoxValue(NoxBoolean_Nil),
                               NoxValue(NoxTrue)};
    for (const NoxValue &v : values)
        EXPECT_EQ(v.IsConsistent(env), !v.IsEmpty(env)) << v.GetType();
}

TEST(ValuePredicates, DoNotReport) {
    NoxEnvironment env;
    ReportRecorder recorder;
    NoxValue(NoxTrue).IsEmpty(env);
    NoxValue().IsExact(env);
    NoxValue(Kind(30)).IsConsistent(env);
    EXPECT_TRUE(recorder.reports.empty());
    EXPECT_EQ(env.GetError(), 0);
}

// ---- Measures ----

TEST(ValueMeasures, SingleValues) {
    ExpectSameReal(NoxValue(3).GetMiddle(), 3.0);
    ExpectSameReal(NoxValue(NoxSingleInteger_Any).GetMiddle(), NoxSingleReal_Any);
    ExpectSameReal(NoxValue(2.5).GetMiddle(), 2.5);
    ExpectSameReal(NoxValue(3).GetWidth(), 0.0);
    ExpectSameReal(NoxValue(2.5).GetWidth(), 0.0);
    ExpectSameReal(NoxValue(-3).GetMAG(), 3.0);
    ExpectSameReal(NoxValue(-2.5).GetMAG(), 2.5);
    // The any marker's interval is the whole line, whose magnitude is the limit.
    ExpectSameReal(NoxValue(NoxSingleReal_Any).GetMAG(), NoxMaxReal);
}

TEST(ValueMeasures, IntervalsAndEnumerationsUseTheirRealInterval) {
    volatile double lo = 0.1, hi = 0.7;
    NoxValue r(R(lo, hi));
    ExpectSameReal(r.GetMiddle(), (hi + lo) * 0.5);
    ExpectSameReal(r.GetWidth(), hi - lo);
    ExpectSameReal(r.GetMAG(), 0.7);
    NoxValue i(I(-4, 3));
    ExpectSameReal(i.GetMiddle(), -0.5);
    ExpectSameReal(i.GetWidth(), 7.0);
    ExpectSameReal(i.GetMAG(), 4.0);
    NoxValue ie(IntegerList({2, 10}));
    ExpectSameReal(ie.GetMiddle(), 6.0);
    ExpectSameReal(ie.GetWidth(), 8.0);
    ExpectSameReal(ie.GetMAG(), 10.0);
    NoxValue re(RealRange(-0.5, 0.25));
    ExpectSameReal(re.GetMiddle(), -0.125);
    ExpectSameReal(re.GetWidth(), 0.75);
    ExpectSameReal(re.GetMAG(), 0.5);
    NoxValue empty(I(3, 1));
    ExpectSameReal(empty.GetWidth(), -2.0);
}

TEST(ValueMeasures, UndefinedBooleanAndUnknownKindsMeasureZeroWithoutReporting) {
    ReportRecorder recorder;
    for (const NoxValue &v : {NoxValue(), NoxValue(NoxBoolean_Any), NoxValue(Kind(11))}) {
        ExpectSameReal(v.GetMiddle(), 0.0);
        ExpectSameReal(v.GetWidth(), 0.0);
        ExpectSameReal(v.GetMAG(), 0.0);
    }
    EXPECT_TRUE(recorder.reports.empty());
}

TEST(ValueRealValue, SingleKindsGiveTheirNumberMarkersIgnored) {
    ExpectSameReal(NoxValue(-9).GetRealValue(), -9.0);
    ExpectSameReal(NoxValue(NoxSingleInteger_Any).GetRealValue(), 2147483647.0);
    ExpectSameReal(NoxValue(0.3).GetRealValue(), 0.3);
    ExpectSameReal(NoxValue(NoxSingleReal_Nil).GetRealValue(), NoxSingleReal_Nil);
    ExpectSameReal(NoxValue().GetRealValue(), 0.0);
}

TEST(ValueRealValue, IntegerIntervalSumsAsWrappingIntsThenHalves) {
    ExpectSameReal(NoxValue(I(1, 4)).GetRealValue(), 2.5);
    ExpectSameReal(NoxValue(I(-3, -4)).GetRealValue(), -3.5);
    volatile std::int64_t lo = 2147483646, hi = 2147483646;
    const int wrapped = static_cast<int>(static_cast<std::uint32_t>(lo + hi));
    ASSERT_EQ(wrapped, -4);
    ExpectSameReal(NoxValue(I(2147483646, 2147483646)).GetRealValue(), wrapped / 2.0);
    ExpectSameReal(NoxValue(I(INT_MIN, INT_MIN)).GetRealValue(), 0.0);
    // The nil interval sums to 0.
    ExpectSameReal(NoxValue(NoxInteger_Nil).GetRealValue(), 0.0);
}

TEST(ValueRealValue, RealIntervalHalvesTheSum) {
    volatile double lo = 0.1, hi = 0.2;
    ExpectSameReal(NoxValue(R(lo, hi)).GetRealValue(), (lo + hi) / 2);
    ExpectSameReal(NoxValue(NoxReal_Any).GetRealValue(), 0.0);
}

TEST(ValueRealValue, EnumerationsUseTheirHull) {
    ExpectSameReal(NoxValue(IntegerList({1, 2, 6})).GetRealValue(), 3.5);
    volatile std::int64_t lo = -NoxMaxInteger, hi = -NoxMaxInteger;
    const int wrapped = static_cast<int>(static_cast<std::uint32_t>(lo + hi));
    ExpectSameReal(NoxValue(IntegerList({-NoxMaxInteger})).GetRealValue(), wrapped / 2.0);
    ExpectSameReal(NoxValue(IntegerEnumIn(NoxEnumNil)).GetRealValue(), 0.0);
    volatile double a = 0.1, b = 0.7;
    ExpectSameReal(NoxValue(RealList({a, 0.3, b})).GetRealValue(), (a + b) / 2);
}

TEST(ValueRealValue, BooleanReadsTheLowerRealOfTheSlot) {
    NoxValue b(NoxTrue);
    double expected;
    const NoxIntegerInterval bytes = I(NoxTrue, 0);
    std::memcpy(&expected, &bytes, sizeof expected);
    ExpectSameReal(b.GetRealValue(), expected);
}

// ---- Properties ----

namespace {

class RandomValues {
public:
    explicit RandomValues(std::uint32_t seed) : rng(seed) {}

    int Integer() {
        switch (Pick(8)) {
        case 0:
            return NoxSingleInteger_Any;
        case 1:
            return NoxSingleInteger_Nil;
        case 2:
            return Pick(2) ? INT_MIN : INT_MAX;
        case 3:
            return Pick(2) ? NoxMaxInteger : -NoxMaxInteger;
        default:
            return std::uniform_int_distribution<int>(-20, 20)(rng);
        }
    }

    double Real() {
        switch (Pick(12)) {
        case 0:
            return NoxSingleReal_Any;
        case 1:
            return NoxSingleReal_Nil;
        case 2:
            return Pick(2) ? NoxMaxReal : -NoxMaxReal;
        case 3:
            return std::numeric_limits<double>::quiet_NaN();
        case 4:
            return Pick(2) ? std::numeric_limits<double>::infinity()
                           : -std::numeric_limits<double>::infinity();
        case 5:
            return std::uniform_real_distribution<double>(-1e12, 1e12)(rng);
        case 6:
            return static_cast<double>(Integer()) + (Pick(2) ? 1e-15 : -1e-15);
        default:
            return std::uniform_real_distribution<double>(-20, 20)(rng);
        }
    }

    NoxIntegerEnum IntegerEnum() {
        NoxIntegerEnum e(NoxEnumNil);
        switch (Pick(6)) {
        case 0:
            e.SetRep(static_cast<NoxEnumRep>(Pick(6) - 1)); // any code, no array
            break;
        case 1:
            e.SetAsIntegerInterval(I(Integer(), Integer()));
            break;
        case 2:
            e.SetAsIntegerInterval(I(Integer(), Integer()));
            e.SetRep(static_cast<NoxEnumRep>(Pick(6) - 1));
            break;
        default: {
            const int n = Pick(4) == 0 ? 200 : Pick(8);
            for (int i = 0; i < n; ++i)
                e.Append(Integer());
            break;
        }
        }
        return e;
    }

    NoxRealEnum RealEnum() {
        NoxRealEnum e(NoxEnumNil);
        switch (Pick(6)) {
        case 0:
            e.SetRep(static_cast<NoxEnumRep>(Pick(6) - 1));
            break;
        case 1:
            e.SetAsRealInterval(R(Real(), Real()));
            break;
        case 2:
            e.SetAsRealInterval(R(Real(), Real()));
            e.SetRep(static_cast<NoxEnumRep>(Pick(6) - 1));
            break;
        default: {
            const int n = Pick(4) == 0 ? 200 : Pick(8);
            for (int i = 0; i < n; ++i)
                e.Append(Real());
            break;
        }
        }
        return e;
    }

    NoxValue Value() {
        switch (Pick(11)) {
        case 0:
            return NoxValue();
        case 1:
            return NoxValue(Integer());
        case 2:
            return NoxValue(Real());
        case 3:
            return NoxValue(I(Integer(), Integer()));
        case 4:
            return NoxValue(R(Real(), Real()));
        case 5:
            return NoxValue(IntegerEnum());
        case 6:
            return NoxValue(RealEnum());
        case 7:
            return NoxValue(static_cast<NoxBoolean>(Pick(6) - 1));
        case 8: {
            // A value of an unknown kind that keeps a slot.
            NoxValue v(R(Real(), Real()));
            v = NoxValue(static_cast<NoxValueType>(Pick(2) ? -3 : 8 + Pick(100)));
            return v;
        }
        case 9:
            return NoxValue(static_cast<NoxValueType>(Pick(8)));
        default:
            return NoxValue(Pick(2) ? NoxInteger_Nil : NoxInteger_Any);
        }
    }

    int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); }

private:
    std::mt19937 rng;
};

bool SameRealBits(double a, double b) { return Bits(a) == Bits(b); }

} // namespace

TEST(ValueCopy, CopyOfAnUnknownKindDoesNotCarryTheSlot) {
    // Unknown kinds copy only the kind: the copy's slot stays zero, so its real value is
    // 0.0 even where the source's reads an interval kept from before.
    NoxValue source(NoxRealInterval{1.5, 2.5});
    source = NoxValue(static_cast<NoxValueType>(12));
    EXPECT_EQ(source.GetRealValue(), 1.5);
    const NoxValue copy(source);
    EXPECT_EQ(copy.GetType(), 12);
    EXPECT_EQ(copy.GetRealValue(), 0.0);
}

TEST(ValueProperties, ConversionsAndAssignOnRandomValuesAreDefined) {
    const std::uint32_t seed = 20261122;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomValues random(seed);
    ReportRecorder recorder;
    NoxEnvironment env;
    for (int round = 0; round < 3000; ++round) {
        env.SetMaxEnumSize(random.Pick(3) == 0 ? random.Pick(4) - 1 : 50);
        const NoxValue src = random.Value();
        const NoxValue before(src);
        // A copy of an unknown kind does not carry the slot, so the real value is taken
        // from the source itself.
        const double realBefore = src.GetRealValue();

        NoxIntegerEnum integers = random.IntegerEnum();
        NoxRealEnum reals = random.RealEnum();
        const NoxEnumRep integersRep = integers.GetRep();
        const NoxEnumRep realsRep = reals.GetRep();
        (void)src.GetAsInteger();
        (void)src.GetAsReal();
        (void)src.GetAsIntegerInterval();
        (void)src.GetAsRealInterval();
        (void)src.GetAsBoolean();
        src.GetAsIntegerEnum(integers);
        src.GetAsRealEnum(reals);
        (void)src.GetRealValue();
        (void)src.GetMiddle();
        (void)src.GetWidth();
        (void)src.GetMAG();
        ASSERT_EQ(src.IsConsistent(env), !src.IsEmpty(env)) << "round " << round;
        (void)src.IsExact(env);

        // Conversions change nothing.
        ASSERT_EQ(src.GetType(), before.GetType()) << "round " << round;
        ASSERT_TRUE(SameRealBits(src.GetRealValue(), realBefore) ||
                    std::isnan(src.GetRealValue()))
            << "round " << round;
        ASSERT_EQ(Entries(src.GetIntegerEnum()), Entries(before.GetIntegerEnum()));

        // An undefined source leaves the output's state as it was.
        if (src.GetType() == NoxUndefinedType) {
            ASSERT_EQ(integers.GetRep(), integersRep) << "round " << round;
            ASSERT_EQ(reals.GetRep(), realsRep) << "round " << round;
            ASSERT_EQ(integers.GetSize(), 0);
            ASSERT_EQ(reals.GetSize(), 0);
        }

        // Assign into every kind keeps the kind; corrected lists respect the limit.
        for (int k = -1; k <= 8; ++k) {
            NoxValue target = random.Pick(2) ? random.Value() : NoxValue(Kind(k));
            const NoxValueType kind = target.GetType();
            target.Assign(env, src);
            ASSERT_EQ(target.GetType(), kind) << "round " << round;
            const int limit = env.GetMaxEnumSize();
            if (kind == NoxIntegerEnumType && target.GetIntegerEnum().GetRep() == NoxEnumList) {
                ASSERT_LE(target.GetIntegerEnum().GetSize(), limit < 0 ? 0 : limit)
                    << "round " << round;
            }
            NoxValue copy(target);
            ASSERT_EQ(copy.GetType(), kind);
            NoxValue *clone = copy.Clone();
            ASSERT_NE(clone, nullptr);
            clone->SetIndefinite();
            clone->Set(random.Integer());
            clone->Set(random.Real());
            clone->Assign(env, target);
            delete clone;
        }
    }
    EXPECT_EQ(env.GetError(), 0);
    for (const Report &r : recorder.reports) {
        ASSERT_EQ(r.condition, "0");
        ASSERT_EQ(r.file, "src/NoxValue");
        const int line = r.line;
        ASSERT_TRUE(line == 461 || line == 490 || line == 524 || line == 548 || line == 572 ||
                    line == 624 || line == 691)
            << line;
    }
}

TEST(ValueProperties, SupportedConversionsNeverReport) {
    const std::uint32_t seed = 77;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomValues random(seed);
    ReportRecorder recorder;
    for (int round = 0; round < 2000; ++round) {
        const NoxValue v = random.Value();
        const int k = v.GetType();
        const bool known = k >= 0 && k <= 7;
        recorder.reports.clear();
        (void)v.GetAsIntegerInterval();
        ASSERT_EQ(recorder.reports.size(), known ? 0u : 1u) << "round " << round;
        recorder.reports.clear();
        (void)v.GetAsRealInterval();
        ASSERT_EQ(recorder.reports.size(), known && k != NoxBooleanType ? 0u : 1u);
        recorder.reports.clear();
        (void)v.GetAsInteger();
        ASSERT_EQ(recorder.reports.size(), known && k != NoxUndefinedType ? 0u : 1u);
        recorder.reports.clear();
        (void)v.GetAsReal();
        ASSERT_EQ(recorder.reports.size(),
                  known && k != NoxUndefinedType && k != NoxBooleanType ? 0u : 1u);
        recorder.reports.clear();
        (void)v.GetAsBoolean();
        const bool booleanRule = k == 0 || k == 1 || k == 3 || k == 5 || k == 7;
        ASSERT_EQ(recorder.reports.size(), booleanRule ? 0u : 1u);
        recorder.reports.clear();
        NoxIntegerEnum integers(NoxEnumAny);
        v.GetAsIntegerEnum(integers);
        ASSERT_EQ(recorder.reports.size(), known && k != NoxBooleanType ? 0u : 1u);
        recorder.reports.clear();
        NoxRealEnum reals(NoxEnumAny);
        v.GetAsRealEnum(reals);
        ASSERT_EQ(recorder.reports.size(), known && k != NoxBooleanType ? 0u : 1u);
    }
}
