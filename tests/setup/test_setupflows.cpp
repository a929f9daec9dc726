#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>

#include "resources/resources.h"
#include "setup/loggerbasicsetup.h"
#include "setup/setuplogger.h"
#include "tests/classroom/managerbench.h"
#include "virtual/wire.h"

/// The dialogs on loggers that behave as real ones: whatever happens in the middle, after Exit every logger
/// has what the dialog showed.
class TestSetupFlows : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override { initPellandraResources(); }
    void finish() override
    {
        setup.reset();
        configuration.reset();
        bench.reset();
    }

private Q_SLOTS:
    void theClassGetsWhatTheDialogShows_data()
    {
        columns<QString>({"event"});
        for (const char* event : {"nothing", "key 0", "key 1", "slow 0", "slow 2", "mute 0", "mute 1",
                                  "back 0", "back 1", "samples 0", "ask all"})
            row(event, QString(event));
    }

    void theClassGetsWhatTheDialogShows()
    {
        QFETCH(QString, event);
        connectClass({"Birch", "Birch", "Birch"});
        openSetup();
        box(0)->click();
        rate()->setCurrentText(QStringLiteral("100/Sec"));
        happen(event);
        const bool isOn = box(3)->isChecked();
        box(3)->click();
        QVERIFY(box(3)->isChecked() != isOn);
        happen(event);
        QCOMPARE(rate()->currentText(), QStringLiteral("100/Sec"));
        int mask = 0;
        for (int i = 0; box(i); ++i)
            mask |= box(i)->isChecked() ? 1 << i : 0;
        const int samples = find<QComboBox>("comboSamples")->currentIndex();
        setup->close();
        if (event != QLatin1String("key 0")) // which would be a change of what it was just told
            happen(event);
        for (int i = 0; i < 3; ++i) {
            QTRY_COMPARE(int(bench->logger(i).identity().mask), mask);
            QTRY_COMPARE(bench->logger(i).identity().rate, TestSetupFlows::perSec100);
            QTRY_COMPARE(bench->logger(i).identity().samplesIndex, samples);
        }
    }

    void aSensorInASocketGoesToTheSameSocketOfAll()
    {
        connectClass({"Heath", "Heath", "Fjord"});
        bench->plug(1, 1, QUELLMARK_CURRENT);
        QTRY_COMPARE(bench->state(1)->getExtSensID2(), int(QUELLMARK_CURRENT));
        openSetup();
        const int socket = 4; // in the list of the first
        if (!box(socket)->isChecked())
            box(socket)->click();
        find<QComboBox>("socketList1")->setCurrentIndex(VERNIER_PH - VERNIER_FIRST);
        find<QComboBox>("socketList2")->setCurrentIndex(VERNIER_FORCE10 - VERNIER_FIRST);
        setup->close();
        const int ph = VERNIER_PH - VERNIER_CODE;
        const int places[] = {4, 4, 6};
        for (int i = 0; i < 3; ++i) {
            QTRY_COMPARE(bench->setup(i).sockets[0], ph);
            QVERIFY(bench->setup(i).mask >> places[i] & 1);
            QTRY_COMPARE(bench->state(i)->getSensors()[places[i]]->ID, int(VERNIER_PH));
        }
        QCOMPARE(bench->setup(0).sockets[1], VERNIER_FORCE10 - VERNIER_CODE);
        QCOMPARE(bench->setup(1).sockets[1], int(QUELLMARK_CURRENT)); // names itself
        QCOMPARE(bench->setup(2).sockets[1], 0);
    }

    void aPulseSensorServesAsGateWhereverItIs()
    {
        connectClass({"Heath", "Heath"});
        bench->plug(0, 1, QUELLMARK_HEARTRATE_WAVE);
        bench->plug(1, 0, QUELLMARK_HEARTRATE_WAVE);
        QTRY_VERIFY(bench->state(0)->hasPhotogateCompatibleSensor() &&
                    bench->state(1)->hasPhotogateCompatibleSensor());
        openSetup();
        auto* gate = find<QGroupBox>("photogateGroupBox");
        const int voltage = VERNIER_VOLTAGE - VERNIER_CODE;
        for (const int id : {QUELLMARK_PHOTOGATE_HEART, QUELLMARK_HEARTRATE_WAVE}) {
            QTest::keyClick(gate, Qt::Key_Space);
            QTRY_COMPARE(bench->setup(0).sockets[1], id);
            QVERIFY(bench->setup(0).sockets[0] == 0 || bench->setup(0).sockets[0] == voltage);
        }
        QTest::keyClick(gate, Qt::Key_Space);
        setup->close();
        QTRY_COMPARE(bench->setup(1).sockets[0], int(QUELLMARK_PHOTOGATE_HEART));
        QVERIFY(bench->setup(1).sockets[1] == 0 || bench->setup(1).sockets[1] == voltage);
    }

    void aLoggerThatIsAwayKeepsThePlan_data()
    {
        columns<bool>({"wasThere"});
        row("lost in the lesson", true);
        row("never there, and of another model than was thought", false);
    }

    void aLoggerThatIsAwayKeepsThePlan()
    {
        QFETCH(bool, wasThere);
        connectClass({"Birch", "Fjord"}, wasThere ? 2 : 1);
        if (wasThere)
            bench->pull(1);
        QTRY_VERIFY(!bench->manager.isTembrinConnect(1));
        openSetup();
        for (int i = 0; box(i); ++i) {
            if (box(i)->isChecked() != box(i)->text().startsWith(QLatin1String("pH")))
                box(i)->click();
        }
        rate()->setCurrentText(QStringLiteral("100/Sec"));
        setup->close();
        bench->putBack(1);
        bench->open(1);
        QTRY_VERIFY(bench->isReady(1));
        bench->manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        QTRY_COMPARE(bench->logger(1).identity().rate, perSec100);
        QCOMPARE(int(bench->logger(1).identity().mask), 1 << 2); // the pH sensor in its own list
    }

    void theClassIsConfiguredAsTheDialogShows_data()
    {
        columns<QString>({"event"});
        for (const char* event : {"nothing", "key 0", "key 1", "slow 0", "mute 1", "back 2", "ask all"})
            row(event, QString(event));
    }

    void theClassIsConfiguredAsTheDialogShows()
    {
        QFETCH(QString, event);
        connectClass({"Birch", "Fjord", "Birch"});
        configuration.reset(new setupLogger(&bench->prompt));
        configuration->createAll(&bench->manager);
        configuration->show();
        auto* sound = configuration->findChild<QCheckBox*>(QStringLiteral("boxSound"));
        const bool isOn = sound->isChecked();
        sound->click();
        happen(event);
        configuration->findChild<QComboBox*>(QStringLiteral("comboLanguage"))->setCurrentIndex(2);
        happen(event);
        QVERIFY(sound->isChecked() != isOn);
        configuration->close();
        happen(event);
        for (int i = 0; i < 3; ++i) {
            QTRY_COMPARE(bench->configuration(i).language, 2);
            QTRY_COMPARE(bool(bench->configuration(i).flags & 1), !isOn);
            QTRY_VERIFY(bench->state(i)->reported().sound != isOn);
        }
    }

