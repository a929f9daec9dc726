#include "graph/colorscale.h"

#include <iterator>

namespace {

constexpr Qt::GlobalColor sensColors[] = {
    Qt::red,  Qt::blue,    Qt::darkGreen, Qt::darkRed,  Qt::green,       Qt::darkBlue,
    Qt::cyan, Qt::magenta, Qt::yellow,    Qt::darkCyan, Qt::darkMagenta, Qt::darkYellow,
};

// Without the three colours that the channels of a colorimeter have for themselves.
constexpr Qt::GlobalColor sensColorsColorimeter[] = {
    Qt::darkRed,  Qt::green,       Qt::darkBlue,   Qt::cyan, Qt::magenta,  Qt::yellow,
    Qt::darkCyan, Qt::darkMagenta, Qt::darkYellow, Qt::gray, Qt::darkGray, Qt::black,
};

template<size_t N> QColor cyclic(const Qt::GlobalColor (&colors)[N], int index)
{
    return colors[static_cast<size_t>(qMax(index, 0)) % N];
}

} // namespace

QColor ColorScale::myColors(int index)
{
    return cyclic(sensColors, index);
}

QColor ColorScale::myColorsForColorimeter(int index, int colorimeterAt)
{
    switch (index - colorimeterAt) {
    case 0:
        return Qt::red;
    case 1:
        return Qt::darkGreen;
    case 2:
        return Qt::blue;
    default:
        return cyclic(sensColorsColorimeter, index < colorimeterAt ? index : index - 3);
    }
}
