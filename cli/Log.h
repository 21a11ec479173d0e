#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <spdlog/logger.h>
#include <string>
#include <string_view>

namespace salvor::cli {

/// The level called "trace", "debug", "info", "warning", "error", "critical" or "off".
std::optional<spdlog::level::level_enum> logLevel(const std::string& name);

/// A logger whose lines ("salvor: warning: ...") go to `writeLine`, without a line break.
std::shared_ptr<spdlog::logger> makeLog(spdlog::level::level_enum level,
                                        std::function<void(std::string_view)> writeLine);

}  // namespace salvor::cli
