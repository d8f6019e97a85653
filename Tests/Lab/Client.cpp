#include "Client.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
	std::size_t append(char* bytes, std::size_t size, std::size_t number, void* text)
	{
		static_cast<std::string*>(text)->append(bytes, size * number);
		return size * number;
	}

	std::size_t appendHead(char* bytes, std::size_t size, std::size_t number, void* text)
	{
		std::string& head = *static_cast<std::string*>(text);
		const std::string_view line(bytes, size * number);
		head = line.starts_with("HTTP/") ? std::string(line) : head.append(line);
		return line.size();
	}
} // namespace

Got ask(const std::string& url, const Ask& what)
{
	const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> client(curl_easy_init(), curl_easy_cleanup);
	CURL* const curl = client.get();
	Got got;
	curl_slist* headers = nullptr;
	for (const std::string& header : what.headers)
	{
		headers = curl_slist_append(headers, header.c_str());
	}
	curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
	curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
	curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, append);
	curl_easy_setopt(curl, CURLOPT_WRITEDATA, &got.body);
	curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, appendHead);
	curl_easy_setopt(curl, CURLOPT_HEADERDATA, &got.head);
	curl_easy_setopt(curl, CURLOPT_TIMEOUT, 20L);
	curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, what.follows ? 1L : 0L);
	curl_easy_setopt(curl, CURLOPT_MAXREDIRS, 10L);
	curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, what.unpacks ? "" : nullptr);
	curl_blob trusted{const_cast<char*>(what.trusts.data()), what.trusts.size(), CURL_BLOB_COPY};
	if (!what.trusts.empty())
	{
		curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &trusted);
	}
	if (!what.body.empty())
	{
		curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(what.body.size()));
		curl_easy_setopt(curl, CURLOPT_POSTFIELDS, what.body.data());
	}
	if (!what.method.empty())
	{
		curl_easy_setopt(curl, what.method == "HEAD" ? CURLOPT_NOBODY : CURLOPT_HTTPGET, what.body.empty() ? 1L : 0L);
		curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, what.method.c_str());
	}
	got.error = curl_easy_perform(curl);
	curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &got.status);
	curl_easy_getinfo(curl, CURLINFO_TOTAL_TIME, &got.seconds);
	curl_slist_free_all(headers);
	return got;
}

std::string converse(int port, std::string_view bytes)
{
	const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	sockaddr_in place{};
	place.sin_family = AF_INET;
	place.sin_port = htons(static_cast<std::uint16_t>(port));
	place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	std::string all = ::connect(connection, reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 ? "" : "no connection";
	::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
	std::array<char, 65536> room{};
	ssize_t number;
	while ((number = ::recv(connection, room.data(), room.size(), 0)) > 0)
	{
		all.append(room.data(), static_cast<std::size_t>(number));
	}
	all += number < 0 && errno == ECONNRESET ? "reset" : "";
	::close(connection);
	return all;
}
