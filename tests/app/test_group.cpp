#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "app/common/settings.h"
#include "app/mainwindow.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/selectmanyloggers.h"
#include "protocol/tembrindata.h"
#include "resources/resources.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

namespace {

template<typename Widget> Widget* part(const QWidget* window, const char* name)
{
    return window->findChild<Widget*>(QLatin1String(name));
}

void click(QListWidget* list, int row, Qt::KeyboardModifiers keys = Qt::NoModifier)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, keys, list->visualItemRect(list->item(row)).center());
}

} // namespace

class TestGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChosenClassIsStoredAndItsPortsOpen()
    {
        WarningGuard guard;
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
        QTRY_VERIFY(manager->tembrinDataAt(0)->loggerRecognized);
        QCOMPARE(openLoggers(), QStringList("Tembrin_0001"));

        QTimer::singleShot(0, this, &TestGroup::chooseThreeOfFive);
        window.findChild<QAction*>("colabConnectAct")->trigger();
        for (int i = 0; i < 3; ++i)
            QTRY_VERIFY(manager->tembrinDataAt(i)->loggerRecognized);
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
        VERIFY_NO_WARNINGS(guard);
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
        QWidget* dialog = QApplication::activeModalWidget();
        auto* unused = part<QListWidget>(dialog, "listPaired");
        auto* used = part<QListWidget>(dialog, "listUsed");
        click(unused, 0);
        click(unused, 2, Qt::ControlModifier);
        click(unused, 3, Qt::ControlModifier);
        QTest::mouseClick(part<QPushButton>(dialog, "pushAdd"), Qt::LeftButton);
        click(used, 2);
        QTest::keyClick(used, Qt::Key_F2);
        auto* editor = used->findChild<QLineEdit*>();
        QTest::keyClicks(editor, "Physics table");
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(used->item(2)->text(), QStringLiteral("Physics table (Tembrin_0004)"));
        click(used, 0);
        QTest::mouseClick(part<QPushButton>(dialog, "pushRemove"), Qt::LeftButton);
        QTest::mouseClick(part<QPushButton>(dialog, "pushButton_Save"), Qt::LeftButton);
        QTest::mouseClick(part<QPushButton>(dialog, "pushButton_Connect"), Qt::LeftButton);
    }

    QTemporaryDir runtime;
};

QTEST_MAIN(TestGroup)
#include "test_group.moc"
