#include "graph/graphdesign.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>

#include <algorithm>

#include "graph/contrast.h"

namespace {

constexpr int leastPixels = 8;
constexpr double usualPixels = 13;  // of a program's texts
constexpr double partOfHeight = 45; // a text is this part of a large graph
constexpr double partOfSmall = 26;  // and at most this of a small one

} // namespace

bool GraphDesign::isDark(const QColor& ground)
{
    return Contrast::isDark(ground);
}

QColor GraphDesign::inkOn(const QColor& ground)
{
    return Contrast::inkOn(ground);
}

QColor GraphDesign::readableOn(const QColor& color, const QColor& ground)
{
    constexpr double wanted = 4.5;
    constexpr int steps = 20;
    QColor ink = inkOn(ground);
    for (int i = 0; i < steps; ++i) {
        const double part = double(i) / steps;
        const auto mixed = [part](double a, double b) { return a + part * (b - a); };
        QColor shade = QColor::fromRgbF(mixed(color.redF(), ink.redF()), mixed(color.greenF(), ink.greenF()),
                                        mixed(color.blueF(), ink.blueF()));
        if (Contrast::between(shade, ground) >= wanted)
            return shade;
    }
    return ink;
}

int GraphFonts::textPixels(int graphHeight)
{
    const int ofProgram = pixelsOf(QGuiApplication::font());
    const double grown = graphHeight / partOfHeight * ofProgram / usualPixels;
    return std::max(leastPixels,
                    int(std::max(grown, std::min<double>(ofProgram, graphHeight / partOfSmall))));
}

QFont GraphFonts::inPixels(QFont font, double pixels)
{
    font.setPixelSize(std::max(leastPixels, int(pixels)));
    return font;
}

double GraphFonts::growth(int graphHeight)
{
    return std::max(1.0, double(textPixels(graphHeight)) / pixelsOf(QGuiApplication::font()));
}

int GraphFonts::pixelsOf(const QFont& font)
{
    return QFontInfo(font).pixelSize();
}

QFont GraphFonts::atMost(QFont font, int pixels)
{
    if (pixelsOf(font) > pixels)
        font.setPixelSize(std::max(leastPixels, pixels));
    return font;
}

QFont GraphFonts::fitted(QFont font, const QString& text, int room)
{
    for (int pixels = pixelsOf(font);
         pixels > leastPixels && QFontMetrics(font).horizontalAdvance(text) > room;)
        font.setPixelSize(--pixels);
    return font;
}
