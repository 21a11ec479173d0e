#pragma once

namespace salvor {

/// Stored names of the category databases: the SHA-1 of domain, hyphen and path under which a
/// backup keeps each file.
inline constexpr const char* MessagesSqliteDbName = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";
inline constexpr const char* NotesIOS641SqliteDbName = "ca3bc056d4da0bbf88b5fb3be254f3b7147e639c";
inline constexpr const char* NotesIOS9SqliteDbName = "4f98687d8ab0d6d1a371110e6b7300f6e465bef2";
inline constexpr const char* CallHistoryIOS7641SqliteDbName =
    "2b2b0084a1bc3a5ac8c27afdf14afb42c61a19ca";
inline constexpr const char* CallHistoryIOS8SqliteDbName =
    "5a4935c78a5255723f707230a451d79c540d2741";
inline constexpr const char* ContactsIOS641SqliteDbName =
    "31bb7ba8914766d4ba40d6dfb6113c8b614be442";
inline constexpr const char* ContactsImagesIOS641SqliteDbName =
    "cd6702cea29fe89cf280a76794405adb17f9a0ee";
inline constexpr const char* CalendarsSqliteDbName = "2041457d5fe04d39d0ab481178355df6781e6858";
inline constexpr const char* WhatsAppSqliteDbName = "1b6b187a1b60b9ae8b720c79e2c67f472bab09c0";
inline constexpr const char* WhatsAppSqliteDbName2 = "7c7fba66680ef796b916b067077cc246adacf01d";

}  // namespace salvor
