#include "graph/graphmouse.h"

#include <QMouseEvent>

#include <qwt_picker_machine.h>
#include <qwt_plot.h>
#include <qwt_plot_picker.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "graph/markermouse.h"
#include "graph/slopetool.h"

namespace {

bool isPress(const QEvent& event, Qt::MouseButton button)
{
    return event.type() == QEvent::MouseButtonPress &&
           static_cast<const QMouseEvent&>(event).button() == button;
}

} // namespace

GraphMouse::GraphMouse(QwtPlot& plot, const KindTraits& traits, MarkerMouse& markers, SlopeTool& slope)
    : plot(plot)
    , traits(traits)
    , markers(markers)
    , slope(slope)
    , zoomer(new QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::RectRubberBand,
                               QwtPicker::AlwaysOff, plot.canvas()))
{
    zoomer->setStateMachine(new QwtPickerDragRectMachine);
    zoomer->setEnabled(false);
    connect(zoomer, qOverload<const QRectF&>(&QwtPlotPicker::selected), this, [this](const QRectF& rect) {
        const QRectF zoomed = rect.normalized();
        if (zoomed.width() > 0 && zoomed.height() > 0)
            Q_EMIT zoomedIn(zoomed);
    });
    for (QWidget* part : {static_cast<QWidget*>(plot.titleLabel()), plot.canvas(),
                          static_cast<QWidget*>(plot.axisWidget(QwtPlot::yLeft)),
                          static_cast<QWidget*>(plot.axisWidget(QwtPlot::xBottom))})
        part->installEventFilter(this);
}

void GraphMouse::enableZoom(bool tf)
{
    isZoom = tf;
    zoomer->setEnabled(tf);
    if (tf)
        isAnnotate = isMarker = false;
}

void GraphMouse::enableAnnotate(bool tf)
{
    if (tf) {
        enableZoom(false);
        isMarker = false;
        enableSlope(false);
    }
    isAnnotate = tf;
}

void GraphMouse::enableMarker(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = false;
        enableSlope(false);
    }
    isMarker = tf;
}

void GraphMouse::enableSlope(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = isMarker = false;
    }
    isSlope = tf;
    plot.canvas()->setMouseTracking(tf);
    slope.setOn(tf && traits.takesAnalyses);
}

bool GraphMouse::eventFilter(QObject* object, QEvent* event)
{
    if (object == plot.axisWidget(QwtPlot::yLeft)) {
        if (traits.hasRanges && isPress(*event, Qt::RightButton))
            Q_EMIT rangeAsked();
    } else if (object == plot.axisWidget(QwtPlot::xBottom)) {
        if (traits.takesXSensor && isPress(*event, Qt::RightButton))
            Q_EMIT xAsked(static_cast<QMouseEvent*>(event)->globalPos());
    } else if (object == plot.titleLabel()) {
        onTitle(*event);
    } else if (const auto* mouse = dynamic_cast<const QMouseEvent*>(event)) {
        onCanvas(*mouse);
    }
    return false;
}

void GraphMouse::onTitle(const QEvent& event)
{
    if (isPress(event, Qt::LeftButton))
        Q_EMIT titlePressed();
    else if (event.type() == QEvent::MouseButtonDblClick)
        Q_EMIT titleDoubleClicked();
    else if (isPress(event, Qt::RightButton))
        Q_EMIT titlePressedRight();
}

void GraphMouse::onCanvas(const QMouseEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        if (event.button() == Qt::LeftButton)
            pressLeft(event.pos());
        else if (event.button() == Qt::RightButton && !markers.pressRight(event))
            Q_EMIT colorAsked(event.pos());
        break;
    case QEvent::MouseButtonDblClick:
        markers.doubleClick(event.pos());
        break;
    case QEvent::MouseMove:
        if (isSlope)
            slope.follow(event.pos());
        else
            markers.drag(event.pos());
        break;
    case QEvent::MouseButtonRelease:
        if (event.button() == Qt::LeftButton)
            markers.letGo();
        else if (event.button() == Qt::RightButton && isZoom)
            Q_EMIT zoomedOut();
        break;
    default:
        break;
    }
}

void GraphMouse::pressLeft(const QPointF& pos)
{
    if (markers.take(pos))
        return;
    if (isAnnotate)
        Q_EMIT noteAsked(pos);
    else if (isMarker && traits.takesCrosses)
        markers.placeCross(pos);
}
