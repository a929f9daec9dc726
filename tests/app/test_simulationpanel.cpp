#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include "app/graphtools.h"
#include "classroom/classrun.h"
#include "instruments/statusline.h"
#include "simulation/simulations.h"
#include "tests/app/classbench.h"

namespace {

enum Entry // of the menu
{
    None = 0,
    FreeFall = 2,
    Pendulum = 3,
    Diffusion = 7
};

/// The window with loggers, and a person at the simulations.
class SimulationBench : public ClassBench
{
public:
    explicit SimulationBench(int loggers = 3)
        : ClassBench(loggers)
    {
    }
    template<class Part> Part* part(const char* name) const
    {
        return window->findChild<Part*>(QLatin1String(name));
    }
    void choose(int entry) { part<QToolButton>("simulationButton")->menu()->actions().at(entry)->trigger(); }
    simulations* scene() const { return window->findChild<simulations*>(); }
    void start(int entry)
    {
        choose(entry);
        part<QPushButton>(entry == FreeFall ? "FFStartButton" : "PNDstartButton")->click();
    }
    void restart() { part<QPushButton>("FFrestartButton")->click(); }
    /// Steps, which the clock may have begun.
    void go(int samples)
    {
        while (data(0)->getXSize() < samples)
            scene()->doTimer();
    }
    ClassRun& run() const { return manager->run(); }
};

} // namespace

