#pragma once

#include <QFrame>
#include <QList>
#include <QString>

class QHBoxLayout;
class QLabel;

// One current value of the Now view, large, with what it means beside it (a G level, a class),
// a line or two of detail, and when it was observed and how old it is. A value past its
// threshold is drawn in the palette's muted text colour and says "stale: 2 h 10 min old", so that
// it is never taken for a current one.
class NowValueTile : public QFrame {
    Q_OBJECT
    Q_PROPERTY(bool stale READ isStale)

public:
    // A word beside the value, in the colours of a scale's level (0 to 5).
    struct Badge {
        QString text;
        int level;
    };

    explicit NowValueTile(const QString &title, QWidget *parent = nullptr);

    void setValue(const QString &value, const QList<Badge> &badges = {});
    // Lines under the value.
    void setDetail(const QString &detail);
    // When the value was observed and how old it is ("12 min old", "stale: …").
    void setAge(const QString &time, const QString &age, bool stale);
    // No data: the value says so, the rest is empty.
    void setMissing();

    bool isStale() const { return _stale; }
    QString title() const;
    QString value() const;
    QString age() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void applyPalette();

    QLabel *_title;
    QLabel *_value;
    QLabel *_detail;
    QLabel *_age;
    QHBoxLayout *_badgeRow;
    QList<QLabel *> _badges;
    bool _stale = false;
};
