#include <QDBusConnection>
#include <QDBusMessage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>

#include "classroom/commandqueue.h"
#include "classroom/failuretexts.h"
#include "protocol/tembrinprotocol.h"
#include "tests/e2e/virtualclassbench.h"

Q_DECLARE_METATYPE(PortFailure)

/// The whole program over the fake Bluetooth service, from the paired device to the stored sample.
class TestBluetoothClass : public VirtualClassBench
{
    Q_OBJECT

    static constexpr int patience = 20000; // ms: calls in vain, and one that is heard

private Q_SLOTS:
    void initTestCase()
    {
        // Read once by the library, so each bus of these tests stands at this place.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", busAddress().toLocal8Bit());
    }
    void init()
    {
        setUp();
        before = {};
    }
    void cleanup()
    {
        tearDown();
        QDBusConnection::disconnectFromBus(control);
    }

    void everySampleOfEightArrives()
    {
        before = [] { Settings::mainStore().clear(); };
        startRadio(8, 2);
        inDialog("colabConnectAct", [&](QWidget* dialog) {
            QCOMPARE(list(dialog, "listPaired")->count(), 8);
            list(dialog, "listPaired")->selectAll();
            dialog->findChild<QPushButton*>("pushAdd")->click();
            dialog->findChild<QPushButton*>("pushButton_Connect")->click();
        });
        connectAll(8);
        QCOMPARE(links("hci0") + links("hci1") * 10, 44);
        run(8, 120);
        stop(8);
        readRecord();
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(wrongRows(i), QStringList());
            QCOMPARE(data(i)->getXSize(), samplesSent(i));
        }
    }

    void whoIsLostInARunComesBack_data()
    {
        columns<QString, QString>({"loss", "back"});
        row("walks away", QString("pull 1"), QString("put 1"));
        row("the link breaks", QString("DropLink"), QString());
        row("the service wants it back", QString("AskToDisconnect"), QString());
        row("the service ends", QString("ReleaseProfiles,service die"), QString("service start"));
        row("the service dies meanwhile", QString("service die,pull 1"), QString("service start,put 1"));
    }

    void whoIsLostInARunComesBack()
    {
        const auto [loss, back] = fetched<QString, QString>({"loss", "back"});
        startRadio(3, 2);
        connectAll(3);
        run(3, 50);
        QSignalSpy lost(manager->tembrinAt(0), &TembrinProtocol::loggerDisconnected);
        happen(loss);
        QVERIFY(!lost.isEmpty() || lost.wait(1000));
        happen(back);
        for (int i = 0; i < 3; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinAt(i)->isConnect, patience);
        const int begun = data(0)->getXSize();
        QTRY_VERIFY_WITH_TIMEOUT(data(0)->getXSize() > begun + 50, patience);
        stop(3);
        QTRY_VERIFY_WITH_TIMEOUT(manager->queue().isIdle(), patience);
        readRecord();
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(wrongRows(i), QStringList());
            QCOMPARE(qRound(data(i)->getX().constLast() / data(i)->dt), data(i)->getXSize() - 1);
        }
    }

    void aStopHoldsForWhoIsAway_data()
    {
        columns<int>({"away"});
        row("one of three", 1);
        row("everybody", 3);
    }

    void aStopHoldsForWhoIsAway()
    {
        const auto [away] = fetched<int>({"away"});
        startRadio(3, 2);
        connectAll(3);
        run(3, 20);
        for (int i = 0; i < away; ++i)
            happen(QString("pull %1").arg(i + 1));
        for (int i = 0; i < away; ++i)
            QTRY_VERIFY_WITH_TIMEOUT(!manager->tembrinAt(i)->isConnect, patience);
        QVERIFY(action("stopAct")->isVisible()); // it goes on with whoever comes back
        action("stopAct")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(action("runAct")->isVisible() && manager->queue().isIdle(), patience);
        for (int i = 0; i < away; ++i) {
            happen(QString("put %1").arg(i + 1));
            QVERIFY(!manager->tembrinAt(i)->isConnect);
            QTest::mouseClick(icon(i), Qt::LeftButton);
        }
        for (int i = 0; i < away; ++i) {
            QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(i)->isLoggerRecognized(), patience);
            QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(i)->isIdle(), patience);
        }
        QTRY_VERIFY_WITH_TIMEOUT(action("runAct")->isVisible() && !manager->isAnyRunning(), patience);
    }

    void theReasonIsToldAndItsCureHelps_data()
    {
        // needsClick: what the radio does not tell of is tried again at a click
        columns<QString, PortFailure, QString, bool>({"hindrance", "failure", "cure", "needsClick"});
        row("out of reach", QString("pull 1"), PortFailure::OutOfReach, QString("put 1"), true);
        row("refused", QString("Behave refuse"), PortFailure::Refused, QString("Behave link"), true);
        row("taken", QString("TakeLink"), PortFailure::Held, QString("DropLink"), true);
        row("not paired", QString("SetPaired 0"), PortFailure::NotPaired, QString("SetPaired 1"), false);
        row("switched off", QString("SetPowered 0"), PortFailure::AdapterOff, QString("SetPowered 1"), false);
        row("no adapter", QString("RemoveAdapter"), PortFailure::NoAdapter, QString("AddAdapter,AddDevice"),
            false);
        row("no service", QString("service die"), PortFailure::NoService, QString("service start"), false);
    }

    void theReasonIsToldAndItsCureHelps()
    {
        const auto [hindrance, failure, cure, needsClick] =
            fetched<QString, PortFailure, QString, bool>({"hindrance", "failure", "cure", "needsClick"});
        before = [this, what = hindrance] { happen(what); };
        startRadio(1, 1);
        const QString why = FailureTexts::reason(failure, port(0));
        QTRY_VERIFY_WITH_TIMEOUT(tip(0).contains(why), patience);
        happen(cure);
        if (needsClick)
            QTest::mouseClick(icon(0), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(0)->isLoggerRecognized(), patience);
    }

    void theEighthOnOneAdapterNeedsAnother()
    {
        startRadio(8, 1);
        const QString why = FailureTexts::reason(PortFailure::AdapterFull, {});
        QVector<int> refused;
        const auto lookAround = [&] {
            refused.clear();
            int connected = 0;
            for (int i = 0; i < 8; ++i) {
                connected += manager->tembrinAt(i)->isConnect;
                if (tip(i).contains(why))
                    refused.append(i);
            }
            return connected == 7 && refused.size() == 1;
        };
        QTRY_VERIFY_WITH_TIMEOUT(lookAround(), patience);
        const int last = refused.constFirst();
        adapter = "hci1";
        happen("AddAdapter,AddDevice", last);
        QTest::mouseClick(icon(last), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(last)->isLoggerRecognized(), patience);
        QCOMPARE(links("hci0") + links("hci1") * 10, 17);
    }

    void whatIsPairedWhileTheListIsOpenAppears()
    {
        startRadio(1, 1);
        connectAll(1);
        inDialog("colabConnectAct", [&](QWidget* dialog) {
            QCOMPARE(list(dialog, "listUsed")->count(), 1);
            ports.append("00:12:F3:FF:FF:FF");
            names.append("Tembrin_0099");
            happen("AddDevice,SetPaired 0,SetPaired 1", 1);
            QTRY_COMPARE(list(dialog, "listPaired")->count(), 1);
            happen("RemoveDevice", 1);
            QTRY_COMPARE(list(dialog, "listPaired")->count(), 0);
        });
    }

