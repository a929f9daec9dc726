#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>

#include "classroom/commandqueue.h"
#include "graph/plot.h"
#include "setup/designvalues.h"
#include "setup/setuplogger.h"
#include "setup/unitgroups.h"
#include "tests/setup/setupbench.h"

namespace {

/// A logging setup with what the usual status says, but for these bytes.
QByteArray setupFrame(int code, int samples, int trigger, int rangeSens, const char* sockets = "2626")
{
    return summed(bytes("47141100 05") + char(code) + char(samples) + char(trigger) + bytes("02 012C") +
                  bytes(sockets) + char(rangeSens) + bytes("0032"));
}

} // namespace

class TestSetupLogger : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        bench.reset(new SetupBench(2));
        bench->manager.setPacing(5000, 1);
        bench->introduce(0, status({}));
        bench->introduce(1, status({{11, 4}, {30, 0x08}, {31, 0}}));
    }

    void finish() override { dialog.reset(); }

private Q_SLOTS:
    void aConfigurationReachesTheFirstLoggerAtOnceAndTheOthersAtTheEnd()
    {
        open();
        QCOMPARE(find<QLabel>("labelVersions")->text(), QStringLiteral("Tembrin Birch, firmware 4.05"));
        find<QCheckBox>("boxGPS")->click();
        QCOMPARE(bench->written(0), summed("4714DD 0D 02"));
        find<QComboBox>("comboLanguage")->setCurrentIndex(3);
        QCOMPARE(bench->written(0), summed("4714DD 0D 03"));
        const auto shown = [this] {
            return QStringLiteral("%1%2 ")
                       .arg(find<QCheckBox>("boxSound")->isChecked())
                       .arg(find<QCheckBox>("boxGPS")->isChecked()) +
                   find<QComboBox>("comboLanguage")->currentText();
        };
        bench->port(0).feed(status({{30, 0x00}, {31, 1}})); // before the answer, so it says nothing
        QCOMPARE(shown(), QStringLiteral("11 Portuguese"));
        bench->port(0).feed(status({{3, 0xDD}, {30, 0x0D}, {31, 3}}));
        bench->port(0).feed(status({{30, 0x04}, {31, 1}})); // what was not chosen follows a key of the logger
        QCOMPARE(shown(), QStringLiteral("01 Portuguese"));
        QCOMPARE(bench->written(0) + bench->written(1), QByteArray());
        dialog->close();
        QCOMPARE(bench->written(0), summed("4714DD 0C 03"));
        bench->port(0).feed(status({{3, 0xDD}}));
        QTRY_COMPARE(bench->port(1).written(), summed("4714DD 08 03"));
        QCOMPARE(bench->prompt.asked, QStringList());
    }

    void unitsAreStoredAndTheLoggersOwnAreSent_data()
    {
        // keys: celsius, hPa, kPa, metre, km/h, mph
        columns<QString, QString, QByteArray, int, QString>({"button", "keys", "frame", "sensor", "unit"});
        const QByteArray none;
        row("F", "unitsFahrenheit", "0-----", summed("4714DD 07 02"), int(SENSOR_AMB_TEMP), "°F");
        row("hPa", "unitsBaro_hPa", "111110", summed("4714DD 15 02"), int(SENSOR_BAROMETER), "hPa");
        row("PSI", "unitsPSI", "100110", none, int(SENSOR_AIRPRESSURE), "PSI");
        row("feet", "unitsFeet", "101010", none, int(SENSOR_DISTANCE), "ft");
        row("mph", "unitsMPH", "101101", none, int(SENSOR_GPS_SPEED), "mph");
        row("m/s", "unitsMS", "101100", none, int(SENSOR_GPS_SPEED), "m/s");
        row("what it was", "unitsKPA", "101110", none, int(SENSOR_AIRPRESSURE), "kPa");
    }

    void unitsAreStoredAndTheLoggersOwnAreSent()
    {
        const auto [button, keys, frame] = fetched<QString, QString, QByteArray>({"button", "keys", "frame"});
        open();
        dialog->findChild<QRadioButton*>(button)->click();
        QCOMPARE(bench->written(0), frame);
        const QSettings store = Settings::mainStore();
        QString stored;
        for (const char* key : {Settings::unitsCelsius, Settings::unitsBaroHpa, Settings::unitsAirKpa,
                                Settings::unitsMeter, Settings::unitsKmh, Settings::unitsMph})
            stored +=
                store.contains(key) ? QString::number(int(store.value(key).toBool())) : QStringLiteral("-");
        QCOMPARE(stored, keys);
        QFETCH(int, sensor);
        QTEST(Sensor(sensor, Units::load(Settings::mainStore())).unitName, "unit");
    }

    void aCalibrationTemperature_data()
    {
        columns<bool, QString, QByteArray>({"celsius", "typed", "frame"});
        row("rounded", true, "20.25", summed("4714E0 00CB"));
        row("comma", true, "20,3", summed("4714E0 00CB"));
        row("Fahrenheit", false, "68", summed("4714E0 00C8"));
        for (const char* bad : {"", "warm", "0", "-5", "0.04", "1e9", "inf"})
            row(bad, true, bad, QByteArray());
        row("frost", false, "31", QByteArray());
    }

    void aCalibrationTemperature()
    {
        const auto [celsius, typed, frame] =
            fetched<bool, QString, QByteArray>({"celsius", "typed", "frame"});
        bench.reset(new SetupBench(2, celsius));
        Settings::mainStore().setValue(Settings::unitsCelsius, !celsius); // which the next start may have
        open();
        find<QLineEdit>("currentTemperatureLineEdit")->setText(typed);
        find<QPushButton>("buttonCalibTemp")->click();
        QCOMPARE(bench->written(0), frame);
        const QString text = find<QLabel>("calibrationResultText")->text();
        QCOMPARE(text.contains(celsius ? "between 0°C and 40°C" : "between 32°F and 104°F"), frame.isEmpty());
        find<QPushButton>("buttonTempBackDef")->click();
        QCOMPARE(bench->written(0), summed("4714E0 FFFF"));
    }

    void answersOfTheLoggerAreShown()
    {
        open();
        connect(&bench->logger(0), &TembrinData::calibrationResult, dialog.data(),
                &setupLogger::calib_result);
        connect(&bench->logger(0), &TembrinData::testDataReceived, dialog.data(),
                &setupLogger::test_data_result);
        bench->port(0).feed(status({{3, 0xE4}}));
        QCOMPARE(find<QLabel>("calibrationResultText")->text(),
                 QStringLiteral("Calibration aborted\nTembrin is not idle"));
        find<QPushButton>("buttonGetTestDataq")->click();
        QCOMPARE(bench->written(0), summed("4714A8"));
        bench->port(0).feed(summed("2E69A8 0D 00000000000000"));
        QCOMPARE(find<QLabel>("testResult")->text(),
                 QStringLiteral("RAM\tPASS\nGPS\tFAIL\namb. temp\tPASS\next. temp\tPASS\nsound\tFAIL\n"));
    }

    void smoothingIsTheProgramsOwn()
    {
        open();
        auto* kernel = find<QSpinBox>("smootSpinBox");
        kernel->setValue(6); // typed
        QCOMPARE(kernel->value(), 7);
        QCOMPARE(bench->manager.dataAt(1)->smoothKernel, 7);
        find<QSpinBox>("derivSpinBox")->setValue(20); // typed
        QCOMPARE(bench->manager.dataAt(1)->derivWindow, 21);
        QCOMPARE(Settings::mainStore().value(Settings::derivWindow).toInt(), 21);
        dialog->close();
        QCOMPARE(bench->written(0) + bench->written(1), QByteArray());
    }

    void theNextStartAgreesWithTheLoggerOnTheUnit_data()
    {
        columns<QByteArray, bool, bool, bool>({"said", "isConnected", "before", "celsius"});
        row("Fahrenheit", status({{30, 0x02}}), true, true, false);
        row("Celsius", status({{30, 0x05}}), true, false, true);
        row("lost", status({{30, 0x05}}), false, false, false);
        row("silent", QByteArray(), true, false, false);
        row("Vorta", summed("3E7983 10 11 12 00 03 0064 0000 0000 00"), true, false, false);
    }

    void theNextStartAgreesWithTheLoggerOnTheUnit()
    {
        const auto [said, isConnected, before] =
            fetched<QByteArray, bool, bool>({"said", "isConnected", "before"});
        bench.reset(new SetupBench(1));
        if (said.startsWith('.'))
            bench->port(0).feed(bytes(sensorListHex));
        bench->port(0).feed(said);
        if (!isConnected)
            bench->manager.release(0);
        Settings::mainStore().setValue(Settings::unitsCelsius, before);
        UnitGroups::agreeWith(*bench->manager.tembrinAt(0));
        QTEST(Settings::mainStore().value(Settings::unitsCelsius).toBool(), "celsius");
    }

    void aUnitOfTheNextStartIsSentAndStays()
    {
        open();
        find<QRadioButton>("unitsFahrenheit")->click();
        QCOMPARE(bench->written(0), summed("4714DD 07 02"));
        dialog->close();
        QCOMPARE(bench->prompt.asked.join('|'),
                 QStringLiteral("Change of units|Please restart Kormelin for the change to take effect."));
        UnitGroups::agreeWith(*bench->manager.tembrinAt(0)); // the answer is still due
        QVERIFY(!Settings::mainStore().value(Settings::unitsCelsius).toBool());
    }

    void aTriggerSetOnTheFirstLoggerIsSharedUnchanged()
    {
        open();
        bench->port(0).feed(status({{3, 0}, {21, 2}}));
        QCOMPARE(bench->written(0), setupFrame(3, 2, 2, 0xFF));
        bench->port(0).feed(status({{3, 0x11}, {21, 2}, {27, 0xFF}}));
        QTRY_COMPARE(bench->port(1).written(), setupFrame(4, 2, 2, 0xFF));
        QCOMPARE(bench->written(0), QByteArray());
    }

    void socketsTakeSensorsOfTheFamily()
    {
        open();
        auto* first = find<QComboBox>("comboBox");
        QCOMPARE(first->count(), 15);
        first->setCurrentIndex(first->findData(int(QUELLMARK_PHOTOGATE)));
        QCOMPARE(bench->written(0), setupFrame(3, 2, 1, 0xFF, "7026"));
        find<QComboBox>("comboBox_2")->setCurrentIndex(1);
        QCOMPARE(bench->written(0), setupFrame(3, 2, 1, 0xFF, "7065"));
        QVERIFY(bench->logger(0).hasPhotogate());
        first->setCurrentIndex(0);
        QCOMPARE(bench->written(0), setupFrame(3, 2, 1, 0xFF, "0065"));
        dialog->close();
        bench->port(0).feed(status({{3, 0x11}, {26, 0x65}}));
        QTRY_COMPARE(bench->port(1).written(), setupFrame(4, 2, 1, 0xFF, "2665"));
    }

    void aDesignShowsAtOnceAndIsKeptWhenSaved()
    {
        QSettings store = Settings::mainStore();
        store.setValue(QStringLiteral("design/graph/background"), QStringLiteral("no colour"));
        store.setValue(QStringLiteral("design/graph/max_grid/width"), QStringLiteral("thick"));
        store.setValue(QStringLiteral("design/graph/activeplot"), QStringLiteral("#102030"));
        DesignValues::load();
        QCOMPARE(Plot::getBackgroundColor(), QColor(0xf0, 0xf0, 0xf0));
        QCOMPARE(Plot::getMajGridW(), 0.8);
        QCOMPARE(Plot::getActivePlotColor(), QColor(0x10, 0x20, 0x30));

        open();
        QSignalSpy graph(dialog.data(), &setupLogger::useGraphDesignValues);
        QSignalSpy table(dialog.data(), &setupLogger::useTableDesignValues);
        QSignalSpy window(dialog.data(), &setupLogger::useMainDesignValues);
        find<QPushButton>("minGridButton")->click(); // and cancelled
        QCOMPARE(graph.count(), 0);
        bench->prompt.picked = 0xff123456;
        find<QPushButton>("minGridButton")->click();
        find<QPushButton>("titleButton")->click();
        find<QDoubleSpinBox>("majGridWidth")->setValue(1.5);
        QCOMPARE(bench->prompt.asked.last(), QStringLiteral("Select color for title|"));
        QCOMPARE(Plot::getMinGridColor(), QColor(0x12, 0x34, 0x56));
        QCOMPARE(Plot::getMajGridW(), 1.5);
        QCOMPARE(QVector<int>({graph.count(), table.count(), window.count()}), QVector<int>({2, 1, 0}));
        QVERIFY(find<QPushButton>("minGridButton")->styleSheet().contains(QLatin1String("rgb(18,52,86)")));
        QVERIFY(!store.contains(QStringLiteral("design/table/title_color")));

        find<QPushButton>("saveButton")->click();
        find<QPushButton>("defaultButton")->click();
        QCOMPARE(Plot::getMinGridColor(), QColor(0xd0, 0xd0, 0xd0));
        QCOMPARE(QVector<int>({graph.count(), table.count(), window.count()}), QVector<int>({3, 2, 1}));
        DesignValues::load(); // as the next start does
        QCOMPARE(Plot::getMinGridColor(), QColor(0x12, 0x34, 0x56));
        QCOMPARE(store.value(QStringLiteral("design/graph/background")).toString(),
                 QStringLiteral("#f0f0f0"));
        QCOMPARE(Plot::getMajGridW(), 1.5);
    }

private:
    void open()
    {
        dialog.reset(new setupLogger(&bench->prompt));
        dialog->createAll(&bench->manager);
        connect(&bench->logger(0), &TembrinData::statusReceived, dialog.data(), &setupLogger::updateStatus);
        dialog->show();
    }

    template<typename Control> Control* find(const char* name) { return control<Control>(*dialog, name); }

    QScopedPointer<SetupBench> bench;
    QScopedPointer<setupLogger> dialog;
};

QTEST_MAIN(TestSetupLogger)
#include "test_setuplogger.moc"
