#pragma once

#include "simtypes.h"

#include <mutex>

/// @brief Writes every exchange into a folder as a file for people: the request line, the headers that say
/// something about the protocol, the document; then the same of the answer.
///
/// Files are numbered in the order of the answers ("0001-GET-about.txt"). Credentials are replaced; bodies
/// that are no XML are named by their size. Usable from every thread once it is open.
class SimRecorder
{
public:
    /// Makes the folder, which must be new or empty: recordings of two runs do not mix. False and the reason
    /// if that fails.
    bool open(const QString& folder, QString* error);
    bool isOpen() const { return !m_folder.isEmpty(); }

    /// These do nothing if it is not open, and return false with the reason if the file cannot be written.
    bool write(const SimRequest& request, const SimReply& reply, QString* error);
    /// A query of discovery and its answer.
    bool writeDatagrams(const QByteArray& query, const QByteArray& answer, QString* error);

private:
    bool writeFile(const QString& name, const QByteArray& text, QString* error);

    QString m_folder;
    std::mutex m_mutex;
    int m_count = 0;
};
