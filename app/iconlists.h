#pragma once

/// Codes of the items in the list of exports.
enum exportCode
{
    EXPORT_EXCEL = 1,
    EXPORT_GLOBALLAB = 2,
    EXPORT_IMAGE = 3,
    EXPORT_REPORT = 4
};

/// Codes of the items in the list of functions.
enum regressionCode
{
    REG_SLOPE = 1,
    REG_LIN = 2,
    REG_QUAD = 3,
    REG_FFT = 4,
    REG_SMOOTH = 5,
    REG_DERIVATIVE = 6,
    REG_INTEGRAL = 7,
    REG_STATISTICS = 8,
    REG_FIT = 9,
    REG_RANKING = 10,
    REG_PREDICT = 11,
    REG_UNPREDICT = 12,
    REG_RIGHT = 13,
    REG_FORMULA = 14
};
