#include <QImage>
#include <QTemporaryDir>

#include <qwt_symbol.h>
#include <qwt_text.h>

#include "common/settings.h"
#include "graph/bubbleedit.h"
#include "tests/graph/plottest.h"

class TestMarkers : public PlotTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }
    void clicksPlaceCrosses_data()
    {
        columns<double, int, int, int, QString>({"x", "besideX", "rows", "found", "text"});
        row("on the curve", 5.0, 0, 0, 0, "Ext. Temperature =");
        row("high above it", 5.0, 0, -150, 0, "Ext. Temperature =");
        row("at its start, beside it", 0.0, -10, 0, 1, "Voltage = 3.00");
        row("past its end within reach", 10.0, 15, 0, 0, QString());
        row("past its end out of reach", 10.0, 22, 0, -1, QString());
    }

    void clicksPlaceCrosses()
    {
        const auto [x, besideX, rows, found, text] =
            fetched<double, int, int, int, QString>({"x", "besideX", "rows", "found", "text"});
        showCurves();
        // Room on both sides of the curves.
        plot->setAxisScale(QwtPlot::xBottom, -1, 11);
        plot->replot();
        plot->enableMarker(true);
        data->setNeedSave(false);
        click(pixel(qMax(found, 0), x) + QPoint(besideX, rows));
        QCOMPARE(plot->curveMarker.size(), found < 0 ? 0 : 1);
        QCOMPARE(data->isNeedSave(), found >= 0);
        if (found < 0)
            return;
        const myPlotMarker* const cross = plot->curveMarker.first();
        QCOMPARE(cross->iSens, found);
        QVERIFY(qAbs(cross->yValue() - data->interpolateY(found, cross->xValue())) < 0.02);
        QVERIFY(cross->xValue() >= 0 && cross->xValue() <= 10);
        QVERIFY(text.isEmpty() || qAbs(cross->xValue() - x) < (rows == 0 ? 0.1 : 0.5));
        QVERIFY2(textOf(1).startsWith(text), qPrintable(textOf(1)));
    }

    void crossesKeepToTheirCurves()
    {
        showCurves();
        plot->enableMarker(true);
        click(pixel(0, 2));
        click(pixel(0, 8));
        click(pixel(0, 5) - QPoint(0, 60));
        QCOMPARE(plot->markers.size(), 4);
        drag(pixel(0, 2), pixel(1, 3));
        for (const myPlotMarker* marker : plot->markers)
            QCOMPARE(marker->iSens, 0);
        QVERIFY(qAbs(plot->curveMarker[0]->xValue() - 3) < 0.5);
    }

    void crossBeyondTheEndIsAGhost()
    {
        showCurves();
        plot->setAxisScale(QwtPlot::xBottom, 0, 20);
        plot->replot();
        plot->enableMarker(true);
        click(pixel(0, 8));
        const myPlotMarker* const cross = plot->curveMarker.first();
        press(pixel(0, 8));
        moveTo(pixel(0, 10) + QPoint(30, 0));
        QCOMPARE(cross->type, MARKER_X_GHOST);
        QCOMPARE(cross->symbol()->pen().color(), QColor(Qt::gray));
        QVERIFY(!plot->markers[1]->isShown());
        moveTo(pixel(0, 6));
        QCOMPARE(cross->type, MARKER_X);
        QCOMPARE(cross->symbol()->pen().color(), QColor(Qt::black));
        QVERIFY(plot->markers[1]->isShown());
        moveTo(pixel(0, 10) + QPoint(30, 0));
        release();
        QVERIFY(plot->markers.isEmpty());
        QVERIFY(plot->curveMarker.isEmpty());
    }

    void lockFreesAPlace()
    {
        showCurves();
        placeCrosses(0, 2, 8);
        QTest::mouseDClick(plot->canvas(), Qt::LeftButton, {}, pixel(0, 2));
        QCOMPARE(prompt.asked, QStringList(QStringLiteral("Lock marker|Do you want to lock this marker?")));
        QCOMPARE(plot->curveMarker.size(), 2);
        prompt.answer = UserPrompt::Answer::Yes;
        QTest::mouseDClick(plot->canvas(), Qt::LeftButton, {}, plot->markers[1]->pixelPos().toPoint());
        QCOMPARE(plot->curveMarker.size(), 1);
        QVERIFY(plot->markers[0]->isLocked() && !plot->markers[0]->isShown() && plot->markers[1]->isShown());
        plot->enableMarker(true);
        click(pixel(0, 5));
        QCOMPARE(plot->curveMarker.size(), 2);
        chooseFromMenu(QStringLiteral("lockMarker"), pixel(0, 5));
        QCOMPARE(plot->curveMarker.size(), 1);
        QCOMPARE(prompt.asked.size(), 2);
    }

    void textsFollowTheMouseAndTheRun()
    {
        showCurves();
        data->finalData = false;
        plot->Update();
        plot->enableMarker(true);
        click(pixel(0, 2));
        myPlotMarker* const text = plot->markers[1];
        QCOMPARE(QPoint(qAbs(text->xOffset), qAbs(text->yOffset)), QPoint(50, 50));
        drag(text->pixelPos().toPoint(), pixel(0, 2) + QPoint(80, -120));
        QVERIFY(qAbs(text->xOffset - 80) <= 2 && qAbs(text->yOffset + 120) <= 2);
        // The axis grows, the distance in pixels stays.
        for (int i = curveSamples; i < 5 * curveSamples; ++i)
            data->addSample(i * 0.1, {10, 1});
        plot->Update();
        const QPointF way = text->pixelPos() - plot->markers[0]->pixelPos();
        QVERIFY(qAbs(way.x() - text->xOffset) <= 2 && qAbs(way.y() - text->yOffset) <= 2);
    }

    void removalAsksAndTakesThePair()
    {
        showCurves();
        placeCrosses(0, 2, 8);
        plot->doRegression(1);
        plot->newAnnotation(QPointF(60, 60));
        delete plot->findChild<BubbleEdit*>();
        QCOMPARE(plot->markers.size(), 7);
        plot->verifyAndRemoveMarker(5);
        QCOMPARE(prompt.asked.takeLast(),
                 QStringLiteral("Delete regression|Do you want to remove this regression?"));
        QCOMPARE(plot->markers.size(), 7);
        prompt.answer = UserPrompt::Answer::Yes;
        chooseFromMenu(QStringLiteral("deleteMarker"), pixel(0, 2));
        QCOMPARE(plot->markers.size(), 5);
        QCOMPARE(plot->curveMarker.size(), 1);
        QTest::mouseClick(plot->canvas(), Qt::RightButton, {}, plot->markers[4]->pixelPos().toPoint());
        QCOMPARE(prompt.asked.takeLast(),
                 QStringLiteral("Delete annotation|Do you want to remove this annotation?"));
        plot->verifyAndRemoveMarker(3);
        QCOMPARE(plot->markers.size(), 2);
        plot->setMarkers();
        QVERIFY(plot->markers.isEmpty() && plot->curveMarker.isEmpty());
    }

    void cropInAnyOrder_data()
    {
        columns<bool, double, double>({"agreed", "first", "second"});
        row("in order", true, 2.05, 8.05);
        row("reversed", true, 8.05, 2.05);
        row("refused", false, 2.05, 8.05);
    }

    void cropInAnyOrder()
    {
        const auto [agreed, first, second] = fetched<bool, double, double>({"agreed", "first", "second"});
        showCurves();
        placeCrosses(0, first, second);
        for (double x : {1.0, 5.0, 9.0}) {
            plot->newAnnotation(pixel(0, x));
            delete plot->findChild<BubbleEdit*>();
        }
        prompt.answer = agreed ? UserPrompt::Answer::Yes : UserPrompt::Answer::No;
        plot->doCrop();
        QCOMPARE(prompt.asked.size(), 1);
        QCOMPARE(plot->markers.size(), agreed ? 1 : 7);
        QCOMPARE(data->getXSize(), agreed ? 60 : curveSamples);
        QCOMPARE(data->getXAt(0), agreed ? 2.1 : 0.0);
        plot->doCrop();
        QCOMPARE(prompt.asked.size(), agreed ? 1 : 2);
    }

    void regressionTexts_data()
    {
        columns<int, int, double, double, double, QString>(
            {"sensor", "degree", "dt", "slope", "start", "text"});

        row("seconds", 0, 1, 0.1, 2.0, 10.0, "Ext. Temperature = 2.000 °C/s·t + 10.00 °C\nr = 1.000");
        row("minutes", 0, 1, 5.0, 0.2, 0.0, "Ext. Temperature = 12.00 °C/min·t + 0 °C\nr = 1.000");
        row("falling from below zero", 0, 1, 0.1, -0.5, -3.26,
            "Ext. Temperature = -0.5000 °C/s·t - 3.260 °C\nr = 1.000");
        row("hardly rising", 0, 1, 0.1, 0.004, 1.0,
            "Ext. Temperature = 0.004000 °C/s·t + 1.000 °C\nr = 1.000");
        row("parabola", 1, 2, 0.1, 2.0, 10.0,
            "Voltage = 0.05000 V/s²·t² - 0.6000 V/s·t + 3.000 V\nr = 1.000");
    }

    void regressionTexts()
    {
        const auto [sensor, degree, dt, slope, start, text] =
            fetched<int, int, double, double, double, QString>(
                {"sensor", "degree", "dt", "slope", "start", "text"});
        showCurves(dt, slope, start);
        placeCrosses(sensor, 80 * dt, 20 * dt);
        plot->doRegression(degree);
        plot->doRegression(degree); // takes the place of the first
        QCOMPARE(plot->markers.size(), 6);
        QCOMPARE(textOf(5), text);
        const myPlotMarker& line = *plot->markers[4];
        QCOMPARE(line.linX0, 20 * dt);
        QCOMPARE(line.linX1, 80 * dt);
        QVERIFY(qAbs(line.yValue() - data->interpolateY(sensor, 50 * dt)) < 1e-6);
    }

    void crossOnARegressionLine()
    {
        showCurves();
        placeCrosses(1, 2, 8);
        plot->doRegression(1);
        const myPlotMarker* const line = plot->markers[4];
        placeCrosses(0, 0, 0); // refused
        QCOMPARE(plot->markers.size(), 6);
        for (int i : {0, 2})
            plot->lockMarker(plot->markers[i], false);
        QwtScaleMap map = line->ownMap(plot->canvasMap(QwtPlot::yLeft));
        const auto onLine = [&](double x) {
            return QPointF(plot->transform(QwtPlot::xBottom, x), map.transform(line->calcRegValue(x)))
                .toPoint();
        };
        plot->enableMarker(true);
        click(onLine(5));
        QCOMPARE(plot->curveMarker.first()->iReg, 4);
        drag(onLine(5), pixel(1, 7)); // the curve is nearer there
        click(onLine(3));
        for (const myPlotMarker* cross : plot->curveMarker) {
            QCOMPARE(cross->iReg, 4);
            QVERIFY(qAbs(cross->yValue() - line->calcRegValue(cross->xValue())) < 0.01);
        }
        plot->doRegression(1);
        QCOMPARE(plot->markers.size(), 10);
        // A marker earlier in the list goes, the line keeps being known.
        plot->removeMarker(plot->markers[0]);
        QCOMPARE(plot->curveMarker.first()->iReg, 2);
        plot->removeMarker(plot->markers[2]);
        QCOMPARE(plot->curveMarker.first()->iReg, -1);
        QCOMPARE(plot->curveMarker.first()->yValue(),
                 data->interpolateY(1, plot->curveMarker.first()->xValue()));
    }

    void aFastWaveIsDrawnAsHighAsItIs()
    {
        showCurves();
        const double perPixel = 10.0 / plot->canvas()->width(); // seconds
        CurveFit::Fit fit;
        fit.curve = {CurveFit::Model::Sine, QString(), {5, 2 * M_PI / (0.43 * perPixel), 0.3, 20}};
        fit.errors = {0, 0, 0, 0};
        plot->addFit({fit, {}, {}}, 0, 2, 8);
        const QImage canvas = plot->canvas()->grab().toImage();
        int reached = 0;
        const int first = place(0, 4, 20).x(); // behind the curve itself
        const int last = place(0, 7, 20).x();
        // The text lies over its upper half.
        for (int column = first; column < last; ++column) {
            for (int row = place(0, 0, 15.7).y(); row < place(0, 0, 15.2).y(); ++row) {
                if (canvas.pixelColor(column, row).saturation() > 60) {
                    ++reached;
                    break;
                }
            }
        }
        QVERIFY2(reached > (last - first) / 2, qPrintable(QString::number(reached)));
    }

    void integralOutlivesNewCurves()
    {
        showCurves();
        placeCrosses(0, 8, 2);
        plot->doIntegral();
        QCOMPARE(plot->markers[4]->integral, 120.0);
        QCOMPARE(textOf(5), QStringLiteral("Integral = 120 °C*s"));
        plot->setData();
        plot->Update();
        QCOMPARE(plot->markers[4]->curve.data(), plot->getCurve(0));
        const QImage canvas = plot->canvas()->grab().toImage();
        int filled = 0; // and seen through
        for (int row = 0; row < canvas.height(); ++row) {
            for (int column = 0; column < canvas.width(); ++column) {
                const QColor color = canvas.pixelColor(column, row);
                filled += color.red() > color.blue() + 50 && color.green() > 100;
            }
        }
        const double width = plot->transform(QwtPlot::xBottom, 8) - plot->transform(QwtPlot::xBottom, 2);
        QVERIFY2(filled > 50 * width, qPrintable(QString::number(filled)));
    }

    void xyRegressionRunsToTheRight()
    {
        showCurves();
        data->setXYIndex(0);
        plot->Update();
        plot->enableMarker(true);
        const auto at = [&](int i) { return place(1, data->getYAt(0, i), data->getYAt(1, i)); };
        plot->getCurve(0)->hide();
        click(at(80));
        click(at(20));
        QCOMPARE(plot->curveMarker.size(), 2);
        QVERIFY(qAbs(plot->curveMarker[0]->xValue() - data->getYAt(0, 80)) < 0.2);
        QVERIFY(textOf(1).contains(QLatin1String("Voltage = ")) &&
                textOf(1).startsWith(QLatin1String("Ext.")));
        plot->doRegression(2);
        plot->doIntegral();
        QCOMPARE(plot->markers.size(), 6);
        QVERIFY(plot->markers[4]->linX0 > plot->markers[4]->linX1);
        QVERIFY(textOf(5).contains(QStringLiteral("[Ext. Temperature]²")));
        for (myPlotMarker* marker : qAsConst(plot->markers))
            marker->setShown(marker->type == MARKER_REGRESSION);
        const auto darkest = [&] {
            const QRect around(at(50) - QPoint(9, 9), QSize(19, 19));
            const QImage picture = plot->canvas()->grab(around).toImage();
            int least = 255;
            for (int i = 0; i < picture.width() * picture.height(); ++i)
                least = qMin(least, picture.pixelColor(i % 19, i / 19).lightness());
            return least;
        };
        plot->setGrid(false);
        QVERIFY(darkest() < 110);
        plot->markers[4]->setShown(false);
        QVERIFY(darkest() > 110);
    }

    void annotationIsEditedWhereItStands()
    {
        QTemporaryDir dir;
        QImage picture(300, 150, QImage::Format_RGB32);
        picture.fill(Qt::blue);
        prompt.file = dir.filePath(QStringLiteral("blue.png"));
        QVERIFY(picture.save(prompt.file));
        showCurves();
        plot->enableAnnotate(true);
        click(QPoint(3, 200));
        plot->enableAnnotate(false);
        myPlotMarker* const label = plot->markers.value(0);
        QVERIFY(label);
        QVERIFY((label->pixelPos() - QPointF(50, 200)).manhattanLength() < 1);
        QCOMPARE(textOf(0), QStringLiteral("New label"));

        auto* dialog = plot->findChild<BubbleEdit*>();
        QVERIFY(dialog && dialog->isModal());
        QTest::keyClicks(dialog->findChild<QWidget*>(QStringLiteral("textEdit")), QStringLiteral("<b>Tea"));
        QTest::mouseClick(dialog->findChild<QWidget*>(QStringLiteral("imageButton")), Qt::LeftButton);
        dialog->reject();
        QCOMPARE(textOf(0), QStringLiteral("<b>Tea"));
        QVERIFY(label->isBubble() && label->isPic());

        drag(QPoint(50, 200), QPoint(300, 200));
        const QRectF box = label->balloonRect(label->pixelPos());
        const QImage canvas = plot->canvas()->grab().toImage();
        QCOMPARE(canvas.pixelColor(QPointF(300, box.top() + 8 + 25).toPoint()), QColor(Qt::blue));
        drag(label->balloonTip(label->pixelPos()).toPoint(), QPoint(400, 150));
        QVERIFY((label->balloonTip(label->pixelPos()) - QPointF(400, 150)).manhattanLength() <= 2);
        QVERIFY((label->pixelPos() - QPointF(300, 200)).manhattanLength() <= 1);
        label->setPic(QPixmap());
        const double typed = label->hotBox(QPointF()).width();
        label->setText(QStringLiteral("Tea"));
        QVERIFY(label->hotBox(QPointF()).width() < 0.7 * typed); // it stands there as it was typed
        label->setText(QString());
        QCOMPARE(label->balloonRect(QPointF()).width(), 50.0);
        // The dialog keeps to its note when one in front of it goes, and goes with it.
        QTRY_VERIFY(!plot->findChild<BubbleEdit*>());
        plot->newAnnotation(QPointF(200, 100));
        plot->findChild<BubbleEdit*>()->reject(); // with nothing written
        QCOMPARE(plot->markers.size(), 1);
        QTRY_VERIFY(!plot->findChild<BubbleEdit*>());
        plot->newAnnotation(QPointF(200, 100));
        QPointer<BubbleEdit> open = plot->findChild<BubbleEdit*>();
        QVERIFY(open);
        plot->removeMarker(label);
        QTest::keyClicks(open->findChild<QWidget*>(QStringLiteral("textEdit")), QStringLiteral("Milk"));
        QCOMPARE(textOf(0), QStringLiteral("Milk"));
        plot->setMarkers();
        QTRY_VERIFY(!open || !open->isVisible());
    }

    void tangentAtThePointer()
    {
        showCurves();
        data->setNeedSave(false);
        plot->enableSlope(true);
        moveTo(pixel(0, 5) + QPoint(0, 40));
        QCOMPARE(plot->markers.size(), 1);
        const myPlotMarker* const text = plot->markers.first();
        QCOMPARE(textOf(0), QStringLiteral("slope = 2.0 °C/s"));
        QVERIFY(text->isShown());
        QVERIFY(text->pixelPos().y() < pixel(0, 5).y());
        moveTo(pixel(0, 9));
        QVERIFY2(text->pixelPos().y() > pixel(0, 9).y(), "no room above");
        moveTo(pixel(0, 2));
        QVERIFY2(text->pixelPos().y() < pixel(0, 2).y(), "no room below");
        plot->setAxisScale(QwtPlot::xBottom, -1, 11);
        plot->replot();
        moveTo(pixel(0, 0) + QPoint(-4, 10));
        QVERIFY2(text->isShown(), "at the first sample");
        placeCrosses(0, 4, 6);
        moveTo(pixel(0, 9));
        QVERIFY(qAbs(text->connectTo->xValue() - 6) < 0.2);
        plot->updateSens(1);
        QCOMPARE(text->iSens, 1);
        plot->setMarkers();
        QCOMPARE(plot->markers.size(), 1);
        data->setNeedSave(false);
        plot->enableSlope(false);
        QVERIFY(plot->markers.isEmpty());
        QVERIFY(!data->isNeedSave());
    }

    void photogateTexts()
    {
        QVector<QVector<double>> gates(2, QVector<double>(50, 0.0));
        std::fill_n(gates[0].begin() + 10, 10, 5);
        std::fill_n(gates[1].begin() + 30, 5, 5);
        load(data.data(), {QUELLMARK_PHOTOGATE, QUELLMARK_PHOTOGATE}, gates, 0.01);
        data->setXRange();
        PlotTest::show({800, 500});
        QCOMPARE(plot->markers.size(), 3);
        QCOMPARE(textOf(0), QStringLiteral("dt = 0.100 s\nwidth=0.05 m\nSpeed = 0.50 m/s"));
        QCOMPARE(textOf(2), QStringLiteral("dt = 0.175 s\ndV=0.50 m/s\nAcceleration = 2.86 m/s^2"));
        // After a crop they point at the same passage.
        const double passed = plot->markers[0]->pointToXVal;
        data->doCrop(0.05, 0.45);
        plot->setData();
        QCOMPARE(plot->markers[0]->pointToXVal, passed);
        prompt.answer = UserPrompt::Answer::Yes;
        plot->verifyAndRemoveMarker(0);
        plot->lockMarker(plot->markers[0], true);
        QTest::mouseClick(plot->canvas(), Qt::RightButton, {}, plot->markers[0]->pixelPos().toPoint());
        QCOMPARE(plot->markers.size(), 3);
        QVERIFY(prompt.asked.isEmpty());
    }

    void storedMarkers()
    {
        data.reset(new ExpData(inFahrenheit()));
        showCurves();
        const auto stored = [&](markerType type, double x, bool isLocked = false) {
            auto* marker = new myPlotMarker(0, type);
            marker->setValue(x, 20);
            if (isLocked)
                marker->lock();
            return marker;
        };
        myPlotMarker* const label = stored(MARKER_ANNOTATE, 3);
        label->setLabel(QStringLiteral("warm"));
        plot->setMarkers({stored(MARKER_FLOATING_TEXT, 1), stored(MARKER_X, 1),
                          stored(MARKER_FLOATING_TEXT, 2), label, stored(MARKER_X, 2, true),
                          stored(MARKER_FLOATING_TEXT, 3), stored(MARKER_X, 5),
                          stored(MARKER_REGRESSION, 4)});
        plot->Update();
        QVector<int> kinds;
        for (const myPlotMarker* marker : qAsConst(plot->markers)) {
            kinds << marker->type;
            if (marker->type == MARKER_FLOATING_TEXT)
                QVERIFY(marker->connectTo && marker->connectTo->connectTo == marker && marker->isShown());
        }
        QCOMPARE(kinds, (QVector<int>{MARKER_X, MARKER_FLOATING_TEXT, MARKER_ANNOTATE, MARKER_X,
                                      MARKER_FLOATING_TEXT, MARKER_X, MARKER_FLOATING_TEXT, MARKER_REGRESSION,
                                      MARKER_FLOATING_TEXT}));
        QCOMPARE(plot->curveMarker, (QList<myPlotMarker*>{plot->markers[0], plot->markers[5]}));
        QCOMPARE(plot->markers[0]->yValue(), data->getSens(0)->convertToAltUnit(20));
        QVERIFY(label->label().font().bold());
        QVERIFY(textOf(6).contains(QLatin1String("Time = 5.0 s")));
        QCOMPARE(Plot::markerIndex(label->typeName, false), int(MARKER_ANNOTATE));
        QCOMPARE(Plot::markerIndex(QString(), false), -1);
    }

    void legendHidesMarkers()
    {
        showCurves();
        placeCrosses(0, 2, 8);
        QTest::mouseClick(legendItem(0), Qt::RightButton);
        QVERIFY(plot->markers[0]->isShown());
        QTest::mouseClick(legendItem(0), Qt::RightButton);
        for (const myPlotMarker* marker : qAsConst(plot->markers))
            QVERIFY(!marker->isShown());
        plot->enableMarker(true);
        click(pixel(1, 5));
        QCOMPARE(plot->curveMarker.size(), 2);
    }

    // Hundreds of moves in the time that a handful may take, so that only a search through all samples fails.
    void longRunsStaySmooth()
    {
        QVector<double> v;
        for (int i = 0; i < 1000000; ++i)
            v << i % 7;
        load(data.data(), {SENSOR_VOLTAGE}, {v});
        data->setXRange();
        PlotTest::show({800, 500});
        plot->enableMarker(true);
        click(QPoint(100, 200));
        press(plot->markers[0]->pixelPos().toPoint());
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 300; ++i)
            moveTo(QPoint(100 + i, 200));
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
    }

private:
    void placeCrosses(int iSens, double x0, double x1)
    {
        cross(iSens, x0);
        cross(iSens, x1);
    }
    void chooseFromMenu(const QString& action, const QPoint& at)
    {
        QTest::mouseClick(plot->canvas(), Qt::RightButton, {}, at);
        auto* menu = plot->findChild<QMenu*>(QStringLiteral("markerMenu"));
        QVERIFY(menu);
        menu->findChild<QAction*>(action)->trigger();
        menu->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

QTEST_MAIN(TestMarkers)
#include "test_markers.moc"
