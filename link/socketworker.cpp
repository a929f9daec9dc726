#include "link/socketworker.h"

#include "link/linklog.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

namespace {

constexpr unsigned linkUp =
    SerialPort::LineCts | SerialPort::LineDsr | SerialPort::LineDcd | SerialPort::LineRi;
// The last of eight loggers on one adapter waits for seven calls that nobody answers; who dials ends each.
constexpr std::chrono::seconds dialPatience(200);
constexpr int reminderInterval = 250;  // ms
constexpr int mostBytesAtOnce = 65536; // then orders from other threads have their turn

bool mustWait()
{
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

QString systemText()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

PortKind SocketWorker::kind(const RadioDial& dial)
{
    return {[dial](PortSession* session) { return std::make_unique<SocketWorker>(session, dial); },
            dialPatience};
}

SocketWorker::SocketWorker(PortSession* session, RadioDial dial)
    : PortWorker(session)
    , dial(std::move(dial))
{
    connect(&reminder, &QTimer::timeout, this, [this] { this->session->tellAgain(); });
}

void SocketWorker::open(const PortSettings&)
{
    wish = dial(this, [this](const RadioAnswer& answer) { take(answer); });
}

void SocketWorker::take(const RadioAnswer& answer)
{
    if (closed)
        return;
    if (!answer.link) {
        wish.reset();
        session->end(answer.failure, answer.text);
        return;
    }
    link = answer.link;
    const int flags = ::fcntl(link->descriptor(), F_GETFL);
    ::fcntl(link->descriptor(), F_SETFL, flags | O_NONBLOCK);
    readable.reset(new QSocketNotifier(link->descriptor(), QSocketNotifier::Read));
    connect(readable.data(), &QSocketNotifier::activated, this, &SocketWorker::takeReceived);
    writable.reset(new QSocketNotifier(link->descriptor(), QSocketNotifier::Write));
    connect(writable.data(), &QSocketNotifier::activated, this, &SocketWorker::send);
    writable->setEnabled(false);
    reminder.start(reminderInterval);
    session->opened(linkUp);
}

void SocketWorker::takeReceived()
{
    char bytes[4096];
    for (int taken = 0; link && taken < mostBytesAtOnce;) {
        const auto size = ::recv(link->descriptor(), bytes, sizeof bytes, 0);
        if (size < 0 && mustWait())
            return;
        if (size <= 0) {
            hangUp(size == 0 ? QStringLiteral("the link ended") : systemText());
            return;
        }
        session->addReceived(QByteArray(bytes, static_cast<int>(size)));
        taken += static_cast<int>(size);
    }
}

void SocketWorker::writePending()
{
    unsent += session->takeToWrite();
    send();
}

void SocketWorker::send()
{
    while (link && !unsent.isEmpty()) {
        const auto size =
            ::send(link->descriptor(), unsent.constData(), static_cast<size_t>(unsent.size()), MSG_NOSIGNAL);
        if (size < 0 && mustWait())
            break;
        if (size < 0) {
            hangUp(systemText());
            return;
        }
        unsent.remove(0, static_cast<int>(size));
    }
    if (writable)
        writable->setEnabled(link && !unsent.isEmpty());
}

void SocketWorker::hangUp(const QString& text)
{
    qCInfo(linkLog) << "radio link lost:" << text;
    drop();
    if (session->end(PortFailure::Lost, text))
        session->tellOwner([](SerialPort* owner) { Q_EMIT owner->dsrChanged(false); });
}

void SocketWorker::close(bool flush)
{
    closed = true;
    if (flush && link)
        writePending(); // what the link takes without waiting
    drop();
}

void SocketWorker::drop()
{
    reminder.stop();
    // A notifier that has called us is still at work.
    for (auto* notifier : {&readable, &writable}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
            notifier->take()->deleteLater();
        }
    }
    link.reset();
    wish.reset();
}
