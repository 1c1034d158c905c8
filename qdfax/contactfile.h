#pragma once

#include "contact.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/**
 * Contacts as a file of theirs holds them, in the form of a table (CSV) or of vCards.
 *
 * Files are UTF-8; a table may also be UTF-16 with a byte order mark. Each entry that cannot be used says
 * why and is kept in its place, so that whoever reads the file can tell what is missing from what it gave.
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
    QStringList unusedColumns; ///< Columns of a table that mean nothing here.
    QString problem;           ///< Why nothing of the file can be used; there are no entries then.

    /// The first line names the columns, in any order: name, organization, phone, fax, email, or what other
    /// programs call them. Fields are separated by what the first line is separated by: comma, semicolon or
    /// tab.
    static ContactFile readCsv(const QByteArray& bytes);
    static QByteArray writeCsv(const QVector<Contact>& contacts);

    /// Whether this program was built with vCards. Without them reading gives a problem, and writing nothing.
    static bool knowsVcards();
    static ContactFile readVcards(const QByteArray& bytes);
    /// vCards 3.0. @p uids: one a contact, so that a card is the same each time it is written.
    static QByteArray writeVcards(const QVector<Contact>& contacts, const QStringList& uids);
};
