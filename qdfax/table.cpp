#include "table.h"

#include "displaytext.h"

#include <algorithm>
#include <numeric>

namespace {

const int gap = 2;

int totalWidth(const QVector<int>& shown, const QVector<int>& widths)
{
    int total = gap * std::max(0, shown.size() - 1);
    for (int column : shown)
        total += widths.at(column);
    return total;
}

} // namespace

Table::Table(const QVector<Column>& columns)
    : m_columns(columns)
{}

void Table::addRow(const QStringList& cells)
{
    QStringList row;
    row.reserve(m_columns.size());
    for (int i = 0; i < m_columns.size(); ++i)
        row.append(printable(cells.value(i)));
    m_rows.append(row);
}

QStringList Table::lines(int width) const
{
    const int count = m_columns.size();
    QVector<int> natural(count);
    for (int i = 0; i < count; ++i) {
        natural[i] = displayWidth(m_columns.at(i).title);
        for (const QStringList& row : m_rows)
            natural[i] = std::max(natural.at(i), displayWidth(row.at(i)));
    }

    QVector<int> shown(count);
    std::iota(shown.begin(), shown.end(), 0);
    QVector<int> widths = natural;
    while (width > 0) {
        widths = natural;
        for (int excess = totalWidth(shown, widths) - width; excess > 0; --excess) {
            int widest = -1;
            for (int column : qAsConst(shown)) {
                const int least = m_columns.at(column).shrinkTo;
                if (least > 0 && widths.at(column) > least &&
                    (widest < 0 || widths.at(column) > widths.at(widest)))
                    widest = column;
            }
            if (widest < 0)
                break;
            --widths[widest];
        }
        if (totalWidth(shown, widths) <= width)
            break;
        const auto goes = std::max_element(shown.begin(), shown.end(), [this](int a, int b) {
            return m_columns.at(a).dropRank < m_columns.at(b).dropRank;
        });
        if (goes == shown.end() || m_columns.at(*goes).dropRank == 0)
            break;
        shown.erase(goes);
    }

    const auto line = [&](const QStringList& cells) {
        QString text;
        for (int column : qAsConst(shown)) {
            const QString cell = cutToWidth(cells.at(column), widths.at(column));
            const QString filler(widths.at(column) - displayWidth(cell), QLatin1Char(' '));
            if (!text.isEmpty() || column != shown.first())
                text += QString(gap, QLatin1Char(' '));
            text += m_columns.at(column).align == Right ? filler + cell : cell + filler;
        }
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        return text;
    };

    QStringList result;
    result.reserve(m_rows.size() + 1);
    QStringList titles;
    for (const Column& column : m_columns)
        titles.append(column.title);
    result.append(line(titles));
    for (const QStringList& row : m_rows)
        result.append(line(row));
    return result;
}
