// Expression nodes: caches and their entry points, the operator base, constants,
// variables and equations.
#include "NoxExpression.h"

#include "NoxFactory.h"

#include <algorithm>
#include <new>

// ---- NoxExpression ----

NoxExpression::NoxExpression(NoxFactory *owner)
    : type(NoxExpressionType(0)), factory(owner), environment(&owner->GetEnvironment()),
      bufferFlags(0), bufferReal(0.0), bufferGradient(nullptr), bufferHessian(nullptr),
      bufferValue(), exprValue(), gradientSize(0), hessianSize(0) {}

NoxExpression::NoxExpression(const NoxExpression &other) = default;

NoxExpression::~NoxExpression() {
    delete[] bufferGradient;
    FreeHessian();
}

void NoxExpression::FreeHessian() {
    if (!bufferHessian)
        return;
    for (int i = 0; i < hessianSize; ++i)
        delete[] bufferHessian[i];
    delete[] bufferHessian;
    bufferHessian = nullptr;
    hessianSize = 0;
}

unsigned char NoxExpression::ContainsExprOfKind(NoxExpressionType kind) const {
    return type == kind;
}

void NoxExpression::ResetBuffer(unsigned char) { bufferFlags = 0; }

const NoxValue &NoxExpression::GetExprValue() const { return exprValue; }

void NoxExpression::SetExprValue(const NoxValue &v) { exprValue = v; }

int NoxExpression::GetNbOfVariables() const { return factory->GetNbOfVariables(); }

void NoxExpression::FillReal() {
    factory->SetBufferUsed();
    bufferReal = DoEval();
    bufferFlags |= RealFlag;
}

void NoxExpression::FillValue() {
    factory->SetBufferUsed();
    DoEval(bufferValue);
    bufferFlags |= ValueFlag;
    exprValue = bufferValue;
}

void NoxExpression::Eval(NoxValue &out) { out = GetValue(); }

// A buffer is kept while it holds at least n entries; a smaller one (variables were
// created after it) is replaced and its cache marked invalid. False when memory runs
// short; the buffer is then null.
bool NoxExpression::EnsureGradient(int n) {
    if (bufferGradient && gradientSize >= n)
        return true;
    delete[] bufferGradient;
    bufferFlags &= ~unsigned(GradientFlag);
    bufferGradient = new (std::nothrow) double[n]();
    gradientSize = bufferGradient ? n : 0;
    return bufferGradient != nullptr;
}

bool NoxExpression::EnsureHessian(int n) {
    if (bufferHessian && hessianSize >= n)
        return true;
    FreeHessian();
    bufferFlags &= ~unsigned(HessianFlag);
    bufferHessian = new (std::nothrow) double *[n]();
    if (!bufferHessian)
        return false;
    hessianSize = n;
    for (int i = 0; i < n; ++i) {
        bufferHessian[i] = new (std::nothrow) double[n]();
        if (!bufferHessian[i]) {
            FreeHessian();
            return false;
        }
    }
    return true;
}

const double *NoxExpression::GetGradient() {
    if (!EnsureGradient(GetNbOfVariables()))
        return nullptr;
    if (!(bufferFlags & GradientFlag)) {
        factory->SetBufferUsed();
        DoEvalGradient(bufferGradient);
        bufferFlags |= GradientFlag;
    }
    return bufferGradient;
}

double **NoxExpression::GetHessian() {
    if (!EnsureHessian(GetNbOfVariables()))
        return nullptr;
    if (!(bufferFlags & HessianFlag)) {
        factory->SetBufferUsed();
        DoEvalHessian(bufferHessian);
        bufferFlags |= HessianFlag;
    }
    return bufferHessian;
}

void NoxExpression::EvalGradient(double *out) {
    const int n = GetNbOfVariables();
    const double *g = GetGradient();
    if (out && g)
        std::copy(g, g + n, out);
}

