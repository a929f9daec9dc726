#pragma once

#include "link/portfailure.h"

class QSerialPort;

/// What the system knows of a serial port and the toolkit does not pass on.

/// Why opening `port` has just failed.
PortFailure openingFailure(const QSerialPort& port);
/// The bytes of an open port that have been written and have not left this computer. Closing would wait for
/// them.
int unsentBytes(const QSerialPort& port);
