#include "Html.h"

#include <fmt/format.h>

namespace Program
{
	std::string escapeHtml(std::string_view text)
	{
		std::string escaped;
		for (const char c : text)
		{
			switch (c)
			{
			case '&':
				escaped += "&amp;";
				break;
			case '<':
				escaped += "&lt;";
				break;
			case '>':
				escaped += "&gt;";
				break;
			case '"':
				escaped += "&quot;";
				break;
			case '\'':
				escaped += "&#39;";
				break;
			default:
				escaped += static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n' ? std::string(1, c) : "";
			}
		}
		return escaped;
	}

	std::string htmlPage(std::string_view title, std::string_view body, std::string_view scripts)
	{
		return fmt::format(R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8" />
<meta name="viewport" content="width=device-width, initial-scale=1" />
<meta name="color-scheme" content="light dark" />
<title>{}</title>
<link rel="stylesheet" href="reference.css" />
</head>
<body>
<header><a href="index.html">Corvane node reference</a></header>
<main>
{}</main>
{}</body>
</html>
)",
			escapeHtml(title), body, scripts);
	}
} // namespace Program
