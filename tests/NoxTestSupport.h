// Small helpers shared by the test files: bitwise comparison of reals, interval builders
// and checks, and the readers of enumeration entries.
#ifndef NOX_TEST_SUPPORT_H
#define NOX_TEST_SUPPORT_H

#include <NoxEnum.h>
#include <NoxInterval.h>
#include <NoxValue.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace nox_test {

inline std::uint64_t Bits(double x) {
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}

/// The same bits, or both NaN.
inline bool SameDouble(double a, double b) {
    if (std::isnan(a) && std::isnan(b))
        return true;
    return Bits(a) == Bits(b);
}

/// Reals compared bit for bit (NaN equals the same NaN, 0.0 differs from -0.0).
inline void ExpectSameReal(double actual, double expected) {
    EXPECT_EQ(Bits(actual), Bits(expected)) << actual << " vs " << expected;
}

inline NoxRealInterval R(double lo, double hi) { return NoxRealInterval{lo, hi}; }
inline NoxIntegerInterval I(int lo, int hi) { return NoxIntegerInterval{lo, hi}; }

/// Both bounds equal bit for bit (NaN equals the same NaN).
inline void ExpectReal(const NoxRealInterval &r, double lo, double hi) {
    ExpectSameReal(r.lower, lo);
    ExpectSameReal(r.upper, hi);
}

inline void ExpectReal(const NoxRealInterval &r, const NoxRealInterval &e) {
    ExpectReal(r, e.lower, e.upper);
}

inline void ExpectInteger(const NoxIntegerInterval &r, int lo, int hi) {
    EXPECT_EQ(r.lower, lo);
    EXPECT_EQ(r.upper, hi);
}

/// The entries of an enumeration, in order.
inline std::vector<int> Entries(const NoxIntegerEnum &e) {
    std::vector<int> v;
    for (int i = 0; i < e.GetSize(); ++i)
        v.push_back(e.Get(i));
    return v;
}

inline std::vector<double> Entries(const NoxRealEnum &e) {
    std::vector<double> v;
    for (int i = 0; i < e.GetSize(); ++i)
        v.push_back(e.Get(i));
    return v;
}

/// Two values of the same kind holding the same numbers, reals bit for bit.
inline void ExpectSameValue(const NoxValue &actual, const NoxValue &expected) {
    ASSERT_EQ(actual.GetType(), expected.GetType());
    switch (actual.GetType()) {
    case NoxIntegerType:
        EXPECT_EQ(actual.GetAsInteger(), expected.GetAsInteger());
        break;
    case NoxRealType:
        ExpectSameReal(actual.GetAsReal(), expected.GetAsReal());
        break;
    case NoxIntegerIntervalType:
        EXPECT_EQ(actual.GetAsIntegerInterval().lower, expected.GetAsIntegerInterval().lower);
        EXPECT_EQ(actual.GetAsIntegerInterval().upper, expected.GetAsIntegerInterval().upper);
        break;
    case NoxRealIntervalType:
        ExpectSameReal(actual.GetAsRealInterval().lower, expected.GetAsRealInterval().lower);
        ExpectSameReal(actual.GetAsRealInterval().upper, expected.GetAsRealInterval().upper);
        break;
    default:
        break;
    }
}

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

} // namespace nox_test

/// Reals compared bit for bit, reporting both values (NaN equals the same NaN, 0.0
/// differs from -0.0).
#define EXPECT_SAME_REAL(actual, expected)                                                     \
    EXPECT_EQ(nox_test::Bits(actual), nox_test::Bits(expected)) << (actual) << " vs " << (expected)

#endif
