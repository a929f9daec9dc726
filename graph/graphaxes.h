#pragma once

#include <QColor>
#include <QCoreApplication>
#include <QFont>
#include <QString>

#include <memory>

#include <qwt_plot.h>

#include "graph/timescaledraw.h"

class QwtPlotTextLabel;

/// What the axes of a graph were last told to show: ranges, titles, the unit of the time, ticks and fonts. It
/// knows whether they have to be laid out anew, which costs more than painting the curves.
class GraphAxes
{
    Q_DECLARE_TR_FUNCTIONS(GraphAxes)

public:
    /// `plot` is not owned.
    GraphAxes(QwtPlot& plot, bool isBar);
    ~GraphAxes();

    TimeScaleDraw& time() const { return *timeScale; }
    /// "Time" with its unit, or what counts samples.
    QString timeTitle(double dt) const;
    /// Picks the unit for a range that ends at `maxX`.
    void setTimeUnit(double maxX, double dt);
    void setSeconds();

    void setRange(int axisID, double from, double to);
    void setAuto(int axisID);
    bool isFixed(int axisID) const { return ranges[axisID].isFixed; }

    /// A title; one that is shown already costs nothing.
    void setText(int axisID, const QString& text);
    /// The same, always. A text without room ends in an ellipsis and is the axis' tool tip.
    void showText(int axisID, const QString& text);
    /// In full, for a page, which has room for the titles that a small cell had not.
    void showWholeTexts();
    /// What can be read on the ground that the axes stand on.
    void setInk(const QColor& ink, const QColor& ground);
    /// A y axis is of the curve with this colour.
    void setAccent(int axisID, const QColor& color);
    /// The right axis, with the scale of a second channel.
    void setRightShown(bool tf);
    /// The title of the x axis stands inside the canvas, where the graph is too low for it.
    void setInnerTitle(bool tf);
    /// What it takes of the canvas at its lower right, pixels; 0 outside.
    double innerTitleHeight() const;

    /// Fonts and number of ticks for the present size; fitTitles() when the canvas has its own.
    void fitLabels();
    void fitTitles();

    void setDue() { isDirty = true; }
    bool isDue() const { return isDirty; }
    void settle() { isDirty = false; }
    /// The canvas alone where the axes stand still, and `part` of it alone unless that is empty.
    void repaint(const QRect& part = QRect());

private:
    struct Range
    {
        bool isFixed = false;
        double from = 0;
        double to = 0;
    };

    void renewTicks();
    void applyInk();
    QColor innerInk() const;

    QwtPlot& plot;
    TimeScaleDraw* const timeScale; ///< owned by the bottom axis
    const QFont titleFont;
    const std::unique_ptr<QwtPlotTextLabel> innerTitle;
    QColor ink;
    QColor ground;
    QColor accents[QwtPlot::axisCnt]; ///< invalid for none
    Range ranges[QwtPlot::axisCnt];
    QString texts[QwtPlot::axisCnt]; ///< in full
    bool isDirty = true;
};
