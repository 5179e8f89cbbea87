// Tests of the formula front end of the example hosts: parsing, printing, round trips,
// precedence, every function, and errors with their positions.
#include "Formula.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

// Two graphs have the same shape: the same node types, child counts, constant values
// and variable names, child by child.
bool SameShape(NoxExpression *a, NoxExpression *b, std::string &why) {
    if (!a || !b) {
        why = "a null node";
        return a == b;
    }
    if (a->GetType() != b->GetType()) {
        why = "types " + std::to_string(a->GetType()) + " and " + std::to_string(b->GetType());
        return false;
    }
    if (a->GetType() == NoxVariableExpr) {
        const bool same = static_cast<NoxVariable *>(a)->GetName() ==
                          static_cast<NoxVariable *>(b)->GetName();
        if (!same)
            why = "variables " + static_cast<NoxVariable *>(a)->GetName() + " and " +
                  static_cast<NoxVariable *>(b)->GetName();
        return same;
    }
    if (a->GetType() == NoxConstantExpr) {
        const double x = a->GetExprValue().GetRealValue(), y = b->GetExprValue().GetRealValue();
        if (!(x == y && std::signbit(x) == std::signbit(y))) {
            why = "constants " + formula::FormatNumber(x) + " and " + formula::FormatNumber(y);
            return false;
        }
        return true;
    }
    if (a->GetNbOfChildren() != b->GetNbOfChildren()) {
        why = "child counts of type " + std::to_string(a->GetType());
        return false;
    }
    for (int i = 0; i < a->GetNbOfChildren(); ++i)
        if (!SameShape(a->GetChild(i), b->GetChild(i), why))
            return false;
    return true;
}

// Parses text that must be well formed.
NoxExpression *MustParse(formula::Parser &parser, const std::string &text) {
    formula::ParseError error;
    NoxExpression *e = parser.Parse(text, error);
    EXPECT_NE(e, nullptr) << text << ": " << error.message << " at " << error.position;
    return e;
}

// The real value of a formula of x (and y) at the given point.
double ValueAt(const std::string &text, double x = 0.0, double y = 0.0) {
    NoxFactory factory;
    formula::Parser parser(factory);
    NoxExpression *e = MustParse(parser, text);
    if (!e)
        return std::nan("");
    if (NoxVariable *v = parser.FindVariable("x"))
        v->SetValue(NoxValue(x), nullptr);
    if (NoxVariable *v = parser.FindVariable("y"))
        v->SetValue(NoxValue(y), nullptr);
    return e->Eval();
}

formula::ParseError ErrorOf(const std::string &text, bool equation = false) {
    NoxFactory factory;
    formula::Parser parser(factory);
    formula::ParseError error;
    NoxExpression *e = equation ? parser.ParseEquation(text, error) : parser.Parse(text, error);
    EXPECT_EQ(e, nullptr) << text << " was read as " << formula::Print(e);
    EXPECT_EQ(factory.GetNbOfVariables(), 0) << text;
    return error;
}

TEST(FormulaPrint, CanonicalTextPrintsBackUnchanged) {
    const char *texts[] = {
        "x",
        "2",
        "-2",
        "0.1",
        "1e-07",
        "x + y",
        "x - y",
        "x + y - 3",
        "-x + y",
        "x*y*z",
        "-x*y",
        "-2*x",
        "x/y",
        "x/y/z",
        "x*y/z",
        "x/y*z",
        "x/(y*z)",
        "x/(y/z)",
        "x^2",
        "x^-1",
        "-x^2",
        "(-x)^2",
        "(-2)^2",
        "(x^2)^3",
        "(x + y)^2",
        "(x + y)*z",
        "x*(y + z)",
        "(x*y)*z",
        "x*(y*z)",
        "x*(-y)",
        "x*(-2)",
        "x/(-y)",
        "-(x*y)",
        "-(x/y)",
        "-(-x)",
        "-(x + y)",
        "x - (y + z)",
        "x - y*z",
        "x - y/z",
        "x - (-y)",
        "(x + y) + z",
        "x + (y + z)",
        "-1*2",
        "x - (-1*y*z)",
        "x - (-y/z)",
        "-(-2*x)",
        "sin(x)",
        "sqrt(x^2 + 1)",
        "min(x, y, 3)",
        "max(x, -y)",
        "mod(x, 3)",
        "root(x, 3)",
        "root(x - 1, -2)",
        "exp(-x^2/2)",
        "atan(y/x) + ln(abs(x))",
        "-x/y*z",
        "x^2*y^3/(1 + x^2)",
    };
    for (const char *text : texts) {
        NoxFactory factory;
        formula::Parser parser(factory);
        NoxExpression *e = MustParse(parser, text);
        EXPECT_EQ(formula::Print(e), text);
    }
}

