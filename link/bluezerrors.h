#pragma once

#include <QString>

#include "link/portfailure.h"

/// What an error of the Bluetooth service, or of the bus on the way to it, means for who wanted a link. The
/// service tells most reasons only by its message.
PortFailure bluezFailure(const QString& name, const QString& message);

/// The device or its adapter is being called already: worth another try in a moment.
bool isBluezBusy(const QString& name, const QString& message);

/// The service says that the device has this link, which may be another program's.
bool isBluezConnected(const QString& name, const QString& message);
