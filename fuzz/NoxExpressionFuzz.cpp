// Fuzz target: random expression graphs built through the factory (every creator, the
// composite builders and black boxes included, with null and unchecked arguments), random
// values of every kind given to the variables, and every evaluation entry point,
// Differentiate and CreateDerivative asked of random nodes, with variables created
// between evaluations. Any crash, sanitizer report, leak or escaping exception is a
// finding.
//
// The harness keeps the graphs within what a host can compute: the library walks a
// shared sub-graph once per path when it refreshes caches, looks for a kind or fills the
// variable mask (and Differentiate expands it per path), so a node is only built, walked
// or differentiated while its count of paths stays below kMostPaths, and evaluation
// recursion is kept below kDeepest levels.
#include <NoxBlackBox.h>
#include <NoxExpression.h>
#include <NoxFactory.h>
#include <NoxValue.h>
#include <NoxValueFunctions.h>

#include "NoxFuzzInput.h"

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr long kMostPaths = 2000;
constexpr int kDeepest = 120;
constexpr int kMostNodes = 1500;
constexpr int kMostVariables = 8;
constexpr std::size_t kMostBoxes = 40;

/// A factory that shows its node count and its protected builders.
class FuzzFactory : public NoxFactory {
public:
    using NoxFactory::CreateDeterminant;
    using NoxFactory::CreateInterpolation;
    int NodeCount() const { return expressionCount; }
};

/// A host function: combines its arguments' real values or values in a way the input
/// chooses, reading every argument through the cached entry points.
class FuzzBox : public NoxBlackBox {
public:
    int mode = 0;

    double Eval() override {
        double r = mode == 2 ? 1.0 : 0.0;
        NoxBlackBoxOperator *node = GetOperator();
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i) {
            NoxExpression *child = node->GetChild(i);
            const double x = child ? child->Eval() : 0.0;
            r = mode == 2 ? r * x : r + x;
        }
        return mode == 1 ? r * r : r;
    }

    void Eval(NoxValue &result) override {
        NoxBlackBoxOperator *node = GetOperator();
        if (mode == 3) {
            return; // leaves the result as it was
        }
        NoxValue r(0.0);
        for (int i = 0; node && i < node->GetNbOfChildren(); ++i) {
            NoxExpression *child = node->GetChild(i);
            if (child)
                r = NoxSum(child->GetEnvironment(), r, child->GetValue());
        }
        result = r;
    }
};

class ExpressionSession {
public:
    explicit ExpressionSession(NoxFuzzInput &input) : in(input) {}

    void Run() {
        for (int i = 0, n = in.Range(0, 3); i < n; ++i)
            NewVariable();
        for (int step = 0; step < 160 && !in.Done(); ++step)
            Step();
        // Every node, variables and equations included, is asked once more at the end.
        for (NoxExpression *node : nodes)
            if (Walkable(node))
                EvaluateAll(node);
    }

private:
    // ---- Graph measures, memoised by node (nodes are never changed once built) ----

    long Paths(const NoxExpression *node) {
        if (!node)
            return 0;
        auto found = paths.find(node);
        if (found != paths.end())
            return found->second;
        long total = 1;
        for (int i = 0; i < node->GetNbOfChildren() && total <= kMostPaths; ++i)
            total += Paths(node->GetChild(i));
        paths[node] = total;
        return total;
    }

    int Depth(const NoxExpression *node) {
        if (!node)
            return 0;
        auto found = depths.find(node);
        if (found != depths.end())
            return found->second;
        int deepest = 0;
        for (int i = 0; i < node->GetNbOfChildren() && deepest <= kDeepest; ++i) {
            const int d = Depth(node->GetChild(i));
            if (d > deepest)
                deepest = d;
        }
        depths[node] = deepest + 1;
        return deepest + 1;
    }

    bool Walkable(const NoxExpression *node) {
        return node && Paths(node) <= kMostPaths && Depth(node) <= kDeepest;
    }

    // Keeps a node built by the library when the harness may walk it, and accounts for it.
    NoxExpression *Keep(NoxExpression *node) {
        if (node && Walkable(node))
            nodes.push_back(node);
        return node;
    }

    bool Full() { return factory.NodeCount() >= kMostNodes; }

    // ---- Operands ----

