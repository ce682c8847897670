#pragma once

#include "core/sources/Node.h"
#include "core/sources/NodeDelegate.h"

#include <QStringList>

// Writes down every callback a node sends, with the node's status at that moment, so tests can
// check both what was reported and in which order relative to the status changes.
class RecordingDelegate : public NodeDelegate {
public:
    QStringList events;
    QStringList failures;
    int loads = 0;

    void nodeHasMessage(Node *node) override
    {
        events << "status " + node->itemStatus() + '|' + node->longStatus();
    }
    void nodeDidChangeUpdateSettings(Node *) override { events << QStringLiteral("settings"); }
    void nodeFileDidLoad(Node *node) override
    {
        ++loads;
        events << "loaded downloading=" + QString::number(node->isDownloading());
    }
    void nodeDidFailWithError(Node *node, const QString &error) override
    {
        failures << error;
        events << "failed downloading=" + QString::number(node->isDownloading());
    }
};
