#include "link/portsession.h"

#include "link/portworker.h"

#include <QEventLoop>

#include <chrono>

namespace {
constexpr std::chrono::seconds openPatience(15);        // a Bluetooth port may take several
constexpr std::chrono::milliseconds closePatience(300); // whoever closes is the GUI thread
constexpr int compactAt = 64 * 1024;
} // namespace

PortSession::PortSession(SerialPort* owner, bool signalBytes)
    : owner(owner)
    , signalBytes(signalBytes)
{
}

bool PortSession::start(const QString& name, const PortSettings& settings)
{
    std::unique_lock lock(mutex);
    thread = std::thread([self = shared_from_this(), name, settings] { self->run(name, settings); });
    if (!changed.wait_for(lock, openPatience, [this] { return stage != Stage::Opening; }))
        error = QStringLiteral("the device did not answer in time");
    return stage == Stage::Open;
}

void PortSession::cancel()
{
    const std::lock_guard lock(mutex);
    if (stage != Stage::Opening)
        return;
    stage = Stage::Over;
    error = QStringLiteral("cancelled");
    changed.notify_all();
}

void PortSession::finish(bool flush)
{
    std::thread leaving;
    bool gone = false;
    {
        std::unique_lock lock(mutex);
        stage = Stage::Over;
        changed.notify_all();
        onWorker([flush](PortWorker* device) { device->close(flush); });
        leaving.swap(thread);
        if (leaving.joinable())
            gone = changed.wait_for(lock, closePatience, [this] { return ended; });
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
        const std::lock_guard lock(mutex);
        if (stage == Stage::Opening)
            stage = isOpen ? Stage::Open : Stage::Over;
        if (!isOpen)
            error = device.errorString();
        if (stage == Stage::Open)
            worker = &device;
        changed.notify_all();
    }
    if (worker)
        loop.exec();
    {
        const std::lock_guard lock(mutex);
        worker = nullptr;
    }
    device.close(false);
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

void PortSession::forgetOwner()
{
    const std::lock_guard lock(ownerMutex);
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
    const std::lock_guard lock(ownerMutex);
    if (owner)
        tell(owner);
}

void PortSession::addReceived(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return;
    {
        const std::lock_guard lock(mutex);
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
    const std::lock_guard lock(mutex);
    onWorker([settings](PortWorker* device) { device->apply(settings); });
}

qint64 PortSession::write(const QByteArray& bytes)
{
    const std::lock_guard lock(mutex);
    if (stage != Stage::Open)
        return -1;
    if (toWrite.isEmpty())
        onWorker([](PortWorker* device) { device->writePending(); });
    toWrite.append(bytes);
    return bytes.size();
}

QByteArray PortSession::read(qint64 maxSize)
{
    const std::lock_guard lock(mutex);
    told = false;
    QByteArray bytes = received.mid(readPosition, static_cast<int>(maxSize));
    readPosition += bytes.size();
    if (readPosition == received.size()) {
        received.resize(0);
        readPosition = 0;
    }
    return bytes;
}

qint64 PortSession::bytesAvailable() const
{
    const std::lock_guard lock(mutex);
    return received.size() - readPosition;
}

unsigned PortSession::lineStatus() const
{
    const std::lock_guard lock(mutex);
    return stage == Stage::Open ? lines : 0;
}

bool PortSession::isOpen() const
{
    const std::lock_guard lock(mutex);
    return stage == Stage::Open;
}

QString PortSession::errorString() const
{
    const std::lock_guard lock(mutex);
    return error;
}