    // A node of the pool (built, variable, constant), or null now and then.
    NoxExpression *Node() {
        if (nodes.empty() || in.Pick(16) == 0)
            return nullptr;
        return nodes[static_cast<std::size_t>(in.Pick(static_cast<int>(nodes.size())))];
    }

    // A variable of this factory, of the other factory, or null.
    NoxVariable *Variable() {
        switch (in.Pick(10)) {
        case 0:
            return nullptr;
        case 1:
            return stranger;
        default:
            return variables.empty()
                       ? nullptr
                       : variables[static_cast<std::size_t>(
                             in.Pick(static_cast<int>(variables.size())))];
        }
    }

    NoxValue MakeValue() {
        switch (in.Pick(10)) {
        case 0:
            return NoxValue(in.Kind());
        case 1:
        case 2:
            return NoxValue(in.Int());
        case 3:
        case 4:
            return NoxValue(in.Real());
        case 5:
            return NoxValue(in.IntegerInterval());
        case 6:
            return NoxValue(in.RealInterval());
        case 7:
            return NoxValue(in.Boolean());
        case 8:
            return in.IntegerEnumValue(24);
        default:
            return in.RealEnumValue(24);
        }
    }

    NoxExpressionType AnyType() { return static_cast<NoxExpressionType>(in.Range(-1, 40)); }

    // ---- Steps ----

    void Step() {
        switch (in.Pick(12)) {
        case 0:
            NewVariable();
            break;
        case 1:
        case 2:
        case 3:
            if (!Full())
                Build();
            break;
        case 4:
            if (!Full())
                BuildComposite();
            break;
        case 5:
        case 6:
            SetVariable();
            break;
        case 7:
        case 8: {
            NoxExpression *node = Node();
            if (node)
                Evaluate(node);
            break;
        }
        case 9:
            if (!Full())
                Derive();
            break;
        case 10:
            Equation();
            break;
        default:
            Environment();
            break;
        }
    }

    void NewVariable() {
        if (factory.GetNbOfVariables() >= kMostVariables)
            return;
        NoxVariable *v = factory.CreateVariable();
        Require(v != nullptr && v->GetIdx() == factory.GetNbOfVariables() - 1);
        variables.push_back(v);
        Keep(v);
    }

