#include <QDir>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>

#include "app/keptruns.h"
#include "app/runrecovery.h"
#include "app/undosteps.h"
#include "instruments/statusline.h"
#include "persistence/journalfolder.h"
#include "tests/app/classbench.h"

/// Runs that others took the place of: kept, shown again, named, deleted, in files and in memory.
class TestRuns : public GuardedTest
{
    Q_OBJECT

private:
    /// Texts, so that a gap equals a gap.
    QStringList all() const
    {
        QStringList texts;
        for (int i = -1; i < 2; ++i) {
            for (const QVector<double>& column :
                 QVector<QVector<double>>{bench->data(i)->getX()} + bench->data(i)->getData()) {
                texts << QStringLiteral("column %1").arg(i);
                for (const double value : column)
                    texts << QString::number(value, 'g', 17);
            }
        }
        return texts;
    }
    static int journals()
    {
        return QDir(JournalFolder::path()).entryList({QStringLiteral("*.journal")}).size();
    }
    /// A run of two groups, the second of which lacks a sample.
    void run(double value)
    {
        for (int i = 0; i < 2; ++i) {
            if (!bench->logger(i)->isLoggerRecognized())
                bench->meet(i);
        }
        for (short n = 0; n < 8; ++n) { // with the loggers' own keys

            bench->sample(0, n, value + n / 3.0);
            if (n != 4)
                bench->sample(1, n, value - n / 7.0);
        }
        for (int i = 0; i < 2; ++i)
            bench->tellEnd(i);
        QVERIFY(!bench->manager->isAnyRunning());
    }
    /// Of 40,000 rows, 2.6 MB with the class.
    void largeRun()
    {
        run(1);
        for (int i = 0; i < 2; ++i) {
            ExpData* const set = bench->data(i);
            const SensorList channels = set->getSensors();
            set->takeExperiment(channels, 1, {QVector<double>(40000, i), QVector<double>(40000, 2)});
        }
    }
    /// All that are not on the screen: their samples, too.
    void layDown() const
    {
        for (const KeptRun& run : runs().all())
            QTRY_VERIFY(run.shelf || run.id == runs().shown());
    }
    static LessonRun whole(const KeptRun& run) { return run.whole().value_or(LessonRun()); }
    KeptRuns& runs() const { return *bench->window->findChild<KeptRuns*>(); }
    QListView* list() const
    {
        if (!bench->window->findChild<QListView*>(QStringLiteral("runsList")))
            bench->action("runsAct")->trigger();
        return bench->window->findChild<QListView*>(QStringLiteral("runsList"));
    }
    void choose(int row) const { list()->setCurrentIndex(list()->model()->index(row, 0)); }
    void show(int row) const { Q_EMIT list()->clicked(list()->model()->index(row, 0)); }
    QString text(int row, int role = Qt::DisplayRole) const
    {
        return list()->model()->index(row, 0).data(role).toString();
    }
    QStringList names() const
    {
        QStringList all;
        for (const KeptRun& run : runs().all())
            all << run.outline.name + (run.outline.isPinned ? QStringLiteral("*") : QString());
        return all;
    }
    void press(const char* name) const
    {
        bench->window->findChild<QToolButton*>(QLatin1String(name))->click();
    }
    QString path(const char* name) const { return folder->filePath(QLatin1String(name)); }
    void save(const char* name)
    {
        bench->prompt.file = path(name);
        bench->action("saveAct")->trigger();
    }
    void open(const char* name)
    {
        bench->prompt.file = path(name);
        bench->action("openAct")->trigger();
    }

    void begin() override
    {
        folder.reset(new QTemporaryDir);
        bench.reset(new ClassBench(2));
    }
    void finish() override { bench.reset(); }

private Q_SLOTS:
    void whatGivesWayComesBackToTheLastDigit_data()
    {
        columns<QByteArray, bool>({"then", "isOnDisk"});
        for (const char* then : {"run", "run of one", "file", "table", "lesson"}) {
            row(then, QByteArray(then), false);
            row(QByteArray(then) + ", on the disk", QByteArray(then), true);
        }
    }

