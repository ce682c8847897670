#pragma once

#include <QObject>
#include <QStringList>

class QAction;
class QMainWindow;
class QToolBar;

// The main window's toolbar ("toolbar"): built from the user's arrangement of the items in
// ToolbarItems, customisable through a dialog, and kept in the settings. Every item reports its
// identifier through itemSelected(); the controller decides what it does.
class MainToolbar : public QObject {
    Q_OBJECT

public:
    explicit MainToolbar(QMainWindow *window);

    QToolBar *toolbar() const { return _toolbar; }
    QStringList identifiers() const { return _identifiers; }
    // Rebuilds the toolbar with these items, in this order.
    void setIdentifiers(const QStringList &identifiers);
    void loadConfiguration();
    void saveConfiguration() const;

    // A new item for the identifier; an unknown one gives an item with neither image nor label.
    QAction *itemForItemIdentifier(const QString &identifier, QObject *parent);
    // The items currently in the toolbar, by identifier (separators and spaces excluded).
    QAction *item(const QString &identifier) const;

    // Enables each item by its rule for the online state.
    void validate(bool online);
    // Shows one of the view items as the selected one.
    void setSelectedItemIdentifier(const QString &identifier);
    QString selectedItemIdentifier() const { return _selected; }

    // Opens the customisation dialog.
    void runToolbarConfig();
    // Lets the items use the desktop's icon theme where it has a picture for them. The first
    // look-up in a theme reads its whole index, which takes longer than a frame: the window shows
    // the application's own pictures first, and this is called once it is on screen.
    void loadThemeIcons();

signals:
    void itemSelected(const QString &identifier);

private:
    QWidget *spacer(bool flexible) const;
    QIcon customizeIcon() const;
    bool eventFilter(QObject *watched, QEvent *event) override;

    QToolBar *_toolbar;
    QStringList _identifiers;
    QString _selected;
    bool _online = true;
    bool _themeIcons = false;
};
