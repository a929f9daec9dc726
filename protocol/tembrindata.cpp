#include "protocol/tembrindata.h"

#include "protocol/packets.h"

namespace {

constexpr const char* rateNames[RateTables::count] = {
    QT_TRANSLATE_NOOP("TembrinData", "Manual"),    QT_TRANSLATE_NOOP("TembrinData", "1/Min"),
    QT_TRANSLATE_NOOP("TembrinData", "1/Sec"),     QT_TRANSLATE_NOOP("TembrinData", "10/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25/Sec"),    QT_TRANSLATE_NOOP("TembrinData", "100/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "1000/Sec"),  QT_TRANSLATE_NOOP("TembrinData", "25000/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25000/Sec"), QT_TRANSLATE_NOOP("TembrinData", "100000/Sec"),
};

constexpr const char* vortaRateNames[RateTables::vortaCount] = {
    "",
    QT_TRANSLATE_NOOP("TembrinData", "1/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "10/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "100/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "500/Sec"),
};

constexpr const char* trigTypeNames[] = {
    QT_TRANSLATE_NOOP("TembrinData", "Not active"),
    QT_TRANSLATE_NOOP("TembrinData", "Rising edge"),
    QT_TRANSLATE_NOOP("TembrinData", "Falling edge"),
};

template<size_t N> QStringList translated(const char* const (&names)[N])
{
    QStringList texts;
    for (const char* name : names)
        texts.append(*name ? TembrinData::tr(name) : QString());
    return texts;
}

} // namespace

TembrinData::TembrinData(int index, const Units& units, QObject* parent)
    : QObject(parent)
    , index(index)
    , RateNames(translated(rateNames))
    , VortaRateNames(translated(vortaRateNames))
    , TrigTypeNames(translated(trigTypeNames))
    , units(units)
    , run(units)
    , download(index)
{
    setupSensorsForType(LOGGER_BIRCH);
    connectDownload();
}

TembrinData::~TembrinData() = default;

QStringList TembrinData::samplesNames() const
{
    return {tr("10"), tr("100"), tr("1000"), identity.type == LOGGER_SORREL_BASIC ? tr("3000") : tr("10000"),
            tr("30000")};
}

void TembrinData::forgetConnection()
{
    qCDebug(lcProtocol) << "logger" << index << "what was held of its connection is void";
    loggerRecognized = gotSensorList = false;
    forgetOnlineMask();
    stream.samplesWaiting = 0;
    vortaRun.interrupt();
    download.cancel();
}

QString TembrinData::modelName(int type)
{
    const LoggerModel* model = loggerModel(type);
    return model && model->name ? tr(model->name) : tr("Tembrin 0x%1").arg(type, 0, 16);
}

QString TembrinData::versionLine() const
{
    const QString name = modelName(identity.type);
    if (identity.type == LOGGER_VORTA) {
        return tr("%1, Hardware %2, firmware %3")
            .arg(name, QString::number(identity.hardware), QString::number(identity.software));
    }
    return tr("%1, firmware %2.%3%4")
        .arg(name, QString::number(identity.firmware), QLatin1String(identity.smallFirmware <= 9 ? "0" : ""),
             QString::number(identity.smallFirmware));
}

short TembrinData::fixedRate(short code) const
{
    return RateTables::fromCode(code, identity.type, identity.firmware, identity.smallFirmware);
}

short TembrinData::fixedRateDecrease(short rate) const
{
    return RateTables::toCode(rate, identity.type, identity.firmware, identity.smallFirmware);
}

bool TembrinData::isIncludedInRateMenu(short rate) const
{
    return RateTables::isOffered(rate, identity.type, identity.firmware, identity.smallFirmware);
}

double TembrinData::samplePeriod() const
{
    if (vorta)
        return vortaRun.period() > 0 ? vortaRun.period() : VortaRates[settings.vortaRate];
    return Rates[settings.rate];
}
