#include "core/sources/NodeSchedule.h"

#include "core/settings/Settings.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/Clock.h"

#include <QSettings>

NodeSchedule::NodeSchedule(const QString &destFileName, const Defaults &defaults)
    : _destFileName(destFileName)
{
    QSettings &settings = Settings::store();
    const QString stored = settings.value(lastUpdateKey(_destFileName)).toString();
    const QDateTime parsed = UpdateTimeText::parseLongLastUpdate(stored);
    if (!stored.isEmpty() && parsed.isValid()) {
        _lastUpdateString = stored;
        _lastUpdateDate = parsed;
        _shortLastUpdateString = UpdateTimeText::shortForm(_lastUpdateDate);
    } else {
        _lastUpdateDate = Clock::now();
    }

    _autoUpdates =
        settings.value(autoUpdateKey(_destFileName), int(defaults.autoUpdates)).toInt() != 0;
    _autoUpdateRate =
        settings.value(autoUpdateRateKey(_destFileName), defaults.autoUpdateRate).toInt();
    _downloadsAtStartup =
        settings.value(downloadAtStartupKey(_destFileName), int(defaults.downloadsAtStartup))
            .toInt() != 0;
    calculateNextUpdate();
}

QString NodeSchedule::lastUpdateKey(const QString &destFileName)
{
    return QStringLiteral("lastUpdateForNode") + destFileName;
}

QString NodeSchedule::autoUpdateKey(const QString &destFileName)
{
    return QStringLiteral("autoUpdateNode") + destFileName;
}

QString NodeSchedule::autoUpdateRateKey(const QString &destFileName)
{
    return QStringLiteral("autoUpdateRateNode") + destFileName;
}

QString NodeSchedule::downloadAtStartupKey(const QString &destFileName)
{
    return QStringLiteral("downloadAtStartupNode") + destFileName;
}

void NodeSchedule::setAutoUpdates(bool on)
{
    _autoUpdates = on;
    Settings::store().setValue(autoUpdateKey(_destFileName), int(on));
    calculateNextUpdate();
}

void NodeSchedule::setAutoUpdateRate(int rate)
{
    _autoUpdateRate = rate;
    Settings::store().setValue(autoUpdateRateKey(_destFileName), rate);
    calculateNextUpdate();
}

void NodeSchedule::setDownloadsAtStartup(bool on)
{
    _downloadsAtStartup = on;
    Settings::store().setValue(downloadAtStartupKey(_destFileName), int(on));
}

int NodeSchedule::nextUpdateInMinutes() const
{
    static constexpr int minutes[] = {5, 10, 30, 60, 120, 360, 720, 1440};
    if (_autoUpdateRate < 0 || _autoUpdateRate > 7)
        return 5;
    return minutes[_autoUpdateRate];
}

void NodeSchedule::calculateNextUpdate()
{
    _nextUpdateDate = _lastUpdateDate.addSecs(qint64(nextUpdateInMinutes()) * 60);
    _nextUpdateString = UpdateTimeText::longNextUpdate(_nextUpdateDate);
    _shortNextUpdateString = UpdateTimeText::shortForm(_nextUpdateDate);
}

void NodeSchedule::setLastUpdateNow()
{
    _lastUpdateDate = Clock::now();
    _lastUpdateString = UpdateTimeText::longLastUpdate(_lastUpdateDate);
    _shortLastUpdateString = UpdateTimeText::shortForm(_lastUpdateDate);
}

bool NodeSchedule::isDue() const
{
    if (!_autoUpdates)
        return false;
    if (!_nextUpdateDate.isValid())
        return true;
    return Clock::now() >= _nextUpdateDate;
}

QString NodeSchedule::lastUpdate() const
{
    return _lastUpdateString.isEmpty() ? QStringLiteral("Unknown") : _lastUpdateString;
}

QString NodeSchedule::shortLastUpdate() const
{
    return _shortLastUpdateString.isEmpty() ? QStringLiteral("Unknown") : _shortLastUpdateString;
}

QString NodeSchedule::nextUpdate() const
{
    return _autoUpdates ? _nextUpdateString : QString();
}

QString NodeSchedule::shortNextUpdate() const
{
    return _autoUpdates ? _shortNextUpdateString : QStringLiteral("Not Scheduled");
}

void NodeSchedule::store() const
{
    Settings::store().setValue(lastUpdateKey(_destFileName), _lastUpdateString);
}
