#include "graph/pinnedcurves.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "data/expdata.h"
#include "data/runaverage.h"
#include "graph/curvepainter.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/graphparts.h"
#include "graph/myplotcurve.h"
#include "graph/scalemanager.h"
#include "graph/strokepath.h"

namespace {

constexpr double behindCurves = 15; // the grid has 10, curves 20
constexpr double paleness[] = {0.5, 0.64, 0.76};
constexpr double penWidth = 2;
constexpr double longestGap = 4.5; // samples, as for the present curves

QwtScaleMap scaled(QwtScaleMap map, double ratio, double origin)
{
    map.setPaintInterval((map.p1() - origin) * ratio, (map.p2() - origin) * ratio);
    return map;
}

} // namespace

PinnedCurves::PinnedCurves(const GraphParts& parts)
    : parts(parts)
    , columns(std::make_unique<CurvePainter>())
{
    setZ(behindCurves);
}

PinnedCurves::~PinnedCurves() = default;

void PinnedCurves::setRuns(const QVector<PinnedRun>& pinned, const QString& present)
{
    runs = pinned;
    presentName = present;
    pictureKey.clear();
    picture = QPixmap();
}

QVector<PinnedCurves::Match> PinnedCurves::matches() const
{
    const StoredExperiment own = StoredExperiment::of(parts.data, true, parts.index < 0);
    const QStringList keys = RunAverage::keysOf(own);
    QVector<Match> found;
    for (int run = 0; run < runs.size(); ++run) {
        const StoredExperiment& experiment = runs.at(run).experiment;
        const QStringList others = RunAverage::keysOf(experiment);
        for (int i = 0; i < others.size(); ++i) {
            const int at = keys.indexOf(others.at(i));
            const myPlotCurve* const curve = at < 0 ? nullptr : parts.curves.at(own.channels.at(at).place);
            const bool isAny = runs.at(run).column || !experiment.channels.at(i).samples.isEmpty();
            if (curve && curve->isVisible() && isAny)
                found.append({run, own.channels.at(at).place, i});
        }
    }
    return found;
}

/// With the samples of one channel and nothing of the others.
StoredExperiment PinnedCurves::loaded(const Match& match) const
{
    const PinnedRun& run = runs.at(match.run);
    StoredExperiment one;
    one.rate = run.experiment.rate;
    one.times = run.column ? run.column(-1) : run.experiment.times;
    one.channels.append(run.experiment.channels.at(match.channel));
    if (run.column)
        one.channels[0].samples = run.column(match.channel);
    return one;
}

QVector<PinnedCurves::Value> PinnedCurves::valuesAt(int curve, double time) const
{
    QVector<Value> values;
    if (runs.isEmpty())
        return values;
    for (const Match& match : matches()) {
        if (match.curve != curve)
            continue;
        const StoredExperiment run = loaded(match);
        const double base = RunAverage::valueAt(run, run.channels.constFirst(), time);
        const Sensor::AltUnit unit = parts.data.getSens(match.curve)->altUnit();
        if (std::isfinite(base))
            values.append({runs.at(match.run).name, base * unit.factor + unit.offset});
    }
    return values;
}

/// All that the picture depends on but the samples, which never change.
QVector<double> PinnedCurves::key(const QwtScaleMap& xMap, const QRectF& canvasRect, double ratio) const
{
    QVector<double> key{xMap.s1(),
                        xMap.s2(),
                        xMap.p1(),
                        xMap.p2(),
                        canvasRect.width(),
                        canvasRect.height(),
                        ratio,
                        double(parts.plot.canvasBackground().color().rgb())};
    for (int i = 0; i < parts.curves.size(); ++i) {
        const myPlotCurve* const curve = parts.curves.at(i);
        const SensorPtr& sensor = parts.data.getSens(i);
        key << parts.scaler.getScaleMin(i) << parts.scaler.getScaleMax(i) << double(curve->isVisible())
            << double(curve->getColor().rgb()) << (sensor ? sensor->ID : -1);
    }
    return key;
}

QwtScaleMap PinnedCurves::scaleOf(int curve, const QwtScaleMap& yMap) const
{
    QwtScaleMap map = yMap;
    parts.scaler.fixScaleY(&map, curve);
    return map;
}

QColor PinnedCurves::colorOf(int run, const QColor& of, const QColor& ground)
{
    const double part = paleness[std::min<int>(run, int(std::size(paleness)) - 1)];
    return GraphDesign::mixed(of, ground, part);
}

