#pragma once

#include <QTest>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "resources/resources.h"
#include "tests/common/fakeprompt.h"
#include "tests/protocol/loggerbench.h"

/// A class of loggers on fake ports that answer nothing by themselves.
class SetupBench
{
public:
    static constexpr int most = 3;

    explicit SetupBench(int loggers, bool isCelsius = true)
        : store(isCelsius)
    {
        initPellandraResources();
        manager.setPortFactory(ports.factory());
        manager.setDefTembrins(loggers);
        for (int i = 0; i < most; ++i) {
            sets.emplace_back(new ExpData(manager.tembrinAt(i)));
            manager.setDataAt(i, sets.back().get());
        }
        for (int i = 0; i < loggers; ++i) {
            manager.tembrinAt(i)->open();
            port(i).writes.clear(); // the questions of the beginning
        }
    }

    TembrinData& logger(int i) { return *manager.tembrinDataAt(i); }
    FakePort& port(int i) { return *ports.port(name(i)); }
    /// A logger tells its sensors, and its state: idle unless the changes say otherwise.
    void introduce(int i, const QByteArray& state, const char* sensors = sensorListHex)
    {
        port(i).feed(bytes(sensors));
        port(i).feed(state);
        port(i).writes.clear();
    }
    QByteArray written(int i)
    {
        const QByteArray frames = port(i).written();
        port(i).writes.clear();
        return frames;
    }

private:
    /// What the program finds in its settings as it starts.
    struct Store
    {
        explicit Store(bool isCelsius)
        {
            QSettings store = Settings::mainStore();
            store.clear();
            store.setValue(Settings::unitsCelsius, isCelsius);
            for (int i = 0; i < most; ++i)
                store.setValue(Settings::loggerKey(i), name(i));
            store.sync();
        }
    };
    Store store;

public:
    FakePorts ports;
    FakePrompt prompt;
    multiConnectionsManager manager;

private:
    static QString name(int i) { return QStringLiteral("setup%1").arg(i); }

    std::vector<std::unique_ptr<ExpData>> sets;
};

/// The control of this name in a dialog.
template<typename Control> Control* control(const QObject& dialog, const char* name)
{
    return dialog.findChild<Control*>(QLatin1String(name));
}
