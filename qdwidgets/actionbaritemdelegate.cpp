#include "actionbaritemdelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QPointer>
#include <QStyleOption>
#include <QTextDocument>
#include <QToolTip>

namespace {

const int framePadding = 2;         ///< Pixels between an image and the frame of its button.
const int longestUnbrokenText = 60; ///< Characters without a blank in a tool tip.

bool isActionBar(const QModelIndex& index)
{
    return index.data(Qt::DisplayRole).userType() == qMetaTypeId<ActionBarItem>();
}

ActionBarItem itemOf(const QModelIndex& index)
{
    return index.data(Qt::DisplayRole).value<ActionBarItem>();
}

QSize imageSize(const QStyleOptionViewItem& option)
{
    if (option.decorationSize.isValid())
        return option.decorationSize;
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    const int size = style->pixelMetric(QStyle::PM_SmallIconSize, &option, option.widget);
    return QSize(size, size);
}

QSize buttonSize(const QStyleOptionViewItem& option)
{
    return imageSize(option) + QSize(2 * framePadding, 2 * framePadding);
}

QSize barSize(const QStyleOptionViewItem& option, const ActionBarItem& item)
{
    const QSize button = buttonSize(option);
    const int count = item.actions().size();
    const int buttons = count * button.width() + qMax(0, count - 1) * item.spacing();
    return QSize(buttons + 2 * item.margin(), button.height());
}

/// The button of an action in the cell that the option describes.
QRect buttonRect(const QStyleOptionViewItem& option, const ActionBarItem& item, int action)
{
    const QSize bar = barSize(option, item).boundedTo(QSize(QWIDGETSIZE_MAX, option.rect.height()));
    const QRect barRect = QStyle::alignedRect(option.direction, option.displayAlignment, bar, option.rect);
    const QSize button = buttonSize(option).boundedTo(QSize(QWIDGETSIZE_MAX, bar.height()));
    const QRect rect(
        QPoint(barRect.left() + item.margin() + action * (button.width() + item.spacing()), barRect.top()),
        button);
    return QStyle::visualRect(option.direction, barRect, rect);
}

QString shownText(const QString& plain)
{
    // Rich text of which every character is literal: a label would take a text with markup for rich text,
    // and would not break one without.
    QString breakable;
    int unbroken = 0;
    for (const QChar character : plain) {
        unbroken = character.isSpace() ? 0 : unbroken + 1;
        if (unbroken > longestUnbrokenText && !character.isLowSurrogate()) {
            breakable += QChar(0x200B); // zero width space
            unbroken = 1;
        }
        breakable += character;
    }
    return plain.isEmpty() ? QString() : Qt::convertFromPlainText(breakable, Qt::WhiteSpaceNormal);
}

} // namespace

ActionBarItemDelegate::ActionBarItemDelegate(QAbstractItemView* view)
    : QStyledItemDelegate(view)
    , m_view(view)
    , m_viewport(view->viewport())
{
    view->setMouseTracking(true);
    view->viewport()->installEventFilter(this);
}

ActionBarItemDelegate::Button ActionBarItemDelegate::buttonAt(const QPoint& position) const
{
    const QModelIndex index = m_view->indexAt(position);
    if (!index.isValid() || !isActionBar(index) || !(index.flags() & Qt::ItemIsEnabled))
        return Button();
    const int count = itemOf(index).actions().size();
    for (int action = 0; action < count; ++action) {
        if (actionRect(index, action).contains(position))
            return {index, action};
    }
    return Button();
}

QRect ActionBarItemDelegate::actionRect(const QModelIndex& index, int action) const
{
    if (!index.isValid() || !isActionBar(index))
        return QRect();
    const ActionBarItem item = itemOf(index);
    if (action < 0 || action >= item.actions().size())
        return QRect();
    QStyleOptionViewItem option;
    option.initFrom(m_view);
    option.widget = m_view;
    option.rect = m_view->visualRect(index);
    option.decorationSize = m_view->iconSize();
    initStyleOption(&option, index);
    return buttonRect(option, item, action);
}

void ActionBarItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (!isActionBar(index))
        return;

    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QWidget* widget = option.widget;
    const QStyle* style = widget ? widget->style() : QApplication::style();
    const ActionBarItem item = itemOf(index);
    const bool isEnabled = cell.state & QStyle::State_Enabled;

    painter->save();
    painter->setClipRect(cell.rect, Qt::IntersectClip);
    for (int action = 0; action < item.actions().size(); ++action) {
        const Button button{index, action};
        const bool isHovered = isEnabled && m_hovered == button;
        const bool isPressed = isHovered && m_pressed == button;

        QStyleOptionToolButton tool;
        tool.rect = buttonRect(cell, item, action);
        tool.palette = cell.palette;
        // images are drawn for the background of cells, which may be much darker than that of buttons
        tool.palette.setBrush(QPalette::Button, cell.palette.base());
        tool.direction = cell.direction;
        tool.fontMetrics = cell.fontMetrics;
        tool.state = QStyle::State_AutoRaise | (cell.state & (QStyle::State_Enabled | QStyle::State_Active));
        QPoint shift;
        if (isHovered) {
            tool.state |= QStyle::State_MouseOver | (isPressed ? QStyle::State_Sunken : QStyle::State_Raised);
            style->drawPrimitive(QStyle::PE_PanelButtonTool, &tool, painter, widget);
            if (isPressed)
                shift = QPoint(style->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &tool, widget),
                               style->pixelMetric(QStyle::PM_ButtonShiftVertical, &tool, widget));
        } else if (cell.state & QStyle::State_Selected) {
            // images are drawn for the normal background, not for that of a selection
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(cell.palette.base());
            painter->drawRoundedRect(tool.rect, 3, 3);
        }
        const QRect image = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter,
                                                imageSize(cell).boundedTo(tool.rect.size()), tool.rect);
        item.actions().at(action).image.paint(painter, image.translated(shift), Qt::AlignCenter,
                                              !isEnabled  ? QIcon::Disabled
                                              : isHovered ? QIcon::Active
                                                          : QIcon::Normal);
    }
    painter->restore();
}

