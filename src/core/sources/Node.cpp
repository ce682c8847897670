#include "core/sources/Node.h"

#include "core/net/AtomicFile.h"
#include "core/net/ContentCheck.h"
#include "core/net/NetworkAccess.h"
#include "core/now/NowDownload.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/sources/NodeDelegate.h"
#include "core/sources/UpdateTimeText.h"
#include "core/util/Clock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSettings>
#include <QTimer>
#include <QUrl>

#include <cmath>
#include <limits>

namespace {

QString stringValue(const QVariantMap &dict, const char *key)
{
    const QVariant v = dict.value(QLatin1String(key));
    return v.canConvert<QString>() ? v.toString() : QString();
}

// "FileType" may be written as a number or as decimal text; anything else counts as 0.
int integerValue(const QVariant &value)
{
    bool ok = false;
    const qlonglong n = value.toLongLong(&ok);
    if (ok)
        return int(std::clamp<qlonglong>(n, std::numeric_limits<int>::min(),
                                         std::numeric_limits<int>::max()));
    const double d = value.toString().trimmed().toDouble(&ok);
    if (ok && std::isfinite(d))
        return int(std::clamp<double>(d, std::numeric_limits<int>::min(),
                                      std::numeric_limits<int>::max()));
    return 0;
}

QString failedText(const QString &name, const QString &reason)
{
    return QStringLiteral("Download of \"%1\" Failed: %2").arg(name, reason);
}

} // namespace

QString Node::checkMark()
{
    return QString(QChar(0x221A));
}

QString Node::errorStatusLong()
{
    return QStringLiteral("Error, please see Activity Window for details");
}

QString Node::lastUpdateKey(const QString &destFileName)
{
    return QStringLiteral("lastUpdateForNode") + destFileName;
}

QString Node::autoUpdateKey(const QString &destFileName)
{
    return QStringLiteral("autoUpdateNode") + destFileName;
}

QString Node::autoUpdateRateKey(const QString &destFileName)
{
    return QStringLiteral("autoUpdateRateNode") + destFileName;
}

QString Node::downloadAtStartupKey(const QString &destFileName)
{
    return QStringLiteral("downloadAtStartupNode") + destFileName;
}

QString Node::definitionProblem(const QVariantMap &dict)
{
    for (const char *key : {"URL", "SourceFileName", "DestFileName"}) {
        const QVariant v = dict.value(QLatin1String(key));
        if (!v.isValid() || v.typeId() == QMetaType::QVariantMap ||
            v.typeId() == QMetaType::QVariantList)
            return QStringLiteral("no \"%1\"").arg(QLatin1String(key));
    }
    const QString dest = stringValue(dict, "DestFileName");
    if (dest.isEmpty() || dest == QLatin1String(".") || dest == QLatin1String("..") ||
        dest.contains(QLatin1Char('/')) || dest.contains(QLatin1Char('\\')) ||
        dest.contains(QChar(0)))
        return QStringLiteral("\"DestFileName\" is not a plain file name");
    return QString();
}

