#include "app/mainwindow.h"

#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "common/settings.h"
#include "protocol/tembrinprotocol.h"

#include <QPointer>

void MainWindow::doSelectMLog()
{
    const QVector<possibleDevice> devices = tembrin->getPairedDevices() + tembrin->getUSBDevices();
    const QPointer<selectManyLoggers> dialog = new selectManyLoggers(mTembrin, devices, this);
    dialog->exec();
    if (!dialog)
        return;
    dialog->deleteLater();
    if (!dialog->saved)
        return;
    disconnectAll();
    Settings::mainStore().setValue(QLatin1String(Settings::numDefined), dialog->nTembrins);
    setDisplayForNLoggers(dialog->nTembrins);
    tryConnectAll();
}
