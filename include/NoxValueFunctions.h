// Arithmetic, elementary functions, four-valued logic and set operations on values.
// Every function takes the model's environment first, returns its result by value (or
// narrows its first argument) and reports failures only through the environment's error
// code; nothing throws.
#ifndef NOX_VALUE_FUNCTIONS_H
#define NOX_VALUE_FUNCTIONS_H

#include "NoxEnvironment.h"
#include "NoxValue.h"

// ---- Set operations and comparisons ----

// ---- Arithmetic, functions and logic ----

#endif
