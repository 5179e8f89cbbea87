// Cross-checks of the operator nodes on random smooth formulas: the gradient against
// central differences of the real value, the symbolic derivative against the gradient,
// and the interval value against real values at points of the intervals.
//
// The formulas (tests/NoxRandomFormula.h) use sums, products, quotients, integer powers,
// roots, square roots, logarithms, the exponential, the circular and hyperbolic functions
// and their inverses, the absolute value, two-child minima and maxima, ceilings, floors
// and roundings, every operand kept inside its node's domain. Left out everywhere:
// - modulo: its gradient is never written, it has no symbolic derivative, and its
//   interval enclosure takes the divisor multiples from the dividend's upper bound alone,
//   so [5, 7] mod 3 is [0, 1] although 5.5 mod 3 is 2.5;
// - the logical nodes: their real value is 0.0 whatever their truth, and they have no
//   gradient or derivative;
// - minima and maxima of more than two children: their gradient compares every child with
//   child 0 alone, so it follows the last child that beats child 0, not the extreme one;
// - integer powers of a negative base: the power's gradient multiplies the logarithm of
//   the base (NaN) by the exponent's zero gradient.
// Each formula is grown from a fixed seed, printed with the formula on failure.
#include "NoxRandomFormula.h"

#include <Nox.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using noxformula::Describe;
using noxformula::Generator;
using noxformula::Options;

constexpr std::uint64_t kBaseSeed = 0x6e6f78u;
constexpr int kFormulas = 500;
constexpr int kPointsPerFormula = 3;
constexpr int kBoxesPerFormula = 4;
constexpr int kSamplesPerBox = 24;

/// True once the running test has failed 10 assertions: the seeds and formulas printed so
/// far are enough to reproduce the fault.
bool EnoughFailures() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() >= 10;
}

/// A factory with 2 to 5 variables and one random formula over them.
struct Model {
    Model(std::uint64_t formulaSeed, Options options)
        : seed(formulaSeed), rng(formulaSeed ^ 0x9e3779b97f4a7c15u) {
        const int n = 2 + static_cast<int>(rng() % 4);
        for (int i = 0; i < n; ++i)
            vars.push_back(factory.CreateVariable());
        generator = std::make_unique<Generator>(factory, vars, seed, options);
        root = generator->Grow(4 + static_cast<int>(rng() % 76));
    }

    int Size() const { return static_cast<int>(vars.size()); }

    void SetPoint(const std::vector<double> &p) {
        for (int i = 0; i < Size(); ++i)
            vars[i]->SetValue(NoxValue(p[i]), nullptr);
    }

    double Uniform(double a, double b) {
        return a + (b - a) * static_cast<double>(rng() >> 11) * 0x1p-53;
    }

    /// A point of the variables' box at which every kink, tie and jump of the formula is
    /// far from its operand; false when none was found.
    bool SmoothPoint(std::vector<double> &p) {
        const Options box;
        p.assign(vars.size(), 0.0);
        for (int attempt = 0; attempt < 200; ++attempt) {
            for (double &x : p)
                x = Uniform(box.variableLower, box.variableUpper);
            SetPoint(p);
            if (generator->SmoothHere())
                return true;
        }
        return false;
    }

    /// The seed, the formula and the point, for a failure message.
    std::string Trace(const std::vector<double> &p) const {
        std::ostringstream s;
        s.precision(17);
        for (std::size_t i = 0; i < p.size(); ++i)
            s << (i ? ", " : "") << p[i];
        return Trace("point (" + s.str() + ")");
    }
    /// The seed, the formula and the box, for a failure message.
    std::string Trace(const std::vector<NoxRealInterval> &box) const {
        std::ostringstream s;
        s.precision(17);
        for (std::size_t i = 0; i < box.size(); ++i)
            s << (i ? ", " : "") << "[" << box[i].lower << ", " << box[i].upper << "]";
        return Trace("box " + s.str());
    }
    std::string Trace(const std::string &where) const {
        return "seed " + std::to_string(seed) + ", formula " + Describe(root) + ", " + where;
    }

    std::uint64_t seed;
    std::mt19937_64 rng;
    NoxFactory factory;
    std::vector<NoxVariable *> vars;
    std::unique_ptr<Generator> generator;
    NoxExpression *root = nullptr;
};

TEST(OperatorCrossCheck, Gradient_EqualsCentralDifferenceOfRealValue) {
    int checked = 0;
    for (int i = 0; i < kFormulas && !EnoughFailures(); ++i) {
        Model m(kBaseSeed + i, Options());
        ASSERT_NE(m.root, nullptr);
        for (int k = 0; k < kPointsPerFormula; ++k) {
            std::vector<double> p;
            if (!m.SmoothPoint(p))
                continue;
            m.SetPoint(p);
            const double *g = m.root->GetGradient();
            ASSERT_NE(g, nullptr);
            const std::vector<double> gradient(g, g + m.Size());
            for (int v = 0; v < m.Size(); ++v) {
                // Central differences at steps h and h/2, combined by Richardson
                // extrapolation: the truncation error falls to O(h^4) while the rounding
                // error (eps |f| / h) stays below 1e-9 for the formulas' moderate values.
                auto central = [&](double h) {
                    std::vector<double> q = p;
                    q[v] = p[v] + h;
                    m.SetPoint(q);
                    const double up = m.root->Eval();
                    q[v] = p[v] - h;
                    m.SetPoint(q);
                    const double down = m.root->Eval();
                    return (up - down) / ((p[v] + h) - (p[v] - h));
                };
                const double h = 0x1p-18 * std::max(1.0, std::fabs(p[v]));
                const double difference = (4.0 * central(h / 2) - central(h)) / 3.0;
                ASSERT_TRUE(std::isfinite(gradient[v])) << m.Trace(p) << ", variable " << v;
                EXPECT_NEAR(gradient[v], difference, 1e-6 * std::max(1.0, std::fabs(difference)))
                    << m.Trace(p) << ", variable " << v;
                ++checked;
            }
        }
    }
    // Most points pass the smoothness test, so nearly every formula is checked.
    if (!HasFailure()) {
        EXPECT_GT(checked, kFormulas * kPointsPerFormula * 2 * 9 / 10);
    }
}

