// Ordered enumerations of admissible integers and reals. A record is a list of values
// in increasing order, the closed range that holds them, the whole line (any) or nothing
// (nil); `Correct` moves a record between the list and the range form according to the
// environment's maximum enumeration size.
//
// A record owns its array of values, which is created on first need: constructing a
// record allocates nothing. Positions are 0-based. No operation throws or reports an
// error; when memory for the array cannot be obtained, range operations leave the
// record nil and list operations leave it as it was.
#ifndef NOX_ENUM_H
#define NOX_ENUM_H

#include "NoxEnvironment.h"
#include "NoxInterval.h"
#include "NoxTypes.h"

/// The owned growable array behind an enumeration; private to the library.
template <typename T> class NoxEnumArray;

/// An ordered set of admissible integers: a list, a range, any or nil.
class NOX_API NoxIntegerEnum {
public:
    /// A record without an array. NoxEnumList (0) is stored as NoxEnumNil and
    /// NoxEnumRange (1) as NoxEnumAny; any other code is stored as given.
    explicit NoxIntegerEnum(NoxEnumRep rep);
    /// A deep copy of `other` (its array, if it has one, and its state).
    NoxIntegerEnum(const NoxIntegerEnum &other);
    /// Copies `other`'s array (or drops ours when it has none) and its state;
    /// self-assignment does nothing. If memory runs out the record becomes nil.
    NoxIntegerEnum &operator=(const NoxIntegerEnum &other);
    /// Releases the array.
    ~NoxIntegerEnum();

    /// The representation state.
    NoxEnumRep GetRep() const { return rep; }
    /// Writes the representation state only; the array is left as it is.
    void SetRep(NoxEnumRep r) { rep = r; }
    /// 1 when the state is NoxEnumNil, else 0.
    unsigned char IsNil() const { return rep == NoxEnumNil; }
    /// 1 when the state is NoxEnumAny, else 0.
    unsigned char IsAny() const { return rep == NoxEnumAny; }
    /// Makes the record nil and empties its array (if any).
    void SetNil();
    /// Makes the record any and empties its array (if any).
    void SetAny();

    /// Number of entries of the array; 0 without an array.
    int GetSize() const;
    /// Entry i; 0 without an array or when i is not a position of the array.
    int Get(int i) const;
    /// Resizes the array to n entries (new entries are 0; n < 0 counts as 0) and makes
    /// the record a list. If memory runs out only the state changes.
    void SetSize(int n);
    /// Entry i = v, without sorting and without changing the state. Creates the array
    /// when missing; does nothing when i is not a position of the array.
    void Set(int i, int v);

    /// Binary search of the list for v: the position of v, or, when v is absent, the
    /// position where the search ended (a neighbour of v, an insertion hint); -1 without
    /// entries.
    int Find(int v) const;
    /// The position of the nearest entry below v; -1 when there is none.
    int FindLT(int v) const;
    /// The position of the nearest entry above v; GetSize() when there is none (-1
    /// without entries).
    int FindGT(int v) const;

    /// Adds v: any is unchanged; a range grows to hold v; a list gets v in its place
    /// (a value already present is not added again); nil or an empty list starts the
    /// list with v.
    void Insert(int v);
    /// Any is unchanged; a range grows to hold v; otherwise the record becomes a list
    /// and v goes at the end, without any order check.
    void Append(int v);
    /// Takes v out: a list loses v (and becomes nil when emptied); a range loses v only
    /// at an end; any becomes the range of the whole line without v only when v is an
    /// end of the line (+-NoxMaxInteger); nil is unchanged.
    void Remove(int v);
    /// Removes `count` entries from position `pos` (fewer when the array ends first);
    /// nothing when pos is not a position of the array or count < 1. The record becomes
    /// nil when its array is left empty.
    void RemovePosition(int pos, int count);

    /// Makes the record the range [r.lower, r.upper], stored as given; nil if memory
    /// runs out.
    void SetAsIntegerInterval(const NoxIntegerInterval &r);
    /// NoxInteger_Any for any, NoxInteger_Nil for nil, else [first entry, last entry]
    /// unchecked; NoxInteger_Nil without entries, and for a range with fewer than two.
    NoxIntegerInterval GetAsIntegerInterval() const;

    /// Applies the environment's maximum enumeration size M: a list longer than M
    /// becomes its range (nil if inverted, any if the whole line); a range narrower than
    /// M becomes the list of its integers, an inverted one nil, the whole line any. A
    /// record without an array becomes nil. Any and nil are unchanged.
    void Correct(const NoxEnvironment &env);

private:
    /// Creates the empty array when there is none; false if memory runs out.
    bool EnsureCreated();
    /// Widens the range to hold v ([v, v] from fewer than two entries); nil if memory
    /// runs out.
    void ExpandInterval(int v);
    /// Moves an end of the range that equals v one step inwards (the range may become
    /// inverted); nothing with fewer than two entries; nil if memory runs out.
    void ReduceInterval(int v);

