// Random formulas over the operator nodes, grown as trees through a factory, for the
// operator cross-checks and the expression benchmarks.
//
// Every operand is kept inside the domain of the node that takes it, over the whole box
// of the variables, by a conservative range computed beside the expression (naive
// interval arithmetic, padded, and as wide as the library's own enclosures where those
// are wider: inverse circular functions and roots enclose every branch). A node whose
// operand's range does not fit is given a fitted operand instead: 2 + sin(t),
// 1.5 + tanh(t), exp(t) or cosh(t) for a positive one, 0.9 tanh(t) for one inside
// (-1, 1), and so on. Ranges are kept within [-20, 20] by the same wrappers, so that
// values and derivatives stay moderate. Only the variables are shared between branches:
// the symbolic derivative of such a tree grows linearly with it.
#ifndef NOX_RANDOM_FORMULA_H
#define NOX_RANDOM_FORMULA_H

#include <NoxExpression.h>
#include <NoxFactory.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace noxformula {

/// Which operator families a formula may use beside the everywhere-smooth ones.
struct Options {
    /// Absolute value and two-child minimum and maximum: smooth away from their kinks.
    bool kinks = true;
    /// Ceiling, floor and rounding: constant away from their jumps.
    bool steps = true;
    /// The box of every variable.
    double variableLower = -1.5;
    double variableUpper = 1.5;
};

/// A closed range of real numbers.
struct Range {
    double lower;
    double upper;
};

/// Grows random formulas over the given variables of a factory.
class Generator {
public:
    Generator(NoxFactory &factory, std::vector<NoxVariable *> variables, std::uint64_t seed,
              Options options = Options())
        : f(factory), vars(std::move(variables)), rng(seed), opt(options) {}

    /// A new formula of about `nodes` nodes (created nodes are counted; the result
    /// overshoots by the size of the last tree at most): trees are grown until the count
    /// is reached, then summed.
    NoxExpression *Grow(int nodes) {
        const int start = created;
        std::vector<NoxExpression *> roots;
        while (created - start < nodes) {
            const int left = nodes - (created - start);
            roots.push_back(Tree(std::max(1, left / 2 + 1)).expr);
        }
        if (roots.size() == 1)
            return roots[0];
        return Count(f.CreateSum(static_cast<int>(roots.size()), roots.data()));
    }

    /// The number of nodes this generator created.
    int Created() const { return created; }

    /// True when every kink, tie and jump of the formulas grown so far is far (relative
    /// distance 1e-3) from the operand values at the point the variables hold now: a
    /// central difference with a small step then stays on one smooth piece.
    bool SmoothHere() const {
        const double gap = 1e-3;
        for (const Guard &g : guards) {
            const double u = g.a->Eval();
            const double scale = std::max(1.0, std::fabs(u));
            switch (g.kind) {
            case Kink:
                if (std::fabs(u) <= gap * scale)
                    return false;
                break;
            case Tie: {
                const double v = g.b->Eval();
                if (std::fabs(u - v) <= gap * std::max(scale, std::fabs(v)))
                    return false;
                break;
            }
            case Step:
                if (std::fabs(u - std::nearbyint(u)) <= gap * scale)
                    return false;
                break;
            case HalfStep:
                if (std::fabs(u + 0.5 - std::nearbyint(u + 0.5)) <= gap * scale)
                    return false;
                break;
            }
        }
        return true;
    }

    /// A uniform double in [a, b].
    double Uniform(double a, double b) {
        return a + (b - a) * static_cast<double>(rng() >> 11) * 0x1p-53;
    }
    /// A uniform integer in [a, b].
    int Integer(int a, int b) {
        return a + static_cast<int>(rng() % static_cast<std::uint64_t>(b - a + 1));
    }

private:
    struct Term {
        NoxExpression *expr;
        Range range;
    };
    enum GuardKind { Kink, Tie, Step, HalfStep };
    struct Guard {
        GuardKind kind;
        NoxExpression *a;
        NoxExpression *b;
    };
    enum Op {
        Sum, Product, Quotient, Power, Root, Sqrt, Ln, Log, Exp, Sin, Cos, Tan, Asin, Acos,
        Atan, Sinh, Cosh, Tanh, ASinh, ACosh, ATanh, Abs, Min, Max, Ceil, Floor, Round,
        OpCount
    };

    static constexpr double kTwoPi = 6.283185307179586;
    static constexpr double kLimit = 20.0;

