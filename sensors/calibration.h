#pragma once

// Piecewise linear tables of the sensors that are not linear: a raw word, 0 to 65535, to the base unit. Words
// beyond a table's ends count as the end.

double calibrateExtTemp(int raw);
double calibrateAmbTempNTC(int raw);
double calibrateExtTempNTC(int raw);
double calibrateQuellmarkTemp(int raw);
double calibrateLight(int raw);
