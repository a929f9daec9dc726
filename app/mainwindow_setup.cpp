#include "app/mainwindow.h"

#include "classroom/multiconnectionsmanager.h"
#include "protocol/tembrindata.h"
#include "setup/loggerbasicsetup.h"

void MainWindow::doBasicSetup()
{
    if (basicSetupDlg)
        return;
    mTembrin->sendCommand(0, CMD_GET_TEMBRIN_STATUS);
    const QPointer<loggerBasicSetup> dialog = new loggerBasicSetup(prompt, this);
    basicSetupDlg = dialog;
    dialog->createAll(mTembrin);
    if (!dialog->dontOpenFlag) {
        connect(mTembrin->tembrinDataAt(0), &TembrinData::statusReceived, dialog.data(),
                &loggerBasicSetup::updateStatus);
        dialog->exec();
    }
    basicSetupDlg = nullptr;
    if (dialog)
        dialog->deleteLater();
}
