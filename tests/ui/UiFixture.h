#pragma once

#include "TestEnvironment.h"

#include "ui/shell/AppController.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
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

// Whether the buttons that say these texts are enabled, in that order.
inline QList<bool> enabledButtons(const QWidget *root, const QStringList &texts)
{
    QList<bool> enabled;
    for (const QString &text : texts)
        enabled << button(root, text)->isEnabled();
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

inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Cannot write %s", qPrintable(path));
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
