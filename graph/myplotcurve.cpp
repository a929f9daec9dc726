#include "graph/myplotcurve.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <limits>

#include <qwt_scale_map.h>
#include <qwt_symbol.h>

#include "data/expdata.h"
#include "graph/curvepainter.h"
#include "graph/scalemanager.h"

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
    return painter->device()->devType() == QInternal::Widget &&
           painter->worldTransform().type() <= QTransform::TxTranslate;
}

// The columns that can be seen: a frame of a run repaints few of them.
QRect shownPart(const QPainter* painter, const QRectF& canvas)
{
    const QRect all = canvas.toAlignedRect();
    return painter->hasClipping() ? all & painter->clipBoundingRect().toAlignedRect() : all;
}

// The rim of a round brush of `width` pixels, as offsets from the line. Thin lines drawn at all of them look
// like the wide line, at a fraction of its cost.
QVector<QPointF> brushRim(int width)
{
    QVector<QPointF> rim;
    for (int row = 0; row < width; ++row) {
        const double offset = row - (width - 1) / 2.0;
        const double half = std::sqrt(width * width / 4.0 - offset * offset);
        const int left = int(std::floor(width / 2.0 - half + 0.5));
        const int right = width - 1 - left;
        rim.append(QPointF(left - width / 2, row - width / 2));
        if (right > left)
            rim.append(QPointF(right - width / 2, row - width / 2));
    }
    return rim;
}

// Lines of this many segments or more are drawn with the rim; below it the engine's own wide line looks
// better.
constexpr int manySegments = 200;

void drawPolyline(QPainter* painter, const QPolygonF& line)
{
    const QPen pen = painter->pen();
    if (line.size() < manySegments || pen.width() <= 1 || pen.style() != Qt::SolidLine) {
        painter->drawPolyline(line);
        return;
    }
    painter->save();
    painter->setPen(QPen(pen.color(), 0));
    const QVector<QPointF> rim = brushRim(pen.width());
    for (const QPointF& offset : rim)
        painter->drawPolyline(line.translated(offset));
    painter->restore();
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

/// Samples without a neighbour, which no line shows.
void myPlotCurve::drawPoints(QPainter* painter, const QVector<QPointF>& places) const
{
    constexpr int pointSize = 8;
    if (places.isEmpty())
        return;
    const QwtSymbol point(QwtSymbol::Diamond, pen().color(), QPen(pen().color(), 1),
                          QSize(pointSize, pointSize));
    point.drawSymbols(painter, places.constData(), places.size());
}

bool myPlotCurve::paintsByColumns(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap) const
{
    return columns && isOnScreen(painter) && !data->isXYPlot() && CurvePainter::canPaint(xMap, yMap);
}

void myPlotCurve::drawCurve(QPainter* painter, int style, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                            const QRectF& canvasRect, int from, int to) const
{
    const SensorPtr& sensor = data->getSens(iData);
    if (!sensor)
        return;
    if (style == Lines && paintsByColumns(painter, xMap, yMap)) {
        const QVector<double>& y = data->getYNoConv(iData);
        const int end = std::min({to + 1, y.size(), data->getXSize()});
        columns->setTime(data->getX(), xMap, shownPart(painter, canvasRect));
        const bool dashed = pen().style() != Qt::SolidLine;
        const QVector<QRect>& spans = columns->spans(
            {y.constData(), from, end, sensor->altUnit(), longestLine()}, yMap, {pen().width(), dashed});
        painter->setPen(Qt::NoPen);
        painter->setBrush(pen().color());
        painter->drawRects(spans);
        QVector<QPointF> places;
        for (const int i : columns->lonely())
            places.append({xMap.transform(data->getXAt(i)), yMap.transform(data->getYAt(iData, i))});
        drawPoints(painter, places);
    } else if (style == Lines && isOnScreen(painter) && data->isXYPlot()) {
        drawXYPath(painter, xMap, yMap, from, to);
    } else {
        for (const Stretch& part : stretches(from, to)) {
            QwtPlotCurve::drawCurve(painter, style, xMap, yMap, canvasRect, part.from, part.to);
            const QPointF first = sample(part.from);
            if (style == Lines && part.from == part.to)
                drawPoints(painter, {{xMap.transform(first.x()), yMap.transform(first.y())}});
        }
    }
}

void myPlotCurve::drawSymbols(QPainter* painter, const QwtSymbol& symbol, const QwtScaleMap& xMap,
                              const QwtScaleMap& yMap, const QRectF& canvasRect, int from, int to) const
{
    const SensorPtr& sensor = data->getSens(iData);
    if (!sensor || !paintsByColumns(painter, xMap, yMap)) {
        for (const Stretch& part : stretches(from, to))
            QwtPlotCurve::drawSymbols(painter, symbol, xMap, yMap, canvasRect, part.from, part.to);
        return;
    }
    const QVector<double>& y = data->getYNoConv(iData);
    const int end = std::min({to + 1, y.size(), data->getXSize()});
    columns->setTime(data->getX(), xMap, shownPart(painter, canvasRect));
    const QVector<QPointF>& places =
        columns->symbolPositions({y.constData(), from, end, sensor->altUnit()}, xMap, yMap);
    symbol.drawSymbols(painter, places.constData(), places.size());
}

// Samples that fall on the same pixel as the one before are left out.
void myPlotCurve::drawXYPath(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, int from,
                             int to) const
{
    constexpr double farOutside = 1e6;
    const int iX = data->getXYIndex();
    const QVector<double>& x = data->getYNoConv(iX);
    const QVector<double>& y = data->getYNoConv(iData);
    const SensorPtr& xSensor = data->getSens(iX);
    const SensorPtr& ySensor = data->getSens(iData);
    if (!xSensor || !ySensor)
        return;
    const Sensor::AltUnit xUnit = xSensor->altUnit();
    const Sensor::AltUnit yUnit = ySensor->altUnit();
    const int end = std::min({to + 1, x.size(), y.size()});
    QPolygonF line;
    for (int i = from; i < end; ++i) {
        const double column = xMap.transform(x[i] * xUnit.factor + xUnit.offset);
        const double row = yMap.transform(y[i] * yUnit.factor + yUnit.offset);
        if (!std::isfinite(column) || !std::isfinite(row)) {
            drawPolyline(painter, line);
            line.clear();
            continue;
        }
        const QPointF point(std::round(std::clamp(column, -farOutside, farOutside)),
                            std::round(std::clamp(row, -farOutside, farOutside)));
        if (line.isEmpty() || line.last() != point)
            line.append(point);
    }
    drawPolyline(painter, line);
}
