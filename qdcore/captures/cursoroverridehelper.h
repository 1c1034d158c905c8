#pragma once

#include "qdcore_global.h"

#include <QObject>

/**
 * Shows the wait cursor over the whole application for as long as it lives.
 *
 * Lives on the stack, or as a child of what is busy. Helpers nest: the cursor returns with the last one.
 * For the thread of the user interface.
 */
class QDCORE_EXPORT CursorOverrideHelper : public QObject
{
    Q_OBJECT

public:
    /// The wait cursor shows from here on.
    explicit CursorOverrideHelper(QObject* parent = nullptr);
    ~CursorOverrideHelper() override;
};
