// Analyses that markers start, the tangent of slope mode, and the texts of photogates.

#include "graph/plot.h"

#include <algorithm>
#include <cmath>

#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"

namespace {

constexpr double slopeReach = 10;    // pixels on each side whose samples the tangent is fitted to
constexpr double slopeHotPixels = 5; // how far beside the pointer slope mode looks for the curve
constexpr double gateLevel = 5;      // V, height of a blocked gate, which its text points at
constexpr double belowGateLevel = 4; // so that a second text does not hide the first

} // namespace

void Plot::doCrop()
{
    if (curveMarker.size() < 2 || !userPrompt)
        return;
    const QPointer<Plot> alive(this);
    const auto answer = userPrompt->question(
        this, tr("Confirm crop"),
        tr("Are you sure you want to crop?\nAll data outside the markers will be lost."), false);
    // Samples go on arriving while the question stands, and a new run takes the markers away.
    if (!alive || answer != UserPrompt::Answer::Yes || curveMarker.size() < 2)
        return;
    const double x0 = std::min(curveMarker[0]->xValue(), curveMarker[1]->xValue());
    const double x1 = std::max(curveMarker[0]->xValue(), curveMarker[1]->xValue());
    data->doCrop(x0, x1);
    removeMarker(curveMarker[1]);
    removeMarker(curveMarker[0]);
    for (int i = markers.size() - 1; i >= 0; --i) {
        const double x = markers[i]->xValue();
        if (markers[i]->type == MARKER_ANNOTATE && (x < x0 || x > x1))
            removeMarker(markers[i]);
    }
}

void Plot::doRegression(int degree)
{
    if (type != GRAPH_LINE || curveMarker.size() < 2 || curveMarker[0]->iReg >= 0)
        return;
    const int iSens = curveMarker[0]->iSens;
    QPointF from = curveMarker[0]->value();
    QPointF to = curveMarker[1]->value();
    if (!data->isXYPlot() && from.x() == to.x())
        return;
    if (!data->isXYPlot() && from.x() > to.x())
        std::swap(from, to);
    double a = 0;
    double b = 0;
    double c = 0;
    double r = 0;
    if (data->isXYPlot())
        data->regressionXY(degree, iSens, from.x(), to.x(), from.y(), to.y(), &a, &b, &c, &r);
    else
        data->regression(degree, iSens, from.x(), to.x(), &a, &b, &c, &r);
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c))
        return;
    data->setNeedSave(true);
    auto* line = new myPlotMarker(iSens, scaler.get(), MARKER_REGRESSION);
    line->linX0 = from.x();
    line->linX1 = to.x();
    line->a = a;
    line->b = b;
    line->c = c;
    line->r = r;
    const double middle = (from.x() + to.x()) / 2;
    line->setValue(middle, line->calcRegValue(middle));
    finishAnalysis(line);
}

void Plot::doIntegral()
{
    if (type != GRAPH_LINE || curveMarker.size() < 2 || data->isXYPlot())
        return;
    const int iSens = curveMarker[0]->iSens;
    const double x0 = std::min(curveMarker[0]->xValue(), curveMarker[1]->xValue());
    const double x1 = std::max(curveMarker[0]->xValue(), curveMarker[1]->xValue());
    if (x0 == x1)
        return;
    auto* area = new myPlotMarker(iSens, scaler.get(), MARKER_INTEGRAL);
    area->linX0 = x0;
    area->linX1 = x1;
    area->curve = getCurve(iSens);
    area->integral = data->integral(iSens, x0, x1);
    const double middle = (x0 + x1) / 2;
    area->setValue(middle, curveMarker[0]->yValue());
    putOnCurve(area, iSens);
    finishAnalysis(area);
}

void Plot::finishAnalysis(myPlotMarker* result)
{
    addPair(result, myPlotMarker::textDistance, -myPlotMarker::textDistance);
    setPartnerText(result->connectTo);
    findRoom(result->connectTo);
    setFloatingMarkerPosition(result->connectTo);
    repaintMarkers();
}

// --- Tangent ---

