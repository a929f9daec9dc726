#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVariant>

/// A tree of keys with values, read only: the system's registry, or one written out. Paths are separated by
/// "/"; a value is named like a key below its own. What is not there is empty.
class KeyTree
{
public:
    virtual ~KeyTree() = default;

    /// The names of the keys directly below `path`.
    virtual QStringList childGroups(const QString& path) const = 0;
    /// Invalid if there is no such value.
    virtual QVariant value(const QString& path) const = 0;
    /// The bytes of a binary value; empty if it is none.
    virtual QByteArray bytes(const QString& path) const = 0;
};
