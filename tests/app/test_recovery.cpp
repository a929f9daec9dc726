#include <QAction>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>

#include "app/runrecovery.h"
#include "instruments/statusline.h"
#include "persistence/journalfolder.h"
#include "tests/app/classbench.h"

/// What becomes of a run that was not saved, from one start of the program to the next.
class TestRecovery : public GuardedTest
{
    Q_OBJECT

private:
    /// Texts, so that a gap equals a gap.
    static QStringList all(const ClassBench& bench, int i)
    {
        QStringList texts;
        for (const QVector<double>& column :
             QVector<QVector<double>>{bench.data(i)->getX()} + bench.data(i)->getData()) {
            texts << QStringLiteral("column");
            for (const double value : column)
                texts << QString::number(value, 'g', 17);
        }
        return texts;
    }
    static int journals()
    {
        return QDir(JournalFolder::path()).entryList({QStringLiteral("*.journal")}).size();
    }
    static int refused()
    {
        return QDir(JournalFolder::refusedPath()).entryList({QStringLiteral("*.journal")}).size();
    }
    /// A run of two loggers; the second loses a sample.
    static void run(ClassBench& bench)
    {
        for (int i = 0; i < 2; ++i)
            bench.meet(i);
        bench.action("runAct")->trigger();
        for (short number = 0; number < 8; ++number) {
            bench.sample(0, number, 20 + number / 3.0);
            if (number != 4)
                bench.sample(1, number, 40 - number / 7.0);
        }
        QCOMPARE(bench.data(1)->getXSize(), 7);
    }
    static QPushButton* button(const ClassBench& bench, const char* name)
    {
        bench.window->findChild<RunRecovery*>()->look();
        const auto find = [&] { return bench.window->findChild<QPushButton*>(QLatin1String(name)); };
        return QTest::qWaitFor([&] { return find() && find()->isVisible(); }, 3000) ? find() : nullptr;
    }

private Q_SLOTS:
    void aRunThatWasNotSavedIsOfferedUntilItIsDealtWith_data()
    {
        columns<QByteArray, int, int>({"button", "journals", "refused"});
        row("restored", QByteArray("restoreRun"), 1, 0); // until it is saved
        row("refused", QByteArray("refuseRun"), 0, 1);
        row("later", QByteArray("laterRun"), 1, 0);
    }

    void aRunThatWasNotSavedIsOfferedUntilItIsDealtWith()
    {
        QFETCH(QByteArray, button);
        QStringList measured[3];
        {
            ClassBench bench(2);
            run(bench);
            for (int i = -1; i < 2; ++i)
                measured[i + 1] = all(bench, i);
        }
        ClassBench bench(1);
        auto* const pressed = this->button(bench, button);
        QVERIFY(pressed);
        const QString text = bench.window->findChild<QLabel*>(QStringLiteral("recoveryText"))->text();
        QVERIFY2(text.contains(QLatin1String("was not saved: 2 groups, ")), qPrintable(text));
        pressed->click();
        QVERIFY(!pressed->isVisible());
        QTEST(journals(), "journals");
        QTEST(refused(), "refused");
        const bool isRestored = button == "restoreRun";
        QCOMPARE(bench.data(0)->isNeedSave() && bench.data(-1)->isNeedSave(), isRestored);
        if (!isRestored)
            return;
        for (int i = -1; i < 2; ++i)
            QCOMPARE(all(bench, i), measured[i + 1]);
        QCOMPARE(bench.data(1)->getSensors().constLast()->ID, int(SENSOR_TURBIDITY));
        bench.window->close();
        QVERIFY(bench.prompt.asked.join(QString()).contains(QLatin1String("Changes not saved")));

        QTemporaryDir folder;
        bench.prompt.file = folder.filePath(QStringLiteral("a.lesson"));
        bench.action("saveAct")->trigger();
        QTRY_COMPARE(journals(), 0);
        QCOMPARE(refused(), 0);
    }

    void aRunThatGoesOnIsNotReplaced()
    {
        {
            ClassBench bench(2);
            run(bench);
        }
        ClassBench bench(1);
        auto* const restore = button(bench, "restoreRun");
        QVERIFY(restore);
        bench.sample(0, 0, 2);
        bench.sample(0, 1, 3);
        restore->click();
        QCOMPARE(bench.data(0)->getXSize(), 2);
        QVERIFY(restore->isVisible());
        const auto* line = bench.window->findChild<StatusLine*>();
        QVERIFY2(line->outcome().contains("when no logger is busy"), qPrintable(line->outcome()));
        bench.tellEnd(0);
        restore->click();
        QCOMPARE(bench.data(0)->getXSize(), 8);
    }

    void aJournalGoesWithWhatBecomesOfItsRun_data()
    {
        columns<QByteArray, bool, int, int>({"then", "isOver", "journals", "refused"});
        row("saved", QByteArray("saveAct"), true, 0, 0);
        row("saved while it goes on", QByteArray("saveAct"), false, 1, 0);
        row("another run takes its place", QByteArray("runAct"), true, 1, 0);
        row("a download takes its place and is saved", QByteArray("download"), true, 0, 0);
    }

    void aJournalGoesWithWhatBecomesOfItsRun()
    {
        const auto [then, isOver] = fetched<QByteArray, bool>({"then", "isOver"});
        ClassBench bench(2);
        run(bench);
        QTRY_COMPARE(journals(), 1);
        for (int i = 0; isOver && i < 2; ++i)
            bench.tellEnd(i);
        QTemporaryDir folder;
        bench.prompt.file = folder.filePath(QStringLiteral("a.lesson"));
        if (then == "download") // of an older experiment
            Q_EMIT bench.logger(0)->downloadComplete(0, true);
        bench.action(then == "download" ? "saveAct" : then)->trigger();
        bench.window.reset(); // the writer's last word
        QTEST(journals(), "journals");
        QTEST(refused(), "refused");
    }

    void aFullDiskNeverEndsTheRun()
    {
        QFile inTheWay(JournalFolder::path());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        ClassBench bench(2);
        run(bench);
        const auto* line = bench.window->findChild<StatusLine*>();
        QTRY_VERIFY(line->outcome().contains(QLatin1String("not kept")));
        bench.sample(0, 8, 1);
        QCOMPARE(bench.data(0)->getXSize(), 9);
    }
};

QTEST_MAIN(TestRecovery)
#include "test_recovery.moc"
