#pragma once

#include "core/sources/NodeDefinition.h"
#include "core/sources/NodeSchedule.h"
#include "core/sources/NodeStatus.h"
#include "core/sources/OutlineItem.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>

class NodeDelegate;
class NodeTransfer;

// One downloadable item: a source address, the data file in the data folder that holds the last
// good copy, display texts, a two-level status and an update schedule of its own. The view that
// creates a node owns it and is its delegate; the node never logs, it reports to the delegate.
//
// A node is made of three parts: the definition entry it was made from (NodeDefinition), its
// schedule (NodeSchedule) and, while it downloads, its transfer (NodeTransfer). It ties them
// together: it keeps the state that its status texts say (NodeStatus), moves the schedule on at
// the end of every attempt and tells its delegate, in a fixed order, what happened.
class Node : public QObject, public OutlineItem {
    Q_OBJECT

public:
    using State = NodeStatus::State;

    // See NodeDefinition::problem().
    static QString definitionProblem(const QVariantMap &dict);

    // A node for the entry, or none when definitionProblem() objects to it.
    static std::unique_ptr<Node> create(const QVariantMap &dict, NodeDelegate *delegate,
                                        const QString &dataFolderPath, bool overrideDataMismatch);
    ~Node() override;

    // Stores the last-update text; the owner calls it before it discards its nodes.
    void cleanup();
    void removeDataFile();
    bool fileDownloaded() const;
    // When the data in the data file was made: the file's modification time, which a download
    // sets to the server's last change or the newest sample's time where it knows them (see
    // NodeTransfer, NowDownload), else the time of the download. Invalid without a data file.
    QDateTime dataTime() const;

    // Status: both texts always change together, then the delegate hears of it. The node's own
    // changes go through its state; setStatusMessage() sets texts of the caller's choosing and
    // leaves the state alone.
    void setStatusMessage(const QString &shortStatus, const QString &longStatus);
    // Marks the node as waiting in its view's queue, with that view's long text.
    void setQueued(const QString &longStatus);
    State state() const { return _state; }
    QString itemStatus() const override { return _statusMessage; }
    QString longStatus() const { return _longStatusMessage; }

    QString itemName() const override { return _definition.itemName(); }
    QString nodeTitle() const { return _definition.nodeTitle(); }
    QString itemDescription() const { return _definition.itemDescription(); }
    QString filePath() const { return _filePath; }
    QString fileName() const { return _definition.destFileName(); }
    QString sourceURL() const { return _definition.sourceURL(); }
    int fileType() const { return _definition.fileType(); }
    bool isDownloading() const;
    // Why the last attempt failed, as the activity log words it; empty when it did not fail (or
    // while a new attempt runs).
    QString lastFailure() const { return _lastFailure; }
    // Read from the kept definition on every call; an absent key gives an empty text.
    QString dataSource() const { return _definition.dataSource(); }
    QString URL() const { return _definition.URL(); }
    // "DataKind": how a provider's data file is read (core/now); empty for pictures and reports.
    QString dataKind() const { return _definition.dataKind(); }
    NodeDelegate *delegate() const { return _delegate; }

    bool isNode() const override { return true; }
    bool expandable() const override { return false; }
    OutlineItem *childAtIndex(int) const override { return nullptr; }

    // Schedule (see NodeSchedule). Changing automatic updating or its rate tells the delegate.
    bool autoUpdates() const { return _schedule.autoUpdates(); }
    int autoUpdateRate() const { return _schedule.autoUpdateRate(); }
    bool downloadsAtStartup() const { return _schedule.downloadsAtStartup(); }
    void setAutoUpdates(bool on);
    void setAutoUpdateRate(int rate);
    void setDownloadsAtStartup(bool on) { _schedule.setDownloadsAtStartup(on); }
    int nextUpdateInMinutes() const { return _schedule.nextUpdateInMinutes(); }
    void calculateNextUpdate() { _schedule.calculateNextUpdate(); }
    void setLastUpdateNow() { _schedule.setLastUpdateNow(); }
    // Due for an automatic update; never while a transfer runs.
    bool checkAutoUpdate() const;
    bool hasLastUpdate() const { return _schedule.hasLastUpdate(); }
    QString lastUpdate() const { return _schedule.lastUpdate(); }
    QString shortLastUpdate() const { return _schedule.shortLastUpdate(); }
    QString nextUpdate() const { return _schedule.nextUpdate(); }
    QString shortNextUpdate() const { return _schedule.shortNextUpdate(); }
    QDateTime lastUpdateDate() const { return _schedule.lastUpdateDate(); }
    QDateTime nextUpdateDate() const { return _schedule.nextUpdateDate(); }

    // Download.
    void beginDownloadingData();
    void cancelDownloading();
    void beginOrCancelDownload();
    void resetDownload();

    static QString lastUpdateKey(const QString &destFileName);
    static QString autoUpdateKey(const QString &destFileName);
    static QString autoUpdateRateKey(const QString &destFileName);
    static QString downloadAtStartupKey(const QString &destFileName);
    // See NodeDefinition::pathInFolder().
    static QString pathInFolder(const QString &folder, const QString &name);
    static QString checkMark() { return NodeStatus::checkMark(); }
    static QString errorStatusLong() { return NodeStatus::errorLong(); }

private:
    Node(const QVariantMap &dict, NodeDelegate *delegate, const QString &dataFolderPath,
         bool overrideDataMismatch);

    void setState(State state, int percent = -1);
    void failAtStart(const QString &error);
    void connectionDidFinishLoading();
    void transferConcluded(const QString &problem);
    void connectionDidFail(const QString &reason);
    void reportFailure(const QString &error);

    NodeDelegate *_delegate = nullptr;
    NodeDefinition _definition;
    QString _filePath;
    bool _overrideDataMismatch = false;
    NodeSchedule _schedule;
    State _state = State::Idle;
    QString _statusMessage;
    QString _longStatusMessage;
    QString _lastFailure;
    // Made for the first download and kept.
    std::unique_ptr<NodeTransfer> _transfer;
};
