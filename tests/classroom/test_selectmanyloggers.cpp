#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "common/settings.h"
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
        , dialog(&manager, devices)
    {
        dialog.show();
        if (!QTest::qWaitForWindowActive(&dialog))
            qCritical("the dialog does not come up");
    }
    QString hint() const { return dialog.findChild<QLabel*>("hint")->text(); }

    multiConnectionsManager manager;
    selectManyLoggers dialog;
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
        QVERIFY(bench.list("listPaired")->item(0)->toolTip().contains("rfcomm0 00:12:F3:A1:B2:C3"));
        bench.choose("listPaired", {0, 1});
        bench.press("pushAdd");
        QCOMPARE(bench.lines("listUsed"), QStringList("Group A (Tembrin_2)"));

        DialogBench empty({});
        QVERIFY(empty.hint().contains("Pair one") && empty.hint().contains("virtual-loggers"));
    }
};

QTEST_MAIN(TestSelectManyLoggers)
#include "test_selectmanyloggers.moc"
