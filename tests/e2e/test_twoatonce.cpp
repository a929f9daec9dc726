#include "tests/app/windowbench.h"

/// What the window does when two things happen at once.
class TestTwoAtOnce : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void whatWasSampledIsStored()
    {
        WindowBench bench(QVector<LoggerIdentity>(3, VirtualBench::identity("Birch", "100/Sec", 10)));
        bench.connectAll();
        bench.action("runAct")->trigger();
        for (int i = 0; i < 3; ++i) {
            QTRY_VERIFY(bench.runs(i) == 1 && !bench.isRunning(i));
            QTRY_COMPARE(bench.data(i)->getXSize(), 10);
            for (int channel = 0; channel < bench.data(i)->getNSens(); ++channel) {
                for (int k = 0; k < 10; ++k)
                    QCOMPARE(bench.data(i)->getYNoConvAt(channel, k), bench.samples(i)[k][channel]);
            }
        }
    }
};

QTEST_MAIN(TestTwoAtOnce)
#include "test_twoatonce.moc"
