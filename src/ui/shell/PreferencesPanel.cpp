#include "ui/shell/PreferencesPanel.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

#include <limits>

PreferencesPanel::PreferencesPanel(QWidget *parent)
    : QDialog(parent), _prefsLogErrorsOnlyButton(new QCheckBox(tr("Log errors only"))),
      _prefsBeepOnErrorsButton(new QCheckBox(tr("Beep on errors"))),
      _prefsDownloadMissingDataButton(
          new QCheckBox(tr("Download missing data when an item is shown"))),
      _prefsSouthernHemisphereButton(new QCheckBox(tr("Show the Moon as seen from the "
                                                      "southern hemisphere"))),
      _timeoutValueField(new QSpinBox)
{
    setWindowTitle(tr("Preferences"));
    setObjectName(QStringLiteral("PreferencesPanel"));

    // The panel accepts any whole number of seconds; zero or less means the default, so that no
    // transfer is ever left without a time-out.
    _timeoutValueField->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    _timeoutValueField->setSuffix(tr(" s"));
    _timeoutValueField->setKeyboardTracking(false);
    _timeoutValueField->setToolTip(tr("A transfer that receives nothing for this long is given "
                                      "up."));
    auto *timeoutNote = new QLabel(tr("0 or less means the default of 60 seconds"));
    timeoutNote->setForegroundRole(QPalette::PlaceholderText);
    auto *timeout = new QHBoxLayout;
    timeout->addWidget(_timeoutValueField);
    timeout->addWidget(timeoutNote, 1);

    auto *activity = new QVBoxLayout;
    activity->addWidget(_prefsLogErrorsOnlyButton);
    activity->addWidget(_prefsBeepOnErrorsButton);
    activity->addWidget(_prefsDownloadMissingDataButton);

    auto *form = new QFormLayout;
    form->addRow(tr("Downloads:"), activity);
    form->addRow(tr("Time-out:"), timeout);
    form->addRow(tr("Moon:"), _prefsSouthernHemisphereButton);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(_prefsLogErrorsOnlyButton, &QCheckBox::toggled, this,
            &PreferencesPanel::logErrorsOnlyToggled);
    connect(_prefsBeepOnErrorsButton, &QCheckBox::toggled, this,
            &PreferencesPanel::beepOnErrorsToggled);
    connect(_prefsDownloadMissingDataButton, &QCheckBox::toggled, this,
            &PreferencesPanel::downloadMissingDataToggled);
    connect(_prefsSouthernHemisphereButton, &QCheckBox::toggled, this,
            &PreferencesPanel::southernHemisphereToggled);
    connect(_timeoutValueField, &QSpinBox::valueChanged, this,
            &PreferencesPanel::timeoutValueChanged);
}
