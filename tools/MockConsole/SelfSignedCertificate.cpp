#include "MockConsole/SelfSignedCertificate.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>
#include <utility>

namespace mockconsole {
namespace {

void require(bool done, const char *what) {
  if (!done)
    throw std::runtime_error(std::string("cannot make the certificate: ") +
                             what);
}

void addExtension(X509 &certificate, int nid, const char *value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, &certificate, &certificate, nullptr, nullptr, 0);
  X509_EXTENSION *extension =
      X509V3_EXT_conf_nid(nullptr, &context, nid, value);
  require(extension != nullptr, value);
  bool added = X509_add_ext(&certificate, extension, -1) == 1;
  X509_EXTENSION_free(extension);
  require(added, value);
}

} // namespace

TlsIdentity makeSelfSignedIdentity() {
  TlsIdentity identity;
  identity.key.reset(EVP_EC_gen("P-256"));
  require(identity.key != nullptr, "no key");
  identity.certificate.reset(X509_new());
  X509 *certificate = identity.certificate.get();
  require(certificate != nullptr, "no certificate");

  // A random serial number, so that certificates of several runs never
  // pass for one another.
  BIGNUM *serial = BN_new();
  bool numbered =
      serial && BN_rand(serial, 63, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) == 1 &&
      BN_to_ASN1_INTEGER(serial, X509_get_serialNumber(certificate)) != nullptr;
  BN_free(serial);
  require(numbered, "no serial number");

  X509_NAME *name = X509_get_subject_name(certificate);
  require(
      X509_set_version(certificate, 2) == 1 &&
          X509_gmtime_adj(X509_getm_notBefore(certificate), -3600) &&
          X509_gmtime_adj(X509_getm_notAfter(certificate), 30L * 24 * 3600) &&
          X509_set_pubkey(certificate, identity.key.get()) == 1 &&
          X509_NAME_add_entry_by_txt(
              name, "CN", MBSTRING_ASC,
              reinterpret_cast<const unsigned char *>("kestrune-mock-console"),
              -1, -1, 0) == 1 &&
          X509_set_issuer_name(certificate, name) == 1,
      "no subject");
  addExtension(*certificate, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(*certificate, NID_key_usage,
               "critical,digitalSignature,keyCertSign");
  addExtension(*certificate, NID_subject_key_identifier, "hash");
  addExtension(*certificate, NID_subject_alt_name,
               "DNS:localhost,IP:127.0.0.1,IP:::1");
  require(X509_sign(certificate, identity.key.get(), EVP_sha256()) > 0,
          "not signed");
  return identity;
}

void writeCertificate(X509 &certificate, const std::filesystem::path &path) {
  BIO *file = BIO_new_file(path.c_str(), "w");
  bool written = file && PEM_write_bio_X509(file, &certificate) == 1;
  written = file && BIO_free(file) == 1 && written;
  if (!written)
    throw std::runtime_error("cannot write the certificate to " +
                             path.string());
}

} // namespace mockconsole
