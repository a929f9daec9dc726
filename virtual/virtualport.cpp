#include "virtual/virtualport.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int mostWaiting = 256 * 1024;

/// A notifier may be at work while it is given up.
void retire(std::unique_ptr<QSocketNotifier>& notifier)
{
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier.release()->deleteLater();
}

} // namespace

VirtualPort::VirtualPort(const QString& place, QObject* parent)
    : QObject(parent)
    , where(place)
{
}

VirtualPort::~VirtualPort()
{
    detach();
}

bool VirtualPort::reportFailure(const QString& what, QString* error)
{
    *error = QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

void VirtualPort::attach(int descriptor)
{
    stream = descriptor;
    readNotifier = std::make_unique<QSocketNotifier>(stream, QSocketNotifier::Read);
    readNotifier->setEnabled(false);
    writeNotifier = std::make_unique<QSocketNotifier>(stream, QSocketNotifier::Write);
    writeNotifier->setEnabled(false);
    connect(readNotifier.get(), &QSocketNotifier::activated, this, &VirtualPort::read);
    connect(writeNotifier.get(), &QSocketNotifier::activated, this, &VirtualPort::writeWaiting);
}

void VirtualPort::detach()
{
    retire(readNotifier);
    retire(writeNotifier);
    if (stream >= 0)
        ::close(stream);
    stream = -1;
}

bool VirtualPort::write(const QByteArray& bytes)
{
    if (!isOpen() || !isPartnerThere || waiting.size() + bytes.size() > mostWaiting)
        return false;
    if (!waiting.isEmpty()) {
        waiting += bytes;
        return true;
    }
    const qint64 written = put(bytes.constData(), bytes.size());
    if (written < 0 && errno != EAGAIN)
        return false;
    if (written < bytes.size()) {
        waiting = bytes.mid(int(qMax<qint64>(written, 0)));
        writeNotifier->setEnabled(true);
    }
    return true;
}

void VirtualPort::writeWaiting()
{
    const qint64 written = put(waiting.constData(), waiting.size());
    if (written > 0)
        waiting.remove(0, int(written));
    if (waiting.isEmpty())
        writeNotifier->setEnabled(false);
}

void VirtualPort::read()
{
    char buffer[4096];
    const ssize_t count = ::read(stream, buffer, sizeof buffer);
    if (count > 0)
        Q_EMIT received(QByteArray(buffer, int(count)));
    else if (count == 0 || (errno != EAGAIN && errno != EINTR))
        setPartner(false);
}

void VirtualPort::setPartner(bool isThere)
{
    if (isThere == isPartnerThere)
        return;
    isPartnerThere = isThere;
    readNotifier->setEnabled(isThere);
    if (!isThere) {
        waiting.clear();
        writeNotifier->setEnabled(false);
    }
    Q_EMIT partnerChanged(isThere);
}