void Plot::newDeriv()
{
    if (slope || type != GRAPH_LINE)
        return;
    slope = new myPlotMarker(activeSens, scaler.get(), MARKER_TANGENT);
    auto* text = new myPlotMarker(activeSens, scaler.get(), MARKER_FLOATING_TEXT);
    slope->connectTo = text;
    text->connectTo = slope;
    text->yOffset = -slopeTextDistance;
    slope->setShown(false);
    text->setShown(false);
    slope->attach(this);
    addMarker(text);
}

// The tangent is no result that a file keeps, so the data stays as saved as it was.
void Plot::dropDeriv()
{
    if (!slope)
        return;
    dropMarker(slope->connectTo);
    dropMarker(slope);
    slope = nullptr;
    repaintMarkers();
}

void Plot::updateSlope(const QPoint pos)
{
    if (!slope || data->isXYPlot())
        return;
    QPointF at = pos;
    if (curveMarker.size() == 2 && curveMarker[0]->iSens == activeSens) {
        const double p0 = transform(xBottom, curveMarker[0]->xValue());
        const double p1 = transform(xBottom, curveMarker[1]->xValue());
        at.setX(std::max(std::min(p0, p1), std::min(at.x(), std::max(p0, p1))));
    }
    const NearPoint near = isNearCurve(at, false, activeSens, slopeHotPixels);
    if (near.iSens != activeSens)
        return;
    slope->iSens = slope->connectTo->iSens = activeSens;
    slope->setValue(near.bestX, near.bestY);
    showSlope();
    repaintMarkers();
}

/// The tangent where it stands, with its text; neither where the curve has no slope.
void Plot::showSlope()
{
    const QwtScaleMap map = canvasMap(xBottom);
    const double perPixel = map.pDist() > 0 ? map.sDist() / map.pDist() : 0;
    slope->slope = data->tangentSlope(slope->iSens, slope->xValue(), slopeReach * perPixel);
    const bool isThere = std::isfinite(slope->slope);
    slope->setShown(isThere);
    slope->connectTo->setShown(isThere);
    if (!isThere)
        return;
    setDerivText();
    setFloatingMarkerPosition(slope->connectTo);
}

void Plot::moveDeriv(int iSens)
{
    const bool wasShown = slope->isShown();
    slope->iSens = slope->connectTo->iSens = iSens;
    if (!wasShown)
        return;
    putOnCurve(slope, iSens);
    showSlope();
}

// --- Photogates ---

/// The texts of the present data in place of those of the last.
void Plot::addPhotogateTexts()
{
    QVector<int> gates;
    for (int i = markers.size() - 1; i >= 0; --i) {
        if (markers[i]->type == MARKER_FLOATING_TEXT && !markers[i]->connectTo)
            dropMarker(markers[i]);
    }
    for (int i = 0; i < nSens; ++i) {
        const SensorPtr& sensor = data->getSens(i);
        if (!sensor || !Sensor::isPhotoGate(sensor->ID))
            continue;
        doPhotoSpeed(i);
        gates.append(i);
    }
    if (gates.size() == 2)
        doPhotoAccel(gates[0], gates[1]);
}

void Plot::doPhotoSpeed(int iSens)
{
    double speed = 0;
    double midTime = 0;
    double dt = 0;
    double width = 0;
    data->photoSpeed(iSens, &speed, &midTime, &dt, &width);
    if (speed == 0)
        return;
    auto* text = new myPlotMarker(iSens, scaler.get(), MARKER_FLOATING_TEXT);
    text->a = speed;
    text->b = dt;
    text->c = width;
    text->pointToXVal = midTime;
    text->pointToYVal = gateLevel;
    setPhotoSpeedText(text);
    addValueText(text, myPlotMarker::textDistance, -myPlotMarker::textDistance);
}

void Plot::doPhotoAccel(int iSens1, int iSens2)
{
    double accel = 0;
    double dV = 0;
    double midTime = 0;
    double dt = 0;
    data->photoAccel(iSens1, iSens2, &accel, &dV, &midTime, &dt);
    if (dt == 0)
        return;
    auto* text = new myPlotMarker(iSens1, scaler.get(), MARKER_FLOATING_TEXT);
    text->a = accel;
    text->b = dV;
    text->c = dt;
    text->pointToXVal = midTime;
    text->pointToYVal = belowGateLevel;
    setPhotoAccelText(text);
    addValueText(text, 0, 0);
}