void NoxExpression::EvalHessian(double **out) {
    const int n = GetNbOfVariables();
    double **h = GetHessian();
    if (!out || n <= 0 || !h)
        return;
    for (int i = 0; i < n; ++i)
        std::copy(h[i], h[i] + n, out[i]);
}

// A variable's index addresses the buffers only when it lies among the factory's
// variables (a variable of another factory may not).
static bool NoxIndexInRange(const NoxVariable *v, int n) {
    return v && v->GetIdx() >= 0 && v->GetIdx() < n;
}

double NoxExpression::EvalFirstDeriv(NoxVariable *var) {
    const int n = GetNbOfVariables();
    const double *g = GetGradient();
    return g && NoxIndexInRange(var, n) ? g[var->GetIdx()] : 0.0;
}

double NoxExpression::EvalSecondDeriv(NoxVariable *a, NoxVariable *b) {
    const int n = GetNbOfVariables();
    double **h = GetHessian();
    if (!h || !NoxIndexInRange(a, n) || !NoxIndexInRange(b, n))
        return 0.0;
    return h[a->GetIdx()][b->GetIdx()];
}

// ---- NoxOperator ----

NoxOperator::NoxOperator(NoxFactory *owner, int count, NoxExpression *const *childArray)
    : NoxExpression(owner), childCount(std::max(count, 0)), children(nullptr) {
    if (!childArray || count <= 0)
        return;
    children = new (std::nothrow) NoxExpression *[count];
    if (children)
        std::copy(childArray, childArray + count, children);
}

NoxOperator::~NoxOperator() { delete[] children; }

NoxExpression *NoxOperator::GetChild(int i) {
    return children && i >= 0 && i < childCount ? children[i] : nullptr;
}

const NoxExpression *NoxOperator::GetChild(int i) const {
    return children && i >= 0 && i < childCount ? children[i] : nullptr;
}

unsigned char NoxOperator::ContainsExprOfKind(NoxExpressionType kind) const {
    if (type == kind)
        return 1;
    for (int i = 0; i < childCount; ++i) {
        const NoxExpression *child = GetChild(i);
        if (child && child->ContainsExprOfKind(kind))
            return 1;
    }
    return 0;
}

void NoxOperator::FillPresentVariables(unsigned char *mask) const {
    for (int i = 0; i < childCount; ++i) {
        const NoxExpression *child = GetChild(i);
        if (child)
            child->FillPresentVariables(mask);
    }
}

void NoxOperator::ResetBuffer(unsigned char recursive) {
    bufferFlags = 0;
    if (!recursive)
        return;
    for (int i = 0; i < childCount; ++i) {
        NoxExpression *child = GetChild(i);
        if (child)
            child->ResetBuffer(1);
    }
}

double ***NoxOperator::InitHessianTable() {
    double ***table = new (std::nothrow) double **[childCount > 0 ? childCount : 0];
    if (!table)
        return nullptr;
    for (int i = 0; i < childCount; ++i) {
        NoxExpression *child = GetChild(i);
        table[i] = child ? child->GetHessian() : nullptr;
    }
    return table;
}

void NoxOperator::CopyHessianTable(double ***table, double **dest) const {
    if (childCount <= 0 || !table || !table[0] || !dest)
        return;
    const int n = GetNbOfVariables();
    for (int i = 0; i < n; ++i)
        std::copy(table[0][i], table[0][i] + n, dest[i]);
}

void NoxOperator::FiniHessianTable(double ***&table) const {
    delete[] table;
    table = nullptr;
}

void NoxOperator::CopyFirstChildHessian(double **dest) {
    double ***table = InitHessianTable();
    CopyHessianTable(table, dest);
    FiniHessianTable(table);
}

// ---- NoxConstant ----

NoxConstant::NoxConstant(NoxFactory *owner, const NoxValue &v) : NoxExpression(owner), value(v) {
    type = NoxConstantExpr;
}

