#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTemporaryDir>
#include <QTest>

#include "instruments/indicator.h"
#include "instruments/statusline.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"

class TestIndicator : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        prompt = FakePrompt();
        strip.reset(new Indicator(&prompt));
        strip->setNActive(3);
        strip->show();
    }

    void finish() override { strip.reset(); }

private Q_SLOTS:
    void aLeftClickConnectsEvenAConnectedLogger()
    {
        QSignalSpy connects(strip.data(), &Indicator::tryToConnect);
        strip->setBT(2, true);
        QTest::mouseClick(icon(2), Qt::LeftButton);
        QCOMPARE(connects.count(), 1);
        QCOMPARE(connects[0][0].toInt(), 2);
    }

    void aRightClickDeletesOnlyAfterYes()
    {
        QSignalSpy deletes(strip.data(), &Indicator::deleteFromLogger);
        prompt.confirmed = true;
        QTest::mouseClick(icon(0), Qt::RightButton); // not connected: there is nothing to offer
        QCOMPARE(prompt.asked, QStringList());
        prompt.confirmed = false;
        strip->setBT(0, true);
        strip->setLoggerDetails(0, QStringLiteral("Tembrin_0421"), QStringLiteral("Ada"));
        QTest::mouseClick(icon(0), Qt::RightButton);
        QCOMPARE(deletes.count(), 0);
        prompt.confirmed = true;
        QTest::mouseClick(icon(0), Qt::RightButton);
        QCOMPARE(deletes.count(), 1);
        QCOMPARE(deletes[0], QVariantList({0, true}));
        QCOMPARE(prompt.asked.value(1),
                 QStringLiteral("Confirm delete|You are about to delete all the experiments from "
                                "Tembrin_0421 (Ada).\nAre you sure?"));
    }

    void thePairingIconStartsThePanelOfTheDesktop()
    {
        QTemporaryDir bin;
        qputenv("PATH", bin.path().toLocal8Bit());
        QSignalSpy messages(strip.data(), &Indicator::message);
        auto* pair = strip->findChild<QLabel*>(QStringLiteral("pairIcon"));
        QTest::mouseClick(pair, Qt::RightButton);
        QCOMPARE(messages.count(), 1);

        const QString trace = bin.filePath(QStringLiteral("started"));
        QFile panel(bin.filePath(QStringLiteral("blueman-manager")));
        QVERIFY(panel.open(QIODevice::WriteOnly));
        panel.write("#!/bin/sh\n: > '" + trace.toLocal8Bit() + "'\n");
        panel.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        panel.close();
        QTest::mouseClick(pair, Qt::LeftButton);
        QTRY_VERIFY(QFile::exists(trace));
        QCOMPARE(messages.count(), 1);
    }

    void aLineWithAllItsRoomIsNotCut()
    {
        QWidget window;
        window.resize(2000, 100);
        StatusLine line(&window);
        for (int letters = 1; letters < 60; ++letters) {
            line.setOutcome(QString(letters, QLatin1Char('i')));
            line.resize(line.sizeHint());
            const QImage exact = line.grab().toImage();
            line.resize(line.sizeHint() + QSize(20, 0));
            const QImage wide = line.grab().toImage().copy(exact.rect());
            QVERIFY2(exact == wide, qPrintable(line.text()));
        }
    }

    void theStatusLineStandsThroughStatusTips()
    {
        QMainWindow window;
        window.resize(600, 200);
        auto* line = new StatusLine;
        window.statusBar()->addPermanentWidget(line);
        window.show();
        QVERIFY(!line->isVisible());
        line->setWaiting(QStringLiteral("Please wait"));
        QStatusTipEvent tip(QStringLiteral("Stops all"));
        QApplication::sendEvent(&window, &tip);
        QStatusTipEvent noTip({});
        QApplication::sendEvent(&window, &noTip);
        QVERIFY(line->isVisible());
        QCOMPARE(line->text(), QStringLiteral("Please wait"));
        line->setOutcome(QString(500, QLatin1Char('m')) + QLatin1String("\nof group Ada"));
        QCOMPARE(line->text(), line->toolTip());
        QVERIFY(line->toolTip().endsWith(QLatin1String("m of group Ada")));
        QTRY_VERIFY(line->width() > 300 && line->width() <= 400);
        line->setWaiting({});
        QVERIFY(line->isVisible());
        line->setOutcome({});
        QVERIFY(!line->isVisible());
    }

private:
    QLabel* icon(int i) const { return strip->findChild<QLabel*>(QStringLiteral("loggerIcon%1").arg(i + 1)); }

    FakePrompt prompt;
    QScopedPointer<Indicator> strip;
};

QTEST_MAIN(TestIndicator)
#include "test_indicator.moc"