QSize ActionBarItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (!isActionBar(index))
        return QStyledItemDelegate::sizeHint(option, index);
    return barSize(option, itemOf(index));
}

QWidget* ActionBarItemDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                             const QModelIndex& index) const
{
    return isActionBar(index) ? nullptr : QStyledItemDelegate::createEditor(parent, option, index);
}

bool ActionBarItemDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                        const QStyleOptionViewItem& option, const QModelIndex& index)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        // a drag that began on a button selects nothing
        return m_pressed.action >= 0;
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const Button released = buttonAt(mouse->pos());
        if (mouse->button() != Qt::LeftButton || m_pressed.action < 0)
            break;
        const bool isClick = released == m_pressed;
        setPressed(Button());
        if (isClick)
            click(model, released);
        return true;
    }
    default:
        break;
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

void ActionBarItemDelegate::click(QAbstractItemModel* model, const Button& button)
{
    // clicks queued while the program was busy count as one: the first may open a dialog
    if (m_clickPending)
        return;
    m_clickPending = true;
    const auto write = [this, model = QPointer<QAbstractItemModel>(model), button] {
        m_clickPending = false;
        if (!model || !button.index.isValid())
            return;
        ActionBarItem item = itemOf(button.index);
        item.setClickedAction(button.action);
        // last: this call may destroy the delegate
        model->setData(button.index, QVariant::fromValue(item), Qt::EditRole);
    };
    QMetaObject::invokeMethod(this, write, Qt::QueuedConnection);
}

bool ActionBarItemDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_viewport)
        return QStyledItemDelegate::eventFilter(watched, event);
    // events also arrive in the view's destructor, when it is no QAbstractItemView any more
    if (!qobject_cast<QAbstractItemView*>(watched->parent()))
        return false;

    // Ahead of the view, which tells a delegate only of events in cells, and of releases only where the press
    // was.
    switch (event->type()) {
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
        followMouse(*static_cast<QMouseEvent*>(event));
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        m_mouse.reset();
        hover();
        break;
    case QEvent::Paint: // inserted, removed or scrolled rows may move under a resting mouse
        hover();
        break;
    default:
        break;
    }
    return false;
}

void ActionBarItemDelegate::followMouse(const QMouseEvent& mouse)
{
    const Button button = buttonAt(mouse.pos());
    m_mouse = mouse.pos();
    switch (mouse.type()) {
    case QEvent::MouseMove:
        hover();
        break;
    case QEvent::MouseButtonPress:
        hover();
        setPressed(mouse.button() == Qt::LeftButton ? button : Button());
        break;
    case QEvent::MouseButtonDblClick: // the second half of a double click is no click
        setPressed(Button());
        break;
    default:
        if (!(button == m_pressed))
            setPressed(Button());
        break;
    }
}

void ActionBarItemDelegate::hover()
{
    setHovered(m_mouse ? buttonAt(*m_mouse) : Button());
}

void ActionBarItemDelegate::setHovered(const Button& button)
{
    if (m_hovered == button)
        return;
    const bool hadCursor = m_hovered.action >= 0;
    if (m_hovered.index.isValid())
        m_view->update(m_hovered.index);
    m_hovered = button;
    if (m_hovered.index.isValid())
        m_view->update(m_hovered.index);
    if (m_hovered.action >= 0)
        m_view->viewport()->setCursor(Qt::PointingHandCursor);
    else if (hadCursor)
        m_view->viewport()->unsetCursor();
}

void ActionBarItemDelegate::setPressed(const Button& button)
{
    if (m_pressed == button)
        return;
    if (m_pressed.index.isValid())
        m_view->update(m_pressed.index);
    m_pressed = button;
    if (m_pressed.index.isValid())
        m_view->update(m_pressed.index);
}

bool ActionBarItemDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                      const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const Button button = buttonAt(event->pos());
    if (button.action >= 0) {
        QToolTip::showText(event->globalPos(), shownText(itemOf(index).actions().at(button.action).text),
                           view->viewport(), actionRect(index, button.action));
    } else {
        QToolTip::showText(event->globalPos(), shownText(index.data(Qt::ToolTipRole).toString()),
                           view->viewport(), option.rect);
    }
    return true;
}
