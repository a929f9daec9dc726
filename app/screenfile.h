#pragma once

#include <QString>
#include <QVector>

class ExpData;

/// Which file holds the experiment on the screen, if any does.
class ScreenFile
{
public:
    /// `set` was read from `fname` or written to it. A file that holds more than was read of it, or that is
    /// no experiment file, gives the screen its name only.
    void keep(const QString& fname, const ExpData& set, bool isWhole);
    /// By the ending.
    static bool isLesson(const QString& fname);
    bool isLesson() const { return isLesson(name); }
    /// Something else is on the screen.
    void forget() { *this = {}; }
    /// Without its folder; empty when there is no file.
    QString title() const;
    /// Where `set` can be saved without asking; empty where a name has to be chosen. Channels derived since
    /// belong to it, another sensor of a group does not.
    QString target(const ExpData& set) const;

private:
    QString name;
    bool mayReplace = false;
    QVector<int> kinds; ///< of the channels
};
