#include "link/bluezclient.h"

#include "link/bluezerrors.h"
#include "link/linklog.h"

#include <QDBusObjectPath>

#include <algorithm>

namespace {

const QString serialPort = QStringLiteral("00001101-0000-1000-8000-00805f9b34fb");
const QString profilePath = QStringLiteral("/org/pellandra/serialport");
const char* const deviceCalls = "org.bluez.Device1";
const char* const profileCalls = "org.bluez.ProfileManager1";

} // namespace

BluezProfile::Handlers BluezClient::handlers()
{
    return {[this](const QString& sender) { return !owner.isEmpty() && sender == owner; },
            [this](const QString& device, int descriptor) { return takeLink(device, descriptor); },
            [this](const QString& device) {
                for (const BluezWish* wish : wishes) {
                    const auto link = wish->link.lock();
                    if (link && wish->route.device == device)
                        link->shut(); // the port sees the end of the stream
                }
            },
            [this] { forgetProfile(); }};
}

void BluezClient::add(BluezWish* wish)
{
    wish->setParent(this);
    wish->deadline = new QTimer(wish);
    wish->deadline->setSingleShot(true);
    wish->pause = new QTimer(wish);
    wish->pause->setSingleShot(true);
    connect(wish->deadline, &QTimer::timeout, this, [this, wish] {
        const bool wasCalling = wish->stage == BluezWish::Stage::Calling;
        giveUp(wish);
        fail(wish, wasCalling ? PortFailure::OutOfReach : PortFailure::NoService,
             QStringLiteral("no answer in time"));
    });
    wish->deadline->start(times.life);
    wishes.append(wish);
    openBus();
    proceed();
}

void BluezClient::drop(BluezWish* wish)
{
    if (!wishes.removeOne(wish))
        return;
    if (wish->stage == BluezWish::Stage::Linked)
        ended[wish->route.device].start();
    giveUp(wish);
    wish->deleteLater();
    if (wishes.isEmpty())
        unregisterProfile();
}

/// As far as all wishes come without another answer.
void BluezClient::proceed()
{
    if (busStage == Bus::Opening || (busStage == Bus::Open && !isOwnerKnown))
        return;
    if (owner.isEmpty()) {
        failPending(QStringLiteral("the Bluetooth service does not run"));
        return;
    }
    if (!isListed)
        return;
    for (BluezWish* wish : QVector<BluezWish*>(wishes)) {
        if (wish->stage == BluezWish::Stage::Waiting)
            call(wish);
    }
}

void BluezClient::registerProfile()
{
    if (registration != Registration::None)
        return;
    registration = Registration::Asked;
    const int number = ++registrations;
    const QVariantMap options{{QStringLiteral("Name"), QStringLiteral("Pellandra")},
                              {QStringLiteral("Role"), QStringLiteral("client")},
                              {QStringLiteral("Service"), serialPort}};
    QDBusMessage question = callTo(QStringLiteral("/org/bluez"), profileCalls, "RegisterProfile");
    question << QVariant::fromValue(QDBusObjectPath(profilePath)) << uuid << options;
    ask(question, this, [this, number](const QDBusMessage& reply) {
        if (number != registrations)
            return;
        if (reply.type() == QDBusMessage::ReplyMessage) {
            registration = Registration::Done;
            proceed();
            return;
        }
        qCWarning(linkLog) << "the Bluetooth service takes no profile:" << reply.errorMessage();
        registration = Registration::None;
        for (BluezWish* wish : QVector<BluezWish*>(wishes)) {
            if (wish->stage == BluezWish::Stage::Waiting)
                fail(wish, bluezFailure(reply.errorName(), reply.errorMessage()), reply.errorMessage());
        }
    });
}

/// While it stands other programs can't use the serial ports of their devices.
void BluezClient::unregisterProfile()
{
    if (registration == Registration::None)
        return;
    forgetProfile();
    QDBusMessage order = callTo(QStringLiteral("/org/bluez"), profileCalls, "UnregisterProfile");
    order << QVariant::fromValue(QDBusObjectPath(profilePath));
    bus.send(order);
}

void BluezClient::forgetProfile()
{
    registration = Registration::None;
    ++registrations;
}

/// The way is chosen before the profile stands, so that a logger that can't be reached is told at once.
void BluezClient::call(BluezWish* wish)
{
    wish->route = objects.route(wish->address, devicesInUse());
    if (wish->route.failure != PortFailure::None) {
        fail(wish, wish->route.failure, QStringLiteral("no way to the device"));
        return;
    }
    if (registration != Registration::Done) {
        wish->route = {};
        registerProfile();
        return;
    }
    const auto before = std::count_if(wishes.cbegin(), wishes.cend(), [wish](const BluezWish* other) {
        return other->stage == BluezWish::Stage::Calling && other->route.adapter == wish->route.adapter;
    });
    wish->stage = BluezWish::Stage::Calling;
    wish->deadline->start(times.page * (1 + static_cast<int>(before)));
    if (!life.isActive())
        life.start(times.life);
    connectProfile(wish);
}

