#pragma once

#include <QObject>
#include <QString>

class ActivityLog;
class AlertsView;
class AppCore;
class DomainGroup;
class GroupView;
class MoonView;
class NodeScheduler;
class NowView;
class QStackedWidget;
class QWidget;

// The seven views of the main window, each in its place in the window's stack by its view number
// (0 Sun, 1 Graphs, 2 Aurora, 3 Earth, 4 Alerts, 5 Moon, 6 Now). A view is built when it is first
// needed; until then an empty stand-in holds its place. A view built once start-up has reached
// the reading of the groups reads its group at once, and one built after launching has finished
// also sets up its empty selection, so that every view goes through the same steps whenever it
// is built.
class MainViews : public QObject {
    Q_OBJECT

public:
    static constexpr int kCount = 7;

    MainViews(AppCore *core, ActivityLog *log, QStackedWidget *stack, QObject *parent = nullptr);

    // Start-up has come to reading the groups: the built views read theirs now, the others when
    // they are built. The image views show this page while nothing is selected.
    void startLoading(const QString &defaultDescription);
    // Launching has finished: the built views set up their empty selection now, the others when
    // they are built.
    void startLaunching();
    // The schedule sheet, for every data view built and to be built.
    void setNodeScheduler(NodeScheduler *sheet);

    // The view with that number if it has been built, else none.
    QWidget *built(int number) const;
    // The view with that number, built now if it was not; none for a number outside 0 to 6.
    QWidget *ensure(int number);
    bool allBuilt() const;

    GroupView *sunView() const { return _sunView; }
    GroupView *graphView() const { return _graphView; }
    GroupView *auroraView() const { return _auroraView; }
    GroupView *earthView() const { return _earthView; }
    AlertsView *alertsView() const { return _alertsView; }
    MoonView *moonView() const { return _moonView; }
    NowView *nowView() const { return _nowView; }

signals:
    // The selection or the selected node's state changed in a data view.
    void selectionChanged();
    // A data-source link of an image view was clicked; the address is its text.
    void dataSourceLinkClicked(const QString &address);

private:
    QWidget *make(int number);
    GroupView *makeGroupView(DomainGroup *group);
    void load(int number);
    void launch(int number);

    AppCore *_core;
    ActivityLog *_log;
    QStackedWidget *_stack;
    NodeScheduler *_nodeScheduler = nullptr;
    QString _defaultDescription;
    bool _loading = false;
    bool _launched = false;

    GroupView *_sunView = nullptr;
    GroupView *_graphView = nullptr;
    GroupView *_auroraView = nullptr;
    GroupView *_earthView = nullptr;
    AlertsView *_alertsView = nullptr;
    MoonView *_moonView = nullptr;
    NowView *_nowView = nullptr;
};
