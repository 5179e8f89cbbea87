// Set operations and comparisons on values: equality, containment, indefiniteness,
// intersection, exclusion of a single value and union. Two operands meet in the kind the
// shared result-kind table gives for their pair; enumerations are combined by their
// representation (list, range, any, nil) through one template for integers and reals.
#include "NoxValueFunctions.h"

#include "NoxPrivate.h"

#include <cmath>
#include <cstdint>

namespace {

// ---- Boolean tables, indexed [a][b] in the order false, true, any, nil ----

const NoxBoolean kIntersectionTable[4][4] = {
    {NoxFalse, NoxBoolean_Nil, NoxFalse, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxTrue, NoxTrue, NoxBoolean_Nil},
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

const NoxBoolean kUnionTable[4][4] = {
    {NoxFalse, NoxBoolean_Any, NoxBoolean_Any, NoxFalse},
    {NoxBoolean_Any, NoxTrue, NoxBoolean_Any, NoxTrue},
    {NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Any, NoxBoolean_Any},
    {NoxFalse, NoxTrue, NoxBoolean_Any, NoxBoolean_Nil}};

// a minus b.
const NoxBoolean kExclusionTable[4][4] = {
    {NoxBoolean_Nil, NoxFalse, NoxFalse, NoxFalse},
    {NoxTrue, NoxBoolean_Nil, NoxTrue, NoxTrue},
    {NoxTrue, NoxFalse, NoxBoolean_Any, NoxBoolean_Any},
    {NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil, NoxBoolean_Nil}};

// A boolean code outside the four of the tables admits no truth value: nil.
NoxBoolean LookUp(const NoxBoolean (&table)[4][4], NoxBoolean a, NoxBoolean b) {
    if (a < 0 || a > 3 || b < 0 || b > 3)
        return NoxBoolean_Nil;
    return table[a][b];
}

// ---- What differs between integer and real enumerations ----

template <class Enum> struct EnumRules;

template <> struct EnumRules<NoxIntegerEnum> {
    using Interval = NoxIntegerInterval;
    static Interval Hull(const NoxIntegerEnum &e) { return e.GetAsIntegerInterval(); }
    static void SetRange(NoxIntegerEnum &e, const Interval &r) { e.SetAsIntegerInterval(r); }
    static bool Match(int x, int y, double) { return x == y; }
    static bool SameHull(const Interval &a, const Interval &b, double) {
        return NoxIsEqual(a, b) != 0;
    }
    // Integers are filtered to the hull itself.
    static Interval Widen(const Interval &r, double) { return r; }
    static Interval Meet(const Interval &a, const Interval &b, double) {
        return NoxIntersect(a, b);
    }
    static Interval Join(const Interval &a, const Interval &b, double) { return NoxUnite(a, b); }
    static void Insert(NoxIntegerEnum &e, int v, double) { e.Insert(v); }
};

template <> struct EnumRules<NoxRealEnum> {
    using Interval = NoxRealInterval;
    static Interval Hull(const NoxRealEnum &e) { return e.GetAsRealInterval(); }
    static void SetRange(NoxRealEnum &e, const Interval &r) { e.SetAsRealInterval(r); }
    static bool Match(double x, double y, double tol) { return std::fabs(x - y) < tol; }
    static bool SameHull(const Interval &a, const Interval &b, double tol) {
        return NoxIsEqual(a, b, tol) != 0;
    }
    // Reals within tol of the hull still belong to it.
    static Interval Widen(const Interval &r, double tol) {
        return Interval{r.lower - tol, r.upper + tol};
    }
    static Interval Meet(const Interval &a, const Interval &b, double tol) {
        return NoxIntersect(a, b, tol);
    }
    static Interval Join(const Interval &a, const Interval &b, double tol) {
        return NoxUnite(a, b, tol);
    }
    static void Insert(NoxRealEnum &e, double v, double tol) { e.Insert(v, tol); }
};

bool BothAre(NoxEnumRep rep, NoxEnumRep p, NoxEnumRep q) { return p == rep && q == rep; }

// ---- Enumerations by representation ----

// Lists match entry by entry; two nil or two any records are equal; otherwise only two
// ranges with the same hull are, so a list never equals a range.
template <class Enum> bool EnumsEqual(const Enum &p, const Enum &q, double tol) {
    using Rules = EnumRules<Enum>;
    const NoxEnumRep pr = p.GetRep();
    const NoxEnumRep qr = q.GetRep();
    if (BothAre(NoxEnumList, pr, qr)) {
        if (p.GetSize() != q.GetSize())
            return false;
        for (int i = 0; i < p.GetSize(); ++i)
            if (!Rules::Match(p.Get(i), q.Get(i), tol))
                return false;
        return true;
    }
    if (BothAre(NoxEnumNil, pr, qr) || BothAre(NoxEnumAny, pr, qr))
        return true;
    return BothAre(NoxEnumRange, pr, qr) && Rules::SameHull(Rules::Hull(p), Rules::Hull(q), tol);
}

// The entries that the two sorted lists share, found by a two-finger merge; a match
// keeps p's entry.
template <class Enum> Enum MergedLists(const Enum &p, const Enum &q, double tol) {
    Enum merged(NoxEnumNil);
    merged.SetSize(0);
    const int n = p.GetSize();
    const int m = q.GetSize();
    int i = 0;
    int j = 0;
    while (i < n && j < m) {
        const auto x = p.Get(i);
        const auto y = q.Get(j);
        if (EnumRules<Enum>::Match(x, y, tol)) {
            merged.Append(x);
            ++i;
            ++j;
        } else if (x < y) {
            ++i;
        } else {
            ++j;
        }
    }
    return merged;
}

// Keeps in the list only the entries inside [hull.lower, hull.upper].
template <class Enum, class Interval> void KeepWithin(Enum &p, const Interval &hull) {
    const int lt = p.FindLT(hull.lower);
    const int gt = p.FindGT(hull.upper);
    if (gt <= lt) {
        p.SetSize(0);
        return;
    }
    p.RemovePosition(gt, p.GetSize() - gt);
    p.RemovePosition(0, lt + 1);
}

// p := p intersected with q, by the representations of both; every result but the
// nil and any shortcuts is corrected.
template <class Enum>
void IntersectEnums(const NoxEnvironment &env, Enum &p, const Enum &q, double tol) {
    using Rules = EnumRules<Enum>;
    if (p.IsNil() || q.IsNil()) {
        p.SetNil();
        return;
    }
    if (q.IsAny())
        return;
    if (p.IsAny()) {
        p = q;
        return;
    }
    const NoxEnumRep pr = p.GetRep();
    const NoxEnumRep qr = q.GetRep();
    if (BothAre(NoxEnumList, pr, qr)) {
        p = MergedLists(p, q, tol);
    } else if (pr == NoxEnumList && qr == NoxEnumRange) {
        KeepWithin(p, Rules::Widen(Rules::Hull(q), tol));
    } else if (pr == NoxEnumRange && qr == NoxEnumList) {
        const auto hull = Rules::Widen(Rules::Hull(p), tol);
        p = q;
        KeepWithin(p, hull);
    } else if (BothAre(NoxEnumRange, pr, qr)) {
        Rules::SetRange(p, Rules::Meet(Rules::Hull(p), Rules::Hull(q), tol));
    } else {
        return; // a state code outside the four has no rule
    }
    p.Correct(env);
}

// p := p united with q: any absorbs, nil gives way, two lists merge by insertion, and
// a range involved gives the hull of both as a range; then corrected.
template <class Enum>
void UniteEnums(const NoxEnvironment &env, Enum &p, const Enum &q, double tol) {
    using Rules = EnumRules<Enum>;
    if (p.IsAny() || q.IsAny()) {
        p.SetAny();
    } else if (q.IsNil()) {
        // p unchanged
    } else if (p.IsNil()) {
        p = q;
    } else if (BothAre(NoxEnumList, p.GetRep(), q.GetRep())) {
        for (int j = 0; j < q.GetSize(); ++j)
            Rules::Insert(p, q.Get(j), tol);
    } else {
        Rules::SetRange(p, Rules::Join(Rules::Hull(p), Rules::Hull(q), tol));
    }
    p.Correct(env);
}

// ---- Operands seen as enumerations ----

// The integer enumeration an operand takes part as: an integer enumeration value as it
// is held, any other kind converted and corrected (into `scratch`).
const NoxIntegerEnum &IntegerEnumOf(const NoxEnvironment &env, const NoxValue &v,
                                    NoxIntegerEnum &scratch) {
    if (v.IsAKindOf(NoxIntegerEnumType))
        return v.GetIntegerEnum();
    v.GetAsIntegerEnum(scratch);
    scratch.Correct(env);
    return scratch;
}

// The real enumeration an operand is compared as: a real enumeration value as it is
// held, any other kind converted and corrected (into `scratch`).
const NoxRealEnum &RealEnumOf(const NoxEnvironment &env, const NoxValue &v,
                              NoxRealEnum &scratch) {
    if (v.IsAKindOf(NoxRealEnumType))
        return v.GetRealEnum();
    v.GetAsRealEnum(scratch);
    scratch.Correct(env);
    return scratch;
}

bool IsIntegerKind(const NoxValue &v) {
    return v.IsAKindOf(NoxIntegerType) || v.IsAKindOf(NoxIntegerIntervalType) ||
           v.IsAKindOf(NoxIntegerEnumType);
}

// The real enumeration a second operand is combined with: an operand of an integer kind
// goes through its integer enumeration, so that its integers stay separate entries.
const NoxRealEnum &RealOperandOf(const NoxEnvironment &env, const NoxValue &v,
                                 NoxRealEnum &scratch) {
    if (!IsIntegerKind(v))
        return RealEnumOf(env, v, scratch);
    NoxIntegerEnum integers(NoxEnumAny);
    scratch = IntegerEnumOf(env, v, integers);
    return scratch;
}

// ---- Combinations in the result kind, shared by intersection and union ----

// r (of an enumeration kind) := a in r's kind, then combined with b's enumeration.
template <class Combine>
void CombineEnumerations(const NoxEnvironment &env, NoxValue &r, const NoxValue &a,
                         const NoxValue &b, double tol, Combine combine) {
    r.Assign(env, a);
    if (r.IsAKindOf(NoxIntegerEnumType)) {
        NoxIntegerEnum scratch(NoxEnumAny);
        combine(env, r.GetIntegerEnum(), IntegerEnumOf(env, b, scratch), tol);
    } else {
        NoxRealEnum scratch(NoxEnumAny);
        combine(env, r.GetRealEnum(), RealOperandOf(env, b, scratch), tol);
    }
}

struct EnumIntersection {
    template <class Enum>
    void operator()(const NoxEnvironment &env, Enum &p, const Enum &q, double tol) const {
        IntersectEnums(env, p, q, tol);
    }
};

struct EnumUnion {
    template <class Enum>
    void operator()(const NoxEnvironment &env, Enum &p, const Enum &q, double tol) const {
        UniteEnums(env, p, q, tol);
    }
};

bool RealsClose(const NoxValue &a, const NoxValue &b, double tol) {
    return std::fabs(a.GetAsReal() - b.GetAsReal()) < tol;
}

// What the intersection or the union does in each kind: the marker that two different
// single values give, the interval operations and the boolean table.
struct SetOperation {
    const int *integerMarker; // read when used: the host may change the markers
    const double *realMarker;
    NoxIntegerInterval (*integers)(const NoxIntegerInterval &, const NoxIntegerInterval &);
    NoxRealInterval (*reals)(const NoxRealInterval &, const NoxRealInterval &, double);
    const NoxBoolean (&table)[4][4];
};

// The intersection or union r of a and b in r's kind, `EnumOp` combining enumerations.
// Returns false when a single kind finds the operands equal, so that a stays as it is.
template <class EnumOp>
bool CombineInKind(const NoxEnvironment &env, NoxValue &r, const NoxValue &a, const NoxValue &b,
                   double tol, const SetOperation &op) {
    switch (r.GetType()) {
    case NoxIntegerType:
        if (a.GetAsInteger() == b.GetAsInteger())
            return false;
        r.Set(*op.integerMarker);
        return true;
    case NoxRealType:
        if (RealsClose(a, b, tol))
            return false;
        r.Set(*op.realMarker);
        return true;
    case NoxIntegerIntervalType:
        r.Set(op.integers(a.GetAsIntegerInterval(), b.GetAsIntegerInterval()));
        return true;
    case NoxRealIntervalType:
        r.Set(op.reals(a.GetAsRealInterval(), b.GetAsRealInterval(), tol));
        return true;
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        CombineEnumerations(env, r, a, b, tol, EnumOp());
        return true;
    case NoxBooleanType:
        r.Set(LookUp(op.table, a.GetAsBoolean(), b.GetAsBoolean()));
        return true;
    default:
        env.SetError(NoxErrorBadOperandType);
        return true;
    }
}

// The intersection r of a and b in r's kind; two different single values give the nil
// marker of their kind.
bool IntersectInKind(const NoxEnvironment &env, NoxValue &r, const NoxValue &a,
                     const NoxValue &b, double tol) {
    const SetOperation op{&NoxSingleInteger_Nil, &NoxSingleReal_Nil, NoxIntersect, NoxIntersect,
                          kIntersectionTable};
    return CombineInKind<EnumIntersection>(env, r, a, b, tol, op);
}

// The union r of a and b in r's kind; two different single values give the any marker
// of their kind.
bool UniteInKind(const NoxEnvironment &env, NoxValue &r, const NoxValue &a, const NoxValue &b,
                 double tol) {
    const SetOperation op{&NoxSingleInteger_Any, &NoxSingleReal_Any, NoxUnite, NoxUnite,
                          kUnionTable};
    return CombineInKind<EnumUnion>(env, r, a, b, tol, op);
}

// ---- Exclusion of a single value, by a's own kind ----

// The end of an integer interval equal to k moves one step inwards (in 64 bits, so that
// no end can overflow).
NoxIntegerInterval WithoutEnd(NoxIntegerInterval r, int k) {
    if (r.lower == k)
        r.lower = NoxWrapToInt(std::int64_t{r.lower} + 1);
    if (r.upper == k)
        r.upper = NoxWrapToInt(std::int64_t{r.upper} - 1);
    return r;
}

// An end of a real interval within NoxAbsPrecision of x moves just past the tolerance
// band around x.
NoxRealInterval WithoutEnd(NoxRealInterval r, double x, double tol) {
    if (std::fabs(r.lower - x) < NoxAbsPrecision)
        r.lower = x + 1.01 * NoxScaledTolerance(x, tol);
    if (std::fabs(r.upper - x) < NoxAbsPrecision)
        r.upper = x - 1.01 * NoxScaledTolerance(x, tol);
    return r;
}

void ExcludeByKind(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol) {
    switch (a.GetType()) {
    case NoxIntegerType:
        if (b.IsConvertible(NoxIntegerType) && b.GetAsInteger() == a.GetAsInteger())
            a.Set(NoxSingleInteger_Nil);
        break;
    case NoxRealType:
        if (b.IsConvertible(NoxRealType) && RealsClose(a, b, tol))
            a.Set(NoxSingleReal_Nil);
        break;
    case NoxIntegerIntervalType:
        if (b.IsConvertible(NoxIntegerType))
            a.Set(WithoutEnd(a.GetAsIntegerInterval(), b.GetAsInteger()));
        break;
    case NoxRealIntervalType:
        a.Set(WithoutEnd(a.GetAsRealInterval(), b.GetAsReal(), tol));
        break;
    case NoxIntegerEnumType:
        if (b.IsConvertible(NoxIntegerType)) {
            const int k = b.GetAsInteger();
            a.GetIntegerEnum().Remove(k);
            a.GetIntegerEnum().Correct(env);
        }
        break;
    case NoxRealEnumType:
        if (b.IsConvertible(NoxRealType)) {
            const double x = b.GetAsReal();
            a.GetRealEnum().Remove(x, tol);
            a.GetRealEnum().Correct(env);
        }
        break;
    case NoxBooleanType:
        if (b.IsConvertible(NoxBooleanType))
            a.Set(LookUp(kExclusionTable, a.GetAsBoolean(), b.GetAsBoolean()));
        break;
    default:
        break;
    }
}

} // namespace

// ---- Comparisons ----

unsigned char NoxIsEqual(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b,
                         double tol) {
    switch (NoxResultKind(a.GetType(), b.GetType())) {
    case NoxIntegerType:
        return a.GetAsInteger() == b.GetAsInteger();
    case NoxRealType:
        return RealsClose(a, b, tol);
    case NoxIntegerIntervalType:
        return NoxIsEqual(a.GetAsIntegerInterval(), b.GetAsIntegerInterval());
    case NoxRealIntervalType:
        return NoxIsEqual(a.GetAsRealInterval(), b.GetAsRealInterval(), tol);
    case NoxIntegerEnumType: {
        NoxIntegerEnum p(NoxEnumAny);
        NoxIntegerEnum q(NoxEnumAny);
        return EnumsEqual(IntegerEnumOf(env, a, p), IntegerEnumOf(env, b, q), tol);
    }
    case NoxRealEnumType: {
        NoxRealEnum p(NoxEnumAny);
        NoxRealEnum q(NoxEnumAny);
        return EnumsEqual(RealEnumOf(env, a, p), RealEnumOf(env, b, q), tol);
    }
    case NoxBooleanType:
        return a.GetAsBoolean() == b.GetAsBoolean();
    default:
        env.SetError(NoxErrorBadOperandType);
        return 0;
    }
}

unsigned char NoxContains(const NoxEnvironment &env, const NoxValue &a, const NoxValue &b,
                          double tol) {
    switch (NoxResultKind(a.GetType(), b.GetType())) {
    case NoxIntegerType:
        return a.GetAsInteger() == b.GetAsInteger();
    case NoxRealType:
        return RealsClose(a, b, tol);
    case NoxIntegerIntervalType:
    case NoxIntegerEnumType:
        return NoxContains(a.GetAsIntegerInterval(), b.GetAsIntegerInterval());
    case NoxRealIntervalType:
    case NoxRealEnumType:
        return NoxContains(a.GetAsRealInterval(), b.GetAsRealInterval(), tol);
    default: // no common kind, or booleans, which have no containment
        env.SetError(NoxErrorBadOperandType);
        return 0;
    }
}

unsigned char NoxIsIndefinite(const NoxEnvironment &, const NoxValue &a) {
    switch (a.GetType()) {
    case NoxIntegerType:
        return a.GetAsInteger() == NoxSingleInteger_Any;
    case NoxRealType:
        return NoxIsSingleRealAny(a.GetAsReal());
    case NoxIntegerIntervalType:
        return NoxContains(a.GetAsIntegerInterval(), NoxInteger_Any);
    case NoxRealIntervalType:
        return NoxContains(a.GetAsRealInterval(), NoxReal_Any, NoxAbsPrecision);
    case NoxIntegerEnumType:
        return a.GetIntegerEnum().GetRep() == NoxEnumAny;
    case NoxRealEnumType:
        return a.GetRealEnum().GetRep() == NoxEnumAny;
    case NoxBooleanType:
        return a.GetAsBoolean() == NoxBoolean_Any;
    default:
        return 0;
    }
}

// ---- Narrowing and widening ----

unsigned char NoxIntersect(const NoxEnvironment &env, NoxValue &a, const NoxValue &b,
                           double tol) {
    if (a.IsEmpty(env)) {
        env.SetError(NoxErrorEmptyResult);
        return 0;
    }
    if (b.IsEmpty(env) || NoxIsIndefinite(env, a)) {
        a.Assign(env, b);
        if (a.IsEmpty(env)) {
            env.SetError(NoxErrorEmptyResult);
            return 1;
        }
        return NoxIsIndefinite(env, a) ? 0 : 1;
    }
    if (NoxIsIndefinite(env, b))
        return 0;
    NoxValue r(NoxResultKind(a.GetType(), b.GetType()));
    if (!IntersectInKind(env, r, a, b, tol))
        return 0;
    if (r.IsEmpty(env))
        env.SetError(NoxErrorEmptyResult);
    const unsigned char changed = !NoxIsEqual(env, a, r, tol);
    a = r;
    return changed;
}

void NoxUnite(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol) {
    if (b.IsEmpty(env) || NoxIsIndefinite(env, a))
        return;
    if (a.IsEmpty(env) || NoxIsIndefinite(env, b)) {
        a = b;
        return;
    }
    NoxValue r(NoxResultKind(a.GetType(), b.GetType()));
    if (!UniteInKind(env, r, a, b, tol))
        return;
    if (r.IsEmpty(env))
        env.SetError(NoxErrorEmptyResult);
    a = r;
}

void NoxExclude(const NoxEnvironment &env, NoxValue &a, const NoxValue &b, double tol) {
    if (!b.IsExact(env))
        return;
    ExcludeByKind(env, a, b, tol);
    if (a.IsEmpty(env))
        env.SetError(NoxErrorEmptyResult);
}

// ---- The value's forwarders, always with NoxAbsPrecision ----

bool NoxValue::IsIndefinite(const NoxEnvironment &env) const {
    return NoxIsIndefinite(env, *this) != 0;
}

bool NoxValue::IsEqualTo(const NoxEnvironment &env, const NoxValue &other) const {
    return NoxIsEqual(env, *this, other, NoxAbsPrecision) != 0;
}

bool NoxValue::Intersect(const NoxEnvironment &env, const NoxValue &other) {
    return NoxIntersect(env, *this, other, NoxAbsPrecision) != 0;
}

void NoxValue::Exclude(const NoxEnvironment &env, const NoxValue &other) {
    NoxExclude(env, *this, other, NoxAbsPrecision);
}

void NoxValue::Unite(const NoxEnvironment &env, const NoxValue &other) {
    NoxUnite(env, *this, other, NoxAbsPrecision);
}
