#pragma once

#include <QVector>

class ExpData;

/// Where the samples of an experiment were taken: the rows of it that have a fix. It grows with the data.
class GpsTrack
{
public:
    /// Whether the data can have a position at all.
    static bool isIn(const ExpData& data);
    /// Reads the rows that it has not read yet, and gives the number of new fixes. No fix are both
    /// coordinates 0, one that is not a number, and one that is not on Earth.
    int extend(const ExpData& data);

    int size() const { return rows.size(); }
    /// How many rows of the data were read.
    int rowsRead() const { return nextRow; }
    /// The way from fix to fix: great circles (haversine) on a sphere of the mean radius of the Earth,
    /// 6,371,008.8 m (IUGG), which is within 0.5 % everywhere.
    double metres() const { return way; }
    /// From the first fix to the last; 0 where the data know no time.
    double seconds() const { return duration; }
    /// Metres a second; 0 without a time.
    double meanSpeed() const { return duration > 0 ? way / duration : 0; }

    QVector<int> rows;         ///< of the data, one for each fix
    QVector<double> latitudes; ///< degrees, WGS 84
    QVector<double> longitudes;

private:
    void append(int row, double latitude, double longitude);

    int nextRow = 0;
    double way = 0;
    double duration = 0;
};
