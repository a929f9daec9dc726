#include "graph/curveanalysis.h"

#include <QCoreApplication>
#include <QPointF>

#include <algorithm>
#include <cmath>

#include "data/expdata.h"
#include "graph/graphcurves.h"

namespace {

QString words(const char* text)
{
    return QCoreApplication::translate("CurveAnalysis", text);
}

/// Why two crosses span nothing; empty where they do.
QString spanRefusal(const GraphParts& parts, const QList<myPlotMarker*>& crosses)
{
    if (crosses.size() < 2)
        return words(QT_TRANSLATE_NOOP("CurveAnalysis", "Put two markers on a curve first."));
    if (crosses[0]->iSens != crosses[1]->iSens)
        return words(QT_TRANSLATE_NOOP("CurveAnalysis", "Both markers must stand on the same curve."));
    if (!parts.data.isXYPlot() && crosses[0]->xValue() == crosses[1]->xValue())
        return words(QT_TRANSLATE_NOOP("CurveAnalysis", "Both markers stand at the same place."));
    return QString();
}

bool hasFit(const myPlotMarker& line)
{
    return std::isfinite(line.a) && std::isfinite(line.b) && std::isfinite(line.c);
}

void fitOverTime(const ExpData& data, int degree, myPlotMarker* line)
{
    data.regression(degree, line->iSens, line->linX0, line->linX1, &line->a, &line->b, &line->c, &line->r);
}

void toMiddle(myPlotMarker* line)
{
    const double middle = (line->linX0 + line->linX1) / 2;
    const double height = line->calcRegValue(middle);
    line->setValue(middle, std::isfinite(height) ? height : line->yValue());
}

/// The same model; false where it finds nothing any more.
bool fitAgain(const ExpData& data, myPlotMarker* line)
{
    const Stretch stretch = Stretch::between(data, line->iSens, line->linX0, line->linX1);
    const CurveFit::Curve& curve = line->fit.curve;
    const CurveFit::Fit fit = CurveFit::fit(curve.model, stretch.x, stretch.y, curve.expression);
    if (fit.isGood()) {
        line->setFit({fit, stretch.xUnit, stretch.yUnit}, stretch.xUnit, stretch.yUnit);
        toMiddle(line);
    }
    return fit.isGood();
}

void measureArea(const ExpData& data, myPlotMarker* area)
{
    const double middle = (area->linX0 + area->linX1) / 2;
    area->integral = data.integral(area->iSens, area->linX0, area->linX1);
    const double height = data.interpolateY(area->iSens, middle);
    area->setValue(middle, std::isfinite(height) ? height : area->yValue());
}

} // namespace

CurveAnalysis::Result CurveAnalysis::fit(const GraphParts& parts, int degree,
                                         const QList<myPlotMarker*>& crosses)
{
    QString refusal = spanRefusal(parts, crosses);
    if (refusal.isEmpty() && (crosses[0]->iReg >= 0 || crosses[1]->iReg >= 0))
        refusal = words(
            QT_TRANSLATE_NOOP("CurveAnalysis", "The markers stand on a fitted line; put them on the curve."));
    if (!refusal.isEmpty())
        return {nullptr, refusal};
    const ExpData& data = parts.data;
    QPointF from = crosses[0]->value();
    QPointF to = crosses[1]->value();
    if (!data.isXYPlot() && from.x() > to.x())
        std::swap(from, to);
    auto line = std::make_unique<myPlotMarker>(crosses[0]->iSens, &parts.scaler, MARKER_REGRESSION);
    line->xSensor = data.getXYIndex();
    line->linX0 = from.x();
    line->linX1 = to.x();
    if (data.isXYPlot())
        data.regressionXY(degree, line->iSens, from.x(), to.x(), from.y(), to.y(), &line->a, &line->b,
                          &line->c, &line->r);
    else
        fitOverTime(data, degree, line.get());
    if (!hasFit(*line))
        return {
            nullptr,
            degree == 2
                ? words(QT_TRANSLATE_NOOP(
                      "CurveAnalysis", "A quadratic fit needs samples at three places between the markers."))
                : words(QT_TRANSLATE_NOOP("CurveAnalysis",
                                          "A linear fit needs samples at two places between the markers."))};
    if (!std::isfinite(line->r))
        return {nullptr,
                words(QT_TRANSLATE_NOOP("CurveAnalysis",
                                        "The curve is flat between the markers: there is nothing to fit."))};
    toMiddle(line.get());
    return {std::move(line), QString()};
}

CurveAnalysis::Result CurveAnalysis::placed(const GraphParts& parts, const FittedCurve& fit, int iSens,
                                            double from, double to)
{
    auto line = std::make_unique<myPlotMarker>(iSens, &parts.scaler, MARKER_REGRESSION);
    line->xSensor = parts.data.getXYIndex();
    line->linX0 = from;
    line->linX1 = to;
    line->curve = parts.curves.at(iSens);
    line->setFit(fit, fit.x, fit.y);
    toMiddle(line.get());
    return {std::move(line), QString()};
}

Stretch CurveAnalysis::stretch(const ExpData& data, const QList<myPlotMarker*>& crosses, int iSens)
{
    if (crosses.size() < 2)
        return Stretch::whole(data, iSens);
    const bool isOnOne = crosses[0]->iSens == crosses[1]->iSens;
    const int on = isOnOne ? crosses[0]->iSens : iSens;
    return isOnOne && data.isXYPlot()
               ? Stretch::along(data, on, crosses[0]->value(), crosses[1]->value())
               : Stretch::between(data, on, crosses[0]->xValue(), crosses[1]->xValue());
}

CurveAnalysis::Result CurveAnalysis::integral(const GraphParts& parts, const QList<myPlotMarker*>& crosses)
{
    QString refusal = spanRefusal(parts, crosses);
    if (refusal.isEmpty() && parts.data.isXYPlot())
        refusal = words(QT_TRANSLATE_NOOP("CurveAnalysis", "An integral needs the time on the x axis."));
    if (!refusal.isEmpty())
        return {nullptr, refusal};
    auto area = std::make_unique<myPlotMarker>(crosses[0]->iSens, &parts.scaler, MARKER_INTEGRAL);
    area->xSensor = parts.data.getXYIndex();
    area->linX0 = std::min(crosses[0]->xValue(), crosses[1]->xValue());
    area->linX1 = std::max(crosses[0]->xValue(), crosses[1]->xValue());
    area->setYValue(crosses[0]->yValue());
    measureArea(parts.data, area.get());
    return {std::move(area), QString()};
}

bool CurveAnalysis::renew(const GraphParts& parts, myPlotMarker* result)
{
    if (result->type == MARKER_INTEGRAL) {
        measureArea(parts.data, result);
        return true;
    }
    if (result->xSensor >= 0) // of a path, whose ends are not kept
        return false;
    if (!result->fit.isNone())
        return fitAgain(parts.data, result);
    fitOverTime(parts.data, result->a != 0 ? 2 : 1, result);
    toMiddle(result);
    return hasFit(*result) && std::isfinite(result->r);
}
