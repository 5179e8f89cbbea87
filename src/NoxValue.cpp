#include "NoxValue.h"

#include "NoxAssert.h"
#include "NoxPrivate.h"

#include <cstring>
#include <new>

namespace {

// File text and report codes that the conversions pass to the assertion hook when they
// meet a kind they have no rule for.
const char kReportFile[] = "src/NoxValue";
const char kReportCondition[] = "0";
constexpr int kReportGetAsInteger = 461;
constexpr int kReportGetAsReal = 490;
constexpr int kReportGetAsIntegerInterval = 524;
constexpr int kReportGetAsRealInterval = 548;
constexpr int kReportGetAsBoolean = 572;
constexpr int kReportGetAsRealEnum = 624;
constexpr int kReportGetAsIntegerEnum = 691;

void Report(int code) { NoxAssertionFailed(kReportCondition, kReportFile, code); }

// A real turned into an integer: NoxAbsPrecision is added (subtracted when the real is
// negative) before the truncation toward zero, so that a real falling short of an
// integer by rounding still gives that integer. Outside the int range (or NaN) the
// truncation gives INT_MIN.
int RealToInteger(double x) {
    return NoxTruncToInt(x >= 0 ? x + NoxAbsPrecision : x - NoxAbsPrecision);
}

// Empties an enumeration without touching its state; an enumeration without elements is
// left alone, so no array is created.
template <class Enum> void EmptyKeepingRep(Enum &e) {
    if (e.GetSize() > 0) {
        const NoxEnumRep rep = e.GetRep();
        e.SetSize(0);
        e.SetRep(rep);
    }
}

// An undefined value takes the kind `kind`; true when the value then is of that kind, so
// that a setter of that kind may write.
bool TakeKind(NoxValueType &current, NoxValueType kind) {
    if (current == NoxUndefinedType)
        current = kind;
    return current == kind;
}

// Makes `e` the one-element list {v}. When the array cannot be had the enumeration is a
// list without elements.
template <class Enum, class T> void SetSingleElementList(Enum &e, T v) {
    e.SetSize(1);
    if (e.GetSize() == 1)
        e.Set(0, v);
}

// Makes `e` the list of the n values in the given order; a negative n or a null pointer
// gives the empty list, and a short array takes as many values as it holds.
template <class Enum, class T> void SetList(Enum &e, int n, const T *values) {
    if (n < 0 || values == nullptr)
        n = 0;
    e.SetSize(n);
    const int size = e.GetSize() < n ? e.GetSize() : n;
    for (int i = 0; i < size; ++i)
        e.Set(i, values[i]);
}

// Which single-value marker a single integer or real is, nil asked first.
enum class Marker { kNone, kNil, kAny };

Marker MarkerOf(int v) {
    if (NoxIsSingleIntegerNil(v))
        return Marker::kNil;
    return NoxIsSingleIntegerAny(v) ? Marker::kAny : Marker::kNone;
}

Marker MarkerOf(double x) {
    if (NoxIsSingleRealNil(x))
        return Marker::kNil;
    return NoxIsSingleRealAny(x) ? Marker::kAny : Marker::kNone;
}

// The interval form of a single value: `nil` or `any` for its markers, else make(v).
template <class Interval, class T, class Make>
Interval IntervalOfSingle(T v, const Interval &nil, const Interval &any, Make make) {
    switch (MarkerOf(v)) {
    case Marker::kNil:
        return nil;
    case Marker::kAny:
        return any;
    default:
        return make(v);
    }
}

// Makes `e` nil or any for a single value's markers, else the list {element(v)}.
template <class Enum, class T, class Element> void SetEnumOfSingle(Enum &e, T v, Element element) {
    switch (MarkerOf(v)) {
    case Marker::kNil:
        e.SetNil();
        break;
    case Marker::kAny:
        e.SetAny();
        break;
    default:
        SetSingleElementList(e, element(v));
        break;
    }
}

// The single-integer form of an integer interval: nil when empty, the integer when
// exact, any otherwise.
int IntegerOfInterval(const NoxIntegerInterval &r) {
    if (NoxIsEmpty(r))
        return NoxSingleInteger_Nil;
    if (r.lower == r.upper)
        return r.lower;
    return NoxSingleInteger_Any;
}

// The single-real form of an integer interval.
double RealOfIntegerInterval(const NoxIntegerInterval &r) {
    if (NoxIsEmpty(r))
        return NoxSingleReal_Nil;
    if (r.lower == r.upper)
        return static_cast<double>(r.lower);
    return NoxSingleReal_Any;
}

// The single-real form of a real interval: nil when inverted at all, the lower bound
// when narrower than NoxAbsPrecision, any otherwise.
double RealOfRealInterval(const NoxRealInterval &r) {
    const double width = r.upper - r.lower;
    if (width < 0)
        return NoxSingleReal_Nil;
    if (width <= NoxAbsPrecision)
        return r.lower;
    return NoxSingleReal_Any;
}

NoxRealInterval RealOfIntegers(const NoxIntegerInterval &r) {
    return NoxRealInterval{static_cast<double>(r.lower), static_cast<double>(r.upper)};
}

// The four-valued truth of an integer interval: nil when empty, false when it is {0},
// true when it excludes 0, either when 0 is one of several members.
NoxBoolean BooleanOfIntegerInterval(const NoxIntegerInterval &r) {
    if (r.upper < r.lower)
        return NoxBoolean_Nil;
    if (r.lower == 0 && r.upper == 0)
        return NoxFalse;
    if (r.lower > 0 || r.upper < 0)
        return NoxTrue;
    return NoxBoolean_Any;
}

// (lower + upper) / 2 with the sum taken as a wrapping 32-bit int, then halved as a double.
double IntegerMiddle(const NoxIntegerInterval &r) {
    const int sum = NoxWrapToInt(static_cast<std::int64_t>(r.lower) + r.upper);
    return static_cast<double>(sum) / 2.0;
}

double RealMiddle(const NoxRealInterval &r) { return (r.lower + r.upper) / 2.0; }

} // namespace