    void whatGivesWayComesBackToTheLastDigit()
    {
        const auto [then, isOnDisk] = fetched<QByteArray, bool>({"then", "isOnDisk"});
        Settings::mainStore().setValue(Settings::runsOnDisk, isOnDisk ? 0 : 4);
        run(40);
        save("before.lesson");
        save("before.xml");
        run(20);
        QFile table(path("before.csv"));
        QVERIFY(table.open(QIODevice::WriteOnly) && table.write("Time [s],UV [UVI]\n0,7\n1,8\n") > 0);
        table.close();
        const int before = runs().all().size();
        bench->manager->plotAt(0)->setData();
        bench->manager->plotAt(0)->newMarker(1, -1, 3, 21);
        const QStringList measured = all();
        bench->prompt.asked.clear();
        if (then == "run") {
            run(30);
        } else if (then == "run of one") {
            bench->sample(1, 0, 5);
            bench->tellEnd(1);
        } else {
            const QByteArray ending = then == "lesson" ? "lesson" : then == "table" ? "csv" : "xml";
            open("before." + ending);
        }
        QVERIFY(all() != measured);
        QVERIFY(bench->prompt.asked.size() <= 1); // for the name of the file to open
        QCOMPARE(runs().all().size(), before + 1);
        const KeptRun& kept = runs().all().constLast();
        QCOMPARE(kept.groups(), QStringList({"Group A", "Group B"}));
        QVERIFY(!kept.isSaved && kept.duration() > 6);
        const QStringList other = all();
        if (isOnDisk)
            layDown();
        show(0);
        QCOMPARE(all(), measured);
        QCOMPARE(bench->manager->plotAt(0)->markers.size(), 2);
        const bool isListed = then == "lesson"; // as it was before it went into the file
        QCOMPARE(runs().all().size(), before + 2 - isListed);
        QVERIFY(text(!isListed).contains(QLatin1String("on the graphs")));
        show(isListed); // and the other one again
        QCOMPARE(all(), other);
        QCOMPARE(runs().all().size(), before + 2 - isListed);
    }

    void aRunThatGoesOnIsNotReplaced()
    {
        run(20);
        run(30);
        bench->sample(0, 0, 1);
        show(0);
        QCOMPARE(bench->data(0)->getXSize(), 1);
        QVERIFY(bench->window->findChild<StatusLine*>()->outcome().contains("when no logger is busy"));
        bench->sample(0, 1, 2);
        for (int i = 0; i < 2; ++i)
            bench->tellEnd(i);
        show(1);
        bench->sample(0, 0, 3); // with its own key, over the one that is shown
        QCOMPARE(names(), QStringList({"Run 1", "Run 2", "Run 3"}));
        QCOMPARE(runs().shown(), 0);
        QCOMPARE(runs().all().constLast().outline.parts[1].experiment.times.size(), 2);
        bench->tellEnd(0);
        bench->action("runAct")->trigger();
        QCOMPARE(names().constLast(), QStringLiteral("Run 4"));
    }

    void aLargeGraphStaysLarge()
    {
        run(10);
        run(20);
        Q_EMIT bench->manager->plotAt(0)->changedActivePlot(0);
        Q_EMIT bench->manager->plotAt(0)->enlargeAsked(0);
        QVERIFY(!bench->manager->plotAt(1)->isVisible());
        show(0);
        QVERIFY(bench->manager->plotAt(0)->isVisible() && !bench->manager->plotAt(1)->isVisible());
    }

