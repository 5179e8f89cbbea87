// The factory's composite builders: which nodes each creates, in which order, with which
// children and constants; their simplifications and null results; and the values of the
// built formulas at points where every operation is exact.
#include <NoxFactory.h>
#include <NoxOperators.h>

#include "NoxExpressionTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace {

/// Shows the protected determinant and Cramer builders to the tests.
class BuilderFactory : public TestFactory {
public:
    using NoxFactory::CreateDeterminant;
    using NoxFactory::CreateInterpolation;
};

class FactoryBuildersTest : public ::testing::Test {
protected:
    void SetUp() override {
        x = f.CreateVariable();
        for (NoxVariable *&v : vars)
            v = f.CreateVariable();
    }

    // The nodes registered since the count was `before`, in creation order.
    std::vector<NoxExpression *> Since(int before) const {
        std::vector<NoxExpression *> nodes;
        for (int i = before; i < f.ExpressionCount(); ++i)
            nodes.push_back(f.Expression(i));
        return nodes;
    }

    NoxExpression *Real(double r) { return f.CreateRealConstant(r); }

    // An operator node of type t whose children are exactly `children`, in order.
    static void ExpectNode(NoxExpression *node, NoxExpressionType t,
                           std::initializer_list<NoxExpression *> children) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), t);
        ASSERT_EQ(node->GetNbOfChildren(), static_cast<int>(children.size()));
        int i = 0;
        for (NoxExpression *child : children)
            EXPECT_EQ(node->GetChild(i++), child) << "child " << i - 1;
    }

    // A constant node holding the real r (exactly).
    static void ExpectRealConstant(NoxExpression *node, double r) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), NoxConstantExpr);
        EXPECT_EQ(node->GetExprValue().GetType(), NoxRealType);
        EXPECT_EQ(node->GetExprValue().GetAsReal(), r);
    }

    // A constant node holding the integer k.
    static void ExpectIntegerConstant(NoxExpression *node, int k) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), NoxConstantExpr);
        EXPECT_EQ(node->GetExprValue().GetType(), NoxIntegerType);
        EXPECT_EQ(node->GetExprValue().GetAsInteger(), k);
    }

    // A power node of `base` whose exponent is the integer constant k.
    static void ExpectPower(NoxExpression *node, NoxExpression *base, int k) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->GetType(), NoxPowerExpr);
        ASSERT_EQ(node->GetNbOfChildren(), 2);
        EXPECT_EQ(node->GetChild(0), base);
        ExpectIntegerConstant(node->GetChild(1), k);
    }

    // The 4×4 layout with the given leading rows.
    static void Fill(NoxExpression **m, std::initializer_list<std::vector<NoxExpression *>> rows) {
        for (int i = 0; i < 16; ++i)
            m[i] = nullptr;
        int r = 0;
        for (const std::vector<NoxExpression *> &row : rows) {
            for (size_t c = 0; c < row.size(); ++c)
                m[r * 4 + static_cast<int>(c)] = row[c];
            ++r;
        }
    }

    NoxExpression *Determinant(NoxExpression **m, int k) {
        int rows[4] = {0, 1, 2, 3};
        int cols[4] = {0, 1, 2, 3};
        return f.CreateDeterminant(m, rows, cols, k);
    }

    BuilderFactory f;
    NoxVariable *x = nullptr;
    NoxVariable *vars[8] = {};
};

// The value of the cubic 2t³ − 3t² + t + 5 and of its slope: small integers at integer
// points and short binary fractions at halves, so every step of an evaluation is exact.
double Cubic(double t) {
    return 2.0 * t * t * t - 3.0 * t * t + t + 5.0;
}
double CubicSlope(double t) {
    return 6.0 * t * t - 6.0 * t + 1.0;
}

// The determinant of the leading k×k block of a row-major 4×4 matrix, by permutations.
double ReferenceDeterminant(const double (&a)[4][4], int k) {
    int perm[4] = {0, 1, 2, 3};
    double total = 0.0;
    do {
        bool leading = true;
        for (int i = 0; i < k; ++i)
            leading = leading && perm[i] < k;
        for (int i = k; i < 4; ++i)
            leading = leading && perm[i] == i;
        if (!leading) continue;
        int inversions = 0;
        for (int i = 0; i < k; ++i)
            for (int j = i + 1; j < k; ++j)
                inversions += perm[i] > perm[j];
        double term = inversions % 2 ? -1.0 : 1.0;
        for (int i = 0; i < k; ++i)
            term *= a[i][perm[i]];
        total += term;
    } while (std::next_permutation(perm, perm + 4));
    return total;
}

} // namespace

// ---- Linear and quadratic terms ----

TEST_F(FactoryBuildersTest, LinearTerm_OfUnitAndNoughtIsXItselfWithoutNewNodes) {
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(1.0), x, NoxValue(0.0)), x);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, LinearTerm_WithFactorTwoCreatesOneConstantAndOneProduct) {
    const int before = f.ExpressionCount();
    NoxExpression *term = f.CreateLinearTerm(NoxValue(2.0), x, NoxValue(0.0));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    ExpectRealConstant(made[0], 2.0);
    EXPECT_EQ(made[1], term);
    ExpectNode(term, NoxProductExpr, {made[0], x});
}