// ---- The numeric slot, through byte copies ----

NoxIntegerInterval NoxValue::IntegerSlot() const {
    NoxIntegerInterval r;
    std::memcpy(&r, slot, sizeof r);
    return r;
}

NoxRealInterval NoxValue::RealSlot() const {
    NoxRealInterval r;
    std::memcpy(&r, slot, sizeof r);
    return r;
}

int NoxValue::LowerInteger() const {
    int v;
    std::memcpy(&v, slot, sizeof v);
    return v;
}

double NoxValue::LowerReal() const {
    double v;
    std::memcpy(&v, slot, sizeof v);
    return v;
}

void NoxValue::SetIntegerSlot(const NoxIntegerInterval &r) { std::memcpy(slot, &r, sizeof r); }
void NoxValue::SetRealSlot(const NoxRealInterval &r) { std::memcpy(slot, &r, sizeof r); }
void NoxValue::SetLowerInteger(int v) { std::memcpy(slot, &v, sizeof v); }
void NoxValue::SetLowerReal(double v) { std::memcpy(slot, &v, sizeof v); }

// ---- Construction and copying ----

// Every constructor zeroes the whole slot: the integer pair 0, 0, the real pair 0.0, 0.0
// and the boolean NoxFalse all are zero bytes, and an undefined or unknown kind then
// reads as zero rather than as indeterminate memory.
NoxValue::NoxValue(NoxValueType kind)
    : type(kind), slot{}, integerEnum(NoxEnumAny), realEnum(NoxEnumAny) {}

NoxValue::NoxValue(int v) : NoxValue(NoxIntegerType) { SetIntegerSlot(NoxIntegerInterval{v, v}); }

NoxValue::NoxValue(double v) : NoxValue(NoxRealType) { SetRealSlot(NoxRealInterval{v, v}); }

NoxValue::NoxValue(const NoxIntegerInterval &r) : NoxValue(NoxIntegerIntervalType) {
    SetIntegerSlot(r);
}

NoxValue::NoxValue(const NoxRealInterval &r) : NoxValue(NoxRealIntervalType) { SetRealSlot(r); }

NoxValue::NoxValue(NoxBoolean b) : NoxValue(NoxBooleanType) { SetLowerInteger(b); }

NoxValue::NoxValue(const NoxIntegerEnum &e)
    : type(NoxIntegerEnumType), slot{}, integerEnum(e), realEnum(NoxEnumAny) {}