    void Build() {
        NoxExpression *a = Node();
        NoxExpression *b = Node();
        NoxExpression *node = nullptr;
        switch (in.Pick(16)) {
        case 0:
            node = factory.CreateConstant(MakeValue());
            break;
        case 1:
            node = in.Flag() ? factory.CreateRealConstant(in.Real())
                             : factory.CreateIntegerConstant(in.Int());
            break;
        case 2: {
            const int pick = in.Pick(6);
            node = pick == 0   ? factory.CreateNot(a)
                   : pick == 1 ? factory.CreateOr(a, b)
                   : pick == 2 ? factory.CreateAnd(a, b)
                   : pick == 3 ? factory.CreateEqual(a, b)
                   : pick == 4 ? factory.CreateNotEqual(a, b)
                               : factory.CreateImplication(a, b);
            break;
        }
        case 3: {
            const int pick = in.Pick(4);
            node = pick == 0   ? factory.CreateSum(a, b)
                   : pick == 1 ? factory.CreateProduct(a, b)
                   : pick == 2 ? factory.CreateMin(a, b)
                               : factory.CreateMax(a, b);
            break;
        }
        case 4: {
            std::vector<NoxExpression *> terms(static_cast<std::size_t>(in.Range(0, 6)));
            for (NoxExpression *&term : terms)
                term = Node(); // null entries included: they are not checked
            const int n = in.Flag() ? static_cast<int>(terms.size()) : in.Range(-2, 2);
            NoxExpression **list = in.Pick(8) == 0 || terms.empty() ? nullptr : terms.data();
            if (list == nullptr || n <= static_cast<int>(terms.size())) {
                const int pick = in.Pick(5);
                node = pick == 0   ? factory.CreateSum(n, list)
                       : pick == 1 ? factory.CreateProduct(n, list)
                       : pick == 2 ? factory.CreateMin(n, list)
                       : pick == 3 ? factory.CreateMax(n, list)
                                   : factory.CreateAlgebraicOperator(AnyType(), n, list);
            }
            break;
        }
        case 5: {
            const int pick = in.Pick(5);
            node = pick == 0   ? factory.CreateQuotient(a, b)
                   : pick == 1 ? factory.CreateMod(a, b)
                   : pick == 2 ? factory.CreatePower(a, in.Int())
                   : pick == 3 ? factory.CreateRoot(a, in.Int())
                               : factory.CreateBinaryOperator(AnyType(), a, b);
            break;
        }
        case 6:
            node = factory.CreatePower(a, in.Range(-4, 6));
            break;
        case 7: {
            const int pick = in.Pick(9);
            node = pick == 0   ? factory.CreateSqrt(a)
                   : pick == 1 ? factory.CreateLog(a)
                   : pick == 2 ? factory.CreateLn(a)
                   : pick == 3 ? factory.CreateExp(a)
                   : pick == 4 ? factory.CreateAbs(a)
                   : pick == 5 ? factory.CreateCeil(a)
                   : pick == 6 ? factory.CreateFloor(a)
                   : pick == 7 ? factory.CreateRound(a)
                               : factory.CreateUnaryOperator(AnyType(), a);
            break;
        }
        case 8:
        case 9: {
            const int pick = in.Pick(13);
            node = pick == 0    ? factory.CreateSin(a)
                   : pick == 1  ? factory.CreateCos(a)
                   : pick == 2  ? factory.CreateTan(a)
                   : pick == 3  ? factory.CreateAsin(a)
                   : pick == 4  ? factory.CreateAcos(a)
                   : pick == 5  ? factory.CreateAtan(a)
                   : pick == 6  ? factory.CreateSinh(a)
                   : pick == 7  ? factory.CreateCosh(a)
                   : pick == 8  ? factory.CreateTanh(a)
                   : pick == 9  ? factory.CreateASinh(a)
                   : pick == 10 ? factory.CreateACosh(a)
                   : pick == 11 ? factory.CreateATanh(a)
                                : factory.CreateTrigonometricOperator(AnyType(), a);
            break;
        }
        case 10:
        case 11: {
            // A box serves one node: a box reads the arguments of its latest node, so a box
            // declared again over its own earlier node would evaluate itself forever.
            if (boxes.size() >= kMostBoxes)
                break;
            boxes.emplace_back();
            FuzzBox &box = boxes.back();
            box.mode = in.Pick(4);
            std::vector<NoxExpression *> arguments(static_cast<std::size_t>(in.Range(0, 4)));
            for (NoxExpression *&argument : arguments)
                argument = Node();
            const bool noArray = in.Pick(8) == 0;
            node = factory.DeclareBlackBox(in.Pick(16) == 0 ? nullptr : &box,
                                           static_cast<int>(arguments.size()),
                                           noArray ? nullptr : arguments.data());
            break;
        }
        default: {
            // A node of any kind over the same operand twice, so that sub-graphs are shared.
            const int pick = in.Pick(3);
            node = pick == 0   ? factory.CreateProduct(a, a)
                   : pick == 1 ? factory.CreateSum(a, a)
                               : factory.CreateQuotient(a, a);
            break;
        }
        }
        Keep(node);
    }

