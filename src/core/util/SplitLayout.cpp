#include "core/util/SplitLayout.h"

#include "core/util/GeometryText.h"

QStringList SplitLayout::storedRects(const QList<QRect> &frames, const QList<bool> &collapsed)
{
    QStringList result;
    for (qsizetype i = 0; i < frames.size(); ++i) {
        const bool isCollapsed = collapsed.value(i, false);
        result.append(GeometryText::fromRect(isCollapsed ? QRect(0, 0, 0, 0) : frames[i]));
    }
    return result;
}

QList<QRect> SplitLayout::restoredRects(const QStringList &stored, const QList<QRect> &current,
                                        bool sideBySide)
{
    QList<QRect> result = current;
    const qsizetype count = std::min(stored.size(), current.size());
    for (qsizetype i = 0; i < count; ++i) {
        QRect rect = GeometryText::toRect(stored[i]);
        if (GeometryText::isEmptyRect(rect)) {
            rect = current[i];
            if (sideBySide)
                rect.setWidth(0);
            else
                rect.setHeight(0);
        }
        result[i] = rect;
    }
    return result;
}
