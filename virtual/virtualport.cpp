#include "virtual/virtualport.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int partnerPeriod = 20; // ms
constexpr int mostWaiting = 256 * 1024;

bool reportFailure(const QString& what, QString* error)
{
    *error = QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

} // namespace

VirtualPort::VirtualPort(const QString& linkPath, QObject* parent)
    : QObject(parent)
    , link(linkPath)
{
    partnerTimer.setInterval(partnerPeriod);
    connect(&partnerTimer, &QTimer::timeout, this, &VirtualPort::lookForPartner);
}

VirtualPort::~VirtualPort()
{
    close();
}

bool VirtualPort::open(QString* error)
{
    if (isOpen())
        return true;
    const int fd = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return reportFailure(QStringLiteral("no pseudo terminal to be had"), error);
    char slaveName[128];
    int slave = -1;
    if (::grantpt(fd) == 0 && ::unlockpt(fd) == 0 && ::ptsname_r(fd, slaveName, sizeof slaveName) == 0)
        slave = ::open(slaveName, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave < 0) {
        reportFailure(QStringLiteral("the pseudo terminal does not open"), error);
        ::close(fd);
        return false;
    }
    termios settings;
    ::tcgetattr(slave, &settings);
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B115200);
    ::tcsetattr(slave, TCSANOW, &settings);
    // Opened and closed once, the terminal reports a hang-up until somebody else opens it.
    ::close(slave);

    if (QFileInfo(link).isSymLink())
        QFile::remove(link);
    if (::symlink(slaveName, QFile::encodeName(link).constData()) != 0) {
        reportFailure(QStringLiteral("the link %1 can't be made").arg(link), error);
        ::close(fd);
        return false;
    }
    master = fd;
    readNotifier = std::make_unique<QSocketNotifier>(master, QSocketNotifier::Read);
    readNotifier->setEnabled(false);
    writeNotifier = std::make_unique<QSocketNotifier>(master, QSocketNotifier::Write);
    writeNotifier->setEnabled(false);
    connect(readNotifier.get(), &QSocketNotifier::activated, this, &VirtualPort::read);
    connect(writeNotifier.get(), &QSocketNotifier::activated, this, &VirtualPort::writeWaiting);
    partnerTimer.start();
    return true;
}

void VirtualPort::close()
{
    if (!isOpen())
        return;
    setPartner(false);
    partnerTimer.stop();
    readNotifier.reset();
    writeNotifier.reset();
    ::close(master);
    master = -1;
    QFile::remove(link);
}

bool VirtualPort::write(const QByteArray& bytes)
{
    if (!isOpen() || !isPartnerThere || waiting.size() + bytes.size() > mostWaiting)
        return false;
    if (!waiting.isEmpty()) {
        waiting += bytes;
        return true;
    }
    const ssize_t written = ::write(master, bytes.constData(), size_t(bytes.size()));
    if (written < 0 && errno != EAGAIN)
        return false;
    if (written < bytes.size()) {
        waiting = bytes.mid(int(qMax<ssize_t>(written, 0)));
        writeNotifier->setEnabled(true);
    }
    return true;
}

void VirtualPort::writeWaiting()
{
    const ssize_t written = ::write(master, waiting.constData(), size_t(waiting.size()));
    if (written > 0)
        waiting.remove(0, int(written));
    if (waiting.isEmpty())
        writeNotifier->setEnabled(false);
}

void VirtualPort::read()
{
    char buffer[4096];
    const ssize_t count = ::read(master, buffer, sizeof buffer);
    if (count > 0)
        Q_EMIT received(QByteArray(buffer, int(count)));
    else if (count < 0 && errno != EAGAIN && errno != EINTR)
        setPartner(false);
}

/// A terminal without a partner is always "readable", so it is not watched but looked at now and then.
void VirtualPort::lookForPartner()
{
    pollfd state = {master, POLLIN, 0};
    const bool isThere = ::poll(&state, 1, 0) >= 0 && !(state.revents & POLLHUP);
    if (isThere != isPartnerThere)
        setPartner(isThere);
}

void VirtualPort::setPartner(bool isThere)
{
    if (isThere == isPartnerThere)
        return;
    isPartnerThere = isThere;
    readNotifier->setEnabled(isThere);
    if (isThere) {
        partnerTimer.stop(); // that it leaves is seen by reading
    } else {
        partnerTimer.start();
        waiting.clear();
        writeNotifier->setEnabled(false);
    }
    Q_EMIT partnerChanged(isThere);
}
