#include "firmware/burnsession.h"

#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcFirmware, "pellandra.firmware", QtInfoMsg)

constexpr int msQuiet = 300;
constexpr int msString = 50;
constexpr int mostTries = 3;
constexpr int triesOfLoader = 5;
constexpr int triesOfErase = 2;
constexpr int triesOfSums = 2;
constexpr int firstWithErase = 2; // version of the boot loader that erases and knows sums
constexpr int whole = 100;        // percent

} // namespace

BurnSession::BurnSession(TembrinProtocol* tembrin, QObject* parent)
    : QObject(parent)
    , tembrin(tembrin)
{
    answer.setSingleShot(true);
    quiet.setSingleShot(true);
    connect(&answer, &QTimer::timeout, this, &BurnSession::silence);
    connect(&quiet, &QTimer::timeout, this, &BurnSession::nextPage);
    const TembrinData* const data = tembrin->tembrinData;
    connect(data, &TembrinData::gotBootloaderMem, this, &BurnSession::verifyNextPacket);
    connect(data, &TembrinData::gotBootloaderCS, this, &BurnSession::verifyCS);
    connect(data, &TembrinData::gotBrevikString, this, &BurnSession::writeNextBrevikString);
    connect(tembrin, &TembrinProtocol::loggerDisconnected, this, &BurnSession::lost);
    connect(tembrin, &TembrinProtocol::openDone, this, &BurnSession::listen);
    listen();
}

void BurnSession::setPatience(int page, int erase, int sums, int loader)
{
    msPage = page;
    msErase = erase;
    msSums = sums;
    msLoader = loader;
}

/// To the line of this logger only, and once; each connection has another.
void BurnSession::listen()
{
    for (const QMetaObject::Connection& connection : qAsConst(listening))
        disconnect(connection);
    listening.clear();
    const PortListener* const line = tembrin->listener;
    if (!line)
        return;
    listening = {
        connect(line, &PortListener::bootloadReady, this, &BurnSession::bootloaderReady),
        connect(line, &PortListener::bootloadCommandOK, this, &BurnSession::writeNextPacket),
        connect(line, &PortListener::bootloadCommandBad, this, &BurnSession::badPacketSent),
        connect(line, &PortListener::bootloadEraseOK, this, &BurnSession::bootloaderEraseOK),
    };
}

// --- What a person asks for ---

/// False, and it has ended in words, if there is nothing to begin.
bool BurnSession::begin(const FirmwareImage& what, bool isWhole)
{
    listen();
    image = what;
    autoBurn = isWhole;
    writeOK = verifyOK = false;
    lastTransmitted = 0;
    tries = 0;
    isTwice = false;
    sinceBegin.start();
    const QString reason = whyNot();
    if (!reason.isEmpty())
        finish(false, reason);
    return reason.isEmpty();
}

QString BurnSession::whyNot() const
{
    if (!image.fileOK)
        return tr("There is no firmware to burn: open a file first.");
    if (pages() == 0)
        return tr("The file has nothing for this logger's memory.");
    if (!image.hexFormat && !autoBurn)
        return tr("A data file is sent as a whole: press Burn.");
    if (!tembrin->isConnect)
        return tr("The logger is not connected: connect it and press Burn.");
    return {};
}

void BurnSession::burn(const FirmwareImage& what)
{
    if (isBusy() || !begin(what, true))
        return;
    if (!image.hexFormat) {
        enter(State::SendingStrings, msPage);
        tembrin->sendCommand(CMD_BREVIK_WRITE_STRINGS, image.brevikLongData.constFirst());
        Q_EMIT progressed();
        return;
    }
    Q_EMIT burnLabel(tr("starting the boot loader.."));
    startFor(false);
}

/// A logger whose link was lost may be in its boot loader without anybody's knowing, so a silent one is asked
/// for both.
void BurnSession::startFor(bool isAgain)
{
    ++tries;
    enter(State::Entering, msLoader / triesOfLoader);
    if (tembrin->isBootLoader || isAgain)
        tembrin->sendBLCommand(CMD_BL_ASK_REPLY);
    startLoader();
    Q_EMIT progressed();
}

void BurnSession::startLoader()
{
    listen();
    if (tembrin->tembrinData->isVorta())
        tembrin->sendVortaCommand(CMD_VORTA_BL_RUN);
    else
        tembrin->sendBLCommand(CMD_BL_RUN);
}

