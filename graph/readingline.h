#pragma once

#include <QColor>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <QVector>
#include <QWidget>

#include <optional>

#include "graph/markertexts.h"

class PinnedCurves;
struct GraphParts;

/// The value of one curve where a graph is read.
struct Reading
{
    QString group; ///< empty where the graph is of one group
    QString name;  ///< of the channel, or of the pinned run behind it
    QString value; ///< empty where the curve has none
    QString unit;
    QColor color;
    bool isPinned = false; ///< of a run behind the curve above
};

/// The upright line at which a graph is read. On the screen it is a narrow widget over the canvas, so that
/// moving it paints two columns and a frame of a run costs what it did.
class ReadingLine
{
public:
    /// What the x axis counts. Graphs that count the same are read together.
    enum class Axis
    {
        None, ///< nothing to be read
        Time,
        Number,
        Own ///< a sensor or a frequency, which no other graph has
    };

    /// Nothing is owned.
    ReadingLine(const GraphParts& parts, MarkerForm form);
    ~ReadingLine();

    Axis axis() const;
    double xAt(double pixel) const;
    double pixelOf(double x) const;
    /// By how much x goes on with a step of the keys: a sample, but at least a pixel.
    double step() const;

    void show(double x);
    void hide();
    /// Axes or size have changed.
    void place();

    /// Of the curves in sight, and of the runs behind each. Over the time values lie on the straight line
    /// between two samples; else they are those of the nearest sample, of equally near ones that at the
    /// height `pixelY`.
    QVector<Reading> readings(double x, double pixelY, const PinnedCurves* pinned) const;
    /// The place in words, with the unit of the axis.
    QString placeText(double x) const;

private:
    double perPixel() const;
    std::optional<double> valueAt(int i, double x, double pixelY) const;
    std::optional<double> nearestOnPath(int i, double x, double pixelY) const;

    const GraphParts& parts;
    const MarkerForm form;
    QPointer<QWidget> line; ///< owned by the canvas; null until it is first shown
    std::optional<double> shownAt;
};
