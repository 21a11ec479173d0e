#pragma once

#include <optional>
#include <stop_token>
#include <string>

#include "recovery/AbstractSQLiteRecoveryFullSearch.h"
#include "recovery/RecordCarver.h"
#include "recovery/messages/MessagePatterns.h"

namespace salvor {

/// A carver of one table of the message database. A table without a signature yields nothing.
template <class Engine, class Record>
class MessageTableCarver : public RecordCarver<Engine, Record> {
  protected:
    /// `table` names the signature; with a `version` the patterns are narrowed to it.
    MessageTableCarver(ScanState& state, std::stop_token cancelled, std::string table,
                       typename RecordCarver<Engine, Record>::Attributes attributes,
                       std::optional<std::string> version = std::nullopt)
        : RecordCarver<Engine, Record>(state, std::move(cancelled), attributes),
          table_(std::move(table)),
          version_(std::move(version)) {}

    TablePatterns choosePatterns() override {
        return version_ ? narrowedMessagePatterns(this->state_, table_, *version_)
                        : messagePatterns(this->state_, table_);
    }

  private:
    std::string table_;
    std::optional<std::string> version_;
};

}  // namespace salvor
