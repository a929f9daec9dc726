#pragma once

#include <QtTest>

#include <qwt_legend.h>

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
    void moveTo(const QPoint& at)
    {
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(plot->canvas(), &move);
    }

    FakePrompt prompt;
    QScopedPointer<ExpData> data;
    QScopedPointer<Plot> plot;
};
