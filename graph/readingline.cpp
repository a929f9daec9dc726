#include "graph/readingline.h"

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/graphparts.h"
#include "graph/myplotcurve.h"
#include "graph/pinnedcurves.h"
#include "graph/scalemanager.h"

ReadingLine::ReadingLine(const GraphParts& parts, MarkerForm form)
    : parts(parts)
    , form(form)
{
}

ReadingLine::~ReadingLine()
{
    delete line;
}

ReadingLine::Axis ReadingLine::axis() const
{
    if (parts.data.getXSize() == 0)
        return Axis::None;
    if (form == MarkerForm::Frequency || parts.data.isXYPlot())
        return Axis::Own;
    return parts.data.dt > 0 ? Axis::Time : Axis::Number;
}

// Rounded to what the text of the place tells, so that the values are those of the time that stands there.
double ReadingLine::xAt(double pixel) const
{
    constexpr double second = 1;
    const double x = parts.plot.canvasMap(QwtPlot::xBottom).invTransform(pixel);
    if (axis() == Axis::Number)
        return std::round(x);
    if (axis() != Axis::Time || perPixel() <= 0)
        return x;
    const double finest = parts.data.dt < second ? std::max(parts.data.dt, perPixel()) : perPixel();
    const double unit = std::pow(10, std::floor(std::log10(finest)));
    return std::round(x / unit) * unit;
}

double ReadingLine::perPixel() const
{
    const QwtScaleMap map = parts.plot.canvasMap(QwtPlot::xBottom);
    return map.pDist() > 0 ? std::abs(map.sDist() / map.pDist()) : 0;
}

double ReadingLine::pixelOf(double x) const
{
    return parts.plot.transform(QwtPlot::xBottom, x);
}

double ReadingLine::step() const
{
    switch (axis()) {
    case Axis::Time:
        return std::max(parts.data.dt, perPixel());
    case Axis::Number:
        return std::max(1.0, perPixel());
    case Axis::Own:
    case Axis::None:
        break;
    }
    return perPixel();
}

void ReadingLine::show(double x)
{
    shownAt = x;
    if (!line) {
        line = new QWidget(parts.plot.canvas());
        line->setObjectName(QStringLiteral("readingLine"));
        line->setAttribute(Qt::WA_TransparentForMouseEvents);
        line->setAutoFillBackground(true);
    }
    place();
}

void ReadingLine::hide()
{
    shownAt.reset();
    if (line)
        line->hide();
}

void ReadingLine::place()
{
    if (!line || !shownAt)
        return;
    const QRect canvas = parts.plot.canvas()->contentsRect();
    const int width = std::max(1, int(std::lround(GraphFonts::growth(parts.plot.height()))));
    const double at = pixelOf(*shownAt);
    const bool isInSight = at >= canvas.left() && at <= canvas.right() + 1;
    QPalette colors = line->palette();
    const QColor ink = GraphDesign::inkOn(parts.plot.canvasBackground().color());
    if (colors.color(QPalette::Window) != ink) {
        colors.setColor(QPalette::Window, ink);
        line->setPalette(colors);
    }
    if (isInSight)
        line->setGeometry(int(std::lround(at)) - width / 2, canvas.top(), width, canvas.height());
    line->setVisible(isInSight);
}

QVector<Reading> ReadingLine::readings(double x, double pixelY, const PinnedCurves* pinned) const
{
    QVector<Reading> all;
    for (int i = 0; i < parts.curves.size(); ++i) {
        const SensorPtr& sensor = parts.data.getSens(i);
        const myPlotCurve* const curve = parts.curves.at(i);
        const bool isSeen = sensor && curve && curve->isVisible();
        if (!isSeen || parts.data.isMeaningless(i))
            continue;
        Reading reading;
        reading.group = parts.index < 0 ? sensor->groupName : QString();
        reading.name = sensor->name;
        reading.unit = sensor->unitName;
        reading.color = curve->getColor();
        const auto text = [&](double value) {
            return form == MarkerForm::Frequency ? MarkerTexts::level(value) : sensor->valueToString(value);
        };
        if (const std::optional<double> value = valueAt(i, x, pixelY))
            reading.value = text(*value);
        all.append(reading);
        const bool hasBehind = pinned && (axis() == Axis::Time || axis() == Axis::Number);
        for (const auto& other : hasBehind ? pinned->valuesAt(i, x) : QVector<PinnedCurves::Value>())
            all.append({reading.group, other.name, text(other.value), reading.unit, reading.color, true});
    }
    return all;
}

std::optional<double> ReadingLine::valueAt(int i, double x, double pixelY) const
{
    const QVector<double>& times = parts.data.getX();
    const int last = std::min(times.size(), parts.data.getYSize(i)) - 1;
    const int first = parts.data.getLeftPad(i);
    if (axis() == Axis::Own && form == MarkerForm::Curve)
        return nearestOnPath(i, x, pixelY);
    if (last < first)
        return std::nullopt;
    double value = 0;
    if (axis() == Axis::Time) {
        if (x < times.at(first) || x > times.at(last))
            return std::nullopt;
        value = parts.data.interpolateY(i, x);
    } else {
        const double half = (axis() == Axis::Number ? 1 : parts.data.dt) / 2;
        int k = int(std::lower_bound(times.cbegin() + first, times.cbegin() + last, x) - times.cbegin());
        if (k > first && x - times.at(k - 1) <= times.at(k) - x)
            --k;
        if (std::abs(times.at(k) - x) > half)
            return std::nullopt;
        value = parts.data.getYAt(i, k);
    }
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

/// A curve over a sensor goes there and back.
std::optional<double> ReadingLine::nearestOnPath(int i, double x, double pixelY) const
{
    const int iX = parts.data.getXYIndex();
    const int count = std::min(parts.data.getYSize(iX), parts.data.getYSize(i));
    QwtScaleMap yMap = parts.plot.canvasMap(QwtPlot::yLeft);
    parts.scaler.fixScaleY(&yMap, i);
    const double at = pixelOf(x);
    std::optional<double> best;
    double bestBeside = 0;
    double bestAbove = 0;
    const QwtScaleMap xMap = parts.plot.canvasMap(QwtPlot::xBottom);
    for (int k = 0; k < count; ++k) {
        const double value = parts.data.getYAt(i, k);
        const double beside = std::round(std::abs(xMap.transform(parts.data.getYAt(iX, k)) - at));
        if (!std::isfinite(value) || !std::isfinite(beside))
            continue;
        const double above = std::abs(yMap.transform(value) - pixelY);
        if (!best || beside < bestBeside || (beside == bestBeside && above < bestAbove)) {
            best = value;
            bestBeside = beside;
            bestAbove = above;
        }
    }
    return best;
}

QString ReadingLine::placeText(double x) const
{
    if (form == MarkerForm::Frequency)
        return MarkerTexts::frequency(x, perPixel());
    if (const SensorPtr& sensor = parts.data.getSens(parts.data.getXYIndex()))
        return QStringLiteral("%1 = %2 %3").arg(sensor->name, sensor->valueToString(x), sensor->unitName);
    const TimeScaleDraw& time = parts.axes.time();
    return QStringLiteral("%1 = %2 %3")
        .arg(time.getTimeOrSample(), time.getTimeString(x, perPixel()), time.getUnitName())
        .trimmed();
}
