#pragma once

#include <qwt_plot.h>

struct Stretch;
class QwtPlotCurve;

/// What a fit leaves of the values: dots round a line at 0.
class ResidualPlot : public QwtPlot
{
    Q_OBJECT

public:
    explicit ResidualPlot(QWidget* parent = nullptr);

    void setResiduals(const Stretch& stretch, const QVector<double>& residuals);

private:
    QwtPlotCurve* const dots;
};
