#include "ui/sources/NodeScheduler.h"

#include "core/sources/Node.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

QStringList NodeScheduler::rateTitles()
{
    return {tr("Every 5 minutes"), tr("Every 10 minutes"), tr("Every 30 minutes"), tr("Every hour"),
            tr("Every 2 hours"),   tr("Every 6 hours"),    tr("Every 12 hours"),   tr("Every day")};
}

NodeScheduler::NodeScheduler(QWidget *parent)
    : QDialog(parent), _nodeTitleField(new QLabel),
      _downloadAtStartupButton(new QCheckBox(tr("Download when Vantorel starts"))),
      _autoUpdatesButton(new QCheckBox(tr("Update automatically"))),
      _autoUpdateTimeMenu(new QComboBox)
{
    setObjectName(QStringLiteral("NodeScheduler"));
    setWindowTitle(tr("Schedule"));
    setWindowModality(Qt::WindowModal);
    setMinimumWidth(340);

    QFont heading = _nodeTitleField->font();
    heading.setBold(true);
    _nodeTitleField->setFont(heading);
    _nodeTitleField->setWordWrap(true);

    // Each item's tag is its rate index.
    const QStringList titles = rateTitles();
    for (int rate = 0; rate < titles.size(); ++rate)
        _autoUpdateTimeMenu->addItem(titles[rate], rate);

    auto *form = new QFormLayout;
    form->addRow(_downloadAtStartupButton);
    form->addRow(_autoUpdatesButton);
    form->addRow(tr("Rate:"), _autoUpdateTimeMenu);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &NodeScheduler::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_nodeTitleField);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(_downloadAtStartupButton, &QCheckBox::clicked, this,
            &NodeScheduler::setDownloadsAtStartup);
    connect(_autoUpdatesButton, &QCheckBox::clicked, this, &NodeScheduler::setAutoUpdatesState);
    connect(_autoUpdateTimeMenu, &QComboBox::activated, this, &NodeScheduler::setAutoUpdateTimer);
}

void NodeScheduler::setMyNode(Node *node)
{
    _myNode = node;
    if (!node)
        return;
    _nodeTitleField->setText(
        QStringLiteral("Scheduled Updating for \"%1\"").arg(node->nodeTitle()));
    _downloadAtStartupButton->setChecked(node->downloadsAtStartup());
    _autoUpdatesButton->setChecked(node->autoUpdates());
    _autoUpdateTimeMenu->setEnabled(node->autoUpdates());
    // A stored rate outside the menu shows no item until the user picks one.
    const int rate = node->autoUpdateRate();
    _autoUpdateTimeMenu->setCurrentIndex(rate >= 0 && rate < _autoUpdateTimeMenu->count() ? rate
                                                                                          : -1);
}

void NodeScheduler::setDownloadsAtStartup(bool on)
{
    if (_myNode)
        _myNode->setDownloadsAtStartup(on);
}

void NodeScheduler::setAutoUpdatesState(bool on)
{
    if (_myNode)
        _myNode->setAutoUpdates(on);
    _autoUpdateTimeMenu->setEnabled(on);
}

void NodeScheduler::setAutoUpdateTimer(int menuIndex)
{
    const QVariant tag = _autoUpdateTimeMenu->itemData(menuIndex);
    if (_myNode && tag.isValid())
        _myNode->setAutoUpdateRate(tag.toInt());
}

void NodeScheduler::close()
{
    done(QDialog::Rejected);
}
