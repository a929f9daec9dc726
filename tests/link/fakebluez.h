#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// The fake Bluetooth service on a bus of the test's own. The bus stands at the place where the first object
/// of this class, which must come before any other use of the system bus, found one.
class FakeBluez
{
public:
    FakeBluez() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", place().toLocal8Bit()); }
    ~FakeBluez()
    {
        end(SIGKILL);
        endBus();
    }

    static QString place()
    {
        static const QTemporaryDir folder;
        return QStringLiteral("unix:path=") + folder.filePath(QStringLiteral("bus"));
    }

    bool startBus()
    {
        bus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                  QStringLiteral("--address=") + place()});
        return QTest::qWaitFor([] {
            QDBusConnection::disconnectFromBus(QStringLiteral("control"));
            return QDBusConnection::connectToBus(place(), QStringLiteral("control")).isConnected();
        });
    }
    void endBus()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("control"));
        bus.kill();
        bus.waitForFinished();
    }

    bool start()
    {
        service.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        service.start(
            QStringLiteral("/usr/bin/python3"),
            {QStringLiteral(FAKE_BLUEZ), place(), QStringLiteral("--page-timeout"), QStringLiteral("0.3")});
        return QTest::qWaitFor([this] { return service.canReadLine(); }, 15000);
    }
    void signal(int number) { ::kill(static_cast<pid_t>(service.processId()), number); }
    void end(int number)
    {
        if (service.state() == QProcess::NotRunning)
            return;
        signal(number);
        service.waitForFinished();
        service.readAll();
    }

    /// A call of the service's test control.
    QVariant call(const QString& method, const QVariantList& arguments = {})
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(QStringLiteral("org.bluez"), QStringLiteral("/org/pellandra/fake"),
                                           QStringLiteral("org.pellandra.Fake"), method);
        message.setArguments(arguments);
        const QDBusMessage reply = QDBusConnection(QStringLiteral("control")).call(message);
        if (reply.type() != QDBusMessage::ReplyMessage)
            qWarning("%s: %s", qPrintable(method), qPrintable(reply.errorMessage()));
        return reply.arguments().value(0);
    }

private:
    QProcess bus;
    QProcess service;
};
