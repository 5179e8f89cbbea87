// The numerical settings of one model and its error code.
#ifndef NOX_ENVIRONMENT_H
#define NOX_ENVIRONMENT_H

#include "NoxTypes.h"

/// Settings of one model (tolerance, trigonometric limits, maximum enumeration size and
/// the black-box settings kept for the host) and the error code through which every
/// interval, enumeration and value operation reports failure. Operations receive the
/// environment as a const reference and still set error bits: the code is mutable.
/// No setter validates its argument.
class NOX_API NoxEnvironment {
public:
    /// Every field at its default: error 0, tolerance 1e-9, trigonometric limits -2*pi
    /// and 2*pi, maximum enumeration size 50, black-box algorithm 0, precision 1e-5,
    /// 0 calls, 1 attempt, both flags 0, width 1.0, cache size 10000.
    NoxEnvironment();

    /// ORs `code` into the error code (0 changes nothing).
    void SetError(int code) const { error |= code; }
    /// Sets the error code to 0.
    void ClearError() const { error = 0; }
    /// Returns the error code, a set of NoxErrorCode bits.
    int GetError() const { return error; }

    /// Comparison tolerance of the value comparisons and set operations.
    void SetTolerance(double tol) { tolerance = tol; }
    double GetTolerance() const { return tolerance; }

    /// Range in which the inverse trigonometric functions place their results when the
    /// caller asks for the whole line. Stored as given, without checking the order.
    void SetTrigonometricLimits(double lower, double upper) {
        trigLower = lower;
        trigUpper = upper;
    }
    void GetTrigonometricLimits(double &lower, double &upper) const {
        lower = trigLower;
        upper = trigUpper;
    }

    /// Largest number of members an enumeration keeps as a list.
    void SetMaxEnumSize(int size) { maxEnumSize = size; }
    int GetMaxEnumSize() const { return maxEnumSize; }

    // Black-box settings: stored for the host, read by no operation of the library.
    void SetBBAlgorithm(NoxBlackBoxAlgorithm algorithm) { bbAlgorithm = algorithm; }
    NoxBlackBoxAlgorithm GetBBAlgorithm() const { return bbAlgorithm; }
    void SetBBPrecision(double precision) { bbPrecision = precision; }
    double GetBBPrecision() const { return bbPrecision; }
    void SetMaxNumberOfBBCalls(int calls) { maxBBCalls = calls; }
    int GetMaxNumberOfBBCalls() const { return maxBBCalls; }
    void SetNumberOfBBAttempts(int attempts) { bbAttempts = attempts; }
    int GetNumberOfBBAttempts() const { return bbAttempts; }
    void SetUseUnimodalInterval(unsigned char flag) { useUnimodalInterval = flag; }
    unsigned char GetUseUnimodalInterval() const { return useUnimodalInterval; }
    void SetMinimizeNumberOfBBCalls(unsigned char flag) { minimizeBBCalls = flag; }
    unsigned char GetMinimizeNumberOfBBCalls() const { return minimizeBBCalls; }
    void SetBBWidth(double width) { bbWidth = width; }
    double GetBBWidth() const { return bbWidth; }
    void SetBBCacheSize(int size) { bbCacheSize = size; }
    int GetBBCacheSize() const { return bbCacheSize; }

private:
    mutable int error;
    double tolerance;
    double trigLower;
    double trigUpper;
    int maxEnumSize;
    NoxBlackBoxAlgorithm bbAlgorithm;
    double bbPrecision;
    int maxBBCalls;
    int bbAttempts;
    unsigned char useUnimodalInterval;
    unsigned char minimizeBBCalls;
    double bbWidth;
    int bbCacheSize;
};

#endif
