#include "ui/now/NowValueTile.h"

#include "ui/now/NowLevelColors.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

NowValueTile::NowValueTile(const QString &title, QWidget *parent)
    : QFrame(parent), _title(new QLabel(title)), _value(new QLabel), _detail(new QLabel),
      _age(new QLabel), _badgeRow(new QHBoxLayout)
{
    setFrameShape(QFrame::StyledPanel);
    for (QLabel *label : {_title, _value, _detail, _age}) {
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    QFont titleFont = _title->font();
    titleFont.setBold(true);
    _title->setFont(titleFont);
    QFont large = _value->font();
    large.setPointSizeF(large.pointSizeF() * 2.0);
    large.setBold(true);
    _value->setFont(large);
    _detail->setWordWrap(true);
    _age->setWordWrap(true);

    _badgeRow->setSpacing(6);
    _badgeRow->addWidget(_value);
    _badgeRow->addStretch(1);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(2);
    layout->addWidget(_title);
    layout->addLayout(_badgeRow);
    layout->addWidget(_detail);
    layout->addWidget(_age);
    setMissing();
}

void NowValueTile::setValue(const QString &value, const QList<Badge> &badges)
{
    _value->setText(value);
    _value->setVisible(!value.isEmpty());
    qDeleteAll(_badges);
    _badges.clear();
    for (const Badge &badge : badges) {
        auto *label = new QLabel(badge.text);
        label->setTextFormat(Qt::PlainText);
        // Scales' badges stand in for the value: as large.
        if (value.isEmpty())
            label->setFont(_value->font());
        NowLevelColors::paintBadge(label, badge.level);
        _badgeRow->insertWidget(_badgeRow->count() - 1, label, 0, Qt::AlignVCenter);
        _badges.append(label);
    }
}

void NowValueTile::setDetail(const QString &detail)
{
    _detail->setText(detail);
    _detail->setVisible(!detail.isEmpty());
}

void NowValueTile::setAge(const QString &time, const QString &age, bool stale)
{
    _age->setText(time.isEmpty() || age.isEmpty() ? time + age
                                                  : QStringLiteral("%1, %2").arg(time, age));
    _stale = stale;
    applyPalette();
}

void NowValueTile::setMissing()
{
    setValue(tr("no data"));
    setDetail(QString());
    setAge(QString(), QString(), false);
}

QString NowValueTile::title() const
{
    return _title->text();
}

QString NowValueTile::value() const
{
    return _value->text();
}

QString NowValueTile::age() const
{
    return _age->text();
}

void NowValueTile::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyPalette();
}

void NowValueTile::applyPalette()
{
    // A stale value is muted (half way to the background) and its age stands out, in the
    // palette's own colours.
    const QPalette &own = palette();
    QColor text = own.color(QPalette::WindowText);
    if (_stale) {
        const QColor back = own.color(QPalette::Window);
        text =
            QColor::fromRgbF((text.redF() + back.redF()) / 2, (text.greenF() + back.greenF()) / 2,
                             (text.blueF() + back.blueF()) / 2);
    }
    for (QLabel *label : {_value, _detail}) {
        QPalette shown = label->palette();
        shown.setColor(QPalette::WindowText, text);
        label->setPalette(shown);
    }
    QFont ageFont = _age->font();
    ageFont.setBold(_stale);
    ageFont.setItalic(_stale);
    _age->setFont(ageFont);
}
