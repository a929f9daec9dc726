#include "data/gpstrack.h"

#include "data/expdata.h"
#include "sensors/sensorids.h"

#include <QtMath>

#include <cmath>

namespace {

constexpr double earthRadius = 6371008.8; // m

bool isFix(double latitude, double longitude)
{
    // The comparisons are false for what is not a number.
    return std::abs(latitude) <= 90 && std::abs(longitude) <= 180 && (latitude != 0 || longitude != 0);
}

double haversine(double radians)
{
    const double half = std::sin(radians / 2);
    return half * half;
}

} // namespace

bool GpsTrack::isIn(const ExpData& data)
{
    return data.locateSensByID(SENSOR_GPS_LAT) >= 0 && data.locateSensByID(SENSOR_GPS_LONG) >= 0;
}

int GpsTrack::extend(const ExpData& data)
{
    const QVector<double>& lat = data.getYNoConv(data.locateSensByID(SENSOR_GPS_LAT));
    const QVector<double>& lng = data.getYNoConv(data.locateSensByID(SENSOR_GPS_LONG));
    const int count = qMin(data.getXSize(), qMin(lat.size(), lng.size()));
    const int before = size();
    for (; nextRow < count; ++nextRow) {
        if (isFix(lat[nextRow], lng[nextRow]))
            append(nextRow, lat[nextRow], lng[nextRow]);
    }
    if (data.dt > 0 && size() > 1)
        duration = data.getXAt(rows.constLast()) - data.getXAt(rows.constFirst());
    return size() - before;
}

void GpsTrack::append(int row, double latitude, double longitude)
{
    if (!rows.isEmpty()) {
        const double from = qDegreesToRadians(latitudes.constLast());
        const double to = qDegreesToRadians(latitude);
        const double turn = qDegreesToRadians(longitude - longitudes.constLast());
        const double part = haversine(to - from) + std::cos(from) * std::cos(to) * haversine(turn);
        way += 2 * earthRadius * std::asin(std::sqrt(qMin(1.0, part)));
    }
    rows.append(row);
    latitudes.append(latitude);
    longitudes.append(longitude);
}
