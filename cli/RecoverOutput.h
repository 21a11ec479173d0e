#pragma once

#include <string>

#include "carving/deep/Facts.h"
#include "carving/deep/RecoveredRow.h"
#include "report/JsonStream.h"

namespace salvor::cli {

/// Writes a recovered row as one JSON object on a line of its own.
void writeRow(const deep::Facts& facts, const deep::RecoveredRow& row, json::JsonStream& out);

/// Counts and facts of a database as one JSON object, with its line break.
std::string summaryOf(const deep::Facts& facts);

}  // namespace salvor::cli
