#include "carving/deep/RecoveryEngine.h"

#include <algorithm>
#include <memory>
#include <tuple>
#include <unordered_set>

#include "carving/deep/Folding.h"
#include "carving/deep/FoundRows.h"
#include "carving/deep/IndexWitness.h"
#include "carving/deep/PageSearch.h"
#include "carving/deep/RowListing.h"
#include "carving/deep/SqlTokens.h"
#include "carving/deep/Survey.h"

namespace salvor::deep {
namespace {

// So many images tell what the rows of a table without live ones look like.
constexpr std::size_t kSampledImages = 1000;

/// The steps of one recovery, in their order.
class Recovery {
  public:
    Recovery(const PageStore& store, const RecoveryOptions& options, std::stop_token stop)
        : options_(options), stop_(std::move(stop)), survey_(store, stop_) {}

    Facts run(const RowSink& sink) {
        auto images = survey_.store().images();
        readEarlierSchema(images);
        learnFromDeleted(images);
        found_ = std::make_unique<FoundRows>(survey_, std::move(images));
        searchAll();
        fold();
        fillFacts();
        list(sink);
        return std::move(facts_);
    }

  private:
    template <class Visit>
    void searchImages(const std::vector<PageImage>& images, std::size_t step, Visit&& visit) {
        PageSearch search(survey_);
        for (std::size_t i = 0; i < images.size() && !stop_.stop_requested(); i += step)
            for (const Candidate& candidate :
                 search.search(images[i], static_cast<std::uint32_t>(i)))
                visit(candidate, search);
    }

    /// Deleted rows of the schema table tell of tables that were dropped or had fewer columns.
    void readEarlierSchema(const std::vector<PageImage>& images) {
        std::vector<PageImage> likely;
        for (const PageImage& image : images) {
            const auto use = survey_.uses().of(image.page);
            const bool ofSchema = use.table == 0 || image.page == 1;
            const bool unused = use.use == PageUse::None || use.use == PageUse::FreeLeaf;
            if (ofSchema || (unused && likely.size() < kSampledImages)) likely.push_back(image);
        }
        RowReader reader(survey_);
        std::vector<SchemaRow> rows;
        searchImages(likely, 1, [&](const Candidate& candidate, const PageSearch& search) {
            const PageView& view = search.view();
            if (candidate.table != 0 || !candidate.isIntact()) return;
            const auto row = SchemaRow::read(reader.read(view.where, view.bytes, candidate),
                                             survey_.store().layout().encoding);
            if (row) rows.push_back(*row);
        });
        for (const SchemaRow& row : rows) survey_.addEarlier(row);
    }

    /// Tables with few live rows are learned from deleted ones that are beyond doubt.
    void learnFromDeleted(const std::vector<PageImage>& images) {
        auto& tables = survey_.tables();
        std::vector<bool> learns(tables.size());
        for (std::size_t i = 1; i < tables.size(); ++i) learns[i] = !tables[i].isLearned();
        if (std::find(learns.begin(), learns.end(), true) == learns.end()) return;
        struct Lesson {
            std::uint16_t table;
            std::int64_t rowId;
            std::vector<std::uint8_t> payload;
            std::vector<std::uint64_t> types;
        };
        std::vector<Lesson> lessons;
        std::vector<std::size_t> taught(tables.size());
        std::unordered_set<std::uint64_t> known;
        RowReader reader(survey_);
        const std::size_t step = images.size() / kSampledImages + 1;
        constexpr std::size_t kMostLessons = 1000;
        constexpr std::size_t kLongest = 4096;
        searchImages(images, step, [&](const Candidate& candidate, const PageSearch& search) {
            const PageView& view = search.view();
            if (!learns[candidate.table] || taught[candidate.table] >= kMostLessons ||
                !search.isLesson(candidate))
                return;
            const Record& record = reader.read(view.where, view.bytes, candidate);
            if (record.payload.size() > kLongest || !known.insert(contentHash(record)).second)
                return;
            ++taught[candidate.table];
            lessons.push_back({candidate.table,
                               candidate.rowId,
                               {record.payload.begin(), record.payload.end()},
                               record.types});
        });
        Record record;
        for (const Lesson& lesson : lessons) {
            record.types = lesson.types;
            record.payload = lesson.payload;
            tables[lesson.table].learn(record, lesson.rowId);
            auto& largest = tables[lesson.table].largestFound;
            largest = std::max(largest, lesson.rowId);
        }
        for (auto& table : tables) table.finishLearning();
    }

    void searchAll() {
        const auto& images = found_->images();
        PageSearch search(survey_);
        for (std::uint32_t i = 0; i < images.size() && !stop_.stop_requested(); ++i) {
            for (const Candidate& candidate : search.search(images[i], i))
                found_->add(candidate, search.view());
            if (images[i].current) countFreeBytes(search.view());
        }
    }

    void countFreeBytes(const PageView& view) {
        const auto count = [&](const ByteRange& range, std::uint64_t& bytes, std::uint64_t& zeros) {
            const Bytes there = view.bytes.subspan(range.start, range.end - range.start);
            bytes += there.size();
            zeros +=
                static_cast<std::uint64_t>(std::count(there.begin(), there.end(), std::uint8_t{0}));
        };
        for (const ByteRange& range : view.ranges) count(range, facts_.freeBytes, facts_.zeroBytes);
        const ByteRange page{0, static_cast<std::uint32_t>(view.bytes.size())};
        if (view.use == PageUse::FreeLeaf) count(page, facts_.freedBytes, facts_.freedZeroBytes);
        constexpr std::uint32_t kHeader = 4;
        for (const ByteRange& block : view.chain)
            count({block.start + kHeader, block.end}, facts_.freedBytes, facts_.freedZeroBytes);
    }

