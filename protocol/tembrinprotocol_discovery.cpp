#include "protocol/tembrinprotocol.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

#include "common/settings.h"
#include "link/serialmonitorthread.h"
#include "protocol/tembrindata.h"

namespace {

const QString lastPortKey = QStringLiteral("lastBTPortName");

/// What a port is behind all links; its own name where there are no device files.
QString terminalOf(const QString& portName)
{
    const QString terminal = QFileInfo(QDir(QStringLiteral("/dev")).filePath(portName)).canonicalFilePath();
    return terminal.isEmpty() ? portName : terminal;
}

} // namespace

QVector<possibleDevice> TembrinProtocol::getPairedDevices()
{
    devices = discovery.pairedDevices();
    return devices;
}

QVector<possibleDevice> TembrinProtocol::getUSBDevices()
{
    QVector<possibleDevice> found;
    for (const QString& name : scanUSB().ports) {
        const bool isKnown = std::any_of(devices.cbegin(), devices.cend(), [&](const possibleDevice& device) {
            return terminalOf(device.portName) == terminalOf(name);
        });
        if (isKnown)
            continue;
        possibleDevice device;
        device.portName = name;
        device.name = name;
        found.append(device);
    }
    return found;
}

void TembrinProtocol::watchPorts(QObject* context, const std::function<void()>& changed) const
{
    if (discovery.watch)
        discovery.watch(context, changed);
}

QString TembrinProtocol::loggerName() const
{
    for (const possibleDevice& device : devices) {
        if (device.portName == portName)
            return device.name;
    }
    return {};
}

void TembrinProtocol::requestForBTList()
{
    QStringList names;
    for (const possibleDevice& device : getPairedDevices())
        names.append(device.name);
    Q_EMIT publishBTList(names, isBT && isConnect);
}

void TembrinProtocol::gotBTMenu(int i)
{
    if (isConnect)
        release();
    if (i < 0 || i >= devices.size())
        return;
    portName = devices[i].portName;
    Settings::mainStore().setValue(lastPortKey, portName);
    Q_EMIT tryBT();
}

void TembrinProtocol::checkUSB()
{
    if (!tembrinData->isIdle() || scanUSB().ports.isEmpty())
        return;
    if (monitor)
        monitor->stop();
    usbTimer.reset();
    Q_EMIT foundUSB();
}

UsbScan TembrinProtocol::scanUSB()
{
    UsbScan scan = scanForUsb(discovery.serialPorts());
    if (scan.isWrongDriver)
        Q_EMIT wrongDriver();
    return scan;
}
