#include "app/startup.h"

#include "common/settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTime>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>

namespace {
constexpr char glIntegration[] = "QT_XCB_GL_INTEGRATION"; // of the toolkit's X11 plug-in

const QString logFile = QStringLiteral("log.txt");

void toStream(FILE* stream, const char* kind, const QByteArray& text)
{
    std::fprintf(stream, "%s: %s\n", kind, text.constData());
}

// Stays open: the debug lines of eight loggers are a thousand a second. Each line is on the disk when a crash
// follows it.
void toFile(const QString& line)
{
    static QFile file(logFile);
    if (!file.isOpen() && !file.open(QIODevice::Append | QIODevice::Text))
        return;
    file.write(line.toLocal8Bit() + '\n');
    file.flush();
}

void crashingMessageHandler(QtMsgType type, const QMessageLogContext&, const QString& msg)
{
    const QByteArray text = msg.toLatin1();
    switch (type) {
    case QtDebugMsg:
    case QtInfoMsg:
        toFile(QStringLiteral("Debug(%1): ").arg(QTime::currentTime().toString()) + msg);
        toStream(stderr, "Debug", text);
        toStream(stdout, "Debug", text);
        break;
    case QtWarningMsg:
        toFile(QStringLiteral("Warning:") + msg);
        toStream(stderr, "Warning", text);
        break;
    case QtCriticalMsg:
        toFile(QStringLiteral("Critical:") + msg);
        toStream(stderr, "Critical", text);
        break;
    case QtFatalMsg:
        toFile(QStringLiteral("Fatal:") + msg);
        toStream(stderr, "Fatal", text);
        std::abort();
    }
}

// The working directory and its parent come first, so that a translator can try a file without installing it.
QStringList translationFolders()
{
    QStringList folders = {QStringLiteral("."), QStringLiteral(".."), QCoreApplication::applicationDirPath()};
    folders +=
        QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                  QStringLiteral("pellandra/translations"), QStandardPaths::LocateDirectory);
    folders << QDir(QCoreApplication::applicationDirPath())
                   .filePath(QStringLiteral("../share/pellandra/translations"))
            << QLibraryInfo::location(QLibraryInfo::TranslationsPath);
    return folders;
}

void installTranslation(QCoreApplication* application, const QString& fileName)
{
    auto* translator = new QTranslator(application);
    for (const QString& folder : translationFolders()) {
        if (translator->load(fileName, folder))
            break;
    }
    application->installTranslator(translator);
}

} // namespace

QString StartUp::useArgument(const QStringList& arguments)
{
    QString argument = arguments.value(1);
    if (argument.contains(QLatin1String(".xml"), Qt::CaseInsensitive) ||
        argument.endsWith(QLatin1String(".lesson"), Qt::CaseInsensitive))
        return argument;
    QSettings store = Settings::mainStore();
    if (argument.contains(QLatin1String("lab"), Qt::CaseInsensitive)) {
        store.setValue(QLatin1String(Settings::version), QStringLiteral("VestrelJunior"));
        store.setValue(QLatin1String(Settings::vestrelPanel), false);
    } else if (argument.contains(QLatin1String("meter"), Qt::CaseInsensitive)) {
        store.setValue(QLatin1String(Settings::vestrelPanel), true);
    }
    return QString();
}

QString StartUp::localeName(const QString& language, const QString& systemLocale)
{
    QString name = language;
    if (language == QLatin1String("def")) {
        if (systemLocale.contains(QLatin1String("cn")))
            name = QStringLiteral("zh-cn");
        else if (systemLocale.contains(QLatin1String("tw")))
            name = QStringLiteral("zh-tw");
        else
            name = systemLocale.left(2);
    }
    if (name.contains(QLatin1String("es")))
        name = QStringLiteral("es-mx");
    if (name.contains(QLatin1String("pt")))
        name = QStringLiteral("pt-br");
    return name;
}

void StartUp::installTranslations(QCoreApplication* application)
{
    const QString language =
        Settings::mainStore().value(QLatin1String(Settings::language), QStringLiteral("def")).toString();
    const QString locale = localeName(language, QLocale::system().name());
    installTranslation(application, QStringLiteral("pellandra_") + locale);
    installTranslation(application, QStringLiteral("qt_") + locale);
}

QString StartUp::styleSheet()
{
    QFile file(QStringLiteral(":/Kormelin.css"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

StartUp::WithoutOpenGl::WithoutOpenGl()
    : isOurs(!qEnvironmentVariableIsSet(glIntegration))
{
    if (isOurs)
        qputenv(glIntegration, "none");
}

StartUp::WithoutOpenGl::~WithoutOpenGl()
{
    if (isOurs)
        qunsetenv(glIntegration);
}

void StartUp::startLog()
{
    QFile::remove(logFile);
    if (!Settings::mainStore().value(QLatin1String(Settings::logging), false).toBool())
        return;
    qInstallMessageHandler(crashingMessageHandler);
    QLoggingCategory::setFilterRules(QStringLiteral("pellandra.*.debug=true"));
}
