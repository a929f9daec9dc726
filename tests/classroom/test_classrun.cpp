#include <QSignalSpy>

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "tests/classroom/managerbench.h"
#include "virtual/wire.h"

/// What a run leaves in the sets of the loggers and of the class, on loggers that behave as real ones.
class TestClassRun : public GuardedTest
{
    Q_OBJECT

    static QVector<LoggerIdentity> loggers(int count, const char* rate = "100/Sec", int samples = 1000)
    {
        return QVector<LoggerIdentity>(count, VirtualBench::identity("Birch", rate, samples));
    }

    void begin(const QVector<LoggerIdentity>& identities)
    {
        bench.reset(new ManagerBench(identities));
        bench->openAll();
    }
    void finish() override { bench.reset(); }

    ClassRun& run() { return bench->manager.run(); }
    int count(int i) { return bench->data(i)->getXSize(); }
    void startAll(int samples)
    {
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        for (int i = 0; i < bench->count(); ++i)
            QTRY_VERIFY(count(i) >= samples);
    }
    void stopAll()
    {
        bench->manager.sendCmdToAll(CMD_STOP_LOGGING);
        QTRY_VERIFY(!bench->manager.isAnyRunning());
        QTRY_VERIFY(bench->manager.queue().isIdle());
    }
    /// Every row of the class holds what the group's own set has at that time, and nothing where it has
    /// nothing; the average is over those that are there.
    QString classFault(const QVector<int>& groups)
    {
        const ExpData* set = bench->data(-1);
        const int mean = bench->count();
        for (int row = 0; row < set->getXSize(); ++row) {
            double sum = 0;
            int values = 0;
            for (int i = 0; i < bench->count(); ++i) {
                const double joined = row < set->getYSize(i) ? set->getYNoConvAt(i, row) : qQNaN();
                const ExpData* own = bench->data(i);
                const int at = own->getX().indexOf(set->getXAt(row));
                const double value = at >= 0 ? own->getYNoConvAt(own->getSelectedSensor(), at) : qQNaN();
                const bool isThere = groups.contains(i) && !qIsNaN(value);
                if (isThere != !qIsNaN(joined) || (isThere && joined != value))
                    return QStringLiteral("group %1, row %2").arg(i).arg(row);
                sum += isThere ? joined : 0;
                values += isThere ? 1 : 0;
            }
            if (values > 0 && !qFuzzyCompare(set->getYNoConvAt(mean, row), sum / values))
                return QStringLiteral("average of row %1").arg(row);
        }
        return {};
    }

private Q_SLOTS:
    void aLostSampleMovesNobody()
    {
        begin(loggers(3));
        bench->loseSamples(1, 5, 7);
        bench->loseSamples(2, 0, 0);
        startAll(40);
        stopAll();
        QVERIFY(!bench->data(1)->getX().contains(6 * bench->data(1)->dt));
        QCOMPARE(classFault({0, 1, 2}), QString());
        QCOMPARE(bench->data(-1)->valuesAt(6), 2);
        QCOMPARE(bench->data(-1)->valuesAt(20), 3);
    }

    void aLoggerThatWasAwayGoesOnBehindAGap()
    {
        begin(loggers(2));
        startAll(20);
        bench->pull(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Lost);
        QVERIFY(run().lostSince(0).isValid());
        const int before = count(0);
        QTRY_VERIFY(count(1) > before + 30);
        bench->putBack(0); // it is found without a click
        QTRY_VERIFY(count(0) > before + 10);
        QCOMPARE(run().phase(0), ClassRun::Phase::Running);
        stopAll();
        const ExpData* set = bench->data(0);
        QVERIFY(std::isnan(set->getYNoConvAt(0, before)));
        QVERIFY(set->getXAt(before + 1) > set->getXAt(before - 1) + 10 * set->dt);
        StoredRun other{set->getSensors(), set->dt, QVector<QVector<double>>(set->getNSens())};
        for (QVector<double>& column : other.columns)
            column.fill(-1, 200);
        const int rows = count(0);
        QCOMPARE(run().fillGaps(0, other), -1); // another run
        QCOMPARE(count(0), rows);
        for (int k = 1; k < set->getXSize(); ++k)
            QVERIFY(set->getXAt(k) > set->getXAt(k - 1));
        QCOMPARE(set->getXAt(0), 0.0);
        QCOMPARE(classFault({0, 1}), QString());
        QCOMPARE(bench->data(-1)->getXAt(0), 0.0);
    }

    void aSecondPartFollowsAtItsTrueTime_data()
    {
        columns<bool>({"isHeard"});
        row("the stop is heard", true);
        row("the word of the stop is lost", false);
    }

