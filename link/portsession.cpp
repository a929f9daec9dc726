#include "link/portsession.h"

#include "link/portworker.h"

#include <QEventLoop>

#include <chrono>
#include <utility>

namespace {
constexpr std::chrono::milliseconds closePatience(300); // whoever closes is the GUI thread
constexpr int compactAt = 64 * 1024;
} // namespace

PortSession::PortSession(SerialPort* owner, bool signalBytes)
    : owner(owner)
    , signalBytes(signalBytes)
{
}

bool PortSession::start(const PortKind& kind, const PortSettings& settings)
{
    std::unique_lock lock(mutex);
    if (stage == Stage::Opening) {
        thread = std::thread([self = shared_from_this(), kind, settings] { self->run(kind, settings); });
        if (!changed.wait_for(lock, kind.openPatience, [this] { return stage != Stage::Opening; }))
            endWith(PortFailure::OutOfReach, QStringLiteral("the device did not answer in time"));
    }
    return stage == Stage::Open;
}

void PortSession::cancel()
{
    const std::lock_guard lock(mutex);
    if (stage == Stage::Opening)
        endWith(PortFailure::Cancelled, QStringLiteral("cancelled"));
}

void PortSession::finish(bool flush)
{
    std::thread leaving;
    bool gone = false;
    {
        std::unique_lock lock(mutex);
        if (stage == Stage::Opening)
            endWith(PortFailure::Cancelled, QStringLiteral("cancelled"));
        stage = Stage::Over;
        changed.notify_all();
        onWorker([this, flush](PortWorker* device) {
            device->close(flush);
            loop->quit();
        });
        leaving.swap(thread);
        if (leaving.joinable())
            gone = changed.wait_for(lock, closePatience, [this] { return ended; });
    }
    if (leaving.joinable())
        gone ? leaving.join() : leaving.detach();
}

void PortSession::run(const PortKind& kind, const PortSettings& settings)
{
    QEventLoop ownLoop; // first: it gives this thread the dispatcher that the device asks for
    loop = &ownLoop;
    const std::unique_ptr<PortWorker> device = kind.makeWorker(this);
    {
        const std::lock_guard lock(mutex);
        if (stage == Stage::Opening)
            worker = device.get();
    }
    if (worker) {
        // From the loop, so that an opening that fails at once still finds a loop to leave.
        QMetaObject::invokeMethod(
            worker, [&] { device->open(settings); }, Qt::QueuedConnection);
        ownLoop.exec();
    }
    {
        const std::lock_guard lock(mutex);
        worker = nullptr;
    }
    device->close(false);
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

void PortSession::opened(unsigned linesUp)
{
    const std::lock_guard lock(mutex);
    if (stage != Stage::Opening)
        return; // given up meanwhile, the order to end is on its way
    lines = linesUp;
    stage = Stage::Open;
    changed.notify_all();
}

bool PortSession::end(PortFailure why, const QString& text)
{
    loop->quit();
    const std::lock_guard lock(mutex);
    if (stage == Stage::Over)
        return false;
    endWith(why, text);
    return true;
}

void PortSession::endWith(PortFailure why, const QString& text)
{
    stage = Stage::Over;
    reason = why;
    error = text;
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

void PortSession::tellAgain()
{
    if (signalBytes && bytesAvailable() > 0)
        tellOwner([](SerialPort* port) { Q_EMIT port->readyRead(); });
}

QByteArray PortSession::takeToWrite()
{
    const std::lock_guard lock(mutex);
    return std::exchange(toWrite, {});
}

void PortSession::setLines(unsigned linesUp)
{
    const std::lock_guard lock(mutex);
    lines = linesUp;
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

PortFailure PortSession::failure() const
{
    const std::lock_guard lock(mutex);
    return reason;
}
