#include "graph/colorscale.h"

#include <algorithm>
#include <iterator>

#include "graph/contrast.h"

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

// Found by a search for the greatest least distance in Oklab, over normal vision and full protanopia,
// deuteranopia and tritanopia by the matrices of Machado, Oliveira and Fernandes (2009): 0.158, the average's
// colour included. The order puts those that are furthest apart first.
constexpr QRgb colorBlindPalette[ColorScale::colorBlindColors] = {
    0xffc10b11, 0xff45dbca, 0xff6300ad, 0xffc58956, 0xff377082, 0xffcbcd03, 0xff9e24fe, 0xff7a96d0,
};

bool isForColorBlind = false;

template<size_t N> QColor cyclic(const Qt::GlobalColor (&colors)[N], int index)
{
    return colors[static_cast<size_t>(qMax(index, 0)) % N];
}

} // namespace

QColor ColorScale::myColors(int index)
{
    if (isForColorBlind)
        return QColor::fromRgb(colorBlindPalette[qMax(index, 0) % colorBlindColors]);
    return cyclic(sensColors, index);
}

QColor ColorScale::averageColor(const QColor& ground)
{
    return Contrast::isDark(ground) ? QColor(Qt::white) : QColor(0x10, 0x18, 0x20);
}

QColor ColorScale::averageCasing(const QColor& ground)
{
    return averageColor(Contrast::isDark(ground) ? Qt::white : Qt::black);
}

void ColorScale::setColorBlindPalette(bool on)
{
    isForColorBlind = on;
}

bool ColorScale::isColorBlindPalette()
{
    return isForColorBlind;
}

QVector<qreal> ColorScale::dashes(const QVector<QColor>& colors, int index)
{
    static const QVector<qreal> patterns[] = {{}, {4, 3}, {1.5, 2}, {6, 2, 1.5, 2}};
    const QColor own = colors.value(index);
    const auto before =
        std::count_if(colors.cbegin(), colors.cbegin() + qMax(0, index), [&](const QColor& color) {
            return Contrast::distance(color, own) < Contrast::leastDistance;
        });
    return patterns[size_t(before) % std::size(patterns)];
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