TEST_F(FactoryBuildersTest, LinearTerm_WithOffsetOnlyIsTheSumOfTheOffsetAndX) {
    const int before = f.ExpressionCount();
    NoxExpression *term = f.CreateLinearTerm(NoxValue(1.0), x, NoxValue(3.0));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    ExpectRealConstant(made[0], 3.0);
    ExpectNode(term, NoxSumExpr, {made[0], x});
}

TEST_F(FactoryBuildersTest, LinearTerm_FullFormCreatesFactorProductOffsetSumInOrder) {
    const int before = f.ExpressionCount();
    NoxExpression *term = f.CreateLinearTerm(NoxValue(-2.5), x, NoxValue(0.75));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 4u);
    ExpectRealConstant(made[0], -2.5);
    ExpectNode(made[1], NoxProductExpr, {made[0], x});
    ExpectRealConstant(made[2], 0.75);
    EXPECT_EQ(made[3], term);
    ExpectNode(term, NoxSumExpr, {made[2], made[1]});
}

TEST_F(FactoryBuildersTest, LinearTerm_ConstantsKeepTheKindsOfTheFactors) {
    const int before = f.ExpressionCount();
    f.CreateLinearTerm(NoxValue(3), x, NoxValue(NoxRealInterval{1.0, 2.0}));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 4u);
    ExpectIntegerConstant(made[0], 3);
    EXPECT_EQ(made[2]->GetExprValue().GetType(), NoxRealIntervalType);
}

TEST_F(FactoryBuildersTest, LinearTerm_NeutralElementsAreRecognisedAcrossKindsAndWithinPrecision) {
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(1), x, NoxValue(0)), x);
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(1.0 + 1e-15), x, NoxValue(-0.0)), x);
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(NoxRealInterval{1.0, 1.0}), x, NoxValue(1e-15)), x);
    EXPECT_EQ(f.ExpressionCount(), before);
    // Beyond the precision the factor is kept.
    EXPECT_NE(f.CreateLinearTerm(NoxValue(1.0 + 1e-13), x, NoxValue(0.0)), x);
    EXPECT_EQ(f.ExpressionCount(), before + 2);
}

TEST_F(FactoryBuildersTest, LinearTerm_NullXGivesNullAfterCreatingTheConstants) {
    int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(2.0), nullptr, NoxValue(5.0)), nullptr);
    std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    ExpectRealConstant(made[0], 2.0);
    ExpectRealConstant(made[1], 5.0);

    before = f.ExpressionCount();
    EXPECT_EQ(f.CreateLinearTerm(NoxValue(1.0), nullptr, NoxValue(0.0)), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, LinearTerm_EvaluatesToFactorTimesXPlusOffset) {
    SetReal(x, 1.5);
    NoxExpression *term = f.CreateLinearTerm(NoxValue(-2.5), x, NoxValue(0.75));
    EXPECT_EQ(term->Eval(), 0.75 + -2.5 * 1.5);
}

TEST_F(FactoryBuildersTest, QuadraticTerm_OfUnitAndNoughtIsTheSquareOfX) {
    const int before = f.ExpressionCount();
    NoxExpression *term = f.CreateQuadraticTerm(NoxValue(1.0), x, NoxValue(0.0));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[1], term);
    ExpectPower(term, x, 2);
}

TEST_F(FactoryBuildersTest, QuadraticTerm_FullFormBuildsThePowerFirst) {
    const int before = f.ExpressionCount();
    NoxExpression *term = f.CreateQuadraticTerm(NoxValue(3.0), x, NoxValue(-1.0));
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 6u);
    ExpectIntegerConstant(made[0], 2);
    ExpectPower(made[1], x, 2);
    ExpectRealConstant(made[2], 3.0);
    ExpectNode(made[3], NoxProductExpr, {made[2], made[1]});
    ExpectRealConstant(made[4], -1.0);
    ExpectNode(term, NoxSumExpr, {made[4], made[3]});
}

TEST_F(FactoryBuildersTest, QuadraticTerm_NullXLeavesTheExponentAndTheConstants) {
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateQuadraticTerm(NoxValue(3.0), nullptr, NoxValue(-1.0)), nullptr);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 3u);
    ExpectIntegerConstant(made[0], 2);
    ExpectRealConstant(made[1], 3.0);
    ExpectRealConstant(made[2], -1.0);
}

TEST_F(FactoryBuildersTest, QuadraticTerm_EvaluatesToFactorTimesSquarePlusOffset) {
    SetReal(x, -1.5);
    NoxExpression *term = f.CreateQuadraticTerm(NoxValue(3.0), x, NoxValue(-1.0));
    EXPECT_EQ(term->Eval(), -1.0 + 3.0 * (-1.5 * -1.5));
}

// ---- Polynomial terms ----

