#pragma once

#include <QCoreApplication>
#include <QStandardPaths>

/// The application that a fuzz target runs in, made once. Settings are the defaults, whoever runs it.
inline void ensureApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
}
