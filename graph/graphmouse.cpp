#include "graph/graphmouse.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cmath>
#include <utility>

#include <qwt_picker_machine.h>
#include <qwt_plot.h>
#include <qwt_plot_picker.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "graph/graphdesign.h"
#include "graph/markermouse.h"
#include "graph/slopetool.h"

namespace {

bool isPress(const QEvent& event, Qt::MouseButton button)
{
    return event.type() == QEvent::MouseButtonPress &&
           static_cast<const QMouseEvent&>(event).button() == button;
}

constexpr double zoomOfNotch = 0.8; // of the shown range
constexpr double degreesOfNotch = 120;

} // namespace

/// The rubber band, which can be given up.
class ZoomPicker : public QwtPlotPicker
{
public:
    explicit ZoomPicker(QWidget* canvas)
        : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::RectRubberBand, QwtPicker::AlwaysOff,
                        canvas)
    {
        setStateMachine(new QwtPickerDragRectMachine);
        setEnabled(false);
    }
    using QwtPlotPicker::reset;
};

/// Takes the Escape key while it stands: the key goes to whatever has the focus, and as a shortcut it would
/// stop the class.
class EscapeWatch : public QObject
{
public:
    explicit EscapeWatch(std::function<void()> pressed)
        : pressed(std::move(pressed))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        const bool isPress = event->type() == QEvent::KeyPress;
        if (!isPress && event->type() != QEvent::ShortcutOverride)
            return false;
        if (static_cast<const QKeyEvent*>(event)->key() != Qt::Key_Escape)
            return false;
        event->accept();
        if (isPress) {
            QCoreApplication::instance()->removeEventFilter(this);
            pressed();
        }
        return true;
    }

private:
    const std::function<void()> pressed;
};

GraphMouse::GraphMouse(QwtPlot& plot, const KindTraits& traits, MarkerMouse& markers, SlopeTool& slope)
    : plot(plot)
    , traits(traits)
    , markers(markers)
    , slope(slope)
    , zoomer(new ZoomPicker(plot.canvas()))
{
    connect(zoomer, qOverload<const QRectF&>(&QwtPlotPicker::selected), this, [this](const QRectF& rect) {
        const QRectF zoomed = rect.normalized();
        if (zoomed.width() > 0 && zoomed.height() > 0)
            Q_EMIT zoomedIn(zoomed);
    });
    for (QWidget* part : {static_cast<QWidget*>(plot.titleLabel()), plot.canvas(),
                          static_cast<QWidget*>(plot.axisWidget(QwtPlot::yLeft)),
                          static_cast<QWidget*>(plot.axisWidget(QwtPlot::yRight)),
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

void GraphMouse::enableReading(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = isMarker = false;
        enableSlope(false);
    }
    isReading = tf;
    plot.canvas()->setMouseTracking(tf);
}

void GraphMouse::enablePen(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = isMarker = false;
        enableSlope(false);
    }
    isPen = tf;
    liftPen(false);
    if (tf)
        plot.canvas()->setCursor(Qt::CrossCursor);
    else
        plot.canvas()->unsetCursor();
}

void GraphMouse::liftPen(bool isKept)
{
    if (std::exchange(isPenDown, false))
        Q_EMIT penUp(isKept);
}

bool GraphMouse::eventFilter(QObject* object, QEvent* event)
{
    const bool isLeft = object == plot.axisWidget(QwtPlot::yLeft);
    if (isLeft || object == plot.axisWidget(QwtPlot::yRight)) {
        if (traits.hasRanges && isPress(*event, Qt::RightButton))
            Q_EMIT rangeAsked(isLeft ? QwtPlot::yLeft : QwtPlot::yRight);
    } else if (object == plot.axisWidget(QwtPlot::xBottom)) {
        if (traits.takesXSensor && isPress(*event, Qt::RightButton))
            Q_EMIT xAsked(static_cast<QMouseEvent*>(event)->globalPos());
    } else if (object == plot.titleLabel()) {
        onTitle(*event);
    } else if (object == plot.canvas()) {
        if (const auto* mouse = dynamic_cast<const QMouseEvent*>(event))
            onCanvas(*mouse);
        else if (event->type() == QEvent::Wheel && traits.takesCrosses)
            onWheel(*static_cast<const QWheelEvent*>(event));
        else if (event->type() == QEvent::Hide && escape)
            loseMouse();
    }
    return false;
}

GraphMouse::~GraphMouse() = default;

void GraphMouse::watchEscape()
{
    escape = std::make_unique<EscapeWatch>([this] {
        escape.release()->deleteLater(); // its filter is at work
        giveUp();
    });
}

void GraphMouse::giveUp()
{
    zoomer->reset();
    markers.cancel();
    liftPen(false);
    pannedTo.reset();
}

/// No release comes any more.
void GraphMouse::loseMouse()
{
    escape.reset();
    giveUp();
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
        press(event);
        break;
    case QEvent::MouseButtonDblClick:
        if (!markers.doubleClick(event.pos()) && event.button() == Qt::LeftButton && !isZoom && !isAnnotate &&
            !isMarker && !isSlope && !isPen)
            Q_EMIT groundDoubleClicked();
        break;
    case QEvent::MouseMove:
        move(event.pos());
        break;
    case QEvent::MouseButtonRelease:
        release(event.button());
        break;
    default:
        break;
    }
}

