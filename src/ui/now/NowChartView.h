#pragma once

#include <QChartView>
#include <QColor>
#include <QList>
#include <QString>

#include <optional>
#include <tuple>

class QCategoryAxis;
class QGraphicsLineItem;
class QGraphicsRectItem;
class QGraphicsSimpleTextItem;

// One chart of the Now view: a time axis in UTC, a cursor line at a time shared with the other
// charts (the mouse over any chart moves it in all of them) and, beside the cursor, the chart's
// values at that time. Axes, grid and text follow the system palette, dark ones included; only
// the data's own colours are fixed.
class NowChartView : public QChartView {
    Q_OBJECT

public:
    explicit NowChartView(const QString &title, QWidget *parent = nullptr);

    // The span shown (seconds since 1970, UTC).
    void setSpan(qint64 from, qint64 to);
    qint64 spanFrom() const { return _from; }
    qint64 spanTo() const { return _to; }
    // The title's key to the lines: each name after a square of its colour.
    void setKey(const QList<std::pair<QString, QColor>> &key);

    // The shared cursor (milliseconds since 1970), or none.
    void setCursorTime(std::optional<double> time);
    // What the chart says about the time under the cursor.
    QString readout() const;
    // How many pixel columns the plot area has: as many as a line needs points per minimum and
    // maximum.
    int plotColumns() const;

signals:
    void cursorMoved(double time);
    void cursorLeft();

protected:
    // The chart's values at the time, for the readout; empty when it has none there.
    virtual QString readoutAt(double time) const;
    // Sets the chart's own colours from the palette; subclasses add theirs.
    virtual void applyPalette();
    QCategoryAxis *timeAxis() const { return _timeAxis; }
    // Ends the set-up: the palette's colours for every axis made so far.
    void finishSetUp();

    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void placeCursor();
    void fillTimeAxis();

    QString _title;
    QCategoryAxis *_timeAxis;
    QGraphicsLineItem *_cursorLine;
    QGraphicsRectItem *_readoutBack;
    QGraphicsSimpleTextItem *_readout;
    qint64 _from = 0;
    qint64 _to = 1;
    std::optional<double> _cursor;
    // The first and last label and the step between them the time axis has now.
    std::tuple<qint64, qint64, qint64> _labelled{0, 0, 0};
};
