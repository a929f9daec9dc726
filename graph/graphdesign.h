#pragma once

#include <QColor>
#include <QFont>
#include <QString>

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
};

/// Fonts that fit into the room there is.
namespace GraphFonts {

int pixelsOf(const QFont& font);
/// The font, or a smaller one of at most so many pixels.
QFont atMost(QFont font, int pixels);
/// The font, or the next smaller one whose text has room.
QFont fitted(QFont font, const QString& text, int room);

} // namespace GraphFonts
