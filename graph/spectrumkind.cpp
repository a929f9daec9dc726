#include "graph/spectrumkind.h"

#include <algorithm>

#include <qwt_plot.h>
#include <qwt_plot_picker.h>

#include "data/expdata.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/markerlayer.h"
#include "graph/peakname.h"

namespace {

constexpr double highestFrequency = 2000; // Hz; what lies above comes into sight with the wheel
constexpr double roomOnTop = 1.05;
constexpr double mostDecibels = 100; // that an axis shows

QString unitBehind(const ExpData& data)
{
    const SensorPtr& sensor = data.getSens(0);
    return sensor && !sensor->unitName.isEmpty() ? QLatin1Char(' ') + sensor->unitName : QString();
}

} // namespace

/// What lies under the pointer.
class FrequencyTip : public QwtPlotPicker
{
public:
    explicit FrequencyTip(const GraphParts& parts)
        : QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::NoRubberBand, QwtPicker::AlwaysOn,
                        parts.plot.canvas())
        , parts(parts)
    {
    }

protected:
    QwtText trackerTextF(const QPointF& pos) const override
    {
        const ExpData& data = parts.data;
        if (data.getXSize() < 2 || pos.x() < data.getX().first() || pos.x() > data.getX().last())
            return {};
        const double value = data.interpolateY(0, pos.x());
        QwtText text(
            QStringLiteral("%1: %2%3")
                .arg(MarkerTexts::frequency(pos.x(), data.dt), MarkerTexts::level(value), unitBehind(data)),
            QwtText::PlainText);
        const QColor ground = parts.plot.canvasBackground().color();
        text.setColor(GraphDesign::inkOn(ground));
        text.setBackgroundBrush(GraphDesign::boxOn(ground));
        text.setFont(GraphFonts::inPixels(QFont(), GraphFonts::textPixels(parts.plot.height())));
        return text;
    }

private:
    const GraphParts parts;
};

SpectrumKind::SpectrumKind(const GraphParts& parts, MarkerLayer& layer)
    : parts(parts)
    , layer(layer)
    , peak(std::make_unique<PeakName>(parts))
    , tip(new FrequencyTip(parts))
{
    peak->attach(&parts.plot);
    parts.axes.setText(QwtPlot::xBottom, tr("Frequency [%1]").arg(tr("Hz")));
}

SpectrumKind::~SpectrumKind() = default;

void SpectrumKind::setData()
{
    parts.curves.rebuild();
    const SensorPtr& sensor = parts.data.getSens(0);
    parts.axes.setText(QwtPlot::yLeft, sensor ? sensor->getNameWithUnit(false) : QString());
    layer.followData();
    update();
}

void SpectrumKind::update()
{
    if (!isZoomed)
        showRanges();
    namePeak();
    layer.renew();
    parts.axes.repaint();
}

void SpectrumKind::showRanges()
{
    const QVector<double>& x = parts.data.getX();
    const QVector<double>& y = parts.data.getYNoConv(0);
    if (x.isEmpty() || y.isEmpty()) {
        parts.axes.setRange(QwtPlot::xBottom, 0, 1);
        parts.axes.setRange(QwtPlot::yLeft, 0, 1);
        return;
    }
    parts.axes.setRange(QwtPlot::xBottom, 0, std::min(highestFrequency, x.last()));
    const auto [low, high] = std::minmax_element(y.cbegin(), y.cend());
    if (*low < 0) // decibels
        parts.axes.setRange(QwtPlot::yLeft, std::max(*low, *high - mostDecibels),
                            *high + (roomOnTop - 1) * mostDecibels);
    else
        parts.axes.setRange(QwtPlot::yLeft, 0, *high > 0 ? *high * roomOnTop : 1);
}

void SpectrumKind::namePeak()
{
    const QVector<double>& y = parts.data.getYNoConv(0);
    const auto highest = std::max_element(y.cbegin(), y.cend());
    const auto lowest = std::min_element(y.cbegin(), y.cend());
    if (y.isEmpty() || (y.size() > 1 && !(*highest > *lowest))) {
        peak->setPeak({}, QString());
        return;
    }
    const double x = parts.data.getXAt(int(highest - y.cbegin()));
    peak->setPeak({x, *highest}, tr("Peak: %1, %2")
                                     .arg(MarkerTexts::frequency(x, parts.data.dt),
                                          MarkerTexts::level(*highest) + unitBehind(parts.data)));
}

void SpectrumKind::showColor(int iSens)
{
    parts.curves.design(iSens);
    parts.plot.replot();
}

void SpectrumKind::zoomIn(const QRectF& rect)
{
    isZoomed = true;
    parts.axes.setRange(QwtPlot::xBottom, std::max(0.0, rect.left()), rect.right());
    parts.axes.setRange(QwtPlot::yLeft, rect.top(), rect.bottom());
    update();
}

void SpectrumKind::zoomOut()
{
    isZoomed = false;
    update();
}
