#pragma once

class ExpData;
class GraphAxes;
class GraphCurves;
class QwtPlot;
class scaleManager;

/// The parts of one graph that its other parts work with. All outlive their holders; none is owned.
struct GraphParts
{
    QwtPlot& plot; ///< as the canvas and its maps; its parts do not know what kind of graph it is
    ExpData& data;
    scaleManager& scaler;
    GraphAxes& axes;
    GraphCurves& curves;
    const int index; ///< the logger's slot, below 0 for the class
};
