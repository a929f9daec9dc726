#pragma once

#include <QVector>

#include "link/possibledevice.h"

class KeyTree;

/// How a version of Windows keeps the names of paired devices.
enum class PairedNames
{
    DeviceKeys,   ///< since Windows 8: a key per device
    LocalServices ///< before: a key per service of the computer
};

/// The loggers among the paired devices that `tree` records, in the order of its keys. A device without a
/// driver has no port and is left out; one with several services counts with the last of them.
QVector<possibleDevice> readPairedRegistry(const KeyTree& tree, PairedNames names);
