#include "ui/shell/MainViews.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupCatalogue.h"
#include "ui/alerts/AlertsView.h"
#include "ui/moon/MoonView.h"
#include "ui/now/NowView.h"
#include "ui/sources/GroupView.h"

#include <QStackedWidget>

MainViews::MainViews(AppCore *core, ActivityLog *log, QStackedWidget *stack, QObject *parent)
    : QObject(parent), _core(core), _log(log), _stack(stack)
{
    for (int number = 0; number < kCount; ++number)
        _stack->addWidget(new QWidget);
}

void MainViews::startLoading(const QString &defaultDescription)
{
    _defaultDescription = defaultDescription;
    _loading = true;
    for (int number = 0; number < kCount; ++number) {
        if (built(number))
            load(number);
    }
}

void MainViews::startLaunching()
{
    _launched = true;
    for (int number = 0; number < kCount; ++number) {
        if (built(number))
            launch(number);
    }
}

void MainViews::setNodeScheduler(NodeScheduler *sheet)
{
    _nodeScheduler = sheet;
    for (GroupView *view : {_sunView, _graphView, _auroraView, _earthView}) {
        if (view)
            view->setNodeSchedulerWindow(sheet);
    }
    if (_alertsView)
        _alertsView->setNodeSchedulerWindow(sheet);
}

QWidget *MainViews::built(int number) const
{
    switch (number) {
    case 0:
        return _sunView;
    case 1:
        return _graphView;
    case 2:
        return _auroraView;
    case 3:
        return _earthView;
    case 4:
        return _alertsView;
    case 5:
        return _moonView;
    case 6:
        return _nowView;
    default:
        return nullptr;
    }
}

bool MainViews::allBuilt() const
{
    for (int number = 0; number < kCount; ++number) {
        if (!built(number))
            return false;
    }
    return true;
}

QWidget *MainViews::ensure(int number)
{
    if (QWidget *view = built(number))
        return view;
    QWidget *view = make(number);
    if (!view)
        return nullptr;
    QWidget *standIn = _stack->widget(number);
    _stack->insertWidget(number, view);
    _stack->removeWidget(standIn);
    delete standIn;
    if (_loading)
        load(number);
    if (_launched)
        launch(number);
    return view;
}

QWidget *MainViews::make(int number)
{
    switch (number) {
    case 0:
        return _sunView = makeGroupView(_core->sunGroup());
    case 1:
        return _graphView = makeGroupView(_core->graphGroup());
    case 2:
        return _auroraView = makeGroupView(_core->auroraGroup());
    case 3:
        return _earthView = makeGroupView(_core->earthGroup());
    case 4:
        _alertsView = new AlertsView(_core->alertsGroup(), _log);
        _alertsView->setNodeSchedulerWindow(_nodeScheduler);
        connect(_alertsView, &AlertsView::selectionChanged, this, &MainViews::selectionChanged);
        _alertsView->awakeFromNib();
        return _alertsView;
    case 5:
        _moonView = new MoonView;
        _moonView->awakeFromNib();
        return _moonView;
    case 6:
        _nowView = new NowView(qobject_cast<FlatGroup *>(_core->groupNumbered(GroupCatalogue::Now)),
                               nullptr);
        _nowView->awakeFromNib();
        return _nowView;
    default:
        return nullptr;
    }
}

GroupView *MainViews::makeGroupView(DomainGroup *group)
{
    auto *view = new GroupView(group, _log);
    view->setNodeSchedulerWindow(_nodeScheduler);
    view->awakeFromNib();
    connect(view, &GroupView::dataSourceLinkClicked, this, &MainViews::dataSourceLinkClicked);
    connect(view, &GroupView::selectionChanged, this, &MainViews::selectionChanged);
    return view;
}

void MainViews::load(int number)
{
    const QString dataFolder = _core->dataFolderPath();
    switch (number) {
    case 0:
    case 1:
    case 2:
    case 3: {
        auto *view = static_cast<GroupView *>(built(number));
        const GroupCatalogue::Group *group = GroupCatalogue::group(number);
        view->setDefaultDescription(_defaultDescription);
        view->loadDomainDataForGroup(group->name, group->number, group->definitionFile, dataFolder);
        break;
    }
    case 4:
        _alertsView->loadDictionaryData(
            GroupCatalogue::group(GroupCatalogue::Alerts)->definitionFile, dataFolder);
        break;
    case 5:
        _moonView->setHemisphere(Preferences::shared().southernHemisphere());
        break;
    case 6:
        // Read through the core, which feeds the history from the group's downloads.
        _core->loadGroup(_nowView->group());
        _nowView->groupLoaded(_core->nowRecorder());
        break;
    default:
        break;
    }
}

void MainViews::launch(int number)
{
    if (auto *view = qobject_cast<GroupView *>(built(number)))
        view->applicationDidFinishLaunching();
}
