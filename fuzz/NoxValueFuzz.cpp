// Fuzz target: random sequences of calls on intervals, enumerations and values of every
// kind, the unknown kinds and codes included, under one environment whose settings the
// input also changes. Any crash, sanitizer report, leak or escaping exception is a
// finding; a few properties that hold for every operand are checked on the way.
//
// The harness keeps operands within the sizes a host can expect to compute with: lists
// of at most kLongestList entries, binary combinations of at most kLargestProduct pairs
// of members and a maximum enumeration size of at most kLargestEnumSize (a range
// narrower than that size becomes the list of its integers).
#include <NoxEnum.h>
#include <NoxEnvironment.h>
#include <NoxInterval.h>
#include <NoxIntervalFunctions.h>
#include <NoxValue.h>
#include <NoxValueFunctions.h>

#include "NoxFuzzInput.h"

#include <cstdint>
#include <vector>

namespace {

constexpr int kLongestList = 400;
constexpr long kLargestProduct = 4096;
constexpr int kLargestEnumSize = 400;
constexpr int kValues = 4;
constexpr int kEnums = 2;

long MemberCount(const NoxValue &v) {
    switch (v.GetType()) {
    case NoxIntegerEnumType:
        return v.GetIntegerEnum().GetSize();
    case NoxRealEnumType:
        return v.GetRealEnum().GetSize();
    default:
        return 1;
    }
}

// Enumerations of either kind keep a sane array whatever was done to them.
void CheckEnum(const NoxIntegerEnum &e) {
    const int size = e.GetSize();
    Require(size >= 0);
    Require(e.Get(-1) == 0 && e.Get(size) == 0);
    const int found = e.Find(0);
    Require(found >= -1 && found < (size > 0 ? size : 1));
}

void CheckEnum(const NoxRealEnum &e) {
    const int size = e.GetSize();
    Require(size >= 0);
    Require(e.Get(-1) == 0.0 && e.Get(size) == 0.0);
    const int found = e.Find(0.0, 1e-9);
    Require(found >= -1 && found < (size > 0 ? size : 1));
}

void CheckValue(const NoxValue &v) {
    CheckEnum(v.GetIntegerEnum());
    CheckEnum(v.GetRealEnum());
}

class ValueSession {
public:
    explicit ValueSession(NoxFuzzInput &input)
        : in(input), integerEnums{NoxIntegerEnum(NoxEnumNil), NoxIntegerEnum(NoxEnumAny)},
          realEnums{NoxRealEnum(NoxEnumNil), NoxRealEnum(NoxEnumAny)} {}

    void Run() {
        for (int step = 0; step < 200 && !in.Done(); ++step)
            Step();
        for (const NoxValue &v : values)
            CheckValue(v);
        for (const NoxIntegerEnum &e : integerEnums)
            CheckEnum(e);
        for (const NoxRealEnum &e : realEnums)
            CheckEnum(e);
    }

private:
    NoxValue &Value() { return values[in.Pick(kValues)]; }
    NoxIntegerEnum &IntegerEnum() { return integerEnums[in.Pick(kEnums)]; }
    NoxRealEnum &RealEnum() { return realEnums[in.Pick(kEnums)]; }

    // A value of a kind the input chooses, built by a constructor or a setter.
    NoxValue MakeValue() {
        switch (in.Pick(12)) {
        case 0:
            return NoxValue(in.Kind());
        case 1:
            return NoxValue(in.Int());
        case 2:
            return NoxValue(in.Real());
        case 3:
            return NoxValue(in.IntegerInterval());
        case 4:
            return NoxValue(in.RealInterval());
        case 5:
            return NoxValue(in.Boolean());
        case 6:
            return NoxValue(IntegerEnum());
        case 7:
            return NoxValue(RealEnum());
        case 8:
            return in.IntegerEnumValue(kLongestList);
        case 9:
            return in.RealEnumValue(kLongestList);
        case 10: {
            NoxValue v(in.Kind());
            v.SetIndefinite();
            return v;
        }
        default:
            return Value();
        }
    }

