#pragma once

#include "core/sources/OutlineItem.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <memory>

class AtomicFile;
class NodeDelegate;
class QNetworkReply;
class QTimer;

// One downloadable item: a source address, the data file in the data folder that holds the last
// good copy, display texts, a two-level status and an update schedule of its own. The view that
// creates a node owns it and is its delegate; the node never logs, it reports to the delegate.
class Node : public QObject, public OutlineItem {
    Q_OBJECT

public:
    // Whether a definition entry can make a node: "URL", "SourceFileName" and "DestFileName"
    // present and "DestFileName" a single plain file name, so that no entry can write outside the
    // data folder. Empty when it can, otherwise the reason in a few words.
    static QString definitionProblem(const QVariantMap &dict);

    // A node for the entry, or none when definitionProblem() objects to it.
    static std::unique_ptr<Node> create(const QVariantMap &dict, NodeDelegate *delegate,
                                        const QString &dataFolderPath, bool overrideDataMismatch);
    ~Node() override;

    // Stores the last-update text; the owner calls it before it discards its nodes.
    void cleanup();
    void removeDataFile();
    bool fileDownloaded() const;

    // Status: both texts always change together, then the delegate hears of it.
    void setStatusMessage(const QString &shortStatus, const QString &longStatus);
    QString itemStatus() const override { return _statusMessage; }
    QString longStatus() const { return _longStatusMessage; }

    QString itemName() const override { return _itemName; }
    QString nodeTitle() const { return _nodeTitle; }
    QString itemDescription() const { return _itemDescription; }
    QString filePath() const { return _filePath; }
    QString fileName() const { return _destFileName; }
    QString sourceURL() const { return _sourceURL; }
    int fileType() const { return _fileType; }
    bool isDownloading() const { return _isDownloading; }
    // Why the last attempt failed, as the activity log words it; empty when it did not fail (or
    // while a new attempt runs).
    QString lastFailure() const { return _lastFailure; }
    // Read from the kept definition on every call; an absent key gives an empty text.
    QString dataSource() const;
    QString URL() const;
    // "DataKind": how a provider's data file is read (core/now); empty for pictures and reports.
    QString dataKind() const;
    NodeDelegate *delegate() const { return _delegate; }

    bool isNode() const override { return true; }
    bool expandable() const override { return false; }
    OutlineItem *childAtIndex(int) const override { return nullptr; }

    // Schedule.
    bool autoUpdates() const { return _autoUpdates; }
    int autoUpdateRate() const { return _autoUpdateRate; }
    bool downloadsAtStartup() const { return _downloadsAtStartup; }
    void setAutoUpdates(bool on);
    void setAutoUpdateRate(int rate);
    void setDownloadsAtStartup(bool on);
    int nextUpdateInMinutes() const;
    void calculateNextUpdate();
    void setLastUpdateNow();
    bool checkAutoUpdate() const;
    QString lastUpdate() const;
    QString shortLastUpdate() const;
    QString nextUpdate() const;
    QString shortNextUpdate() const;
    QDateTime lastUpdateDate() const { return _lastUpdateDate; }
    QDateTime nextUpdateDate() const { return _nextUpdateDate; }

    // Download.
    void beginDownloadingData();
    void cancelDownloading();
    void beginOrCancelDownload();
    void resetDownload();

    static QString lastUpdateKey(const QString &destFileName);
    static QString autoUpdateKey(const QString &destFileName);
    static QString autoUpdateRateKey(const QString &destFileName);
    static QString downloadAtStartupKey(const QString &destFileName);

    // A file directly inside a folder. Unlike QDir::filePath, a name that Qt would read as a
    // resource path (":name") or as absolute stays a name inside the folder.
    static QString pathInFolder(const QString &folder, const QString &name);

    static QString checkMark();
    static QString errorStatusLong();

    // A transfer that grows past this is stopped: a broken or hostile server must not be able to
    // fill the disk, and no real image or bulletin comes near it.
    static constexpr qint64 kMaximumDataSize = qint64(256) * 1024 * 1024;
    static constexpr qint64 kReadBufferSize = qint64(1) * 1024 * 1024;

private:
    Node(const QVariantMap &dict, NodeDelegate *delegate, const QString &dataFolderPath,
         bool overrideDataMismatch);

    void loadSchedule();
    void failAtStart(const QString &error);
    void connectionDidReceiveResponse();
    void connectionDidReceiveData();
    void connectionDidFinishLoading();
    void connectionDidFail(const QString &description, const QString &failingAddress);
    void transferFinished();
    void transferTimedOut();
    void restartInactivityTimer();
    void reportFailure(const QString &error);

    NodeDelegate *_delegate = nullptr;
    QVariantMap _dict;
    QString _dataFolderPath;
    QString _destFileName;
    QString _itemName;
    QString _nodeTitle;
    QString _itemDescription;
    int _fileType = 0;
    QString _lastUpdateString;
    QString _shortLastUpdateString;
    QDateTime _lastUpdateDate;
    QString _nextUpdateString;
    QString _shortNextUpdateString;
    QDateTime _nextUpdateDate;
    QString _statusMessage;
    QString _longStatusMessage;
    bool _autoUpdates = false;
    int _autoUpdateRate = 0;
    bool _downloadsAtStartup = false;
    bool _overrideDataMismatch = false;
    QPointer<QNetworkReply> _download;
    // The bytes of the transfer in progress, written as they arrive.
    std::unique_ptr<AtomicFile> _receivedData;
    // The first bytes of the same transfer, kept for the content check at its end.
    QByteArray _firstBytes;
    bool _isDownloading = false;
    QString _sourceURL;
    QString _filePath;
    qint64 _bytesReceived = 0;
    qint64 _expectedContentLength = 0;
    QTimer *_inactivityTimer = nullptr;
    QString _lastFailure;
    int _timeoutMilliseconds = 0;
};
