#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// What the system tells of one serial port.
struct SerialPortRecord
{
    QString portName;
    QString physName;
    QString friendName; ///< on Windows with the port in brackets at its end
    QString enumName;
    QString driverVersion;
    QString providerName;
};

/// What a look for loggers on USB converters found.
struct UsbScan
{
    QStringList ports;
    bool isWrongDriver = false; ///< the look ended at a converter whose driver is known to fail
};

/// The CP210x converters among the ports, in order, up to one with a driver that is known to fail.
UsbScan scanForUsb(const QVector<SerialPortRecord>& records);

/// The serial ports of this computer.
QVector<SerialPortRecord> readSerialPorts();