// While zoom is on, the right button is its way back, whatever lies under the pointer.
void GraphMouse::press(const QMouseEvent& event)
{
    if (event.button() == Qt::LeftButton) {
        constexpr double bandWidth = 2;
        zoomer->setRubberBandPen(
            QPen(GraphDesign::inkOn(plot.canvasBackground().color()), bandWidth, Qt::DashLine));
        watchEscape();
        pressLeft(event.pos());
    } else if (event.button() == Qt::MiddleButton && traits.takesCrosses) {
        watchEscape();
        pannedTo = event.pos();
    } else if (event.button() == Qt::RightButton && !isZoom && !markers.pressRight(event)) {
        Q_EMIT colorAsked(event.pos());
    }
}

void GraphMouse::pressLeft(const QPointF& pos)
{
    if (isReading) // a touch has no moves
        Q_EMIT pointedAt(pos);
    if (isPen) {
        isPenDown = true;
        Q_EMIT penDown(pos);
        return;
    }
    if (markers.take(pos))
        return;
    if (isAnnotate)
        Q_EMIT noteAsked(pos);
    else if (isMarker && traits.takesCrosses)
        markers.placeCross(pos);
    else if (isMarker)
        Q_EMIT crossRefused();
}

void GraphMouse::move(const QPointF& pos)
{
    if (pannedTo) {
        const QPointF way = pos - *pannedTo;
        pannedTo = pos;
        showPixels(QRectF(plot.canvas()->contentsRect()).translated(-way));
    } else if (isPenDown) {
        Q_EMIT penMoved(pos);
    } else if (isSlope && !markers.isDragging()) {
        slope.follow(pos);
    } else {
        markers.drag(pos);
        if (isReading)
            Q_EMIT pointedAt(pos);
    }
}

void GraphMouse::release(Qt::MouseButton button)
{
    escape.reset();
    if (button == Qt::LeftButton) {
        liftPen(true);
        markers.letGo();
    } else if (button == Qt::MiddleButton) {
        pannedTo.reset();
    } else if (button == Qt::RightButton && isZoom) {
        Q_EMIT zoomedOut();
    }
}

// What is under the pointer stays there.
void GraphMouse::onWheel(const QWheelEvent& event)
{
    const double part = std::pow(zoomOfNotch, event.angleDelta().y() / degreesOfNotch);
    const QRectF shown = plot.canvas()->contentsRect();
    const QPointF at = event.position();
    showPixels(QRectF(at + (shown.topLeft() - at) * part, shown.size() * part));
}

void GraphMouse::showPixels(const QRectF& area)
{
    const QRectF rect =
        QwtScaleMap::invTransform(plot.canvasMap(QwtPlot::xBottom), plot.canvasMap(QwtPlot::yLeft), area)
            .normalized();
    if (rect.width() > 0 && rect.height() > 0)
        Q_EMIT zoomedIn(rect);
}
