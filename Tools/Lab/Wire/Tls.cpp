#include "Lab/Wire/Tls.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace Lab
{
	namespace
	{
		using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
		using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
		using Extension = std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)>;

		void need(bool isGood)
		{
			if (!isGood)
			{
				throw std::runtime_error("cannot make a certificate");
			}
		}

		void extend(X509* certificate, int kind, const char* value)
		{
			const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value), X509_EXTENSION_free);
			need(extension && X509_add_ext(certificate, extension.get(), -1));
		}

		Certificate makeCertificate(EVP_PKEY* key)
		{
			constexpr long day = 24L * 60 * 60;
			Certificate made(X509_new(), X509_free);
			X509* const certificate = made.get();
			X509_set_version(certificate, 2);
			ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
			X509_gmtime_adj(X509_getm_notBefore(certificate), -day); // clocks differ
			X509_gmtime_adj(X509_getm_notAfter(certificate), 30 * day);
			X509_NAME* const name = X509_get_subject_name(certificate);
			X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
			X509_set_issuer_name(certificate, name);
			X509_set_pubkey(certificate, key);
			extend(certificate, NID_basic_constraints, "critical,CA:TRUE");
			extend(certificate, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");
			need(X509_sign(certificate, key, EVP_sha256()) > 0);
			return made;
		}

		std::string pemOf(X509* certificate)
		{
			const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), BIO_free);
			PEM_write_bio_X509(memory.get(), certificate);
			char* bytes = nullptr;
			const long size = BIO_get_mem_data(memory.get(), &bytes);
			return std::string(bytes, static_cast<std::size_t>(size));
		}
	} // namespace

	TlsIdentity::TlsIdentity()
		: context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free)
	{
		const Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
		need(key && context);
		const Certificate made = makeCertificate(key.get());
		need(SSL_CTX_use_certificate(context.get(), made.get()) == 1 && SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1);
		SSL_CTX_set_mode(context.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
		pem = pemOf(made.get());
	}
} // namespace Lab
