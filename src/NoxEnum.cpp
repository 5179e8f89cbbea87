// Integer and real enumerations. The two record kinds share their array, search and
// insertion code through templates; the comparisons that differ (exact for integers,
// within a tolerance for reals) are small overloads.
#include "NoxEnum.h"

#include "NoxPrivate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>

// The owned growable array of an enumeration. Every allocation is nothrow: a request
// that cannot be met returns false and leaves the array as it was.
template <typename T> class NoxEnumArray {
public:
    NoxEnumArray() = default;
    NoxEnumArray(const NoxEnumArray &) = delete;
    NoxEnumArray &operator=(const NoxEnumArray &) = delete;
    ~NoxEnumArray() { delete[] data; }

    int Size() const { return size; }
    T &operator[](int i) { return data[i]; }
    const T &operator[](int i) const { return data[i]; }
    bool Contains(int i) const { return i >= 0 && i < size; }

    // Makes room for n entries in all.
    bool Reserve(int n) {
        if (n <= capacity)
            return true;
        // Doubling, from room for a few entries: lists are short as a rule.
        const int grown = capacity > INT_MAX / 2 ? INT_MAX : std::max(2 * capacity, 4);
        const int newCapacity = std::max(n, grown);
        T *newData = new (std::nothrow) T[static_cast<std::size_t>(newCapacity)];
        if (!newData)
            return false;
        for (int i = 0; i < size; ++i)
            newData[i] = data[i];
        delete[] data;
        data = newData;
        capacity = newCapacity;
        return true;
    }

    // n entries; entries beyond the old size are zero.
    bool Resize(int n) {
        n = std::max(n, 0);
        if (n > capacity && !Reserve(n))
            return false;
        if (n > size)
            std::fill(data + size, data + n, T(0));
        size = n;
        return true;
    }

    void Clear() { size = 0; }

    // v before the entry at pos (pos == Size() appends).
    bool InsertAt(int pos, T v) {
        if (size == INT_MAX || !Reserve(size + 1))
            return false;
        std::copy_backward(data + pos, data + size, data + size + 1);
        data[pos] = v;
        ++size;
        return true;
    }

    bool Append(T v) { return InsertAt(size, v); }

    // Removes the count entries from pos; the run must lie inside the array.
    void RemoveRun(int pos, int count) {
        std::copy(data + pos + count, data + size, data + pos);
        size -= count;
    }

    bool CopyFrom(const NoxEnumArray &other) {
        if (!Reserve(other.size))
            return false;
        for (int i = 0; i < other.size; ++i)
            data[i] = other.data[i];
        size = other.size;
        return true;
    }

private:
    T *data = nullptr;
    int size = 0;
    int capacity = 0;
};

