#include "services/WhatsAppService.h"

#include <fmt/format.h>
#include <string_view>

#include "scan/StoredNames.h"

namespace salvor {
namespace {

constexpr std::string_view kUserServer = "@s.whatsapp.net";
constexpr auto kDomain = "AppDomain-net.whatsapp.WhatsApp";

constexpr auto kPartners = "SELECT ZCONTACTJID, ZPARTNERNAME FROM ZWACHATSESSION";
constexpr auto kMessages =
    "SELECT Z_PK, ztext, DATETIME(zmessagedate + 978307200, 'unixepoch', 'localtime') AS "
    "ZDATETIME, ZISFROMME, zfromjid, ztojid, zstanzaid FROM ZWAMESSAGE where ZFROMJID={} OR "
    "ZTOJID=@ContactID order by Z_PK asc";
constexpr auto kMedia =
    "SELECT Z_PK, ZFILESIZE, ZMOVIEDURATION, ZMEDIALOCALPATH, ZTHUMBNAILLOCALPATH, "
    "ZXMPPTHUMBPATH FROM ZWAMEDIAITEM WHERE ZMESSAGE = {}";

constexpr auto kPictures = "SELECT ZJID, ZPATH FROM ZWAPROFILEPICTUREITEM";

/// What stands before the user server; the whole identifier of a group.
std::string_view phoneOf(std::string_view jid) {
    return jid.substr(0, jid.find(kUserServer));
}

struct ResolvedFile {
    Text resolved;
    Text original;
};

/// Kept: two-slashes.
ResolvedFile libraryFile(const BackupFiles& files, const Text& path) {
    if (!path) return {};
    const std::string_view slashes = path->starts_with('/') ? "" : "//";
    return {files.find(kDomain, fmt::format("Library{}{}", slashes, *path)).place.string(), path};
}

using PictureNames = std::unordered_map<Text, Text>;

/// The picture file of each partner, without folder and ending, as far as the database tells.
PictureNames readPictureNames(FMDBUtils& database) {
    PictureNames names;
    auto rows = database.executeQuery(kPictures);
    while (rows.next()) {
        const auto jid = rows.stringForColumn("ZJID");
        const auto path = rows.stringForColumn("ZPATH");
        if (jid && path) names.try_emplace(jid, path->substr(path->rfind('/') + 1));
    }
    return names;
}

/// The whole picture, else its small version.
Text profilePicture(const BackupFiles& files, const Text& name) {
    for (const std::string_view ending : {".jpg", ".thumb"}) {
        const auto path = fmt::format("Library/Media/Profile/{}{}", *name, ending);
        if (const auto picture = files.find(kDomain, path)) return picture.place.string();
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
    // Kept: whatsapp-as-found.
    whatsAppRecovery_->DoRecoveryPath(ConnectionFileFullPath(device).path);
    recovered_ = static_cast<std::int32_t>(whatsAppRecovery_->RecoveredFiltered.size());
}

std::shared_ptr<WhatsAppContact> WhatsAppService::partnerFor(const Text& jid) {
    auto& partner = byJid_[jid];
    if (partner == nullptr) {
        partner = std::make_shared<WhatsAppContact>();
        partner->ZContactJID = jid;
        partner->Phone = phoneOf(*jid);
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
        const auto partner = partnerFor(jid ? jid : "");
        partner->ContainsDeletedMessage = true;
        partner->ObservableCollection.push_back(message);
        message->whatsAppContact = partner;
    }
}

void WhatsAppService::getWhatisExisting(const DeviceInfo& device) {
    const auto file = ConnectionString(device);
    if (!file) return;
    dbUtils_ = connection(*file);
    if (dbUtils_->openDatabase()) getWhatisExistingWallPaperPath(device);
}

void WhatsAppService::getWhatisExistingWallPaperPath(const DeviceInfo& device) {
    const auto files = filesOf(device);
    const auto pictureNames = readPictureNames(*dbUtils_);
    List<WhatsAppContact> found;
    auto rows = dbUtils_->executeQuery(kPartners);
    while (rows.next()) {
        const auto jid = rows.stringForColumn("ZCONTACTJID");
        if (!jid) continue;
        const auto partner = partnerFor(jid);
        partner->ZPartnerName = rows.stringForColumn("ZPARTNERNAME");
        // Without an entry of its own a picture is named by the number alone.
        const auto picture = pictureNames.find(jid);
        partner->ZContactProfileBitmapImage = profilePicture(
            *files, picture == pictureNames.end() ? partner->Phone : picture->second);
        found.push_back(partner);
    }
    for (const auto& partner : found) readMessages(device, partner);
}

void WhatsAppService::readMessages(const DeviceInfo& device,
                                   const std::shared_ptr<WhatsAppContact>& partner) {
    // Kept: first-identifier-unquoted.
    auto rows = dbUtils_->executeNamedQuery(fmt::format(kMessages, *partner->ZContactJID),
                                            "@ContactID", partner->ZContactJID.value_or(""));
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
    const auto files = filesOf(device);
    const auto media = libraryFile(*files, rows.stringForColumn("ZMEDIALOCALPATH"));
    const auto thumbnail = libraryFile(*files, rows.stringForColumn("ZXMPPTHUMBPATH"));
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
