#pragma once

#include <QObject>

#include <qwt_plot_histogram.h>

/// The bars of a bar graph: raised boxes of one colour, flat where they are too narrow for that.
class myPlotHistogram : public QObject, public QwtPlotHistogram
{
    Q_OBJECT

public:
    myPlotHistogram();

    void setColor(const QColor& color);

protected:
    void drawColumn(QPainter* painter, const QwtColumnRect& rect,
                    const QwtIntervalSample& sample) const override;
};
