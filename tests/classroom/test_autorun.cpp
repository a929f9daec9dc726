#include <QTest>

#include "classroom/autorun.h"
#include "data/novalue.h"
#include "tests/common/testsupport.h"

class TestAutoRun;
Q_DECLARE_METATYPE(std::function<void(TestAutoRun&)>)

/// Runs by a plan, with a clock and a class that the test plays.
class TestAutoRun : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        log.clear();
        isFree = isThere = true;
        for (double& value : values)
            value = noValue;
        AutoRun::World world;
        world.isFree = [this] { return isFree; };
        world.isAnyoneThere = [this] { return isThere; };
        world.value = [this](int slot) { return values[slot]; };
        world.start = [this] {
            log << QStringLiteral("start %1").arg(now / 1000.0);
            if (doesBegin)
                run->noteBegun(now);
        };
        world.stop = [this] { log << QStringLiteral("stop %1").arg(now / 1000.0); };
        run.reset(new AutoRun(world));
        connect(run.data(), &AutoRun::told, this, [this](const QString& line) { log << line; });
        now = 0;
        doesBegin = true;
    }
    /// Time goes on to `second`.
    void until(double second)
    {
        for (; now < second * 1000; now += 100)
            run->tick(now);
        run->tick(now);
    }
    void end(bool isEmpty = false) { run->noteEnded(now, isEmpty); }

    QScopedPointer<AutoRun> run;
    QStringList log;
    qint64 now = 0;
    bool isFree = true;
    bool isThere = true;
    bool doesBegin = true;
    double values[mostLoggers] = {};

