#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QWheelEvent>

#include "setup/loggerbasicsetup.h"
#include "tests/setup/setupbench.h"

namespace {

const QByteArray idle = status({{7, 0}});
const QByteArray idleVorta = summed("3E7983 10 11 12 00 03 0064 0000 0000 00");
constexpr const char* fewSensorsHex = "2E6982 02 05 0000000000000000000000000000 00 00"; // pH and light

/// A setup frame with this mask, rate code, count and sensors in the sockets; the rest as the loggers report
/// it.
QByteArray setupFrame(int mask, int code, int samples, const char* sockets)
{
    QByteArray frame = bytes("47141100");
    for (const int value : {mask, code, samples})
        frame += char(value);
    return summed(frame + bytes("01 02 012C") + bytes(sockets) + bytes("FF 0032"));
}

QStringList entries(const QComboBox& list)
{
    QStringList texts;
    for (int i = 0; i < list.count(); ++i)
        texts << list.itemText(i);
    return texts;
}

} // namespace

/// The dialog on real sessions over fake ports.
class TestBasicSetup : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { bench.reset(new SetupBench(2)); }

    void finish() override { dialog.reset(); }

private Q_SLOTS:
    void aChangeReachesTheFirstLoggerAtOnceAndTheOthersAtTheEnd()
    {
        bench->introduce(0, idle);
        bench->introduce(1, status({{7, 0}, {9, 0}, {10, 2}}), fewSensorsHex);
        bench->manager.setPacing(5000, 1);
        open();
        QCOMPARE(bench->written(0), QByteArray());
        box(1)->click();
        QCOMPARE(bench->written(0), setupFrame(0x07, 3, 2, "2626"));
        box(0)->click();
        rate()->setCurrentIndex(rate()->findText(QStringLiteral("25/Sec")));
        samples()->setCurrentIndex(3);
        QVERIFY(bench->written(0).endsWith(setupFrame(0x06, 4, 3, "2626")));
        QCOMPARE(find<QLabel>("runLength")->text(), QStringLiteral("The run takes 6 min 50 s."));
        QCOMPARE(bench->written(1), QByteArray());

        dialog->close();
        QCOMPARE(bench->written(0), setupFrame(0x06, 4, 3, "2626"));
        bench->port(0).feed(status({{3, 0x11}, {7, 0}, {10, 6}, {11, 4}, {12, 3}, {25, 0x26}, {26, 0x26}}));
        // pH is the first sensor of the second logger; its light sensor, which the first one lacks, goes off.
        QTRY_COMPARE(bench->port(1).written(), setupFrame(0x01, 4, 3, "0000"));
    }

    void theRateShownIsTheRateSentAndTheRateOfTheRun_data()
    {
        const QString slow = QStringLiteral("Manual 0 0, 1/Min 1 60, 1/Sec 2 1, 10/Sec 3 0.1024, ");
        const QString usual = slow + QStringLiteral("25/Sec 4 0.04096, 100/Sec 5 0.01024");
        const QString latest = usual + QStringLiteral(", 25000/Sec 6 0.00003944, 100000/Sec 7 0.0000101745");
        columns<int, int, int, QString>({"type", "firmware", "small", "expected"});
        row("3.99", 35, 3, 0x99, usual + ", 1000/Sec 6 0.001024, 25000/Sec 7 0.000042");
        const QString middle = usual + QStringLiteral(", 1000/Sec 6 0.001024, 100000/Sec 7 0.0000101745");
        row("4.00", 35, 4, 0x00, middle);
        row("4.02", 35, 4, 0x02, middle);
        row("4.03", 35, 4, 0x03, latest);
        row("4.12", 68, 4, 0x12, latest);
        row("type 17", 17, 1, 0x30, slow + "100/Sec 4 0.01024");
        row("type 17, late firmware", 17, 4, 0x05, slow + "100/Sec 4 0.01024");
        row("type 18", 18, 4, 0x05, usual);
    }

    void theRateShownIsTheRateSentAndTheRateOfTheRun()
    {
        const auto [type, firmware, small, expected] =
            fetched<int, int, int, QString>({"type", "firmware", "small", "expected"});
        bench->introduce(0, status({{4, type}, {5, firmware}, {6, small}, {7, 0}}));
        open();
        TembrinData& logger = bench->logger(0);
        QStringList seen;
        for (int i = 0; i < rate()->count(); ++i) {
            const QString name = rate()->itemText(i);
            bench->written(0);
            rate()->setCurrentIndex(i);
            const int code = bench->written(0).at(5);
            bench->port(0).feed(status(
                {{3, 0x11}, {4, type}, {5, firmware}, {6, small}, {7, 0}, {11, code}, {25, 38}, {26, 38}}));
            QCOMPARE(rate()->currentText(), name);
            QCOMPARE(logger.RateNames[logger.reported().rate], name);
            seen << QStringLiteral("%1 %2 %3")
                        .arg(name)
                        .arg(code)
                        .arg(QString::number(logger.samplePeriod(), 'f', QLocale::FloatingPointShortest));
        }
        QCOMPARE(seen.join(QStringLiteral(", ")), expected);
        QCOMPARE(bench->written(0), QByteArray()); // what a logger reports is not sent back
    }

    void aGroupThatCantDoAsTheClassIsNamed_data()
    {
        columns<QByteArray, QByteArray, QByteArray, QString, int, int, QString, QString>(
            {"first", "second", "sensors", "rate", "code", "otherCode", "warning", "length"});
        const QByteArray old = status({{4, 17}, {7, 0}});
        const QString left = QStringLiteral("Not all can record at this rate (%1). Such a curve is left out "
                                            "of the class graph.");
        row("no such rate", idle, old, QByteArray(sensorListHex), "25/Sec (not Blue)", 4, 3,
            left.arg("Blue: 10/Sec"), "The run takes 4.1 s. 10.2 s with Blue.");
        row("nor a faster one", idle, old, QByteArray(sensorListHex), "100000/Sec (not Blue)", 7, 4,
            left.arg("Blue: 100/Sec"),
            "The run takes 1.02 ms. 1.02 s with Blue. Group 0 will store it, and the graphs show it when it "
            "has "
            "ended.");
        row("one of this name", idle, status({{5, 3}, {7, 0}}), QByteArray(sensorListHex),
            "25000/Sec (not Blue)", 6, 7, left.arg("Blue: 25000/Sec"),
            "The run takes 3.94 ms. 4.2 ms with Blue. The loggers store it, and the graphs show it when it "
            "has "
            "ended.");
        row("the same", idle, old, QByteArray(sensorListHex), "100/Sec", 5, 4, "", "The run takes 1.02 s.");
        row("no sensor", idle, idle, QByteArray(fewSensorsHex), "10/Sec", 3, 3,
            "Without any of the chosen sensors: Blue.", "The run takes 10.2 s.");
    }

    void aGroupThatCantDoAsTheClassIsNamed()
    {
        const auto [first, second, sensors] =
            fetched<QByteArray, QByteArray, QByteArray>({"first", "second", "sensors"});
        bench->introduce(0, first);
        bench->introduce(1, second, sensors.constData());
        bench->manager.tembrinAt(1)->setGroupName(QStringLiteral("Blue"));
        bench->manager.setPacing(5000, 1);
        open();
        QFETCH(QString, rate);
        QVERIFY(this->rate()->findText(rate) >= 0);
        this->rate()->setCurrentText(rate);
        samples()->setCurrentIndex(1);
        QTEST(find<QLabel>("setupWarnings")->text(), "warning");
        QTEST(find<QLabel>("runLength")->text(), "length");
        QCOMPARE(rate.contains('('), this->rate()->toolTip().contains(QLatin1String("Blue")));
        QFETCH(int, code);
        QCOMPARE(int(bench->written(0).at(5)), code);
        dialog->close();
        bench->port(0).feed(status({{3, 0x11}, {7, 0}, {11, code}, {12, 1}, {25, 0x26}, {26, 0x26}}));
        QTRY_VERIFY(!bench->port(1).writes.isEmpty());
        QTEST(int(bench->written(1).at(5)), "otherCode");
    }

    void aRunInProgressIsNotDisturbed()
    {
        bench->introduce(0, idle);
        bench->introduce(1, status({{7, 5}}));
        bench->manager.tembrinAt(1)->setGroupName(QStringLiteral("Blue"));
        const QString warning = QStringLiteral(
            "Can't perform setup|Please stop logging before changing the logger SETUP.\nRunning: Blue.");
        open();
        QVERIFY(dialog->dontOpenFlag);
        QCOMPARE(bench->prompt.asked, QStringList(warning));
        bench->port(1).feed(idle);
        open();
        QVERIFY(!dialog->dontOpenFlag);
        bench->port(1).feed(status({{7, 5}}));
        bench->prompt.asked.clear();
        box(1)->click();
        rate()->setCurrentIndex(0);
        QCOMPARE(bench->prompt.asked, QStringList({warning, warning}));
        QVERIFY(!box(1)->isChecked());
        QCOMPARE(rate()->currentText(), QStringLiteral("10/Sec"));
        dialog->close();
        QCOMPARE(bench->written(0) + bench->written(1), QByteArray());
    }

    void aSilentLoggerIsToldAsSilent()
    {
        bench->introduce(1, idle);
        bench->manager.tembrinAt(0)->setGroupName(QStringLiteral("Red"));
        open();
        QCOMPARE(bench->prompt.asked, QStringList());
        QCOMPARE(find<QLabel>("setupWarnings")->text(),
                 QStringLiteral("Connected, but without an answer: Red."));
        box(1)->click();
        QCOMPARE(bench->written(1),
                 setupFrame(0x07, 3, 2, "2626")); // it leads in the stead of the silent one
    }

    void lateAnswersTakeNothingBack()
    {
        const auto answer = [](int mask) { return status({{3, 0x11}, {7, 0}, {10, mask}}); };
        bench->introduce(0, status({{7, 0}, {10, 3}}));
        open();
        box(2)->click();
        box(3)->click();
        bench->port(0).feed(answer(7));
        box(4)->click();
        bench->port(0).feed(answer(15));
        QCOMPARE(ticked(), QStringLiteral("0 1 2 3 4"));
        bench->port(0).feed(answer(31));
        QVERIFY(bench->written(0).endsWith(setupFrame(31, 3, 2, "2626")));
        bench->port(0).feed(status({{7, 0}, {10, 2}})); // somebody's key moves what was not chosen here
        QCOMPARE(ticked(), QStringLiteral("1 2 3 4"));
        dialog->close();
        QCOMPARE(bench->written(0), setupFrame(30, 3, 2, "2626"));
        bench->port(0).feed(answer(30));
        bench->port(0).feed(status({{7, 0}, {10, 5}})); // and all of it when the dialog has gone
        open();
        QCOMPARE(ticked(), QStringLiteral("0 2"));
    }

    void theDialogFollowsTheLogger()
    {
        bench->introduce(0, idle);
        open();
        bench->port(0).feed(status({{3, 0x10}, {7, 0}, {12, 4}}));
        QCOMPARE(samples()->currentText(), QStringLiteral("30000")); // which is not offered otherwise
        QCOMPARE(find<QLabel>("runLength")->text(), QStringLiteral("The run takes 51 min 12 s."));
        bench->port(0).feed(status({{3, 0}, {4, 240}, {7, 0}, {10, 3}, {11, 6}, {12, 3}}));
        QCOMPARE(samples()->count(), 4);
        QVERIFY(box(1)->isChecked() && !box(2)->isChecked());
        QCOMPARE(rate()->currentText(), QStringLiteral("25000/Sec"));
        QCOMPARE(samples()->currentText(), QStringLiteral("3000"));
        bench->port(0).feed(bytes(fewSensorsHex));
        bench->port(0).feed(status({{3, 0x10}, {5, 3}, {7, 0}, {11, 6}}));
        QCOMPARE(box(1)->text(), bench->logger(0).getSensors()[1]->name);
        QCOMPARE(rate()->currentText(), QStringLiteral("1000/Sec"));
        dialog->close();
        QCOMPARE(bench->written(0), bytes("47141095")); // the session's own question
    }

    void aSocketTakesTheSensorChosen()
    {
        bench->introduce(0, idle);
        open();
        auto* second = find<QComboBox>("socketList2");
        QVERIFY(second->isVisibleTo(dialog.data()) && box(4)->text().isEmpty());
        QWheelEvent past({5, 5}, second->mapToGlobal(QPoint(5, 5)), {}, {0, 120}, Qt::NoButton, {},
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(second, &past);
        QCOMPARE(bench->written(0), QByteArray());
        second->setCurrentIndex(VERNIER_PH - VERNIER_FIRST);
        QCOMPARE(bench->written(0), setupFrame(0x05, 3, 2, "261C"));
        bench->port(0).feed(summed("2E6985 6700")); // a current sensor that names itself
        QCOMPARE(box(4)->text(), bench->logger(0).getSensors()[4]->name);
        QVERIFY(!find<QComboBox>("socketList1")->isVisibleTo(dialog.data()));
        bench->port(0).feed(summed("2E6985 0000"));
        QVERIFY(find<QComboBox>("socketList1")->isVisibleTo(dialog.data()) && box(4)->text().isEmpty());
        QCOMPARE(bench->written(0), QByteArray());
    }

    void aGateAndItsCard()
    {
        bench->introduce(0, idle);
        open();
        const TembrinProtocol& session = *bench->manager.tembrinAt(0);
        auto* group = find<QGroupBox>("photogateGroupBox");
        auto* width = find<QLineEdit>("cardWidthLineEdit");
        QVERIFY(group->isHidden());
        bench->port(0).feed(summed("2E6985 006A")); // a pulse sensor, in the second socket
        QVERIFY(!group->isHidden() && !session.photogateEnabled);
        QTest::keyClick(group, Qt::Key_Space);
        QVERIFY(session.photogateEnabled);
        QCOMPARE(bench->written(0), setupFrame(0x05, 3, 2, "0071"));
        QTest::keyClick(group, Qt::Key_Space);
        QCOMPARE(bench->written(0), setupFrame(0x05, 3, 2, "006A"));
        QTest::keyClick(group, Qt::Key_Space);
        for (const char* bad : {"", "wide", "0", "-0.2", "inf"}) {
            width->setText(QLatin1String(bad));
            QCOMPARE(session.photoObjW, 0.05);
            QVERIFY(!find<QLabel>("cardWidthHint")->isHidden());
        }
        width->setText(QStringLiteral("0,12"));
        QCOMPARE(session.photoObjW, 0.12);
        QVERIFY(find<QLabel>("cardWidthHint")->isHidden());
        bench->port(0).feed(summed("2E6985 7000"));
        QVERIFY(!group->isCheckable() && session.photogateEnabled);
        bench->port(0).feed(summed("2E6985 6A00"));
        QVERIFY(group->isCheckable() && group->isChecked()); // as it was chosen
        bench->written(0);
        QTest::keyClick(group, Qt::Key_Space);
        QVERIFY(!session.photogateEnabled);
        QCOMPARE(bench->written(0), setupFrame(0x05, 3, 2, "6A00"));
    }

    void aVortaLoggerKeepsASensorAndHasFewerAtItsFastest()
    {
        bench->port(0).feed(idleVorta);
        bench->port(0).writes.clear();
        open();
        QCOMPARE(entries(*rate()).join(' '), QStringLiteral("1/Sec 10/Sec 25/Sec 100/Sec 500/Sec"));
        QCOMPARE(samples()->currentText(), QStringLiteral("100"));
        QCOMPARE(ticked(), QStringLiteral("1"));
        box(1)->click();
        QCOMPARE(ticked(), QStringLiteral("1"));
        box(3)->click();
        rate()->setCurrentIndex(4);
        QCOMPARE(ticked(), QStringLiteral("0"));
        box(4)->click();
        box(3)->click();
        samples()->setCurrentIndex(4);
        QCOMPARE(ticked(), QStringLiteral("0 4"));
        QCOMPARE(find<QLabel>("runLength")->text(), QStringLiteral("The run takes 1 min 1 s."));
        dialog->close();
        QCOMPARE(bench->written(0), QByteArray());
        bench->manager.sendCommand(0, CMD_START_LOGGING);
        QCOMPARE(bench->written(0), summed("672422 05 7530"));
    }

private:
    void open()
    {
        dialog.reset(new loggerBasicSetup(&bench->prompt));
        dialog->createAll(&bench->manager);
        dialog->show();
    }

    template<typename Control> Control* find(const char* name) { return control<Control>(*dialog, name); }
    QComboBox* rate() { return find<QComboBox>("comboRate"); }
    QComboBox* samples() { return find<QComboBox>("comboSamples"); }
    QCheckBox* box(int i)
    {
        // A row that was replaced lives until the next turn of the event loop.
        const auto all = dialog->findChildren<QCheckBox*>(QStringLiteral("sensBox%1").arg(i + 1));
        return all.last();
    }
    QString ticked()
    {
        QStringList places;
        for (int i = 0; i < bench->logger(0).getSensors().size(); ++i) {
            if (box(i)->isChecked())
                places << QString::number(i);
        }
        return places.join(' ');
    }

    QScopedPointer<SetupBench> bench;
    QScopedPointer<loggerBasicSetup> dialog;
};

QTEST_MAIN(TestBasicSetup)
#include "test_basicsetup.moc"
