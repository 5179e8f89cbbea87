// The factory's composite builders: affine, quadratic and polynomial terms, determinants
// of small matrices of expressions, and interpolating polynomials solved by Cramer's rule.
#include "NoxFactory.h"

namespace {

// The side of the matrix layout of CreateDeterminant and CreateInterpolation.
constexpr int kSide = 4;

// True when any of the arguments is null.
template <class... T> bool AnyNull(const T *...p) {
    return ((p == nullptr) || ...);
}

// True when e is a constant node; its real reading (GetValue, then GetAsReal) goes to
// `real`.
bool ReadConstant(NoxExpression *e, double &real) {
    if (e->GetType() != NoxConstantExpr) return false;
    real = e->GetValue().GetAsReal();
    return true;
}

// True when e stands for zero in a determinant: null, or a constant reading 0.
bool IsZeroEntry(NoxExpression *e, bool &isConstant, double &real) {
    real = 0.0;
    isConstant = e && ReadConstant(e, real);
    return !e || (isConstant && real == 0.0);
}

// True when every listed row and column lies in the matrix layout.
bool InLayout(const int *rows, const int *cols, int k) {
    for (int i = 0; i < k; ++i)
        if (rows[i] < 0 || rows[i] >= kSide || cols[i] < 0 || cols[i] >= kSide) return false;
    return true;
}

// Fills one matrix row with the powers of xi from `degree` down: xi^degree, ...,
// xi^2 (CreatePower, in that order), xi, then `one`.
void FillPowerRow(NoxFactory &f, NoxExpression **row, NoxExpression *xi, int degree,
                  NoxExpression *one) {
    int column = 0;
    for (int e = degree; e >= 2; --e)
        row[column++] = f.CreatePower(xi, e);
    row[column++] = xi;
    row[column] = one;
}

} // namespace

// ---- Terms ----

NoxExpression *NoxFactory::CreateLinearTerm(const NoxValue &a, NoxExpression *x,
                                            const NoxValue &b) {
    const NoxValue unit(1.0);
    NoxExpression *term = a.IsEqualTo(environment, unit) ? x : CreateProduct(CreateConstant(a), x);
    const NoxValue nought(0.0);
    if (b.IsEqualTo(environment, nought)) return term;
    return CreateSum(CreateConstant(b), term);
}

NoxExpression *NoxFactory::CreateQuadraticTerm(const NoxValue &a, NoxExpression *x,
                                               const NoxValue &b) {
    return CreateLinearTerm(a, CreatePower(x, 2), b);
}

// Each new term has a lower degree than the sum built so far and becomes its first
// operand.
NoxExpression *NoxFactory::CreatePolynomialTerm(int n, NoxExpression **c, NoxExpression *x) {
    if (!c || !x) return nullptr;
    NoxExpression *acc = nullptr;
    for (int i = 0; i < n; ++i) {
        const int e = n - 1 - i;
        NoxExpression *power = e >= 2 ? CreatePower(x, e) : e == 1 ? x : nullptr;
        NoxExpression *term = c[i];
        if (power && c[i]) term = CreateProduct(c[i], power);
        if (!acc)
            acc = term;
        else if (term)
            acc = CreateSum(term, acc);
    }
    return acc ? acc : CreateRealConstant(0.0);
}

// ---- Determinants and Cramer's rule ----

// Expansion along rows[0]: the term of column position j is s·e·minor with s = (−1)^j,
// left out when e or its minor stands for zero; constant factors are folded, and a unit
// factor (c·s = 1 or d = s) drops out.
NoxExpression *NoxFactory::CreateDeterminant(NoxExpression **m, int *rows, int *cols, int k) {
    if (k < 1 || k > kSide || AnyNull(m, rows, cols) || !InLayout(rows, cols, k)) return nullptr;
    if (k == 1) return m[rows[0] * kSide + cols[0]];
    NoxExpression *acc = nullptr;
    double s = 1.0;
    for (int j = 0; j < k; ++j, s = -s) {
        NoxExpression *e = m[rows[0] * kSide + cols[j]];
        bool eConstant = false;
        double c = 0.0;
        if (IsZeroEntry(e, eConstant, c)) continue;
        int minorCols[kSide - 1];
        for (int i = 0, to = 0; i < k; ++i)
            if (i != j) minorCols[to++] = cols[i];
        NoxExpression *minor = CreateDeterminant(m, rows + 1, minorCols, k - 1);
        bool minorConstant = false;
        double d = 0.0;
        if (IsZeroEntry(minor, minorConstant, d)) continue;
        NoxExpression *term;
        if (eConstant && c == s)
            term = minor;
        else if (minorConstant && d == s)
            term = e;
        else if (eConstant && minorConstant)
            term = CreateRealConstant(c * s * d);
        else if (eConstant)
            term = CreateProduct(CreateRealConstant(c * s), minor);
        else if (minorConstant)
            term = CreateProduct(e, CreateRealConstant(d * s));
        else if (s != 1.0)
            term = CreateProduct(CreateProduct(CreateRealConstant(s), e), minor);
        else
            term = CreateProduct(e, minor);
        if (term) acc = acc ? CreateSum(acc, term) : term;
    }
    return acc;
}

