#pragma once

#include <QByteArray>
#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

#include "data/fittedcurve.h"

class myPlotMarker;

/// One thing that a person placed on a graph, as a value; a pair is two of them, side by side.
struct PlacedMark
{
    int type = 0; ///< a markerType
    int iSens = 0;
    int xSensor = -1;
    int onFit = -1; ///< among the placed ones, the mark whose line a cross stands on
    QPointF at;
    QPoint offset;
    QString channel;
    QString text;
    QPixmap picture;
    QByteArray pictureFile;
    QVector<double> numbers; ///< of a fit or an area
    FittedCurve fit;
    FittedCurve::Unit fitX;
    FittedCurve::Unit fitY;
    bool isBubble = false;
    bool isLocked = false;
    bool isPlacedByHand = false;
    bool isOfPair = false;
};

using PlacedMarks = QVector<PlacedMark>;

/// How the program has put the texts, beside what each of them knows.
struct TextLayout
{
    QPoint spanOffset;      ///< of the text between two crosses
    QVector<QRectF> ground; ///< as TextPlaces has it
};

/// What a person did is the same; where the program put a text does not count.
bool operator==(const PlacedMark& a, const PlacedMark& b);

namespace Placed {
/// Not the tangent, and no text of the program's own.
bool isPlaced(const myPlotMarker& marker);
PlacedMarks of(const QList<myPlotMarker*>& list);
/// New ones, pairs connected, each `onFit` as an index of the result.
QList<myPlotMarker*> made(const PlacedMarks& marks);
} // namespace Placed
