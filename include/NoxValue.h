// The tagged value of the Nox library: one of seven kinds (single integer, single real,
// integer interval, real interval, integer enumeration, real enumeration, four-valued
// boolean) or nothing yet, with kind-preserving setters, conversions between kinds, an
// assignment that converts into the receiver's own kind, and measures.
#ifndef NOX_VALUE_H
#define NOX_VALUE_H

#include "NoxEnum.h"
#include "NoxEnvironment.h"
#include "NoxExport.h"
#include "NoxInterval.h"
#include "NoxTypes.h"

/// A tagged value. A single integer is kept as the integer interval [v, v] and a single
/// real as the real interval [v, v]; a boolean is kept as its NoxBoolean code in the lower
/// integer. The single markers NoxSingleInteger_Any / _Nil and reals above NoxMaxReal /
/// below -NoxMaxReal stand for any and no value of a single kind.
///
/// Both enumeration members always exist (in the any state until used), but only the one
/// of the value's kind is meaningful; a value of a single, interval or boolean kind never
/// allocates. Conversions that meet a kind they have no rule for call the assertion hook
/// with the condition "0", the file "src/NoxValue" and a fixed report code (the line),
/// then return their documented fallback.
class NOX_API NoxValue {
public:
    /// A value of the given kind: the numeric slot is zero (integer pair 0, 0 or real pair
    /// 0.0, 0.0; NoxFalse for a boolean). The default makes an undefined value, which the
    /// first Set gives a kind. Any other code is stored as the kind.
    NoxValue(NoxValueType kind = NoxUndefinedType);
    /// A single integer (kind 1); markers are stored as they are.
    NoxValue(int v);
    /// A single real (kind 2); markers are stored as they are.
    NoxValue(double v);
    /// An integer interval (kind 3), copied as is: an inverted pair stays inverted.
    NoxValue(const NoxIntegerInterval &r);
    /// A real interval (kind 4), copied as is.
    NoxValue(const NoxRealInterval &r);
    /// A boolean (kind 7); the code is stored as it is.
    NoxValue(NoxBoolean b);
    /// An integer enumeration (kind 5), a copy of `e`.
    NoxValue(const NoxIntegerEnum &e);
    /// A real enumeration (kind 6), a copy of `e`.
    NoxValue(const NoxRealEnum &e);
    /// A copy of `other`: its kind and the content its kind uses.
    NoxValue(const NoxValue &other);
    /// Copies the kind of `other` and the content that kind uses (the numeric pair, the
    /// boolean, or the one enumeration of the kind); the enumeration member of the other
    /// kind is left as it was. Self-assignment does nothing.
    NoxValue &operator=(const NoxValue &other);
    /// Destroys the real enumeration member, then the integer one.
    ~NoxValue() = default;

    /// A new heap copy of this value that the caller owns and deletes; null when memory
    /// cannot be had.
    NoxValue *Clone() const;

    // ---- Kinds ----

    /// The kind of the value.
    NoxValueType GetType() const { return type; }
    /// True exactly when the kind is `t`.
    bool IsAKindOf(NoxValueType t) const { return type == t; }
    /// True when the kind is `t`, or when converting to `t` loses nothing the caller cares
    /// about: to an integer from a boolean, to a real from an integer, to an integer
    /// interval from any kind, to a real interval from anything but a boolean, to a
    /// boolean from an integer, integer interval or integer enumeration. Deliberately
    /// narrower than the GetAs... conversions.
    bool IsConvertible(NoxValueType t) const;

    // ---- Setters: each writes on a value of its own kind, or gives an undefined value
    // that kind; on a value of another kind it does nothing, except as stated. ----

    /// Kind 1: the integer v. Also taken by an integer interval (becomes [v, v]), an
    /// integer enumeration (becomes the list {v}) and a boolean (NoxTrue when v != 0,
    /// else NoxFalse).
    void Set(int v);
    /// Kind 2: the real v. Also taken by a real interval (becomes [v, v]) and a real
    /// enumeration (becomes the list {v}).
    void Set(double v);
    /// Kind 3: copies the interval.
    void Set(const NoxIntegerInterval &r);
    /// Kind 4: copies the interval.
    void Set(const NoxRealInterval &r);
    /// Kind 5: copies the enumeration.
    void Set(const NoxIntegerEnum &e);
    /// Kind 6: copies the enumeration.
    void Set(const NoxRealEnum &e);
    /// Kind 5: the list of the n values in the given order, not sorted. A negative n or a
    /// null pointer gives the empty list; when memory runs short the list holds what fit.
    void Set(int n, const int *values);
    /// Kind 6: the list of the n values in the given order, not sorted. A negative n or a
    /// null pointer gives the empty list; when memory runs short the list holds what fit.
    void Set(int n, const double *values);
    /// Kind 7: stores the code.
    void Set(NoxBoolean b);

    /// Makes the value mean anything of its kind: NoxInteger_Any, NoxReal_Any, the any
    /// state of an enumeration, NoxBoolean_Any. Single integers and reals and undefined
    /// values are left unchanged.
    void SetIndefinite();

    // ---- Conversions (none changes the value) ----