    void aSecondPartFollowsAtItsTrueTime()
    {
        QFETCH(bool, isHeard);
        begin(loggers(2));
        startAll(20);
        bench->dropAnswers(0, isHeard ? 0 : 1);
        bench->pressStop(0);
        QTRY_VERIFY(!isHeard || run().phase(0) == ClassRun::Phase::Ended);
        QVERIFY(bench->manager.isAnyRunning());
        const int others = count(1);
        QTRY_VERIFY(count(1) > others + 40);
        const int before = count(0);
        bench->pressStart(0);
        QTRY_VERIFY(count(0) > before + 10);
        stopAll();
        const ExpData* set = bench->data(0);
        const double gap = set->getXAt(before) - set->getXAt(before - 1);
        QVERIFY2(gap > 0.3 && gap < 3, qPrintable(QString::number(gap)));
        QVERIFY(bench->data(-1)->getX().constLast() >= set->getX().constLast());
        QCOMPARE(classFault({0, 1}), QString());
    }

    void aSecondPartKeepsToTheSensorsOfTheFirst()
    {
        begin(loggers(2));
        startAll(10);
        bench->pressStop(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Ended);
        const int before = count(0);
        const int channels = bench->data(0)->getNSens();
        LoggerSettings plan = bench->state(0)->reported();
        plan.mask &= quint16(plan.mask - 1); // without the first of its sensors
        bench->session(0)->wantSetup(plan);
        bench->session(0)->sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_VERIFY(bench->session(0)->isSetupConfirmed());
        QSignalSpy told(&run(), &ClassRun::sensorsChanged);
        bench->pressStart(0);
        QTRY_VERIFY(count(0) > before + 5);
        stopAll();
        QCOMPARE(told.size(), 1);
        QCOMPARE(bench->data(0)->getNSens(), channels);
        QVERIFY(qIsNaN(bench->data(0)->getYNoConvAt(0, before)));
        for (int c = 1; c < channels; ++c)
            QCOMPARE(bench->data(0)->getYNoConvAt(c, before), bench->samples(0).value(0).value(c - 1));
    }

    // As after a crash of the program: the first whose sample comes is no older than the others.
    void aRunThatGoesOnIsTakenUpByAllAtOneTime()
    {
        bench.reset(new ManagerBench(loggers(3)));
        for (int i : {0, 1, 2})
            bench->pressStart(i);
        bench->pass(4000);
        bench->openAll();
        for (int i : {0, 1, 2}) {
            QTRY_VERIFY(count(i) > 5);
            QVERIFY(bench->data(i)->getXAt(0) >= 4);
        }
        QVERIFY(run().elapsed() >= 4000);
        QCOMPARE(classFault({0, 1, 2}), QString());
    }

    void aRunByKeysGoesOnBehindItsGap()
    {
        begin(loggers(2));
        for (int i : {0, 1})
            bench->pressStart(i);
        QTRY_VERIFY(count(0) > 10 && count(1) > 10);
        const double last = bench->data(1)->getX().constLast();
        bench->pull(1);
        QTRY_COMPARE(run().phase(1), ClassRun::Phase::Lost);
        const int others = count(0);
        QTRY_VERIFY(count(0) > others + 30);
        QSignalSpy replaced(&run(), &ClassRun::groupReplaced);
        bench->putBack(1);
        bench->manager.connector().connectLogger(1);
        QTRY_VERIFY(bench->data(1)->getX().constLast() > last + 0.5);
        QVERIFY(replaced.isEmpty() && bench->data(1)->getXAt(0) < last);
        stopAll();
        QCOMPARE(classFault({0, 1}), QString());
    }

    void anOlderRunStandsAtItsTrueTime()
    {
        begin(loggers(2));
        startAll(150);
        bench->pull(1);
        QTRY_COMPARE(run().phase(1), ClassRun::Phase::Lost);
        stopAll();
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(count(0) >= 10);
        bench->putBack(1);
        bench->open(1);
        QTRY_VERIFY(run().isRunning(1) && count(1) >= 10);
        stopAll();
        QVERIFY(bench->data(1)->getX().constLast() < bench->data(0)->getX().constLast() + 0.5);
        QCOMPARE(classFault({0, 1}), QString());
    }

    void whoIsChosenDuringARunGetsAChannel()
    {
        begin(loggers(2));
        bench->manager.setDefTembrins(1);
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(count(0) >= 10);
        bench->manager.setDefTembrins(2);
        bench->pressStart(1);
        QTRY_VERIFY(count(1) >= 10);
        stopAll();
        QCOMPARE(classFault({0, 1}), QString());
    }

