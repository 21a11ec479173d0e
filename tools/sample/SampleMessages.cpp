#include <algorithm>
#include <memory>

#include "tools/sample/Digest.h"
#include "tools/sample/MessageStore.h"
#include "tools/sample/SampleFolder.h"

namespace salvor {
namespace {

constexpr const char* kDomain = "HomeDomain";
constexpr const char* kPath = "Library/SMS/sms.db";

constexpr const char* kSingleRow = "single row";
constexpr const char* kRun = "run of rows";
constexpr const char* kWholeChat = "whole chat";
constexpr const char* kReinserted = "single row, then rows inserted";

/// Fills sms.db and deletes from it: rows alone, runs that free whole pages, a whole chat, and
/// rows whose room later ones may take.
class MessageSample {
  public:
    MessageSample(SampleFolder& folder, const std::filesystem::path& file)
        : folder_(folder),
          database_(file, folder.truth().layout),
          conversation_(folder.random(), folder.options().pageSize, folder.device().startOfUse),
          store_(folder.device().ios < 6 ? makeGroupMessageStore(database_, folder.device().ios)
                                         : makeChatMessageStore(database_, folder.device().ios)) {}

    void write() {
        transaction([this] { store_->create(conversation_.chats()); });
        transaction([this] {
            for (std::uint32_t i = 0; i < folder_.options().messages; ++i) {
                keep(conversation_.next());
            }
        });
        if (folder_.options().deletions) deleteRows();
        if (folder_.options().incrementalVacuum) database_.execute("PRAGMA incremental_vacuum");
        tell();
        database_.close();
    }

  private:
    template <class Work>
    void transaction(Work&& work) {
        database_.execute("BEGIN");
        work();
        database_.execute("COMMIT");
    }

    void keep(SampleMessage message) {
        message.rowId = store_->add(message);
        messages_.push_back(std::move(message));
        how_.emplace_back();
    }

    void remove(std::size_t i, const char* how) {
        if (!how_[i].empty()) return;
        store_->remove(messages_[i].rowId);
        how_[i] = how;
    }

    void deleteRows() {
        const auto count = messages_.size();
        const auto run = runLength();
        transaction([&] { deleteSingles(count, run); });
        transaction([&] { deleteRange(count * 3 / 10, run, 1, kRun); });
        transaction([&] { deleteRange(count * 6 / 10, run, 1, kRun); });
        transaction([&] {
            for (std::size_t i = 0; i < count; ++i) {
                if (messages_[i].chat == conversation_.doomedChat()) remove(i, kWholeChat);
            }
            store_->removeChat(conversation_.doomedChat());
        });
        const auto overwritten = std::max<std::size_t>(1, count / 20);
        transaction([&] { deleteRange(count * 8 / 10, overwritten, 2, kReinserted); });
        transaction([&] {
            for (std::size_t i = 0; i < overwritten / 2; ++i) keep(conversation_.nextShort());
        });
    }

    /// Enough neighbouring rows to free two or three whole pages, but no more than a sixth.
    std::size_t runLength() const {
        const std::size_t rowBytes = folder_.device().ios < 6 ? 120 : 480;
        const std::size_t wanted = std::size_t{3} * folder_.options().pageSize / rowBytes + 4;
        return std::min<std::size_t>(wanted, messages_.size() / 6);
    }

    void deleteRange(std::size_t first, std::size_t length, std::size_t step, const char* how) {
        const auto end = std::min(messages_.size(), first + length);
        for (std::size_t i = first; i < end; i += step) remove(i, how);
    }

    /// About one row in fifteen, no two neighbours, outside of the runs.
    void deleteSingles(std::size_t count, std::size_t run) {
        const auto inRun = [run](std::size_t i, std::size_t first) {
            return i + 1 >= first && i <= first + run;
        };
        std::size_t i = std::min<std::size_t>(2, count);
        while (i < count) {
            if (!inRun(i, count * 3 / 10) && !inRun(i, count * 6 / 10)) remove(i, kSingleRow);
            i += static_cast<std::size_t>(folder_.random().between(4, 26));
        }
    }

    void tell() {
        auto& truth = folder_.truth();
        for (std::size_t i = 0; i < messages_.size(); ++i) {
            const auto& message = messages_[i];
            TruthRow row;
            row.database = sampleStoredName(kDomain, kPath);
            row.table = "message";
            row.rowId = message.rowId;
            if (store_->hasGuid(message)) row.guid = message.guid;
            row.text = message.text;
            row.date = store_->storedDate(message);
            row.handle = message.handle;
            row.fromMe = message.fromMe;
            row.how = how_[i];
            row.values["chatId"] = store_->chatRowId(message.chat);
            row.values["handleId"] = store_->handleRowId(message);
            (row.how.empty() ? truth.live : truth.deleted).push_back(std::move(row));
        }
    }

    SampleFolder& folder_;
    SqliteFile database_;
    SampleConversation conversation_;
    std::unique_ptr<MessageStore> store_;
    std::vector<SampleMessage> messages_;
    std::vector<std::string> how_;
};

/// Old SQLite left the page count of the header at 0 and counted from the file size.
void clearPageCount(const std::filesystem::path& file) {
    auto bytes = readWholeFile(file);
    std::fill_n(bytes.begin() + 28, 4, '\0');
    writeWholeFile(file, bytes);
}

}  // namespace

void writeSampleMessages(SampleFolder& folder) {
    const auto file = folder.add(kDomain, kPath);
    MessageSample(folder, file).write();
    if (folder.options().zeroPageCount) clearPageCount(file);
}

}  // namespace salvor
