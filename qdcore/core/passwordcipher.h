#pragma once

// Obfuscation of stored passwords. Internal: not installed, not exported.

#include <QByteArray>
#include <QString>
#include <QVector>

/**
 * Encrypts a password to a printable text and decrypts it, with a fixed key.
 *
 * This is obfuscation: it hides a password from a casual look, not from somebody who has this library. A
 * random byte makes each result different, even for the same password. An object is used while the settings
 * are read or written; its constructor reseeds the thread's qrand().
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
        ErrorIntegrityFailed = 3 ///< Corrupt data, or encrypted with another key.
    };

    /// Compression is CompressionAuto and protection ProtectionChecksum by default.
    explicit PasswordCipher(quint64 key);

    void setCompressionMode(CompressionMode mode) { m_compressionMode = mode; }
    void setProtectionMode(ProtectionMode mode) { m_protectionMode = mode; }

    /// The error of the last call; every failure also returns an empty result.
    Error lastError() const { return m_lastError; }

    QByteArray encipher(const QByteArray& plain);
    /// Encrypts the UTF-8 of @p plain and returns it as base64.
    QString encipherText(const QString& plain);

    /// Fewer than 3 bytes return an empty result and leave lastError() unchanged. Data that pass the
    /// integrity check and cannot be decompressed return an empty result without an error.
    QByteArray decipher(const QByteArray& cipher);
    /// The inverse of encipherText(). Any other text returns an empty result.
    QString decipherText(const QString& cipher);

private:
    QByteArray fail(Error error);

    quint64 m_key;
    QVector<quint8> m_keyParts; ///< The 8 bytes of the key, least significant first.
    CompressionMode m_compressionMode{CompressionAuto};
    ProtectionMode m_protectionMode{ProtectionChecksum};
    Error m_lastError{ErrorNoError};
};
