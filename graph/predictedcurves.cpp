#include "graph/predictedcurves.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/graphparts.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"

namespace {

constexpr double behindAll = 14; // the grid has 10, pinned runs 15, curves 20
constexpr double lineWidth = 3;
constexpr double inkPart = 0.35; // of the colour, so that it is not that of the curve
constexpr double textGap = 4;    // pixels

} // namespace

PredictedCurves::PredictedCurves(const GraphParts& parts)
    : parts(parts)
{
    setZ(behindAll);
}

bool PredictedCurves::renew()
{
    ++change;
    renewTexts();
    const bool hadAny = hasAny;
    hasAny = !present().isEmpty();
    return hadAny || hasAny;
}

/// Those of the set, with the line that is being drawn in its place.
QVector<Prediction> PredictedCurves::present() const
{
    QVector<Prediction> all = parts.data.predictions;
    if (!stroke)
        return all;
    const auto own =
        std::find_if(all.begin(), all.end(), [this](const Prediction& one) { return one.isOfSame(*stroke); });
    if (own == all.end())
        all.append(*stroke);
    else
        *own = *stroke;
    return all;
}

QRect PredictedCurves::renewTexts()
{
    QStringList now;
    for (const Prediction& prediction : present()) {
        const QString far = Predictions::deviationText(parts.data, prediction, parts.index < 0);
        const QString name = QCoreApplication::translate("PredictedCurves", "Prediction");
        now.append(
            far.isEmpty()
                ? name
                : QCoreApplication::translate("PredictedCurves", "%1: %2 away on average").arg(name, far));
    }
    if (now == texts)
        return {};
    texts = now;
    // A longer one begins further left or right of the same line.
    const QRectF canvas = parts.plot.canvas()->contentsRect();
    return QRectF(canvas.left(), textsBox.top(), canvas.width(), textsBox.height()).toAlignedRect();
}

// --- The pen ---

std::optional<QPointF> PredictedCurves::pointAt(const QPointF& pos) const
{
    const int channel = stroke ? channelOf(*stroke) : -1;
    if (channel < 0 || parts.data.isXYPlot())
        return {};
    const QRectF canvas = parts.plot.canvas()->contentsRect();
    const double x = qBound(canvas.left(), pos.x(), canvas.right());
    const double y = qBound(canvas.top(), pos.y(), canvas.bottom());
    const double time = parts.plot.canvasMap(QwtPlot::xBottom).invTransform(x);
    const double shown = scaleOf(channel, parts.plot.canvasMap(QwtPlot::yLeft)).invTransform(y);
    const Sensor::AltUnit unit = parts.data.getSens(channel)->altUnit();
    return QPointF(std::max(0.0, time), (shown - unit.offset) / unit.factor);
}

void PredictedCurves::begin(const QPointF& pos)
{
    const int channel = parts.curves.activeIndex();
    if (!parts.data.getSens(channel) || parts.data.isXYPlot())
        return;
    stroke = Predictions::about(parts.data, channel);
    if (parts.index < 0) // whichever group's curve is active
        stroke->number = 0;
    for (const Prediction& before : qAsConst(parts.data.predictions)) {
        if (before.isOfSame(*stroke))
            stroke = before;
    }
    lastPoint.reset();
    move(pos);
}

void PredictedCurves::move(const QPointF& pos)
{
    if (const auto point = pointAt(pos)) {
        if (lastPoint) // a click alone draws nothing
            stroke->draw(*lastPoint, *point);
        lastPoint = point;
        renew();
    }
}

std::optional<Prediction> PredictedCurves::end()
{
    std::optional<Prediction> drawn = stroke;
    stroke.reset();
    renew();
    return drawn;
}

// --- Drawing ---

/// That it is drawn on: in the class of any group that is in sight; -1 for none.
int PredictedCurves::channelOf(const Prediction& prediction) const
{
    Prediction about = prediction;
    int channel = Predictions::channelOf(parts.data, about);
    while (parts.index < 0 && channel >= 0 && !isShown(channel)) {
        ++about.number;
        channel = Predictions::channelOf(parts.data, about);
    }
    return channel;
}

bool PredictedCurves::isShown(int channel) const
{
    const myPlotCurve* const curve = parts.curves.at(channel);
    return curve && curve->isVisible();
}

QwtScaleMap PredictedCurves::scaleOf(int channel, const QwtScaleMap& yMap) const
{
    QwtScaleMap map = yMap;
    parts.scaler.fixScaleY(&map, channel);
    return map;
}

QColor PredictedCurves::colorOf(int channel, const QColor& ground) const
{
    return GraphDesign::mixed(parts.curves.at(channel)->getColor(), GraphDesign::inkOn(ground), inkPart);
}

