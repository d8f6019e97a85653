#include "Lab/Behaviours/Faults.h"

#include <zlib.h>

#include <memory>
#include <stdexcept>

namespace Lab
{
	namespace
	{
		Behaviour happening(Event event)
		{
			return Behaviour([event = std::move(event)](const Request&, Plan& plan) { plan.events.push_back(event); });
		}

		std::string compress(const std::string& bytes)
		{
			constexpr int gzipFormat = 16 + MAX_WBITS;
			z_stream stream{};
			if (::deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipFormat, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK)
			{
				throw std::bad_alloc();
			}
			const std::unique_ptr<z_stream, decltype(&::deflateEnd)> owner(&stream, ::deflateEnd);
			std::string packed(::deflateBound(&stream, bytes.size()), '\0');
			stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
			stream.avail_in = static_cast<uInt>(bytes.size());
			stream.next_out = reinterpret_cast<Bytef*>(packed.data());
			stream.avail_out = static_cast<uInt>(packed.size());
			::deflate(&stream, Z_FINISH);
			packed.resize(stream.total_out);
			return packed;
		}

		void compressBody(const Request& request, Plan& plan, const GzipOptions& options)
		{
			const bool isAsked = request.header("Accept-Encoding").find("gzip") != std::string_view::npos;
			if (!plan.content || (!isAsked && !options.always))
			{
				return;
			}
			std::string packed = compress(wholeOf(*plan.content));
			if (options.isBroken)
			{
				packed[packed.size() / 2] ^= 0x55;
			}
			plan.content = bytesContent(std::move(packed));
			plan.setHeader("Content-Encoding", "gzip");
		}
	} // namespace

	Behaviour drop(DropOptions options)
	{
		return happening({options.resets ? Event::Kind::Reset : Event::Kind::Drop, options.at});
	}

	Behaviour stall(StallOptions options)
	{
		return options.time ? happening({Event::Kind::Pause, options.at, *options.time}) : happening({Event::Kind::Stall, options.at});
	}

	Behaviour hold(Gate gate, Place at)
	{
		return happening({Event::Kind::Hold, at, {}, std::move(gate)});
	}

	Behaviour holdBody(Gate gate)
	{
		return Behaviour([](const Request&, Plan&) {}, [gate = std::move(gate)](const Request&, Intake& intake) { intake.gate = gate; });
	}

	Behaviour rate(double bytesPerSecond)
	{
		return Behaviour([bytesPerSecond](const Request&, Plan& plan) { plan.pacing.bytesPerSecond = bytesPerSecond; });
	}

	Behaviour pieces(std::vector<std::size_t> sizes, Milliseconds pause)
	{
		return Behaviour(
			[sizes = std::move(sizes), pause](const Request&, Plan& plan)
			{
				plan.pacing.sizes = sizes;
				plan.pacing.pause = pause;
			});
	}

	Behaviour length(LengthOptions options)
	{
		return Behaviour(
			[options](const Request&, Plan& plan)
			{
				plan.framing = options.isMissing ? Framing::UntilClose : Framing::Length;
				plan.announced = options.says;
			});
	}

	Behaviour chunked(ChunkedOptions options)
	{
		return Behaviour(
			[options](const Request&, Plan& plan)
			{
				plan.framing = Framing::Chunked;
				plan.chunkFault = options.fault;
				if (options.size)
				{
					plan.pacing.sizes = {options.size};
				}
			});
	}

	Behaviour gzip(GzipOptions options)
	{
		return Behaviour([options](const Request& request, Plan& plan) { compressBody(request, plan, options); });
	}

	Behaviour endlessHeaders()
	{
		return Behaviour(
			[](const Request&, Plan& plan)
			{
				plan.headEnds = false;
				plan.framing = Framing::UntilClose;
				plan.content = repeatedContent("X-More: and more, and more, and more, and more\r\n");
			});
	}

	Behaviour http10()
	{
		return Behaviour(
			[](const Request&, Plan& plan)
			{
				plan.minorVersion = 0;
				plan.keepsConnection = false;
			});
	}

	Behaviour closing()
	{
		return Behaviour([](const Request&, Plan& plan) { plan.keepsConnection = false; });
	}

	Behaviour headers(std::vector<Header> headers)
	{
		return Behaviour(
			[headers = std::move(headers)](const Request&, Plan& plan)
			{
				for (const Header& header : headers)
				{
					plan.setHeader(header.name, header.value);
				}
			});
	}
} // namespace Lab