NoxExpression *NoxConstant::Differentiate(NoxVariable *var) {
    return var ? factory->CreateRealConstant(0.0) : nullptr;
}

void NoxConstant::DoEval(NoxValue &result) { result = value; }

double NoxConstant::DoEval() { return value.GetRealValue(); }

void NoxConstant::DoEvalGradient(double *grad) {
    if (grad)
        std::fill(grad, grad + GetNbOfVariables(), 0.0);
}

void NoxConstant::DoEvalHessian(double **hess) {
    if (!hess)
        return;
    const int n = GetNbOfVariables();
    for (int i = 0; i < n; ++i)
        std::fill(hess[i], hess[i] + n, 0.0);
}

// ---- NoxVariable ----

NoxVariable::NoxVariable(NoxFactory *owner, int idx)
    : NoxConstant(owner, NoxValue()), index(idx), preferedValue(0.0), hasPreferedValue(0),
      fixed(0), divided(1), name() {
    type = NoxVariableExpr;
}

NoxExpression *NoxVariable::Differentiate(NoxVariable *var) {
    if (!var)
        return this;
    return factory->CreateRealConstant(var == this ? 1.0 : 0.0);
}

void NoxVariable::FillPresentVariables(unsigned char *mask) const {
    if (mask && !fixed)
        mask[index] = 1;
}

void NoxVariable::SetExprValue(const NoxValue &v) {
    value = v;
    factory->ResetBuffer(nullptr);
}

void NoxVariable::SetValue(const NoxValue &v, NoxExpression *expr) {
    value = v;
    factory->ResetBuffer(expr);
}

void NoxVariable::SetPreferedValue(double x) {
    preferedValue = x;
    hasPreferedValue = 1;
}

unsigned char NoxVariable::GetPreferedValue(double &out) const {
    if (!hasPreferedValue)
        return 0;
    out = preferedValue;
    return 1;
}

void NoxVariable::Fix(unsigned char flag) {
    if (flag == fixed)
        return;
    factory->ResetBuffer(nullptr);
    fixed = flag;
}

void NoxVariable::DoEvalGradient(double *grad) {
    if (!grad)
        return;
    NoxConstant::DoEvalGradient(grad);
    if (!fixed && index >= 0 && index < GetNbOfVariables())
        grad[index] = 1.0;
}

// Names: assignment may need memory; when it cannot be had the name stays as it was, so
// that no exception leaves the library.
static void NoxAssignName(std::string &name, const std::string &value) {
    try {
        name = value;
    } catch (const std::bad_alloc &) {
    }
}

// The default name: the prefix followed by the index in decimal.
static const std::string &NoxDefaultName(std::string &name, const char *prefix, int idx) {
    if (name.empty()) {
        try {
            name = std::string(prefix) + std::to_string(idx);
        } catch (const std::bad_alloc &) {
        }
    }
    return name;
}

void NoxVariable::SetName(const std::string &n) { NoxAssignName(name, n); }

const std::string &NoxVariable::GetName() { return NoxDefaultName(name, "va", index); }

// ---- NoxEquation ----

NoxEquation::NoxEquation(NoxFactory &owner, NoxExpression *root, NoxEquationType t, int idx)
    : factory(&owner), rootExpr(root), type(t), index(idx), name() {}

NoxEquation::NoxEquation(const NoxEquation &other)
    : factory(other.factory), rootExpr(other.rootExpr), type(other.type), index(other.index),
      name() {
    NoxAssignName(name, other.name);
}

NoxEquation &NoxEquation::operator=(const NoxEquation &other) {
    factory = other.factory;
    rootExpr = other.rootExpr;
    type = other.type;
    index = other.index;
    NoxAssignName(name, other.name);
    return *this;
}

NoxEquation::~NoxEquation() { rootExpr = nullptr; }

void NoxEquation::SetName(const std::string &n) { NoxAssignName(name, n); }

const std::string &NoxEquation::GetName() { return NoxDefaultName(name, "eq", index); }
