// solve: a branch-and-prune host of the Nox library.
//
//   solve                                   solves a built-in set of classic systems
//   solve "x^2+y^2-1" "y-x^2" x=[-2,2] y=[-2,2]
//                                           solves the equations given (each = 0, or
//                                           written lhs = rhs) over the domains given
//
// For each system it prints the solution boxes, the gradient of every equation at their
// midpoints, and the symbolic derivative of the first equation with respect to the first
// variable, written back as a formula.
#include "BranchAndPrune.h"
#include "Formula.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Domain {
    std::string name;
    NoxRealInterval range;
};

struct System {
    std::string title;
    std::vector<std::string> equations;
    std::vector<Domain> domains;
};

const double defaultBound = 10.0;
const std::size_t maxPrintedSolutions = 20;
const std::size_t maxFormulaLength = 600;

std::string Interval(const NoxRealInterval &r) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "[%.15g, %.15g]", r.lower, r.upper);
    return buffer;
}

std::string Number(double x) {
    if (std::isnan(x))
        return "nan";
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%.10g", x);
    return buffer;
}

// Reads, solves and reports one system; false when its text is not well formed.
bool Run(const System &system, const solver::Options &options) {
    NoxFactory factory;
    formula::Parser parser(factory);
    std::vector<NoxExpression *> equations;
    for (std::size_t i = 0; i < system.equations.size(); ++i) {
        formula::ParseError error;
        NoxExpression *e = parser.ParseEquation(system.equations[i], error);
        if (!e) {
            std::fprintf(stderr, "solve: equation %zu: %s", i + 1,
                         formula::Describe(system.equations[i], error).c_str());
            return false;
        }
        equations.push_back(e);
    }
    const std::vector<NoxVariable *> variables = parser.Variables();

    solver::Box domain(variables.size());
    std::vector<bool> given(variables.size(), false);
    for (const Domain &d : system.domains) {
        NoxVariable *v = parser.FindVariable(d.name);
        if (!v) {
            std::fprintf(stderr, "solve: a domain is given for '%s', which no equation uses\n",
                         d.name.c_str());
            return false;
        }
        for (std::size_t j = 0; j < variables.size(); ++j)
            if (variables[j] == v) {
                domain[j] = d.range;
                given[j] = true;
            }
    }

    std::printf("== %s ==\n", system.title.c_str());
    for (std::size_t i = 0; i < equations.size(); ++i)
        std::printf("  e%zu: %s = 0\n", i + 1,
                    formula::Print(equations[i], maxFormulaLength).c_str());
    std::printf("  domain:");
    for (std::size_t j = 0; j < variables.size(); ++j) {
        if (!given[j])
            domain[j] = NoxCreateRealInterval(-defaultBound, defaultBound);
        std::printf("%s %s in %s%s", j ? "," : "", variables[j]->GetName().c_str(),
                    Interval(domain[j]).c_str(), given[j] ? "" : " (default)");
    }
    std::printf("\n");
    if (variables.empty()) {
        std::printf("  no variables: nothing to solve\n\n");
        return true;
    }

    solver::BranchAndPrune bp(factory, equations, variables);
    for (std::size_t i = 0; i < equations.size(); ++i)
        if (!bp.Narrows(static_cast<int>(i)))
            std::printf("  (e%zu is not smooth or has no derivative: no Newton step, bisection "
                        "only)\n", i + 1);
    const auto start = std::chrono::steady_clock::now();
    const solver::Result result = bp.Solve(domain, options);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::printf("  %zu solution%s%s: %ld boxes explored, %ld discarded, %ld bisections, "
                "%ld solution box%s merged into %zu, %.3f s\n",
                result.solutions.size(), result.solutions.size() == 1 ? "" : "s",
                result.complete ? "" : " so far (stopped at the box limit)", result.explored,
                result.discarded, result.bisections, result.rawSolutions,
                result.rawSolutions == 1 ? "" : "es", result.solutions.size(), seconds);

    const NoxEnvironment &env = factory.GetEnvironment();
    bool sawNaN = false;
    for (std::size_t s = 0; s < result.solutions.size() && s < maxPrintedSolutions; ++s) {
        const solver::Box &box = result.solutions[s];
        std::printf("  solution %zu:\n", s + 1);
        for (std::size_t j = 0; j < variables.size(); ++j)
            std::printf("    %s in %s\n", variables[j]->GetName().c_str(), Interval(box[j]).c_str());
        // A box kept only because an enclosure over it is unbounded or wide (a pole, a
        // jump) is said so: it holds no proof of a zero.
        for (std::size_t j = 0; j < variables.size(); ++j)
            variables[j]->SetValue(NoxValue(box[j]), nullptr);
        for (std::size_t i = 0; i < equations.size(); ++i) {
            env.ClearError();
            const NoxValue &v = equations[i]->GetValue();
            const NoxRealInterval r = v.GetAsRealInterval();
            env.ClearError();
            if (NoxIsInfinite(r) || NoxWidth(r) > 1.0)
                std::printf("    (undecided: e%zu over this box spans %s, a pole or a jump)\n",
                            i + 1, Interval(r).c_str());
        }
        // The gradient is a real computation: the variables take the midpoints as reals.
        for (std::size_t j = 0; j < variables.size(); ++j)
            variables[j]->SetValue(NoxValue(NoxMiddle(box[j])), nullptr);
        for (std::size_t i = 0; i < equations.size(); ++i) {
            env.ClearError();
            const double residual = equations[i]->Eval();
            const double *g = equations[i]->GetGradient();
            std::printf("    e%zu at the midpoint: value %s, gradient (", i + 1,
                        Number(residual).c_str());
            for (std::size_t j = 0; j < variables.size(); ++j) {
                const double gj = g ? g[variables[j]->GetIdx()] : std::nan("");
                sawNaN = sawNaN || std::isnan(gj);
                std::printf("%s%s", j ? ", " : "", Number(gj).c_str());
            }
            std::printf(")\n");
        }
    }
    if (result.solutions.size() > maxPrintedSolutions)
        std::printf("  ... and %zu more\n", result.solutions.size() - maxPrintedSolutions);
    if (sawNaN)
        std::printf("  (nan: the library differentiates u^k as u^k*(k'*ln(u) + k*u'/u), and\n"
                    "   ln(u) is nan for u < 0 even though k' = 0; write u*u to avoid it)\n");

    // One symbolic derivative, written back as a formula and checked against the
    // gradient at the first solution.
    NoxExpression *d = bp.Derivative(0, 0);
    const std::string var = variables[0]->GetName();
    if (d) {
        std::printf("  d(e1)/d%s = %s\n", var.c_str(), formula::Print(d, maxFormulaLength).c_str());
        if (!result.solutions.empty()) {
            const solver::Box &box = result.solutions[0];
            for (std::size_t j = 0; j < variables.size(); ++j)
                variables[j]->SetValue(NoxValue(NoxMiddle(box[j])), nullptr);
            std::printf("    at solution 1 it evaluates to %s; the gradient entry is %s\n",
                        Number(d->Eval()).c_str(),
                        Number(equations[0]->EvalFirstDeriv(variables[0])).c_str());
        }
    } else {
        std::printf("  d(e1)/d%s: the library builds no symbolic derivative for this formula\n",
                    var.c_str());
    }
    std::printf("\n");
    return true;
}

