#include "virtual/virtuallogger.h"

#include "sensors/sensor.h"
#include "sensors/sensorids.h"
#include "virtual/models.h"
#include "virtual/rates.h"

namespace {

constexpr quint8 flagBluetooth = 1 << 2;
constexpr quint8 flagGps = 1 << 3;
constexpr qint64 clockTick = 1000000;   // ns; the logger's clock counts milliseconds
constexpr qint64 longPause = 500000000; // ns; what has not come whole by then does not go on
constexpr int longHead = 3;
constexpr int longSum = 2;

VirtualLoader::Kind loaderOf(const LoggerModel& model)
{
    return model.code == LoggerModel::Vorta    ? VirtualLoader::Vorta
           : model.code == LoggerModel::Sorrel ? VirtualLoader::Brevik
                                               : VirtualLoader::Tembrin;
}

} // namespace

VirtualLogger::VirtualLogger(const LoggerIdentity& identity, qint64 now, const QDateTime& utc)
    : self(identity)
    , loader(loaderOf(*identity.model), identity.seed)
    , switchedOn(now)
    // The clock of a logger that nobody has set for a while.
    , clockBase(utc.addSecs(-120 - int(identity.seed % 600)))
    , clockSet(now)
    , trigger(QByteArray::fromHex("00070019"))
    , range(QByteArray::fromHex("FF0000"))
    , flags(flagBluetooth | flagGps)
{
    writer.setForce(SENSOR_VORTA_FORCE50, forceOffset50, forceGain * 0.1F);
    writer.setForce(SENSOR_VORTA_FORCE5, forceOffset5, forceGain);
    cutter.setPageFrame(loader.pageFrame());
    storeInitialExperiments(now);
}

LoggerPackets VirtualLogger::receive(const QByteArray& bytes, qint64 now)
{
    LoggerPackets out = advance(now);
    if (now - lastHeard > longPause)
        cutter.clear();
    lastHeard = now;
    cutter.add(bytes);
    QByteArray frame;
    Wire::CommandCutter::Kind kind;
    while (cutter.next(&frame, &kind)) {
        if (heard)
            heard(frame);
        if (loader.isOn())
            obeyLoader(frame, kind == Wire::CommandCutter::Command, out);
        else if (kind == Wire::CommandCutter::Command)
            obey(frame, now, out);
    }
    return out;
}

void VirtualLogger::obeyLoader(const QByteArray& frame, bool isWhole, LoggerPackets& out)
{
    const QByteArray answer = isWhole ? loader.obey(frame) : loader.hearJunk(frame);
    if (!answer.isEmpty())
        out.append(LoggerPacket{answer});
}

/// The logger starts anew, so whatever it was doing is over.
void VirtualLogger::enterLoader(LoggerPackets& out)
{
    run.isOn = false;
    download.isOn = false;
    tableNext = 0;
    out.append(LoggerPacket{loader.enter()});
}

/// The questions of both families go out to everybody; each answers its own.
void VirtualLogger::obey(const QByteArray& frame, qint64 now, LoggerPackets& out)
{
    if (Wire::isLoaderEntry(frame, isVorta())) {
        enterLoader(out);
        return;
    }
    if (isVorta()) {
        obeyVorta(frame, now, out);
        return;
    }
    if (quint8(frame[0]) != 0x47 || quint8(frame[1]) != 0x14)
        return;
    const auto code = quint8(frame[2]);
    switch (Wire::Code(code)) {
    case Wire::SensorIds:
        out.append(sensorIds());
        return;
    case Wire::LoggingSetup:
        takeSetup(frame, now, out);
        return;
    case Wire::Start:
        start(now, out);
        return;
    case Wire::Stop:
        finish(Wire::Stop, now, out);
        return;
    case Wire::Download:
        beginDownload(quint8(frame[3]), now, out);
        return;
    case Wire::NextPacket:
        sendNextPacket(now, out);
        return;
    case Wire::ResendPacket:
        if (download.isOn && download.nextPacket > 0)
            out.append(dataPacket(download.nextPacket - 1));
        return;
    case Wire::Snapshot:
        out.append(snapshot(now));
        return;
    case Wire::SelfTest:
        out.append(selfTest());
        return;
    case Wire::Calibrate:
        out.append(status(calibrate(Wire::read16(frame, 3), now), now));
        return;
    case Wire::ExperimentsTable:
        tableNext = experiments.isEmpty() ? 0 : 1;
        tableDue = now;
        break;
    case Wire::StopTransmission:
        download.isOn = false;
        tableNext = 0;
        break;
    case Wire::DeleteLast:
        if (!experiments.isEmpty())
            experiments.removeLast();
        break;
    case Wire::DeleteAll:
        experiments.clear();
        break;
    case Wire::SetClock:
        setClock(Wire::fromBcdDate(frame.mid(3, 6)), now);
        break;
    case Wire::Configure:
        configure(frame);
        tableNext = experiments.isEmpty() ? 0 : 1; // the program expects its table anew
        tableDue = now;
        break;
    case Wire::LongCommand:
        longStrings.append(frame.mid(longHead, frame.size() - longHead - longSum));
        break;
    case Wire::GetStatus:
        break;
    case Wire::UserChange:
    case Wire::NoBattery:
    case Wire::NoMemory:
    case Wire::NoSensor:
    case Wire::Reserved:
        return;
    }
    out.append(status(code, now));
}

