#include "setup/designvalues.h"

#include "common/settings.h"
#include "graph/colorscale.h"
#include "graph/plot.h"
#include "instruments/tabledesign.h"

namespace DesignValues {

namespace {

constexpr const char* colorBlindKey = "design/graph/color_blind_palette"; // bool, false

QColor mainBackground(0xf0, 0xf0, 0xf0);

// clang-format off
constexpr Color colors[ColorCount] = {
    {"design/main/background",      "#f0f0f0", Place::Main,  appBackground, setAppBackground},
    {"design/graph/background",     "#f0f0f0", Place::Graph, Plot::getBackgroundColor, Plot::setBackgroundColor},
    {"design/graph/activeplot",     "#f0f0f0", Place::Graph, Plot::getActivePlotColor, Plot::setActivePlotColor},
    {"design/graph/max_grid/color", "#757575", Place::Graph, Plot::getMajGridColor, Plot::setMajGridColor},
    {"design/graph/min_grid/color", "#d0d0d0", Place::Graph, Plot::getMinGridColor, Plot::setMinGridColor},
    {"design/table/title_color",    "#cbcbcb", Place::Table, TableDesign::getTitleColor, TableDesign::setTitleColor},
    {"design/table/even_color",     "#dcdcdc", Place::Table, TableDesign::getEvenColor, TableDesign::setEvenColor},
    {"design/table/odd_color",      "#f0f0f0", Place::Table, TableDesign::getOddColor, TableDesign::setOddColor},
};

constexpr Width widths[WidthCount] = {
    {"design/graph/max_grid/width", 0.8, Plot::getMajGridW, Plot::setMajGridW},
    {"design/graph/min_grid/width", 0.8, Plot::getMinGridW, Plot::setMinGridW},
};
// clang-format on

double storedWidth(const QSettings& store, const Width& width)
{
    bool isNumber = false;
    const double stored = store.value(QLatin1String(width.key)).toDouble(&isNumber);
    return isNumber && stored >= leastWidth && stored <= greatestWidth ? stored : width.preset;
}

} // namespace

const Color& color(int which)
{
    return colors[which];
}

const Width& width(int which)
{
    return widths[which];
}

void load()
{
    const QSettings store = Settings::mainStore();
    ColorScale::setColorBlindPalette(store.value(QLatin1String(colorBlindKey), false).toBool());
    // Presets first: what stays at its own goes with a ground that is set after it.
    for (const Color& color : colors)
        color.set(QColor(QLatin1String(color.preset)));
    for (const Color& color : colors) {
        const QColor stored(store.value(QLatin1String(color.key)).toString());
        if (stored.isValid() && stored != QColor(QLatin1String(color.preset)))
            color.set(stored);
    }
    for (const Width& width : widths)
        width.set(storedWidth(store, width));
}

void save()
{
    QSettings store = Settings::mainStore();
    for (const Color& color : colors)
        store.setValue(QLatin1String(color.key), color.get().name());
    for (const Width& width : widths)
        store.setValue(QLatin1String(width.key), width.get());
    store.setValue(QLatin1String(colorBlindKey), ColorScale::isColorBlindPalette());
}

void toPresets()
{
    for (const Color& color : colors)
        color.set(QColor(QLatin1String(color.preset)));
    for (const Width& width : widths)
        width.set(width.preset);
    ColorScale::setColorBlindPalette(false);
}

QColor appBackground()
{
    return mainBackground;
}

void setAppBackground(const QColor& color)
{
    mainBackground = color;
    Plot::setSurroundings(color);
}

} // namespace DesignValues
