// Tests of the branch-and-prune host: solutions known in closed form are enclosed, steps
// and kinks lose no solution, and the search stops at its box limit.
#include "BranchAndPrune.h"
#include "Formula.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

struct Problem {
    NoxFactory factory;
    formula::Parser parser{factory};
    std::vector<NoxExpression *> equations;

    explicit Problem(const std::vector<std::string> &texts) {
        for (const std::string &t : texts) {
            formula::ParseError error;
            equations.push_back(parser.ParseEquation(t, error));
            EXPECT_NE(equations.back(), nullptr) << t << ": " << error.message;
        }
    }

    solver::Result Solve(const solver::Box &domain, long maxBoxes = 100000) {
        solver::BranchAndPrune bp(factory, equations, parser.Variables());
        solver::Options options;
        options.progress = nullptr;
        options.maxBoxes = maxBoxes;
        return bp.Solve(domain, options);
    }
};

// True when some solution box holds the point, within a little more than the precision.
bool Encloses(const solver::Result &r, const std::vector<double> &point) {
    for (const solver::Box &box : r.solutions) {
        bool inside = true;
        for (std::size_t j = 0; j < point.size(); ++j)
            inside = inside && box[j].lower - 1e-9 <= point[j] && point[j] <= box[j].upper + 1e-9;
        if (inside)
            return true;
    }
    return false;
}

TEST(BranchAndPrune, CircleMeetsParabolaInTheTwoPointsOfTheGoldenRatio) {
    Problem p({"x^2 + y^2 - 1", "y - x^2"});
    const solver::Result r =
        p.Solve({NoxCreateRealInterval(-2, 2), NoxCreateRealInterval(-2, 2)});
    EXPECT_TRUE(r.complete);
    ASSERT_EQ(r.solutions.size(), 2u);
    // y = x^2 and x^2 + x^4 = 1 give x^2 = (sqrt(5) - 1) / 2.
    const double y = (std::sqrt(5.0) - 1.0) / 2.0, x = std::sqrt(y);
    EXPECT_TRUE(Encloses(r, {-x, y}));
    EXPECT_TRUE(Encloses(r, {x, y}));
    for (const solver::Box &box : r.solutions)
        EXPECT_LT(solver::Width(box), 1e-7);
}

TEST(BranchAndPrune, StepsAndKinksLoseNoSolution) {
    // round(x) = x at every integer; abs(x) = 1 at -1 and 1.
    Problem steps({"round(x) - x"});
    const solver::Result r = steps.Solve({NoxCreateRealInterval(-2.2, 2.2)});
    for (int k = -2; k <= 2; ++k)
        EXPECT_TRUE(Encloses(r, {static_cast<double>(k)})) << k;
    Problem kinks({"abs(x) - 1"});
    const solver::Result a = kinks.Solve({NoxCreateRealInterval(-3, 3)});
    EXPECT_EQ(a.solutions.size(), 2u);
    EXPECT_TRUE(Encloses(a, {-1.0}));
    EXPECT_TRUE(Encloses(a, {1.0}));
}

TEST(BranchAndPrune, FormulaUndefinedOrNonZeroEverywhereHasNoSolution) {
    Problem p({"sqrt(x) + 1"});
    const solver::Result r = p.Solve({NoxCreateRealInterval(-1, 4)});
    EXPECT_TRUE(r.complete);
    EXPECT_TRUE(r.solutions.empty());
    Problem q({"ln(x)"});
    EXPECT_TRUE(q.Solve({NoxCreateRealInterval(-3, -1)}).solutions.empty());
}

TEST(BranchAndPrune, SearchStopsAtTheBoxLimit) {
    Problem p({"x - y"}); // a whole line of solutions
    const solver::Result r =
        p.Solve({NoxCreateRealInterval(-1, 1), NoxCreateRealInterval(-1, 1)}, 100);
    EXPECT_FALSE(r.complete);
    EXPECT_EQ(r.explored, 100);
}

} // namespace
