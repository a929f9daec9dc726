#include "graph/graphdesign.h"

#include <QFontInfo>
#include <QFontMetrics>

#include <algorithm>

namespace {

constexpr int leastPixels = 8;

} // namespace

bool GraphDesign::isDark(const QColor& ground)
{
    constexpr int evenContrast = 118; // to black and to white
    return qGray(ground.rgb()) < evenContrast;
}

QColor GraphDesign::inkOn(const QColor& ground)
{
    return isDark(ground) ? QColor(0xf4, 0xf6, 0xf8) : QColor(0x1b, 0x27, 0x33);
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
