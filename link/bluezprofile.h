#pragma once

#include <QDBusVirtualObject>

#include <functional>

/// The object on the bus that the Bluetooth service hands its links to.
class BluezProfile : public QDBusVirtualObject
{
public:
    struct Handlers
    {
        /// Whether a message comes from the service and not from anybody else.
        std::function<bool(const QString& sender)> isService;
        /// A link to the device; false if nobody wants it. The descriptor stays the caller's.
        std::function<bool(const QString& device, int descriptor)> newConnection;
        std::function<void(const QString& device)> requestDisconnection;
        /// The service has forgotten the profile.
        std::function<void()> release;
    };

    explicit BluezProfile(Handlers handlers);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusMessage answerNewConnection(const QDBusMessage& message) const;

    const Handlers handlers;
};
