#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>
#include <QVector>

#include <functional>
#include <memory>
#include <mutex>

#include "link/bluezhub.h"
#include "link/bluezobjects.h"
#include "link/bluezprofile.h"

class BluezAnswers;
class QDBusPendingCallWatcher;

Q_DECLARE_METATYPE(RadioAnswer)

/// A wish for a link, from the first to the last moment of its port.
class BluezWish : public QObject
{
    Q_OBJECT

public:
    enum class Stage
    {
        Waiting, // for the bus, the service, its objects, the profile
        Calling, // the device
        Linked,
        Over
    };

    explicit BluezWish(const QString& address)
        : address(address)
    {
    }

    const QString address;
    Stage stage = Stage::Waiting;
    BluezObjects::Route route;
    QTimer* deadline = nullptr;
    QTimer* pause = nullptr; // before the next try, or until a link that was promised is given up
    std::weak_ptr<RadioLink> link;

Q_SIGNALS:
    void answered(const RadioAnswer& answer);
};

/// The conversation with BlueZ, on the hub's thread. Nothing here waits: each step is an answer, a signal or
/// a timer.
class BluezClient : public QObject
{
    Q_OBJECT

public:
    BluezClient(const BluezTimes& times, std::shared_ptr<BluezAnswers> answers);
    ~BluezClient() override;

    /// Looks for the bus unless it is there or being looked for.
    void openBus();
    /// Takes the wish over.
    void add(BluezWish* wish);
    void drop(BluezWish* wish);

Q_SIGNALS:
    void changed();

private Q_SLOTS: // the bus knows receivers of signals by name only
    void onBusLost();
    void onInterfacesAdded(const QDBusMessage& message);
    void onInterfacesRemoved(const QDBusMessage& message);
    void onPropertiesChanged(const QDBusMessage& message);

private:
    using Answer = std::function<void(const QDBusMessage& reply)>;
    struct Mailbox
    {
        std::mutex mutex;
        BluezClient* client = nullptr;
    };

    // bluezclient.cpp: the bus, the service and what it knows
    void takeBus(const QString& name);
    void leaveBus();
    void setOwner(const QString& newOwner);
    void listObjects();
    void takeObjects(const QDBusMessage& reply);
    void publish();
    QDBusMessage callTo(const QString& path, const char* interface, const char* method) const;
    void ask(const QDBusMessage& question, QObject* context, const Answer& answer,
             std::chrono::milliseconds patience = std::chrono::seconds(25));

    // bluezclient_links.cpp: the profile and the links
    BluezProfile::Handlers handlers();
    void proceed();
    void registerProfile();
    void unregisterProfile();
    void forgetProfile();
    void call(BluezWish* wish);
    void connectProfile(BluezWish* wish);
    void takeReply(BluezWish* wish, const QDBusMessage& reply);
    void noLink(BluezWish* wish);
    void tryAgain(BluezWish* wish);
    bool takeLink(const QString& device, int descriptor);
    void giveUp(BluezWish* wish);
    void fail(BluezWish* wish, PortFailure failure, const QString& text);
    void failPending(const QString& text);
    void watchLife();
    QSet<QString> devicesInUse() const;
    static bool isPending(const BluezWish* wish);

    const BluezTimes times;
    const std::shared_ptr<BluezAnswers> answers;
    const std::shared_ptr<Mailbox> mailbox;
    BluezProfile profile;
    QDBusServiceWatcher watcher;
    QTimer lookAgain;
    QTimer life;

    enum class Bus
    {
        None,
        Opening,
        Open
    };
    Bus busStage = Bus::None;
    QDBusConnection bus;
    QString owner; // of the service's name; empty if it does not run
    bool isOwnerKnown = false;
    bool isListed = false;
    BluezObjects objects;

    enum class Registration
    {
        None,
        Asked,
        Done
    };
    const QString uuid;
    Registration registration = Registration::None;
    int registrations = 0; // an answer to an earlier one means nothing
    QVector<BluezWish*> wishes;
    QHash<QString, QElapsedTimer> ended; // links that were ours, by the device's path
};
