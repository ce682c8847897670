#pragma once

#include "core/moon/MoonDateState.h"

#include <QStringList>
#include <QWidget>

class MoonImageView;
class QLabel;
class QPushButton;
class QTimer;
class ViewSizeKeeper;

// The Moon view: the phase picture and name, the date shown, the phase, illumination, distance
// and age of the Moon, and the next full and new moon, all computed on this machine. It follows
// the clock (live mode) until a command moves it to another day, and the picture is mirrored for
// the southern hemisphere when the preferences ask for it.
class MoonView : public QWidget {
    Q_OBJECT

public:
    explicit MoonView(QWidget *parent = nullptr);
    ~MoonView() override;

    static constexpr const char *kViewSizeKey = "MoonViewSize";
    static constexpr int kTimerIntervalMs = 10000;

    // Restores the size, loads the phase names, shows the present and starts the live timer.
    void awakeFromNib();
    void setHemisphere(bool southern);
    bool southernHemisphere() const { return _dateState.southernHemisphere(); }
    bool customDate() const { return _dateState.customDate(); }
    const MoonCalc &moonCalc() const { return _dateState.moonCalc(); }
    const QStringList &phaseNames() const { return _phaseNames; }
    QTimer *timer() const { return _timer; }

    // The date commands; each ends with the display up to date.
    void setDateToToday();
    void setDateAddOneDay();
    void setDateSubtractOneDay();
    void setDateToNextFullMoon();
    void setDateToNextNewMoon();
    void checkSetDateToToday(const QDateTime &date);
    // The live timer's tick: moves to the present moment unless a chosen date is shown.
    void updateMoonDate();

    void updateDisplay();
    QString formatAgeString() const;
    void loadFrameSize();
    void saveFrameSize();
    void loadStringsFromNib();
    void cleanup();

private:
    void buildInterface();
    QPushButton *makeButton(const QString &text, const QString &toolTip, const char *name);

    MoonDateState _dateState;
    QTimer *_timer = nullptr;
    QStringList _phaseNames;
    MoonImageView *_imageView = nullptr;
    QLabel *_phaseNameField = nullptr;
    QLabel *_dateField = nullptr;
    QLabel *_phasePercentField = nullptr;
    QLabel *_illuminationField = nullptr;
    QLabel *_distanceField = nullptr;
    QLabel *_ageField = nullptr;
    QLabel *_daysUntilFullField = nullptr;
    QLabel *_daysUntilNewField = nullptr;
    QPushButton *_previousDayButton = nullptr;
    QPushButton *_todayButton = nullptr;
    QPushButton *_nextDayButton = nullptr;
    QPushButton *_nextFullMoonButton = nullptr;
    QPushButton *_nextNewMoonButton = nullptr;
    ViewSizeKeeper *_sizeKeeper;
};
