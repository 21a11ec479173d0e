#pragma once

#include "records/NoteBody.h"
#include "recovery/CategoryCarver.h"

namespace salvor {

/// Carves the texts of deleted notes (ZNOTEBODY) into `RecoveredFiltered`, where the notes service
/// looks them up by owner.
class NoteBodiesSQLiteRecovery : public CategoryCarver<NoteBody> {
  public:
    static const SignatureUse<NoteBody> kSignature;

    explicit NoteBodiesSQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// Compares `RecoveredData` with the live bodies. A run adds nothing to that list.
    void filterMessages();

  protected:
    NoteBodiesSQLiteRecovery(ScanState& state, std::stop_token cancelled,
                             const SignatureUse<NoteBody>& use);

    std::string_view liveRowsStatement() const override { return "SELECT * FROM ZNOTEBODY"; }
    void recordCarved(const std::shared_ptr<NoteBody>& body) override;
    void afterRecovery() override { filterMessages(); }
};

/// The variant for the iOS 9 note store, whose texts are gzip-compressed. It looks for headers in a
/// way of its own: the codes 12 and 13 both take an empty value, blob or text, and -1 and -2 one of
/// any length. The scan makes one and replaces it before it runs.
class NoteBodiesIOS9SQLiteRecovery : public NoteBodiesSQLiteRecovery {
  public:
    static const SignatureUse<NoteBody> kSignature;

    explicit NoteBodiesIOS9SQLiteRecovery(ScanState& state, std::stop_token cancelled = {});

    /// The variant's own pass, over ZICNOTEDATA.
    void DoRecovery(const std::filesystem::path& path);
    std::optional<SQLiteTableHeaderInfo> FindSQLiteTableHeader(Bytes data,
                                                               std::int64_t offset) const override;
    /// gzip magic, deflate method, no flags, in data of at least 8 bytes.
    static bool IsGzipHeaderValue(Bytes data);
};

}  // namespace salvor
