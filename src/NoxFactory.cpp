// The factory: creation and ownership of nodes, variables and equations, and cache
// invalidation.
#include "NoxFactory.h"

#include <algorithm>
#include <climits>
#include <new>

namespace {

// The growth step of the factory's arrays.
constexpr int NoxGrowthStep = 10;

// Appends `entry` to an array of `count` used and `capacity` allocated slots. A full
// array grows by NoxGrowthStep into a new zero-filled array that receives the old
// entries. False, with nothing changed, when the new array cannot be allocated.
template <class T> bool NoxAppend(T **&array, int &count, int &capacity, T *entry) {
    if (count >= capacity) {
        if (capacity > INT_MAX - NoxGrowthStep)
            return false;
        T **grown = new (std::nothrow) T *[capacity + NoxGrowthStep]();
        if (!grown)
            return false;
        if (array)
            std::copy(array, array + count, grown);
        delete[] array;
        array = grown;
        capacity += NoxGrowthStep;
    }
    array[count++] = entry;
    return true;
}

} // namespace

NoxFactory::NoxFactory()
    : expressionCount(0), expressionCapacity(0), expressions(nullptr), variableCount(0),
      variableCapacity(0), variables(nullptr), equationCount(0), equationCapacity(0),
      equations(nullptr), buffersInUse(0), environment() {}

NoxFactory::~NoxFactory() {
    for (int i = 0; i < expressionCount; ++i)
        delete expressions[i];
    delete[] expressions;
    delete[] variables;
    for (int i = 0; i < equationCount; ++i)
        delete equations[i];
    delete[] equations;
}

// ---- Access ----

NoxVariable *NoxFactory::GetVariable(int i) {
    return i >= 0 && i < variableCount ? variables[i] : nullptr;
}

NoxEquation *NoxFactory::GetEquation(int i) {
    return i >= 0 && i < equationCount ? equations[i] : nullptr;
}

void NoxFactory::ResetBuffer(NoxExpression *expr) {
    if (!buffersInUse)
        return;
    if (!expr) {
        for (int i = 0; i < expressionCount; ++i)
            expressions[i]->ResetBuffer(0);
    } else {
        expr->ResetBuffer(1);
    }
    buffersInUse = 0;
}

// ---- Registration ----

NoxExpression *NoxFactory::AddExpression(NoxExpression *&expr) {
    if (!expr)
        return nullptr;
    if (!NoxAppend(expressions, expressionCount, expressionCapacity, expr)) {
        delete expr;
        expr = nullptr;
    }
    return expr;
}

NoxExpression *NoxFactory::Register(NoxExpression *node) { return AddExpression(node); }

// ---- Leaves ----

// The variable is listed first, so that a variable array that cannot grow leaves
// everything unchanged; a node that cannot be allocated or registered leaves a null
// entry, and its index stays taken.
NoxVariable *NoxFactory::CreateVariable() {
    NoxVariable *variable = new (std::nothrow) NoxVariable(this, variableCount);
    if (!NoxAppend(variables, variableCount, variableCapacity, variable)) {
        delete variable;
        return nullptr;
    }
    NoxExpression *node = variable;
    if (!AddExpression(node))
        variables[variableCount - 1] = nullptr;
    return static_cast<NoxVariable *>(node);
}

NoxExpression *NoxFactory::CreateConstant(const NoxValue &v) {
    return Register(new (std::nothrow) NoxConstant(this, v));
}

NoxExpression *NoxFactory::CreateRealConstant(double x) { return CreateConstant(NoxValue(x)); }

NoxExpression *NoxFactory::CreateIntegerConstant(int k) { return CreateConstant(NoxValue(k)); }

// ---- Boolean operators ----

NoxExpression *NoxFactory::CreateNot(NoxExpression *a) {
    if (!a)
        return nullptr;
    return Register(new (std::nothrow) NoxBooleanOperator(this, a, NoxNotExpr));
}

NoxExpression *NoxFactory::CreateBooleanPair(NoxExpressionType t, NoxExpression *a,
                                             NoxExpression *b) {
    if (!a || !b)
        return nullptr;
    NoxExpression *pair[2] = {a, b};
    return Register(new (std::nothrow) NoxBooleanOperator(this, pair, t));
}

