#!/usr/bin/env python3
"""Works out every value and display text of the sensor catalogue a second time and compares them, bit by
bit, with what the tool sensor-values prints. Shares nothing with the program. Usage: conversion_reference.py TOOL"""

import math
import struct
import subprocess
import sys
from array import array

# Rows in the catalogue's order: ID, min, max, decimals.
CATALOGUE = """
    1 0 12.5 2;  2 0 14 2;  3 0 30 2;  4 500 1150 1;  5 -70 380 1;
    6 0 100 1;  7 0 0 1;  8 -90 90 8;  9 -180 180 8;  10 0 200 1;
    11 0 360 1;  12 -10 50 1;  13 -20 125 1;  14 0 100 1;  15 0 100 1;
    16 0 100 1;  17 0 100 1;  18 -10 50 1;  19 -20 125 1;  20 0 55000 0;
    21 0 100 1;  22 0 100 0;  23 30 200 0;  24 0 3.3 3;  25 0 10 3;
    26 0 300 1;  27 -30 30 2;  28 -1 1 3;  29 0 100 1;  30 -10 50 1;
    31 0 200 1;  32 0 5 2;  33 0 3.3 2;  34 -500 500 1;  35 -8 8 3;
    36 -8 8 2;  37 -8 8 2;  38 -8 8 2;  39 0 5 2;  40 0 25 2;
    41 0 24 2;  42 -200 1350 1;  47 50 115 2;  48 -400 400 1;  49 -30 30 2;
    50 0 1 3;  99 0 5 1;  101 -250 250 1;  102 -220 220 1;  103 -10 10 2;
    104 -10 10 2;  105 -0.3 0.3 4;  106 0 5 0;  107 -10 110 1;  108 0 5000 0;
    109 -12 12 2;  110 -30 30 1;  111 -50 950 1;  112 0 5 2;  113 0 5 2;
    114 30 200 0;  250 -50 50 1;  251 -5 5 2;  252 -8 8 2;  253 -8 8 2;
    254 -8 8 2;  200 0 20 1;  201 -20 20 1;  202 0 1000 1;  203 -180 180 1;
    300 -76.62 75.68 2;  301 -10 40 2;  302 0.809 1.194 2;  303 0 280.55 2;  304 -82.5 82.5 2;
    305 0 12500 2;  306 0 125000 2;  307 0 142.855 2;  308 0 328.5 2;  309 0 4800 2;
    310 0 45000 2;  311 -0.625 0.625 2;  312 -0.327 0.327 2;  313 0 5 2;  314 -559.793 1774.582 2;
    315 0 5 2;  316 -12.25 12.25 2;  317 -61.25 61.25 2;  318 -25.86 232.69 2;  319 0 770 2;
    320 0 8460 2;  321 0 192120 2;  322 -0.32 0.48 2;  323 -8.063 8.062 2;  324 0 5 2;
    325 0 32.8125 2;  326 -559.793 1774.582 2;  327 -5.47 13.72 2;  328 0 5 2;  329 -25.81 126.34 2;
    330 0 1935 2;  331 0 81.5 2;  332 -17.9672 17.9673 2;  333 0 500 2;  334 -42 498 2;
    335 0 19700 2;  336 0 1020 2;  337 -6.25 6.25 2;
"""
ROWS = [(int(i), float(lo), float(hi), int(prec))
        for i, lo, hi, prec in (row.split() for row in CATALOGUE.split(";") if row.strip())]
RANGE = {row[0]: row[1:3] for row in ROWS}