QString Node::pathInFolder(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return QStringLiteral("./") + name;
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

std::unique_ptr<Node> Node::create(const QVariantMap &dict, NodeDelegate *delegate,
                                   const QString &dataFolderPath, bool overrideDataMismatch)
{
    if (!definitionProblem(dict).isEmpty())
        return nullptr;
    return std::unique_ptr<Node>(new Node(dict, delegate, dataFolderPath, overrideDataMismatch));
}

Node::Node(const QVariantMap &dict, NodeDelegate *delegate, const QString &dataFolderPath,
           bool overrideDataMismatch)
{
    _destFileName = stringValue(dict, "DestFileName");
    _itemName = stringValue(dict, "NodeName");
    _nodeTitle = stringValue(dict, "NodeTitle");
    _itemDescription = stringValue(dict, "Description");

    _delegate = delegate;
    _dict = dict;
    _dataFolderPath = dataFolderPath;

    _sourceURL = stringValue(dict, "URL") + stringValue(dict, "SourceFileName");
    _filePath = pathInFolder(_dataFolderPath, _destFileName);
    _fileType = integerValue(_dict.value(QStringLiteral("FileType")));
    _overrideDataMismatch = overrideDataMismatch;

    loadSchedule();

    if (fileDownloaded()) {
        _statusMessage = checkMark();
        _longStatusMessage = QString();
    } else {
        _statusMessage = QStringLiteral("!");
        _longStatusMessage = QStringLiteral("Press \"Reload\" to begin");
    }

    calculateNextUpdate();
    resetDownload();
}

Node::~Node()
{
    // A transfer still running must never call back into a node that is gone.
    resetDownload();
}

void Node::cleanup()
{
    Settings::store().setValue(lastUpdateKey(_destFileName), _lastUpdateString);
}

void Node::removeDataFile()
{
    if (QFileInfo::exists(_filePath))
        QFile::remove(_filePath);
}

bool Node::fileDownloaded() const
{
    return QFileInfo::exists(_filePath);
}

void Node::setStatusMessage(const QString &shortStatus, const QString &longStatus)
{
    _statusMessage = shortStatus;
    _longStatusMessage = longStatus;
    if (_delegate)
        _delegate->nodeHasMessage(this);
}

QString Node::dataSource() const
{
    return stringValue(_dict, "DataSource");
}

QString Node::URL() const
{
    return stringValue(_dict, "URL");
}

QString Node::dataKind() const
{
    return stringValue(_dict, "DataKind");
}

// --- Schedule -------------------------------------------------------------------------------

void Node::loadSchedule()
{
    QSettings &settings = Settings::store();
    const QString stored = settings.value(lastUpdateKey(_destFileName)).toString();
    const QDateTime parsed = UpdateTimeText::parseLongLastUpdate(stored);
    if (!stored.isEmpty() && parsed.isValid()) {
        _lastUpdateString = stored;
        _lastUpdateDate = parsed;
        _shortLastUpdateString = UpdateTimeText::shortForm(_lastUpdateDate);
    } else {
        // No history, or a text that does not read back: the node counts as updated now.
        _lastUpdateString.clear();
        _shortLastUpdateString.clear();
        _lastUpdateDate = Clock::now();
    }

    // A definition may give the schedule a node starts with; what the user chose wins.
    const auto initial = [this](const char *key) { return integerValue(_dict.value(key)); };
    _autoUpdates = settings.value(autoUpdateKey(_destFileName), initial("AutoUpdate")).toInt() != 0;
    _autoUpdateRate =
        settings.value(autoUpdateRateKey(_destFileName), initial("AutoUpdateRate")).toInt();
    _downloadsAtStartup =
        settings.value(downloadAtStartupKey(_destFileName), initial("DownloadAtStartup")).toInt() !=
        0;
}

void Node::setAutoUpdates(bool on)
{
    _autoUpdates = on;
    Settings::store().setValue(autoUpdateKey(_destFileName), int(on));
    calculateNextUpdate();
    if (_delegate)
        _delegate->nodeDidChangeUpdateSettings(this);
}

void Node::setAutoUpdateRate(int rate)
{
    _autoUpdateRate = rate;
    Settings::store().setValue(autoUpdateRateKey(_destFileName), rate);
    calculateNextUpdate();
    if (_delegate)
        _delegate->nodeDidChangeUpdateSettings(this);
}

void Node::setDownloadsAtStartup(bool on)
{
    _downloadsAtStartup = on;
    Settings::store().setValue(downloadAtStartupKey(_destFileName), int(on));
}

int Node::nextUpdateInMinutes() const
{
    static constexpr int minutes[] = {5, 10, 30, 60, 120, 360, 720, 1440};
    if (_autoUpdateRate < 0 || _autoUpdateRate > 7)
        return 5;
    return minutes[_autoUpdateRate];
}

void Node::calculateNextUpdate()
{
    _nextUpdateDate = _lastUpdateDate.addSecs(qint64(nextUpdateInMinutes()) * 60);
    _nextUpdateString = UpdateTimeText::longNextUpdate(_nextUpdateDate);
    _shortNextUpdateString = UpdateTimeText::shortForm(_nextUpdateDate);
}

void Node::setLastUpdateNow()
{
    _lastUpdateDate = Clock::now();
    _lastUpdateString = UpdateTimeText::longLastUpdate(_lastUpdateDate);
    _shortLastUpdateString = UpdateTimeText::shortForm(_lastUpdateDate);
}

bool Node::checkAutoUpdate() const
{
    if (!_autoUpdates)
        return false;
    if (_isDownloading)
        return false;
    if (!_nextUpdateDate.isValid())
        return true;
    return Clock::now() >= _nextUpdateDate;
}

QString Node::lastUpdate() const
{
    return _lastUpdateString.isEmpty() ? QStringLiteral("Unknown") : _lastUpdateString;
}

QString Node::shortLastUpdate() const
{
    return _shortLastUpdateString.isEmpty() ? QStringLiteral("Unknown") : _shortLastUpdateString;
}

QString Node::nextUpdate() const
{
    return _autoUpdates ? _nextUpdateString : QString();
}

QString Node::shortNextUpdate() const
{
    return _autoUpdates ? _shortNextUpdateString : QStringLiteral("Not Scheduled");
}

// --- Download -------------------------------------------------------------------------------

void Node::beginDownloadingData()
{
    if (_isDownloading)
        return;
    _lastFailure.clear();

    // Always some time-out: one silent server must not hold up its view's queue for ever. Very
    // large values are capped at what a timer can hold.
    const double ms = std::ceil(double(Preferences::shared().transferTimeoutSeconds()) * 1000.0);
    _timeoutMilliseconds = int(std::clamp(ms, 1.0, double(std::numeric_limits<int>::max())));

    const QUrl url(_sourceURL, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() ||
        (scheme != QLatin1String("http") && scheme != QLatin1String("https"))) {
        // The attempt counts as an update, as every failed one does: an automatic node then
        // tries again one interval later, not on every tick of the scheduler.
        setLastUpdateNow();
        calculateNextUpdate();
        failAtStart(failedText(
            _itemName, QStringLiteral("\"%1\" is not an http or https address").arg(_sourceURL)));
        return;
    }

    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Ask for the bytes as they are, or (for JSON data) for gzip that we unpack ourselves: either
    // way the declared length counts the bytes delivered, which Qt's own unpacking would hide.
    request.setRawHeader("Accept-Encoding", NowDownload::acceptEncoding(dataKind()));
    request.setHeader(QNetworkRequest::UserAgentHeader, NetworkAccess::userAgent());

    QNetworkReply *reply = NetworkAccess::manager()->get(request);
    if (!reply) {
        failAtStart(QStringLiteral("Unable to allocate enough memory to download data for \"%1\"")
                        .arg(_itemName));
        return;
    }

    // Let the network layer hold only a little before we take it: a fast server then waits for
    // us instead of filling memory, and each delivery stays small enough not to hold up the
    // event loop.
    reply->setReadBufferSize(kReadBufferSize);
    _download = reply;
    _receivedData = std::make_unique<AtomicFile>(_filePath);
    connect(reply, &QNetworkReply::metaDataChanged, this, &Node::connectionDidReceiveResponse);
    connect(reply, &QNetworkReply::readyRead, this, &Node::connectionDidReceiveData);
    connect(reply, &QNetworkReply::finished, this, &Node::transferFinished);

    if (!_inactivityTimer) {
        _inactivityTimer = new QTimer(this);
        _inactivityTimer->setSingleShot(true);
        connect(_inactivityTimer, &QTimer::timeout, this, &Node::transferTimedOut);
    }
    restartInactivityTimer();

    _isDownloading = true;
    setStatusMessage(QStringLiteral("."), QStringLiteral("Connecting..."));
}

void Node::failAtStart(const QString &error)
{
    reportFailure(error);
    setStatusMessage(QStringLiteral("Err"), errorStatusLong());
    resetDownload();
}

void Node::restartInactivityTimer()
{
    if (_inactivityTimer && _timeoutMilliseconds > 0)
        _inactivityTimer->start(_timeoutMilliseconds);
}

void Node::connectionDidReceiveResponse()
{
    if (!_download)
        return;
    restartInactivityTimer();

    const QVariant declared = _download->header(QNetworkRequest::ContentLengthHeader);
    bool ok = false;
    const qint64 length = declared.toLongLong(&ok);
    _expectedContentLength = (declared.isValid() && ok && length >= 0) ? length : -1;
    if (_receivedData)
        _receivedData->clear();
    _firstBytes.clear();

    if (_expectedContentLength > kMaximumDataSize) {
        connectionDidFail(QStringLiteral("The server announced more data than the 256 MB limit."),
                          _download->url().toString());
        return;
    }
    setStatusMessage(QStringLiteral("..."), QStringLiteral("Connected..."));
}

void Node::connectionDidReceiveData()
{
    if (!_download || !_receivedData)
        return;
    restartInactivityTimer();

    const QByteArray chunk = _download->readAll();
    if (chunk.isEmpty())
        return;
    if (_receivedData->size() + chunk.size() > kMaximumDataSize) {
        connectionDidFail(QStringLiteral("The data grew past the 256 MB limit."),
                          _download->url().toString());
        return;
    }

    if (_expectedContentLength > 0) {
        _bytesReceived += chunk.size();
        const double percent = double(_bytesReceived) / double(_expectedContentLength) * 100.0;
        const int shown = int(std::min(percent, double(std::numeric_limits<int>::max())));
        setStatusMessage(QStringLiteral("%1%").arg(shown),
                         QStringLiteral("%1% Complete...").arg(shown));
    }
    if (_firstBytes.size() < ContentCheck::kPrefixSize)
        _firstBytes.append(
            chunk.first(std::min(chunk.size(), ContentCheck::kPrefixSize - _firstBytes.size())));
    _receivedData->append(chunk);
}

void Node::transferFinished()
{
    QNetworkReply *reply = _download;
    if (!reply)
        return;
    if (_inactivityTimer)
        _inactivityTimer->stop();

    // Bytes that arrived together with the end of the transfer.
    if (reply->bytesAvailable() > 0)
        connectionDidReceiveData();
    if (!_isDownloading)
        return;

    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError || status >= 400) {
        QString description = reply->errorString();
        if (status >= 400) {
            // An error page is not data: say what the server answered instead of Qt's wording.
            const QString reason =
                reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
            description =
                reason.isEmpty()
                    ? QStringLiteral("The server answered %1.").arg(status)
                    : QStringLiteral("The server answered %1 %2.").arg(status).arg(reason);
        }
        connectionDidFail(description, reply->url().toString());
        return;
    }
    connectionDidFinishLoading();
}