// The Broyden banded system of n equations: for each i,
// x_i (2 + 5 x_i^2) + 1 - sum of x_j (1 + x_j) over j != i with i - 5 <= j <= i + 1.
System Broyden(int n) {
    System s;
    s.title = "Broyden banded system, n = " + std::to_string(n);
    for (int i = 1; i <= n; ++i) {
        const std::string xi = "x" + std::to_string(i);
        std::string e = xi + "*(2 + 5*" + xi + "^2) + 1";
        for (int j = std::max(1, i - 5); j <= std::min(n, i + 1); ++j)
            if (j != i)
                e += " - x" + std::to_string(j) + "*(1 + x" + std::to_string(j) + ")";
        s.equations.push_back(e);
        s.domains.push_back({xi, NoxCreateRealInterval(-1.0, 1.0)});
    }
    return s;
}

std::vector<System> BuiltIn() {
    std::vector<System> systems;
    systems.push_back({"A circle meets a parabola",
                       {"x^2 + y^2 - 1", "y - x^2"},
                       {{"x", NoxCreateRealInterval(-2, 2)}, {"y", NoxCreateRealInterval(-2, 2)}}});
    systems.push_back(Broyden(6));
    systems.push_back({"A trigonometric system",
                       {"sin(2*x) - cos(y)", "x^2 + y^2 = 4"},
                       {{"x", NoxCreateRealInterval(-3, 3)}, {"y", NoxCreateRealInterval(-3, 3)}}});
    return systems;
}

