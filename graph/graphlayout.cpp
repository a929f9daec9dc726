#include "graph/graphlayout.h"

#include <QScrollArea>
#include <QtMath>

#include <algorithm>

#include <qwt_dyngrid_layout.h>
#include <qwt_legend.h>
#include <qwt_legend_label.h>
#include <qwt_plot.h>
#include <qwt_text_label.h>

#include "graph/graphdesign.h"

namespace {

constexpr double greatestRows = 0.25; // of the height, for the rows of the legend
constexpr double greatestInLow = 0.2;
constexpr int leastRows = 2; // of a low graph; those beyond the room are scrolled to

// Trying out the columns of the legend asks nobody for another layout, as the legend's own function would:
// each layout would ask for the next.
void setColumns(QwtLegend* legend, uint columns)
{
    if (auto* const grid = qobject_cast<QwtDynGridLayout*>(legend->contentsWidget()->layout()))
        grid->setMaxColumns(columns);
}

// Whole rows only.
double mostHeight(const QwtLegend* legend, double graphHeight)
{
    const auto* const entry = legend->findChild<QwtLegendLabel*>();
    if (!GraphFonts::isLow(qRound(graphHeight)) || !entry)
        return greatestRows * graphHeight;
    const int row = entry->sizeHint().height();
    return row * std::max(leastRows, int(greatestInLow * graphHeight) / std::max(1, row));
}

int widestEntry(const QwtLegend* legend)
{
    int width = 0;
    for (const QwtLegendLabel* entry : legend->findChildren<QwtLegendLabel*>())
        width = std::max(width, entry->sizeHint().width());
    return width;
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
    if (!hasRows) {
        if (auto* const scroller = legend->findChild<QScrollArea*>())
            scroller->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        return;
    }
    setColumns(legend, 0);
    layRows(plot, legend, area, options);
}

// Rows under the title, or beside it where that leaves more to the canvas and is needed.
void GraphLayout::layRows(const QwtPlot* plot, QwtLegend* legend, const QRectF& area, Options options)
{
    constexpr int between = 8; // pixels, of a title and the entries beside it
    const double titleWidth = plot->titleLabel()->sizeHint().width() + between;
    const double most = mostHeight(legend, area.height());
    const auto wholeIn = [&](double width) { return double(legend->heightForWidth(qFloor(width))); };
    const auto rowsIn = [&](double width) { return std::min(wholeIn(width), most); };
    const double beside = area.width() - titleWidth;
    const double rows = rowsIn(area.width());
    const bool isShort = titleWidth < area.width() / 2 && beside >= widestEntry(legend);
    const double besideRows = isShort ? rowsIn(beside) : area.height();
    const bool isHidden = isShort && wholeIn(beside) > most && wholeIn(area.width()) <= most;
    QwtPlotLayout::activate(plot, area.adjusted(0, rows, 0, 0), options | IgnoreLegend);
    const double titleHeight = titleRect().height();
    // A low graph by its height alone, so that all cells of a layout look the same.
    const bool isLow =
        GraphFonts::isLow(qRound(area.height())) || canvasRect().height() < canvasPart * area.height();
    const double more = besideRows - titleHeight;
    if (isLow && !isHidden && more < rows) {
        QwtPlotLayout::activate(plot, area.adjusted(0, std::max(0.0, more), 0, 0), options | IgnoreLegend);
        const double height = std::max(titleHeight, besideRows);
        setTitleRect(QRectF(area.left(), area.top(), titleWidth - between, height));
        setLegendRect(QRectF(area.left() + titleWidth, area.top(), area.width() - titleWidth, height));
        return;
    }
    setTitleRect(QRectF(area.left(), area.top(), area.width(), titleHeight));
    setLegendRect(QRectF(area.left(), area.top() + titleHeight, area.width(), rows));
}
