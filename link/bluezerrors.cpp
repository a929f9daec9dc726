#include "link/bluezerrors.h"

namespace {

struct ErrorRow
{
    const char* part;
    PortFailure failure;
};

// The first row that fits counts.
constexpr ErrorRow byMessage[] = {
    {"page-timeout", PortFailure::OutOfReach},
    {"br-connection-timeout", PortFailure::OutOfReach},
    {"timed out", PortFailure::OutOfReach},
    {"Host is down", PortFailure::OutOfReach},
    {"No route to host", PortFailure::OutOfReach},
    {"sdp-search", PortFailure::OutOfReach}, // it went away while it was asked for its services
    {"aborted-by-remote", PortFailure::Refused},
    {"br-connection-unknown", PortFailure::Refused}, // as it calls an authentication that failed
    {"reset by peer", PortFailure::OutOfReach},
    {"key-missing", PortFailure::Refused},
    {"refused", PortFailure::Refused},
    {"Permission denied", PortFailure::Refused},
    {"Invalid exchange", PortFailure::Refused}, // how the kernel names a missing key
    {"uthenticat", PortFailure::Refused},
    {"not-powered", PortFailure::AdapterOff},
    {"connection-limit", PortFailure::AdapterFull},
    {"Too many links", PortFailure::AdapterFull},
    {"canceled", PortFailure::Cancelled},
    {"Cancelled", PortFailure::Cancelled},
};

constexpr ErrorRow byName[] = {
    {"org.freedesktop.DBus.Error.ServiceUnknown", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.NoReply", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.Timeout", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.TimedOut", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.Disconnected", PortFailure::NoService},
    {"org.freedesktop.DBus.Error.AccessDenied", PortFailure::NoRight},
    {"org.freedesktop.DBus.Error.UnknownObject", PortFailure::NotPaired},
    {"org.freedesktop.DBus.Error.UnknownMethod",
     PortFailure::NotPaired}, // so it says of a device that has gone
    {"org.bluez.Error.DoesNotExist", PortFailure::NotPaired},
    {"org.bluez.Error.NotReady", PortFailure::AdapterOff},
    {"org.bluez.Error.NotAuthorized", PortFailure::Refused},
    {"org.bluez.Error.Rejected", PortFailure::Refused},
    {"org.bluez.Error.AuthenticationFailed", PortFailure::Refused},
    {"org.bluez.Error.AuthenticationRejected", PortFailure::Refused},
    {"org.bluez.Error.AuthenticationCanceled", PortFailure::Refused},
    {"org.bluez.Error.AuthenticationTimeout", PortFailure::Refused},
    {"org.bluez.Error.ConnectionAttemptFailed", PortFailure::OutOfReach},
};

} // namespace

PortFailure bluezFailure(const QString& name, const QString& message)
{
    for (const ErrorRow& row : byName) {
        if (name == QLatin1String(row.part))
            return row.failure;
    }
    for (const ErrorRow& row : byMessage) {
        if (message.contains(QLatin1String(row.part)))
            return row.failure;
    }
    return PortFailure::Other;
}

bool isBluezBusy(const QString& name, const QString& message)
{
    return name == QLatin1String("org.bluez.Error.InProgress") ||
           message.contains(QLatin1String("br-connection-busy"));
}

bool isBluezConnected(const QString& name, const QString& message)
{
    return name == QLatin1String("org.bluez.Error.AlreadyConnected") ||
           message.contains(QLatin1String("already-connected"));
}
