#include <QElapsedTimer>
#include <QStatusBar>
#include <QToolBar>

#include "app/grouptile.h"
#include "classroom/commandqueue.h"
#include "common/settings.h"
#include "tests/app/windowbench.h"
#include "virtual/wire.h"

namespace {
constexpr int snapshotTime = 5000; // ms within which each logger has been asked twice
}

/// What each group measures right now, in digits: before a run, in one, and alone on the screen.
class TestTiles : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { start("10/Sec"); }
    void finish() override { bench.reset(); }
    void start(const char* rate)
    {
        bench.reset();
        bench.reset(
            new WindowBench({VirtualBench::identity("Birch", rate), VirtualBench::identity("Grove", rate)}));
        bench->connectAll();
    }

    QVector<GroupTile*> tiles(const char* name) const
    {
        QVector<GroupTile*> found(2);
        for (auto* tile : bench->window->findChildren<GroupTile*>(QLatin1String(name))) {
            if (tile->isVisible())
                found[tile->reading().group == VirtualBench::group(1) ? 1 : 0] = tile;
        }
        return found;
    }
    GroupReading told(int i) const
    {
        const GroupTile* const tile = tiles("tile").at(i);
        return tile ? tile->reading() : GroupReading();
    }
    QString text(int i, double base) const
    {
        const SensorPtr channel = bench->manager->classChannel(i);
        return channel->valueToString(channel->shownValue(base, false));
    }
    double last(int i) const
    {
        return bench->data(i)->getYNoConv(bench->data(i)->getSelectedSensor()).last();
    }
    bool areAllRunning() const { return bench->isRunning(0) && bench->isRunning(1); }
    void stop()
    {
        bench->action("stopAct")->trigger();
        QTRY_VERIFY(!bench->manager->isAnyRunning() && bench->manager->queue().isIdle());
    }

    QScopedPointer<WindowBench> bench;

private Q_SLOTS:
    void eachTellsWhatItsGroupMeasures()
    {
        for (int i = 0; i < 2; ++i) {
            QTRY_VERIFY_WITH_TIMEOUT(!told(i).digits.isEmpty(), snapshotTime);
            const QVector<double> first = bench->state(i)->snapshot().value(
                bench->state(i)->getIndexByID(bench->manager->classChannel(i)->ID));
            if (!first.isEmpty())
                QCOMPARE(told(i).digits, text(i, first.first()));
            QCOMPARE(bench->data(i)->getXSize(), 0); // it is no sample, and nothing to be saved
            QVERIFY(!bench->data(i)->isNeedSave() && told(i).perSecond == 0);
        }
        bench->loseSamples(1, 4, 6);
        bench->action("runAct")->trigger();
        QTRY_VERIFY(bench->data(0)->getXSize() > 22);
        QVERIFY2(std::abs(told(0).perSecond - 9.8) < 0.8, QByteArray::number(told(0).perSecond));
        QTRY_COMPARE(told(1).lost, 3);
        QCOMPARE(told(0).lost, 0);
        bench->forgetHeard();
        bench->pull(1);
        QTRY_VERIFY(told(1).link != GroupReading::Link::On);
        const QString before = told(1).digits;
        QTRY_VERIFY_WITH_TIMEOUT(told(1).isOld && told(1).age >= 5, 8000);
        QCOMPARE(told(1).digits, before);
        QVERIFY(!told(0).isOld && told(1).perSecond == 0);
        QCOMPARE(bench->heard(0, Wire::Snapshot), 0);
        stop();
        QTRY_COMPARE(told(0).digits, text(0, last(0)));
    }

    // Whenever Run is pressed, a question that is under way costs no time and no sample.
    void aRunBeginsAtAnyMomentOfAQuestion()
    {
        start("100/Sec");
        for (int round = 0; round < 6; ++round) {
            bench->delay(round % 2, 60); // so that the answer falls into the start
            QVERIFY(QTest::qWaitFor([&] { return bench->manager->queue().askValues(round % 2); }));
            QTest::qWait(round * 20); // the offset that the round is about
            QElapsedTimer clock;
            clock.start();
            bench->action("runAct")->trigger();
            QVERIFY(!bench->manager->queue().askValues(0));
            QTRY_VERIFY(areAllRunning());
            QVERIFY2(clock.elapsed() < 400, QByteArray::number(clock.elapsed()));
            QTRY_VERIFY(bench->data(0)->getXSize() > 8 && bench->data(1)->getXSize() > 8);
            stop();
            for (int i = 0; i < 2; ++i) {
                QTRY_COMPARE(bench->data(i)->getXSize(), bench->taken(i).size());
                QCOMPARE(bench->runs(i), round + 1);
            }
        }
    }

    void aLoggerThatGoesWithAQuestionHarmsNothing()
    {
        bench->delay(0, 500);
        bench->forgetHeard();
        QTRY_VERIFY_WITH_TIMEOUT(bench->heard(0, Wire::Snapshot) > 0, snapshotTime);
        bench->pull(0);
        bench->forgetHeard();
        QTRY_VERIFY_WITH_TIMEOUT(bench->heard(1, Wire::Snapshot) > 1, snapshotTime);
        QVERIFY(bench->manager->queue().isIdle() && told(0).link != GroupReading::Link::On);
        bench->delay(0, 0);
        bench->putBack(0);
        bench->manager->connector().connectLogger(0);
        QTRY_VERIFY_WITH_TIMEOUT(bench->heard(0, Wire::Snapshot) > 0, snapshotTime);
        bench->action("valuesAct")->trigger();
        QVERIFY(!Settings::mainStore().value(QLatin1String(Settings::valuesBefore), true).toBool());
    }

    void tilesAloneFillTheWindowUntilEsc()
    {
        QTRY_VERIFY_WITH_TIMEOUT(!told(1).digits.isEmpty(), snapshotTime);
        auto* bar = bench->window->findChild<QToolBar*>(QStringLiteral("tembrinToolBar"));
        const Qt::Key escape = Qt::Key_Escape;
        bench->action("tilesAct")->trigger();
        QTRY_VERIFY(tiles("largeTile").at(1) && !tiles("largeTile").at(1)->reading().digits.isEmpty());
        QVERIFY(!bar->isVisible() && !tiles("tile").at(0));
        QVERIFY(bench->window->statusBar()->isVisible());
        QVERIFY(!bench->action("stopAct")->shortcuts().contains(QKeySequence(escape)));
        bench->action("runAct")->trigger();
        QTRY_VERIFY(tiles("largeTile").at(1)->reading().perSecond > 0);
        bench->action("smallAct")->trigger();
        QVERIFY(bar->isVisible() && tiles("tile").at(0) && !bench->window->isFullScreen());
        QVERIFY(bench->action("stopAct")->shortcuts().contains(QKeySequence(escape)));
        QVERIFY(!bench->action("tilesAct")->isChecked() && bench->manager->isAnyRunning());
        bench->action("tilesAct")->trigger();
        bench->action("layoutAct3")->trigger(); // another layout takes the place of the tiles
        QVERIFY(bench->manager->plotC()->isVisible() && !bench->action("tilesAct")->isChecked());
        bench->window->resize(1000, 420); // where the graphs need all the room
        QTRY_VERIFY(!tiles("tile").at(0));
        stop();
    }
};

QTEST_MAIN(TestTiles)
#include "test_tiles.moc"
