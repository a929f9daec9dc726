#include "link/bluezprofile.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <sys/socket.h>
#include <utility>

namespace {

QString devicePath(const QDBusMessage& message)
{
    return message.arguments().value(0).value<QDBusObjectPath>().path();
}

} // namespace

BluezProfile::BluezProfile(Handlers handlers)
    : handlers(std::move(handlers))
{
}

QString BluezProfile::introspect(const QString&) const
{
    return QStringLiteral(R"(<interface name="org.bluez.Profile1">
<method name="NewConnection"><arg type="o" direction="in"/><arg type="h" direction="in"/>
<arg type="a{sv}" direction="in"/></method>
<method name="RequestDisconnection"><arg type="o" direction="in"/></method>
<method name="Cancel"/><method name="Release"/>
</interface>)");
}

bool BluezProfile::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    if (message.interface() != QLatin1String("org.bluez.Profile1"))
        return false;
    if (!handlers.isService(message.service())) {
        connection.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("not for you")));
        return true;
    }
    QDBusMessage reply = message.createReply();
    if (message.member() == QLatin1String("NewConnection"))
        reply = answerNewConnection(message);
    else if (message.member() == QLatin1String("RequestDisconnection"))
        handlers.requestDisconnection(devicePath(message));
    else if (message.member() == QLatin1String("Release"))
        handlers.release();
    else if (message.member() != QLatin1String("Cancel")) // the answer to ConnectProfile says the same
        return false;
    connection.send(reply);
    return true;
}

QDBusMessage BluezProfile::answerNewConnection(const QDBusMessage& message) const
{
    const auto descriptor = message.arguments().value(1).value<QDBusUnixFileDescriptor>();
    if (descriptor.isValid() && handlers.newConnection(devicePath(message), descriptor.fileDescriptor()))
        return message.createReply();
    if (descriptor.isValid())
        ::shutdown(descriptor.fileDescriptor(), SHUT_RDWR); // the service keeps a duplicate
    return message.createErrorReply(QStringLiteral("org.bluez.Error.Canceled"),
                                    QStringLiteral("nobody waits for this link any more"));
}