TEST(FormulaPrint, SpacingRedundantParenthesesAndSignsAreNormalised) {
    const std::pair<const char *, const char *> cases[] = {
        {"x+y", "x + y"},
        {"  x  *  y ", "x*y"},
        {"((x))", "x"},
        {"(x*y)/z", "x*y/z"},
        {"x + -2", "x - 2"},
        {"x - -2", "x + 2"},
        {"-(2)", "-2"},
        {"--x", "-(-x)"},
        {"x*-y", "x*(-y)"},
        {"-1*x", "-x"},
        {"x^(2)", "x^2"},
        {"x^(-2)", "x^-2"},
        {"x^+2", "x^2"},
        {"pi", "3.141592653589793"},
        {".5 + 5.", "0.5 + 5"},
        {"1E3", "1000"},
        {"2.50", "2.5"},
    };
    for (const auto &c : cases) {
        NoxFactory factory;
        formula::Parser parser(factory);
        EXPECT_EQ(formula::Print(MustParse(parser, c.first)), c.second) << c.first;
    }
}

TEST(FormulaParse, OperatorsBindAsInMathematics) {
    EXPECT_EQ(ValueAt("1 + 2*3"), 7.0);
    EXPECT_EQ(ValueAt("(1 + 2)*3"), 9.0);
    EXPECT_EQ(ValueAt("2*3^2"), 18.0);
    EXPECT_EQ(ValueAt("-2^2"), -4.0);
    EXPECT_EQ(ValueAt("-x^2", 3.0), -9.0);
    EXPECT_EQ(ValueAt("(-x)^2", 3.0), 9.0);
    EXPECT_EQ(ValueAt("8/2/2"), 2.0);
    EXPECT_EQ(ValueAt("8/(2/2)"), 8.0);
    EXPECT_EQ(ValueAt("2 - 3 - 4"), -5.0);
    EXPECT_EQ(ValueAt("2 - (3 - 4)"), 3.0);
    EXPECT_EQ(ValueAt("2^-1"), 0.5);
    EXPECT_EQ(ValueAt("12/3*2"), 8.0);
    EXPECT_EQ(ValueAt("x - y", 5.0, 7.0), -2.0);
    EXPECT_EQ(ValueAt("x^2 + y^2", 3.0, 4.0), 25.0);
}

TEST(FormulaParse, ChainsBecomeOneNodeAndGroupsStayApart) {
    NoxFactory factory;
    formula::Parser parser(factory);
    NoxExpression *sum = MustParse(parser, "a + b - c + d");
    ASSERT_EQ(sum->GetType(), NoxSumExpr);
    EXPECT_EQ(sum->GetNbOfChildren(), 4);
    NoxExpression *minusC = sum->GetChild(2);
    ASSERT_EQ(minusC->GetType(), NoxProductExpr);
    EXPECT_EQ(minusC->GetChild(0)->GetExprValue().GetAsReal(), -1.0);
    EXPECT_EQ(minusC->GetChild(1), parser.FindVariable("c"));

    NoxExpression *grouped = MustParse(parser, "a + (b + c)");
    ASSERT_EQ(grouped->GetNbOfChildren(), 2);
    EXPECT_EQ(grouped->GetChild(1)->GetType(), NoxSumExpr);

    NoxExpression *power = MustParse(parser, "a^3");
    ASSERT_EQ(power->GetType(), NoxPowerExpr);
    EXPECT_EQ(power->GetChild(1)->GetExprValue().GetType(), NoxIntegerType);
    EXPECT_EQ(power->GetChild(1)->GetExprValue().GetAsInteger(), 3);

    // Every formula read through one parser shares its variables.
    EXPECT_EQ(parser.Variables().size(), 4u);
    EXPECT_EQ(factory.GetNbOfVariables(), 4);
}

