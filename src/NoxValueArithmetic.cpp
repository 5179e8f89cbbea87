// Arithmetic, elementary functions, powers and roots on values. A binary function takes
// the kind of its result from the operands' kinds (NoxResultKind), then computes with a
// scalar kernel (single integers and reals, with the any and nil markers), the interval
// function, or an element-by-element combination of enumerations that falls back to the
// interval function on the hulls. Unary functions dispatch on the operand's kind the same
// way. Only single, interval and boolean kinds are computed without allocating.
#include "NoxValueFunctions.h"

#include "NoxIntervalFunctions.h"
#include "NoxPrivate.h"

#include <cmath>
#include <cstdint>

namespace {

typedef int (*IntegerKernel)(const NoxEnvironment &, int, int);
typedef double (*RealKernel)(const NoxEnvironment &, double, double);
typedef double (*UnaryRealKernel)(const NoxEnvironment &, double);
typedef NoxIntegerInterval (*IntegerIntervalFunction)(const NoxEnvironment &,
                                                      const NoxIntegerInterval &,
                                                      const NoxIntegerInterval &);
typedef NoxRealInterval (*RealIntervalFunction)(const NoxEnvironment &, const NoxRealInterval &,
                                                const NoxRealInterval &);
typedef NoxRealInterval (*UnaryRealIntervalFunction)(const NoxEnvironment &,
                                                     const NoxRealInterval &);
typedef NoxValue (*BooleanConnective)(const NoxValue &, const NoxValue &);

// The smallest normal single-precision number: below it the logarithms have no value.
constexpr double kSmallestLogArgument = 1.1754943508222875e-38;

// A pair of kinds, or a single kind, that no rule accepts.
NoxValue BadOperands(const NoxEnvironment &env) {
    env.SetError(NoxErrorBadOperandType);
    return NoxValue(NoxReal_Nil);
}

int EmptyInteger(const NoxEnvironment &env) {
    env.SetError(NoxErrorEmptyResult);
    return NoxSingleInteger_Nil;
}

double EmptyReal(const NoxEnvironment &env) {
    env.SetError(NoxErrorEmptyResult);
    return NoxSingleReal_Nil;
}

// ---- Integer kernels. Everything that can leave the int range is computed in 64 bits
// and narrowed by wrapping (INT_MIN is below every marker and can come from a
// conversion). ----

// The markers of the sum, difference, minimum and maximum: a nil operand gives nil with
// NoxErrorEmptyResult, otherwise an any operand gives any. True when they decided `r`.
bool IntegerMarkers(const NoxEnvironment &env, int a, int b, int &r) {
    if (NoxIsSingleIntegerNil(a) || NoxIsSingleIntegerNil(b)) {
        r = EmptyInteger(env);
        return true;
    }
    if (NoxIsSingleIntegerAny(a) || NoxIsSingleIntegerAny(b)) {
        r = NoxSingleInteger_Any;
        return true;
    }
    return false;
}

// a + b of two operands that are not markers; beyond NoxMaxInteger the nil integer,
// without an error. b is 64 bits wide so that the difference can pass -INT_MIN.
int BoundedIntegerSum(std::int64_t a, std::int64_t b) {
    const std::int64_t m = NoxMaxInteger;
    if ((b >= 1 && a > m - b) || (b < 1 && a < -(m + b)))
        return NoxSingleInteger_Nil;
    return NoxWrapToInt(a + b);
}

int IntegerSum(const NoxEnvironment &env, int a, int b) {
    int r;
    if (IntegerMarkers(env, a, b, r))
        return r;
    return BoundedIntegerSum(a, b);
}

// The markers are those of the operands as given; the sum rule then runs on -b.
int IntegerSub(const NoxEnvironment &env, int a, int b) {
    int r;
    if (IntegerMarkers(env, a, b, r))
        return r;
    return BoundedIntegerSum(a, -static_cast<std::int64_t>(b));
}

// Unlike the sum, an overflowing product reports NoxErrorEmptyResult.
int IntegerMul(const NoxEnvironment &env, int a, int b) {
    if (NoxIsSingleIntegerNil(a) || NoxIsSingleIntegerNil(b))
        return EmptyInteger(env);
    if (a == 0 || b == 0)
        return 0;
    if (NoxIsSingleIntegerAny(a) || NoxIsSingleIntegerAny(b))
        return NoxSingleInteger_Any;
    const std::int64_t magA = std::llabs(a);
    const std::int64_t magB = std::llabs(b);
    if (magA > std::int64_t{NoxMaxInteger} / magB)
        return EmptyInteger(env);
    return NoxWrapToInt(static_cast<std::int64_t>(a) * b);
}

int IntegerDiv(const NoxEnvironment &env, int a, int b) {
    if (a == 0 && b == 0)
        return NoxSingleInteger_Any;
    if (NoxIsSingleIntegerNil(a) || NoxIsSingleIntegerNil(b) || b == 0)
        return EmptyInteger(env);
    if (a == 0)
        return 0;
    if (NoxIsSingleIntegerAny(a) || NoxIsSingleIntegerAny(b))
        return NoxSingleInteger_Any;
    return NoxWrapToInt(static_cast<std::int64_t>(a) / b);
}

int IntegerMod(const NoxEnvironment &env, int a, int b) {
    if (NoxIsSingleIntegerNil(a) || NoxIsSingleIntegerNil(b) || b == 0)
        return EmptyInteger(env);
    if (a == 0)
        return 0;
    if (NoxIsSingleIntegerAny(a) || NoxIsSingleIntegerAny(b))
        return NoxSingleInteger_Any;
    return NoxWrapToInt(static_cast<std::int64_t>(a) % b);
}

int IntegerMin(const NoxEnvironment &env, int a, int b) {
    int r;
    if (IntegerMarkers(env, a, b, r))
        return r;
    return b < a ? b : a;
}

int IntegerMax(const NoxEnvironment &env, int a, int b) {
    int r;
    if (IntegerMarkers(env, a, b, r))
        return r;
    return b > a ? b : a;
}

// |a|; the magnitude of INT_MIN wraps to INT_MIN.
int IntegerAbs(const NoxEnvironment &env, int a) {
    if (NoxIsSingleIntegerNil(a))
        return EmptyInteger(env);
    if (NoxIsSingleIntegerAny(a))
        return NoxSingleInteger_Any;
    return a < 0 ? NoxWrapToInt(-static_cast<std::int64_t>(a)) : a;
}

// ---- Real kernels: an operand below -NoxMaxReal gives nil with NoxErrorEmptyResult,
// then (unless a kernel says otherwise) one above NoxMaxReal gives any; a computed
// result beyond +-NoxMaxReal gives nil with NoxErrorEmptyResult. NaN passes every test
// and comes out as NaN. ----

double Checked(const NoxEnvironment &env, double r) {
    return std::fabs(r) > NoxMaxReal ? EmptyReal(env) : r;
}

bool HasNil(double a, double b) { return NoxIsSingleRealNil(a) || NoxIsSingleRealNil(b); }
bool HasAny(double a, double b) { return NoxIsSingleRealAny(a) || NoxIsSingleRealAny(b); }

// The common start of the binary kernels; true when it decided `r`.
bool RealMarkers(const NoxEnvironment &env, double a, double b, double &r) {
    if (HasNil(a, b)) {
        r = EmptyReal(env);
        return true;
    }
    if (HasAny(a, b)) {
        r = NoxSingleReal_Any;
        return true;
    }
    return false;
}

double RealSum(const NoxEnvironment &env, double a, double b) {
    double r;
    return RealMarkers(env, a, b, r) ? r : Checked(env, a + b);
}

double RealSub(const NoxEnvironment &env, double a, double b) {
    double r;
    return RealMarkers(env, a, b, r) ? r : Checked(env, a - b);
}

// A zero factor wins over the any marker.
double RealMul(const NoxEnvironment &env, double a, double b) {
    if (HasNil(a, b))
        return EmptyReal(env);
    if (a == 0 || b == 0)
        return 0.0;
    if (HasAny(a, b))
        return NoxSingleReal_Any;
    return Checked(env, a * b);
}

double RealDiv(const NoxEnvironment &env, double a, double b) {
    if (a == 0 && b == 0)
        return NoxSingleReal_Any;
    if (HasNil(a, b) || b == 0)
        return EmptyReal(env);
    if (a == 0)
        return 0.0;
    if (HasAny(a, b))
        return NoxSingleReal_Any;
    return Checked(env, a / b);
}

double RealMod(const NoxEnvironment &env, double a, double b) {
    if (HasNil(a, b) || b == 0)
        return EmptyReal(env);
    if (a == 0)
        return 0.0;
    if (HasAny(a, b))
        return NoxSingleReal_Any;
    return Checked(env, std::fmod(a, b));
}

// For equal operands the first one.
double RealMin(const NoxEnvironment &env, double a, double b) {
    double r;
    return RealMarkers(env, a, b, r) ? r : (b < a ? b : a);
}

double RealMax(const NoxEnvironment &env, double a, double b) {
    double r;
    return RealMarkers(env, a, b, r) ? r : (b > a ? b : a);
}

// ---- Unary real kernels: the common start, a domain test (x outside it gives nil with
// NoxErrorEmptyResult), then the function. Only atan, tanh, asinh, abs, ceil, floor and
// round test their result for overflow. ----

// The common start; true when it decided `r`.
bool RealMarker(const NoxEnvironment &env, double x, double &r) {
    if (NoxIsSingleRealNil(x)) {
        r = EmptyReal(env);
        return true;
    }
    if (NoxIsSingleRealAny(x)) {
        r = NoxSingleReal_Any;
        return true;
    }
    return false;
}

bool Outside(double x, const NoxRealInterval &domain) {
    return x < domain.lower || x > domain.upper;
}

// The kernel of F, whose domain is where IsOutside is false; CheckResult adds the
// overflow test of the result.
template <bool (*IsOutside)(double), double (*F)(double), bool CheckResult>
double UnaryKernel(const NoxEnvironment &env, double x) {
    double r;
    if (RealMarker(env, x, r))
        return r;
    if (IsOutside(x))
        return EmptyReal(env);
    return CheckResult ? Checked(env, F(x)) : F(x);
}

bool Everywhere(double) { return false; }
bool OutsideTrig(double x) { return Outside(x, NoxReal_Trig); }
bool OutsideTrigInv(double x) { return Outside(x, NoxReal_TrigInv); }
bool OutsideHyperbolic(double x) {
    return x < -2 * NoxMaxHypReal || x > 2 * NoxMaxHypReal;
}
bool OutsideAcosh(double x) { return x < 1; }
bool OutsideAtanh(double x) { return x < NoxAbsPrecision - 1 || x > 1 - NoxAbsPrecision; }
bool OutsidePositive(double x) { return Outside(x, NoxReal_Pos); }
bool OutsideLog(double x) { return x < kSmallestLogArgument; }
bool OutsideExp(double x) { return x > 2 * NoxMaxExpReal; }

double Sin(double x) { return std::sin(x); }
double Cos(double x) { return std::cos(x); }
double Tan(double x) { return std::tan(x); }
double Asin(double x) { return std::asin(x); }
double Acos(double x) { return std::acos(x); }
double Atan(double x) { return std::atan(x); }
double Sinh(double x) { return std::sinh(x); }
double Cosh(double x) { return std::cosh(x); }
double Tanh(double x) { return std::tanh(x); }
double Sqrt(double x) { return std::sqrt(x); }
double Log10(double x) { return std::log10(x); }
double Ln(double x) { return std::log(x); }
double Exp(double x) { return std::exp(x); }
double Fabs(double x) { return std::fabs(x); }
double Ceil(double x) { return std::ceil(x); }
double Floor(double x) { return std::floor(x); }
double Round(double x) { return std::floor(x + 0.5); }

constexpr UnaryRealKernel kSinKernel = UnaryKernel<OutsideTrig, Sin, false>;
constexpr UnaryRealKernel kCosKernel = UnaryKernel<OutsideTrig, Cos, false>;
constexpr UnaryRealKernel kTanKernel = UnaryKernel<OutsideTrig, Tan, false>;
constexpr UnaryRealKernel kAsinKernel = UnaryKernel<OutsideTrigInv, Asin, false>;
constexpr UnaryRealKernel kAcosKernel = UnaryKernel<OutsideTrigInv, Acos, false>;
constexpr UnaryRealKernel kAtanKernel = UnaryKernel<Everywhere, Atan, true>;
constexpr UnaryRealKernel kSinhKernel = UnaryKernel<OutsideHyperbolic, Sinh, false>;
constexpr UnaryRealKernel kCoshKernel = UnaryKernel<OutsideHyperbolic, Cosh, false>;
constexpr UnaryRealKernel kTanhKernel = UnaryKernel<Everywhere, Tanh, true>;
constexpr UnaryRealKernel kAsinhKernel = UnaryKernel<Everywhere, NoxRealAsinh, true>;
constexpr UnaryRealKernel kAcoshKernel = UnaryKernel<OutsideAcosh, NoxRealAcosh, false>;
constexpr UnaryRealKernel kAtanhKernel = UnaryKernel<OutsideAtanh, NoxRealAtanh, false>;
constexpr UnaryRealKernel kSqrtKernel = UnaryKernel<OutsidePositive, Sqrt, false>;
constexpr UnaryRealKernel kLogKernel = UnaryKernel<OutsideLog, Log10, false>;
constexpr UnaryRealKernel kLnKernel = UnaryKernel<OutsideLog, Ln, false>;
constexpr UnaryRealKernel kExpKernel = UnaryKernel<OutsideExp, Exp, false>;
constexpr UnaryRealKernel kAbsKernel = UnaryKernel<Everywhere, Fabs, true>;
constexpr UnaryRealKernel kCeilKernel = UnaryKernel<Everywhere, Ceil, true>;
constexpr UnaryRealKernel kFloorKernel = UnaryKernel<Everywhere, Floor, true>;
constexpr UnaryRealKernel kRoundKernel = UnaryKernel<Everywhere, Round, true>;

// ---- Power and root kernels on single reals (members of enumerations), through the
// interval functions on [x, x] ----

double PowerKernel(const NoxEnvironment &env, double x, int n) {
    const NoxRealInterval r = NoxPow(env, NoxRealInterval{x, x}, n);
    if (NoxIsEmpty(r, NoxAbsPrecision))
        return NoxSingleReal_Nil;
    if (NoxIsExact(r, NoxAbsPrecision))
        return NoxMiddle(r);
    return NoxSingleReal_Any;
}

// The upper bound of a positive root, the lower bound of a negative one.
double RootKernel(const NoxEnvironment &env, double x, int n, bool positive) {
    const NoxRealInterval point{x, x};
    const NoxRealInterval r =
        positive ? NoxRootPositive(env, point, n) : NoxRootNegative(env, point, n);
    if (NoxIsEmpty(r, NoxAbsPrecision))
        return NoxSingleReal_Nil;
    if (NoxIsInfinite(r))
        return NoxSingleReal_Any;
    return positive ? r.upper : r.lower;
}

// ---- Enumerations. The integer and real forms differ only in what the traits below
// say: how markers are recognised, how a member is inserted, and how hulls are read and
// written. ----

struct IntegerEnumTraits {
    typedef NoxIntegerEnum Enum;
    typedef NoxIntegerInterval Interval;
    static const NoxValueType kKind = NoxIntegerEnumType;
    static Enum &Member(NoxValue &v) { return v.GetIntegerEnum(); }
    static void Fetch(const NoxEnvironment &env, const NoxValue &v, Enum &e) {
        v.GetAsIntegerEnum(e);
        e.Correct(env);
    }
    static bool IsNil(int r) { return NoxIsSingleIntegerNil(r); }
    static bool IsAny(int r) { return NoxIsSingleIntegerAny(r); }
    static void Insert(const NoxEnvironment &, Enum &e, int r) { e.Insert(r); }
    static Interval Hull(const Enum &e) { return e.GetAsIntegerInterval(); }
    static void SetHull(Enum &e, const Interval &r) { e.SetAsIntegerInterval(r); }
    // The end of a combination of two lists: nil reports, anything else is corrected.
    static void FinishCombination(const NoxEnvironment &env, Enum &e) {
        if (e.IsNil())
            env.SetError(NoxErrorEmptyResult);
        else
            e.Correct(env);
    }
};

struct RealEnumTraits {
    typedef NoxRealEnum Enum;
    typedef NoxRealInterval Interval;
    static const NoxValueType kKind = NoxRealEnumType;
    static Enum &Member(NoxValue &v) { return v.GetRealEnum(); }
    static void Fetch(const NoxEnvironment &env, const NoxValue &v, Enum &e) {
        v.GetAsRealEnum(e);
        e.Correct(env);
    }
    static bool IsNil(double r) { return NoxIsSingleRealNil(r); }
    static bool IsAny(double r) { return NoxIsSingleRealAny(r); }
    // Members closer than the environment's tolerance merge.
    static void Insert(const NoxEnvironment &env, Enum &e, double r) {
        e.Insert(r, env.GetTolerance());
    }
    static Interval Hull(const Enum &e) { return e.GetAsRealInterval(); }
    static void SetHull(Enum &e, const Interval &r) { e.SetAsRealInterval(r); }
    // The end of a combination of two lists: corrected first, then nil reports.
    static void FinishCombination(const NoxEnvironment &env, Enum &e) {
        e.Correct(env);
        if (e.IsNil())
            env.SetError(NoxErrorEmptyResult);
    }
};

// The end of a member-by-member map, for both kinds: corrected, then nil reports.
template <class Enum> void FinishMap(const NoxEnvironment &env, Enum &e) {
    e.Correct(env);
    if (e.IsNil())
        env.SetError(NoxErrorEmptyResult);
}

// Adds the kernel's result r to e: a member without value is dropped and clears the
// whole error code (the kernel's bit and every earlier one). Returns false when r is the
// any marker, which stops the enumeration.
template <class Traits, class Element>
bool AddMember(const NoxEnvironment &env, typename Traits::Enum &e, Element r) {
    if (Traits::IsNil(r)) {
        env.ClearError();
        return true;
    }
    if (Traits::IsAny(r))
        return false;
    Traits::Insert(env, e, r);
    return true;
}

// Every pair of members of the lists a and b, in order, through f into e; false when a
// pair gave the any marker.
template <class Traits, class Kernel>
bool CombineLists(const NoxEnvironment &env, const typename Traits::Enum &a,
                  const typename Traits::Enum &b, Kernel f, typename Traits::Enum &e) {
    const int sizeA = a.GetSize();
    const int sizeB = b.GetSize();
    for (int i = 0; i < sizeA; ++i)
        for (int j = 0; j < sizeB; ++j)
            if (!AddMember<Traits>(env, e, f(env, a.Get(i), b.Get(j))))
                return false;
    return true;
}

// The enumeration combination of a and b: member by member when both are lists, else
// (or when a pair is unbounded) the interval function F on the hulls.
template <class Traits, class Kernel, class Function>
NoxValue CombineEnums(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b, Kernel f,
                      Function F) {
    NoxValue result(Traits::kKind);
    typename Traits::Enum &e = Traits::Member(result);
    e.SetNil();
    typename Traits::Enum enumA(NoxEnumAny);
    typename Traits::Enum enumB(NoxEnumAny);
    Traits::Fetch(env, a, enumA);
    Traits::Fetch(env, b, enumB);
    if (enumA.GetRep() == NoxEnumList && enumB.GetRep() == NoxEnumList) {
        if (enumA.GetSize() == 0) {
            env.SetError(NoxErrorEmptyResult);
            return result;
        }
        if (CombineLists<Traits>(env, enumA, enumB, f, e)) {
            Traits::FinishCombination(env, e);
            return result;
        }
    }
    Traits::SetHull(e, F(env, Traits::Hull(enumA), Traits::Hull(enumB)));
    e.Correct(env);
    return result;
}

// The member-by-member map of x through f into an enumeration of the traits' kind: the
// interval function F on the hull when x is not a list or a member gives any.
template <class Traits, class Kernel, class Function>
NoxValue MapEnum(const NoxEnvironment &env, const NoxValue &x, Kernel f, Function F) {
    NoxValue result(Traits::kKind);
    typename Traits::Enum &e = Traits::Member(result);
    e.SetNil();
    typename Traits::Enum enumX(NoxEnumAny);
    Traits::Fetch(env, x, enumX);
    if (enumX.GetRep() == NoxEnumList) {
        if (enumX.GetSize() == 0) {
            FinishMap(env, e);
            return result;
        }
        bool bounded = true;
        const int size = enumX.GetSize();
        for (int i = 0; i < size && bounded; ++i)
            bounded = AddMember<Traits>(env, e, f(env, enumX.Get(i)));
        if (bounded) {
            FinishMap(env, e);
            return result;
        }
    }
    Traits::SetHull(e, F(env, Traits::Hull(enumX)));
    e.Correct(env);
    return result;
}

// ---- Dispatch ----

// The binary functions: the result kind, then the kernel of that kind. Only the minimum
// and maximum accept two booleans, through their connective.
template <IntegerKernel IntegerF, RealKernel RealF, IntegerIntervalFunction IntegerIntervalF,
          RealIntervalFunction RealIntervalF>
NoxValue Binary(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b,
                BooleanConnective connective) {
    switch (NoxResultKind(a.GetType(), b.GetType())) {
    case NoxIntegerType:
        return NoxValue(IntegerF(env, a.GetAsInteger(), b.GetAsInteger()));
    case NoxRealType:
        return NoxValue(RealF(env, a.GetAsReal(), b.GetAsReal()));
    case NoxIntegerIntervalType:
        return NoxValue(IntegerIntervalF(env, a.GetAsIntegerInterval(), b.GetAsIntegerInterval()));
    case NoxRealIntervalType:
        return NoxValue(RealIntervalF(env, a.GetAsRealInterval(), b.GetAsRealInterval()));
    case NoxIntegerEnumType:
        return CombineEnums<IntegerEnumTraits>(env, a, b, IntegerF, IntegerIntervalF);
    case NoxRealEnumType:
        return CombineEnums<RealEnumTraits>(env, a, b, RealF, RealIntervalF);
    case NoxBooleanType:
        if (connective != nullptr)
            return connective(a, b);
        return BadOperands(env);
    default:
        return BadOperands(env);
    }
}

// The elementary functions: single operands through the real kernel, intervals through
// the interval function, enumerations mapped into a real enumeration.
template <UnaryRealKernel Kernel, UnaryRealIntervalFunction Function>
NoxValue Elementary(const NoxEnvironment &env, const NoxValue &x) {
    switch (x.GetType()) {
    case NoxIntegerType:
    case NoxRealType:
        return NoxValue(Kernel(env, x.GetAsReal()));
    case NoxIntegerIntervalType:
    case NoxRealIntervalType:
        return NoxValue(Function(env, x.GetAsRealInterval()));
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        return MapEnum<RealEnumTraits>(env, x, Kernel, Function);
    default:
        return BadOperands(env);
    }
}

// An elementary function whose indefinite single operand gives the interval `whole`
// (the function's whole range) instead of the any real.
template <UnaryRealKernel Kernel, UnaryRealIntervalFunction Function>
NoxValue ElementaryBounded(const NoxEnvironment &env, const NoxValue &x,
                           const NoxRealInterval &whole) {
    const NoxValueType kind = x.GetType();
    if ((kind == NoxIntegerType || kind == NoxRealType) && x.IsIndefinite(env))
        return NoxValue(whole);
    return Elementary<Kernel, Function>(env, x);
}

// Ceil, floor and round: integer kinds are already whole (an integer enumeration gives
// its hull as an integer interval), real kinds are rounded.
template <UnaryRealKernel Kernel, UnaryRealIntervalFunction Function>
NoxValue Rounding(const NoxEnvironment &env, const NoxValue &x) {
    switch (x.GetType()) {
    case NoxIntegerType:
        return NoxValue(x.GetAsInteger());
    case NoxIntegerIntervalType:
    case NoxIntegerEnumType:
        return NoxValue(x.GetAsIntegerInterval());
    case NoxRealType:
        return NoxValue(Kernel(env, x.GetAsReal()));
    case NoxRealIntervalType:
        return NoxValue(Function(env, x.GetAsRealInterval()));
    case NoxRealEnumType:
        return MapEnum<RealEnumTraits>(env, x, Kernel, Function);
    default:
        return BadOperands(env);
    }
}

// The range of an inverse trigonometric function: the caller's, or the whole line.
NoxRealInterval RangeInterval(const NoxValue *range) {
    return range != nullptr ? range->GetAsRealInterval() : NoxReal_Any;
}

// The members y of the range, in order, whose image g(y) lies within the environment's
// tolerance of a member of x; the interval inverse G on the hulls unless both are lists.
template <UnaryRealKernel Forward, RealIntervalFunction Inverse>
NoxValue InverseImage(const NoxEnvironment &env, const NoxValue &x, const NoxValue &range) {
    NoxValue result(NoxRealEnumType);
    NoxRealEnum &e = result.GetRealEnum();
    e.SetNil();
    NoxRealEnum enumX(NoxEnumAny);
    NoxRealEnum enumY(NoxEnumAny);
    RealEnumTraits::Fetch(env, x, enumX);
    RealEnumTraits::Fetch(env, range, enumY);
    if (enumX.GetRep() != NoxEnumList || enumY.GetRep() != NoxEnumList) {
        e.SetAsRealInterval(Inverse(env, enumX.GetAsRealInterval(), enumY.GetAsRealInterval()));
        e.Correct(env);
        return result;
    }
    const double tol = env.GetTolerance();
    const int size = enumY.GetSize();
    for (int i = 0; i < size; ++i) {
        const double y = enumY.Get(i);
        const double s = Forward(env, y);
        if (NoxIsSingleRealNil(s)) {
            env.ClearError();
        } else if (NoxIsSingleRealAny(s)) {
            e.Append(y);
        } else {
            const int index = enumX.Find(s, tol);
            if (index >= 0 && index < enumX.GetSize() && std::fabs(enumX.Get(index) - s) <= tol)
                e.Append(y);
        }
    }
    FinishMap(env, e);
    return result;
}

template <UnaryRealKernel Kernel, UnaryRealKernel Forward, RealIntervalFunction Inverse>
NoxValue InverseTrigonometric(const NoxEnvironment &env, const NoxValue &x,
                              const NoxValue *range) {
    switch (x.GetType()) {
    case NoxIntegerType:
    case NoxRealType:
        return NoxValue(Kernel(env, x.GetAsReal()));
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        if (range != nullptr)
            return InverseImage<Forward, Inverse>(env, x, *range);
        [[fallthrough]]; // without a range, as an interval
    case NoxIntegerIntervalType:
    case NoxRealIntervalType:
        return NoxValue(Inverse(env, x.GetAsRealInterval(), RangeInterval(range)));
    default:
        return BadOperands(env);
    }
}

// The steps the power and the root share: the exponent must be a single integer, an
// empty x is returned as it is, the nil exponent gives nil with NoxErrorEmptyResult, the
// any exponent NoxReal_Any (NoxReal_Pos for a power of an x above 0 when `signedAny`);
// otherwise `body(k)` computes the result. Every result is assigned into a value of x's
// kind.
template <class Body>
NoxValue PowerOrRoot(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n,
                     bool signedAny, Body body) {
    if (n.GetType() != NoxIntegerType)
        return BadOperands(env);
    if (x.IsEmpty(env))
        return x;
    const int k = n.GetAsInteger();
    NoxValue result(x.GetType());
    if (NoxIsSingleIntegerNil(k)) {
        env.SetError(NoxErrorEmptyResult);
        result.Assign(env, NoxValue(NoxReal_Nil));
    } else if (NoxIsSingleIntegerAny(k)) {
        const bool positive = signedAny && NoxSignum(x.GetAsRealInterval()) == 1;
        result.Assign(env, NoxValue(positive ? NoxReal_Pos : NoxReal_Any));
    } else {
        result.Assign(env, body(k));
    }
    return result;
}

bool IsEnumeration(const NoxValue &x) {
    return x.GetType() == NoxIntegerEnumType || x.GetType() == NoxRealEnumType;
}

// One branch of the roots of an enumeration, mapped member by member; clears the whole
// error code after it.
NoxValue RootBranch(const NoxEnvironment &env, const NoxValue &x, int k, bool positive) {
    NoxValue branch = MapEnum<RealEnumTraits>(
        env, x, [k, positive](const NoxEnvironment &e, double v) { return RootKernel(e, v, k, positive); },
        [k, positive](const NoxEnvironment &e, const NoxRealInterval &r) {
            return positive ? NoxRootPositive(e, r, k) : NoxRootNegative(e, r, k);
        });
    env.ClearError();
    return branch;
}

// The roots of an enumeration: both branches, each cut to the range (at NoxAbsPrecision,
// as the value intersection does), united.
NoxValue EnumerationRoots(const NoxEnvironment &env, const NoxValue &x, int k,
                          const NoxValue *range) {
    NoxValue positive = RootBranch(env, x, k, true);
    NoxValue negative = RootBranch(env, x, k, false);
    if (range != nullptr) {
        NoxValue within(NoxRealEnumType);
        RealEnumTraits::Fetch(env, *range, within.GetRealEnum());
        positive.Intersect(env, within);
        negative.Intersect(env, within);
        env.ClearError();
    }
    positive.Unite(env, negative);
    return positive;
}

} // namespace

