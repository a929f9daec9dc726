#pragma once

#include <QColor>
#include <QFont>
#include <QString>

class QPainter;
class QwtPlot;

/// The colours that all graphs share, and what can be read on them.
struct GraphDesign
{
    static inline QColor majGrid{52, 52, 52};
    static inline QColor minGrid{233, 233, 233};
    static inline QColor surroundings{0xf0, 0xf0, 0xf0}; ///< the window's ground
    static inline QColor background{255, 255, 255};
    static inline QColor backgroundActive{200, 200, 200};
    static inline double majGridWidth = 1;
    static inline double minGridWidth = 1;

    /// White is easier to read on it than black.
    static bool isDark(const QColor& ground);
    static QColor inkOn(const QColor& ground);
    /// The colour, or a darker or lighter one that can be read on the ground.
    static QColor readableOn(const QColor& color, const QColor& ground);
    /// For what is switched off: as near to the ground as can still be read.
    static QColor faintOn(const QColor& ground);
    /// Of boxes with texts, half transparent: curves are seen through it, and the ink of the ground is read
    /// on it.
    static QColor boxOn(const QColor& ground);
    /// What a painter paints a graph's items on: the canvas, or white paper.
    static QColor groundOf(const QPainter* painter, const QwtPlot* plot);
    static QColor mixed(const QColor& from, const QColor& to, double part);
    static bool isOnScreen(const QPainter* painter);

    // Unless somebody chose others, these go with the ground.

    static QColor activeFor(const QColor& ground);
    static QColor majGridFor(const QColor& ground);
    static QColor minGridFor(const QColor& ground);
    /// Another ground; the active one and the grid follow as far as they went with the last.
    static void setBackground(const QColor& ground);
};

/// Fonts that fit into the room there is.
namespace GraphFonts {

int pixelsOf(const QFont& font);
/// The height of texts on a graph: a part of the graph's, so that they are one size in cells of one size and
/// can be read from the back of a room on a large one, and more with larger texts of the program.
int textPixels(int graphHeight);
QFont inPixels(QFont font, double pixels);
/// Of a graph that is low for its texts, where what stands around the canvas goes together.
bool isLow(int graphHeight);
/// By how much pens and marks are larger than on a small graph.
double growth(int graphHeight);
/// The font, or a smaller one of at most so many pixels.
QFont atMost(QFont font, int pixels);
/// The font, or the next smaller one whose text has room.
QFont fitted(QFont font, const QString& text, int room);
/// In lines of at most so many pixels.
QString wrapped(const QString& text, const QFont& font, double room);

} // namespace GraphFonts
