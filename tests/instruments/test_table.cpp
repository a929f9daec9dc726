#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "common/settings.h"
#include "data/timeaxis.h"
#include "instruments/table.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

class TestTable : public GuardedTest
{
    Q_OBJECT

private:
    static QString text(const Table& table, int row, int column)
    {
        return table.model()->index(row, column).data().toString();
    }
    static QString header(const Table& table, int column)
    {
        return table.model()->headerData(column, Qt::Horizontal).toString();
    }

private Q_SLOTS:
    void rowsAndSpareRows_data()
    {
        columns<int, int>({"samples", "rows"});
        row("none", 0, 50);
        row("just with the spare ones", 45, 50);
        row("more", 48, 53);
    }

    void rowsAndSpareRows()
    {
        const auto [samples, rows] = fetched<int, int>({"samples", "rows"});
        ExpData data;
        load(&data, {SENSOR_VOLTAGE}, {QVector<double>(samples, 1.5)});
        Table table(&data, 0);
        QCOMPARE(table.model()->rowCount(), rows);
        QCOMPARE(table.model()->columnCount(), 2);
        QCOMPARE(text(table, rows - 1, 1), QString());
        data.setDataNewEmpty();
        table.setData();
        QCOMPARE(table.model()->columnCount(), 1);
    }

    void timesAreToldAsFineAsTheyAre_data()
    {
        columns<double, QString, QString>({"dt", "header", "second"});
        row("by hand", 0.0, "Sample", "1");
        row("slow", 2.0, "Time\n[s]", "2");
        row("tenths", 0.2, "Time\n[s]", "0.2");
        row("hundredths", 0.04, "Time\n[s]", "0.04");
        row("thousandths", 0.005, "Time\n[s]", "0.005");
        row("finest", 0.0001, "Time\n[s]", "0.00010");
    }

    void timesAreToldAsFineAsTheyAre()
    {
        const auto [dt, head, second] = fetched<double, QString, QString>({"dt", "header", "second"});
        ExpData data;
        load(&data, {SENSOR_VOLTAGE}, {{1, 2, 3}}, dt);
        const Table table(&data, 0);
        QCOMPARE(header(table, 0), head);
        QCOMPARE(text(table, 1, 0), second);
    }

    void whatIsNoValueIsDashes()
    {
        ExpData data;
        load(&data, {SENSOR_VOLTAGE, SENSOR_GPS_LAT}, {{1, qQNaN(), 3, 4, 5}, {0, 32.5}});
        data.setLeftPad(0, 1);
        Table table(&data, 0);
        const QString none = QStringLiteral("----");
        QCOMPARE(text(table, 0, 1), none); // there because of a shift only
        QCOMPARE(text(table, 1, 1), none); // a gap
        QCOMPARE(text(table, 2, 1), QStringLiteral("3.00"));
        QCOMPARE(text(table, 0, 2), none);
        QVERIFY(text(table, 1, 2).contains("32"));
        QCOMPARE(text(table, 4, 2), none); // shorter than the others
        QVERIFY(header(table, 1).contains('\n'));
        Table::setOddColor(Qt::red);
        Table::setEvenColor(Qt::yellow);
        const auto ground = [&](int column) {
            return table.model()->index(0, column).data(Qt::BackgroundRole).value<QBrush>().color();
        };
        QCOMPARE(ground(0), QColor(Qt::yellow));
        QCOMPARE(ground(1), QColor(Qt::red));
        QCOMPARE(ground(2), QColor(Qt::yellow));
    }

    void typedNumbersAreInTheUsersUnit_data()
    {
        columns<int, int, QString, double, bool>({"row", "column", "typed", "base", "isTaken"});
        row("in Fahrenheit", 1, 1, "50", 10.0, true);
        row("with a comma", 1, 1, "50,9", 10.5, true);
        row("no number", 1, 1, "abc", 0.0, false);
        row("infinite", 1, 1, "inf", 0.0, false);
        row("no sample there", 3, 1, "5", 0.0, false);
        row("a spare row", 20, 1, "5", 0.0, false);
        row("calculated", 1, 2, "5", 0.0, false);
        row("as it was", 1, 1, "68.0", 0.0, false);
    }