    void fold() {
        const auto& rows = found_->rows();
        std::vector<std::vector<std::uint32_t>> byTable(survey_.tables().size());
        for (std::uint32_t i = 0; i < rows.size(); ++i) byTable[rows[i].table].push_back(i);
        Folding folding(*found_, stop_);
        for (std::size_t i = 0; i < byTable.size(); ++i)
            if (!byTable[i].empty())
                folding.fold(static_cast<std::uint16_t>(i), std::move(byTable[i]));
        IndexWitness(*found_, stop_).tellRowIds();
    }

    bool isListed(std::size_t table) const {
        const auto& name = facts_.tables[table].name;
        if (options_.tables.empty()) return !facts_.tables[table].internal;
        return std::any_of(options_.tables.begin(), options_.tables.end(),
                           [&](const std::string& asked) { return equalNames(asked, name); });
    }

    void fillFacts();
    void list(const RowSink& sink);
    bool listLive(std::uint16_t table, const RowSink& sink);

    const RecoveryOptions& options_;
    std::stop_token stop_;
    Survey survey_;
    std::unique_ptr<FoundRows> found_;
    Facts facts_;
};

void Recovery::fillFacts() {
    const PageStore& store = survey_.store();
    facts_.pageSize = store.layout().pageSize;
    facts_.pages = store.pageCount();
    facts_.freePages = store.layout().freePages;
    facts_.encoding = store.layout().encoding;
    facts_.autoVacuum = store.layout().autoVacuum;
    facts_.incrementalVacuum = store.layout().incrementalVacuum;
    facts_.logFrames = store.wal().frames.size();
    facts_.logFramesInUse = store.wal().committed;
    facts_.journalPages = store.journal().pages.size();
    facts_.journalWiped = store.journal().headerWiped;
    facts_.cut = store.layout().pagesInHeader > store.pageCount();
    for (const TableModel& table : survey_.tables()) {
        TableFacts one;
        one.name = table.definition().name;
        one.dropped = table.dropped;
        one.internal = one.name.starts_with("sqlite_");
        one.live = table.rows;
        for (const auto& column : table.definition().columns) {
            one.columns.push_back(column.name);
            one.types.push_back(column.type);
        }
        const auto highest = static_cast<std::uint64_t>(
            std::max({table.largestRowId, table.handedOut, std::int64_t{0}}));
        // Row ids that were chosen, and not counted, tell nothing: without AUTOINCREMENT those that
        // lie far apart.
        const bool counted = table.handedOut > 0 ? highest < 100 * (table.rows + 1000)
                                                 : highest < 20 * table.rows + 1000;
        if (!table.definition().withoutRowId && counted && highest > one.live)
            one.gone = highest - one.live;
        facts_.tables.push_back(std::move(one));
    }
    const RowListing listing(*found_);
    for (const FoundRow& row : found_->rows()) {
        TableFacts& table = facts_.tables[row.table];
        if (row.fate == RowFate::Earlier) ++table.earlier;
        if (row.fate == RowFate::Fragment) ++table.fragments;
        if (row.fate != RowFate::Deleted) continue;
        ++table.deleted;
        const Confidence confidence = listing.confidenceOf(row);
        ++(confidence == Confidence::Certain  ? table.certain
           : confidence == Confidence::Likely ? table.likely
                                              : table.possible);
    }
}

bool Recovery::listLive(std::uint16_t table, const RowSink& sink) {
    const PageStore& store = survey_.store();
    const RowListing listing(*found_);
    Payload payload;
    Record record;
    bool goesOn = true;
    eachLiveCell(store, survey_.tables()[table],
                 [&](std::uint32_t page, const BtreePage& node, const Cell& cell) {
                     const Bytes whole = payload.gather(
                         node.bytes(), cell, store.layout().usable,
                         [&](std::uint32_t number) { return store.currentBytes(number); });
                     if (record.read(whole))
                         goesOn =
                             sink(facts_, listing.live(table, store.current(page), cell, record));
                     return goesOn && !stop_.stop_requested();
                 });
    return goesOn;
}

void Recovery::list(const RowSink& sink) {
    if (!sink) return;
    std::vector<std::uint32_t> order;
    const auto& rows = found_->rows();
    for (std::uint32_t i = 0; i < rows.size(); ++i) {
        const RowFate fate = rows[i].fate;
        const bool listed = fate == RowFate::Deleted || fate == RowFate::Earlier ||
                            (fate == RowFate::Fragment && options_.fragments);
        if (listed && isListed(rows[i].table)) order.push_back(i);
    }
    const auto key = [&](std::uint32_t place) {
        const FoundRow& row = rows[place];
        return std::tuple(row.table, row.hasRowId ? row.rowId : INT64_MAX, row.image, row.start);
    };
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
    RowListing listing(*found_);
    auto next = order.begin();
    for (std::size_t table = 0; table < facts_.tables.size(); ++table) {
        if (!isListed(table)) continue;
        if (options_.live && !facts_.tables[table].dropped &&
            !listLive(static_cast<std::uint16_t>(table), sink))
            return;
        for (; next != order.end() && rows[*next].table == table; ++next)
            if (stop_.stop_requested() || !sink(facts_, listing.listed(rows[*next]))) return;
    }
}

}  // namespace

Facts recoverRows(const PageStore& store, const RecoveryOptions& options, const RowSink& sink,
                  std::stop_token stop) {
    return Recovery(store, options, std::move(stop)).run(sink);
}

}  // namespace salvor::deep
