#pragma once

/// The desktop's own settings for pairing Bluetooth devices.
namespace PairingTool {

/// Opens them in a program of their own; false where this desktop has none that is known.
bool open();

} // namespace PairingTool
