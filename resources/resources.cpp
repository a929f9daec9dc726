#include "resources/resources.h"

#include <QColor>

void initPellandraResources()
{
    Q_INIT_RESOURCE(pellandra);
}

QPalette pellandraPalette()
{
    struct Role
    {
        QPalette::ColorRole role;
        QRgb colour;
    };
    static constexpr Role roles[] = {
        {QPalette::Window, 0xfff0f0f0},      {QPalette::WindowText, 0xff1b2733},
        {QPalette::Base, 0xffffffff},        {QPalette::AlternateBase, 0xfff4f6f8},
        {QPalette::Text, 0xff1b2733},        {QPalette::PlaceholderText, 0xff6a7682},
        {QPalette::Button, 0xfff0f0f0},      {QPalette::ButtonText, 0xff1b2733},
        {QPalette::BrightText, 0xffffffff},  {QPalette::Light, 0xffffffff},
        {QPalette::Midlight, 0xfff7f8f9},    {QPalette::Mid, 0xffb4bcc4},
        {QPalette::Dark, 0xff8b959f},        {QPalette::Shadow, 0xff4a5b6c},
        {QPalette::Highlight, 0xff1f6fc4},   {QPalette::HighlightedText, 0xffffffff},
        {QPalette::Link, 0xff1a5fa8},        {QPalette::LinkVisited, 0xff7a3fb5},
        {QPalette::ToolTipBase, 0xff27323d}, {QPalette::ToolTipText, 0xffffffff},
    };
    static constexpr Role disabled[] = {
        {QPalette::WindowText, 0xff7b858f},      {QPalette::Text, 0xff7b858f},
        {QPalette::ButtonText, 0xff7b858f},      {QPalette::Highlight, 0xffcdd3d9},
        {QPalette::HighlightedText, 0xff4a5b6c},
    };

    QPalette palette;
    for (const Role& row : roles)
        palette.setColor(QPalette::All, row.role, QColor(row.colour));
    for (const Role& row : disabled)
        palette.setColor(QPalette::Disabled, row.role, QColor(row.colour));
    return palette;
}