void Usage(std::FILE *out) {
    std::fprintf(out,
                 "usage: solve [options] [equation ...] [name=[lo,hi] ...]\n"
                 "  Without equations, solves a built-in set of classic systems.\n"
                 "  An equation is a formula (meaning formula = 0) or lhs = rhs, e.g.\n"
                 "    solve \"x^2+y^2-1\" \"y-x^2\" x=[-2,2] y=[-2,2]\n"
                 "  Formulas: + - * / ^ (integer exponents), unary minus, numbers, pi,\n"
                 "  variables, and the functions sqrt log ln exp abs ceil floor round sin cos\n"
                 "  tan asin acos atan sinh cosh tanh asinh acosh atanh min max mod root(x,k).\n"
                 "  A variable without a domain ranges over [-%g, %g].\n"
                 "options:\n"
                 "  --precision=W   solution boxes are narrower than W (default 1e-8)\n"
                 "  --max-boxes=N   stop after exploring N boxes (default 2000000)\n"
                 "  --no-newton     prune by enclosures and bisection only\n"
                 "  --help          this text\n",
                 defaultBound, defaultBound);
}

// A domain argument is `name=[lo,hi]`; each bound is a formula without variables.
bool IsDomainArgument(const std::string &arg) {
    std::size_t i = 0;
    while (i < arg.size() && arg[i] == ' ')
        ++i;
    if (i == arg.size() || !(std::isalpha(static_cast<unsigned char>(arg[i])) || arg[i] == '_'))
        return false;
    while (i < arg.size() && (std::isalnum(static_cast<unsigned char>(arg[i])) || arg[i] == '_'))
        ++i;
    while (i < arg.size() && arg[i] == ' ')
        ++i;
    if (i == arg.size() || arg[i] != '=')
        return false;
    ++i;
    while (i < arg.size() && arg[i] == ' ')
        ++i;
    return i < arg.size() && arg[i] == '[';
}

void DomainError(const std::string &arg, std::size_t pos, const std::string &message) {
    formula::ParseError error;
    error.position = pos;
    error.message = message;
    std::fprintf(stderr, "solve: domain: %s", formula::Describe(arg, error).c_str());
}

// Reads one bound, arg[from, to), as a formula without variables.
bool ReadBound(const std::string &arg, std::size_t from, std::size_t to, double &out) {
    NoxFactory scratch;
    formula::Parser parser(scratch);
    formula::ParseError error;
    NoxExpression *e = parser.Parse(arg.substr(from, to - from), error);
    if (!e) {
        error.position += from;
        std::fprintf(stderr, "solve: domain: %s", formula::Describe(arg, error).c_str());
        return false;
    }
    if (!parser.Variables().empty()) {
        DomainError(arg, from, "a bound must be a number, not depend on '" +
                                   parser.Variables()[0]->GetName() + "'");
        return false;
    }
    out = e->Eval();
    if (!std::isfinite(out)) {
        DomainError(arg, from, "this bound is not a finite number");
        return false;
    }
    return true;
}

