#pragma once

#include <QSettings>

/// The two per-user settings stores and the keys that more than one room reads. A store is opened where it is
/// used and dropped at once, so that each use sees what the last one wrote.
namespace Settings {

/// Everything but the data folders.
QSettings mainStore();
/// The data folders only.
QSettings pathsStore();

constexpr const char* logging = "logging";                   // bool, false
constexpr const char* version = "version";                   // string, "Kormelin"; the edition
constexpr const char* vestrelPanel = "VestrelPanel";         // bool, false; panel mode for one start
constexpr const char* language = "language";                 // string, "def"
constexpr const char* advanced = "advanced";                 // bool, false; all setup pages are shown
constexpr const char* selfTest = "SelfTest";                 // bool, false; shows the self test of a logger
constexpr const char* simulations = "simulations";           // bool, true
constexpr const char* numDefined = "colab/num_defined";      // int, 4; loggers in use
constexpr const char* unitsCelsius = "units/celsius";        // bool, true
constexpr const char* unitsBaroHpa = "units/baro_hpa";       // bool, false
constexpr const char* unitsAirKpa = "units/air_kpa";         // bool, true
constexpr const char* unitsMeter = "units/meter";            // bool, true
constexpr const char* unitsKmh = "units/kmh";                // bool, true
constexpr const char* unitsMph = "units/mph";                // bool, true; counts while kmh is false
constexpr const char* hideGrid = "shot/hidegrid";            // bool, false
constexpr const char* curveWidth = "shot/width";             // int, 2
constexpr const char* curveWidthActive = "shot/widthactive"; // int, 4
constexpr const char* derivWindow = "derivative/window"; // int, 3; samples that a derivative is fitted over
constexpr const char* runsMemory = "runs/memory";        // int, 2048; megabytes that kept runs may take
constexpr const char* runsOnDisk = "runs/onDisk"; // int, 4; megabytes from which one is laid on the disk
constexpr const char* valuesBefore =
    "values/beforeRun";                             // bool, true; idle loggers are asked what they measure
constexpr const char* imageFolder = "paths/images"; // string, the program's folder; pictures of balloons

/// "BT/logger1" to "BT/logger8": the serial port of logger `index`, 0 to 7.
QString loggerKey(int index);
/// "BT/address1" to "BT/address8": the address of the Bluetooth device that is logger `index`, 12 hexadecimal
/// digits; empty for what is no such device. It stays when the system counts its ports anew.
QString addressKey(int index);
/// "BT/name1" to "BT/name8": the group name of logger `index`, 0 to 7.
QString groupKey(int index);

/// True when the edition is "VestrelJunior".
bool isJuniorEdition();

} // namespace Settings
