#include "graph/markertexts.h"

#include <algorithm>
#include <cmath>

#include "common/common.h"
#include "data/expdata.h"
#include "graph/myplotmarker.h"
#include "graph/timescaledraw.h"

namespace {

int decimalsFor(double value)
{
    return std::max(2, int(std::ceil(-std::log10(std::abs(value)))));
}

QString signOf(double value)
{
    return QLatin1String(value >= 0 ? "+" : "-");
}

} // namespace

MarkerTexts::MarkerTexts(const ExpData& data, const TimeScaleDraw& time, MarkerForm form)
    : data(data)
    , time(time)
    , form(form)
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
    return sensor ? sensor->name : QString();
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

QString MarkerTexts::of(const myPlotMarker& marker) const
{
    switch (marker.type) {
    case MARKER_X:
    case MARKER_X_GHOST:
        return ofCross(marker);
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

QString MarkerTexts::ofCross(const myPlotMarker& cross) const
{
    const int iSens = cross.iSens;
    const double x = cross.xValue();
    if (form == MarkerForm::Frequency)
        return tr("Frequency = %5 %6").arg(Common::myToString(x, 'f', 1), tr("Hz"));
    const QString value = valueText(iSens, cross.yValue());
    const QString twoLines = QStringLiteral("%1 = %2 %3\n%4 = %5 %6");
    if (data.isXYPlot()) {
        const int iX = data.getXYIndex();
        return twoLines.arg(nameOf(iX), valueText(iX, x), unitOf(iX), nameOf(iSens), value, unitOf(iSens));
    }
    return twoLines.arg(nameOf(iSens), value, unitOf(iSens), time.getTimeOrSample(), time.getTimeString(x),
                        time.getUnitName());
}

QString MarkerTexts::distance(const myPlotMarker& told, const myPlotMarker& first,
                              const myPlotMarker& second) const
{
    if (form == MarkerForm::Frequency || data.isXYPlot())
        return QString();
    const double dx = std::abs(first.xValue() - second.xValue());
    const double dy = std::abs(first.yValue() - second.yValue());
    return QStringLiteral("%1 = %2 %3;  dY = %4 %5")
        .arg(time.getDeltaName(), time.getTimeString(dx), time.getUnitName(), valueText(told.iSens, dy),
             unitOf(told.iSens));
}

/// The coefficients are per second and are told per unit of the axis.
QString MarkerTexts::ofFit(const myPlotMarker& fit) const
{
    const double perUnit = time.getdT();
    const double A = fit.a * perUnit * perUnit;
    double B = fit.b * perUnit;
    const QString xName = data.isXYPlot() ? QStringLiteral("[%1]").arg(nameOf(data.getXYIndex())) : tr("t");
    QString quadratic;
    if (fit.a != 0) {
        quadratic = QStringLiteral("%1%2 %3 ")
                        .arg(Common::myToString(A, 'f', decimalsFor(A)), xName + QChar(0x00B2), signOf(B));
        B = std::abs(B);
    }
    const QString linear = Common::myToString(B, 'f', B == 0 ? 1 : decimalsFor(B));
    return QStringLiteral("%1 = %2%3%4 %5 %6\nr = %7")
        .arg(nameOf(fit.iSens), quadratic, linear, xName, signOf(fit.c),
             Common::myToString(std::abs(fit.c), 'f', 1), Common::myToString(fit.r, 'f', 2));
}

QString MarkerTexts::ofIntegral(const myPlotMarker& area) const
{
    constexpr int digits = 6;
    return tr("Integral = %1 %2*%3")
        .arg(Common::myToString(area.integral, 'g', digits), unitOf(area.iSens), tr("s"));
}

QString MarkerTexts::ofTangent(const myPlotMarker& tangent) const
{
    return tr("slope = %1 %2/%3")
        .arg(Common::myToString(tangent.slope, 'f', 1), unitOf(tangent.iSens), tr("s"));
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
