#pragma once

#include "TempDir.h"

#include <string>

/** A fresh key with a certificate for 127.0.0.1 that it signed itself, as PEM files in a directory of its own. */
class TlsIdentity
{
	TempDir Dir; // first: the paths lie in it

public:
	TlsIdentity();

	const std::string certificateFile;
	const std::string keyFile;
};
