#include "link/portdiscovery.h"

#include "link/bluezhub.h"
#include "link/bluezobjects.h"
#include "link/linkedports.h"
#include "link/serialworker.h"
#include "link/sessionport.h"
#include "link/socketworker.h"
#include "link/systemports.h"

#include <mutex>

namespace {

/// The program's one hub, as long as somebody has ports or asks for them.
std::shared_ptr<BluezHub> commonHub()
{
    static std::mutex mutex;
    static std::weak_ptr<BluezHub> known;
    const std::lock_guard lock(mutex);
    std::shared_ptr<BluezHub> hub = known.lock();
    if (!hub)
        known = hub = std::make_shared<BluezHub>();
    return hub;
}

} // namespace

PortDiscovery systemPortDiscovery()
{
    const auto addressOf = [](const QString& port) { return boundAddress(port, systemTerminals()); };
    PortDiscovery discovery;
    discovery.pairedDevices = [hub = commonHub(), addressOf] {
        QVector<possibleDevice> devices = hub->pairedDevices();
        addLinkedPorts(readLinkedPorts(systemLinkPlaces()), addressOf, devices);
        return devices;
    };
    discovery.serialPorts = readSerialPorts;
    discovery.bluetooth = [hub = commonHub()] { return hub->state(); };
    discovery.watch = [hub = commonHub()](QObject* context, const std::function<void()>& changed) {
        hub->watch(context, changed);
    };
    discovery.boundAddress = addressOf;
    return discovery;
}

SerialPortFactory systemPortFactory()
{
    return
        [hub = commonHub()](const QString& name, SerialPort::QueryMode mode) -> std::unique_ptr<SerialPort> {
            const QString address = plainAddress(name);
            if (address.isEmpty())
                return std::make_unique<SessionPort>(name, mode, SerialWorker::kind(name));
            const RadioDial dial = [hub, address](QObject* context, const auto& answer) {
                return hub->dial(address, context, answer);
            };
            return std::make_unique<SessionPort>(name, mode, SocketWorker::kind(dial));
        };
}
