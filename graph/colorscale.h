#pragma once

#include <QColor>

/// Colours for values and curves.
class ColorScale
{
public:
    /// The colour of the curve at `index`; after twelve they repeat.
    static QColor myColors(int index);
    /// The same for data with a colorimeter, whose red, green and blue channels stand in a row from
    /// `colorimeterAt` and take their own colours.
    static QColor myColorsForColorimeter(int index, int colorimeterAt);
};
