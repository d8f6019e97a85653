#include "Lab/Cassettes/Upstream.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <climits>
#include <stdexcept>

namespace Lab
{
	namespace
	{
		[[noreturn]] void fail(const ServerPlace& place)
		{
			const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
			ERR_clear_error();
			throw std::runtime_error("cannot reach " + place.authority + (reason ? std::string(": ") + reason : ""));
		}

		BIO* openTls(SSL_CTX* context, const ServerPlace& place)
		{
			BIO* const stream = BIO_new_ssl_connect(context);
			SSL* tls = nullptr;
			BIO_get_ssl(stream, &tls);
			SSL_set_mode(tls, SSL_MODE_AUTO_RETRY);
			SSL_set_tlsext_host_name(tls, place.host.c_str());
			SSL_set1_host(tls, place.host.c_str());
			return stream;
		}

		std::shared_ptr<SSL_CTX> makeContext()
		{
			std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
			SSL_CTX_set_default_verify_paths(context.get());
			SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
			SSL_CTX_set_options(context.get(), SSL_OP_IGNORE_UNEXPECTED_EOF);
			return context;
		}
	} // namespace

	ServerPlace parseServer(const std::string& url)
	{
		ServerPlace place;
		place.usesTls = url.starts_with("https://");
		const std::size_t start = url.find("://") + 3;
		if (!place.usesTls && !url.starts_with("http://"))
		{
			throw std::invalid_argument(url + " does not begin with http:// or https://");
		}
		const std::size_t end = std::min(url.find('/', start), url.size());
		place.authority = url.substr(start, end - start);
		place.path = url.substr(end, url.find_last_not_of('/') + 1 - std::min(end, url.find_last_not_of('/') + 1));
		const std::size_t colon = place.authority.rfind(':');
		place.host = place.authority.substr(0, colon);
		place.port = colon == place.authority.npos ? (place.usesTls ? "443" : "80") : place.authority.substr(colon + 1);
		return place.host.empty() ? throw std::invalid_argument(url + " names no host") : place;
	}

	Upstream::Upstream(const ServerPlace& place)
		: context(place.usesTls ? makeContext() : nullptr)
		, stream(context ? openTls(context.get(), place) : BIO_new(BIO_s_connect()), BIO_free_all)
	{
		BIO_set_conn_hostname(stream.get(), place.host.c_str());
		BIO_set_conn_port(stream.get(), place.port.c_str());
		if (BIO_do_connect(stream.get()) <= 0)
		{
			fail(place);
		}
	}

	int Upstream::number() const
	{
		int descriptor = -1;
		BIO_get_fd(stream.get(), &descriptor);
		return descriptor;
	}

	bool Upstream::hasBytes() const
	{
		return BIO_pending(stream.get()) > 0;
	}

	int Upstream::read(char* room, int most)
	{
		return BIO_read(stream.get(), room, most);
	}

	bool Upstream::write(std::string_view bytes)
	{
		while (!bytes.empty())
		{
			const int written = BIO_write(stream.get(), bytes.data(), static_cast<int>(std::min<std::size_t>(bytes.size(), INT_MAX)));
			if (written <= 0)
			{
				return false;
			}
			bytes.remove_prefix(static_cast<std::size_t>(written));
		}
		return true;
	}
} // namespace Lab
