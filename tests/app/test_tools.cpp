#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <qwt_text.h>

#include "app/groupranking.h"
#include "app/iconlists.h"
#include "app/readingtable.h"
#include "graph/myplotmarker.h"
#include "instruments/statusline.h"
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

    /// Drawn before a run, it stays where it is while that comes and goes, and tells who was nearest.
    void predictionsAreDrawnAndTold()
    {
        ClassBench bench(2);
        for (const int i : {0, 1})
            bench.meet(i);
        bench.action("layoutAct1")->trigger();
        const auto choose = [&](int code) {
            Q_EMIT functions(bench)->activated(functions(bench)->findData(code));
        };
        choose(REG_PREDICT);
        const auto draw = [&](int index, const QVector<QPointF>& points, bool isKept = true) {
            QCoreApplication::processEvents();
            Plot* const plot = bench.manager->plotAt(index);
            const auto place = [plot](const QPointF& point) {
                return QPoint(int(plot->transform(QwtPlot::xBottom, point.x())),
                              int(plot->transform(QwtPlot::yLeft, point.y())));
            };
            QTest::mousePress(plot->canvas(), Qt::LeftButton, {}, place(points.first()));
            for (const QPointF& point : points) {
                QMouseEvent move(QEvent::MouseMove, place(point), Qt::NoButton, Qt::LeftButton, {});
                QApplication::sendEvent(plot->canvas(), &move);
            }
            if (!isKept)
                QTest::keyClick(bench.window.data(), Qt::Key_Escape);
            QTest::mouseRelease(plot->canvas(), Qt::LeftButton, {}, place(points.last()));
        };
        const auto predicted = [&](int index) { return bench.data(index)->predictions; };
        QVERIFY(bench.manager->plotAt(0)->axisInterval(QwtPlot::yLeft).width() > 50); // of the sensor
        draw(0, {{1, 30}, {9, 30}});
        draw(1, {{9, 60}, {1, 60}}); // back
        draw(1, {{2, 10}, {5, 90}}, false);
        QCOMPARE(predicted(0).size(), 1);
        QCOMPARE(predicted(1).size(), 1);
        const QVector<Prediction> before = predicted(1);
        draw(1, {{4, 50}, {6, 50}});
        QVERIFY(predicted(1) != before);
        bench.action("undoAct")->trigger();
        QVERIFY(predicted(1) == before);
        QVERIFY(functions(bench)->property("isOn").toBool());
        bench.action("endReadingAct")->trigger();
        QVERIFY(!functions(bench)->property("isOn").toBool());
        for (short n = 0; n < 12; ++n) {
            bench.sample(0, n, 35);
            bench.sample(1, n, 61);
        }
        for (const int i : {0, 1})
            bench.tellEnd(i);
        const QString told = bench.window->findChild<StatusLine*>()->outcome();
        QVERIFY2(told.indexOf("Group B") > 0 && told.indexOf("Group B") < told.indexOf("Group A"),
                 qPrintable(told));
        QVERIFY(predicted(1) == before);
        QVERIFY(bench.manager->plotAt(0)->axisInterval(QwtPlot::yLeft).contains(30)); // with its line
        choose(REG_UNPREDICT);
        QVERIFY(predicted(0).isEmpty() && predicted(1).isEmpty());
        bench.action("undoAct")->trigger();
        QVERIFY(predicted(1) == before);
    }

    /// One line through the graphs that count the same, and one table of all that is in sight at its time.
    void curvesAreReadAtOneTime()
    {
        ClassBench bench(2);
        fill(bench);
        for (short n = 0; n < 50; n += 2)
            bench.sample(1, n, 100 - n);
        bench.action("layoutAct3")->trigger();
        bench.manager->plotC()->Update();
        QAction* const read = bench.action("readAct");
        read->trigger();
        const auto* const table = bench.window->findChild<ReadingTable*>();
        const auto isLineIn = [&](Plot* plot) {
            const auto* const line = plot->findChild<QWidget*>(QStringLiteral("readingLine"));
            return line && line->isVisible();
        };
        Plot* const first = bench.manager->plotAt(0);
        const auto pointAt = [&](double x) {
            const QPointF pos(first->transform(QwtPlot::xBottom, x), 50);
            QMouseEvent move(QEvent::MouseMove, pos, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(first->canvas(), &move);
        };
        // No pixel need be of a whole second, so from the first one step by step, once the graph has its
        // size.
        QString text;
        const auto readAtSeven = [&] {
            pointAt(0);
            for (int i = 0; i < 7; ++i)
                bench.action("readForthAct")->trigger();
            text = table->text();
            return text.contains(QLatin1String("Time = 0:07.0 min"));
        };
        QTRY_VERIFY2(readAtSeven(), qPrintable(text));
        for (const char* line : {"Group A\tHumidity\t2.1\t%RH", "Group B\tHumidity\t93.0\t%RH",
                                 "Average\tHumidity\t2.1\t%RH", "straight line"})
            QVERIFY2(text.contains(QLatin1String(line)), qPrintable(text));
        QCOMPARE(text.count(QStringLiteral("Humidity")), 3); // what the class repeats is left out
        for (const int i : {-1, 0, 1})
            QVERIFY2(isLineIn(bench.manager->viewsOf(i).first()), qPrintable(QString::number(i)));
        pointAt(48.5); // behind the last sample of the second group
        QVERIFY2(table->text().contains(QStringLiteral("Group B\tHumidity\t\t%RH")),
                 qPrintable(table->text()));
        bench.data(0)->setXYIndex(1);
        QTRY_VERIFY(!isLineIn(first) || !isLineIn(bench.manager->plotAt(1)));
        pointAt(bench.data(0)->getYAt(1, 30));
        QVERIFY2(isLineIn(first) && !isLineIn(bench.manager->plotAt(1)), qPrintable(table->text()));
        QVERIFY2(table->text().contains(QStringLiteral("nearest sample")), qPrintable(table->text()));
        QVERIFY(!bench.action("stopAct")->shortcuts().contains(Qt::Key_Escape));
        bench.action("endReadingAct")->trigger();
        QVERIFY(!table->isVisible() && !isLineIn(first) && !read->isChecked());
        QVERIFY(bench.action("stopAct")->shortcuts().contains(Qt::Key_Escape));
    }

    /// Asked in the dialog, in a run, for all groups.
    void aChannelIsCalculated()
    {
        ClassBench bench(3);
        bench.sample(0, 0, 10);
        bench.sample(1, 0, 20);
        Q_EMIT bench.manager->plotAt(0)->changedActivePlot(0);
        const int channels = bench.data(0)->getNSens();
        const auto ask = [&](const auto& person) {
            QTimer::singleShot(0, bench.window.data(), [&] {
                auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                const auto field = [dialog](const char* name) {
                    return dialog->findChild<QLineEdit*>(QLatin1String(name));
                };
                person(dialog, field);
                dialog->reject();
            });
            Q_EMIT functions(bench)->activated(functions(bench)->findData(REG_FORMULA));
        };
        ask([](QDialog* dialog, const auto& field) {
            auto* const answer = dialog->findChild<QLabel*>(QStringLiteral("answer"));
            auto* const add = dialog->findChild<QPushButton*>(QStringLiteral("add"));
            field("formula")->setText(QStringLiteral("c*humidity + K"));
            QVERIFY2(answer->text().contains(QStringLiteral("no channel K")), qPrintable(answer->text()));
            field("formula")->setText(QStringLiteral("c*humidity + d"));
            field("constant_c")->setText(QStringLiteral("two"));
            QVERIFY2(answer->text().contains(QStringLiteral("How much is c")), qPrintable(answer->text()));
            field("constant_c")->setText(QStringLiteral("2,5"));
            field("unit")->setText(QStringLiteral("J"));
            QVERIFY2(answer->text().contains(QStringLiteral("26.00 J")), qPrintable(answer->text()));
            field("name")->setText(QStringLiteral("Turbidity"));
            QVERIFY(answer->text().contains(QStringLiteral("of this name")) && !add->isEnabled());
            field("name")->setText(QStringLiteral("Energy"));
            dialog->findChild<QCheckBox*>(QStringLiteral("forAll"))->setChecked(true);
            add->click();
        });
        bench.sample(1, 1, 40);
        QCOMPARE(bench.data(0)->getYNoConv(channels), QVector<double>({26}));
        QCOMPARE(bench.data(1)->getYNoConv(channels), QVector<double>({51, 101}));
        QCOMPARE(bench.data(2)->getNSens(), 2); // has other sensors
        QVERIFY(bench.manager->plotAt(1)->getCurve(channels));
        ask([](QDialog* dialog, const auto& field) {
            dialog->findChild<QComboBox*>(QStringLiteral("existing"))->setCurrentIndex(1);
            QCOMPARE(field("constant_c")->text(), QStringLiteral("2.5"));
            field("constant_c")->setText(QStringLiteral("3"));
            dialog->findChild<QPushButton*>(QStringLiteral("add"))->click();
        });
        QCOMPARE(bench.data(0)->getYNoConv(channels), QVector<double>({31}));
        QCOMPARE(bench.data(1)->getYNoConv(channels).first(), 51.0);
        ask([](QDialog* dialog, const auto&) {
            dialog->findChild<QComboBox*>(QStringLiteral("existing"))->setCurrentIndex(1);
            dialog->findChild<QPushButton*>(QStringLiteral("remove"))->click();
        });
        QCOMPARE(bench.data(0)->getNSens(), channels);
        bench.tellEnd(0);
        bench.tellEnd(1);
        for (const double value : {31.0, -1.0, 26.0, -1.0}) {
            bench.action("undoAct")->trigger();
            QCOMPARE(bench.data(0)->getYNoConv(channels),
                     value < 0 ? QVector<double>() : QVector<double>({value}));
        }
        QCOMPARE(bench.data(1)->getNSens(), channels + 1);
    }

    void groupsAreSortedByAValue()
    {
        ClassBench bench(3); // the third measures nothing
        for (short n = 0; n < 10; ++n) {
            bench.sample(0, n, 10 + n);
            bench.sample(1, n, 50 - 2 * n);
        }
        QComboBox* const list = functions(bench);
        Q_EMIT list->activated(list->findData(REG_RANKING));
        auto* const dialog = bench.window->findChild<GroupRanking*>();
        const auto order = [dialog] {
            return dialog->findChild<RankingBars*>()->accessibleDescription().split(QLatin1Char('\n'));
        };
        const QString none = QStringLiteral("Group C: –");
        QTRY_COMPARE(order(), QStringList({"Group B: 32.0 %RH", "Group A: 19.0 %RH", none}));
        bench.sample(1, 10, 5); // it follows the run
        QTRY_COMPARE(order(), QStringList({"Group A: 19.0 %RH", "Group B: 5.0 %RH", none}));
        auto* const by = dialog->findChild<QComboBox*>(QStringLiteral("rankBy"));
        by->setCurrentIndex(1);
        QTRY_COMPARE(order().mid(1), QStringList({"Group A: 14.50 %RH", none}));
        by->setCurrentIndex(2); // the line, and its slope
        QTRY_VERIFY2(order().value(0).startsWith(QStringLiteral("Group A: 1.00")),
                     qPrintable(order().join(';')));
        QVERIFY2(order().value(1).startsWith(QStringLiteral("Group B: -")), qPrintable(order().join(';')));
        dialog->findChild<QPushButton*>(QStringLiteral("copy"))->click();
        const QString copied = QGuiApplication::clipboard()->text();
        QVERIFY2(copied.contains(QStringLiteral("Group A\tHumidity\t1\t%RH/s")), qPrintable(copied));
    }

    void functionsWorkOnTheChosenGraph_data()
    {
        columns<int, bool, int, QString, QString>({"item", "isStopped", "channels", "name", "text"});
        row("line", 1, false, 0, QString(), " = 87.00 %RH/min·t - 10.75 %RH\nr = 0.9954");
        row("parabola", 2, false, 0, QString(), " = 180.0 %RH/min²·t² - 3.000 %RH/min·t");
        row("smooth in a run", 4, false, 0, QString(), QString());
        row("smooth", 4, true, 0, " (smooth)", QString());
        row("derivative", 5, false, 1, "/time", QString());
        row("integral", 6, false, 0, QString(), "Integral = 109.25 ");
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
        list->setCurrentIndex(6);
        const int middle = list->iconSize().width() / 2;
        QTest::mouseClick(list, Qt::LeftButton, {}, QPoint(middle, list->height() / 2));
        QCOMPARE(plot->markers.size(), 6);
        QTest::mouseClick(list, Qt::LeftButton, {}, QPoint(list->width() - 4, list->height() / 2));
        QCOMPARE(plot->markers.size(), 6);
    }

    void listsActOnlyOnAChosenItem()
    {
        ClassBench bench(1);
        fill(bench);
        Plot* const plot = bench.manager->plotAt(0);
        placeCrosses(plot);
        auto* const layouts = bench.window->findChild<QComboBox*>(QStringLiteral("layouts"));
        for (QComboBox* list : {functions(bench), layouts}) {
            for (int notch = 0; notch < 5; ++notch) {
                QWheelEvent wheel({5, 5}, list->mapToGlobal(QPoint(5, 5)), {}, {0, -120}, {}, {},
                                  Qt::NoScrollPhase, false);
                QApplication::sendEvent(list, &wheel);
            }
            QCOMPARE(list->currentIndex(), 0);
            list->setFocus(Qt::TabFocusReason);
            QTest::keyClick(list, Qt::Key_Down);
            QTest::keyClick(list, Qt::Key_Down);
        }
        QCOMPARE(plot->markers.size(), 4); // neither the line nor the parabola
        QVERIFY(plot->isVisible());
        QTest::keyClick(layouts, Qt::Key_Up);
        QTest::keyClick(layouts, Qt::Key_Space);
        QVERIFY(bench.manager->plotC()->isVisible());
        QCOMPARE(layouts->currentIndex(), 1);
        QTest::keyClick(layouts, Qt::Key_Home); // and thought better of it
        functions(bench)->setFocus(Qt::TabFocusReason);
        QCOMPARE(layouts->currentIndex(), 1);
        bench.action("layoutAct1")->trigger();
        QTest::keyClick(functions(bench), Qt::Key_End);
        for (int i = functions(bench)->count() - 1; i > functions(bench)->findData(REG_INTEGRAL); --i)
            QTest::keyClick(functions(bench), Qt::Key_Up);
        QTest::keyClick(functions(bench), Qt::Key_Return);
        QCOMPARE(plot->markers.last()->label().text().left(8), QStringLiteral("Integral"));
        QCOMPARE(plot->markers.size(), 6);
    }

    void statisticsAreOfTheChosenSensor()
    {
        ClassBench bench(1);
        bench.sample(0, 0, 2);
        QComboBox* const list = functions(bench);
        const auto choose = [list] { Q_EMIT list->activated(list->findData(REG_STATISTICS)); };
        choose();
        QVERIFY(bench.window->findChild<StatusLine*>()->outcome().startsWith("Statistics need"));
        bench.sample(0, 1, 4);
        QTimer::singleShot(0, this, [] {
            auto* const dialog = QApplication::activeModalWidget();
            QVERIFY(dialog && dialog->objectName() == "statistics");
            dialog->findChild<QPushButton*>("copy")->click();
            dialog->close();
        });
        choose();
        QCOMPARE(QGuiApplication::clipboard()->text(),
                 QString("Humidity sensor statistics\nMinimum=2\nMaximum=4\nAverage=3.0\n"
                         "Standard Deviation=1.0\nNumber of samples=2\nSampling rate=1/Sec\n"
                         "Area=3 %RH·s\nSlope=2.000 %RH/s\n"));
    }

    void toolsGoToTheGraphThatIsSeen()
    {
        ClassBench bench(3);
        for (short i = 0; i < 5; ++i)
            bench.sample(1, i, i);
        fill(bench);
        const auto made = [&] { // derivatives of logger 0, logger 1 and the class
            QVector<int> more;
            for (int i : {0, 1, -1})
                more.append(bench.data(i)->getNSens() - (i < 0 ? 4 : 2));
            return more;
        };
        const auto derive = [&] { Q_EMIT functions(bench)->activated(5); };
        auto* const line = bench.window->findChild<StatusLine*>();
        Q_EMIT bench.manager->plotAt(0)->changedActivePlot(-1);
        line->setOutcome(QString());
        derive();
        QCOMPARE(made(), (QVector<int>{0, 0, 0})); // which one?
        QVERIFY(!line->outcome().isEmpty());
        placeCrosses(bench.manager->plotAt(0));
        derive();
        QCOMPARE(made(), (QVector<int>{1, 0, 0}));
        QTest::mouseClick(bench.manager->plotAt(1)->canvas(), Qt::LeftButton);
        QVERIFY(bench.manager->isActive(1));
        derive();
        QCOMPARE(made(), (QVector<int>{1, 1, 0}));
        bench.action("layoutAct2")->trigger();
        derive();
        QCOMPARE(made(), (QVector<int>{1, 1, 1}));

        // What two crosses tell is told for the graph that is meant, whatever else is said meanwhile.
        bench.action("layoutAct1")->trigger();
        QTest::mouseClick(bench.manager->plotAt(0)->canvas(), Qt::LeftButton);
        line->setOutcome(QStringLiteral("Other news"));
        QVERIFY(line->text().contains(QStringLiteral("Other news · dt = ")));
        QTest::mouseClick(bench.manager->plotAt(1)->canvas(), Qt::LeftButton);
        QCOMPARE(line->measured(), QString());
    }

    void aModeIsOnWhateverShows()
    {
        ClassBench bench(2);
        fill(bench);
        auto* const cell = bench.manager->plotAt(1);
        bench.action("markerAct")->trigger();
        bench.action("layoutAct2")->trigger();
        QTest::mouseClick(bench.manager->plotC()->canvas(), Qt::LeftButton);
        QCOMPARE(bench.manager->plotC()->curveMarker.size(), 1);
        bench.action("layoutAct1")->trigger();
        QTest::mouseClick(bench.manager->plotAt(0)->canvas(), Qt::LeftButton);
        QCOMPARE(bench.manager->plotAt(0)->curveMarker.size(), 1);

        // The tangent goes where the tools go, and shows on the list that it comes from.
        Q_EMIT functions(bench)->activated(0);
        QCOMPARE(functions(bench)->property("isOn"), QVariant(true));
        QCOMPARE(bench.manager->plotAt(0)->markers.size(), 3);
        QTest::mouseClick(cell->canvas(), Qt::LeftButton);
        QCOMPARE(bench.manager->plotAt(0)->markers.size(), 2);
        QCOMPARE(cell->markers.size(), 1);
        Q_EMIT functions(bench)->activated(0);
        QCOMPARE(functions(bench)->property("isOn"), QVariant(false));
        QVERIFY(cell->markers.isEmpty());
    }

    void slopeModeEndsWithoutAGraph()
    {
        ClassBench bench(2);
        fill(bench);
        Q_EMIT functions(bench)->activated(0);
        Q_EMIT bench.manager->plotAt(0)->changedActivePlot(-1); // none of the cells is meant any more
        QVERIFY(bench.manager->plotAt(0)->markers.isEmpty());
        bench.action("zoomAct")->trigger();
        QCOMPARE(functions(bench)->property("isOn"), QVariant(false));
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
