#pragma once

#include <QString>
#include <QVector>

class TembrinData;

/// Which rates a logger can be set to, and what they mean for a run.
namespace RateChoice {

/// The rates that are offered for this logger, as indices into TembrinData::Rates, slowest first after
/// Manual.
QVector<short> offered(const TembrinData& logger);

/// What comes closest to `rate` of another logger on this one: the same rate, else the one of the same name,
/// else its fastest that is slower.
short counterpart(const TembrinData& logger, short rate);

/// A length of time in words, in the two largest units that say something.
QString duration(double seconds);

} // namespace RateChoice
