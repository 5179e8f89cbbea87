// Branch and prune over the public interface of Nox: interval enclosures by GetValue,
// narrowing by NoxIntersect, derivatives by Differentiate.
#include "BranchAndPrune.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

namespace solver {

namespace {

// The library evaluates interval bounds in plain double arithmetic, without outward
// rounding. The host widens by a few units in the last place before it concludes
// anything, so that a rounding error cannot throw a solution away.
double Slack(double x) { return 1e-13 * (1.0 + std::fabs(x)); }

NoxRealInterval Widen(const NoxRealInterval &r) {
    return NoxCreateRealInterval(r.lower - Slack(r.lower), r.upper + Slack(r.upper));
}

bool HoldsZero(const NoxRealInterval &r) {
    return r.lower - Slack(r.lower) <= 0.0 && r.upper + Slack(r.upper) >= 0.0;
}

bool IsNil(const NoxRealInterval &r) { return !(r.lower <= r.upper); }

// The enclosure of e over the variables' current values; false when it is empty (the
// formula is defined nowhere in the box). A value that is not a number (undefined, a
// boolean) or has NaN bounds is taken as the whole line: it proves nothing.
bool Enclose(NoxExpression *e, const NoxEnvironment &env, NoxRealInterval &r) {
    // The interval functions give nil at once when an error bit is already set, so
    // every evaluation chain starts from a clear code.
    env.ClearError();
    const NoxValue &v = e->GetValue();
    const NoxValueType kind = v.GetType();
    if (kind == NoxUndefinedType || kind == NoxBooleanType) {
        r = NoxReal_Any;
        return true;
    }
    if (v.IsEmpty(env)) {
        env.ClearError();
        return false;
    }
    r = v.GetAsRealInterval();
    env.ClearError();
    if (std::isnan(r.lower) || std::isnan(r.upper)) {
        r = NoxReal_Any;
        return true;
    }
    return !IsNil(r);
}

// True when every node of e is continuously differentiable where defined, so that the
// mean value theorem, on which the Newton step rests, holds over a box. Steps (ceil,
// floor, round, mod), kinks (abs, min, max), logic and black boxes do not qualify, nor
// does a graph with a missing child.
bool Smooth(NoxExpression *e, std::set<NoxExpression *> &seen) {
    if (!e)
        return false;
    if (!seen.insert(e).second)
        return true;
    switch (e->GetType()) {
    case NoxVariableExpr:
    case NoxConstantExpr:
    case NoxSumExpr:
    case NoxProductExpr:
    case NoxQuotientExpr:
    case NoxPowerExpr:
    case NoxRootExpr:
    case NoxSqrtExpr:
    case NoxLogExpr:
    case NoxLnExpr:
    case NoxExpExpr:
    case NoxSinExpr:
    case NoxCosExpr:
    case NoxTanExpr:
    case NoxAsinExpr:
    case NoxAcosExpr:
    case NoxAtanExpr:
    case NoxSinhExpr:
    case NoxCoshExpr:
    case NoxTanhExpr:
    case NoxASinhExpr:
    case NoxACoshExpr:
    case NoxATanhExpr:
        break;
    default:
        return false;
    }
    for (int i = 0; i < e->GetNbOfChildren(); ++i)
        if (!Smooth(e->GetChild(i), seen))
            return false;
    return true;
}

} // namespace

double Width(const Box &box) {
    double w = 0.0;
    for (const NoxRealInterval &r : box)
        w = std::max(w, NoxWidth(r));
    return w;
}

BranchAndPrune::BranchAndPrune(NoxFactory &f, std::vector<NoxExpression *> eqs,
                               std::vector<NoxVariable *> vars)
    : factory(f), equations(std::move(eqs)), variables(std::move(vars)) {
    // Every derivative node is made now, before the first evaluation, so that the
    // evaluation buffers are sized once.
    // Equations that are not smooth get no derivatives: their Newton step could throw
    // solutions away.
    derivatives.resize(equations.size());
    symbolic.resize(equations.size());
    for (std::size_t i = 0; i < equations.size(); ++i) {
        std::set<NoxExpression *> seen;
        const bool smooth = Smooth(equations[i], seen);
        for (NoxVariable *v : variables) {
            NoxExpression *d = equations[i]->Differentiate(v);
            symbolic[i].push_back(d);
            seen.clear();
            derivatives[i].push_back(smooth && Smooth(d, seen) ? d : nullptr);
        }
    }
}

bool BranchAndPrune::Narrows(int i) const {
    for (NoxExpression *d : derivatives[static_cast<std::size_t>(i)])
        if (d)
            return true;
    return false;
}

void BranchAndPrune::Load(const Box &box) {
    // Null: every registered expression is refreshed (the first call does the work;
    // later ones find nothing evaluated since and return at once).
    for (std::size_t j = 0; j < variables.size(); ++j)
        variables[j]->SetValue(NoxValue(box[j]), nullptr);
}

bool BranchAndPrune::Consistent(std::vector<NoxRealInterval> &values) {
    const NoxEnvironment &env = factory.GetEnvironment();
    values.resize(equations.size());
    for (std::size_t i = 0; i < equations.size(); ++i) {
        if (!Enclose(equations[i], env, values[i]) || !HoldsZero(values[i]))
            return false;
    }
    return true;
}

bool BranchAndPrune::Newton(Box &box) {
    const NoxEnvironment &env = factory.GetEnvironment();
    const std::size_t m = equations.size(), n = variables.size();

    // The Jacobian over the box (the box is loaded by the caller).
    std::vector<std::vector<NoxRealInterval>> jac(m, std::vector<NoxRealInterval>(n, NoxReal_Any));
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j) {
            NoxRealInterval r;
            if (derivatives[i][j] && Enclose(derivatives[i][j], env, r))
                jac[i][j] = Widen(r);
        }

