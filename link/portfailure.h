#pragma once

/// Why a port is not open, as far as the person in front of it can do something about it.
enum class PortFailure
{
    None,
    NoPort,      ///< none was chosen, or the system has no such port
    NoRight,     ///< this user may not open it
    Held,        ///< another program has the port, or the radio link
    OutOfReach,  ///< switched off or too far: no answer to the radio's call, or no line came up
    NotPaired,   ///< the Bluetooth service does not know the device, or knows it as unpaired
    Refused,     ///< the pairing does not hold any more: one of both has forgotten its key
    NoAdapter,   ///< this computer has no Bluetooth adapter
    AdapterOff,  ///< it has, and all that know the device are switched off
    AdapterFull, ///< the adapter carries as many links as it can
    NoService,   ///< the Bluetooth service does not run
    Cancelled,   ///< somebody closed the port while it was being opened
    Lost,        ///< it was open, and its link ended
    Other        ///< errorString() is all that is known
};
