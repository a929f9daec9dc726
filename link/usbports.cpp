#include "link/usbports.h"

namespace {

const QString converter = QStringLiteral("CP210x");
const QString badDriver = QStringLiteral("6.3");

/// From "COM" to before the closing bracket; systems that name no such port there say it apart.
QString portOf(const SerialPortRecord& record)
{
    const int start = record.friendName.indexOf(QLatin1String("COM"));
    return start < 0 ? record.portName : record.friendName.mid(start).chopped(1);
}

} // namespace

UsbScan scanForUsb(const QVector<SerialPortRecord>& records)
{
    UsbScan scan;
    for (const SerialPortRecord& record : records) {
        if (!record.friendName.contains(converter, Qt::CaseInsensitive))
            continue;
        if (record.driverVersion.contains(badDriver)) {
            scan.isWrongDriver = true;
            break;
        }
        scan.ports.append(portOf(record));
    }
    return scan;
}
