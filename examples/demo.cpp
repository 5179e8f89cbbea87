// A small host of the Nox library: it shows, one section at a time, what the library
// offers a constraint solver, printing each result.
#include <Nox.h>

#include <cstdio>

namespace {

void PrintReal(const char *label, const NoxRealInterval &r) {
    if (NoxIsEmpty(r, NoxAbsPrecision))
        std::printf("  %-44s nil\n", label);
    else if (NoxIsInfinite(r))
        std::printf("  %-44s any\n", label);
    else
        std::printf("  %-44s [%.17g, %.17g]\n", label, r.lower, r.upper);
}

void PrintInteger(const char *label, const NoxIntegerInterval &r) {
    if (NoxIsEmpty(r))
        std::printf("  %-44s nil\n", label);
    else
        std::printf("  %-44s [%d, %d]\n", label, r.lower, r.upper);
}

void ShowEnvironment() {
    NoxEnvironment env;
    double lo, hi;
    env.GetTrigonometricLimits(lo, hi);
    std::printf("Environment of a model\n");
    std::printf("  tolerance %g, trigonometric limits [%g, %g], max enumeration size %d\n",
                env.GetTolerance(), lo, hi, env.GetMaxEnumSize());
    env.SetError(NoxErrorEmptyResult);
    env.SetError(NoxErrorBadOperandType);
    std::printf("  error code after reporting both bits: %d\n", env.GetError());
    env.ClearError();
    std::printf("  error code after ClearError: %d\n\n", env.GetError());
}

void ShowIntervals() {
    const double tol = 1e-14;
    std::printf("Intervals clamp to fixed limits instead of infinities\n");
    std::printf("  NoxMaxReal = %.17g, NoxMaxInteger = %d\n", NoxMaxReal, NoxMaxInteger);
    PrintReal("NoxCreateRealInterval(-1e40, 1e40)", NoxCreateRealInterval(-1e40, 1e40));
    PrintReal("NoxCreateRealInterval(5, 4)", NoxCreateRealInterval(5, 4));
    PrintInteger("integers inside [0.5, 2.5]",
                 NoxCreateIntegerInterval(NoxCreateRealInterval(0.5, 2.5)));
    PrintInteger("integers inside [1.999999999999999, 3.0000000000000004]",
                 NoxCreateIntegerInterval(NoxCreateRealInterval(1.999999999999999, 3.0000000000000004)));
    PrintReal("[0, 1] meet [1.000000000000005, 2]",
              NoxIntersect(NoxCreateRealInterval(0, 1), NoxCreateRealInterval(1.000000000000005, 2), tol));
    PrintReal("[0, 1] meet [1.1, 2]",
              NoxIntersect(NoxCreateRealInterval(0, 1), NoxCreateRealInterval(1.1, 2), tol));
    PrintReal("hull of nil and [1, 2]", NoxUnite(NoxReal_Nil, NoxCreateRealInterval(1, 2), tol));
    std::printf("  %-44s %d\n", "width of the whole integer line (saturated)",
                NoxWidth(NoxInteger_Any));
    std::printf("\n");
}

void ShowValues() {
    NoxEnvironment env;
    std::printf("Values hold one of seven kinds and convert between them\n");
    std::printf("  %-44s %d\n", "the real 2.999999999999995 as an integer",
                NoxValue(2.999999999999995).GetAsInteger());
    std::printf("  %-44s %d\n", "the real 2.6 as an integer", NoxValue(2.6).GetAsInteger());
    PrintInteger("the real interval [0.5, 3.5] as integers",
                 NoxValue(NoxCreateRealInterval(0.5, 3.5)).GetAsIntegerInterval());
    std::printf("  %-44s %s\n", "[1.2, 3.4] as one integer",
                NoxValue(NoxCreateRealInterval(1.2, 3.4)).GetAsInteger() == NoxSingleInteger_Any
                    ? "any"
                    : "not any");
    PrintReal("the integer interval [-3, 5] as reals",
              NoxValue(NoxCreateIntegerInterval(-3, 5)).GetAsRealInterval());
    static const char *const truth[] = {"false", "true", "any", "nil"};
    std::printf("  %-44s %s\n", "the integer interval [-3, 5] as a boolean",
                truth[NoxValue(NoxCreateIntegerInterval(-3, 5)).GetAsBoolean()]);
    std::printf("  %-44s %s\n", "the integer interval [2, 5] as a boolean",
                truth[NoxValue(NoxCreateIntegerInterval(2, 5)).GetAsBoolean()]);
    const double reals[] = {1.0, 1.0000000000000002, 2.4, 2.6};
    NoxValue list;
    list.Set(4, reals);
    NoxIntegerEnum integers(NoxEnumNil);
    list.GetAsIntegerEnum(integers);
    std::printf("  %-44s", "the reals {1, 1.0000000000000002, 2.4, 2.6}");
    for (int i = 0; i < integers.GetSize(); ++i)
        std::printf(" %d", integers.Get(i));
    std::printf("\n");
    NoxValue enumeration(NoxIntegerEnumType);
    enumeration.Assign(env, NoxValue(NoxCreateIntegerInterval(1, 5)));
    std::printf("  %-44s", "[1, 5] assigned to an integer enumeration");
    for (int i = 0; i < enumeration.GetIntegerEnum().GetSize(); ++i)
        std::printf(" %d", enumeration.GetIntegerEnum().Get(i));
    std::printf("\n");
    std::printf("  %-44s %.17g\n", "middle of the enumeration", enumeration.GetMiddle());
    std::printf("\n");
}

void PrintValue(const char *label, const NoxValue &v) {
    static const char *const truth[] = {"false", "true", "any", "nil"};
    std::printf("  %-44s ", label);
    switch (v.GetType()) {
    case NoxIntegerType:
        std::printf("integer %d\n", v.GetAsInteger());
        break;
    case NoxRealType:
        std::printf("real %.17g\n", v.GetAsReal());
        break;
    case NoxIntegerIntervalType:
        std::printf("integer interval [%d, %d]\n", v.GetAsIntegerInterval().lower,
                    v.GetAsIntegerInterval().upper);
        break;
    case NoxRealIntervalType:
        if (NoxIsEmpty(v.GetAsRealInterval(), NoxAbsPrecision))
            std::printf("real interval nil\n");
        else
            std::printf("real interval [%.17g, %.17g]\n", v.GetAsRealInterval().lower,
                        v.GetAsRealInterval().upper);
        break;
    case NoxIntegerEnumType:
        if (v.GetIntegerEnum().GetRep() != NoxEnumList) {
            std::printf("integer enumeration, not a list\n");
            break;
        }
        std::printf("integer enumeration {");
        for (int i = 0; i < v.GetIntegerEnum().GetSize(); ++i)
            std::printf(i == 0 ? "%d" : ", %d", v.GetIntegerEnum().Get(i));
        std::printf("}\n");
        break;
    case NoxRealEnumType:
        if (v.GetRealEnum().GetRep() == NoxEnumRange) {
            std::printf("real enumeration range [%.17g, %.17g]\n",
                        v.GetRealEnum().GetAsRealInterval().lower,
                        v.GetRealEnum().GetAsRealInterval().upper);
            break;
        }
        std::printf("real enumeration {");
        for (int i = 0; i < v.GetRealEnum().GetSize(); ++i)
            std::printf(i == 0 ? "%.17g" : ", %.17g", v.GetRealEnum().Get(i));
        std::printf("}\n");
        break;
    case NoxBooleanType:
        std::printf("boolean %s\n", truth[v.GetAsBoolean() & 3]);
        break;
    default:
        std::printf("undefined\n");
    }
}

void ShowValueArithmetic() {
    NoxEnvironment env;
    std::printf("Values of different kinds combine into the kind that holds both\n");
    const int small[] = {1, 2};
    const int large[] = {10, 20};
    NoxValue a, b;
    a.Set(2, small);
    b.Set(2, large);
    PrintValue("integer 2 + real 0.5", NoxSum(env, NoxValue(2), NoxValue(0.5)));
    PrintValue("integer 2 + boolean true", NoxSum(env, NoxValue(2), NoxValue(NoxTrue)));
    PrintValue("real 1.5 * integer interval [1, 3]",
               NoxMul(env, NoxValue(1.5), NoxValue(NoxCreateIntegerInterval(1, 3))));
    PrintValue("{1, 2} + {10, 20}", NoxSum(env, a, b));
    PrintValue("{1, 2} + real interval [0, 0.5]",
               NoxSum(env, a, NoxValue(NoxCreateRealInterval(0, 0.5))));
    PrintValue("integer 7 / integer 2", NoxDiv(env, NoxValue(7), NoxValue(2)));
    PrintValue("integer 3 to the power 2", NoxPow(env, NoxValue(3), NoxValue(2)));
    PrintValue("sin of the integer enumeration {1, 2}", NoxSin(env, a));
    PrintValue("min of booleans true and any",
               NoxMin(env, NoxValue(NoxTrue), NoxValue(NoxBoolean_Any)));
    env.ClearError();
    PrintValue("real 1.5 + boolean true", NoxSum(env, NoxValue(1.5), NoxValue(NoxTrue)));
    std::printf("  %-44s %d\n", "error code after it (bad operand kinds)", env.GetError());
    std::printf("\n");
}

// A formula built through the factory: its enclosure over intervals of the variables, its
// gradient at a point and the value there of its symbolic derivative with respect to x.
void ShowExpressions() {
    NoxFactory f;
    NoxVariable *x = f.CreateVariable();
    NoxVariable *y = f.CreateVariable();
    NoxExpression *terms[3] = {f.CreatePower(x, 2), f.CreateSin(f.CreateProduct(x, y)),
                               f.CreateRealConstant(-1.0)};
    NoxExpression *formula = f.CreateSum(3, terms);
    std::printf("A formula f(x, y) = x^2 + sin(x*y) - 1 built through the factory\n");

    x->SetValue(NoxValue(NoxCreateRealInterval(0.5, 1.0)), nullptr);
    y->SetValue(NoxValue(NoxCreateRealInterval(-1.0, 2.0)), nullptr);
    f.GetEnvironment().ClearError();
    PrintValue("f over x in [0.5, 1], y in [-1, 2]", formula->GetValue());

    x->SetValue(NoxValue(1.0), nullptr);
    y->SetValue(NoxValue(2.0), nullptr);
    std::printf("  %-44s %.17g\n", "f(1, 2)", formula->Eval());
    const double *gradient = formula->GetGradient();
    std::printf("  %-44s (%.17g, %.17g)\n", "gradient at (1, 2)", gradient[0], gradient[1]);
    NoxExpression *dfdx = formula->Differentiate(x);
    if (dfdx)
        std::printf("  %-44s %.17g\n", "symbolic df/dx = 2x + y cos(xy) at (1, 2)", dfdx->Eval());
    else
        std::printf("  %-44s none\n", "symbolic df/dx");
    std::printf("\n");
}

} // namespace

int main() {
    std::printf("Nox demo\n\n");
    ShowEnvironment();
    ShowIntervals();
    ShowValues();
    ShowValueArithmetic();
    ShowExpressions();
    return 0;
}
