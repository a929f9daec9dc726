#pragma once

#include <QColor>
#include <QVector>

/// Colours for values and curves.
class ColorScale
{
public:
    /// The colour of the curve at `index`; after twelve they repeat, after eight in the palette of
    /// colour-blind viewers.
    static QColor myColors(int index);
    /// The average of the class: dark on a light casing, so that it is seen from afar among all others, and
    /// the other way round on a dark ground.
    static QColor averageColor(const QColor& ground = Qt::white);
    static QColor averageCasing(const QColor& ground = Qt::white);

    /// Eight colours that stay apart in protan, deutan and tritan vision, in place of the usual ones. Graphs
    /// take it up when their design is set.
    static void setColorBlindPalette(bool on);
    static bool isColorBlindPalette();
    static constexpr int colorBlindColors = 8;

    /// How the curve at `index` of curves in these colours is drawn, so that none is taken for one before it:
    /// no dashes for the first of a colour, then a pattern in widths of the pen.
    static QVector<qreal> dashes(const QVector<QColor>& colors, int index);
    /// The same for data with a colorimeter, whose red, green and blue channels stand in a row from
    /// `colorimeterAt` and take their own colours.
    static QColor myColorsForColorimeter(int index, int colorimeterAt);
};