namespace {

// ---- Comparisons: exact on integers, within a tolerance on reals ----

// The search stops on an entry that matches v.
bool FindHit(int e, int v, double) { return v >= e && v <= e; }
bool FindHit(double e, double v, double tol) { return e - tol <= v && v <= e + tol; }

// On insertion, v goes after the entry found for it when the entry lies below v.
bool LiesBelow(int e, int v, double) { return e < v; }
bool LiesBelow(double e, double v, double tol) { return e - v < -tol; }

// On insertion, v is a repeat of the entry at its place.
bool IsRepeat(int e, int v, double) { return e == v; }
bool IsRepeat(double e, double v, double tol) { return std::fabs(e - v) <= tol; }

// ---- Array handling shared by both kinds ----

template <typename T> bool EnsureArray(NoxEnumArray<T> *&values) {
    if (!values)
        values = new (std::nothrow) NoxEnumArray<T>();
    return values != nullptr;
}

template <typename T> int SizeOf(const NoxEnumArray<T> *values) {
    return values ? values->Size() : 0;
}

template <typename T> T EntryOf(const NoxEnumArray<T> *values, int i) {
    return values && values->Contains(i) ? (*values)[i] : T(0);
}

template <typename T> void Empty(NoxEnumArray<T> *values) {
    if (values)
        values->Clear();
}

// Deep copy of the array and the state. Without memory the record ends nil and
// without an array.
template <typename T>
void CopyRecord(NoxEnumArray<T> *&values, NoxEnumRep &rep, const NoxEnumArray<T> *source,
                NoxEnumRep sourceRep) {
    if (!source) {
        delete values;
        values = nullptr;
        rep = sourceRep;
        return;
    }
    if (EnsureArray(values) && values->CopyFrom(*source)) {
        rep = sourceRep;
        return;
    }
    delete values;
    values = nullptr;
    rep = NoxEnumNil;
}

template <typename T> int FindIn(const NoxEnumArray<T> *values, T v, double tol) {
    const int size = SizeOf(values);
    if (size == 0)
        return -1;
    int lo = 0;
    int hi = size - 1;
    int mid = 0;
    while (lo <= hi) {
        mid = lo + (hi - lo) / 2;
        const T e = (*values)[mid];
        if (FindHit(e, v, tol))
            break;
        if (v > e)
            lo = mid + 1;
        else
            hi = mid - 1;
    }
    return mid;
}

// p is the search result for v with tolerance 0.
template <typename T> int BelowFrom(const NoxEnumArray<T> *values, int p, T v) {
    if (p < 0)
        return p;
    return (*values)[p] < v ? p : p - 1;
}

template <typename T> int AboveFrom(const NoxEnumArray<T> *values, int p, T v) {
    if (p < 0 || p >= values->Size())
        return p;
    return (*values)[p] > v ? p : p + 1;
}

// Insertion into a list with entries, at the place the search gives, with no repeat.
template <typename T> void InsertIntoList(NoxEnumArray<T> *values, T v, double tol) {
    const int size = values->Size();
    const int p = std::max(FindIn<T>(values, v, 0.0), 0);
    if (p >= size) {
        values->Append(v);
        return;
    }
    const int pos = LiesBelow((*values)[p], v, tol) ? p + 1 : p;
    if (pos < size && IsRepeat((*values)[pos], v, tol))
        return;
    values->InsertAt(pos, v);
}

// Appends v at the end of the array and makes the record a list; without memory the
// record is left as it was.
template <typename T> void StartOrExtendList(NoxEnumArray<T> *&values, NoxEnumRep &rep, T v) {
    if (EnsureArray(values) && values->Append(v))
        rep = NoxEnumList;
}

template <typename T> void SetSizeOf(NoxEnumArray<T> *&values, NoxEnumRep &rep, int n) {
    if (EnsureArray(values))
        values->Resize(n);
    rep = NoxEnumList;
}

template <typename T> void SetEntry(NoxEnumArray<T> *&values, int i, T v) {
    if (EnsureArray(values) && values->Contains(i))
        (*values)[i] = v;
}

// Removes count entries from pos, the count cut at the end of the array. Returns
// whether entries were removed and none is left.
template <typename T> bool RemoveRunFrom(NoxEnumArray<T> *values, int pos, int count) {
    if (!values || pos < 0 || count < 1)
        return false;
    const std::int64_t size = values->Size();
    if (std::int64_t{pos} + 1 > size)
        return false;
    if (std::int64_t{pos} + count >= size)
        count = static_cast<int>(size - pos);
    values->RemoveRun(pos, count);
    return values->Size() == 0;
}

// The range [lower, upper] in two entries; nil without memory.
template <typename T>
void SetRange(NoxEnumArray<T> *&values, NoxEnumRep &rep, T lower, T upper) {
    rep = NoxEnumRange;
    if (!EnsureArray(values) || !values->Resize(2)) {
        rep = NoxEnumNil;
        return;
    }
    (*values)[0] = lower;
    (*values)[1] = upper;
}

// A range reads its bounds from two entries at least.
template <typename T> bool HasBounds(const NoxEnumArray<T> *values) {
    return SizeOf(values) >= 2;
}

template <typename T> void Expand(NoxEnumArray<T> *&values, NoxEnumRep &rep, T v) {
    if (!EnsureArray(values)) {
        rep = NoxEnumNil;
        return;
    }
    if (!HasBounds(values)) {
        if (!values->Resize(2)) {
            rep = NoxEnumNil;
            return;
        }
        (*values)[0] = v;
        (*values)[1] = v;
        return;
    }
    T &lower = (*values)[0];
    T &upper = (*values)[values->Size() - 1];
    lower = std::min(lower, v);
    upper = std::max(upper, v);
}

// v + step as a two's complement machine computes it.
int WrapToIntPlus(int v, int step) { return NoxWrapToInt(std::int64_t{v} + step); }

} // namespace

