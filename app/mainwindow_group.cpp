#include "app/mainwindow.h"

#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "instruments/pairingtool.h"
#include "protocol/tembrinprotocol.h"

#include <QPointer>

void MainWindow::doSelectMLog()
{
    const auto devices = [this] {
        const QVector<possibleDevice> paired = tembrin->getPairedDevices();
        return selectManyLoggers::bySlots(*mTembrin, paired + tembrin->getUSBDevices());
    };
    const QPointer<selectManyLoggers> dialog = new selectManyLoggers(mTembrin, devices(), this);
    connect(dialog, &selectManyLoggers::pairingWanted, dialog, [dialog] {
        if (!PairingTool::open())
            dialog->tellNoPairing();
    });
    tembrin->watchPorts(dialog, [dialog, devices] { dialog->takeDevices(devices()); });
    dialog->exec();
    if (!dialog)
        return;
    dialog->deleteLater();
    if (!dialog->saved)
        return;
    // What groups measured that are no more in it would be on no screen and in no file.
    const QString question =
        tr("Do you want to save experiment and annotations before groups leave the class?");
    bool isAsked = false;
    if (unsavedLoggers() >> dialog->nTembrins != 0 && !settleUnsaved(QString(), question, question, &isAsked))
        return;
    for (int i = dialog->nTembrins; i < mTembrin->nDefTembrins(); ++i) {
        if (mTembrin->dataAt(i)->getXSize() > 0) { // and has no graph any more
            keepPresent();
            break;
        }
    }
    disconnectAll();
    Settings::mainStore().setValue(QLatin1String(Settings::numDefined), dialog->nTembrins);
    setDisplayForNLoggers(dialog->nTembrins);
    tryConnectAll();
}
