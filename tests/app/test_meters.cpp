#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTimer>
#include <QUrl>

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/newestvalues.h"
#include "common/settings.h"
#include "instruments/meterselect.h"
#include "instruments/steelmeter.h"
#include "tests/app/windowbench.h"
#include "virtual/wire.h"

namespace {

constexpr int msToLoad = 30000; // the first page starts the engine

// What stands on the page, a meter each: caption, name, value and unit of those that are seen.
const QString tellText =
    QStringLiteral("(() => { document.title = 'text,' + [...document.querySelectorAll('.meter')]"
                   ".filter((cell) => cell.style.display !== 'none')"
                   ".map((cell) => [...cell.querySelectorAll('.caption, .name, .value, .unit')]"
                   ".map((part) => part.textContent.trim()).join('|')).join(';'); })");

} // namespace

class TestMeters : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { start({VirtualBench::identity("Birch"), VirtualBench::identity("Grove")}); }
    void finish() override { bench.reset(); }

    void start(const QVector<LoggerIdentity>& loggers)
    {
        bench.reset();
        bench.reset(new WindowBench(loggers));
        bench->connectAll();
        bench->action("layoutAct4")->trigger();
        meters = bench->window->findChild<SteelMeter*>();
        QVERIFY(meters);
        connect(meters, &PageView::titleChanged, this, [this](const QString& title) {
            if (title.startsWith(QLatin1String("text,")))
                text = title.mid(5).split(QLatin1Char(';'));
        });
        QTRY_VERIFY_WITH_TIMEOUT(meters->isLoaded(), msToLoad);
    }

    QStringList shown()
    {
        meters->call(tellText);
        return text;
    }
    template<class Part> Part* part(const char* name) const
    {
        return bench->window->findChild<Part*>(QLatin1String(name));
    }
    void press(const char* name) const { QTest::mouseClick(part<QAbstractButton>(name), Qt::LeftButton); }
    double newest(int slot, int id) const { return part<NewestValues>("newestValues")->value(slot, id); }
    /// The text of meter `i` is what the program says of the newest value.
    bool agrees(int i, int slot, const SensorPtr& sensor)
    {
        const QString said = shown().value(i).section(QLatin1Char('|'), 2, 2);
        return said == sensor->valueToString(sensor->shownValue(newest(slot, sensor->ID), false));
    }
    meterSelect* tap(int i)
    {
        ++taps;
        meters->call(QStringLiteral("((i, n) => { document.title = `meterTapped${n},${i},10,10`; })"),
                     {i, taps});
        meterSelect* dialog = nullptr;
        if (!QTest::qWaitFor(
                [&] { return (dialog = meters->findChild<meterSelect*>()) && dialog->isVisible(); }))
            return nullptr;
        return dialog;
    }

    QScopedPointer<WindowBench> bench;
    SteelMeter* meters = nullptr;
    QStringList text;
    int taps = 0;

