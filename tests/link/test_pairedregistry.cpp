#include <QTest>

#include "link/keytree.h"
#include "link/pairedregistry.h"
#include "link/usbports.h"

namespace {

/// A tree written out as "path=value"; a value that begins with 0x is binary.
class WrittenTree : public KeyTree
{
public:
    explicit WrittenTree(const QStringList& lines)
    {
        for (const QString& line : lines)
            values.insert(line.section('=', 0, 0), line.section('=', 1));
    }
    QStringList childGroups(const QString& path) const override
    {
        QStringList children;
        for (const QString& key : values.keys()) {
            if (key.startsWith(path + '/') && key.mid(path.size() + 1).contains('/'))
                children << key.mid(path.size() + 1).section('/', 0, 0);
        }
        children.removeDuplicates();
        return children;
    }
    QVariant value(const QString& path) const override
    {
        return values.contains(path) ? QVariant(values.value(path)) : QVariant();
    }
    QByteArray bytes(const QString& path) const override
    {
        const QByteArray text = values.value(path).toLatin1();
        return text.startsWith("0x") ? QByteArray::fromHex(text.mid(2)) : QByteArray();
    }

private:
    QMap<QString, QString> values;
};

struct Row
{
    const char* what;
    const char* tree; // lines by blanks; ENUM, LE and SERVICES stand for their keys
    const char* expected;
};

// clang-format off
constexpr const char* port = "ENUM/{11}_LOCALMFG&0a/7&0012F3A1B2C3_C0/Driver=x "
                             "ENUM/{11}_LOCALMFG&0a/7&0012F3A1B2C3_C0/Device_Parameters/PortName=COM12 ";
constexpr const char* named = "ENUM/Dev_0012F3A1B2C3/7&2b/FriendlyName=Tembrin_77 ";
constexpr Row deviceKeys[] = { // added to a port and its name
    {"as paired", "", "Tembrin_77 COM12 0012F3A1B2C3 {11}"},
    {"the computer's own", "ENUM/{11}_LOCALMFG&0a/7&000000000000_C0/Driver=x ENUM/Dev_000000000000/1/FriendlyName=Vorta_1", "Tembrin_77 COM12 0012F3A1B2C3 {11}"},
    {"lower case, low energy, no driver", "ENUM/{11}_LOCALMFG&0a/7&0012f3a1b2c4_C0/Driver=x LE/S/7&0012F3A1B2C5_C0/Driver=x ENUM/S/7&0012F3A1B2C6_C0/Other=x "
        "ENUM/Dev_0012f3a1b2c4/1/FriendlyName=sorr_4 ENUM/Dev_0012F3A1B2C5/1/FriendlyName=sorr_5 ENUM/Dev_0012F3A1B2C6/1/FriendlyName=sorr_6", "Tembrin_77 COM12 0012F3A1B2C3 {11}"},
    {"the last of two services", "ENUM/{12}_LOCALMFG&0a/7&0012F3A1B2C3_C0/Driver=x", "Tembrin_77  0012F3A1B2C3 {12}"},
    {"a service without a mark", "ENUM/Serial/7&0012F3A1B2C7_C0/Driver=x ENUM/Dev_0012F3A1B2C7/1/FriendlyName=My-VORTA_2", "My-VORTA_2  0012F3A1B2C7 Serial,Tembrin_77 COM12 0012F3A1B2C3 {11}"},
    {"a telephone", "ENUM/Dev_0012F3A1B2C3/7&2b/FriendlyName=Tembrin-phone", ""},
    {"its short form", "ENUM/Dev_0012F3A1B2C3/7&2b/FriendlyName=sorr_4", "sorr_4 COM12 0012F3A1B2C3 {11}"},
};
constexpr const char* service = "SERVICES/{11}/0/AssocBdAddr=0xC3B2A1F31200 SERVICES/{11}/0/enabled=1 SERVICES/{11}/0/ServiceName=Logger7 ";
constexpr Row localServices[] = { // added to a port and its service
    {"any name", "", "Logger7 COM12 0012F3A1B2C3 {11}"},
    {"another partner", "SERVICES/{11}/0/AssocBdAddr=0xC4B2A1F31200", ""},
    {"switched off", "SERVICES/{11}/0/enabled=0", ""},
    {"the stack's own", "SERVICES/{11}/0/ServiceName=BT-serial", ""},
};
// clang-format on

void check(const Row& row, const char* base, PairedNames names)
{
    QString lines = QLatin1String(port) + QLatin1String(base) + QLatin1String(row.tree);
    lines.replace("ENUM", "SYSTEM/CurrentControlSet/Enum/BTHENUM");
    lines.replace("LE/", "SYSTEM/CurrentControlSet/Enum/BTHLEDevice/");
    lines.replace("SERVICES", "SYSTEM/CurrentControlSet/services/BTHPORT/Parameters/LocalServices");
    QStringList tree = lines.split(' ', Qt::SkipEmptyParts);
    tree.replaceInStrings("Device_P", "Device P");
    QStringList devices;
    for (const possibleDevice& device : readPairedRegistry(WrittenTree(tree), names))
        devices << QStringList{device.name, device.portName, device.address, device.service}.join(' ');
    QVERIFY2(devices.join(',') == QLatin1String(row.expected),
             qPrintable(QLatin1String(row.what) + ": " + devices.join(',')));
}

} // namespace

class TestPairedRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyLoggersWithAPortAreListed()
    {
        for (const Row& row : deviceKeys)
            check(row, named, PairedNames::DeviceKeys);
        for (const Row& row : localServices)
            check(row, service, PairedNames::LocalServices);
        QVERIFY(readPairedRegistry(WrittenTree({}), PairedNames::DeviceKeys).isEmpty());
    }

    void aConverterIsTakenUpToABadDriver()
    {
        const SerialPortRecord fixed{"COM1", "", "Communications Port (COM1)", "", "6.3.9", ""};
        const SerialPortRecord cable{"COM4", "", "Silicon cp210X bridge (COM41)", "", "6.7.0", ""};
        const SerialPortRecord bad{"COM5", "", "CP210x (COM5)", "", "6.3.1.2", ""};
        const SerialPortRecord elsewhere{"ttyUSB0", "", "CP210x", "", "", ""};
        QCOMPARE(scanForUsb({fixed, cable, elsewhere}).ports, QStringList({"COM41", "ttyUSB0"}));
        QVERIFY(!scanForUsb({fixed, cable}).isWrongDriver);
        QCOMPARE(scanForUsb({cable, bad, elsewhere}).ports, QStringList("COM41"));
        QVERIFY(scanForUsb({bad}).isWrongDriver);
    }
};

QTEST_GUILESS_MAIN(TestPairedRegistry)
#include "test_pairedregistry.moc"
