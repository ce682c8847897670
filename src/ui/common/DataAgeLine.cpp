#include "ui/common/DataAgeLine.h"

#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "core/util/Clock.h"
#include "ui/common/WindowAppearance.h"

#include <QEvent>

DataAgeLine::DataAgeLine(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    applyColour();
}

void DataAgeLine::showNode(const Node *node)
{
    const QDateTime now = Clock::now();
    const QDateTime dataTime = node ? node->dataTime() : QDateTime();
    // One look at the file serves both texts.
    const QString stale = node ? NodeTimes::staleReason(dataTime, now, node->autoUpdates(),
                                                        node->nextUpdateInMinutes())
                               : QString();
    setText(NodeTimes::dataLine(dataTime, now));
    setToolTip(stale);
    if (_stale != !stale.isEmpty()) {
        _stale = !stale.isEmpty();
        applyColour();
    }
}

void DataAgeLine::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyColour();
}

void DataAgeLine::applyColour()
{
    // Fresh data is a side note, like the update times; stale data is a warning, in an amber
    // that reads on the light and the dark palette alike.
    // Each change of colour or role is a change of palette, which brings us back here: only
    // what differs is changed.
    const QPalette::ColorRole role = _stale ? QPalette::WindowText : QPalette::PlaceholderText;
    if (_stale) {
        const QColor amber =
            WindowAppearance::isDark() ? QColor(0xf0, 0xa8, 0x40) : QColor(0xb0, 0x60, 0x00);
        if (palette().color(QPalette::WindowText) != amber) {
            QPalette colours = palette();
            colours.setColor(QPalette::WindowText, amber);
            setPalette(colours);
        }
    }
    if (foregroundRole() != role)
        setForegroundRole(role);
}