/// During a run the settings stand; the status then shows the old ones and no acceptance.
void VirtualLogger::takeSetup(const QByteArray& frame, qint64 now, LoggerPackets& out)
{
    if (run.isOn) {
        out.append(status(Wire::GetStatus, now));
        return;
    }
    const int slotCount = self.model->sensorIds().size();
    self.mask = Wire::read16(frame, 3) & quint16((1U << slotCount) - 1);
    self.rate =
        LoggerRates::fromCode(quint8(frame[5]), self.model->code, self.firmwareMajor, self.firmwareMinor);
    self.samplesIndex = qMin(4, int(quint8(frame[6])));
    trigger = frame.mid(7, 4);
    takeSocketCode(0, quint8(frame[11]));
    takeSocketCode(1, quint8(frame[12]));
    range = frame.mid(13, 3);
    out.append(status(Wire::LoggingSetup, now));
}

/// A sensor that tells who it is can't be talked out of it, save that the pulse sensor serves as a gate.
void VirtualLogger::takeSocketCode(int socket, quint8 code)
{
    const int plugged = self.plugged[socket];
    const bool isGateSwitch = (plugged == QUELLMARK_HEARTRATE_WAVE || plugged == QUELLMARK_PHOTOGATE_HEART) &&
                              (code == QUELLMARK_HEARTRATE_WAVE || code == QUELLMARK_PHOTOGATE_HEART);
    if (isGateSwitch)
        self.plugged[socket] = code;
    else if (plugged == 0 && code <= VERNIER_LAST - VERNIER_CODE)
        typedCodes[socket] = code;
}

void VirtualLogger::setClock(const QDateTime& utc, qint64 now)
{
    if (!utc.isValid())
        return;
    clockBase = utc;
    clockSet = now;
}

void VirtualLogger::configure(const QByteArray& frame)
{
    flags = quint8(frame[3]) & 0x1F;
    language = quint8(frame[4]);
}

quint8 VirtualLogger::calibrate(int tenths, qint64 now)
{
    enum Result : quint8
    {
        Done = 0xE0,
        Already,
        TooFar,
        OutOfRange,
        NotIdle
    };
    if (run.isOn)
        return NotIdle;
    if (tenths == 0xFFFF) {
        calibration = 0;
        isCalibrated = false;
        return Done;
    }
    constexpr double farthest = 5;
    const double wanted = tenths / 10.0;
    const double seconds = double(now - switchedOn) / 1e9;
    const double shown = runSignals(0).value(SENSOR_AMB_TEMP, seconds);
    if (isCalibrated)
        return Already;
    if (wanted < 0 || wanted > 40)
        return OutOfRange;
    if (qAbs(wanted - shown) > farthest)
        return TooFar;
    calibration = wanted - shown;
    isCalibrated = true;
    return Done;
}

LoggerPacket VirtualLogger::status(quint8 event, qint64 now) const
{
    if (isVorta())
        return vortaStatus(event);
    QByteArray body;
    body += char(event);
    body += char(self.model->code);
    body += char(Wire::toBcd(self.firmwareMajor));
    body += char(Wire::toBcd(self.firmwareMinor));
    body += char(run.isOn ? 1 : 0);
    body += char(experiments.size());
    Wire::append16(body, self.mask);
    body += char(rateCode(self.rate));
    body += char(self.samplesIndex);
    body += Wire::bcdDate(clock(now));
    Wire::append16(body, 0);
    body += trigger;
    body += char(socketCode(0));
    body += char(socketCode(1));
    body += range;
    body += char(flags);
    body += char(language);
    return {Wire::packet(Wire::StatusPacket, body)};
}

LoggerPacket VirtualLogger::sensorIds() const
{
    QByteArray body;
    for (const short id : self.model->sensors)
        body += char(id);
    const auto nibble = [this](int socket) {
        return self.plugged[socket] ? self.plugged[socket] - (QUELLMARK_FIRST - 1) : 0;
    };
    body += char((nibble(0) << 4) | nibble(1));
    return {Wire::packet(Wire::SensorIdPacket, body)};
}

LoggerPacket VirtualLogger::snapshot(qint64 now)
{
    QByteArray data;
    const double seconds = double(now - switchedOn) / 1e9;
    for (const int id : slotIds())
        data += writer.block(id, runSignals(0), seconds, calibration);
    QByteArray body;
    body += char(data.size() + 5);
    return {Wire::packet(Wire::SnapshotPacket, body + data)};
}