# Divisor of the multipliers; breakpoint: value, multiplier; and the closing breakpoint.
TABLES = {
    13: (1, """
        62587: -40, 0.0056201; 61698: -35, 0.0046082; 60613: -30, 0.0038338; 59309: -25, 0.0032394;
        57765: -20, 0.0027826; 55968: -15, 0.0024331; 53913: -10, 0.0021680; 51607: -5, 0.0019704;
        49069: 0, 0.0018274; 46333: 5, 0.0017310; 43445: 10, 0.0016739; 40458: 15, 0.0016514;
        37430: 20, 0.0016621; 34422: 25, 0.0017029; 31486: 30, 0.0017738; 28667: 35, 0.0018773;
        26003: 40, 0.0020116; 23518: 45, 0.0021819; 21226: 50, 0.0023894; 19134: 55, 0.0026435;
        17242: 60, 0.0029314; 15537: 65, 0.0032898; 14017: 70, 0.0036839; 12659: 75, 0.0041677;
        11460: 80, 0.0046932; 10394: 85, 0.0053328; 9457: 90, 0.0060505; 8630: 95, 0.0068394;
        7899: 100, 0.0078301; 7261: 105, 0.0088086; 6693: 110, 0.0101603; 6201: 115, 0.0114695;
        5765: 120, 0.0128549; closing 5376"""),
    18: (10000000, """
        53873: -10, 20202; 51398: -5, 18245; 48657: 0, 16857; 45691: 5, 15931; 42552: 10, 15403;
        39306: 15, 15221; 36021: 20, 15366; 32769: 25, 15817; 29606: 30, 16576; 26590: 35, 17652;
        23757: 40, 19091; 21135: 45, 20858; closing 18738"""),
    19: (10000000, """
        63772: -40, 76172; 63116: -35, 58802; 62265: -30, 45907; 61176: -25, 36750;
        59816: -20, 29891; 58143: -15, 24959; 56140: -10, 21232; 53785: -5, 18606; 51097: 0, 16690;
        48102: 5, 15422; 44860: 10, 14606; 41436: 15, 14249; 37927: 20, 14263; 34422: 25, 14612;
        31000: 30, 15314; 27735: 35, 16410; 24688: 40, 17862; 21889: 45, 19760; 19358: 50, 22105;
        17097: 55, 25076; 15103: 60, 28624; 13356: 65, 32893; 11836: 70, 38107; 10524: 75, 44296;
        9395: 80, 51149; 8417: 85, 59727; 7580: 90, 69437; 6860: 95, 80817; 6241: 100, 94093;
        5710: 105, 109290; 5253: 110, 126751; 4858: 115, 146877; 4518: 120, 171320; closing 4226"""),
    107: (10000000, """
        52465: -25, 36619; 51100: -20, 31455; 49510: -15, 27505; 47692: -10, 24508;
        45652: -5, 22274; 43408: 0, 20658; 40987: 5, 19567; 38432: 10, 18922; 35789: 15, 18668;
        33111: 20, 18789; 30450: 25, 19250; 27853: 30, 20052; 25359: 35, 21221; 23003: 40, 22740;
        20804: 45, 24665; 18777: 50, 27010; 16926: 55, 29883; 15253: 60, 33138; 13744: 65, 37189;
        12399: 70, 41644; 11199: 75, 41644; 10137: 80, 53053; 9195: 85, 60284; 8366: 90, 68397;
        7635: 95, 77315; 6988: 100, 88514; 6423: 105, 99576; 5921: 110, 114855; 5486: 115, 129656;
        5100: 120, 145316; closing 4756"""),
    20: (100000, """
        0: 0, 54; 3714: 2, 215; 7427: 10, 269; 11141: 20, 2154; 14855: 100, 2693;
        18568: 200, 21542; 22282: 1000, 26928; 25996: 2000, 215400; 29709: 10000, 269300;
        33423: 20000, 1884900; closing 35280"""),
}


def single(x):
    return struct.unpack("f", struct.pack("f", x))[0]


def calibration(sensor):
    """The function of one calibration table: single precision, the distance a whole number."""
    divisor, rows_text = TABLES[sensor]
    *rows, closing = rows_text.split(";")
    points, values, factors = [], [], []
    for row in rows:
        point, rest = row.split(":")
        value, factor = rest.split(",")
        points.append(int(point))
        values.append(single(float(value)))
        factors.append(single(float(factor) / divisor))
    end = int(closing.split()[1])
    points.append(end)

    def descending(word):
        if word >= points[0]:
            return values[0]
        word = max(word, end)
        row = next(i for i, point in enumerate(points) if point <= word) - 1
        return single(values[row] + single((points[row] - word) * factors[row]))

    def ascending(word):
        if word == 0:
            return 0.0
        word = min(word, end)
        row = next(i for i, point in enumerate(points) if point >= word) - 1
        return single(values[row] + single((word - points[row]) * factors[row]))

    return ascending if sensor == 20 else descending


def signed(val):
    return val - 65536 if val >= 32768 else val


def acceleration(val):
    bits = val >> 4
    return ((-7987 if bits & 0x800 else 0) + 3.9 * (bits & 0x7FF)) / 1000


def vernier(sensor):
    low, high = RANGE[sensor]
    if sensor in (311, 316, 317, 327, 337):
        low, high = high, low
    return lambda val: low + (val * 92 / 10000) / 100 / 5 * (high - low)


def force(sensor):
    low, high = RANGE[sensor]
    return lambda val: min(max((val - 32768) / 400, low), high)


def linear(zero, numerator, tail):
    return lambda val: (val - zero) * numerator / 10000 / tail


LINEAR = {27: (32768, 1740, 100), 28: (32768, 542, 1000), 34: (32768, 2840, 10), 49: (32768, 1084, 100),
          101: (27306, 1161, 10), 102: (27306, 805, 10), 103: (27306, 415, 100), 104: (27306, 458, 100),
          105: (27306, 77, 1000), 109: (27306, 505, 100), 110: (27306, 119, 10)}
