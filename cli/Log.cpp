#include "cli/Log.h"

#include <mutex>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <utility>

namespace salvor::cli {
namespace {

class LineSink : public spdlog::sinks::base_sink<std::mutex> {
  public:
    explicit LineSink(std::function<void(std::string_view)> writeLine)
        : writeLine_(std::move(writeLine)) {}

  protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        std::string_view rest(line.data(), line.size());
        for (auto end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
            writeLine_(rest.substr(0, end));
            rest.remove_prefix(end + 1);
        }
        writeLine_(rest);
    }
    void flush_() override {}

  private:
    std::function<void(std::string_view)> writeLine_;
};

}  // namespace

std::optional<spdlog::level::level_enum> logLevel(const std::string& name) {
    // An unknown name reads as "off", so only the word itself may mean that.
    const auto level = spdlog::level::from_str(name);
    if (level == spdlog::level::off && name != "off") return std::nullopt;
    return level;
}

std::shared_ptr<spdlog::logger> makeLog(spdlog::level::level_enum level,
                                        std::function<void(std::string_view)> writeLine) {
    auto log = std::make_shared<spdlog::logger>("salvor",
                                                std::make_shared<LineSink>(std::move(writeLine)));
    log->set_level(level);
    log->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "salvor: %l: %v", spdlog::pattern_time_type::local, ""));
    return log;
}

}  // namespace salvor::cli
