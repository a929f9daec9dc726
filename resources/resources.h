#pragma once

#include <QPalette>

/// Makes the pictures and style sheets known to Qt. Call once before the first of them is asked for: in a
/// static library they do not announce themselves.
void initPellandraResources();

/// The colours of the program: light, whatever the desktop's theme. For `QApplication::setPalette`, before
/// the style sheet.
QPalette pellandraPalette();
