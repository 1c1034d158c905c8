#include "actionbarheaderview.h"

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QStyle>
#include <QTimer>

ActionBarHeaderView::ActionBarHeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent)
{
    connect(this, &QHeaderView::sectionResized, this, &ActionBarHeaderView::scheduleCheck);
    connect(this, &QHeaderView::sectionCountChanged, this, &ActionBarHeaderView::scheduleCheck);
    // queued: the view, which connected itself later, has then sorted, and sorts again
    connect(this, &QHeaderView::sortIndicatorChanged, this, &ActionBarHeaderView::checkSortIndicator,
            Qt::QueuedConnection);
}

void ActionBarHeaderView::setActionColumn(int column)
{
    if (m_actionColumn == column)
        return;
    resumeStretching();
    m_actionColumn = column;
    scheduleCheck();
    checkSortIndicator();
}

void ActionBarHeaderView::setModel(QAbstractItemModel* newModel)
{
    for (const QMetaObject::Connection& connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
    QHeaderView::setModel(newModel);
    if (newModel) {
        // rows may have other actions than those there were
        m_connections = {
            connect(newModel, &QAbstractItemModel::modelReset, this, &ActionBarHeaderView::scheduleCheck),
            connect(newModel, &QAbstractItemModel::rowsInserted, this, &ActionBarHeaderView::scheduleCheck),
            connect(newModel, &QAbstractItemModel::dataChanged, this, &ActionBarHeaderView::scheduleCheck),
        };
    }
    scheduleCheck();
}

// --- Sorting

bool ActionBarHeaderView::isOnTitleOfActions(const QPoint& position) const
{
    const int along = orientation() == Qt::Horizontal ? position.x() : position.y();
    if (m_actionColumn < 0)
        return false;
    // the edges of a title are the resize handles of it and of its neighbour
    const int grip = style()->pixelMetric(QStyle::PM_HeaderGripMargin, nullptr, this);
    const int begin = sectionViewportPosition(m_actionColumn);
    return along >= begin + grip && along < begin + sectionSize(m_actionColumn) - grip;
}

void ActionBarHeaderView::mousePressEvent(QMouseEvent* event)
{
    m_pressSwallowed = event->button() == Qt::LeftButton && isOnTitleOfActions(event->pos());
    if (!m_pressSwallowed)
        QHeaderView::mousePressEvent(event);
}

void ActionBarHeaderView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_pressSwallowed)
        QHeaderView::mouseReleaseEvent(event);
    m_pressSwallowed = false;
}

void ActionBarHeaderView::checkSortIndicator()
{
    if (m_actionColumn < 0 || sortIndicatorSection() != m_actionColumn) {
        m_sortSection = sortIndicatorSection();
        m_sortOrder = sortIndicatorOrder();
    } else {
        setSortIndicator(m_sortSection, m_sortOrder);
    }
}

// --- Width

int ActionBarHeaderView::neededWidth() const
{
    const auto* view = qobject_cast<const QAbstractItemView*>(parentWidget());
    if (!view || m_actionColumn < 0 || m_actionColumn >= count())
        return 0;
    return orientation() == Qt::Horizontal ? view->sizeHintForColumn(m_actionColumn)
                                           : view->sizeHintForRow(m_actionColumn);
}

void ActionBarHeaderView::scheduleCheck()
{
    // Deferred: the header may be in the middle of laying out its sections.
    if (m_checkScheduled)
        return;
    m_checkScheduled = true;
    QTimer::singleShot(0, this, &ActionBarHeaderView::checkWidth);
}

void ActionBarHeaderView::checkWidth()
{
    m_checkScheduled = false;
    const int needed = neededWidth();
    if (needed <= 0 || isSectionHidden(m_actionColumn) || sectionSize(m_actionColumn) >= needed)
        return;
    // In stretch mode the header would shrink the section again at once, in an endless loop. A section that
    // is stretched only as the last one keeps the given size as its minimum.
    if (sectionResizeMode(m_actionColumn) == Stretch) {
        m_stretchSuspended = true;
        setSectionResizeMode(m_actionColumn, Fixed);
    }
    resizeSection(m_actionColumn, needed);
}

void ActionBarHeaderView::resizeEvent(QResizeEvent* event)
{
    resumeStretching();
    QHeaderView::resizeEvent(event);
}

void ActionBarHeaderView::resumeStretching()
{
    if (m_stretchSuspended && m_actionColumn < count())
        setSectionResizeMode(m_actionColumn, Stretch);
    m_stretchSuspended = false;
}
