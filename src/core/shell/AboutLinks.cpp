#include "core/shell/AboutLinks.h"

#include "BuildInfo.h"

#include <QUrlQuery>

QUrl AboutLinks::authorHomePage()
{
    return QUrl(QLatin1String(BuildInfo::homePage));
}

QUrl AboutLinks::mail()
{
    QUrl url(QStringLiteral("mailto:author@vantorel.example.org"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("subject"), QStringLiteral("Vantorel"));
    url.setQuery(query);
    return url;
}

QUrl AboutLinks::donation()
{
    QUrl url(QLatin1String(BuildInfo::homePage) + QStringLiteral("/donate"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("currency_code"), QStringLiteral("USD"));
    query.addQueryItem(QStringLiteral("no_note"), QStringLiteral("1"));
    query.addQueryItem(QStringLiteral("tax"), QStringLiteral("0"));
    url.setQuery(query);
    return url;
}

QUrl AboutLinks::relatedSiteOne()
{
    return QUrl(QStringLiteral("https://www.spaceweather.gov/"));
}

QUrl AboutLinks::relatedSiteTwo()
{
    return QUrl(QStringLiteral("https://sdo.gsfc.nasa.gov/"));
}
