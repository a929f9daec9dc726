#pragma once

#include <QString>
#include <QStringList>

class QCoreApplication;

/// The steps that main() takes before there is a window.
namespace StartUp {

/// Does what the first command-line argument asks for and returns the file it names, or an empty text.
/// Arguments that mean nothing are ignored.
QString useArgument(const QStringList& arguments);

/// The locale part of a translation file's name. `language` is the setting, "def" for `systemLocale`.
QString localeName(const QString& language, const QString& systemLocale);

/// Installs the translations of the program and of the toolkit, as far as there are any.
void installTranslations(QCoreApplication* application);

/// The style sheet of the application, empty where it can't be read.
QString styleSheet();

/// While it lives, the first window on X11 comes without loading an OpenGL driver, a third of the time that
/// the start takes: everything is painted by the raster engine. What the environment says already holds.
/// Programs that are started later, such as viewers, inherit nothing of it.
class WithoutOpenGl
{
public:
    WithoutOpenGl();
    ~WithoutOpenGl();
    Q_DISABLE_COPY(WithoutOpenGl)

private:
    const bool isOurs;
};

/// Where the settings ask for it, writes the log to "log.txt" in the working directory and to the standard
/// streams, the debug lines of all rooms too. The file is removed at each start, wanted or not.
void startLog();

} // namespace StartUp
