#pragma once

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
#include "sensors/sensorkind.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakeport.h"
#include "tests/protocol/loggerbench.h"

/// The real window with loggers on fake ports and a person who answers boxes.
class ClassBench
{
public:
    explicit ClassBench(int loggers, const QString& firstPort = QStringLiteral("port0"),
                        const QVector<const char*>& switchedOff = {})
    {
        initPellandraResources();
        QSettings store = Settings::mainStore();
        store.clear();
        store.setValue(QLatin1String(Settings::numDefined), loggers);
        for (int i = 0; i < loggers; ++i) {
            store.setValue(Settings::loggerKey(i), i == 0 ? firstPort : name(i));
            store.setValue(Settings::groupKey(i), QStringLiteral("Group %1").arg(QChar('A' + i)));
        }
        for (const char* key : switchedOff)
            store.setValue(QLatin1String(key), false);
        store.sync();
        window.reset(new MainWindow(&prompt));
        manager = window->findChild<multiConnectionsManager*>();
        manager->setPortFactory(ports.factory());
        window->resize(1400, 800); // the toolbars in one row
        window->show();
    }

    static QString name(int i) { return QStringLiteral("port%1").arg(i); }
    FakePort* port(int i) const { return ports.port(name(i)); }
    TembrinData* logger(int i) const { return manager->tembrinDataAt(i); }
    ExpData* data(int i) const { return i < 0 ? manager->dataC() : manager->dataAt(i); }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }

    /// A logger with two sensors is connected, set to a rate by its code, and says what it is.
    void meet(int i, int rateCode = 2)
    {
        manager->connector().connectLogger(i);
        QTRY_VERIFY(port(i) && !port(i)->writes.isEmpty());
        QByteArray sensors = bytes("2E6982").append(SENSOR_HUMIDITY).append(SENSOR_TURBIDITY);
        port(i)->feed(summed(sensors.leftJustified(20, '\0')));
        tell(i, {{7, 0}, {9, 0}, {10, 3}, {11, rateCode}});
        QVERIFY(logger(i)->isLoggerRecognized());
    }
    /// A status arrives; the changes are bytes of it by their place.
    void tell(int i, std::initializer_list<std::pair<int, int>> changes) { port(i)->feed(status(changes)); }
    void tellEnd(int i) { tell(i, {{3, 0x33}, {7, 0}, {9, 0}, {10, 3}, {11, 2}}); }

    /// A sample arrives, about the same value on both channels.
    void sample(int i, short number, double value = 0)
    {
        if (!logger(i)->isLoggerRecognized())
            meet(i);
        QByteArray packet = bytes("2E6984 0D 0003").append(char(number >> 8)).append(char(number));
        for (const int id : {SENSOR_HUMIDITY, SENSOR_TURBIDITY}) {
            const int word = qRound(value / SensorKind(id).convert(1));
            packet.append(char(word >> 8)).append(char(word));
        }
        port(i)->feed(summed(packet));
    }

    FakePorts ports;
    FakePrompt prompt;
    QScopedPointer<MainWindow> window;
    multiConnectionsManager* manager = nullptr;
};
