#pragma once

// Server versions as numbers. Internal: not installed.

#include <QString>
#include <QStringList>

/// Versions above this one print receipts and name their printers.
constexpr int versionBeforePrintReceipts = 302070;
/// Versions above this one take a page size with a fax.
constexpr int versionBeforeFaxPageSize = 306000;

/**
 * A dotted version text as a six-digit number of three two-digit groups: "3.2.7" is 302070, "3.6.1" is
 * 306010.
 *
 * A "-" and the text after it are ignored. Each of the first three parts is padded with zeros, or cut, to two
 * digits, so that 7 equals 70 and 1 equals 10; the thresholds above are chosen for that.
 */
inline int versionNumber(const QString& version)
{
    const QStringList parts = version.section(QLatin1Char('-'), 0, 0).split(QLatin1Char('.'));
    int number = 0;
    for (int i = 0; i < 3; ++i) {
        qint64 part = qint64(parts.value(i).toInt()) * 100;
        while (part >= 100)
            part /= 10;
        number = number * 100 + int(part);
    }
    return number;
}
