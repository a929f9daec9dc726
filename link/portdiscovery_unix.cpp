#include "link/portdiscovery.h"

#include "link/bluezdevices.h"
#include "link/linkedports.h"
#include "link/serialworker.h"
#include "link/sessionport.h"
#include "link/systemports.h"

PortDiscovery systemPortDiscovery()
{
    const auto pairedDevices = [] {
        QVector<possibleDevice> devices = pairedBluezDevices(systemTerminals());
        addLinkedPorts(readLinkedPorts(systemLinkPlaces()), devices);
        return devices;
    };
    return {pairedDevices, readSerialPorts};
}

SerialPortFactory systemPortFactory()
{
    return [](const QString& name, SerialPort::QueryMode mode) -> std::unique_ptr<SerialPort> {
        return std::make_unique<SessionPort>(name, mode, SerialWorker::kind(name));
    };
}
