#pragma once

#include <QtTest>

#include <QMenu>

#include <qwt_legend.h>
#include <qwt_scale_widget.h>

#include "graph/myplotcurve.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

/// A test on one graph, with a person who answers boxes.
class PlotTest : public GuardedTest
{
    Q_OBJECT

protected:
    void begin() override
    {
        // The offscreen platform says this of every dialog.
        guard->expect(QStringLiteral("propagateSizeHints"));
        data.reset(new ExpData);
        prompt = FakePrompt();
    }
    void finish() override { plot.reset(); }

    /// Makes the graph anew over the data as they are.
    void show(const QSize& size, graphtype type = GRAPH_LINE, int index = 0)
    {
        plot.reset(new Plot(data.data(), type, false, index));
        plot->setUserPrompt(&prompt);
        plot->resize(size);
        plot->show();
        QVERIFY(QTest::qWaitForWindowExposed(plot.data()));
        plot->Update();
        QCoreApplication::processEvents();
    }
    /// Where a value of a sensor stands on the canvas.
    QPoint place(int iSens, double x, double y) const
    {
        QwtScaleMap map = plot->canvasMap(QwtPlot::yLeft);
        plot->scaler->fixScaleY(&map, iSens);
        return QPointF(plot->transform(QwtPlot::xBottom, x), map.transform(y)).toPoint();
    }
    QWidget* legendItem(int i) const
    {
        return qobject_cast<QwtLegend*>(plot->legend())->legendWidget(plot->itemToInfo(plot->getCurve(i)));
    }
    /// Sensor 0 is the line y = slope * x + start, sensor 1 a parabola below it.
    void showCurves(double dt = 0.1, double slope = 2, double start = 10)
    {
        QVector<double> line, parabola;
        for (int i = 0; i < curveSamples; ++i) {
            line << slope * (i * dt) + start;
            parabola << 0.0005 * i * i - 0.06 * i + 3;
        }
        load(data.data(), {SENSOR_EXT_TEMP, SENSOR_VOLTAGE}, {line, parabola}, dt);
        data->setXRange();
        show({800, 500});
    }
    /// Where a curve passes.
    QPoint pixel(int iSens, double x) const { return place(iSens, x, data->interpolateY(iSens, x)); }
    QString textOf(int i) const { return plot->markers.value(i)->label().text(); }
    void cross(int iSens, double x) { plot->newMarker(iSens, -1, x, data->interpolateY(iSens, x)); }
    void click(const QPoint& at) { QTest::mouseClick(plot->canvas(), Qt::LeftButton, {}, at); }
    void press(const QPoint& at) { QTest::mousePress(plot->canvas(), Qt::LeftButton, {}, at); }
    void release() { QTest::mouseRelease(plot->canvas(), Qt::LeftButton); }
    void drag(const QPoint& from, const QPoint& to, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mousePress(plot->canvas(), button, {}, from);
        moveTo(to);
        QTest::mouseRelease(plot->canvas(), button, {}, to);
    }
    void chooseFromXAxis(int entry)
    {
        QTest::mousePress(plot->axisWidget(QwtPlot::xBottom), Qt::RightButton);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        menu->actions().at(entry)->trigger();
        menu->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QPair<double, double> shownRange(int axis = QwtPlot::xBottom) const
    {
        return {plot->axisInterval(axis).minValue(), plot->axisInterval(axis).maxValue()};
    }
    void moveTo(const QPoint& at)
    {
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(plot->canvas(), &move);
    }

    static constexpr int curveSamples = 101;
    FakePrompt prompt;
    QScopedPointer<ExpData> data;
    QScopedPointer<Plot> plot;
};