    void whatIsDoneToTheListIsTakenBack()
    {
        for (int i = 0; i < 5; ++i)
            run(10 * i);
        choose(3); // the oldest
        QVERIFY(list()->model()->setData(list()->currentIndex(), "  Hot\nwater ", Qt::EditRole));
        for (int row = 0; row < 4; ++row) {
            choose(row);
            press("pinRun");
        }
        const QStringList all{"Hot water", "Run 2*", "Run 3*", "Run 4*"}; // three at most
        QCOMPARE(names(), all);
        choose(2);
        press("deleteRun");
        QCOMPARE(names(), QStringList({"Hot water", "Run 3*", "Run 4*"}));
        QAction* const undo = bench->action("undoAct");
        QCOMPARE(undo->text(), QStringLiteral("Undo Delete Run 2"));
        undo->trigger();
        QCOMPARE(names(), all);
        for (int i = 0; i < 4; ++i)
            undo->trigger();
        QCOMPARE(names(), QStringList({"Run 1", "Run 2", "Run 3", "Run 4"}));
        bench->action("redoAct")->trigger();
        QCOMPARE(names().constFirst(), QStringLiteral("Hot water"));
        QVERIFY(!undo->text().contains("Delete"));
    }

    /// What was done to it since comes back too, and it is in the list once.
    void theOneOnTheGraphsIsDeletedAndTakenBack_data()
    {
        columns<bool>({"isScreenKept"});
        row("at once", true);
        row("when another is on the graphs", false);
    }

    void theOneOnTheGraphsIsDeletedAndTakenBack()
    {
        QFETCH(bool, isScreenKept);
        run(10);
        run(20);
        show(0);
        QCOMPARE(names().size(), 2);
        choose(1);
        press("deleteRun");
        bench->manager->plotAt(0)->newMarker(0, -1, 3, 11);
        QAction* const undo = bench->action("undoAct");
        const auto takeBack = [&] {
            while (names().size() < 2 && undo->isEnabled())
                undo->trigger();
        };
        if (isScreenKept)
            takeBack();
        show(0);
        takeBack();
        QCOMPARE(names().size(), 2);
        show(1);
        QVERIFY(bench->data(0)->getYNoConvAt(0, 0) < 11);
        QCOMPARE(names().size(), 2);
        QVERIFY(!bench->manager->plotAt(0)->markers.isEmpty());
    }

    void twoAreComparedAndAveraged()
    {
        Settings::mainStore().setValue(Settings::runsOnDisk, 0);
        for (const double value : {20, 30, 50})
            run(value);
        layDown();
        const QVector<LessonRun> kept{whole(runs().all().at(0)), whole(runs().all().at(1))};
        const double first = kept.at(0).parts.at(1).experiment.channels.at(0).samples.at(3);
        const double second = kept.at(1).parts.at(1).experiment.channels.at(0).samples.at(3);
        choose(0);
        list()->selectAll();
        press("averageRuns");
        QCOMPARE(names(), QStringList({"Run 1", "Run 2", "Average of Run 1 and Run 2*"}));
        const LessonRun mean = whole(runs().all().at(2));
        QCOMPARE(mean.parts.size(), 3);
        for (int part = 0; part < 3; ++part) {
            const StoredExperiment& one = kept.at(0).parts.at(part).experiment;
            const StoredExperiment& other = kept.at(1).parts.at(part).experiment;
            QCOMPARE(mean.parts.at(part).experiment.times, one.times);
            for (int i = 0; i < one.channels.size(); ++i) {
                const QVector<double>& samples = mean.parts.at(part).experiment.channels.at(i).samples;
                for (int row = 0; row < samples.size(); ++row) {
                    const double half = (one.channels[i].samples[row] + other.channels[i].samples[row]) / 2;
                    QVERIFY(std::abs(samples[row] - half) < 1e-9 ||
                            (std::isnan(samples[row]) && std::isnan(half)));
                }
            }
        }
        bench->action("undoAct")->trigger();
        QCOMPARE(names().size(), 2);
        bench->manager->plotAt(0)->newMarker(0, -1, 3, bench->data(0)->getYNoConvAt(0, 3));
        list()->selectAll();
        press("compareRuns"); // the later one on the graphs
        QCOMPARE(names(), QStringList({"Run 1*", "Run 2", "Run 3"}));
        QVERIFY(text(1).contains("on the graphs"));
        Plot* const plot = bench->manager->plotAt(0);
        plot->newMarker(0, -1, 3, second);
        const QString words = plot->markers.constLast()->label().text();
        const SensorPtr& sensor = bench->data(0)->getSens(0);
        const QString told =
            QStringLiteral("Run 1: %1 %2, Δ = +%3")
                .arg(sensor->valueToString(first), sensor->unitName, sensor->valueToString(second - first));
        QVERIFY2(words.contains(told), qPrintable(words));
    }

