#pragma once

#include "link/keytree.h"

/// The registry below HKEY_LOCAL_MACHINE.
class RegistryTree : public KeyTree
{
public:
    QStringList childGroups(const QString& path) const override;
    QVariant value(const QString& path) const override;
    QByteArray bytes(const QString& path) const override;
};