// =====================================================================================
// NoxIntegerEnum
// =====================================================================================

NoxIntegerEnum::NoxIntegerEnum(NoxEnumRep initial)
    : values(nullptr),
      rep(initial == NoxEnumList ? NoxEnumNil : initial == NoxEnumRange ? NoxEnumAny : initial) {}

NoxIntegerEnum::NoxIntegerEnum(const NoxIntegerEnum &other) : values(nullptr), rep(other.rep) {
    CopyRecord(values, rep, other.values, other.rep);
}

NoxIntegerEnum &NoxIntegerEnum::operator=(const NoxIntegerEnum &other) {
    if (this != &other)
        CopyRecord(values, rep, other.values, other.rep);
    return *this;
}

NoxIntegerEnum::~NoxIntegerEnum() { delete values; }

void NoxIntegerEnum::SetNil() {
    rep = NoxEnumNil;
    Empty(values);
}

void NoxIntegerEnum::SetAny() {
    rep = NoxEnumAny;
    Empty(values);
}

int NoxIntegerEnum::GetSize() const { return SizeOf(values); }

int NoxIntegerEnum::Get(int i) const { return EntryOf(values, i); }

void NoxIntegerEnum::SetSize(int n) { SetSizeOf(values, rep, n); }

void NoxIntegerEnum::Set(int i, int v) { SetEntry(values, i, v); }

int NoxIntegerEnum::Find(int v) const { return FindIn(values, v, 0.0); }

int NoxIntegerEnum::FindLT(int v) const { return BelowFrom(values, Find(v), v); }

int NoxIntegerEnum::FindGT(int v) const { return AboveFrom(values, Find(v), v); }

void NoxIntegerEnum::Insert(int v) {
    if (rep == NoxEnumAny)
        return;
    if (rep == NoxEnumRange)
        ExpandInterval(v);
    else if (rep == NoxEnumList && GetSize() > 0)
        InsertIntoList(values, v, 0.0);
    else
        StartOrExtendList(values, rep, v);
}

void NoxIntegerEnum::Append(int v) {
    if (rep == NoxEnumAny)
        return;
    if (rep == NoxEnumRange)
        ExpandInterval(v);
    else
        StartOrExtendList(values, rep, v);
}

void NoxIntegerEnum::Remove(int v) {
    switch (rep) {
    case NoxEnumAny:
        if (std::int64_t{v} == -std::int64_t{NoxMaxInteger} || v == NoxMaxInteger) {
            SetAsIntegerInterval(NoxCreateIntegerInterval(
                NoxWrapToInt(-std::int64_t{NoxMaxInteger}), NoxMaxInteger));
            ReduceInterval(v);
        }
        break;
    case NoxEnumRange:
        ReduceInterval(v);
        break;
    case NoxEnumList:
        if (values) {
            const int p = Find(v);
            if (p >= 0 && (*values)[p] == v)
                values->RemoveRun(p, 1);
            if (values->Size() == 0)
                rep = NoxEnumNil;
        }
        break;
    default:
        break;
    }
}

void NoxIntegerEnum::RemovePosition(int pos, int count) {
    if (RemoveRunFrom(values, pos, count))
        rep = NoxEnumNil;
}

void NoxIntegerEnum::SetAsIntegerInterval(const NoxIntegerInterval &r) {
    SetRange(values, rep, r.lower, r.upper);
}

