#include "link/usbports.h"

#include <QSerialPortInfo>

namespace {

// The identifiers of the converters; what a port calls itself depends on which databases are installed.
constexpr quint16 converterVendor = 0x10C4;
constexpr quint16 converterProducts[] = {0xEA60, 0xEA61, 0xEA63, 0xEA70, 0xEA71, 0xEA80};

bool isConverter(const QSerialPortInfo& port)
{
    if (port.vendorIdentifier() != converterVendor)
        return false;
    for (const quint16 product : converterProducts) {
        if (port.productIdentifier() == product)
            return true;
    }
    return false;
}

} // namespace

QVector<SerialPortRecord> readSerialPorts()
{
    QVector<SerialPortRecord> records;
    for (const QSerialPortInfo& port : QSerialPortInfo::availablePorts()) {
        SerialPortRecord record;
        record.portName = port.portName();
        record.physName = port.systemLocation();
        record.friendName = isConverter(port) ? QStringLiteral("CP210x") : port.description();
        record.providerName = port.manufacturer();
        records.append(record);
    }
    return records;
}
