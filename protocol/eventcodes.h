#pragma once

// Why a logger sent a status. Most are the code of the command that it answers.
constexpr int eventUser = 0x00; ///< a setting was changed on the logger
constexpr int eventStatus = 0x10;
constexpr int eventSetup = 0x11;
constexpr int eventStarted = 0x22;
constexpr int eventNoBattery = 0x23;
constexpr int eventNoMemory = 0x24;
constexpr int eventNoSensor = 0x25;
constexpr int eventStopped = 0x33;
constexpr int eventDownload = 0x44;
constexpr int eventTable = 0x45;
constexpr int eventNoPacketLeft = 0x46;
constexpr int eventLongCommand = 0x91;
constexpr int eventConfigured = 0xDD;
constexpr int eventCalibrated = 0xE0; ///< and the four results after it
constexpr int eventCalibratedLast = 0xE4;
