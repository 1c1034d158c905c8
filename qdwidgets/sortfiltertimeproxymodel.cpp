#include "sortfiltertimeproxymodel.h"

#include "datetimeconverter.h"

#include <QDateTime>
#include <QRegExp>
#include <QRegularExpression>

SortFilterTimeProxyModel::SortFilterTimeProxyModel(const DateTimeConverter& converter, int timeColumn,
                                                   QObject* parent)
    : QSortFilterProxyModel(parent)
    , m_converter(converter)
    , m_timeColumn(timeColumn)
{
    connect(&converter, &DateTimeConverter::changed, this, &SortFilterTimeProxyModel::slotConverterChanged);
}

void SortFilterTimeProxyModel::setSourceModel(QAbstractItemModel* model)
{
    for (const QMetaObject::Connection& connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
    QSortFilterProxyModel::setSourceModel(model);
    if (!model)
        return;

    // When a source resets between announcing a removal and completing it, the base class takes the rows out
    // of a mapping that already lacks them, and proxy rows then map to the wrong source rows. These slots run
    // after the base class's own, so the mapping is discarded as soon as it is wrong.
    m_connections = {
        connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this,
                [this] {
                    m_isRemoving = true;
                    m_wasReset = false;
                }),
        connect(model, &QAbstractItemModel::modelReset, this, [this] { m_wasReset = m_isRemoving; }),
        connect(model, &QAbstractItemModel::rowsRemoved, this,
                [this] {
                    if (m_wasReset)
                        invalidate();
                    m_isRemoving = m_wasReset = false;
                }),
    };
}

QVariant SortFilterTimeProxyModel::data(const QModelIndex& index, int role) const
{
    const QModelIndex source = mapToSource(index);
    if (role == Qt::DisplayRole && source.isValid() && source.column() == m_timeColumn)
        return shownText(source);
    return QSortFilterProxyModel::data(index, role);
}

QString SortFilterTimeProxyModel::shownText(const QModelIndex& source) const
{
    const QVariant value = source.data(Qt::DisplayRole);
    return source.column() == m_timeColumn ? m_converter.toText(value.toDateTime()) : value.toString();
}

bool SortFilterTimeProxyModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (left.column() != m_timeColumn || right.column() != m_timeColumn)
        return QSortFilterProxyModel::lessThan(left, right);
    const QDateTime first = left.data(Qt::DisplayRole).toDateTime();
    const QDateTime second = right.data(Qt::DisplayRole).toDateTime();
    if (!first.isValid() || !second.isValid())
        return !first.isValid() && second.isValid();
    return first < second;
}

bool SortFilterTimeProxyModel::acceptsText(const QString& text) const
{
    // only one of the two kinds is set at a time
    const QRegularExpression expression = filterRegularExpression();
    if (!expression.pattern().isEmpty())
        return expression.match(text).hasMatch();
    return filterRegExp().isEmpty() || text.contains(filterRegExp());
}

bool SortFilterTimeProxyModel::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const int column = filterKeyColumn();
    const bool isAllColumns = column == -1;
    if (filterRole() != Qt::DisplayRole || (!isAllColumns && column != m_timeColumn))
        return QSortFilterProxyModel::filterAcceptsRow(row, parent);
    if (!isAllColumns)
        return acceptsText(shownText(sourceModel()->index(row, column, parent)));
    for (int i = 0; i < sourceModel()->columnCount(parent); ++i) {
        if (acceptsText(shownText(sourceModel()->index(row, i, parent))))
            return true;
    }
    return false;
}

void SortFilterTimeProxyModel::slotConverterChanged()
{
    if (!sourceModel() || m_timeColumn < 0)
        return;
    invalidateFilter();
    const QModelIndex first = mapFromSource(sourceModel()->index(0, m_timeColumn));
    const int column = first.isValid() ? first.column() : m_timeColumn;
    if (rowCount() > 0 && column < columnCount())
        Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column), {Qt::DisplayRole});
}
