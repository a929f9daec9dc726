#include "virtual/virtualclass.h"

#include "virtual/socketport.h"
#include "virtual/terminalport.h"

#include <QDir>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/timerfd.h>
#include <unistd.h>

namespace {

constexpr qint64 nsPerSecond = 1000000000;

} // namespace

qint64 VirtualClass::now()
{
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * nsPerSecond + time.tv_nsec;
}

VirtualClass::VirtualClass(const QVector<LoggerIdentity>& identities, const QString& directory, PortKind kind,
                           QObject* parent)
    : QObject(parent)
{
    for (const LoggerIdentity& identity : identities) {
        const QString place = QDir(directory).filePath(identity.name);
        if (kind == PortKind::Socket)
            addPlace(identity, std::make_unique<SocketPort>(place));
        else
            addPlace(identity, std::make_unique<TerminalPort>(place));
    }
}

VirtualClass::~VirtualClass()
{
    for (const auto& place : places)
        place->port->close(); // while there is a log to note it in
    if (timer >= 0)
        ::close(timer);
}

void VirtualClass::addPlace(const LoggerIdentity& identity, std::unique_ptr<VirtualPort> port)
{
    const int index = count();
    auto place = std::make_unique<Place>();
    place->logger = std::make_unique<VirtualLogger>(identity, now(), QDateTime::currentDateTimeUtc());
    place->port = std::move(port);
    place->line = FaultyLine(identity.seed);
    place->logger->setListener([this, index](const QByteArray& frame) {
        frameLog.note(index, logger(index).identity().name, frame, false, FrameLog::Sent);
    });
    connect(place->port.get(), &VirtualPort::received, this, [this, index](const QByteArray& bytes) {
        act(index, [&bytes](VirtualLogger& logger, qint64 time) { return logger.receive(bytes, time); });
    });
    connect(place->port.get(), &VirtualPort::partnerChanged, this, [this, index](bool isThere) {
        frameLog.note(index, logger(index).identity().name,
                      isThere ? QStringLiteral("port opened") : QStringLiteral("port closed"));
    });
    places.push_back(std::move(place));
}

bool VirtualClass::open(QString* error)
{
    timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (timer < 0) {
        *error = QStringLiteral("no timer to be had: ") + QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    timerNotifier = std::make_unique<QSocketNotifier>(timer, QSocketNotifier::Read);
    connect(timerNotifier.get(), &QSocketNotifier::activated, this, &VirtualClass::work);
    for (const auto& place : places) {
        if (!place->port->open(error))
            return false;
    }
    return true;
}

void VirtualClass::act(int index, const std::function<LoggerPackets(VirtualLogger&, qint64)>& action)
{
    const qint64 time = now();
    places[size_t(index)]->logger->setLoaderFaults(faults(index));
    send(index, action(*places[size_t(index)]->logger, time), time);
    setTimer();
}

bool VirtualClass::putBack(int index, QString* error)
{
    return port(index).open(error);
}

void VirtualClass::pull(int index)
{
    port(index).close();
    places[size_t(index)]->line.clear();
}

void VirtualClass::send(int index, const LoggerPackets& packets, qint64 time)
{
    places[size_t(index)]->line.send(packets, time);
    write(index, time);
}

void VirtualClass::write(int index, qint64 time)
{
    const QString& name = logger(index).identity().name;
    for (const LineWrite& write : places[size_t(index)]->line.take(time)) {
        const qint64 written = now();
        const bool isTaken = !write.isLost && port(index).write(write.bytes);
        if (isTaken)
            frameLog.record(index, write.completed, written);
        frameLog.note(index, name, write.bytes, true,
                      write.isLost ? FrameLog::Lost
                      : isTaken    ? FrameLog::Sent
                                   : FrameLog::Unheard);
    }
}

void VirtualClass::work()
{
    quint64 expirations = 0;
    if (::read(timer, &expirations, sizeof expirations) > 0)
        timerDue = -1;
    for (int index = 0; index < count(); ++index) {
        const qint64 time = now();
        send(index, places[size_t(index)]->logger->advance(time), time);
    }
    setTimer();
}

/// The timer stands on the earliest due time of all, so nothing drifts and an idle class costs nothing.
void VirtualClass::setTimer()
{
    qint64 due = -1;
    for (const auto& place : places) {
        for (const qint64 candidate : {place->logger->nextDue(), place->line.nextDue()}) {
            if (candidate >= 0 && (due < 0 || candidate < due))
                due = candidate;
        }
    }
    if (due == timerDue)
        return;
    timerDue = due;
    itimerspec setting = {};
    if (due >= 0) {
        const qint64 future = qMax<qint64>(due, 1); // 0 would stop the timer
        setting.it_value.tv_sec = future / nsPerSecond;
        setting.it_value.tv_nsec = future % nsPerSecond;
    }
    ::timerfd_settime(timer, TFD_TIMER_ABSTIME, &setting, nullptr);
}