private Q_SLOTS:
    void idleLoggersAreAskedWhileTheMetersAreSeen()
    {
        const SensorPtr ph = bench->state(0)->channel(SENSOR_PH);
        QTRY_VERIFY(agrees(0, 0, ph));
        QCOMPARE(text.size(), 6);
        QVERIFY(text.first().startsWith(QStringLiteral("|pH|")) &&
                text.first().endsWith(QStringLiteral("|pH")));
        QCOMPARE(bench->heard(1, Wire::Snapshot), 0); // nobody sees it

        part<QComboBox>("meterGroup")->setCurrentIndex(1);
        Q_EMIT part<QComboBox>("meterGroup")->activated(1);
        QTRY_VERIFY(agrees(0, 1, bench->state(1)->channel(SENSOR_AMB_TEMP_NTC_CALC)));
        press("2meters");
        QTRY_COMPARE(shown().size(), 2);

        bench->action("layoutAct1")->trigger();
        for (const QTimer* timer :
             part<QSplitter>("newMetersW")->findChildren<QTimer*>(QStringLiteral("fetchTimer")))
            QVERIFY(!timer->isActive());
        // What was measured a while ago is not known any more.
        QVERIFY(!std::isnan(newest(1, SENSOR_AMB_TEMP_NTC_CALC)));
        bench->pull(1);
        QTRY_VERIFY(std::isnan(newest(1, SENSOR_AMB_TEMP_NTC_CALC)));
    }

    void eachGroupHasAMeterUnderItsName()
    {
        const QString name = QStringLiteral("O'Neill \"</b><i>\\");
        bench->manager->tembrinAt(0)->setGroupName(name);
        press("groupMeters");
        QTRY_COMPARE(shown().size(), 2);
        QTRY_VERIFY(agrees(0, 0, bench->manager->classChannel(0)));
        QTRY_VERIFY(agrees(1, 1, bench->manager->classChannel(1)));
        QVERIFY(text.at(0).startsWith(name + QLatin1Char('|')));
        QVERIFY(text.at(1).startsWith(QStringLiteral("Group B|")));
        QCOMPARE(meters->errors(), 0);
    }

    // A logger that does not answer the question holds up no start, and a run is not disturbed by questions.
    void aRunBeginsAtOnceAndBringsItsOwnValues()
    {
        press("groupMeters");
        bench->dropAnswers(0, 1);
        const int asked = bench->heard(0, Wire::Snapshot);
        QTRY_VERIFY(bench->heard(0, Wire::Snapshot) > asked);
        QVERIFY(!bench->manager->queue().askValues(0)); // the answer is awaited
        bench->action("runAct")->trigger();
        QVERIFY(!bench->manager->queue().isIdle());
        QVERIFY(!bench->manager->queue().askValues(1));
        QTRY_VERIFY(bench->isRunning(0) && bench->isRunning(1));
        QTRY_VERIFY(bench->data(0)->getXSize() > 3);
        bench->forgetHeard();
        QTRY_VERIFY(agrees(0, 0, bench->manager->classChannel(0)));
        QTRY_VERIFY(bench->data(1)->getXSize() > 15);
        QCOMPARE(bench->heard(0, Wire::Snapshot) + bench->heard(1, Wire::Snapshot), 0);
        QVERIFY(part<QSplitter>("newMetersW")->isVisible()); // the run did not take the meters away
        const int id = bench->manager->classChannel(1)->ID;
        QCOMPARE(newest(1, id), bench->data(1)->getYNoConv(bench->data(1)->locateSensByID(id)).last());
    }

    void whatAPersonChoosesIsKept()
    {
        QTRY_VERIFY(agrees(0, 0, bench->state(0)->channel(SENSOR_PH)));
        meterSelect* dialog = tap(0);
        QVERIFY(dialog);
        QCOMPARE(dialog->findChild<QComboBox*>()->currentText(), QStringLiteral("pH"));
        QVERIFY(dialog->findChild<QAbstractButton*>(QStringLiteral("buttonAnalog"))->isChecked());
        dialog->findChild<QAbstractButton*>(QStringLiteral("buttonDigital"))->click();
        dialog->findChild<QComboBox*>()->setCurrentText(QStringLiteral("Barometer"));
        dialog->newmin = 900;
        dialog->newmax = 1100;
        dialog->on_buttonOK_clicked();
        QTRY_VERIFY(agrees(0, 0, bench->state(0)->channel(SENSOR_BAROMETER)));

        // Another logger has its own, and this one its as they were left.
        Q_EMIT part<QComboBox>("meterGroup")->activated(1);
        QTRY_VERIFY(agrees(0, 1, bench->state(1)->channel(SENSOR_AMB_TEMP_NTC_CALC)));
        Q_EMIT part<QComboBox>("meterGroup")->activated(0);
        QTRY_VERIFY(agrees(0, 0, bench->state(0)->channel(SENSOR_BAROMETER)));
        dialog = tap(0);
        QVERIFY(dialog);
        QVERIFY(dialog->findChild<QAbstractButton*>(QStringLiteral("buttonDigital"))->isChecked());
        dialog->on_buttonRange_clicked();
        QCOMPARE(dialog->newmin, 900.0);
        QCOMPARE(dialog->newmax, 1100.0);
    }

    void aPageThatDiesComesBackWithItsMeters()
    {
        press("4meters");
        QTRY_VERIFY(agrees(0, 0, bench->state(0)->channel(SENSOR_PH)));
        QSignalSpy failures(meters, &PageView::failed);
        part<QWidget>("web page")->setProperty("url", QUrl(QStringLiteral("chrome://crash")));
        QTRY_COMPARE_WITH_TIMEOUT(failures.count(), 1, msToLoad);
        text.clear();
        press("loadAgain");
        QTRY_VERIFY_WITH_TIMEOUT(meters->isLoaded(), msToLoad);
        QTRY_VERIFY(agrees(0, 0, bench->state(0)->channel(SENSOR_PH)));
        QCOMPARE(text.size(), 4);
    }

    void aPanelOpensOnTheMeters()
    {
        bench.reset();
        Settings::mainStore().setValue(QLatin1String(Settings::vestrelPanel), true);
        MainWindow window;
        Settings::mainStore().setValue(QLatin1String(Settings::vestrelPanel), false);
        QVERIFY(window.findChild<SteelMeter*>()->isVisibleTo(&window));
        QVERIFY(!window.findChild<QSplitter*>(QStringLiteral("graphW"))->isVisibleTo(&window));
    }

    void aModelHasItsOwnMeters_data()
    {
        columns<int, int, int, int>({"model", "meter", "type", "sensor"});
        row("sound stands in for light", 170, 1, int(METER_DIGITAL), int(SENSOR_SOUND));
        row("light", 153, 1, int(METER_DIGITAL), int(SENSOR_LIGHT));
        row("pH at the end", 153, 5, int(METER_BAR), int(SENSOR_PH));
        row("turbidity at the end", 119, 5, int(METER_BAR), int(SENSOR_TURBIDITY));
        row("the same for its sister", 102, 5, int(METER_BAR), int(SENSOR_TURBIDITY));
        row("a Vorta", 250, 0, int(METER_THERMO), int(SENSOR_VORTA_FORCE50));
        row("unknown", 77, 0, int(METER_ANALOG), int(SENSOR_PH));
        row("before any status", 0, 5, int(METER_BAR), int(SENSOR_IR_TEMP));
    }
    void aModelHasItsOwnMeters()
    {
        const auto [model, meter, type, sensor] =
            fetched<int, int, int, int>({"model", "meter", "type", "sensor"});
        const MeterChoice choice = initialMeters(model)[size_t(meter)];
        QCOMPARE(choice.type, type);
        QCOMPARE(choice.sensorID, sensor);
    }
};

QTEST_MAIN(TestMeters)
#include "test_meters.moc"
