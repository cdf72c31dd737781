// Fonts and palettes shared by the window's panels: fixed-width digits large
// enough to read at arm's length, and the night theme for a dark shack.
#pragma once

#include <QColor>
#include <QFont>

class QApplication;
class QLabel;

namespace veloran {

// A fixed-width font at `pointSize`, bold when asked.
QFont DigitsFont(int pointSize, bool bold = false);
// Gives a label the digits font.
void MakeDigits(QLabel* label, int pointSize, bool bold = false);

// The day theme is the system's palette; the night theme a dark one with
// dim red-free text, so the eyes keep their dark adaptation.
void ApplyTheme(QApplication* app, bool night);
bool NightTheme();
// The clock line's colour under virtual time (red in both themes).
QColor VirtualTimeColour();

// The settings key of the night theme.
constexpr const char* kNightThemeKey = "night_theme";

}  // namespace veloran
