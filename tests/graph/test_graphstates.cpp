#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>

#include <qwt_text_label.h>

#include "data/stretch.h"
#include "graph/contrast.h"
#include "tests/graph/plottest.h"

/// What stands around the curves stays true whatever else changes.
class TestGraphStates : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    void aNewExperimentEndsTheZoom_data()
    {
        columns<bool>({"isFile"});
        row("run", false);
        row("file", true);
    }

    void aNewExperimentEndsTheZoom()
    {
        QFETCH(bool, isFile);
        show();
        drag(pixel(0, 2) - QPoint(0, 40), pixel(0, 4) + QPoint(0, 40));
        QVERIFY(shownRange().second < 5);
        if (isFile)
            plot->setMarkers(QList<myPlotMarker*>());
        else
            data->setDataNewEmpty(SensorList(data->getSensors()), 0.1);
        plot->setData();
        if (!isFile)
            data->addSample(0, {20, 1});
        plot->Update();
        QCOMPARE(shownRange(), qMakePair(0.0, 10.0));
        QCOMPARE(plot->scaler->getScaleMax(0), plot->scaler->scales[0]->scaleFullMax);
    }

    void labelsAreRenewed()
    {
        show(1.5);
        cross(1, 20);
        cross(1, 120);
        plot->doRegression(1);
        QVERIFY2(textOf(5).contains(QStringLiteral("V/min·t")), qPrintable(textOf(5)));
        // The shown range decides on the unit of the axis.
        plot->enableZoom(true);
        drag(pixel(1, 10) - QPoint(0, 40), pixel(1, 50) + QPoint(0, 40));
        QVERIFY2(textOf(5).contains(QStringLiteral("V/s·t")), qPrintable(textOf(5)));
        // A cross that stood on a fit goes back to the curve, and says so.
        plot->lockMarker(plot->markers[0], false);
        plot->newMarker(1, 4, 60, plot->markers[4]->calcRegValue(60));
        const QString onLine = textOf(7);
        plot->removeMarker(plot->markers[4]);
        QVERIFY(textOf(5) != onLine);
        QVERIFY(textOf(5).contains(data->getSens(1)->valueToString(data->interpolateY(1, 60))));
    }

    void aFitIsOfTheSmoothedCurve()
    {
        show();
        cross(1, 2);
        cross(1, 8);
        plot->doRegression(2);
        const double before = plot->markers[4]->c;
        const QString typed = QStringLiteral("p*x^2 + q*x + s");
        const Stretch stretch = plot->stretch();
        const CurveFit::Fit fit = CurveFit::fit(CurveFit::Model::Formula, stretch.x, stretch.y, typed);
        plot->addFit({fit, stretch.xUnit, stretch.yUnit}, 1, 2, 8);
        QCOMPARE(stretch.x.size(), 61); // both ends count
        QVERIFY(std::fabs(plot->markers[6]->calcRegValue(5) - plot->markers[4]->calcRegValue(5)) < 1e-6);
        data->setSelectedSensor(1);
        data->smoothCurve();
        plot->setData();
        double a = 0, b = 0, c = 0, r = 0;
        data->regression(2, 1, 2, 8, &a, &b, &c, &r);
        QVERIFY(c != before);
        QCOMPARE(plot->markers[4]->c, c);
        QVERIFY(std::fabs(plot->markers[6]->fit.curve.parameters[2] - c) < 1e-6);
        const int all = plot->markers.size();
        plot->previewFit({fit, stretch.xUnit, stretch.yUnit}, 1, 0, 10);
        QCOMPARE(plot->markers.size(), all); // no mark, and nobody stores it
    }

    void eachXAxisKeepsItsMarks()
    {
        show();
        cross(0, 2);
        cross(0, 8);
        plot->doRegression(1);
        const QString fit = textOf(5);
        chooseFromXAxis(3);
        QVERIFY(plot->curveMarker.isEmpty());
        for (const myPlotMarker* marker : plot->markers)
            QVERIFY(!marker->isShown());
        plot->newMarker(0, -1, data->getYAt(1, 30), data->getYAt(0, 30));
        QCOMPARE(plot->curveMarker.size(), 1);
        plot->Update();
        QVERIFY(textOf(7).startsWith(QLatin1String("Voltage")));
        chooseFromXAxis(0);
        QCOMPARE(plot->curveMarker.size(), 2);
        QVERIFY(plot->markers[4]->isShown() && !plot->markers[6]->isShown());
        QCOMPARE(textOf(5), fit);
    }

    void marksOfAGroupFollowItsSensor()
    {
        const auto group = [](int id, const char* name) {
            SensorPtr sensor = SensorPtr::create(id);
            sensor->groupName = QLatin1String(name);
            return sensor;
        };
        data->setDataNewEmpty({group(SENSOR_EXT_TEMP, "<b>Ann"), group(SENSOR_EXT_TEMP, "Ben"),
                               group(SENSOR_EXT_TEMP, "Average")},
                              1);
        for (int i = 0; i < curveSamples; ++i) {
            data->joinSample(0, i, 20 + 0.4 * i);
            data->joinSample(1, i, 30);
        }
        PlotTest::show({800, 500}, GRAPH_LINE, -1);
        plot->getCurve(1)->setMode(CURVE_SYMBOL);
        plot->otherColorChanged(0, Qt::magenta);
        cross(0, 20);
        cross(0, 80);
        plot->doRegression(1);
        QVERIFY(textOf(1).startsWith(QLatin1String("<b>Ann - ")));
        ExpData other;
        load(&other, {SENSOR_LIGHT}, {QVector<double>(curveSamples, 300)});
        data->joinChannel(0, group(SENSOR_LIGHT, "<b>Ann"), other);
        plot->setData();
        plot->Update();
        QCOMPARE(plot->markers.value(0)->yValue(), 300.0);
        QVERIFY(textOf(1).contains(QLatin1String("Light")) && textOf(1).contains(QLatin1String("300")));
        QCOMPARE(plot->markers.size(), 4); // nothing to fit in a steady light
        QVERIFY(plot->getCurve(1)->isSymbol());
        QCOMPARE(plot->getCurvePen(0).color(), QColor(Qt::magenta));
        // As it was typed, and not as markup.
        plot->updateTitle(QStringLiteral("<b>Ann"));
        for (const QwtText& shown : {plot->getCurve(0)->title(), plot->titleLabel()->text()}) {
            QwtText typed(shown.text(), QwtText::PlainText);
            typed.setFont(shown.font());
            QCOMPARE(shown.textSize().width(), typed.textSize().width());
        }
    }

    // Both by a zoom and by a smaller cell.
    void notesStayInThePictureAndOffCurves()
    {
        show();
        cross(0, 5);
        const auto isGood = [this] {
            const myPlotMarker& text = *plot->markers[1];
            const QRectF box = text.hotBox(text.pixelPos());
            for (int column = int(box.left()); column < box.right(); ++column) {
                const double x = plot->invTransform(QwtPlot::xBottom, column);
                for (int i : {0, 1}) {
                    if (x >= 0 && x <= 10 && box.contains(pixel(i, x)))
                        return false;
                }
            }
            return QRectF(plot->canvas()->rect()).contains(box) &&
                   !box.intersects(plot->markers[0]->hotBox(plot->markers[0]->pixelPos()));
        };
        QVERIFY(isGood());
        plot->enableZoom(true);
        drag(pixel(0, 4.9) - QPoint(0, 30), pixel(0, 6) + QPoint(0, 100));
        QVERIFY(shownRange().second < 7);
        QVERIFY(isGood());
        QTest::mouseClick(plot->canvas(), Qt::RightButton);
        plot->resize(450, 300);
        QTRY_VERIFY(plot->canvas()->width() < 420);
        QVERIFY(isGood());
    }

    void aZoomHoldsUntilTheRightButtonEndsIt()
    {
        show();
        const auto wholeY = shownRange(QwtPlot::yLeft);
        data->finalData = false;
        cross(0, 5);
        drag(place(0, 3, 24), place(0, 7, 12));
        const auto zoomed = shownRange();
        QVERIFY(qAbs(zoomed.first - 3) < 0.1 && qAbs(zoomed.second - 7) < 0.1);
        QVERIFY(qAbs(shownRange(QwtPlot::yLeft).first - 12) < 0.2);
        for (int i = 0; i < 30; ++i)
            data->addSample(10.1 + 0.1 * i, {20, 1});
        plot->Update();
        QCOMPARE(shownRange(), zoomed);
        prompt.picked = qRgb(1, 2, 3);
        QTest::mouseClick(plot->canvas(), Qt::RightButton, {}, pixel(0, 5));
        QVERIFY(!plot->findChild<QMenu*>());
        QCOMPARE(shownRange(QwtPlot::yLeft), wholeY);
        QVERIFY(shownRange().second > data->getX().last());
        QTest::mouseClick(plot->canvas(), Qt::RightButton, {}, pixel(0, 6));
        QVERIFY(plot->getCurvePen(0).color() != QColor(1, 2, 3));
    }

    void theRightAxisGoesWithItsChannel()
    {
        show();
        const auto isOnTheRight = [this](int iSens) {
            const QColor color =
                GraphDesign::readableOn(plot->getCurvePen(iSens).color(), GraphDesign::surroundings);
            return plot->axisEnabled(QwtPlot::yRight) && data->getRightIndex() == iSens &&
                   plot->axisTitle(QwtPlot::yRight).text() == data->getSens(iSens)->getNameWithUnit(false) &&
                   plot->axisWidget(QwtPlot::yRight)->palette().color(QPalette::Text) == color &&
                   shownRange(QwtPlot::yRight) ==
                       qMakePair(plot->scaler->getScaleMin(iSens), plot->scaler->getScaleMax(iSens));
        };
        const auto fromLegend = [this](int i) {
            QTest::mousePress(legendItem(i), Qt::RightButton, Qt::ShiftModifier);
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            auto* const choice = menu->findChild<QAction*>(QStringLiteral("rightAct"));
            if (choice)
                choice->trigger();
            menu->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            return choice != nullptr;
        };
        QVERIFY(!fromLegend(0)); // stands on the left
        QVERIFY(fromLegend(1));
        QVERIFY(isOnTheRight(1));
        const int width = plot->canvas()->width();
        plot->otherColorChanged(1, Qt::darkRed);
        plot->enableZoom(true);
        drag(place(0, 3, 24), place(0, 7, 12));
        QVERIFY(isOnTheRight(1));
        const auto zoomed = shownRange(QwtPlot::yRight);
        plot->updateSens(1);
        QVERIFY(isOnTheRight(0)); // they swap
        plot->updateSens(0);
        QCOMPARE(shownRange(QwtPlot::yRight), zoomed);
        QTest::mouseClick(plot->canvas(), Qt::RightButton);
        QVERIFY(isOnTheRight(1) && shownRange(QwtPlot::yRight) != zoomed);
        QTimer::singleShot(0, plot.data(), [&] {
            auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            auto* const top = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("maxval"));
            top->setValue(77);
            Q_EMIT top->editingFinished();
            dialog->accept();
        });
        QTest::mousePress(plot->axisWidget(QwtPlot::yRight), Qt::RightButton);
        QCOMPARE(shownRange(QwtPlot::yRight).second, 77.0);
        QVERIFY(isOnTheRight(1) && shownRange(QwtPlot::yLeft).second != 77);
        for (const bool isShown : {true, false, true}) { // points, hidden, line
            QTest::mousePress(legendItem(1), Qt::RightButton);
            QCOMPARE(plot->axisEnabled(QwtPlot::yRight), isShown);
        }
        const PlotState before = plot->state();
        plot->showNextRight();
        QVERIFY(!plot->axisEnabled(QwtPlot::yRight) && plot->canvas()->width() > width);
        plot->setState(plot->state(), before);
        QVERIFY(isOnTheRight(1));
    }

    void aNewRunKeepsTheRightAxis_data()
    {
        columns<QVector<int>, int>({"channels", "right"});
        row("the same", QVector<int>{SENSOR_EXT_TEMP, SENSOR_VOLTAGE}, 1);
        row("elsewhere", QVector<int>{SENSOR_EXT_TEMP, SENSOR_PH, SENSOR_VOLTAGE}, 2);
        row("on the left", QVector<int>{SENSOR_VOLTAGE, SENSOR_PH}, -1);
        row("gone", QVector<int>{SENSOR_EXT_TEMP, SENSOR_PH}, -1);
        row("the quantity of the left", QVector<int>{SENSOR_EXT_TEMP, SENSOR_AMB_TEMP}, -1);
    }

    void aNewRunKeepsTheRightAxis()
    {
        const auto [ids, right] = fetched<QVector<int>, int>({"channels", "right"});
        show();
        plot->showNextRight();
        SensorList channels;
        for (const int id : ids)
            channels.append(SensorPtr::create(id));
        data->setDataNewEmpty(channels, 1);
        plot->setData();
        data->addSample(0, QVector<double>(ids.size(), 3));
        plot->Update();
        QCOMPARE(plot->axisEnabled(QwtPlot::yRight), right > 0);
        if (right > 0)
            QCOMPARE(data->getRightIndex(), right);
    }

    void escapeEndsADrag()
    {
        show();
        int stopped = 0;
        auto* stop = new QAction(plot.data());
        stop->setShortcut(Qt::Key_Escape);
        connect(stop, &QAction::triggered, this, [&stopped] { ++stopped; });
        plot->addAction(stop);
        plot->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(plot.data()));
        plot->enableMarker(true);
        cross(0, 5);
        press(pixel(0, 5));
        moveTo(pixel(0, 8));
        QTest::keyClick(plot.data(), Qt::Key_Escape);
        QCOMPARE(plot->curveMarker.first()->xValue(), 5.0);
        moveTo(pixel(0, 2));
        QTest::mouseRelease(plot->canvas(), Qt::LeftButton, {}, pixel(0, 2));
        QCOMPARE(plot->curveMarker.first()->xValue(), 5.0);
        plot->enableZoom(true);
        press(pixel(0, 6));
        moveTo(pixel(0, 8) + QPoint(0, 50));
        QTest::keyClick(plot.data(), Qt::Key_Escape);
        QTest::mouseRelease(plot->canvas(), Qt::LeftButton, {}, pixel(0, 8) + QPoint(0, 50));
        QCOMPARE(shownRange(), qMakePair(0.0, 10.0));
        QCOMPARE(stopped, 0);
        QTest::keyClick(plot.data(), Qt::Key_Escape);
        QCOMPARE(stopped, 1);
    }

    void crossesNearEachOtherTellTenths()
    {
        show(1.5);
        cross(0, 120.2);
        QVERIFY(textOf(1).contains(QStringLiteral("= 2:00 ")));
        cross(0, 120.7);
        QVERIFY2(textOf(1).contains(QStringLiteral("= 2:00.2 ")), qPrintable(textOf(1)));
    }

    void aRangeSetByHandLasts_data()
    {
        columns<int>({"index"});
        row("of a logger", 0);
        row("of the class", -1);
    }

    void aRangeSetByHandLasts()
    {
        QFETCH(int, index);
        showCurves();
        PlotTest::show({800, 500}, GRAPH_LINE, index);
        QPair<double, double> offered;
        const auto choose = [&] {
            QTimer::singleShot(0, plot.data(), [&] {
                QWidget* const dialog = QApplication::activeModalWidget();
                auto* const least = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("minval"));
                auto* const most = dialog->findChild<QDoubleSpinBox*>(QStringLiteral("maxval"));
                offered = {least->value(), most->value()};
                least->setValue(-7);
                most->setValue(41);
                Q_EMIT least->editingFinished();
                Q_EMIT most->editingFinished();
                dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
            });
            QTest::mousePress(plot->axisWidget(QwtPlot::yLeft), Qt::RightButton);
        };
        choose();
        const auto wanted = qMakePair(-7.0, 41.0);
        QCOMPARE(shownRange(QwtPlot::yLeft), wanted);
        plot->setData();
        plot->Update();
        QCOMPARE(shownRange(QwtPlot::yLeft), wanted);
        choose();
        QCOMPARE(offered, wanted);
        plot->enableZoom(true);
        drag(place(0, 3, 30), place(0, 7, 12)); // the height counts in both
        QVERIFY(qAbs(shownRange(QwtPlot::yLeft).first - 12) < 0.3 &&
                qAbs(shownRange(QwtPlot::yLeft).second - 30) < 0.3);
    }

    void theChosenGraphHasAFrame()
    {
        show();
        const auto edge = [this] { return plot->grab(QRect(100, 1, 1, 1)).toImage().pixelColor(0, 0); };
        const QColor before = edge();
        plot->setActivePlot(0);
        QVERIFY(Contrast::between(edge(), before) > Contrast::least);
        plot->setActivePlot(-1);
        QCOMPARE(edge(), before);
    }

    void theAxisIsOfACurveThatIsSeen()
    {
        load(data.data(), {SENSOR_GPS_LAT, SENSOR_PH}, {{47, 47, 47}, {7, 8, 9}});
        PlotTest::show({600, 400});
        plot->updateSens(0);
        QCOMPARE(plot->getActiveSens(), 1);
        QVERIFY(plot->axisTitle(QwtPlot::yLeft).text().startsWith(QLatin1String("pH")));
        load(data.data(), {SENSOR_VOLTAGE, SENSOR_PH}, {{1, 2, 3}, {7, 8, 9}});
        plot->setData();
        plot->updateSens(0);
        for (int i = 0; i < 2; ++i)
            QTest::mousePress(legendItem(0), Qt::RightButton);
        QCOMPARE(plot->getActiveSens(), 1);
        QVERIFY(plot->axisTitle(QwtPlot::yLeft).text().startsWith(QLatin1String("pH")));
    }

    void whatCannotBeDoneIsSaid_data()
    {
        columns<QVector<double>, QVector<double>, int, QString>({"values", "crosses", "degree", "word"});
        row("no cross", QVector<double>{1, 2, 3}, QVector<double>{}, 1, "two markers");
        row("one place", QVector<double>{1, 2, 3}, QVector<double>{1, 1}, 1, "same place");
        row("flat", QVector<double>{2, 2, 2, 2}, QVector<double>{0, 3}, 1, "flat");
        row("two places", QVector<double>{1, 2, 3}, QVector<double>{0, 1}, 2, "three places");
        row("area of a place", QVector<double>{1, 2, 3}, QVector<double>{1, 1}, 0, "same place");
        row("empty", QVector<double>{}, QVector<double>{}, -1, "no curve");
        row("bars", QVector<double>{1, 2, 3}, QVector<double>{}, -2, "graph view");
    }

    void whatCannotBeDoneIsSaid()
    {
        const auto [values, crosses, degree, word] =
            fetched<QVector<double>, QVector<double>, int, QString>({"values", "crosses", "degree", "word"});
        load(data.data(), {SENSOR_VOLTAGE}, {values});
        PlotTest::show({600, 400}, degree == -2 ? GRAPH_BAR : GRAPH_LINE);
        QSignalSpy told(plot.data(), &Plot::told);
        for (double x : crosses)
            cross(0, x);
        if (degree < 0) {
            plot->enableMarker(true);
            QTest::mouseClick(plot->canvas(), Qt::LeftButton);
        } else if (degree == 0) {
            plot->doIntegral();
        } else {
            plot->doRegression(degree);
        }
        QCOMPARE(plot->markers.size(), 2 * crosses.size());
        QCOMPARE(told.size(), 1);
        QVERIFY2(told.first().first().toString().contains(word), qPrintable(told.first().first().toString()));
    }

    void crossesOnTwoCurvesAreNotFitted()
    {
        show();
        QSignalSpy told(plot.data(), &Plot::told);
        cross(0, 2);
        cross(1, 8);
        QCOMPARE(plot->curveMarker.first()->iSens, 0);
        plot->doRegression(1);
        QCOMPARE(told.size(), 1);
    }

    void twoCrossesTellWhatLiesBetween()
    {
        show();
        QSignalSpy told(plot.data(), &Plot::twoMarkersUpdated);
        cross(0, 8);
        cross(0, 2);
        const QString line = told.last().first().toString();
        QCOMPARE(line, QStringLiteral("dt = 6.0 s;  dY = 12.0 °C;  dY/dt = 2.00 °C/s"));
        const auto between = [this] {
            QString found;
            for (const QwtPlotItem* item : plot->itemList(QwtPlotItem::Rtti_PlotMarker)) {
                const auto* marker = static_cast<const myPlotMarker*>(item);
                if (!plot->markers.contains(const_cast<myPlotMarker*>(marker)))
                    found = marker->label().text();
            }
            return found;
        };
        QCOMPARE(between(), QStringLiteral("Δt = 6.0 s\nΔy = 12.0 °C\nΔy/Δt = 2.00 °C/s"));
        cross(1, 8); // refused
        chooseFromXAxis(3);
        QCOMPARE(between(), QString()); // these stand over the time
        cross(0, 1);
        cross(0, 3);
        QVERIFY2(between().startsWith(QStringLiteral("Δx = ")) && between().contains(QStringLiteral("°C/V")),
                 qPrintable(between()));
        chooseFromXAxis(0);
        QVERIFY(between().startsWith(QStringLiteral("Δt")));
        plot->removeMarker(plot->markers[2]);
        QCOMPARE(between(), QString());
    }

    void theTangentGoesWithItsCurve()
    {
        show();
        plot->enableSlope(true);
        QTest::mouseMove(plot->canvas(), pixel(0, 5));
        moveTo(pixel(0, 5));
        QVERIFY(plot->markers.first()->isShown());
        // Labels are taken as ever, and the tangent waits.
        cross(0, 2);
        const myPlotMarker& text = *plot->markers[2];
        const QPoint at = text.pixelPos().toPoint();
        drag(at, at + QPoint(60, 10));
        QVERIFY((text.pixelPos() - at - QPointF(60, 10)).manhattanLength() < 3);
        for (int i = 0; i < 2; ++i)
            QTest::mousePress(legendItem(0), Qt::RightButton);
        QVERIFY(!plot->getCurve(0)->isVisible() && !plot->markers.first()->isShown());
    }

    void wheelAndMiddleButton()
    {
        show();
        const QPoint at = pixel(0, 7);
        const double x = plot->invTransform(QwtPlot::xBottom, at.x());
        const double y = plot->invTransform(QwtPlot::yLeft, at.y());
        const auto turn = [&](int notches) {
            QWheelEvent wheel(at, plot->canvas()->mapToGlobal(at), {}, {0, 120 * notches}, Qt::NoButton, {},
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(plot->canvas(), &wheel);
        };
        turn(2);
        QVERIFY(shownRange().second - shownRange().first < 7);
        QCoreApplication::processEvents(); // other labels leave another room
        QVERIFY(std::abs(plot->transform(QwtPlot::xBottom, x) - at.x()) < 12);
        QVERIFY(std::abs(plot->transform(QwtPlot::yLeft, y) - at.y()) < 5);
        const double before = shownRange().first;
        const double taken = plot->invTransform(QwtPlot::xBottom, at.x());
        drag(at, at - QPoint(50, 0), Qt::MiddleButton);
        QVERIFY(std::abs(plot->transform(QwtPlot::xBottom, taken) - (at.x() - 50)) < 2);
        QVERIFY(shownRange().first > before);
        turn(-6);
        QCOMPARE(shownRange(), qMakePair(0.0, 10.0));
    }

private:
    void show(double dt = 0.1)
    {
        showCurves(dt);
        connect(plot.data(), &Plot::changedActiveCurve, plot.data(),
                [this](int, int i) { plot->updateSens(i); });
        plot->enableZoom(true);
    }
};

QTEST_MAIN(TestGraphStates)
#include "test_graphstates.moc"
