#include <QLabel>
#include <QStatusBar>

#include <algorithm>
#include <cmath>

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "instruments/indicator.h"
#include "instruments/statusline.h"
#include "tests/app/windowbench.h"

/// One logger of four is lost in a run and comes back: nobody clicks, and in the end no sample is missing.
class TestLosses : public GuardedTest
{
    Q_OBJECT

    static constexpr int lost = 1;
    static constexpr int loggers = 4;

    void finish() override { bench.reset(); }

private Q_SLOTS:
    void afterTheStopNoSampleIsMissing_data();
    void afterTheStopNoSampleIsMissing();

private:
    void begin(const char* rate, int samples, int firmware)
    {
        const LoggerIdentity identity = VirtualBench::identity("Birch", rate, samples, 1, firmware);
        bench.reset(new WindowBench(QVector<LoggerIdentity>(loggers, identity)));
        bench->connectAll();
        QTRY_VERIFY(bench->action("runAct")->isEnabled());
        bench->action("runAct")->trigger();
        for (int i = 0; i < loggers; ++i)
            QTRY_COMPARE(run().phase(i), ClassRun::Phase::Running);
    }
    void loseFor(int ms)
    {
        bench->pull(lost);
        QTRY_COMPARE(run().phase(lost), ClassRun::Phase::Lost);
        const auto* tiles = bench->window->findChild<Indicator*>();
        QCOMPARE(tiles->state(lost), Indicator::State::Seeking);
        bench->pass(ms);
        bench->putBack(lost);
        QTRY_VERIFY(run().phase(lost) != ClassRun::Phase::Lost);
        QVERIFY(tiles->isConnected(lost));
    }
    void stop()
    {
        if (bench->action("stopAct")->isVisible())
            bench->action("stopAct")->trigger();
        QTRY_VERIFY(!run().isAnyRunning());
        QTRY_VERIFY_WITH_TIMEOUT(bench->manager->queue().isIdle(), 20000);
    }
    ClassRun& run() const { return bench->manager->run(); }
    QString told() const { return bench->window->findChild<StatusLine*>()->text(); }
    VirtualBench::Rows stored(int i) const
    {
        const ExpData* set = bench->data(i);
        VirtualBench::Rows rows;
        for (int k = 0; k < set->getXSize(); ++k) {
            for (int channel = 0; channel < set->getNSens(); ++channel)
                rows[qRound(set->getXAt(k) / set->dt)].append(set->getYNoConvAt(channel, k));
        }
        return rows;
    }

    QScopedPointer<WindowBench> bench;
};

void TestLosses::afterTheStopNoSampleIsMissing_data()
{
    columns<QByteArray, int>({"rate", "ms"});
    row("0.3 s at 10/Sec", QByteArray("10/Sec"), 300);
    row("5 s at 10/Sec", QByteArray("10/Sec"), 5000);
    row("60 s at 10/Sec", QByteArray("10/Sec"), 60000);
    row("to the end of its run at 10/Sec", QByteArray("10/Sec"), 120000);
    row("0.3 s at 1000/Sec", QByteArray("1000/Sec"), 300);
    row("5 s at 1000/Sec", QByteArray("1000/Sec"), 5000);
    row("60 s at 1000/Sec", QByteArray("1000/Sec"), 60000);
}

void TestLosses::afterTheStopNoSampleIsMissing()
{
    const auto [rate, ms] = fetched<QByteArray, int>({"rate", "ms"});
    const bool isStored = rate == "1000/Sec";
    begin(rate, isStored ? 30000 : 1000, isStored ? 402 : 405);
    if (!isStored)
        QTRY_VERIFY(stored(lost).size() > 2);
    const int before = stored(lost).size();
    loseFor(ms);
    const bool isOver = run().phase(lost) == ClassRun::Phase::Ended;
    if (!isStored && !isOver) {
        QTRY_VERIFY(stored(lost).size() > before + 2);
        // Behind a gap, at the time of the others.
        const double behind = bench->data(0)->getX().constLast() - bench->data(lost)->getX().constLast();
        QVERIFY2(std::fabs(behind) < 3 * bench->data(0)->dt, qPrintable(QString::number(behind)));
        QVERIFY(std::isnan(bench->data(lost)->getYNoConvAt(0, before)));
    }
    stop();
    for (int i = 0; i < loggers && !isStored; ++i)
        QCOMPARE(stored(i), bench->taken(i));
    if (isStored) {
        const int samples = bench->data(lost)->getXSize();
        QVERIFY(samples >= qMin(ms, 30000));
        QVERIFY(std::abs(samples - bench->data(0)->getXSize()) < 1000);
        QCOMPARE(stored(lost).lastKey(), samples - 1);
        for (const QVector<double>& column : bench->data(lost)->getData())
            QVERIFY(
                std::none_of(column.begin(), column.end(), [](double value) { return std::isnan(value); }));
    } else {
        QVERIFY2(told().contains(VirtualBench::group(lost)), qPrintable(told()));
        QCOMPARE(bench->data(-1)->valuesAt(before + 1), loggers);
    }
}

QTEST_MAIN(TestLosses)
#include "test_losses.moc"