NoxIntegerInterval NoxIntegerEnum::GetAsIntegerInterval() const {
    if (rep == NoxEnumAny)
        return NoxInteger_Any;
    if (rep == NoxEnumNil || GetSize() == 0 || (rep == NoxEnumRange && !HasBounds(values)))
        return NoxInteger_Nil;
    return NoxCreateIntegerInterval((*values)[0], (*values)[GetSize() - 1]);
}

void NoxIntegerEnum::Correct(const NoxEnvironment &env) {
    if (rep == NoxEnumAny || rep == NoxEnumNil)
        return;
    if (!values) {
        rep = NoxEnumNil;
        return;
    }
    const int maxSize = env.GetMaxEnumSize();
    if (rep == NoxEnumList) {
        if (GetSize() <= maxSize)
            return;
        const NoxIntegerInterval hull = GetAsIntegerInterval();
        if (NoxIsEmpty(hull))
            SetNil();
        else if (NoxIsInfinite(hull))
            SetAny();
        else
            SetAsIntegerInterval(hull);
    } else if (rep == NoxEnumRange) {
        const NoxIntegerInterval range = GetAsIntegerInterval();
        if (NoxIsEmpty(range)) {
            SetNil();
            return;
        }
        if (NoxIsInfinite(range)) {
            SetAny();
            return;
        }
        const int width = NoxWidth(range);
        if (width < 0 || width >= maxSize || !values->Resize(width + 1))
            return;
        rep = NoxEnumList;
        for (int k = 0; k <= width; ++k)
            (*values)[k] = WrapToIntPlus(range.lower, k);
    }
}

bool NoxIntegerEnum::EnsureCreated() { return EnsureArray(values); }

void NoxIntegerEnum::ExpandInterval(int v) { Expand(values, rep, v); }

void NoxIntegerEnum::ReduceInterval(int v) {
    if (!EnsureCreated()) {
        rep = NoxEnumNil;
        return;
    }
    if (!HasBounds(values))
        return;
    int &lower = (*values)[0];
    int &upper = (*values)[GetSize() - 1];
    if (lower == v)
        lower = WrapToIntPlus(v, 1);
    if (upper == v)
        upper = WrapToIntPlus(v, -1);
}

// =====================================================================================
// NoxRealEnum
// =====================================================================================

NoxRealEnum::NoxRealEnum(NoxEnumRep initial) : values(nullptr), rep(initial) {}

NoxRealEnum::NoxRealEnum(const NoxRealEnum &other) : values(nullptr), rep(other.rep) {
    CopyRecord(values, rep, other.values, other.rep);
}

NoxRealEnum &NoxRealEnum::operator=(const NoxRealEnum &other) {
    if (this != &other)
        CopyRecord(values, rep, other.values, other.rep);
    return *this;
}

NoxRealEnum &NoxRealEnum::operator=(const NoxIntegerEnum &other) {
    switch (other.GetRep()) {
    case NoxEnumList: {
        const int size = other.GetSize();
        rep = NoxEnumList;
        if (!EnsureCreated())
            return *this;
        values->Clear();
        if (!values->Reserve(size))
            return *this;
        for (int i = 0; i < size; ++i)
            values->Append(static_cast<double>(other.Get(i)));
        return *this;
    }
    case NoxEnumRange:
    case NoxEnumAny: {
        const NoxIntegerInterval r = other.GetAsIntegerInterval();
        SetAsRealInterval(NoxCreateRealInterval(static_cast<double>(r.lower),
                                                static_cast<double>(r.upper)));
        return *this;
    }
    case NoxEnumNil:
        SetNil();
        return *this;
    default:
        return *this;
    }
}

NoxRealEnum::~NoxRealEnum() { delete values; }

void NoxRealEnum::SetNil() {
    rep = NoxEnumNil;
    Empty(values);
}

void NoxRealEnum::SetAny() {
    rep = NoxEnumAny;
    Empty(values);
}

int NoxRealEnum::GetSize() const { return SizeOf(values); }

double NoxRealEnum::Get(int i) const { return EntryOf(values, i); }

void NoxRealEnum::SetSize(int n) { SetSizeOf(values, rep, n); }

void NoxRealEnum::Set(int i, double v) { SetEntry(values, i, v); }

