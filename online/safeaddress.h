#pragma once

#include <QHostAddress>
#include <QUrl>

/// What the program may say something to: a server over HTTPS, or this computer itself.
inline bool isSafeAddress(const QUrl& url)
{
    if (!url.isValid() || url.host().isEmpty())
        return false;
    const QHostAddress address(url.host());
    return url.scheme() == QLatin1String("https") ||
           (url.scheme() == QLatin1String("http") && address.isLoopback());
}
