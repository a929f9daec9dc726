#include "graph/graphlayout.h"

#include <QtMath>

#include <algorithm>

#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_text_label.h>

namespace {

constexpr double greatestRows = 0.2; // of the height, for the rows of the legend

void setColumns(QwtLegend* legend, uint columns)
{
    if (legend->maxColumns() != columns)
        legend->setMaxColumns(columns);
}

} // namespace

void GraphLayout::activate(const QwtPlot* plot, const QRectF& area, Options options)
{
    auto* const legend = const_cast<QwtLegend*>(qobject_cast<const QwtLegend*>(plot->legend()));
    if (!legend || legend->isEmpty() || (options & IgnoreLegend)) {
        QwtPlotLayout::activate(plot, area, options);
        return;
    }
    if (!options || !hasRows) {
        setColumns(legend, 1);
        QwtPlotLayout::activate(plot, area, options);
    }
    // A page or picture of the graph is laid out as the graph is on the screen.
    if (!options)
        hasRows = canvasRect().width() < canvasPart * area.width();
    if (!hasRows)
        return;
    setColumns(legend, 0);
    layRows(plot, legend, area, options);
}

void GraphLayout::layRows(const QwtPlot* plot, QwtLegend* legend, const QRectF& area, Options options)
{
    constexpr int between = 8; // pixels, of a title and the entries beside it
    const QSize title = plot->titleLabel()->sizeHint();
    constexpr int rounding = 2; // a legend that is a pixel too small hides entries behind a scroll bar
    const QSize oneRow = legend->contentsWidget()->sizeHint() + QSize(rounding, rounding);
    const bool isBeside = title.width() + between + oneRow.width() <= area.width();
    const double rows =
        std::min<double>(legend->heightForWidth(qFloor(area.width())), greatestRows * area.height());
    const double taken = isBeside ? std::max(0, oneRow.height() - title.height()) : rows;
    QwtPlotLayout::activate(plot, area.adjusted(0, taken, 0, 0), options | IgnoreLegend);
    QRectF top(area.left(), area.top(), area.width(), titleRect().height());
    if (!isBeside) {
        setTitleRect(top);
        setLegendRect(QRectF(area.left(), top.bottom(), area.width(), rows));
        return;
    }
    top.setHeight(top.height() + taken);
    QRectF right = top;
    right.setLeft(area.right() - oneRow.width());
    setTitleRect(QRectF(top.topLeft(), QPointF(right.left() - between, top.bottom())));
    setLegendRect(right);
}
