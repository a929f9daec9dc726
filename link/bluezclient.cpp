#include "link/bluezclient.h"

#include "link/bluezanswers.h"
#include "link/linklog.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QMetaMethod>
#include <QUuid>

#include <atomic>
#include <thread>
#include <utility>

namespace {

using Interfaces = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, Interfaces>;

const QString busPath = QStringLiteral("/org/freedesktop/DBus");
const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr std::chrono::milliseconds listPatience(10000);

template<typename Value> Value unpack(const QVariant& packed)
{
    return qdbus_cast<Value>(packed);
}

} // namespace

BluezClient::BluezClient(const BluezTimes& times, std::shared_ptr<BluezAnswers> answers)
    : times(times)
    , answers(std::move(answers))
    , mailbox(std::make_shared<Mailbox>())
    , profile(handlers())
    , bus(QString())
    , uuid(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    for (QObject* part : std::initializer_list<QObject*>{&profile, &watcher, &lookAgain, &life})
        part->setParent(this); // they move to the hub's thread with it
    mailbox->client = this;
    watcher.addWatchedService(QStringLiteral("org.bluez"));
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) { setOwner(newOwner); });
    lookAgain.setSingleShot(true);
    connect(&lookAgain, &QTimer::timeout, this, &BluezClient::openBus);
    connect(&life, &QTimer::timeout, this, &BluezClient::watchLife);
}

BluezClient::~BluezClient()
{
    {
        const std::lock_guard lock(mailbox->mutex);
        mailbox->client = nullptr;
    }
    leaveBus();
    qDeleteAll(wishes);
}

/// A bus that does not answer keeps a thread of its own, and no timer waits for it.
void BluezClient::openBus()
{
    if (busStage != Bus::None)
        return;
    busStage = Bus::Opening;
    static std::atomic<int> count{0};
    const QString name = QStringLiteral("pellandra-bluetooth-%1").arg(++count);
    std::thread([name, mailbox = mailbox] {
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
        const std::lock_guard lock(mailbox->mutex);
        if (BluezClient* client = mailbox->client)
            QMetaObject::invokeMethod(
                client, [client, name] { client->takeBus(name); }, Qt::QueuedConnection);
        else
            QDBusConnection::disconnectFromBus(name);
    }).detach();
}

void BluezClient::takeBus(const QString& name)
{
    bus = QDBusConnection(name);
    if (!bus.isConnected()) {
        qCDebug(linkLog) << "no system bus:" << bus.lastError().message();
        onBusLost();
        return;
    }
    busStage = Bus::Open;
    // No name of a service here: the toolkit would ask for its owner, and wait. Who sends is looked at.
    bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SLOT(onBusLost()));
    bus.connect({}, QStringLiteral("/"), objectManager, QStringLiteral("InterfacesAdded"), this,
                SLOT(onInterfacesAdded(QDBusMessage)));
    bus.connect({}, QStringLiteral("/"), objectManager, QStringLiteral("InterfacesRemoved"), this,
                SLOT(onInterfacesRemoved(QDBusMessage)));
    for (const char* interface : {"org.bluez.Adapter1", "org.bluez.Device1"})
        bus.connect({}, {}, propertiesInterface, QStringLiteral("PropertiesChanged"),
                    {QLatin1String(interface)}, {}, this, SLOT(onPropertiesChanged(QDBusMessage)));
    watcher.setConnection(bus);
    bus.registerVirtualObject(QStringLiteral("/org/pellandra/serialport"), &profile);
    QDBusMessage question =
        QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("GetNameOwner"));
    question << QStringLiteral("org.bluez");
    ask(question, this, [this](const QDBusMessage& reply) {
        const bool isThere = reply.type() == QDBusMessage::ReplyMessage;
        if (!isOwnerKnown)
            setOwner(isThere ? reply.arguments().value(0).toString() : QString());
    });
}

void BluezClient::onBusLost()
{
    leaveBus();
    failPending(QStringLiteral("there is no system bus"));
    publish();
    if (!wishes.isEmpty() || isSignalConnected(QMetaMethod::fromSignal(&BluezClient::changed)))
        lookAgain.start(times.bus);
}