    NoxExpression *Count(NoxExpression *e, int nodes = 1) {
        created += nodes;
        return e;
    }

    static Range Pad(Range r) {
        return {r.lower - 1e-9 * (1.0 + std::fabs(r.lower)),
                r.upper + 1e-9 * (1.0 + std::fabs(r.upper))};
    }
    static double Magnitude(Range r) { return std::max(std::fabs(r.lower), std::fabs(r.upper)); }
    template <class F> static Range Increasing(Range r, F fn) { return Pad({fn(r.lower), fn(r.upper)}); }
    static Range Hull(double a, double b, double c, double d) {
        return Pad({std::min(std::min(a, b), std::min(c, d)), std::max(std::max(a, b), std::max(c, d))});
    }

    Term Leaf() {
        if (Integer(0, 3) != 0) {
            NoxVariable *x = vars[static_cast<std::size_t>(Integer(0, static_cast<int>(vars.size()) - 1))];
            return {x, {opt.variableLower, opt.variableUpper}};
        }
        const double c = Uniform(-2.0, 2.0);
        return {Count(f.CreateRealConstant(c)), {c, c}};
    }

    Term Unary(NoxExpression *(NoxFactory::*create)(NoxExpression *), const Term &t, Range r) {
        return {Count((f.*create)(t.expr)), r};
    }
    Term Constant(double c) { return {Count(f.CreateRealConstant(c)), {c, c}}; }
    Term Add(const Term &a, const Term &b) {
        return {Count(f.CreateSum(a.expr, b.expr)), Pad({a.range.lower + b.range.lower, a.range.upper + b.range.upper})};
    }
    Term Mul(const Term &a, const Term &b) {
        const Range &p = a.range, &q = b.range;
        return {Count(f.CreateProduct(a.expr, b.expr)),
                Hull(p.lower * q.lower, p.lower * q.upper, p.upper * q.lower, p.upper * q.upper)};
    }

    /// t within [-1, 1] when it strays beyond `bound`.
    Term Bounded(const Term &t, double bound) {
        if (Magnitude(t.range) <= bound)
            return t;
        if (Integer(0, 1) == 0)
            return Unary(&NoxFactory::CreateTanh, t, Increasing(t.range, [](double v) { return std::tanh(v); }));
        return Unary(&NoxFactory::CreateSin, t, {-1.0, 1.0});
    }
    /// t, or an expression of t bounded below by 0.04.
    Term Positive(const Term &t) {
        if (t.range.lower >= 0.2)
            return t;
        switch (Integer(0, 3)) {
        case 0: {
            const Term s = Bounded(t, 3.0);
            return Unary(&NoxFactory::CreateExp, s, Increasing(s.range, [](double v) { return std::exp(v); }));
        }
        case 1: {
            const Term s = Bounded(t, 3.0);
            return Unary(&NoxFactory::CreateCosh, s, Pad({1.0, std::cosh(Magnitude(s.range))}));
        }
        case 2:
            return Add(Constant(2.0), Unary(&NoxFactory::CreateSin, t, {-1.0, 1.0}));
        default:
            return Add(Constant(1.5), Unary(&NoxFactory::CreateTanh, t,
                                            Increasing(t.range, [](double v) { return std::tanh(v); })));
        }
    }
    /// t, or 0.9 times a bounded expression of t, inside [-0.9, 0.9].
    Term Unit(const Term &t) {
        if (Magnitude(t.range) <= 0.9)
            return t;
        const Term s = Bounded(t, 0.0);
        return Mul(Constant(0.9), s);
    }

    Term Tree(int budget) {
        if (budget <= 1)
            return Leaf();
        Term t = Node(budget);
        return Magnitude(t.range) > kLimit ? Bounded(t, kLimit) : t;
    }

    /// An operator kind; sums, products and quotients are drawn three times as often as
    /// the others, so that formulas branch instead of forming long chains.
    Op PickOp() {
        for (;;) {
            int pick = Integer(0, OpCount + 5);
            if (pick >= OpCount)
                pick = (pick - OpCount) % 3;
            const Op op = static_cast<Op>(pick);
            if (!opt.kinks && (op == Abs || op == Min || op == Max))
                continue;
            if (!opt.steps && (op == Ceil || op == Floor || op == Round))
                continue;
            return op;
        }
    }

