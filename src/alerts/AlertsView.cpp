#include "AlertsView.h"

#include "groups/FlatGroup.h"
#include "nodes/Node.h"
#include "support/ActivityLog.h"
#include "support/GeometryText.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

AlertsView::AlertsView(FlatGroup *group, ActivityLog *log, QWidget *parent)
    : QWidget(parent), _group(group), _log(log)
{
    buildInterface();
}

AlertsView::~AlertsView() = default;

void AlertsView::buildInterface()
{
    _nodeListMenu = new QComboBox;
    _nodeListMenu->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    _refreshButton = new QPushButton(tr("Reload"));
    _cancelNodeDownloadButton = new QPushButton(tr("Cancel"));
    _scheduleNodeButton = new QPushButton(tr("Schedule…"));

    auto *top = new QHBoxLayout;
    top->addWidget(_nodeListMenu, 1);
    top->addWidget(_refreshButton);
    top->addWidget(_cancelNodeDownloadButton);
    top->addWidget(_scheduleNodeButton);

    _nodeDataTextView = new QPlainTextEdit;
    _nodeDataTextView->setReadOnly(true);
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(std::max<qreal>(fixed.pointSizeF(), 10.0));
    _nodeDataTextView->setFont(fixed);

    _nodeStatusField = new QLabel;
    _nodeLastUpdateField = new QLabel;
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(_nodeStatusField, 1);
    bottom->addWidget(_nodeLastUpdateField);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(_nodeDataTextView, 1);
    layout->addLayout(bottom);
}

void AlertsView::awakeFromNib()
{
    loadFrameSize();
}

void AlertsView::loadDictionaryData(const QString &dictionaryFileName,
                                    const QString &dataFolderPath)
{
    if (!_group->loadDictionaryData(dictionaryFileName, dataFolderPath))
        return;
    createMenuItemsForNodes();
    _group->selectNodeAtIndex(_group->lastAlertMenuIndex());
    if (Node *selected = _group->selectedNode())
        _nodeListMenu->setCurrentIndex(_group->indexOf(selected));
}

void AlertsView::createMenuItemsForNodes()
{
    // Items are added by position, so repeated titles still stand for their own nodes.
    _nodeListMenu->clear();
    for (Node *node : _group->nodes())
        _nodeListMenu->addItem(node->nodeTitle());
}

void AlertsView::loadFrameSize()
{
    QSettings settings;
    const QString size = settings.value(QLatin1String(kViewSizeKey)).toString();
    if (!size.isEmpty())
        resize(GeometryText::toSize(size).expandedTo(QSize(0, 0)));
    _group->setLastAlertMenuIndex(settings.value(QLatin1String(kMenuIndexKey)).toInt());
}

void AlertsView::saveFrameSize()
{
    QSettings settings;
    settings.setValue(QLatin1String(kViewSizeKey), GeometryText::fromSize(size()));
    settings.setValue(QLatin1String(kMenuIndexKey), _group->lastAlertMenuIndex());
}

void AlertsView::destroyAllNodes()
{
    _group->destroyAllNodes();
    _nodeListMenu->clear();
}

void AlertsView::cleanup()
{
    destroyAllNodes();
    saveFrameSize();
}
