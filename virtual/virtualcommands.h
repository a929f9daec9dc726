#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

class FakeRadio;
class VirtualClass;

/// The control language: one line says what happens to one logger or to all, as a person with the devices in
/// reach would do it.
class VirtualCommands
{
public:
    /// `radio` is null where the ports are terminals.
    explicit VirtualCommands(VirtualClass& loggers, FakeRadio* radio = nullptr)
        : loggers(loggers)
        , radio(radio)
    {
    }

    /// Carries out a line. What there is to say comes back, empty if all went well and nothing was asked.
    QString execute(const QString& line);
    bool isQuit() const { return hasQuit; }
    static QString help();

private:
    using Words = QStringList;

    QString onEach(const QVector<int>& chosen, const Words& words);
    QString onOne(int index, const Words& words);
    QString switchService(const QString& word);
    QString plug(int index, const QString& socket, int sensorId);
    QString setFaults(int index, const Words& words);
    QString dump(int index, const QString& path);
    QString setRate(int index, const QString& name);
    QString setSamples(int index, const QString& text);
    bool choose(const QString& word, QVector<int>* chosen) const;

    VirtualClass& loggers;
    FakeRadio* radio;
    bool hasQuit = false;
};
