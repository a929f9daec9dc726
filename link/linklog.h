#pragma once

#include <QLoggingCategory>

/// The byte streams of the loggers. Quiet below information unless the category is switched on.
Q_DECLARE_LOGGING_CATEGORY(linkLog)
