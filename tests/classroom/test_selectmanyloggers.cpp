#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include "app/common/settings.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "tests/common/testsupport.h"

namespace {

QVector<possibleDevice> paired(int count)
{
    QVector<possibleDevice> devices;
    for (int i = 1; i <= count; ++i)
        devices.append({QStringLiteral("COM%1").arg(i), "", "", QStringLiteral("Tembrin_000%1").arg(i), ""});
    return devices;
}

/// The dialog and a person with a keyboard and a mouse.
class DialogBench
{
public:
    explicit DialogBench(const QVector<possibleDevice>& devices)
        : dialog(&manager, devices)
    {
        dialog.show();
        if (!QTest::qWaitForWindowActive(&dialog))
            qCritical("the dialog does not come up");
    }

    template<typename Widget> Widget* part(const char* name) const
    {
        return dialog.findChild<Widget*>(QLatin1String(name));
    }
    void press(const char* button) { QTest::mouseClick(part<QPushButton>(button), Qt::LeftButton); }
    void choose(const char* name, std::initializer_list<int> rows)
    {
        auto* list = part<QListWidget>(name);
        Qt::KeyboardModifiers keys = Qt::NoModifier;
        for (const int row : rows) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, keys,
                              list->visualItemRect(list->item(row)).center());
            keys = Qt::ControlModifier;
        }
    }
    /// Types over the whole line of a used logger.
    void rename(int row, const QString& text, Qt::Key end = Qt::Key_Return)
    {
        auto* list = part<QListWidget>("listUsed");
        choose("listUsed", {row});
        QTest::keyClick(list, Qt::Key_F2);
        auto* editor = list->findChild<QLineEdit*>();
        QVERIFY(editor);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, end);
        if (end != Qt::Key_Tab) // that goes on to the next line
            QTRY_VERIFY(!list->findChild<QLineEdit*>());
    }
    QStringList lines(const char* name) const
    {
        QStringList all;
        for (int i = 0; i < part<QListWidget>(name)->count(); ++i)
            all << part<QListWidget>(name)->item(i)->text();
        return all;
    }
    QString hint() const { return part<QLabel>("hint")->text(); }

    multiConnectionsManager manager;
    selectManyLoggers dialog;
};

/// What is stored for the slots, as "port name".
QStringList stored()
{
    QStringList all;
    for (int i = 0; i < 8; ++i)
        all << Settings::mainStore().value(Settings::loggerKey(i)).toString() + ' ' +
                   Settings::mainStore().value(Settings::groupKey(i)).toString();
    return all;
}

} // namespace

