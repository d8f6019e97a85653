#pragma once

#include <string>

/** Bytes without any order; the same ones whenever so many are asked for. */
std::string randomBytes(std::size_t number);
