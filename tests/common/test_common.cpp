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

    void valuesWithErrors_data()
    {
        columns<double, double, QString>({"value", "error", "text"});
        row("usual", 55.2345, 0.1234, QStringLiteral("55.23 ± 0.12"));
        row("carried", 55.2345, 0.0996, QStringLiteral("55.23 ± 0.10"));
        row("large", 123456.0, 2345.0, QStringLiteral("123500 ± 2300"));
        row("wider than the value", 0.3, 12.0, QStringLiteral("0 ± 12"));
        row("small", -0.001111, 0.0000123, QStringLiteral("-0.001111 ± 0.000012"));
        row("very small", 1.2341e-7, 1.2e-9, QStringLiteral("(1.234 ± 0.012)·10⁻⁷"));
        row("exact", 2.5, 0.0, QStringLiteral("2.50000 ± 0"));
        row("unknown", 2.5, qQNaN(), QStringLiteral("2.500"));
    }

    void valuesWithErrors()
    {
        const auto [value, error] = fetched<double, double>({"value", "error"});
        QTEST(Common::withError(value, error), "text");
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
