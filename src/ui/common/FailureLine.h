#pragma once

#include <QLabel>

// One line that says why a node's last download failed, in the words of the activity log,
// shown beside its last-update line. Empty while nothing failed. It takes the room there is and
// never widens the window: a reason that does not fit ends in "…", and the whole of it is in the
// tool tip (and in text()).
class FailureLine : public QLabel {
    Q_OBJECT

public:
    explicit FailureLine(QWidget *parent = nullptr);

    void setFailure(const QString &failure);

protected:
    void paintEvent(QPaintEvent *event) override;
};
