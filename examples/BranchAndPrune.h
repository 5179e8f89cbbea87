// A small branch-and-prune solver for systems of equations f_i(x) = 0 over a box of
// variable intervals, built only on the public interface of the Nox library.
//
// Each box is pruned in two ways: an equation whose interval enclosure over the box
// (GetValue with the variables set to intervals) excludes zero discards the box, and an
// interval Newton step narrows each variable (NoxIntersect with the Newton image), using
// the symbolic partial derivatives (Differentiate) evaluated over the box. What is left
// is bisected along its widest side until every side is narrower than the precision.
#ifndef NOX_EXAMPLES_BRANCH_AND_PRUNE_H
#define NOX_EXAMPLES_BRANCH_AND_PRUNE_H

#include <Nox.h>

#include <cstdio>
#include <vector>

namespace solver {

using Box = std::vector<NoxRealInterval>;

struct Options {
    /// A box whose sides are all narrower than this is a solution box.
    double precision = 1e-8;
    /// The search stops (incomplete) after exploring this many boxes.
    long maxBoxes = 2000000;
    /// Narrow boxes with interval Newton steps; without them only bisection prunes.
    bool newton = true;
    /// Where a progress line goes every `progressSeconds` on long runs; null for none.
    std::FILE *progress = stderr;
    double progressSeconds = 1.0;
};

struct Result {
    /// Solution boxes, boxes that touch merged into their hull, in the order found.
    std::vector<Box> solutions;
    /// Solution boxes before merging.
    long rawSolutions = 0;
    /// Boxes taken from the work list and examined.
    long explored = 0;
    /// Boxes discarded because an equation's enclosure excluded zero (or the Newton step
    /// emptied them).
    long discarded = 0;
    /// Bisections made.
    long bisections = 0;
    /// False when the search stopped at the box limit.
    bool complete = true;
};

/// Solves equations[i] = 0 for the variables over `domain` (one interval per variable,
/// in the order of `variables`). The variables' values are overwritten. Variables of the
/// factory that are not listed keep their values.
class BranchAndPrune {
public:
    BranchAndPrune(NoxFactory &factory, std::vector<NoxExpression *> equations,
                   std::vector<NoxVariable *> variables);

    Result Solve(const Box &domain, const Options &options);

    /// The partial derivative of equation i with respect to variable j as built by
    /// Differentiate (null when the library gives none, e.g. for min, max, mod).
    NoxExpression *Derivative(int i, int j) const { return symbolic[i][j]; }
    /// False when equation i takes no Newton step: it is not smooth (abs, min, max, mod,
    /// ceil, floor, round) or a derivative is missing.
    bool Narrows(int i) const;

private:
    // Gives every variable its interval of the box.
    void Load(const Box &box);
    // Enclosures of every equation over the loaded box; false when one excludes zero.
    bool Consistent(std::vector<NoxRealInterval> &values);
    // One Gauss-Seidel interval Newton sweep; false when the box became empty.
    bool Newton(Box &box);

    NoxFactory &factory;
    std::vector<NoxExpression *> equations;
    std::vector<NoxVariable *> variables;
    // The derivatives the Newton step uses: null for an equation that is not smooth.
    std::vector<std::vector<NoxExpression *>> derivatives;
    // Every derivative as Differentiate built it.
    std::vector<std::vector<NoxExpression *>> symbolic;
};

/// The largest side of a box.
double Width(const Box &box);

} // namespace solver

#endif
