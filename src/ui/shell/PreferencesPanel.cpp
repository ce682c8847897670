#include "ui/shell/PreferencesPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimeEdit>
#include <QVBoxLayout>

#include <limits>

PreferencesPanel::PreferencesPanel(QWidget *parent)
    : QDialog(parent), _prefsLogErrorsOnlyButton(new QCheckBox(tr("Log errors only"))),
      _prefsBeepOnErrorsButton(new QCheckBox(tr("Beep on errors"))),
      _prefsDownloadMissingDataButton(
          new QCheckBox(tr("Download missing data when an item is shown"))),
      _prefsSouthernHemisphereButton(new QCheckBox(tr("Show the Moon as seen from the "
                                                      "southern hemisphere"))),
      _timeoutValueField(new QSpinBox), _kpButton(new QCheckBox(tr("Geomagnetic storm at Kp"))),
      _kpThresholdMenu(new QComboBox), _flareButton(new QCheckBox(tr("Solar flare of class"))),
      _flareClassMenu(new QComboBox), _latitudeField(new QLineEdit), _longitudeField(new QLineEdit),
      _auroraThresholdField(new QSpinBox), _locationNote(new QLabel),
      _quietHoursButton(new QCheckBox(tr("Hold notifications from"))),
      _quietStartField(new QTimeEdit), _quietEndField(new QTimeEdit)
{
    setWindowTitle(tr("Preferences"));
    setObjectName(QStringLiteral("PreferencesPanel"));

    auto *tabs = new QTabWidget;
    tabs->addTab(makeGeneralTab(), tr("General"));
    tabs->addTab(makeNotificationsTab(), tr("Notifications"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
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
    showNotifications(NotificationSettings());
}

QWidget *PreferencesPanel::makeGeneralTab()
{
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

    auto *tab = new QWidget;
    auto *form = new QFormLayout(tab);
    form->addRow(tr("Downloads:"), activity);
    form->addRow(tr("Time-out:"), timeout);
    form->addRow(tr("Moon:"), _prefsSouthernHemisphereButton);
    return tab;
}

QWidget *PreferencesPanel::makeNotificationsTab()
{
    for (int kp = NotificationSettings::kMinimumKpThreshold;
         kp <= NotificationSettings::kMaximumKpThreshold; ++kp)
        _kpThresholdMenu->addItem(QString::number(kp), kp);
    _flareClassMenu->addItems(NotificationSettings::flareClasses());
    auto *storm = new QHBoxLayout;
    storm->addWidget(_kpButton);
    storm->addWidget(_kpThresholdMenu);
    storm->addStretch();
    auto *flare = new QHBoxLayout;
    flare->addWidget(_flareButton);
    flare->addWidget(_flareClassMenu);
    flare->addStretch();

    auto *families = new QHBoxLayout;
    const std::pair<QString, int> familyNames[] = {
        {tr("Warnings"), NotificationSettings::Warnings},
        {tr("Watches"), NotificationSettings::Watches},
        {tr("Alerts"), NotificationSettings::Alerts},
        {tr("Summaries"), NotificationSettings::Summaries}};
    for (const auto &[name, family] : familyNames) {
        auto *box = new QCheckBox(name);
        families->addWidget(box);
        _familyButtons.append({box, family});
        connect(box, &QCheckBox::toggled, this, &PreferencesPanel::notificationControlChanged);
    }
    families->addStretch();

    _latitudeField->setPlaceholderText(tr("e.g. 60.4 (south negative)"));
    _longitudeField->setPlaceholderText(tr("e.g. -105.3 (west negative)"));
    _auroraThresholdField->setRange(1, 100);
    _auroraThresholdField->setToolTip(tr("The forecast's chance of an aurora overhead, in "
                                         "percent, within a degree of your location."));
    auto *location = new QHBoxLayout;
    location->addWidget(_latitudeField);
    location->addWidget(_longitudeField);
    _locationNote->setWordWrap(true);
    auto *aurora = new QHBoxLayout;
    aurora->addWidget(new QLabel(tr("Tell me when the forecast there reaches")));
    aurora->addWidget(_auroraThresholdField);
    aurora->addWidget(new QLabel(tr("while it is dark")));
    aurora->addStretch();

    _quietStartField->setDisplayFormat(QStringLiteral("HH:mm"));
    _quietEndField->setDisplayFormat(QStringLiteral("HH:mm"));
    auto *quiet = new QHBoxLayout;
    quiet->addWidget(_quietHoursButton);
    quiet->addWidget(_quietStartField);
    quiet->addWidget(new QLabel(tr("to")));
    quiet->addWidget(_quietEndField);
    quiet->addStretch();
    auto *quietNote = new QLabel(tr("Held notifications come together when the quiet hours "
                                    "end; nothing is dropped."));
    quietNote->setForegroundRole(QPalette::PlaceholderText);
    quietNote->setWordWrap(true);
    auto *quietRows = new QVBoxLayout;
    quietRows->addLayout(quiet);
    quietRows->addWidget(quietNote);

    auto *tab = new QWidget;
    auto *form = new QFormLayout(tab);
    form->addRow(tr("Storms:"), storm);
    form->addRow(tr("Flares:"), flare);
    form->addRow(tr("Messages:"), families);
    form->addRow(tr("Location:"), location);
    form->addRow(QString(), _locationNote);
    form->addRow(tr("Aurora:"), aurora);
    form->addRow(tr("Quiet hours:"), quietRows);

    for (QCheckBox *box : {_kpButton, _flareButton, _quietHoursButton})
        connect(box, &QCheckBox::toggled, this, &PreferencesPanel::notificationControlChanged);
    for (QComboBox *menu : {_kpThresholdMenu, _flareClassMenu})
        connect(menu, &QComboBox::currentIndexChanged, this,
                &PreferencesPanel::notificationControlChanged);
    for (QLineEdit *field : {_latitudeField, _longitudeField})
        connect(field, &QLineEdit::textEdited, this, &PreferencesPanel::notificationControlChanged);
    connect(_auroraThresholdField, &QSpinBox::valueChanged, this,
            &PreferencesPanel::notificationControlChanged);
    for (QTimeEdit *field : {_quietStartField, _quietEndField})
        connect(field, &QTimeEdit::timeChanged, this,
                &PreferencesPanel::notificationControlChanged);
    return tab;
}

void PreferencesPanel::showNotifications(const NotificationSettings &settings)
{
    _showing = true;
    _kpButton->setChecked(settings.kpEnabled);
    _kpThresholdMenu->setCurrentIndex(_kpThresholdMenu->findData(settings.kpThreshold));
    _flareButton->setChecked(settings.flareEnabled);
    _flareClassMenu->setCurrentText(settings.flareClass);
    for (const auto &[box, family] : std::as_const(_familyButtons))
        box->setChecked(settings.families & family);
    const auto degrees = [](const std::optional<double> &value) {
        return value ? QString::number(*value, 'g', 10) : QString();
    };
    _latitudeField->setText(degrees(settings.latitude));
    _longitudeField->setText(degrees(settings.longitude));
    _auroraThresholdField->setValue(settings.auroraThreshold);
    _quietHoursButton->setChecked(settings.quietHours);
    _quietStartField->setTime(settings.quietStart);
    _quietEndField->setTime(settings.quietEnd);
    _showing = false;
    showLocationState();
}

NotificationSettings PreferencesPanel::notifications() const
{
    NotificationSettings settings;
    settings.kpEnabled = _kpButton->isChecked();
    settings.kpThreshold = _kpThresholdMenu->currentData().toInt();
    settings.flareEnabled = _flareButton->isChecked();
    settings.flareClass = _flareClassMenu->currentText();
    settings.families = 0;
    for (const auto &[box, family] : std::as_const(_familyButtons)) {
        if (box->isChecked())
            settings.families |= family;
    }
    settings.latitude = NotificationSettings::readLatitude(_latitudeField->text());
    settings.longitude = NotificationSettings::readLongitude(_longitudeField->text());
    if (!settings.hasLocation())
        settings.latitude = settings.longitude = std::nullopt;
    settings.auroraThreshold = _auroraThresholdField->value();
    settings.quietHours = _quietHoursButton->isChecked();
    settings.quietStart = _quietStartField->time();
    settings.quietEnd = _quietEndField->time();
    return settings;
}

void PreferencesPanel::notificationControlChanged()
{
    if (_showing)
        return;
    showLocationState();
    emit notificationsChanged(notifications());
}

void PreferencesPanel::showLocationState()
{
    const QString latitude = _latitudeField->text().trimmed();
    const QString longitude = _longitudeField->text().trimmed();
    QString note;
    bool wrong = true;
    if (!latitude.isEmpty() && !NotificationSettings::readLatitude(latitude))
        note = tr("The latitude is a number of degrees from -90 (south) to 90 (north).");
    else if (!longitude.isEmpty() && !NotificationSettings::readLongitude(longitude))
        note = tr("The longitude is a number of degrees from -180 (west) to 180 (east).");
    else if (latitude.isEmpty() || longitude.isEmpty()) {
        note = tr("The aurora is not watched until you give your latitude and longitude.");
        wrong = false;
    } else {
        note = tr("Your location stays on this computer: it is never sent anywhere.");
        wrong = false;
    }
    _locationNote->setText(note);
    _locationNote->setForegroundRole(wrong ? QPalette::WindowText : QPalette::PlaceholderText);
    QFont font = _locationNote->font();
    font.setBold(wrong);
    _locationNote->setFont(font);
    _auroraThresholdField->setEnabled(notifications().hasLocation());
}