/// All that the picture depends on.
QVector<double> PredictedCurves::key(const QwtScaleMap& xMap, const QRectF& canvasRect, double ratio) const
{
    const QColor ground = parts.plot.canvasBackground().color();
    QVector<double> key{xMap.s1(),          xMap.s2(),           xMap.p1(), xMap.p2(),
                        canvasRect.width(), canvasRect.height(), ratio,     double(ground.rgb()),
                        double(change)};
    for (const Prediction& prediction : present()) {
        const int i = channelOf(prediction);
        key << i << parts.scaler.getScaleMin(i) << parts.scaler.getScaleMax(i) << double(isShown(i))
            << (isShown(i) ? double(parts.curves.at(i)->getColor().rgb()) : 0);
    }
    return key;
}

void PredictedCurves::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                           const QRectF& canvasRect) const
{
    if (!hasAny || parts.data.isXYPlot())
        return;
    const QColor ground = GraphDesign::groundOf(painter, &parts.plot);
    painter->save();
    if (!GraphDesign::isOnScreen(painter)) {
        painter->setClipRect(canvasRect, Qt::IntersectClip);
        drawLines(painter, xMap, yMap, ground, lineWidth);
    } else {
        const double ratio = std::max(1.0, painter->device()->devicePixelRatioF());
        const QVector<double> now = key(xMap, canvasRect, ratio);
        if (now != pictureKey) {
            picture = QPixmap((canvasRect.size() * ratio).toSize());
            picture.setDevicePixelRatio(ratio);
            picture.fill(Qt::transparent);
            QPainter onPicture(&picture);
            onPicture.translate(-canvasRect.topLeft());
            drawLines(&onPicture, xMap, yMap, ground, lineWidth * GraphFonts::growth(parts.plot.height()));
            pictureKey = now;
        }
        painter->drawPixmap(canvasRect.topLeft(), picture);
    }
    drawTexts(painter, xMap, yMap, canvasRect, ground);
    painter->restore();
}

void PredictedCurves::drawLines(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                                const QColor& ground, double width) const
{
    painter->setRenderHint(QPainter::Antialiasing);
    for (const Prediction& prediction : present()) {
        const int channel = channelOf(prediction);
        if (!isShown(channel))
            continue;
        const Sensor::AltUnit unit = parts.data.getSens(channel)->altUnit();
        const QwtScaleMap yOwn = scaleOf(channel, yMap);
        QPolygonF line;
        for (const QPointF& point : prediction.points)
            line.append({xMap.transform(point.x()), yOwn.transform(point.y() * unit.factor + unit.offset)});
        painter->setPen(QPen(colorOf(channel, ground), width, Qt::DashLine, Qt::FlatCap, Qt::RoundJoin));
        painter->drawPolyline(line);
    }
}

/// Over the end of its line, inside of the canvas.
QRectF PredictedCurves::textBox(const QFont& font, const QString& text, const QPointF& end,
                                const QRectF& canvasRect) const
{
    const QFontMetricsF metrics(font);
    const QSizeF size(metrics.horizontalAdvance(text) + textGap, metrics.height());
    const double right = std::min(end.x(), canvasRect.right() - textGap);
    const double left = std::max(canvasRect.left() + textGap, right - size.width());
    const double above = end.y() - lineWidth - size.height();
    const double top = above > canvasRect.top() ? above : end.y() + lineWidth;
    return {QPointF(left, qBound(canvasRect.top(), top, canvasRect.bottom() - size.height())), size};
}

void PredictedCurves::drawTexts(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                                const QRectF& canvasRect, const QColor& ground) const
{
    const QFont font = GraphFonts::inPixels(painter->font(), GraphFonts::textPixels(parts.plot.height()));
    painter->setFont(font);
    textsBox = QRectF();
    const QVector<Prediction> all = present();
    for (int i = 0; i < std::min(all.size(), texts.size()); ++i) {
        const int channel = channelOf(all.at(i));
        if (!isShown(channel) || all.at(i).points.isEmpty())
            continue;
        const Sensor::AltUnit unit = parts.data.getSens(channel)->altUnit();
        const QPointF last = all.at(i).points.constLast();
        const QPointF end(xMap.transform(last.x()),
                          scaleOf(channel, yMap).transform(last.y() * unit.factor + unit.offset));
        const QRectF box = textBox(font, texts.at(i), end, canvasRect);
        painter->setPen(colorOf(channel, ground));
        painter->fillRect(box, GraphDesign::boxOn(ground));
        painter->drawText(box, Qt::AlignCenter | Qt::TextSingleLine, texts.at(i));
        textsBox |= box;
    }
}