    void aLessonHoldsThem()
    {
        Settings::mainStore().setValue(Settings::runsOnDisk, 0);
        run(20);
        const QStringList first = all();
        run(30);
        choose(0);
        press("pinRun");
        list()->model()->setData(list()->currentIndex(), "Cold", Qt::EditRole);
        run(40);
        layDown();
        QTRY_COMPARE(journals(), 3);
        save("a.lesson");
        QTRY_COMPARE(journals(), 0);
        QVERIFY(runs().unsaved() == 0 && !text(0).contains("not saved"));
        open("a.lesson"); // the same runs, and the one on the graphs
        QCOMPARE(names(), QStringList({"Cold*", "Run 2", "a"}));
        bench.reset(new ClassBench(1));
        open("a.lesson");
        QVERIFY(bench->data(0)->getYNoConvAt(0, 0) > 39);
        QCOMPARE(names(), QStringList({"Cold*", "Run 2"}));
        QVERIFY(text(1).contains("Group A, Group B"));
        show(1);
        QStringList again = all();
        QCOMPARE(again.size(), first.size());
        for (int i = 0; i < first.size(); ++i)
            QVERIFY(again[i] == first[i] || std::abs(again[i].toDouble() - first[i].toDouble()) < 1e-9);
        save("b.lesson");
        Lesson lesson;
        QString reason;
        QVERIFY(LessonFile::read(path("b.lesson"), &lesson, &reason) && reason.isEmpty());
        QCOMPARE(lesson.kept.size(), 2); // the third went into the list when the first was shown
        QVERIFY(lesson.begun.isValid() && lesson.kept.constLast().begun.isValid());
    }

    void aCrashLosesNone()
    {
        for (const double value : {20, 30, 40})
            run(value);
        show(0); // and its journal is the present one again
        choose(1);
        press("deleteRun");
        QTRY_COMPARE(journals(), 3);
        bench.reset(new ClassBench(2));
        const auto button = [this] {
            return bench->window->findChild<QPushButton*>(QStringLiteral("restoreRun"));
        };
        bench->window->findChild<RunRecovery*>()->look();
        QTRY_VERIFY(button() && button()->isVisible());
        for (int i = 0; i < 3; ++i)
            button()->click();
        QVERIFY(!button()->isVisible() && bench->prompt.asked.isEmpty());
        QCOMPARE(runs().all().size(), 2); // and the last one on the graphs
        QCOMPARE(journals(), 3);
        bench->prompt.answers = {UserPrompt::Answer::No, UserPrompt::Answer::Cancel};
        bench->window->close();
        QVERIFY(bench->prompt.asked.constLast().contains("2 kept runs are in no file yet"));
    }

    void onlyWhatIsInAFileGoesUnasked()
    {
        Settings::mainStore().setValue(Settings::runsMemory, 3);
        largeRun();
        save("a.lesson");
        bench->prompt.asked.clear();
        for (int i = 0; i < 2; ++i)
            largeRun();
        QCOMPARE(names(), QStringList({"Run 1"})); // the one in the file went
        QVERIFY(bench->prompt.asked.isEmpty());
        bench->sample(0, 0, 1);
        QVERIFY(bench->prompt.asked.isEmpty()); // not in the middle of a run
        bench->tellEnd(0);
        QVERIFY(bench->prompt.asked.isEmpty()); // the loggers go first
        QTRY_VERIFY(bench->prompt.asked.join(' ').contains("Too many runs|"));
        QCOMPARE(names(), QStringList({"Run 1", "Run 2"}));
        bench->prompt.asked.clear();
        bench->prompt.confirmed = true;
        bench->sample(0, 0, 1);
        bench->tellEnd(0);
        QTRY_COMPARE(names().constFirst(), QStringLiteral("Run 2"));
    }

private:
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<ClassBench> bench;
};

QTEST_MAIN(TestRuns)
#include "test_runs.moc"
