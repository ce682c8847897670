#include "NetworkAccess.h"

#include "BuildInfo.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>

QNetworkAccessManager *NetworkAccess::manager()
{
    static QNetworkAccessManager *instance = [] {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        auto *nam = new QNetworkAccessManager(QCoreApplication::instance());
        nam->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
        // No cache is installed, so nothing is ever stored or served from one.
        nam->setCache(nullptr);
        return nam;
    }();
    return instance;
}

QByteArray NetworkAccess::userAgent()
{
    return QByteArrayLiteral("Vantorel/") + QByteArray(BuildInfo::version);
}
