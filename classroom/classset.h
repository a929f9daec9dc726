#pragma once

#include <QStringList>
#include <QVector>

#include "common/classsize.h"

class ExpData;
class multiConnectionsManager;

/// Who is in the data set of the class, and how it is put together: a channel for each logger in use, in
/// order, and the average. A logger belongs to it from its first sample, or its download, on; until then its
/// channel is empty. One whose samples lie at other times than the class's stays out and is named.
class ClassSet
{
public:
    /// `manager` has the data sets; not owned.
    explicit ClassSet(multiConnectionsManager* manager);

    /// Nobody is in it any more, and what it held is gone. `period` in seconds, 0 for samples taken by hand.
    void begin(double period);
    /// The same, and the loggers in `members` (a bit each) are in it with all that they have.
    void rebuild(quint8 members);
    /// The class has come from a file together with the sets of its groups, and goes on from there.
    void restore(quint8 members);
    bool isMember(int slot) const { return members >> slot & 1; }
    quint8 memberBits() const { return members; }
    /// Logger `slot` is in it from now on, with what its set holds. What the user did to the others' stays,
    /// unless the class has become larger meanwhile.
    void join(int slot);
    /// The last sample of a member's set.
    void take(int slot);
    /// A member's selected channel is another one now; nothing changes while it is the same.
    void follow(int slot);
    /// Data that came from a file has taken its place: nobody joins it before it is begun anew.
    void release();
    /// Who was in it when it was released.
    quint8 releasedBits() const { return released; }
    /// Samples of these come at other times than those of the class.
    QVector<int> leftOut() const;
    double period() const { return classPeriod; }
    /// Channels of loggers in it.
    int channels() const { return channelCount; }

private:
    QStringList namesOut() const;
    void takeOut(const QStringList& names);
    bool fits(int slot) const;
    void grow();
    double periodOf(quint8 which) const;

    multiConnectionsManager* manager;
    quint8 members = 0;
    quint8 others = 0; ///< with another period
    quint8 released = 0;
    bool isReleased = false;
    int channelCount = 0; ///< one for each logger in use at the beginning
    double classPeriod = 1;
    int shown[mostLoggers]; ///< the channel of its set that stands for a member
};