private:
    QString loggerFolder() const { return place.filePath("class"); }
    QString busAddress() const { return "unix:path=" + loggerFolder() + "/bus"; }
    void prepare() override
    {
        if (before)
            before();
    }

    void startRadio(int count, int adapters)
    {
        names.clear();
        for (int i = 1; i <= count; ++i)
            names.append(QStringLiteral("Tembrin_000%1").arg(i));
        adapter = "hci0";
        start(count, {"--bluetooth", "--adapters", QString::number(adapters), "--directory", loggerFolder(),
                      "--names", names.join(','), "--model", "Birch", "--samples", "30000"});
    }

    QDBusMessage ask(const QString& method, const QVariantList& arguments = {}) const
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall("org.bluez", "/org/pellandra/fake", "org.pellandra.Fake", method);
        message.setArguments(arguments);
        return QDBusConnection::connectToBus(busAddress(), control).call(message);
    }

    /// Steps by commas: commands of the virtual loggers, or of the fake service on the adapter or logger `i`.
    void happen(const QString& steps, int i = 0)
    {
        for (const QString& step : steps.split(',', Qt::SkipEmptyParts)) {
            const QString method = step.section(' ', 0, 0);
            const QString value = step.section(' ', 1);
            const QHash<QString, QVariantList> arguments = {
                {"AddAdapter", {adapter, true}},
                {"RemoveAdapter", {adapter}},
                {"SetPowered", {adapter, value == "1"}},
                {"AddDevice", {adapter, port(i), names[i], true, loggerFolder() + '/' + names[i]}},
                {"SetPaired", {port(i), value == "1"}},
                {"Behave", {port(i), value, 0.0, QString(), QString()}},
                {"ReleaseProfiles", {}}};
            if (step[0].isLower()) {
                told(step);
                continue;
            }
            const QDBusMessage reply = ask(method, arguments.value(method, {port(i)}));
            QVERIFY2(reply.type() == QDBusMessage::ReplyMessage, qPrintable(reply.errorMessage()));
        }
    }
    /// Carried out when the next question has its answer.
    void told(const QString& command)
    {
        tell(command.toUtf8() + "\nstatus 1");
        QByteArray said;
        QTRY_VERIFY((said += loggers.readAllStandardOutput()).contains("Tembrin"));
    }

    int links(const QString& name) const
    {
        const QByteArray state = ask("State").arguments().value(0).toString().toUtf8();
        return QJsonDocument::fromJson(state)["adapters"][name]["links"].toArray().size();
    }
    QLabel* icon(int i) const
    {
        return window->findChild<QLabel*>(QStringLiteral("loggerIcon%1").arg(i + 1));
    }
    QString tip(int i) const { return icon(i)->toolTip(); }
    static QListWidget* list(QWidget* dialog, const char* name)
    {
        return dialog->findChild<QListWidget*>(QLatin1String(name));
    }

    const QString control = "control";
    QTemporaryDir place;
    std::function<void()> before; ///< the window is there
    QStringList names;
    QString adapter;
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestBluetoothClass>(argc, argv);
}

#include "test_bluetoothclass.moc"
