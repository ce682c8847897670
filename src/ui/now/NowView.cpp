#include "ui/now/NowView.h"

#include "core/now/NowRecorder.h"
#include "core/now/NowSummaryLoader.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/Clock.h"
#include "ui/common/ViewSizeKeeper.h"
#include "ui/now/NowCharts.h"
#include "ui/now/NowMessageList.h"
#include "ui/now/NowValuesPanel.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdlib>

NowView::NowView(FlatGroup *group, QWidget *parent)
    : QWidget(parent), _group(group), _loader(new NowSummaryLoader(this)),
      _values(new NowValuesPanel), _charts(new NowCharts), _messages(new NowMessageList),
      _reloadButton(new QPushButton(tr("Reload All"))), _statusField(new QLabel),
      _summaryTimer(new QTimer(this)), _chartTimer(new QTimer(this)), _ageTimer(new QTimer(this)),
      _sizeKeeper(new ViewSizeKeeper(this))
{
    _reloadButton->setToolTip(tr("Download every file of the Now group again"));
    _statusField->setTextFormat(Qt::PlainText);
    _statusField->setWordWrap(true);
    auto *top = new QHBoxLayout;
    top->addWidget(_statusField, 1);
    top->addWidget(_reloadButton);

    auto *valuesScroll = new QScrollArea;
    valuesScroll->setWidget(_values);
    valuesScroll->setWidgetResizable(true);
    valuesScroll->setFrameShape(QFrame::NoFrame);
    valuesScroll->setMinimumWidth(240);
    auto *right = new QSplitter(Qt::Vertical);
    right->addWidget(_charts);
    right->addWidget(_messages);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 1);
    auto *split = new QSplitter(Qt::Horizontal);
    split->addWidget(valuesScroll);
    split->addWidget(right);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(split, 1);

    for (QTimer *timer : {_summaryTimer, _chartTimer}) {
        timer->setSingleShot(true);
        timer->setInterval(150);
    }
    connect(_summaryTimer, &QTimer::timeout, this, &NowView::readSummary);
    connect(_chartTimer, &QTimer::timeout, this, &NowView::readCharts);
    _ageTimer->setInterval(kAgeIntervalMs);
    connect(_ageTimer, &QTimer::timeout, this, [this] { refresh(false); });
    _ageTimer->start();

    connect(_loader, &NowSummaryLoader::loaded, this, &NowView::summaryLoaded);
    connect(_group, &NodeGroup::nodeDataLoaded, this, [this] { refresh(false); });
    connect(_group, &NodeGroup::groupCacheEmptied, this, [this] { refresh(false); });
    connect(_reloadButton, &QPushButton::clicked, _group, &NodeGroup::refreshAllNodeData);
    connect(_charts, &NowCharts::rangeChanged, this, &NowView::readCharts);
    connect(_charts, &NowCharts::columnsChanged, this, [this] {
        // Thinned for a width far from the new one: read again once the resizing rests.
        const int columns = _charts->columns();
        if (std::abs(columns - _requestedColumns) > std::max(16, _requestedColumns / 10)) {
            _chartsWanted = true;
            if (isVisible())
                _chartTimer->start();
        }
    });
}

NowView::~NowView() = default;

void NowView::awakeFromNib()
{
    _sizeKeeper->restore(QLatin1String(kViewSizeKey));
}

void NowView::groupLoaded(NowRecorder *recorder)
{
    if (_recorder)
        disconnect(_recorder, nullptr, this, nullptr);
    _recorder = recorder;
    if (_recorder) {
        connect(_recorder, &NowRecorder::recorded, this, [this] { refresh(); });
        connect(_recorder, &NowRecorder::historyCleared, this, [this] { refresh(); });
        connect(_recorder, &NowRecorder::chartDataReady, this, &NowView::chartDataReady);
    }
    refresh();
}

void NowView::cleanup()
{
    _group->destroyAllNodes();
    _sizeKeeper->store(QLatin1String(kViewSizeKey));
}

void NowView::refresh(bool charts)
{
    _summaryWanted = true;
    _chartsWanted = _chartsWanted || charts;
    if (!isVisible())
        return;
    _summaryTimer->start();
    if (_chartsWanted)
        _chartTimer->start();
}

void NowView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (_summaryWanted)
        _summaryTimer->start();
    if (_chartsWanted)
        _chartTimer->start();
}

void NowView::readSummary()
{
    _summaryWanted = false;
    QList<std::pair<QString, QString>> files;
    for (const Node *node : _group->nodes()) {
        if (!node->dataKind().isEmpty())
            files.append({node->dataKind(), node->filePath()});
    }
    _loader->request(files);
}

void NowView::summaryLoaded(const QJsonObject &summary, const QStringList &messageTexts,
                            const QStringList &problems)
{
    _values->showSummary(summary);
    _messages->showMessages(summary.value(QStringLiteral("messages")).toArray(), messageTexts);
    _statusField->setText(
        problems.isEmpty()
            ? tr("As of %1")
                  .arg(Clock::now().toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'")))
            : tr("Cannot be read: %1").arg(problems.join(QStringLiteral("; "))));
}

void NowView::readCharts()
{
    _chartsWanted = false;
    if (!_recorder) {
        _charts->setNotice(tr("There is no history to draw the charts from."));
        return;
    }
    const int columns = _charts->columns();
    _requestedColumns = columns > 0 ? columns : 600;
    _chartRequest = _recorder->requestChartData(_charts->range(), _requestedColumns);
}

void NowView::chartDataReady(const NowChartData &data)
{
    if (data.request != _chartRequest)
        return;
    _charts->setData(data);
    bool empty = data.kp.isEmpty();
    for (const auto &segments : data.lines)
        empty = empty && segments.isEmpty();
    _charts->setNotice(empty ? tr("The history holds nothing for this range yet: it fills as the "
                                  "Now group's files are downloaded.")
                             : QString());
}
