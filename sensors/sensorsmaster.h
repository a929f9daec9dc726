#pragma once

#include "sensors/sensorids.h"

/// One row of the catalogue. Names, units and colour icons are English and go through the translator, context
/// "Sensor"; a unit in brackets is a translation key whose brackets are not shown.
struct SensorRow
{
    int ID;
    const char* name;
    const char* uname;
    double min; ///< range in the base unit; of a Vernier sensor the scale of its conversion
    double max;
    const char* iconNameGray;
    const char* iconNameColor;
    double demoVal;
    int prec;
    bool showCurve;
    int numBytes; ///< bytes of one sample on the wire
    int nSens;    ///< 1 plain, more a composite with so many children, 0 a child reached by its parent only
    int virtualIDs[4];
};

/// The first row of the catalogue. The rows end with SENSOR_LAST, whose other fields are empty.
const SensorRow* sensorsMaster();
/// The row of a sensor, null for an ID without one.
const SensorRow* sensorRow(int id);
