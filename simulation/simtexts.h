#pragma once

#include <QJsonObject>

/// The words of the animations, in the user's language.
namespace SimTexts {

/// Those of page `index`, 0 to 4, by the names that the page knows them under, and how numbers are written:
/// "decimal" is the sign in them.
QJsonObject ofPage(int index);

} // namespace SimTexts
