#include "app/ScanFailure.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <fmt/format.h>
#include <memory>
#include <typeinfo>

namespace salvor {
namespace {

std::string nameOf(const std::exception& failure) {
    const char* mangled = typeid(failure).name();
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), std::free);
    return name ? name.get() : mangled;
}

}  // namespace

std::string describeFailure(const std::exception& failure) {
    std::string reason = failure.what();
    // The text has four lines, whatever the reason quotes.
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    // By the time an exception is caught its call stack is gone.
    return fmt::format(
        "                            Where: \n"
        "                            Exception: {}\n"
        "                            Stack: {}\n"
        "                            Reason: {}\n",
        nameOf(failure), "(unwound)", reason);
}

}  // namespace salvor
