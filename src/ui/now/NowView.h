#pragma once

#include "core/now/NowChartData.h"

#include <QJsonObject>
#include <QStringList>
#include <QWidget>

class FlatGroup;
class NowCharts;
class NowMessageList;
class NowRecorder;
class NowSummaryLoader;
class NowValuesPanel;
class QLabel;
class QPushButton;
class QTimer;
class ViewSizeKeeper;

// The Now view: space weather as it is, from the providers' data. The current values, large, with
// their age; charts drawn from the local history over a range the user chooses; the forecasters'
// messages. It reads again whenever a node of the Now group brings new data (the values and the
// messages) and whenever the history has taken some in (the charts), and once a minute, so that a
// value that grows old is shown as stale. All reading and summarising is done off the main thread
// (the files are megabytes of JSON, the history months of one-minute rows), and only while the
// view is shown: a hidden view catches up when it is shown again.
class NowView : public QWidget {
    Q_OBJECT

public:
    explicit NowView(FlatGroup *group, QWidget *parent = nullptr);
    ~NowView() override;

    static constexpr const char *kViewSizeKey = "NowViewSize";
    static constexpr int kAgeIntervalMs = 60 * 1000;

    // Restores the size.
    void awakeFromNib();
    // The group has been read, and the history is at hand (AppCore::nowRecorder()): the view
    // follows both from now on. Without a recorder there is no history, and the charts say so.
    void groupLoaded(NowRecorder *recorder);
    // At termination: the nodes store their state and go, then the layout is stored.
    void cleanup();

    FlatGroup *group() const { return _group; }
    NowValuesPanel *values() const { return _values; }
    NowCharts *charts() const { return _charts; }
    NowMessageList *messages() const { return _messages; }

    // Reads the data files again, and the history when `charts` is set (both if shown, else
    // when next shown).
    void refresh(bool charts = true);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void readSummary();
    void readCharts();
    void summaryLoaded(const QJsonObject &summary, const QStringList &messageTexts,
                       const QStringList &problems);
    void chartDataReady(const NowChartData &data);

    FlatGroup *_group;
    NowRecorder *_recorder = nullptr;
    NowSummaryLoader *_loader;
    NowValuesPanel *_values;
    NowCharts *_charts;
    NowMessageList *_messages;
    QPushButton *_reloadButton;
    QLabel *_statusField;
    // Many nodes arrive one after another at start-up: one reading for them all.
    QTimer *_summaryTimer;
    QTimer *_chartTimer;
    QTimer *_ageTimer;
    ViewSizeKeeper *_sizeKeeper;
    bool _summaryWanted = true;
    bool _chartsWanted = true;
    int _chartRequest = 0;
    int _requestedColumns = 0;
};
