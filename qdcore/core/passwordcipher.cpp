#include "passwordcipher.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QtEndian>

namespace {

const char formatVersion = 3;

enum Flag : quint8 { FlagCompressed = 0x01, FlagChecksum = 0x02, FlagHash = 0x04 };

const int checksumSize = 2;
const int hashSize = 20;

/// The limit for the uncompressed size in the header of compressed data, far above any password. The header
/// is four bytes of an untrusted file: without a limit up to 4 GiB would be allocated.
const quint32 maxInflatedSize = 16 * 1024 * 1024;

QByteArray checksum(const QByteArray& data)
{
    QByteArray field(checksumSize, Qt::Uninitialized);
    qToBigEndian(qChecksum(data.constData(), static_cast<uint>(data.size()), Qt::ChecksumIso3309),
                 field.data());
    return field;
}

QByteArray hash(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha1);
}

char randomByte()
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return static_cast<char>(qrand() & 0xFF); // cppcheck-suppress qrandCalled ; need not be unpredictable
    QT_WARNING_POP
}

/// Whether data can be a result of qCompress(): the uncompressed size in its header is possible for its
/// length (the ratio of deflate is at most 1032, and it hardly expands).
bool isPlausiblyCompressed(const QByteArray& data)
{
    if (data.size() < static_cast<int>(sizeof(quint32)))
        return false;
    const quint64 inflated = qFromBigEndian<quint32>(data.constData());
    const quint64 deflated = static_cast<quint64>(data.size());
    return inflated <= maxInflatedSize && inflated <= deflated * 1032 &&
           deflated <= inflated + inflated / 500 + 64;
}

} // namespace

PasswordCipher::PasswordCipher(quint64 key)
    : m_key(key)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    // cppcheck-suppress qsrandCalled
    qsrand(static_cast<uint>(QDateTime::currentMSecsSinceEpoch() & 0xFFFF));
    QT_WARNING_POP

    m_keyParts.reserve(sizeof(m_key));
    for (unsigned shift = 0; shift < 8 * sizeof(m_key); shift += 8)
        m_keyParts.append(static_cast<quint8>((m_key >> shift) & 0xFF));
}

QByteArray PasswordCipher::fail(Error error)
{
    if (error == ErrorNoKeySet)
        qWarning("No key set.");
    else if (error == ErrorUnknownVersion)
        qWarning("Invalid version or not a cyphertext.");
    m_lastError = error;
    return QByteArray();
}

QByteArray PasswordCipher::encipher(const QByteArray& plain)
{
    if (m_keyParts.isEmpty())
        return fail(ErrorNoKeySet);

    quint8 flags = 0;
    QByteArray payload = plain;
    if (m_compressionMode != CompressionNever) {
        const QByteArray compressed = qCompress(plain, 9);
        if (m_compressionMode == CompressionAlways || compressed.size() < plain.size()) {
            payload = compressed;
            flags |= FlagCompressed;
        }
    }

    QByteArray integrity;
    if (m_protectionMode == ProtectionChecksum) {
        flags |= FlagChecksum;
        integrity = checksum(payload);
    } else if (m_protectionMode == ProtectionHash) {
        flags |= FlagHash;
        integrity = hash(payload);
    }

    QByteArray block;
    block.reserve(1 + integrity.size() + payload.size());
    block.append(randomByte()).append(integrity).append(payload);
    int last = 0;
    for (int i = 0; i < block.size(); ++i) {
        last ^= static_cast<quint8>(block.at(i)) ^ m_keyParts.at(i % m_keyParts.size());
        block[i] = static_cast<char>(last);
    }

    m_lastError = ErrorNoError;
    return QByteArray().append(formatVersion).append(static_cast<char>(flags)).append(block);
}

QString PasswordCipher::encipherText(const QString& plain)
{
    return QString::fromLatin1(encipher(plain.toUtf8()).toBase64());
}

QByteArray PasswordCipher::decipher(const QByteArray& cipher)
{
    if (m_keyParts.isEmpty())
        return fail(ErrorNoKeySet);
    if (cipher.size() < 3)
        return QByteArray();
    if (cipher.at(0) != formatVersion)
        return fail(ErrorUnknownVersion);

    const quint8 flags = static_cast<quint8>(cipher.at(1));
    QByteArray block = cipher.mid(2);
    int last = 0;
    for (int i = 0; i < block.size(); ++i) {
        const int enciphered = static_cast<quint8>(block.at(i));
        block[i] = static_cast<char>(enciphered ^ m_keyParts.at(i % m_keyParts.size()) ^ last);
        last = enciphered;
    }
    block.remove(0, 1);

    if (flags & (FlagChecksum | FlagHash)) {
        const bool byChecksum = flags & FlagChecksum;
        const int size = byChecksum ? checksumSize : hashSize;
        if (block.size() < size)
            return fail(ErrorIntegrityFailed);
        const QByteArray stored = block.left(size);
        block.remove(0, size);
        if (stored != (byChecksum ? checksum(block) : hash(block)))
            return fail(ErrorIntegrityFailed);
    }

    if (flags & FlagCompressed)
        block = isPlausiblyCompressed(block) ? qUncompress(block) : QByteArray();

    m_lastError = ErrorNoError;
    return block;
}

QString PasswordCipher::decipherText(const QString& cipher)
{
    const QByteArray plain = decipher(QByteArray::fromBase64(cipher.toLatin1()));
    return QString::fromUtf8(plain.constData(), plain.size()); // fromUtf8(plain) would stop at a null byte
}
