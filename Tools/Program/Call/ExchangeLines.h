#pragma once

#include <string_view>

namespace Program
{
	/**
	 * Tells the head of a request or of an answer on standard error. Values that may be secret are hidden: those of headers for
	 * credentials and cookies, names and passwords in addresses, and what queries call a token, a key and the like.
	 * @param isSent  whether it is a request's.
	 * @param head  its lines, with their ends.
	 * Thread: any.
	 */
	void tellHead(bool isSent, std::string_view head);
} // namespace Program
