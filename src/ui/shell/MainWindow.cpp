#include "ui/shell/MainWindow.h"

#include <QCloseEvent>
#include <QMouseEvent>

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("MainWindow"));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closeRequested();
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    if (QWidget *content = centralWidget()) {
        content->setFocusPolicy(Qt::ClickFocus);
        content->setFocus(Qt::MouseFocusReason);
    }
    QMainWindow::mousePressEvent(event);
}
