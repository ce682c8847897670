#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

// Stands in for the desktop when a folder, a web page or a mail address is opened: registered as
// the handler of a scheme (QDesktopServices::setUrlHandler), it keeps what it was asked to open.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
    Q_INVOKABLE void open(const QUrl &url) { opened << url; }
};
