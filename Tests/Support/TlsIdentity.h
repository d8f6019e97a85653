#pragma once

#include "TempDir.h"

#include <cstdlib>
#include <stdexcept>

/** A fresh key with a certificate for 127.0.0.1 that it signed itself, as PEM files in a directory of its own. */
class TlsIdentity
{
	TempDir Dir; // first: the paths lie in it

public:
	TlsIdentity()
	{
		const std::string command = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 1 -subj /CN=127.0.0.1 "
									"-addext subjectAltName=IP:127.0.0.1 -keyout '" +
									keyFile + "' -out '" + certificateFile + "' 2> '" + Dir.path("log") + "'";
		if (std::system(command.c_str()) != 0)
		{
			throw std::runtime_error("cannot make a certificate: " + Dir.read("log"));
		}
	}

	const std::string certificateFile = Dir.path("certificate.pem");
	const std::string keyFile = Dir.path("key.pem");
};
