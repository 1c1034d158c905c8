#pragma once

// Enumerations that travel as texts: one table each, one lookup. Internal: not installed.

#include <QString>

/// The index of the entry of @p table that equals @p text, searched from @p first on; -1 when there is none.
inline int indexOfText(const QString* table, int size, const QString& text,
                       Qt::CaseSensitivity caseSensitivity = Qt::CaseSensitive, int first = 0)
{
    const auto indexOf = [=, &text](Qt::CaseSensitivity sensitivity) {
        for (int i = first; i < size; ++i) {
            if (table[i].size() == text.size() && table[i].compare(text, sensitivity) == 0)
                return i;
        }
        return -1;
    };
    // Folding cases takes long, and texts are mostly as they should be.
    const int index = indexOf(Qt::CaseSensitive);
    return index < 0 && caseSensitivity == Qt::CaseInsensitive ? indexOf(caseSensitivity) : index;
}