NoxValue::NoxValue(const NoxRealEnum &e)
    : type(NoxRealEnumType), slot{}, integerEnum(NoxEnumAny), realEnum(e) {}

NoxValue::NoxValue(const NoxValue &other) : NoxValue(NoxUndefinedType) { *this = other; }

NoxValue &NoxValue::operator=(const NoxValue &other) {
    if (this == &other)
        return *this;
    type = other.type;
    switch (type) {
    case NoxIntegerType:
    case NoxIntegerIntervalType:
        SetIntegerSlot(other.IntegerSlot());
        break;
    case NoxRealType:
    case NoxRealIntervalType:
        SetRealSlot(other.RealSlot());
        break;
    case NoxIntegerEnumType:
        integerEnum = other.integerEnum;
        break;
    case NoxRealEnumType:
        realEnum = other.realEnum;
        break;
    case NoxBooleanType:
        SetLowerInteger(other.LowerInteger());
        break;
    default:
        break;
    }
    return *this;
}

NoxValue *NoxValue::Clone() const { return new (std::nothrow) NoxValue(*this); }

// ---- Kinds ----

bool NoxValue::IsConvertible(NoxValueType t) const {
    if (type == t)
        return true;
    switch (t) {
    case NoxIntegerType:
        return type == NoxBooleanType;
    case NoxRealType:
        return type == NoxIntegerType;
    case NoxIntegerIntervalType:
        return true;
    case NoxRealIntervalType:
        return type != NoxBooleanType;
    case NoxBooleanType:
        return type == NoxIntegerType || type == NoxIntegerIntervalType ||
               type == NoxIntegerEnumType;
    default: // the enumerations, undefined and unknown codes
        return false;
    }
}

// ---- Setters ----

void NoxValue::Set(int v) {
    if (type == NoxUndefinedType)
        type = NoxIntegerType;
    switch (type) {
    case NoxIntegerType:
    case NoxIntegerIntervalType:
        SetIntegerSlot(NoxIntegerInterval{v, v});
        break;
    case NoxIntegerEnumType:
        SetSingleElementList(integerEnum, v);
        break;
    case NoxBooleanType:
        SetLowerInteger(v != 0 ? NoxTrue : NoxFalse);
        break;
    default:
        break;
    }
}

void NoxValue::Set(double v) {
    if (type == NoxUndefinedType)
        type = NoxRealType;
    switch (type) {
    case NoxRealType:
    case NoxRealIntervalType:
        SetRealSlot(NoxRealInterval{v, v});
        break;
    case NoxRealEnumType:
        SetSingleElementList(realEnum, v);
        break;
    default:
        break;
    }
}

void NoxValue::Set(const NoxIntegerInterval &r) {
    if (TakeKind(type, NoxIntegerIntervalType))
        SetIntegerSlot(r);
}

void NoxValue::Set(const NoxRealInterval &r) {
    if (TakeKind(type, NoxRealIntervalType))
        SetRealSlot(r);
}

void NoxValue::Set(const NoxIntegerEnum &e) {
    if (TakeKind(type, NoxIntegerEnumType))
        integerEnum = e;
}

void NoxValue::Set(const NoxRealEnum &e) {
    if (TakeKind(type, NoxRealEnumType))
        realEnum = e;
}

void NoxValue::Set(int n, const int *values) {
    if (TakeKind(type, NoxIntegerEnumType))
        SetList(integerEnum, n, values);
}

void NoxValue::Set(int n, const double *values) {
    if (TakeKind(type, NoxRealEnumType))
        SetList(realEnum, n, values);
}

void NoxValue::Set(NoxBoolean b) {
    if (TakeKind(type, NoxBooleanType))
        SetLowerInteger(b);
}

void NoxValue::SetIndefinite() {
    switch (type) {
    case NoxIntegerIntervalType:
        SetIntegerSlot(NoxInteger_Any);
        break;
    case NoxRealIntervalType:
        SetRealSlot(NoxReal_Any);
        break;
    case NoxIntegerEnumType:
        integerEnum.SetAny();
        break;
    case NoxRealEnumType:
        realEnum.SetAny();
        break;
    case NoxBooleanType:
        SetLowerInteger(NoxBoolean_Any);
        break;
    default: // a single value is never made indefinite
        break;
    }
}

