#pragma once

class QPalette;

namespace tessaril {

/// The colours of the application's windows on a dark desktop.
QPalette darkPalette();

/// Gives the application object its widget style and its colours, dark ones on a dark desktop.
/// Gives whether its windows are dark.
bool applyAppearance();

} // namespace tessaril
