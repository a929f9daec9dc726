#include "graph/peakname.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

#include <qwt_plot.h>
#include <qwt_scale_map.h>

#include "graph/graphdesign.h"

namespace {

constexpr double peakNameZ = 22;
constexpr double besidePeak = 10; // pixels
constexpr double aroundPeakName = 3;
constexpr double peakDot = 4;

} // namespace

PeakName::PeakName(const GraphParts& parts)
    : parts(parts)
{
    setZ(peakNameZ);
    setItemAttribute(Legend, false);
}

void PeakName::setPeak(const QPointF& value, const QString& text)
{
    peak = value;
    words = text;
}

void PeakName::draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                    const QRectF& canvasRect) const
{
    const QPointF at = QwtScaleMap::transform(xMap, yMap, peak);
    if (words.isEmpty() || !canvasRect.adjusted(-1, -1, 1, 1).contains(at))
        return;
    QFont bold;
    bold.setBold(true);
    const QFont font = GraphFonts::inPixels(bold, GraphFonts::textPixels(parts.plot.height()));
    const QSizeF size =
        QFontMetricsF(font, painter->device()).size(0, words) + 2 * QSizeF(aroundPeakName, aroundPeakName);
    QRectF box(at + QPointF(besidePeak, 0), size);
    if (box.right() > canvasRect.right())
        box.moveRight(at.x() - besidePeak);
    box.moveLeft(std::max(box.left(), canvasRect.left()));
    box.moveTop(std::clamp(box.top(), canvasRect.top(),
                           std::max(canvasRect.top(), canvasRect.bottom() - size.height())));
    const QColor ground = GraphDesign::groundOf(painter, &parts.plot);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setFont(font);
    painter->setPen(Qt::NoPen);
    painter->setBrush(GraphDesign::boxOn(ground));
    painter->drawRect(box);
    painter->setBrush(GraphDesign::inkOn(ground));
    painter->drawEllipse(at, peakDot, peakDot);
    painter->setPen(GraphDesign::inkOn(ground));
    painter->drawText(box, Qt::AlignCenter, words);
    painter->restore();
}