    // Sets v from a list, or from a count or array the input may spoil (a count of zero
    // or less, a null array).
    template <class T> void SetList(NoxValue &v, const std::vector<T> &list) {
        v.Set(in.Flag() ? static_cast<int>(list.size()) : in.Range(-3, 0),
              in.Flag() ? list.data() : nullptr);
    }

    // Binary combinations of enumerations insert every pair of members.
    bool Affordable(const NoxValue &a, const NoxValue &b) {
        return MemberCount(a) * MemberCount(b) <= kLargestProduct;
    }

    void Step() {
        switch (in.Pick(9)) {
        case 0:
            EnvironmentStep();
            break;
        case 1:
            IntervalStep();
            break;
        case 2:
            IntervalFunctionStep();
            break;
        case 3:
            IntegerEnumStep(in.Flag() ? IntegerEnum() : Value().GetIntegerEnum());
            break;
        case 4:
            RealEnumStep(in.Flag() ? RealEnum() : Value().GetRealEnum());
            break;
        case 5:
            ValueStep();
            break;
        case 6:
            SetOperationStep();
            break;
        default:
            ArithmeticStep();
            break;
        }
    }

    void EnvironmentStep() {
        switch (in.Pick(5)) {
        case 0:
            env.SetTolerance(in.Tolerance());
            break;
        case 1:
            env.SetTrigonometricLimits(in.Real(), in.Real());
            break;
        case 2:
            env.SetMaxEnumSize(in.Range(-2, kLargestEnumSize));
            break;
        case 3:
            env.SetError(in.Range(0, 3));
            break;
        default:
            env.ClearError();
            break;
        }
    }

    void IntervalStep() {
        const NoxIntegerInterval a = in.IntegerInterval();
        const NoxIntegerInterval b = in.IntegerInterval();
        const NoxRealInterval r = in.RealInterval();
        const NoxRealInterval s = in.RealInterval();
        const double tol = in.Tolerance();
        switch (in.Pick(8)) {
        case 0:
            NoxCreateIntegerInterval(in.Int());
            NoxCreateIntegerInterval(a.lower, a.upper);
            NoxCreateIntegerInterval(r);
            NoxCreateRealInterval(in.Real());
            NoxCreateRealInterval(r.lower, r.upper);
            break;
        case 1:
            NoxIsEmpty(a);
            NoxIsEmpty(r, tol);
            NoxIsConsistent(a);
            NoxIsConsistent(r, tol);
            NoxIsInfinite(a);
            NoxIsInfinite(r);
            NoxIsFinite(a);
            NoxIsFinite(r);
            break;
        case 2:
            NoxIsEqual(a, b);
            NoxIsEqual(r, s, tol);
            NoxContains(a, b);
            NoxContains(r, s, tol);
            NoxIsExact(a);
            NoxIsExact(r, tol);
            break;
        case 3: {
            NoxWidth(a);
            NoxWidth(r);
            NoxMiddle(r);
            Require(NoxMAG(a) >= 0);
            NoxMAG(r);
            const int sign = NoxSignum(r);
            Require(sign >= -1 && sign <= 1);
            break;
        }
        case 4:
            NoxIntersect(a, b);
            NoxIntersect(r, s, tol);
            break;
        case 5:
            NoxUnite(a, b);
            NoxUnite(r, s, tol);
            break;
        case 6:
            NoxRealPower(in.Real(), in.Int());
            break;
        default:
            NoxRealPower(in.Real(), in.Range(-70, 70));
            break;
        }
    }

