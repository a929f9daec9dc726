#include <QTest>

#include "app/common/settings.h"
#include "app/startup.h"

class TestStartUp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLocaleNamesATranslation_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("system");
        QTest::addColumn<QString>("name");
        QTest::newRow("system") << "def"
                                << "de_DE"
                                << "de";
        QTest::newRow("system Spanish") << "def"
                                        << "es_ES"
                                        << "es-mx";
        QTest::newRow("system Chinese is told by its region in small letters") << "def"
                                                                               << "zh_CN"
                                                                               << "zh";
        QTest::newRow("small region") << "def"
                                      << "zh-tw"
                                      << "zh-tw";
        QTest::newRow("Portuguese") << "pt"
                                    << "ru_RU"
                                    << "pt-br";
        QTest::newRow("Russian") << "ru"
                                 << "de_DE"
                                 << "ru";
    }

    void theLocaleNamesATranslation()
    {
        QFETCH(QString, language);
        QFETCH(QString, system);
        QTEST(StartUp::localeName(language, system), "name");
    }

    void theArgumentIsUsed_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("isJunior");
        QTest::addColumn<bool>("isPanel");
        QTest::newRow("a file wins over its own name") << "Lab.XML"
                                                       << "Lab.XML" << false << false;
        QTest::newRow("lab ends panel mode") << "--LAB"
                                             << "" << true << false;
        QTest::newRow("meter") << "meter"
                               << "" << false << true;
        QTest::newRow("anything else") << "--help"
                                       << "" << false << false;
    }

    void theArgumentIsUsed()
    {
        QFETCH(QString, argument);
        QFETCH(bool, isPanel);
        Settings::mainStore().clear();
        if (!isPanel && argument.contains(QLatin1String("LAB")))
            Settings::mainStore().setValue(QLatin1String(Settings::vestrelPanel), true);
        QTEST(StartUp::useArgument({QStringLiteral("pellandra"), argument}), "file");
        QTEST(Settings::isJuniorEdition(), "isJunior");
        QCOMPARE(Settings::mainStore().value(QLatin1String(Settings::vestrelPanel), false).toBool(), isPanel);
        Settings::mainStore().clear();
    }
};

QTEST_GUILESS_MAIN(TestStartUp)
#include "test_startup.moc"
