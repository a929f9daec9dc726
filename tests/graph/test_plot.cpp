#include <QAction>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QPushButton>

#include <cmath>

#include <qwt_plot_renderer.h>
#include <qwt_scale_div.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "graph/contrast.h"
#include "graph/setrange.h"
#include "tests/graph/plottest.h"

namespace {

double valueAt(int iSens, double part)
{
    return 10 * iSens + 10 * std::pow(part, iSens + 1);
}

// `n` samples of every sensor, `dt` seconds apart; sensor i rises from 10 i to 10 i + 10, the later the
// steeper.
void fill(ExpData& data, const QVector<int>& ids, int n, double dt)
{
    QVector<QVector<double>> channels(ids.size(), QVector<double>(n));
    for (int k = 0; k < ids.size(); ++k) {
        for (int i = 0; i < n; ++i)
            channels[k][i] = valueAt(k, double(i) / n);
    }
    load(&data, ids, channels, dt);
    data.finalData = false;
}

void addSamples(ExpData& data, int count)
{
    for (int i = 0; i < count; ++i)
        data.addSample(data.getX().last() + (data.dt > 0 ? data.dt : 1), QVector<double>(data.getNSens(), 5));
}

void pressRightAt(QWidget* widget)
{
    QTest::mousePress(widget, Qt::RightButton);
    QTest::mouseRelease(widget, Qt::RightButton);
}

const QVector<int> threeSensors{SENSOR_VOLTAGE, SENSOR_PH, SENSOR_LIGHT};

} // namespace

