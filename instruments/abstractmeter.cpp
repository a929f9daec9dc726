#include "instruments/abstractmeter.h"

#include <QEvent>
#include <QPainter>

#include <cmath>

namespace {
constexpr double leastSpan = 0.00001;
}

void WidgetWithBackground::updateWithBackground()
{
    isStale = true;
    update();
}

void WidgetWithBackground::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    isStale = true;
}

void WidgetWithBackground::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        updateWithBackground();
}

const QPixmap& WidgetWithBackground::background()
{
    if (isStale) {
        isStale = false;
        pixmap = QPixmap(size() * devicePixelRatioF());
        pixmap.setDevicePixelRatio(devicePixelRatioF());
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintBackground(painter);
    }
    return pixmap;
}

void AbstractMeter::setMinimum(double wanted)
{
    setRange(wanted, maximum);
}

void AbstractMeter::setMaximum(double wanted)
{
    setRange(minimum, wanted);
}

void AbstractMeter::setRange(double newMinimum, double newMaximum)
{
    if (!(newMaximum - newMinimum > leastSpan) || !std::isfinite(newMaximum - newMinimum))
        return;
    minimum = newMinimum;
    maximum = newMaximum;
    const TidyScale tidy = TidyScale::of(minimum, maximum);
    if (tidy != scaled) {
        scaled = tidy;
        updateWithBackground();
    }
}

void AbstractMeter::setValue(double newValue)
{
    if (value == newValue)
        return;
    value = newValue;
    update();
}

void AbstractMeter::setPrefix(const QString& text)
{
    change(&prefix, text);
}

void AbstractMeter::setSuffix(const QString& text)
{
    change(&suffix, text);
}
