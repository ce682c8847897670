#include "ScreenshotTour.h"

#include "core/settings/Preferences.h"
#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "core/sources/NodeTimes.h"
#include "core/util/Clock.h"
#include "ui/alerts/AlertsView.h"
#include "ui/log/ActivityLog.h"
#include "ui/shell/AppController.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/PreferencesPanel.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/ImageController.h"
#include "ui/sources/ImageWindow.h"
#include "ui/sources/NodeScheduler.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QTest>
#include <QTextStream>
#include <QTreeView>

#include <algorithm>

ScreenshotTour::ScreenshotTour(AppController *controller, const QString &folder)
    : _controller(controller), _folder(folder)
{
}

void ScreenshotTour::settle()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::processEvents();
        QTest::qWait(40);
    }
}

bool ScreenshotTour::save(QWidget *widget, const QString &name)
{
    settle();
    const QString path = QDir(_folder).filePath(_prefix + name + QStringLiteral(".png"));
    const bool ok = widget->grab().save(path);
    QTextStream(stdout) << (ok ? "saved " : "FAILED ") << path << '\n';
    if (!ok)
        ++_failures;
    return ok;
}

int ScreenshotTour::run()
{
    // Every picture in both appearances, each set named by its own: light-1-sun-default.png,
    // dark-1-sun-default.png and so on.
    const struct {
        Preferences::Appearance appearance;
        const char *name;
    } appearances[] = {{Preferences::Appearance::Light, "light"},
                       {Preferences::Appearance::Dark, "dark"}};
    for (const auto &entry : appearances) {
        _controller->setAppearance(int(entry.appearance));
        _prefix = QLatin1String(entry.name) + QLatin1Char('-');
        tour();
    }
    return _failures;
}

void ScreenshotTour::tour()
{
    MainWindow *window = _controller->window();
    const struct {
        QSize size;
        const char *suffix;
    } sizes[] = {{QSize(1040, 720), "default"}, {QSize(760, 520), "small"}};
    const char *viewNames[] = {"sun", "graphs", "aurora", "earth", "alerts", "moon"};
    const QList<GroupView *> imageViews{_controller->sunView(), _controller->graphView(),
                                        _controller->auroraView(), _controller->earthView()};

    // Something selected in the image views, as a user would have it: the first item, in the
    // Earth view one whose data is stale, and nothing in the Aurora view, which shows its
    // placeholder.
    for (GroupView *view : imageViews) {
        const QList<Node *> nodes = view->group()->allNodes();
        const auto stale = std::find_if(nodes.cbegin(), nodes.cend(), [](const Node *node) {
            return NodeTimes::isStale(*node, Clock::now());
        });
        const Node *shown = view == _controller->earthView() && stale != nodes.cend() ? *stale
                            : nodes.isEmpty() || view == _controller->auroraView()    ? nullptr
                                                                                   : nodes.first();
        if (shown)
            view->domainsList()->setCurrentIndex(view->outlineModel()->indexForNode(shown));
    }

    for (const auto &size : sizes) {
        window->resize(size.size);
        for (int view = 0; view < 6; ++view) {
            _controller->setGroupView(view);
            save(window, QStringLiteral("%1-%2-%3")
                             .arg(view + 1)
                             .arg(QLatin1String(viewNames[view]), QLatin1String(size.suffix)));
        }
    }
    window->resize(sizes[0].size);
    _controller->setGroupView(0);

    ActivityLog *log = _controller->log();
    log->addMessageToLog(QStringLiteral("Download of \"AIA 193\" Successful"));
    log->addErrorToLog(
        QStringLiteral("Download of \"LASCO C3\" Failed: The request timed out. "
                       "https://soho.nascom.nasa.gov/data/realtime/c3/1024/latest.jpg"));
    log->addMessageToLog(QStringLiteral("Download of \"RSGA\" Successful"));
    log->openLogWindow();
    save(log, QStringLiteral("7-activity-log"));
    log->close();

    _controller->openPreferencesPanel();
    save(_controller->preferencesPanel(), QStringLiteral("8-preferences"));
    _controller->preferencesPanel()->close();

    GroupView *sun = _controller->sunView();
    sun->openScheduleWindowForNode();
    save(_controller->nodeScheduler(), QStringLiteral("9-schedule-sheet"));
    _controller->nodeScheduler()->close();

    if (Node *node = sun->selectedNode()) {
        sun->openImageWindowForNode(node);
        if (ImageController *image = sun->imageWindowForNode(node)) {
            save(image->window(), QStringLiteral("10-image-window"));
            image->window()->close();
        }
    }
}
