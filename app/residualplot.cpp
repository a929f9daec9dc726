#include "app/residualplot.h"

#include "data/stretch.h"

#include <QPen>

#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <qwt_text.h>

namespace {

QwtText axisText(const QString& name, const QString& unit)
{
    QwtText text(unit.isEmpty() ? name : QStringLiteral("%1 [%2]").arg(name, unit));
    QFont font;
    font.setPixelSize(12);
    text.setFont(font);
    return text;
}

} // namespace

ResidualPlot::ResidualPlot(QWidget* parent)
    : QwtPlot(parent)
    , dots(new QwtPlotCurve)
{
    constexpr int height = 170;
    constexpr double width = 3;
    setObjectName(QStringLiteral("residualPlot"));
    setAccessibleName(tr("Residuals"));
    setFixedHeight(height);
    setCanvasBackground(Qt::white);
    auto* const zero = new QwtPlotMarker;
    zero->setLineStyle(QwtPlotMarker::HLine);
    zero->setLinePen(QPen(Qt::darkGray));
    zero->attach(this);
    dots->setStyle(QwtPlotCurve::Dots);
    dots->setPen(QPen(QColor(QStringLiteral("#1f6fc4")), width));
    dots->attach(this);
}

void ResidualPlot::setResiduals(const Stretch& stretch, const QVector<double>& residuals)
{
    dots->setSamples(stretch.x, residuals);
    setAxisTitle(xBottom, axisText(stretch.isTime ? tr("Time") : tr("x"), stretch.xUnit.name));
    setAxisTitle(yLeft, axisText(tr("Residuals"), stretch.yUnit.name));
    replot();
}
