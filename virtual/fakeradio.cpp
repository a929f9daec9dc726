#include "virtual/fakeradio.h"

#include "virtual/virtuallogger.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QVector>

#include <csignal>
#include <sys/prctl.h>

namespace {

constexpr int patience = 15000; // ms

/// Does not outlive the program, even if that is killed.
class Child : public QProcess
{
protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

/// Waits for a line of output that holds `sign`.
bool waitFor(QProcess& process, const QByteArray& sign, QString* error)
{
    QElapsedTimer clock;
    clock.start();
    QByteArray said;
    while (!said.contains(sign) && clock.elapsed() < patience && process.waitForReadyRead(patience))
        said += process.readAllStandardOutput();
    if (said.contains(sign))
        return true;
    *error = QStringLiteral("%1 does not start: %2").arg(process.program(), process.errorString());
    return false;
}

std::unique_ptr<QProcess> makeChild()
{
    auto child = std::make_unique<Child>();
    child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    return child;
}

void end(std::unique_ptr<QProcess>& process)
{
    if (!process)
        return;
    process->kill();
    process->waitForFinished();
    process.reset();
}

} // namespace

FakeRadio::FakeRadio(const QVector<LoggerIdentity>& loggers, int adapters, const QString& directory)
    : folder(directory)
{
    const auto adapterName = [](int number) { return QStringLiteral("hci%1").arg(number); };
    QJsonArray adapterList;
    for (int i = 0; i < adapters; ++i)
        adapterList.append(
            QJsonObject{{QStringLiteral("name"), adapterName(i)}, {QStringLiteral("powered"), true}});
    QJsonArray deviceList;
    for (int i = 0; i < loggers.size(); ++i) {
        const QString& name = loggers[i].name;
        deviceList.append(QJsonObject{{QStringLiteral("adapter"), adapterName(i % adapters)},
                                      {QStringLiteral("address"), addressOf(loggers[i])},
                                      {QStringLiteral("name"), name},
                                      {QStringLiteral("paired"), true},
                                      {QStringLiteral("socket"), QDir(folder).filePath(name)}});
    }
    world = QJsonDocument(QJsonObject{{QStringLiteral("adapters"), adapterList},
                                      {QStringLiteral("devices"), deviceList}})
                .toJson();
}

FakeRadio::~FakeRadio()
{
    killService();
    end(bus);
    QDir(folder).remove(QStringLiteral("bus"));
    QDir(folder).remove(QStringLiteral("world.json"));
}

QString FakeRadio::addressOf(const LoggerIdentity& logger)
{
    return QStringLiteral("00:12:F3:%1:%2:%3")
        .arg(logger.seed >> 16 & 0xFF, 2, 16, QLatin1Char('0'))
        .arg(logger.seed >> 8 & 0xFF, 2, 16, QLatin1Char('0'))
        .arg(logger.seed & 0xFF, 2, 16, QLatin1Char('0'))
        .toUpper();
}

QString FakeRadio::busAddress() const
{
    const QByteArray path = QUrl::toPercentEncoding(QDir(folder).filePath(QStringLiteral("bus")), "/", "~");
    return QStringLiteral("unix:path=") + QString::fromLatin1(path);
}

bool FakeRadio::start(QString* error)
{
    QFile::remove(QDir(folder).filePath(QStringLiteral("bus"))); // of a run that was killed
    bus = makeChild();
    // It complains of limits that only root may raise.
    bus->setProcessChannelMode(QProcess::SeparateChannels);
    bus->start(QStringLiteral("dbus-daemon"),
               {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                QStringLiteral("--print-address"), QStringLiteral("--address=") + busAddress()});
    return waitFor(*bus, "\n", error) && writeWorld(error) && startService(error);
}

bool FakeRadio::writeWorld(QString* error) const
{
    QFile file(QDir(folder).filePath(QStringLiteral("world.json")));
    if (file.open(QIODevice::WriteOnly) && file.write(world) == world.size() && file.flush())
        return true;
    *error = QStringLiteral("%1 can't be written: %2").arg(file.fileName(), file.errorString());
    return false;
}

void FakeRadio::killService()
{
    end(service);
}

bool FakeRadio::startService(QString* error)
{
    if (service)
        return true;
    QFile program(QStringLiteral(":/virtual/fakebluez.py"));
    if (!program.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("the fake Bluetooth service is not in this program");
        return false;
    }
    service = makeChild();
    service->start(QStringLiteral("/usr/bin/python3"),
                   {QStringLiteral("-"), busAddress(), QStringLiteral("--world"),
                    QDir(folder).filePath(QStringLiteral("world.json"))});
    service->write(program.readAll());
    service->closeWriteChannel();
    return waitFor(*service, "ready\n", error);
}
