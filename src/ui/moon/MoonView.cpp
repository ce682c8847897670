#include "ui/moon/MoonView.h"

#include "core/moon/MoonPhaseNames.h"
#include "core/moon/MoonText.h"
#include "ui/common/TimeTicker.h"
#include "ui/common/ViewSizeKeeper.h"
#include "ui/moon/MoonImageView.h"
#include "ui/moon/MoonPhasePicture.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

MoonView::MoonView(QWidget *parent)
    : QWidget(parent), _timer(new QTimer(this)), _sizeKeeper(new ViewSizeKeeper(this))
{
    _timer->setInterval(kTimerIntervalMs);
    connect(_timer, &QTimer::timeout, this, &MoonView::updateMoonDate);
    // The dates follow the zone the times are shown in.
    connect(TimeTicker::shared(), &TimeTicker::ticked, this, &MoonView::updateDisplay);
    buildInterface();
    updateDisplay();
}

// The timer is a child of the view and stops with it.
MoonView::~MoonView() = default;

QPushButton *MoonView::makeButton(const QString &text, const QString &toolTip, const char *name)
{
    auto *button = new QPushButton(text, this);
    button->setToolTip(toolTip);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}

void MoonView::buildInterface()
{
    _imageView = new MoonImageView(this);
    _imageView->setObjectName(QStringLiteral("imageView"));

    const auto makeField = [this](const char *name) {
        auto *field = new QLabel(this);
        field->setObjectName(QLatin1String(name));
        field->setAlignment(Qt::AlignCenter);
        field->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return field;
    };
    _phaseNameField = makeField("phaseNameField");
    QFont nameFont = _phaseNameField->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.35);
    nameFont.setBold(true);
    _phaseNameField->setFont(nameFont);

    _dateField = makeField("dateField");
    QFont dateFont = _dateField->font();
    dateFont.setBold(true);
    _dateField->setFont(dateFont);
    _phasePercentField = makeField("phasePercentField");
    _illuminationField = makeField("illuminationField");
    _distanceField = makeField("distanceField");
    _ageField = makeField("ageField");
    _daysUntilFullField = makeField("daysUntilFullField");
    _daysUntilNewField = makeField("daysUntilNewField");

    _previousDayButton = makeButton(
        tr("Previous Day"), tr("Show the Moon one day earlier, at midnight"), "previousDayButton");
    _previousDayButton->setIcon(style()->standardIcon(QStyle::SP_ArrowBack));
    _todayButton =
        makeButton(tr("Today"), tr("Show the Moon now and follow the clock again"), "todayButton");
    _nextDayButton =
        makeButton(tr("Next Day"), tr("Show the Moon one day later, at midnight"), "nextDayButton");
    _nextDayButton->setIcon(style()->standardIcon(QStyle::SP_ArrowForward));
    _nextFullMoonButton =
        makeButton(tr("Next Full Moon"), tr("Jump to the next full moon"), "nextFullMoonButton");
    _nextNewMoonButton =
        makeButton(tr("Next New Moon"), tr("Jump to the next new moon"), "nextNewMoonButton");

    connect(_previousDayButton, &QPushButton::clicked, this, &MoonView::setDateSubtractOneDay);
    connect(_todayButton, &QPushButton::clicked, this, &MoonView::setDateToToday);
    connect(_nextDayButton, &QPushButton::clicked, this, &MoonView::setDateAddOneDay);
    connect(_nextFullMoonButton, &QPushButton::clicked, this, &MoonView::setDateToNextFullMoon);
    connect(_nextNewMoonButton, &QPushButton::clicked, this, &MoonView::setDateToNextNewMoon);

    auto *details = new QVBoxLayout;
    details->setSpacing(4);
    details->addWidget(_dateField);
    details->addSpacing(6);
    for (QLabel *field : {_phasePercentField, _illuminationField, _distanceField, _ageField,
                          _daysUntilFullField, _daysUntilNewField})
        details->addWidget(field);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    for (QPushButton *button : {_previousDayButton, _todayButton, _nextDayButton})
        buttons->addWidget(button);
    buttons->addSpacing(18);
    for (QPushButton *button : {_nextFullMoonButton, _nextNewMoonButton})
        buttons->addWidget(button);
    buttons->addStretch(1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 18);
    layout->setSpacing(8);
    layout->addWidget(_imageView, 1);
    layout->addWidget(_phaseNameField);
    layout->addSpacing(10);
    layout->addLayout(details);
    layout->addSpacing(14);
    layout->addLayout(buttons);
}

void MoonView::awakeFromNib()
{
    loadFrameSize();
    if (_phaseNames.isEmpty())
        loadStringsFromNib();
    updateDisplay();
    _timer->start();
}

void MoonView::setHemisphere(bool southern)
{
    _dateState.setHemisphere(southern);
    updateDisplay();
}

void MoonView::setDateToToday()
{
    _dateState.setDateToToday();
    updateDisplay();
}

void MoonView::setDateAddOneDay()
{
    _dateState.setDateAddOneDay();
    updateDisplay();
}

void MoonView::setDateSubtractOneDay()
{
    _dateState.setDateSubtractOneDay();
    updateDisplay();
}

void MoonView::setDateToNextFullMoon()
{
    _dateState.setDateToNextFullMoon();
    updateDisplay();
}

void MoonView::setDateToNextNewMoon()
{
    _dateState.setDateToNextNewMoon();
    updateDisplay();
}

void MoonView::checkSetDateToToday(const QDateTime &date)
{
    _dateState.checkSetDateToToday(date);
    updateDisplay();
}

void MoonView::updateMoonDate()
{
    if (_dateState.updateMoonDate())
        updateDisplay();
}

void MoonView::updateDisplay()
{
    const MoonCalc &calc = _dateState.moonCalc();
    _dateField->setText(MoonText::dateLine(calc));
    _phasePercentField->setText(MoonText::phasePercentLine(calc));
    _illuminationField->setText(MoonText::illuminationLine(calc));
    _distanceField->setText(MoonText::distanceLine(calc));
    _ageField->setText(MoonText::ageLine(calc));
    _daysUntilFullField->setText(MoonText::nextFullMoonLine(calc));
    _daysUntilNewField->setText(MoonText::nextNewMoonLine(calc));

    const int octant = calc.moonPhaseAsInteger();
    _imageView->setImageName(MoonPhasePicture::nameForPhase(octant));
    const QString name = MoonText::phaseName(calc, _phaseNames);
    _phaseNameField->setText(name);
    _phaseNameField->setVisible(!name.isEmpty());
    _imageView->setAccessibleName(name.isEmpty() ? tr("Phase of the Moon") : name);
}

QString MoonView::formatAgeString() const
{
    return MoonText::formatAgeString(_dateState.moonCalc());
}

void MoonView::loadFrameSize()
{
    _sizeKeeper->restore(QLatin1String(kViewSizeKey));
}

void MoonView::saveFrameSize()
{
    _sizeKeeper->store(QLatin1String(kViewSizeKey));
}

void MoonView::loadStringsFromNib()
{
    const std::optional<QStringList> names = MoonPhaseNames::loadFromResources();
    if (!names) {
        qWarning("phaseNamesDict failed to load");
        return;
    }
    _phaseNames.append(*names);
    updateDisplay();
}

void MoonView::cleanup()
{
    saveFrameSize();
}
