#pragma once

#include "TestEnvironment.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "ui/alerts/AlertsView.h"
#include "ui/moon/MoonView.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"
#include "ui/sources/GroupView.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QStackedWidget>
#include <QtTest>

// What the widget tests share. Controls are found the way a user finds them, by what they say, so
// that a test does not depend on which class of a view holds which control. A control that is
// not there stops the test program: every later check would be meaningless.

inline QAbstractButton *button(const QWidget *root, const QString &text)
{
    for (QAbstractButton *button : root->findChildren<QAbstractButton *>()) {
        if (button->text() == text)
            return button;
    }
    qFatal("No button says \"%s\"", qPrintable(text));
}

// Whether these actions, or the buttons that say these texts, are enabled: "1" or "0" each, in
// that order.
inline QString enabledActions(const QList<QAction *> &actions)
{
    QString enabled;
    for (const QAction *action : actions)
        enabled += action->isEnabled() ? '1' : '0';
    return enabled;
}
inline QString enabledButtons(const QWidget *root, const QStringList &texts)
{
    QString enabled;
    for (const QString &text : texts)
        enabled += button(root, text)->isEnabled() ? '1' : '0';
    return enabled;
}

// The text of the first label that starts with `start`; empty when no label does.
inline QString labelStartingWith(const QWidget *root, const QString &start)
{
    for (const QLabel *label : root->findChildren<QLabel *>()) {
        if (label->text().startsWith(start))
            return label->text();
    }
    return QString();
}

// An item of a menu of the window's menu bar, both named without their accelerator marks.
inline QAction *menuItem(const QMainWindow *window, const QString &menu, const QString &text)
{
    const auto plain = [](const QAction *action) {
        return action->text().remove(QLatin1Char('&'));
    };
    for (const QAction *title : window->menuBar()->actions()) {
        if (!title->menu() || plain(title) != menu)
            continue;
        for (QAction *item : title->menu()->actions()) {
            if (plain(item) == text)
                return item;
        }
    }
    qFatal("No menu item %s > %s", qPrintable(menu), qPrintable(text));
}

// The top-level windows of that class, shown or not.
template <typename Window> QList<Window *> topLevels()
{
    QList<Window *> found;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = qobject_cast<Window *>(widget))
            found << window;
    }
    return found;
}

inline void writeImage(const QString &path, const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkYellow);
    if (!image.save(path, "PNG"))
        qFatal("Cannot write %s", qPrintable(path));
}

// The whole application, started as the executable starts it, in the test's temporary home.
inline AppController *startApplication()
{
    AppController *controller = AppController::create();
    controller->awakeFromNib();
    controller->applicationDidFinishLaunching();
    return controller;
}