TEST_F(FactoryBuildersTest, PolynomialTerm_OfOneCoefficientIsThatCoefficient) {
    NoxExpression *c[1] = {vars[0]};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreatePolynomialTerm(1, c, x), vars[0]);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, PolynomialTerm_WithoutCoefficientsIsANewZeroConstant) {
    NoxExpression *c[1] = {vars[0]};
    for (int n : {0, -3}) {
        const int before = f.ExpressionCount();
        NoxExpression *p = f.CreatePolynomialTerm(n, c, x);
        const std::vector<NoxExpression *> made = Since(before);
        ASSERT_EQ(made.size(), 1u);
        EXPECT_EQ(made[0], p);
        ExpectRealConstant(p, 0.0);
    }
}

TEST_F(FactoryBuildersTest, PolynomialTerm_NullCoefficientsOrVariableGiveNullWithoutNodes) {
    NoxExpression *c[2] = {vars[0], vars[1]};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreatePolynomialTerm(2, nullptr, x), nullptr);
    EXPECT_EQ(f.CreatePolynomialTerm(2, c, nullptr), nullptr);
    EXPECT_EQ(f.CreatePolynomialTerm(0, c, nullptr), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, PolynomialTerm_PutsTheNewerLowerDegreeTermFirst) {
    NoxExpression *c[3] = {vars[0], vars[1], vars[2]};
    const int before = f.ExpressionCount();
    NoxExpression *p = f.CreatePolynomialTerm(3, c, x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 6u);
    ExpectPower(made[1], x, 2);
    ExpectNode(made[2], NoxProductExpr, {vars[0], made[1]});
    ExpectNode(made[3], NoxProductExpr, {vars[1], x});
    ExpectNode(made[4], NoxSumExpr, {made[3], made[2]});
    ExpectNode(p, NoxSumExpr, {vars[2], made[4]});
    EXPECT_EQ(made[5], p);
}

TEST_F(FactoryBuildersTest, PolynomialTerm_OfDegreeThreeRaisesXToThreeThenTwo) {
    NoxExpression *c[4] = {vars[0], vars[1], vars[2], vars[3]};
    const int before = f.ExpressionCount();
    f.CreatePolynomialTerm(4, c, x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 10u);
    ExpectPower(made[1], x, 3);
    ExpectNode(made[2], NoxProductExpr, {vars[0], made[1]});
    ExpectPower(made[4], x, 2);
    ExpectNode(made[5], NoxProductExpr, {vars[1], made[4]});
    ExpectNode(made[6], NoxSumExpr, {made[5], made[2]});
}

TEST_F(FactoryBuildersTest, PolynomialTerm_NullCoefficientSkipsItsTermButNotItsPower) {
    NoxExpression *c[3] = {nullptr, vars[1], nullptr};
    const int before = f.ExpressionCount();
    NoxExpression *p = f.CreatePolynomialTerm(3, c, x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 3u);
    ExpectPower(made[1], x, 2);
    ExpectNode(p, NoxProductExpr, {vars[1], x});
}

TEST_F(FactoryBuildersTest, PolynomialTerm_OfOnlyNullCoefficientsIsAZeroConstant) {
    NoxExpression *c[3] = {nullptr, nullptr, nullptr};
    const int before = f.ExpressionCount();
    NoxExpression *p = f.CreatePolynomialTerm(3, c, x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 3u);
    ExpectPower(made[1], x, 2);
    EXPECT_EQ(made[2], p);
    ExpectRealConstant(p, 0.0);
}

TEST_F(FactoryBuildersTest, PolynomialTerm_OnlyTheConstantCoefficientGivesItself) {
    NoxExpression *c[2] = {nullptr, vars[1]};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreatePolynomialTerm(2, c, x), vars[1]);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, PolynomialTerm_EvaluatesTheHornerFreeSum) {
    const double coefficients[4] = {2.0, -3.0, 1.0, 5.0};
    NoxExpression *c[4];
    for (int i = 0; i < 4; ++i)
        c[i] = Real(coefficients[i]);
    NoxExpression *p = f.CreatePolynomialTerm(4, c, x);
    for (double t : {-2.0, -0.5, 0.0, 1.5, 3.0}) {
        SetReal(x, t);
        EXPECT_EQ(p->Eval(), Cubic(t)) << t;
    }
}

// ---- Determinants ----

TEST_F(FactoryBuildersTest, Determinant_OfTwoByTwoConstantsIsTheNodeFourPlusMinusSix) {
    NoxExpression *m[16];
    NoxExpression *one = Real(1.0), *two = Real(2.0), *three = Real(3.0), *four = Real(4.0);
    Fill(m, {{one, two}, {three, four}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    ExpectRealConstant(made[0], 2.0 * -1.0 * 3.0);
    ExpectNode(d, NoxSumExpr, {four, made[0]});
    EXPECT_EQ(d->Eval(), 1.0 * 4.0 - 2.0 * 3.0);
}

TEST_F(FactoryBuildersTest, Determinant_OfOneByOneIsTheListedEntryItself) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {vars[2], Real(0.0)}});
    int rows[1] = {1};
    int cols[1] = {0};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateDeterminant(m, rows, cols, 1), vars[2]);
    cols[0] = 1;
    EXPECT_EQ(f.CreateDeterminant(m, rows, cols, 1), m[5]);
    rows[0] = 2;
    EXPECT_EQ(f.CreateDeterminant(m, rows, cols, 1), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, Determinant_OfNoRowsIsNull) {
    NoxExpression *m[16];
    Fill(m, {{vars[0]}});
    EXPECT_EQ(Determinant(m, 0), nullptr);
    EXPECT_EQ(Determinant(m, -1), nullptr);
}