    void BuildComposite() {
        NoxExpression *x = Node();
        switch (in.Pick(11)) {
        case 0:
            Keep(factory.CreateLinearTerm(MakeValue(), x, MakeValue()));
            break;
        case 1:
            Keep(factory.CreateQuadraticTerm(MakeValue(), x, MakeValue()));
            break;
        case 2: {
            std::vector<NoxExpression *> c(static_cast<std::size_t>(in.Range(0, 5)));
            for (NoxExpression *&coefficient : c)
                coefficient = Node();
            const int n = in.Flag() ? static_cast<int>(c.size()) : in.Range(-2, 0);
            Keep(factory.CreatePolynomialTerm(n, c.empty() ? nullptr : c.data(), x));
            break;
        }
        case 3: {
            NoxExpression *x0 = Node(), *y0 = Node(), *x1 = Node(), *y1 = Node();
            Keep(factory.CreateLinearInterpolation2P(x0, y0, x1, y1, x));
            break;
        }
        case 4: {
            NoxExpression *p[6];
            for (NoxExpression *&e : p)
                e = Node();
            Keep(factory.CreateQuadraticInterpolation3P(p[0], p[1], p[2], p[3], p[4], p[5], x));
            break;
        }
        case 5: {
            NoxExpression *p[8];
            for (NoxExpression *&e : p)
                e = Node();
            Keep(factory.CreateCubicInterpolation4P(p[0], p[1], p[2], p[3], p[4], p[5], p[6],
                                                    p[7], x));
            break;
        }
        case 6: {
            NoxExpression *p[6];
            for (NoxExpression *&e : p)
                e = Node();
            Keep(factory.CreateCubicInterpolation2P2D(p[0], p[1], p[2], p[3], p[4], p[5], x));
            break;
        }
        case 7: {
            NoxExpression *a = Node(), *b = Node();
            Keep(in.Flag() ? factory.CreateLinearInterpolation01(a, b, x)
                           : factory.CreateCubicInterpolation01(a, b, x));
            break;
        }
        case 8: {
            NoxExpression *m[16];
            for (NoxExpression *&e : m)
                e = in.Flag() ? nullptr : Node();
            int rows[4], cols[4];
            for (int i = 0; i < 4; ++i) {
                rows[i] = in.Range(-1, 4);
                cols[i] = in.Range(-1, 4);
            }
            Keep(factory.CreateDeterminant(in.Pick(16) == 0 ? nullptr : m, rows, cols,
                                           in.Range(-1, 5)));
            break;
        }
        default: {
            NoxExpression *m[16];
            for (NoxExpression *&e : m)
                e = in.Flag() ? nullptr : Node();
            NoxExpression *y[4];
            for (NoxExpression *&e : y)
                e = Node();
            Keep(factory.CreateInterpolation(in.Pick(16) == 0 ? nullptr : m,
                                             in.Pick(16) == 0 ? nullptr : y, x, in.Range(-1, 5)));
            break;
        }
        }
    }

    void SetVariable() {
        NoxVariable *v = Variable();
        if (!v || v == stranger)
            return;
        switch (in.Pick(8)) {
        case 0: {
            NoxExpression *scope = Node();
            if (!scope || Walkable(scope))
                v->SetValue(MakeValue(), scope);
            break;
        }
        case 1:
            v->SetExprValue(MakeValue());
            break;
        case 2: {
            v->SetPreferedValue(in.Real());
            double preferred = 0.0;
            Require(v->GetPreferedValue(preferred) == 1);
            break;
        }
        case 3:
            v->Fix(static_cast<unsigned char>(in.Byte()));
            v->IsFixed();
            break;
        case 4:
            v->SetDividedFlag(in.Int());
            v->GetDividedFlag();
            break;
        case 5:
            v->SetName(in.Flag() ? std::string() : std::string(in.Range(1, 40), 'v'));
            Require(!v->GetName().empty());
            break;
        default:
            v->SetValue(NoxValue(in.Real()), nullptr);
            break;
        }
    }

    void Evaluate(NoxExpression *node) {
        const int n = factory.GetNbOfVariables();
        switch (in.Pick(12)) {
        case 0:
            node->Eval();
            break;
        case 1: {
            NoxValue out = MakeValue();
            node->Eval(out);
            node->GetValue();
            break;
        }
        case 2: {
            std::vector<double> out(static_cast<std::size_t>(n) + 1, 7.0);
            node->EvalGradient(out.data());
            node->EvalGradient(nullptr);
            Require(node->GetGradient() != nullptr);
            break;
        }
        case 3: {
            std::vector<std::vector<double>> rows(static_cast<std::size_t>(n) + 1,
                                                  std::vector<double>(n + 1, 7.0));
            std::vector<double *> out;
            for (std::vector<double> &row : rows)
                out.push_back(row.data());
            node->EvalHessian(out.data());
            node->EvalHessian(nullptr);
            Require(n == 0 || node->GetHessian() != nullptr);
            break;
        }
        case 4:
            node->EvalFirstDeriv(Variable());
            break;
        case 5:
            node->EvalSecondDeriv(Variable(), Variable());
            break;
        case 6:
            node->GetExprValue();
            node->SetExprValue(MakeValue());
            break;
        case 7:
            if (Walkable(node))
                node->ResetBuffer(static_cast<unsigned char>(in.Byte()));
            else
                node->ResetBuffer(0);
            break;
        case 8:
            if (Walkable(node)) {
                node->ContainsExprOfKind(AnyType());
                std::vector<unsigned char> mask(static_cast<std::size_t>(n) + 1, 0);
                node->FillPresentVariables(in.Flag() ? mask.data() : nullptr);
            }
            break;
        case 9:
            for (int i = -1; i <= node->GetNbOfChildren(); ++i)
                node->GetChild(i);
            break;
        case 10:
            factory.ResetBuffer(Walkable(node) && in.Flag() ? node : nullptr);
            break;
        default:
            if (Walkable(node))
                EvaluateAll(node);
            break;
        }
    }

