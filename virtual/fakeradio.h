#pragma once

#include <QProcess>
#include <QString>

#include <memory>

struct LoggerIdentity;
template<class T> class QVector;

/// A private D-Bus with the fake Bluetooth service on it, in the folder where the sockets of the loggers are.
/// Both programs end with this one, whatever way it ends.
class FakeRadio
{
public:
    /// The loggers are paired with the adapters hci0, hci1 ... in turn.
    FakeRadio(const QVector<LoggerIdentity>& loggers, int adapters, const QString& directory);
    ~FakeRadio();

    /// False, with the reason in `error`, if one of the two does not start.
    bool start(QString* error);
    /// Lets the service die, as a crash does, or come back as it was at first.
    void killService();
    bool startService(QString* error);

    /// As D-Bus writes it.
    QString busAddress() const;
    /// The Bluetooth address of a logger, which follows from its seed.
    static QString addressOf(const LoggerIdentity& logger);

private:
    bool writeWorld(QString* error) const;

    QString folder;
    QByteArray world; ///< what the service finds at its start
    std::unique_ptr<QProcess> bus;
    std::unique_ptr<QProcess> service;
};
