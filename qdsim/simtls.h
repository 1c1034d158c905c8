#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

using SSL_CTX = struct ssl_ctx_st;

/// @brief A TLS server context with a key and a self-signed certificate of its own, made when it is
/// constructed.
///
/// The certificate names localhost, 127.0.0.1 and ::1, holds for a year, and is nowhere stored. Immutable
/// after construction and so usable from every thread.
class SimTls
{
public:
    /// Null, with the reason in @p error, if OpenSSL cannot make the key or the certificate.
    static std::shared_ptr<SimTls> create(QString* error);
    ~SimTls();
    SimTls(const SimTls&) = delete;
    SimTls& operator=(const SimTls&) = delete;

    SSL_CTX* context() const { return m_context; }
    /// The certificate in PEM form.
    QByteArray certificate() const { return m_certificate; }

private:
    SimTls() = default;
    SSL_CTX* m_context = nullptr;
    QByteArray m_certificate;
};