private Q_SLOTS:
    void countsDownStopsAndRepeats()
    {
        AutoRunPlan plan;
        plan.begin = AutoRunPlan::Begin::Countdown;
        plan.countdown = 5;
        plan.stopAfter = 3;
        plan.times = 2;
        run->arm(plan, now);
        until(4.8);
        QVERIFY2(run->text().contains("Run 1 of 2 begins in 1 s"), qPrintable(run->text()));
        until(6);
        run->noteSample(now); // counts from here
        run->noteSample(now + 500);
        until(8.9);
        QCOMPARE(log.join(';'), QString("start 5"));
        until(9.5);
        run->noteBegun(now); // a key of a logger, just then
        until(9.6);
        end();
        QVERIFY2(run->text().contains("Run 2 of 2 begins in 5 s"), qPrintable(run->text()));
        until(30);
        end();
        QCOMPARE(log.join(';'), QString("start 5;stop 9;start 14.6;stop 17.6;2 runs were made."));
        QVERIFY(!run->isOn());
        until(60);
        QCOMPARE(log.size(), 5);
    }

    void beginsAtALevel_data()
    {
        // What each of three groups measures, second by second; 9 stands for nothing.
        columns<int, bool, QVector<QVector<double>>, QString>({"group", "isRising", "values", "log"});
        using Rows = QVector<QVector<double>>;
        const int any = AutoRunPlan::anyGroup, all = AutoRunPlan::allGroups;
        row("any", any, true, Rows{{1, 1, 1}, {1, 3, 1}}, QString("start 1"));
        row("on the level is not past it", any, true, Rows{{1, 1, 1}, {2, 2, 2}}, QString());
        row("falling", any, false, Rows{{3, 3, 3}, {3, 3, 1}}, QString("start 1"));
        row("beyond it from the first on", any, true, Rows{{3, 1, 1}, {3, 1, 1}}, QString());
        row("back, and again", any, true, Rows{{3, 1, 1}, {1, 1, 1}, {3, 1, 1}}, QString("start 2"));
        row("the one that is meant", 1, true, Rows{{1, 1, 1}, {3, 1, 3}, {1, 3, 1}}, QString("start 2"));
        row("all, one after the other", all, true, Rows{{1, 1, 1}, {3, 3, 1}, {1, 3, 3}, {3, 3, 3}},
            QString("start 3"));
        row("all but the one that was lost", all, true, Rows{{1, 1, 1}, {3, 3, 1}, {3, 3, 9}},
            QString("start 2"));
        row("nobody is known any more", all, true, Rows{{1, 1, 1}, {9, 9, 9}}, QString());
    }

    void beginsAtALevel()
    {
        const auto [group, isRising, rows, expected] =
            fetched<int, bool, QVector<QVector<double>>, QString>({"group", "isRising", "values", "log"});
        AutoRunPlan plan;
        plan.begin = AutoRunPlan::Begin::Level;
        plan.group = group;
        plan.isRising = isRising;
        plan.level = 2;
        run->arm(plan, now);
        QVERIFY(run->text().contains("No value has come yet"));
        for (int second = 0; second < rows.size(); ++second) {
            for (int slot = 0; slot < 3; ++slot)
                values[slot] = rows[second][slot] == 9 ? noValue : rows[second][slot];
            run->tick(now = second * 1000);
        }
        QCOMPARE(log.join(';'), expected);
    }

    void twoThingsAtOnce_data()
    {
        columns<std::function<void(TestAutoRun&)>, QString>({"what", "log"});
        using What = std::function<void(TestAutoRun&)>;
        row("Run is pressed", What([](TestAutoRun& t) { t.run->noteBegun(t.now); }),
            QString("stop 4;start 6.1;stop 9.1;2 runs were made."));
        row("it is given up", What([](TestAutoRun& t) { t.run->giveUp(); }),
            QString("Given up: 0 of 2 runs were made."));
        row("everybody is lost", What([](TestAutoRun& t) { t.isThere = false; }),
            QString("No logger is connected any more, so no run begins by itself."));
        row("a dialog opens for good", What([](TestAutoRun& t) { t.isFree = false; }), QString());
        row("a plan takes its place", What([](TestAutoRun& t) { t.run->arm({}, t.now); }),
            QString("start 1"));
        row("the loggers do not begin", What([](TestAutoRun& t) { t.doesBegin = false; }),
            QString("start 2;The run could not begin by itself."));
    }

    void twoThingsAtOnce()
    {
        const auto [what, expected] = fetched<std::function<void(TestAutoRun&)>, QString>({"what", "log"});
        AutoRunPlan plan;
        plan.begin = AutoRunPlan::Begin::Countdown;
        plan.countdown = 2;
        plan.stopAfter = 3;
        plan.times = 2;
        run->arm(plan, now);
        until(1);
        what(*this);
        for (double second = 1.1; second < 15; second += 1) {
            until(second);
            if (log.value(log.size() - 1).startsWith("stop") && run->isOn() &&
                run->state() == AutoRun::State::Stopping)
                end();
        }
        QCOMPARE(log.join(';'), expected);
    }

    void aRunThatIsOnEnds_data()
    {
        columns<bool, bool, QString>({"isByPerson", "isEmpty", "log"});
        row("by a person, as its time is over", true, false,
            QString("start 0;stop 3;Given up: 1 of 3 runs were made."));
        row("without a sample", false, true,
            QString("start 0;The run brought no samples, so there is no other."));
        row("by itself", false, false, QString("start 0;start 4"));
    }

    void aRunThatIsOnEnds()
    {
        const auto [isByPerson, isEmpty, expected] =
            fetched<bool, bool, QString>({"isByPerson", "isEmpty", "log"});
        AutoRunPlan plan;
        plan.stopAfter = 3;
        plan.times = 3;
        run->arm(plan, now);
        until(isByPerson ? 3 : 2);
        if (isByPerson)
            QVERIFY(run->giveUp() && !run->giveUp());
        end(isEmpty);
        until(6);
        QCOMPARE(log.join(';'), expected);
    }
};

QTEST_GUILESS_MAIN(TestAutoRun)
#include "test_autorun.moc"
