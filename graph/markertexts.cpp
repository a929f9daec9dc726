#include "graph/markertexts.h"

#include <algorithm>
#include <cmath>

#include <QStringList>

#include "common/common.h"
#include "data/expdata.h"
#include "data/fittexts.h"
#include "graph/myplotmarker.h"
#include "graph/pinnedcurves.h"
#include "graph/timescaledraw.h"

namespace {

constexpr double negligible = 1e-9;
constexpr double noCorrelation = 1e-4;

} // namespace

MarkerTexts::MarkerTexts(const ExpData& data, const TimeScaleDraw& time, MarkerForm form, bool isClass)
    : data(data)
    , time(time)
    , form(form)
    , isClass(isClass)
{
}

QString MarkerTexts::kindName(int type)
{
    switch (type) {
    case MARKER_ANNOTATE:
        return tr("annotation");
    case MARKER_X:
        return tr("marker");
    case MARKER_REGRESSION:
        return tr("regression");
    case MARKER_FLOATING_TEXT:
        return tr("floating text");
    case MARKER_INTEGRAL:
        return tr("integral");
    }
    return QString();
}

QString MarkerTexts::kindNameInSentence(int type)
{
    if (Common::isAzeri() && type == MARKER_ANNOTATE)
        return tr("annotation_c");
    if (Common::isAzeri() && type == MARKER_X)
        return tr("marker_c");
    return kindName(type);
}

QString MarkerTexts::nameOf(int iSens) const
{
    const SensorPtr& sensor = data.getSens(iSens);
    return sensor ? sensor->nameForLegend(isClass) : QString();
}

QString MarkerTexts::unitOf(int iSens) const
{
    const SensorPtr& sensor = data.getSens(iSens);
    return sensor ? sensor->unitName : QString();
}

QString MarkerTexts::valueText(int iSens, double value) const
{
    const SensorPtr& sensor = data.getSens(iSens);
    return sensor ? sensor->valueToString(value) : QString();
}

QString MarkerTexts::of(const myPlotMarker& marker, double apart) const
{
    switch (marker.type) {
    case MARKER_X:
    case MARKER_X_GHOST:
        return ofCross(marker, apart);
    case MARKER_TANGENT:
        return ofTangent(marker);
    case MARKER_REGRESSION:
        return ofFit(marker);
    case MARKER_INTEGRAL:
        return ofIntegral(marker);
    case MARKER_ANNOTATE:
    case MARKER_FLOATING_TEXT:
    case MARKER_BUBBLE_TIP:
    case MARKER_FFT:
    case MARKER_LAST:
        break;
    }
    return QString();
}

QString MarkerTexts::frequency(double hertz, double apart)
{
    constexpr int mostDecimals = 6;
    const int decimals =
        apart > 0 ? std::clamp(int(std::ceil(-std::log10(apart))) + 1, 1, mostDecimals) : mostDecimals;
    return QStringLiteral("%1 %2").arg(Common::myToString(hertz, 'f', decimals), tr("Hz"));
}

QString MarkerTexts::level(double value)
{
    return Common::toSignificant(value);
}

QString MarkerTexts::ofCross(const myPlotMarker& cross, double apart) const
{
    const int iSens = cross.iSens;
    const double x = cross.xValue();
    if (form == MarkerForm::Frequency)
        return QStringLiteral("%1\n%2 = %3 %4")
            .arg(tr("Frequency = %1").arg(frequency(x, data.dt)), nameOf(iSens), level(cross.yValue()),
                 unitOf(iSens));
    const QString value = valueText(iSens, cross.yValue());
    const QString twoLines = QStringLiteral("%1 = %2 %3\n%4 = %5 %6");
    if (data.isXYPlot()) {
        const int iX = data.getXYIndex();
        return twoLines.arg(nameOf(iX), valueText(iX, x), unitOf(iX), nameOf(iSens), value, unitOf(iSens));
    }
    QString text = twoLines.arg(nameOf(iSens), value, unitOf(iSens), time.getTimeOrSample(),
                                time.getTimeString(x, apart), time.getUnitName());
    const auto others = pinned ? pinned->valuesAt(iSens, x) : QVector<PinnedCurves::Value>();
    for (const PinnedCurves::Value& other : others) {
        const double more = cross.yValue() - other.value;
        text += QStringLiteral("\n%1: %2 %3, Δ = %4%5")
                    .arg(other.name, valueText(iSens, other.value), unitOf(iSens),
                         more > 0 ? QStringLiteral("+") : QString(), valueText(iSens, more));
    }
    return text;
}

std::optional<MarkerTexts::Distance> MarkerTexts::between(const myPlotMarker& first,
                                                          const myPlotMarker& second) const
{
    if (form == MarkerForm::Frequency)
        return std::nullopt;
    const bool isXY = data.isXYPlot();
    const int iX = data.getXYIndex();
    const bool isForward = second.xValue() >= first.xValue();
    const double dx = std::abs(second.xValue() - first.xValue());
    const double dy = (isForward ? 1 : -1) * (second.yValue() - first.yValue());
    const QString unit = unitOf(first.iSens);
    Distance told;
    const QString unitX = isXY ? unitOf(iX) : time.getUnitName();
    told.x =
        QStringLiteral("%1 %2").arg(isXY ? valueText(iX, dx) : time.getTimeString(dx, dx), unitX).trimmed();
    if (unit != unitOf(second.iSens))
        return told;
    told.y = QStringLiteral("%1 %2").arg(valueText(first.iSens, dy), unit).trimmed();
    if (dx > 0)
        told.slope =
            QStringLiteral("%1 %2").arg(Common::toSignificant(dy / dx * (isXY ? 1 : time.getdT()), 3),
                                        unitX.isEmpty() ? unit : Common::unitPer(unit, unitX, 1));
    return told;
}