TEST_F(FactoryBuildersTest, Determinant_ArgumentsOutsideTheLayoutGiveNull) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {vars[2], vars[3]}});
    int rows[5] = {0, 1, 2, 3, 0};
    int cols[5] = {0, 1, 2, 3, 1};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateDeterminant(nullptr, rows, cols, 2), nullptr);
    EXPECT_EQ(f.CreateDeterminant(m, nullptr, cols, 2), nullptr);
    EXPECT_EQ(f.CreateDeterminant(m, rows, nullptr, 2), nullptr);
    EXPECT_EQ(f.CreateDeterminant(m, rows, cols, 5), nullptr);
    int badRow[2] = {0, 4};
    int badCol[2] = {-1, 1};
    EXPECT_EQ(f.CreateDeterminant(m, badRow, cols, 2), nullptr);
    EXPECT_EQ(f.CreateDeterminant(m, rows, badCol, 2), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, Determinant_OfFourVariablesIsProductMinusSignedProduct) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {vars[2], vars[3]}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 5u);
    ExpectNode(made[0], NoxProductExpr, {vars[0], vars[3]});
    ExpectRealConstant(made[1], -1.0);
    ExpectNode(made[2], NoxProductExpr, {made[1], vars[1]});
    ExpectNode(made[3], NoxProductExpr, {made[2], vars[2]});
    ExpectNode(d, NoxSumExpr, {made[0], made[3]});
}

TEST_F(FactoryBuildersTest, Determinant_UnitEntryMatchingTheSignGivesTheMinorItself) {
    NoxExpression *m[16];
    NoxExpression *one = Real(1.0), *minusOne = Real(-1.0);
    Fill(m, {{one, minusOne}, {vars[2], vars[3]}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 1u);
    ExpectNode(d, NoxSumExpr, {vars[3], vars[2]});
}

TEST_F(FactoryBuildersTest, Determinant_UnitMinorMatchingTheSignGivesTheEntryItself) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {Real(-1.0), Real(1.0)}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 1u);
    ExpectNode(d, NoxSumExpr, {vars[0], vars[1]});
}

TEST_F(FactoryBuildersTest, Determinant_UnitEntryTakesPrecedenceOverAUnitMinor) {
    // Entry 1 and minor 1 at position 0: the term is the minor node, not the entry.
    NoxExpression *m[16];
    NoxExpression *entry = Real(1.0), *minor = f.CreateIntegerConstant(1);
    Fill(m, {{entry, vars[1]}, {vars[2], minor}});
    NoxExpression *d = Determinant(m, 2);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->GetChild(0), minor);
}

TEST_F(FactoryBuildersTest, Determinant_UnitMinorTakesPrecedenceOverFoldingTwoConstants) {
    // Entry 2 and minor 1 at position 0: the term is the entry node, not a new constant.
    NoxExpression *m[16];
    NoxExpression *two = Real(2.0);
    Fill(m, {{two, vars[1]}, {vars[2], Real(1.0)}});
    NoxExpression *d = Determinant(m, 2);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->GetChild(0), two);
}

TEST_F(FactoryBuildersTest, Determinant_UnitEntryAgainstTheSignIsFolded) {
    // Entry 1 at an odd position: c·s = −1, so the constant −1 multiplies the minor.
    NoxExpression *m[16];
    NoxExpression *one = Real(1.0);
    Fill(m, {{vars[0], one}, {vars[2], vars[3]}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 4u);
    ExpectNode(made[0], NoxProductExpr, {vars[0], vars[3]});
    ExpectRealConstant(made[1], 1.0 * -1.0);
    ExpectNode(made[2], NoxProductExpr, {made[1], vars[2]});
    ExpectNode(d, NoxSumExpr, {made[0], made[2]});
}

TEST_F(FactoryBuildersTest, Determinant_ConstantMinorOnlyMultipliesTheEntryFromTheRight) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {Real(2.5), Real(-4.0)}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 5u);
    ExpectRealConstant(made[0], -4.0 * 1.0);
    ExpectNode(made[1], NoxProductExpr, {vars[0], made[0]});
    ExpectRealConstant(made[2], 2.5 * -1.0);
    ExpectNode(made[3], NoxProductExpr, {vars[1], made[2]});
    ExpectNode(d, NoxSumExpr, {made[1], made[3]});
}

TEST_F(FactoryBuildersTest, Determinant_ConstantEntryOnlyMultipliesTheMinorFromTheLeft) {
    NoxExpression *m[16];
    Fill(m, {{Real(3.0), Real(0.5)}, {vars[2], vars[3]}});
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 5u);
    ExpectRealConstant(made[0], 3.0 * 1.0);
    ExpectNode(made[1], NoxProductExpr, {made[0], vars[3]});
    ExpectRealConstant(made[2], 0.5 * -1.0);
    ExpectNode(made[3], NoxProductExpr, {made[2], vars[2]});
    ExpectNode(d, NoxSumExpr, {made[1], made[3]});
}

