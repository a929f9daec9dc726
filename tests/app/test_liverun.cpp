#include <QAction>
#include <QSignalSpy>
#include <QTest>

#include "app/refreshclock.h"
#include "tests/app/classbench.h"

class TestLiveRun : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void aSampleJoinsTheExperimentOrStartsANewOne_data()
    {
        columns<QVector<int>, bool, bool, QVector<int>, int>(
            {"earlier", "isStopped", "isRunOrdered", "numbers", "stored"});
        row("from sample 0", QVector<int>{}, false, true, QVector<int>{0, 1, 2}, 3);
        row("a small gap", QVector<int>{0, 1, 2}, false, false, QVector<int>{5, 6}, 5);
        row("a big gap", QVector<int>{0, 1, 2}, false, false, QVector<int>{6, 7}, 2);
        row("sample 0 again", QVector<int>{0, 1, 2}, false, false, QVector<int>{0, 1}, 2);
        row("joined late", QVector<int>{}, false, true, QVector<int>{4, 5}, 2);
        row("first samples lost, nothing before", QVector<int>{}, false, true, QVector<int>{2, 3}, 2);
        row("numbers fall back", QVector<int>{0, 1, 2, 3}, false, false, QVector<int>{1}, 1);
        row("late ones after the stop", QVector<int>{0, 1, 2}, true, false, QVector<int>{3, 4}, 3);
        row("a new run right after the stop", QVector<int>{0, 1, 2}, true, false, QVector<int>{0, 1}, 2);
        row("numbers beyond their range", QVector<int>{0, 1}, false, false, QVector<int>{-32768}, 2);
    }

    void aSampleJoinsTheExperimentOrStartsANewOne()
    {
        const auto [earlier, isStopped, isRunOrdered, numbers] =
            fetched<QVector<int>, bool, bool, QVector<int>>(
                {"earlier", "isStopped", "isRunOrdered", "numbers"});
        ClassBench bench(1);
        for (int number : earlier)
            bench.sample(0, short(number));
        if (isStopped)
            bench.tellEnd(0);
        if (isRunOrdered) {
            bench.meet(0);
            bench.action("runAct")->trigger();
        }
        for (int number : numbers)
            bench.sample(0, short(number));
        QTEST(bench.data(0)->getXSize(), "stored");
    }

    void theBusyTitleComesAfterASecondOfSkippedRefreshes()
    {
        ClassBench bench(1);
        bench.meet(0, 4); // 25/Sec
        bench.sample(0, 0);
        QTest::qWait(60);
        const QString title = bench.manager->plotC()->title().text();
        QString after24;
        QString after25;
        QTimer::singleShot(0, [&] { // runs inside the next sample
            for (short n = 2; n < 26; ++n)
                bench.sample(0, n);
            after24 = bench.manager->plotC()->title().text();
            bench.sample(0, 26);
            after25 = bench.manager->plotC()->title().text();
        });
        bench.sample(0, 1);
        QCOMPARE(after24, title);
        QCOMPARE(after25, QStringLiteral("Kormelin is busy with data collection, please wait"));
        QCOMPARE(bench.data(0)->getXSize(), 27); // stored all the same
        bench.sample(0, 27);
        QCOMPARE(bench.manager->plotC()->title().text(), title);
        bench.logger(0)->tooSlowSignal();
        QCOMPARE(bench.manager->plotC()->title().text(), after25);
    }

    void aRefusedRunIsExplained_data()
    {
        columns<int, QString>({"event", "title"});
        row("battery", 0x23, "Low battery power");
        row("memory", 0x24, "Not enough memory");
        row("no sensor", 0x25, "No selected sensors");
    }

    void aRefusedRunIsExplained()
    {
        QFETCH(int, event);
        QFETCH(QString, title);
        ClassBench bench(1);
        bench.meet(0);
        bench.action("runAct")->trigger();
        bench.tell(0, {{3, event}, {7, 0}});
        QTRY_COMPARE(bench.prompt.asked.size(), 1);
        QVERIFY(bench.prompt.asked[0].startsWith(title + QLatin1Char('|')));
        QVERIFY(bench.action("runAct")->isVisible());
    }

    void samplesArePaintedTogether()
    {
        ClassBench bench(4);
        QVERIFY(QTest::qWaitForWindowExposed(bench.window.data()));
        for (int i = 0; i < 4; ++i)
            bench.sample(i, 0);
        QTest::qWait(100);
        QSignalSpy frames(bench.window->findChild<RefreshClock*>(), &RefreshClock::painted);
        QElapsedTimer clock;
        clock.start();
        short number = 1;
        while (clock.elapsed() < 400) {
            for (int i = 0; i < 4; ++i)
                bench.sample(i, number);
            ++number;
            QTest::qWait(2);
        }
        // 60 a second, fewer on a slow machine; four graphs and forty samples a frame do not make it more.
        QVERIFY2(frames.size() >= 3 && frames.size() <= 27, qPrintable(QString::number(frames.size())));
        QVERIFY(RefreshClock::period(3) < RefreshClock::period(10)); // quick as long as they cost little,
        QVERIFY(RefreshClock::period(10) <
                RefreshClock::period(100)); // and leave the thread half of its time
        QVERIFY(RefreshClock::period(100) >= 200);
        QVERIFY(RefreshClock::period(10, true) < RefreshClock::period(10));
        QVERIFY(RefreshClock::period(100, true) >= 200);
        bench.sample(0, number);
        frames.clear();
        QVERIFY(frames.wait(1000));
    }

    void aHiddenGraphIsPaintedWhenItIsShown()
    {
        ClassBench bench(1);
        RefreshClock clock;
        QSignalSpy frames(&clock, &RefreshClock::painted);
        Plot* plot = bench.manager->plotC();
        clock.mark(plot);
        QVERIFY(!frames.wait(150));
        plot->show();
        QVERIFY(frames.wait(1000));
        QCOMPARE(frames.size(), 1);
    }
};

QTEST_MAIN(TestLiveRun)
#include "test_liverun.moc"
