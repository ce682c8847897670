#include "core/sources/OutlineSelectionModel.h"

OutlineSelectionModel::OutlineSelectionModel(QAbstractItemModel *model, QObject *parent)
    : QItemSelectionModel(model, parent)
{
}

void OutlineSelectionModel::select(const QModelIndex &index,
                                   QItemSelectionModel::SelectionFlags command)
{
    select(QItemSelection(index, index), command);
}

void OutlineSelectionModel::select(const QItemSelection &selection,
                                   QItemSelectionModel::SelectionFlags command)
{
    if (_willSelect && command.testFlag(QItemSelectionModel::Select) && !selection.isEmpty()) {
        const QModelIndex first = selection.first().topLeft();
        if (first.isValid())
            _willSelect(first.siblingAtColumn(0));
    }
    QItemSelectionModel::select(selection, command);
}
