#pragma once

#include <QByteArray>

class QNetworkAccessManager;

// The application's one network access manager: shared connections, the system's proxy settings,
// redirects followed (never from https down to http) and no response cache at all.
class NetworkAccess {
public:
    static QNetworkAccessManager *manager();
    // Ends every connection and the manager's network thread now, while the event loop can
    // still finish their teardown; manager() makes a new one if it is asked for again.
    static void shutdown();
    static QByteArray userAgent();
};
