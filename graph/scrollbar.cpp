#include "graph/scrollbar.h"

#include <QSignalBlocker>

namespace {
constexpr int baseTicks = 1000000; // the whole base range in the integers of a slider
}

ScrollBar::ScrollBar(Qt::Orientation orientation, QWidget* parent)
    : QScrollBar(orientation, parent)
{
    // The window of a y axis moves up with the slider.
    setInvertedAppearance(orientation == Qt::Vertical);
    moveSlider(baseMin, baseMax);
    connect(this, &QAbstractSlider::valueChanged, this, &ScrollBar::catchValueChanged);
    connect(this, &QAbstractSlider::sliderMoved, this, &ScrollBar::catchSliderMoved);
}

void ScrollBar::setInverted(bool on)
{
    if (inverted == on)
        return;
    const QPair<double, double> window = windowAt(value());
    inverted = on;
    moveSlider(window.first, window.second);
}

void ScrollBar::setBase(double min, double max)
{
    if (min == baseMin && max == baseMax)
        return;
    const QPair<double, double> window = windowAt(value());
    baseMin = min;
    baseMax = max;
    moveSlider(window.first, window.second);
}

void ScrollBar::moveSlider(double min, double max)
{
    const double span = baseMax - baseMin;
    if (span == 0)
        return;
    const int visible = qRound((max - min) / span * baseTicks);
    const int middle = qRound(((min + max) / 2 - baseMin) / span * baseTicks);

    const QSignalBlocker blocker(this);
    setRange(visible / 2, baseTicks - visible / 2);
    setSingleStep(qMax(visible / 100, 1));
    setPageStep(visible);
    setValue(inverted ? baseTicks - middle : middle);
}

QPair<double, double> ScrollBar::windowAt(int position) const
{
    const double middle = inverted ? baseTicks - position : position;
    const double half = pageStep() / 2.0;
    const double perTick = (baseMax - baseMin) / baseTicks;
    return {baseMin + (middle - half) * perTick, baseMin + (middle + half) * perTick};
}

void ScrollBar::catchValueChanged(int position)
{
    const QPair<double, double> window = windowAt(position);
    Q_EMIT valueChanged(orientation(), window.first, window.second);
}

void ScrollBar::catchSliderMoved(int position)
{
    const QPair<double, double> window = windowAt(position);
    Q_EMIT sliderMoved(orientation(), window.first, window.second);
}
