#pragma once

#include <QString>

#include <algorithm>
#include <iterator>

/// What in the name of a device shows that it is a logger.
namespace LoggerNames {

constexpr const char* prefixes[] = {
    "tembrin_", // the main family
    "larchet_", // a sibling brand
    "vorta_",   // the Vorta logger
    "sorrel_",  // the small logger
    "sorr_",    // the same, short
};

/// One of the prefixes stands anywhere in the name, in any case.
inline bool isLogger(const QString& name)
{
    const QString lower = name.toLower();
    return std::any_of(std::begin(prefixes), std::end(prefixes),
                       [&lower](const char* prefix) { return lower.contains(QLatin1String(prefix)); });
}

} // namespace LoggerNames
