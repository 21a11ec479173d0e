#include "services/WhatsAppService.h"

#include <fmt/format.h>
#include <string_view>

#include "services/database/DatabaseNames.h"
#include "util/StoredName.h"

namespace salvor {
namespace {

constexpr std::string_view kUserServer = "@s.whatsapp.net";
constexpr std::string_view kLibrary = "AppDomain-net.whatsapp.WhatsApp-Library";
constexpr std::string_view kProfiles = "AppDomain-net.whatsapp.WhatsApp-Library/Media/Profile";

constexpr auto kPartners = "SELECT ZCONTACTJID, ZPARTNERNAME FROM ZWACHATSESSION";
constexpr auto kMessages =
    "SELECT Z_PK, ztext, DATETIME(zmessagedate + 978307200, 'unixepoch', 'localtime') AS "
    "ZDATETIME, ZISFROMME, zfromjid, ztojid, zstanzaid FROM ZWAMESSAGE where ZFROMJID={} OR "
    "ZTOJID=@ContactID order by Z_PK asc";
constexpr auto kMedia =
    "SELECT Z_PK, ZFILESIZE, ZMOVIEDURATION, ZMEDIALOCALPATH, ZTHUMBNAILLOCALPATH, "
    "ZXMPPTHUMBPATH FROM ZWAMEDIAITEM WHERE ZMESSAGE = {}";

/// What stands before the user server; the whole identifier of a group.
std::string phoneOf(const std::string& jid) {
    return jid.substr(0, jid.find(kUserServer));
}

struct ResolvedFile {
    Text resolved;
    Text original;
};

/// A path that does not begin with "/" gets two of them: deliberate.
ResolvedFile libraryFile(const BackupFiles& files, const Text& path) {
    if (!path || path->empty()) return {};
    const std::string slashed = path->starts_with('/') ? *path : "//" + *path;
    return {files.path(storedName(std::string(kLibrary) + slashed)).string(), path};
}

/// Profile pictures are named by the number with ".jpg"; the thumbnail ends in ".thumb".
Text profilePicture(const BackupFiles& files, const std::string& phone) {
    for (const std::string_view ending : {".jpg", ".thumb"}) {
        const auto location = fmt::format("{}/{}{}", kProfiles, phone, ending);
        if (const auto file = files.find(storedName(location))) return file->string();
    }
    return std::nullopt;
}

}  // namespace

WhatsAppService::WhatsAppService(ScanState& state)
    : abstractServices(state, WhatsAppSqliteDbName) {}

void WhatsAppService::RecoverFromIOSBackup(const DeviceInfo& device) {
    doRecovery(device);
    AdditionalFiltering();
}

void WhatsAppService::doRecovery(const DeviceInfo& device) {
    whatsAppRecovery_ = std::make_unique<WhatsAppMessagesSQLiteRecovery>(state_, cancelled_);
    if (cancelled_.stop_requested()) return;
    whatsAppRecovery_->DoRecoveryPath(ConnectionFileFullPath(device));
    recovered_ = static_cast<std::int32_t>(whatsAppRecovery_->RecoveredFiltered.size());
}

std::shared_ptr<WhatsAppContact> WhatsAppService::partnerFor(const std::string& jid) {
    auto& partner = byJid_[jid];
    if (partner == nullptr) {
        partner = std::make_shared<WhatsAppContact>();
        partner->ZContactJID = jid;
        partner->Phone = phoneOf(jid);
        partners_.push_back(partner);
    }
    return partner;
}

void WhatsAppService::AdditionalFiltering() {
    if (whatsAppRecovery_ == nullptr) return;
    for (const auto& record : whatsAppRecovery_->RecoveredFiltered) {
        auto message = std::dynamic_pointer_cast<WhatsAppMessage>(record);
        if (message == nullptr) continue;
        const auto& jid = message->IsFromMe ? message->ZToJid : message->ZFromJid;
        const auto partner = partnerFor(jid.value_or(""));
        partner->ContainsDeletedMessage = true;
        partner->ObservableCollection.push_back(message);
        message->whatsAppContact = partner;
    }
}

void WhatsAppService::getWhatisExisting(const DeviceInfo& device) {
    const auto path = ConnectionString(device);
    if (!path) return;
    dbUtils_ = std::make_shared<FMDBUtils>(path->string(), state_.sourcePolicy, cancelled_);
    if (dbUtils_->openDatabase()) getWhatisExistingWallPaperPath(device);
}

void WhatsAppService::getWhatisExistingWallPaperPath(const DeviceInfo& device) {
    const BackupFiles files(device.BackupLocation.value_or(state_.BACKUP_DIRECTORY));
    List<WhatsAppContact> found;
    auto rows = dbUtils_->executeQuery(kPartners);
    while (rows.next()) {
        const auto jid = rows.stringForColumn("ZCONTACTJID");
        if (!jid) continue;
        const auto partner = partnerFor(*jid);
        partner->ZPartnerName = rows.stringForColumn("ZPARTNERNAME");
        partner->ZContactProfileBitmapImage = profilePicture(files, *partner->Phone);
        found.push_back(partner);
    }
    for (const auto& partner : found) readMessages(device, partner);
}

void WhatsAppService::readMessages(const DeviceInfo& device,
                                   const std::shared_ptr<WhatsAppContact>& partner) {
    // The first identifier stands in the text without quotes: deliberate.
    auto rows = dbUtils_->executeQuery(fmt::format(kMessages, *partner->ZContactJID),
                                       {*partner->ZContactJID});
    while (rows.next()) {
        auto message = std::make_shared<WhatsAppMessage>();
        message->ZPrimaryKey = rows.longLongIntForColumn("Z_PK");
        message->RowId = message->ZPrimaryKey;
        message->ZText = rows.stringForColumn("ztext");
        message->Date = rows.stringForColumn("ZDATETIME");
        message->IsFromMe = rows.boolForColumn("ZISFROMME");
        message->ZFromJid = rows.stringForColumn("zfromjid");
        message->ZToJid = rows.stringForColumn("ztojid");
        message->ZStandZAid = rows.stringForColumn("zstanzaid");
        message->whatsAppContact = partner;
        message->whatsAppMessageAttachment =
            RetrieveWhatsAppMessageAttachments(device, message->ZPrimaryKey);
        partner->ObservableCollection.push_back(message);
        model_.push_back(std::move(message));
        ++retrieved_;
    }
}

std::shared_ptr<WhatsAppMessageAttachment> WhatsAppService::RetrieveWhatsAppMessageAttachments(
    const DeviceInfo& device, std::int64_t messageKey) {
    if (dbUtils_ == nullptr) return nullptr;
    auto rows = dbUtils_->executeQuery(fmt::format(kMedia, messageKey));
    if (!rows.next()) return nullptr;
    const BackupFiles files(device.BackupLocation.value_or(state_.BACKUP_DIRECTORY));
    const auto media = libraryFile(files, rows.stringForColumn("ZMEDIALOCALPATH"));
    const auto thumbnail = libraryFile(files, rows.stringForColumn("ZXMPPTHUMBPATH"));
    auto attachment = std::make_shared<WhatsAppMessageAttachment>();
    attachment->ZMediaLocalPath = media.resolved;
    attachment->OriginalZMediaLocalPath = media.original;
    attachment->ZThumbnailLocalPath = thumbnail.resolved;
    attachment->OriginalZThumbnailLocalPath = thumbnail.original;
    attachment->ZFileSize = rows.longLongIntForColumn("ZFILESIZE");
    attachment->ZMovieDuration = rows.longLongIntForColumn("ZMOVIEDURATION");
    return attachment;
}

}  // namespace salvor
