#include "ui/shell/MainWindow.h"

#include "core/settings/Settings.h"
#include "core/shell/ToolbarItems.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QMouseEvent>
#include <QScreen>
#include <QSettings>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent), _content(new QStackedWidget)
{
    setObjectName(QStringLiteral("MainWindow"));
    resize(1040, 720);
    setCentralWidget(_content);
    buildMenus();
}

QAction *MainWindow::addItem(QMenu *menu, const QString &text, const QKeySequence &shortcut)
{
    QAction *action = menu->addAction(text);
    if (!shortcut.isEmpty())
        action->setShortcut(shortcut);
    _menuItems.append(action);
    return action;
}

void MainWindow::buildMenus()
{
    QMenuBar *bar = menuBar();
    const auto add = [this](QMenu *menu, Command command, const QString &text,
                            const QKeySequence &shortcut = {}) {
        QAction *action = addItem(menu, text, shortcut);
        _commands[size_t(command)] = action;
        return action;
    };

    QMenu *file = bar->addMenu(tr("&File"));
    addItem(file, tr("&Save a Copy…"), QKeySequence::SaveAs)->setData(kSaveCopyTag);
    file->addSeparator();
    add(file, Command::Quit, tr("&Quit"), QKeySequence::Quit)->setMenuRole(QAction::QuitRole);

    QMenu *edit = bar->addMenu(tr("&Edit"));
    add(edit, Command::Preferences, tr("&Preferences…"), QKeySequence(Qt::CTRL | Qt::Key_Comma))
        ->setMenuRole(QAction::PreferencesRole);

    QMenu *view = bar->addMenu(tr("&View"));
    const QStringList names = ToolbarItems::selectableItemIdentifiers();
    for (int i = 0; i < names.size(); ++i) {
        QAction *item = addItem(view, ToolbarItems::item(names[i])->label,
                                QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + i)));
        item->setData(i);
        _viewItems.append(item);
    }
    view->addSeparator();
    add(view, Command::ShowTimesInUTC, tr("Show Times in &UTC"))->setCheckable(true);
    // The three appearances, one of them chosen; the items stay in the menu list, so that they
    // are enabled like every other item.
    QMenu *appearance = view->addMenu(tr("&Appearance"));
    auto *appearances = new QActionGroup(this);
    for (const auto &[command, text] : {std::pair{Command::AppearanceSystem, tr("&System")},
                                        std::pair{Command::AppearanceLight, tr("&Light")},
                                        std::pair{Command::AppearanceDark, tr("&Dark")}}) {
        QAction *item = add(appearance, command, text);
        item->setCheckable(true);
        appearances->addAction(item);
    }
    view->addSeparator();
    add(view, Command::CustomizeToolbar, tr("Customize &Toolbar…"));

    QMenu *data = bar->addMenu(tr("&Data"));
    add(data, Command::UpdateAll, tr("&Update All"),
        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    add(data, Command::CancelAllDownloads, tr("&Cancel All Downloads"),
        QKeySequence(Qt::CTRL | Qt::Key_Period));
    data->addSeparator();
    add(data, Command::GoOnline, tr("Go &Online"));
    add(data, Command::GoOffline, tr("Go O&ffline"));
    data->addSeparator();
    add(data, Command::EmptyCache, tr("&Empty Cache…"));
    add(data, Command::ClearHistory, tr("Clear &History…"));

    QMenu *node = bar->addMenu(tr("&Node"));
    add(node, Command::Reload, tr("&Reload"), QKeySequence::Refresh);
    add(node, Command::CancelDownload, tr("&Cancel Download"));
    addItem(node, tr("&Zoom Image"), QKeySequence(Qt::CTRL | Qt::Key_I))->setData(kZoomImageTag);
    add(node, Command::Reveal, tr("Reveal in &File Manager"));
    add(node, Command::Schedule, tr("&Schedule…"));

    QMenu *window = bar->addMenu(tr("&Window"));
    add(window, Command::ActivityLog, tr("Activity &Log"), QKeySequence(Qt::CTRL | Qt::Key_L));
    add(window, Command::ClearLog, tr("&Clear Log"));

    QMenu *help = bar->addMenu(tr("&Help"));
    add(help, Command::About, tr("&About Vantorel"))->setMenuRole(QAction::AboutRole);

    for (QMenu *menu : {file, edit, view, appearance, data, node, window, help})
        connect(menu, &QMenu::aboutToShow, this, &MainWindow::menuAboutToShow);
}

QAction *MainWindow::item(Command command) const
{
    return _commands[size_t(command)];
}

QAction *MainWindow::menuItem(int tag) const
{
    for (QAction *item : _menuItems) {
        if (item->data().isValid() && item->data().toInt() == tag)
            return item;
    }
    return nullptr;
}

void MainWindow::validateMenus(const std::function<bool(QAction *)> &isEnabled)
{
    for (QAction *item : std::as_const(_menuItems))
        item->setEnabled(isEnabled(item));
}

void MainWindow::restoreFrame()
{
    const QByteArray frame = Settings::store().value(QLatin1String(kFrameKey)).toByteArray();
    if (!frame.isEmpty() && restoreGeometry(frame))
        return;
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect available = screen->availableGeometry();
        const QSize shown = size().boundedTo(available.size() * 0.9);
        setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, shown, available));
    }
}

void MainWindow::saveFrame() const
{
    Settings::store().setValue(QLatin1String(kFrameKey), saveGeometry());
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closeRequested();
}

void MainWindow::paintEvent(QPaintEvent *event)
{
    QMainWindow::paintEvent(event);
    if (_painted)
        return;
    _painted = true;
    // The frame reaches the screen when this round of painting is over; whatever waits for it
    // runs after that.
    QTimer::singleShot(0, this, &MainWindow::firstFrameDrawn);
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    if (QWidget *content = centralWidget()) {
        content->setFocusPolicy(Qt::ClickFocus);
        content->setFocus(Qt::MouseFocusReason);
    }
    QMainWindow::mousePressEvent(event);
}
