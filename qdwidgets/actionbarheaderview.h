#pragma once

#include "qdwidgets_global.h"

#include <QHeaderView>
#include <QVector>

/**
 * A header for a table with a column of ActionBarItem cells.
 *
 * That column cannot be sorted by: a click on its title does nothing, and the sort indicator never stands
 * there. It is never narrower than its actions: what makes it so (the user, the program, a stretched section
 * in a small window) is put right when control returns to the event loop.
 *
 * Belongs to its view, which must be its parent.
 */
class QDWIDGETS_EXPORT ActionBarHeaderView : public QHeaderView
{
    Q_OBJECT

public:
    /// Has no column of actions until setActionColumn().
    explicit ActionBarHeaderView(Qt::Orientation orientation, QWidget* parent = nullptr);

    /// The column of the actions, as the model numbers it; -1, as at first: none.
    int actionColumn() const { return m_actionColumn; }
    void setActionColumn(int column);

    void setModel(QAbstractItemModel* model) override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private Q_SLOTS:
    void scheduleCheck();
    void checkWidth();
    void checkSortIndicator();

private:
    bool isOnTitleOfActions(const QPoint& position) const;
    int neededWidth() const;
    void resumeStretching();

    int m_actionColumn{-1};
    QVector<QMetaObject::Connection> m_connections; ///< To the model.
    bool m_checkScheduled{false};
    bool m_pressSwallowed{false};
    int m_sortSection{-1}; ///< Where the indicator stands when it is not at the actions.
    Qt::SortOrder m_sortOrder{Qt::AscendingOrder};
    bool m_stretchSuspended{false}; ///< The action column stretches, but not in so little room.
};