private:
    static constexpr int perSec100 = 5;

    void connectClass(std::initializer_list<const char*> models, int present = 8)
    {
        QVector<LoggerIdentity> loggers;
        for (const char* model : models)
            loggers.append(VirtualBench::identity(model, "10/Sec", 100));
        bench.reset(new ManagerBench(loggers));
        if (present >= bench->count())
            bench->openAll();
        for (int i = 0; i < present && present < bench->count(); ++i) {
            bench->open(i);
            QTRY_VERIFY(bench->isReady(i));
        }
    }

    void openSetup()
    {
        setup.reset(new loggerBasicSetup(&bench->prompt));
        setup->createAll(&bench->manager);
        QVERIFY(!setup->dontOpenFlag);
        setup->show();
    }

    /// "key 1" and so on: something in the middle, and its consequences as far as they come at once.
    void happen(const QString& event)
    {
        const QString what = event.section(' ', 0, 0);
        const int i = event.section(' ', 1).toInt();
        if (what == QLatin1String("key"))
            bench->chooseRate(i, "1/Sec");
        else if (what == QLatin1String("samples"))
            bench->act(i, [](VirtualLogger& logger, qint64 now) { return logger.setSamplesIndex(0, now); });
        else if (what == QLatin1String("slow"))
            bench->delay(i, 30);
        else if (what == QLatin1String("mute"))
            bench->dropAnswers(i, 1);
        else if (what == QLatin1String("back"))
            comeBack(i);
        else if (what == QLatin1String("ask"))
            for (int each = 0; each < bench->count(); ++each)
                bench->manager.sendCommand(each, CMD_GET_TEMBRIN_STATUS);
        QCoreApplication::sendPostedEvents();
        QTest::qWait(0);
    }

    void comeBack(int i)
    {
        bench->pull(i);
        QTRY_VERIFY(!bench->manager.isTembrinConnect(i));
        bench->putBack(i);
        bench->open(i);
        QTRY_VERIFY(bench->isReady(i));
    }

    template<typename Control> Control* find(const char* name)
    {
        return setup->findChild<Control*>(QLatin1String(name));
    }
    QComboBox* rate() { return find<QComboBox>("comboRate"); }
    QCheckBox* box(int i) { return setup->findChild<QCheckBox*>(QStringLiteral("sensBox%1").arg(i + 1)); }

    QScopedPointer<ManagerBench> bench;
    QScopedPointer<loggerBasicSetup> setup;
    QScopedPointer<setupLogger> configuration;
};

QTEST_MAIN(TestSetupFlows)
#include "test_setupflows.moc"
