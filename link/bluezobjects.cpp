#include "link/bluezobjects.h"

#include <QDBusObjectPath>
#include <QRegularExpression>

#include <algorithm>
#include <tuple>

#include "link/loggernames.h"

namespace {

constexpr int mostLinks = 7; // the radio's addresses for active devices have three bits, and one is for all
const QString adapterInterface = QStringLiteral("org.bluez.Adapter1");
const QString deviceInterface = QStringLiteral("org.bluez.Device1");

template<typename Value> bool take(Value& value, const QVariantMap& properties, const char* name)
{
    const QVariant given = properties.value(QLatin1String(name));
    if (!given.isValid() || given.value<Value>() == value)
        return false;
    value = given.value<Value>();
    return true;
}

} // namespace

QString plainAddress(const QString& address)
{
    static const QRegularExpression shape(QStringLiteral("^[0-9A-F]{2}(:[0-9A-F]{2}){5}$"));
    QString plain = address.trimmed().toUpper();
    return shape.match(plain).hasMatch() ? plain.remove(QLatin1Char(':')) : QString();
}

QString addressWithColons(const QString& plain)
{
    QString address = plain;
    for (int i = plain.size() - 2; i > 0; i -= 2)
        address.insert(i, QLatin1Char(':'));
    return address;
}

bool BluezObjects::setProperties(const QString& path, const QString& interface, const QVariantMap& properties)
{
    if (interface == adapterInterface) {
        const bool isNew = !adapters.contains(path);
        return take(adapters[path], properties, "Powered") || isNew;
    }
    if (interface != deviceInterface)
        return false;
    bool isChanged = !devices.contains(path);
    Device& device = devices[path];
    take(device.isConnected, properties, "Connected");
    QString address;
    if (take(address, properties, "Address")) {
        device.address = plainAddress(address);
        isChanged = true;
    }
    QDBusObjectPath adapter;
    if (take(adapter, properties, "Adapter")) {
        device.adapter = adapter.path();
        isChanged = true;
    }
    for (const auto& [text, name] : {std::pair{&device.name, "Name"}, std::pair{&device.alias, "Alias"}})
        isChanged |= take(*text, properties, name);
    return take(device.isPaired, properties, "Paired") || isChanged;
}

bool BluezObjects::remove(const QString& path, const QStringList& interfaces)
{
    return (interfaces.contains(adapterInterface) && adapters.remove(path) > 0) ||
           (interfaces.contains(deviceInterface) && devices.remove(path) > 0);
}

QVector<possibleDevice> BluezObjects::loggers() const
{
    QVector<possibleDevice> found;
    for (const Device& device : devices) {
        possibleDevice logger;
        logger.name = device.name.isEmpty() ? device.alias : device.name;
        logger.address = device.address;
        if (!device.isPaired || device.address.isEmpty() || !LoggerNames::isLogger(logger.name))
            continue;
        logger.portName = addressWithColons(device.address);
        logger.service = QStringLiteral("{00001101-0000-1000-8000-00805F9B34FB}"); // the serial port
        // Paired with two adapters it is still one device.
        if (std::none_of(found.cbegin(), found.cend(),
                         [&](const possibleDevice& other) { return other.address == logger.address; }))
            found.append(logger);
    }
    // As a person looks for them, and not adapter by adapter.
    std::sort(found.begin(), found.end(), [](const possibleDevice& one, const possibleDevice& other) {
        return std::tie(one.name, one.address) < std::tie(other.name, other.address);
    });
    return found;
}

BluetoothState BluezObjects::state() const
{
    BluetoothState state;
    if (adapters.isEmpty())
        state.hindrance = PortFailure::NoAdapter;
    else if (std::none_of(adapters.cbegin(), adapters.cend(), [](bool isOn) { return isOn; }))
        state.hindrance = PortFailure::AdapterOff;
    for (const Device& device : devices) {
        if (!device.isPaired || device.address.isEmpty())
            continue;
        QStringList& reaching = state.adaptersOf[device.address];
        if (adapters.value(device.adapter))
            reaching.append(device.adapter.section(QLatin1Char('/'), -1));
    }
    return state;
}

BluezObjects::Route BluezObjects::route(const QString& address, const QSet<QString>& inUse) const
{
    Route best;
    best.failure = adapters.isEmpty() ? PortFailure::NoAdapter : PortFailure::NotPaired;
    int fewest = mostLinks;
    for (auto entry = devices.cbegin(); entry != devices.cend(); ++entry) {
        const Device& device = *entry;
        if (device.address != address || !device.isPaired)
            continue;
        const bool isOn = adapters.value(device.adapter);
        const int links = linksOf(device.adapter, entry.key(), inUse);
        if (isOn && links < mostLinks && (device.isConnected || links < fewest)) {
            best = {entry.key(), device.adapter, device.isConnected, PortFailure::None};
            fewest = device.isConnected ? -1 : links; // where it is connected it takes no new place
        } else if (best.device.isEmpty() && best.failure != PortFailure::AdapterFull) {
            best.failure = isOn ? PortFailure::AdapterFull : PortFailure::AdapterOff;
        }
    }
    return best;
}

int BluezObjects::linksOf(const QString& adapter, const QString& except, const QSet<QString>& inUse) const
{
    int links = 0;
    for (auto device = devices.cbegin(); device != devices.cend(); ++device) {
        if (device->adapter == adapter && device.key() != except &&
            (device->isConnected || inUse.contains(device.key())))
            ++links;
    }
    return links;
}