TEST_F(FactoryBuildersTest, Determinant_ZeroEntriesAreSkippedWithoutTheirMinors) {
    // A null entry, a real zero, a negative zero and an integer zero all stand for zero;
    // the sign still flips at each skipped position.
    NoxExpression *zeros[] = {nullptr, Real(0.0), Real(-0.0), f.CreateIntegerConstant(0)};
    for (NoxExpression *zero : zeros) {
        NoxExpression *m[16];
        Fill(m, {{zero, vars[1]}, {vars[2], vars[3]}});
        const int before = f.ExpressionCount();
        NoxExpression *d = Determinant(m, 2);
        const std::vector<NoxExpression *> made = Since(before);
        ASSERT_EQ(made.size(), 3u);
        ExpectRealConstant(made[0], -1.0);
        ExpectNode(made[1], NoxProductExpr, {made[0], vars[1]});
        ExpectNode(d, NoxProductExpr, {made[1], vars[2]});
    }
}

TEST_F(FactoryBuildersTest, Determinant_ZeroMinorsAreSkipped) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {nullptr, Real(0.0)}});
    const int before = f.ExpressionCount();
    EXPECT_EQ(Determinant(m, 2), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);

    Fill(m, {{vars[0], vars[1]}, {f.CreateIntegerConstant(0), vars[3]}});
    NoxExpression *d = Determinant(m, 2);
    ExpectNode(d, NoxProductExpr, {vars[0], vars[3]});
}

TEST_F(FactoryBuildersTest, Determinant_AFirstRowOfZeroConstantsIsNull) {
    NoxExpression *m[16];
    Fill(m, {{Real(0.0), f.CreateIntegerConstant(0), nullptr},
             {vars[0], vars[1], vars[2]},
             {vars[3], vars[4], vars[5]}});
    const int before = f.ExpressionCount();
    EXPECT_EQ(Determinant(m, 3), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, Determinant_ConstantMinorsFoldWhileSumsStayNodes) {
    // Each 2×2 minor of constants is a sum node, not a constant, so the entries of the
    // first row multiply it: 1 (= s) gives the minor, −2 and 3 a product.
    const double a[4][4] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 10, 0}, {0, 0, 0, 0}};
    NoxExpression *m[16] = {};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            m[r * 4 + c] = Real(a[r][c]);
    const int before = f.ExpressionCount();
    NoxExpression *d = Determinant(m, 3);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 15u);
    ExpectNode(made[2], NoxSumExpr, {made[0], made[1]});
    ExpectRealConstant(made[0], 5.0 * 1.0 * 10.0);
    ExpectRealConstant(made[6], 2.0 * -1.0);
    ExpectNode(made[7], NoxProductExpr, {made[6], made[5]});
    ExpectNode(made[8], NoxSumExpr, {made[2], made[7]});
    ExpectRealConstant(made[12], 3.0 * 1.0);
    ExpectNode(made[13], NoxProductExpr, {made[12], made[11]});
    ExpectNode(d, NoxSumExpr, {made[8], made[13]});
    EXPECT_EQ(d->Eval(), ReferenceDeterminant(a, 3));
}

TEST_F(FactoryBuildersTest, Determinant_OfFourByFourVariablesEvaluatesToTheLeibnizSum) {
    const double a[4][4] = {{2, -1, 3, 0.5}, {1, 4, -2, 3}, {-3, 2, 1, 5}, {2, 0.5, -1, 1}};
    NoxVariable *cells[16];
    NoxExpression *m[16];
    for (int i = 0; i < 16; ++i) {
        cells[i] = f.CreateVariable();
        SetReal(cells[i], a[i / 4][i % 4]);
        m[i] = cells[i];
    }
    for (int k = 1; k <= 4; ++k) {
        NoxExpression *d = Determinant(m, k);
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->Eval(), ReferenceDeterminant(a, k)) << k;
    }
}

TEST_F(FactoryBuildersTest, Determinant_OfListedRowsAndColumnsUsesThatSubMatrix) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1], vars[2]}, {vars[3], vars[4], vars[5]}});
    int rows[2] = {1, 0};
    int cols[2] = {2, 0};
    const int before = f.ExpressionCount();
    NoxExpression *d = f.CreateDeterminant(m, rows, cols, 2);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 5u);
    ExpectNode(made[0], NoxProductExpr, {vars[5], vars[0]});
    ExpectNode(made[2], NoxProductExpr, {made[1], vars[3]});
    ExpectNode(made[3], NoxProductExpr, {made[2], vars[2]});
    ExpectNode(d, NoxSumExpr, {made[0], made[3]});
}

// ---- Cramer's rule ----

