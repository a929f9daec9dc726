#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMouseEvent>
#include <QTest>

#include <qwt_text.h>

#include "graph/myplotmarker.h"
#include "tests/app/classbench.h"

namespace {

// A parabola on both channels of logger 0, level from sample 40 to the 50th; the logger becomes the chosen
// one. All values are whole tenths, which is what the sensors tell apart.
void fill(ClassBench& bench)
{
    for (int i = 0; i < 50; ++i) {
        const int n = qMin(i, 40);
        bench.sample(0, short(i), n * (n - 1) / 2 * 0.1);
    }
    Q_EMIT bench.manager->plotAt(0)->changedActivePlot(0);
    QCoreApplication::processEvents();
}

void placeCrosses(Plot* plot)
{
    plot->newMarker(0, -1, 10, 1);
    plot->newMarker(0, -1, 20, 2);
}

QComboBox* functions(const ClassBench& bench)
{
    return bench.window->findChild<QComboBox*>(QStringLiteral("regression"));
}

} // namespace

class TestTools : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void mouseModesExcludeEachOther()
    {
        ClassBench bench(2);
        fill(bench);
        Plot* const plot = bench.manager->plotAt(0);
        QAction* const modes[] = {bench.action("zoomAct"), bench.action("markerAct"),
                                  bench.action("annotateAct")};
        for (QAction* mode : modes) {
            Q_EMIT functions(bench)->activated(0);
            QCOMPARE(plot->markers.size(), 1); // the tangent's text
            for (const QAction* other : modes)
                QVERIFY(!other->isChecked());
            mode->trigger();
            QVERIFY2(plot->markers.isEmpty(), qPrintable(mode->objectName()));
            for (const QAction* other : modes)
                QCOMPARE(other->isChecked(), other == mode);
        }
        modes[1]->trigger();
        QTest::mouseClick(plot->canvas(), Qt::LeftButton);
        QTest::mouseClick(plot->canvas(), Qt::LeftButton, {}, QPoint(20, 20));
        QCOMPARE(plot->markers.size(), 4);
    }

    void functionsWorkOnTheChosenGraph_data()
    {
        columns<int, bool, int, QString, QString>({"item", "isStopped", "channels", "name", "text"});
        row("line", 1, false, 0, QString(), " = 87.00t - 10.8\nr = 1.00");
        row("parabola", 2, false, 0, QString(), " = 180.00t² - 3.00t");
        row("smooth in a run", 3, false, 0, QString(), QString());
        row("smooth", 3, true, 0, " (smooth)", QString());
        row("derivative", 4, false, 1, "/time", QString());
        row("integral", 5, false, 0, QString(), "Integral = 109.25 ");
    }

    void functionsWorkOnTheChosenGraph()
    {
        const auto [item, isStopped, channels, name, text] =
            fetched<int, bool, int, QString, QString>({"item", "isStopped", "channels", "name", "text"});
        ClassBench bench(1);
        fill(bench);
        Plot* const plot = bench.manager->plotAt(0);
        plot->Update(); // the time is in minutes from here on, and not with the next frame
        placeCrosses(plot);
        const int before = bench.data(0)->getNSens();
        if (isStopped)
            bench.tellEnd(0);
        Q_EMIT functions(bench)->activated(item);
        QCOMPARE(bench.data(0)->getNSens(), before + channels);
        QCOMPARE(plot->getCurve(before + channels) == nullptr, true);
        const QString last = bench.data(0)->getSens(channels ? before : 0)->name;
        QVERIFY2(name.isEmpty() ? !last.contains('(') : last.endsWith(name), qPrintable(last));
        QCOMPARE(plot->markers.size(), text.isEmpty() ? 4 : 6);
        if (!text.isEmpty())
            QVERIFY2(plot->markers[5]->label().text().contains(text),
                     qPrintable(plot->markers[5]->label().text()));
    }

    void iconOfTheListRepeatsItsItem()
    {
        ClassBench bench(1);
        fill(bench);
        Plot* const plot = bench.manager->plotAt(0);
        placeCrosses(plot);
        QComboBox* const list = functions(bench);
        QVERIFY(list->isEnabled());
        list->setCurrentIndex(5);
        const int middle = list->iconSize().width() / 2;
        QTest::mouseClick(list, Qt::LeftButton, {}, QPoint(middle, list->height() / 2));
        QCOMPARE(plot->markers.size(), 6);
        QTest::mouseClick(list, Qt::LeftButton, {}, QPoint(list->width() - 4, list->height() / 2));
        QCOMPARE(plot->markers.size(), 6);
    }

    void cropCutsTheChosenGraphAfterAQuestion()
    {
        ClassBench bench(1);
        fill(bench);
        bench.prompt.answer = UserPrompt::Answer::Yes;
        bench.action("cropAct")->trigger();
        QCOMPARE(bench.data(0)->getXSize(), 50);
        placeCrosses(bench.manager->plotAt(0));
        bench.action("cropAct")->trigger();
        QCOMPARE(bench.data(0)->getXSize(), 10);
        QCOMPARE(bench.data(0)->getXAt(0), 10.0);
    }

    void markersGoWithTheData()
    {
        ClassBench bench(1);
        fill(bench);
        placeCrosses(bench.manager->plotAt(0));
        placeCrosses(bench.manager->plotC());
        bench.sample(0, 0);
        QVERIFY(bench.manager->plotAt(0)->markers.isEmpty());
        bench.sample(0, 1);
        QVERIFY(bench.manager->plotC()->markers.isEmpty());
    }
};

QTEST_MAIN(TestTools)
#include "test_tools.moc"