// Column j of m is replaced by y for its determinant and put back at once, so m is
// unchanged when the call returns.
NoxExpression *NoxFactory::CreateInterpolation(NoxExpression **m, NoxExpression **y,
                                               NoxExpression *x, int k) {
    if (AnyNull(m, y, x) || k >= 5) return nullptr;
    int rows[kSide] = {0, 1, 2, 3};
    int cols[kSide] = {0, 1, 2, 3};
    NoxExpression *det = CreateDeterminant(m, rows, cols, k);
    if (!det) return nullptr;
    NoxExpression *coefficients[kSide] = {};
    for (int j = 0; j < k; ++j) {
        NoxExpression *saved[kSide];
        for (int r = 0; r < k; ++r) {
            saved[r] = m[r * kSide + j];
            m[r * kSide + j] = y[r];
        }
        coefficients[j] = CreateDeterminant(m, rows, cols, k);
        for (int r = 0; r < k; ++r)
            m[r * kSide + j] = saved[r];
    }
    NoxExpression *p = CreatePolynomialTerm(k, coefficients, x);
    return p ? CreateQuotient(p, det) : CreateRealConstant(0.0);
}

// ---- Interpolation builders ----

NoxExpression *NoxFactory::CreateLinearInterpolation2P(NoxExpression *x0, NoxExpression *y0,
                                                       NoxExpression *x1, NoxExpression *y1,
                                                       NoxExpression *x) {
    if (AnyNull(x0, y0, x1, y1, x)) return nullptr;
    NoxExpression *one = CreateRealConstant(1.0);
    NoxExpression *m[kSide * kSide] = {};
    FillPowerRow(*this, m + 0 * kSide, x0, 1, one);
    FillPowerRow(*this, m + 1 * kSide, x1, 1, one);
    NoxExpression *y[kSide] = {y0, y1};
    return CreateInterpolation(m, y, x, 2);
}

NoxExpression *NoxFactory::CreateQuadraticInterpolation3P(NoxExpression *x0, NoxExpression *y0,
                                                          NoxExpression *x1, NoxExpression *y1,
                                                          NoxExpression *x2, NoxExpression *y2,
                                                          NoxExpression *x) {
    if (AnyNull(x0, y0, x1, y1, x2, y2, x)) return nullptr;
    NoxExpression *one = CreateRealConstant(1.0);
    NoxExpression *m[kSide * kSide] = {};
    NoxExpression *points[] = {x0, x1, x2};
    for (int i = 0; i < 3; ++i)
        FillPowerRow(*this, m + i * kSide, points[i], 2, one);
    NoxExpression *y[kSide] = {y0, y1, y2};
    return CreateInterpolation(m, y, x, 3);
}

NoxExpression *NoxFactory::CreateCubicInterpolation4P(NoxExpression *x0, NoxExpression *y0,
                                                      NoxExpression *x1, NoxExpression *y1,
                                                      NoxExpression *x2, NoxExpression *y2,
                                                      NoxExpression *x3, NoxExpression *y3,
                                                      NoxExpression *x) {
    if (AnyNull(x0, y0, x1, y1, x2, y2, x3, y3, x)) return nullptr;
    NoxExpression *one = CreateRealConstant(1.0);
    NoxExpression *m[kSide * kSide] = {};
    NoxExpression *points[] = {x0, x1, x2, x3};
    for (int i = 0; i < 4; ++i)
        FillPowerRow(*this, m + i * kSide, points[i], 3, one);
    NoxExpression *y[kSide] = {y0, y1, y2, y3};
    return CreateInterpolation(m, y, x, 4);
}

// Rows 0 and 1 hold the values at x0 and x1; rows 2 and 3 their derivatives
// (3·xi², 2·xi, 1, 0).
NoxExpression *NoxFactory::CreateCubicInterpolation2P2D(NoxExpression *x0, NoxExpression *y0,
                                                        NoxExpression *d0, NoxExpression *x1,
                                                        NoxExpression *y1, NoxExpression *d1,
                                                        NoxExpression *x) {
    if (AnyNull(x0, y0, d0, x1, y1, d1, x)) return nullptr;
    NoxExpression *one = CreateRealConstant(1.0);
    NoxExpression *two = CreateRealConstant(2.0);
    NoxExpression *three = CreateRealConstant(3.0);
    NoxExpression *m[kSide * kSide] = {};
    NoxExpression *points[] = {x0, x1};
    for (int i = 0; i < 2; ++i)
        FillPowerRow(*this, m + i * kSide, points[i], 3, one);
    for (int i = 0; i < 2; ++i) {
        NoxExpression **row = m + (2 + i) * kSide;
        row[0] = CreateProduct(three, CreatePower(points[i], 2));
        row[1] = CreateProduct(two, points[i]);
        row[2] = one;
    }
    NoxExpression *y[kSide] = {y0, y1, d0, d1};
    return CreateInterpolation(m, y, x, 4);
}

NoxExpression *NoxFactory::CreateLinearInterpolation01(NoxExpression *a, NoxExpression *b,
                                                       NoxExpression *t) {
    if (AnyNull(a, b, t)) return nullptr;
    NoxExpression *minus = CreateRealConstant(-1.0);
    return CreateSum(CreateProduct(CreateSum(b, CreateProduct(minus, a)), t), a);
}

NoxExpression *NoxFactory::CreateCubicInterpolation01(NoxExpression *a, NoxExpression *b,
                                                      NoxExpression *t) {
    if (AnyNull(a, b, t)) return nullptr;
    NoxExpression *minusTwo = CreateRealConstant(-2.0);
    NoxExpression *three = CreateRealConstant(3.0);
    NoxExpression *cubic = CreateProduct(minusTwo, CreatePower(t, 3));
    NoxExpression *square = CreateProduct(three, CreatePower(t, 2));
    return CreateLinearInterpolation01(a, b, CreateSum(cubic, square));
}
