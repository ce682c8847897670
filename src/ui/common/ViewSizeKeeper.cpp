#include "ui/common/ViewSizeKeeper.h"

#include "core/settings/Settings.h"
#include "core/util/GeometryText.h"
#include "core/util/SplitLayout.h"

#include <QEvent>
#include <QSettings>
#include <QSplitter>

ViewSizeKeeper::ViewSizeKeeper(QWidget *view, QSplitter *splitView)
    : QObject(view), _view(view), _splitView(splitView)
{
    view->installEventFilter(this);
}

bool ViewSizeKeeper::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == _view && event->type() == QEvent::Show) {
        _laidOut = true;
        _view->removeEventFilter(this);
    }
    return QObject::eventFilter(watched, event);
}

void ViewSizeKeeper::restore(const QString &sizeKey, const QString &splitKey)
{
    QSettings &settings = Settings::store();
    const QString size = settings.value(sizeKey).toString();
    if (!size.isEmpty())
        _view->resize(GeometryText::toViewSize(size));

    if (!_splitView || splitKey.isEmpty())
        return;
    const QStringList stored = settings.value(splitKey).toStringList();
    if (stored.isEmpty())
        return;
    QList<QRect> current;
    for (int i = 0; i < _splitView->count(); ++i)
        current.append(_splitView->widget(i)->geometry());
    const bool sideBySide = _splitView->orientation() == Qt::Horizontal;
    const QList<QRect> restored = SplitLayout::restoredRects(stored, current, sideBySide);

    QList<int> sizes;
    for (const QRect &rect : restored)
        sizes.append(std::max(0, sideBySide ? rect.width() : rect.height()));
    _splitView->setSizes(sizes);
}

void ViewSizeKeeper::store(const QString &sizeKey, const QString &splitKey) const
{
    if (!_laidOut)
        return;
    QSettings &settings = Settings::store();
    settings.setValue(sizeKey, GeometryText::fromSize(_view->size()));
    if (!_splitView || splitKey.isEmpty())
        return;
    QList<QRect> frames;
    QList<bool> collapsed;
    const QList<int> sizes = _splitView->sizes();
    for (int i = 0; i < _splitView->count(); ++i) {
        frames.append(_splitView->widget(i)->geometry());
        collapsed.append(sizes.value(i) == 0);
    }
    settings.setValue(splitKey, SplitLayout::storedRects(frames, collapsed));
}