// ---- Binary arithmetic ----

NoxValue NoxSum(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerSum, RealSum, NoxSum, NoxSum>(env, a, b, nullptr);
}

NoxValue NoxSub(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerSub, RealSub, NoxSub, NoxSub>(env, a, b, nullptr);
}

NoxValue NoxMul(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerMul, RealMul, NoxMul, NoxMul>(env, a, b, nullptr);
}

NoxValue NoxDiv(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerDiv, RealDiv, NoxDiv, NoxDiv>(env, a, b, nullptr);
}

NoxValue NoxMod(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerMod, RealMod, NoxMod, NoxMod>(env, a, b, nullptr);
}

NoxValue NoxMin(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerMin, RealMin, NoxMin, NoxMin>(env, a, b, NoxAnd);
}

NoxValue NoxMax(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b) {
    return Binary<IntegerMax, RealMax, NoxMax, NoxMax>(env, a, b, NoxOr);
}

// ---- Power and root ----

NoxValue NoxPow(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n) {
    return PowerOrRoot(env, x, n, true, [&env, &x](int k) {
        if (IsEnumeration(x))
            return MapEnum<RealEnumTraits>(
                env, x, [k](const NoxEnvironment &e, double v) { return PowerKernel(e, v, k); },
                [k](const NoxEnvironment &e, const NoxRealInterval &r) { return NoxPow(e, r, k); });
        return NoxValue(NoxPow(env, x.GetAsRealInterval(), k));
    });
}

