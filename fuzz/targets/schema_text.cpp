// Texts of schema rows: tables and indexes.
#include "carving/deep/TableDefinition.h"
#include "fuzz/Target.h"

using namespace salvor;

SALVOR_FUZZ_TARGET(schema_text) {
    const auto text = fuzz::asText(input);
    if (const auto table = deep::TableDefinition::parse(text)) {
        fuzz::expect(!table->columns.empty(), "a table without columns");
        fuzz::expect(table->columns.size() <= deep::TableDefinition::kMaxColumns,
                     "too many columns");
        fuzz::expect(!table->alias || *table->alias < table->columns.size(), "no such alias");
        for (const auto& key : table->uniqueKeys)
            for (const std::size_t column : key)
                fuzz::expect(column < table->columns.size(), "a key of no column");
    }
    if (const auto index = deep::IndexDefinition::parse(text))
        fuzz::expect(!index->columns.empty(), "an index without columns");
}
