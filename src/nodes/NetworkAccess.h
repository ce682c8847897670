#pragma once

#include <QByteArray>

class QNetworkAccessManager;

// The application's one network access manager: shared connections, the system's proxy settings,
// redirects followed (never from https down to http) and no response cache at all.
class NetworkAccess {
public:
    static QNetworkAccessManager *manager();
    static QByteArray userAgent();
};
