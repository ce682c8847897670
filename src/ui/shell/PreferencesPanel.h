#pragma once

#include "core/settings/NotificationSettings.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QTimeEdit;

// The preferences panel. General: four check boxes and the transfer time-out. Notifications: the
// watcher's rules (thresholds, message families, the home location for the aurora) and the quiet
// hours. Every change applies at once; the values are stored when the application quits.
class PreferencesPanel : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesPanel(QWidget *parent = nullptr);

    QCheckBox *logErrorsOnlyButton() const { return _prefsLogErrorsOnlyButton; }
    QCheckBox *beepOnErrorsButton() const { return _prefsBeepOnErrorsButton; }
    QCheckBox *downloadMissingDataButton() const { return _prefsDownloadMissingDataButton; }
    QCheckBox *southernHemisphereButton() const { return _prefsSouthernHemisphereButton; }
    QSpinBox *timeoutValueField() const { return _timeoutValueField; }
    QLineEdit *latitudeField() const { return _latitudeField; }
    QLineEdit *longitudeField() const { return _longitudeField; }

    // Shows the settings without announcing a change.
    void showNotifications(const NotificationSettings &settings);
    // What the Notifications tab shows; a location that does not read is none.
    NotificationSettings notifications() const;

signals:
    void logErrorsOnlyToggled(bool on);
    void beepOnErrorsToggled(bool on);
    void downloadMissingDataToggled(bool on);
    void southernHemisphereToggled(bool on);
    void timeoutValueChanged(int seconds);
    void notificationsChanged(const NotificationSettings &settings);

private:
    QWidget *makeGeneralTab();
    QWidget *makeNotificationsTab();
    void notificationControlChanged();
    // Says what is wrong with the location typed, or that the aurora rule waits for one.
    void showLocationState();

    QCheckBox *_prefsLogErrorsOnlyButton;
    QCheckBox *_prefsBeepOnErrorsButton;
    QCheckBox *_prefsDownloadMissingDataButton;
    QCheckBox *_prefsSouthernHemisphereButton;
    QSpinBox *_timeoutValueField;

    QCheckBox *_kpButton;
    QComboBox *_kpThresholdMenu;
    QCheckBox *_flareButton;
    QComboBox *_flareClassMenu;
    QList<std::pair<QCheckBox *, int>> _familyButtons;
    QLineEdit *_latitudeField;
    QLineEdit *_longitudeField;
    QSpinBox *_auroraThresholdField;
    QLabel *_locationNote;
    QCheckBox *_quietHoursButton;
    QTimeEdit *_quietStartField;
    QTimeEdit *_quietEndField;
    bool _showing = false;
};
