#pragma once

#include <QObject>

#include <qwt_plot_histogram.h>

/// The bars of a bar graph: raised boxes of one colour, flat where they are too narrow for that, with an
/// outline where their colour does not stand out from the ground.
class myPlotHistogram : public QObject, public QwtPlotHistogram
{
    Q_OBJECT

public:
    myPlotHistogram();

    void setColor(const QColor& color);

    /// Where the axis begins above 0, or ends below it, the foot of the bars is broken off.
    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
              const QRectF& canvasRect) const override;

protected:
    void drawColumn(QPainter* painter, const QwtColumnRect& rect,
                    const QwtIntervalSample& sample) const override;

private:
    QColor ground() const;
};
