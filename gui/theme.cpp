// Fonts and palettes of the window.

#include "gui/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace veloran {

namespace {
bool gNight = false;
QPalette gDayPalette;
bool gDayPaletteSaved = false;
}  // namespace

QFont DigitsFont(int pointSize, bool bold) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(pointSize);
    font.setBold(bold);
    return font;
}

void MakeDigits(QLabel* label, int pointSize, bool bold) {
    label->setFont(DigitsFont(pointSize, bold));
}

void ApplyTheme(QApplication* app, bool night) {
    if (!gDayPaletteSaved) {
        app->setStyle(QStyleFactory::create("Fusion"));
        gDayPalette = app->style()->standardPalette();
        gDayPaletteSaved = true;
    }
    gNight = night;
    if (!night) {
        app->setPalette(gDayPalette);
        return;
    }
    QPalette p;
    // Frames and check-box squares need some contrast against the panel,
    // or a switch's state cannot be read in the dark.
    const QColor window(28, 28, 30), base(44, 44, 48), text(200, 190, 170);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(52, 52, 58));
    p.setColor(QPalette::Light, QColor(90, 90, 96));
    p.setColor(QPalette::Midlight, QColor(70, 70, 76));
    p.setColor(QPalette::Mid, QColor(60, 60, 66));
    p.setColor(QPalette::Dark, QColor(110, 105, 95));
    p.setColor(QPalette::Shadow, QColor(0, 0, 0));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::ToolTipBase, window);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::Highlight, QColor(90, 70, 40));
    p.setColor(QPalette::HighlightedText, QColor(230, 220, 200));
    p.setColor(QPalette::Disabled, QPalette::Text, QColor(100, 100, 100));
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(100, 100, 100));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(100, 100, 100));
    app->setPalette(p);
}

bool NightTheme() {
    return gNight;
}

QColor VirtualTimeColour() {
    return gNight ? QColor(230, 70, 60) : QColor(200, 0, 0);
}

}  // namespace veloran