TEST(FormulaParse, EquationIsLeftMinusRight) {
    NoxFactory factory;
    formula::Parser parser(factory);
    formula::ParseError error;
    NoxExpression *e = parser.ParseEquation("x^2 + y^2 = 1", error);
    ASSERT_NE(e, nullptr) << error.message;
    EXPECT_EQ(formula::Print(e), "x^2 + y^2 - 1");
    e = parser.ParseEquation("y = x^2", error);
    ASSERT_NE(e, nullptr) << error.message;
    EXPECT_EQ(formula::Print(e), "y - x^2");
    e = parser.ParseEquation("sin(x) = 0", error);
    ASSERT_NE(e, nullptr) << error.message;
    EXPECT_EQ(formula::Print(e), "sin(x)");
    e = parser.ParseEquation("x = y + 1", error);
    ASSERT_NE(e, nullptr) << error.message;
    EXPECT_EQ(formula::Print(e), "x - (y + 1)");
}

TEST(FormulaParse, EveryFunctionMakesItsNodeAndPrintsBack) {
    struct Case {
        const char *text;
        NoxExpressionType type;
        double x;
        double expected;
    };
    const double x = 0.3;
    const Case cases[] = {
        {"sqrt(x)", NoxSqrtExpr, x, std::sqrt(x)},
        {"log(x)", NoxLogExpr, x, std::log10(x)},
        {"ln(x)", NoxLnExpr, x, std::log(x)},
        {"exp(x)", NoxExpExpr, x, std::exp(x)},
        {"abs(x)", NoxAbsExpr, -x, x},
        {"ceil(x)", NoxCeilExpr, x, 1.0},
        {"floor(x)", NoxFloorExpr, x, 0.0},
        {"round(x)", NoxRoundExpr, 2.5, 3.0},
        {"sin(x)", NoxSinExpr, x, std::sin(x)},
        {"cos(x)", NoxCosExpr, x, std::cos(x)},
        {"tan(x)", NoxTanExpr, x, std::tan(x)},
        {"asin(x)", NoxAsinExpr, x, std::asin(x)},
        {"acos(x)", NoxAcosExpr, x, std::acos(x)},
        {"atan(x)", NoxAtanExpr, x, std::atan(x)},
        {"sinh(x)", NoxSinhExpr, x, std::sinh(x)},
        {"cosh(x)", NoxCoshExpr, x, std::cosh(x)},
        {"tanh(x)", NoxTanhExpr, x, std::tanh(x)},
        {"asinh(x)", NoxASinhExpr, x, std::asinh(x)},
        {"acosh(x)", NoxACoshExpr, 1.5, std::acosh(1.5)},
        {"atanh(x)", NoxATanhExpr, x, std::atanh(x)},
        {"min(x, 1)", NoxMinExpr, x, x},
        {"max(x, 1)", NoxMaxExpr, x, 1.0},
        {"mod(x, 0.25)", NoxModExpr, x, std::fmod(x, 0.25)},
        {"root(x, 3)", NoxRootExpr, -8.0, -2.0},
    };
    for (const Case &c : cases) {
        NoxFactory factory;
        formula::Parser parser(factory);
        NoxExpression *e = MustParse(parser, c.text);
        ASSERT_NE(e, nullptr);
        EXPECT_EQ(e->GetType(), c.type) << c.text;
        EXPECT_EQ(formula::Print(e), c.text);
        parser.FindVariable("x")->SetValue(NoxValue(c.x), nullptr);
        // The inverse hyperbolic functions are computed by their logarithmic formulas,
        // so they may differ from the C library in the last bits.
        EXPECT_NEAR(e->Eval(), c.expected, 1e-14) << c.text;
    }
}

TEST(FormulaParse, MinAndMaxTakeAnyNumberOfArguments) {
    EXPECT_EQ(ValueAt("min(3, x, 5, 2)", 4.0), 2.0);
    EXPECT_EQ(ValueAt("max(3, x, 5, 2)", 6.0), 6.0);
}

TEST(FormulaParse, TextWithAnErrorMakesNoNodeAndNoVariable) {
    NoxFactory factory;
    formula::Parser parser(factory);
    formula::ParseError error;
    EXPECT_EQ(parser.Parse("x + y + sinn(z)", error), nullptr);
    EXPECT_EQ(factory.GetNbOfVariables(), 0);
    EXPECT_TRUE(parser.Variables().empty());
}

