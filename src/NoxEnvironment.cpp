#include "NoxEnvironment.h"

#include "NoxPrivate.h"

NoxEnvironment::NoxEnvironment()
    : error(0), tolerance(1e-9), trigLower(-2.0 * NoxPi), trigUpper(2.0 * NoxPi),
      maxEnumSize(50), bbAlgorithm(NoxDefaultBBAlgorithm), bbPrecision(1e-5), maxBBCalls(0),
      bbAttempts(1), useUnimodalInterval(0), minimizeBBCalls(0), bbWidth(1.0),
      bbCacheSize(10000) {}
