#include "link/bluezdevices.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QMutex>

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "link/linklog.h"
#include "link/loggernames.h"

namespace {

using Properties = QVariantMap;
using Interfaces = QMap<QString, Properties>;
using ManagedObjects = QMap<QDBusObjectPath, Interfaces>;

constexpr auto patience = std::chrono::milliseconds(500);
const QString deviceInterface = QStringLiteral("org.bluez.Device1");

/// "00:11:22:AA:BB:CC" without its colons, in upper case.
QString plainAddress(const QString& address)
{
    return address.trimmed().toUpper().remove(QLatin1Char(':'));
}

ManagedObjects askBluez()
{
    // A connection of our own: the shared one would carry a failure on to the next question.
    const QString name = QStringLiteral("pellandra-paired");
    ManagedObjects objects;
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
    if (bus.isConnected()) {
        QDBusMessage question = QDBusMessage::createMethodCall(
            QStringLiteral("org.bluez"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus.ObjectManager"), QStringLiteral("GetManagedObjects"));
        question.setAutoStartService(false); // no adapter, no BlueZ: not worth the wait
        const QDBusMessage reply = bus.call(question, QDBus::Block, int(patience.count()));
        if (reply.signature() == QLatin1String("a{oa{sa{sv}}}"))
            reply.arguments().constFirst().value<QDBusArgument>() >> objects;
        else
            qCDebug(linkLog) << "no paired devices from BlueZ:" << reply.errorMessage();
    } else {
        qCDebug(linkLog) << "no paired devices without a system bus:" << bus.lastError().message();
    }
    QDBusConnection::disconnectFromBus(name);
    return objects;
}

QVector<possibleDevice> loggersIn(const ManagedObjects& objects)
{
    QVector<possibleDevice> devices;
    for (const Interfaces& object : objects) {
        const Properties properties = object.value(deviceInterface);
        possibleDevice device;
        device.name =
            properties.value(QStringLiteral("Name"), properties.value(QStringLiteral("Alias"))).toString();
        if (!properties.value(QStringLiteral("Paired")).toBool() || !LoggerNames::isLogger(device.name))
            continue;
        device.address = plainAddress(properties.value(QStringLiteral("Address")).toString());
        device.service = QStringLiteral("{00001101-0000-1000-8000-00805F9B34FB}"); // the serial port
        // Paired with two adapters it is still one device.
        if (std::none_of(devices.cbegin(), devices.cend(),
                         [&](const possibleDevice& other) { return other.address == device.address; }))
            devices.append(device);
    }
    return devices;
}

/// Terminals by the address that each is bound to.
QHash<QString, QString> boundTerminals(const QString& terminals)
{
    QHash<QString, QString> bound;
    const QDir directory(terminals);
    for (const QString& terminal : directory.entryList({QStringLiteral("rfcomm*")}, QDir::Dirs, QDir::Name)) {
        QFile file(directory.filePath(terminal + QStringLiteral("/address")));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString address = plainAddress(QString::fromLatin1(file.readAll()));
        if (!bound.contains(address))
            bound.insert(address, terminal);
    }
    return bound;
}

/// The answer to the question under way, or to a new one. A bus that does not answer keeps one thread, and
/// not one for each who asks.
std::shared_future<QVector<possibleDevice>> sharedQuestion()
{
    static QMutex mutex;
    static std::shared_future<QVector<possibleDevice>> question;
    const QMutexLocker lock(&mutex);
    if (!question.valid() || question.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
        std::promise<QVector<possibleDevice>> answer;
        question = answer.get_future().share();
        std::thread([answer = std::move(answer)]() mutable {
            answer.set_value(loggersIn(askBluez()));
        }).detach();
    }
    return question;
}

} // namespace

QString systemTerminals()
{
    return QStringLiteral("/sys/class/tty");
}

QVector<possibleDevice> pairedBluezDevices(const QString& terminals)
{
    const auto question = sharedQuestion();
    if (question.wait_for(patience) != std::future_status::ready) {
        qCInfo(linkLog) << "BlueZ does not answer; its paired devices are left out";
        return {};
    }
    QVector<possibleDevice> devices = question.get();
    const QHash<QString, QString> bound = boundTerminals(terminals);
    for (possibleDevice& device : devices)
        device.portName = bound.value(device.address);
    return devices;
}
