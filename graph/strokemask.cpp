#include "graph/strokemask.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int full = 255;

} // namespace

StrokeMask::StrokeMask(const QRect& area)
    : area(area)
    , cover(area.size(), QImage::Format_Alpha8)
{
    cover.fill(0);
}

void StrokeMask::add(const QPolygonF& line, double width)
{
    const double half = width / 2;
    const QPointF origin = area.topLeft();
    for (int i = 0; i < line.size(); ++i)
        addSegment(line[std::max(0, i - 1)] - origin, line[i] - origin, half);
}

// Pixels whose middle is nearer to the segment than the pen reaches, row by row inside its band.
void StrokeMask::addSegment(const QPointF& from, const QPointF& to, double half)
{
    const double reach = half + 0.5;
    const double top = std::min(from.y(), to.y()) - reach;
    const double bottom = std::max(from.y(), to.y()) + reach;
    const double left = std::min(from.x(), to.x()) - reach;
    const double right = std::max(from.x(), to.x()) + reach;
    if (right < 0 || bottom < 0 || left >= cover.width() || top >= cover.height())
        return;
    const QPointF step = to - from;
    const double length2 = QPointF::dotProduct(step, step);
    const double bandHalf = step.y() != 0 ? reach * std::sqrt(length2) / std::abs(step.y()) : right - left;
    const int firstRow = std::max(0, int(std::ceil(top)));
    const int lastRow = std::min(cover.height() - 1, int(std::floor(bottom)));
    for (int row = firstRow; row <= lastRow; ++row) {
        const double middle = step.y() != 0 ? from.x() + (row - from.y()) * step.x() / step.y() : left;
        const int first = int(std::ceil(std::max({left, middle - bandHalf, 0.0})));
        const int last = int(std::floor(std::min({right, middle + bandHalf, cover.width() - 1.0})));
        uchar* const line = cover.scanLine(row);
        for (int column = first; column <= last; ++column) {
            const QPointF offset = QPointF(column, row) - from;
            const double along =
                length2 > 0 ? std::clamp(QPointF::dotProduct(offset, step) / length2, 0.0, 1.0) : 0.0;
            const QPointF beside = offset - along * step;
            const double distance2 = QPointF::dotProduct(beside, beside);
            if (distance2 >= reach * reach)
                continue;
            const double covered = std::min(1.0, reach - std::sqrt(distance2));
            line[column] = std::max(line[column], uchar(qRound(covered * full)));
        }
    }
    const QPoint corner(std::max(0, int(left)), firstRow);
    touched |= QRect(corner, QPoint(std::min(cover.width() - 1, int(right) + 1), lastRow));
}

void StrokeMask::paint(QPainter* painter, const QColor& color) const
{
    if (touched.isEmpty())
        return;
    QImage picture(touched.size(), QImage::Format_ARGB32_Premultiplied);
    QRgb shades[full + 1];
    for (int i = 0; i <= full; ++i)
        shades[i] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), i));
    for (int row = 0; row < touched.height(); ++row) {
        const uchar* const from = cover.constScanLine(touched.top() + row) + touched.left();
        auto* const into = reinterpret_cast<QRgb*>(picture.scanLine(row));
        std::transform(from, from + touched.width(), into, [&](uchar covered) { return shades[covered]; });
    }
    painter->drawImage(area.topLeft() + touched.topLeft(), picture);
}
