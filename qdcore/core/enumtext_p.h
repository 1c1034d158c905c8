#pragma once

// Lookup of enumerators by their texts on the wire. Internal: not installed.

#include <QString>

/// The index of the entry of @p table that equals @p text, searched from @p first; -1 if there is none.
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
    // Case folding is slow, and most texts match exactly.
    const int index = indexOf(Qt::CaseSensitive);
    return index < 0 && caseSensitivity == Qt::CaseInsensitive ? indexOf(caseSensitivity) : index;
}