QString MarkerTexts::distance(const myPlotMarker& first, const myPlotMarker& second) const
{
    const auto told = between(first, second);
    if (!told)
        return QString();
    const QString dx = data.isXYPlot() ? QStringLiteral("dX") : time.getDeltaName();
    QString text = QStringLiteral("%1 = %2").arg(dx, told->x);
    if (!told->y.isEmpty())
        text += QStringLiteral(";  dY = %1").arg(told->y);
    if (!told->slope.isEmpty())
        text += QStringLiteral(";  dY/%1 = %2").arg(dx, told->slope);
    return text;
}

QString MarkerTexts::span(const myPlotMarker& first, const myPlotMarker& second) const
{
    const auto told = between(first, second);
    if (!told)
        return QString();
    const QString x =
        data.isXYPlot() || time.getUnitName().isEmpty() ? QStringLiteral("Δx") : QStringLiteral("Δt");
    QStringList lines{QStringLiteral("%1 = %2").arg(x, told->x)};
    if (!told->y.isEmpty())
        lines.append(QStringLiteral("Δy = %1").arg(told->y));
    if (!told->slope.isEmpty())
        lines.append(QStringLiteral("Δy/%1 = %2").arg(x, told->slope));
    return lines.join(QLatin1Char('\n'));
}

/// The coefficients are per second and are told per unit of the axis.
QString MarkerTexts::ofFit(const myPlotMarker& fit) const
{
    const bool isXY = data.isXYPlot();
    if (!fit.fit.isNone())
        return FitTexts::lines(fit.fit.in(fit.fitY), nameOf(fit.iSens), !isXY);
    const QString unit = unitOf(fit.iSens);
    const QString perName = isXY ? unitOf(data.getXYIndex()) : time.getUnitName();
    const QString xName = isXY ? QStringLiteral("[%1]").arg(nameOf(data.getXYIndex())) : tr("t");
    const double perUnit = time.getdT();
    const double coefficients[] = {fit.c, fit.b * perUnit, fit.a * perUnit * perUnit};
    const QString powers[] = {QString(), xName, xName + QChar(0x00B2)};
    // A coefficient that only rounding has left is none.
    const double span = std::max(std::abs(fit.linX0), std::abs(fit.linX1)) / perUnit;
    double greatest = 0;
    for (int power = 0; power <= 2; ++power)
        greatest = std::max(greatest, std::abs(coefficients[power] * std::pow(span, power)));
    QString sum;
    for (int power = fit.a != 0 ? 2 : 1; power >= 0; --power) {
        const bool isNone = std::abs(coefficients[power] * std::pow(span, power)) < negligible * greatest;
        const double value = isNone ? 0 : coefficients[power];
        const QString sign =
            sum.isEmpty() ? QLatin1String(value < 0 ? "-" : "") : QLatin1String(value < 0 ? " - " : " + ");
        const QString per =
            perName.isEmpty() && power > 0 && !unit.isEmpty()
                ? unit
                : Common::unitPer(unit, perName.isEmpty() ? QStringLiteral("1") : perName, power);
        const QString word =
            QStringList({Common::toSignificant(std::abs(value)), per}).join(QLatin1Char(' ')).trimmed();
        sum += sign + (power > 0 ? QStringLiteral("%1·%2").arg(word, powers[power]) : word);
    }
    return QStringLiteral("%1 = %2\nr = %3")
        .arg(nameOf(fit.iSens), sum,
             std::abs(fit.r) < noCorrelation ? QStringLiteral("0") : Common::toSignificant(fit.r));
}

QString MarkerTexts::ofIntegral(const myPlotMarker& area) const
{
    constexpr int digits = 6;
    return tr("Integral = %1 %2*%3")
        .arg(Common::myToString(area.integral, 'g', digits), unitOf(area.iSens), tr("s"));
}

QString MarkerTexts::ofTangent(const myPlotMarker& tangent) const
{
    constexpr int digits = 3; // of what one decimal says too little about
    const bool isSlow = std::abs(tangent.slope) < 1;
    return tr("slope = %1 %2")
        .arg(isSlow ? Common::toSignificant(tangent.slope, digits)
                    : Common::myToString(tangent.slope, 'f', 1),
             Common::unitPer(unitOf(tangent.iSens), tr("s"), 1));
}

QString MarkerTexts::speed(const Gate& gate)
{
    return tr("dt = %1 s\nwidth=%2 m\nSpeed = %3 m/s")
        .arg(QString::number(gate.dt, 'f', 3), QString::number(gate.measured, 'f', 2),
             QString::number(gate.result, 'f', 2));
}

QString MarkerTexts::acceleration(const Gate& gate)
{
    return tr("dt = %1 s\ndV=%2 m/s\nAcceleration = %3 m/s^2")
        .arg(QString::number(gate.dt, 'f', 3), QString::number(gate.measured, 'f', 2),
             QString::number(gate.result, 'f', 2));
}
