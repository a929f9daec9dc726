#include "link/serialsystem.h"

#include <QSerialPort>

#include <qt_windows.h>

PortFailure openingFailure(const QSerialPort& port)
{
    // A terminal of a radio link calls the device when it is opened, and tells so that nobody answered.
    for (const DWORD code : {ERROR_SEM_TIMEOUT, ERROR_HOST_UNREACHABLE}) {
        if (port.errorString() == qt_error_string(int(code)))
            return PortFailure::OutOfReach;
    }
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return PortFailure::NoPort;
    case QSerialPort::PermissionError: // every user may open a port, but only one program at a time
        return PortFailure::Held;
    default:
        return PortFailure::Other;
    }
}

int unsentBytes(const QSerialPort& port)
{
    DWORD errors = 0;
    COMSTAT status = {};
    return ::ClearCommError(port.handle(), &errors, &status) ? int(status.cbOutQue) : 0;
}
