#pragma once

#include <QHash>
#include <QStringList>
#include <QVector>

#include <functional>

#include "link/portfailure.h"
#include "link/possibledevice.h"
#include "link/usbports.h"

class QObject;

/// What is known of the radio as a whole.
struct BluetoothState
{
    PortFailure hindrance =
        PortFailure::None; ///< NoService, NoAdapter or AdapterOff: no logger can be reached
    /// For each paired device, by its address, the adapters it is paired with that are switched on.
    QHash<QString, QStringList> adaptersOf;
};

/// Where a session learns which ports may lead to loggers. All may be called from any thread, never fail and
/// take half a second at most; what can't be read is missing from the result.
struct PortDiscovery
{
    std::function<QVector<possibleDevice>()> pairedDevices;
    std::function<QVector<SerialPortRecord>()> serialPorts;
    /// Null where the system has no service to ask.
    std::function<BluetoothState()> bluetooth = {};
    /// The address to which the system has bound a port, as 12 digits, whatever links lead to the port; empty
    /// if it is bound to none. Null where the system binds none.
    std::function<QString(const QString& portName)> boundAddress = {};
    /// Calls `changed` on the thread of `context`, until that goes, each time pairedDevices() or bluetooth()
    /// may have come to another answer. Null where the system does not tell.
    std::function<void(QObject* context, const std::function<void()>& changed)> watch = {};
};

/// Of this computer.
PortDiscovery systemPortDiscovery();
