#include "carving/deep/TableDefinition.h"

#include <algorithm>
#include <array>

#include "carving/deep/SqlTokens.h"

namespace salvor::deep {
namespace {

// The words with which what follows a column's type begins.
constexpr std::array<std::string_view, 11> kConstraintWords = {
    "CONSTRAINT", "PRIMARY", "NOT",        "NULL",      "UNIQUE", "CHECK",
    "DEFAULT",    "COLLATE", "REFERENCES", "GENERATED", "AS"};

bool beginsConstraint(const SqlToken& token) {
    return std::any_of(kConstraintWords.begin(), kConstraintWords.end(),
                       [&](std::string_view word) { return token.is(word); });
}

bool endsColumn(const SqlToken& token) {
    return token.kind == SqlToken::End || token.is(',') || token.is(')');
}

/// Reads one CREATE TABLE text from left to right.
class TableText {
  public:
    explicit TableText(std::string_view sql) : tokens_(sql) {}

    std::optional<TableDefinition> read() {
        if (!readName() || !tokens_.take('(')) return std::nullopt;
        do {
            readItem();
        } while (tokens_.take(',') && columns_.size() < TableDefinition::kMaxColumns);
        if (!tokens_.take(')')) return std::nullopt;
        while (tokens_.peek().kind != SqlToken::End) {
            if (tokens_.take().is("WITHOUT") && tokens_.peek().is("ROWID"))
                table_.withoutRowId = true;
        }
        return finish();
    }

  private:
    struct Column {
        ColumnDefinition definition;
        bool computed = false;
    };
    struct Key {
        std::vector<std::string> columns;
        bool primary = false;
        bool descending = false;  ///< as a column's own constraint
    };

    bool readName() {
        if (!tokens_.take("CREATE")) return false;
        if (!tokens_.take("TEMP")) tokens_.take("TEMPORARY");
        if (!tokens_.take("TABLE")) return false;
        if (tokens_.take("IF")) {
            tokens_.take("NOT");
            tokens_.take("EXISTS");
        }
        if (!tokens_.peek().isName()) return false;
        table_.name = tokens_.take().text;
        if (tokens_.take('.')) table_.name = tokens_.take().text;
        return true;
    }

    void readItem() {
        const SqlToken& first = tokens_.peek();
        const bool constraint = first.is("CONSTRAINT") || first.is("PRIMARY") ||
                                first.is("UNIQUE") || first.is("CHECK") || first.is("FOREIGN");
        if (constraint) {
            readTableConstraint();
        } else if (first.isName()) {
            readColumn();
        }
        while (!endsColumn(tokens_.peek()))
            if (tokens_.take().is('(')) tokens_.skipGroup();
    }

    void readTableConstraint() {
        if (tokens_.take("CONSTRAINT")) tokens_.take();
        const bool primary = tokens_.take("PRIMARY");
        if (primary) tokens_.take("KEY");
        if ((!primary && !tokens_.take("UNIQUE")) || !tokens_.take('(')) return;
        Key key{readKeyColumns(), primary, false};
        keys_.push_back(std::move(key));
    }

    std::vector<std::string> readKeyColumns() {
        std::vector<std::string> names;
        bool expected = true;
        while (tokens_.peek().kind != SqlToken::End && !tokens_.take(')')) {
            const SqlToken token = tokens_.take();
            if (token.is('(')) tokens_.skipGroup();
            if (expected && token.isName()) names.push_back(token.text);
            expected = token.is(',');
        }
        return names;
    }

    void readColumn() {
        Column column;
        column.definition.name = tokens_.take().text;
        while (tokens_.peek().isName() && !beginsConstraint(tokens_.peek())) {
            if (!column.definition.type.empty()) column.definition.type += ' ';
            column.definition.type += tokens_.take().text;
        }
        if (tokens_.take('(')) tokens_.skipGroup();
        column.definition.affinity = affinityOf(column.definition.type);
        while (!endsColumn(tokens_.peek())) readColumnConstraint(column);
        columns_.push_back(std::move(column));
    }

