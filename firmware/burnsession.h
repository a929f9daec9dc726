#pragma once

#include <QElapsedTimer>
#include <QMetaObject>
#include <QObject>
#include <QTimer>
#include <QVector>

#include "firmware/firmwareimage.h"
#include "link/commandtype.h"

class TembrinProtocol;

/// Brings a firmware image into one logger: asks for its boot loader, erases, writes page by page, has the
/// sums compared and restarts the logger. Whatever happens on the way ends in ended() with words: nothing is
/// left waiting.
///
/// The logger stays in its boot loader until a burn was successful, and takes the next burn from there.
class BurnSession : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Idle,
        Entering, ///< the boot loader is asked for
        Erasing,
        WritingFlash,
        WritingEeprom,
        Checking, ///< the sums
        ReadingFlash,
        ReadingEeprom,
        SendingStrings
    };
    Q_ENUM(State)

    explicit BurnSession(TembrinProtocol* tembrin, QObject* parent = nullptr);

    /// All of it. A data file goes to the running device instead, string by string. Nothing if something is
    /// under way, as with write() and verify().
    void burn(const FirmwareImage& image);
    /// Single steps, for the manual face. Writing and verifying need a logger in its boot loader.
    void startLoader();
    void write(const FirmwareImage& image);
    void verify(const FirmwareImage& image);
    void runSoftware();
    void askReply();
    /// Ends what is under way, in words.
    void cancel();

    State state() const { return present; }
    bool isBusy() const { return present != State::Idle; }
    /// The page that is under way, from 1, and how many there are.
    int page() const;
    int pages() const;
    /// Of the whole burn; writing is all of it, or the first half where verifying follows.
    int percent() const;
    /// By the pace so far; −1 while it is not known.
    int secondsLeft() const;
    /// The boot loader tells the sums of its memory. One of version 1, and that of a Vorta, does not.
    bool hasSums() const;
    /// Whether a burn reads all pages back where there are no sums; on at the start.
    void setReadBack(bool isOn) { readBack = isOn; }
    bool isWritten() const { return writeOK; }
    bool isVerified() const { return verifyOK; }
    int loaderVersion() const { return blVersion; }
    /// How long an answer to a page or string, to erasing, to the question for the sums or to that for the
    /// boot loader may take; for tests.
    void setPatience(int page, int erase, int sums, int loader);

Q_SIGNALS:
    void ready(); ///< the boot loader has answered
    void progressed();
    void writeLabel(const QString& text);
    void verifyLabel(const QString& text);
    void burnLabel(const QString& text);
    /// Exactly once for each burn(), write(), verify().
    void ended(bool isGood, const QString& words);

private:
    void listen();
    void bootloaderReady(bool isVorta, int version);
    void bootloaderEraseOK();
    void writeNextPacket();
    void badPacketSent();
    void verifyNextPacket(int address, const QByteArray& bytes);
    void verifyCS(int eepromCS, int flashCS);
    void writeNextBrevikString();
    void lost();
    void silence();

    bool begin(const FirmwareImage& what, bool isWhole);
    QString whyNot() const;
    void startFor(bool isAgain);
    void beginWriting();
    void sendErase();
    void beginPages();
    void beginReading();
    void sendPage();
    void nextPage();
    void writingDone();
    void readPage();
    void readingDone();
    bool tryAgain(int most);
    void askSums();
    void autoSuccess(const QString& words);
    bool willReadBack() const;
    bool isReading() const { return present == State::ReadingFlash || present == State::ReadingEeprom; }
    bool isWriting() const { return present == State::WritingFlash || present == State::WritingEeprom; }
    void enter(State next, int ms);
    void finish(bool isGood, const QString& words);
    QString place() const;
    const QVector<dataPacket>& list() const;

    TembrinProtocol* const tembrin;
    QVector<QMetaObject::Connection> listening;
    FirmwareImage image;
    State present = State::Idle;
    bool autoBurn = false;
    bool readBack = true;
    bool writeOK = false;
    bool verifyOK = false;
    bool isVorta = false;
    int blVersion = 0;
    int lastTransmitted = 0; ///< place in the list of the page in flight
    int tries = 0;           ///< of it, or of what is asked for
    bool isTwice = false;    ///< an answer to the first try may still come
    QTimer answer;           ///< until it is given up to wait for one
    QTimer quiet;            ///< for the answer to a page that was sent twice
    QElapsedTimer sinceBegin;
    int msPage = 2000;
    int msErase = 10000;
    int msSums = 5000;
    int msLoader = 10000; ///< the logger starts anew
};
