#include "virtual/terminalport.h"

#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int partnerPeriod = 20; // ms

} // namespace

TerminalPort::TerminalPort(const QString& linkPath, QObject* parent)
    : VirtualPort(linkPath, parent)
{
    partnerTimer.setInterval(partnerPeriod);
    connect(&partnerTimer, &QTimer::timeout, this, &TerminalPort::lookForPartner);
}

TerminalPort::~TerminalPort()
{
    TerminalPort::close();
}

bool TerminalPort::open(QString* error)
{
    if (isOpen())
        return true;
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master < 0)
        return reportFailure(QStringLiteral("no pseudo terminal to be had"), error);
    char slaveName[128];
    int slave = -1;
    if (::grantpt(master) == 0 && ::unlockpt(master) == 0 &&
        ::ptsname_r(master, slaveName, sizeof slaveName) == 0)
        slave = ::open(slaveName, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave < 0) {
        reportFailure(QStringLiteral("the pseudo terminal does not open"), error);
        ::close(master);
        return false;
    }
    termios settings;
    ::tcgetattr(slave, &settings);
    ::cfmakeraw(&settings);
    ::cfsetspeed(&settings, B115200);
    ::tcsetattr(slave, TCSANOW, &settings);
    // Opened and closed once, the terminal reports a hang-up until somebody else opens it.
    ::close(slave);

    if (QFileInfo(place()).isSymLink())
        QFile::remove(place());
    if (::symlink(slaveName, QFile::encodeName(place()).constData()) != 0) {
        reportFailure(QStringLiteral("the link %1 can't be made").arg(place()), error);
        ::close(master);
        return false;
    }
    attach(master);
    partnerTimer.start();
    return true;
}

void TerminalPort::close()
{
    if (!isOpen())
        return;
    setPartner(false);
    partnerTimer.stop();
    detach();
    QFile::remove(place());
}

qint64 TerminalPort::put(const char* bytes, qint64 count)
{
    return ::write(stream, bytes, size_t(count));
}

/// A terminal without a partner is always "readable", so it is not watched but looked at now and then.
void TerminalPort::lookForPartner()
{
    pollfd state = {stream, POLLIN, 0};
    setPartner(::poll(&state, 1, 0) >= 0 && !(state.revents & POLLHUP));
}

void TerminalPort::setPartner(bool isThere)
{
    if (isThere)
        partnerTimer.stop(); // that it leaves is seen by reading
    else
        partnerTimer.start();
    VirtualPort::setPartner(isThere);
}
