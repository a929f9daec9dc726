#include "data/stretch.h"

#include "data/expdata.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

Stretch ofRows(const ExpData& data, int iSens, int first, int end)
{
    Stretch stretch;
    stretch.iSens = iSens;
    stretch.isTime = !data.isXYPlot();
    stretch.yUnit = FittedCurve::Unit::of(data.getSens(iSens));
    if (!stretch.isTime)
        stretch.xUnit = FittedCurve::Unit::of(data.getSens(data.getXYIndex()));
    else if (data.dt > 0)
        stretch.xUnit.name = QCoreApplication::translate("MarkerTexts", "s");
    const int n = std::min(end, data.getYSize(iSens));
    for (int i = std::max(first, data.getLeftPad(iSens)); i < n; ++i) {
        const double x = stretch.isTime ? data.getXAt(i) : data.getYAt(data.getXYIndex(), i);
        const double y = data.getYAt(iSens, i);
        if (std::isfinite(x) && std::isfinite(y)) {
            stretch.x.append(x);
            stretch.y.append(y);
        }
    }
    return stretch;
}

} // namespace

Stretch Stretch::whole(const ExpData& data, int iSens)
{
    Stretch stretch = ofRows(data, iSens, 0, data.getXSize());
    if (!stretch.isEmpty()) {
        const auto [least, most] = std::minmax_element(stretch.x.cbegin(), stretch.x.cend());
        stretch.from = *least;
        stretch.to = *most;
    }
    return stretch;
}

Stretch Stretch::between(const ExpData& data, int iSens, double from, double to)
{
    if (from > to)
        std::swap(from, to);
    const QVector<double>& times = data.getX();
    Stretch stretch;
    if (data.isXYPlot()) {
        const Stretch all = ofRows(data, iSens, 0, data.getXSize());
        stretch = all;
        stretch.x.clear();
        stretch.y.clear();
        for (int i = 0; i < all.x.size(); ++i) {
            if (all.x[i] >= from && all.x[i] <= to) {
                stretch.x.append(all.x[i]);
                stretch.y.append(all.y[i]);
            }
        }
    } else {
        const auto first = std::lower_bound(times.cbegin(), times.cend(), from);
        const auto end = std::upper_bound(first, times.cend(), to);
        stretch = ofRows(data, iSens, int(first - times.cbegin()), int(end - times.cbegin()));
    }
    stretch.from = from;
    stretch.to = to;
    stretch.isWhole = false;
    return stretch;
}

Stretch Stretch::along(const ExpData& data, int iSens, const QPointF& from, const QPointF& to)
{
    int first = data.nearestXY(iSens, from.x(), from.y());
    int last = data.nearestXY(iSens, to.x(), to.y());
    if (last < first)
        std::swap(first, last);
    Stretch stretch = ofRows(data, iSens, first, last + 1);
    stretch.from = from.x();
    stretch.to = to.x();
    stretch.isWhole = false;
    return stretch;
}
