#pragma once

/// How many loggers a class has at most: the slots of the manager, the icons, the ports of a virtual class.
constexpr int mostLoggers = 8;
