#pragma once

#include "qdwidgets_global.h"

#include <QIcon>
#include <QMetaType>
#include <QString>
#include <QVector>

/**
 * The contents of a table cell that offers actions: images with texts, in the order in which they are shown.
 *
 * A value; it travels in a QVariant. A model returns it as display data; ActionBarItemDelegate paints it, and
 * hands it back through QAbstractItemModel::setData() with the edit role and clickedAction() set when one of
 * the actions is clicked.
 */
class QDWIDGETS_EXPORT ActionBarItem
{
public:
    /// One of the actions.
    struct Action
    {
        QIcon image;  ///< What is shown, in the size that the view has for icons.
        QString text; ///< Plain text, shown as the tool tip.
    };

    /// No actions; 4 pixels between them and at the ends.
    ActionBarItem();

    /// Appends an action; its number is that of those before it.
    void addAction(const QIcon& image, const QString& text);
    /// In the order of adding.
    const QVector<Action>& actions() const { return m_actions; }

    /// Pixels between two actions, independent of the screen's density.
    int spacing() const { return m_spacing; }
    void setSpacing(int spacing);

    /// Pixels before the first and behind the last action.
    int margin() const { return m_margin; }
    void setMargin(int margin);

    /// The number of the action that was clicked, in the order of adding and from 0; -1: none.
    int clickedAction() const { return m_clickedAction; }
    void setClickedAction(int action);

private:
    QVector<Action> m_actions;
    int m_spacing{4};
    int m_margin{4};
    int m_clickedAction{-1};
};

Q_DECLARE_METATYPE(ActionBarItem)
