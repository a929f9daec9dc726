#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "common/settings.h"
#include "protocol/tembrinprotocol.h"
#include "tests/classroom/dialoghand.h"
#include "tests/common/testsupport.h"
#include <QLabel>

namespace {

QVector<possibleDevice> paired(int count)
{
    QVector<possibleDevice> devices;
    for (int i = 1; i <= count; ++i)
        devices.append({QStringLiteral("COM%1").arg(i), "", "", QStringLiteral("Tembrin_000%1").arg(i), ""});
    return devices;
}

class DialogBench : public DialogHand
{
public:
    explicit DialogBench(const QVector<possibleDevice>& devices)
        : DialogHand(&dialog)
        , dialog(withoutRadio(&manager), devices)
    {
        dialog.show();
        if (!QTest::qWaitForWindowActive(&dialog))
            qCritical("the dialog does not come up");
    }
    QString hint() const { return dialog.findChild<QLabel*>("hint")->text(); }

    multiConnectionsManager manager;
    selectManyLoggers dialog;

private:
    /// This computer's own may be anything.
    static multiConnectionsManager* withoutRadio(multiConnectionsManager* manager)
    {
        manager->tembrinAt(0)->setPortDiscovery({[] { return QVector<possibleDevice>(); }, {}});
        return manager;
    }
};

} // namespace

class TestSelectManyLoggers : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { Settings::mainStore().clear(); }

