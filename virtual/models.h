#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <array>

/// One model of the logger family: its type code on the wire, and the sensors that it is built with.
struct LoggerModel
{
    static constexpr int Sorrel = 240; ///< the small logger
    static constexpr int Vorta = 250;  ///< speaks a language of its own

    int code;
    const char* constant;
    const char* name;              ///< display name without the family's name, empty where there is none
    bool isNamesake;               ///< the one of several models of a name that the bare name means
    std::array<short, 16> sensors; ///< sensor IDs in slot order, 0 ends the list
    std::array<short, 4> lesson;   ///< the sensors that make a good picture, 0 ends the list

    /// As a person calls it: "Tembrin Birch", "Vorta".
    QString displayName() const;
    QVector<int> sensorIds() const;
    /// The mask of the slots that hold the lesson's sensors.
    quint16 lessonMask() const;
};

class LoggerModels
{
public:
    /// By display name ("Birch", "Tembrin Birch"), constant ("LOGGER_BIRCH", "BIRCH_OLD") or code ("35",
    /// "0x23"), in any case. Null if there is none.
    static const LoggerModel* find(const QString& text);
    static const LoggerModel* find(int code);
    /// The models of a class whose teacher did not choose, in this order.
    static QVector<const LoggerModel*> mixture();
    /// Names as find() takes them, for messages.
    static QStringList names();
};
