#pragma once

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace Lab
{
	/** A fresh key with a certificate that it signed itself, for localhost and the loopback addresses. */
	class TlsIdentity
	{
	public:
		TlsIdentity();

		/** The certificate as PEM text, for clients to trust. */
		const std::string& certificate() const { return pem; }
		ssl_ctx_st* serverContext() const { return context.get(); }

	private:
		std::shared_ptr<ssl_ctx_st> context;
		std::string pem;
	};
} // namespace Lab
