#pragma once

#include <QMainWindow>

#include <array>
#include <functional>

class QAction;
class QStackedWidget;

// The main window: the views in one stack, of which one is shown, the menu bar with every menu
// item, and the frame kept in the settings. The window owns its menu items and enables them, but
// what they do and when they may act is the controller's to say: it connects to the items and
// hands validateMenus() its rule. Closing the window quits the application; a click on its
// background takes the keyboard focus away from any text field.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    static constexpr const char *kFrameKey = "MainWindow";
    // The tags of the two menu items that need a node with data selected in an image view. The
    // view menu's items carry the view numbers 0 to 6 as theirs.
    static constexpr int kZoomImageTag = 766;
    static constexpr int kSaveCopyTag = 767;

    // The menu items without a tag of their own.
    enum class Command {
        Quit,
        Preferences,
        CustomizeToolbar,
        UpdateAll,
        CancelAllDownloads,
        GoOnline,
        GoOffline,
        EmptyCache,
        ClearHistory,
        Reload,
        CancelDownload,
        Reveal,
        Schedule,
        ActivityLog,
        ClearLog,
        ShowTimesInUTC,
        AppearanceSystem,
        AppearanceLight,
        AppearanceDark,
        About,
    };

    QAction *item(Command command) const;
    // A menu item by its tag, or none.
    QAction *menuItem(int tag) const;
    // The view menu's items, in view-number order.
    QList<QAction *> viewItems() const { return _viewItems; }
    QList<QAction *> menuItems() const { return _menuItems; }
    // Enables each menu item by the rule.
    void validateMenus(const std::function<bool(QAction *)> &isEnabled);

    // The stack of views, the window's content.
    QStackedWidget *content() const { return _content; }

    // Gives the window its stored frame; a first run, or a frame that cannot be used, gets the
    // default size (smaller on a small screen), centred.
    void restoreFrame();
    void saveFrame() const;

signals:
    void closeRequested();
    // A menu is about to open; its items' enabling must be up to date.
    void menuAboutToShow();
    // Emitted once, on the turn of the event loop after the window's first frame was drawn.
    void firstFrameDrawn();

protected:
    void closeEvent(QCloseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void buildMenus();
    QAction *addItem(QMenu *menu, const QString &text, const QKeySequence &shortcut = {});

    QStackedWidget *_content;
    QList<QAction *> _menuItems;
    QList<QAction *> _viewItems;
    std::array<QAction *, size_t(Command::About) + 1> _commands{};
    bool _painted = false;
};
