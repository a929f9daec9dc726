#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

#include "resources/resources.h"
#include "setup/experimentinfo.h"
#include "tests/classroom/managerbench.h"
#include "virtual/wire.h"

/// The choice among stored experiments, on loggers that have three, two and none of them, and one without a
/// memory. They began an hour apart, the last one an hour ago.
class TestExperimentInfo : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        initPellandraResources();
        bench.reset(new ManagerBench({VirtualBench::identity("Birch", "10/Sec", 100, 3),
                                      VirtualBench::identity("Fjord", "10/Sec", 100, 2),
                                      VirtualBench::identity("Birch", "10/Sec", 100, 0),
                                      VirtualBench::identity("Vorta", "10/Sec", 100)}));
        bench->openAll();
        dialog.reset(new experimentInfo(&bench->manager));
        dialog->show();
        QCOMPARE(dialog->findChildren<QTableWidget*>().size(), 3);
        tables.clear();
        for (int i = 1; i <= 3; ++i)
            tables += dialog->findChild<QWidget*>(QStringLiteral("experiments%1").arg(i))
                          ->findChild<QTableWidget*>();
        QTRY_COMPARE(tables[0]->rowCount(), 3);
        QTRY_COMPARE(tables[1]->rowCount(), 2);
        for (int i = 0; i < 3; ++i) {
            connect(bench->state(i), &TembrinData::downloadComplete, this, [this](int index, bool ok) {
                arrived += QStringLiteral("%1%2 ").arg(QChar('A' + index)).arg(ok ? "" : "!");
            });
        }
    }

    void finish() override
    {
        dialog.reset();
        bench.reset();
        arrived.clear();
    }

private Q_SLOTS:
    void eachLoggerWithAMemoryHasAPage()
    {
        auto* tabs = dialog->findChild<QTabWidget*>();
        QCOMPARE(tabs->tabText(0) + tabs->tabText(1) + tabs->tabText(2),
                 QStringLiteral("Group AGroup BGroup C"));
        QCOMPARE(chosen(), QStringLiteral("2 1 -"));
        QVERIFY(button("pushDownload")->isEnabled());
        const expInfo& first = bench->state(0)->expList()[0];
        QCOMPARE(tables[0]->item(0, 2)->text(), first.rate);
        QCOMPARE(tables[0]->item(0, 3)->text(), QString::number(first.samples));
        QCOMPARE(tables[0]->item(0, 4)->toolTip(), first.sensNames);
        QCOMPARE(tables[0]->item(0, 4)->icon().availableSizes().first().width(), 37 * first.iconNames.size());
        tabs->setCurrentIndex(2);
        QVERIFY(!button("pushDownload")->isEnabled());
        QCOMPARE(button("pushCancel")->text(), QStringLiteral("Cancel"));
    }

    void onePageAlone()
    {
        QSignalSpy same(dialog.data(), &experimentInfo::fetchingSameRun);
        dialog->findChild<QTabWidget*>()->setCurrentIndex(1);
        tables[1]->selectRow(0);
        QCOMPARE(chosen(), QStringLiteral("2 0 -"));
        button("pushDownload")->click();
        QVERIFY(!button("pushDownload")->isEnabled());
        QTRY_COMPARE(button("pushCancel")->text(), QStringLiteral("Close"));
        QCOMPARE(arrived, QStringLiteral("B "));
        for (const QByteArray& frame : bench->heard(1)) {
            if (quint8(frame[2]) == Wire::Download)
                QCOMPARE(int(frame[3]), 1);
        }
        QCOMPARE(bench->heard(1, Wire::Download), 1);
        QVERIFY(hint().startsWith(QLatin1String("On the graph now: ")) &&
                hint().endsWith(QLatin1String("(Group B).")));
        QCOMPARE(same.count(), 0);
    }

    void theSameRunOfAll()
    {
        QSignalSpy same(dialog.data(), &experimentInfo::fetchingSameRun);
        int most = 0;
        connect(dialog->findChild<QProgressBar*>(), &QProgressBar::valueChanged, this, [&most](int value) {
            QVERIFY(value >= most);
            most = value;
        });
        tables[0]->selectRow(1);
        dialog->findChild<QCheckBox*>()->click();
        QCOMPARE(chosen(), QStringLiteral("1 0 -"));
        QVERIFY(hint().endsWith(QLatin1String(": Group C.")));
        tables[0]->selectRow(0); // two hours before the other's first
        QCOMPARE(chosen(), QStringLiteral("0 - -"));
        QVERIFY(hint().endsWith(QLatin1String(": Group B, Group C.")));
        tables[0]->selectRow(2);
        QCOMPARE(chosen(), QStringLiteral("2 1 -"));
        button("pushDownload")->click();
        QTRY_COMPARE(button("pushCancel")->text(), QStringLiteral("Close"));
        QCOMPARE(arrived, QStringLiteral("A B "));
        QCOMPARE(same.count(), 1);
        QCOMPARE(most, 100);
    }

    void aDownloadWaitsForItsTurn()
    {
        bench->setDead(0);
        bench->manager.sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
        button("pushDownload")->click();
        QTRY_VERIFY(bench->heard(1, Wire::LoggingSetup) > 0);
        bench->setDead(0, false); // too late for the setup, or for its last try
        QTRY_COMPARE(button("pushCancel")->text(), QStringLiteral("Close"));
        QCOMPARE(arrived, QStringLiteral("A "));
    }

    void whatCantBeFetchedIsNamed()
    {
        dialog->findChild<QCheckBox*>()->click();
        bench->pull(1);
        button("pushDownload")->click();
        QTRY_VERIFY(button("pushDownload")->isEnabled());
        QCOMPARE(arrived, QStringLiteral("A "));
        QVERIFY(hint().endsWith(QLatin1String("Could not be fetched: Group B (not connected).")));
        bench->delay(0, 20);
        button("pushDownload")->click();
        QVERIFY(bench->manager.isSending(CMD_DOWNLOAD_STORED_DATA));
        button("pushCancel")->click();
        QTRY_VERIFY(!bench->manager.isSending(CMD_DOWNLOAD_STORED_DATA));
        QVERIFY(dialog->isHidden());
    }

private:
    QPushButton* button(const char* name) { return dialog->findChild<QPushButton*>(QLatin1String(name)); }
    QString hint() { return dialog->findChild<QLabel*>(QStringLiteral("hint"))->text(); }
    /// The rows chosen, page by page.
    QString chosen() const
    {
        QStringList rows;
        for (const QTableWidget* table : tables) {
            const auto selected = table->selectionModel()->selectedRows();
            rows += selected.isEmpty() ? QStringLiteral("-") : QString::number(selected.first().row());
        }
        return rows.join(' ');
    }

    QScopedPointer<ManagerBench> bench;
    QScopedPointer<experimentInfo> dialog;
    QList<QTableWidget*> tables;
    QString arrived;
};

QTEST_MAIN(TestExperimentInfo)
#include "test_experimentinfo.moc"
