#pragma once

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "app/mainwindow.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/classsize.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "protocol/tembrindata.h"
#include "resources/resources.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

/// The real window on virtual loggers, which record what they sent.
class VirtualClassBench : public QObject
{
public:
    static inline QString virtualLoggers; ///< the program

    /// The first argument is the program of the virtual loggers, the others are the test's.
    template<class Test> static int exec(int argc, char** argv)
    {
        virtualLoggers = QString::fromLocal8Bit(argv[1]);
        argv[1] = argv[0];
        QApplication application(--argc, ++argv);
        initPellandraResources();
        Test test;
        return QTest::qExec(&test, argc, argv);
    }

protected:
    void setUp()
    {
        guard.reset(new WarningGuard);
        ownState.reset(new OwnState);
        folder.reset(new QTemporaryDir);
        QVERIFY(folder->isValid());
    }

    void tearDown()
    {
        window.reset();
        loggers.kill();
        loggers.waitForFinished();
        const QStringList failures = guard->failures();
        guard.reset();
        QCOMPARE(failures, QStringList());
    }

    void start(int count, const QStringList& options)
    {
        recordFile = folder->filePath(QStringLiteral("record"));
        const QString links = folder->filePath(QStringLiteral("loggers"));
        loggers.start(virtualLoggers,
                      QStringList{QStringLiteral("--count"), QString::number(count),
                                  QStringLiteral("--directory"), links, QStringLiteral("--rate"),
                                  QStringLiteral("100/Sec"), QStringLiteral("--record"), recordFile} +
                          options);
        ports.clear();
        isReady = false;
        QTRY_VERIFY(readPorts());
        QCOMPARE(ports.size(), count);

        QSettings store = Settings::mainStore();
        store.clear();
        store.setValue(QLatin1String(Settings::numDefined), count);
        for (int i = 0; i < count; ++i) {
            store.setValue(Settings::loggerKey(i), port(i));
            store.setValue(Settings::groupKey(i), QStringLiteral("Group %1").arg(i + 1));
        }
        store.sync();
        prompt = FakePrompt();
        prepare();
        makeWindow();
    }

    /// What happens before the window is there.
    virtual void prepare() {}

    void makeWindow()
    {
        window.reset(new MainWindow(&prompt));
        manager = window->findChild<multiConnectionsManager*>();
        window->resize(1280, 800);
        window->show();
    }

    bool readPorts()
    {
        while (!isReady && loggers.canReadLine()) {
            const QList<QByteArray> words = loggers.readLine().trimmed().split(' ');
            isReady = words.first() == "ready";
            if (words.size() > 1)
                ports.append(QString::fromLocal8Bit(words.value(1)));
        }
        return isReady;
    }

    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    void tell(const QByteArray& command) { loggers.write(command + '\n'); }
    QString port(int i) const { return ports.value(i); }
    ExpData* data(int i) const { return manager->dataAt(i); }
    ExpData* classData() const { return manager->dataC(); }

    void connectAll(int count)
    {
        for (int i = 0; i < count; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(i)->isLoggerRecognized(), 8000);
    }

    void run(int count, int samples)
    {
        action("runAct")->trigger();
        for (int i = 0; i < count; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(data(i)->getXSize() >= samples, 8000);
    }

    void stop(int count)
    {
        action("stopAct")->trigger();
        for (int i = 0; i < count; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(data(i)->finalData, 8000);
    }

    /// Opens a dialog and lets `hand` work in it; then it is closed.
    void inDialog(const char* name, const std::function<void(QWidget*)>& hand)
    {
        bool isDone = false;
        QTimer::singleShot(0, this, [&] {
            QTRY_VERIFY(QApplication::activeModalWidget());
            QWidget* dialog = QApplication::activeModalWidget();
            hand(dialog);
            isDone = true;
            dialog->close();
        });
        action(name)->trigger();
        QVERIFY(isDone);
    }

    void readRecord()
    {
        tell("quit");
        QVERIFY(loggers.waitForFinished());
        for (auto& samples : record)
            samples.clear();
        QFile file(recordFile);
        QVERIFY(file.open(QIODevice::ReadOnly));
        for (const QByteArray& line : file.readAll().split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (words.size() == 5)
                record[words[0].toInt() - 1][words[2].toInt()] = QByteArray::fromHex(words[4]);
        }
    }

    int samplesSent(int i) const { return record[i].size(); }

    /// What the bytes of a sample say, read sensor by sensor without the program's decoder.
    QVector<double> values(int i, const QByteArray& bytes) const
    {
        int at = 0;
        return values(i, manager->tembrinDataAt(i)->reported().mask, bytes, &at);
    }
    /// The same of the sample at `at`, which moves on to the next one.
    QVector<double> values(int i, int mask, const QByteArray& bytes, int* at) const
    {
        QVector<double> row;
        const SensorList& list = manager->tembrinDataAt(i)->getSensors();
        for (int place = 0; place < list.size(); ++place) {
            if (!(mask >> place & 1))
                continue;
            const SensorKind kind(list.at(place)->ID);
            const QByteArray block = bytes.mid(*at, kind.numBytes()).leftJustified(kind.numBytes());
            QVector<double> decoded(kind.valueCount());
            kind.decode(reinterpret_cast<const unsigned char*>(block.constData()), decoded.data());
            row += decoded;
            *at += kind.numBytes();
        }
        return row;
    }

    /// The stored samples of a logger that are not what it sent under their number. What it never sent came
    /// from its memory.
    QStringList wrongRows(int i) const
    {
        QStringList wrong;
        const ExpData* set = data(i);
        for (int k = 0; k < set->getXSize(); ++k) {
            const int number = qRound(set->getXAt(k) / set->dt);
            if (!record[i].contains(number))
                continue;
            QVector<double> stored;
            for (int channel = 0; channel < set->getNSens(); ++channel)
                stored.append(set->getYNoConvAt(channel, k));
            if (stored != values(i, record[i].value(number)))
                wrong.append(QStringLiteral("logger %1 sample %2").arg(i + 1).arg(number));
        }
        return wrong;
    }

    QProcess loggers;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<WarningGuard> guard;
    QScopedPointer<OwnState> ownState;
    FakePrompt prompt;
    QScopedPointer<MainWindow> window;
    multiConnectionsManager* manager = nullptr;
    QStringList ports;
    bool isReady = false;
    QString recordFile;
    QHash<int, QByteArray> record[mostLoggers]; ///< bytes by sample number
};
