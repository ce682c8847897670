#include "core/net/NetworkAccess.h"

#include "BuildInfo.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QPointer>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

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
#if defined(__GLIBC__)
        // The network thread hands the data over in blocks of up to a megabyte, which the main
        // thread frees once it has written them out. Left to itself, glibc's allocator maps and
        // unmaps such blocks, or trims the heap under them, so that every block costs fresh
        // pages: that took more processor time than the transfers' own copying. Keep blocks of
        // this size in the heap, and free heap up to a few blocks' worth for the next ones.
        mallopt(M_MMAP_THRESHOLD, 4 * 1024 * 1024);
        mallopt(M_TRIM_THRESHOLD, 16 * 1024 * 1024);
#endif
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
