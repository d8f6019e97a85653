#include "TlsIdentity.h"

#include <memory>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace
{
	template <class T, void (*release)(T*)>
	struct Releaser
	{
		void operator()(T* object) const { release(object); }
	};
	using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY, EVP_PKEY_free>>;
	using Certificate = std::unique_ptr<X509, Releaser<X509, X509_free>>;

	struct FileCloser
	{
		void operator()(std::FILE* file) const { std::fclose(file); }
	};
	using File = std::unique_ptr<std::FILE, FileCloser>;

	void need(bool done)
	{
		if (!done)
		{
			throw std::runtime_error("cannot make a certificate");
		}
	}

	void addExtension(X509* certificate, int kind, const char* value)
	{
		const std::unique_ptr<X509_EXTENSION, Releaser<X509_EXTENSION, X509_EXTENSION_free>> extension(
			X509V3_EXT_conf_nid(nullptr, nullptr, kind, value));
		need(extension && X509_add_ext(certificate, extension.get(), -1));
	}

	Certificate makeCertificate(EVP_PKEY* key)
	{
		Certificate certificate(X509_new());
		need(certificate != nullptr);
		X509* const raw = certificate.get();
		X509_set_version(raw, X509_VERSION_3);
		ASN1_INTEGER_set(X509_get_serialNumber(raw), 1);
		X509_gmtime_adj(X509_getm_notBefore(raw), -3600);
		X509_gmtime_adj(X509_getm_notAfter(raw), 24 * 3600);
		X509_set_pubkey(raw, key);
		X509_NAME* const name = X509_get_subject_name(raw);
		X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("127.0.0.1"), -1, -1, 0);
		X509_set_issuer_name(raw, name);
		addExtension(raw, NID_basic_constraints, "critical,CA:TRUE");
		addExtension(raw, NID_subject_alt_name, "IP:127.0.0.1");
		need(X509_sign(raw, key, EVP_sha256()) > 0);
		return certificate;
	}
} // namespace

TlsIdentity::TlsIdentity()
	: certificateFile(Dir.path("certificate.pem"))
	, keyFile(Dir.path("key.pem"))
{
	const Key key(EVP_EC_gen("P-256"));
	need(key != nullptr);
	const Certificate certificate = makeCertificate(key.get());
	const File keyStream(std::fopen(keyFile.c_str(), "wb"));
	const File certificateStream(std::fopen(certificateFile.c_str(), "wb"));
	need(keyStream && certificateStream && PEM_write_PrivateKey(keyStream.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) &&
		 PEM_write_X509(certificateStream.get(), certificate.get()));
}
