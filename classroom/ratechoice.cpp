#include "classroom/ratechoice.h"

#include <QCoreApplication>

#include <algorithm>

#include "common/common.h"
#include "protocol/tembrindata.h"

namespace {

constexpr short fastestOfAmber = 5;

bool isAmber(int type)
{
    return type == LOGGER_AMBER_OLD || type == LOGGER_AMBER;
}

QString inUnits(const char* format, qint64 total, qint64 perUnit)
{
    return QCoreApplication::translate("RateChoice", format).arg(total / perUnit).arg(total % perUnit);
}

QString inUnit(const char* format, double value)
{
    return QCoreApplication::translate("RateChoice", format).arg(Common::myToString(value, 'g', 3));
}

} // namespace

QVector<short> RateChoice::offered(const TembrinData& logger)
{
    const short highest = isAmber(logger.tembrinType()) ? fastestOfAmber : short(RateTables::count - 1);
    QVector<short> rates;
    for (short rate = 0; rate <= highest; ++rate) {
        if (logger.isIncludedInRateMenu(rate))
            rates.append(rate);
    }
    return rates;
}

short RateChoice::counterpart(const TembrinData& logger, short rate)
{
    const QVector<short> rates = offered(logger);
    if (rates.contains(rate))
        return rate;
    const auto sameName = std::find_if(rates.begin(), rates.end(), [&](short own) {
        return logger.RateNames[own] == logger.RateNames[rate];
    });
    if (sameName != rates.end())
        return *sameName;
    const auto faster = std::upper_bound(rates.begin(), rates.end(), rate);
    return *std::prev(faster); // Manual is always there and below any
}

QString RateChoice::duration(double seconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    const qint64 whole = qRound64(seconds);
    if (seconds < 1)
        return inUnit(QT_TRANSLATE_NOOP("RateChoice", "%1 ms"), seconds * 1000);
    if (whole < minute)
        return inUnit(QT_TRANSLATE_NOOP("RateChoice", "%1 s"), seconds);
    if (whole < hour)
        return inUnits(QT_TRANSLATE_NOOP("RateChoice", "%1 min %2 s"), whole, minute);
    if (whole < day)
        return inUnits(QT_TRANSLATE_NOOP("RateChoice", "%1 h %2 min"), whole / minute, hour / minute);
    return inUnits(QT_TRANSLATE_NOOP("RateChoice", "%1 d %2 h"), whole / hour, day / hour);
}
