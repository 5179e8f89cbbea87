// Assertion hook of the Nox library. The library has no output of its own: where an
// operation meets a case it does not support (an unsupported value conversion, for
// instance) it calls the hook with a condition text, a file text and a line number, then
// goes on with its documented fallback. The hook only reports; it never stops a
// computation.
#ifndef NOX_ASSERT_H
#define NOX_ASSERT_H

#include "NoxExport.h"

/// Signature of a hook: the condition text, the file text and the line number.
typedef void (*NoxAssertionHook)(const char *condition, const char *file, int line);

/// Installs `hook` and returns the previous one. Null restores the default hook, which
/// reports nothing; the default hook is returned as null, so that installing what this
/// function returned always restores the earlier state.
NOX_API NoxAssertionHook NoxSetAssertionHook(NoxAssertionHook hook);

/// Calls the installed hook with the given arguments.
NOX_API void NoxAssertionFailed(const char *condition, const char *file, int line);

#endif
