#include "tests/classroom/managerbench.h"
#include "virtual/wire.h"

/// The manager and its sessions on loggers that behave as real ones.
class TestVirtualClass : public GuardedTest
{
    Q_OBJECT

    static QVector<LoggerIdentity> three(const char* rate = "10/Sec")
    {
        return {VirtualBench::identity("Birch", rate), VirtualBench::identity("Grove", rate),
                VirtualBench::identity("Vorta", rate)};
    }

private Q_SLOTS:
    void whatTheLineDoesIsWhatTheProgramSees()
    {
        ManagerBench bench(three());
        bench.openAll();
        QVERIFY(bench.state(2)->isVorta());
        bench.dropAnswers(0, 1);
        bench.setDead(1);
        bench.manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_COMPARE(bench.heard(0, Wire::LoggingSetup), 2);
        QCOMPARE(bench.setup(0).mask, int(bench.logger(0).identity().mask));
        QCOMPARE(bench.setup(1).mask, -1);
        QCOMPARE(bench.setup(2).mask, -1);
        bench.pull(1);
        QTRY_VERIFY(!bench.manager.isTembrinConnect(1));
        bench.setDead(1, false);
        bench.open(1);
        QVERIFY(!bench.manager.isTembrinConnect(1));
        bench.putBack(1);
        bench.open(1);
        QTRY_VERIFY(bench.isReady(1));
    }

    void samplesArriveUnderTheirNumbers()
    {
        ManagerBench bench(three("100/Sec"));
        bench.openAll();
        QVector<int> numbers;
        connect(bench.state(0),
                qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived), this,
                [&](int, short number) { numbers.append(number); });
        bench.loseSamples(0, 2, 4);
        bench.pressStart(0);
        QTRY_VERIFY(bench.samples(0).size() >= 8);
        bench.pressStop(0);
        QTRY_VERIFY(bench.state(0)->isIdle());
        QCOMPARE(numbers, bench.samples(0).keys().toVector());
        QVERIFY(numbers.contains(1) && !numbers.contains(2) && numbers.contains(5));
        QCOMPARE(bench.samples(0).first().size(), bench.logger(0).sampleIds().size());
        QCOMPARE(bench.runs(0), 1);
        QVERIFY(!bench.isRunning(0));
    }
};

QTEST_MAIN(TestVirtualClass)
#include "test_virtualclass.moc"