class TestSimulationPanel : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void theSamplesAreARunOfTheFirstGroupAndTheClass()
    {
        SimulationBench bench;
        bench.meet(0);
        bench.meet(1);
        bench.sample(1, 0, 40); // of an earlier run
        bench.tellEnd(1);
        bench.start(FreeFall); // what was measured is kept, so nothing is asked
        QVERIFY(bench.prompt.asked.isEmpty());
        bench.go(30);
        bench.scene()->setRunning(false);
        bench.tell(0, {{7, 0}, {9, 0}, {10, 3}, {11, 2}}); // its logger is there, and changes nothing
        const ExpData* set = bench.data(0);
        QCOMPARE(set->getXSize(), 30);
        QCOMPARE(set->dt, 0.04);
        QCOMPARE(set->getXAt(29), 29 * 0.04);
        QVERIFY(std::abs(set->getYNoConvAt(0, 25) - (10 - 4.9)) < 1e-9); // after a second
        QVERIFY(std::abs(set->getYNoConvAt(1, 25) + 9.8) < 1e-9);
        QCOMPARE(bench.data(-1)->getYNoConvAt(0, 25), set->getYNoConvAt(0, 25));
        QCOMPARE(bench.data(-1)->getYSize(1), 0); // the others are not in it
        QCOMPARE(bench.manager->plotAt(0)->title().text(), QStringLiteral("Free fall"));
        QVERIFY(bench.manager->plotAt(0)->isVisible() && !bench.manager->plotAt(1)->isVisible());
        QVERIFY(set->isNeedSave() && bench.data(-1)->isNeedSave());
        bench.prompt.answer = UserPrompt::Answer::Cancel;
        bench.window->close();
        QCOMPARE(bench.prompt.asked.size(), 1);
        QVERIFY(bench.window->isVisible());
    }

    void aLessonGivesASimulationBack()
    {
        QTemporaryDir folder;
        const QString lesson = folder.filePath(QStringLiteral("fall.lesson"));
        SimulationBench bench;
        bench.start(Pendulum);
        bench.go(60);
        bench.scene()->setRunning(false);
        const QVector<QVector<double>> measured = bench.data(0)->getData();
        bench.prompt.file = lesson;
        bench.action("saveAct")->trigger();
        QTRY_VERIFY(!bench.data(0)->isNeedSave());
        bench.start(FreeFall); // it goes on while the lesson is opened
        bench.go(5);
        bench.prompt.answer = UserPrompt::Answer::No;
        bench.action("openAct")->trigger();
        QTRY_COMPARE(bench.data(0)->getXSize(), 60);
        QVERIFY(!bench.run().isSimulation() && !bench.scene()->isRunning());
        for (int i = 0; i < 60; ++i) {
            QVERIFY(std::abs(bench.data(0)->getYNoConvAt(0, i) - measured.at(0).at(i)) < 1e-9);
            QVERIFY(std::abs(bench.data(0)->getYNoConvAt(1, i) - measured.at(1).at(i)) < 1e-9);
        }
        QCOMPARE(bench.data(0)->dt, 0.04);
        QCOMPARE(bench.manager->plotAt(0)->title().text(), QStringLiteral("Pendulum"));
        QVERIFY(bench.manager->plotAt(1)->isVisible());
    }

    void whoeverMeasuresComesBeforeASimulation_data()
    {
        columns<int>({"who"});
        row("the button Run", 0);
        row("the key of another group's logger", 1);
        row("the key of the first group's logger", 2);
        row("a download", 3);
    }

    void whoeverMeasuresComesBeforeASimulation()
    {
        QFETCH(int, who);
        SimulationBench bench;
        bench.meet(0);
        bench.meet(1);
        bench.start(FreeFall);
        bench.go(5);
        QVERIFY(bench.run().isSimulation());
        if (who == 0)
            bench.action("runAct")->trigger();
        else if (who == 3)
            bench.action("downloadAct")->trigger();
        else
            bench.sample(who == 1 ? 1 : 0, 0, 40);
        QVERIFY(!bench.run().isSimulation() && !bench.scene()->isRunning());
        bench.scene()->doTimer();
        QCOMPARE(bench.data(0)->getXSize(), who == 0 ? 0 : who == 2 ? 1 : 5);
        if (who == 3)
            return;
        QVERIFY(bench.manager->plotAt(1)->isVisible());
        QCOMPARE(bench.manager->plotAt(0)->title().text(),
                 who == 1 ? QStringLiteral("Free fall") : QStringLiteral("Group A"));
        bench.start(FreeFall);
        QVERIFY(!bench.run().isSimulation() && !bench.scene()->isRunning());
        QCOMPARE(bench.window->findChild<StatusLine*>()->outcome(),
                 QStringLiteral("A simulation can be started when no logger is busy."));
    }

    void whatWouldCutItWaitsForItsEnd()
    {
        SimulationBench bench;
        bench.start(FreeFall);
        bench.go(20);
        bench.part<QPushButton>("FFStartButton")->click(); // a pause is no end
        Plot* const plot = bench.manager->plotAt(0);
        Q_EMIT plot->changedActivePlot(0);
        const double sharp = bench.data(0)->getYNoConvAt(0, 0);
        GraphTools* tools = bench.window->findChild<GraphTools*>();
        tools->smooth();
        QCOMPARE(bench.data(0)->getYNoConvAt(0, 0), sharp);
        bench.restart();
        tools->smooth();
        QVERIFY(bench.data(0)->getYNoConvAt(0, 0) < sharp);
        bench.action("undoAct")->trigger();
        QCOMPARE(bench.data(0)->getYNoConvAt(0, 0), sharp);
    }

    // In a page's place the graphs come back when they are wanted.
    void aPageMakesRoomForWhatIsToBeSeen_data()
    {
        columns<QByteArray, QByteArray>({"action", "seen"});
        row("another layout", QByteArray("layoutAct2"), QByteArray("Class Curve graph"));
        row("a run", QByteArray("runAct"), QByteArray("graphGridW"));
        row("the map", QByteArray("layoutAct5"), QByteArray("mapW"));
    }

    void aPageMakesRoomForWhatIsToBeSeen()
    {
        QFETCH(QByteArray, action);
        QFETCH(QByteArray, seen);
        SimulationBench bench;
        bench.meet(0);
        bench.start(FreeFall);
        bench.choose(Diffusion);
        QVERIFY(!bench.run().isSimulation() && !bench.part<QWidget>("graphW")->isVisible());
        QVERIFY(bench.part<QWidget>("Diffusion")->isVisible() &&
                !bench.part<QWidget>("simulSetup")->isVisible());
        bench.action(action.constData())->trigger();
        QVERIFY(!bench.part<QWidget>("simW")->isVisible() &&
                bench.part<QWidget>(seen.constData())->isVisible());
        QCOMPARE(bench.part<QWidget>("graphW")->isVisible(), action != "layoutAct5");
    }

    void thePanelComesWithTheFirstAndGoesWithNone()
    {
        SimulationBench bench;
        QVERIFY(!bench.part<QWidget>("simW"));
        bench.start(Pendulum);
        QVERIFY(bench.part<QWidget>("simW")->isVisible() && bench.part<QWidget>("graphW")->isVisible());
        bench.go(3);
        bench.choose(None);
        QVERIFY(!bench.part<QWidget>("simW")->isVisible() && !bench.run().isSimulation());
        QVERIFY(bench.manager->plotAt(2)->isVisible());
        QCOMPARE(bench.data(0)->getXSize(), 3); // what was measured stays
        Settings::mainStore().setValue(QLatin1String(Settings::simulations), false);
        MainWindow without(&bench.prompt);
        QVERIFY(!without.findChild<QToolButton*>(QStringLiteral("simulationButton")));
    }
};

QTEST_MAIN(TestSimulationPanel)
#include "test_simulationpanel.moc"
