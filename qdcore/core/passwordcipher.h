#pragma once

// How stored passwords are made unreadable at a glance. Internal: not installed, not exported.

#include <QByteArray>
#include <QString>
#include <QVector>

/**
 * Turns a password into a printable text and back, with a fixed key.
 *
 * This keeps a password from being read over a shoulder, not from somebody who has this library. One random
 * byte makes the same password give a different text each time. The object lives inside one reading or
 * writing of the settings; making one reseeds the thread's qrand().
 */
class PasswordCipher
{
public:
    enum CompressionMode {
        CompressionAuto = 0, ///< Compress if that makes the data smaller.
        CompressionAlways = 1,
        CompressionNever = 2
    };

    enum ProtectionMode {
        ProtectionNone = 0,
        ProtectionChecksum = 1, ///< 16 bits.
        ProtectionHash = 2      ///< SHA-1.
    };

    enum Error {
        ErrorNoError = 0,
        ErrorNoKeySet = 1,
        ErrorUnknownVersion = 2,
        ErrorIntegrityFailed = 3 ///< Not what was enciphered, or with another key.
    };

    /// Compression is automatic and protection a checksum until set otherwise.
    explicit PasswordCipher(quint64 key);

    void setCompressionMode(CompressionMode mode) { m_compressionMode = mode; }
    void setProtectionMode(ProtectionMode mode) { m_protectionMode = mode; }

    /// What went wrong in the last call; every failure also gives an empty result.
    Error lastError() const { return m_lastError; }

    QByteArray encipher(const QByteArray& plain);
    /// Base64 of the enciphered UTF-8 of @p plain.
    QString encipherText(const QString& plain);

    /// Fewer than 3 bytes give an empty result and leave lastError() as it was. What passes as whole and
    /// cannot be decompressed reads as empty: that is no error.
    QByteArray decipher(const QByteArray& cipher);
    /// The reverse of encipherText(). A text of another origin gives an empty result.
    QString decipherText(const QString& cipher);

private:
    QByteArray fail(Error error);

    quint64 m_key;
    QVector<quint8> m_keyParts; ///< The 8 bytes of the key, least significant first.
    CompressionMode m_compressionMode{CompressionAuto};
    ProtectionMode m_protectionMode{ProtectionChecksum};
    Error m_lastError{ErrorNoError};
};
