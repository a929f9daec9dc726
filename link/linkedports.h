#pragma once

#include <QString>
#include <QVector>

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

/// Joins links to `devices`: a device whose port a link leads to goes by the link, whose name stays the same
/// when the system counts its terminals anew; the others become devices named after their links.
void addLinkedPorts(const QVector<LinkedPort>& links, QVector<possibleDevice>& devices);