void Node::transferTimedOut()
{
    if (!_download)
        return;
    connectionDidFail(QStringLiteral("The request timed out."), _download->url().toString());
}

void Node::connectionDidFinishLoading()
{
    setLastUpdateNow();
    calculateNextUpdate();

    AtomicFile &data = *_receivedData;
    if (data.isEmpty()) {
        setStatusMessage(QStringLiteral("Err"), errorStatusLong());
        reportFailure(failedText(
            _itemName,
            QStringLiteral("data length is zero (the file may not be available at this time)")));
    } else if (data.size() != _expectedContentLength && !_overrideDataMismatch) {
        setStatusMessage(QStringLiteral("Err"), errorStatusLong());
        reportFailure(
            failedText(_itemName, QStringLiteral("data length does not match expected size (the "
                                                 "file may not be available at this time)")));
    } else if (!ContentCheck::isExpected(_fileType, _firstBytes)) {
        setStatusMessage(QStringLiteral("Err"), errorStatusLong());
        reportFailure(failedText(
            _itemName, QStringLiteral("the server sent something other than the expected file")));
    } else if (const QString problem =
                   NowDownload::check(dataKind(), _download->rawHeader("Content-Encoding"), data);
               !problem.isEmpty()) {
        setStatusMessage(QStringLiteral("Err"), errorStatusLong());
        reportFailure(failedText(_itemName, problem));
    } else {
        if (!data.commit()) {
            setStatusMessage(QStringLiteral("Err"), errorStatusLong());
            reportFailure(failedText(_itemName, QStringLiteral("unable to write file")));
        } else {
            _lastFailure.clear();
            setStatusMessage(checkMark(), QString());
            if (_delegate)
                _delegate->nodeFileDidLoad(this);
        }
    }
    resetDownload();
}

