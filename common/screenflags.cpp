#include "common/screenflags.h"

namespace {
bool screenIs4K = false;
}

bool ScreenFlags::is4K()
{
    return screenIs4K;
}

void ScreenFlags::set4K(bool tf)
{
    screenIs4K = tf;
}