void BurnSession::runSoftware()
{
    tembrin->sendBLCommand(CMD_BL_CONFIRM);
}

void BurnSession::askReply()
{
    listen();
    tembrin->sendBLCommand(CMD_BL_ASK_REPLY);
}

void BurnSession::write(const FirmwareImage& what)
{
    if (!isBusy() && begin(what, false))
        beginWriting();
}

void BurnSession::verify(const FirmwareImage& what)
{
    if (isBusy() || !begin(what, false))
        return;
    if (image.brevikFile)
        finish(false, tr("The pages of this device can't be read back."));
    else
        beginReading();
}

void BurnSession::cancel()
{
    if (isBusy())
        finish(
            false,
            tr("stopped at %1: press Burn to begin anew; the logger stays in its boot loader").arg(place()));
}

// --- What the logger says ---

/// Who was asked twice answers twice: only behind the first page is a ready report one of a restart.
void BurnSession::bootloaderReady(bool isVortaLoader, int version)
{
    const bool isFirstPage = isWriting() && page() == 1;
    if (present == State::Idle || present == State::Entering) {
        blVersion = version;
        isVorta = isVortaLoader;
        tembrin->tembrinData->setVorta(isVorta);
        Q_EMIT ready();
    }
    if (present == State::Entering) {
        Q_EMIT burnLabel(tr("burning firmware.."));
        beginWriting();
    } else if (isBusy() && present != State::Erasing && !isFirstPage) {
        finish(false,
               tr("The logger has started anew at %1: press Burn to begin anew; the logger stays in its boot "
                  "loader")
                   .arg(place()));
    }
}

void BurnSession::beginWriting()
{
    sinceBegin.start();
    tries = 0;
    if (image.brevikFile || blVersion >= firstWithErase)
        sendErase();
    else
        beginPages();
}

void BurnSession::sendErase()
{
    ++tries;
    enter(State::Erasing, msErase);
    tembrin->sendBLCommand(image.brevikFile ? CMD_BL_SORREL_ERASE : CMD_BL_ERASE);
    Q_EMIT progressed();
}

/// Behind a burn that was given up, an answer says nothing.
void BurnSession::bootloaderEraseOK()
{
    if (present == State::Erasing)
        beginPages();
}

void BurnSession::beginPages()
{
    present = image.flashPackets.isEmpty() ? State::WritingEeprom : State::WritingFlash;
    lastTransmitted = 0;
    tries = 0;
    isTwice = false;
    sendPage();
}

const QVector<dataPacket>& BurnSession::list() const
{
    const bool isEeprom = present == State::WritingEeprom || present == State::ReadingEeprom;
    return isEeprom ? image.eepromPackets : image.flashPackets;
}

void BurnSession::sendPage()
{
    const dataPacket& packet = list().at(lastTransmitted);
    ++tries;
    isTwice = tries > 1;
    enter(present, msPage);
    tembrin->sendBLCommand(present == State::WritingEeprom ? CMD_BL_WRITE_EEPROM_PAGE
                                                           : CMD_BL_WRITE_PROG_MEM_PAGE,
                           packet.start, packet.data);
    Q_EMIT progressed();
}

/// A page was taken. If it was sent twice the answer to the other may follow, and is not one to the next
/// page.
void BurnSession::writeNextPacket()
{
    if (!isWriting() || quiet.isActive())
        return;
    answer.stop();
    const QString words = present == State::WritingFlash ? tr("PROG MEM 0x%1") : tr("EEPROM MEM 0x%1");
    Q_EMIT writeLabel(words.arg(list().at(lastTransmitted).start, 0, 16));
    if (isTwice)
        quiet.start(qMin(msQuiet, msPage));
    else
        nextPage();
}

void BurnSession::nextPage()
{
    tries = 0;
    isTwice = false;
    if (++lastTransmitted >= list().size()) {
        lastTransmitted = 0;
        if (present == State::WritingEeprom || image.eepromPackets.isEmpty()) {
            writingDone();
            return;
        }
        present = State::WritingEeprom;
    }
    sendPage();
}

bool BurnSession::hasSums() const
{
    return blVersion >= firstWithErase && !isVorta && !image.brevikFile;
}

/// The pages of a Brevik are longer than what can be read back.
bool BurnSession::willReadBack() const
{
    return autoBurn && readBack && !hasSums() && !image.brevikFile;
}