NoxValue NoxRoot(const NoxEnvironment &env, const NoxValue &x, const NoxValue &n,
                 const NoxValue *range) {
    return PowerOrRoot(env, x, n, false, [&env, &x, range](int k) {
        if (IsEnumeration(x))
            return EnumerationRoots(env, x, k, range);
        return NoxValue(NoxRoot(env, x.GetAsRealInterval(), k, RangeInterval(range)));
    });
}

// ---- Elementary functions ----

NoxValue NoxSin(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kSinKernel, NoxSin>(env, x);
}

NoxValue NoxCos(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kCosKernel, NoxCos>(env, x);
}

NoxValue NoxTan(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kTanKernel, NoxTan>(env, x);
}

NoxValue NoxSinh(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kSinhKernel, NoxSinh>(env, x);
}

NoxValue NoxCosh(const NoxEnvironment &env, const NoxValue &x) {
    return ElementaryBounded<kCoshKernel, NoxCosh>(env, x,
                                                   NoxRealInterval{1.0, NoxMaxReal});
}

NoxValue NoxTanh(const NoxEnvironment &env, const NoxValue &x) {
    return ElementaryBounded<kTanhKernel, NoxTanh>(env, x, NoxRealInterval{-1.0, 1.0});
}

NoxValue NoxAsinh(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kAsinhKernel, NoxAsinh>(env, x);
}

