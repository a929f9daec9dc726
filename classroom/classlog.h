#pragma once

#include <QLoggingCategory>

/// What goes to the loggers of a class, and in which order.
Q_DECLARE_LOGGING_CATEGORY(classLog)
