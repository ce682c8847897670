#include "ui/shell/ToolbarCustomizer.h"

#include "core/shell/ToolbarItems.h"
#include "ui/common/NamedImage.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

ToolbarCustomizer::ToolbarCustomizer(const QStringList &current, QWidget *parent)
    : QDialog(parent), _available(new QListWidget), _toolbar(new QListWidget),
      _add(new QPushButton(tr("Add"))), _remove(new QPushButton(tr("Remove"))),
      _up(new QPushButton(tr("Move Up"))), _down(new QPushButton(tr("Move Down")))
{
    setObjectName(QStringLiteral("ToolbarCustomizer"));
    setWindowTitle(tr("Customize Toolbar"));
    setWindowModality(Qt::WindowModal);

    for (const QString &identifier : ToolbarItems::allowedItemIdentifiers())
        _available->addItem(makeItem(identifier));
    _toolbar->setDragDropMode(QAbstractItemView::InternalMove);
    _toolbar->setDefaultDropAction(Qt::MoveAction);
    setToolbarItems(current);

    auto *restore = new QPushButton(tr("Restore Default Set"));
    auto *middle = new QVBoxLayout;
    middle->addStretch(1);
    middle->addWidget(_add);
    middle->addWidget(_remove);
    middle->addSpacing(12);
    middle->addWidget(_up);
    middle->addWidget(_down);
    middle->addStretch(1);

    auto *lists = new QGridLayout;
    lists->addWidget(new QLabel(tr("Items you can add:")), 0, 0);
    lists->addWidget(new QLabel(tr("Toolbar, from left to right:")), 0, 2);
    lists->addWidget(_available, 1, 0);
    lists->addLayout(middle, 1, 1);
    lists->addWidget(_toolbar, 1, 2);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->addButton(restore, QDialogButtonBox::ResetRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addWidget(buttons);

    connect(_add, &QPushButton::clicked, this, &ToolbarCustomizer::addSelected);
    connect(_remove, &QPushButton::clicked, this, &ToolbarCustomizer::removeSelected);
    connect(_up, &QPushButton::clicked, this, [this] { moveSelected(-1); });
    connect(_down, &QPushButton::clicked, this, [this] { moveSelected(1); });
    connect(restore, &QPushButton::clicked, this, &ToolbarCustomizer::restoreDefaults);
    connect(_available, &QListWidget::itemDoubleClicked, this, &ToolbarCustomizer::addSelected);
    connect(_toolbar, &QListWidget::itemDoubleClicked, this, &ToolbarCustomizer::removeSelected);
    connect(_available, &QListWidget::currentRowChanged, this, &ToolbarCustomizer::updateButtons);
    connect(_toolbar, &QListWidget::currentRowChanged, this, &ToolbarCustomizer::updateButtons);
    updateButtons();
    resize(560, 420);
}

QString ToolbarCustomizer::paletteLabel(const QString &identifier)
{
    if (identifier == QLatin1String(ToolbarItems::kSeparator))
        return tr("Separator");
    if (identifier == QLatin1String(ToolbarItems::kSpace))
        return tr("Space");
    if (identifier == QLatin1String(ToolbarItems::kFlexibleSpace))
        return tr("Flexible Space");
    if (identifier == QLatin1String(ToolbarItems::kCustomize))
        return tr("Customize");
    if (const auto entry = ToolbarItems::item(identifier))
        return entry->paletteLabel;
    return identifier;
}

QListWidgetItem *ToolbarCustomizer::makeItem(const QString &identifier) const
{
    auto *item = new QListWidgetItem(paletteLabel(identifier));
    item->setData(Qt::UserRole, identifier);
    if (const auto entry = ToolbarItems::item(identifier))
        item->setIcon(NamedImage::icon(entry->image));
    return item;
}

void ToolbarCustomizer::setToolbarItems(const QStringList &identifiers)
{
    _toolbar->clear();
    for (const QString &identifier : identifiers)
        _toolbar->addItem(makeItem(identifier));
    updateButtons();
}

QStringList ToolbarCustomizer::identifiers() const
{
    QStringList result;
    for (int i = 0; i < _toolbar->count(); ++i)
        result.append(_toolbar->item(i)->data(Qt::UserRole).toString());
    return result;
}

void ToolbarCustomizer::addSelected()
{
    const QListWidgetItem *chosen = _available->currentItem();
    if (!chosen)
        return;
    const QString identifier = chosen->data(Qt::UserRole).toString();
    const bool repeatable = ToolbarItems::isStandard(identifier) &&
                            identifier != QLatin1String(ToolbarItems::kCustomize);
    if (!repeatable && identifiers().contains(identifier))
        return;
    // New items go after the selected toolbar item, or at the end.
    const int row = _toolbar->currentRow() >= 0 ? _toolbar->currentRow() + 1 : _toolbar->count();
    _toolbar->insertItem(row, makeItem(identifier));
    _toolbar->setCurrentRow(row);
    updateButtons();
}

void ToolbarCustomizer::removeSelected()
{
    const int row = _toolbar->currentRow();
    if (row < 0)
        return;
    delete _toolbar->takeItem(row);
    updateButtons();
}

void ToolbarCustomizer::moveSelected(int step)
{
    const int row = _toolbar->currentRow();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= _toolbar->count())
        return;
    QListWidgetItem *item = _toolbar->takeItem(row);
    _toolbar->insertItem(target, item);
    _toolbar->setCurrentRow(target);
    updateButtons();
}

void ToolbarCustomizer::restoreDefaults()
{
    setToolbarItems(ToolbarItems::defaultItemIdentifiers());
}

void ToolbarCustomizer::updateButtons()
{
    const QListWidgetItem *chosen = _available->currentItem();
    const QString identifier = chosen ? chosen->data(Qt::UserRole).toString() : QString();
    const bool repeatable = ToolbarItems::isStandard(identifier) &&
                            identifier != QLatin1String(ToolbarItems::kCustomize);
    _add->setEnabled(chosen && (repeatable || !identifiers().contains(identifier)));
    const int row = _toolbar->currentRow();
    _remove->setEnabled(row >= 0);
    _up->setEnabled(row > 0);
    _down->setEnabled(row >= 0 && row + 1 < _toolbar->count());
}