    void IntervalFunctionStep() {
        const NoxIntegerInterval a = in.IntegerInterval();
        const NoxIntegerInterval b = in.IntegerInterval();
        const NoxRealInterval r = in.RealInterval();
        const NoxRealInterval s = in.RealInterval();
        const int n = in.Int();
        switch (in.Pick(12)) {
        case 0:
            NoxSum(env, a, b);
            NoxSum(env, r, s);
            NoxSub(env, a, b);
            NoxSub(env, r, s);
            break;
        case 1:
            NoxMul(env, a, b);
            NoxMul(env, r, s);
            NoxDiv(env, a, b);
            NoxDiv(env, r, s);
            break;
        case 2:
            NoxMin(env, a, b);
            NoxMin(env, r, s);
            NoxMax(env, a, b);
            NoxMax(env, r, s);
            NoxAbs(env, a);
            NoxAbs(env, r);
            break;
        case 3:
            NoxMod(env, a, b);
            NoxMod(env, r, s);
            break;
        case 4:
            NoxPow(env, r, n);
            NoxRootPositive(env, r, n);
            NoxRootNegative(env, r, n);
            NoxRoot(env, r, n, s);
            break;
        case 5:
            NoxSin(env, r);
            NoxCos(env, r);
            NoxTan(env, r);
            break;
        case 6:
            NoxAsin(env, r, s);
            NoxAcos(env, r, s);
            NoxAtan(env, r, s);
            break;
        case 7:
            NoxSinh(env, r);
            NoxCosh(env, r);
            NoxTanh(env, r);
            break;
        case 8:
            NoxAsinh(env, r);
            NoxAcosh(env, r);
            NoxAtanh(env, r);
            break;
        case 9:
            NoxSqrt(env, r);
            NoxLog(env, r);
            NoxLn(env, r);
            NoxExp(env, r);
            break;
        case 10:
            NoxCeil(env, r);
            NoxFloor(env, r);
            NoxRound(env, r);
            break;
        default: {
            const int m = in.Range(-70, 70);
            NoxPow(env, r, m);
            NoxRoot(env, r, m, s);
            break;
        }
        }
    }

    void IntegerEnumStep(NoxIntegerEnum &e) {
        switch (in.Pick(16)) {
        case 0:
            e = NoxIntegerEnum(in.Rep());
            break;
        case 1:
            e = IntegerEnum();
            break;
        case 2: {
            NoxIntegerEnum copy(e);
            e = copy;
            const NoxIntegerEnum &same = e;
            e = same;
            break;
        }
        case 3:
            e.SetRep(in.Rep());
            break;
        case 4:
            if (in.Flag())
                e.SetNil();
            else
                e.SetAny();
            break;
        case 5:
            e.SetSize(in.Flag() ? in.Range(-3, 10) : in.Range(0, kLongestList));
            break;
        case 6:
            e.Set(in.Range(-2, e.GetSize() + 1), in.Int());
            break;
        case 7:
            e.Find(in.Int());
            e.FindLT(in.Int());
            e.FindGT(in.Int());
            break;
        case 8:
            if (e.GetSize() < kLongestList)
                e.Insert(in.Int());
            break;
        case 9:
            if (e.GetSize() < kLongestList)
                e.Append(in.Int());
            break;
        case 10:
            e.Remove(in.Int());
            break;
        case 11:
            e.RemovePosition(in.Range(-2, e.GetSize() + 1), in.Range(-2, e.GetSize() + 2));
            break;
        case 12:
            e.SetAsIntegerInterval(in.IntegerInterval());
            break;
        case 13:
            e.GetAsIntegerInterval();
            break;
        case 14: {
            NoxRealEnum r(in.Rep());
            r = e;
            CheckEnum(r);
            RealEnum() = e;
            break;
        }
        default:
            e.Correct(env);
            break;
        }
        CheckEnum(e);
    }

