#include "sql/FMDBUtils.h"

#include <utility>

#include "sql/DatabaseHandle.h"
#include "sql/ResultSetImpl.h"

namespace salvor {
namespace {

struct Binder {
    sqlite3_stmt* statement;
    int index;
    void operator()(std::int64_t value) const { sqlite3_bind_int64(statement, index, value); }
    void operator()(double value) const { sqlite3_bind_double(statement, index, value); }
    void operator()(const std::string& value) const {
        sqlite3_bind_text64(statement, index, value.data(), value.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
    }
};

}  // namespace

FMDBUtils::FMDBUtils(std::string path, SourcePolicy policy, std::stop_token cancelled,
                     std::shared_ptr<DatabaseWatch> watch)
    : path_(std::move(path)),
      policy_(policy),
      cancelled_(std::move(cancelled)),
      watch_(std::move(watch)) {}

FMDBUtils::~FMDBUtils() = default;

bool FMDBUtils::openDatabase() {
    auto handle = std::make_shared<Handle>(policy_, cancelled_, watch_);
    const bool opened = handle->open(path_);
    handle_ = opened ? std::move(handle) : nullptr;
    return opened;
}

sqlite3* FMDBUtils::sharedDB() const {
    return handle_ ? handle_->db : nullptr;
}

ResultSet FMDBUtils::executeQuery(const std::string& sql,
                                  std::initializer_list<ColumnValue> parameters) {
    sqlite3_stmt* statement = handle_ ? handle_->prepare(sql) : nullptr;
    hadError_ = statement == nullptr;
    if (hadError_) return {};
    int index = 0;
    for (const auto& parameter : parameters) std::visit(Binder{statement, ++index}, parameter);
    return ResultSet(std::make_unique<ResultSet::Impl>(handle_, statement));
}

ResultSet FMDBUtils::executeList(std::initializer_list<const char*> statements) {
    std::string reason;
    for (const char* sql : statements) {
        auto rows = executeQuery(sql);
        if (!hadError_ || handle_ == nullptr) return rows;
        if (reason.empty()) reason = handle_->notPrepared();
        if (reason.empty()) return rows;  // told already: no other statement can be better
    }
    handle_->tell(ReadingEnd::Kind::NotPrepared, std::move(reason));
    return {};
}

ResultSet FMDBUtils::executeNamedQuery(const std::string& sql, const char* name,
                                       const ColumnValue& value) {
    sqlite3_stmt* statement = handle_ ? handle_->prepare(sql) : nullptr;
    hadError_ = statement == nullptr;
    if (hadError_) return {};
    const int index = sqlite3_bind_parameter_index(statement, name);
    if (index > 0) std::visit(Binder{statement, index}, value);
    return ResultSet(std::make_unique<ResultSet::Impl>(handle_, statement));
}

}  // namespace salvor
