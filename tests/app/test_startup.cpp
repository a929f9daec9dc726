#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTest>

#include "app/startup.h"
#include "common/settings.h"
#include "tests/common/testsupport.h"

class TestStartUp : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void theLocaleNamesATranslation_data()
    {
        columns<QString, QString, QString>({"language", "system", "name"});
        row("system", "def", "de_DE", "de");
        row("system Spanish", "def", "es_ES", "es-mx");
        row("system Chinese is told by its region in small letters", "def", "zh_CN", "zh");
        row("small region", "def", "zh-tw", "zh-tw");
        row("Portuguese", "pt", "ru_RU", "pt-br");
        row("Russian", "ru", "de_DE", "ru");
    }

    void theLocaleNamesATranslation()
    {
        QFETCH(QString, language);
        QFETCH(QString, system);
        QTEST(StartUp::localeName(language, system), "name");
    }

    void theArgumentIsUsed_data()
    {
        columns<QString, QString, bool, bool>({"argument", "file", "isJunior", "isPanel"});
        row("a file wins over its own name", "Lab.XML", "Lab.XML", false, false);
        row("lab ends panel mode", "--LAB", "", true, false);
        row("meter", "meter", "", false, true);
        row("anything else", "--help", "", false, false);
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

    void loggingWritesTheDebugLinesOfAllRooms()
    {
        const QTemporaryDir folder;
        const QString before = QDir::currentPath();
        QDir::setCurrent(folder.path());
        const QLoggingCategory room("pellandra.link", QtInfoMsg);
        StartUp::startLog();
        QVERIFY(!room.isDebugEnabled());
        Settings::mainStore().setValue(QLatin1String(Settings::logging), true);
        const QtMessageHandler guards = qInstallMessageHandler(nullptr);
        StartUp::startLog();
        qCDebug(room, "nine bytes");
        qInstallMessageHandler(guards);
        QLoggingCategory::setFilterRules({});
        Settings::mainStore().clear();
        QFile log(QStringLiteral("log.txt"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().endsWith(": nine bytes\n"));
        QDir::setCurrent(before);
    }
};

QTEST_GUILESS_MAIN(TestStartUp)
#include "test_startup.moc"
