#include "simtls.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace {

template <typename T, void (*free)(T*)>
struct Freer
{
    void operator()(T* object) const { free(object); }
};
using Key = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freer<X509, X509_free>>;

void setSubjectNames(X509* certificate)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, &context, NID_subject_alt_name,
                                                "DNS:localhost,IP:127.0.0.1,IP:0:0:0:0:0:0:0:1");
    if (names) {
        X509_add_ext(certificate, names, -1);
        X509_EXTENSION_free(names);
    }
}

Certificate selfSigned(EVP_PKEY* key)
{
    Certificate certificate(X509_new());
    if (!certificate)
        return nullptr;
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 365L * 24 * 3600);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME* name = X509_get_subject_name(certificate.get());
    const auto* text = reinterpret_cast<const unsigned char*>("qdsim");
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    setSubjectNames(certificate.get());
    if (X509_sign(certificate.get(), key, EVP_sha256()) == 0)
        return nullptr;
    return certificate;
}

QByteArray toPem(X509* certificate)
{
    BIO* memory = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(memory, certificate);
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    const QByteArray pem(data, static_cast<int>(size));
    BIO_free(memory);
    return pem;
}

} // namespace

std::shared_ptr<SimTls> SimTls::create(QString* error)
{
    std::shared_ptr<SimTls> tls(new SimTls);
    const Key key(EVP_EC_gen("P-256")); // generating an RSA key would noticeably delay every start
    const Certificate certificate = key ? selfSigned(key.get()) : nullptr;
    tls->m_context = SSL_CTX_new(TLS_server_method());
    if (!certificate || !tls->m_context || SSL_CTX_use_certificate(tls->m_context, certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(tls->m_context, key.get()) != 1) {
        if (error) {
            char text[256] = "";
            ERR_error_string_n(ERR_get_error(), text, sizeof text);
            *error = QStringLiteral("cannot make a certificate: %1").arg(QString::fromLatin1(text));
        }
        return nullptr;
    }
    tls->m_certificate = toPem(certificate.get());
    return tls;
}

SimTls::~SimTls()
{
    SSL_CTX_free(m_context);
}
