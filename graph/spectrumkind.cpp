#include "graph/spectrumkind.h"

#include <qwt_plot.h>

#include "graph/graphaxes.h"

SpectrumKind::SpectrumKind(const GraphParts& parts)
    : parts(parts)
{
}

void SpectrumKind::update()
{
    parts.plot.replot();
}

void SpectrumKind::zoomIn(const QRectF& rect)
{
    parts.axes.setRange(QwtPlot::xBottom, rect.left(), rect.right());
    parts.axes.setRange(QwtPlot::yLeft, rect.top(), rect.bottom());
    parts.plot.replot();
}
