#include "sensors/calibration.h"

#include <iterator>

namespace {

struct Row
{
    int breakpoint; ///< raw word
    float value;
    float multiplier; ///< value per raw unit, times the table's divisor
};

struct Table
{
    const Row* begin;
    const Row* end;
    int closing; ///< the breakpoint behind the last row
    float divisor;
};

template<size_t N> constexpr Table table(const Row (&rows)[N], int closing, float divisor)
{
    return {rows, rows + N, closing, divisor};
}

// clang-format off
constexpr Row extTempRows[] = {
    {62587, -40, 0.0056201F},
    {61698, -35, 0.0046082F},
    {60613, -30, 0.0038338F},
    {59309, -25, 0.0032394F},
    {57765, -20, 0.0027826F},
    {55968, -15, 0.0024331F},
    {53913, -10, 0.0021680F},
    {51607, -5, 0.0019704F},
    {49069, 0, 0.0018274F},
    {46333, 5, 0.0017310F},
    {43445, 10, 0.0016739F},
    {40458, 15, 0.0016514F},
    {37430, 20, 0.0016621F},
    {34422, 25, 0.0017029F},
    {31486, 30, 0.0017738F},
    {28667, 35, 0.0018773F},
    {26003, 40, 0.0020116F},
    {23518, 45, 0.0021819F},
    {21226, 50, 0.0023894F},
    {19134, 55, 0.0026435F},
    {17242, 60, 0.0029314F},
    {15537, 65, 0.0032898F},
    {14017, 70, 0.0036839F},
    {12659, 75, 0.0041677F},
    {11460, 80, 0.0046932F},
    {10394, 85, 0.0053328F},
    {9457, 90, 0.0060505F},
    {8630, 95, 0.0068394F},
    {7899, 100, 0.0078301F},
    {7261, 105, 0.0088086F},
    {6693, 110, 0.0101603F},
    {6201, 115, 0.0114695F},
    {5765, 120, 0.0128549F},
};
constexpr Table extTemp = table(extTempRows, 5376, 1);

constexpr Row ambTempNTCRows[] = {
    {53873, -10, 20202},
    {51398, -5, 18245},
    {48657, 0, 16857},
    {45691, 5, 15931},
    {42552, 10, 15403},
    {39306, 15, 15221},
    {36021, 20, 15366},
    {32769, 25, 15817},
    {29606, 30, 16576},
    {26590, 35, 17652},
    {23757, 40, 19091},
    {21135, 45, 20858},
};
constexpr Table ambTempNTC = table(ambTempNTCRows, 18738, 10000000);

constexpr Row extTempNTCRows[] = {
    {63772, -40, 76172},
    {63116, -35, 58802},
    {62265, -30, 45907},
    {61176, -25, 36750},
    {59816, -20, 29891},
    {58143, -15, 24959},
    {56140, -10, 21232},
    {53785, -5, 18606},
    {51097, 0, 16690},
    {48102, 5, 15422},
    {44860, 10, 14606},
    {41436, 15, 14249},
    {37927, 20, 14263},
    {34422, 25, 14612},
    {31000, 30, 15314},
    {27735, 35, 16410},
    {24688, 40, 17862},
    {21889, 45, 19760},
    {19358, 50, 22105},
    {17097, 55, 25076},
    {15103, 60, 28624},
    {13356, 65, 32893},
    {11836, 70, 38107},
    {10524, 75, 44296},
    {9395, 80, 51149},
    {8417, 85, 59727},
    {7580, 90, 69437},
    {6860, 95, 80817},
    {6241, 100, 94093},
    {5710, 105, 109290},
    {5253, 110, 126751},
    {4858, 115, 146877},
    {4518, 120, 171320},
};
constexpr Table extTempNTC = table(extTempNTCRows, 4226, 10000000);

constexpr Row quellmarkTempRows[] = {
    {52465, -25, 36619},
    {51100, -20, 31455},
    {49510, -15, 27505},
    {47692, -10, 24508},
    {45652, -5, 22274},
    {43408, 0, 20658},
    {40987, 5, 19567},
    {38432, 10, 18922},
    {35789, 15, 18668},
    {33111, 20, 18789},
    {30450, 25, 19250},
    {27853, 30, 20052},
    {25359, 35, 21221},
    {23003, 40, 22740},
    {20804, 45, 24665},
    {18777, 50, 27010},
    {16926, 55, 29883},
    {15253, 60, 33138},
    {13744, 65, 37189},
    {12399, 70, 41644},
    {11199, 75, 41644},
    {10137, 80, 53053},
    {9195, 85, 60284},
    {8366, 90, 68397},
    {7635, 95, 77315},
    {6988, 100, 88514},
    {6423, 105, 99576},
    {5921, 110, 114855},
    {5486, 115, 129656},
    {5100, 120, 145316},
};
constexpr Table quellmarkTemp = table(quellmarkTempRows, 4756, 10000000);

constexpr Row lightRows[] = {
    {0, 0, 54},
    {3714, 2, 215},
    {7427, 10, 269},
    {11141, 20, 2154},
    {14855, 100, 2693},
    {18568, 200, 21542},
    {22282, 1000, 26928},
    {25996, 2000, 215400},
    {29709, 10000, 269300},
    {33423, 20000, 1884900},
};
constexpr Table light = table(lightRows, 35280, 100000);

// clang-format on

// The loggers' own arithmetic: single precision in every step, and nothing fused.
double interpolate(const Table& table, const Row& row, int distance)
{
    const float multiplier = row.multiplier / table.divisor;
    const float rise = static_cast<float>(distance) * multiplier;
    return static_cast<double>(row.value + rise);
}

// Breakpoints fall from row to row. On a breakpoint the interval above it counts.
double descend(const Table& table, int raw)
{
    if (raw >= table.begin->breakpoint)
        return static_cast<double>(table.begin->value);
    if (raw < table.closing)
        raw = table.closing;
    const Row* next = table.begin + 1;
    while (next != table.end && next->breakpoint > raw)
        ++next;
    const Row& row = *std::prev(next);
    return interpolate(table, row, row.breakpoint - raw);
}

// Breakpoints rise from row to row. On a breakpoint the interval below it counts.
double ascend(const Table& table, int raw)
{
    if (raw == 0)
        return 0;
    if (raw > table.closing)
        raw = table.closing;
    const Row* next = table.begin + 1;
    while (next != table.end && next->breakpoint < raw)
        ++next;
    const Row& row = *std::prev(next);
    return interpolate(table, row, raw - row.breakpoint);
}

} // namespace

double calibrateExtTemp(int raw)
{
    return descend(extTemp, raw);
}
double calibrateAmbTempNTC(int raw)
{
    return descend(ambTempNTC, raw);
}
double calibrateExtTempNTC(int raw)
{
    return descend(extTempNTC, raw);
}
double calibrateQuellmarkTemp(int raw)
{
    return descend(quellmarkTemp, raw);
}
double calibrateLight(int raw)
{
    return ascend(light, raw);
}
