#include "link/pairedregistry.h"

#include <QRegularExpression>

#include <algorithm>

#include "link/keytree.h"
#include "link/loggernames.h"

namespace {

const QString enumKey = QStringLiteral("SYSTEM/CurrentControlSet/Enum/BTHENUM");
const QString lowEnergyKey = QStringLiteral("SYSTEM/CurrentControlSet/Enum/BTHLEDevice");
const QString servicesKey =
    QStringLiteral("SYSTEM/CurrentControlSet/services/BTHPORT/Parameters/LocalServices");

// In the name of a service that the Bluetooth stack itself offers.
const QString stackMark = QStringLiteral("BT");

QString join(const QString& key, const QString& child)
{
    return key + QLatin1Char('/') + child;
}

/// The address in a key of a device; empty where there is none, or one of zeros only: that is a service of
/// the computer itself.
QString addressIn(const QString& key)
{
    static const QRegularExpression pattern(QStringLiteral("&([0-9A-F]{12})_"));
    const QString address = pattern.match(key).captured(1);
    return address.count(QLatin1Char('0')) == address.size() ? QString() : address;
}

void addCandidates(const KeyTree& tree, const QString& service, QVector<possibleDevice>& candidates)
{
    const QString serviceKey = join(enumKey, service);
    for (const QString& child : tree.childGroups(serviceKey)) {
        const QString key = join(serviceKey, child);
        const QString address = addressIn(child);
        if (address.isEmpty() || !tree.value(key + QStringLiteral("/Driver")).isValid())
            continue;
        possibleDevice device;
        device.address = address;
        device.portName = tree.value(key + QStringLiteral("/Device Parameters/PortName")).toString();
        device.service = service.section(QLatin1Char('_'), 0, 0);
        const auto same = std::find_if(candidates.begin(), candidates.end(),
                                       [&](const possibleDevice& other) { return other.address == address; });
        if (same != candidates.end())
            *same = device;
        else
            candidates.append(device);
    }
}

QVector<possibleDevice> findCandidates(const KeyTree& tree)
{
    QVector<possibleDevice> candidates;
    for (const QString& service : tree.childGroups(enumKey) + tree.childGroups(lowEnergyKey)) {
        if (!service.contains(QLatin1Char('_')) || service.contains(QLatin1String("LOCALMFG")))
            addCandidates(tree, service, candidates);
    }
    return candidates;
}

void nameByDeviceKey(const KeyTree& tree, possibleDevice device, QVector<possibleDevice>& devices)
{
    const QString key = join(enumKey, QStringLiteral("Dev_") + device.address);
    for (const QString& child : tree.childGroups(key)) {
        device.name = tree.value(join(key, child) + QStringLiteral("/FriendlyName")).toString();
        if (LoggerNames::isLogger(device.name))
            devices.append(device);
    }
}

void nameByService(const KeyTree& tree, possibleDevice device, QVector<possibleDevice>& devices)
{
    const QString key = join(servicesKey, device.service);
    for (const QString& child : tree.childGroups(key)) {
        const QString service = join(key, child);
        QByteArray partner = tree.bytes(service + QStringLiteral("/AssocBdAddr"));
        std::reverse(partner.begin(), partner.end());
        if (!QString::fromLatin1(partner.toHex()).contains(device.address, Qt::CaseInsensitive) ||
            !tree.value(service + QStringLiteral("/enabled")).toBool())
            continue;
        device.name = tree.value(service + QStringLiteral("/ServiceName")).toString();
        if (!device.name.contains(stackMark))
            devices.append(device);
    }
}

} // namespace

QVector<possibleDevice> readPairedRegistry(const KeyTree& tree, PairedNames names)
{
    QVector<possibleDevice> devices;
    for (const possibleDevice& candidate : findCandidates(tree)) {
        switch (names) {
        case PairedNames::DeviceKeys:
            nameByDeviceKey(tree, candidate, devices);
            break;
        case PairedNames::LocalServices:
            nameByService(tree, candidate, devices);
            break;
        }
    }
    return devices;
}
