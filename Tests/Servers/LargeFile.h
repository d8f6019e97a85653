#pragma once

#include <cstdint>
#include <string>

/** Writes a file too large to be made up byte by byte: a random block again and again, each time with its place in it. */
void writeLargeFile(const std::string& path, std::uintmax_t size);

/** @return the SHA-256 of a file, as others than the module reckon it. */
std::string sha256Of(const std::string& path);
