#include "core/sources/Node.h"

#include "core/net/NodeTransfer.h"
#include "core/now/NowDownload.h"
#include "core/settings/Preferences.h"
#include "core/sources/NodeDelegate.h"

#include <QFile>
#include <QFileInfo>

#include <cmath>
#include <limits>

namespace {

QString failedText(const QString &name, const QString &reason)
{
    return QStringLiteral("Download of \"%1\" Failed: %2").arg(name, reason);
}

} // namespace

QString Node::definitionProblem(const QVariantMap &dict)
{
    return NodeDefinition::problem(dict);
}

QString Node::lastUpdateKey(const QString &destFileName)
{
    return NodeSchedule::lastUpdateKey(destFileName);
}

QString Node::autoUpdateKey(const QString &destFileName)
{
    return NodeSchedule::autoUpdateKey(destFileName);
}

QString Node::autoUpdateRateKey(const QString &destFileName)
{
    return NodeSchedule::autoUpdateRateKey(destFileName);
}

QString Node::downloadAtStartupKey(const QString &destFileName)
{
    return NodeSchedule::downloadAtStartupKey(destFileName);
}

QString Node::pathInFolder(const QString &folder, const QString &name)
{
    return NodeDefinition::pathInFolder(folder, name);
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
    : _delegate(delegate), _definition(dict),
      _filePath(pathInFolder(dataFolderPath, _definition.destFileName())),
      _overrideDataMismatch(overrideDataMismatch),
      _schedule(_definition.destFileName(), _definition.scheduleDefaults())
{
    // The first status is set quietly: nobody is listening yet.
    _state = fileDownloaded() ? State::Done : State::Unloaded;
    _statusMessage = NodeStatus::shortText(_state);
    _longStatusMessage = NodeStatus::longText(_state);
}

Node::~Node()
{
    resetDownload();
}

void Node::cleanup()
{
    _schedule.store();
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

QDateTime Node::dataTime() const
{
    const QFileInfo file(_filePath);
    return file.exists() ? file.lastModified() : QDateTime();
}

void Node::setStatusMessage(const QString &shortStatus, const QString &longStatus)
{
    _statusMessage = shortStatus;
    _longStatusMessage = longStatus;
    if (_delegate)
        _delegate->nodeHasMessage(this);
}

void Node::setState(State state, int percent)
{
    _state = state;
    setStatusMessage(NodeStatus::shortText(state, percent), NodeStatus::longText(state, percent));
}

void Node::setQueued(const QString &longStatus)
{
    _state = State::Queued;
    setStatusMessage(NodeStatus::shortText(State::Queued), longStatus);
}

bool Node::isDownloading() const
{
    return _transfer && _transfer->isActive();
}

void Node::setAutoUpdates(bool on)
{
    _schedule.setAutoUpdates(on);
    if (_delegate)
        _delegate->nodeDidChangeUpdateSettings(this);
}

void Node::setAutoUpdateRate(int rate)
{
    _schedule.setAutoUpdateRate(rate);
    if (_delegate)
        _delegate->nodeDidChangeUpdateSettings(this);
}

bool Node::checkAutoUpdate() const
{
    return !isDownloading() && _schedule.isDue();
}

void Node::beginDownloadingData()
{
    if (isDownloading())
        return;
    _lastFailure.clear();

    if (!_transfer) {
        _transfer = std::make_unique<NodeTransfer>();
        connect(_transfer.get(), &NodeTransfer::responded, this,
                [this] { setState(State::Receiving); });
        connect(_transfer.get(), &NodeTransfer::progressed, this,
                [this](int percent) { setState(State::Receiving, percent); });
        connect(_transfer.get(), &NodeTransfer::arrived, this, &Node::connectionDidFinishLoading);
        connect(_transfer.get(), &NodeTransfer::failed, this, &Node::connectionDidFail);
        connect(_transfer.get(), &NodeTransfer::concluded, this, &Node::transferConcluded);
    }

    // Always some time-out: one silent server must not hold up its view's queue for ever. Very
    // large values are capped at what a timer can hold.
    const double ms = std::ceil(double(Preferences::shared().transferTimeoutSeconds()) * 1000.0);
    NodeTransfer::Request request;
    request.sourceURL = sourceURL();
    request.filePath = _filePath;
    request.fileType = fileType();
    request.overrideDataMismatch = _overrideDataMismatch;
    const QString kind = _definition.dataKind();
    request.acceptEncoding = NowDownload::acceptEncoding(kind);
    if (!kind.isEmpty()) {
        request.finalCheck = [kind](const QByteArray &contentEncoding, AtomicFile &data) {
            return NowDownload::check(kind, contentEncoding, data);
        };
    }
    request.timeoutMilliseconds = int(std::clamp(ms, 1.0, double(std::numeric_limits<int>::max())));

    switch (_transfer->start(request)) {
    case NodeTransfer::Start::Started:
        setState(State::Connecting);
        break;
    case NodeTransfer::Start::NotHttpAddress:
        // The attempt counts as an update, as every failed one does: an automatic node then
        // tries again one interval later, not on every tick of the scheduler.
        setLastUpdateNow();
        calculateNextUpdate();
        failAtStart(failedText(itemName(), NodeTransfer::notHttpAddressReason(sourceURL())));
        break;
    case NodeTransfer::Start::NoConnection:
        failAtStart(QStringLiteral("Unable to allocate enough memory to download data for \"%1\"")
                        .arg(itemName()));
        break;
    }
}

void Node::failAtStart(const QString &error)
{
    reportFailure(error);
    setState(State::Failed);
    resetDownload();
}

void Node::connectionDidFinishLoading()
{
    // The attempt is the last update, whatever comes of it.
    setLastUpdateNow();
    calculateNextUpdate();
    _transfer->conclude();
}

void Node::transferConcluded(const QString &problem)
{
    if (problem.isEmpty()) {
        _lastFailure.clear();
        setState(State::Done);
        if (_delegate)
            _delegate->nodeFileDidLoad(this);
    } else {
        setState(State::Failed);
        reportFailure(failedText(itemName(), problem));
    }
    resetDownload();
}

void Node::connectionDidFail(const QString &reason)
{
    // A failure on the way is reported before the status changes.
    reportFailure(failedText(itemName(), reason));
    setLastUpdateNow();
    calculateNextUpdate();
    setState(State::Failed);
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
    if (_transfer)
        _transfer->abort();
    setLastUpdateNow();
    calculateNextUpdate();
    resetDownload();
    _lastFailure.clear();
    setState(State::Idle);
}

void Node::beginOrCancelDownload()
{
    if (isDownloading())
        cancelDownloading();
    else
        beginDownloadingData();
}

void Node::resetDownload()
{
    if (_transfer)
        _transfer->reset();
}