TEST(FormulaErrors, PositionPointsAtTheOffendingToken) {
    struct Case {
        const char *text;
        std::size_t position;
        const char *message; // a part of the message
    };
    const Case cases[] = {
        {"", 0, "empty"},
        {"   ", 3, "empty"},
        {"x +", 3, "ends where an operand is expected"},
        {"x + * y", 4, "expected a number"},
        {"2x", 1, "expected an operator"},
        {"x $ y", 2, "unexpected character '$'"},
        {"(x + y", 6, "missing ')'"},
        {"x + y)", 5, "')' without a matching '('"},
        {"()", 1, "empty parentheses"},
        {"sinn(x)", 0, "unknown function 'sinn'"},
        {"sin x", 0, "'sin' is a function"},
        {"sin(x, y)", 0, "sin takes 1 argument, not 2"},
        {"min(x)", 0, "min takes at least 2 arguments, not 1"},
        {"mod(x, y, z)", 0, "mod takes 2 arguments, not 3"},
        {"sin()", 4, "expected an argument"},
        {"x^y", 2, "exponent of ^ must be an integer"},
        {"x^2.5", 2, "exponent of ^ must be an integer"},
        {"x^", 2, "exponent of ^ must be an integer"},
        {"x^2^3", 3, "chained powers need parentheses"},
        {"x^99999999999", 2, "out of range"},
        {"root(x, y)", 8, "degree of root must be an integer"},
        {"root(x)", 6, "root takes 2 arguments"},
        {"1e+", 1, "exponent of this number has no digits"},
        {"1e999", 0, "number too large"},
        {"x = 1", 2, "only allowed in an equation"},
        {"+x", 0, "'+' sign"},
        {"x, y", 1, "expected an operator"},
        {"x \xc3\xa9", 2, "byte 0xc3"},
    };
    for (const Case &c : cases) {
        const formula::ParseError e = ErrorOf(c.text);
        EXPECT_EQ(e.position, c.position) << '"' << c.text << "\": " << e.message;
        EXPECT_NE(e.message.find(c.message), std::string::npos)
            << '"' << c.text << "\": " << e.message;
    }
}

TEST(FormulaErrors, EquationErrorsPointAtTheEqualsSign) {
    formula::ParseError e = ErrorOf("x = 1 = 2", true);
    EXPECT_EQ(e.position, 6u);
    EXPECT_NE(e.message.find("only one '='"), std::string::npos);
    e = ErrorOf("x =", true);
    EXPECT_EQ(e.position, 3u);
    EXPECT_NE(e.message.find("right-hand side"), std::string::npos);
}

TEST(FormulaErrors, DescribeEchoesTheTextWithACaretUnderTheColumn) {
    formula::ParseError error;
    error.position = 4;
    error.message = "expected a number";
    EXPECT_EQ(formula::Describe("x + * y", error, "> "),
              "expected a number\n> x + * y\n>     ^\n");
    error.position = 99; // past the end: the caret stands after the last character
    EXPECT_EQ(formula::Describe("ab", error, ""), "expected a number\nab\n  ^\n");
}

TEST(FormulaErrors, DeepNestingIsAnErrorNotACrash) {
    const std::string deep = std::string(100000, '(') + "x" + std::string(100000, ')');
    EXPECT_NE(ErrorOf(deep).message.find("nested too deeply"), std::string::npos);
    const std::string signs = std::string(100000, '-') + "x";
    EXPECT_NE(ErrorOf(signs).message.find("nested too deeply"), std::string::npos);
    std::string calls;
    for (int i = 0; i < 50000; ++i)
        calls += "sin(";
    calls += "x" + std::string(50000, ')');
    EXPECT_NE(ErrorOf(calls).message.find("nested too deeply"), std::string::npos);

    const std::string fine = std::string(150, '(') + "x" + std::string(150, ')');
    EXPECT_EQ(ValueAt(fine, 2.0), 2.0);
}

// Random formulas: text made by a small generator is parsed, printed, parsed again and
// printed again. The two prints are the same text, the two graphs have the same shape,
// and both evaluate to the same value.
class RandomText {
public:
    explicit RandomText(std::uint32_t seed) : rng(seed) {}

    std::string Formula(int depth) {
        const int pick = Uniform(depth <= 0 ? 3 : 14);
        switch (pick) {
        case 0: return Variable();
        case 1: return Number();
        case 2: return "(" + Variable() + ")";
        case 3: return Formula(depth - 1) + " + " + Formula(depth - 1);
        case 4: return Formula(depth - 1) + " - " + Formula(depth - 1);
        case 5: return Formula(depth - 1) + "*" + Formula(depth - 1);
        case 6: return Formula(depth - 1) + "/" + Formula(depth - 1);
        case 7: return "-" + Formula(depth - 1);
        case 8: return "(" + Formula(depth - 1) + ")";
        case 9: return "(" + Formula(depth - 1) + ")^" + std::to_string(Uniform(5) - 1);
        case 10: return Variable() + "^" + std::to_string(Uniform(4));
        case 11: {
            static const char *const names[] = {"sin", "cos", "exp", "atan", "abs", "tanh"};
            return std::string(names[Uniform(6)]) + "(" + Formula(depth - 1) + ")";
        }
        case 12: return "min(" + Formula(depth - 1) + ", " + Formula(depth - 1) + ")";
        default: return "-(" + Formula(depth - 1) + ")";
        }
    }

private:
    int Uniform(int n) { return static_cast<int>(rng() % static_cast<std::uint32_t>(n)); }
    std::string Variable() {
        static const char *const names[] = {"x", "y", "z"};
        return names[Uniform(3)];
    }
    std::string Number() {
        static const char *const numbers[] = {"0", "1", "2", "0.5", "3.25", "1e-3", "10"};
        return numbers[Uniform(7)];
    }
    std::mt19937 rng;
};