TEST_F(FactoryBuildersTest, Interpolation_NullArgumentsOrTooLargeSystemsGiveNullWithoutNodes) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {vars[2], vars[3]}});
    NoxExpression *y[4] = {vars[4], vars[5]};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateInterpolation(nullptr, y, x, 2), nullptr);
    EXPECT_EQ(f.CreateInterpolation(m, nullptr, x, 2), nullptr);
    EXPECT_EQ(f.CreateInterpolation(m, y, nullptr, 2), nullptr);
    EXPECT_EQ(f.CreateInterpolation(m, y, x, 5), nullptr);
    EXPECT_EQ(f.CreateInterpolation(m, y, x, 0), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, Interpolation_OfOneRowIsTheRightHandSideOverTheEntry) {
    NoxExpression *m[16];
    NoxExpression *two = Real(2.0);
    Fill(m, {{two}});
    NoxExpression *y[1] = {vars[0]};
    const int before = f.ExpressionCount();
    NoxExpression *q = f.CreateInterpolation(m, y, x, 1);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 1u);
    ExpectNode(q, NoxQuotientExpr, {vars[0], two});
    EXPECT_EQ(m[0], two);
}

TEST_F(FactoryBuildersTest, Interpolation_OfZeroRightHandSidesIsZeroOverTheDeterminant) {
    NoxExpression *m[16];
    NoxExpression *two = Real(2.0);
    Fill(m, {{two}});
    NoxExpression *y[1] = {nullptr};
    const int before = f.ExpressionCount();
    NoxExpression *q = f.CreateInterpolation(m, y, x, 1);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 2u);
    ExpectRealConstant(made[0], 0.0);
    ExpectNode(q, NoxQuotientExpr, {made[0], two});
}

TEST_F(FactoryBuildersTest, Interpolation_ColumnJCarriesTheCoefficientOfXToKMinusOneMinusJ) {
    NoxExpression *m[16];
    Fill(m, {{vars[0], vars[1]}, {vars[2], vars[3]}});
    NoxExpression *saved[16];
    std::copy(m, m + 16, saved);
    NoxExpression *y[2] = {vars[4], vars[5]};
    const int before = f.ExpressionCount();
    NoxExpression *q = f.CreateInterpolation(m, y, x, 2);
    const std::vector<NoxExpression *> made = Since(before);
    // D, D0, D1: five nodes each; then product(D0, x), sum(D1, product), quotient.
    ASSERT_EQ(made.size(), 18u);
    NoxExpression *det = made[4];
    NoxExpression *det0 = made[9];
    NoxExpression *det1 = made[14];
    ExpectNode(det, NoxSumExpr, {made[0], made[3]});
    ExpectNode(made[5], NoxProductExpr, {vars[4], vars[3]});
    ExpectNode(made[8], NoxProductExpr, {made[7], vars[5]});
    ExpectNode(made[10], NoxProductExpr, {vars[0], vars[5]});
    ExpectNode(made[13], NoxProductExpr, {made[12], vars[2]});
    ExpectNode(made[15], NoxProductExpr, {det0, x});
    ExpectNode(made[16], NoxSumExpr, {det1, made[15]});
    ExpectNode(q, NoxQuotientExpr, {made[16], det});
    EXPECT_TRUE(std::equal(m, m + 16, saved));
}

TEST_F(FactoryBuildersTest, Interpolation_ASingularFirstRowGivesNull) {
    NoxExpression *m[16];
    Fill(m, {{Real(0.0), nullptr}, {vars[2], vars[3]}});
    NoxExpression *y[2] = {vars[4], vars[5]};
    const int before = f.ExpressionCount();
    EXPECT_EQ(f.CreateInterpolation(m, y, x, 2), nullptr);
    EXPECT_EQ(f.ExpressionCount(), before);
}

// ---- Interpolation builders ----

TEST_F(FactoryBuildersTest, LinearInterpolation2P_BuildsItsFifteenNodesInOrder) {
    NoxExpression *x0 = vars[0], *y0 = vars[1], *x1 = vars[2], *y1 = vars[3];
    const int before = f.ExpressionCount();
    NoxExpression *q = f.CreateLinearInterpolation2P(x0, y0, x1, y1, x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 15u);
    ExpectRealConstant(made[0], 1.0);
    // D = x0 + (−1)·x1: the unit minor gives x0, the unit entry is folded into −1.
    ExpectRealConstant(made[1], -1.0);
    ExpectNode(made[2], NoxProductExpr, {made[1], x1});
    ExpectNode(made[3], NoxSumExpr, {x0, made[2]});
    // D0 = y0 + (−1)·y1, D1 = x0·y1 + ((−1)·y0)·x1.
    ExpectNode(made[6], NoxSumExpr, {y0, made[5]});
    ExpectNode(made[7], NoxProductExpr, {x0, y1});
    ExpectNode(made[9], NoxProductExpr, {made[8], y0});
    ExpectNode(made[10], NoxProductExpr, {made[9], x1});
    ExpectNode(made[11], NoxSumExpr, {made[7], made[10]});
    ExpectNode(made[12], NoxProductExpr, {made[6], x});
    ExpectNode(made[13], NoxSumExpr, {made[11], made[12]});
    ExpectNode(q, NoxQuotientExpr, {made[13], made[3]});
}

TEST_F(FactoryBuildersTest, LinearInterpolation2P_PassesThroughBothPoints) {
    const double px[2] = {-1.5, 2.0}, py[2] = {3.0, -0.5};
    for (int i = 0; i < 2; ++i) {
        SetReal(vars[2 * i], px[i]);
        SetReal(vars[2 * i + 1], py[i]);
    }
    NoxExpression *q = f.CreateLinearInterpolation2P(vars[0], vars[1], vars[2], vars[3], x);
    for (int i = 0; i < 2; ++i) {
        SetReal(x, px[i]);
        EXPECT_EQ(q->Eval(), py[i]) << i;
    }
}