TEST(OperatorCrossCheck, SymbolicDerivative_EvaluatesToTheGradientEntry) {
    // Absolute values, minima and maxima have no symbolic derivative (Differentiate gives
    // null), so these formulas go without them.
    Options options;
    options.kinks = false;
    int checked = 0;
    for (int i = 0; i < kFormulas && !EnoughFailures(); ++i) {
        Model m(kBaseSeed + 100000 + i, options);
        ASSERT_NE(m.root, nullptr);
        std::vector<NoxExpression *> derivatives;
        for (int v = 0; v < m.Size(); ++v) {
            derivatives.push_back(m.factory.CreateDerivative(m.root, 1, &m.vars[v]));
            ASSERT_NE(derivatives.back(), nullptr) << m.Trace(std::string("variable ")) << v;
        }
        for (int k = 0; k < kPointsPerFormula; ++k) {
            std::vector<double> p;
            if (!m.SmoothPoint(p))
                continue;
            m.SetPoint(p);
            const double *g = m.root->GetGradient();
            ASSERT_NE(g, nullptr);
            for (int v = 0; v < m.Size(); ++v) {
                const double d = derivatives[v]->Eval();
                ASSERT_TRUE(std::isfinite(g[v])) << m.Trace(p) << ", variable " << v;
                // The derivative and the gradient apply the same rules in different
                // association orders: they agree to a few ulps of the terms.
                EXPECT_NEAR(d, g[v], 1e-11 * std::max(1.0, std::fabs(g[v])))
                    << m.Trace(p) << ", variable " << v << ", derivative "
                    << Describe(derivatives[v]);
                ++checked;
            }
        }
    }
    if (!HasFailure()) {
        EXPECT_GT(checked, kFormulas * kPointsPerFormula * 2 * 9 / 10);
    }
}

TEST(OperatorCrossCheck, IntervalValue_EnclosesRealValuesAtPointsOfTheIntervals) {
    int checked = 0;
    const Options box;
    for (int i = 0; i < kFormulas && !EnoughFailures(); ++i) {
        Model m(kBaseSeed + 200000 + i, Options());
        ASSERT_NE(m.root, nullptr);
        for (int b = 0; b < kBoxesPerFormula; ++b) {
            // Boxes mix single points, narrow intervals and wide ones.
            std::vector<NoxRealInterval> intervals;
            for (int v = 0; v < m.Size(); ++v) {
                const double widths[] = {0.0, 1e-7, 0.05, 0.5, 3.0};
                const double w = widths[m.rng() % 5];
                const double lo = m.Uniform(box.variableLower, std::max(box.variableLower, box.variableUpper - w));
                intervals.push_back(NoxCreateRealInterval(lo, std::min(lo + w, box.variableUpper)));
            }
            for (int v = 0; v < m.Size(); ++v)
                m.vars[v]->SetValue(NoxValue(intervals[v]), nullptr);
            m.factory.GetEnvironment().ClearError();
            const NoxValue value = m.root->GetValue();
            EXPECT_EQ(m.factory.GetEnvironment().GetError(), 0) << m.Trace(intervals);
            ASSERT_TRUE(value.GetType() == NoxRealIntervalType || value.GetType() == NoxRealType)
                << m.Trace(intervals) << ", kind " << value.GetType();
            const NoxRealInterval r = value.GetAsRealInterval();
            ASSERT_LE(r.lower, r.upper) << m.Trace(intervals);
            // The interval functions round no bound outward, and a bound goes through the
            // same chain of operations as the point that reaches it, so the point can lie
            // outside by the rounding differences of that chain only: 64 ulps of the
            // enclosure's magnitude.
            const double tol = 64 * DBL_EPSILON * std::max({1.0, std::fabs(r.lower), std::fabs(r.upper)});
            const int corners = 1 << m.Size();
            for (int s = 0; s < corners + kSamplesPerBox && !EnoughFailures(); ++s) {
                std::vector<double> p;
                for (int v = 0; v < m.Size(); ++v) {
                    const NoxRealInterval &x = intervals[v];
                    p.push_back(s < corners ? ((s >> v) & 1 ? x.upper : x.lower) : m.Uniform(x.lower, x.upper));
                }
                m.SetPoint(p);
                const double y = m.root->Eval();
                EXPECT_GE(y, r.lower - tol) << m.Trace(p) << ", " << m.Trace(intervals) << ", enclosure [" << r.lower << ", " << r.upper << "]";
                EXPECT_LE(y, r.upper + tol) << m.Trace(p) << ", " << m.Trace(intervals) << ", enclosure [" << r.lower << ", " << r.upper << "]";
                ++checked;
            }
        }
    }
    if (!HasFailure()) {
        EXPECT_GT(checked, kFormulas * kBoxesPerFormula * kSamplesPerBox);
    }
}

} // namespace