void BluezClient::leaveBus()
{
    busStage = Bus::None;
    owner.clear();
    isOwnerKnown = false;
    isListed = false;
    objects = {};
    forgetProfile();
    const QString name = bus.name();
    watcher.setConnection(QDBusConnection(QString()));
    bus = QDBusConnection(QString());
    if (!name.isEmpty())
        QDBusConnection::disconnectFromBus(name);
}

/// The service was found, went, or is another one than before.
void BluezClient::setOwner(const QString& newOwner)
{
    if (isOwnerKnown && newOwner == owner)
        return;
    qCDebug(linkLog) << "the Bluetooth service is"
                     << (newOwner.isEmpty() ? QStringLiteral("not there") : newOwner);
    if (newOwner.isEmpty() || !owner.isEmpty())
        failPending(QStringLiteral("the Bluetooth service does not run"));
    owner = newOwner;
    isOwnerKnown = true;
    isListed = false;
    objects = {};
    forgetProfile();
    if (!owner.isEmpty())
        listObjects();
    publish();
}

void BluezClient::listObjects()
{
    const auto answer = [this, asked = owner](const QDBusMessage& reply) {
        if (asked == owner)
            takeObjects(reply);
    };
    ask(callTo(QStringLiteral("/"), "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"), this, answer,
        listPatience);
}

void BluezClient::takeObjects(const QDBusMessage& reply)
{
    if (reply.signature() != QLatin1String("a{oa{sa{sv}}}")) {
        qCInfo(linkLog) << "the Bluetooth service does not tell its devices:" << reply.errorMessage();
        QTimer::singleShot(times.life, this, [this, asked = owner] {
            if (asked == owner && !owner.isEmpty() && !isListed)
                listObjects();
        });
        return;
    }
    const auto all = unpack<ManagedObjects>(reply.arguments().constFirst());
    for (auto object = all.cbegin(); object != all.cend(); ++object) {
        for (auto interface = object->cbegin(); interface != object->cend(); ++interface)
            objects.setProperties(object.key().path(), interface.key(), interface.value());
    }
    isListed = true;
    publish();
    if (!wishes.isEmpty())
        registerProfile();
    proceed();
}

void BluezClient::onInterfacesAdded(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments();
    if (!isListed || message.service() != owner || arguments.size() != 2)
        return;
    bool isChanged = false;
    const auto interfaces = unpack<Interfaces>(arguments.at(1));
    for (auto interface = interfaces.cbegin(); interface != interfaces.cend(); ++interface)
        isChanged |= objects.setProperties(unpack<QDBusObjectPath>(arguments.at(0)).path(), interface.key(),
                                           interface.value());
    if (isChanged)
        publish();
}

void BluezClient::onInterfacesRemoved(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments();
    if (!isListed || message.service() != owner || arguments.size() != 2)
        return;
    if (objects.remove(unpack<QDBusObjectPath>(arguments.at(0)).path(), arguments.at(1).toStringList()))
        publish();
}

void BluezClient::onPropertiesChanged(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments();
    if (!isListed || message.service() != owner || arguments.size() != 3)
        return;
    if (objects.setProperties(message.path(), arguments.at(0).toString(),
                              unpack<QVariantMap>(arguments.at(1))))
        publish();
}

void BluezClient::publish()
{
    using Stage = BluezAnswers::Stage;
    BluetoothState state = objects.state();
    if (!isListed)
        state.hindrance = PortFailure::NoService;
    const bool isOwed = busStage == Bus::Opening ||
                        (busStage == Bus::Open && !isListed && !(isOwnerKnown && owner.isEmpty()));
    if (answers->set(isOwed                  ? Stage::Asking
                     : busStage == Bus::None ? Stage::NoBus
                                             : Stage::Known,
                     objects.loggers(), state))
        Q_EMIT changed();
}

QDBusMessage BluezClient::callTo(const QString& path, const char* interface, const char* method) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.bluez"), path,
                                                          QLatin1String(interface), QLatin1String(method));
    message.setAutoStartService(false); // who has switched it off wants it off
    return message;
}

void BluezClient::ask(const QDBusMessage& question, QObject* context, const Answer& answer,
                      std::chrono::milliseconds patience)
{
    auto* pending =
        new QDBusPendingCallWatcher(bus.asyncCall(question, static_cast<int>(patience.count())), context);
    connect(pending, &QDBusPendingCallWatcher::finished, context, [pending, answer] {
        pending->deleteLater();
        answer(pending->reply());
    });
}
