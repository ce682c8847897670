#include "ui/now/NowMessageList.h"

#include "core/now/NowFormat.h"

#include <QDateTime>
#include <QFontDatabase>
#include <QHeaderView>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

NowMessageList::NowMessageList(QWidget *parent)
    : QWidget(parent), _list(new QTreeWidget), _text(new QPlainTextEdit)
{
    _list->setRootIsDecorated(false);
    _list->setUniformRowHeights(true);
    _list->setAlternatingRowColors(true);
    _list->setHeaderLabels({tr("Issued (UTC)"), tr("Code"), tr("Serial"), tr("Message")});
    _list->header()->setStretchLastSection(true);
    _list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    _list->header()->setSectionResizeMode(3, QHeaderView::Stretch);

    // The messages are laid out for a fixed-width font, with CR LF line ends.
    _text->setReadOnly(true);
    _text->setUndoRedoEnabled(false);
    _text->setLineWrapMode(QPlainTextEdit::NoWrap);
    _text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

    auto *split = new QSplitter(Qt::Horizontal);
    split->addWidget(_list);
    split->addWidget(_text);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(split);

    connect(_list, &QTreeWidget::currentItemChanged, this, &NowMessageList::showSelected);
}

void NowMessageList::showMessages(const QJsonArray &messages, const QStringList &texts)
{
    const QTreeWidgetItem *current = _list->currentItem();
    const QStringList reading =
        current ? QStringList{current->text(0), current->text(1), current->text(2)} : QStringList();
    const QSignalBlocker quiet(_list);
    _list->clear();
    _texts = texts;
    QTreeWidgetItem *again = nullptr;
    for (const QJsonValue &value : messages) {
        const QJsonObject message = value.toObject();
        const std::optional<qint64> issued =
            NowFormat::parseTime(message.value(QStringLiteral("issued")).toString());
        const QJsonValue serial = message.value(QStringLiteral("serial"));
        auto *item = new QTreeWidgetItem(
            _list, {issued ? QDateTime::fromSecsSinceEpoch(*issued, Qt::UTC)
                                 .toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                           : QString(),
                    message.value(QStringLiteral("code")).toString(),
                    serial.isDouble() ? QString::number(serial.toInteger()) : QString(),
                    message.value(QStringLiteral("title")).toString()});
        if (!again && !reading.isEmpty() &&
            QStringList{item->text(0), item->text(1), item->text(2)} == reading)
            again = item;
    }
    _list->setCurrentItem(again);
    showSelected();
}

void NowMessageList::showSelected()
{
    const int row = _list->indexOfTopLevelItem(_list->currentItem());
    if (row < 0 || row >= _texts.size()) {
        _text->setPlainText(_list->topLevelItemCount() > 0 ? tr("Choose a message to read it.")
                                                           : tr("No messages."));
        return;
    }
    // Shown with the line ends every platform knows.
    QString text = _texts.at(row);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    _text->setPlainText(text);
}
