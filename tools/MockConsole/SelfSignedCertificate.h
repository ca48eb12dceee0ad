#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_SELFSIGNEDCERTIFICATE_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_SELFSIGNEDCERTIFICATE_H

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <memory>

namespace mockconsole {

struct X509Deleter {
  void operator()(X509 *certificate) const noexcept { X509_free(certificate); }
};
struct KeyDeleter {
  void operator()(EVP_PKEY *key) const noexcept { EVP_PKEY_free(key); }
};

/// A certificate and the private key it certifies.
struct TlsIdentity {
  std::unique_ptr<X509, X509Deleter> certificate;
  std::unique_ptr<EVP_PKEY, KeyDeleter> key;
};

/// A new P-256 key and a self-signed certificate for it that names
/// localhost, 127.0.0.1 and ::1, valid from an hour ago for 30 days. Being
/// its own issuer, the certificate is what a client trusts. Throws
/// std::runtime_error when OpenSSL fails.
TlsIdentity makeSelfSignedIdentity();

/// Writes \p certificate to \p path in PEM. Throws std::runtime_error when
/// the file can't be written.
void writeCertificate(X509 &certificate, const std::filesystem::path &path);

} // namespace mockconsole

#endif
