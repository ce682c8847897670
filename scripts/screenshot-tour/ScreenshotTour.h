#pragma once

#include <QObject>
#include <QString>

class AppController;

// Walks the application through what a user sees and saves a picture of each: the six views,
// the activity log, the preferences panel, the schedule sheet and an image window, at the
// default window size and at a small one.
class ScreenshotTour : public QObject {
    Q_OBJECT

public:
    ScreenshotTour(AppController *controller, const QString &folder);
    // Returns the number of pictures that could not be saved.
    int run();

private:
    bool save(QWidget *widget, const QString &name);
    void settle();

    AppController *_controller;
    QString _folder;
    int _failures = 0;
};
