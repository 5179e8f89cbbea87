// Interval arithmetic, powers, roots and elementary functions on integer and real
// intervals. Every function takes the model's environment first, reports failures by
// setting bits of its error code and returns the documented fallback; nothing throws.
#ifndef NOX_INTERVAL_FUNCTIONS_H
#define NOX_INTERVAL_FUNCTIONS_H

#include "NoxEnvironment.h"
#include "NoxInterval.h"

// ---- Arithmetic: sum, difference, product, quotient, minimum, maximum, abs, modulo ----

// ---- Powers and roots ----

// ---- Elementary functions ----

#endif
