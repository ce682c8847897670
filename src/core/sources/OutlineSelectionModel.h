#pragma once

#include <QItemSelectionModel>

#include <functional>

// A selection model that asks before a row becomes selected, so that the view can decide what to
// show while the outline is still highlighting the old row. The answer cannot refuse: the view
// does its work and the selection goes ahead.
class OutlineSelectionModel : public QItemSelectionModel {
    Q_OBJECT

public:
    using WillSelect = std::function<void(const QModelIndex &)>;

    explicit OutlineSelectionModel(QAbstractItemModel *model, QObject *parent = nullptr);
    void setWillSelect(WillSelect handler) { _willSelect = std::move(handler); }

    void select(const QModelIndex &index, QItemSelectionModel::SelectionFlags command) override;
    void select(const QItemSelection &selection,
                QItemSelectionModel::SelectionFlags command) override;

private:
    WillSelect _willSelect;
};