NoxValue NoxAcosh(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kAcoshKernel, NoxAcosh>(env, x);
}

NoxValue NoxAtanh(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kAtanhKernel, NoxAtanh>(env, x);
}

NoxValue NoxSqrt(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kSqrtKernel, NoxSqrt>(env, x);
}

NoxValue NoxLog(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kLogKernel, NoxLog>(env, x);
}

NoxValue NoxLn(const NoxEnvironment &env, const NoxValue &x) {
    return Elementary<kLnKernel, NoxLn>(env, x);
}

NoxValue NoxExp(const NoxEnvironment &env, const NoxValue &x) {
    return ElementaryBounded<kExpKernel, NoxExp>(env, x, NoxReal_Pos);
}

// |x| keeps the kind of x: integers through the integer kernel and the integer interval
// absolute value.
NoxValue NoxAbs(const NoxEnvironment &env, const NoxValue &x) {
    switch (x.GetType()) {
    case NoxIntegerType:
        return NoxValue(IntegerAbs(env, x.GetAsInteger()));
    case NoxRealType:
        return NoxValue(kAbsKernel(env, x.GetAsReal()));
    case NoxIntegerIntervalType:
        return NoxValue(NoxAbs(env, x.GetAsIntegerInterval()));
    case NoxRealIntervalType:
        return NoxValue(NoxAbs(env, x.GetAsRealInterval()));
    case NoxIntegerEnumType:
        return MapEnum<IntegerEnumTraits>(
            env, x, IntegerAbs,
            static_cast<NoxIntegerInterval (*)(const NoxEnvironment &, const NoxIntegerInterval &)>(
                NoxAbs));
    case NoxRealEnumType:
        return MapEnum<RealEnumTraits>(env, x, kAbsKernel,
                                       static_cast<UnaryRealIntervalFunction>(NoxAbs));
    default:
        return BadOperands(env);
    }
}

NoxValue NoxCeil(const NoxEnvironment &env, const NoxValue &x) {
    return Rounding<kCeilKernel, NoxCeil>(env, x);
}

NoxValue NoxFloor(const NoxEnvironment &env, const NoxValue &x) {
    return Rounding<kFloorKernel, NoxFloor>(env, x);
}

NoxValue NoxRound(const NoxEnvironment &env, const NoxValue &x) {
    return Rounding<kRoundKernel, NoxRound>(env, x);
}

// ---- Inverse trigonometric functions ----

NoxValue NoxAsin(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range) {
    return InverseTrigonometric<kAsinKernel, kSinKernel, NoxAsin>(env, x, range);
}

NoxValue NoxAcos(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range) {
    return InverseTrigonometric<kAcosKernel, kCosKernel, NoxAcos>(env, x, range);
}

NoxValue NoxAtan(const NoxEnvironment &env, const NoxValue &x, const NoxValue *range) {
    return InverseTrigonometric<kAtanKernel, kTanKernel, NoxAtan>(env, x, range);
}