void BurnSession::writingDone()
{
    writeOK = true;
    Q_EMIT writeLabel(image.brevikFile ? tr("brevik done") : tr("done"));
    if (!autoBurn) {
        finish(true, tr("written"));
    } else if (hasSums()) {
        tries = 0;
        askSums();
    } else if (willReadBack()) {
        beginReading();
    } else {
        autoSuccess(tr("burn successful"));
    }
}

void BurnSession::askSums()
{
    ++tries;
    enter(State::Checking, msSums / triesOfSums);
    tembrin->sendBLCommand(CMD_BL_REQUEST_CS);
    Q_EMIT progressed();
}

void BurnSession::verifyCS(int eepromCS, int flashCS)
{
    if (present != State::Checking)
        return;
    qCInfo(lcFirmware, "sums of the logger %x %x, of the file %x %x", unsigned(flashCS), unsigned(eepromCS),
           unsigned(image.flashCS), unsigned(image.eepromCS));
    // The answer itself may have been damaged on its way.
    if (eepromCS == image.eepromCS && flashCS == image.flashCS)
        autoSuccess(tr("burn successful"));
    else if (tries < triesOfSums)
        askSums();
    else
        finish(false,
               tr("The logger's memory is not what the file says: press Burn again; the logger stays in its "
                  "boot loader"));
}

/// The logger starts its new software.
void BurnSession::autoSuccess(const QString& words)
{
    tembrin->ignoreOneBootLoaderReady = true;
    tembrin->sendBLCommand(CMD_BL_CONFIRM);
    tembrin->isBootLoader = false;
    finish(true, words);
}

void BurnSession::badPacketSent()
{
    if (isWriting()) {
        Q_EMIT writeLabel(tr("write command failed"));
        finish(false,
               tr("write command failed at %1: press Burn to begin anew; the logger stays in its boot loader")
                   .arg(place()));
    } else if (isReading()) {
        Q_EMIT verifyLabel(tr("verify command failed"));
        finish(false, tr("verify command failed at %1").arg(place()));
    } else if (isBusy()) {
        finish(false, tr("The boot loader refused: press Burn to begin anew"));
    }
}

// --- Reading the pages back ---

void BurnSession::beginReading()
{
    present = image.flashPackets.isEmpty() ? State::ReadingEeprom : State::ReadingFlash;
    lastTransmitted = 0;
    tries = 0;
    readPage();
}

void BurnSession::readPage()
{
    const bool isFlash = present == State::ReadingFlash;
    ++tries;
    enter(present, msPage);
    tembrin->sendBLCommand(isFlash ? CMD_BL_READ_PROG_MEM_PAGE : CMD_BL_READ_EEPROM_PAGE,
                           list().at(lastTransmitted).start);
    Q_EMIT progressed();
}

/// Within a burn, an answer that is lost or damaged is asked for again.
bool BurnSession::tryAgain(int most)
{
    if (!autoBurn || tries >= most)
        return false;
    readPage();
    return true;
}

void BurnSession::verifyNextPacket(int address, const QByteArray& bytes)
{
    if (!isReading() || (address < 0 && tryAgain(mostTries)))
        return;
    if (address < 0) {
        Q_EMIT verifyLabel(tr("got bad CS"));
        finish(false, tr("got bad CS at %1: verify again").arg(place()));
        return;
    }
    const dataPacket& packet = list().at(lastTransmitted);
    const bool isFlash = present == State::ReadingFlash;
    const bool isEarlier = lastTransmitted > 0 && address == list().at(lastTransmitted - 1).start;
    if (address != packet.start && (isEarlier || bytes.size() != packet.data.size()))
        return; // the page before was asked for twice; it may be one of the other memory
    tembrin->stopBLTimer();
    const QString words = (isFlash ? tr("PROG MEM 0x%1") : tr("EEPROM MEM 0x%1")).arg(packet.start, 0, 16);
    if (packet.compare(address, bytes) != 0) {
        Q_EMIT verifyLabel(isFlash ? words + tr(" Fail") : tr("EEPROM check - fail"));
        finish(false, tr("%1 is not what the file says: press Burn again").arg(words));
        return;
    }
    Q_EMIT verifyLabel(words);
    if (++lastTransmitted >= list().size()) {
        lastTransmitted = 0;
        if (!isFlash || image.eepromPackets.isEmpty()) {
            readingDone();
            return;
        }
        present = State::ReadingEeprom;
    }
    tries = 0;
    readPage();
}

