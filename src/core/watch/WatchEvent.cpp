#include "core/watch/WatchEvent.h"

#include "core/now/NowFormat.h"

#include <QDateTime>

QJsonObject WatchEvent::toJson() const
{
    return {{QStringLiteral("rule"), rule},
            {QStringLiteral("time"), NowFormat::isoTime(time)},
            {QStringLiteral("title"), title},
            {QStringLiteral("detail"), detail}};
}

std::optional<WatchEvent> WatchEvent::fromJson(const QJsonObject &object)
{
    const auto text = [&](const char *name) {
        return object.value(QLatin1String(name)).toString();
    };
    const std::optional<qint64> time = NowFormat::parseTime(text("time"));
    if (!time || text("rule").isEmpty() || text("title").isEmpty())
        return std::nullopt;
    return WatchEvent{text("rule"), *time, text("title"), text("detail"), false};
}

QString WatchEvent::line() const
{
    return QDateTime::fromSecsSinceEpoch(time, Qt::UTC)
               .toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'  ")) +
           title + QStringLiteral(" - ") + detail;
}

QString WatchEvent::logText() const
{
    return title + QStringLiteral(": ") + detail;
}