void Node::connectionDidFail(const QString &description, const QString &failingAddress)
{
    const QString address = failingAddress.isEmpty() ? _sourceURL : failingAddress;
    // Stop the transfer before anyone hears of the failure, so nothing more arrives from it.
    if (_download) {
        _download->disconnect(this);
        _download->abort();
    }
    reportFailure(
        QStringLiteral("Download of \"%1\" Failed: %2 %3").arg(_itemName, description, address));
    setLastUpdateNow();
    calculateNextUpdate();
    setStatusMessage(QStringLiteral("Err"), errorStatusLong());
    resetDownload();
}

void Node::reportFailure(const QString &error)
{
    _lastFailure = error;
    if (_delegate)
        _delegate->nodeDidFailWithError(this, error);
}

void Node::cancelDownloading()
{
    if (_download) {
        _download->disconnect(this);
        _download->abort();
    }
    setLastUpdateNow();
    calculateNextUpdate();
    resetDownload();
    _lastFailure.clear();
    setStatusMessage(QString(), QString());
}

void Node::beginOrCancelDownload()
{
    if (_isDownloading)
        cancelDownloading();
    else
        beginDownloadingData();
}

void Node::resetDownload()
{
    if (_inactivityTimer)
        _inactivityTimer->stop();
    if (QNetworkReply *reply = _download) {
        _download = nullptr;
        reply->disconnect(this);
        // Deleting a reply that is still running aborts it; deferring the deletion keeps this safe
        // when we are inside one of the reply's own signals.
        reply->deleteLater();
    }
    _receivedData.reset();
    _firstBytes.clear();
    _bytesReceived = 0;
    _expectedContentLength = 0;
    _isDownloading = false;
}
