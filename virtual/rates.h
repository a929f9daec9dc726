#pragma once

#include <QString>
#include <QStringList>

/// The sample rates of the family, and the codes by which one firmware names them.
class LoggerRates
{
public:
    static constexpr int Manual = 0;
    static constexpr int FirstStoredOnly = 6; ///< from here on a run is stored and not streamed

    /// Seconds between two samples; 0 for Manual. The type matters as a Vorta logger has rates of its own.
    static double period(int rate, int type);
    static QString name(int rate, int type);
    /// The rate of that name ("10/Sec", "manual") which the firmware has; -1 if there is none.
    static int find(const QString& name, int type, int major, int minor);
    static QStringList names(int type, int major, int minor);

    /// Between the code of the wire and the rate, for a type and a firmware; a code that leads beyond the
    /// rates gives the fastest one.
    static int fromCode(int code, int type, int major, int minor);
    static int toCode(int rate, int type, int major, int minor);

    /// The number of samples behind a samples index 0 to 4; larger ones count as 4. For a Vorta logger the
    /// index is the number itself.
    static int sampleCount(int index, int type);
    /// The index of a count or an index given as text; -1 if it is neither.
    static int sampleIndex(const QString& text, int type);

private:
    static bool isKnown(int rate, int type, int major, int minor);
};