class TestSelectManyLoggers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Settings::mainStore().clear();
        guard.reset(new WarningGuard);
    }

    void cleanup()
    {
        VERIFY_NO_WARNINGS(*guard);
        guard.reset();
    }

    void groupsAreNamedAnewWhereTheirNamesAreAutomatic_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("no names") << QStringList{"", "", ""} << "Group A, Group B, Group C";
        QTest::newRow("one by hand") << QStringList{"Group A", "Physics table", "Group C"}
                                     << "Group A, Physics table, Group B";
        QTest::newRow("in lower case") << QStringList{"group x", ""} << "Group A, Group B";
        QTest::newRow("two characters") << QStringList{"Group 12", "Group Z"} << "Group 12, Group A";
    }

    void groupsAreNamedAnewWhereTheirNamesAreAutomatic()
    {
        QFETCH(QStringList, before);
        QFETCH(QString, after);
        for (int i = 0; i < before.size(); ++i) {
            // The slots the other way round: the order is that of the devices.
            const int slot = 7 - i;
            Settings::mainStore().setValue(Settings::loggerKey(slot), QStringLiteral("COM%1").arg(i + 1));
            Settings::mainStore().setValue(Settings::groupKey(slot), before[i]);
        }
        DialogBench bench(paired(5));
        const QString lines = bench.lines("listUsed").join(", ");
        QCOMPARE(QString(lines).remove(QRegularExpression(" \\(Tembrin_000.\\)")), after);
        QCOMPARE(bench.lines("listPaired").size(), 5 - before.size());
    }

    void aLineIsTypedOverOrLeft_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<Qt::Key>("end");
        QTest::addColumn<QString>("line");
        QTest::newRow("a name") << "Team 1" << Qt::Key_Return << "Team 1 (Tembrin_0002)";
        QTest::newRow("with the device")
            << " Team 1 (Tembrin_0002)" << Qt::Key_Return << "Team 1 (Tembrin_0002)";
        QTest::newRow("only the device") << "Tembrin_0002" << Qt::Key_Return << "Group B (Tembrin_0002)";
        QTest::newRow("another brand") << "T Vorta_0002" << Qt::Key_Tab << "T Vorta_0002 (Tembrin_0002)";
        QTest::newRow("given up") << "Team 1" << Qt::Key_Escape << "Group B (Tembrin_0002)";
    }

    void aLineIsTypedOverOrLeft()
    {
        QFETCH(QString, typed);
        QFETCH(Qt::Key, end);
        DialogBench bench(paired(2));
        bench.choose("listPaired", {0, 1});
        bench.press("pushAdd");
        bench.rename(1, typed, end);
        QFETCH(QString, line);
        QTRY_COMPARE(bench.lines("listUsed")[1], line);
        QVERIFY(bench.dialog.isVisible());
    }

    void savingLeavesTheRunningClassAlone()
    {
        DialogBench bench(paired(3));
        bench.choose("listPaired", {0, 2});
        bench.press("pushAdd");
        bench.rename(1, "Team 1");
        bench.press("pushButton_Save");
        QVERIFY(bench.dialog.isVisible() && !bench.dialog.saved);
        const QString none = "COMxx ";
        const QStringList two{"COM1 Group A", "COM3 Team 1", none, none, none, none, none, none};
        QCOMPARE(stored(), two);
        bench.choose("listUsed", {1});
        bench.press("pushRemove");
        bench.press("pushButton");
        QVERIFY(!bench.dialog.isVisible() && !bench.dialog.saved);
        QCOMPARE(stored(), two);
        QVERIFY(!Settings::mainStore().contains(QLatin1String(Settings::numDefined)));
    }

    void aClassEndsAtEight()
    {
        DialogBench bench(paired(9));
        QTest::keyClick(bench.part<QListWidget>("listPaired"), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(bench.part<QPushButton>("pushAdd"), Qt::Key_Space);
        QCOMPARE(bench.dialog.nTembrins, 8);
        QVERIFY(bench.hint().contains("the most"));
        bench.choose("listPaired", {0});
        QVERIFY(!bench.part<QPushButton>("pushAdd")->isEnabled());
        bench.choose("listUsed", {0});
        bench.press("pushRemove");
        bench.choose("listPaired", {0});
        QVERIFY(bench.part<QPushButton>("pushAdd")->isEnabled());
        QVERIFY(!bench.hint().contains("the most"));
    }

    void whatCannotBeOpenedSaysSo()
    {
        DialogBench bench({{"", "0012F3A1B2C3", "", "Tembrin_1", ""}, {"COM5", "", "", "Tembrin_2", ""}});
        auto* list = bench.part<QListWidget>("listPaired");
        QVERIFY(list->item(0)->toolTip().contains("rfcomm0 00:12:F3:A1:B2:C3"));
        QVERIFY(list->item(1)->toolTip().contains("COM5"));
        bench.choose("listPaired", {0, 1});
        bench.press("pushAdd");
        QCOMPARE(bench.lines("listUsed"), QStringList("Group A (Tembrin_2)"));

        DialogBench empty({});
        QVERIFY(empty.hint().contains("Pair one") && empty.hint().contains("virtual-loggers"));
    }

private:
    QScopedPointer<WarningGuard> guard;
};

QTEST_MAIN(TestSelectManyLoggers)
#include "test_selectmanyloggers.moc"