void BluezClient::connectProfile(BluezWish* wish)
{
    QDBusMessage question = callTo(wish->route.device, deviceCalls, "ConnectProfile");
    question << serialPort;
    // Our own deadline comes first.
    ask(
        question, wish, [this, wish](const QDBusMessage& reply) { takeReply(wish, reply); },
        std::chrono::milliseconds(wish->deadline->remainingTime()) + times.life);
}

/// The link itself comes before, after, or not at all.
void BluezClient::takeReply(BluezWish* wish, const QDBusMessage& reply)
{
    if (wish->stage != BluezWish::Stage::Calling)
        return;
    const QString name = reply.errorName();
    const QString text = reply.errorMessage();
    if (reply.type() == QDBusMessage::ReplyMessage) {
        wish->pause->disconnect();
        connect(wish->pause, &QTimer::timeout, this, [this, wish] { noLink(wish); });
        wish->pause->start(times.grace);
    } else if (isBluezBusy(name, text)) {
        tryAgain(wish);
    } else if (isBluezConnected(name, text)) {
        noLink(wish);
    } else {
        fail(wish, bluezFailure(name, text), text.isEmpty() ? name : text);
    }
}

/// The service says that the device is connected, and we have no link: another program has it, or the service
/// has not yet seen the end of ours.
void BluezClient::noLink(BluezWish* wish)
{
    const auto own = ended.constFind(wish->route.device);
    if (own != ended.cend() && !own->hasExpired(times.recent.count()))
        tryAgain(wish);
    else
        fail(wish, PortFailure::Held, QStringLiteral("another program has the link"));
}

void BluezClient::tryAgain(BluezWish* wish)
{
    wish->pause->disconnect();
    connect(wish->pause, &QTimer::timeout, this, [this, wish] { connectProfile(wish); });
    wish->pause->start(times.retry);
}

bool BluezClient::takeLink(const QString& device, int descriptor)
{
    const auto called = std::find_if(wishes.cbegin(), wishes.cend(), [&device](const BluezWish* wish) {
        return wish->stage == BluezWish::Stage::Calling && wish->route.device == device;
    });
    if (called == wishes.cend())
        return false;
    const auto link = std::make_shared<RadioLink>(descriptor);
    if (link->descriptor() < 0) {
        fail(*called, PortFailure::Other, QStringLiteral("too many open files"));
        return false;
    }
    BluezWish* wish = *called;
    wish->stage = BluezWish::Stage::Linked;
    wish->deadline->stop();
    wish->pause->stop();
    wish->link = link;
    Q_EMIT wish->answered({link, PortFailure::None, {}});
    return true;
}

/// The service shall not go on calling for nobody.
void BluezClient::giveUp(BluezWish* wish)
{
    if (wish->stage != BluezWish::Stage::Calling || owner.isEmpty())
        return;
    QDBusMessage order = callTo(wish->route.device, deviceCalls, "DisconnectProfile");
    order << serialPort;
    bus.send(order);
    // The call itself ends for sure with this, which would also end what others do with the device.
    if (!wish->route.isConnected)
        bus.send(callTo(wish->route.device, deviceCalls, "Disconnect"));
}

void BluezClient::fail(BluezWish* wish, PortFailure failure, const QString& text)
{
    wish->stage = BluezWish::Stage::Over;
    wish->deadline->stop();
    wish->pause->stop();
    Q_EMIT wish->answered({nullptr, failure, text});
}

void BluezClient::failPending(const QString& text)
{
    for (BluezWish* wish : QVector<BluezWish*>(wishes)) {
        if (isPending(wish))
            fail(wish, PortFailure::NoService, text);
    }
}

/// While a device is called, the service must show now and then that it lives.
void BluezClient::watchLife()
{
    if (std::none_of(wishes.cbegin(), wishes.cend(), isPending) || owner.isEmpty()) {
        life.stop();
        return;
    }
    const auto answer = [this, asked = owner](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage && asked == owner)
            failPending(QStringLiteral("the Bluetooth service does not answer"));
    };
    ask(callTo(QStringLiteral("/"), "org.freedesktop.DBus.Peer", "Ping"), this, answer, times.life);
}

QSet<QString> BluezClient::devicesInUse() const
{
    QSet<QString> paths;
    for (const BluezWish* wish : wishes) {
        if (wish->stage == BluezWish::Stage::Calling || wish->stage == BluezWish::Stage::Linked)
            paths.insert(wish->route.device);
    }
    return paths;
}

bool BluezClient::isPending(const BluezWish* wish)
{
    return wish->stage == BluezWish::Stage::Waiting || wish->stage == BluezWish::Stage::Calling;
}
