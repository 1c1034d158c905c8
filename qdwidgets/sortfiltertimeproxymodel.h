#pragma once

#include "qdwidgets_global.h"

#include <QSortFilterProxyModel>
#include <QVector>

class DateTimeConverter;

/**
 * A proxy for a table in which one column holds times (QDateTime, in the display role).
 *
 * The time column is sorted by time, an invalid one being older than all others, and is shown through the
 * converter. Filters match what is shown, so a user can filter by "11/22". All other columns behave as in
 * QSortFilterProxyModel.
 *
 * Belongs to its parent; the converter must outlive it.
 */
class QDWIDGETS_EXPORT SortFilterTimeProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    /// @p timeColumn is the column of the times in the source model; -1: there is none.
    SortFilterTimeProxyModel(const DateTimeConverter& converter, int timeColumn, QObject* parent = nullptr);

    /// As the source model numbers it; -1: none.
    int timeColumn() const { return m_timeColumn; }

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    void setSourceModel(QAbstractItemModel* model) override;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private Q_SLOTS:
    void slotConverterChanged();

private:
    bool acceptsText(const QString& text) const;
    QString shownText(const QModelIndex& source) const;

    const DateTimeConverter& m_converter;
    const int m_timeColumn;

    // A source that resets while it removes rows, see setSourceModel().
    QVector<QMetaObject::Connection> m_connections;
    bool m_isRemoving{false};
    bool m_wasReset{false};
};
