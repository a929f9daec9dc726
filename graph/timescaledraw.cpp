#include "graph/timescaledraw.h"

#include <QCoreApplication>

#include <cmath>

#include "common/common.h"
#include "common/settings.h"

namespace {

// Multiples of a step or of a sixtieth may lie a hair below the whole number that they stand for.
constexpr double hair = 1e-6;

double wholePart(double v)
{
    return std::floor(v + hair);
}

QString twoParts(double whole, double sixtieths)
{
    return QStringLiteral("%1:%2").arg(
        QString::number(whole, 'f', 0),
        QStringLiteral("%1").arg(static_cast<int>(sixtieths), 2, 10, QLatin1Char('0')));
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
    else if (x < 100)
        setUnit(UNIT_SEC);
    else if (x < 6000)
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
    if (t <= -1 && unit >= UNIT_MIN)
        return QLatin1Char('-') + getTimeString(-t);
    const double minutes = std::floor(wholePart(t) / 60);
    switch (unit) {
    case UNIT_MANUAL:
        return QString::number(std::trunc(t), 'f', 0);
    case UNIT_MS:
        return QString::number(t / dt);
    case UNIT_SEC:
        return res < 1 ? Common::myToString(t, 'f', isJunior ? 0 : decimalsFor(res)) : QString::number(t);
    case UNIT_MIN:
        return res >= 60 ? QString::number(minutes, 'f', 0) : twoParts(minutes, wholePart(t) - minutes * 60);
    case UNIT_HOUR: {
        const double hours = std::floor(minutes / 60);
        return twoParts(hours, minutes - hours * 60);
    }
    }
    return QString();
}

QwtText TimeScaleDraw::label(double v) const
{
    const double shown = dt <= 1 || isBar ? v : v / dt;
    if (isBar && dt > 1) {
        const double sixtieths = wholePart(std::abs(shown) * 60);
        const double whole = std::floor(sixtieths / 60);
        const QString text = twoParts(whole, sixtieths - whole * 60);
        return shown < -hair ? QLatin1Char('-') + text : text;
    }
    if (isJunior)
        return QString::number(std::trunc(shown), 'f', 0);
    return dt <= 1 ? QStringLiteral("%L1").arg(shown) : QStringLiteral("%L1").arg(shown, 0, 'f', 1);
}
