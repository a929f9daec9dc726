#include "link/serialsystem.h"

#include <QSerialPort>

#include <cerrno>
#include <sys/ioctl.h>

namespace {

struct Reason
{
    int code;
    PortFailure failure;
};

constexpr Reason reasons[] = {
    {ENOENT, PortFailure::NoPort},
    {ENODEV, PortFailure::NoPort},
    {ENXIO, PortFailure::NoPort},
    {EACCES, PortFailure::NoRight},
    {EPERM, PortFailure::NoRight},
    {EBUSY, PortFailure::Held},
    {EHOSTDOWN, PortFailure::OutOfReach},
    {ETIMEDOUT, PortFailure::OutOfReach},
    {EHOSTUNREACH, PortFailure::OutOfReach},
};

} // namespace

PortFailure openingFailure(const QSerialPort& port)
{
    // The port keeps the system's text of the error, but not its number.
    for (const Reason& reason : reasons) {
        if (port.errorString() == qt_error_string(reason.code))
            return reason.failure;
    }
    // The device was not even asked: its lock file is another program's.
    return port.error() == QSerialPort::PermissionError ? PortFailure::Held : PortFailure::Other;
}

int unsentBytes(const QSerialPort& port)
{
    int bytes = 0;
    return ::ioctl(port.handle(), TIOCOUTQ, &bytes) == 0 ? bytes : 0;
}
