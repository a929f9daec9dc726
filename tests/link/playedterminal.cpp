#include "tests/link/playedterminal.h"

#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

template<typename Function> Function systems(Function, const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

int fail(int code)
{
    errno = code;
    return -1;
}

} // namespace

PlayedTerminal& PlayedTerminal::instance()
{
    static PlayedTerminal played;
    return played;
}

void PlayedTerminal::play(const QByteArray& terminal)
{
    path = terminal;
    for (std::atomic_int* number : {&openError, &lines, &linesError, &asked, &unsent, &thrownAway})
        *number = 0;
    stalls = false;
    descriptor = -1;
}

// A program's own functions come before those of the system, for the libraries too.
extern "C" {

int open64(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0;
    va_end(more);
    static const auto next = systems(&::open64, "open64");
    PlayedTerminal& played = PlayedTerminal::instance();
    if (played.path.isEmpty() || played.path != path)
        return next(path, flags, mode);
    if (played.openError != 0)
        return fail(played.openError);
    return played.descriptor = next(path, flags, mode);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list more;
    va_start(more, request);
    void* answer = va_arg(more, void*);
    va_end(more);
    static const auto next = systems(&::ioctl, "ioctl");
    PlayedTerminal& played = PlayedTerminal::instance();
    if (descriptor != played.descriptor || (request != TIOCMGET && request != TIOCOUTQ))
        return next(descriptor, request, answer);
    if (request == TIOCMGET) {
        ++played.asked;
        if (played.linesError != 0)
            return fail(played.linesError);
    } else if (played.unsent > 0 && !played.stalls) {
        --played.unsent;
    }
    *static_cast<int*>(answer) = request == TIOCMGET ? played.lines : played.unsent;
    return 0;
}

int tcflush(int descriptor, int queue) noexcept
{
    static const auto next = systems(&::tcflush, "tcflush");
    PlayedTerminal& played = PlayedTerminal::instance();
    if (descriptor != played.descriptor || queue != TCOFLUSH)
        return next(descriptor, queue);
    played.thrownAway += played.unsent.exchange(0);
    return 0;
}

int close(int descriptor)
{
    static const auto next = systems(&::close, "close");
    PlayedTerminal& played = PlayedTerminal::instance();
    if (descriptor == played.descriptor) {
        for (int ms = 0; ms < 3000 && played.unsent > 0; ++ms)
            ::usleep(1000);
        played.descriptor = -1;
    }
    return next(descriptor);
}
}
