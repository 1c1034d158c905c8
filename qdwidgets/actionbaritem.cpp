#include "actionbaritem.h"

ActionBarItem::ActionBarItem() = default;

void ActionBarItem::addAction(const QIcon& image, const QString& text)
{
    m_actions.append({image, text});
}

void ActionBarItem::setSpacing(int spacing)
{
    m_spacing = qMax(0, spacing);
}

void ActionBarItem::setMargin(int margin)
{
    m_margin = qMax(0, margin);
}

void ActionBarItem::setClickedAction(int action)
{
    m_clickedAction = action;
}
