#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>

#include "tests/app/classbench.h"
#include "tests/protocol/loggerbench.h"

namespace {
const QByteArray firstQuestions = bytes("4714AAFB 67241065");
const QByteArray statusQuestion = bytes("47141095");
const QByteArray startFrame = bytes("47142283");
} // namespace

class TestMainWindow : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void aPortThatCannotBeOpenedIsTriedElevenTimes()
    {
        ClassBench bench(1, QStringLiteral("COMxx"));
        guard->expect(QStringLiteral("open failed"));
        bench.ports.refuse(QStringLiteral("COMxx"), QStringLiteral("no such port"));
        auto* hint = bench.window->findChild<QLabel*>(QStringLiteral("hint"));
        QVERIFY(hint->isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(bench.ports.made(QStringLiteral("COMxx")), 11, 4000);
        QTest::qWait(300);
        QCOMPARE(bench.ports.made(QStringLiteral("COMxx")), 11);
        QCOMPARE(bench.window->statusBar()->currentMessage(), QStringLiteral("Not connected: Group A"));
        auto* icon = bench.window->findChild<QLabel*>(QStringLiteral("loggerIcon1"));
        QCOMPARE(icon->toolTip(), QStringLiteral("Not connected (tried BT port COMxx)"));

        clickIcon(bench, 0);
        clickIcon(bench, 0); // refused while the first attempt runs
        QTRY_COMPARE_WITH_TIMEOUT(bench.ports.made(QStringLiteral("COMxx")), 22, 4000);
    }

    void aMissingRightIsToldWithItsCure()
    {
        guard->expect(QStringLiteral("open failed"));
        ClassBench bench(2, QStringLiteral("ttyUSB7"));
        const SerialPortFactory working = bench.ports.factory();
        bench.manager->setPortFactory([&](const QString& name, SerialPort::QueryMode mode) {
            auto port = working(name, mode);
            if (name == "ttyUSB7")
                static_cast<FakePort*>(port.get())->failOpen("EACCES", PortFailure::NoRight);
            return port;
        });
        auto* line = bench.window->findChild<QLabel*>(QStringLiteral("cureLine"));
        QTRY_VERIFY_WITH_TIMEOUT(line->isVisible(),
                                 1500); // the first attempt comes half a second after the start
        QVERIFY(line->text().startsWith("Group A is not connected: you have no right to open ttyUSB7"));
        QVERIFY(line->text().contains("\nsudo usermod -aG dialout $USER\n"));
        QVERIFY(bench.window->findChild<QLabel*>("loggerIcon1")->toolTip().contains("usermod"));
        QVERIFY(bench.window->statusBar()->currentMessage().contains("no right"));
        QCOMPARE(bench.ports.made(QStringLiteral("ttyUSB7")), 1); // a second later it would be the same
        bench.manager->setPortFactory(working);
        clickIcon(bench, 0);
        QTRY_VERIFY(!line->isVisible());
    }

    void startsAreSpread()
    {
        ClassBench bench(4);
        connectAll(bench, 4);
        bench.port(1)->hangUp();
        QTRY_VERIFY(!bench.manager->isTembrinConnect(1));
        QElapsedTimer clock;
        QVector<QPair<int, qint64>> starts;
        for (int i : {0, 2, 3}) {
            bench.port(i)->onWrite = [i, &clock, &starts](const QByteArray& frame) {
                if (frame == startFrame)
                    starts.append({i, clock.nsecsElapsed() / 1000});
            };
        }
        clock.start();
        QTest::keyClick(bench.window.data(), Qt::Key_F5);
        QTRY_COMPARE(starts.size(), 3);
        QCOMPARE(starts[1].first, 2);
        QCOMPARE(starts[2].first, 3);
        for (int n : {1, 2}) {
            const qint64 apart = starts[n].second - starts[n - 1].second;
            QVERIFY2(apart > 24000 && apart < 250000, qPrintable(QString::number(apart)));
        }
        QVERIFY(bench.action("stopAct")->isVisible());
    }

    void aGroupsNewNameGoesToWhatItMeasured()
    {
        ClassBench bench(2);
        for (int i = 0; i < 2; ++i) {
            for (short n = 0; n < 3; ++n)
                bench.sample(i, n, n);
        }
        bench.tellEnd(0);
        bench.data(-1)->getSens(1)->groupName = bench.data(0)->getGroupName(); // of one name
        Settings::mainStore().setValue(Settings::groupKey(0), "Ants");
        bench.manager->connector().disconnectAll();
        bench.manager->connector().connectLogger(0);
        QTRY_COMPARE(bench.data(-1)->getSens(0)->groupName, QStringLiteral("Ants"));
        QCOMPARE(bench.data(0)->getGroupName(), QStringLiteral("Ants"));
        QCOMPARE(bench.data(-1)->getSens(1)->groupName, QStringLiteral("Group A"));
    }

    void everyButtonAndListHasItsPicture()
    {
        ClassBench bench(1);
        // A QIcon of a missing file is not null, but it has no sizes.
        for (const QToolBar* bar : bench.window->findChildren<QToolBar*>()) {
            for (const QAction* action : bar->actions())
                QVERIFY2(action->text().isEmpty() || !action->icon().availableSizes().isEmpty(),
                         qPrintable(action->objectName()));
            for (const QComboBox* list : bar->findChildren<QComboBox*>()) {
                QVERIFY2(list->count() > 0, qPrintable(list->objectName()));
                for (int i = 0; i < list->count(); ++i)
                    QVERIFY2(!list->itemIcon(i).availableSizes().isEmpty(), qPrintable(list->objectName()));
            }
        }
    }

    void keysChooseTheLayout()
    {
        ClassBench bench(5);
        QVERIFY(QTest::qWaitForWindowActive(bench.window.data()));
        auto* grid = bench.window->findChild<QWidget*>(QStringLiteral("graphGridW"));
        Plot* classPlot = bench.manager->plotC();
        const bool expected[][2] = {{true, false}, {false, true}, {true, true}};
        for (int i : {2, 1, 0}) {
            QTest::keyClick(bench.window.data(), Qt::Key(Qt::Key_1 + i), Qt::ControlModifier);
            QCOMPARE(grid->isVisible(), expected[i][0]);
            QCOMPARE(classPlot->isVisible(), expected[i][1]);
        }
        // Five loggers: two rows of three.
        const auto place = [&](int i) { return bench.manager->plotAt(i)->mapTo(grid, QPoint()); };
        QTRY_COMPARE(place(3).x(), place(0).x());
        QVERIFY(place(4).y() > place(2).y());
        QVERIFY(bench.manager->plotAt(5)->isHidden());
    }

private:
    static void clickIcon(ClassBench& bench, int i)
    {
        auto* icon = bench.window->findChild<QLabel*>(QStringLiteral("loggerIcon%1").arg(i + 1));
        QTest::mouseClick(icon, Qt::LeftButton);
    }

    static void connectAll(ClassBench& bench, int loggers)
    {
        for (int i = 0; i < loggers; ++i) {
            QTRY_VERIFY(bench.port(i) && bench.port(i)->written().startsWith(firstQuestions));
            bench.port(i)->feed(bytes(sensorListHex));
            QTRY_VERIFY(bench.port(i)->written().endsWith(statusQuestion));
            bench.port(i)->feed(status({{7, 0}}));
            QTRY_VERIFY(bench.logger(i)->isLoggerRecognized());
        }
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