private Q_SLOTS:
    void groupsAreNamedAnewWhereTheirNamesAreAutomatic()
    {
        const QStringList stored{"group x", "Physics table", "Group Z", "Group 12", ""};
        for (int slot = 0; slot < 5; ++slot) {
            // The slots the other way round: the order is that of the devices.
            Settings::mainStore().setValue(Settings::loggerKey(slot), QStringLiteral("COM%1").arg(5 - slot));
            Settings::mainStore().setValue(Settings::groupKey(slot), stored[4 - slot]);
        }
        DialogBench bench(paired(6));
        const auto names = [&] {
            return bench.lines("listUsed").replaceInStrings(QRegularExpression(" \\(Tembrin_000.\\)"), "");
        };
        QCOMPARE(names(), QStringList({"Group A", "Physics table", "Group B", "Group 12", "Group C"}));
        QCOMPARE(bench.lines("listPaired"), QStringList("Tembrin_0006"));
        bench.choose("listUsed", {0, 1});
        bench.press("pushRemove");
        QCOMPARE(names(), QStringList({"Group A", "Group 12", "Group B"}));
        bench.choose("listPaired", {2});
        bench.press("pushAdd");
        QCOMPARE(names().last(), QStringLiteral("Physics table"));
    }

    void aLineIsTypedOverOrLeft()
    {
        DialogBench bench(paired(2));
        bench.choose("listPaired", {0, 1});
        bench.press("pushAdd");
        const auto typed = [&](const QString& text, Qt::Key end = Qt::Key_Return) {
            bench.rename("listUsed", 1, text, end);
            return bench.lines("listUsed")[1];
        };
        QCOMPARE(typed("T 1", Qt::Key_Escape), QStringLiteral("Group B (Tembrin_0002)"));
        QCOMPARE(typed(" Team 1 (Tembrin_0002)"), QStringLiteral("Team 1 (Tembrin_0002)"));
        QCOMPARE(typed("Tembrin_0002"), QStringLiteral("Group B (Tembrin_0002)"));
        // On to the next line, whose editor is still open when the dialog goes.
        QCOMPARE(typed("T Vorta_0002", Qt::Key_Tab), QStringLiteral("T Vorta_0002 (Tembrin_0002)"));
        QVERIFY(bench.dialog.isVisible());
    }

    void aClassEndsAtEight()
    {
        DialogBench bench(paired(9));
        QTest::keyClick(bench.list("listPaired"), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(bench.button("pushAdd"), Qt::Key_Space);
        QCOMPARE(bench.dialog.nTembrins, 8);
        QVERIFY(bench.hint().contains("the most"));
    }

    void whatCannotBeOpenedSaysSo()
    {
        DialogBench bench({{"", "0012F3A1B2C3", "", "Tembrin_1", ""}, {"COM5", "", "", "Tembrin_2", ""}});
        QVERIFY(bench.list("listPaired")->item(0)->toolTip().contains("00:12:F3:A1:B2:C3\nPaired, but"));
        bench.choose("listPaired", {0, 1});
        bench.press("pushAdd");
        QCOMPARE(bench.lines("listUsed"), QStringList("Group A (Tembrin_2)"));

        DialogBench empty({});
        QVERIFY(empty.hint().contains("Pair one") && empty.hint().contains("virtual-loggers"));
    }

    void theListFollowsWhatIsPaired()
    {
        DialogBench bench(paired(2));
        bench.choose("listPaired", {0});
        bench.press("pushAdd");
        bench.rename("listUsed", 0, "Ants");
        bench.dialog.takeDevices(paired(3).mid(1)); // the used one is away for a moment
        QCOMPARE(bench.lines("listUsed"), QStringList("Ants (Tembrin_0001)"));
        QCOMPARE(bench.lines("listPaired"), QStringList({"Tembrin_0002", "Tembrin_0003"}));
        bench.dialog.takeDevices(paired(1));
        QCOMPARE(bench.lines("listPaired"), QStringList());
        QCOMPARE(bench.lines("listUsed"), QStringList("Ants (Tembrin_0001)"));
    }

    void aGroupStaysWithItsDevice()
    {
        // Its port has another number now; the port of the other was its own yesterday.
        Settings::mainStore().setValue(Settings::loggerKey(0), "COM2");
        Settings::mainStore().setValue(Settings::addressKey(0), "0012F3A1B2C3");
        Settings::mainStore().setValue(Settings::groupKey(0), "Ants");
        Settings::mainStore().setValue(Settings::loggerKey(1), "USB0");
        DialogBench bench({{"COM9", "0012F3A1B2C3", "", "Tembrin_1", ""},
                           {"COM2", "0012F3A1B2C4", "", "Tembrin_2", ""},
                           {"USB0", "", "", "USB0", ""}});
        QCOMPARE(bench.lines("listUsed"), QStringList({"Ants (Tembrin_1)", "Group A (USB0)"}));
        bench.press("pushButton_Save");
        QCOMPARE(Settings::mainStore().value(Settings::loggerKey(0)).toString(), QStringLiteral("COM9"));
        QCOMPARE(Settings::mainStore().value(Settings::addressKey(0)).toString(),
                 QStringLiteral("0012F3A1B2C3"));
        QVERIFY(!Settings::mainStore().contains(Settings::addressKey(1)));
    }

    void theRadioSaysWhatHindersIt()
    {
        multiConnectionsManager manager;
        BluetoothState state;
        PortDiscovery discovery;
        discovery.bluetooth = [&state] { return state; };
        manager.tembrinAt(0)->setPortDiscovery(discovery);
        QVector<possibleDevice> devices;
        for (int i = 1; i <= 8; ++i) {
            const QString end = QString::number(i);
            devices.append({"00:12:F3:A1:B2:0" + end, "0012F3A1B20" + end, "", "Tembrin_" + end, ""});
            state.adaptersOf.insert(devices.last().address, {"hci0"});
        }
        const auto hintFor = [&](selectManyLoggers& dialog) {
            dialog.takeDevices(devices);
            return dialog.findChild<QLabel*>("hint")->text();
        };
        for (int i = 0; i < 8; ++i) {
            Settings::mainStore().setValue(Settings::loggerKey(i), devices[i].portName);
            Settings::mainStore().setValue(Settings::addressKey(i), devices[i].address);
        }
        selectManyLoggers dialog(&manager, devices);
        QVERIFY(hintFor(dialog).contains("two Bluetooth adapters"));
        state.adaptersOf[devices[7].address] = QStringList{"hci0", "hci1"};
        QVERIFY(!hintFor(dialog).contains("adapters"));

        // What can't be read is not thrown out of the class.
        state = {PortFailure::NoService, {}};
        devices.clear();
        selectManyLoggers blind(&manager, devices);
        QCOMPARE(blind.nTembrins, 8);
        QVERIFY(hintFor(blind).contains("systemctl"));
        state = {PortFailure::AdapterOff, {}};
        QVERIFY(hintFor(blind).contains("switched off"));
    }
};

QTEST_MAIN(TestSelectManyLoggers)
#include "test_selectmanyloggers.moc"
