#pragma once

#include <QtGlobal>

/// While it lives, the desktop is asked not to lock or blank the screen, nor to sleep. Where no desktop
/// listens, nothing happens.
class WakeKeeper
{
public:
    explicit WakeKeeper(const char* reason);
    ~WakeKeeper();
    Q_DISABLE_COPY(WakeKeeper)

private:
    unsigned cookie = 0;
    bool isKept = false;
};