void BurnSession::readingDone()
{
    verifyOK = true;
    Q_EMIT verifyLabel(tr("OK"));
    if (autoBurn)
        autoSuccess(tr("burn successful"));
    else
        finish(true, tr("verified"));
}

// --- Strings for a running Brevik ---

void BurnSession::writeNextBrevikString()
{
    if (present != State::SendingStrings)
        return;
    tembrin->stopCmdTimer();
    Q_EMIT burnLabel(tr("line %1 OK").arg(lastTransmitted));
    if (++lastTransmitted >= image.brevikLongData.size()) {
        finish(true, tr("Done! %1 lines sent").arg(lastTransmitted));
        return;
    }
    enter(State::SendingStrings, msPage);
    tembrin->sendCommandWithTimeout(CMD_BREVIK_WRITE_STRINGS, image.brevikLongData.at(lastTransmitted),
                                    msString);
    Q_EMIT progressed();
}

// --- How it ends ---

void BurnSession::enter(State next, int ms)
{
    present = next;
    answer.start(ms);
}

void BurnSession::lost()
{
    if (isBusy())
        finish(false,
               tr("interrupted at %1: connect again and press Burn; the logger stays in its boot loader")
                   .arg(place()));
    listen();
}

void BurnSession::silence()
{
    switch (present) {
    case State::Entering:
        if (tries < triesOfLoader)
            startFor(true);
        else
            finish(false, tr("The boot loader does not answer: connect again and press Burn."));
        break;
    case State::Erasing:
        if (tries < triesOfErase)
            sendErase();
        else
            finish(false, tr("The logger does not say that its memory is erased: press Burn to begin anew; "
                             "it stays in its boot loader"));
        break;
    case State::WritingFlash:
    case State::WritingEeprom:
        if (tries < mostTries)
            sendPage();
        else
            finish(false, tr("No answer at %1: press Burn to begin anew; the logger stays in its boot loader")
                              .arg(place()));
        break;
    case State::Checking:
        if (tries < triesOfSums)
            askSums();
        else
            finish(
                false,
                tr("The logger does not tell what its memory holds: press Burn again; it stays in its boot "
                   "loader"));
        break;
    case State::ReadingFlash:
    case State::ReadingEeprom:
        if (tryAgain(mostTries))
            break;
        if (autoBurn && page() == 1) // it can't do that
            autoSuccess(tr("burn finished; this logger does not let its pages be compared"));
        else
            finish(false, tr("No answer at %1: verify again").arg(place()));
        break;
    case State::SendingStrings:
        finish(false, tr("No answer to line %1: press Burn to begin anew").arg(lastTransmitted));
        break;
    case State::Idle:
        break;
    }
}

void BurnSession::finish(bool isGood, const QString& words)
{
    answer.stop();
    quiet.stop();
    tembrin->stopBLTimer();
    tembrin->stopCmdTimer();
    present = State::Idle;
    autoBurn = false;
    qCInfo(lcFirmware).noquote() << "logger" << tembrin->index << words;
    Q_EMIT burnLabel(words);
    Q_EMIT progressed();
    Q_EMIT ended(isGood, words);
}

int BurnSession::pages() const
{
    return image.hexFormat ? image.flashPackets.size() + image.eepromPackets.size()
                           : image.brevikLongData.size();
}

int BurnSession::page() const
{
    const bool isEeprom = present == State::WritingEeprom || present == State::ReadingEeprom;
    return qMin(lastTransmitted + (isEeprom ? image.flashPackets.size() : 0) + 1, pages());
}

QString BurnSession::place() const
{
    return tr("page %1 of %2").arg(page()).arg(pages());
}

int BurnSession::percent() const
{
    if (present == State::Idle)
        return writeOK || verifyOK ? whole : 0;
    const int done = pages() == 0 ? 0 : whole * (page() - 1) / pages();
    if (present == State::Checking)
        return whole;
    return isReading() ? whole / 2 + done / 2 : willReadBack() ? done / 2 : done;
}

int BurnSession::secondsLeft() const
{
    const int done = page() - 1;
    if (!isBusy() || done < 2)
        return -1;
    return int(sinceBegin.elapsed() * (pages() - done) / done / 1000);
}
