// Main-thread stalls: a 1-ms timer in the application's own thread ticks while the user switches
// views and five large transfers (one per group) arrive; the longest gap between two ticks is how
// long the interface could not answer. Three phases of the same process, each with the same probe:
// idle (window shown, nothing happening), switching views only, and switching views while the five
// transfers run, until all five are done.

#include "HarnessApp.h"

#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "ui/shell/AppController.h"
#include "ui/sources/GroupView.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Gap {
    double start;
    double length;
    // The main thread's processor time within the gap: the work that kept it from the timer. On a
    // busy machine the gap also holds waiting for a processor; this does not.
    double busy;
    // The time it was ready to run but waited for a processor: the machine's share of the gap.
    // What is left of the gap (length - busy - waiting) the thread slept: waiting for the disk, a
    // lock or the X server, which is the application's doing as much as its processor time is.
    double waiting;
    double blocked() const { return std::max(0.0, length - busy - waiting); }
};

// The main thread's processor time and time waiting for a processor, both from the scheduler's
// own account (/proc/thread-self/schedstat), so that they add up with the gap's length.
class ThreadClock {
public:
    ThreadClock() : _fd(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {}
    ~ThreadClock()
    {
        if (_fd >= 0)
            ::close(_fd);
    }
    ThreadClock(const ThreadClock &) = delete;
    ThreadClock &operator=(const ThreadClock &) = delete;

    // Processor time and waiting time so far, in milliseconds.
    std::pair<double, double> read() const
    {
        char text[128] = {};
        unsigned long long running = 0, waiting = 0;
        if (_fd >= 0 && ::pread(_fd, text, sizeof text - 1, 0) > 0 &&
            std::sscanf(text, "%llu %llu", &running, &waiting) == 2)
            return {double(running) / 1e6, double(waiting) / 1e6};
        timespec ts{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
        return {double(ts.tv_sec) * 1e3 + double(ts.tv_nsec) / 1e6, 0.0};
    }

private:
    int _fd;
};

class Probe : public QObject {
public:
    Probe()
    {
        _timer.setTimerType(Qt::PreciseTimer);
        _timer.setInterval(1);
        connect(&_timer, &QTimer::timeout, this, [this] {
            const double now = Harness::nowMs();
            const auto [cpu, waiting] = _clock.read();
            _gaps.push_back({_last, now - _last, cpu - _lastCpu, waiting - _lastWaiting});
            _last = now;
            _lastCpu = cpu;
            _lastWaiting = waiting;
        });
    }
    void start()
    {
        _gaps.clear();
        _last = Harness::nowMs();
        std::tie(_lastCpu, _lastWaiting) = _clock.read();
        _timer.start();
    }
    std::vector<Gap> stop()
    {
        _timer.stop();
        return std::move(_gaps);
    }

private:
    QTimer _timer;
    ThreadClock _clock;
    std::vector<Gap> _gaps;
    double _last = 0;
    double _lastCpu = 0;
    double _lastWaiting = 0;
};

struct Event {
    double at;
    QString what;
};

// What happened last before the gap began, or during it.
QString contextOf(const Gap &gap, const std::vector<Event> &events, double phaseStart)
{
    QString context = QStringLiteral("-");
    for (const Event &event : events) {
        if (event.at <= gap.start + gap.length)
            context =
                event.what + QStringLiteral(" at +%1 ms").arg(event.at - phaseStart, 0, 'f', 1);
    }
    return context;
}

QJsonArray worstOf(std::vector<Gap> gaps, const std::function<double(const Gap &)> &by,
                   const std::vector<Event> &events, double phaseStart)
{
    std::sort(gaps.begin(), gaps.end(),
              [&by](const Gap &a, const Gap &b) { return by(a) > by(b); });
    gaps.resize(std::min<size_t>(gaps.size(), 5));
    QJsonArray worst;
    for (const Gap &gap : gaps) {
        worst.append(QJsonObject{{QStringLiteral("gap_ms"), gap.length},
                                 {QStringLiteral("busy_ms"), gap.busy},
                                 {QStringLiteral("waiting_ms"), gap.waiting},
                                 {QStringLiteral("blocked_ms"), gap.blocked()},
                                 {QStringLiteral("at_ms"), gap.start - phaseStart},
                                 {QStringLiteral("after"), contextOf(gap, events, phaseStart)}});
    }
    return worst;
}

QJsonObject summary(const std::vector<Gap> &gaps, const std::vector<Event> &events,
                    double phaseStart)
{
    std::vector<double> lengths;
    double maxBusy = 0;
    double maxBlocked = 0;
    for (const Gap &gap : gaps) {
        lengths.push_back(gap.length);
        maxBusy = std::max(maxBusy, gap.busy);
        maxBlocked = std::max(maxBlocked, gap.blocked());
    }
    std::sort(lengths.begin(), lengths.end());
    const auto percentile = [&](double p) {
        return lengths.empty()
                   ? 0.0
                   : lengths[std::min(lengths.size() - 1, size_t(p * double(lengths.size())))];
    };
    int over = 0;
    for (const double length : lengths)
        over += length >= 20.0 ? 1 : 0;
    return QJsonObject{
        {QStringLiteral("ticks"), double(lengths.size())},
        {QStringLiteral("max_gap_ms"), lengths.empty() ? 0.0 : lengths.back()},
        {QStringLiteral("p99_gap_ms"), percentile(0.99)},
        {QStringLiteral("p999_gap_ms"), percentile(0.999)},
        {QStringLiteral("gaps_over_20_ms"), over},
        {QStringLiteral("max_busy_ms"), maxBusy},
        {QStringLiteral("max_blocked_ms"), maxBlocked},
        {QStringLiteral("worst"), worstOf(gaps, &Gap::length, events, phaseStart)},
        {QStringLiteral("busiest"), worstOf(gaps, &Gap::busy, events, phaseStart)},
        {QStringLiteral("most_blocked"), worstOf(gaps, &Gap::blocked, events, phaseStart)}};
}

Node *bigNode(NodeGroup *group)
{
    for (Node *node : group->allNodes()) {
        if (node->fileName().startsWith(QLatin1String("big-")))
            return node;
    }
    return nullptr;
}

} // namespace

int runStallBench(const QStringList &arguments)
{
    if (arguments.size() != 4)
        return Harness::usage("stall DEFINITIONS DATA PHASE-MS SWITCH-MS");
    const int phaseMs = arguments.at(2).toInt();
    const int switchMs = arguments.at(3).toInt();

    AppController *controller = Harness::startApplication(arguments.at(0), arguments.at(1));
    AppCore *core = controller->core();
    const QList<GroupView *> imageViews{controller->sunView(), controller->graphView(),
                                        controller->auroraView(), controller->earthView()};
    QList<Node *> transfers;
    for (NodeGroup *group : core->groupsInViewOrder()) {
        // The Now group is defined empty here: nothing of it downloads.
        if (group->nodeCount() == 0)
            continue;
        Node *node = bigNode(group);
        if (!node) {
            std::fprintf(stderr, "vantorel-bench-harness: group %s has no big- node\n",
                         qPrintable(group->groupName()));
            return 1;
        }
        transfers.append(node);
    }

    std::vector<Event> events;
    // What the user does, one thing per tick of the switcher: first select the downloading node in
    // each image view (its data is missing, so selecting it starts the download, as it does for a
    // user) and start the Alerts group's large file while its view shows a report; then go on
    // switching views in turn.
    QList<std::function<void()>> script;
    int view = 0;
    QTimer switcher;
    switcher.setInterval(switchMs);
    QObject::connect(&switcher, &QTimer::timeout, [&] {
        const double start = Harness::nowMs();
        if (!script.isEmpty()) {
            script.takeFirst()();
            return;
        }
        view = (view + 1) % 6;
        controller->setGroupView(view);
        events.push_back({start, QStringLiteral("switch to view %1").arg(view)});
    });
    Probe probe;
    QJsonObject result;

    // Idle.
    probe.start();
    double phaseStart = Harness::nowMs();
    Harness::processEventsFor(phaseMs);
    result[QStringLiteral("idle")] = summary(probe.stop(), events, phaseStart);

    // Switching views, nothing else.
    events.clear();
    probe.start();
    phaseStart = Harness::nowMs();
    switcher.start();
    Harness::processEventsFor(phaseMs);
    switcher.stop();
    controller->setGroupView(0);
    Harness::processEventsFor(300);
    result[QStringLiteral("switching")] = summary(probe.stop(), events, phaseStart);

    // Switching views while five large transfers arrive.
    events.clear();
    int finished = 0;
    double lastFinish = 0;
    for (NodeGroup *group : core->groupsInViewOrder()) {
        const auto done = [&, group](Node *node, const QString &what) {
            if (!transfers.contains(node))
                return;
            ++finished;
            lastFinish = Harness::nowMs();
            events.push_back({lastFinish, QStringLiteral("%1 %2").arg(group->groupName(), what)});
        };
        QObject::connect(group, &NodeGroup::nodeDataLoaded, controller,
                         [done](Node *node) { done(node, QStringLiteral("transfer done")); });
        QObject::connect(
            group, &NodeGroup::nodeDownloadFailed, controller,
            [done](Node *node, const QString &) { done(node, QStringLiteral("transfer failed")); });
    }
    for (int i = 0; i < imageViews.size(); ++i) {
        script.append([&, i] {
            const double start = Harness::nowMs();
            controller->setGroupView(i);
            GroupView *groupView = imageViews.at(i);
            groupView->domainsList()->setCurrentIndex(
                groupView->outlineModel()->indexForNode(transfers.at(i)));
            events.push_back(
                {start,
                 QStringLiteral("show %1, select its large node").arg(groupView->groupName())});
        });
    }
    script.append([&] {
        const double start = Harness::nowMs();
        view = 4;
        controller->setGroupView(view);
        core->alertsGroup()->addNodeToDownloadQueue(transfers.at(4));
        events.push_back({start, QStringLiteral("show Alerts, queue its large file")});
    });
    probe.start();
    phaseStart = Harness::nowMs();
    switcher.start();
    Harness::runEventLoopUntil(
        [&] { return finished == transfers.size() && Harness::nowMs() >= lastFinish + 500; },
        120000, 50);
    switcher.stop();
    const double transferMs = lastFinish - phaseStart;
    QJsonObject during = summary(probe.stop(), events, phaseStart);
    during[QStringLiteral("transfers_ms")] = transferMs;

    int arrived = 0;
    qint64 bytes = 0;
    for (Node *node : transfers) {
        const QFileInfo file(node->filePath());
        if (file.exists()) {
            ++arrived;
            bytes += file.size();
        }
    }
    during[QStringLiteral("transfers_arrived")] = arrived;
    during[QStringLiteral("bytes")] = double(bytes);
    result[QStringLiteral("transfers")] = during;
    result[QStringLiteral("ok")] = arrived == transfers.size();
    Harness::printJson(result);
    Harness::stopApplication(controller);
    return arrived == transfers.size() ? 0 : 1;
}