NoxExpression *NoxFactory::CreateOr(NoxExpression *a, NoxExpression *b) {
    return CreateBooleanPair(NoxOrExpr, a, b);
}

NoxExpression *NoxFactory::CreateAnd(NoxExpression *a, NoxExpression *b) {
    return CreateBooleanPair(NoxAndExpr, a, b);
}

NoxExpression *NoxFactory::CreateEqual(NoxExpression *a, NoxExpression *b) {
    return CreateBooleanPair(NoxEqualExpr, a, b);
}

NoxExpression *NoxFactory::CreateNotEqual(NoxExpression *a, NoxExpression *b) {
    return CreateBooleanPair(NoxNotEqualExpr, a, b);
}

NoxExpression *NoxFactory::CreateImplication(NoxExpression *a, NoxExpression *b) {
    return CreateBooleanPair(NoxImplicationExpr, a, b);
}

// ---- Algebraic operators ----

NoxExpression *NoxFactory::CreateAlgebraicOperator(NoxExpressionType t, int n,
                                                   NoxExpression **terms) {
    if (n < 2 || !terms)
        return nullptr;
    return Register(new (std::nothrow) NoxAlgebraicOperator(this, n, terms, t));
}

NoxExpression *NoxFactory::CreateAlgebraicPair(NoxExpressionType t, NoxExpression *a,
                                               NoxExpression *b) {
    if (!a || !b)
        return nullptr;
    NoxExpression *pair[2] = {a, b};
    return CreateAlgebraicOperator(t, 2, pair);
}

NoxExpression *NoxFactory::CreateSum(NoxExpression *a, NoxExpression *b) {
    return CreateAlgebraicPair(NoxSumExpr, a, b);
}

NoxExpression *NoxFactory::CreateSum(int n, NoxExpression **terms) {
    return CreateAlgebraicOperator(NoxSumExpr, n, terms);
}

NoxExpression *NoxFactory::CreateProduct(NoxExpression *a, NoxExpression *b) {
    return CreateAlgebraicPair(NoxProductExpr, a, b);
}

NoxExpression *NoxFactory::CreateProduct(int n, NoxExpression **terms) {
    return CreateAlgebraicOperator(NoxProductExpr, n, terms);
}

NoxExpression *NoxFactory::CreateMin(NoxExpression *a, NoxExpression *b) {
    return CreateAlgebraicPair(NoxMinExpr, a, b);
}

NoxExpression *NoxFactory::CreateMin(int n, NoxExpression **terms) {
    return CreateAlgebraicOperator(NoxMinExpr, n, terms);
}

NoxExpression *NoxFactory::CreateMax(NoxExpression *a, NoxExpression *b) {
    return CreateAlgebraicPair(NoxMaxExpr, a, b);
}

NoxExpression *NoxFactory::CreateMax(int n, NoxExpression **terms) {
    return CreateAlgebraicOperator(NoxMaxExpr, n, terms);
}

// ---- Binary operators ----

NoxExpression *NoxFactory::CreateBinaryOperator(NoxExpressionType t, NoxExpression *a,
                                                NoxExpression *b) {
    if (!a || !b)
        return nullptr;
    NoxExpression *pair[2] = {a, b};
    return Register(new (std::nothrow) NoxBinaryOperator(this, pair, t));
}

NoxExpression *NoxFactory::CreateQuotient(NoxExpression *a, NoxExpression *b) {
    return CreateBinaryOperator(NoxQuotientExpr, a, b);
}

NoxExpression *NoxFactory::CreatePower(NoxExpression *a, int k) {
    NoxExpression *exponent = CreateIntegerConstant(k);
    return CreateBinaryOperator(NoxPowerExpr, a, exponent);
}

NoxExpression *NoxFactory::CreateRoot(NoxExpression *a, int k) {
    NoxExpression *degree = CreateIntegerConstant(k);
    return CreateBinaryOperator(NoxRootExpr, a, degree);
}