    // Every entry point of one node, in an order the input does not choose.
    void EvaluateAll(NoxExpression *node) {
        const int n = factory.GetNbOfVariables();
        node->Eval();
        node->GetValue();
        NoxValue out;
        node->Eval(out);
        node->GetGradient();
        node->GetHessian();
        std::vector<double> gradient(static_cast<std::size_t>(n) + 1);
        node->EvalGradient(gradient.data());
        for (NoxVariable *v : variables) {
            node->EvalFirstDeriv(v);
            node->EvalSecondDeriv(v, v);
        }
        node->EvalFirstDeriv(stranger);
        node->ContainsExprOfKind(NoxBlackBoxExpr);
    }

    void Derive() {
        NoxExpression *node = Node();
        if (!node || !Walkable(node))
            return;
        if (in.Flag()) {
            Keep(node->Differentiate(Variable()));
            return;
        }
        NoxVariable *vars[3];
        for (NoxVariable *&v : vars)
            v = Variable();
        // A second derivative expands the first one per path: both must stay walkable.
        const int n = in.Range(-1, 2);
        NoxExpression *first = n >= 1 ? node->Differentiate(vars[0]) : node;
        if (n == 2 && first && !Walkable(first))
            return;
        Keep(factory.CreateDerivative(in.Pick(16) == 0 ? nullptr : node, n,
                                      in.Pick(16) == 0 ? nullptr : vars));
    }

    void Equation() {
        switch (in.Pick(4)) {
        case 0: {
            NoxEquation *eq =
                factory.AddEquation(Node(), static_cast<NoxEquationType>(in.Int()));
            if (eq)
                equations.push_back(eq);
            break;
        }
        case 1:
            if (!equations.empty()) {
                NoxEquation *eq = equations[static_cast<std::size_t>(
                    in.Pick(static_cast<int>(equations.size())))];
                eq->SetName(in.Flag() ? std::string() : std::string(in.Range(1, 40), 'e'));
                Require(!eq->GetName().empty());
                eq->SetRoot(in.Flag() ? eq->GetRoot() : Node());
                eq->GetType();
                NoxEquation copy(*eq);
                copy = *eq;
            }
            break;
        case 2:
            factory.GetVariable(in.Range(-1, factory.GetNbOfVariables()));
            factory.GetEquation(in.Range(-1, factory.GetNbOfEquations()));
            break;
        default:
            factory.ResetBuffer(nullptr);
            break;
        }
    }

    void Environment() {
        NoxEnvironment &env = factory.GetEnvironment();
        switch (in.Pick(4)) {
        case 0:
            env.SetTolerance(in.Tolerance());
            break;
        case 1:
            env.SetTrigonometricLimits(in.Real(), in.Real());
            break;
        case 2:
            env.SetMaxEnumSize(in.Range(-2, 60));
            break;
        default:
            env.ClearError();
            break;
        }
    }

    NoxFuzzInput &in;
    // The boxes outlive the factories that call them; a deque keeps their addresses.
    std::deque<FuzzBox> boxes;
    FuzzFactory other;
    NoxVariable *stranger = other.CreateVariable();
    FuzzFactory factory;
    std::vector<NoxExpression *> nodes;
    std::vector<NoxVariable *> variables;
    std::vector<NoxEquation *> equations;
    std::unordered_map<const NoxExpression *, long> paths;
    std::unordered_map<const NoxExpression *, int> depths;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    NoxFuzzInput input(data, size);
    ExpressionSession session(input);
    session.Run();
    return 0;
}
