#pragma once

#include <qwt_plot_layout.h>

class QwtLegend;

/// Leaves the canvas at least three quarters of the width: where the legend beside it would take more, its
/// entries stand in rows under the title, or beside a short title.
class GraphLayout : public QwtPlotLayout
{
public:
    void activate(const QwtPlot* plot, const QRectF& area, Options options = Options()) override;

    /// Of the width and, with the texts that a small graph has, of the height.
    static constexpr double canvasPart = 0.75;

private:
    void layRows(const QwtPlot* plot, QwtLegend* legend, const QRectF& area, Options options);

    bool hasRows = false;
};