    void RealEnumStep(NoxRealEnum &e) {
        switch (in.Pick(15)) {
        case 0:
            e = NoxRealEnum(in.Rep());
            break;
        case 1:
            e = RealEnum();
            break;
        case 2: {
            NoxRealEnum copy(e);
            e = copy;
            const NoxRealEnum &same = e;
            e = same;
            break;
        }
        case 3:
            e.SetRep(in.Rep());
            break;
        case 4:
            if (in.Flag())
                e.SetNil();
            else
                e.SetAny();
            break;
        case 5:
            e.SetSize(in.Flag() ? in.Range(-3, 10) : in.Range(0, kLongestList));
            break;
        case 6:
            e.Set(in.Range(-2, e.GetSize() + 1), in.Real());
            break;
        case 7:
            e.Find(in.Real(), in.Tolerance());
            e.FindLT(in.Real());
            e.FindGT(in.Real());
            break;
        case 8:
            if (e.GetSize() < kLongestList)
                e.Insert(in.Real(), in.Tolerance());
            break;
        case 9:
            if (e.GetSize() < kLongestList)
                e.Append(in.Real());
            break;
        case 10:
            e.Remove(in.Real(), in.Tolerance());
            break;
        case 11:
            e.RemovePosition(in.Range(-2, e.GetSize() + 1), in.Range(-2, e.GetSize() + 2));
            break;
        case 12:
            e.SetAsRealInterval(in.RealInterval());
            break;
        case 13:
            e.GetAsRealInterval();
            break;
        default:
            e.Correct(env);
            break;
        }
        CheckEnum(e);
    }

    void ValueStep() {
        NoxValue &v = Value();
        switch (in.Pick(22)) {
        case 0:
            v = MakeValue();
            break;
        case 1:
            v.Set(in.Int());
            break;
        case 2:
            v.Set(in.Real());
            break;
        case 3:
            v.Set(in.IntegerInterval());
            break;
        case 4:
            v.Set(in.RealInterval());
            break;
        case 5:
            v.Set(IntegerEnum());
            v.Set(RealEnum());
            break;
        case 6:
            SetList(v, in.Ints(kLongestList));
            break;
        case 7:
            SetList(v, in.Reals(kLongestList));
            break;
        case 8:
            v.Set(in.Boolean());
            break;
        case 9:
            v.SetIndefinite();
            break;
        case 10: {
            const NoxValue copy(v);
            Require(copy.GetType() == v.GetType());
            v = copy;
            const NoxValue &same = v;
            v = same;
            break;
        }
        case 11: {
            NoxValue *clone = v.Clone();
            Require(clone != nullptr && clone->GetType() == v.GetType());
            delete clone;
            break;
        }
        case 12:
            v.IsAKindOf(in.Kind());
            v.IsConvertible(in.Kind());
            break;
        case 13:
            v.GetAsInteger();
            v.GetAsReal();
            v.GetAsIntegerInterval();
            v.GetAsRealInterval();
            v.GetAsBoolean();
            break;
        case 14:
            v.GetAsIntegerEnum(in.Flag() ? IntegerEnum() : Value().GetIntegerEnum());
            break;
        case 15:
            v.GetAsRealEnum(in.Flag() ? RealEnum() : Value().GetRealEnum());
            break;
        case 16:
            v.GetAsIntegerEnum(v.GetIntegerEnum());
            v.GetAsRealEnum(v.GetRealEnum());
            break;
        case 17:
            v.GetRealValue();
            v.GetMiddle();
            v.GetWidth();
            v.GetMAG();
            break;
        case 18: {
            const NoxValue src = MakeValue();
            v.Assign(env, in.Flag() ? src : v);
            break;
        }
        case 19:
            v.IsEmpty(env);
            v.IsExact(env);
            v.IsConsistent(env);
            v.IsIndefinite(env);
            break;
        case 20:
            v.GetIntegerEnum().SetRep(in.Rep());
            v.GetRealEnum().SetRep(in.Rep());
            break;
        default: {
            NoxValue temporary(in.Kind());
            temporary.Set(in.Int());
            temporary.Set(in.Real());
            v = temporary;
            break;
        }
        }
        CheckValue(v);
    }

