#include <QAction>
#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include "app/mainwindow.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "common/settings.h"
#include "protocol/tembrindata.h"
#include "resources/resources.h"
#include "tests/classroom/dialoghand.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

class TestGroup : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void aChosenClassIsStoredAndItsPortsOpen()
    {
        initPellandraResources();
        qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
        QProcess loggers;
        loggers.start(VIRTUAL_LOGGERS, {"--count", "5", "--names",
                                        "Tembrin_0001,Tembrin_0002,Tembrin_0003,Tembrin_0004,Tembrin_0005"});
        QTRY_VERIFY(QFile::exists(link(5)));
        {
            QSettings store = Settings::mainStore();
            store.clear();
            store.setValue(Settings::loggerKey(0), link(1));
            store.setValue(QLatin1String(Settings::numDefined), 1);
        }
        FakePrompt prompt;
        MainWindow window(&prompt);
        window.show();
        auto* manager = window.findChild<multiConnectionsManager*>();
        QTRY_VERIFY(manager->tembrinDataAt(0)->isLoggerRecognized());
        QCOMPARE(openLoggers(), QStringList("Tembrin_0001"));

        QTimer::singleShot(0, this, &TestGroup::chooseThreeOfFive);
        window.findChild<QAction*>("colabConnectAct")->trigger();
        for (int i = 0; i < 3; ++i)
            QTRY_VERIFY(manager->tembrinDataAt(i)->isLoggerRecognized());
        QTRY_COMPARE(openLoggers(), QStringList({"Tembrin_0002", "Tembrin_0004", "Tembrin_0005"}));
        QCOMPARE(manager->loggerName(1), QStringLiteral("Tembrin_0004"));
        QCOMPARE(manager->nDefTembrins(), 3);
        QTRY_VERIFY(!window.findChild<selectManyLoggers*>());

        const QSettings store = Settings::mainStore();
        QStringList found;
        for (const QString& key : store.allKeys())
            found << key + '=' + store.value(key).toString().replace(link(0).chopped(1), "#");
        const QString expected =
            "BT/logger1=#2 BT/logger2=#4 BT/logger3=#5 BT/logger4=COMxx BT/logger5=COMxx "
            "BT/logger6=COMxx BT/logger7=COMxx BT/logger8=COMxx BT/name1=Group A "
            "BT/name2=Physics table BT/name3=Group B BT/name4= BT/name5= BT/name6= "
            "BT/name7= BT/name8= colab/num_defined=3";
        QCOMPARE(found.join(' '), expected);
        loggers.kill();
        loggers.waitForFinished();
    }

private:
    QString link(int number) const
    {
        return runtime.filePath(QStringLiteral("pellandra/loggers/Tembrin_000%1").arg(number));
    }

    /// The loggers whose terminals this process has open, as the system tells.
    QStringList openLoggers() const
    {
        QStringList open;
        const QFileInfoList files = QDir("/proc/self/fd").entryInfoList(QDir::System | QDir::Files);
        for (int i = 1; i <= 5; ++i) {
            const QString terminal = QFileInfo(link(i)).canonicalFilePath();
            for (const QFileInfo& file : files) {
                if (file.symLinkTarget() == terminal)
                    open << QFileInfo(link(i)).fileName();
            }
        }
        return open;
    }

    void chooseThreeOfFive()
    {
        DialogHand hand(QApplication::activeModalWidget());
        hand.choose("listPaired", {0, 2, 3});
        hand.press("pushAdd");
        hand.rename("listUsed", 2, "Physics table");
        hand.choose("listUsed", {0});
        hand.press("pushRemove");
        hand.press("pushButton_Save");
        hand.press("pushButton_Connect");
    }

    QTemporaryDir runtime;
};

QTEST_MAIN(TestGroup)
#include "test_group.moc"
