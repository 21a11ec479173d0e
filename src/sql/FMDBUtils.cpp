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

FMDBUtils::FMDBUtils(std::string path, SourcePolicy policy, std::stop_token cancelled)
    : path_(std::move(path)), policy_(policy), cancelled_(std::move(cancelled)) {}

FMDBUtils::~FMDBUtils() = default;

bool FMDBUtils::openDatabase() {
    auto handle = std::make_shared<Handle>(policy_, cancelled_);
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
