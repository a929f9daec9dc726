#include "link/openingport.h"

bool OpeningPort::open(SerialPort* opened, SerialPort::OpenMode mode)
{
    {
        const std::lock_guard lock(mutex);
        if (cancelled)
            return false;
        port = opened;
    }
    const bool isOpen = opened->open(mode);
    const std::lock_guard lock(mutex);
    port = nullptr;
    return isOpen && !cancelled;
}

void OpeningPort::cancel()
{
    const std::lock_guard lock(mutex);
    cancelled = true;
    if (port)
        port->cancelOpening();
}

void OpeningPort::allow()
{
    const std::lock_guard lock(mutex);
    cancelled = false;
}

bool OpeningPort::isCancelled() const
{
    const std::lock_guard lock(mutex);
    return cancelled;
}
