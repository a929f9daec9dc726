#pragma once

#include <QPointF>

#include <functional>
#include <optional>

#include <qwt_scale_map.h>

/// Finds the point of a curve that lies nearest to a pointer on the canvas. The cost follows the width of the
/// strip searched, or a few hundred samples of a path, never the length of the data.
namespace NearCurve {

/// How values turn into pixels.
struct Maps
{
    QwtScaleMap x;
    QwtScaleMap y;
};

/// Pixel columns, both ends included; empty where `from` is above `to`.
struct Strip
{
    double from;
    double to;
};

struct Hit
{
    QPointF value;
    double dist; ///< from the pointer, in pixels
};

/// On the graph of a function of x, within a strip; nothing in an empty one. Between whole columns the curve
/// is taken as straight.
std::optional<Hit> onFunction(const QPointF& pos, const Strip& strip, const Maps& maps,
                              const std::function<double(double)>& valueAt);

/// On the path through `n` points. It is looked at in about a hundred places and then closely round the best,
/// so a short excursion between two places can be missed.
std::optional<Hit> onPath(const QPointF& pos, int n, const Maps& maps,
                          const std::function<QPointF(int)>& pointAt);

} // namespace NearCurve
