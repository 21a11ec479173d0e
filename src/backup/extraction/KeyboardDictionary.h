#pragma once

#include "records/List.h"
#include "records/ListRows.h"
#include "util/Bytes.h"

namespace salvor {

/// The words that a keyboard learned, in stored order: after "DynamicDictionary" and a version the
/// file holds words between zeroes and counts. Every run of two bytes or more without a control
/// byte is a word when it is UTF-8 and short enough to be one; other files hold none.
List<UserDict> keyboardWordsOf(Bytes dictionary);

}  // namespace salvor
