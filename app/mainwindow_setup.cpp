#include "app/mainwindow.h"

#include "app/sideviews.h"
#include "classroom/multiconnectionsmanager.h"
#include "setup/loggerbasicsetup.h"
#include "setup/setuplogger.h"

void MainWindow::doBasicSetup()
{
    if (basicSetupDlg)
        return;
    mTembrin->sendCommand(0, CMD_GET_TEMBRIN_STATUS);
    const QPointer<loggerBasicSetup> dialog = new loggerBasicSetup(prompt, this);
    basicSetupDlg = dialog;
    dialog->createAll(mTembrin);
    if (!dialog->dontOpenFlag)
        dialog->exec();
    basicSetupDlg = nullptr;
    if (dialog)
        dialog->deleteLater();
}

void MainWindow::doSetup()
{
    openSetup(-1);
}

/// On the firmware of a logger, or with -1 on the first page.
void MainWindow::openSetup(int firmwareOf)
{
    if (advancedSetupDlg)
        return;
    mTembrin->sendCommand(0, CMD_GET_TEMBRIN_STATUS);
    const QPointer<setupLogger> dialog = new setupLogger(prompt, this);
    advancedSetupDlg = dialog;
    dialog->createAll(mTembrin);
    connectSetupDialog(dialog);
    if (firmwareOf >= 0)
        dialog->showBootLoader(firmwareOf);
    dialog->exec();
    advancedSetupDlg = nullptr;
    if (dialog)
        dialog->deleteLater();
}

void MainWindow::connectSetupDialog(setupLogger* dialog)
{
    connect(dialog, &setupLogger::useGraphDesignValues, this, &MainWindow::useGraphDesignValues);
    connect(dialog, &setupLogger::useTableDesignValues, sideViews, &SideViews::setDesign);
    connect(dialog, &setupLogger::useMainDesignValues, this, &MainWindow::useMainDesignValues);
}
