#include "Lab/Behaviours/Uploads.h"

#include "Lab/Plans/Md5.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Lab
{
	namespace
	{
		/** A parameter of a header: the name of form-data; name="a". */
		std::string parameterOf(std::string_view header, const std::string& name)
		{
			const std::size_t place = header.find(' ' + name + '=');
			if (place == header.npos)
			{
				return {};
			}
			const std::string_view value = header.substr(place + name.size() + 2);
			return std::string(value.starts_with('"') ? value.substr(1, value.find('"', 1) - 1) : value.substr(0, value.find(';')));
		}

		std::string_view headerIn(std::string_view head, std::string_view name)
		{
			while (!head.empty())
			{
				const std::string_view line = head.substr(0, head.find("\r\n"));
				head.remove_prefix(std::min(head.size(), line.size() + 2));
				const std::size_t colon = line.find(':');
				if (colon != line.npos && equalsIgnoringCase(line.substr(0, colon), name))
				{
					return line.substr(colon + 1);
				}
			}
			return {};
		}

		FormPart parsePart(std::string_view text)
		{
			constexpr std::string_view emptyLine = "\r\n\r\n";
			const std::size_t end = std::min(text.find(emptyLine), text.size());
			const std::string_view head = text.substr(0, end);
			const std::string_view disposition = headerIn(head, "Content-Disposition");
			const std::string_view type = headerIn(head, "Content-Type");
			return {parameterOf(disposition, "name"), parameterOf(disposition, "filename"),
				std::string(type.substr(std::min(type.size(), type.find_first_not_of(' ')))),
				std::string(text.substr(std::min(text.size(), end + emptyLine.size())))};
		}

		std::vector<FormPart> parseMultipart(std::string_view body, const std::string& boundary)
		{
			const std::string border = "\r\n--" + boundary;
			const std::string whole = "\r\n" + std::string(body);
			std::vector<FormPart> parts;
			std::size_t start = whole.find(border);
			for (std::size_t end; start != whole.npos; start = end)
			{
				start += border.size();
				end = whole.find(border, start);
				if (end != whole.npos && whole.compare(start, 2, "\r\n") == 0)
				{
					parts.push_back(parsePart(std::string_view(whole).substr(start + 2, end - start - 2)));
				}
			}
			return parts;
		}

		std::string describe(const std::vector<FormPart>& parts)
		{
			nlohmann::ordered_json list = nlohmann::json::array();
			for (const FormPart& part : parts)
			{
				nlohmann::ordered_json entry{{"name", part.name}};
				if (part.fileName.empty())
				{
					entry["value"] = part.bytes;
				}
				else
				{
					Md5 sum;
					sum.add(part.bytes);
					entry.update({{"fileName", part.fileName}, {"type", part.type}, {"bytes", part.bytes.size()}, {"md5", sum.hex()}});
				}
				list.push_back(std::move(entry));
			}
			return list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
		}
	} // namespace

	Behaviour upload(UploadOptions options)
	{
		return Behaviour(
			[options](const Request& request, Plan& plan)
			{
				const bool isRefused = options.refusesAfter && request.bodyBytes >= *options.refusesAfter;
				plan.status = isRefused ? options.code : plan.status;
				plan.setText(std::to_string(request.bodyBytes));
			},
			[options](const Request&, Intake& intake)
			{
				intake.bytesPerSecond = options.bytesPerSecond;
				intake.pause = options.waits;
				intake.answersAfter = options.refusesAfter;
				intake.hangsUpAfter = options.hangsUpAfter;
				intake.throwsAway = options.throwsAway;
				intake.keeps = options.throwsAway ? 0 : intake.keeps;
			});
	}

	std::vector<FormPart> parseForm(const Request& request)
	{
		const std::string_view type = request.header("Content-Type");
		if (type.starts_with("multipart/"))
		{
			return parseMultipart(request.body, parameterOf(type, "boundary"));
		}
		std::vector<FormPart> parts;
		if (type.starts_with("application/x-www-form-urlencoded"))
		{
			for (Header& pair : parsePairs(request.body))
			{
				parts.push_back({std::move(pair.name), {}, {}, std::move(pair.value)});
			}
		}
		return parts;
	}

	Behaviour form()
	{
		return Behaviour([](const Request& request, Plan& plan) { plan.setText(describe(parseForm(request)), "application/json"); });
	}
} // namespace Lab
