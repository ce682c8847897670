#include "ui/shell/MainViews.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "ui/alerts/AlertsView.h"
#include "ui/moon/MoonView.h"
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
        _sunView->setDefaultDescription(_defaultDescription);
        _sunView->loadDomainDataForGroup(QStringLiteral("Sun"), 0, QStringLiteral("DataSun.plist"),
                                         dataFolder);
        break;
    case 1:
        _graphView->setDefaultDescription(_defaultDescription);
        _graphView->loadDomainDataForGroup(QStringLiteral("Graphs"), 1,
                                           QStringLiteral("DataGraphs.plist"), dataFolder);
        break;
    case 2:
        _auroraView->setDefaultDescription(_defaultDescription);
        _auroraView->loadDomainDataForGroup(QStringLiteral("Aurora"), 2,
                                            QStringLiteral("DataAurora.plist"), dataFolder);
        break;
    case 3:
        _earthView->setDefaultDescription(_defaultDescription);
        _earthView->loadDomainDataForGroup(QStringLiteral("Earth"), 3,
                                           QStringLiteral("DataEarth.plist"), dataFolder);
        break;
    case 4:
        _alertsView->loadDictionaryData(QStringLiteral("DataAlerts.plist"), dataFolder);
        break;
    case 5:
        _moonView->setHemisphere(Preferences::shared().southernHemisphere());
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
