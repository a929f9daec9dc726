// The tools of the graph toolbar: mouse modes and analyses of curves.

#include "app/mainwindow.h"

#include "app/iconlists.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"

#include <QAction>
#include <QComboBox>
#include <QMouseEvent>

void MainWindow::forEachPlot(const std::function<void(Plot*)>& visit)
{
    for (int i = 0; i < mTembrin->nMaxTembrins(); ++i)
        visit(mTembrin->plotAt(i));
    visit(graph);
}

/// Ends every other mouse mode; `mode` is null for slope mode.
void MainWindow::leaveOtherModes(const QAction* mode)
{
    struct Mode
    {
        QAction* action;
        void (Plot::*enable)(bool);
    };
    for (const Mode& other : {Mode{zoomAct, &Plot::enableZoom}, Mode{markerAct, &Plot::enableMarker},
                              Mode{annotateAct, &Plot::enableAnnotate}}) {
        if (other.action == mode || !other.action->isChecked())
            continue;
        other.action->setChecked(false);
        forEachPlot([&](Plot* plot) { (plot->*other.enable)(false); });
    }
    if (mode && slopeMode) {
        slopeMode = false;
        mTembrin->getActivePlot()->enableSlope(false);
    }
}

void MainWindow::doZoom()
{
    const bool tf = zoomAct->isChecked();
    leaveOtherModes(zoomAct);
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i)
        mTembrin->plotAt(i)->enableZoom(tf);
    graph->enableZoom(tf);
}

void MainWindow::doMarker()
{
    leaveOtherModes(markerAct);
    forEachPlot([tf = markerAct->isChecked()](Plot* plot) { plot->enableMarker(tf); });
}

void MainWindow::doAnnotate()
{
    leaveOtherModes(annotateAct);
    forEachPlot([tf = annotateAct->isChecked()](Plot* plot) { plot->enableAnnotate(tf); });
}

void MainWindow::doCrop()
{
    mTembrin->getActivePlot()->doCrop();
    updateAll();
}

void MainWindow::doSlope()
{
    constexpr int fewestSamples = 3;
    if (!slopeMode && mTembrin->getActiveData()->getXSize() < fewestSamples)
        return;
    slopeMode = !slopeMode;
    leaveOtherModes(nullptr);
    mTembrin->getActivePlot()->enableSlope(slopeMode);
}

void MainWindow::doLinRegression()
{
    mTembrin->getActivePlot()->doRegression(1);
}

void MainWindow::doQuadRegression()
{
    mTembrin->getActivePlot()->doRegression(2);
}

void MainWindow::doFunctions(int select)
{
    switch (regression->itemData(select).toInt()) {
    case REG_SLOPE:
        doSlope();
        break;
    case REG_LIN:
        doLinRegression();
        break;
    case REG_QUAD:
        doQuadRegression();
        break;
    case REG_SMOOTH:
        if (mTembrin->isAnyRunning())
            break;
        mTembrin->getActiveData()->smoothCurve();
        updateAll();
        break;
    case REG_DERIVATIVE:
        mTembrin->getActiveData()->addSpecialCurve(ExpData::CURVE_DERIV);
        updateAll();
        break;
    case REG_INTEGRAL:
        mTembrin->getActivePlot()->doIntegral();
        break;
    }
}

/// A press on the icon of a list repeats its present item; only one on the arrow beside it opens the list.
bool MainWindow::isPressOnIcon(const QEvent* event) const
{
    if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonDblClick)
        return false;
    return std::abs(static_cast<const QMouseEvent*>(event)->x() - iconDim / 2) <= iconDim / 4;
}
