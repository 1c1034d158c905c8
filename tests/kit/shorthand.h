#pragma once

// Short forms that keep a row of test data on one line.

#include <QFile>
#include <QTest>

#include <ctime>
#include <tuple>

inline QString s(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline QString s(const QByteArray& utf8)
{
    return QString::fromUtf8(utf8);
}

/// The content of a file; null when it cannot be opened.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(content), qint64(content.size()));
}

/// Sets this process's time zone to one with daylight saving, so that a date in the wrong zone is noticed.
/// False if a process cannot have its own.
inline bool useBerlinTime()
{
#ifdef Q_OS_UNIX
    qputenv("TZ", "Europe/Berlin");
    tzset();
    return true;
#else
    return false;
#endif
}

/// A value of a row: a literal is UTF-8 text or bytes, an enumerator a number, {} the default value.
template <typename T>
struct Cell
{
    Cell() = default;
    template <typename Value>
    Cell(const Value& given)
    {
        if constexpr (std::is_same_v<T, QString> && std::is_convertible_v<Value, const char*>)
            value = QString::fromUtf8(given);
        else
            value = T(given);
    }

    T value{};
};

inline const char* columnName(int column)
{
    static const char* const names[]{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
    return names[column];
}

/// The table of a data-driven test, called once per row. Constructed with column names if the test uses
/// QFETCH, without if it uses cells().
template <typename... Column>
struct Rows
{
    Rows()
    {
        int column = 0;
        (QTest::addColumn<Column>(columnName(column++)), ...);
    }
    template <typename... Name>
    explicit Rows(const char* first, Name... names)
    {
        int column = 0;
        const char* const all[]{first, names...};
        (QTest::addColumn<Column>(all[column++]), ...);
    }

    void operator()(const char* row, const Cell<Column>&... cells) const
    {
        (QTest::newRow(row) << ... << cells.value);
    }
};

template <typename... Column, std::size_t... I>
std::tuple<Column...> cells(std::index_sequence<I...>)
{
    return {*static_cast<Column*>(QTest::qData(columnName(I), qMetaTypeId<Column>()))...};
}

/// The cells of the current row: const auto [text, number] = cells<QString, int>();
template <typename... Column>
std::tuple<Column...> cells()
{
    return cells<Column...>(std::index_sequence_for<Column...>());
}
