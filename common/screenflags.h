#pragma once

/// What the main window found out about the screen, for the rooms below it.
class ScreenFlags
{
public:
    /// The primary screen is over 3000 pixels wide, so icons double.
    static bool is4K();
    static void set4K(bool tf);
};
