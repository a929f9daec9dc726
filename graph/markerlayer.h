#pragma once

#include <QList>
#include <QObject>
#include <QPointF>

#include "graph/curveanalysis.h"
#include "graph/curvesearch.h"
#include "graph/graphkind.h"
#include "graph/myplotmarker.h"
#include "graph/placedmarks.h"
#include "graph/textplaces.h"

/// What is placed on a graph: crosses, notes, fits, integrals and the texts beside them. It owns them, keeps
/// pairs together and lets them follow curves, data and axes.
class MarkerLayer : public QObject
{
    Q_OBJECT

public:
    MarkerLayer(const GraphParts& parts, const KindTraits& traits);
    ~MarkerLayer() override;

    /// In order of creation, pairs side by side, graphic first.
    const QList<myPlotMarker*>& all() const { return markers; }
    /// The at most two crosses that can move, in order of creation; those of the other x axis wait.
    const QList<myPlotMarker*>& movable() const { return crosses; }
    /// What a text tells about, else the marker itself; null for a text that points at a value.
    static myPlotMarker* subjectOf(myPlotMarker* marker);
    static bool isCross(const myPlotMarker& marker);

    // Making, in markerlayer_make.cpp

    /// A note at a point of the canvas.
    myPlotMarker* addNote(const QPointF& pos);
    /// A cross with its text on a curve, or on the fitted line at `iReg` (-1 for none). Refused beyond the
    /// second one.
    void addCross(int iSens, int iReg, double x, double y);
    /// No cross can be placed, and a line says why.
    bool refusesCross();
    /// What an analysis gave, with its text, or why it gave nothing.
    void addResult(CurveAnalysis::Result result);
    /// A fit that is seen while somebody tries it, without a text; it is no marker, and goes with all of
    /// them. One without a marker takes it away.
    void preview(CurveAnalysis::Result result);
    /// Those of a file in stored order and base units, in place of what is there. A cross or fit without a
    /// text gets one, a text without a partner is dropped.
    void install(const QList<myPlotMarker*>& list);
    /// Runs behind the curves; not owned.
    void setPinned(const PinnedCurves* behind) { texts.setPinned(behind); }
    /// The texts of the photogates in the present data in place of those of the last.
    void renewGateTexts();
    /// In place of all that a person placed.
    void place(const PlacedMarks& marks, const TextLayout& layout);
    TextLayout textLayout() const;
    /// Takes a marker that somebody else made; drop() gives none back.
    void adopt(myPlotMarker* marker);

    // Going

    /// With its partner.
    void remove(myPlotMarker* marker);
    /// Takes one marker out of all that knows it.
    void drop(myPlotMarker* marker);
    /// All but the tangent's text.
    void clear();
    void lock(myPlotMarker* cross);
    /// After a crop: the movable crosses, and notes outside the span.
    void cropTo(double x0, double x1);

    // Moving, in markerlayer_move.cpp

    /// Follows the pointer; a note's balloon with its tip only, if `isByTip`.
    void drag(myPlotMarker* marker, const QPointF& pos, bool isByTip);
    /// After a drag that was given up.
    void putBack(myPlotMarker* marker, const QPointF& value, const QPoint& offset, bool isPlacedByHand);
    /// To the height of a curve; over a gap it stays where it is, since a file knows no place without one.
    void putOnCurve(myPlotMarker* marker, int iSens) const;

    // Following

    /// After the curves were made anew: crosses go to the height of the data, results are of the data. What
    /// they tell follows with renew(), when the axes are known.
    void followData();
    /// What is seen and what it tells, by curves, x axis and units.
    void renew();
    void renewText(myPlotMarker* text);
    /// Whenever axes or size have changed.
    void placeTexts();
    void placeText(myPlotMarker* text) const { places.put(text); }
    /// To the present size of the graph.
    void fit();
    /// After markers have changed.
    void repaint();

Q_SIGNALS:
    /// A person begins to change something that can be taken back, and has done it; in between the mouse may
    /// move or a dialog be open.
    void changing(bool isOfSamples = false);
    void changed(const QString& step);
    /// The distance of the two crosses, as a text.
    void distanceTold(const QString& text);
    /// Why something cannot be done.
    void refused(const QString& why);

private:
    void addPair(myPlotMarker* graphic);
    void addGateText(int iSens, const QPointF& at, const QPoint& offset, const QString& words);
    QList<myPlotMarker*> pairedUp(const QList<myPlotMarker*>& list);
    void takeStored(myPlotMarker* marker);
    void takeStoredFit(myPlotMarker* marker) const;
    void dragCross(myPlotMarker* cross, const QPointF& pos);
    void findMovable();
    void renewShown();
    bool isSeen(const myPlotMarker& marker) const;
    void followCross(myPlotMarker* cross);
    QString channelOf(int iSens) const;
    void tellDistance();
    void refuse(const QString& why);
    double apart() const;
    void fitText(myPlotMarker* marker) const;
    void renewSpan();
    void aimSpan();
    QVector<QPointF> curvePoints() const;
    static void setCross(myPlotMarker* marker, markerType kind);

    const GraphParts parts;
    const KindTraits& traits;
    QList<myPlotMarker*> markers;
    QList<myPlotMarker*> crosses;
    MarkerTexts texts;
    TextPlaces places;
    const CurveSearch search;
    QString lastDistance;
    int refusedWith = -1; ///< how many markers there were at the last refusal that still stands, else -1
    std::unique_ptr<myPlotMarker> previewed;
    std::unique_ptr<myPlotMarker> span; ///< what lies between two crosses; not among the markers
};
