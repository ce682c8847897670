#pragma once

#include <QDialog>

class QCheckBox;
class QSpinBox;

// The preferences panel: four check boxes and the transfer time-out. Every change applies at
// once; the values are stored when the application quits.
class PreferencesPanel : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesPanel(QWidget *parent = nullptr);

    QCheckBox *logErrorsOnlyButton() const { return _prefsLogErrorsOnlyButton; }
    QCheckBox *beepOnErrorsButton() const { return _prefsBeepOnErrorsButton; }
    QCheckBox *downloadMissingDataButton() const { return _prefsDownloadMissingDataButton; }
    QCheckBox *southernHemisphereButton() const { return _prefsSouthernHemisphereButton; }
    QSpinBox *timeoutValueField() const { return _timeoutValueField; }

signals:
    void logErrorsOnlyToggled(bool on);
    void beepOnErrorsToggled(bool on);
    void downloadMissingDataToggled(bool on);
    void southernHemisphereToggled(bool on);
    void timeoutValueChanged(int seconds);

private:
    QCheckBox *_prefsLogErrorsOnlyButton;
    QCheckBox *_prefsBeepOnErrorsButton;
    QCheckBox *_prefsDownloadMissingDataButton;
    QCheckBox *_prefsSouthernHemisphereButton;
    QSpinBox *_timeoutValueField;
};
