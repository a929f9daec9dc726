#pragma once

#include <QByteArray>

/// What goes wrong in a boot loader; 0 for nothing. Pages count from 1 since it was entered or has erased,
/// and one that is sent again has the same number. Numbers as a command line gives them.
struct LoaderFaults
{
    double loader = 0;      ///< version; 0 for the usual one
    double badpage = 0;     ///< the page that is refused
    double silentpage = 0;  ///< the page that is neither taken nor answered
    double restartpage = 0; ///< the page at which the logger starts anew
    double badbyte = 0;     ///< address of a byte of program memory that never holds what was written
};

/// The boot loader of a logger and the memories that it writes. What it holds stays over restarts and lost
/// links.
class VirtualLoader
{
public:
    enum Kind
    {
        Tembrin,
        Vorta, ///< announces itself in another way, and does not erase
        Brevik ///< has larger pages, whose addresses count words
    };

    VirtualLoader(Kind kind, quint32 seed);

    bool isOn() const { return isEntered; }
    /// The logger starts in it. The answer is its announcement.
    QByteArray enter();
    /// The answer to a whole frame, empty if there is none.
    QByteArray obey(const QByteArray& frame);
    /// The same to bytes that are no frame.
    QByteArray hearJunk(const QByteArray& bytes) const;

    /// The length of a frame that writes a page.
    int pageFrame() const;
    QByteArray programMemory() const;
    /// Program memory and EEPROM as Intel HEX, without what is erased.
    QByteArray hex() const;

    LoaderFaults faults;

private:
    int version() const;
    bool canErase() const;
    QByteArray announce() const;
    QByteArray erase();
    QByteArray writePage(const QByteArray& frame);
    QByteArray writeEeprom(const QByteArray& frame);
    QByteArray readPage(int address) const;
    QByteArray readEeprom(int address) const;
    QByteArray sums() const;
    /// Whether a fault happens instead of writing a page; `answer` is then what comes of it.
    bool fails(quint32 place, QByteArray* answer);

    const Kind kind;
    QByteArray flash;
    QByteArray eeprom;
    bool isEntered = false;
    int page = 0;
    quint32 lastPlace = 0;
};
