#include "graph/myplotcurve.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <limits>

#include <qwt_clipper.h>
#include <qwt_graphic.h>
#include <qwt_plot.h>
#include <qwt_scale_map.h>
#include <qwt_symbol.h>

#include "data/expdata.h"
#include "graph/contrast.h"
#include "graph/curvepainter.h"
#include "graph/graphdesign.h"
#include "graph/scalemanager.h"
#include "graph/strokemask.h"
#include "graph/strokepath.h"

namespace {

// A curve deletes its series, but the data set belongs to somebody else and serves one channel at a time.
class ChannelSeries : public QwtSeriesData<QPointF>
{
public:
    ChannelSeries(ExpData* data, int iData)
        : data(data)
        , iData(iData)
    {
    }
    size_t size() const override { return selected()->size(); }
    QPointF sample(size_t i) const override { return selected()->sample(i); }
    QRectF boundingRect() const override { return selected()->boundingRect(); }

private:
    ExpData* selected() const
    {
        data->setSensorToDraw(iData);
        return data;
    }
    ExpData* const data;
    const int iData;
};

bool isOnScreen(const QPainter* painter)
{
    return GraphDesign::isOnScreen(painter);
}

// The columns that can be seen and one more on each side, which the edges of the others go on to: a frame of
// a run repaints few of them.
QRect shownPart(const QPainter* painter, const QRectF& canvas)
{
    const QRect all = canvas.toAlignedRect();
    return painter->hasClipping() ? all & painter->clipBoundingRect().toAlignedRect().adjusted(-1, 0, 1, 0)
                                  : all;
}

// Device pixels per coordinate, on screens that are scaled.
double deviceRatio(const QPainter* painter)
{
    const double ratio = painter->deviceTransform().m11() / painter->worldTransform().m11();
    return ratio > 0 ? ratio : 1;
}

QwtScaleMap inDevicePixels(QwtScaleMap map, double ratio)
{
    map.setPaintInterval(map.p1() * ratio, map.p2() * ratio);
    return map;
}

int casingWidth(double penWidth)
{
    return 1 + int(penWidth / 4);
}

QPen roundPen(const QPen& pen, const QColor& color, double width)
{
    // Dashes are counted in widths of the pen.
    QVector<qreal> dashes = pen.style() == Qt::CustomDashLine ? pen.dashPattern() : QVector<qreal>();
    for (qreal& dash : dashes)
        dash *= pen.widthF() / width;
    QPen result(color, width, Qt::SolidLine, dashes.isEmpty() ? Qt::RoundCap : Qt::FlatCap, Qt::RoundJoin);
    if (!dashes.isEmpty())
        result.setDashPattern(dashes);
    return result;
}

} // namespace

myPlotCurve::myPlotCurve(ExpData* data, scaleManager* scaler, int iData, CurvePainter* painter)
    : data(data)
    , scaler(scaler)
    , columns(painter)
    , iData(iData)
{
    setData(new ChannelSeries(data, iData));
}

int myPlotCurve::rotateMode()
{
    mode = (mode + 1) % (CURVE_HIDDEN + 1);
    return mode;
}

void myPlotCurve::setMode(int newMode)
{
    if (newMode < CURVE_LINE || newMode > CURVE_HIDDEN)
        return;
    mode = newMode;
    setVisible(isShown());
}

void myPlotCurve::setColor(const QColor& newColor)
{
    color = newColor;
    userColorSet = true;
}

double myPlotCurve::getYForX(double x) const
{
    return data->interpolateY(iData, x);
}

void myPlotCurve::drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                             const QRectF& canvasRect, int from, int to) const
{
    data->setSensorToDraw(iData);
    QwtScaleMap map = yMap;
    scaler->fixScaleY(&map, iData);
    if (data->isAverage(iData))
        to = std::min(to < 0 ? data->getXSize() : to, data->settledRows() - 1);
    QwtPlotCurve::drawSeries(painter, xMap, map, canvasRect, std::max(from, data->getLeftPad(iData)), to);
}

/// Seconds or sample numbers that a line may bridge: up to three missing samples.
double myPlotCurve::longestLine() const
{
    constexpr double samples = 4.5;
    return data->dt > 0 ? samples * data->dt : std::numeric_limits<double>::infinity();
}

/// The parts of the curve that are drawn in one line.
QVector<myPlotCurve::Stretch> myPlotCurve::stretches(int from, int to) const
{
    const QVector<double>& x = data->getX();
    const QVector<double>& y = data->getYNoConv(iData);
    const double longest = longestLine();
    const bool isXY = data->isXYPlot();
    QVector<Stretch> result;
    bool isOpen = false;
    for (int i = from; i <= std::min(to, std::min(y.size(), x.size()) - 1); ++i) {
        const bool isThere =
            !std::isnan(y[i]) && !(isXY && std::isnan(data->getYNoConvAt(data->getXYIndex(), i)));
        if (isThere && isOpen && (isXY || x[i] - x[i - 1] <= longest))
            result.last().to = i;
        else if (isThere)
            result.append({i, i});
        isOpen = isThere;
    }
    return result;
}

