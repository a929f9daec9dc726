#pragma once

#include "virtual/faultyline.h"
#include "virtual/virtuallogger.h"

#include <QPair>
#include <QStringList>

/// The command line, read and checked.
struct VirtualOptions
{
    struct LoggerFault
    {
        int logger; ///< from 0, -1 for all
        QString name;
        double value;
    };

    /// Ends the program for --help and --version. False, with the reason in `error`, if something is wrong.
    bool read(const QStringList& arguments, QString* error);

    QVector<LoggerIdentity> loggers;
    QVector<LoggerFault> faults;
    QString directory;
    int adapters = 0; ///< of the fake Bluetooth service; 0: the ports are terminals
    QString logFile;
    QString recordFile;
    QVector<QPair<double, QString>> script; ///< seconds after the start, command
};
