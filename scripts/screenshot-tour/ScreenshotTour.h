#pragma once

#include <QObject>
#include <QString>

class AppController;

// Walks the application through what a user sees and saves a picture of each: the six views,
// the activity log, the preferences panel, the schedule sheet and an image window, at the
// default window size and at a small one, in the light and in the dark appearance.
class ScreenshotTour : public QObject {
    Q_OBJECT

public:
    ScreenshotTour(AppController *controller, const QString &folder);
    // Returns the number of pictures that could not be saved.
    int run();

private:
    // One appearance's pictures.
    void tour();
    bool save(QWidget *widget, const QString &name);
    void settle();

    AppController *_controller;
    QString _folder;
    // Put before every picture's name: the appearance it shows.
    QString _prefix;
    int _failures = 0;
};
