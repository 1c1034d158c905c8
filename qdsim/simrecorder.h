#pragma once

#include "simtypes.h"

#include <mutex>

/// @brief Writes every exchange to a readable file in a folder: the request line, the headers relevant to the
/// protocol, the document; then the same of the reply.
///
/// Files are numbered in the order of the replies ("0001-GET-about.txt"). Credentials are replaced; of bodies
/// that are not XML only the size is written. Thread-safe once it is open.
class SimRecorder
{
public:
    /// Creates the folder, which must be new or empty, so that recordings of two runs do not mix. False and
    /// the reason if that fails.
    bool open(const QString& folder, QString* error);
    bool isOpen() const { return !m_folder.isEmpty(); }

    /// The two functions do nothing if it is not open, and return false and the reason if a file cannot be
    /// written.
    bool write(const SimRequest& request, const SimReply& reply, QString* error);
    /// A discovery query and its answer.
    bool writeDatagrams(const QByteArray& query, const QByteArray& answer, QString* error);

private:
    bool writeFile(const QString& name, const QByteArray& text, QString* error);

    QString m_folder;
    std::mutex m_mutex;
    int m_count = 0;
};
