#include "app/mainwindow.h"

#include "app/meterspanel.h"
#include "app/sideviews.h"
#include "classroom/multiconnectionsmanager.h"
#include "graph/plot.h"
#include "instruments/indicator.h"
#include "setup/designvalues.h"

#include <QFontInfo>
#include <QGuiApplication>

namespace {

/// Of toolbar buttons under the mouse and checked: lists write on it in the ink of the ground.
QColor highlightOn(const QColor& ground)
{
    constexpr double part = 0.2;
    return Plot::isDark(ground) ? GraphDesign::mixed(ground, Qt::white, part) : QColor(0xdc, 0xdc, 0xdc);
}

QString rgb(const QColor& color)
{
    return QStringLiteral("rgb(%1,%2,%3)").arg(color.red()).arg(color.green()).arg(color.blue());
}

} // namespace

QColor MainWindow::getAppBackColor()
{
    return DesignValues::appBackground();
}

void MainWindow::setAppBackColor(const QColor& color)
{
    DesignValues::setAppBackground(color);
}

/// Before the graphs are built, which take their colours then.
void MainWindow::getDesignSettings()
{
    DesignValues::load();
}

void MainWindow::useMainDesignValues()
{
    setBackground();
    if (newMetersW)
        newMetersW->useDesignValues();
    // A new sheet takes the canvases back to the colours that they had under the first one.
    useGraphDesignValues();
}

void MainWindow::useGraphDesignValues()
{
    for (int i = -1; i < mTembrin->nMaxTembrins(); ++i) {
        for (Plot* plot : mTembrin->graphsOf(i))
            plot->doUseDesignValues();
    }
    sideViews->setDesign();
}

void MainWindow::setBackground()
{
    setMainWindowStyle();
}

void MainWindow::setMainWindowStyle()
{
    const QString back = rgb(getAppBackColor());
    const QString over = rgb(highlightOn(getAppBackColor()));
    const QString ink = rgb(GraphDesign::inkOn(getAppBackColor()));
    const QString arrow = QStringLiteral("image: url(:/icons/resources/down-arrow%1%2.png);")
                              .arg(Plot::isDark(getAppBackColor()) ? QStringLiteral("-light") : QString(),
                                   is4K() ? QStringLiteral("-2x") : QString());
    // Texts of the status bar are as large as its icons.
    const QString large =
        is4K() ? QStringLiteral(" font-size: %1px;").arg(2 * QFontInfo(QGuiApplication::font()).pixelSize())
               : QString();
    constexpr int besideIcons = 6; // pixels that the bar needs above and below
    const QString tall = QStringLiteral("min-height: %1px;").arg(Indicator::iconHeight() + besideIcons);
    const struct
    {
        const char* selector;
        QString rule;
    } rules[] = {
        {"QMainWindow", QStringLiteral("background: %1;").arg(back)},
        {"QToolBar", QStringLiteral("border: 0px;")},
        {"QStatusBar, QStatusBar QWidget",
         QStringLiteral("background: %1; color: %2;").arg(back, ink) + large},
        {"QStatusBar", tall},
        {"QToolButton", QStringLiteral("margin: 0px;")},
        {"QToolButton:hover, QToolButton:focus, QToolButton:pressed, QToolButton::menu-button:hover",
         QStringLiteral("background-color: %1; border: none;").arg(over)},
        {"QToolButton:checked", QStringLiteral("background-color: %1; border: 1px solid %1;").arg(over)},
        {"QToolBar QComboBox[isOn=\"true\"]",
         QStringLiteral("background-color: %1; border: 1px solid %2;").arg(over, rgb(Qt::gray))},
        {"QToolBar::handle", QStringLiteral("image: none;")},
        // Lists on toolbars only: those of dialogs stand on paper.
        {"QToolBar QComboBox", QStringLiteral("background: %1; border: none;").arg(back)},
        {"QToolBar QComboBox QAbstractItemView",
         QStringLiteral("background: %1; color: %2; selection-color: %2;").arg(back, ink)},
        {"QAbstractItemView::item:selected", QStringLiteral("background-color: %1; border: none;").arg(over)},
        {"QToolBar QComboBox::drop-down", QStringLiteral("border: 0px; padding: 16px;")},
        {"QToolBar QComboBox::down-arrow", arrow + QStringLiteral(" left: -%1px;").arg(iconDim / 4)},
        {"QToolButton::menu-arrow", arrow},
        {"QToolButton::menu-indicator",
         arrow + QStringLiteral(" subcontrol-origin: padding; subcontrol-position: center right;")},
        // The rule for the lists stands before it and would hide where the mouse and the keys are.
        {"QToolBar QComboBox:hover, QToolBar QComboBox:focus", QStringLiteral("background: %1;").arg(over)},
    };
    QString sheet;
    for (const auto& rule : rules)
        sheet += QStringLiteral("%1 { %2 }\n").arg(QLatin1String(rule.selector), rule.rule);
    setStyleSheet(sheet);
}