    void readColumnConstraint(Column& column) {
        const SqlToken token = tokens_.take();
        if (token.is("NOT") && tokens_.take("NULL")) {
            column.definition.notNull = true;
        } else if (token.is("UNIQUE")) {
            keys_.push_back({{column.definition.name}, false, false});
        } else if (token.is("PRIMARY")) {
            tokens_.take("KEY");
            keys_.push_back({{column.definition.name}, true, tokens_.take("DESC")});
        } else if (token.is("AS")) {
            column.computed = true;
        } else if (token.is("STORED")) {
            column.computed = false;
        } else if (token.is('(')) {
            tokens_.skipGroup();
        }
    }

    std::optional<TableDefinition> finish() {
        const auto primary =
            std::find_if(keys_.begin(), keys_.end(), [](const Key& key) { return key.primary; });
        if (table_.withoutRowId && primary != keys_.end())
            for (const auto& name : primary->columns) moveToFront(name);
        for (auto& column : columns_)
            if (!column.computed) table_.columns.push_back(std::move(column.definition));
        if (table_.columns.empty()) return std::nullopt;
        for (const Key& key : keys_) addKey(key);
        return std::move(table_);
    }

    void moveToFront(const std::string& name) {
        const auto found =
            std::find_if(columns_.begin() + static_cast<std::ptrdiff_t>(front_), columns_.end(),
                         [&](const Column& one) { return equalNames(one.definition.name, name); });
        if (found == columns_.end()) return;
        found->definition.notNull = true;
        std::rotate(columns_.begin() + static_cast<std::ptrdiff_t>(front_), found, found + 1);
        ++front_;
    }

    void addKey(const Key& key) {
        std::vector<std::size_t> places;
        for (const auto& name : key.columns) {
            const auto place = table_.column(name);
            if (!place) return;
            places.push_back(*place);
        }
        if (places.empty()) return;
        const auto& names = table_.columns;
        const bool alias = key.primary && !key.descending && places.size() == 1 &&
                           !table_.withoutRowId && equalNames(names[places[0]].type, "INTEGER");
        if (alias) {
            table_.alias = places[0];
        } else {
            table_.uniqueKeys.push_back(std::move(places));
        }
    }

    SqlTokens tokens_;
    TableDefinition table_;
    std::vector<Column> columns_;
    std::vector<Key> keys_;
    std::size_t front_ = 0;
};

}  // namespace

Affinity affinityOf(std::string_view declaredType) {
    std::string type(declaredType);
    std::transform(type.begin(), type.end(), type.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    const auto holds = [&](const char* word) { return type.find(word) != std::string::npos; };
    if (holds("INT")) return Affinity::Integer;
    if (holds("CHAR") || holds("CLOB") || holds("TEXT")) return Affinity::Text;
    if (holds("BLOB") || type.empty()) return Affinity::None;
    if (holds("REAL") || holds("FLOA") || holds("DOUB")) return Affinity::Real;
    return Affinity::Numeric;
}

std::optional<TableDefinition> TableDefinition::parse(std::string_view sql) {
    return TableText(sql).read();
}

std::optional<std::size_t> TableDefinition::column(std::string_view columnName) const {
    for (std::size_t i = 0; i < columns.size(); ++i)
        if (equalNames(columns[i].name, columnName)) return i;
    return std::nullopt;
}

std::optional<IndexDefinition> IndexDefinition::parse(std::string_view sql) {
    SqlTokens tokens(sql);
    IndexDefinition index;
    if (!tokens.take("CREATE")) return std::nullopt;
    index.unique = tokens.take("UNIQUE");
    if (!tokens.take("INDEX")) return std::nullopt;
    while (tokens.peek().kind != SqlToken::End && !tokens.take("ON")) tokens.take();
    if (!tokens.peek().isName()) return std::nullopt;
    index.table = tokens.take().text;
    if (!tokens.take('(')) return std::nullopt;
    while (tokens.peek().isName()) {
        index.columns.push_back(tokens.take().text);
        if (tokens.take("COLLATE")) tokens.take();
        if (!tokens.take("ASC")) tokens.take("DESC");
        if (!tokens.take(',')) break;
    }
    // What is left before the parenthesis is an expression.
    if (index.columns.empty() || !tokens.take(')')) return std::nullopt;
    index.partial = tokens.peek().is("WHERE");
    return index;
}

}  // namespace salvor::deep
