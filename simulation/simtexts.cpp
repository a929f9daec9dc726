#include "simulation/simtexts.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

constexpr int allPages = -1;

struct Row
{
    int page;
    const char* name;
    const char* text;
};

#define N_(text) QT_TRANSLATE_NOOP("SimTexts", text)
constexpr Row rows[] = {
    {allPages, "pause", N_("Pause")},
    {allPages, "go", N_("Continue")},
    {allPages, "reset", N_("Restart")},
    {allPages, "keys", N_("Space: pause · R: restart · Tab and arrows: controls")},
    {allPages, "temperature", N_("Temperature")},
    {0, "title", N_("Volume and pressure of a gas")},
    {0, "pressure", N_("Pressure")},
    {0, "volume", N_("Volume")},
    {0, "measured", N_("measured by pushes on the walls")},
    {1, "title", N_("Pressure equilibrium of two vessels")},
    {1, "valve", N_("Valve open")},
    {1, "expected", N_("Expected")},
    {2, "title", N_("Molecules of a liquid")},
    {2, "energy", N_("Energy of a molecule")},
    {2, "bath", N_("Heat bath")},
    {2, "kinetic", N_("Energy of motion")},
    {2, "held", N_("Energy of attraction")},
    {2, "total", N_("Total energy")},
    {3, "title", N_("Diffusion of a drop")},
    {3, "time", N_("Time")},
    {3, "temperature", N_("Temperature of the water")},
    {3, "concentration", N_("Concentration [1/mm]")},
    {4, "title", N_("Hydrogen bonds of water")},
    {4, "bonds", N_("Hydrogen bonds of a molecule")},
    {4, "bath", N_("Heat bath")},
};
#undef N_

} // namespace

QJsonObject SimTexts::ofPage(int index)
{
    QJsonObject texts;
    for (const Row& row : rows) {
        if (row.page == allPages || row.page == index)
            texts.insert(QLatin1String(row.name), QCoreApplication::translate("SimTexts", row.text));
    }
    texts.insert(QStringLiteral("decimal"), QString(QLocale().decimalPoint()));
    return texts;
}