    Term Node(int budget) {
        const Op op = PickOp();
        const int rest = budget - 1;
        switch (op) {
        case Sum:
        case Product: {
            const int n = Integer(2, op == Sum ? 4 : 3);
            std::vector<Term> terms;
            for (int i = 0; i < n; ++i)
                terms.push_back(Tree(Share(rest, n)));
            std::vector<NoxExpression *> exprs;
            Range r = terms[0].range;
            for (std::size_t i = 0; i < terms.size(); ++i) {
                exprs.push_back(terms[i].expr);
                if (i == 0)
                    continue;
                const Range &q = terms[i].range;
                r = op == Sum ? Pad({r.lower + q.lower, r.upper + q.upper})
                              : Hull(r.lower * q.lower, r.lower * q.upper, r.upper * q.lower, r.upper * q.upper);
            }
            NoxExpression *e = op == Sum ? f.CreateSum(n, exprs.data()) : f.CreateProduct(n, exprs.data());
            return {Count(e), r};
        }
        case Quotient: {
            const Term a = Tree(Share(rest, 2));
            Term d = Tree(Share(rest, 2));
            if (!(d.range.lower >= 0.25 || d.range.upper <= -0.25))
                d = Positive(d);
            const Range &p = a.range, &q = d.range;
            return {Count(f.CreateQuotient(a.expr, d.expr)),
                    Hull(p.lower / q.lower, p.lower / q.upper, p.upper / q.lower, p.upper / q.upper)};
        }
        case Power: {
            // The base is kept positive: the power's gradient multiplies the logarithm of
            // the base by the exponent's (zero) gradient, which is NaN for a negative base.
            const Term b = Positive(Tree(rest));
            const int k = Integer(2, 3);
            return {Count(f.CreatePower(b.expr, k), 2),
                    Pad({std::pow(b.range.lower, k), std::pow(b.range.upper, k)})};
        }
        case Root: {
            Term b = Tree(rest);
            int k = 3;
            if (!(b.range.upper <= -0.2 && Integer(0, 1) == 0)) {
                b = Positive(b);
                k = Integer(2, 3);
            }
            // The value of a root node holds both branches.
            const double m = std::pow(Magnitude(b.range), 1.0 / k);
            return {Count(f.CreateRoot(b.expr, k), 2), Pad({-m, m})};
        }
        case Sqrt: {
            const Term b = Positive(Tree(rest));
            return Unary(&NoxFactory::CreateSqrt, b, Increasing(b.range, [](double v) { return std::sqrt(v); }));
        }
        case Ln: {
            const Term b = Positive(Tree(rest));
            return Unary(&NoxFactory::CreateLn, b, Increasing(b.range, [](double v) { return std::log(v); }));
        }
        case Log: {
            const Term b = Positive(Tree(rest));
            return Unary(&NoxFactory::CreateLog, b, Increasing(b.range, [](double v) { return std::log10(v); }));
        }
        case Exp: {
            const Term b = Bounded(Tree(rest), 4.0);
            return Unary(&NoxFactory::CreateExp, b, Increasing(b.range, [](double v) { return std::exp(v); }));
        }
        case Sinh: {
            const Term b = Bounded(Tree(rest), 4.0);
            return Unary(&NoxFactory::CreateSinh, b, Increasing(b.range, [](double v) { return std::sinh(v); }));
        }
        case Cosh: {
            const Term b = Bounded(Tree(rest), 4.0);
            return Unary(&NoxFactory::CreateCosh, b, Pad({1.0, std::cosh(Magnitude(b.range))}));
        }
        case Sin:
            return Unary(&NoxFactory::CreateSin, Tree(rest), {-1.0, 1.0});
        case Cos:
            return Unary(&NoxFactory::CreateCos, Tree(rest), {-1.0, 1.0});
        case Tan: {
            const Term b = Bounded(Tree(rest), 1.3);
            return Unary(&NoxFactory::CreateTan, b, Increasing(b.range, [](double v) { return std::tan(v); }));
        }
        // The value of an inverse circular node holds every branch within the default
        // trigonometric limits [-2 pi, 2 pi].
        case Asin:
            return Unary(&NoxFactory::CreateAsin, Unit(Tree(rest)), Pad({-kTwoPi, kTwoPi}));
        case Acos:
            return Unary(&NoxFactory::CreateAcos, Unit(Tree(rest)), Pad({-kTwoPi, kTwoPi}));
        case Atan:
            return Unary(&NoxFactory::CreateAtan, Tree(rest), Pad({-kTwoPi, kTwoPi}));
        case Tanh:
            return Unary(&NoxFactory::CreateTanh, Tree(rest), Pad({-1.0, 1.0}));
        case ASinh: {
            const Term b = Tree(rest);
            return Unary(&NoxFactory::CreateASinh, b, Increasing(b.range, [](double v) { return std::asinh(v); }));
        }
        case ACosh: {
            Term b = Tree(rest);
            if (b.range.lower < 1.2)
                b = Add(Constant(1.2), Positive(b));
            return Unary(&NoxFactory::CreateACosh, b, Increasing(b.range, [](double v) { return std::acosh(v); }));
        }
        case ATanh: {
            const Term b = Unit(Tree(rest));
            return Unary(&NoxFactory::CreateATanh, b, Increasing(b.range, [](double v) { return std::atanh(v); }));
        }
        case Abs: {
            const Term b = Tree(rest);
            guards.push_back({Kink, b.expr, nullptr});
            const double lo = b.range.lower > 0.0 ? b.range.lower : b.range.upper < 0.0 ? -b.range.upper : 0.0;
            return Unary(&NoxFactory::CreateAbs, b, Pad({lo, Magnitude(b.range)}));
        }
        case Min:
        case Max: {
            // Two children only: the gradient of a minimum or maximum compares every child
            // with child 0 alone, which selects the extreme child only when there are two.
            const Term a = Tree(Share(rest, 2));
            const Term b = Tree(Share(rest, 2));
            guards.push_back({Tie, a.expr, b.expr});
            if (op == Min)
                return {Count(f.CreateMin(a.expr, b.expr)),
                        Pad({std::min(a.range.lower, b.range.lower), std::min(a.range.upper, b.range.upper)})};
            return {Count(f.CreateMax(a.expr, b.expr)),
                    Pad({std::max(a.range.lower, b.range.lower), std::max(a.range.upper, b.range.upper)})};
        }
        case Ceil:
        case Floor:
        case Round: {
            const Term b = Tree(rest);
            guards.push_back({op == Round ? HalfStep : Step, b.expr, nullptr});
            const Range r = Pad({std::floor(b.range.lower) - 1.0, std::ceil(b.range.upper) + 1.0});
            if (op == Ceil)
                return Unary(&NoxFactory::CreateCeil, b, r);
            if (op == Floor)
                return Unary(&NoxFactory::CreateFloor, b, r);
            return Unary(&NoxFactory::CreateRound, b, r);
        }
        case OpCount:
            break;
        }
        return Leaf();
    }

