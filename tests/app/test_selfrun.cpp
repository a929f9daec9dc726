#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "app/keptruns.h"
#include "app/selfrun.h"
#include "app/selfrundialog.h"
#include "common/settings.h"
#include "tests/app/windowbench.h"
#include "virtual/wire.h"

/// Runs that begin and end by themselves, on the real window with two virtual loggers.
class TestSelfRun : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        guard->expect(QStringLiteral("propagateSizeHints"));
        start({});
    }
    void start(const QVector<const char*>& switchedOff)
    {
        bench.reset();
        const LoggerIdentity birch = VirtualBench::identity("Birch", "10/Sec");
        bench.reset(new WindowBench({birch, birch}, switchedOff));
        bench->connectAll();
        QTRY_VERIFY(bench->action("runAct")->isEnabled());
        bench->forgetHeard();
    }
    void finish() override { bench.reset(); }

    template<class W> W* part(const char* name) const
    {
        return bench->window->findChild<W*>(QLatin1String(name));
    }
    SelfRunDialog* ask() const
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the one before
        bench->action("selfRunAct")->trigger();
        return part<SelfRunDialog>("selfRunDialog");
    }
    template<class W> static W* in(QDialog* dialog, const char* name)
    {
        return dialog->findChild<W*>(QLatin1String(name));
    }
    void countDown(int seconds, double stopAfter, int times) const
    {
        SelfRunDialog* const dialog = ask();
        in<QAbstractButton>(dialog, "afterCountdown")->click();
        in<QSpinBox>(dialog, "countdown")->setValue(seconds);
        in<QAbstractButton>(dialog, "stops")->setChecked(stopAfter > 0);
        in<QDoubleSpinBox>(dialog, "stopAfter")->setValue(stopAfter);
        in<QSpinBox>(dialog, "times")->setValue(times);
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    }
    bool isSaid() const { return part<QWidget>("selfRunLine") && part<QWidget>("selfRunLine")->isVisible(); }
    QString said() const { return part<QLabel>("selfRunWords")->text(); }
    int starts() const { return bench->runs(0) + bench->runs(1); }

    QScopedPointer<WindowBench> bench;

private Q_SLOTS:
    void runsTwiceAndKeepsBoth()
    {
        countDown(1, 0.5, 2);
        QVERIFY(isSaid() && bench->action("stopAct")->isVisible() && !bench->action("runAct")->isVisible());
        QVERIFY(part<QWidget>("selfRunWords")->width() > 300); // it is read
        QVERIFY2(said().contains("Run 1 of 2 begins in 1 s"), qPrintable(said()));
        QTRY_COMPARE(starts(), 2);
        QTRY_VERIFY(said().contains("Run 1 of 2 stops in"));
        QTRY_COMPARE_WITH_TIMEOUT(starts(), 4, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(!isSaid(), 20000);
        QVERIFY(!bench->isRunning(0) && !bench->isRunning(1));
        QCOMPARE(bench->window->findChild<KeptRuns*>()->all().size(), 1); // the second one is on the graphs
        QVERIFY(bench->data(0)->getXSize() >= 4);
        QVERIFY(!bench->action("stopAct")->isVisible());
    }

    void escGivesUpAndTellsNobody()
    {
        countDown(1, 0, 1);
        QTest::keyClick(bench->window.data(), Qt::Key_Escape);
        QVERIFY(!isSaid() && !bench->action("stopAct")->isVisible());
        countDown(3600, 0, 1);
        part<QPushButton>("selfRunStop")->click();
        QVERIFY(!isSaid());
        QTest::qWait(1200); // longer than the countdown
        QCOMPARE(starts() + bench->heard(0, Wire::Stop) + bench->heard(1, Wire::Stop), 0);
    }

    void twoThingsAtOnce()
    {
        countDown(1, 0, 1);
        SelfRunDialog* const dialog = ask(); // a question stands as the time is over
        QTRY_VERIFY2(said().contains("as soon as"), qPrintable(said()));
        QCOMPARE(starts(), 0);
        bench->pull(1);
        QTRY_VERIFY(!bench->isReady(1) || !bench->manager->isTembrinConnect(1));
        dialog->reject();
        QTRY_COMPARE(bench->runs(0), 1);
        QVERIFY(!isSaid()); // a plan without an end is done
        bench->action("stopAct")->trigger();
        QTRY_VERIFY(!bench->isRunning(0));
        bench->pull(0);
        QTRY_VERIFY(!bench->manager->isTembrinConnect(0));
        countDown(1, 0, 1); // nobody is there
        QVERIFY(!isSaid());
    }

    void aLevelIsInTheUnitOfTheScreen()
    {
        start({Settings::unitsCelsius});
        SelfRunDialog* const dialog = ask();
        in<QAbstractButton>(dialog, "atLevel")->click();
        auto* const sensors = in<QComboBox>(dialog, "sensor");
        const int ambient = sensors->findText("Amb. Temperature");
        QVERIFY(ambient >= 0);
        sensors->setCurrentIndex(ambient);
        auto* const go = dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
        in<QLineEdit>(dialog, "level")->setText("warm");
        QVERIFY(!go->isEnabled());
        in<QLineEdit>(dialog, "level")->setText("86");
        QCOMPARE(dialog->plan().level, 30.0);
        QVERIFY2(dialog->plan().condition.contains("86"), qPrintable(dialog->plan().condition));
        go->click();
        QTRY_VERIFY(bench->heard(0, Wire::Snapshot) > 1 && bench->heard(1, Wire::Snapshot) > 1);
        QTRY_VERIFY2(!said().contains("No value"), qPrintable(said()));
        QCOMPARE(starts(), 0);
        bench->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(bench->window.data()));
        QTest::keyClick(bench->window.data(), Qt::Key_F5);
        QTRY_COMPARE(starts(), 2);
    }
};

QTEST_MAIN(TestSelfRun)
#include "test_selfrun.moc"
