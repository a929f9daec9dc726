#include "link/portdiscovery.h"

#include <QOperatingSystemVersion>

#include "link/pairedregistry.h"
#include "link/registrytree.h"
#include "link/serialworker.h"
#include "link/sessionport.h"
#include "link/systemports.h"

PortDiscovery systemPortDiscovery()
{
    const auto pairedDevices = [] {
        const bool hasDeviceKeys = QOperatingSystemVersion::current() >= QOperatingSystemVersion::Windows8;
        return readPairedRegistry(RegistryTree(),
                                  hasDeviceKeys ? PairedNames::DeviceKeys : PairedNames::LocalServices);
    };
    return {pairedDevices, readSerialPorts};
}

SerialPortFactory systemPortFactory()
{
    return [](const QString& name, SerialPort::QueryMode mode) -> std::unique_ptr<SerialPort> {
        return std::make_unique<SessionPort>(name, mode, SerialWorker::kind(name));
    };
}
