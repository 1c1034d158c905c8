// Stored passwords: any text may stand in the settings file.

#include "fuzz.h"

#include "passwordcipher.h"

#include <QCryptographicHash>

namespace {

const quint64 key = Q_UINT64_C(0x0123456789ABCDEF);

/// Largest result that deciphering may give, in bytes.
const int largestPlain = 16 * 1024 * 1024;

/// A text with these flags and this payload in the form of an enciphered one, with a valid integrity field.
/// Created independently of the class, so that deciphering proceeds past the check of that field.
QByteArray dressed(int flags, const QByteArray& payload)
{
    QByteArray block(1, 'r');
    if (flags & 2) {
        const quint16 sum = qChecksum(payload.constData(), uint(payload.size()), Qt::ChecksumIso3309);
        block.append(char(sum >> 8)).append(char(sum & 0xFF));
    } else if (flags & 4) {
        block += QCryptographicHash::hash(payload, QCryptographicHash::Sha1);
    }
    block += payload;
    char last = 0;
    for (int i = 0; i < block.size(); ++i) {
        last = char(block.at(i) ^ last ^ char(key >> (8 * (i % 8))));
        block[i] = last;
    }
    return QByteArray("\3").append(char(flags)) + block;
}

} // namespace

FUZZ_TARGET(cipher)
{
    FuzzChoices choices(input);
    const int what = choices.choose(4);
    const int mode = choices.choose(9);
    const QByteArray data = choices.rest();
    PasswordCipher cipher(key);
    cipher.setCompressionMode(PasswordCipher::CompressionMode(mode % 3));
    cipher.setProtectionMode(PasswordCipher::ProtectionMode(mode / 3));

    switch (what) {
    case 0: { // any bytes
        const QByteArray plain = cipher.decipher(data);
        PROMISE(plain.isEmpty() || cipher.lastError() == PasswordCipher::ErrorNoError);
        PROMISE(plain.size() <= largestPlain);
        break;
    }
    case 1: // any text
        cipher.decipherText(QString::fromUtf8(data));
        break;
    case 2: { // any payload after a valid integrity field
        FuzzChoices more(data);
        const int flags = more.choose(256);
        const QByteArray plain = cipher.decipher(dressed(flags, more.rest()));
        PROMISE(plain.isEmpty() || cipher.lastError() == PasswordCipher::ErrorNoError);
        PROMISE(plain.size() <= largestPlain);
        if (!(flags & 1))
            PROMISE(plain == more.rest() && cipher.lastError() == PasswordCipher::ErrorNoError);
        break;
    }
    default: { // a round trip, and one byte changed
        const QByteArray enciphered = cipher.encipher(data);
        PROMISE(cipher.decipher(enciphered) == data && cipher.lastError() == PasswordCipher::ErrorNoError);
        PROMISE(PasswordCipher(key).decipher(enciphered) == data);
        const QString text = QString::fromUtf8(data.constData(), data.size());
        // decoding drops one byte order mark
        PROMISE(text.startsWith(QChar::ByteOrderMark) ||
                cipher.decipherText(cipher.encipherText(text)) == text);
        if (mode / 3 == PasswordCipher::ProtectionNone)
            break;
        for (int i = 2; i < qMin(enciphered.size(), 40); ++i) {
            QByteArray changed = enciphered;
            changed[i] = char(changed.at(i) ^ (1 << (i % 8)));
            PROMISE(cipher.decipher(changed).isEmpty() &&
                    cipher.lastError() == PasswordCipher::ErrorIntegrityFailed);
        }
    }
    }
}
