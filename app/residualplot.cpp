#include "app/residualplot.h"

#include "data/stretch.h"

#include <QPen>

#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <qwt_text.h>

namespace {

QFont smallFont()
{
    QFont font;
    font.setPixelSize(12);
    return font;
}

QwtText axisText(const QString& name, const QString& unit)
{
    QwtText text(unit.isEmpty() ? name : QStringLiteral("%1 [%2]").arg(name, unit));
    text.setFont(smallFont());
    return text;
}

} // namespace

ResidualPlot::ResidualPlot(QWidget* parent)
    : QwtPlot(parent)
    , dots(new QwtPlotCurve)
{
    constexpr int height = 170;
    constexpr int leastWidth = 200;
    constexpr double width = 3;
    setObjectName(QStringLiteral("residualPlot"));
    setAccessibleName(tr("Residuals"));
    setFixedHeight(height);
    setMinimumWidth(leastWidth); // its own idea of it is wider than the dialog
    for (const int axis : {int(xBottom), int(yLeft)})
        setAxisFont(axis, smallFont());
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
