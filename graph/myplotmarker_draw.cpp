// How the kinds of markers are drawn.

#include "graph/myplotmarker.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

#include <qwt_symbol.h>
#include <qwt_text.h>

#include "graph/balloonshape.h"
#include "graph/graphdesign.h"

namespace {

constexpr double textFrame = 3; // pixels round a text
constexpr double beyond = 5;    // pixels of what is drawn outside the canvas
constexpr int areaAlpha = 80;
constexpr double tangentPart = 20; // of the canvas width, half the length of a tangent
constexpr double farOutside = 1e6;

/// A stretch of time in pixels, cut to what a canvas shows.
struct PixelSpan
{
    double from;
    double to;
};

PixelSpan visibleSpan(double x0, double x1, const QwtScaleMap& xMap, const QRectF& canvasRect)
{
    const double p0 = xMap.transform(x0);
    const double p1 = xMap.transform(x1);
    return {std::max(std::min(p0, p1), canvasRect.left() - beyond),
            std::min(std::max(p0, p1), canvasRect.right() + beyond)};
}

double clamped(double pixel)
{
    return std::clamp(pixel, -farOutside, farOutside);
}

} // namespace

void myPlotMarker::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                        const QRectF& canvasRect) const
{
    const QwtScaleMap map = ownMap(yMap);
    const QPointF place(xMap.transform(xValue()), map.transform(yValue()));
    if (!shown || !std::isfinite(place.x()) || !std::isfinite(place.y()))
        return;
    if (!isSubjectIn(xMap, map, canvasRect))
        return;
    const QPointF pos = onCanvas(place, canvasRect);
    const QColor ground = GraphDesign::groundOf(painter, plot());
    const QColor ink = GraphDesign::inkOn(ground);
    painter->save();
    painter->setPen(QPen(ink, growth()));
    painter->setBrush(GraphDesign::boxOn(ground));
    switch (type) {
    case MARKER_ANNOTATE:
        if (bubble)
            drawBalloon(painter, pos, balloonTip(place));
        else
            drawTextBox(painter, pos);
        break;
    case MARKER_FLOATING_TEXT:
        drawPointer(painter, pos, xMap, map);
        drawTextBox(painter, pos);
        break;
    case MARKER_TANGENT:
        drawTangent(painter, pos, xMap, map, canvasRect);
        break;
    case MARKER_INTEGRAL:
        drawIntegral(painter, xMap, map, canvasRect);
        break;
    case MARKER_REGRESSION:
        drawRegression(painter, xMap, map, canvasRect, ground);
        break;
    case MARKER_X:
    case MARKER_X_GHOST:
        drawCross(painter, pos, ground);
        break;
    case MARKER_BUBBLE_TIP:
    case MARKER_FFT:
    case MARKER_LAST:
        break;
    }
    painter->restore();
    if (type == MARKER_X || type == MARKER_X_GHOST)
        return;
    painter->save();
    painter->setPen(ink); // a label has no colour of its own
    QRectF words(QPointF(), textSize());
    words.moveCenter(pos);
    shownText.draw(painter, words);
    painter->restore();
}

/// A text goes out of sight with the point that it tells about; a fit can be in sight without its middle.
bool myPlotMarker::isSubjectIn(const QwtScaleMap& xMap, const QwtScaleMap& map, const QRectF& canvas) const
{
    const bool isOfPoint = !connectTo || connectTo->symbol();
    if (type != MARKER_FLOATING_TEXT || !isOfPoint)
        return true;
    const double x = connectTo ? connectTo->xValue() : pointToXVal;
    const double y = connectTo ? connectTo->yValue() : pointToYVal;
    return canvas.adjusted(-1, -1, 1, 1).contains(QPointF(xMap.transform(x), map.transform(y)));
}

/// In the ink of the ground, and cut out of the curve that it stands on.
void myPlotMarker::drawCross(QPainter* painter, const QPointF& pos, const QColor& ground) const
{
    if (!symbol())
        return;
    const double half = symbol()->size().width() / 2.0;
    const double width = symbol()->pen().widthF();
    const QColor ink = type == MARKER_X ? GraphDesign::inkOn(ground) : GraphDesign::faintOn(ground);
    painter->setRenderHint(QPainter::Antialiasing);
    for (const QPen& pen : {QPen(ground, 2 * width, Qt::SolidLine, Qt::SquareCap), QPen(ink, width)}) {
        painter->setPen(pen);
        painter->drawLine(pos + QPointF(-half, -half), pos + QPointF(half, half));
        painter->drawLine(pos + QPointF(-half, half), pos + QPointF(half, -half));
    }
}

void myPlotMarker::drawPointer(QPainter* painter, const QPointF& pos, const QwtScaleMap& xMap,
                               const QwtScaleMap& map) const
{
    const double x = connectTo ? connectTo->xValue() : pointToXVal;
    const double y = connectTo ? connectTo->yValue() : pointToYVal;
    // It ends at the box, which is seen through.
    const QPointF target(clamped(xMap.transform(x)), clamped(map.transform(y)));
    QRectF box(QPointF(), textSize() + QSizeF(2 * textFrame, 2 * textFrame));
    box.moveCenter(pos);
    if (box.contains(target))
        return;
    const QPointF way = target - pos;
    const double acrossX = way.x() != 0 ? box.width() / 2 / std::abs(way.x()) : 1;
    const double acrossY = way.y() != 0 ? box.height() / 2 / std::abs(way.y()) : 1;
    painter->drawLine(pos + way * std::min({acrossX, acrossY, 1.0}), target);
}

