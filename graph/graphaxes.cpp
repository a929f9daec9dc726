#include "graph/graphaxes.h"

#include <QFontMetrics>

#include <algorithm>

#include <qwt_plot_canvas.h>
#include <qwt_scale_widget.h>

#include "common/common.h"
#include "graph/graphdesign.h"
#include "graph/timescaleengine.h"

namespace {

constexpr int shownAxes[] = {QwtPlot::xBottom, QwtPlot::yLeft};
constexpr int labelPoints = 11;

// In a small cell the texts leave most of the room to the curves, whatever size they have elsewhere.
constexpr int titlesPerHeight = 15;
constexpr int labelsPerHeight = 16;
constexpr int labelsPerWidth = 25;
constexpr int pixelsPerTickX = 55; // of the graph's width
constexpr int pixelsPerTickY = 28;
constexpr int leastTicks = 2;
constexpr int mostTicks = 8;

QFont labelFont()
{
    QFont font;
    font.setPointSize(labelPoints);
    return font;
}

} // namespace

GraphAxes::GraphAxes(QwtPlot& plot, bool isBar)
    : plot(plot)
    , timeScale(new TimeScaleDraw(isBar))
    , titleFont(plot.axisTitle(QwtPlot::yLeft).font())
{
    for (int axisID : shownAxes) {
        plot.setAxisFont(axisID, labelFont());
        plot.axisWidget(axisID)->setMargin(0);
    }
    plot.setAxisScaleEngine(QwtPlot::xBottom, new TimeScaleEngine(timeScale));
    plot.setAxisScaleDraw(QwtPlot::xBottom, timeScale);
}

QString GraphAxes::timeTitle(double dt) const
{
    return dt > 0 ? tr("Time [%1]").arg(timeScale->getUnitName()) : tr("Sample");
}

void GraphAxes::setTimeUnit(double maxX, double dt)
{
    const units before = timeScale->getUnit();
    timeScale->setUnitByMaxX(maxX, dt);
    if (timeScale->getUnit() != before)
        renewTicks();
}

void GraphAxes::setSeconds()
{
    if (timeScale->getUnit() == UNIT_SEC)
        return;
    timeScale->setUnit(UNIT_SEC);
    renewTicks();
}

// A fixed range gets its ticks when it is set, so ticks of another unit need it set again.
void GraphAxes::renewTicks()
{
    const Range shown = ranges[QwtPlot::xBottom];
    ranges[QwtPlot::xBottom] = Range();
    if (shown.isFixed)
        setRange(QwtPlot::xBottom, shown.from, shown.to);
    setDue();
}

void GraphAxes::setRange(int axisID, double from, double to)
{
    Range& range = ranges[axisID];
    if (range.isFixed && range.from == from && range.to == to)
        return;
    range = {true, from, to};
    plot.setAxisScale(axisID, from, to);
    setDue();
}

void GraphAxes::setAuto(int axisID)
{
    ranges[axisID] = Range();
    plot.setAxisAutoScale(axisID);
    setDue();
}

void GraphAxes::setText(int axisID, const QString& text)
{
    if (texts[axisID] == text)
        return;
    showText(axisID, text);
    setDue();
}

void GraphAxes::showText(int axisID, const QString& text)
{
    QFont font = titleFont;
    if (Common::isLocale(QStringLiteral("he"))) {
        font = QFont(QStringLiteral("Arial"), 16, QFont::Bold);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 1);
    }
    const QSize size = plot.canvas() ? plot.canvas()->size() : plot.size();
    const int room = axisID == QwtPlot::xBottom ? size.width() : size.height();
    font = GraphFonts::fitted(GraphFonts::atMost(font, plot.height() / titlesPerHeight), text, room);
    // One more: widths are rounded when a font is chosen and are not when a text is elided.
    const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, room + 1);
    QwtText title(shown, QwtText::PlainText);
    title.setFont(font);
    plot.setAxisTitle(axisID, title);
    plot.axisWidget(axisID)->setToolTip(shown == text ? QString() : text.toHtmlEscaped());
    texts[axisID] = text;
}

void GraphAxes::showWholeTexts()
{
    for (int axisID : shownAxes) {
        QwtText whole(texts[axisID], QwtText::PlainText);
        whole.setFont(titleFont);
        plot.setAxisTitle(axisID, whole);
    }
}

// Under a style sheet the palette of the graph does not reach its parts.
void GraphAxes::setInk(const QColor& ink)
{
    for (int axisID : shownAxes) {
        QWidget* const axis = plot.axisWidget(axisID);
        QPalette colors = axis->palette();
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text})
            colors.setColor(role, ink);
        axis->setPalette(colors);
    }
}

void GraphAxes::fitLabels()
{
    const QFont font = GraphFonts::atMost(
        labelFont(), std::min(plot.height() / labelsPerHeight, plot.width() / labelsPerWidth));
    for (int axisID : shownAxes)
        plot.setAxisFont(axisID, font);
    plot.setAxisMaxMajor(QwtPlot::xBottom, qBound(leastTicks, plot.width() / pixelsPerTickX, mostTicks));
    plot.setAxisMaxMajor(QwtPlot::yLeft, qBound(leastTicks, plot.height() / pixelsPerTickY, mostTicks));
    setDue();
}

void GraphAxes::fitTitles()
{
    for (int axisID : shownAxes)
        showText(axisID, QString(texts[axisID]));
    setDue();
}

void GraphAxes::repaint(const QRect& part)
{
    auto* const canvas = qobject_cast<QwtPlotCanvas*>(plot.canvas());
    if (isDirty || !canvas)
        plot.replot();
    else if (part.isEmpty())
        canvas->replot();
    else
        canvas->update(part);
}
