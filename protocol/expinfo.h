#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

/// One row of a logger's table of stored experiments.
struct expInfo
{
    int expNum = 0;        ///< from 1
    QString sensNames;     ///< joined by ", "
    QStringList iconNames; ///< one per sensor
    int samples = 0;
    QString rate; ///< name of the rate
    QDateTime datetime;
    int ext1ID = 0; ///< sensor ID in the first external socket, 0 if the logger did not say
    int ext2ID = 0;
};