bool ReadDomain(const std::string &arg, Domain &d) {
    const std::size_t eq = arg.find('=');
    std::size_t a = 0, b = eq;
    while (arg[a] == ' ')
        ++a;
    while (b > a && arg[b - 1] == ' ')
        --b;
    d.name = arg.substr(a, b - a);
    if (formula::IsReservedName(d.name)) {
        DomainError(arg, a, "'" + d.name + "' is a function or constant, not a variable");
        return false;
    }
    const std::size_t open = arg.find('[', eq);
    std::size_t close = arg.size();
    while (close > open && arg[close - 1] == ' ')
        --close;
    if (close == open + 1 || arg[close - 1] != ']') {
        DomainError(arg, close, "a domain ends with ']'");
        return false;
    }
    --close;
    // The comma between the bounds is the one outside parentheses.
    std::size_t comma = std::string::npos;
    int depth = 0;
    for (std::size_t i = open + 1; i < close; ++i) {
        if (arg[i] == '(')
            ++depth;
        else if (arg[i] == ')')
            --depth;
        else if (arg[i] == ',' && depth == 0) {
            if (comma != std::string::npos) {
                DomainError(arg, i, "a domain has two bounds: name=[lo,hi]");
                return false;
            }
            comma = i;
        }
    }
    if (comma == std::string::npos) {
        DomainError(arg, close, "a domain has two bounds separated by ',': name=[lo,hi]");
        return false;
    }
    double lo = 0, hi = 0;
    if (!ReadBound(arg, open + 1, comma, lo) || !ReadBound(arg, comma + 1, close, hi))
        return false;
    if (lo > hi) {
        DomainError(arg, open, "the lower bound is above the upper bound");
        return false;
    }
    d.range = NoxCreateRealInterval(lo, hi);
    return true;
}

bool ReadOption(const std::string &arg, const char *name, double &out) {
    const std::size_t n = std::strlen(name);
    if (arg.compare(0, n, name) != 0)
        return false;
    const char *text = arg.c_str() + n;
    char *end = nullptr;
    out = std::strtod(text, &end);
    if (end == text || *end != '\0' || !std::isfinite(out) || out <= 0) {
        std::fprintf(stderr, "solve: %s needs a positive number\n", name);
        std::exit(2);
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    solver::Options options;
    System system;
    system.title = "The system given";
    for (int a = 1; a < argc; ++a) {
        const std::string arg = argv[a];
        double x = 0;
        if (arg == "--help" || arg == "-h") {
            Usage(stdout);
            return 0;
        } else if (arg == "--no-newton") {
            options.newton = false;
        } else if (ReadOption(arg, "--precision=", x)) {
            options.precision = x;
        } else if (ReadOption(arg, "--max-boxes=", x)) {
            options.maxBoxes = x > 1e15 ? static_cast<long>(1e15) : static_cast<long>(x);
        } else if (arg.size() > 1 && arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "solve: unknown option %s\n", arg.c_str());
            Usage(stderr);
            return 2;
        } else if (IsDomainArgument(arg)) {
            Domain d;
            if (!ReadDomain(arg, d))
                return 2;
            system.domains.push_back(d);
        } else {
            system.equations.push_back(arg);
        }
    }
    if (system.equations.empty()) {
        if (!system.domains.empty()) {
            std::fprintf(stderr, "solve: domains are given but no equation\n");
            return 2;
        }
        std::printf("Branch and prune over Nox: enclosures by GetValue, narrowing by "
                    "NoxIntersect, interval Newton steps on symbolic derivatives.\n\n");
        for (const System &s : BuiltIn())
            if (!Run(s, options))
                return 1;
        return 0;
    }
    return Run(system, options) ? 0 : 2;
}