    void typedNumbersAreInTheUsersUnit()
    {
        const auto [row, column, typed, base, isTaken] =
            fetched<int, int, QString, double, bool>({"row", "column", "typed", "base", "isTaken"});
        ExpData data(inFahrenheit());
        load(&data, {SENSOR_AMB_TEMP}, {{10, 20, 30}});
        data.setSelectedSensor(0);
        data.addSpecialCurve(ExpData::CURVE_SMOOTH);
        Table table(&data, 3);
        QSignalSpy taken(&table, &Table::typed);
        QSignalSpy edited(&table, &Table::tableEdited);
        QSignalSpy refused(&table, &Table::refused);
        table.setData();
        QCOMPARE(edited.count(), 0);
        table.model()->setData(table.model()->index(row, column), typed);
        QCOMPARE(edited.count(), int(isTaken));
        QCOMPARE(refused.count(), int(!isTaken && typed != "68.0"));
        if (isTaken)
            QCOMPARE(taken.first(), (QVariantList{3, 0, 1, base}));
        QCOMPARE(data.getYNoConvAt(0, 1), 20.0); // the receiver puts it in
    }

    void aRunComesInLive()
    {
        ExpData data;
        data.setDataNewEmpty({SensorPtr::create(SENSOR_VOLTAGE)}, 1);
        Table table(&data, 0);
        table.resize(300, 300);
        for (int i = 0; i < 60; ++i)
            data.addSample(i, {i * 0.1});
        table.follow(); // out of sight: when it is shown
        QCOMPARE(table.model()->rowCount(), 50);
        table.show();
        QCOMPARE(table.model()->rowCount(), 65);
        QCOMPARE(text(table, 59, 0), QStringLiteral("59"));
        const auto lowest = [&] { return table.rowAt(table.viewport()->height() - 1); };
        QVERIFY(lowest() >= 59);
        for (int i = 60; i < 90; ++i)
            data.addSample(i, {i * 0.1});
        table.follow();
        QTRY_COMPARE(table.model()->rowCount(), 95);
        QVERIFY(lowest() >= 89);
        table.verticalScrollBar()->setValue(3); // who reads stays where he is
        data.addSample(90, {1});
        table.follow();
        QTRY_COMPARE(table.model()->rowCount(), 96);
        QCOMPARE(table.verticalScrollBar()->value(), 3);

        // The sample under a cross comes into sight and stands out.
        const auto ground = [&](int row) {
            return table.model()->index(row, 1).data(Qt::BackgroundRole).value<QBrush>().color();
        };
        table.markTimes({70.4});
        QVERIFY(table.rowAt(table.viewport()->height() - 5) >= 70);
        QVERIFY(ground(70) != ground(71));
        table.markTimes({});
        QCOMPARE(ground(70), ground(71));
    }

    void copiesWithHeaders()
    {
        ExpData data;
        load(&data, {SENSOR_VOLTAGE, SENSOR_VOLTAGE}, {{1, 2, 3}, {4, 5, 6}}, 0);
        Table table(&data, 0);
        const QString volt = header(table, 1).replace('\n', ' ');
        QCOMPARE(table.copiedText().count('\n'), 4);
        QVERIFY(table.copiedText().startsWith(QStringLiteral("Sample\t%1\t%1\n0\t1.00\t4.00\n").arg(volt)));
        table.selectionModel()->select(
            QItemSelection(table.model()->index(1, 1), table.model()->index(49, 1)),
            QItemSelectionModel::ClearAndSelect);
        QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), volt + QStringLiteral("\n2.00\n3.00\n"));
    }

    void theTitleHasTheMarkOfTheChosenOne()
    {
        ExpData data;
        ClickableLabel label(2, QStringLiteral("Table"));
        Table table(&data, 2);
        table.setTitle(&label);
        for (const auto& [id, text] :
             {std::pair<int, const char*>(2, "Table *"), {2, "Table *"}, {-1, "Table"}, {1, "Table"}}) {
            table.setActiveTable(id);
            QCOMPARE(label.text(), QString(text));
        }
        QSignalSpy clicked(&label, &ClickableLabel::clicked);
        QTest::mouseClick(&label, Qt::LeftButton);
        QCOMPARE(clicked.first().first().toInt(), 2);
    }
};

QTEST_MAIN(TestTable)
#include "test_table.moc"
