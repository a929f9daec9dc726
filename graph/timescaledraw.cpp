#include "graph/timescaledraw.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/common.h"
#include "common/settings.h"

namespace {

// Multiples of a step or of a sixtieth may lie a hair below the whole number that they stand for.
constexpr double hair = 1e-6;

double wholePart(double v)
{
    return std::floor(v + hair);
}

QString twoDigits(double number)
{
    return QStringLiteral("%1").arg(int(number), 2, 10, QLatin1Char('0'));
}

// m:ss or h:mm, and as much more as tells times apart that are `apart` seconds from each other.
QString clockTime(double seconds, units unit, double apart)
{
    constexpr int mostDecimals = 5;
    const int decimals =
        apart < 1 ? std::min(mostDecimals, int(std::ceil(-std::log10(std::max(apart, 1e-9)) - hair))) : 0;
    const double perSecond = std::pow(10, decimals);
    const double parts =
        decimals > 0 ? std::round(std::abs(seconds) * perSecond) : wholePart(std::abs(seconds));
    const double whole = std::floor(parts / perSecond);
    const double minutes = std::floor(whole / 60);
    QString text = unit == UNIT_HOUR ? QString::number(std::floor(minutes / 60), 'f', 0) + QLatin1Char(':') +
                                           twoDigits(minutes - 60 * std::floor(minutes / 60))
                                     : QString::number(minutes, 'f', 0);
    if (unit == UNIT_MIN || apart < 60)
        text += QLatin1Char(':') + twoDigits(whole - 60 * minutes);
    if (decimals > 0)
        text += Common::myToString((parts - whole * perSecond) / perSecond, 'f', decimals).mid(1);
    return seconds < 0 && parts > 0 ? QLatin1Char('-') + text : text;
}

int decimalsFor(double res)
{
    if (res >= 0.1)
        return 1;
    if (res >= 0.01)
        return 2;
    return res >= 0.001 ? 3 : 5;
}

} // namespace

TimeScaleDraw::TimeScaleDraw(bool isBar)
    : isBar(isBar)
    , isJunior(Settings::isJuniorEdition())
{
}

void TimeScaleDraw::setUnit(units u)
{
    constexpr double secondsPerUnit[] = {0, 0.001, 1, 60, 3600};
    if (u == unit)
        return;
    unit = u;
    dt = secondsPerUnit[u];
    invalidateCache();
}

void TimeScaleDraw::setUnitByMaxX(double x, double res)
{
    this->res = res;
    if (res == 0)
        setUnit(UNIT_MANUAL);
    else if (x < (unit == UNIT_MIN || unit == UNIT_HOUR ? 60 : 100))
        setUnit(UNIT_SEC);
    else if (x < (unit == UNIT_HOUR ? 3600 : 6000))
        setUnit(UNIT_MIN);
    else
        setUnit(UNIT_HOUR);
}

QString TimeScaleDraw::getUnitName() const
{
    switch (unit) {
    case UNIT_MANUAL:
        return QString();
    case UNIT_MS:
        return QCoreApplication::translate("time unit", "ms");
    case UNIT_SEC:
        return QCoreApplication::translate("time unit", "s");
    case UNIT_MIN:
        return QCoreApplication::translate("time unit", "min");
    case UNIT_HOUR:
        return QCoreApplication::translate("time unit", "h");
    }
    return QString();
}

QString TimeScaleDraw::getDefaultUnitName() const
{
    return QCoreApplication::translate("time unit", "s");
}

QString TimeScaleDraw::getDeltaName() const
{
    return unit == UNIT_MANUAL ? QStringLiteral("dX") : QStringLiteral("dt");
}

QString TimeScaleDraw::getTimeOrSample() const
{
    return unit == UNIT_MANUAL ? QCoreApplication::translate("x axis for manual sampling mode", "Sample")
                               : QCoreApplication::translate("X axis for automatic sampling modes", "Time");
}

QString TimeScaleDraw::getTimeString(double t) const
{
    return getTimeString(t, std::numeric_limits<double>::infinity());
}

QString TimeScaleDraw::getTimeString(double t, double apart) const
{
    switch (unit) {
    case UNIT_MANUAL:
        return QString::number(std::trunc(t), 'f', 0);
    case UNIT_MS:
        return QString::number(t / dt);
    case UNIT_SEC:
        return res < 1 ? Common::myToString(t, 'f', isJunior ? 0 : decimalsFor(res)) : QString::number(t);
    case UNIT_MIN:
        return res >= 60 ? QString::number(std::trunc(wholePart(std::abs(t)) / 60) * (t < 0 ? -1 : 1), 'f', 0)
                         : clockTime(t, unit, apart);
    case UNIT_HOUR:
        return clockTime(t, unit, apart);
    }
    return QString();
}

double TimeScaleDraw::secondsBetweenLabels() const
{
    const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
    return ticks.size() < 2 ? dt : (ticks[1] - ticks[0]) * (isBar ? dt : 1);
}

QwtText TimeScaleDraw::label(double v) const
{
    if (dt <= 1)
        return isJunior ? QString::number(std::trunc(v), 'f', 0) : QStringLiteral("%L1").arg(v);
    if (isJunior && !isBar)
        return QString::number(std::trunc(v / dt), 'f', 0);
    return clockTime(isBar ? v * dt : v, unit, secondsBetweenLabels());
}