TEST(FormulaRoundTrip, RandomFormulasPrintParseAndPrintToTheSameText) {
    const std::uint32_t seed = 20240611;
    RandomText gen(seed);
    for (int round = 0; round < 2000; ++round) {
        const std::string text = gen.Formula(5);
        NoxFactory factory;
        formula::Parser parser(factory);
        formula::ParseError error;
        NoxExpression *first = parser.Parse(text, error);
        ASSERT_NE(first, nullptr) << "seed " << seed << " round " << round << ": " << text
                                  << ": " << error.message;
        const std::string printed = formula::Print(first);
        NoxExpression *second = parser.Parse(printed, error);
        ASSERT_NE(second, nullptr) << "seed " << seed << ": " << printed << ": " << error.message;
        EXPECT_EQ(formula::Print(second), printed) << "seed " << seed << ": from " << text;
        std::string why;
        EXPECT_TRUE(SameShape(first, second, why))
            << "seed " << seed << ": " << text << " printed as " << printed << ": " << why;
        const double point[] = {0.7, -1.3, 2.1};
        const char *names[] = {"x", "y", "z"};
        for (int j = 0; j < 3; ++j)
            if (NoxVariable *v = parser.FindVariable(names[j]))
                v->SetValue(NoxValue(point[j]), nullptr);
        const double a = first->Eval(), b = second->Eval();
        if (!std::isnan(a) || !std::isnan(b)) {
            EXPECT_EQ(a, b) << "seed " << seed << ": " << text;
        }
    }
}

TEST(FormulaRoundTrip, LibraryDerivativesPrintAsTextThatReadsBackToTheSameShape) {
    const char *texts[] = {"x^2 + y^2 - 1", "sin(x)*cos(y)", "x/y - exp(x*y)",
                           "sqrt(x^2 + 1)", "atan(x) + tanh(x)", "root(x, 3) - ln(x)",
                           "acos(x/2) + asinh(y)"};
    for (const char *text : texts) {
        NoxFactory factory;
        formula::Parser parser(factory);
        NoxExpression *e = MustParse(parser, text);
        ASSERT_NE(e, nullptr);
        NoxExpression *d = e->Differentiate(parser.FindVariable("x"));
        ASSERT_NE(d, nullptr) << text;
        const std::string printed = formula::Print(d);
        formula::ParseError error;
        NoxExpression *again = parser.Parse(printed, error);
        ASSERT_NE(again, nullptr) << printed << ": " << error.message;
        std::string why;
        EXPECT_TRUE(SameShape(d, again, why)) << text << " -> " << printed << ": " << why;
    }
}

TEST(FormulaPrint, LongFormulasAreCutAtTheLimit) {
    NoxFactory factory;
    formula::Parser parser(factory);
    std::string text = "x";
    for (int i = 0; i < 200; ++i)
        text += " + x";
    NoxExpression *e = MustParse(parser, text);
    const std::string cut = formula::Print(e, 50);
    EXPECT_EQ(cut.size(), 53u);
    EXPECT_EQ(cut.substr(50), "...");
    EXPECT_EQ(cut.substr(0, 50), text.substr(0, 50));
}

TEST(FormulaPrint, NumbersAreTheShortestTextThatReadsBack) {
    const double numbers[] = {0.1, 1.0 / 3.0, 2.0, -0.0, 1e300, 5e-324, 123456789.125};
    for (double x : numbers)
        EXPECT_EQ(std::strtod(formula::FormatNumber(x).c_str(), nullptr), x);
    EXPECT_EQ(formula::FormatNumber(0.1), "0.1");
    EXPECT_EQ(formula::FormatNumber(-0.0), "-0");
    EXPECT_EQ(formula::FormatNumber(2.0), "2");
}

} // namespace
