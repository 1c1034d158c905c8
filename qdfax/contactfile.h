#pragma once

#include "contact.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/**
 * An address book file, a table (CSV) or vCards.
 *
 * Files are UTF-8; a table may also be UTF-16 with a byte order mark. An invalid entry keeps its position,
 * with an error text, so that a caller can report which entries were not imported.
 */
struct ContactFile
{
    struct Entry
    {
        int line{0}; ///< Where it begins, from 1.
        Contact contact;
        QString problem; ///< Empty, or why there is no contact.
    };

    QVector<Entry> entries;
    QStringList unusedColumns; ///< Columns of a table that are not recognised.
    QString problem;           ///< Why the file cannot be used; there are then no entries.

    /// The first line names the columns, in any order: name, organization, phone, fax, email, or other
    /// programs' names for them. It also determines the separator: comma, semicolon or tab.
    static ContactFile readCsv(const QByteArray& bytes);
    static QByteArray writeCsv(const QVector<Contact>& contacts);

    /// Whether this program was built with vCard support. Without, reading gives a problem and writing
    /// nothing.
    static bool knowsVcards();
    static ContactFile readVcards(const QByteArray& bytes);
    /// vCards 3.0. @p uids: one per contact, so that repeated exports are identical.
    static QByteArray writeVcards(const QVector<Contact>& contacts, const QStringList& uids);
};
