#pragma once

#include <QString>

#include "link/portfailure.h"

/// What a person is told of a port that is not open.
namespace FailureTexts {

/// In few words, without a full stop, to stand behind names: "switched off or out of reach". Empty for None.
QString reason(PortFailure failure, const QString& portName);
/// What cures it, a sentence, with the one command where there is one. Empty where nothing is known.
QString cure(PortFailure failure, const QString& portName);
/// Whether the computer has to be put right, and not the logger.
bool isOfComputer(PortFailure failure);
/// Both.
QString text(PortFailure failure, const QString& portName);
/// "00:12:F3:A1:B2:C3" of "0012F3A1B2C3".
QString addressText(const QString& address);

} // namespace FailureTexts