    /// One of n shares of `total`, of random size around total / n, at least 1.
    int Share(int total, int n) {
        const int mean = std::max(1, total / n);
        return std::max(1, Integer(mean / 2, mean + mean / 2));
    }

    NoxFactory &f;
    std::vector<NoxVariable *> vars;
    std::mt19937_64 rng;
    Options opt;
    std::vector<Guard> guards;
    int created = 0;
};

/// The formula as text, children in order (x0, x1 ... for the variables).
inline std::string Describe(NoxExpression *e) {
    if (!e)
        return "null";
    switch (e->GetType()) {
    case NoxVariableExpr:
        return "x" + std::to_string(static_cast<NoxVariable *>(e)->GetIdx());
    case NoxConstantExpr: {
        const NoxValue &v = e->GetExprValue();
        char text[40];
        if (v.GetType() == NoxIntegerType)
            std::snprintf(text, sizeof text, "%d", v.GetAsInteger());
        else
            std::snprintf(text, sizeof text, "%.17g", v.GetRealValue());
        return text;
    }
    default:
        break;
    }
    static const char *const names[] = {
        "?", "var", "const", "not", "or", "and", "equal", "notequal", "implies", "sum",
        "product", "quotient", "pow", "root", "sqrt", "log", "ln", "exp", "sin", "cos", "tan",
        "asin", "acos", "atan", "sinh", "cosh", "tanh", "asinh", "acosh", "atanh", "abs",
        "ceil", "floor", "round", "mod", "min", "max", "blackbox"};
    const int t = static_cast<int>(e->GetType());
    std::string s = (t >= 0 && t <= 37) ? names[t] : "?";
    s += "(";
    for (int i = 0; i < e->GetNbOfChildren(); ++i) {
        if (i)
            s += ", ";
        s += Describe(e->GetChild(i));
    }
    return s + ")";
}

} // namespace noxformula

#endif
