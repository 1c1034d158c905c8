#pragma once

// Outlook by COM automation. Internal: not installed, compiled on Windows only.

#include "outlookport.h"

class ActiveQtOutlook : public OutlookPort
{
public:
    bool enterThread() override;
    void leaveThread() override;
    QSharedPointer<OutlookApplication> createApplication() override;
};
