#pragma once

#include <QString>
#include <QVector>

#include "link/possibledevice.h"

/// Where the kernel lists its terminals: a directory each.
QString systemTerminals();

/// The loggers among the devices that are paired through BlueZ. The port of one is the terminal below
/// `terminals` that is bound to its address, an empty text if none is. Waits half a second at most; calls
/// that come meanwhile share one question. Without a bus or without BlueZ there are none.
QVector<possibleDevice> pairedBluezDevices(const QString& terminals);