LINEAR.update({sensor: (0, 92, 100) for sensor in (32, 39, 106, 112, 113)})
OTHERS = {
    1: lambda val: max(0.0, (val - 21845) * 458 * 150 / 1000000 / 100),
    5: lambda val: val / 50 - 273.15,
    12: lambda val: val * 0.01 - 39.7,
    24: lambda val: val * 3.3 / 65536,
    25: lambda val: 0.0 if val > 10000 else val / 1000,
    29: lambda val: ((min(max(val, 12288), 56848) - 12288) * 224 / 10000) / 10,
    33: lambda val: val * 3.3 / 65535,
    50: lambda val: val * 0.5 / 28558,
    108: lambda val: min(5000.0, val * 0.183),
}
FAMILIES = [
    ((2, 3), lambda val: val / 1000),
    ((4, 6, 21, 31), lambda val: val / 10),
    ((23, 114), lambda val: 0.0 if val > 1000 else float(val)),
    ((30, 42, 48, 111), lambda val: signed(val) / 10),
    ((36, 37, 38, 252, 253, 254), acceleration),
]


def conversion(sensor, alternative):
    if sensor >= 300:
        return vernier(sensor)
    if sensor in TABLES:
        return calibration(sensor)
    if sensor in LINEAR:
        return linear(*LINEAR[sensor])
    if sensor in OTHERS:
        return OTHERS[sensor]
    if sensor in (250, 251):
        return force(sensor)
    if sensor == 26:
        return (lambda val: val / 10) if alternative else (lambda val: min(val / 10, 300.0))
    for members, function in FAMILIES:
        if sensor in members:
            return function
    return lambda val: val / 100


def same(x):
    return x


def units(sensor, unit_set):
    """To the unit shown, back again, and the decimals if the unit changes them."""
    if unit_set == 0:
        return same, same, None
    if sensor in (5, 12, 13, 18, 19, 30, 107):
        return (lambda x: x * 9 / 5 + 32), (lambda x: (x - 32) * 5 / 9), 1
    if sensor == 25:
        return (lambda x: x * 3.2808399), (lambda x: x / 3.2808399), 2
    if sensor in (26, 47, 318):
        return (lambda x: x * 0.1450377), (lambda x: x / 0.14503773773020923), 2
    if sensor == 10:
        factor = 0.621371192 if unit_set == 1 else 0.277777778
        return (lambda x: x * factor), (lambda x: x / factor), 1
    return same, same, 2 if sensor == 4 else None


def text(sensor, shown, decimals):
    if sensor in (8, 9):
        if shown == 0:
            return "----"
        letter = ("N" if shown > 0 else "S") if sensor == 8 else ("E" if shown > 0 else "W")
        degrees = math.floor(abs(shown))
        rest = (abs(shown) - degrees) * 60
        minutes = math.floor(rest)
        seconds = "%.2f" % ((rest - minutes) * 60)
        if seconds == "60.00":
            seconds = "0.00"
            degrees, minutes = (degrees, minutes + 1) if minutes < 59 else (degrees + 1, 0)
        return "%d\u00b0%02d'%s''%s" % (degrees, minutes, seconds, letter)
    return "%.*f" % (decimals, math.floor(shown * 10 ** decimals) / 10 ** decimals)


def compare_values(tool):
    output = subprocess.run([tool], stdout=subprocess.PIPE, check=True).stdout
    size = 65536 * 8
    if len(output) != size * len(ROWS):
        yield "%d catalogue rows printed, %d expected" % (len(output) // size, len(ROWS))
        return
    for place, (sensor, *_) in enumerate(ROWS):
        theirs = array("d", output[place * size:(place + 1) * size])
        if sys.byteorder == "big":
            theirs.byteswap()
        ours = array("d", map(conversion(sensor, False), range(65536)))
        if theirs != ours:
            word = next(i for i in range(65536) if theirs[i] != ours[i])
            yield "ID %d, word %d: %r, expected %r" % (sensor, word, theirs[word], ours[word])


def compare_texts(tool, language, sign):
    output = subprocess.run([tool, "--texts", language], stdout=subprocess.PIPE, check=True).stdout
    lines = output.decode().splitlines()
    if len(lines) != 3 * len(ROWS) * (256 + 12):
        yield "%s: %d lines of texts" % (language, len(lines))
    own_decimals = {row[0]: row[3] for row in ROWS}
    for line in lines:
        unit_set, sensor, word, base, shown, back, label = line.split("\t")
        sensor = int(sensor)
        there, home, decimals = units(sensor, int(unit_set))
        if decimals is None:
            decimals = own_decimals[sensor]
        value = float(shown)
        if word != "-":
            raw = float(conversion(sensor, there is not same)(int(word)))
            if raw != float(base) or there(raw) != value:
                yield "%s: %r, expected %r, %r" % (language, line, raw, there(raw))
        expected = text(sensor, value, decimals).replace(".", sign)
        if home(value) != float(back) or label != expected:
            yield "%s: %r, expected %r, %r" % (language, line, home(value), expected)


def main():
    tool = sys.argv[1]
    faults = [*compare_values(tool), *compare_texts(tool, "en", "."), *compare_texts(tool, "pl", ",")]
    for fault in faults[:40]:
        print(fault)
    print("%d catalogue rows, %d disagreements" % (len(ROWS), len(faults)))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