NoxExpression *NoxFactory::CreateMod(NoxExpression *a, NoxExpression *b) {
    return CreateBinaryOperator(NoxModExpr, a, b);
}

// ---- Unary operators ----

NoxExpression *NoxFactory::CreateUnaryOperator(NoxExpressionType t, NoxExpression *a) {
    if (!a)
        return nullptr;
    return Register(new (std::nothrow) NoxUnaryOperator(this, a, t));
}

NoxExpression *NoxFactory::CreateSqrt(NoxExpression *a) {
    return CreateUnaryOperator(NoxSqrtExpr, a);
}

NoxExpression *NoxFactory::CreateLog(NoxExpression *a) {
    return CreateUnaryOperator(NoxLogExpr, a);
}

NoxExpression *NoxFactory::CreateLn(NoxExpression *a) { return CreateUnaryOperator(NoxLnExpr, a); }

NoxExpression *NoxFactory::CreateExp(NoxExpression *a) {
    return CreateUnaryOperator(NoxExpExpr, a);
}

NoxExpression *NoxFactory::CreateAbs(NoxExpression *a) {
    return CreateUnaryOperator(NoxAbsExpr, a);
}

NoxExpression *NoxFactory::CreateCeil(NoxExpression *a) {
    return CreateUnaryOperator(NoxCeilExpr, a);
}

NoxExpression *NoxFactory::CreateFloor(NoxExpression *a) {
    return CreateUnaryOperator(NoxFloorExpr, a);
}

NoxExpression *NoxFactory::CreateRound(NoxExpression *a) {
    return CreateUnaryOperator(NoxRoundExpr, a);
}

// ---- Trigonometric operators ----

NoxExpression *NoxFactory::CreateTrigonometricOperator(NoxExpressionType t, NoxExpression *a) {
    if (!a)
        return nullptr;
    return Register(new (std::nothrow) NoxTrigonometricOperator(this, a, t));
}

NoxExpression *NoxFactory::CreateSin(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxSinExpr, a);
}

NoxExpression *NoxFactory::CreateCos(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxCosExpr, a);
}

NoxExpression *NoxFactory::CreateTan(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxTanExpr, a);
}

NoxExpression *NoxFactory::CreateAsin(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxAsinExpr, a);
}

NoxExpression *NoxFactory::CreateAcos(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxAcosExpr, a);
}

NoxExpression *NoxFactory::CreateAtan(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxAtanExpr, a);
}

NoxExpression *NoxFactory::CreateSinh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxSinhExpr, a);
}

NoxExpression *NoxFactory::CreateCosh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxCoshExpr, a);
}

NoxExpression *NoxFactory::CreateTanh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxTanhExpr, a);
}

NoxExpression *NoxFactory::CreateASinh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxASinhExpr, a);
}

NoxExpression *NoxFactory::CreateACosh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxACoshExpr, a);
}

NoxExpression *NoxFactory::CreateATanh(NoxExpression *a) {
    return CreateTrigonometricOperator(NoxATanhExpr, a);
}

// ---- Black boxes, derivatives, equations ----

NoxExpression *NoxFactory::DeclareBlackBox(NoxBlackBox *box, int n, NoxExpression **arguments) {
    if (!box)
        return nullptr;
    NoxExpression *node = Register(new (std::nothrow) NoxBlackBoxOperator(this, n, arguments, *box));
    if (node)
        box->SetOperator(static_cast<NoxBlackBoxOperator *>(node));
    return node;
}

NoxExpression *NoxFactory::CreateDerivative(NoxExpression *expr, int n, NoxVariable **vars) {
    if (!vars)
        return nullptr;
    NoxExpression *r = expr;
    for (int i = 0; i < n && r; ++i)
        r = r->Differentiate(vars[i]);
    return r;
}

NoxEquation *NoxFactory::AddEquation(NoxExpression *root, NoxEquationType t) {
    if (!root)
        return nullptr;
    NoxEquation *equation = new (std::nothrow) NoxEquation(*this, root, t, equationCount);
    if (!NoxAppend(equations, equationCount, equationCapacity, equation)) {
        delete equation;
        return nullptr;
    }
    return equation;
}
