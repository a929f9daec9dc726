#include "link/usbports.h"

#include "link/linklog.h"
#include "link/registrytree.h"

#include <qt_windows.h>

#include <setupapi.h>

namespace {

constexpr GUID serialPorts = {0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};

QString property(HDEVINFO list, SP_DEVINFO_DATA* device, DWORD which)
{
    wchar_t text[512] = {};
    if (!::SetupDiGetDeviceRegistryPropertyW(list, device, which, nullptr, reinterpret_cast<PBYTE>(text),
                                             sizeof text - sizeof *text, nullptr))
        return {};
    return QString::fromWCharArray(text);
}

QString portNameOf(HDEVINFO list, SP_DEVINFO_DATA* device)
{
    const HKEY key = ::SetupDiOpenDevRegKey(list, device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_QUERY_VALUE);
    if (key == INVALID_HANDLE_VALUE)
        return {};
    wchar_t text[64] = {};
    DWORD size = sizeof text - sizeof *text;
    ::RegQueryValueExW(key, L"PortName", nullptr, nullptr, reinterpret_cast<LPBYTE>(text), &size);
    ::RegCloseKey(key);
    return QString::fromWCharArray(text);
}

SerialPortRecord describe(HDEVINFO list, SP_DEVINFO_DATA* device)
{
    SerialPortRecord record;
    record.portName = portNameOf(list, device);
    record.physName = property(list, device, SPDRP_PHYSICAL_DEVICE_OBJECT_NAME);
    record.friendName = property(list, device, SPDRP_FRIENDLYNAME);
    record.enumName = property(list, device, SPDRP_ENUMERATOR_NAME);
    const QString driver = QStringLiteral("SYSTEM/CurrentControlSet/Control/Class/") +
                           property(list, device, SPDRP_DRIVER).replace(QLatin1Char('\\'), QLatin1Char('/'));
    const RegistryTree registry;
    record.driverVersion = registry.value(driver + QStringLiteral("/DriverVersion")).toString();
    record.providerName = registry.value(driver + QStringLiteral("/ProviderName")).toString();
    return record;
}

} // namespace

QVector<SerialPortRecord> readSerialPorts()
{
    QVector<SerialPortRecord> records;
    const HDEVINFO list =
        ::SetupDiGetClassDevsW(&serialPorts, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (list == INVALID_HANDLE_VALUE) {
        qCWarning(linkLog, "SetupDiGetClassDevs failed. Error code: %ld", long(::GetLastError()));
        return records;
    }
    SP_DEVICE_INTERFACE_DATA port = {};
    port.cbSize = sizeof port;
    for (DWORD i = 0; ::SetupDiEnumDeviceInterfaces(list, nullptr, &serialPorts, i, &port); ++i) {
        SP_DEVINFO_DATA device = {};
        device.cbSize = sizeof device;
        // Only the device is asked for: without room for the path the call fails for that very reason.
        if (!::SetupDiGetDeviceInterfaceDetailW(list, &port, nullptr, 0, nullptr, &device) &&
            ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            qCWarning(linkLog, "SetupDiGetDeviceInterfaceDetail failed. Error code: %ld",
                      long(::GetLastError()));
            break;
        }
        records.append(describe(list, &device));
    }
    if (::GetLastError() != ERROR_NO_MORE_ITEMS && ::GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        qCWarning(linkLog, "SetupDiEnumDeviceInterfaces failed. Error code: %ld", long(::GetLastError()));
    ::SetupDiDestroyDeviceInfoList(list);
    return records;
}
