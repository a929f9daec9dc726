#include "firmware/burnsession.h"

#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcFirmware, "pellandra.firmware", QtInfoMsg)

constexpr int msForLoader = 10000; // the logger starts anew
constexpr int msQuiet = 300;
constexpr int msSecondReady = 1000; // it was asked for twice
constexpr int msString = 50;
constexpr int msForString = 2000;
constexpr int mostTries = 3;
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
    isVorta = data->isVorta();
    connect(data, &TembrinData::gotBootloaderMem, this, &BurnSession::verifyNextPacket);
    connect(data, &TembrinData::gotBootloaderCS, this, &BurnSession::verifyCS);
    connect(data, &TembrinData::gotBrevikString, this, &BurnSession::writeNextBrevikString);
    connect(tembrin, &TembrinProtocol::loggerDisconnected, this, &BurnSession::lost);
    connect(tembrin, &TembrinProtocol::openDone, this, &BurnSession::listen);
    listen();
}

void BurnSession::setPatience(int page, int erase, int sums)
{
    msPage = page;
    msErase = erase;
    msSums = sums;
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

void BurnSession::begin(const FirmwareImage& what, bool isWhole)
{
    listen();
    image = what;
    autoBurn = isWhole;
    writeOK = verifyOK = false;
    lastTransmitted = 0;
    sinceBegin.start();
}

void BurnSession::burn(const FirmwareImage& what)
{
    if (isBusy() || !what.fileOK)
        return;
    begin(what, true);
    if (!tembrin->isConnect) {
        finish(false, tr("The logger is not connected: connect it and press Burn."));
        return;
    }
    if (!image.hexFormat) {
        enter(State::SendingStrings, msForString);
        tembrin->sendCommand(CMD_BREVIK_WRITE_STRINGS, image.brevikLongData.constFirst());
        return;
    }
    if (image.flashPackets.isEmpty() && image.eepromPackets.isEmpty()) {
        finish(false, tr("The file has nothing for this logger's memory."));
        return;
    }
    Q_EMIT burnLabel(tr("starting the boot loader.."));
    enter(State::Entering, msForLoader);
    if (tembrin->isBootLoader)
        tembrin->sendBLCommand(CMD_BL_ASK_REPLY);
    startLoader();
}

void BurnSession::startLoader()
{
    if (tembrin->tembrinData->isVorta() && isVorta)
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
    tembrin->sendBLCommand(CMD_BL_ASK_REPLY);
}

void BurnSession::write(const FirmwareImage& what)
{
    if (isBusy() || !what.fileOK || !what.hexFormat)
        return;
    begin(what, false);
    beginWriting();
}

void BurnSession::verify(const FirmwareImage& what)
{
    if (isBusy() || !what.fileOK || !what.hexFormat)
        return;
    begin(what, false);
    beginReading();
}

void BurnSession::beginReading()
{
    lastTransmitted = 0;
    present = image.flashPackets.isEmpty() ? State::ReadingEeprom : State::ReadingFlash;
    readPage();
}

void BurnSession::cancel()
{
    if (isBusy())
        finish(
            false,
            tr("stopped at %1: press Burn to begin anew; the logger stays in its boot loader").arg(place()));
}

// --- What the logger says ---

void BurnSession::bootloaderReady(bool isVortaLoader, int version)
{
    const bool isSecond = sinceReady.isValid() && sinceReady.elapsed() < msSecondReady;
    if (present == State::Idle || present == State::Entering) {
        blVersion = version;
        isVorta = isVortaLoader;
        sinceReady.start();
        Q_EMIT ready();
    }
    if (present == State::Entering) {
        Q_EMIT burnLabel(tr("burning firmware.."));
        beginWriting();
    } else if (isBusy() && present != State::Erasing && !isSecond) {
        finish(false,
               tr("The logger has started anew at %1: press Burn to begin anew; the logger stays in its boot "
                  "loader")
                   .arg(place()));
    }
}

void BurnSession::beginWriting()
{
    sinceBegin.start();
    lastTransmitted = 0;
    tries = 0;
    isTwice = false;
    if (image.brevikFile || blVersion >= firstWithErase) {
        enter(State::Erasing, msErase);
        tembrin->sendBLCommand(image.brevikFile ? CMD_BL_SORREL_ERASE : CMD_BL_ERASE);
        return;
    }
    bootloaderEraseOK();
}

void BurnSession::bootloaderEraseOK()
{
    if (present != State::Erasing && present != State::Entering && present != State::Idle)
        return;
    if (present == State::Idle && autoBurn) // an answer to what was given up
        return;
    present = image.flashPackets.isEmpty() ? State::WritingEeprom : State::WritingFlash;
    lastTransmitted = 0;
    tries = 0;
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
}

/// A page was taken. If it was sent twice the answer to the other may follow, and is not one to the next
/// page.
void BurnSession::writeNextPacket()
{
    if ((present != State::WritingFlash && present != State::WritingEeprom) || quiet.isActive())
        return;
    answer.stop();
    const QString words = present == State::WritingFlash ? tr("PROG MEM 0x%1") : tr("EEPROM MEM 0x%1");
    Q_EMIT writeLabel(words.arg(list().at(lastTransmitted).start, 0, 16));
    if (isTwice)
        quiet.start(msQuiet);
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
    Q_EMIT progressed();
    sendPage();
}

bool BurnSession::hasSums() const
{
    return blVersion >= firstWithErase && !isVorta && !image.brevikFile;
}

void BurnSession::writingDone()
{
    writeOK = true;
    Q_EMIT writeLabel(image.brevikFile ? tr("brevik done") : tr("done"));
    if (!autoBurn) {
        finish(true, tr("written"));
    } else if (hasSums()) {
        enter(State::Checking, msSums);
        tembrin->sendBLCommand(CMD_BL_REQUEST_CS);
    } else if (readBack && !image.brevikFile) { // whose pages are longer than what can be read
        beginReading();
    } else {
        autoSuccess(tr("burn successful"));
    }
}

void BurnSession::verifyCS(int eepromCS, int flashCS)
{
    if (present != State::Checking)
        return;
    qCInfo(lcFirmware, "sums of the logger %x %x, of the file %x %x", unsigned(flashCS), unsigned(eepromCS),
           unsigned(image.flashCS), unsigned(image.eepromCS));
    if (eepromCS == image.eepromCS && flashCS == image.flashCS)
        autoSuccess(tr("burn successful"));
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
    if (present == State::WritingFlash || present == State::WritingEeprom) {
        Q_EMIT writeLabel(tr("write command failed"));
        finish(false,
               tr("write command failed at %1: press Burn to begin anew; the logger stays in its boot loader")
                   .arg(place()));
    } else if (present == State::ReadingFlash || present == State::ReadingEeprom) {
        Q_EMIT verifyLabel(tr("verify command failed"));
        finish(false, tr("verify command failed at %1").arg(place()));
    } else if (isBusy()) {
        finish(false, tr("The boot loader refused: press Burn to begin anew"));
    }
}

// --- Reading the pages back ---

void BurnSession::readPage()
{
    const bool isFlash = present == State::ReadingFlash;
    enter(present, msPage);
    tembrin->sendBLCommand(isFlash ? CMD_BL_READ_PROG_MEM_PAGE : CMD_BL_READ_EEPROM_PAGE,
                           list().at(lastTransmitted).start);
}

void BurnSession::verifyNextPacket(int address, const QByteArray& bytes)
{
    if (present != State::ReadingFlash && present != State::ReadingEeprom)
        return;
    if (address < 0) {
        Q_EMIT verifyLabel(tr("got bad CS"));
        finish(false, tr("got bad CS at %1: verify again").arg(place()));
        return;
    }
    const dataPacket& packet = list().at(lastTransmitted);
    const bool isFlash = present == State::ReadingFlash;
    if (address != packet.start && lastTransmitted > 0 && address == list().at(lastTransmitted - 1).start)
        return; // the page before was asked for twice
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
            verifyOK = true;
            Q_EMIT verifyLabel(tr("OK"));
            if (autoBurn)
                autoSuccess(tr("burn successful"));
            else
                finish(true, tr("verified"));
            return;
        }
        present = State::ReadingEeprom;
    }
    Q_EMIT progressed();
    readPage();
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
    Q_EMIT progressed();
    enter(State::SendingStrings, msForString);
    tembrin->sendCommandWithTimeout(CMD_BREVIK_WRITE_STRINGS, image.brevikLongData.at(lastTransmitted),
                                    msString);
}

// --- How it ends ---

void BurnSession::enter(State next, int ms)
{
    present = next;
    answer.start(ms);
    Q_EMIT progressed();
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
        finish(false, tr("The boot loader does not answer: connect again and press Burn."));
        break;
    case State::Erasing:
        finish(
            false,
            tr("The logger does not say that its memory is erased: press Burn to begin anew; it stays in its "
               "boot loader"));
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
        finish(false,
               tr("The logger does not tell what its memory holds: press Burn again; it stays in its boot "
                  "loader"));
        break;
    case State::ReadingFlash:
    case State::ReadingEeprom:
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
    const bool isReading = present == State::ReadingFlash || present == State::ReadingEeprom;
    const int done = pages() == 0 ? 0 : whole * (page() - 1) / pages();
    if (present == State::Checking)
        return whole;
    if (isReading)
        return whole / 2 + done / 2;
    return autoBurn && readBack && !hasSums() && !image.brevikFile ? done / 2 : done;
}

int BurnSession::secondsLeft() const
{
    const int done = page() - 1;
    if (!isBusy() || done < 2)
        return -1;
    return int(sinceBegin.elapsed() * (pages() - done) / done / 1000);
}
