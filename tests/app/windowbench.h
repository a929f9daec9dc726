#pragma once

#include <QAction>
#include <QTest>

#include "app/mainwindow.h"
#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "resources/resources.h"
#include "tests/classroom/virtualbench.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

/// The real window with virtual loggers and a person who answers boxes. The loggers connect by themselves, as
/// soon as the window has been there for a while; connectAll() waits for them.
class WindowBench : public VirtualBench
{
public:
    explicit WindowBench(const QVector<LoggerIdentity>& loggers, const QVector<const char*>& switchedOff = {})
        : VirtualBench(loggers)
    {
        for (const char* key : switchedOff)
            Settings::mainStore().setValue(QLatin1String(key), false);
        initPellandraResources();
        window.reset(new MainWindow(&prompt));
        manager = window->findChild<multiConnectionsManager*>();
        manager->setPortFactory(factory());
        manager->setPacing(60, 5);
        window->resize(1280, 800);
        window->show();
        manager->connector().connectAll(); // for which a person would wait half a second
    }

    TembrinData* state(int i) const { return manager->tembrinDataAt(i); }
    ExpData* data(int i) const { return i < 0 ? manager->dataC() : manager->dataAt(i); }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    bool isReady(int i) const { return state(i)->isLoggerRecognized() || state(i)->isVorta(); }

    /// Waits until all loggers but those that are away are known.
    void connectAll(const QVector<int>& away = {})
    {
        for (int i = 0; i < count(); ++i) {
            if (!away.contains(i))
                QTRY_VERIFY(isReady(i));
        }
    }

    FakePrompt prompt;
    QScopedPointer<MainWindow> window;
    multiConnectionsManager* manager = nullptr;
};
