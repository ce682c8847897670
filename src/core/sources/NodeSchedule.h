#pragma once

#include <QDateTime>
#include <QString>

// When a node updates: at start-up or not, automatically or not and how often, when it was last
// updated and when it is next due. The settings live under keys named after the node's data file,
// so that they survive restarts: the three choices are written the moment they change, the last
// update only by store(), when the node is put away.
class NodeSchedule {
public:
    // Reads the stored schedule of the data file's node and computes the next update. A node
    // without history (or with a stored text that does not read back) counts as updated now.
    // A definition may give the schedule a node starts with; what the user chose wins.
    struct Defaults {
        bool autoUpdates = false;
        int autoUpdateRate = 0;
        bool downloadsAtStartup = false;
    };
    NodeSchedule(const QString &destFileName, const Defaults &defaults);

    bool autoUpdates() const { return _autoUpdates; }
    int autoUpdateRate() const { return _autoUpdateRate; }
    bool downloadsAtStartup() const { return _downloadsAtStartup; }
    // Each stores the value at once; the first two also recompute the next update.
    void setAutoUpdates(bool on);
    void setAutoUpdateRate(int rate);
    void setDownloadsAtStartup(bool on);

    // The interval of the rate index: 5, 10, 30, 60, 120, 360, 720 or 1440 minutes; any other
    // index counts as the first.
    int nextUpdateInMinutes() const;
    void calculateNextUpdate();
    void setLastUpdateNow();
    // Automatic updating is on and the next update has come.
    bool isDue() const;

    // The texts shown: "Unknown" without history, and no next update while automatic updating is
    // off ("" long, "Not Scheduled" short).
    // Whether the node has been updated (or tried to be) since it was first made.
    bool hasLastUpdate() const { return !_lastUpdateString.isEmpty(); }
    QString lastUpdate() const;
    QString shortLastUpdate() const;
    QString nextUpdate() const;
    QString shortNextUpdate() const;
    QDateTime lastUpdateDate() const { return _lastUpdateDate; }
    QDateTime nextUpdateDate() const { return _nextUpdateDate; }

    // Writes the last-update text, empty when there is no history.
    void store() const;

    static QString lastUpdateKey(const QString &destFileName);
    static QString autoUpdateKey(const QString &destFileName);
    static QString autoUpdateRateKey(const QString &destFileName);
    static QString downloadAtStartupKey(const QString &destFileName);

private:
    QString _destFileName;
    bool _autoUpdates = false;
    int _autoUpdateRate = 0;
    bool _downloadsAtStartup = false;
    QString _lastUpdateString;
    QString _shortLastUpdateString;
    QDateTime _lastUpdateDate;
    QString _nextUpdateString;
    QString _shortNextUpdateString;
    QDateTime _nextUpdateDate;
};
