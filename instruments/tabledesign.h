#pragma once

#include <QColor>

/// The colours that all tables share. A design overwrites them at the start and while the program runs.
class TableDesign
{
public:
    static QColor getTitleColor() { return titleColor; }
    static void setTitleColor(const QColor& color) { titleColor = color; }
    static QColor getEvenColor() { return evenColor; }
    static void setEvenColor(const QColor& color) { evenColor = color; }
    static QColor getOddColor() { return oddColor; }
    static void setOddColor(const QColor& color) { oddColor = color; }

private:
    inline static QColor titleColor{160, 160, 160};
    inline static QColor evenColor{242, 242, 242};
    inline static QColor oddColor{242, 242, 242};
};
