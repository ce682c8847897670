#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;
class QListWidgetItem;
class QPushButton;

// "Customize Toolbar": the items the toolbar may hold on one side, the toolbar's own items in
// order on the other. The user adds, removes and reorders items, or goes back to the default set.
class ToolbarCustomizer : public QDialog {
    Q_OBJECT

public:
    explicit ToolbarCustomizer(const QStringList &current, QWidget *parent = nullptr);

    // The arrangement chosen, in order.
    QStringList identifiers() const;

    void addSelected();
    void removeSelected();
    void moveSelected(int step);
    void restoreDefaults();

    QListWidget *availableList() const { return _available; }
    QListWidget *toolbarList() const { return _toolbar; }

    // The name an item goes by in the palette.
    static QString paletteLabel(const QString &identifier);

private:
    QListWidgetItem *makeItem(const QString &identifier) const;
    void setToolbarItems(const QStringList &identifiers);
    void updateButtons();

    QListWidget *_available;
    QListWidget *_toolbar;
    QPushButton *_add;
    QPushButton *_remove;
    QPushButton *_up;
    QPushButton *_down;
};