    void aLateWordOfTheStopBeforeEndsNoOrderedRun()
    {
        begin(loggers(1));
        startAll(10);
        stopAll();
        const QByteArray stop = bench->heard(0).constLast();
        QCOMPARE(quint8(stop.at(2)), quint8(Wire::Stop));
        QSignalSpy ends(&run(), &ClassRun::ended);
        bench->delay(0, 20);
        bench->act(0, [&](VirtualLogger& logger, qint64 now) { return logger.receive(stop, now); });
        bench->manager.sendCmdToAll(CMD_START_LOGGING); // its answer comes behind that of the stop
        QTRY_VERIFY(count(0) >= 10);
        QCOMPARE(ends.size(), 0);
        QCOMPARE(bench->heard(0, Wire::Start), 2);
    }

    void aStoredRunByItsOwnKeyBeginsMembershipAnew()
    {
        begin(loggers(2));
        startAll(10);
        stopAll();
        bench->chooseRate(0, "25000/Sec");
        bench->pressStart(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Running);
        QCOMPARE(run().classSet().memberBits(), quint8(1));
        QCOMPARE(count(0), 0);
    }

    void aRunBeginsMembershipAnew()
    {
        begin(loggers(2));
        startAll(10);
        stopAll();
        bench->pull(1);
        QTRY_VERIFY(!bench->manager.isTembrinConnect(1));
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QVERIFY(count(0) == 0); // the old curve leaves at once
        QTRY_VERIFY(count(0) >= 10);
        bench->data(1)->setSelectedSensor(1);
        run().classSet().follow(1);
        stopAll();
        QCOMPARE(classFault({0}), QString());
    }

    void rightAfterAStopNothingOfANewRunIsDropped()
    {
        begin(loggers(1));
        startAll(10);
        stopAll();
        bench->loseSamples(0, 0, 0);
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(count(0) >= 20);
        QCOMPARE(bench->data(0)->getXAt(0), bench->data(0)->dt);
        QCOMPARE(bench->data(0)->getXAt(9), 10 * bench->data(0)->dt);
    }

    void oneLoggerAloneStaysInItsRun()
    {
        begin(loggers(1));
        bench->loseSamples(0, 5, 15);
        startAll(30);
        QCOMPARE(bench->data(0)->getXAt(0), 0.0);
        bench->pull(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Lost);
        bench->putBack(0);
        const int before = count(0);
        QTRY_VERIFY(count(0) > before + 10);
        QCOMPARE(bench->data(0)->getXAt(0), 0.0);
        QCOMPARE(run().samples(), count(0) - 1); // and the gap
        QCOMPARE(classFault({0}), QString());
    }

