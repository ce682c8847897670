#include "ui/now/NowLevelColors.h"

#include <QLabel>

#include <algorithm>

QColor NowLevelColors::background(int level)
{
    static const QColor colours[] = {QColor(0x2e, 0x7d, 0x32), QColor(0xf2, 0xd3, 0x1b),
                                     QColor(0xf5, 0xa6, 0x23), QColor(0xee, 0x6c, 0x1a),
                                     QColor(0xd7, 0x26, 0x1e), QColor(0x8e, 0x10, 0x1a)};
    return colours[std::clamp(level, 0, 5)];
}

QColor NowLevelColors::text(int level)
{
    return std::clamp(level, 0, 5) >= 4 || level <= 0 ? QColor(Qt::white)
                                                      : QColor(0x1a, 0x1a, 0x1a);
}

void NowLevelColors::paintBadge(QLabel *label, int level)
{
    label->setStyleSheet(QStringLiteral("QLabel { background: %1; color: %2; border-radius: 4px; "
                                        "padding: 1px 6px; font-weight: bold; }")
                             .arg(background(level).name(), text(level).name()));
}
