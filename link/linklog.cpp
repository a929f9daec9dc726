#include "link/linklog.h"

Q_LOGGING_CATEGORY(linkLog, "pellandra.link", QtInfoMsg)
