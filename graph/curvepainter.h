#pragma once

#include <QPointF>
#include <QRect>
#include <QVector>

#include <limits>

#include <qwt_scale_map.h>

#include "sensors/sensor.h"

class QPainter;

/// Turns the samples of a time plot into the rectangles to fill, at a cost that follows the width of the
/// canvas: for each pixel column the stretch that the curve covers there, segments across columns included,
/// so that no peak is lost. One painter serves all curves of a graph and keeps its buffers from frame to
/// frame.
///
/// A wide pen of the raster engine costs about a microsecond a segment; a filled column costs some tens of
/// nanoseconds. The fill imitates a round antialiased pen.
class CurvePainter
{
public:
    /// Samples `from` up to, not including, `to` of a channel as it is stored. The line breaks at a value
    /// that is not a number, but for gaps inside one pixel column, and where two times lie further apart than
    /// `longest`.
    struct Curve
    {
        const double* y = nullptr;
        int from = 0;
        int to = 0;
        Sensor::AltUnit unit; ///< from the stored value to the shown one
        double longest = std::numeric_limits<double>::infinity();
    };
    struct Pen
    {
        int width = 1;
        QVector<qreal> dashes; ///< on, off, ... in units of dashUnit; none for a whole line
        int dashUnit = 1;
    };
    /// What to fill, none overlapping another: whole pixels, and those at the edges by how much is covered.
    struct Spans
    {
        static constexpr int levels = 5;
        QVector<QRect> whole;
        QVector<QRect> part[levels]; ///< at place k covered by k/levels; the first is never used

        void paint(QPainter* painter, const QColor& color) const;
        void clear();
        void add(int level, int column, int top, int bottom);
    };

    static constexpr int maxPenWidth = 24;

    /// True for maps that this painter can follow: linear, time running to the right.
    static bool canPaint(const QwtScaleMap& xMap, const QwtScaleMap& yMap);

    /// The ascending times, shared by the curves of one frame. Does nothing if they are prepared already.
    void setTime(const QVector<double>& x, const QwtScaleMap& xMap, const QRect& canvas);
    /// The data may change from now on.
    void forget() { times = nullptr; }

    /// The rectangles of a curve; valid until the next call.
    const Spans& spans(const Curve& curve, const QwtScaleMap& yMap, const Pen& pen);
    /// Samples that no line led to in the last call of spans().
    const QVector<int>& lonely() const { return singles; }
    /// Where to put symbols: every sample, or where they crowd the lowest and highest of each column.
    const QVector<QPointF>& symbolPositions(const Curve& curve, const QwtScaleMap& xMap,
                                            const QwtScaleMap& yMap);

private:
    void splitIntoColumns(const QVector<double>& x, const QwtScaleMap& xMap);
    void cover(const Curve& curve);
    bool isJoined(const Curve& curve, int i, int j) const;
    void coverSegment(const double* y, int i, int j, int fromColumn, int toColumn);
    void widen(const Curve& curve, const QwtScaleMap& yMap, int penWidth);
    double topLimit() const { return canvas.top() - 2.0 * maxPenWidth; } ///< rows beyond are not told apart
    double bottomLimit() const { return canvas.bottom() + 2.0 * maxPenWidth; }
    enum Course
    {
        Rises = 1,
        Falls = 2
    };
    void findCourses();
    double rampAt(int k, int reach) const;
    void dash(const Pen& pen);
    void roundSpikes(QVector<double>& edge);
    void findWhole();
    void collectEdges();
    void collect();
    void collectColumns(const int* tops, const int* bottoms, int first, int last);

    const double* times = nullptr;
    int timeCount = 0;
    double mapKey[4] = {};
    QRect canvas;

    // One entry per column from `firstColumn` on, which lies some pixels outside the canvas.
    int firstColumn = 0;
    int columnCount = 0;
    QVector<int> starts;          ///< first sample in the column or right of it; one entry more than columns
    QVector<double> edges;        ///< time at the left edge of the column; one entry more than columns
    QVector<double> lows, highs;  ///< the stretch covered, stored values; low above high where none is
    QVector<double> upper, lower; ///< the same in pixel rows
    QVector<double> penUpper, penLower; ///< one entry per canvas column, the pen's width included
    QVector<double> steps;              ///< rows between the edges of a column and the one before
    QVector<char> courses;              ///< one entry per column, Course flags
    QVector<double> ramps;              ///< rows over which the edges of the column go from nothing to all
    QVector<int> tops, bottoms;         ///< the whole rows; none where bottom is not below top
    QVector<int> capTops, capBottoms;
    Spans result;
    QVector<QPointF> points;
    QVector<int> singles;
};
