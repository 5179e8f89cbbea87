// Reading fuzz input as the operands of Nox calls: numbers biased toward the edges the
// library must survive (the limits, the any and nil markers, NaN, infinities, INT_MIN,
// signed zeros, denormals), intervals with inverted bounds, enumeration codes outside
// their listed values, and lists of every length the harness allows.
#ifndef NOX_FUZZ_INPUT_H
#define NOX_FUZZ_INPUT_H

#include <NoxInterval.h>
#include <NoxTypes.h>
#include <NoxValue.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

// Stops the run on a broken property, naming the line of the caller, so that libFuzzer
// records the input.
inline void Require(bool property, const char *file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (property)
        return;
    std::fprintf(stderr, "broken property at %s:%d\n", file, line);
    std::abort();
}

class NoxFuzzInput {
public:
    NoxFuzzInput(const std::uint8_t *data, std::size_t size) : in(data, size) {}

    bool Done() { return in.remaining_bytes() == 0; }

    std::uint8_t Byte() { return in.ConsumeIntegral<std::uint8_t>(); }

    /// A choice among n (n > 0).
    int Pick(int n) { return static_cast<int>(in.ConsumeIntegralInRange<unsigned>(0, n - 1)); }

    bool Flag() { return in.ConsumeBool(); }

    /// An integer in [lo, hi].
    int Range(int lo, int hi) { return in.ConsumeIntegralInRange<int>(lo, hi); }

    /// An int: an edge of the line or a marker most of the time, else any 32-bit pattern
    /// or a small number.
    int Int() {
        switch (Pick(4)) {
        case 0: {
            const int edges[] = {0,
                                 1,
                                 -1,
                                 2,
                                 -2,
                                 3,
                                 7,
                                 -7,
                                 10,
                                 100,
                                 INT_MIN,
                                 INT_MAX,
                                 INT_MIN + 1,
                                 NoxMaxInteger,
                                 -NoxMaxInteger,
                                 NoxMaxInteger - 1,
                                 -NoxMaxInteger + 1,
                                 NoxSingleInteger_Any,
                                 NoxSingleInteger_Nil,
                                 1 << 16,
                                 -(1 << 16),
                                 46341,
                                 -46341};
            return edges[Pick(sizeof edges / sizeof edges[0])];
        }
        case 1:
            return in.ConsumeIntegral<int>();
        default:
            return Range(-20, 20);
        }
    }

    /// A double: an edge, a marker or a special value most of the time, else any 64-bit
    /// pattern or a short decimal.
    double Real() {
        switch (Pick(4)) {
        case 0: {
            const double edges[] = {0.0,
                                    -0.0,
                                    1.0,
                                    -1.0,
                                    0.5,
                                    -0.5,
                                    2.0,
                                    3.14159265358979323846,
                                    -3.14159265358979323846,
                                    1.5707963267948966,
                                    6.283185307179586,
                                    1e-14,
                                    -1e-14,
                                    1e-300,
                                    4.9e-324,
                                    DBL_MIN,
                                    DBL_MAX,
                                    -DBL_MAX,
                                    std::numeric_limits<double>::infinity(),
                                    -std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::quiet_NaN(),
                                    -std::numeric_limits<double>::quiet_NaN(),
                                    NoxMaxReal,
                                    -NoxMaxReal,
                                    NoxMinReal,
                                    NoxSingleReal_Any,
                                    NoxSingleReal_Nil,
                                    NoxMaxExpReal,
                                    NoxMaxHypReal,
                                    1e9,
                                    -1e9,
                                    2147483647.0,
                                    -2147483648.0,
                                    2147483648.0,
                                    -2147483649.0,
                                    static_cast<double>(NoxMaxInteger),
                                    1e15,
                                    1e300};
            return edges[Pick(sizeof edges / sizeof edges[0])];
        }
        case 1: {
            const std::uint64_t bits = in.ConsumeIntegral<std::uint64_t>();
            double d;
            static_assert(sizeof d == sizeof bits, "double is 64 bits");
            std::memcpy(&d, &bits, sizeof d);
            return d;
        }
        default:
            return Range(-2000, 2000) / 8.0;
        }
    }

    /// A tolerance: the usual ones, zero, negative, NaN or any double.
    double Tolerance() {
        switch (Pick(6)) {
        case 0:
            return 1e-9;
        case 1:
            return 1e-14;
        case 2:
            return 0.0;
        case 3:
            return 0.25;
        default:
            return Real();
        }
    }

    NoxIntegerInterval IntegerInterval() {
        switch (Pick(6)) {
        case 0:
            return NoxInteger_Any;
        case 1:
            return NoxInteger_Nil;
        default:
            return {Int(), Int()}; // inverted pairs included
        }
    }

    NoxRealInterval RealInterval() {
        switch (Pick(7)) {
        case 0:
            return NoxReal_Any;
        case 1:
            return NoxReal_Nil;
        case 2:
            return NoxReal_Pos;
        default:
            return {Real(), Real()}; // inverted pairs, NaN and infinite bounds included
        }
    }

    /// An enumeration code, listed or not.
    NoxEnumRep Rep() { return static_cast<NoxEnumRep>(Range(-1, 5)); }

    /// A value kind, listed or not.
    NoxValueType Kind() { return static_cast<NoxValueType>(Range(-1, 9)); }

    /// A boolean code, listed or not.
    NoxBoolean Boolean() { return static_cast<NoxBoolean>(Range(-2, 5)); }

    /// A count of list entries up to `longest`, short ones most often.
    int Count(int longest) {
        switch (Pick(4)) {
        case 0:
            return Range(0, longest);
        default:
            return Range(0, 8);
        }
    }

    std::vector<int> Ints(int longest) {
        std::vector<int> v(static_cast<std::size_t>(Count(longest)));
        const bool ramp = Flag(); // a long ramp needs few bytes
        const int start = Int();
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = ramp ? static_cast<int>(static_cast<std::int64_t>(start) + i) : Int();
        return v;
    }

    std::vector<double> Reals(int longest) {
        std::vector<double> v(static_cast<std::size_t>(Count(longest)));
        const bool ramp = Flag();
        const double start = Real();
        const double step = Real();
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = ramp ? start + step * static_cast<double>(i) : Real();
        return v;
    }

    /// An enumeration value of integers: the list of Ints(longest).
    NoxValue IntegerEnumValue(int longest) { return EnumValue(NoxIntegerEnumType, Ints(longest)); }

    /// An enumeration value of reals: the list of Reals(longest).
    NoxValue RealEnumValue(int longest) { return EnumValue(NoxRealEnumType, Reals(longest)); }

private:
    template <class T> static NoxValue EnumValue(NoxValueType kind, const std::vector<T> &list) {
        NoxValue v(kind);
        v.Set(static_cast<int>(list.size()), list.data());
        return v;
    }

    FuzzedDataProvider in;
};

#endif
