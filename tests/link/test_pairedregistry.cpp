#include <QTest>

#include "link/keytree.h"
#include "link/pairedregistry.h"
#include "link/usbports.h"

Q_DECLARE_METATYPE(PairedNames)

namespace {

/// A tree written out as "path=value"; a value in hexadecimal after "=0x" is binary.
class WrittenTree : public KeyTree
{
public:
    explicit WrittenTree(const QStringList& lines)
    {
        for (const QString& line : lines)
            values.insert(line.section(QLatin1Char('='), 0, 0), line.section(QLatin1Char('='), 1));
    }

    QStringList childGroups(const QString& path) const override
    {
        QStringList children;
        for (const QString& key : values.keys()) {
            const QString rest = key.startsWith(path + '/') ? key.mid(path.size() + 1) : QString();
            if (rest.contains('/') && !children.contains(rest.section('/', 0, 0)))
                children.append(rest.section('/', 0, 0));
        }
        return children;
    }
    QVariant value(const QString& path) const override
    {
        return values.contains(path) ? QVariant(values.value(path)) : QVariant();
    }
    QByteArray bytes(const QString& path) const override
    {
        const QString text = values.value(path);
        return text.startsWith("0x") ? QByteArray::fromHex(text.mid(2).toLatin1()) : QByteArray();
    }

private:
    QMap<QString, QString> values;
};

const QString bluetooth = QStringLiteral("SYSTEM/CurrentControlSet/Enum/BTHENUM/");
const QString lowEnergy = QStringLiteral("SYSTEM/CurrentControlSet/Enum/BTHLEDevice/");
const QString services =
    QStringLiteral("SYSTEM/CurrentControlSet/services/BTHPORT/Parameters/LocalServices/{1101}/0/");

QStringList port(const QString& service, const QString& address, const QString& name,
                 const QString& root = bluetooth)
{
    const QString key = root + service + "/7&1a&0&" + address + "_C0/";
    return {key + "Driver=x", key + "Device Parameters/PortName=" + name};
}

QStringList name(const QString& address, const QString& text)
{
    return {bluetooth + "Dev_" + address + "/7&2b/FriendlyName=" + text};
}

QStringList localService(const QString& partner, const QString& enabled, const QString& text)
{
    return {services + "AssocBdAddr=" + partner, services + "enabled=" + enabled,
            services + "ServiceName=" + text};
}

const QString local = QStringLiteral("{1101}_LOCALMFG&000a");
const QString first = QStringLiteral("0012F3A1B2C3");
const QString second = QStringLiteral("0012F3A1B2C4");
const QString firstBytes = QStringLiteral("0xC3B2A1F31200");

} // namespace

class TestPairedRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyLoggersWithAPortAreListed_data()
    {
        QTest::addColumn<PairedNames>("names");
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QStringList>("expected"); // name, port, address, service

        const auto now = [](const char* title) -> QTestData& {
            return QTest::newRow(title) << PairedNames::DeviceKeys;
        };
        const QStringList logger = port(local, first, "COM12") + name(first, "Tembrin_77");
        const QStringList found{"Tembrin_77 COM12 0012F3A1B2C3 {1101}"};
        now("as paired") << logger << found;
        now("nothing paired") << QStringList() << QStringList();
        now("a service of another maker")
            << port("{1101}_VID&0001", first, "COM12") + name(first, "Tembrin_77") << QStringList();
        now("a service without a mark") << port("Serial", first, "COM5") + name(first, "Tembrin_77")
                                        << QStringList{"Tembrin_77 COM5 0012F3A1B2C3 Serial"};
        now("the computer's own") << logger + port(local, "000000000000", "COM3") +
                                         name("000000000000", "Tembrin_00")
                                  << found;
        now("an address in lower case")
            << port(local, first.toLower(), "COM12") + name(first, "Tembrin_77") << QStringList();
        now("no driver") << QStringList(logger.mid(1)) << QStringList();
        now("two services") << logger + port("{1102}_LOCALMFG&000a", first, "COM13")
                            << QStringList{"Tembrin_77 COM13 0012F3A1B2C3 {1102}"};
        now("a telephone") << logger + port(local, second, "COM14") + name(second, "Tembrin phone") << found;
        now("low energy only") << port(local, first, "COM12", lowEnergy) + name(first, "Tembrin_77")
                               << QStringList();
        for (const char* text : {"LARCHET_1", "My vorta_2", "Sorrel_3", "sorr_4"})
            now(text) << port(local, first, "COM1") + name(first, text)
                      << QStringList{QLatin1String(text) + QLatin1String(" COM1 0012F3A1B2C3 {1101}")};

        const auto before = [](const char* title) -> QTestData& {
            return QTest::newRow(title) << PairedNames::LocalServices;
        };
        const QStringList device = port(local, first, "COM12");
        before("earlier: any name") << device + localService(firstBytes, "1", "Logger 77")
                                    << QStringList{"Logger 77 COM12 0012F3A1B2C3 {1101}"};
        before("earlier: another partner")
            << device + localService("0xC4B2A1F31200", "1", "Logger 77") << QStringList();
        before("earlier: not binary") << device + localService(first, "1", "Logger 77") << QStringList();
        before("earlier: switched off")
            << device + localService(firstBytes, "0", "Logger 77") << QStringList();
        before("earlier: the stack's own")
            << device + localService(firstBytes, "1", "BT serial") << QStringList();
    }

    void onlyLoggersWithAPortAreListed()
    {
        QFETCH(PairedNames, names);
        QFETCH(QStringList, tree);
        QFETCH(QStringList, expected);
        QStringList devices;
        for (const possibleDevice& device : readPairedRegistry(WrittenTree(tree), names))
            devices << QStringList{device.name, device.portName, device.address, device.service}.join(' ');
        QCOMPARE(devices, expected);
    }

    void aConverterIsTakenUpToABadDriver()
    {
        const SerialPortRecord fixed{"COM1", "", "Communications Port (COM1)", "", "6.3.9", ""};
        const SerialPortRecord cable{"COM4", "", "Silicon cp210X bridge (COM41)", "", "6.7.0", ""};
        const SerialPortRecord bad{"COM5", "", "CP210x (COM5)", "", "6.3.1.2", ""};
        const SerialPortRecord elsewhere{"ttyUSB0", "", "CP210x", "", "", ""};
        const UsbScan good = scanForUsb({fixed, cable, elsewhere});
        QCOMPARE(good.ports, QStringList({"COM41", "ttyUSB0"}));
        QVERIFY(!good.isWrongDriver);
        const UsbScan ended = scanForUsb({cable, bad, elsewhere});
        QCOMPARE(ended.ports, QStringList("COM41"));
        QVERIFY(ended.isWrongDriver);
    }
};

QTEST_GUILESS_MAIN(TestPairedRegistry)
#include "test_pairedregistry.moc"
