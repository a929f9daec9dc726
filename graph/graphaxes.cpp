#include "graph/graphaxes.h"

#include <QFontMetrics>

#include <algorithm>

#include <qwt_plot_canvas.h>
#include <qwt_plot_textlabel.h>
#include <qwt_scale_widget.h>

#include "common/common.h"
#include "graph/graphdesign.h"
#include "graph/timescaleengine.h"

namespace {

constexpr int shownAxes[] = {QwtPlot::xBottom, QwtPlot::yLeft, QwtPlot::yRight};

constexpr double majorTick = 0.4; // lengths, in heights of a text
constexpr double mediumTick = 0.3;
constexpr double minorTick = 0.2;
constexpr double tickSpacing = 0.2;
constexpr double textsPerTickX = 4.2; // room of a mark, in heights of a text
constexpr double textsPerTickY = 2.2;
constexpr double innerZ = 25; // over curves and bars, under marks
constexpr int veilAlpha = 200;
constexpr int leastTicks = 2;
constexpr int mostTicks = 8;

} // namespace

GraphAxes::GraphAxes(QwtPlot& plot, bool isBar)
    : plot(plot)
    , timeScale(new TimeScaleDraw(isBar))
    , titleFont(plot.axisTitle(QwtPlot::yLeft).font())
    , innerTitle(std::make_unique<QwtPlotTextLabel>())
{
    for (int axisID : shownAxes)
        plot.axisWidget(axisID)->setMargin(0);
    innerTitle->setZ(innerZ);
    innerTitle->setVisible(false);
    innerTitle->attach(&plot);
    plot.setAxisScaleEngine(QwtPlot::xBottom, new TimeScaleEngine(timeScale));
    plot.setAxisScaleDraw(QwtPlot::xBottom, timeScale);
    for (const int axisID : {QwtPlot::yLeft, QwtPlot::yRight})
        plot.setAxisScaleDraw(axisID, new SparseScaleDraw);
}

GraphAxes::~GraphAxes() = default;

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
    font = GraphFonts::fitted(GraphFonts::inPixels(font, GraphFonts::textPixels(plot.height())), text, room);
    // One more: widths are rounded when a font is chosen and are not when a text is elided.
    // The unit stays whole.
    const QFontMetrics metrics(font);
    const int unitAt = std::max(0, text.lastIndexOf(QLatin1String(" [")));
    const QString unit = text.mid(unitAt);
    const bool isWhole = unitAt == 0 || metrics.horizontalAdvance(text) <= room + 1;
    const QString shown = isWhole ? metrics.elidedText(text, Qt::ElideRight, room + 1)
                                  : metrics.elidedText(text.left(unitAt), Qt::ElideRight,
                                                       room + 1 - metrics.horizontalAdvance(unit)) +
                                        unit;
    QwtText title(shown, QwtText::PlainText);
    title.setFont(font);
    const bool isInner = axisID == QwtPlot::xBottom && innerTitle->isVisible();
    plot.setAxisTitle(axisID, isInner ? QwtText() : title);
    if (isInner) {
        title.setRenderFlags(Qt::AlignRight | Qt::AlignBottom);
        title.setColor(innerInk());
        QColor veil = plot.canvasBackground().color(); // bars reach down to it
        veil.setAlpha(veilAlpha);
        title.setBackgroundBrush(veil);
        innerTitle->setText(title);
    }
    plot.axisWidget(axisID)->setToolTip(shown == text ? QString() : text.toHtmlEscaped());
    texts[axisID] = text;
}

void GraphAxes::showWholeTexts()
{
    innerTitle->setVisible(false);
    for (int axisID : shownAxes) {
        QwtText whole(texts[axisID], QwtText::PlainText);
        whole.setFont(titleFont);
        plot.setAxisTitle(axisID, whole);
    }
}

void GraphAxes::setInk(const QColor& newInk, const QColor& newGround)
{
    ink = newInk;
    ground = newGround;
    applyInk();
}

void GraphAxes::setAccent(int axisID, const QColor& color)
{
    if (accents[axisID] == color)
        return;
    accents[axisID] = color;
    applyInk();
}

void GraphAxes::setRightShown(bool tf)
{
    if (plot.axisEnabled(QwtPlot::yRight) == tf)
        return;
    plot.enableAxis(QwtPlot::yRight, tf);
    setDue();
}

// Under a style sheet the palette of the graph does not reach its parts.
void GraphAxes::applyInk()
{
    for (int axisID : shownAxes) {
        QWidget* const axis = plot.axisWidget(axisID);
        QPalette colors = axis->palette();
        const QColor& accent = accents[axisID];
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text})
            colors.setColor(role, accent.isValid() ? GraphDesign::readableOn(accent, ground) : ink);
        axis->setPalette(colors);
    }
}

QColor GraphAxes::innerInk() const
{
    return GraphDesign::inkOn(plot.canvasBackground().color());
}

double GraphAxes::innerTitleHeight() const
{
    return innerTitle->isVisible() ? innerTitle->text().textSize().height() + innerTitle->margin() : 0;
}

void GraphAxes::setInnerTitle(bool tf)
{
    if (innerTitle->isVisible() == tf)
        return;
    innerTitle->setVisible(tf);
    showText(QwtPlot::xBottom, QString(texts[QwtPlot::xBottom]));
    setDue();
}

void GraphAxes::fitLabels()
{
    const int pixels = GraphFonts::textPixels(plot.height());
    for (int axisID : shownAxes) {
        plot.setAxisFont(axisID, GraphFonts::inPixels(QFont(), pixels));
        QwtScaleDraw* const draw = plot.axisScaleDraw(axisID);
        draw->setTickLength(QwtScaleDiv::MajorTick, majorTick * pixels);
        draw->setTickLength(QwtScaleDiv::MediumTick, mediumTick * pixels);
        draw->setTickLength(QwtScaleDiv::MinorTick, minorTick * pixels);
        draw->setSpacing(tickSpacing * pixels);
    }
    plot.setAxisMaxMajor(QwtPlot::xBottom,
                         qBound(leastTicks, int(plot.width() / (textsPerTickX * pixels)), mostTicks));
    for (const int axisID : {QwtPlot::yLeft, QwtPlot::yRight})
        plot.setAxisMaxMajor(axisID,
                             qBound(leastTicks, int(plot.height() / (textsPerTickY * pixels)), mostTicks));
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
