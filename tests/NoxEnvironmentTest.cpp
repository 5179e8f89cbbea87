#include <NoxEnvironment.h>

#include "NoxPrivate.h"

#include <gtest/gtest.h>

#include <type_traits>

TEST(Environment, ConstructorSetsEveryDefault) {
    const NoxEnvironment env;
    volatile double pi = NoxPi;
    double lo = 0, hi = 0;
    env.GetTrigonometricLimits(lo, hi);
    EXPECT_EQ(env.GetError(), 0);
    EXPECT_EQ(env.GetTolerance(), 1e-9);
    EXPECT_EQ(lo, -2.0 * pi);
    EXPECT_EQ(hi, 2.0 * pi);
    EXPECT_EQ(env.GetMaxEnumSize(), 50);
    EXPECT_EQ(env.GetBBAlgorithm(), 0);
    EXPECT_EQ(env.GetBBPrecision(), 1e-5);
    EXPECT_EQ(env.GetMaxNumberOfBBCalls(), 0);
    EXPECT_EQ(env.GetNumberOfBBAttempts(), 1);
    EXPECT_EQ(env.GetUseUnimodalInterval(), 0);
    EXPECT_EQ(env.GetMinimizeNumberOfBBCalls(), 0);
    EXPECT_EQ(env.GetBBWidth(), 1.0);
    EXPECT_EQ(env.GetBBCacheSize(), 10000);
}

TEST(Environment, TrigonometricLimitsAreTwoPiOfTheSharedConstant) {
    const NoxEnvironment env;
    double lo = 0, hi = 0;
    env.GetTrigonometricLimits(lo, hi);
    EXPECT_EQ(hi, 6.283185307179586);
    EXPECT_EQ(lo, -6.283185307179586);
    EXPECT_EQ(hi, NoxTwoPi);
}

TEST(Environment, SetErrorOrsBitsIntoTheCode) {
    const NoxEnvironment env;
    env.SetError(1);
    env.SetError(2);
    EXPECT_EQ(env.GetError(), 3);
    env.SetError(0);
    EXPECT_EQ(env.GetError(), 3);
    env.SetError(NoxErrorEmptyResult);
    EXPECT_EQ(env.GetError(), 3);
}

TEST(Environment, ClearErrorYieldsZero) {
    const NoxEnvironment env;
    env.SetError(NoxErrorBadOperandType);
    env.ClearError();
    EXPECT_EQ(env.GetError(), 0);
}

TEST(Environment, SetErrorWithZeroOnCleanCodeChangesNothing) {
    const NoxEnvironment env;
    env.SetError(0);
    EXPECT_EQ(env.GetError(), 0);
}

TEST(Environment, TrigonometricLimitsAreStoredWithoutCheckingOrder) {
    NoxEnvironment env;
    env.SetTrigonometricLimits(3, -3);
    double lo = 0, hi = 0;
    env.GetTrigonometricLimits(lo, hi);
    EXPECT_EQ(lo, 3);
    EXPECT_EQ(hi, -3);
}

TEST(Environment, SettersStoreTheirArgumentsUnvalidated) {
    NoxEnvironment env;
    env.SetTolerance(-1.5);
    env.SetMaxEnumSize(-7);
    env.SetBBAlgorithm(static_cast<NoxBlackBoxAlgorithm>(42));
    env.SetBBPrecision(0.25);
    env.SetMaxNumberOfBBCalls(123);
    env.SetNumberOfBBAttempts(-4);
    env.SetUseUnimodalInterval(7);
    env.SetMinimizeNumberOfBBCalls(1);
    env.SetBBWidth(-2.5);
    env.SetBBCacheSize(0);
    EXPECT_EQ(env.GetTolerance(), -1.5);
    EXPECT_EQ(env.GetMaxEnumSize(), -7);
    EXPECT_EQ(env.GetBBAlgorithm(), 42);
    EXPECT_EQ(env.GetBBPrecision(), 0.25);
    EXPECT_EQ(env.GetMaxNumberOfBBCalls(), 123);
    EXPECT_EQ(env.GetNumberOfBBAttempts(), -4);
    EXPECT_EQ(env.GetUseUnimodalInterval(), 7);
    EXPECT_EQ(env.GetMinimizeNumberOfBBCalls(), 1);
    EXPECT_EQ(env.GetBBWidth(), -2.5);
    EXPECT_EQ(env.GetBBCacheSize(), 0);
}

TEST(Environment, CopyCarriesEveryFieldWithTheErrorCode) {
    NoxEnvironment env;
    env.SetTolerance(1e-6);
    env.SetMaxEnumSize(9);
    env.SetBBCacheSize(5);
    env.SetError(2);
    NoxEnvironment copy(env);
    EXPECT_EQ(copy.GetTolerance(), 1e-6);
    EXPECT_EQ(copy.GetMaxEnumSize(), 9);
    EXPECT_EQ(copy.GetBBCacheSize(), 5);
    EXPECT_EQ(copy.GetError(), 2);
    NoxEnvironment assigned;
    assigned = env;
    EXPECT_EQ(assigned.GetError(), 2);
    EXPECT_EQ(assigned.GetTolerance(), 1e-6);
}

TEST(Environment, IsAPlainClassWithoutVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic<NoxEnvironment>::value);
}
