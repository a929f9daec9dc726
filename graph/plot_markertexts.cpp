// What the texts beside the markers read.

#include "graph/plot.h"

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

QString Plot::nameOf(int iSens) const
{
    const SensorPtr& sensor = data->getSens(iSens);
    return sensor ? sensor->name : QString();
}

QString Plot::unitOf(int iSens) const
{
    const SensorPtr& sensor = data->getSens(iSens);
    return sensor ? sensor->unitName : QString();
}

QString Plot::valueText(int iSens, double value) const
{
    const SensorPtr& sensor = data->getSens(iSens);
    return sensor ? sensor->valueToString(value) : QString();
}

/// The text that belongs to a marker of the partner's kind.
void Plot::setPartnerText(myPlotMarker* text)
{
    const myPlotMarker* const partner = text->connectTo;
    if (!partner)
        return;
    if (partner->type == MARKER_X || partner->type == MARKER_X_GHOST)
        setMarkerText(text);
    else if (partner->type == MARKER_TANGENT)
        setDerivText();
    else if (partner->type == MARKER_REGRESSION)
        setRegressionText(text, partner->a, partner->b, partner->c, partner->r);
    else if (partner->type == MARKER_INTEGRAL)
        setIntegralText(text, partner->integral);
}

/// The time unit may have changed. Fits and integrals keep what they said.
void Plot::setTexts()
{
    for (myPlotMarker* text : qAsConst(markers)) {
        if (text->type == MARKER_FLOATING_TEXT && text->connectTo &&
            text->connectTo->type != MARKER_REGRESSION && text->connectTo->type != MARKER_INTEGRAL)
            setPartnerText(text);
    }
}

void Plot::setMarkerText(myPlotMarker* text)
{
    const myPlotMarker* const cross = text->connectTo;
    const int iSens = cross->iSens;
    const double x = cross->xValue();
    if (type == GRAPH_FFT) {
        text->setText(tr("Frequency = %5 %6").arg(Common::myToString(x, 'f', 1), tr("Hz")));
        return;
    }
    const QString value = valueText(iSens, cross->yValue());
    if (data->isXYPlot()) {
        const int iX = data->getXYIndex();
        text->setText(
            QStringLiteral("%1 = %2 %3\n%4 = %5 %6")
                .arg(nameOf(iX), valueText(iX, x), unitOf(iX), nameOf(iSens), value, unitOf(iSens)));
        return;
    }
    text->setText(QStringLiteral("%1 = %2 %3\n%4 = %5 %6")
                      .arg(nameOf(iSens), value, unitOf(iSens), myTimeScale->getTimeOrSample(),
                           myTimeScale->getTimeString(x), myTimeScale->getUnitName()));
    if (curveMarker.size() == 2) {
        const double dx = std::abs(curveMarker[0]->xValue() - curveMarker[1]->xValue());
        const double dy = std::abs(curveMarker[0]->yValue() - curveMarker[1]->yValue());
        Q_EMIT twoMarkersUpdated(QStringLiteral("%1 = %2 %3;  dY = %4 %5")
                                     .arg(myTimeScale->getDeltaName(), myTimeScale->getTimeString(dx),
                                          myTimeScale->getUnitName(), valueText(iSens, dy), unitOf(iSens)));
    }
}

/// The coefficients are per second and are told per unit of the axis.
void Plot::setRegressionText(myPlotMarker* text, double a, double b, double c, double r)
{
    const double perUnit = myTimeScale->getdT();
    const double A = a * perUnit * perUnit;
    double B = b * perUnit;
    const QString xName = data->isXYPlot() ? QStringLiteral("[%1]").arg(nameOf(data->getXYIndex())) : tr("t");
    QString quadratic;
    if (a != 0) {
        quadratic = QStringLiteral("%1%2 %3 ")
                        .arg(Common::myToString(A, 'f', decimalsFor(A)), xName + QChar(0x00B2), signOf(B));
        B = std::abs(B);
    }
    const QString linear = Common::myToString(B, 'f', B == 0 ? 1 : decimalsFor(B));
    text->setText(QStringLiteral("%1 = %2%3%4 %5 %6\nr = %7")
                      .arg(nameOf(text->iSens), quadratic, linear, xName, signOf(c),
                           Common::myToString(std::abs(c), 'f', 1), Common::myToString(r, 'f', 2)));
}

void Plot::setIntegralText(myPlotMarker* text, double integral)
{
    constexpr int digits = 6;
    text->setText(tr("Integral = %1 %2*%3")
                      .arg(Common::myToString(integral, 'g', digits), unitOf(text->iSens), tr("s")));
}

void Plot::setDerivText()
{
    slope->connectTo->setText(
        tr("slope = %1 %2/%3").arg(Common::myToString(slope->slope, 'f', 1), unitOf(slope->iSens), tr("s")));
}

void Plot::setPhotoSpeedText(myPlotMarker* text)
{
    text->setText(tr("dt = %1 s\nwidth=%2 m\nSpeed = %3 m/s")
                      .arg(QString::number(text->b, 'f', 3), QString::number(text->c, 'f', 2),
                           QString::number(text->a, 'f', 2)));
}

void Plot::setPhotoAccelText(myPlotMarker* text)
{
    text->setText(tr("dt = %1 s\ndV=%2 m/s\nAcceleration = %3 m/s^2")
                      .arg(QString::number(text->c, 'f', 3), QString::number(text->b, 'f', 2),
                           QString::number(text->a, 'f', 2)));
}
