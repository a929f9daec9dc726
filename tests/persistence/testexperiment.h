#pragma once

#include <QFile>
#include <QTemporaryDir>

#include "common/settings.h"
#include "data/expdata.h"
#include "sensors/sensorids.h"

inline QByteArray bytesOf(const QString& filename)
{
    QFile file(filename);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeBytes(const QString& filename, const QByteArray& bytes)
{
    QFile file(filename);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s", qPrintable(file.errorString()));
}

/// A temperature, a shorter pH channel and an imported one, in base units.
inline void fillExperiment(ExpData* data, double dt = 0.5, int samples = 5)
{
    QVector<double> t, warm, sour;
    for (int i = 0; i < samples; ++i) {
        t << i * (dt > 0 ? dt : 1);
        warm << 20.04 + 0.31 * i - (i % 3) * 21.7;
        if (i < samples - 2)
            sour << 7.0 - i / 7.0;
    }
    data->setDataNew(3, t, dt);
    data->addSensorData(0, SENSOR_AMB_TEMP_NTC, warm, 1);
    data->addSensorData(1, SENSOR_PH, sour, -1);
    data->addSpecialSensorData(QString::fromUtf8("Сила <\"&'>"), QStringLiteral("N"), 2, warm);
    data->getSens(0)->groupName = QString::fromUtf8("Группа 1");
    data->setLeftPad(1, 2);
    data->setSensorScale(0, 10.1, 31.7);
    data->setSensorScaleBar(0, -1.5, 40);
    data->setSelectedSensor(1);
}
