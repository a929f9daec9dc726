#include "link/portdiscovery.h"

#include <QOperatingSystemVersion>

#include "link/pairedregistry.h"
#include "link/registrytree.h"

PortDiscovery systemPortDiscovery()
{
    const auto pairedDevices = [] {
        const bool hasDeviceKeys = QOperatingSystemVersion::current() >= QOperatingSystemVersion::Windows8;
        return readPairedRegistry(RegistryTree(),
                                  hasDeviceKeys ? PairedNames::DeviceKeys : PairedNames::LocalServices);
    };
    return {pairedDevices, readSerialPorts};
}