TEST_F(FactoryBuildersTest, LinearInterpolation2P_OfOneRepeatedPointStillBuildsTheQuotient) {
    NoxExpression *q = f.CreateLinearInterpolation2P(vars[0], vars[1], vars[0], vars[3], x);
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(q->GetType(), NoxQuotientExpr);
}

TEST_F(FactoryBuildersTest, LinearInterpolation2P_AtZeroConstantAbscissasIsNull) {
    EXPECT_EQ(f.CreateLinearInterpolation2P(Real(0.0), vars[1], Real(0.0), vars[3], x), nullptr);
}

TEST_F(FactoryBuildersTest, InterpolationBuilders_AnyNullArgumentGivesNullWithoutNodes) {
    NoxExpression *v[9];
    for (int i = 0; i < 8; ++i)
        v[i] = vars[i];
    v[8] = x;
    const int before = f.ExpressionCount();
    for (int hole = 0; hole < 9; ++hole) {
        NoxExpression *a[9];
        std::copy(v, v + 9, a);
        a[hole] = nullptr;
        if (hole < 5) {
            EXPECT_EQ(f.CreateLinearInterpolation2P(a[0], a[1], a[2], a[3], a[4]), nullptr);
        }
        if (hole < 7) {
            EXPECT_EQ(f.CreateQuadraticInterpolation3P(a[0], a[1], a[2], a[3], a[4], a[5], a[6]),
                      nullptr);
            EXPECT_EQ(f.CreateCubicInterpolation2P2D(a[0], a[1], a[2], a[3], a[4], a[5], a[6]),
                      nullptr);
        }
        EXPECT_EQ(
            f.CreateCubicInterpolation4P(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8]),
            nullptr);
        if (hole < 3) {
            EXPECT_EQ(f.CreateLinearInterpolation01(a[0], a[1], a[2]), nullptr);
            EXPECT_EQ(f.CreateCubicInterpolation01(a[0], a[1], a[2]), nullptr);
        }
    }
    EXPECT_EQ(f.ExpressionCount(), before);
}

