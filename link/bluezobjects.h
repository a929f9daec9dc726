#pragma once

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

#include "link/portdiscovery.h"
#include "link/possibledevice.h"

/// "00:11:22:AA:BB:CC" as 12 hexadecimal digits in upper case; empty if it is no address.
QString plainAddress(const QString& address);
/// The other way, which is also the name of the device's port.
QString addressWithColons(const QString& plain);

/// What the Bluetooth service has told of its adapters and of the devices that each of them knows.
class BluezObjects
{
public:
    /// How to reach a device: the object to ask, or the reason why none can be.
    struct Route
    {
        QString device;
        QString adapter;
        bool isConnected = false;
        PortFailure failure = PortFailure::None;
    };

    /// True if loggers() or state() may have changed. An object that is not known yet is added; properties
    /// that are not mentioned stay, those of other interfaces are left out.
    bool setProperties(const QString& path, const QString& interface, const QVariantMap& properties);
    bool remove(const QString& path, const QStringList& interfaces);

    /// The paired devices with a logger's name, each once.
    QVector<possibleDevice> loggers() const;
    BluetoothState state() const;
    /// Over the adapter with the fewest links. A link to each device of `inUse`, by its path, counts also
    /// where the service does not say so yet.
    Route route(const QString& address, const QSet<QString>& inUse) const;

private:
    struct Device
    {
        QString address;
        QString name;
        QString alias;
        QString adapter;
        bool isPaired = false;
        bool isConnected = false;
    };
    int linksOf(const QString& adapter, const QString& except, const QSet<QString>& inUse) const;

    QMap<QString, bool> adapters; // switched on or not, by path
    QMap<QString, Device> devices;
};
