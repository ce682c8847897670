#include "core/sources/DownloadQueue.h"

#include "core/sources/Node.h"

DownloadQueue::DownloadQueue(const QString &queuedLongStatus) : _queuedLongStatus(queuedLongStatus)
{
}

void DownloadQueue::add(Node *node)
{
    if (!node || _ended || contains(node))
        return;
    _nodes.append(node);
    node->setQueued(_queuedLongStatus);
    check();
}

bool DownloadQueue::contains(const Node *node) const
{
    return std::find(_nodes.cbegin(), _nodes.cend(), node) != _nodes.cend();
}

void DownloadQueue::remove(const Node *node)
{
    const auto it = std::find(_nodes.begin(), _nodes.end(), node);
    if (it != _nodes.end())
        _nodes.erase(it);
}

void DownloadQueue::check()
{
    if (_nodes.isEmpty())
        return;
    Node *head = _nodes.first();
    if (head->isDownloading())
        return;
    head->beginDownloadingData();
}

void DownloadQueue::end()
{
    _nodes.clear();
    _ended = true;
}