void PinnedCurves::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                        const QRectF& canvasRect) const
{
    if (runs.isEmpty() || parts.data.isXYPlot())
        return;
    if (!GraphDesign::isOnScreen(painter) || !CurvePainter::canPaint(xMap, yMap)) {
        stroke(painter, xMap, yMap, canvasRect);
        return;
    }
    const double ratio = std::max(1.0, painter->device()->devicePixelRatioF());
    const QVector<double> now = key(xMap, canvasRect, ratio);
    if (now != pictureKey) {
        picture = QPixmap((canvasRect.size() * ratio).toSize());
        picture.fill(Qt::transparent);
        QPainter onPicture(&picture);
        render(&onPicture, xMap, yMap, canvasRect, ratio);
        picture.setDevicePixelRatio(ratio);
        pictureKey = now;
    }
    painter->drawPixmap(canvasRect.topLeft(), picture);
}

void PinnedCurves::render(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                          const QRectF& canvasRect, double ratio) const
{
    const QwtScaleMap xDevice = scaled(xMap, ratio, canvasRect.left());
    const QRect canvas(QPoint(0, 0), picture.size());
    const QColor ground = parts.plot.canvasBackground().color();
    const int width =
        std::max(1, int(std::lround(penWidth * GraphFonts::growth(parts.plot.height()) * ratio)));
    for (const Match& match : matches()) {
        const StoredExperiment experiment = loaded(match);
        const StoredExperiment::Channel& channel = experiment.channels.constFirst();
        const QVector<double>& samples = channel.samples;
        const double longest = experiment.rate > 0 ? longestGap * experiment.rate : HUGE_VAL;
        columns->setTime(experiment.times, xDevice, canvas);
        const CurvePainter::Curve curve{samples.constData(), channel.leftPad,
                                        std::min(samples.size(), experiment.times.size()),
                                        parts.data.getSens(match.curve)->altUnit(), longest};
        const QwtScaleMap yDevice = scaled(scaleOf(match.curve, yMap), ratio, canvasRect.top());
        columns->spans(curve, yDevice, {width, {}, width})
            .paint(painter, colorOf(match.run, parts.curves.at(match.curve)->getColor(), ground));
    }
    columns->forget();
    painter->scale(ratio, ratio);
    drawNames(painter, QRectF(QPointF(0, 0), canvasRect.size()), ground);
}

/// Paper and files have every sample.
void PinnedCurves::stroke(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                          const QRectF& canvasRect) const
{
    const QColor ground = GraphDesign::groundOf(painter, &parts.plot);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setClipRect(canvasRect, Qt::IntersectClip);
    for (const Match& match : matches()) {
        const StoredExperiment experiment = loaded(match);
        const QVector<double>& times = experiment.times;
        const QVector<double>& samples = experiment.channels.constFirst().samples;
        const Sensor::AltUnit unit = parts.data.getSens(match.curve)->altUnit();
        const QwtScaleMap yOwn = scaleOf(match.curve, yMap);
        painter->setPen(QPen(colorOf(match.run, parts.curves.at(match.curve)->getColor(), ground), penWidth));
        QPolygonF line;
        const auto draw = [&] {
            painter->drawPolyline(isThinned ? StrokePath::thinned(line) : line);
            line.clear();
        };
        for (int i = experiment.channels.constFirst().leftPad; i < std::min(times.size(), samples.size());
             ++i) {
            if (std::isfinite(samples.at(i))) {
                line.append(
                    {xMap.transform(times.at(i)), yOwn.transform(samples.at(i) * unit.factor + unit.offset)});
                continue;
            }
            draw();
        }
        draw();
    }
    drawNames(painter, canvasRect, ground);
    painter->restore();
}

/// A short mark in the corner; the legend is that of the present curves.
void PinnedCurves::drawNames(QPainter* painter, const QRectF& canvasRect, const QColor& ground) const
{
    constexpr double dash = 14; // pixels
    constexpr double gap = 4;
    const QFont font = GraphFonts::inPixels(painter->font(), GraphFonts::textPixels(parts.plot.height()));
    const QFontMetricsF metrics(font);
    painter->setFont(font);
    double top = canvasRect.top() + gap;
    const auto drawName = [&](const QString& whole, const QColor& color) {
        const QString name = metrics.elidedText(whole, Qt::ElideRight, canvasRect.width() / 3);
        const QPointF at(canvasRect.right() - gap - metrics.horizontalAdvance(name), top + metrics.ascent());
        const double middle = top + metrics.height() / 2;
        painter->setPen(QPen(color, penWidth + 1));
        painter->drawLine(QPointF(at.x() - gap - dash, middle), QPointF(at.x() - gap, middle));
        painter->setPen(GraphDesign::faintOn(ground));
        painter->drawText(at, name);
        top += metrics.height();
    };
    const QColor ink = GraphDesign::inkOn(ground);
    if (!presentName.isEmpty())
        drawName(presentName, ink);
    for (int run = 0; run < runs.size(); ++run)
        drawName(runs.at(run).name, colorOf(run, ink, ground));
}
