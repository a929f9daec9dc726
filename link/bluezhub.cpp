#include "link/bluezhub.h"

#include "link/bluezanswers.h"
#include "link/bluezclient.h"

namespace {
constexpr std::chrono::milliseconds answerPatience(500);
} // namespace

BluezHub::BluezHub(const BluezTimes& times)
    : answers(std::make_shared<BluezAnswers>())
    , client(new BluezClient(times, answers))
{
    qRegisterMetaType<RadioAnswer>();
    thread.setObjectName(QStringLiteral("BluezHub"));
    client->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, client, &QObject::deleteLater);
    thread.start();
}

BluezHub::~BluezHub()
{
    // What was ordered is done first.
    QMetaObject::invokeMethod(
        client, [] {}, Qt::BlockingQueuedConnection);
    thread.quit();
    thread.wait();
}

QVector<possibleDevice> BluezHub::pairedDevices() const
{
    askAndWait();
    return answers->devices();
}

BluetoothState BluezHub::state() const
{
    askAndWait();
    return answers->state();
}

void BluezHub::askAndWait() const
{
    if (answers->askAgain())
        QMetaObject::invokeMethod(client, &BluezClient::openBus, Qt::QueuedConnection);
    answers->wait(answerPatience);
}

void BluezHub::watch(QObject* context, const std::function<void()>& changed) const
{
    QObject::connect(client, &BluezClient::changed, context, changed, Qt::QueuedConnection);
    if (answers->askAgain())
        QMetaObject::invokeMethod(client, &BluezClient::openBus, Qt::QueuedConnection);
}

std::shared_ptr<void> BluezHub::dial(const QString& address, QObject* context,
                                     const std::function<void(const RadioAnswer&)>& answer)
{
    auto* wish = new BluezWish(address);
    QObject::connect(wish, &BluezWish::answered, context, answer, Qt::QueuedConnection);
    wish->moveToThread(&thread);
    QMetaObject::invokeMethod(
        client, [this, wish] { client->add(wish); }, Qt::QueuedConnection);
    return {wish, [hub = shared_from_this()](BluezWish* ended) {
                QMetaObject::invokeMethod(
                    hub->client, [client = hub->client, ended] { client->drop(ended); },
                    Qt::QueuedConnection);
            }};
}
