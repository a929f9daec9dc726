#pragma once

#include "link/serialport.h"

/// Makes ports of this computer. Any name under /dev or an absolute path is a serial port, a pseudo terminal
/// or a link to one as well; where the system has a Bluetooth service, the address of a device is a port too.
SerialPortFactory systemPortFactory();