    /// The value as a single integer (markers for any and none). A real is truncated
    /// toward zero after NoxAbsPrecision is added (subtracted when negative), so a
    /// shortfall of up to NoxAbsPrecision is forgiven. Undefined and unknown kinds report
    /// 461 and give 0.
    int GetAsInteger() const;
    /// The value as a single real (markers for any and none). Undefined, boolean and
    /// unknown kinds report 490 and give 0.0.
    double GetAsReal() const;
    /// The value as an integer interval; reals are rounded inward. An undefined value
    /// gives NoxInteger_Any; an unknown kind reports 524 and gives the numeric slot read
    /// as an integer interval.
    NoxIntegerInterval GetAsIntegerInterval() const;
    /// The value as a real interval. An undefined value gives NoxReal_Any; a boolean or an
    /// unknown kind reports 548 and gives the numeric slot read as a real interval.
    NoxRealInterval GetAsRealInterval() const;
    /// The value as a four-valued boolean. An undefined value gives NoxBoolean_Any; the
    /// real kinds and unknown kinds report 572 and give the lower integer read as a code.
    NoxBoolean GetAsBoolean() const;
    /// Writes the value as an integer enumeration into `out`, first emptied (its state
    /// kept). A boolean or an unknown kind reports 691 and leaves `out` empty.
    void GetAsIntegerEnum(NoxIntegerEnum &out) const;
    /// Writes the value as a real enumeration into `out`, first emptied (its state kept).
    /// A boolean or an unknown kind reports 624 and leaves `out` empty.
    void GetAsRealEnum(NoxRealEnum &out) const;

    /// A quick reading that ignores the markers: the integer, the middle of an interval
    /// or of an enumeration's hull (integer bounds summed as wrapping 32-bit ints, then
    /// halved as a double), otherwise the lower real of the numeric slot.
    double GetRealValue() const;
    /// GetAsReal() for single kinds, the middle of GetAsRealInterval() for interval and
    /// enumeration kinds, 0.0 otherwise.
    double GetMiddle() const;
    /// The width of GetAsRealInterval() for interval and enumeration kinds, 0.0 otherwise.
    double GetWidth() const;
    /// The magnitude of GetAsRealInterval() for numeric kinds, 0.0 otherwise.
    double GetMAG() const;

    /// The integer enumeration member, whatever the kind.
    NoxIntegerEnum &GetIntegerEnum() { return integerEnum; }
    const NoxIntegerEnum &GetIntegerEnum() const { return integerEnum; }
    /// The real enumeration member, whatever the kind.
    NoxRealEnum &GetRealEnum() { return realEnum; }
    const NoxRealEnum &GetRealEnum() const { return realEnum; }

    // ---- With an environment ----

    /// Keeps this value's kind and replaces its content with `src` converted to it; an
    /// enumeration is then corrected to the environment's maximum enumeration size. An
    /// undefined value stays undefined.
    void Assign(const NoxEnvironment &env, const NoxValue &src);
    /// True when the value holds nothing: the nil marker of a single kind, an empty
    /// interval or enumeration hull (reals by NoxAbsPrecision), NoxBoolean_Nil; always
    /// true for an undefined or unknown kind.
    bool IsEmpty(const NoxEnvironment &env) const;
    /// True when the value is one definite thing: a single value that is no marker, an
    /// exact interval or enumeration hull (reals by NoxAbsPrecision), NoxFalse or
    /// NoxTrue; always true for an undefined or unknown kind.
    bool IsExact(const NoxEnvironment &env) const;
    /// Not IsEmpty(env).
    bool IsConsistent(const NoxEnvironment &env) const;

    // ---- Forwarders to the value set operations (defined with those operations) ----

    /// True when the value stands for anything of its kind (NoxIsIndefinite).
    bool IsIndefinite(const NoxEnvironment &env) const;
    /// True when the value equals `other` (NoxIsEqual with tolerance NoxAbsPrecision).
    bool IsEqualTo(const NoxEnvironment &env, const NoxValue &other) const;
    /// Narrows the value to its intersection with `other` (NoxIntersect with tolerance
    /// NoxAbsPrecision); returns that operation's result.
    bool Intersect(const NoxEnvironment &env, const NoxValue &other);
    /// Takes `other` out of the value (NoxExclude with tolerance NoxAbsPrecision).
    void Exclude(const NoxEnvironment &env, const NoxValue &other);
    /// Widens the value to its union with `other` (NoxUnite with tolerance
    /// NoxAbsPrecision).
    void Unite(const NoxEnvironment &env, const NoxValue &other);

private:
    NoxIntegerInterval IntegerSlot() const;
    NoxRealInterval RealSlot() const;
    int LowerInteger() const;
    double LowerReal() const;
    void SetIntegerSlot(const NoxIntegerInterval &r);
    void SetRealSlot(const NoxRealInterval &r);
    void SetLowerInteger(int v);
    void SetLowerReal(double v);

    NoxValueType type;
    // The numeric slot: an integer interval (two ints, lower first) or a real interval
    // (two doubles, lower first) in the same bytes. It is read and written through byte
    // copies, so reading it as the other kind (a conversion's fallback) is well defined.
    alignas(NoxRealInterval) unsigned char slot[sizeof(NoxRealInterval)];
    NoxIntegerEnum integerEnum;
    NoxRealEnum realEnum;
};

#endif
