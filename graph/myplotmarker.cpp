#include "graph/myplotmarker.h"

#include <QFont>
#include <QPen>
#include <QPolygonF>
#include <QWidget>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

#include "graph/balloonshape.h"
#include "graph/graphdesign.h"
#include "graph/scalemanager.h"

namespace {

constexpr double crossBox = 20;     // hot square of a cross, pixels
constexpr int leastCross = 12;      // pixels
constexpr double emptyBalloon = 50; // width without a text

} // namespace

QString markerTypeName(int type)
{
    switch (type) {
    case MARKER_ANNOTATE:
        return QStringLiteral("annotation");
    case MARKER_X:
        return QStringLiteral("marker");
    case MARKER_REGRESSION:
        return QStringLiteral("regression");
    case MARKER_FLOATING_TEXT:
        return QStringLiteral("floating text");
    case MARKER_INTEGRAL:
        return QStringLiteral("integral");
    }
    return QString();
}

myPlotMarker::myPlotMarker(int iSens, scaleManager* scaler, markerType type)
    : iSens(iSens)
    , type(type)
    , typeName(markerTypeName(type))
    , scaler(scaler)
{
    // Lines lie under crosses, and these under texts.
    if (type == MARKER_REGRESSION || type == MARKER_INTEGRAL || type == MARKER_TANGENT)
        setZ(z() - 1);
    else if (type == MARKER_FLOATING_TEXT || type == MARKER_ANNOTATE)
        setZ(z() + 1);
}

myPlotMarker::myPlotMarker(int iSens, markerType type)
    : myPlotMarker(iSens, nullptr, type)
{
}

void myPlotMarker::setPic(const QPixmap& picture)
{
    pic = picture;
    bubPic = !picture.isNull();
    pictureFile.clear();
}

void myPlotMarker::lock()
{
    locked = true;
    shown = false;
}

void myPlotMarker::setText(const QString& text)
{
    QwtText written(text, QwtText::PlainText);
    written.setFont(textFont());
    setLabel(written);
    wrapLabel();
}

void myPlotMarker::setRoom(const QSize& canvas)
{
    if (room == canvas)
        return;
    room = canvas;
    wrapLabel();
}

void myPlotMarker::wrapLabel()
{
    constexpr double leastTexts = 12; // heights of a text
    const double most = room.width() - 2 * BUBBLE_MARGIN;
    const double wanted = std::min(most, std::max(room.width() * 0.45, leastTexts * textPixels));
    shownText = label();
    if (wanted > 0)
        shownText.setText(GraphFonts::wrapped(label().text(), label().font(), wanted), QwtText::PlainText);
}

QFont myPlotMarker::textFont() const
{
    constexpr double annotationGrowth = 1.1;
    const bool isAnnotation = type == MARKER_ANNOTATE;
    QFont font(QStringLiteral("Helvetica"));
    font.setPixelSize(int(isAnnotation ? annotationGrowth * textPixels : textPixels));
    font.setBold(isAnnotation);
    return font;
}

/// Of pens, with the texts.
double myPlotMarker::growth() const
{
    constexpr double usualPixels = 14;
    return std::max(1.0, textPixels / usualPixels);
}

void myPlotMarker::setTextPixels(int pixels)
{
    if (textPixels == pixels)
        return;
    textPixels = pixels;
    QwtText written = label();
    written.setFont(textFont());
    setLabel(written);
    wrapLabel();
    if (const QwtSymbol* cross = symbol())
        setCross(cross->pen().color());
}

void myPlotMarker::setCross(const QColor& color)
{
    const int size = std::max(leastCross, int(1.4 * textPixels));
    setSymbol(new QwtSymbol(QwtSymbol::XCross, color, QPen(color, size / 7.0 + 0.15), QSize(size, size)));
}

void myPlotMarker::setFit(const FittedCurve& curve, const FittedCurve::Unit& shownX,
                          const FittedCurve::Unit& shownY)
{
    fit = curve;
    fitX = shownX;
    fitY = shownY;
    // Who knows a line and a parabola only, such as an older file's reader, gets them.
    const QVector<double>& p = curve.curve.parameters;
    const bool isLine = curve.curve.model == CurveFit::Model::Line && p.size() == 2;
    const bool isParabola = curve.curve.model == CurveFit::Model::Parabola && p.size() == 3;
    if (!isLine && !isParabola)
        return;
    const FittedCurve shown = curve.in(shownY);
    a = isParabola ? shown.curve.parameters[0] : 0;
    b = shown.curve.parameters[isParabola ? 1 : 0];
    c = shown.curve.parameters.last();
    r = std::sqrt(std::max(0.0, curve.r2));
}