/// RAM, GPS, ambient temperature, external temperature, sound from bit 0 up; a bit is set where the part is
/// there and works.
LoggerPacket VirtualLogger::selfTest() const
{
    static const QVector<QVector<int>> parts = {
        {SENSOR_GPS},
        {SENSOR_AMB_TEMP, SENSOR_AMB_TEMP_NTC, SENSOR_AMB_TEMP_NTC_CALC},
        {SENSOR_EXT_TEMP, SENSOR_EXT_TEMP_NTC},
        {SENSOR_SOUND, SENSOR_MICROPHONE}};
    quint8 result = 1;
    const QVector<int> ids = self.model->sensorIds();
    for (int part = 0; part < parts.size(); ++part) {
        for (const int id : parts[part]) {
            if (ids.contains(id))
                result |= quint8(2U << part);
        }
    }
    QByteArray body(8, '\0');
    body[0] = char(result);
    return {Wire::packet(Wire::SelfTestPacket, body)};
}

LoggerPacket VirtualLogger::externalEvent() const
{
    QByteArray body;
    body += char(self.plugged[0]);
    body += char(self.plugged[1]);
    return {Wire::packet(Wire::ExternalEvent, body)};
}

/// The sensors in the slots as they are now, plugged ones and chosen Vernier ones in the sockets' places. On
/// old firmware the language says which temperature probe was sold with the logger.
QVector<int> VirtualLogger::slotIds() const
{
    QVector<int> ids = self.model->sensorIds();
    const bool isOld = self.firmwareMajor * 100 + self.firmwareMinor <= 209;
    for (int& id : ids) {
        if (isOld && (id == SENSOR_EXT_TEMP || id == SENSOR_EXT_TEMP_NTC))
            id = language == 2 ? SENSOR_EXT_TEMP_NTC : SENSOR_EXT_TEMP;
        if (id != SENSOR_EXTERNAL && id != SENSOR_EXTERNAL_B)
            continue;
        const int socket = id == SENSOR_EXTERNAL ? 0 : 1;
        const int code = socketCode(socket);
        if (code != 0)
            id = Sensor::codeToID(code);
    }
    return ids;
}

quint8 VirtualLogger::socketCode(int socket) const
{
    return self.plugged[socket] ? quint8(self.plugged[socket]) : typedCodes[socket];
}

int VirtualLogger::rateCode(int rate) const
{
    return LoggerRates::toCode(rate, self.model->code, self.firmwareMajor, self.firmwareMinor);
}

QDateTime VirtualLogger::clock(qint64 now) const
{
    return clockBase.addMSecs((now - clockSet) / clockTick);
}

bool VirtualLogger::hasSocket(int socket) const
{
    return self.model->sensorIds().contains(socket == 0 ? SENSOR_EXTERNAL : SENSOR_EXTERNAL_B);
}

LoggerPackets VirtualLogger::plug(int socket, int sensorId)
{
    if (!hasSocket(socket))
        return {};
    self.plugged[socket] = sensorId;
    typedCodes[socket] = 0;
    if (loader.isOn())
        return {};
    return {externalEvent()};
}

LoggerPackets VirtualLogger::setBatteryEmpty(bool isEmpty, qint64 now)
{
    LoggerPackets out;
    self.isBatteryEmpty = isEmpty;
    if (isEmpty && run.isOn)
        finish(Wire::NoBattery, now, out);
    return out;
}

LoggerPackets VirtualLogger::setMemoryFull(bool isFull, qint64 now)
{
    LoggerPackets out;
    self.isMemoryFull = isFull;
    if (isFull && run.isOn)
        finish(Wire::NoMemory, now, out);
    return out;
}

LoggerPackets VirtualLogger::setRate(int rate, qint64 now)
{
    if (run.isOn || loader.isOn())
        return {};
    self.rate = rate;
    return {status(Wire::UserChange, now)};
}

LoggerPackets VirtualLogger::setSamplesIndex(int index, qint64 now)
{
    if (run.isOn || loader.isOn())
        return {};
    self.samplesIndex = index;
    return {status(Wire::UserChange, now)};
}

QString VirtualLogger::summary() const
{
    const QString doing =
        loader.isOn() ? QStringLiteral("in its boot loader")
        : !run.isOn   ? QStringLiteral("idle")
        : run.isArmed
            ? QStringLiteral("waits for the trigger")
            : QStringLiteral("run %1, sample %2 of %3").arg(run.number).arg(run.taken).arg(run.limit);
    return QStringLiteral("%1 %2 (type %3), firmware %4.%5, %6, %7 samples, mask %8, %9 stored, ")
               .arg(self.name, self.model->displayName())
               .arg(self.model->code)
               .arg(self.firmwareMajor)
               .arg(self.firmwareMinor, 2, 10, QLatin1Char('0'))
               .arg(LoggerRates::name(self.rate, self.model->code))
               .arg(LoggerRates::sampleCount(self.samplesIndex, self.model->code))
               .arg(self.mask, 4, 16, QLatin1Char('0'))
               .arg(experiments.size()) +
           doing;
}
