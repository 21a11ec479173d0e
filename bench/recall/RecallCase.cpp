#include "bench/recall/RecallCase.h"

#include <algorithm>
#include <vector>

#include "backup/BackupSource.h"
#include "bench/recall/FreeSpaceMap.h"
#include "bench/recall/LinkFigures.h"
#include "live/DAOs.h"
#include "recovery/messages/MessagesSQLiteRecovery.h"
#include "scan/ScanState.h"
#include "tools/sample/Digest.h"

namespace salvor {
namespace {

/// How far behind a record's header its first columns may begin.
constexpr std::size_t kReach = 220;
/// Enough of a text to tell it from others, short enough to stay on the first page.
constexpr std::size_t kTextStart = 24;

/// The bytes with which a row's own columns begin in the file.
std::string firstBytes(const TruthRow& row, int ios) {
    const auto text = row.text->substr(0, kTextStart);
    if (ios >= 6) return *row.guid + text;
    std::string date;
    for (unsigned shift : {24U, 16U, 8U, 0U}) {
        date += static_cast<char>(static_cast<unsigned char>(row.date >> shift));
    }
    return date + text;
}

/// A deleted row, where copies of it lie, and what came of it.
struct Row {
    const TruthRow* truth = nullptr;
    bool live = false;
    std::vector<std::size_t> copies;
    bool exact = false;
    bool damaged = false;
    bool rowIdRight = false;
    std::size_t foundAt = 0;
};

class RecallCase {
  public:
    RecallCase(const SampleBackup& sample, std::shared_ptr<SqLiteTableSignatures> signatures)
        : sample_(sample), bytes_(readWholeFile(sample.messageDatabase())), space_(bytes_) {
        useBackup(state_, sample.folder);
        state_.SMS_DATABASE = sampleStoredName("HomeDomain", "Library/SMS/sms.db");
        state_.deviceInfo.iOSMajorVersion = sample.truth.ios;
        state_.recoverySignatures = std::move(signatures);
        addRows(sample.truth.deleted, false);
        addRows(sample.truth.live, true);
    }

    RecallFigures run() {
        DAOs(state_).GetSMS();
        MessagesSQLiteRecovery carver(state_);
        carver.DoRecoveryPath(sample_.messageDatabase());
        for (const auto& record : carver.RecoveredFiltered) {
            judge(static_cast<const Message&>(*record));
        }
        for (const auto& row : rows_) {
            if (row.live) {
                ++figures_.live;
            } else {
                count(row);
            }
        }
        if (sample_.truth.ios >= 6) figures_.links = measureLinks(sample_, state_);
        return figures_;
    }

  private:
    void addRows(const std::vector<TruthRow>& truths, bool live) {
        for (const auto& truth : truths) {
            if (truth.table != "message" || !truth.text || truth.text->empty()) continue;
            Row row;
            row.truth = &truth;
            row.live = live;
            const auto needle = firstBytes(truth, sample_.truth.ios);
            for (auto at = bytes_.find(needle); at != std::string::npos;
                 at = bytes_.find(needle, at + 1)) {
                row.copies.push_back(at);
                byPlace_[at] = rows_.size();
            }
            byKey_[needle] = rows_.size();
            rows_.push_back(std::move(row));
        }
    }

    /// The row that a carved record is, or the one behind whose header it was read.
    Row* rowOf(const Message& message) {
        TruthRow carved;
        carved.guid = message.Guid.value_or("");
        carved.text = message.Text.value_or("");
        carved.date = static_cast<std::int64_t>(message.OriginalDate);
        const auto known = byKey_.find(firstBytes(carved, sample_.truth.ios));
        if (known != byKey_.end()) return &rows_[known->second];
        if (!message.Origin) return nullptr;
        const auto from = static_cast<std::size_t>(message.Origin->offset);
        const auto place = byPlace_.lower_bound(from);
        if (place == byPlace_.end() || place->first > from + kReach) return nullptr;
        return &rows_[place->second];
    }

    void judge(const Message& message) {
        Row* row = rowOf(message);
        if (row == nullptr) {
            ++figures_.otherListed;
        } else if (row->live) {
            ++figures_.liveListed;
        } else if (!row->exact) {
            const bool guidRight =
                !row->truth->guid || sample_.truth.ios < 6 || message.Guid == row->truth->guid;
            row->exact = message.Text == row->truth->text && guidRight;
            row->damaged = !row->exact;
            row->rowIdRight = message.RowId == row->truth->rowId;
            row->foundAt = message.Origin ? static_cast<std::size_t>(message.Origin->offset) : 0;
        }
    }

    void count(const Row& row) {
        ++figures_.deleted;
        if (row.copies.empty()) {
            ++figures_.gone;
            return;
        }
        auto copy = std::lower_bound(row.copies.begin(), row.copies.end(), row.foundAt);
        if (copy == row.copies.end()) copy = row.copies.begin();
        auto& space = figures_.bySpace[describe(space_.at(*copy))];
        ++space.present;
        if (row.exact) ++space.exact;
        if (row.damaged) ++space.damaged;
        if (row.exact && row.rowIdRight) ++figures_.rowIdsRight;
    }

    std::string describe(const Place& place) const {
        std::string text = place.afterRoot ? "after-root " : "";
        text += toString(place.kind);
        if (place.kind == SpaceKind::Freeblock) {
            text += rowsInFreeblock(place.freeblock) > 1 ? ", merged" : ", single";
        }
        return text;
    }

    std::size_t rowsInFreeblock(std::size_t freeblock) const {
        std::size_t rows = 0;
        for (auto at = byPlace_.lower_bound(freeblock); at != byPlace_.end(); ++at) {
            if (space_.at(at->first).freeblock != freeblock) break;
            ++rows;
        }
        return rows;
    }

    const SampleBackup& sample_;
    std::string bytes_;
    FreeSpaceMap space_;
    ScanState state_;
    std::vector<Row> rows_;
    std::map<std::size_t, std::size_t> byPlace_;
    std::map<std::string, std::size_t> byKey_;
    RecallFigures figures_;
};

}  // namespace

void RecallCount::add(const RecallCount& other) {
    present += other.present;
    exact += other.exact;
    damaged += other.damaged;
}

void RecallFigures::add(const RecallFigures& other) {
    deleted += other.deleted;
    gone += other.gone;
    live += other.live;
    rowIdsRight += other.rowIdsRight;
    liveListed += other.liveListed;
    otherListed += other.otherListed;
    for (const auto& [space, count] : other.bySpace) bySpace[space].add(count);
    for (const auto& [table, count] : other.links) {
        links[table].right += count.right;
        links[table].wrong += count.wrong;
    }
}

RecallFigures measureRecall(const SampleBackup& sample,
                            std::shared_ptr<SqLiteTableSignatures> signatures) {
    return RecallCase(sample, std::move(signatures)).run();
}

}  // namespace salvor
