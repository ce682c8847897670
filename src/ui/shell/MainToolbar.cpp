#include "ui/shell/MainToolbar.h"

#include "core/settings/Settings.h"
#include "core/shell/ToolbarConfiguration.h"
#include "core/shell/ToolbarItems.h"
#include "ui/common/NamedImage.h"
#include "ui/shell/ToolbarCustomizer.h"

#include <QAction>
#include <QEvent>
#include <QMainWindow>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>

MainToolbar::MainToolbar(QMainWindow *window) : QObject(window), _toolbar(new QToolBar(window))
{
    _toolbar->setObjectName(QStringLiteral("toolbar"));
    _toolbar->setWindowTitle(tr("Toolbar"));
    _toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    _toolbar->setIconSize(QSize(32, 32));
    _toolbar->setMovable(false);
    _toolbar->setFloatable(false);
    _toolbar->setContextMenuPolicy(Qt::PreventContextMenu);
    window->addToolBar(Qt::TopToolBarArea, _toolbar);
}

QAction *MainToolbar::itemForItemIdentifier(const QString &identifier, QObject *parent)
{
    auto *action = new QAction(parent);
    action->setObjectName(identifier);
    action->setData(identifier);
    if (identifier == QLatin1String(ToolbarItems::kCustomize)) {
        action->setText(tr("Customize"));
        action->setIcon(customizeIcon());
    } else if (const auto entry = ToolbarItems::item(identifier)) {
        action->setText(entry->label);
        action->setIconText(entry->label);
        action->setIcon(NamedImage::icon(entry->image));
        action->setCheckable(ToolbarItems::selectableItemIdentifiers().contains(identifier));
    }
    connect(action, &QAction::triggered, this, [this, identifier] {
        if (identifier == QLatin1String(ToolbarItems::kCustomize))
            runToolbarConfig();
        else
            emit itemSelected(identifier);
    });
    return action;
}

QIcon MainToolbar::customizeIcon() const
{
    const QIcon own = NamedImage::icon(QStringLiteral("ToolbarCustomize"));
    return _themeIcons ? QIcon::fromTheme(QStringLiteral("configure-toolbars"), own) : own;
}

void MainToolbar::loadThemeIcons()
{
    if (_themeIcons)
        return;
    _themeIcons = true;
    if (QAction *customize = item(QLatin1String(ToolbarItems::kCustomize)))
        customize->setIcon(customizeIcon());
}

QWidget *MainToolbar::spacer(bool flexible) const
{
    auto *space = new QWidget;
    if (flexible)
        space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    else
        space->setFixedWidth(24);
    return space;
}

void MainToolbar::setIdentifiers(const QStringList &identifiers)
{
    _identifiers = identifiers;
    const QList<QAction *> old = _toolbar->actions();
    _toolbar->clear();
    qDeleteAll(old);

    for (const QString &identifier : identifiers) {
        if (identifier == QLatin1String(ToolbarItems::kSeparator)) {
            _toolbar->addSeparator();
        } else if (identifier == QLatin1String(ToolbarItems::kSpace)) {
            _toolbar->addWidget(spacer(false));
        } else if (identifier == QLatin1String(ToolbarItems::kFlexibleSpace)) {
            _toolbar->addWidget(spacer(true));
        } else {
            QAction *action = itemForItemIdentifier(identifier, _toolbar);
            _toolbar->addAction(action);
            // The labels say it all; the items carry no tool tips.
            if (QWidget *button = _toolbar->widgetForAction(action))
                button->installEventFilter(this);
        }
    }
    validate(_online);
    setSelectedItemIdentifier(_selected);
}

bool MainToolbar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ToolTip)
        return true;
    return QObject::eventFilter(watched, event);
}

void MainToolbar::loadConfiguration()
{
    QSettings &settings = Settings::store();
    setIdentifiers(ToolbarConfiguration::load(settings));
}

void MainToolbar::saveConfiguration() const
{
    QSettings &settings = Settings::store();
    ToolbarConfiguration::save(settings, _identifiers);
}

QAction *MainToolbar::item(const QString &identifier) const
{
    for (QAction *action : _toolbar->actions()) {
        if (action->data().toString() == identifier)
            return action;
    }
    return nullptr;
}

void MainToolbar::validate(bool online)
{
    _online = online;
    for (QAction *action : _toolbar->actions()) {
        const QString identifier = action->data().toString();
        if (!identifier.isEmpty())
            action->setEnabled(ToolbarItems::isEnabled(identifier, online));
    }
}

void MainToolbar::setSelectedItemIdentifier(const QString &identifier)
{
    _selected = identifier;
    for (QAction *action : _toolbar->actions()) {
        if (action->isCheckable())
            action->setChecked(action->data().toString() == identifier);
    }
}

void MainToolbar::runToolbarConfig()
{
    ToolbarCustomizer dialog(_identifiers, _toolbar->window());
    if (dialog.exec() != QDialog::Accepted)
        return;
    setIdentifiers(dialog.identifiers());
    saveConfiguration();
}
