#include "cursoroverridehelper.h"

#include <QApplication>

CursorOverrideHelper::CursorOverrideHelper(QObject* parent)
    : QObject(parent)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

CursorOverrideHelper::~CursorOverrideHelper()
{
    QApplication::restoreOverrideCursor();
}
