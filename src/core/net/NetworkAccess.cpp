#include "core/net/NetworkAccess.h"

#include "BuildInfo.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QPointer>

namespace {

QPointer<QNetworkAccessManager> &instance()
{
    static QPointer<QNetworkAccessManager> manager;
    return manager;
}

} // namespace

QNetworkAccessManager *NetworkAccess::manager()
{
    QPointer<QNetworkAccessManager> &nam = instance();
    if (!nam) {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        nam = new QNetworkAccessManager(QCoreApplication::instance());
        nam->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
        // No cache is installed, so nothing is ever stored or served from one.
        nam->setCache(nullptr);
    }
    return nam;
}

void NetworkAccess::shutdown()
{
    delete instance().data();
    // Replies and connections hand their last pieces to deferred deletion.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QByteArray NetworkAccess::userAgent()
{
    return QByteArrayLiteral("Vantorel/") + QByteArray(BuildInfo::version);
}