    // The equations at the midpoint.
    Box mid(n);
    for (std::size_t j = 0; j < n; ++j)
        mid[j] = NoxCreateRealInterval(NoxMiddle(box[j]));
    Load(mid);
    std::vector<NoxRealInterval> f(m);
    std::vector<bool> usable(m);
    for (std::size_t i = 0; i < m; ++i) {
        usable[i] = Enclose(equations[i], env, f[i]);
        if (usable[i])
            f[i] = Widen(f[i]);
    }

    // x_j in m_j - (f_i(m) + sum over k != j of J_ik (x_k - m_k)) / J_ij, for every
    // equation i and variable j whose partial derivative keeps its sign over the box;
    // each narrowing is used by the next (Gauss-Seidel).
    for (std::size_t i = 0; i < m; ++i) {
        if (!usable[i])
            continue;
        for (std::size_t j = 0; j < n; ++j) {
            const NoxRealInterval &d = jac[i][j];
            if (NoxIsInfinite(d) || (d.lower <= 0.0 && d.upper >= 0.0))
                continue;
            env.ClearError();
            NoxRealInterval s = f[i];
            for (std::size_t k = 0; k < n && !NoxIsInfinite(s); ++k) {
                if (k == j)
                    continue;
                const NoxRealInterval offset = NoxSub(env, box[k], mid[k]);
                s = NoxSum(env, s, NoxMul(env, jac[i][k], offset));
            }
            if (NoxIsInfinite(s) || env.GetError()) {
                env.ClearError();
                continue;
            }
            const NoxRealInterval image = Widen(NoxSub(env, mid[j], NoxDiv(env, s, d)));
            if (env.GetError()) {
                env.ClearError();
                continue;
            }
            const NoxRealInterval narrowed = NoxIntersect(box[j], image, NoxAbsPrecision);
            if (IsNil(narrowed))
                return false;
            box[j] = narrowed;
        }
    }
    return true;
}

Result BranchAndPrune::Solve(const Box &domain, const Options &options) {
    using Clock = std::chrono::steady_clock;
    Result result;
    std::vector<Box> raw;
    std::vector<Box> work{domain};
    std::vector<NoxRealInterval> values;
    const Clock::time_point start = Clock::now();
    Clock::time_point lastReport = start;

    while (!work.empty()) {
        if (result.explored >= options.maxBoxes) {
            result.complete = false;
            break;
        }
        Box box = std::move(work.back());
        work.pop_back();
        ++result.explored;
        if (options.progress && (result.explored & 1023) == 0) {
            const Clock::time_point now = Clock::now();
            if (std::chrono::duration<double>(now - lastReport).count() >= options.progressSeconds) {
                lastReport = now;
                std::fprintf(options.progress,
                             "  ... %ld boxes explored, %zu waiting, %zu solution boxes, %.1f s\n",
                             result.explored, work.size(), raw.size(),
                             std::chrono::duration<double>(now - start).count());
                std::fflush(options.progress);
            }
        }

        Load(box);
        bool alive = Consistent(values);
        // Newton sweeps while they narrow the box by a tenth or more.
        for (int sweep = 0; alive && options.newton && sweep < 8; ++sweep) {
            const double before = Width(box);
            if (!Newton(box)) {
                alive = false;
                break;
            }
            Load(box);
            alive = Consistent(values);
            if (Width(box) > 0.9 * before)
                break;
        }
        if (!alive) {
            ++result.discarded;
            continue;
        }
        if (Width(box) < options.precision) {
            raw.push_back(box);
            continue;
        }
        // Bisect the widest side; the lower half is examined first.
        std::size_t widest = 0;
        for (std::size_t j = 1; j < box.size(); ++j)
            if (NoxWidth(box[j]) > NoxWidth(box[widest]))
                widest = j;
        const double cut = NoxMiddle(box[widest]);
        Box upper = box;
        upper[widest].lower = cut;
        box[widest].upper = cut;
        ++result.bisections;
        work.push_back(std::move(upper));
        work.push_back(std::move(box));
    }

    // Merge solution boxes that touch (within the precision) into clusters.
    result.rawSolutions = static_cast<long>(raw.size());
    const std::size_t k = raw.size();
    if (k > 20000) {
        result.solutions = std::move(raw);
        return result;
    }
    std::vector<std::size_t> parent(k);
    std::iota(parent.begin(), parent.end(), std::size_t{0});
    auto find = [&parent](std::size_t a) {
        while (parent[a] != a)
            a = parent[a] = parent[parent[a]];
        return a;
    };
    for (std::size_t a = 0; a < k; ++a)
        for (std::size_t b = a + 1; b < k; ++b) {
            bool touch = true;
            for (std::size_t j = 0; j < raw[a].size() && touch; ++j)
                touch = raw[a][j].lower <= raw[b][j].upper + options.precision &&
                        raw[b][j].lower <= raw[a][j].upper + options.precision;
            if (touch)
                parent[find(a)] = find(b);
        }
    std::vector<long> clusterOf(k, -1);
    for (std::size_t a = 0; a < k; ++a) {
        const std::size_t root = find(a);
        if (clusterOf[root] < 0) {
            clusterOf[root] = static_cast<long>(result.solutions.size());
            result.solutions.push_back(raw[a]);
        } else {
            Box &hull = result.solutions[static_cast<std::size_t>(clusterOf[root])];
            for (std::size_t j = 0; j < hull.size(); ++j)
                hull[j] = NoxUnite(hull[j], raw[a][j], NoxAbsPrecision);
        }
    }
    return result;
}

} // namespace solver
