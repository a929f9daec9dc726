#pragma once

#include <QTest>

#include "app/mainwindow.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "resources/resources.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakeport.h"

/// The real window with loggers on fake ports and a person who answers boxes.
class ClassBench
{
public:
    explicit ClassBench(int loggers, const QString& firstPort = QStringLiteral("port0"))
    {
        initPellandraResources();
        QSettings store = Settings::mainStore();
        store.clear();
        store.setValue(QLatin1String(Settings::numDefined), loggers);
        for (int i = 0; i < loggers; ++i) {
            store.setValue(Settings::loggerKey(i), i == 0 ? firstPort : name(i));
            store.setValue(Settings::groupKey(i), QStringLiteral("Group %1").arg(QChar('A' + i)));
        }
        store.sync();
        window.reset(new MainWindow(&prompt));
        manager = window->findChild<multiConnectionsManager*>();
        manager->setPortFactory(ports.factory());
        window->resize(1280, 800);
        window->show();
    }

    static QString name(int i) { return QStringLiteral("port%1").arg(i); }
    FakePort* port(int i) const { return ports.port(name(i)); }
    TembrinData* logger(int i) const { return manager->tembrinDataAt(i); }
    ExpData* data(int i) const { return i < 0 ? manager->dataC() : manager->dataAt(i); }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }

    /// A sample arrives, the same value on every channel.
    void sample(int i, short number, double value = 0, int waiting = 0)
    {
        manager->tembrinAt(i)->isConnect = true;
        const QVector<double> values(logger(i)->runChannels().size(), value);
        Q_EMIT logger(i)->onlineReceived(i, number, {values}, waiting);
    }

    FakePorts ports;
    FakePrompt prompt;
    QScopedPointer<MainWindow> window;
    multiConnectionsManager* manager = nullptr;
};
