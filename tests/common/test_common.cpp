#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include "common/common.h"
#include "common/settings.h"
#include "common/waits.h"
#include "tests/common/testsupport.h"

class TestCommon : public GuardedTest
{
    Q_OBJECT

private:
    void finish() override
    {
        Settings::mainStore().remove(QLatin1String(Settings::language));
        Common::forgetLocale();
    }

private Q_SLOTS:
    void numbersFollowTheLanguage_data()
    {
        columns<QString, QString, QString>({"language", "text", "quoted"});
        row("the system's", "def", "1234.50", "1234.50");
        row("English", "en", "1234.50", "1234.50");
        row("Polish", "pl", "1234,50", "\"1234,50\"");
        row("Russian", "ru", "1234,50", "\"1234,50\"");
        row("Brazil counts as Portuguese", "pt_BR", "1234,50", "\"1234,50\"");
        row("Azeri keeps the comma for columns", "az", "1234,50", "1234,50");
        row("the code counts in lower case only", "PL", "1234.50", "1234.50");
    }

    void numbersFollowTheLanguage()
    {
        QFETCH(QString, language);
        Settings::mainStore().setValue(QLatin1String(Settings::language), language);
        Common::forgetLocale();
        QTEST(Common::myToString(1234.5, 'f', 2), "text");
        QTEST(Common::myToStringOptionalQuotes(1234.5, 'f', 2), "quoted");
    }

    void aChangedLanguageWaitsForTheNextStart()
    {
        QVERIFY(!Common::isPolish());
        Settings::mainStore().setValue(QLatin1String(Settings::language), QStringLiteral("pl"));
        QVERIFY(!Common::isPolish());
    }

    void aWaitHandlesEventsAndEndsInTime()
    {
        bool ran = false;
        QTimer::singleShot(10, this, [&ran] { ran = true; });
        QElapsedTimer clock;
        clock.start();
        Waits::pump(40);
        QVERIFY(ran);
        QVERIFY2(clock.elapsed() >= 39 && clock.elapsed() < 500,
                 qPrintable(QString::number(clock.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestCommon)
#include "test_common.moc"
