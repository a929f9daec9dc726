#pragma once

#include <QList>
#include <QObject>
#include <QPointF>

#include <memory>

#include "graph/curvesearch.h"
#include "graph/graphparts.h"
#include "graph/markertexts.h"
#include "graph/myplotmarker.h"
#include "graph/textplaces.h"

/// What is placed on a graph: crosses, notes, fits, integrals and the texts beside them. It owns them, keeps
/// pairs together and lets them follow curves, data and axes.
class MarkerLayer : public QObject
{
    Q_OBJECT

public:
    MarkerLayer(const GraphParts& parts, MarkerForm form);
    ~MarkerLayer() override;

    /// In order of creation, pairs side by side, graphic first.
    const QList<myPlotMarker*>& all() const { return markers; }
    /// The at most two crosses that can move, in order of creation.
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
    /// What an analysis gave, with its text; nothing for null.
    void addResult(std::unique_ptr<myPlotMarker> graphic);
    /// Those of a file in stored order and base units, in place of what is there. A cross or fit without a
    /// text gets one, a text without a partner is dropped.
    void install(const QList<myPlotMarker*>& list);
    /// The texts of the photogates in the present data in place of those of the last.
    void renewGateTexts();
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
    /// To the height of a curve; over a gap it stays where it is, since a file knows no place without one.
    void putOnCurve(myPlotMarker* marker, int iSens) const;

    // Following

    /// After the curves were made anew.
    void followCurves();
    /// Hides and shows each with its curve.
    void showWithCurves();
    void showOnly(int iSens);
    /// The unit of the time may have changed. Fits and integrals keep what they said.
    void renewTexts();
    void renewText(myPlotMarker* text);
    /// Where axes are or are going to be known: the texts that had to wait, or all that are shown.
    void placeTexts(bool isAll);
    void placeText(myPlotMarker* text) const { places.put(text); }
    bool hasUnplaced() const { return hasUnplacedTexts; }
    /// A marker changes nothing about the axes.
    void repaint();

Q_SIGNALS:
    /// The distance of the two crosses, as a text.
    void distanceTold(const QString& text);

private:
    void addPair(myPlotMarker* graphic, int xOffset, int yOffset);
    void addGateText(int iSens, const QPointF& at, const QPoint& offset, const QString& words);
    QList<myPlotMarker*> pairedUp(const QList<myPlotMarker*>& list);
    void takeStored(myPlotMarker* marker);
    void dragCross(myPlotMarker* cross, const QPointF& pos);
    void bringOther(myPlotMarker* cross);
    static void setCross(myPlotMarker* marker, markerType kind);

    const GraphParts parts;
    const MarkerForm form;
    QList<myPlotMarker*> markers;
    QList<myPlotMarker*> crosses;
    const MarkerTexts texts;
    const TextPlaces places;
    const CurveSearch search;
    bool hasUnplacedTexts = false;
};
