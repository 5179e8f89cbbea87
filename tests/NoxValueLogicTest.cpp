// Four-valued logic on values: every cell of every truth table, the operands that take
// part (integer kinds and booleans) and those that do not.
#include <NoxValueFunctions.h>

#include <gtest/gtest.h>

namespace {

typedef NoxValue (*Connective)(const NoxValue &, const NoxValue &);

const NoxBoolean F = NoxFalse;
const NoxBoolean T = NoxTrue;
const NoxBoolean A = NoxBoolean_Any;
const NoxBoolean N = NoxBoolean_Nil;

void ExpectBoolean(const NoxValue &v, NoxBoolean expected) {
    EXPECT_EQ(v.GetType(), NoxBooleanType);
    EXPECT_EQ(v.GetAsBoolean(), expected);
}

void ExpectTable(Connective f, const NoxBoolean (&table)[4][4]) {
    for (int p = 0; p < 4; ++p)
        for (int q = 0; q < 4; ++q) {
            SCOPED_TRACE(testing::Message() << "row " << p << " column " << q);
            ExpectBoolean(f(NoxValue(static_cast<NoxBoolean>(p)), NoxValue(static_cast<NoxBoolean>(q))),
                          table[p][q]);
        }
}

TEST(ValueLogic, NotTable) {
    ExpectBoolean(NoxNot(NoxValue(F)), T);
    ExpectBoolean(NoxNot(NoxValue(T)), F);
    ExpectBoolean(NoxNot(NoxValue(A)), A);
    ExpectBoolean(NoxNot(NoxValue(N)), N);
}

TEST(ValueLogic, OrTable) {
    const NoxBoolean table[4][4] = {{F, T, A, N}, {T, T, T, N}, {A, T, A, N}, {N, N, N, N}};
    ExpectTable(NoxOr, table);
}

TEST(ValueLogic, AndTable) {
    const NoxBoolean table[4][4] = {{F, F, F, N}, {F, T, A, N}, {F, A, A, N}, {N, N, N, N}};
    ExpectTable(NoxAnd, table);
}

TEST(ValueLogic, EqualTable) {
    const NoxBoolean table[4][4] = {{T, F, A, N}, {F, T, A, N}, {A, A, A, N}, {N, N, N, N}};
    ExpectTable(NoxEqual, table);
}

TEST(ValueLogic, NotEqualTable) {
    const NoxBoolean table[4][4] = {{F, T, A, N}, {T, F, A, N}, {A, A, A, N}, {N, N, N, N}};
    ExpectTable(NoxNotEqual, table);
}

TEST(ValueLogic, ImplicationTableReadsFirstImpliesSecond) {
    const NoxBoolean table[4][4] = {{T, T, T, N}, {F, T, A, N}, {A, T, A, N}, {N, N, N, N}};
    ExpectTable(NoxImplication, table);
    ExpectBoolean(NoxImplication(NoxValue(F), NoxValue(N)), N);
    ExpectBoolean(NoxImplication(NoxValue(A), NoxValue(T)), T);
}

TEST(ValueLogic, IntegerKindsTakePartThroughTheirTruthValue) {
    const int members[] = {0, 3};
    NoxValue list;
    list.Set(2, members);
    ExpectBoolean(NoxNot(NoxValue(0)), T);
    ExpectBoolean(NoxNot(NoxValue(7)), F);
    ExpectBoolean(NoxOr(NoxValue(0), NoxValue(NoxCreateIntegerInterval(2, 5))), T);
    ExpectBoolean(NoxAnd(NoxValue(1), NoxValue(NoxCreateIntegerInterval(-1, 1))), A);
    ExpectBoolean(NoxAnd(NoxValue(T), list), A);
    ExpectBoolean(NoxEqual(NoxValue(NoxCreateIntegerInterval(3, 2)), NoxValue(T)), N);
}

TEST(ValueLogic, OperandsWithoutTruthValueGiveNil) {
    const double reals[] = {0.0, 1.0};
    NoxValue realList;
    realList.Set(2, reals);
    const NoxValue others[] = {NoxValue(), NoxValue(1.0), NoxValue(NoxCreateRealInterval(0, 1)),
                               realList};
    for (const NoxValue &v : others) {
        SCOPED_TRACE(testing::Message() << "kind " << v.GetType());
        ExpectBoolean(NoxNot(v), N);
        ExpectBoolean(NoxOr(v, NoxValue(T)), N);
        ExpectBoolean(NoxOr(NoxValue(T), v), N);
        ExpectBoolean(NoxAnd(NoxValue(F), v), N);
        ExpectBoolean(NoxEqual(v, v), N);
        ExpectBoolean(NoxNotEqual(v, NoxValue(F)), N);
        ExpectBoolean(NoxImplication(NoxValue(F), v), N);
    }
}

TEST(ValueLogic, BooleanCodesOutsideTheTablesGiveNil) {
    const NoxValue odd(static_cast<NoxBoolean>(7));
    const NoxValue negative(static_cast<NoxBoolean>(-1));
    ExpectBoolean(NoxNot(odd), N);
    ExpectBoolean(NoxNot(negative), N);
    ExpectBoolean(NoxOr(NoxValue(T), odd), N);
    ExpectBoolean(NoxImplication(negative, NoxValue(T)), N);
}

} // namespace
