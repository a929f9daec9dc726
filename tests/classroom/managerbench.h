#pragma once

#include <QTest>

#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/classroom/virtualbench.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

/// Virtual loggers and the manager of their sessions, without a window.
class ManagerBench : public VirtualBench
{
public:
    explicit ManagerBench(const QVector<LoggerIdentity>& loggers)
        : VirtualBench(loggers)
    {
        manager.setPortFactory(factory());
        manager.setDefTembrins(count());
        manager.setPacing(60, 5);
        for (int i = 0; i < multiConnectionsManager::nMaxTembrins(); ++i) {
            sets.emplace_back(new ExpData(manager.tembrinAt(i)));
            manager.setDataAt(i, sets.back().get());
        }
        manager.setDataC(&classSet);
    }

    TembrinProtocol* session(int i) { return manager.tembrinAt(i); }
    TembrinData* state(int i) { return manager.tembrinDataAt(i); }
    ExpData* data(int i) { return i < 0 ? &classSet : manager.dataAt(i); }

    /// Opens the port and asks who is there, as a connected program does.
    void open(int i) { manager.connector().connectLogger(i); }
    bool isReady(int i) { return state(i)->isLoggerRecognized() || state(i)->isVorta(); }
    /// Opens all and waits until each is known.
    void openAll()
    {
        for (int i = 0; i < count(); ++i)
            open(i);
        for (int i = 0; i < count(); ++i)
            QTRY_VERIFY(isReady(i));
        forgetHeard();
    }

    FakePrompt prompt;
    ExpData classSet;
    std::vector<std::unique_ptr<ExpData>> sets;
    multiConnectionsManager manager;
};
