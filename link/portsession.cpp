#include "link/portsession.h"

#include "link/portworker.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QMutexLocker>

namespace {
constexpr int openPatience = 15000; // ms; a Bluetooth port may take several seconds
constexpr int closePatience = 300;  // ms; whoever closes is the GUI thread
constexpr int compactAt = 64 * 1024;
} // namespace

PortSession::PortSession(SerialPort* owner, bool signalBytes)
    : owner(owner)
    , signalBytes(signalBytes)
{
}

bool PortSession::start(const QString& name, const PortSettings& settings)
{
    const QDeadlineTimer deadline(openPatience);
    QMutexLocker lock(&mutex);
    thread = std::thread([self = shared_from_this(), name, settings] { self->run(name, settings); });
    while (stage == Stage::Opening && changed.wait(&mutex, deadline)) {
    }
    if (stage == Stage::Opening)
        error = QStringLiteral("the device did not answer in time");
    return stage == Stage::Open;
}

void PortSession::finish(bool flush)
{
    const QDeadlineTimer deadline(closePatience);
    std::thread leaving;
    bool gone = false;
    {
        QMutexLocker lock(&mutex);
        stage = Stage::Over;
        changed.wakeAll();
        onWorker([flush](PortWorker* device) { device->close(flush); });
        leaving.swap(thread);
        while (leaving.joinable() && !ended && changed.wait(&mutex, deadline)) {
        }
        gone = ended;
    }
    if (leaving.joinable())
        gone ? leaving.join() : leaving.detach();
}

void PortSession::run(const QString& name, const PortSettings& settings)
{
    QEventLoop loop; // first: it gives this thread the dispatcher that the device asks for
    PortWorker device(this, &loop);
    const bool isOpen = device.open(name, settings);
    {
        const QMutexLocker lock(&mutex);
        if (stage == Stage::Opening)
            stage = isOpen ? Stage::Open : Stage::Over;
        if (!isOpen)
            error = device.errorString();
        if (stage == Stage::Open)
            worker = &device;
        changed.wakeAll();
    }
    if (worker)
        loop.exec();
    {
        const QMutexLocker lock(&mutex);
        worker = nullptr;
    }
    device.close(false);
    const QMutexLocker lock(&mutex);
    ended = true;
    changed.wakeAll();
}

void PortSession::forgetOwner()
{
    const QMutexLocker lock(&ownerMutex);
    owner = nullptr;
}

void PortSession::onWorker(const std::function<void(PortWorker*)>& call)
{
    if (worker)
        QMetaObject::invokeMethod(
            worker, [device = worker, call] { call(device); }, Qt::QueuedConnection);
}

void PortSession::tellOwner(const std::function<void(SerialPort*)>& tell)
{
    const QMutexLocker lock(&ownerMutex);
    if (owner)
        tell(owner);
}

void PortSession::addReceived(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return;
    {
        const QMutexLocker lock(&mutex);
        if (readPosition > compactAt) {
            received.remove(0, readPosition);
            readPosition = 0;
        }
        received.append(bytes);
        if (told || !signalBytes)
            return;
        told = true;
    }
    tellOwner([](SerialPort* port) { Q_EMIT port->readyRead(); });
}

/// Bytes may have come before anybody listened.
void PortSession::tellAgain()
{
    if (signalBytes && bytesAvailable() > 0)
        tellOwner([](SerialPort* port) { Q_EMIT port->readyRead(); });
}

void PortSession::apply(const PortSettings& settings)
{
    const QMutexLocker lock(&mutex);
    onWorker([settings](PortWorker* device) { device->apply(settings); });
}

qint64 PortSession::write(const QByteArray& bytes)
{
    const QMutexLocker lock(&mutex);
    if (stage != Stage::Open)
        return -1;
    if (toWrite.isEmpty())
        onWorker([](PortWorker* device) { device->writePending(); });
    toWrite.append(bytes);
    return bytes.size();
}

QByteArray PortSession::read(qint64 maxSize)
{
    const QMutexLocker lock(&mutex);
    told = false;
    const QByteArray bytes = received.mid(readPosition, static_cast<int>(maxSize));
    readPosition += bytes.size();
    if (readPosition == received.size()) {
        received.resize(0);
        readPosition = 0;
    }
    return bytes;
}

qint64 PortSession::bytesAvailable() const
{
    const QMutexLocker lock(&mutex);
    return received.size() - readPosition;
}

unsigned PortSession::lineStatus() const
{
    const QMutexLocker lock(&mutex);
    return stage == Stage::Open ? lines : 0;
}

bool PortSession::isOpen() const
{
    const QMutexLocker lock(&mutex);
    return stage == Stage::Open;
}

QString PortSession::errorString() const
{
    const QMutexLocker lock(&mutex);
    return error;
}
