#include "db/calllistmodel.h"

#include <QSize>

int CallListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(calls_.size());
}

QVariant CallListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= calls_.size()) return {};
    if (role == Qt::DisplayRole) return calls_.at(index.row());
    // Every row is as high as every other: the view need not ask each one.
    if (role == Qt::SizeHintRole) return QSize(1, rowHeight_);
    return {};
}

void CallListModel::setCalls(QStringList calls) {
    beginResetModel();
    calls_ = std::move(calls);
    endResetModel();
}
