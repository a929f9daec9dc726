#include "link/registrytree.h"

#include <QSettings>

#include <qt_windows.h>

namespace {

QString nativePath(const QString& path)
{
    return QString(path).replace(QLatin1Char('/'), QLatin1Char('\\'));
}

QSettings openKey(const QString& path)
{
    return QSettings(QStringLiteral("HKEY_LOCAL_MACHINE\\") + nativePath(path), QSettings::NativeFormat);
}

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace

QStringList RegistryTree::childGroups(const QString& path) const
{
    return openKey(path).childGroups();
}

QVariant RegistryTree::value(const QString& path) const
{
    return openKey(path.section(QLatin1Char('/'), 0, -2)).value(path.section(QLatin1Char('/'), -1));
}

// The settings class makes a text of binary values and loses what does not fit into one.
QByteArray RegistryTree::bytes(const QString& path) const
{
    const QString key = nativePath(path.section(QLatin1Char('/'), 0, -2));
    const QString name = path.section(QLatin1Char('/'), -1);
    HKEY handle = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, wide(key), 0, KEY_QUERY_VALUE, &handle) != ERROR_SUCCESS)
        return {};
    QByteArray all(64, '\0');
    DWORD size = DWORD(all.size());
    DWORD type = REG_NONE;
    const LONG result =
        ::RegQueryValueExW(handle, wide(name), nullptr, &type, reinterpret_cast<LPBYTE>(all.data()), &size);
    ::RegCloseKey(handle);
    return result == ERROR_SUCCESS && type == REG_BINARY ? all.left(int(size)) : QByteArray();
}
