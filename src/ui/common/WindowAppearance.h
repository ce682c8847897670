#pragma once

#include "core/settings/Preferences.h"

#include <QColor>
#include <QPalette>

// The window's colours: the desktop's own (System), or a light or a dark palette of ours. The
// palette is the application's, so every widget follows it, and so does anything drawn from the
// palette (the Now view's charts). What is not drawn from it asks isDark(): the artwork, drawn
// for light backgrounds, is recoloured for dark ones (ArtworkRecolour), and the activity log
// picks its page and its red.
class WindowAppearance {
public:
    // Sets the application's palette for the choice. System leaves the desktop's palette alone,
    // or, after Light or Dark, gives back the one the application had before.
    static void apply(Preferences::Appearance appearance);
    // The application's palette is a dark one: our Dark, or a dark desktop under System.
    static bool isDark();

    static QPalette lightPalette();
    static QPalette darkPalette();
    // A red for error text that reads on a light or a dark page.
    static QColor errorColour(bool dark);
};
