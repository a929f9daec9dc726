#include "graph/colorscale.h"

#include <algorithm>
#include <iterator>

#include <QContextMenuEvent>
#include <qwt_plot_layout.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

#include "graph/contrast.h"
#include "graph/setrange.h"
#include "sensors/sensor.h"

namespace {

constexpr Qt::GlobalColor sensColors[] = {
    Qt::red,  Qt::blue,    Qt::darkGreen, Qt::darkRed,  Qt::green,       Qt::darkBlue,
    Qt::cyan, Qt::magenta, Qt::yellow,    Qt::darkCyan, Qt::darkMagenta, Qt::darkYellow,
};

// Without the three colours that the channels of a colorimeter have for themselves.
constexpr Qt::GlobalColor sensColorsColorimeter[] = {
    Qt::darkRed,  Qt::green,       Qt::darkBlue,   Qt::cyan, Qt::magenta,  Qt::yellow,
    Qt::darkCyan, Qt::darkMagenta, Qt::darkYellow, Qt::gray, Qt::darkGray, Qt::black,
};

// Found by a search for the greatest least distance in Oklab, over normal vision and full protanopia,
// deuteranopia and tritanopia by the matrices of Machado, Oliveira and Fernandes (2009): 0.158, the average's
// colour included. The order puts those that are furthest apart first.
constexpr QRgb colorBlindPalette[ColorScale::colorBlindColors] = {
    0xffc10b11, 0xff45dbca, 0xff6300ad, 0xffc58956, 0xff377082, 0xffcbcd03, 0xff9e24fe, 0xff7a96d0,
};

bool isForColorBlind = false;

constexpr int barWidth = 28; // pixels
constexpr int barMargin = 12;
constexpr double fontGrowth = 1.4; // of the window's font
constexpr int leastHeight = 100;

template<size_t N> QColor cyclic(const Qt::GlobalColor (&colors)[N], int index)
{
    return colors[static_cast<size_t>(qMax(index, 0)) % N];
}

} // namespace

ColorMap::ColorMap()
    : QwtLinearColorMap(Qt::darkBlue, Qt::darkRed)
{
    addColorStop(0.2, Qt::blue);
    addColorStop(0.4, Qt::cyan);
    addColorStop(0.6, Qt::yellow);
    addColorStop(0.8, Qt::red);
}

ColorScale::ColorScale(QWidget* parent)
    : QwtPlot(parent)
{
    setObjectName(QStringLiteral("ColorScale"));
    for (int axis : {int(QwtPlot::yLeft), int(QwtPlot::xTop), int(QwtPlot::xBottom)})
        enableAxis(axis, false);
    enableAxis(QwtPlot::yRight);
    canvas()->hide();
    plotLayout()->setCanvasMargin(0);
    QwtScaleWidget* const bar = axisWidget(QwtPlot::yRight);
    QFont larger = font();
    larger.setPointSizeF(larger.pointSizeF() * fontGrowth);
    setAxisFont(QwtPlot::yRight, larger);
    bar->setColorBarEnabled(true);
    bar->setColorBarWidth(barWidth);
    bar->setToolTip(tr("Right click on color scale:\nchange displayed sensor,\nchange color range"));
    bar->installEventFilter(this);
    setAxisTitle(QwtPlot::yRight, tr("CO level [ppm]"));
    showRange();
}

void ColorScale::setSensor(Sensor* shown)
{
    sensor = shown;
    interval = QwtInterval(sensor->mapMin, sensor->mapMax);
    QwtText title(sensor->getNameWithUnit(false), QwtText::PlainText);
    QFont titleFont = axisFont(QwtPlot::yRight);
    titleFont.setBold(true);
    title.setFont(titleFont);
    setAxisTitle(QwtPlot::yRight, title);
    showRange();
}

void ColorScale::setInterval(const QwtInterval& range)
{
    if (range == interval)
        return;
    interval = range;
    showRange();
}

void ColorScale::showRange()
{
    axisWidget(QwtPlot::yRight)->setColorMap(interval.normalized(), new ColorMap);
    setAxisScale(QwtPlot::yRight, interval.minValue(), interval.maxValue());
    replot();
    setFixedWidth(minimumSizeHint().width());
}

bool ColorScale::setRangeMenu()
{
    if (!sensor)
        return false;
    double from = interval.minValue();
    double to = interval.maxValue();
    SetRange dialog(this);
    dialog.sensName(tr("%1 Sensor").arg(sensor->name));
    dialog.Params(sensor->minView, sensor->maxView, sensor->min, sensor->max, &from, &to);
    if (dialog.exec() != QDialog::Accepted || from == to)
        return false;
    sensor->minView = sensor->mapMin = from;
    sensor->maxView = sensor->mapMax = to;
    interval = QwtInterval(from, to);
    showRange();
    return true;
}

QColor ColorScale::binColor(int bin)
{
    static const ColorMap map;
    const QwtInterval all(0, 1);
    return QColor::fromRgb(map.rgb(all, (0.5 + qBound(0, bin, bins - 1)) / bins));
}

QSize ColorScale::sizeHint() const
{
    return minimumSizeHint();
}

/// As wide as the bar and its numbers.
QSize ColorScale::minimumSizeHint() const
{
    return QSize(axisWidget(QwtPlot::yRight)->minimumSizeHint().width() + barMargin, leastHeight);
}

bool ColorScale::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == axisWidget(QwtPlot::yRight) && event->type() == QEvent::ContextMenu) {
        Q_EMIT scaleNeedsSensorMenu(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    }
    return QwtPlot::eventFilter(watched, event);
}

QColor ColorScale::myColors(int index)
{
    if (isForColorBlind)
        return QColor::fromRgb(colorBlindPalette[qMax(index, 0) % colorBlindColors]);
    return cyclic(sensColors, index);
}

QColor ColorScale::averageColor(const QColor& ground)
{
    return Contrast::isDark(ground) ? QColor(Qt::white) : QColor(0x10, 0x18, 0x20);
}

QColor ColorScale::averageCasing(const QColor& ground)
{
    return averageColor(Contrast::isDark(ground) ? Qt::white : Qt::black);
}

void ColorScale::setColorBlindPalette(bool on)
{
    isForColorBlind = on;
}

bool ColorScale::isColorBlindPalette()
{
    return isForColorBlind;
}

QVector<qreal> ColorScale::dashes(const QVector<QColor>& colors, int index)
{
    static const QVector<qreal> patterns[] = {{}, {4, 3}, {1.5, 2}, {6, 2, 1.5, 2}};
    const QColor own = colors.value(index);
    const auto before =
        std::count_if(colors.cbegin(), colors.cbegin() + qMax(0, index), [&](const QColor& color) {
            return Contrast::distance(color, own) < Contrast::leastDistance;
        });
    return patterns[size_t(before) % std::size(patterns)];
}

QColor ColorScale::myColorsForColorimeter(int index, int colorimeterAt)
{
    switch (index - colorimeterAt) {
    case 0:
        return Qt::red;
    case 1:
        return Qt::darkGreen;
    case 2:
        return Qt::blue;
    default:
        return cyclic(sensColorsColorimeter, index < colorimeterAt ? index : index - 3);
    }
}
