#pragma once

#include "core/now/NowChartData.h"

#include <QList>
#include <QWidget>

#include <optional>

class NowChartView;
class NowKpChart;
class NowLineChart;
class NowXrayChart;
class QButtonGroup;
class QLabel;
class QTimer;

// The Now view's charts, drawn from the history: the K index, the X-ray flux, the solar wind and
// the magnetic field. One range control sets the span of them all (6 hours to 90 days, kept in
// the settings), and one cursor, moved by the mouse over any chart, shows in each what it holds at
// that time.
class NowCharts : public QWidget {
    Q_OBJECT

public:
    explicit NowCharts(QWidget *parent = nullptr);

    static constexpr const char *kRangeKey = "NowChartRange";

    // The span chosen, in seconds.
    qint64 range() const { return _range; }
    void setRange(qint64 seconds);
    // How many pixel columns a chart has to show a line in; 0 before they are laid out.
    int columns() const;
    // Hands the data to the charts one at a time, one per turn of the event loop, each drawn
    // before the next takes its points: at the long ranges all four at once take longer than a
    // frame.
    void setData(const NowChartData &data);
    // Hands the data to the next chart waiting for it; false when none is.
    bool applyNext();
    // Says why there is nothing to draw (no history at all), or nothing.
    void setNotice(const QString &notice);

    QList<NowChartView *> charts() const;
    // The shared cursor (milliseconds since 1970), for every chart.
    void setCursorTime(std::optional<double> time);

signals:
    void rangeChanged(qint64 seconds);
    // The charts' width changed: a reading thinned to the old width would show too much or too
    // little.
    void columnsChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    static QString rangeName(qint64 seconds);

    QButtonGroup *_rangeButtons;
    QLabel *_cursorLabel;
    QLabel *_notice;
    NowKpChart *_kp;
    NowXrayChart *_xray;
    NowLineChart *_solarWind;
    NowLineChart *_imf;
    qint64 _range;
    NowChartData _pending;
    int _next = 0;
    QTimer *_nextTimer;
};
