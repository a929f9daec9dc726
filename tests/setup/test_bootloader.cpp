#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTemporaryDir>

#include "setup/bootloader.h"
#include "setup/setuplogger.h"
#include "tests/setup/setupbench.h"

namespace {

const QByteArray ready = summed("4C7911 02");
const QByteArray erased = summed("4C7920");
const QByteArray taken = summed("4C7914");

} // namespace

/// The firmware page of the configuration, with a logger that the test plays.
class TestBootLoader : public GuardedTest
{
    Q_OBJECT

    void begin() override
    {
        bench.reset(new SetupBench(2));
        Settings::mainStore().setValue(QLatin1String(Settings::advanced), true);
        for (int i : {0, 1})
            bench->introduce(i, status({}));
        dialog.reset(new setupLogger(&bench->prompt));
        dialog->createAll(&bench->manager);
        dialog->show();
        QVERIFY(dialog->showBootLoader(0));
        panel = dialog->findChild<bootLoader*>();
    }
    void finish() override { dialog.reset(); }

    void enter(const char* word)
    {
        find<QLineEdit>("password")->setText(QLatin1String(word));
        find<QPushButton>("passwordButton")->click();
    }
    QString face() { return find<QStackedWidget>("loaderFaces")->currentWidget()->objectName(); }
    void choose(const QByteArray& content, const QString& name = QStringLiteral("new.hex"))
    {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        bench->prompt.file = file.fileName();
        find<QPushButton>("openButton")->click();
    }
    template<typename Control> Control* find(const char* name) { return control<Control>(*dialog, name); }

    QTemporaryDir folder;
    QScopedPointer<SetupBench> bench;
    QScopedPointer<setupLogger> dialog;
    bootLoader* panel = nullptr;

private Q_SLOTS:
    void aWrongPasswordWaitsAndTheTwoRightOnesOpenTheirFaces()
    {
        enter("0000");
        QCOMPARE(find<QLabel>("feedback")->text(), QStringLiteral("Wrong password"));
        enter("7295"); // too soon
        QVERIFY(face() != QLatin1String("main"));
        QTRY_VERIFY(find<QPushButton>("passwordButton")->isEnabled());
        enter("7295");
        QCOMPARE(face(), QStringLiteral("main"));
        find<QStackedWidget>("loaderFaces")->setCurrentIndex(0);
        Settings::mainStore().setValue(QStringLiteral("firmware/password"), QStringLiteral("k7m2q9"));
        enter("k7m2q9");
        QCOMPARE(face(), QStringLiteral("old"));
    }

    void withoutTheSettingThereIsNoFirmwarePage()
    {
        Settings::mainStore().setValue(QLatin1String(Settings::advanced), false);
        setupLogger plain(&bench->prompt);
        plain.createAll(&bench->manager);
        QVERIFY(!plain.showBootLoader(0) && !plain.findChild<bootLoader*>());
    }

    void aBurnIsSeenThroughAndItsFailureStays()
    {
        enter("7295");
        choose(":00000001FE\n");
        QVERIFY(find<QLabel>("fileLabel")->text().contains(QStringLiteral("(not compatible)")));
        QVERIFY(find<QLabel>("fileLabel")->text().contains(QStringLiteral("Wrong CS in line 0")));
        QVERIFY(!find<QPushButton>("burnButton")->isEnabled());
        choose(":02100000050/E4\n:0210000005053E\n:00000001FF\n");
        QVERIFY(!find<QPushButton>("burnButton")->isEnabled());
        choose(":021000000505E4\n:00000001FF\n");
        QCOMPARE(find<QLabel>("fileLabel")->text(), QStringLiteral("new (confirmed)"));
        find<QPushButton>("burnButton")->click();
        QCOMPARE(bench->written(0), summed("471609"));
        QVERIFY(!find<QComboBox>("loaderLogger")->isEnabled());
        bench->port(1).feed(ready + erased + taken); // another logger's word counts for nothing
        QCOMPARE(bench->written(0), QByteArray());
        bench->port(0).feed(ready);
        QCOMPARE(bench->written(0), summed("571619"));
        // It is not left by accident.
        bench->prompt.asked.clear();
        dialog->close();
        QVERIFY(dialog->isVisible() && bench->prompt.asked.size() == 1);
        bench->port(0).feed(erased);
        QVERIFY(bench->written(0).startsWith(bytes("571612 00001000 0505FF")));
        bench->port(0).feed(taken);
        QCOMPARE(bench->written(0), summed("571627"));
        const QByteArray otherSums = summed("4C7927 00 00000000");
        bench->port(0).feed(otherSums); // which may have been damaged on its way
        QCOMPARE(bench->written(0), summed("571627"));
        bench->port(0).feed(otherSums);
        QVERIFY(find<QLabel>("burnLabel")->text().contains(QStringLiteral("press Burn again")));
        QCOMPARE(bench->written(0), QByteArray()); // it stays in its boot loader
        QVERIFY(find<QPushButton>("burnButton")->isEnabled());
        dialog->close();
        QVERIFY(!dialog->isVisible());
        QCOMPARE(bench->prompt.asked.size(), 1);
    }

    void leavingABurnEndsIt()
    {
        enter("7295");
        choose(":021000000505E4\n:00000001FF\n");
        find<QPushButton>("burnButton")->click();
        bench->port(0).feed(ready);
        bench->prompt.confirmed = true;
        dialog->close();
        QVERIFY(!dialog->isVisible() && !panel->isBusy());
    }
};

QTEST_MAIN(TestBootLoader)
#include "test_bootloader.moc"
