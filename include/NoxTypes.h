// Shared enumerations of the Nox library: value kinds, four-valued booleans,
// enumeration representations, expression and equation types, black-box algorithms
// and the bits of the environment's error code.
//
// Every enumeration has the fixed underlying type int, so that codes outside the listed
// values are representable and reach the library's documented fallbacks.
#ifndef NOX_TYPES_H
#define NOX_TYPES_H

#include "NoxExport.h"

/// Bits of NoxEnvironment's error code; both may be set at once.
enum NoxErrorCode : int {
    /// No admissible result: empty interval, enumeration or value, argument outside a
    /// function's domain, real beyond +-NoxMaxReal, integer bound reaching NoxMaxInteger.
    NoxErrorEmptyResult = 1,
    /// The operation is not defined for the kinds of its operands.
    NoxErrorBadOperandType = 2
};

/// Kind held by a NoxValue.
enum NoxValueType : int {
    NoxUndefinedType = 0,
    NoxIntegerType = 1,
    NoxRealType = 2,
    NoxIntegerIntervalType = 3,
    NoxRealIntervalType = 4,
    NoxIntegerEnumType = 5,
    NoxRealEnumType = 6,
    NoxBooleanType = 7
};

/// Four-valued logic: false, true, either (any) and neither (nil).
enum NoxBoolean : int { NoxFalse = 0, NoxTrue = 1, NoxBoolean_Any = 2, NoxBoolean_Nil = 3 };

/// Representation state of an integer or real enumeration.
enum NoxEnumRep : int {
    NoxEnumList = 0,  ///< the members are listed in increasing order
    NoxEnumRange = 1, ///< the members are every value between the first and last entry
    NoxEnumAny = 2,   ///< every value
    NoxEnumNil = 3    ///< no value
};

/// Kind of an expression node. The numbers are fixed; no node has type 0.
enum NoxExpressionType : int {
    NoxVariableExpr = 1,
    NoxConstantExpr = 2,
    NoxNotExpr = 3,
    NoxOrExpr = 4,
    NoxAndExpr = 5,
    NoxEqualExpr = 6,
    NoxNotEqualExpr = 7,
    NoxImplicationExpr = 8,
    NoxSumExpr = 9,
    NoxProductExpr = 10,
    NoxQuotientExpr = 11,
    NoxPowerExpr = 12,
    NoxRootExpr = 13,
    NoxSqrtExpr = 14,
    NoxLogExpr = 15,
    NoxLnExpr = 16,
    NoxExpExpr = 17,
    NoxSinExpr = 18,
    NoxCosExpr = 19,
    NoxTanExpr = 20,
    NoxAsinExpr = 21,
    NoxAcosExpr = 22,
    NoxAtanExpr = 23,
    NoxSinhExpr = 24,
    NoxCoshExpr = 25,
    NoxTanhExpr = 26,
    NoxASinhExpr = 27,
    NoxACoshExpr = 28,
    NoxATanhExpr = 29,
    NoxAbsExpr = 30,
    NoxCeilExpr = 31,
    NoxFloorExpr = 32,
    NoxRoundExpr = 33,
    NoxModExpr = 34,
    NoxMinExpr = 35,
    NoxMaxExpr = 36,
    NoxBlackBoxExpr = 37
};

/// Type of an equation. Stored and returned unchanged; the host gives the values their
/// meaning and may use any int code.
enum NoxEquationType : int { NoxDefaultEquation = 0 };

/// Enclosure algorithm the host uses for black boxes. The library stores it only; the
/// host defines further codes.
enum NoxBlackBoxAlgorithm : int { NoxDefaultBBAlgorithm = 0 };

#endif
