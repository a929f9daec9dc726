#include "graph/myplotmarker.h"

#include <QFont>
#include <QPen>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

#include "graph/balloonshape.h"
#include "graph/scalemanager.h"

namespace {

constexpr double crossBox = 20;     // hot square of a cross, pixels
constexpr int leastCross = 12;      // pixels
constexpr double emptyBalloon = 50; // width without a text

QSizeF textSize(const myPlotMarker& marker)
{
    return marker.label().textSize();
}

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
    written.setColor(Qt::black);
    setLabel(written);
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
    if (const QwtSymbol* cross = symbol())
        setCross(cross->pen().color());
}

void myPlotMarker::setCross(const QColor& color)
{
    const int size = std::max(leastCross, int(1.4 * textPixels));
    setSymbol(new QwtSymbol(QwtSymbol::XCross, color, QPen(color, size / 7.0 + 0.15), QSize(size, size)));
}

double myPlotMarker::calcRegValue(double x) const
{
    return (a * x + b) * x + c;
}

QwtScaleMap myPlotMarker::ownMap(const QwtScaleMap& yMap) const
{
    QwtScaleMap map = yMap;
    if (scaler)
        scaler->fixScaleY(&map, iSens);
    return map;
}

QPointF myPlotMarker::pixelPos() const
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
        box.setSize(textSize(*this));
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
    const QSizeF size = textSize(*this);
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
    *tip = balloonTip(pixelPos());
    return std::hypot(pos.x() - tip->x(), pos.y() - tip->y());
}

void myPlotMarker::fixBalloonOffset(QPointF newTip)
{
    const QPointF way = balloonTip(pixelPos()) - newTip;
    xOffset += qRound(way.x());
    yOffset += qRound(way.y());
}

bool myPlotMarker::isInTriangle(QRectF rect, QPointF tip, QPointF point)
{
    const QPolygonF tail = BalloonShape::tail(rect, tip);
    return !tail.isEmpty() && tail.containsPoint(point, Qt::WindingFill);
}
