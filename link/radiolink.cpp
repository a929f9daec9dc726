#include "link/radiolink.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

RadioLink::RadioLink(int original)
    : own(::fcntl(original, F_DUPFD_CLOEXEC, 0))
{
}

RadioLink::~RadioLink()
{
    if (own < 0)
        return;
    shut();
    ::close(own);
}

/// Closing alone would not do: the Bluetooth service keeps a duplicate.
void RadioLink::shut() const
{
    ::shutdown(own, SHUT_RDWR);
}
