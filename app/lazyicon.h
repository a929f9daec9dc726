#pragma once

#include <QIcon>

/// The icon of a file that is read when it is first painted. Reading the pictures of all buttons and lists
/// takes a good part of the start, and those in closed lists are rarely seen.
QIcon lazyIcon(const QString& file);
