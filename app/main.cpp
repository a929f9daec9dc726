#include "app/mainwindow.h"
#include "app/startup.h"
#include "common/settings.h"
#include "resources/resources.h"

#include <QApplication>
#include <QScreen>

#include <optional>

int main(int argc, char* argv[])
{
    StartUp::startLog();
    initPellandraResources();
    std::optional<StartUp::WithoutOpenGl> untilShown(std::in_place);
    QApplication application(argc, argv);
    const QString file = StartUp::useArgument(QCoreApplication::arguments());
    StartUp::installTranslations(&application);
    QApplication::setPalette(pellandraPalette());
    application.setStyleSheet(StartUp::styleSheet());

    MainWindow window;
    // Where nobody manages windows this is the size that stays.
    window.setGeometry(QGuiApplication::primaryScreen()->availableGeometry());
    if (window.isPanelMode())
        window.showFullScreen();
    else
        window.showMaximized();
    untilShown.reset();
    if (!file.isEmpty())
        window.setArgumentFile(file);
    Settings::mainStore().setValue(QLatin1String(Settings::vestrelPanel), false);
    return QApplication::exec();
}