// ---- Conversions ----

int NoxValue::GetAsInteger() const {
    switch (type) {
    case NoxIntegerType:
        return LowerInteger();
    case NoxBooleanType:
        return LowerInteger();
    case NoxRealType: {
        const double x = LowerReal();
        if (NoxIsSingleRealAny(x))
            return NoxSingleInteger_Any;
        if (NoxIsSingleRealNil(x))
            return NoxSingleInteger_Nil;
        return RealToInteger(x);
    }
    case NoxIntegerIntervalType:
        return IntegerOfInterval(IntegerSlot());
    case NoxIntegerEnumType:
        return IntegerOfInterval(integerEnum.GetAsIntegerInterval());
    case NoxRealIntervalType:
        return IntegerOfInterval(NoxCreateIntegerInterval(RealSlot()));
    case NoxRealEnumType:
        return IntegerOfInterval(NoxCreateIntegerInterval(realEnum.GetAsRealInterval()));
    default:
        Report(kReportGetAsInteger);
        return 0;
    }
}

double NoxValue::GetAsReal() const {
    switch (type) {
    case NoxIntegerType: {
        const int v = LowerInteger();
        if (NoxIsSingleIntegerAny(v))
            return NoxSingleReal_Any;
        if (NoxIsSingleIntegerNil(v))
            return NoxSingleReal_Nil;
        return static_cast<double>(v);
    }
    case NoxRealType:
        return LowerReal();
    case NoxIntegerIntervalType:
        return RealOfIntegerInterval(IntegerSlot());
    case NoxIntegerEnumType:
        return RealOfIntegerInterval(integerEnum.GetAsIntegerInterval());
    case NoxRealIntervalType:
        return RealOfRealInterval(RealSlot());
    case NoxRealEnumType:
        return RealOfRealInterval(realEnum.GetAsRealInterval());
    default:
        Report(kReportGetAsReal);
        return 0.0;
    }
}

NoxIntegerInterval NoxValue::GetAsIntegerInterval() const {
    switch (type) {
    case NoxUndefinedType:
        return NoxInteger_Any;
    case NoxIntegerType:
        return IntervalOfSingle(LowerInteger(), NoxInteger_Nil, NoxInteger_Any,
                                [](int v) { return NoxCreateIntegerInterval(v); });
    case NoxRealType:
        return IntervalOfSingle(LowerReal(), NoxInteger_Nil, NoxInteger_Any, [](double x) {
            return NoxCreateIntegerInterval(NoxCreateRealInterval(x));
        });
    case NoxIntegerIntervalType:
        return IntegerSlot();
    case NoxRealIntervalType:
        return NoxCreateIntegerInterval(RealSlot());
    case NoxIntegerEnumType:
        return integerEnum.GetAsIntegerInterval();
    case NoxRealEnumType:
        return NoxCreateIntegerInterval(realEnum.GetAsRealInterval());
    case NoxBooleanType: {
        const int b = LowerInteger();
        if (b == NoxBoolean_Any)
            return NoxCreateIntegerInterval(0, 1);
        if (b == NoxBoolean_Nil)
            return NoxInteger_Nil;
        return NoxCreateIntegerInterval(b);
    }
    default:
        Report(kReportGetAsIntegerInterval);
        return IntegerSlot();
    }
}

NoxRealInterval NoxValue::GetAsRealInterval() const {
    switch (type) {
    case NoxUndefinedType:
        return NoxReal_Any;
    case NoxIntegerType:
        return IntervalOfSingle(LowerInteger(), NoxReal_Nil, NoxReal_Any, [](int v) {
            return NoxCreateRealInterval(static_cast<double>(v));
        });
    case NoxRealType:
        return IntervalOfSingle(LowerReal(), NoxReal_Nil, NoxReal_Any,
                                [](double x) { return NoxCreateRealInterval(x); });
    case NoxIntegerIntervalType:
        return RealOfIntegers(IntegerSlot());
    case NoxRealIntervalType:
        return RealSlot();
    case NoxIntegerEnumType:
        return RealOfIntegers(integerEnum.GetAsIntegerInterval());
    case NoxRealEnumType:
        return realEnum.GetAsRealInterval();
    default: // booleans and unknown kinds
        Report(kReportGetAsRealInterval);
        return RealSlot();
    }
}