void myPlotMarker::drawTextBox(QPainter* painter, const QPointF& pos) const
{
    QRectF box(QPointF(), textSize());
    box.moveCenter(pos);
    painter->drawRect(box.adjusted(-textFrame, -textFrame, textFrame, textFrame));
}

void myPlotMarker::drawBalloon(QPainter* painter, const QPointF& pos, const QPointF& tip) const
{
    const QRectF box = balloonRect(pos);
    QPen pen(painter->pen().color(), 2 * growth());
    pen.setCosmetic(true);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setPen(pen);
    painter->drawPath(BalloonShape::outline(box, tip, BUBBLE_MARGIN));
    if (!bubPic)
        return;
    const QSizeF size = pictureSize();
    const QPointF corner(box.center().x() - size.width() / 2, box.top() + BUBBLE_MARGIN);
    painter->drawPixmap(QRectF(corner, size), pic, QRectF(pic.rect()));
}

void myPlotMarker::drawTangent(QPainter* painter, const QPointF& pos, const QwtScaleMap& xMap,
                               const QwtScaleMap& map, const QRectF& canvasRect) const
{
    const QPointF behind(xMap.transform(xValue() - 1), map.transform(yValue() - slope));
    const QPointF way = pos - behind;
    const double length = std::hypot(way.x(), way.y());
    if (!std::isfinite(length) || length == 0)
        return;
    const QPointF half = way * (canvasRect.width() / tangentPart / length);
    painter->setPen(QPen(painter->pen().color(), 3 * growth()));
    painter->drawLine(pos - half, pos + half);
}

void myPlotMarker::drawIntegral(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& map,
                                const QRectF& canvasRect) const
{
    if (!curve)
        return;
    const double zero = clamped(map.transform(0));
    const PixelSpan seen = visibleSpan(linX0, linX1, xMap, canvasRect);
    QColor fill = curve->getColor();
    fill.setAlpha(areaAlpha);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    QPolygonF area;
    const auto close = [&] {
        if (area.size() > 1) {
            area.append(QPointF(area.last().x(), zero));
            area.append(QPointF(area.first().x(), zero));
            painter->drawPolygon(area);
        }
        area.clear();
    };
    for (double at = seen.from; at <= seen.to; at += 1) {
        const double top = map.transform(curve->getYForX(xMap.invTransform(at)));
        if (std::isfinite(top))
            area.append(QPointF(at, clamped(top)));
        else
            close(); // nothing lies under a gap
    }
    close();
}

/// Within a pixel column a fast wave goes up and down; what it covers there belongs to the line.
QPolygonF myPlotMarker::fitLine(double fromPixel, double toPixel, const QwtScaleMap& xMap,
                                const QwtScaleMap& map) const
{
    constexpr int perColumn = 8;
    constexpr double straight = 1; // pixels that a column may differ from a straight line
    if (!(fromPixel <= toPixel))
        return {};
    const int parts = fit.isNone() ? 1 : perColumn;
    const int columns = int(std::ceil(toPixel - fromPixel));
    QVector<double> times(columns * parts + 1);
    for (int i = 0; i < times.size(); ++i)
        times[i] = xMap.invTransform(std::min(fromPixel + double(i) / parts, toPixel));
    QVector<double> rows;
    if (fit.isNone()) {
        for (const double time : qAsConst(times))
            rows.append(calcRegValue(time));
    } else {
        rows = fit.values(times, fitX, fitY);
    }
    for (double& row : rows)
        row = map.transform(row);
    QPolygonF line;
    for (int i = 0; i < rows.size(); i += parts) {
        const double pixel = std::min(fromPixel + double(i) / parts, toPixel);
        const int end = std::min(i + parts, rows.size() - 1);
        if (std::isfinite(rows[i]))
            line.append(QPointF(pixel, clamped(rows[i])));
        const auto [low, high] = std::minmax_element(rows.cbegin() + i, rows.cbegin() + end + 1);
        const double ends = std::abs(rows[end] - rows[i]);
        if (!(*high - *low > ends + straight)) // also where there is no value
            continue;
        const auto [first, second] = std::minmax(low, high);
        for (const auto& peak : {first, second})
            line.append(QPointF(pixel + double(peak - rows.cbegin() - i) / parts, clamped(*peak)));
    }
    return line;
}

void myPlotMarker::drawRegression(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& map,
                                  const QRectF& canvasRect, const QColor& ground) const
{
    constexpr double shade = 0.35; // of the ink
    const PixelSpan seen = visibleSpan(linX0, linX1, xMap, canvasRect);
    const QPolygonF line = fitLine(seen.from, seen.to, xMap, map);
    painter->setRenderHint(QPainter::Antialiasing);
    // Dashes in a shade of the curve's colour, cut out of the curve: neither the curve nor the average.
    const QColor ink = GraphDesign::inkOn(ground);
    const QColor own = curve ? GraphDesign::mixed(curve->getColor(), ink, shade) : ink;
    QPen dashes(GraphDesign::readableOn(own, ground), 2 * growth(), Qt::CustomDashLine, Qt::FlatCap);
    dashes.setDashPattern({6, 2});
    for (const QPen& pen : {QPen(ground, 5 * growth()), dashes}) {
        painter->setPen(pen);
        painter->drawPolyline(line);
    }
}
