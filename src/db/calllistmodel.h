#pragma once
// The calls of the call-sign file as the editor's list shows them.
#include <QAbstractListModel>
#include <QStringList>

// The calls of the file for the list view, one string per record and no widget item per row:
// a list of a million calls is filled in one step and drawn a screenful at a time.
class CallListModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit CallListModel(int rowHeight, QObject* parent = nullptr)
        : QAbstractListModel(parent), rowHeight_(rowHeight) {}

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    void setCalls(QStringList calls);
    const QStringList& calls() const { return calls_; }
    int rowHeight() const { return rowHeight_; }

private:
    QStringList calls_;
    int rowHeight_;
};
