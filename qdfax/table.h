#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/**
 * A table as text: a line of titles, a line per row, columns aligned, fitted to the width of a terminal.
 *
 * If it is too wide, the widest of the shrinkable columns are cut first, then whole columns are dropped, in
 * the order of their rank. A column that may be neither cut nor dropped is always shown completely.
 */
class Table
{
public:
    enum Align { Left, Right };

    struct Column
    {
        QString title;
        Align align{Left};
        int shrinkTo{0}; ///< The width down to which the column may be cut; 0: never cut.
        int dropRank{0}; ///< Higher goes first; 0: never dropped.
    };

    explicit Table(const QVector<Column>& columns);

    /// One text per column. Texts are made printable here.
    void addRow(const QStringList& cells);
    int rowCount() const { return m_rows.size(); }

    /// Lines without line ends. @p width is in columns; 0: unlimited.
    QStringList lines(int width) const;

private:
    QVector<Column> m_columns;
    QVector<QStringList> m_rows;
};
