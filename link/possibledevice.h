#pragma once

#include <QString>

/// One paired device that may be a logger.
struct possibleDevice
{
    QString portName;
    QString address; ///< 12 hexadecimal digits
    QString service;
    QString name; ///< shown to the user
    QString groupName;
};
