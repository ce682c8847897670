#pragma once

#include <QJsonArray>
#include <QStringList>
#include <QWidget>

class QPlainTextEdit;
class QTreeWidget;

// The forecasters' messages (alerts, warnings, watches, summaries), newest first, each with its
// code, serial number, issue time and first line; the one selected is shown whole beside the
// list. A new list keeps the message the user was reading selected.
class NowMessageList : public QWidget {
    Q_OBJECT

public:
    explicit NowMessageList(QWidget *parent = nullptr);

    // The summary's "messages" and their whole texts, in the same order.
    void showMessages(const QJsonArray &messages, const QStringList &texts);

    QTreeWidget *list() const { return _list; }
    QPlainTextEdit *text() const { return _text; }

private:
    void showSelected();

    QTreeWidget *_list;
    QPlainTextEdit *_text;
    QStringList _texts;
};