QColor myPlotCurve::casingOn(const QPainter* painter) const
{
    if (fixedCasing.isValid())
        return fixedCasing;
    return Contrast::casingFor(pen().color(), GraphDesign::groundOf(painter, plot()));
}

/// Samples without a neighbour, which no line shows.
void myPlotCurve::drawPoints(QPainter* painter, const QVector<QPointF>& places) const
{
    constexpr int pointSize = 8;
    if (places.isEmpty())
        return;
    const QColor casing = casingOn(painter);
    const QwtSymbol point(QwtSymbol::Diamond, pen().color(),
                          QPen(casing.isValid() ? casing : pen().color(), 1), QSize(pointSize, pointSize));
    point.drawSymbols(painter, places.constData(), places.size());
}

bool myPlotCurve::paintsByColumns(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const
{
    return columns && isOnScreen(painter) && !data->isXYPlot() && CurvePainter::canPaint(xMap, yMap);
}

/// The samples on the canvas and one more on each side.
myPlotCurve::Stretch myPlotCurve::inSight(const QwtScaleMap& xMap, int from, int to) const
{
    const QVector<double>& x = data->getX();
    to = std::min({to, data->getYSize(iData) - 1, x.size() - 1});
    if (data->isXYPlot() || xMap.s1() > xMap.s2() || from > to)
        return {from, to};
    const auto first = std::lower_bound(x.cbegin() + from, x.cbegin() + to + 1, xMap.s1());
    const auto last = std::upper_bound(first, x.cbegin() + to + 1, xMap.s2());
    return {std::max(from, int(first - x.cbegin()) - 1), std::min(to, int(last - x.cbegin()))};
}

void myPlotCurve::drawCurve(QPainter* painter, int style, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                            const QRectF& canvasRect, int from, int to) const
{
    constexpr int columnsPerSample = 8;
    if (style != Lines || !data->getSens(iData))
        return;
    const Stretch shown = inSight(xMap, from, to);
    const bool isSparse = (shown.to - shown.from) * columnsPerSample < canvasRect.width();
    if (!isSparse && paintsByColumns(painter, xMap, yMap))
        paintColumns(painter, xMap, yMap, canvasRect, from, to);
    else
        strokeLines(painter, xMap, yMap, canvasRect, shown.from, shown.to);
}

void myPlotCurve::paintColumns(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                               const QRectF& canvasRect, int from, int to) const
{
    const QVector<double>& y = data->getYNoConv(iData);
    const int end = std::min({to + 1, y.size(), data->getXSize()});
    const double ratio = deviceRatio(painter);
    const QwtScaleMap xDevice = inDevicePixels(xMap, ratio);
    const QwtScaleMap yDevice = inDevicePixels(yMap, ratio);
    const QRectF part = shownPart(painter, canvasRect);
    const QRect canvas = QRectF(part.topLeft() * ratio, part.size() * ratio).toAlignedRect();
    const CurvePainter::Curve curve{y.constData(), from, end, data->getSens(iData)->altUnit(), longestLine()};
    const int width = std::max(1, qRound(pen().widthF() * ratio));
    const QVector<qreal> dashes = pen().style() == Qt::SolidLine ? QVector<qreal>() : pen().dashPattern();
    columns->setTime(data->getX(), xDevice, canvas);
    painter->save();
    if (ratio != 1)
        painter->scale(1 / ratio, 1 / ratio);
    const QColor casing = casingOn(painter);
    if (casing.isValid()) {
        const int wider = width + 2 * qRound(casingWidth(pen().widthF()) * ratio);
        columns->spans(curve, yDevice, {wider, dashes, width}).paint(painter, casing);
    }
    columns->spans(curve, yDevice, {width, dashes, width}).paint(painter, pen().color());
    painter->restore();
    QVector<QPointF> places;
    for (const int i : columns->lonely())
        places.append(place(i, xMap, yMap));
    drawPoints(painter, places);
}

QPointF myPlotCurve::place(int i, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const
{
    const QPointF value = sample(i);
    return {xMap.transform(value.x()), yMap.transform(value.y())};
}

void myPlotCurve::drawLine(QPainter* painter, const QPolygonF& line, const QPen& pen)
{
    if (isOnScreen(painter) && pen.style() == Qt::SolidLine) {
        painter->fillPath(StrokePath::around(line, pen.widthF()), pen.color());
    } else {
        painter->setPen(pen);
        painter->drawPolyline(line);
    }
}

/// Few samples, other sensors on the x axis, and paper.
void myPlotCurve::strokeLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                              const QRectF& canvasRect, int from, int to) const
{
    QVector<QPointF> singles;
    QVector<QPolygonF> lines;
    for (const Stretch& part : stretches(from, to)) {
        QPolygonF line;
        for (int i = part.from; i <= part.to; ++i)
            line.append(place(i, xMap, yMap));
        if (line.size() == 1)
            singles.append(line);
        else
            lines.append(line);
    }
    if (data->isXYPlot() && isOnScreen(painter) && pen().style() == Qt::SolidLine) {
        strokeDense(painter, lines, canvasRect);
    } else {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setBrush(Qt::NoBrush);
        if (isOnScreen(painter))
            painter->translate(0.5, 0.5); // coordinates are the middle of pixels
        const double width = pen().widthF();
        const QColor casing = casingOn(painter);
        const double wider = width + 2 * casingWidth(width);
        const QRectF around =
            QRectF(shownPart(painter, canvasRect)).adjusted(-2 * wider, -2 * wider, 2 * wider, 2 * wider);
        for (QPolygonF& line : lines)
            line = QwtClipper::clipPolygonF(around, isThinned ? StrokePath::thinned(line) : line);
        for (const QPolygonF& line : qAsConst(lines)) {
            if (casing.isValid())
                drawLine(painter, line, roundPen(pen(), casing, wider));
        }
        for (const QPolygonF& line : qAsConst(lines))
            drawLine(painter, line, roundPen(pen(), pen().color(), width));
        painter->restore();
    }
    drawPoints(painter, singles);
}

void myPlotCurve::strokeDense(QPainter* painter, const QVector<QPolygonF>& lines,
                              const QRectF& canvasRect) const
{
    constexpr double near = 0.3; // pixels that nobody sees
    const double ratio = deviceRatio(painter);
    const QRect area = QRectF(canvasRect.topLeft() * ratio, canvasRect.size() * ratio).toAlignedRect();
    const QColor casing = casingOn(painter);
    const double width = pen().widthF() * ratio;
    StrokeMask curve(area);
    StrokeMask around(area);
    for (const QPolygonF& line : lines) {
        QPolygonF points;
        for (const QPointF& point : line) {
            const QPointF device = point * ratio;
            if (points.isEmpty() || (device - points.last()).manhattanLength() > near)
                points.append(device);
        }
        curve.add(points, width);
        if (casing.isValid())
            around.add(points, width + 2 * casingWidth(pen().widthF()) * ratio);
    }
    painter->save();
    painter->scale(1 / ratio, 1 / ratio);
    around.paint(painter, casing);
    curve.paint(painter, pen().color());
    painter->restore();
}

QwtGraphic myPlotCurve::legendIcon(int index, const QSizeF& size) const
{
    const QColor casing =
        fixedCasing.isValid() ? fixedCasing : Contrast::casingFor(pen().color(), GraphDesign::surroundings);
    if (!casing.isValid() || size.isEmpty() || !testLegendAttribute(LegendShowLine))
        return QwtPlotCurve::legendIcon(index, size);
    QwtGraphic icon;
    icon.setDefaultSize(size);
    icon.setRenderHint(QwtGraphic::RenderPensUnscaled, true);
    QPainter painter(&icon);
    const QLineF middle(0, size.height() / 2, size.width(), size.height() / 2);
    for (const QPen& line : {QPen(casing, pen().widthF() + 2 * casingWidth(pen().widthF())), pen()}) {
        painter.setPen(line);
        painter.drawLine(middle);
    }
    return icon;
}

void myPlotCurve::drawSymbols(QPainter* painter, const QwtSymbol& symbol, const QwtScaleMap& xMap,
                              const QwtScaleMap& yMap, const QRectF& canvasRect, int from, int to) const
{
    constexpr int casing = 2;
    const SensorPtr& sensor = data->getSens(iData);
    const QColor around = casingOn(painter);
    const QwtSymbol wider(symbol.style(), around, QPen(around, casing), symbol.size());
    if (!sensor || !paintsByColumns(painter, xMap, yMap)) {
        const QVector<Stretch> parts = stretches(from, to);
        for (const QwtSymbol* each : {around.isValid() ? &wider : &symbol, &symbol}) {
            for (const Stretch& part : parts)
                QwtPlotCurve::drawSymbols(painter, *each, xMap, yMap, canvasRect, part.from, part.to);
        }
        return;
    }
    const QVector<double>& y = data->getYNoConv(iData);
    const int end = std::min({to + 1, y.size(), data->getXSize()});
    columns->setTime(data->getX(), xMap, shownPart(painter, canvasRect));
    const QVector<QPointF>& places =
        columns->symbolPositions({y.constData(), from, end, sensor->altUnit()}, xMap, yMap);
    if (around.isValid())
        wider.drawSymbols(painter, places.constData(), places.size());
    symbol.drawSymbols(painter, places.constData(), places.size());
}
