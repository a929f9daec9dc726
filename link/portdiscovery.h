#pragma once

#include <QVector>

#include <functional>

#include "link/possibledevice.h"
#include "link/usbports.h"

/// Where a session learns which ports may lead to loggers. Both may be called from any thread, never fail and
/// take half a second at most; what can't be read is missing from the result.
struct PortDiscovery
{
    std::function<QVector<possibleDevice>()> pairedDevices;
    std::function<QVector<SerialPortRecord>()> serialPorts;
};

/// Of this computer.
PortDiscovery systemPortDiscovery();
