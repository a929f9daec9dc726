#include "link/portdiscovery.h"

#include "link/bluezdevices.h"
#include "link/linkedports.h"

PortDiscovery systemPortDiscovery()
{
    const auto pairedDevices = [] {
        QVector<possibleDevice> devices = pairedBluezDevices(systemTerminals());
        addLinkedPorts(readLinkedPorts(systemLinkPlaces()), devices);
        return devices;
    };
    return {pairedDevices, readSerialPorts};
}
