#include "graph/sparsescaledraw.h"

#include <QPainter>

namespace {

constexpr int gap = 6; // pixels between labels

} // namespace

void SparseScaleDraw::drawLabel(QPainter* painter, double value) const
{
    const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
    QVector<QRect> places;
    for (const double tick : ticks)
        places.append(boundingLabelRect(painter->font(), tick).adjusted(-gap / 2, 0, gap / 2, 0));
    const auto isCrowded = [&](int stride) {
        for (int i = stride; i < places.size(); i += stride) {
            if (places[i].intersects(places[i - stride]))
                return true;
        }
        return false;
    };
    int stride = 1;
    while (stride < places.size() && isCrowded(stride))
        ++stride;
    if (qMax(0, ticks.indexOf(value)) % stride == 0)
        QwtScaleDraw::drawLabel(painter, value);
}
