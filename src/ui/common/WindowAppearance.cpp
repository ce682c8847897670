#include "ui/common/WindowAppearance.h"

#include <QApplication>

#include <optional>

namespace {

QPalette makePalette(const QColor &window, const QColor &text, const QColor &base,
                     const QColor &alternate, const QColor &button, const QColor &disabled,
                     const QColor &placeholder, const QColor &highlight, const QColor &link,
                     bool dark)
{
    QPalette p;
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, alternate);
    p.setColor(QPalette::ToolTipBase, dark ? button : QColor(0xff, 0xff, 0xdc));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, placeholder);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, button);
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, dark ? QColor(0xff, 0x80, 0x80) : QColor(Qt::red));
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, link);
    p.setColor(QPalette::LinkVisited, dark ? QColor(0xb8, 0x9c, 0xff) : QColor(0x55, 0x1a, 0x8b));
    // The bevels the style draws around buttons and frames, from the button's colour.
    p.setColor(QPalette::Light, button.lighter(dark ? 140 : 150));
    p.setColor(QPalette::Midlight, button.lighter(dark ? 120 : 125));
    p.setColor(QPalette::Mid, button.darker(dark ? 120 : 130));
    p.setColor(QPalette::Dark, button.darker(dark ? 160 : 200));
    p.setColor(QPalette::Shadow, Qt::black);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        p.setColor(QPalette::Disabled, role, disabled);
    p.setColor(QPalette::Disabled, QPalette::Highlight,
               dark ? QColor(0x4a, 0x4d, 0x52) : QColor(0xc8, 0xc8, 0xc8));
    return p;
}

// The palette the application had before we set one: the desktop's. None until we set one.
std::optional<QPalette> &systemPalette()
{
    static std::optional<QPalette> palette;
    return palette;
}

} // namespace

QPalette WindowAppearance::lightPalette()
{
    return makePalette(QColor(0xef, 0xef, 0xef), Qt::black, Qt::white, QColor(0xf7, 0xf7, 0xf7),
                       QColor(0xef, 0xef, 0xef), QColor(0x9a, 0x9a, 0x9a), QColor(0x6e, 0x6e, 0x6e),
                       QColor(0x30, 0x8c, 0xc6), QColor(0x00, 0x52, 0xcc), false);
}

QPalette WindowAppearance::darkPalette()
{
    return makePalette(QColor(0x2b, 0x2d, 0x31), QColor(0xe6, 0xe6, 0xe6), QColor(0x1e, 0x1f, 0x22),
                       QColor(0x26, 0x28, 0x2c), QColor(0x3a, 0x3d, 0x42), QColor(0x7d, 0x80, 0x86),
                       QColor(0xa2, 0xa6, 0xad), QColor(0x3d, 0x6f, 0xb3), QColor(0x7c, 0xb8, 0xff),
                       true);
}

void WindowAppearance::apply(Preferences::Appearance appearance)
{
    std::optional<QPalette> &desktop = systemPalette();
    if (appearance == Preferences::Appearance::System) {
        // Left alone until we change it, the palette follows the desktop's own changes too.
        if (desktop)
            QApplication::setPalette(*desktop);
        return;
    }
    if (!desktop)
        desktop = QApplication::palette();
    QApplication::setPalette(appearance == Preferences::Appearance::Dark ? darkPalette()
                                                                         : lightPalette());
}

bool WindowAppearance::isDark()
{
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

QColor WindowAppearance::errorColour(bool dark)
{
    return dark ? QColor(0xff, 0x6b, 0x6b) : QColor(Qt::red);
}
