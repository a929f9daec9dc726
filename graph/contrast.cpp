#include "graph/contrast.h"

#include <array>
#include <cmath>

namespace {

using Triple = std::array<double, 3>;

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

Triple linearRgb(const QColor& color)
{
    return {linear(color.redF()), linear(color.greenF()), linear(color.blueF())};
}

double luminance(const QColor& color)
{
    const Triple rgb = linearRgb(color);
    return 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
}

Triple times(const double (&matrix)[3][3], const Triple& v)
{
    Triple result{};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t k = 0; k < 3; ++k)
            result[row] += matrix[row][k] * v[k];
    }
    return result;
}

Triple oklab(const QColor& color)
{
    static constexpr double toCones[3][3] = {{0.4122214708, 0.5363325363, 0.0514459929},
                                             {0.2119034982, 0.6806995451, 0.1073969566},
                                             {0.0883024619, 0.2817188376, 0.6299787005}};
    static constexpr double toLab[3][3] = {{0.2104542553, 0.7936177850, -0.0040720468},
                                           {1.9779984951, -2.4285922050, 0.4505937099},
                                           {0.0259040371, 0.7827717662, -0.8086757660}};
    Triple cones = times(toCones, linearRgb(color));
    for (double& cone : cones)
        cone = std::cbrt(cone);
    return times(toLab, cones);
}

const QColor lightInk(0xf4, 0xf6, 0xf8);
const QColor darkInk(0x1b, 0x27, 0x33);

} // namespace

double Contrast::between(const QColor& a, const QColor& b)
{
    constexpr double flare = 0.05;
    const double first = luminance(a) + flare;
    const double second = luminance(b) + flare;
    return first > second ? first / second : second / first;
}

bool Contrast::isDark(const QColor& ground)
{
    return between(ground, lightInk) > between(ground, darkInk);
}

QColor Contrast::inkOn(const QColor& ground)
{
    return isDark(ground) ? lightInk : darkInk;
}

QColor Contrast::casingFor(const QColor& color, const QColor& ground)
{
    return between(color, ground) >= least ? QColor() : inkOn(ground);
}

double Contrast::distance(const QColor& a, const QColor& b)
{
    const Triple first = oklab(a);
    const Triple second = oklab(b);
    return std::hypot(first[0] - second[0], first[1] - second[1], first[2] - second[2]);
}
