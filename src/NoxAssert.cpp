#include "NoxAssert.h"

#include <atomic>

namespace {
// Null stands for the default hook, which reports nothing. Atomic so that a host may
// install a hook while models on other threads compute.
std::atomic<NoxAssertionHook> g_hook{nullptr};
} // namespace

NoxAssertionHook NoxSetAssertionHook(NoxAssertionHook hook) { return g_hook.exchange(hook); }

void NoxAssertionFailed(const char *condition, const char *file, int line) {
    NoxAssertionHook hook = g_hook.load();
    if (hook != nullptr)
        hook(condition, file, line);
}
