#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>

namespace documentserver
{

/// Frees an OpenSSL object with the function that belongs to its type.
template <auto Free> struct OpenSslDelete {
    template <class T> void operator()(T *object) const { Free(object); }
};

using KeyPointer = std::unique_ptr<EVP_PKEY, OpenSslDelete<EVP_PKEY_free>>;
using KeyContextPointer = std::unique_ptr<EVP_PKEY_CTX, OpenSslDelete<EVP_PKEY_CTX_free>>;
using CertificatePointer = std::unique_ptr<X509, OpenSslDelete<X509_free>>;
using ExtensionPointer = std::unique_ptr<X509_EXTENSION, OpenSslDelete<X509_EXTENSION_free>>;
using BufferPointer = std::unique_ptr<BIO, OpenSslDelete<BIO_free_all>>;

} // namespace documentserver
