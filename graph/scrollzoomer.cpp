#include "graph/scrollzoomer.h"

#include "graph/scrollbar.h"

#include <QResizeEvent>

#include <algorithm>

#include <qwt_plot.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_div.h>
#include <qwt_scale_widget.h>

namespace {

// Where the bars lie: opposite to the scales.
QwtPlot::Axis barSide(Qt::Orientation o)
{
    return o == Qt::Horizontal ? QwtPlot::xTop : QwtPlot::yRight;
}

int extent(const ScrollBar* bar, Qt::Orientation o)
{
    if (!bar || bar->isHidden())
        return 0;
    return o == Qt::Horizontal ? bar->sizeHint().height() : bar->sizeHint().width();
}

} // namespace

ScrollZoomer::ScrollZoomer(QWidget* canvas)
    : QwtPlotZoomer(canvas)
{
}

void ScrollZoomer::setScrollBarMode(Qt::Orientation o, Qt::ScrollBarPolicy mode)
{
    scrollData(o).mode = mode;
    updateScrollBars();
}

ScrollBar* ScrollZoomer::scrollBar(Qt::Orientation o) const
{
    return o == Qt::Horizontal ? horizontal.bar : vertical.bar;
}

void ScrollZoomer::setCornerWidget(QWidget* widget)
{
    if (cornerWidget == widget)
        return;
    delete cornerWidget;
    cornerWidget = widget;
    if (widget) {
        widget->setParent(canvas());
        updateScrollBars();
    }
}

void ScrollZoomer::rescale()
{
    if (zoomRectIndex() == 0)
        leaveZoom();
    else
        enterZoom();
    QwtPlotZoomer::rescale();
    updateScrollBars();
}

// While a part of the range is in view, the labels of the scales come and go; the canvas keeps its place.
void ScrollZoomer::enterZoom()
{
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        int start = 0;
        int end = 0;
        plot()->axisWidget(axis)->getBorderDistHint(start, end);
        plot()->axisWidget(axis)->setMinBorderDist(start, end);
    }
    if (inZoom)
        return;
    inZoom = true;
    QwtPlotLayout* layout = plot()->plotLayout();
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        alignCanvas[axis] = layout->alignCanvasToScale(axis);
        layout->setAlignCanvasToScale(axis, false);
    }
}

void ScrollZoomer::leaveZoom()
{
    if (!inZoom)
        return;
    inZoom = false;
    for (int axis = 0; axis < QwtPlot::axisCnt; ++axis) {
        plot()->axisWidget(axis)->setMinBorderDist(0, 0);
        plot()->plotLayout()->setAlignCanvasToScale(axis, alignCanvas[axis]);
    }
}

bool ScrollZoomer::needScrollBar(Qt::Orientation o) const
{
    const Qt::ScrollBarPolicy mode = o == Qt::Horizontal ? horizontal.mode : vertical.mode;
    if (mode != Qt::ScrollBarAsNeeded)
        return mode == Qt::ScrollBarAlwaysOn;
    const QRectF base = zoomBase();
    const QRectF shown = zoomRect();
    if (o == Qt::Horizontal)
        return base.left() < shown.left() || base.right() > shown.right();
    return base.top() < shown.top() || base.bottom() > shown.bottom();
}

void ScrollZoomer::updateScrollBars()
{
    if (!plot() || !canvas())
        return;
    updateScrollBar(Qt::Horizontal);
    updateScrollBar(Qt::Vertical);
    layoutScrollBars(canvas()->contentsRect());
}

void ScrollZoomer::updateScrollBar(Qt::Orientation o)
{
    const bool needed = needScrollBar(o);
    ScrollData& data = scrollData(o);
    if (needed && !data.bar) {
        data.bar = new ScrollBar(o, canvas());
        data.bar->setObjectName(o == Qt::Horizontal ? QStringLiteral("scrollBarX")
                                                    : QStringLiteral("scrollBarY"));
        data.bar->setAccessibleName(o == Qt::Horizontal ? tr("Part of the time shown")
                                                        : tr("Part of the values shown"));
        data.bar->hide();
        connect(data.bar, qOverload<Qt::Orientation, double, double>(&ScrollBar::valueChanged), this,
                &ScrollZoomer::scrollBarMoved);
    }
    if (!data.bar)
        return;
    if (needed) {
        const QRectF base = zoomBase();
        const QRectF shown = zoomRect();
        data.bar->setPalette(canvas()->palette());
        const int axis = o == Qt::Horizontal ? xAxis() : yAxis();
        data.bar->setInverted(!plot()->axisScaleDiv(axis).isIncreasing());
        if (o == Qt::Horizontal) {
            data.bar->setBase(base.left(), base.right());
            data.bar->moveSlider(shown.left(), shown.right());
        } else {
            data.bar->setBase(base.top(), base.bottom());
            data.bar->moveSlider(shown.top(), shown.bottom());
        }
    }
    showScrollBar(o, needed);
}

void ScrollZoomer::showScrollBar(Qt::Orientation o, bool shown)
{
    ScrollBar* bar = scrollData(o).bar;
    if (bar->isHidden() != shown)
        return;
    const int before = extent(bar, o);
    bar->setHidden(!shown);
    QwtPlotLayout* layout = plot()->plotLayout();
    const QwtPlot::Axis side = barSide(o);
    layout->setCanvasMargin(layout->canvasMargin(side) + extent(bar, o) - before, side);
    plot()->updateLayout();
}

void ScrollZoomer::layoutScrollBars(const QRect& area)
{
    const int height = extent(horizontal.bar, Qt::Horizontal);
    const int width = extent(vertical.bar, Qt::Vertical);
    if (height > 0)
        horizontal.bar->setGeometry(area.left(), area.top(), area.width() - width, height);
    if (width > 0)
        vertical.bar->setGeometry(area.right() + 1 - width, area.top() + height, width,
                                  area.height() - height);
    if (cornerWidget) {
        cornerWidget->setVisible(height > 0 && width > 0);
        cornerWidget->setGeometry(area.right() + 1 - width, area.top(), width, height);
    }
}

bool ScrollZoomer::eventFilter(QObject* object, QEvent* event)
{
    if (object == canvas()) {
        switch (event->type()) {
        case QEvent::MouseButtonPress: // the graph sees them; they neither start nor end a zoom
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            return false;
        case QEvent::Resize:
            layoutScrollBars(canvas()->contentsRect());
            break;
        default:
            break;
        }
    }
    return QwtPlotZoomer::eventFilter(object, event);
}

void ScrollZoomer::scrollBarMoved(Qt::Orientation o, double min, double)
{
    const QRectF shown = zoomRect();
    moveTo(o == Qt::Horizontal ? QPointF(min, shown.top()) : QPointF(shown.left(), min));
    Q_EMIT zoomed(zoomRect());
}
