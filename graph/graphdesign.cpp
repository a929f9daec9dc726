#include "graph/graphdesign.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPaintDevice>
#include <QPainter>
#include <QRegularExpression>
#include <QStringList>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

#include <qwt_plot.h>

#include "graph/contrast.h"

namespace {

constexpr int leastPixels = 8;
constexpr double usualPixels = 13;  // of a program's texts
constexpr double partOfHeight = 45; // a text is this part of a large graph
constexpr double partOfSmall = 26;  // and at most this of a small one
constexpr double majGridPart = 0.6; // of the way from the ground to what is read on it
constexpr double minGridPart = 0.16;
constexpr double activePart = 0.06;

const QColor toldMajGrid(0x75, 0x75, 0x75);

bool isLight(const QColor& ground)
{
    return !Contrast::isDark(ground) && Contrast::between(ground, toldMajGrid) >= Contrast::least;
}

/// The first shade on the way from one colour to another that has the contrast to the ground.
QColor shadeWith(double contrast, const QColor& from, const QColor& to, const QColor& ground)
{
    constexpr int steps = 20;
    for (int i = 0; i < steps; ++i) {
        QColor shade = GraphDesign::mixed(from, to, double(i) / steps);
        if (Contrast::between(shade, ground) >= contrast)
            return shade;
    }
    return to;
}

/// A number stays with its unit.
QStringList wordsOf(const QString& paragraph)
{
    static const QRegularExpression between(
        QStringLiteral("(?<![0-9\\x{2070}-\\x{2079}]) | (?![^0-9+=\\s-])"));
    return paragraph.split(between, Qt::SkipEmptyParts);
}

QStringList brokenAnywhere(const QString& word, const QFont& font, double room)
{
    QTextOption anywhere;
    anywhere.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(word, font);
    layout.setTextOption(anywhere);
    layout.beginLayout();
    QStringList pieces;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(room);
        pieces.append(word.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    return pieces;
}

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
    return shadeWith(wanted, color, inkOn(ground), ground);
}

QColor GraphDesign::mixed(const QColor& from, const QColor& to, double part)
{
    const auto between = [part](double a, double b) { return a + part * (b - a); };
    return QColor::fromRgbF(between(from.redF(), to.redF()), between(from.greenF(), to.greenF()),
                            between(from.blueF(), to.blueF()));
}

QColor GraphDesign::faintOn(const QColor& ground)
{
    constexpr double wanted = 3.6;
    return shadeWith(wanted, ground, inkOn(ground), ground);
}

QColor GraphDesign::boxOn(const QColor& ground)
{
    constexpr int alpha = 190;
    return isDark(ground) ? QColor(16, 24, 32, alpha) : QColor(247, 247, 247, alpha);
}

bool GraphDesign::isOnScreen(const QPainter* painter)
{
    return painter->device()->devType() == QInternal::Widget &&
           painter->worldTransform().type() <= QTransform::TxTranslate;
}

QColor GraphDesign::groundOf(const QPainter* painter, const QwtPlot* plot)
{
    return plot && isOnScreen(painter) ? plot->canvasBackground().color() : QColor(Qt::white);
}

// On a light ground the told colours; the chosen graph has a frame.
QColor GraphDesign::activeFor(const QColor& ground)
{
    return isLight(ground) ? QColor(0xf0, 0xf0, 0xf0) : mixed(ground, inkOn(ground), activePart);
}

QColor GraphDesign::majGridFor(const QColor& ground)
{
    return isLight(ground) ? toldMajGrid : mixed(ground, inkOn(ground), majGridPart);
}

QColor GraphDesign::minGridFor(const QColor& ground)
{
    return isLight(ground) ? QColor(0xd0, 0xd0, 0xd0) : mixed(ground, inkOn(ground), minGridPart);
}

void GraphDesign::setBackground(const QColor& ground)
{
    const QColor before = background;
    background = ground;
    if (backgroundActive == activeFor(before))
        backgroundActive = activeFor(ground);
    if (majGrid == majGridFor(before))
        majGrid = majGridFor(ground);
    if (minGrid == minGridFor(before))
        minGrid = minGridFor(ground);
}

int GraphFonts::textPixels(int graphHeight)
{
    const int ofProgram = pixelsOf(QGuiApplication::font());
    const double wanted = std::max(1.0, ofProgram / usualPixels);
    const double grown = graphHeight / partOfHeight * ofProgram / usualPixels;
    // Who reads large texts gets them in a small graph too, as far as there is room.
    const double small = graphHeight / partOfSmall * std::sqrt(wanted);
    return std::max(leastPixels, int(std::max(grown, std::min<double>(ofProgram, small))));
}

QFont GraphFonts::inPixels(QFont font, double pixels)
{
    font.setPixelSize(std::max(leastPixels, int(pixels)));
    return font;
}

bool GraphFonts::isLow(int graphHeight)
{
    constexpr int leastTexts = 30;
    return graphHeight < leastTexts * textPixels(graphHeight);
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

QString GraphFonts::wrapped(const QString& text, const QFont& font, double room)
{
    const QFontMetricsF metrics(font);
    QStringList lines;
    for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
        QStringList held = {QString()};
        for (const QString& word : wordsOf(paragraph)) {
            const QString longer = held.last().isEmpty() ? word : held.last() + QLatin1Char(' ') + word;
            if (metrics.horizontalAdvance(longer) <= room) {
                held.last() = longer;
                continue;
            }
            if (held.last().isEmpty())
                held.removeLast();
            held += brokenAnywhere(word, font, room);
        }
        lines += held;
    }
    return lines.join(QLatin1Char('\n'));
}