NoxBoolean NoxValue::GetAsBoolean() const {
    switch (type) {
    case NoxUndefinedType:
        return NoxBoolean_Any;
    case NoxIntegerType:
        // The integer markers are not 0, hence true.
        return LowerInteger() != 0 ? NoxTrue : NoxFalse;
    case NoxIntegerIntervalType:
        return BooleanOfIntegerInterval(IntegerSlot());
    case NoxIntegerEnumType:
        return BooleanOfIntegerInterval(integerEnum.GetAsIntegerInterval());
    case NoxBooleanType:
        return static_cast<NoxBoolean>(LowerInteger());
    default: // the real kinds and unknown kinds
        Report(kReportGetAsBoolean);
        return static_cast<NoxBoolean>(LowerInteger());
    }
}

void NoxValue::GetAsIntegerEnum(NoxIntegerEnum &out) const {
    // Asked to write an integer enumeration value's own member: the member already is
    // the copy, and emptying it first would lose it.
    if (type == NoxIntegerEnumType && &out == &integerEnum)
        return;
    EmptyKeepingRep(out);
    switch (type) {
    case NoxUndefinedType:
        break;
    case NoxIntegerType:
        SetEnumOfSingle(out, LowerInteger(), [](int v) { return v; });
        break;
    case NoxRealType:
        SetEnumOfSingle(out, LowerReal(), RealToInteger);
        break;
    case NoxIntegerIntervalType: {
        const NoxIntegerInterval r = IntegerSlot();
        if (NoxIsInfinite(r))
            out.SetAny();
        else if (NoxIsEmpty(r))
            out.SetNil();
        else
            out.SetAsIntegerInterval(r);
        break;
    }
    case NoxRealIntervalType:
        out.SetAsIntegerInterval(NoxCreateIntegerInterval(RealSlot()));
        break;
    case NoxRealEnumType:
        if (realEnum.GetRep() != NoxEnumList) {
            out.SetAsIntegerInterval(NoxCreateIntegerInterval(realEnum.GetAsRealInterval()));
        } else {
            // Neighbouring reals that give the same integer give it once.
            out.SetRep(NoxEnumList);
            const int size = realEnum.GetSize();
            int last = 0;
            for (int i = 0; i < size; ++i) {
                const int k = RealToInteger(realEnum.Get(i));
                if (i == 0 || k != last)
                    out.Append(k);
                last = k;
            }
        }
        break;
    case NoxIntegerEnumType:
        out = integerEnum;
        break;
    default: // booleans and unknown kinds
        Report(kReportGetAsIntegerEnum);
        break;
    }
}

void NoxValue::GetAsRealEnum(NoxRealEnum &out) const {
    // Asked to write a real enumeration value's own member: the member already is the
    // copy, and emptying it first would lose it.
    if (type == NoxRealEnumType && &out == &realEnum)
        return;
    EmptyKeepingRep(out);
    switch (type) {
    case NoxUndefinedType:
        break;
    case NoxIntegerType:
        SetEnumOfSingle(out, LowerInteger(), [](int v) { return static_cast<double>(v); });
        break;
    case NoxRealType:
        SetEnumOfSingle(out, LowerReal(), [](double x) { return x; });
        break;
    case NoxIntegerIntervalType:
    case NoxIntegerEnumType: {
        NoxIntegerEnum integers(NoxEnumAny);
        GetAsIntegerEnum(integers);
        out = integers;
        break;
    }
    case NoxRealIntervalType: {
        const NoxRealInterval r = RealSlot();
        if (NoxIsInfinite(r))
            out.SetAny();
        else if (NoxIsEmpty(r, NoxAbsPrecision))
            out.SetNil();
        else
            out.SetAsRealInterval(r);
        break;
    }
    case NoxRealEnumType:
        out = realEnum;
        break;
    default: // booleans and unknown kinds
        Report(kReportGetAsRealEnum);
        break;
    }
}

// ---- Measures ----

