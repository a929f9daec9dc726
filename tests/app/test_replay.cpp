#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QSlider>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

#include "app/iconlist.h"
#include "app/iconlists.h"
#include "app/keptruns.h"
#include "app/replaybar.h"
#include "classroom/groupreadings.h"
#include "classroom/newestvalues.h"
#include "classroom/replay.h"
#include "instruments/statusline.h"
#include "tests/app/classbench.h"

/// A run that is played again: as it was at each moment, and whole when that is over.
class TestReplay : public GuardedTest
{
    Q_OBJECT

private:
    static constexpr int rows = 240; // of a second each
    static bool isLost(int group, int n) { return group == 1 && n == 61; }
    static double value(int group, int n) { return 20 + group + 8 * std::sin(n / 17.0) + n % 5 / 10.0; }

    static QString text(const QVector<double>& column)
    {
        QString texts;
        for (const double value : column) // so that a gap equals a gap
            texts += QString::number(value, 'g', 17) + QLatin1Char(' ');
        return texts;
    }
    /// All that a reader finds in the sets.
    QStringList state() const
    {
        QStringList all;
        for (int i = -1; i < 2; ++i) {
            const ExpData& set = *bench->data(i);
            all << text(set.getX()) << text(set.spread())
                << text({set.getMaxX(), set.dt, double(set.finalData)});
            for (int c = 0; c < set.getNSens(); ++c) {
                const Sensor& sensor = *set.getSens(c);
                all << text(set.getYNoConv(c));
                if (!set.isAverage(c)) // which had been that of the first group alone for a moment
                    all << text({set.getMinY(c), set.getMaxY(c), sensor.minView, sensor.maxView,
                                 sensor.mapMin, sensor.mapMax});
            }
            all << QString::number(bench->manager->viewsOf(i).value(0)->markers.size());
        }
        return all;
    }
    QStringList digits() const
    {
        QStringList all;
        for (int i = 0; i < 2; ++i) {
            const GroupReading told = readings->reading(i);
            all << told.group << told.channel << told.digits << told.unit;
        }
        return all;
    }
    void feed(short n) const
    {
        for (int i = 0; i < 2; ++i) {
            if (!isLost(i, n))
                bench->sample(i, n, value(i, n));
        }
    }
    void endRun() const
    {
        for (int i = 0; i < 2; ++i)
            bench->tellEnd(i);
        QVERIFY(!bench->manager->isAnyRunning());
    }
    void run(int count) const
    {
        for (int i = 0; i < 2; ++i) {
            if (!bench->logger(i)->isLoggerRecognized())
                bench->meet(i);
        }
        for (short n = 0; n < count; ++n)
            feed(n);
        endRun();
        bench->manager->plotAt(0)->setData();
    }
    Replay& replay() const { return bench->manager->replay(); }
    ReplayBar* bar() const { return bench->window->findChild<ReplayBar*>(); }
    template<class Widget> Widget* part(const char* name) const
    {
        return bench->window->findChild<Widget*>(QLatin1String(name));
    }
    void press(const char* name) const { part<QAbstractButton>(name)->click(); }
    void start()
    {
        bench->action("replayAct")->trigger();
        QVERIFY(replay().isOn() && bar()->isVisible());
        bar()->setClock([this] { return now; });
        press("replayPlay");
        press("replayPlay"); // from now on by this clock
        seek(replay().first());
    }
    void step(double seconds)
    {
        now += std::llround(seconds * 1000);
        bar()->step();
    }
    void seek(double time) const
    {
        auto* const slider = part<QSlider>("replaySlider");
        const double place = (time - replay().first()) / (replay().last() - replay().first());
        slider->setValue(int(std::lround(place * slider->maximum())));
        bar()->step();
    }
    /// What only looks does not end it, and what chooses a channel has the whole run at hand.
    void look(const QStringList& whole) const
    {
        for (const char* name :
             {"zoomAct", "readAct", "layoutAct2", "layoutAct3", "runsAct", "largeAct", "tilesAct"}) {
            bench->action(name)->trigger();
            QVERIFY2(replay().isOn(), name);
        }
        QVERIFY(bench->action("replayEndAct")->shortcut().isEmpty());
        for (const char* name : {"tilesAct", "layoutAct3", "readAct"})
            bench->action(name)->trigger();
        QCOMPARE(bench->action("replayEndAct")->shortcut(), QKeySequence(Qt::Key_Escape));
        QVERIFY(!bench->action("stopAct")->shortcuts().contains(QKeySequence(Qt::Key_Escape)));
        Plot* const plot = bench->manager->plotAt(0);
        Q_EMIT plot->changedActiveCurve(0, 1);
        QVERIFY(replay().isOn() && state() != whole);
        QCOMPARE(bench->data(-1)->getYNoConv(0), bench->data(0)->getYNoConv(1));
        QCOMPARE(bench->data(-1)->getXSize(), 11);
        Q_EMIT plot->changedActiveCurve(0, 0);
        bench->action("replayEndAct")->trigger();
        QVERIFY(bench->action("stopAct")->shortcuts().contains(QKeySequence(Qt::Key_Escape)));
    }
    /// The samples of a run, as state() has them, in the same order.
    static bool holds(const LessonRun& run, QStringList whole)
    {
        for (const Lesson::Part& part : run.parts) {
            QStringList samples{text(part.experiment.times)};
            for (const StoredExperiment::Channel& channel : part.experiment.channels)
                samples << text(channel.samples);
            for (const QString& column : samples) {
                const int at = whole.indexOf(column);
                if (at < 0)
                    return false;
                whole = whole.mid(at + 1);
            }
        }
        return true;
    }
    QByteArray saved(const char* name)
    {
        bench->prompt.file = folder->filePath(QLatin1String(name));
        bench->action("saveAct")->trigger();
        QFile file(bench->prompt.file);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<ClassBench> bench;
    QScopedPointer<GroupReadings> readings;
    qint64 now = 0;

    void begin() override
    {
        guard->expect(QStringLiteral("propagateSizeHints"));
        folder.reset(new QTemporaryDir);
        bench.reset(new ClassBench(2));
        readings.reset(new GroupReadings(bench->manager));
    }
    void finish() override
    {
        readings.reset();
        bench.reset();
    }

private Q_SLOTS:
    // While the run is measured each moment is noted; then each comes back, in any order.
    void eachMomentIsAsItWas()
    {
        for (int i = 0; i < 2; ++i)
            bench->meet(i);
        QVector<QStringList> moments;
        for (short n = 0; n < rows; ++n) {
            feed(n);
            moments << state() + digits();
        }
        endRun();
        const QStringList whole = state() + digits();
        start();
        const NewestValues values(bench->manager);
        const auto compare = [&](int n) {
            QCOMPARE(int(replay().now() + 1e-6), n);
            QCOMPARE(state() + digits(), moments.at(n));
            QCOMPARE(values.value(0, SENSOR_HUMIDITY), bench->data(0)->getYNoConv(0).last());
        };
        compare(0);
        for (const int n : {1, 2, 3, 4, 30, 60, 75, 76, 150}) {
            step(n - replay().now());
            compare(n);
        }
        press("replaySpeed20");
        step(2);
        compare(190);
        press("replaySpeed5");
        step(1);
        compare(195);
        const GroupReading told = readings->reading(1);
        QVERIFY(told.link == GroupReading::Link::Replayed && told.lost == 1 && told.age == 0);
        QCOMPARE(told.perSecond, 1.0);
        for (const double n : {20.1, 80.2, 3.0, 239.0, 79.9, 0.0}) {
            seek(n);
            compare(int(n));
        }
        QCOMPARE(readings->reading(1).lost, 0);
        seek(61.6);
        QCOMPARE(readings->reading(1).age, 1);
        QCOMPARE(part<QLabel>("replayTime")->text(), QStringLiteral("1:01 of 3:59"));
        press("replayPlay"); // it had come to its end
        step(rows);
        compare(rows - 1);
        QCOMPARE(part<QAbstractButton>("replayPlay")->text(), QStringLiteral("Play")); // and stays there
        press("replayPlay");
        compare(0);
        press("replayEnd");
        QCOMPARE(state() + digits(), whole);
        QVERIFY(readings->reading(1).link == GroupReading::Link::On && !bar()->isVisible());
    }

    void whateverEndsItTheRunIsWhole_data()
    {
        columns<bool>({"isReplaced"});
        for (const char* way : {"replayEndAct", "replayAct", "undoAct", "redoAct", "saveNowAct", "report",
                                "smooth", "mark", "close", "look"})
            row(way, false);
        for (const char* way : {"runAct", "own key", "openAct", "kept run"})
            row(way, true);
    }

    void whateverEndsItTheRunIsWhole()
    {
        const auto [isReplaced] = fetched<bool>({"isReplaced"});
        const QByteArray way = QTest::currentDataTag();
        run(20);
        saved("other.lesson");
        run(rows);
        Plot* const plot = bench->manager->plotAt(0);
        plot->newMarker(0, -1, 200, value(0, 200));
        plot->newMarker(0, -1, 220, value(0, 220));
        plot->doRegression(1);
        plot->doIntegral();
        bench->action("undoAct")->trigger(); // so that there is something to do again
        bench->action("layoutAct3")->trigger();
        const QByteArray before = saved("before.lesson");
        QCOMPARE(saved("before.lesson"), before);
        bench->data(1)->setNeedSave(true);
        const QStringList whole = state();
        bench->action("runsAct")->trigger();
        auto* const list = part<QListView>("runsList");
        start();
        seek(10.5);
        QVERIFY(state() != whole && plot->markers.isEmpty());
        QAction* const action = bench->action(way);
        auto* const functions = part<IconList>("regression");
        auto* const exports = part<IconList>("exports");
        bench->prompt.file = folder->filePath(QStringLiteral("other.lesson"));
        if (action)
            action->trigger();
        else if (way == "report")
            Q_EMIT exports->activated(exports->findData(EXPORT_REPORT));
        else if (way == "smooth")
            Q_EMIT functions->activated(functions->findData(REG_SMOOTH));
        else if (way == "mark")
            Q_EMIT plot->changing();
        else if (way == "close")
            bench->window->close();
        else if (way == "own key")
            bench->sample(1, 0, 5);
        else if (way == "kept run")
            Q_EMIT list->clicked(list->model()->index(0, 0));
        else
            look(whole);
        QVERIFY(!replay().isOn() && !bench->action("replayAct")->isChecked());
        if (isReplaced) {
            const QVector<KeptRun>& runs = bench->window->findChild<KeptRuns*>()->all();
            QVERIFY(std::any_of(runs.cbegin(), runs.cend(),
                                [&](const KeptRun& kept) { return holds(kept.outline, whole); }));
            return;
        }
        if (way == "undoAct" || way == "redoAct")
            bench->action(way == "undoAct" ? "redoAct" : "undoAct")->trigger();
        if (way == "smooth")
            bench->action("undoAct")->trigger();
        QCOMPARE(state(), whole);
        QVERIFY(bench->data(1)->isNeedSave() || way == "saveNowAct");
        QCOMPARE(saved("after.lesson"), before);
    }

    // By its name in the list, and a kept run that goes while it plays.
    void aKeptRunPlays()
    {
        run(20);
        run(30);
        bench->action("runsAct")->trigger();
        auto* const list = part<QListView>("runsList");
        list->setCurrentIndex(list->model()->index(0, 0));
        press("replayRun");
        QVERIFY(replay().isOn());
        QCOMPARE(part<QLabel>("replayName")->text(), QStringLiteral("Replay: Run 1"));
        QCOMPARE(replay().last(), 19.0);
        press("deleteRun");
        QVERIFY(!replay().isOn());
        QCOMPARE(bench->data(0)->getXSize(), 20);
        QCOMPARE(bench->window->findChild<KeptRuns*>()->all().size(), 1);
        press("replayRun"); // of the one that is left
        QCOMPARE(replay().last(), 29.0);
    }

    // Until then its set is empty, and its logger says what it would measure now.
    void aGroupThatBeganLaterPlays()
    {
        const SensorList channels{SensorPtr::create(SENSOR_VOLTAGE)};
        for (int i = 0; i < 2; ++i) {
            bench->meet(i);
            const QVector<double> times{4.0 * i, 4.0 * i + 1, 4.0 * i + 2};
            bench->data(i)->takeExperiment(channels, 1, times, {times});
            bench->data(i)->setGroupName(QStringLiteral("Of then"));
        }
        const QStringList whole = state();
        start();
        QCOMPARE(bench->data(1)->getXSize(), 0);
        QVERIFY(readings->reading(1).digits.isEmpty() && readings->reading(1).group == "Of then");
        bench->tell(1, {{7, 0}, {9, 0}, {10, 3}, {11, 3}});
        seek(5.2);
        QCOMPARE(bench->data(1)->getX(), QVector<double>({4, 5}));
        QVERIFY(readings->reading(0).age == 3 && !readings->reading(1).digits.isEmpty());
        seek(1);
        QVERIFY(readings->reading(1).digits.isEmpty());
        press("replayEnd");
        QCOMPARE(state(), whole);
    }

    // Runs that are played in another way than most.
    void everyKindOfRunPlays_data()
    {
        columns<double, QVector<double>, int, QString>({"period", "times", "rowsInTheMiddle", "time"});
        row("by hand", 0.0, QVector<double>{1, 2, 3, 4, 5}, 3, QStringLiteral("Sample 3 of 5"));
        row("at any times", 1.0, QVector<double>{2, 2.5, 9, 30, 42}, 3, QStringLiteral("22.0 of 42.0 s"));
        row("back in time", 1.0, QVector<double>{0, 6, 3, 4, 8}, 1, QStringLiteral("4.0 of 8.0 s"));
        row("hours", 900.0, QVector<double>{0, 900, 1800, 2700, 3600}, 3,
            QStringLiteral("0:30:00 of 1:00:00"));
        row("one sample", 1.0, QVector<double>{0}, 0, QString());
        row("none", 1.0, QVector<double>{}, 0, QString());
    }

    void everyKindOfRunPlays()
    {
        const auto [period, times, middle, time] =
            fetched<double, QVector<double>, int, QString>({"period", "times", "rowsInTheMiddle", "time"});
        ExpData* const set = bench->data(1); // and nothing of the first group or the class
        const SensorList channels = set->getSensors();
        set->takeExperiment(channels, period, times, {times, times});
        const QStringList whole = state();
        if (middle == 0) {
            bench->action("replayAct")->trigger();
            QVERIFY(!replay().isOn() && !bar() && !bench->action("replayAct")->isChecked());
            QVERIFY(bench->window->findChild<StatusLine*>()->outcome().contains("nothing to replay"));
            return;
        }
        start();
        QCOMPARE(set->getXSize(), 1);
        seek((times.constFirst() + *std::max_element(times.cbegin(), times.cend())) / 2);
        QCOMPARE(set->getXSize(), middle);
        QCOMPARE(set->getData(), QVector<QVector<double>>(2, times.mid(0, middle)));
        QCOMPARE(part<QLabel>("replayTime")->text(), time);
        step(1e5);
        QCOMPARE(set->getX(), times);
        press("replayEnd");
        QCOMPARE(state(), whole);
    }
};

QTEST_MAIN(TestReplay)
#include "test_replay.moc"