    void whoEndsBeforeTheOthersBeginStaysInTheRun()
    {
        begin({VirtualBench::identity("Birch", "100/Sec", 10), VirtualBench::identity("Birch", "100/Sec")});
        bench->delay(1, 700);
        startAll(10);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Ended);
        stopAll();
        QCOMPARE(classFault({0, 1}), QString());
    }

    void aStoredRunThatEndedUnseenIsFetched_data()
    {
        columns<bool>({"isOther"});
        row("alone", false);
        row("while another one runs", true);
    }

    void aStoredRunThatEndedUnseenIsFetched()
    {
        QFETCH(bool, isOther);
        QVector<LoggerIdentity> class_ = loggers(2, "1/Sec");
        class_[0] = VirtualBench::identity("Birch", "25000/Sec", 10000);
        begin(class_.mid(0, isOther ? 2 : 1));
        quint8 fetched = 0;
        connect(&run(), &ClassRun::storedRunsEnded, this, [&](quint8 which) { fetched |= which; });
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Running);
        bench->pull(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Lost);
        bench->pressStop(0);
        bench->putBack(0);
        bench->open(0);
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Ended);
        if (isOther)
            stopAll();
        QTRY_COMPARE(fetched, quint8(1));
    }

    void whoIsStartedLaterChangesNoOpenedFile()
    {
        begin(loggers(2));
        bench->pressStart(0);
        QTRY_VERIFY(count(0) > 5);
        run().classSet().release(); // as an opened file does
        const auto before = bench->data(-1)->getX();
        bench->pressStart(1);
        QTRY_VERIFY(count(1) > 20);
        QCOMPARE(bench->data(-1)->getX(), before);
    }

    void aStartThatIsNotHeardHoldsNobodyUp()
    {
        begin(loggers(2, "100/Sec", 10));
        bench->setDead(0);
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QVERIFY(bench->manager.isRunning(0));
        QTRY_VERIFY(bench->manager.queue().isIdle());
        QTRY_VERIFY(!bench->manager.isAnyRunning());
        QVERIFY(run().lostSince(0).isValid());
        bench->manager.setDefTembrins(0);
        QVERIFY(!run().lostSince(0).isValid()); // nobody's any more
        bench->manager.setDefTembrins(2);
        bench->setDead(0, false);
        bench->pressStart(0);
        QTRY_VERIFY(count(0) == 10);
    }

    void samplesByHandOfAllGroupsStay()
    {
        begin(loggers(2, "Manual"));
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(bench->isRunning(0) && bench->isRunning(1));
        for (int i : {0, 0, 1}) {
            const int before = count(i);
            bench->pressSample(i);
            QTRY_COMPARE(count(i), before + 1);
        }
        QCOMPARE(classFault({0, 1}), QString());
        QCOMPARE(bench->data(-1)->getXSize(), 2);
    }

    void whatTheUserDidToTheClassLasts()
    {
        begin(loggers(2));
        startAll(30);
        stopAll();
        ExpData* set = bench->data(-1);
        set->setSelectedSensor(0);
        set->addSpecialCurve(ExpData::CURVE_DERIV);
        set->doCrop(5 * set->dt, 20 * set->dt);
        const QVector<double> first = set->getYNoConv(0);
        const int channels = set->getNSens();
        run().classSet().follow(0); // a click that chooses what is chosen
        QCOMPARE(set->getNSens(), channels);
        bench->data(1)->setSelectedSensor(1);
        run().classSet().follow(1);
        QCOMPARE(set->getNSens(), channels);
        QCOMPARE(set->getYNoConv(0), first);
        QCOMPARE(set->getSens(1)->ID, bench->data(1)->getSens(1)->ID);
        QVERIFY(set->getX().constLast() < 20 * set->dt);
        bench->pull(1); // nor does a return change anything
        QTRY_VERIFY(!bench->manager.isTembrinConnect(1));
        bench->putBack(1);
        bench->open(1);
        QTRY_VERIFY(bench->isReady(1));
        QCOMPARE(set->getNSens(), channels);
        QCOMPARE(set->getYNoConv(0), first);
    }

    void aLoggerThatDoesNotAnswerToAStopHoldsNobodyUp()
    {
        begin(loggers(2));
        startAll(10);
        LoggerSettings plan = bench->state(0)->reported();
        plan.samples = 0;
        bench->session(0)->wantSetup(plan); // as after a setup that it has not heard
        int jobs = 0;
        connect(&bench->manager.queue(), &CommandQueue::begun, this, [&] { ++jobs; });
        bench->setDead(0);
        bench->manager.sendCmdToAll(CMD_STOP_LOGGING);
        QVERIFY(bench->manager.isAnyRunning());
        QTRY_VERIFY(bench->manager.queue().isIdle());
        QVERIFY(!bench->manager.isAnyRunning());
        const int before = count(0);
        bench->setDead(0, false); // it ran on, and is heard again
        QTRY_VERIFY(count(0) > before);
        QVERIFY(bench->manager.isRunning(0));
        QCOMPARE(bench->data(0)->getXAt(0), 0.0);
        QCOMPARE(jobs, 1); // the setup waits until it can be heard
        bench->pressStop(0);
        QTRY_COMPARE(bench->setup(0).samples, 0);
    }

    void onlyRunsThatWereStoredAreFetched_data()
    {
        columns<bool>({"isHeard"});
        row("the word of its start is lost", true);
        row("its start is not heard", false);
    }

    void onlyRunsThatWereStoredAreFetched()
    {
        QFETCH(bool, isHeard);
        begin({VirtualBench::identity("Birch", "25000/Sec", 10000, 2),
               VirtualBench::identity("Birch", "100/Sec", 1000, 2)});
        quint8 fetched = 0;
        connect(&run(), &ClassRun::storedRunsEnded, this, [&](quint8 which) { fetched |= which; });
        if (isHeard)
            bench->dropAnswers(0, 1);
        else
            bench->setDead(0);
        bench->manager.sendCmdToAll(CMD_START_LOGGING);
        QTRY_VERIFY(count(1) > 20 && bench->manager.queue().isIdle());
        bench->setDead(0, false);
        stopAll();
        QTRY_COMPARE(run().phase(0), ClassRun::Phase::Ended);
        QCOMPARE(fetched, quint8(isHeard ? 1 : 0));
    }

private:
    QScopedPointer<ManagerBench> bench;
};

QTEST_MAIN(TestClassRun)
#include "test_classrun.moc"
