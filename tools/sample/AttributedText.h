#pragma once

#include <string>

namespace salvor {

/// The typedstream archive of an attributed string with this text and one run, as the
/// attributedBody column holds it.
std::string attributedText(const std::string& text);

}  // namespace salvor
