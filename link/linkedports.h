#pragma once

#include <QString>
#include <QVector>

#include <functional>

#include "link/possibledevice.h"

/// A directory that may hold links to terminals, each named after its logger.
struct LinkPlace
{
    QString directory;
    bool isForLoggers; ///< every link in it is one; else only those with a logger's name
};

/// A named link and what it leads to.
struct LinkedPort
{
    QString path;
    QString terminal; ///< without links
};

/// The links under /dev that rules of the system make, and the user's own directory, in which virtual loggers
/// appear.
QVector<LinkPlace> systemLinkPlaces();

/// The links in these places that lead to terminals, ordered by name; the first one counts where several lead
/// to one terminal.
QVector<LinkedPort> readLinkedPorts(const QVector<LinkPlace>& places);

/// Where the kernel lists its terminals: a directory each.
QString systemTerminals();

/// The address, 12 hexadecimal digits, of the radio device that a terminal is bound to. `port` is a name
/// under /dev or a path, which may be a link; `terminals` as systemTerminals(). Empty for all others.
QString boundAddress(const QString& port, const QString& terminals);

/// Joins links to `devices`: a link to a terminal that is bound to one of them is that device and no other;
/// the others become devices named after their links. `addressOf` tells what a terminal is bound to.
void addLinkedPorts(const QVector<LinkedPort>& links,
                    const std::function<QString(const QString& terminal)>& addressOf,
                    QVector<possibleDevice>& devices);
