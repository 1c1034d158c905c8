#pragma once

#include "actionbaritem.h"

#include <QPersistentModelIndex>
#include <QPoint>
#include <QStyledItemDelegate>

#include <optional>

class QAbstractItemView;
class QMouseEvent;

/**
 * Paints cells that hold an ActionBarItem as a row of flat icon buttons, and lets the mouse click them.
 *
 * Cells with other data look as ever, so one delegate serves a whole view. The buttons follow the view's
 * style, palette, icon size and layout direction, and the cell's alignment; a pointing hand shows where one
 * can click. A button released under the mouse that pressed it writes the item, with the action's number in
 * it, to the model: setData() with the edit role. That happens when control returns to the event loop, when
 * no function of the view is running any more: the model may change, reset, run an event loop or destroy the
 * view in there. A click on a row that is removed by then, and a second one before, is ignored.
 *
 * Tool tips, of actions and of all other cells, are shown as plain text, whatever markup they contain.
 *
 * Belongs to its view, and turns on the view's mouse tracking.
 */
class QDWIDGETS_EXPORT ActionBarItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// A child of the view; who wants it to paint sets it as the view's item delegate.
    explicit ActionBarItemDelegate(QAbstractItemView* view);

    /// Where an action's button is, in the coordinates of the view's viewport. Null when there is none.
    QRect actionRect(const QModelIndex& index, int action) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// Room for the buttons, the item's spacing and margins.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Null for a cell with actions: nobody types there.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// A button: an action of a cell.
    struct Button
    {
        QPersistentModelIndex index;
        int action{-1};
        bool operator==(const Button& other) const { return index == other.index && action == other.action; }
    };

    Button buttonAt(const QPoint& position) const;
    void followMouse(const QMouseEvent& mouse);
    void hover();
    void click(QAbstractItemModel* model, const Button& button);
    void setHovered(const Button& button);
    void setPressed(const Button& button);

    QAbstractItemView* m_view;
    const QObject* m_viewport;
    std::optional<QPoint> m_mouse; ///< Where it is in the viewport, if it is there.
    Button m_hovered;
    Button m_pressed;
    bool m_clickPending{false}; ///< A click is queued and not yet written.
};
