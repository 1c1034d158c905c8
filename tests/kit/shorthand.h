#pragma once

// Short forms, so that tables of test data stay tables: a row a line.

#include <QFile>
#include <QTest>

#include <ctime>

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

/// Puts this process into a zone with summer time, so that a date taken in the wrong zone shows. False where
/// a process has no zone of its own.
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

/// A value of a row: literals stand for UTF-8 texts or for bytes, enumerators for numbers, {} for nothing.
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

/// The table of a data-driven test: made with the names of the columns, called once a row.
template <typename... Column>
struct Rows
{
    template <typename... Name>
    explicit Rows(Name... names)
    {
        (QTest::addColumn<Column>(names), ...);
    }

    void operator()(const char* row, const Cell<Column>&... cells) const
    {
        (QTest::newRow(row) << ... << cells.value);
    }
};