class TestPlot : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void xAxisFollowsTheRun()
    {
        show(threeSensors, 74, 0.1);
        const auto window = qMakePair(0.0, 10.0);
        QCOMPARE(shownRange(QwtPlot::xBottom), window);
        QCOMPARE(plot->axisTitle(QwtPlot::xBottom).text(), QStringLiteral("Time [s]"));
        addSamples(*data, 1);
        plot->Update();
        QCOMPARE(shownRange(QwtPlot::xBottom), window);
        addSamples(*data, 1);
        plot->Update();
        QCOMPARE(shownRange(QwtPlot::xBottom), qMakePair(0.0, 8.0));
        QVector<double> ends;
        for (int i = 0; i < 400; ++i) {
            addSamples(*data, 1);
            plot->Update();
            const double end = plot->axisInterval(QwtPlot::xBottom).maxValue();
            QVERIFY(end >= data->getX().last());
            if (ends.isEmpty() || ends.last() != end)
                ends << end;
        }
        QVERIFY2(ends.size() < 20, "the axis has to grow in steps");
        data->finalData = true;
        plot->Update();
        QCOMPARE(shownRange(QwtPlot::xBottom).second, data->getX().last());
    }

    void curvesStartHiddenByKind_data()
    {
        columns<int, QVector<int>, int, QVector<int>>({"index", "ids", "hint", "shown"});
        const int lat = SENSOR_GPS_LAT;
        const int ph = SENSOR_PH;
        const int volt = SENSOR_VOLTAGE;
        row("position", 0, QVector<int>{ph, lat}, -1, QVector<int>{ph});
        row("position shown in the file", 0, QVector<int>{ph, lat}, int(CURVE_LINE), QVector<int>{ph, lat});
        row("mean over one kind", -1, QVector<int>{ph, ph, ph}, -1, QVector<int>{ph, ph, ph});
        row("mean over two kinds", -1, QVector<int>{ph, volt, ph}, -1, QVector<int>{ph, volt});
        row("two kinds of one logger", 0, QVector<int>{ph, volt, ph}, -1, QVector<int>{ph, volt, ph});
    }

    void curvesStartHiddenByKind()
    {
        const auto [index, ids, hint, shown] =
            fetched<int, QVector<int>, int, QVector<int>>({"index", "ids", "hint", "shown"});
        fill(*data, ids, 10, 1);
        data->curveModeHint.last() = hint;
        data->getSens(ids.size() - 1)->groupName = index < 0 ? QStringLiteral("Average") : QString();
        plot.reset(new Plot(data.data(), GRAPH_LINE, false, index));
        QCOMPARE(plot->getShownSensIDs(), shown);
        plot->keepCurveModesInData();
        plot->setData();
        QCOMPARE(plot->getShownSensIDs(), shown);
    }

    // Legend clicks, joins and new runs make the curves anew.
    void aCurveStaysAsTheUserLeftIt()
    {
        const auto run = [this](const QVector<int>& ids) {
            SensorList list;
            for (int id : ids)
                list.append(SensorPtr::create(id));
            data->setDataNewEmpty(list, 1);
            plot->setData();
        };
        show(threeSensors, 100, 0.1);
        data->setDataNewEmpty(SensorList(data->getSensors()), 1);
        pressRightAt(legendItem(0));
        pressRightAt(legendItem(2));
        pressRightAt(legendItem(2));
        plot->otherColorChanged(1, Qt::magenta);
        plot->updateSens(1);
        run(threeSensors);
        QVERIFY(plot->getCurve(0)->isSymbol() && plot->getCurve(1)->isLine() &&
                !plot->getCurve(2)->isShown());
        QCOMPARE(plot->getCurvePen(1).color(), QColor(Qt::magenta));
        QCOMPARE(plot->getActiveSens(), 1);
        run({SENSOR_VOLTAGE, SENSOR_LIGHT, SENSOR_LIGHT});
        QVERIFY(plot->getCurve(1)->isLine() && plot->getCurvePen(1).color() != QColor(Qt::magenta));
        QVERIFY(!plot->getCurve(2)->isShown());
        // Saved, then changed: not back to what was saved.
        plot->keepCurveModesInData();
        pressRightAt(legendItem(2));
        plot->setData();
        QVERIFY(plot->getCurve(2)->isLine());
    }

    void theClassSaysWhatItIsOver()
    {
        SensorList list(3, SensorPtr::create(SENSOR_LIGHT));
        list.append(SensorPtr::create(SENSOR_LIGHT));
        list.last()->groupName = QStringLiteral("Average");
        data->setDataNewEmpty(list, 1);
        PlotTest::show({640, 400}, GRAPH_LINE, -1);
        for (int i = 0; i < 20; ++i) {
            data->joinSample(0, i, i);
            data->joinSample(2, i, 2 * i);
        }
        plot->Update();
        QVERIFY(plot->getCurve(3)->title().text().endsWith(QStringLiteral("(2)")));
        data->joinSample(0, 20, 20);
        for (const bool isFinal : {true, false}) {
            data->finalData = isFinal;
            QCOMPARE(data->settledRows(), 20); // the newest average waits for the other group,
        }
        for (int i = 21; i < 32; ++i)
            data->joinSample(0, i, i);
        QCOMPARE(data->settledRows(), 32); // but not for one that has stopped
        data->joinSample(1, 31, 31);
        data->joinSample(2, 31, 31);
        data->setSelectedSensor(3);
        data->addSpecialCurve(ExpData::CURVE_DERIV);
        plot->setData();
        QVERIFY(plot->getCurve(3)->title().text().endsWith(QStringLiteral("± s (3)")));
        QVERIFY(plot->getCurve(4)->isVisible());
        plot->Update();
        QVERIFY(plot->scaler->getScaleMax(4) < 5); // its own values are below 2
    }

    void theAverageIsOfOneQuantity()
    {
        SensorList list{SensorPtr::create(SENSOR_PH), SensorPtr::create(SENSOR_LIGHT),
                        SensorPtr::create(SENSOR_LIGHT), SensorPtr::create(SENSOR_LIGHT)};
        list.last()->groupName = QStringLiteral("Average");
        data->setDataNewEmpty(list, 1);
        PlotTest::show({640, 400}, GRAPH_LINE, -1);
        const auto isAverageShown = [&](int channel) {
            data->joinSample(channel, 0, 5);
            plot->Update();
            return plot->getCurve(3)->isVisible();
        };
        QVERIFY(isAverageShown(1));
        QVERIFY(isAverageShown(2));  // the first group has not measured anything
        QVERIFY(!isAverageShown(0)); // until now
        plot->setData();
        QVERIFY(!plot->getCurve(3)->isVisible());
    }

    void theLegendAsksForAllGroups()
    {
        show(threeSensors, 100, 0.1);
        QSignalSpy asked(plot.data(), &Plot::shownForAll);
        plot->updateSens(2);
        QWidget* const beside = qobject_cast<QwtLegend*>(plot->legend())->contentsWidget();
        const auto choose = [&](QWidget* at, Qt::KeyboardModifiers keys, const QPoint& pos) {
            QTest::mousePress(at, Qt::RightButton, keys, pos);
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QVERIFY(menu);
            menu->findChild<QAction*>("showForAllAct")->trigger();
            menu->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        };
        choose(legendItem(1), Qt::ShiftModifier, {3, 3});
        QVERIFY(plot->getCurve(1)->isLine());
        choose(beside, Qt::NoModifier, {2, beside->height() - 2});
        QCOMPARE(asked, QList<QVariantList>({{int(SENSOR_PH)}, {int(SENSOR_LIGHT)}}));
    }

    // The same range in another unit has the ticks that a new graph would give it.
    void ticksFollowTheUnit()
    {
        show(threeSensors, 1001, 1);
        data->finalData = true;
        for (const double dt : {1.0, 0.0, 1.0}) {
            data->dt = dt;
            plot->Update();
            Plot fresh(data.data(), GRAPH_LINE, false, 0);
            fresh.resize(plot->size());
            fresh.Update();
            const auto ticks = [](const Plot& of) {
                return of.axisScaleDiv(QwtPlot::xBottom).ticks(QwtScaleDiv::MajorTick);
            };
            QCOMPARE(ticks(*plot), ticks(fresh));
            QCOMPARE(std::fmod(ticks(*plot).value(1), 60) == 0, dt > 0);
            QCOMPARE(plot->axisTitle(QwtPlot::xBottom).text() == QLatin1String("Sample"), dt == 0);
        }
    }

    // On the screen and in an export: no line over gaps, and a point for a sample without neighbours.
    void linesBreakAtGaps()
    {
        const double none = qQNaN();
        data->setDataNew(1, {0, 1, 2, 3, 7, 12, 13, 14}, 1);
        data->addSensorData(0, SENSOR_VOLTAGE, {2, 2, none, 2, 2, 2, none, 2}, -1);
        PlotTest::show({640, 400});
        data->finalData = true;
        plot->Update();
        const QPoint origin = plot->canvas()->pos();
        const QColor color = plot->getCurvePen(0).color();
        for (const QImage& image : pictures()) {
            const auto inked = [&](double x, int beside) {
                const QPoint at = place(0, x, 2) + origin;
                int hits = 0;
                for (int row = at.y() - 8; row <= at.y() + 8; ++row) {
                    for (int column = at.x() - beside; column <= at.x() + beside; ++column)
                        hits += image.pixelColor(column, row) == color;
                }
                return hits;
            };
            for (double x : {0.5, 4.0, 5.0})
                QVERIFY(inked(x, 0) > 0);
            for (double x : {2.0, 9.5, 13.0})
                QCOMPARE(inked(x, 0), 0);
            for (double x : {12.0, 14.0}) // larger than the pen
                QVERIFY(inked(x, 5) > 16);
        }
    }

    void soundKeepsItsView_data()
    {
        columns<int, QVector<double>, QPair<double, double>>({"index", "values", "range"});
        const auto row = [](const char* title, int index, const QVector<double>& values, double from,
                            double to) { QTest::newRow(title) << index << values << qMakePair(from, to); };
        row("before the first sample", 0, {}, 55, 100);
        row("quiet talk", 0, {60, 70}, 55, 100);
        row("a shout", 0, {60, 110}, 55, 115);
        row("silence", 0, {30, 90}, 24, 100);
        row("class", -1, {60, 70}, 55, 100);
        row("class with a shout", -1, {60, 110}, 55, 115);
    }

    void soundKeepsItsView()
    {
        QFETCH(int, index);
        QFETCH(QVector<double>, values);
        data->setDataNewEmpty({SensorPtr::create(SENSOR_SOUND), SensorPtr::create(SENSOR_SOUND)}, 1);
        PlotTest::show({640, 400}, GRAPH_LINE, index);
        Plot bars(data.data(), GRAPH_BAR, false, 0);
        for (int i = 0; i < values.size(); ++i) {
            if (index < 0)
                data->joinSample(0, i, values[i]);
            else
                data->addSample(i, {values[i], values[i]});
            plot->Update();
        }
        QTEST(qMakePair(plot->scaler->getScaleMin(0), plot->scaler->getScaleMax(0)), "range");
        if (index < 0 || values.isEmpty())
            return;
        bars.updateBarSens(0, true);
        QTEST(qMakePair(bars.axisInterval(QwtPlot::yLeft).minValue(),
                        bars.axisInterval(QwtPlot::yLeft).maxValue()),
              "range");
        data->getSens(0)->readSetMinMax = true; // the user asks for another
        data->getSens(0)->minView = 0;
        data->getSens(0)->maxView = 50;
        plot->Update();
        QCOMPARE(plot->scaler->getScaleMax(0), 50.0);
    }

    void legendPicksWhatIsSeen()
    {
        show({SENSOR_PH, SENSOR_VOLTAGE, SENSOR_VOLTAGE}, 100, 0.1, 3);
        QSignalSpy picked(plot.data(), &Plot::changedActiveCurve);
        QTest::mouseClick(legendItem(2), Qt::LeftButton);
        QCOMPARE(picked.takeFirst(), (QVariantList{3, 1})); // of two with one name the first
        pressRightAt(legendItem(1));
        pressRightAt(legendItem(1));
        QVERIFY(!plot->getCurve(1)->isVisible());
        QTest::mouseClick(legendItem(1), Qt::LeftButton);
        QVERIFY(picked.isEmpty());
    }

    void activeSensorStaysValid()
    {
        show(threeSensors, 100, 0.1);
        plot->updateSens(2);
        QCOMPARE(plot->getCurve()->pen().width(), 4);
        QCOMPARE(plot->getCurvePen(0).width(), 2);
        const QString name = data->getSens(2)->getNameWithUnit(false);
        QCOMPARE(plot->axisTitle(QwtPlot::yLeft).text(), name);
        plot->resize(200, 70);
        QTRY_VERIFY(plot->axisTitle(QwtPlot::yLeft).text().contains(QStringLiteral("… [")));
        QCOMPARE(plot->axisWidget(QwtPlot::yLeft)->toolTip(), name);
        plot->resize(640, 500);
        QTRY_COMPARE(plot->axisTitle(QwtPlot::yLeft).text(), name);
        QCOMPARE(shownRange(QwtPlot::yLeft).second, plot->scaler->getScaleMax(2));
        fill(*data, {SENSOR_PH, SENSOR_LIGHT}, 100, 0.1);
        plot->setData();
        QCOMPARE(plot->getActiveSens(), 0);
        QCOMPARE(plot->axisTitle(QwtPlot::yLeft).text(), data->getSens(0)->getNameWithUnit(false));
        data->setDataNewEmpty();
        plot->grab(); // between a change of the data and setData()
        plot->setData();
        QCOMPARE(plot->axisTitle(QwtPlot::yLeft).text(), QString());
        QVERIFY(!plot->getCurve());
    }

    void menuPutsASensorOnTheXAxis()
    {
        show(threeSensors, 100, 0.1);
        QSignalSpy picked(plot.data(), &Plot::changedActiveCurve);
        chooseFromXAxis(2);        // after "Time" and a separator: the active one
        QVERIFY(picked.isEmpty()); // which the class keeps
        QCOMPARE(plot->getActiveSens(), 1);
        QVERIFY(!plot->getCurve(0)->isVisible());
        QCOMPARE(plot->axisTitle(QwtPlot::xBottom).text(), data->getSens(0)->getNameWithUnit(false));
        QCOMPARE(shownRange(QwtPlot::xBottom).second, plot->scaler->getScaleMax(0));
        chooseFromXAxis(4);
        QVERIFY(plot->getCurve(0)->isVisible() && !plot->getCurve(2)->isVisible());
        QCOMPARE(plot->getActiveSens(), 0); // back from the axis
        chooseFromXAxis(0);
        QVERIFY(plot->getCurve(2)->isVisible());
        QCOMPARE(plot->axisTitle(QwtPlot::xBottom).text(), QStringLiteral("Time [s]"));
        QCOMPARE(shownRange(QwtPlot::xBottom), qMakePair(0.0, 10.0));
    }

    // On the screen and in an export, which draws the samples by another way.
    void curvesStandOnTheirOwnScales()
    {
        show(threeSensors, 3000, 0.1);
        data->setLeftPad(2, 1500);
        plot->replot();
        const QPoint origin = plot->canvas()->pos();
        for (const QImage& image : pictures()) {
            for (int i = 0; i < 3; ++i) {
                for (double part : {0.25, 0.75}) {
                    const QPoint at = place(i, 300 * part, valueAt(i, part)) + origin;
                    int hits = 0; // the export lays the canvas out a little differently
                    for (int row = at.y() - 6; row <= at.y() + 6; ++row)
                        hits += Contrast::distance(image.pixelColor(at.x(), row),
                                                   plot->getCurvePen(i).color()) < Contrast::leastDistance;
                    QCOMPARE(hits > 0, i != 2 || part > 0.5);
                }
            }
        }
    }

    void colorOfTheCurveUnderThePointer()
    {
        show({SENSOR_VOLTAGE, SENSOR_PH}, 100, 0.1);
        plot->scaler->scales[1]->setUserScales(0, 30, false);
        data->getSens(1)->readSetMinMax = true;
        data->setNeedSave(false);
        QSignalSpy changed(plot.data(), &Plot::colorChanged);
        prompt.picked = qRgb(1, 2, 3);
        const auto press = [&](double y) {
            QTest::mousePress(plot->canvas(), Qt::RightButton, {}, place(1, 5, y));
        };
        press(28);
        QVERIFY(changed.isEmpty());
        press(valueAt(1, 0.5));
        QCOMPARE(changed.takeFirst(), (QVariantList{1, QColor(1, 2, 3)}));
        QCOMPARE(plot->getCurvePen(1).color(), QColor(1, 2, 3));
        QVERIFY(data->isNeedSave());
        prompt.picked.reset();
        press(valueAt(1, 0.5));
        QVERIFY(changed.isEmpty());
    }

    void titleIsChosenEditedAndBusy()
    {
        show(threeSensors, 10, 1, 5);
        QSignalSpy chosen(plot.data(), &Plot::changedActivePlot);
        QTest::mouseClick(plot->titleLabel(), Qt::LeftButton);
        QCOMPARE(chosen.takeFirst().first().toInt(), 5);
        plot->setActivePlot(5);
        QCOMPARE(plot->canvasBackground().color(), Plot::getActivePlotColor());
        QTest::mouseClick(plot->titleLabel(), Qt::LeftButton);
        QCOMPARE(chosen.takeFirst().first().toInt(), -1);
        plot->setForPrint(true);
        QCOMPARE(plot->canvasBackground().color(), Plot::getBackgroundColor());

        const auto isLight = [this] {
            const QwtScaleWidget* axis = plot->axisWidget(QwtPlot::yLeft);
            const int legend = plot->getCurve(0)->title().color().lightness();
            return QVector<bool>{axis->palette().color(QPalette::Text).lightness() > 128, legend > 128};
        };
        Plot::setSurroundings(QColor(0x14, 0x24, 0x34));
        plot->setForPrint(true);
        QCOMPARE(isLight(), QVector<bool>({false, false}));
        plot->setForPrint(false);
        QCOMPARE(isLight(), QVector<bool>({true, true}));
        Plot::setSurroundings(Qt::lightGray);
        plot->setDesign();
        QCOMPARE(isLight(), QVector<bool>({false, false}));

        show(threeSensors, 10, 1, -1);
        prompt.typed = QStringLiteral("Cooling");
        QTest::mouseDClick(plot->titleLabel(), Qt::LeftButton);
        plot->setTempTitle();
        plot->setTempTitle();
        QVERIFY(plot->title().text().contains(QStringLiteral("busy")));
        plot->restoreTitle();
        QCOMPARE(plot->title().text(), QStringLiteral("Cooling"));
    }

    void rangeByHand()
    {
        show({SENSOR_PH, SENSOR_PH, SENSOR_PH}, 100, 0.1, -1);
        QTimer::singleShot(0, this, [] {
            auto* const dialog = qobject_cast<SetRange*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->Params(0, 0, 0, 0, nullptr, nullptr);
            dialog->reject();
        });
        QTest::mousePress(plot->axisWidget(QwtPlot::yLeft), Qt::RightButton);
        QVERIFY(!data->getSens(0)->readClassSetMinMax);
        for (const int index : {-1, 0}) {
            show({SENSOR_PH, SENSOR_PH, SENSOR_PH}, 100, 0.1, index);
            const auto automatic = shownRange(QwtPlot::yLeft);
            const auto ask = [this](const auto& answer) {
                QTimer::singleShot(0, this, [answer] {
                    answer(qobject_cast<SetRange*>(QApplication::activeModalWidget()));
                });
                QTest::mousePress(plot->axisWidget(QwtPlot::yLeft), Qt::RightButton);
            };
            ask([&](SetRange* dialog) {
                auto* const from = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("minval"));
                QVERIFY(qAbs(from->value() - automatic.first) < 0.001);
                from->setValue(3);
                Q_EMIT from->editingFinished();
                dialog->accept();
            });
            const auto byHand = qMakePair(3.0, automatic.second);
            QCOMPARE(shownRange(QwtPlot::yLeft), byHand);
            plot->setData(); // after an analysis or a download
            plot->forceDefaultSetScale();
            QCOMPARE(shownRange(QwtPlot::yLeft), byHand);
            plot->updateSens(1);
            QCOMPARE(shownRange(QwtPlot::yLeft), byHand);
            ask([](SetRange* dialog) {
                dialog->findChild<QPushButton*>(QStringLiteral("buttonAutomatic"))->click();
            });
            QCOMPARE(shownRange(QwtPlot::yLeft), automatic);
        }
    }

private:
    QVector<QImage> pictures() // on the screen, and in an export
    {
        QImage exported(plot->size(), QImage::Format_RGB32);
        exported.fill(Qt::white);
        QwtPlotRenderer().renderTo(plot.data(), exported);
        return {plot->grab().toImage(), exported};
    }
    void show(const QVector<int>& ids, int n, double dt, int index = 0)
    {
        fill(*data, ids, n, dt);
        PlotTest::show({640, 500}, GRAPH_LINE, index);
    }
};

QTEST_MAIN(TestPlot)
#include "test_plot.moc"
