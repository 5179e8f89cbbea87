// Umbrella header of the Nox library: every public declaration.
#ifndef NOX_H
#define NOX_H

#include "NoxAssert.h"
#include "NoxBlackBox.h"
#include "NoxEnum.h"
#include "NoxEnvironment.h"
#include "NoxExport.h"
#include "NoxExpression.h"
#include "NoxFactory.h"
#include "NoxInterval.h"
#include "NoxIntervalFunctions.h"
#include "NoxOperators.h"
#include "NoxTypes.h"
#include "NoxValue.h"
#include "NoxValueFunctions.h"

#endif
