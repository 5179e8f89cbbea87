#include <NoxAssert.h>

#include <gtest/gtest.h>

#include <string>

namespace {
std::string g_condition, g_file;
int g_line = 0;
int g_calls = 0;
void Recorder(const char *condition, const char *file, int line) {
    g_condition = condition;
    g_file = file;
    g_line = line;
    ++g_calls;
}
void Other(const char *, const char *, int) {}
} // namespace

TEST(AssertionHook, DefaultHookReportsNothingAndReturns) {
    NoxAssertionHook previous = NoxSetAssertionHook(nullptr);
    NoxAssertionFailed("0", "src/NoxValue", 461);
    NoxSetAssertionHook(previous);
    SUCCEED();
}

TEST(AssertionHook, InstalledHookReceivesConditionFileAndLine) {
    g_calls = 0;
    NoxAssertionHook previous = NoxSetAssertionHook(&Recorder);
    NoxAssertionFailed("0", "src/NoxValue", 524);
    NoxSetAssertionHook(previous);
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(g_condition, "0");
    EXPECT_EQ(g_file, "src/NoxValue");
    EXPECT_EQ(g_line, 524);
}

TEST(AssertionHook, SetReturnsThePreviousHookAndNullRestoresTheDefault) {
    NoxAssertionHook original = NoxSetAssertionHook(&Recorder);
    EXPECT_EQ(NoxSetAssertionHook(&Other), &Recorder);
    EXPECT_EQ(NoxSetAssertionHook(nullptr), &Other);
    g_calls = 0;
    NoxAssertionFailed("0", "f", 1);
    EXPECT_EQ(g_calls, 0);
    EXPECT_EQ(NoxSetAssertionHook(original), nullptr);
}
