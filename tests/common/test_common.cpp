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

    void coefficients_data()
    {
        columns<double, QString, int, QString>({"value", "unit", "power", "text"});
        row("four digits", 0.061234, "lx", 1, "0.06123 lx/s");
        row("rounding carries", 9.99996, "°C", 0, "10.00 °C");
        row("no digit before the point is lost", -123456.0, "km/h", 2, "-123456 (km/h)/s²");
        row("small", 0.00001234, "[pH]", 1, "1.234·10⁻⁵ pH/s");
        row("large, without a unit", 3e12, "", 1, "3.000·10¹² 1/s");
        row("nothing", 0.0, "V", 0, "0 V");
    }

    void coefficients()
    {
        const auto [value, unit, power] = fetched<double, QString, int>({"value", "unit", "power"});
        QTEST(Common::toSignificant(value) + QLatin1Char(' ') + Common::unitPer(unit, "s", power), "text");
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
