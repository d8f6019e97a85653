#include "Lab/Behaviours/Tus.h"

#include <openssl/evp.h>

#include <array>
#include <chrono>
#include <ctime>
#include <map>
#include <mutex>

namespace Lab
{
	namespace
	{
		using Calendar = std::chrono::system_clock;

		struct Upload
		{
			std::string length; // as it was announced
			std::string bytes;
			Calendar::time_point begun = Calendar::now();
		};

		std::string dateOf(Calendar::time_point moment)
		{
			const std::time_t seconds = Calendar::to_time_t(moment);
			std::tm parts{};
			gmtime_r(&seconds, &parts);
			std::array<char, 64> text{};
			return {text.data(), std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts)};
		}

		/** @return whether the body has the sum that its header tells: "sha1 " and the sum in base 64. */
		bool hasItsSum(const Request& request)
		{
			const std::string_view told = request.header("Upload-Checksum");
			const std::size_t blank = told.find(' ');
			const EVP_MD* const kind = EVP_get_digestbyname(std::string(told.substr(0, blank)).c_str());
			if (told.empty() || kind == nullptr || blank == told.npos)
			{
				return told.empty();
			}
			std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
			unsigned size = 0;
			EVP_Digest(request.body.data(), request.body.size(), sum.data(), &size, kind, nullptr);
			std::array<unsigned char, EVP_MAX_MD_SIZE * 2> text{};
			const int length = EVP_EncodeBlock(text.data(), sum.data(), static_cast<int>(size));
			return told.substr(blank + 1) == std::string_view(reinterpret_cast<const char*>(text.data()), static_cast<std::size_t>(length));
		}

		/** The uploads of one server. Thread: any. */
		class Uploads
		{
		public:
			explicit Uploads(TusOptions inOptions)
				: options(std::move(inOptions))
			{
			}

			void answer(const Request& request, Plan& plan)
			{
				const std::scoped_lock lock(mutex);
				plan.setHeader("Tus-Resumable", "1.0.0");
				if (options.tells || request.method == "OPTIONS")
				{
					tellSelf(plan);
				}
				if (request.method == "OPTIONS")
				{
					plan.status = 204;
					return;
				}
				if (request.method == "POST")
				{
					return create(request, plan);
				}
				const auto found = uploads.find(std::string(request.path()));
				if (found == uploads.end())
				{
					plan.status = 404;
					return;
				}
				if (options.expiresAfter && Calendar::now() >= expiryOf(found->second))
				{
					plan.status = 410;
					return;
				}
				if (request.method == "DELETE")
				{
					uploads.erase(found);
					plan.status = 204;
					return;
				}
				request.method == "PATCH" ? goOn(request, plan, found->second) : tell(request, plan, found->second);
			}

			/** Keeps what came of a request that has no answer. */
			void keep(const Request& request)
			{
				const std::scoped_lock lock(mutex);
				const auto found = uploads.find(std::string(request.path()));
				const bool isPart = request.method == "PATCH" && request.header("Upload-Checksum").empty(); // a sum is that of all
				if (isPart && found != uploads.end())
				{
					append(request, found->second);
				}
			}

		private:
			void tellSelf(Plan& plan) const
			{
				plan.setHeader("Tus-Version", "1.0.0");
				plan.setHeader("Tus-Extension", "creation,creation-with-upload,checksum,expiration,termination");
				plan.setHeader("Tus-Checksum-Algorithm", "sha1,sha256,md5");
				if (options.mostBytes)
				{
					plan.setHeader("Tus-Max-Size", std::to_string(*options.mostBytes));
				}
			}

			Calendar::time_point expiryOf(const Upload& upload) const
			{
				return upload.begun + std::chrono::duration_cast<Calendar::duration>(*options.expiresAfter);
			}

			void tellExpiry(const Upload& upload, Plan& plan) const
			{
				if (options.expiresAfter)
				{
					plan.setHeader("Upload-Expires", dateOf(expiryOf(upload)));
				}
			}

			std::string addressOf(const Request& request, const std::string& path) const
			{
				if (options.host.empty())
				{
					return path;
				}
				const std::string_view own = request.header("Host");
				const bool hasPort = options.host.find(':') != options.host.npos;
				return "http://" + options.host + (hasPort ? "" : std::string(own.substr(std::min(own.size(), own.find(':'))))) + path;
			}

			void create(const Request& request, Plan& plan)
			{
				const std::string length(request.header("Upload-Length"));
				if (options.mostBytes && std::strtoull(length.c_str(), nullptr, 10) > *options.mostBytes)
				{
					plan.status = 413;
					return plan.setText("This is too much.");
				}
				const std::string path = std::string(request.path()) + '/' + std::to_string(++created);
				Upload& upload = uploads[path];
				upload.length = length;
				plan.status = 201;
				plan.setHeader("Location", addressOf(request, path));
				tellExpiry(upload, plan);
				if (request.header("Content-Type") == "application/offset+octet-stream")
				{
					upload.bytes = hasItsSum(request) ? request.body : "";
					plan.setHeader("Upload-Offset", std::to_string(upload.bytes.size()));
				}
			}

			static bool append(const Request& request, Upload& upload)
			{
				if (request.header("Upload-Offset") != std::to_string(upload.bytes.size()))
				{
					return false;
				}
				upload.bytes += request.body;
				return true;
			}

			void goOn(const Request& request, Plan& plan, Upload& upload)
			{
				if (!hasItsSum(request))
				{
					plan.status = 460;
					return;
				}
				plan.status = append(request, upload) ? 204 : 409;
				plan.setHeader("Upload-Offset", std::to_string(upload.bytes.size()));
				tellExpiry(upload, plan);
			}

			void tell(const Request& request, Plan& plan, const Upload& upload) const
			{
				if (request.method == "GET")
				{
					return plan.setText(upload.bytes, "application/octet-stream");
				}
				plan.setHeader("Upload-Offset", std::to_string(upload.bytes.size()));
				plan.setHeader("Upload-Length", upload.length);
				plan.setHeader("Cache-Control", "no-store");
				tellExpiry(upload, plan);
			}

			const TusOptions options;
			std::mutex mutex; // guards what follows
			int created = 0;
			std::map<std::string, Upload> uploads; // by path
		};
	} // namespace

	Behaviour tus(TusOptions options)
	{
		const auto uploads = std::make_shared<Uploads>(std::move(options));
		return Behaviour([uploads](const Request& request, Plan& plan) { uploads->answer(request, plan); },
			[uploads](const Request&, Intake& intake) { intake.onBroken = [uploads](const Request& request) { uploads->keep(request); }; });
	}
} // namespace Lab
