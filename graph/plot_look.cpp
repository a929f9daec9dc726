// How a graph looks: titles, colours and sizes, on the screen and on paper.

#include "graph/plot.h"

#include <algorithm>

#include <QPainter>
#include <QResizeEvent>

#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/graphkind.h"
#include "graph/graphlegend.h"
#include "graph/graphmouse.h"
#include "graph/markerlayer.h"
#include "graph/myplotcurve.h"
#include "graph/pinnedcurves.h"

namespace {

constexpr double titleGrowth = 1.15; // of the other texts

QString busyTitle()
{
    return Plot::tr("Kormelin is busy with data collection, please wait");
}

} // namespace

void Plot::setGrid(bool shown)
{
    grid->setVisible(shown);
    replot();
}

void Plot::setAxisTitleAndSize(int axisID, const QString& text, int /*size*/)
{
    axes->showText(axisID, text);
}

void Plot::updateTitle(const QString& text)
{
    QwtText newTitle(text, QwtText::PlainText);
    if (!isSized) {
        setTitle(newTitle);
        return;
    }
    const int room = canvas() ? canvas()->width() : width();
    const double growth = GraphFonts::isLow(height()) ? 1 : titleGrowth;
    newTitle.setFont(GraphFonts::fitted(
        GraphFonts::inPixels(titleFont, growth * GraphFonts::textPixels(height())), text, room));
    setTitle(newTitle);
}

// A cell of a class of eight is small, a graph on the wall is large.
void Plot::resizeEvent(QResizeEvent* event)
{
    QwtPlot::resizeEvent(event);
    isSized = true;
    fitTexts();
    replot(); // with as many ticks as there is room for now
}

// The room for the titles is what labels and legend leave. Before its first size a graph has nothing to fit
// them to.
void Plot::fitTexts()
{
    if (!isSized)
        return;
    const bool isLow = GraphFonts::isLow(height());
    plotLayout()->setSpacing(isLow ? 0 : 2);
    setContentsMargins(3, isLow ? 0 : 1, 8, isLow ? 0 : 1);
    axes->fitLabels();
    if (legendPart)
        legendPart->fit();
    curves->designPens();
    layer->fit();
    axes->setInnerTitle(isLow); // in all cells of a layout or in none
    updateLayout();
    axes->fitTitles();
    updateTitle(title().text());
    updateLayout();
}

// The frame of the chosen graph, in a colour that texts are still read on where there is no room beside them.
void Plot::paintEvent(QPaintEvent* event)
{
    QwtPlot::paintEvent(event);
    if (!isActive || index < 0)
        return;
    const QColor color(0x1e, 0x88, 0xe5);
    const double width = GraphFonts::isLow(height()) ? 2 : 3;
    QPainter painter(this);
    painter.setPen(QPen(GraphDesign::readableOn(color, GraphDesign::surroundings), width));
    painter.drawRect(QRectF(rect()).adjusted(width / 2, width / 2, -width / 2, -width / 2));
}

void Plot::setRight(int i)
{
    const SensorPtr& sensor = data.getSens(i >= 0 ? i : data.getRightIndex());
    change(tr("Scale of %1 on the right").arg(sensor ? sensor->name : QString()), [&] {
        data.setRightIndex(i);
        data.setNeedSave(true);
        kind->update();
        fitTexts();
        replot();
    });
}

void Plot::showNextRight()
{
    if (traits.markers != MarkerForm::Curve) {
        Q_EMIT told(tr("A scale on the right needs curves: choose the graph view for this group."));
        return;
    }
    const bool isShown = curves->hasOwnScale(data.getRightIndex());
    int next = isShown ? data.getRightIndex() + 1 : 0;
    while (next < curves->size() && !curves->hasOwnScale(next))
        ++next;
    if (next < curves->size() || isShown)
        setRight(next < curves->size() ? next : -1);
    else
        Q_EMIT told(tr("All curves in sight have the scale on the left."));
}

void Plot::setTempTitle()
{
    if (title().text() == busyTitle())
        return;
    realTitle = title().text();
    updateTitle(busyTitle());
    Q_EMIT titleChanged(busyTitle());
}

void Plot::restoreTitle()
{
    if (title().text() != busyTitle())
        return;
    updateTitle(realTitle);
    Q_EMIT titleChanged(realTitle);
}

void Plot::updateXAxisVisibility(bool shown)
{
    enableAxis(xBottom, shown);
}

void Plot::toggleChosen()
{
    Q_EMIT changedActivePlot(isActive ? -1 : index);
}

void Plot::setActivePlot(int chosen)
{
    isActive = chosen == index;
    doUseDesignValues();
    update(); // the frame lies around the canvas
}

void Plot::doActivePlotIndicator()
{
    if (index >= 0)
        setCanvasBackground(isActive ? GraphDesign::backgroundActive : GraphDesign::background);
}

void Plot::applyDesign()
{
    grid->setMajorPen(GraphDesign::majGrid, GraphDesign::majGridWidth);
    grid->setMinorPen(GraphDesign::minGrid, GraphDesign::minGridWidth);
    setCanvasBackground(GraphDesign::background);
    doActivePlotIndicator();
    setTextsForPaper(false);
}

// Under a style sheet the palette of the graph does not reach its parts.
void Plot::setTextsForPaper(bool tf)
{
    const QColor ground = tf ? QColor(Qt::white) : GraphDesign::surroundings;
    const QColor ink = GraphDesign::inkOn(ground);
    QPalette colors = titleLabel()->palette();
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text})
        colors.setColor(role, ink);
    titleLabel()->setPalette(colors);
    axes->setInk(ink, ground);
    curves->setInk(ink, GraphDesign::faintOn(ground), tf ? ground : canvasBackground().color());
    if (tf)
        axes->showWholeTexts();
    else
        fitTexts();
}

void Plot::doUseDesignValues()
{
    applyDesign();
    curves->designAll();
    kind->showColor(getActiveSens());
    replot();
}

// The chosen graph's own canvas colour is for the screen only.
void Plot::setForPrint(bool tf)
{
    isActive = !tf;
    doActivePlotIndicator();
    setTextsForPaper(tf);
}

void Plot::setThinned(bool tf)
{
    for (int i = 0; i < curves->size(); ++i)
        curves->at(i)->setThinned(tf);
    if (pinned)
        pinned->setThinned(tf);
}

void Plot::alignGraphs(QwtPlot* main, QwtPlot* fft)
{
    QwtScaleWidget* const upper = main->axisWidget(yLeft);
    QwtScaleWidget* const lower = fft->axisWidget(yLeft);
    QwtScaleWidget* const narrower = upper->width() < lower->width() ? upper : lower;
    narrower->scaleDraw()->setMinimumExtent(std::max(upper->width(), lower->width()));
    fft->canvas()->setMaximumWidth(main->canvas()->width());
}