int NoxRealEnum::Find(double v, double tol) const { return FindIn(values, v, tol); }

int NoxRealEnum::FindLT(double v) const { return BelowFrom(values, Find(v, 0.0), v); }

int NoxRealEnum::FindGT(double v) const { return AboveFrom(values, Find(v, 0.0), v); }

void NoxRealEnum::Insert(double v, double tol) {
    if (rep == NoxEnumAny)
        return;
    if (rep == NoxEnumRange)
        ExpandInterval(v);
    else if (rep == NoxEnumList && GetSize() > 0)
        InsertIntoList(values, v, tol);
    else
        StartOrExtendList(values, rep, v);
}

void NoxRealEnum::Append(double v) {
    if (rep == NoxEnumAny)
        return;
    if (rep == NoxEnumRange)
        ExpandInterval(v);
    else
        StartOrExtendList(values, rep, v);
}

void NoxRealEnum::Remove(double v, double tol) {
    switch (rep) {
    case NoxEnumAny:
        if (v == -NoxMaxReal || v == NoxMaxReal) {
            SetAsRealInterval(NoxRealInterval{-NoxMaxReal, NoxMaxReal});
            ReduceInterval(v, tol);
        }
        break;
    case NoxEnumRange:
        ReduceInterval(v, tol);
        break;
    case NoxEnumList: {
        const int p = Find(v, 0.0);
        if (p < 0)
            return;
        // The run closer than tol to v from p forward, then from p - 1 backward.
        int end = p;
        while (end < GetSize() && std::fabs((*values)[end] - v) < tol)
            ++end;
        values->RemoveRun(p, end - p);
        int start = p;
        while (start > 0 && std::fabs((*values)[start - 1] - v) < tol)
            --start;
        values->RemoveRun(start, p - start);
        if (GetSize() == 0)
            rep = NoxEnumNil;
        break;
    }
    default:
        break;
    }
}

void NoxRealEnum::RemovePosition(int pos, int count) { RemoveRunFrom(values, pos, count); }

void NoxRealEnum::SetAsRealInterval(const NoxRealInterval &r) {
    SetRange(values, rep, r.lower, r.upper);
}

NoxRealInterval NoxRealEnum::GetAsRealInterval() const {
    if (rep == NoxEnumAny)
        return NoxReal_Any;
    if (rep == NoxEnumNil || GetSize() == 0 || (rep == NoxEnumRange && !HasBounds(values)))
        return NoxReal_Nil;
    return NoxCreateRealInterval((*values)[0], (*values)[GetSize() - 1]);
}

void NoxRealEnum::Correct(const NoxEnvironment &env) {
    if (rep == NoxEnumAny || rep == NoxEnumNil)
        return;
    if (GetSize() == 0) {
        rep = NoxEnumNil;
        return;
    }
    if (rep != NoxEnumList && rep != NoxEnumRange)
        return;
    if (rep == NoxEnumList && GetSize() <= env.GetMaxEnumSize())
        return;
    const NoxRealInterval hull = GetAsRealInterval();
    if (NoxIsEmpty(hull, NoxAbsPrecision))
        SetNil();
    else if (NoxIsInfinite(hull))
        SetAny();
    else if (rep == NoxEnumList)
        SetAsRealInterval(hull);
    else if (NoxIsExact(hull, NoxAbsPrecision) && values->Resize(1))
        rep = NoxEnumList;
}

bool NoxRealEnum::EnsureCreated() { return EnsureArray(values); }

void NoxRealEnum::ExpandInterval(double v) { Expand(values, rep, v); }

void NoxRealEnum::ReduceInterval(double v, double tol) {
    if (!EnsureCreated()) {
        rep = NoxEnumNil;
        return;
    }
    if (!HasBounds(values))
        return;
    double &lower = (*values)[0];
    double &upper = (*values)[GetSize() - 1];
    const double step = 1.01 * NoxScaledTolerance(v, NoxAbsPrecision);
    if (std::fabs(lower - v) <= tol)
        lower += step;
    if (std::fabs(upper - v) <= tol)
        upper -= step;
}
