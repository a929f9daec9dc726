#include "app/mainwindow.h"
#include "app/startup.h"
#include "common/settings.h"
#include "resources/resources.h"

#include <QApplication>
#include <QScreen>

int main(int argc, char* argv[])
{
    StartUp::startLog();
    initPellandraResources();
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
    if (!file.isEmpty())
        window.setArgumentFile(file);
    Settings::mainStore().setValue(QLatin1String(Settings::vestrelPanel), false);
    return QApplication::exec();
}