    NoxEnumArray<int> *values;
    NoxEnumRep rep;
};

/// An ordered set of admissible reals: a list (no two entries closer than the tolerance
/// used on insertion), a range, any or nil.
class NOX_API NoxRealEnum {
public:
    /// A record without an array, in state `rep` as given.
    explicit NoxRealEnum(NoxEnumRep rep);
    /// A deep copy of `other` (its array, if it has one, and its state).
    NoxRealEnum(const NoxRealEnum &other);
    /// Copies `other`'s array (or drops ours when it has none) and its state;
    /// self-assignment does nothing. If memory runs out the record becomes nil.
    NoxRealEnum &operator=(const NoxRealEnum &other);
    /// Converts an integer enumeration: a list element by element; a range or any as the
    /// real range of its integer interval (an integer any gives the bounded range
    /// [-NoxMaxInteger, NoxMaxInteger], not a real any); nil as nil. A source in any
    /// other state changes nothing.
    NoxRealEnum &operator=(const NoxIntegerEnum &other);
    /// Releases the array.
    ~NoxRealEnum();

    /// The representation state.
    NoxEnumRep GetRep() const { return rep; }
    /// Writes the representation state only; the array is left as it is.
    void SetRep(NoxEnumRep r) { rep = r; }
    /// 1 when the state is NoxEnumNil, else 0.
    unsigned char IsNil() const { return rep == NoxEnumNil; }
    /// 1 when the state is NoxEnumAny, else 0.
    unsigned char IsAny() const { return rep == NoxEnumAny; }
    /// Makes the record nil and empties its array (if any).
    void SetNil();
    /// Makes the record any and empties its array (if any).
    void SetAny();

    /// Number of entries of the array; 0 without an array.
    int GetSize() const;
    /// Entry i; 0.0 without an array or when i is not a position of the array.
    double Get(int i) const;
    /// Resizes the array to n entries (new entries are 0.0; n < 0 counts as 0) and
    /// makes the record a list. If memory runs out only the state changes.
    void SetSize(int n);
    /// Entry i = v, without sorting and without changing the state. Creates the array
    /// when missing; does nothing when i is not a position of the array.
    void Set(int i, double v);

    /// Binary search of the list for an entry within tol of v: its position, or, when
    /// there is none, the position where the search ended (a neighbour of v, an
    /// insertion hint); -1 without entries.
    int Find(double v, double tol) const;
    /// The position of the nearest entry below v (searched with tolerance 0); -1 when
    /// there is none.
    int FindLT(double v) const;
    /// The position of the nearest entry above v (searched with tolerance 0); GetSize()
    /// when there is none (-1 without entries).
    int FindGT(double v) const;

    /// Adds v: any is unchanged; a range grows to hold v; a list gets v in its place
    /// unless the neighbour found for v is within tol of it; nil or an empty list starts
    /// the list with v.
    void Insert(double v, double tol);
    /// Any is unchanged; a range grows to hold v; otherwise the record becomes a list
    /// and v goes at the end, without any order check.
    void Append(double v);
    /// Takes v out: a list loses the run of entries closer than tol to v around the
    /// entry found for it (and becomes nil when emptied); a range moves an end within
    /// tol of v inwards; any becomes the range of the whole line with an end moved only
    /// when v is exactly +-NoxMaxReal; nil is unchanged.
    void Remove(double v, double tol);
    /// Removes `count` entries from position `pos` (fewer when the array ends first);
    /// nothing when pos is not a position of the array or count < 1. The state is left
    /// as it is.
    void RemovePosition(int pos, int count);

    /// Makes the record the range [r.lower, r.upper], stored as given; nil if memory
    /// runs out.
    void SetAsRealInterval(const NoxRealInterval &r);
    /// NoxReal_Any for any, NoxReal_Nil for nil, else NoxCreateRealInterval(first entry,
    /// last entry); NoxReal_Nil without entries, and for a range with fewer than two.
    NoxRealInterval GetAsRealInterval() const;

    /// Applies the environment's maximum enumeration size M: a list longer than M
    /// becomes its range (nil if empty, any if the whole line); a range becomes nil when
    /// empty, any when the whole line, and the one-entry list of its lower bound when
    /// its width is below NoxAbsPrecision. A record without entries becomes nil. Any and
    /// nil are unchanged.
    void Correct(const NoxEnvironment &env);

private:
    /// Creates the empty array when there is none; false if memory runs out.
    bool EnsureCreated();
    /// Widens the range to hold v ([v, v] from fewer than two entries); nil if memory
    /// runs out.
    void ExpandInterval(double v);
    /// Moves an end of the range within tol of v inwards by 1.01 times v's scaled
    /// NoxAbsPrecision (the range may become inverted); nothing with fewer than two
    /// entries; nil if memory runs out.
    void ReduceInterval(double v, double tol);

    NoxEnumArray<double> *values;
    NoxEnumRep rep;
};

#endif
