#pragma once

#include <QMainWindow>

// The main window. Closing it quits the application; a click on its background takes the
// keyboard focus away from any text field.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    static constexpr const char *kFrameKey = "MainWindow";

signals:
    void closeRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
};
