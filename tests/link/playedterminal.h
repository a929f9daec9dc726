#pragma once

#include <QByteArray>

#include <atomic>

/// Gives one terminal what a pseudo terminal has not: modem lines, bytes that do not leave, errors. The calls
/// to the system that this program makes for it are answered here.
struct PlayedTerminal
{
    static PlayedTerminal& instance();
    /// Plays the terminal of this path from its next opening on, all lines down.
    void play(const QByteArray& terminal);

    std::atomic_int openError{0};
    std::atomic_int lines{0}; ///< bits of TIOCMGET
    std::atomic_int linesError{0};
    std::atomic_int asked{0}; ///< for the lines
    std::atomic_int unsent{0};
    std::atomic_bool stalls{false}; ///< else one unsent byte leaves each time that their number is asked for
    std::atomic_int thrownAway{0};
    std::atomic_int descriptor{-1}; ///< while it is open
    QByteArray path;
};
