#pragma once

// Outlook by COM automation. Internal: not installed, compiled on Windows only.

#include "outlookport.h"

/// Calls Outlook late bound: members are found by their names, so that no type library is needed. It never
/// subscribes to events: Outlook would wait for the subscriber's thread while it serves another one.
///
/// An object calls Outlook only on the thread that made it; used on another, it behaves as if Outlook did not
/// answer. What Outlook refuses is logged at DEBUG, and nowhere else.
class ComOutlook : public OutlookPort
{
public:
    bool enterThread() override;
    void leaveThread() override;
    QSharedPointer<OutlookApplication> createApplication() override;
};
