#pragma once

// Documents of a fax, for tests.

#include "attach.h"

/// A document in a file, which is read when the fax is written.
inline Content contentOf(Content::Type type, const QString& fileName)
{
    DiskDataProvider data;
    data.setFileName(fileName);
    Content content;
    content.setType(type);
    content.setData(data);
    return content;
}

inline Attach inlineAttach(const QString& name, const Content& content)
{
    Attach attach;
    attach.setLocation(Attach::Inline);
    attach.setName(name);
    attach.setContent(content);
    return attach;
}
