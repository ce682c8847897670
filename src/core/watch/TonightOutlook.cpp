#include "core/watch/TonightOutlook.h"

#include "core/moon/MoonCalc.h"
#include "core/now/AuroraGrid.h"
#include "core/settings/NotificationSettings.h"
#include "core/watch/SolarPosition.h"

#include <cmath>

QString TonightOutlook::line(const AuroraGrid *aurora, const NotificationSettings &settings,
                             const QDateTime &now)
{
    if (!settings.hasLocation())
        return QString();
    const double latitude = *settings.latitude;
    const double longitude = *settings.longitude;
    const qint64 seconds = now.toSecsSinceEpoch();

    const QString auroraText =
        aurora
            ? QStringLiteral("aurora %1").arg(std::lround(aurora->valueNear(latitude, longitude)))
            : QStringLiteral("aurora unknown");
    QString darkText;
    if (const std::optional<qint64> begins =
            SolarPosition::darknessBegins(seconds, latitude, longitude)) {
        darkText =
            QStringLiteral("dark from ") +
            QDateTime::fromSecsSinceEpoch(*begins, Qt::UTC).toString(QStringLiteral("HH:mm 'UTC'"));
    } else {
        darkText = SolarPosition::isDark(seconds, latitude, longitude)
                       ? QStringLiteral("dark all day")
                       : QStringLiteral("no darkness tonight");
    }
    MoonCalc moon;
    moon.setDate(now.toTimeZone(MoonCalc::defaultTimeZone()));
    return QStringLiteral("Tonight at home: %1, %2, Moon %3 % lit")
        .arg(auroraText, darkText)
        .arg(std::lround(moon.moonIllumination() * 100.0));
}