TEST_F(FactoryBuildersTest, QuadraticInterpolation3P_MakesOneThenTheSquaresRowByRow) {
    const int before = f.ExpressionCount();
    f.CreateQuadraticInterpolation3P(vars[0], vars[1], vars[2], vars[3], vars[4], vars[5], x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_GE(made.size(), 7u);
    ExpectRealConstant(made[0], 1.0);
    ExpectPower(made[2], vars[0], 2);
    ExpectPower(made[4], vars[2], 2);
    ExpectPower(made[6], vars[4], 2);
}

TEST_F(FactoryBuildersTest, QuadraticInterpolation3P_PassesThroughThePointsAndFitsAParabola) {
    const double px[3] = {-1.0, 0.5, 2.0};
    auto parabola = [](double t) { return 1.5 * t * t - 2.0 * t + 0.25; };
    for (int i = 0; i < 3; ++i) {
        SetReal(vars[2 * i], px[i]);
        SetReal(vars[2 * i + 1], parabola(px[i]));
    }
    NoxExpression *q =
        f.CreateQuadraticInterpolation3P(vars[0], vars[1], vars[2], vars[3], vars[4], vars[5], x);
    ASSERT_NE(q, nullptr);
    for (double t : {-1.0, 0.5, 2.0, 1.0, 3.5}) {
        SetReal(x, t);
        EXPECT_EQ(q->Eval(), parabola(t)) << t;
    }
}

TEST_F(FactoryBuildersTest, QuadraticInterpolation3P_AtZeroConstantAbscissasIsNull) {
    NoxExpression *zero = Real(0.0);
    EXPECT_EQ(f.CreateQuadraticInterpolation3P(zero, vars[1], zero, vars[3], zero, vars[5], x),
              nullptr);
}

TEST_F(FactoryBuildersTest, CubicInterpolation4P_MakesOneThenCubesAndSquaresRowByRow) {
    const int before = f.ExpressionCount();
    f.CreateCubicInterpolation4P(vars[0], vars[1], vars[2], vars[3], vars[4], vars[5], vars[6],
                                 vars[7], x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_GE(made.size(), 17u);
    ExpectRealConstant(made[0], 1.0);
    for (int i = 0; i < 4; ++i) {
        ExpectPower(made[2 + 4 * i], vars[2 * i], 3);
        ExpectPower(made[4 + 4 * i], vars[2 * i], 2);
    }
}

TEST_F(FactoryBuildersTest, CubicInterpolation4P_ReproducesACubic) {
    const double px[4] = {-1.0, 0.0, 1.0, 2.0};
    for (int i = 0; i < 4; ++i) {
        SetReal(vars[2 * i], px[i]);
        SetReal(vars[2 * i + 1], Cubic(px[i]));
    }
    NoxExpression *q = f.CreateCubicInterpolation4P(vars[0], vars[1], vars[2], vars[3], vars[4],
                                                    vars[5], vars[6], vars[7], x);
    ASSERT_NE(q, nullptr);
    for (double t : {-1.0, 0.0, 1.0, 2.0, 0.5, -2.5}) {
        SetReal(x, t);
        EXPECT_EQ(q->Eval(), Cubic(t)) << t;
    }
}

TEST_F(FactoryBuildersTest, CubicInterpolation2P2D_MakesItsConstantsAndRowsInOrder) {
    NoxExpression *x0 = vars[0], *x1 = vars[3];
    const int before = f.ExpressionCount();
    f.CreateCubicInterpolation2P2D(x0, vars[1], vars[2], x1, vars[4], vars[5], x);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_GE(made.size(), 20u);
    ExpectRealConstant(made[0], 1.0);
    ExpectRealConstant(made[1], 2.0);
    ExpectRealConstant(made[2], 3.0);
    ExpectPower(made[4], x0, 3);
    ExpectPower(made[6], x0, 2);
    ExpectPower(made[8], x1, 3);
    ExpectPower(made[10], x1, 2);
    ExpectPower(made[12], x0, 2);
    ExpectNode(made[13], NoxProductExpr, {made[2], made[12]});
    ExpectNode(made[14], NoxProductExpr, {made[1], x0});
    ExpectPower(made[16], x1, 2);
    ExpectNode(made[17], NoxProductExpr, {made[2], made[16]});
    ExpectNode(made[18], NoxProductExpr, {made[1], x1});
}

TEST_F(FactoryBuildersTest, CubicInterpolation2P2D_MatchesValuesAndSlopesOfACubic) {
    const double px[2] = {-1.0, 2.0};
    for (int i = 0; i < 2; ++i) {
        SetReal(vars[3 * i], px[i]);
        SetReal(vars[3 * i + 1], Cubic(px[i]));
        SetReal(vars[3 * i + 2], CubicSlope(px[i]));
    }
    NoxExpression *q =
        f.CreateCubicInterpolation2P2D(vars[0], vars[1], vars[2], vars[3], vars[4], vars[5], x);
    ASSERT_NE(q, nullptr);
    for (double t : {-1.0, 2.0, 0.0, 0.5, 1.0, 3.0}) {
        SetReal(x, t);
        EXPECT_EQ(q->Eval(), Cubic(t)) << t;
    }
}

TEST_F(FactoryBuildersTest, LinearInterpolation01_BuildsItsFiveNodesInOrder) {
    NoxExpression *a = vars[0], *b = vars[1], *t = vars[2];
    const int before = f.ExpressionCount();
    NoxExpression *r = f.CreateLinearInterpolation01(a, b, t);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 5u);
    ExpectRealConstant(made[0], -1.0);
    ExpectNode(made[1], NoxProductExpr, {made[0], a});
    ExpectNode(made[2], NoxSumExpr, {b, made[1]});
    ExpectNode(made[3], NoxProductExpr, {made[2], t});
    ExpectNode(r, NoxSumExpr, {made[3], a});
}

TEST_F(FactoryBuildersTest, LinearInterpolation01_GoesFromAToB) {
    SetReal(vars[0], 1.25);
    SetReal(vars[1], -3.0);
    NoxExpression *r = f.CreateLinearInterpolation01(vars[0], vars[1], x);
    for (double t : {0.0, 1.0, 0.25}) {
        SetReal(x, t);
        EXPECT_EQ(r->Eval(), (-3.0 + -1.0 * 1.25) * t + 1.25) << t;
    }
}

TEST_F(FactoryBuildersTest, CubicInterpolation01_MakesItsConstantsFirst) {
    NoxExpression *a = vars[0], *b = vars[1], *t = vars[2];
    const int before = f.ExpressionCount();
    NoxExpression *r = f.CreateCubicInterpolation01(a, b, t);
    const std::vector<NoxExpression *> made = Since(before);
    ASSERT_EQ(made.size(), 14u);
    ExpectRealConstant(made[0], -2.0);
    ExpectRealConstant(made[1], 3.0);
    ExpectPower(made[3], t, 3);
    ExpectNode(made[4], NoxProductExpr, {made[0], made[3]});
    ExpectPower(made[6], t, 2);
    ExpectNode(made[7], NoxProductExpr, {made[1], made[6]});
    ExpectNode(made[8], NoxSumExpr, {made[4], made[7]});
    ExpectRealConstant(made[9], -1.0);
    ExpectNode(made[12], NoxProductExpr, {made[11], made[8]});
    ExpectNode(r, NoxSumExpr, {made[12], a});
}

TEST_F(FactoryBuildersTest, CubicInterpolation01_EasesFromAToB) {
    SetReal(vars[0], 2.0);
    SetReal(vars[1], 6.0);
    NoxExpression *r = f.CreateCubicInterpolation01(vars[0], vars[1], x);
    for (double t : {0.0, 1.0, 0.5, 0.25}) {
        SetReal(x, t);
        const double s = -2.0 * (t * t * t) + 3.0 * (t * t);
        EXPECT_EQ(r->Eval(), (6.0 + -1.0 * 2.0) * s + 2.0) << t;
    }
}
