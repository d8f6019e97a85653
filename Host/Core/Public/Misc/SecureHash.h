#pragma once

#include "CoreTypes.h"

#include <memory>

/** MD5 of bytes that come in pieces. Final is the last call. Thread: one at a time. */
class FMD5
{
public:
	FMD5();
	~FMD5();
	void Update(const uint8* Input, uint64 Length);
	/** @param Digest  takes 16 bytes. */
	void Final(uint8* Digest);

private:
	struct FState;
	std::unique_ptr<FState> State;
};

/** SHA-1 of bytes that come in pieces. Thread: one at a time. */
class FSHA1
{
public:
	FSHA1();
	~FSHA1();
	void Update(const uint8* Input, uint64 Length);
	/** After the last piece. */
	void Final();
	/** @param Digest  takes the 20 bytes that Final has made. */
	void GetHash(uint8* Digest);

private:
	struct FState;
	std::unique_ptr<FState> State;
};
