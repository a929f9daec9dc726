#pragma once

#include <QColor>

/// The look of the program that a user can choose: eight colours, two widths of grid lines and, in
/// ColorScale, the palette of the curves. They are shared by all windows, tables and graphs, which read them
/// when they are told that one has changed.
namespace DesignValues {

/// Where a value shows.
enum class Place
{
    Main,
    Graph,
    Table
};

struct Color
{
    const char* key; ///< in the main settings store, as a name such as "#f0f0f0"
    const char* preset;
    Place place;
    QColor (*get)();
    void (*set)(const QColor& color);
};

struct Width
{
    const char* key; ///< in the main settings store, pixels
    double preset;
    double (*get)();
    void (*set)(double width);
};

enum ColorOf
{
    MainBackground,
    GraphBackground,
    ActiveGraph,
    MajorGrid,
    MinorGrid,
    TableTitle,
    TableEven,
    TableOdd,
    ColorCount
};

enum WidthOf
{
    MajorGridWidth,
    MinorGridWidth,
    WidthCount
};

constexpr double leastWidth = 0.1;
constexpr double greatestWidth = 2.0;

const Color& color(int which);
const Width& width(int which);

/// From the settings; what is not there or makes no sense gets its preset.
void load();
void save();
void toPresets();

/// Ground of the main window and its lists.
QColor appBackground();
void setAppBackground(const QColor& color);

} // namespace DesignValues