    void SetOperationStep() {
        NoxValue &a = Value();
        const NoxValue b = in.Flag() ? NoxValue(Value()) : MakeValue();
        if (!Affordable(a, b))
            return;
        const double tol = in.Tolerance();
        switch (in.Pick(9)) {
        case 0:
            NoxIsEqual(env, a, b, tol);
            break;
        case 1:
            NoxContains(env, a, b, tol);
            break;
        case 2:
            NoxIsIndefinite(env, a);
            break;
        case 3:
            NoxIntersect(env, a, b, tol);
            break;
        case 4:
            NoxExclude(env, a, b, tol);
            break;
        case 5:
            NoxUnite(env, a, b, tol);
            break;
        case 6:
            a.IsEqualTo(env, b);
            a.Intersect(env, b);
            break;
        case 7:
            a.Exclude(env, b);
            break;
        default:
            a.Unite(env, b);
            break;
        }
        CheckValue(a);
    }

    void ArithmeticStep() {
        const NoxValue &a = Value();
        const NoxValue b = in.Flag() ? NoxValue(Value()) : MakeValue();
        if (!Affordable(a, b))
            return;
        NoxValue &out = Value();
        const NoxValue *range = nullptr;
        NoxValue rangeValue;
        if (in.Flag()) {
            rangeValue = MakeValue();
            if (Affordable(a, rangeValue))
                range = &rangeValue;
        }
        NoxValue r;
        switch (in.Pick(36)) {
        case 0: r = NoxNot(a); break;
        case 1: r = NoxOr(a, b); break;
        case 2: r = NoxAnd(a, b); break;
        case 3: r = NoxEqual(a, b); break;
        case 4: r = NoxNotEqual(a, b); break;
        case 5: r = NoxImplication(a, b); break;
        case 6: r = NoxSum(env, a, b); break;
        case 7: r = NoxSub(env, a, b); break;
        case 8: r = NoxMul(env, a, b); break;
        case 9: r = NoxDiv(env, a, b); break;
        case 10: r = NoxMod(env, a, b); break;
        case 11: r = NoxMin(env, a, b); break;
        case 12: r = NoxMax(env, a, b); break;
        case 13: r = NoxPow(env, a, b); break;
        case 14: r = NoxRoot(env, a, b, range); break;
        case 15: r = NoxSin(env, a); break;
        case 16: r = NoxCos(env, a); break;
        case 17: r = NoxTan(env, a); break;
        case 18: r = NoxSinh(env, a); break;
        case 19: r = NoxCosh(env, a); break;
        case 20: r = NoxTanh(env, a); break;
        case 21: r = NoxAsinh(env, a); break;
        case 22: r = NoxAcosh(env, a); break;
        case 23: r = NoxAtanh(env, a); break;
        case 24: r = NoxSqrt(env, a); break;
        case 25: r = NoxLog(env, a); break;
        case 26: r = NoxLn(env, a); break;
        case 27: r = NoxExp(env, a); break;
        case 28: r = NoxAbs(env, a); break;
        case 29: r = NoxCeil(env, a); break;
        case 30: r = NoxFloor(env, a); break;
        case 31: r = NoxRound(env, a); break;
        case 32: r = NoxAsin(env, a, range); break;
        case 33: r = NoxAcos(env, a, range); break;
        case 34: r = NoxAtan(env, a, range); break;
        default: r = NoxPow(env, a, NoxValue(in.Range(-70, 70))); break;
        }
        CheckValue(r);
        if (MemberCount(r) <= kLongestList)
            out = r;
    }

    NoxFuzzInput &in;
    NoxEnvironment env;
    NoxValue values[kValues];
    NoxIntegerEnum integerEnums[kEnums];
    NoxRealEnum realEnums[kEnums];
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    NoxFuzzInput input(data, size);
    ValueSession session(input);
    session.Run();
    return 0;
}
