#include "virtual/socketport.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

SocketPort::SocketPort(const QString& path, QObject* parent)
    : VirtualPort(path, parent)
{
}

SocketPort::~SocketPort()
{
    SocketPort::close();
}

bool SocketPort::open(QString* error)
{
    if (isOpen())
        return true;
    const QByteArray path = QFile::encodeName(place());
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    errno = ENAMETOOLONG;
    if (size_t(path.size()) >= sizeof address.sun_path)
        return reportFailure(QStringLiteral("the socket %1 can't be made").arg(place()), error);
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener < 0 || ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 1) != 0) {
        reportFailure(QStringLiteral("the socket %1 can't be made").arg(place()), error);
        if (listener >= 0)
            ::close(listener);
        listener = -1;
        return false;
    }
    callNotifier = std::make_unique<QSocketNotifier>(listener, QSocketNotifier::Read);
    connect(callNotifier.get(), &QSocketNotifier::activated, this, &SocketPort::accept);
    return true;
}

void SocketPort::close()
{
    if (!isOpen())
        return;
    setPartner(false);
    callNotifier.reset();
    ::close(listener);
    listener = -1;
    QFile::remove(place());
}

void SocketPort::accept()
{
    const int partner = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (partner < 0)
        return;
    setPartner(false); // who calls anew has lost the link before, though its end may not have been read yet
    attach(partner);
    setPartner(true);
}

void SocketPort::setPartner(bool isThere)
{
    VirtualPort::setPartner(isThere);
    if (!isThere)
        detach();
}

qint64 SocketPort::put(const char* bytes, qint64 count)
{
    return ::send(stream, bytes, size_t(count), MSG_NOSIGNAL);
}
