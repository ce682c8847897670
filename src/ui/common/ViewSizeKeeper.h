#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

class QSplitter;
class QWidget;

// Keeps a view's size, and the panes of its split view if it has one, in the settings. What is
// stored at quit is only what was really laid out: a view that was never on screen in this
// session has only the size it was created with, and storing that would overwrite the user's
// layout with placeholders (a narrower outline at every start); its stored value stays instead.
class ViewSizeKeeper : public QObject {
    Q_OBJECT

public:
    explicit ViewSizeKeeper(QWidget *view, QSplitter *splitView = nullptr);

    // Gives the view the stored size, and the split view's panes their stored frames (a pane
    // stored as collapsed comes back collapsed); missing values leave the layout as it is.
    void restore(const QString &sizeKey, const QString &splitKey = QString());
    // Stores the view's size and its panes' frames, once the view has been on screen.
    void store(const QString &sizeKey, const QString &splitKey = QString()) const;
    // Whether the view has been on screen, and so laid out, in this session.
    bool laidOut() const { return _laidOut; }

private:
    bool eventFilter(QObject *watched, QEvent *event) override;

    QWidget *_view;
    QPointer<QSplitter> _splitView;
    bool _laidOut = false;
};