double NoxValue::GetRealValue() const {
    switch (type) {
    case NoxIntegerType:
        return static_cast<double>(LowerInteger());
    case NoxIntegerIntervalType:
        return IntegerMiddle(IntegerSlot());
    case NoxRealIntervalType:
        return RealMiddle(RealSlot());
    case NoxIntegerEnumType:
        return IntegerMiddle(integerEnum.GetAsIntegerInterval());
    case NoxRealEnumType:
        return RealMiddle(realEnum.GetAsRealInterval());
    default: // the real itself for a single real; the slot's lower real otherwise
        return LowerReal();
    }
}

double NoxValue::GetMiddle() const {
    switch (type) {
    case NoxIntegerType:
    case NoxRealType:
        return GetAsReal();
    case NoxIntegerIntervalType:
    case NoxRealIntervalType:
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        return NoxMiddle(GetAsRealInterval());
    default:
        return 0.0;
    }
}

double NoxValue::GetWidth() const {
    switch (type) {
    case NoxIntegerIntervalType:
    case NoxRealIntervalType:
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        return NoxWidth(GetAsRealInterval());
    default: // single values have no width
        return 0.0;
    }
}

double NoxValue::GetMAG() const {
    switch (type) {
    case NoxIntegerType:
    case NoxRealType:
    case NoxIntegerIntervalType:
    case NoxRealIntervalType:
    case NoxIntegerEnumType:
    case NoxRealEnumType:
        return NoxMAG(GetAsRealInterval());
    default:
        return 0.0;
    }
}

// ---- With an environment ----

void NoxValue::Assign(const NoxEnvironment &env, const NoxValue &src) {
    switch (type) {
    case NoxIntegerType:
        SetLowerInteger(src.GetAsInteger());
        break;
    case NoxRealType:
        SetLowerReal(src.GetAsReal());
        break;
    case NoxIntegerIntervalType:
        SetIntegerSlot(src.GetAsIntegerInterval());
        break;
    case NoxRealIntervalType:
        SetRealSlot(src.GetAsRealInterval());
        break;
    case NoxIntegerEnumType:
        src.GetAsIntegerEnum(integerEnum);
        integerEnum.Correct(env);
        break;
    case NoxRealEnumType:
        if (src.type == NoxIntegerType || src.type == NoxIntegerIntervalType ||
            src.type == NoxIntegerEnumType) {
            // Integers are corrected as integers, so that a short integer range becomes
            // the list of its members before it turns real.
            NoxIntegerEnum integers(NoxEnumAny);
            src.GetAsIntegerEnum(integers);
            integers.Correct(env);
            realEnum = integers;
        } else {
            src.GetAsRealEnum(realEnum);
            realEnum.Correct(env);
        }
        break;
    case NoxBooleanType:
        SetLowerInteger(src.GetAsBoolean());
        break;
    default: // an undefined value stays undefined
        break;
    }
}

bool NoxValue::IsEmpty(const NoxEnvironment &) const {
    switch (type) {
    case NoxIntegerType:
        return NoxIsSingleIntegerNil(LowerInteger());
    case NoxRealType:
        return NoxIsSingleRealNil(LowerReal());
    case NoxIntegerIntervalType:
    case NoxIntegerEnumType:
        return NoxIsEmpty(GetAsIntegerInterval()) != 0;
    case NoxRealIntervalType:
    case NoxRealEnumType:
        return NoxIsEmpty(GetAsRealInterval(), NoxAbsPrecision) != 0;
    case NoxBooleanType:
        return LowerInteger() == NoxBoolean_Nil;
    default:
        return true;
    }
}

bool NoxValue::IsExact(const NoxEnvironment &) const {
    switch (type) {
    case NoxIntegerType: {
        const int v = LowerInteger();
        return !NoxIsSingleIntegerAny(v) && !NoxIsSingleIntegerNil(v);
    }
    case NoxRealType: {
        const double x = LowerReal();
        return !NoxIsSingleRealAny(x) && !NoxIsSingleRealNil(x);
    }
    case NoxIntegerIntervalType:
    case NoxIntegerEnumType:
        return NoxIsExact(GetAsIntegerInterval()) != 0;
    case NoxRealIntervalType:
    case NoxRealEnumType:
        return NoxIsExact(GetAsRealInterval(), NoxAbsPrecision) != 0;
    case NoxBooleanType:
        return LowerInteger() < 2;
    default:
        return true;
    }
}

bool NoxValue::IsConsistent(const NoxEnvironment &env) const { return !IsEmpty(env); }