double myPlotMarker::calcRegValue(double x) const
{
    if (!fit.isNone())
        return fit.values({x}, fitX, fitY).constFirst();
    return (a * x + b) * x + c;
}

QwtScaleMap myPlotMarker::ownMap(const QwtScaleMap& yMap) const
{
    QwtScaleMap map = yMap;
    if (scaler)
        scaler->fixScaleY(&map, iSens);
    return map;
}

/// A note that the canvas has become too small for is pushed back onto it, unless its time is out of sight.
QPointF myPlotMarker::onCanvas(const QPointF& pos, const QRectF& canvas) const
{
    constexpr double frame = 3;
    if (type != MARKER_ANNOTATE || pos.x() < canvas.left() || pos.x() > canvas.right())
        return pos;
    const QRectF box = (bubble ? balloonRect(pos) : hotBox(pos)).adjusted(-frame, -frame, frame, frame);
    const auto push = [](double from, double to, double least, double most) {
        return from < least || to - from > most - least ? least - from : std::min(0.0, most - to);
    };
    return pos + QPointF(push(box.left(), box.right(), canvas.left(), canvas.right()),
                         push(box.top(), box.bottom(), canvas.top(), canvas.bottom()));
}

QPointF myPlotMarker::pixelPos() const
{
    return plot() ? onCanvas(anchor(), plot()->canvas()->contentsRect()) : QPointF();
}

QPointF myPlotMarker::anchor() const
{
    const QwtPlot* graph = plot();
    if (!graph)
        return QPointF();
    return QPointF(graph->transform(QwtPlot::xBottom, xValue()),
                   ownMap(graph->canvasMap(QwtPlot::yLeft)).transform(yValue()));
}

QRectF myPlotMarker::hotBox(const QPointF& pos) const
{
    QRectF box;
    if (type == MARKER_X || type == MARKER_X_GHOST)
        box.setSize(QSizeF(crossBox, crossBox));
    else if (type == MARKER_ANNOTATE || type == MARKER_FLOATING_TEXT)
        box.setSize(textSize());
    if (type == MARKER_ANNOTATE && bubPic)
        box.setWidth(std::max<double>(box.width(), BUBBLE_IMAGE));
    box.moveCenter(pos);
    if (type == MARKER_ANNOTATE && bubPic)
        box.setTop(box.top() - BUBBLE_IMAGE);
    return box;
}

QSizeF myPlotMarker::pictureSize() const
{
    if (!bubPic)
        return QSizeF(0, 0);
    return QSizeF(pic.size()).scaled(BUBBLE_IMAGE, BUBBLE_IMAGE, Qt::KeepAspectRatio);
}

QRectF myPlotMarker::balloonRect(const QPointF& pos) const
{
    const QSizeF size = textSize();
    const QSizeF picture = pictureSize();
    const QString text = label().text();
    const bool isEmpty = text.isEmpty() || text == QLatin1String(" ");
    double width = isEmpty ? emptyBalloon : size.width() + 2 * BUBBLE_MARGIN;
    if (bubPic)
        width = std::max(width, picture.width() + 2 * BUBBLE_MARGIN);
    const double half = size.height() / 2 + BUBBLE_MARGIN;
    return QRectF(QPointF(pos.x() - width / 2, pos.y() - half - picture.height()),
                  QPointF(pos.x() + width / 2, pos.y() + half));
}

QPointF myPlotMarker::balloonTip(const QPointF& pos) const
{
    return QPointF(pos.x() - xOffset, balloonRect(pos).bottom() - yOffset);
}

double myPlotMarker::distToBubbleTip(QPointF pos, QPointF* tip) const
{
    *tip = balloonTip(anchor());
    return std::hypot(pos.x() - tip->x(), pos.y() - tip->y());
}

void myPlotMarker::fixBalloonOffset(QPointF newTip)
{
    const QPointF way = balloonTip(anchor()) - newTip;
    xOffset += qRound(way.x());
    yOffset += qRound(way.y());
}

bool myPlotMarker::isInTriangle(QRectF rect, QPointF tip, QPointF point)
{
    const QPolygonF tail = BalloonShape::tail(rect, tip);
    return !tail.isEmpty() && tail.containsPoint(point, Qt::WindingFill);
}
