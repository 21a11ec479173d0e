#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <fmt/format.h>
#include <string>

#include "export/CsvWriter.h"
#include "scan/ScanState.h"
#include "util/DateUtils.h"

/// The columns of every exported file, a table per record class. Kept: no-header-line.
namespace salvor::columns {

/// Writes one column of a row; `serial` is the row's number within its file, from 1.
template <class Row>
using Column = void (*)(CsvWriter& csv, const Row& row, std::int32_t serial);

template <class Row>
void serial(CsvWriter& csv, const Row& /*row*/, std::int32_t number) {
    csv.writeField(std::to_string(number));
}

template <class Row>
void ownSerial(CsvWriter& csv, const Row& row, std::int32_t /*number*/) {
    csv.writeField(std::to_string(row.SlNo));
}

template <class Row, Text Row::*Member>
void text(CsvWriter& csv, const Row& row, std::int32_t /*number*/) {
    csv.writeField((row.*Member).view());
}

template <class Row, std::int32_t Row::*Member>
void number(CsvWriter& csv, const Row& row, std::int32_t /*number*/) {
    csv.writeField(std::to_string(row.*Member));
}

/// The moment that a display text shows; blank texts give an empty field, others stand as they are.
template <class Row, Text Row::*Member>
void dateOf(CsvWriter& csv, const Row& row, std::int32_t /*number*/) {
    const Text& shown = row.*Member;
    if (!shown || shown->find_first_not_of(' ') == std::string::npos) return csv.writeField("");
    const Text date = DateUtils::reformatDisplayDate(*shown, DatePattern::Export);
    csv.writeField((date ? date : shown).view());
}

inline void callDuration(CsvWriter& csv, const CallLog& row, std::int32_t /*number*/) {
    csv.writeField(fmt::format("{}(Secs)", row.CallDuration));
}

/// Its files are copied in place of its rows.
template <class Row>
concept Medium = std::same_as<Row, Photo> || std::same_as<Row, Video>;

/// The columns of a record class. One that has neither these nor files cannot be exported, which
/// the compiler says.
template <class Row>
inline constexpr std::nullptr_t columnsOf = nullptr;

template <>
inline constexpr Column<SMS> columnsOf<SMS>[] = {
    serial<SMS>,           dateOf<SMS, &SMS::LocalTime>, text<SMS, &SMS::Message>,
    text<SMS, &SMS::Type>, text<SMS, &SMS::Address>,
};

template <>
inline constexpr Column<Contact> columnsOf<Contact>[] = {
    serial<Contact>,
    dateOf<Contact, &Contact::CreatedDate>,
    text<Contact, &Contact::FirstName>,
    text<Contact, &Contact::MiddleName>,
    text<Contact, &Contact::LastName>,
    text<Contact, &Contact::NickName>,
    text<Contact, &Contact::DisplayName>,
    text<Contact, &Contact::ContactNo1>,
    text<Contact, &Contact::ContactNo2>,
    text<Contact, &Contact::ContactNo3>,
    text<Contact, &Contact::ContactNo4>,
    text<Contact, &Contact::ContactNo5>,
    text<Contact, &Contact::ContactNo6>,
    text<Contact, &Contact::EmailAddress1>,
    text<Contact, &Contact::EmailAddress2>,
    text<Contact, &Contact::EmailAddress3>,
    text<Contact, &Contact::JobTitle>,
    text<Contact, &Contact::Department>,
    text<Contact, &Contact::Organization>,
    dateOf<Contact, &Contact::ModifiedDate>,
};

template <>
inline constexpr Column<CallLog> columnsOf<CallLog>[] = {
    serial<CallLog>,
    text<CallLog, &CallLog::ContactName>,
    text<CallLog, &CallLog::LocalTime>,
    text<CallLog, &CallLog::Address>,
    text<CallLog, &CallLog::CallType>,
    callDuration,
};

template <>
inline constexpr Column<Note> columnsOf<Note>[] = {
    serial<Note>,
    dateOf<Note, &Note::CreatedDate>,
    text<Note, &Note::Title>,
    text<Note, &Note::Summary>,
};

template <>
inline constexpr Column<Calendar> columnsOf<Calendar>[] = {
    serial<Calendar>,
    text<Calendar, &Calendar::Summary>,
    text<Calendar, &Calendar::Description>,
    dateOf<Calendar, &Calendar::StartDate>,
    text<Calendar, &Calendar::Start_TimeZone>,
    dateOf<Calendar, &Calendar::EndDate>,
    text<Calendar, &Calendar::AllDay>,
    text<Calendar, &Calendar::OrginalDate>,
    text<Calendar, &Calendar::Priority>,
};

template <>
inline constexpr Column<WhatsApp> columnsOf<WhatsApp>[] = {
    serial<WhatsApp>,
    dateOf<WhatsApp, &WhatsApp::MessageDate>,
    text<WhatsApp, &WhatsApp::zText>,
    text<WhatsApp, &WhatsApp::PhoneNo>,
    text<WhatsApp, &WhatsApp::ContactName>,
};

template <>
inline constexpr Column<InternetHistory> columnsOf<InternetHistory>[] = {
    ownSerial<InternetHistory>,
    text<InternetHistory, &InternetHistory::Url>,
    dateOf<InternetHistory, &InternetHistory::LastVisitedDate>,
    text<InternetHistory, &InternetHistory::Title>,
    number<InternetHistory, &InternetHistory::VisitCount>,
};

template <>
inline constexpr Column<MapHistory> columnsOf<MapHistory>[] = {
    ownSerial<MapHistory>,
    text<MapHistory, &MapHistory::Query>,
    text<MapHistory, &MapHistory::Location>,
    text<MapHistory, &MapHistory::Latitude>,
    text<MapHistory, &MapHistory::Longitude>,
};

template <>
inline constexpr Column<Account> columnsOf<Account>[] = {
    ownSerial<Account>,
    text<Account, &Account::Username>,
    text<Account, &Account::ClassName>,
    text<Account, &Account::Hostname>,
    text<Account, &Account::PortNumber>,
};

template <>
inline constexpr Column<Application> columnsOf<Application>[] = {
    ownSerial<Application>,
    text<Application, &Application::ApplicationName>,
    text<Application, &Application::BundleIdentifer>,
    text<Application, &Application::BundleVersion>,
};

template <>
inline constexpr Column<UserDict> columnsOf<UserDict>[] = {
    ownSerial<UserDict>,
    text<UserDict, &UserDict::UserKey>,
};

}  // namespace salvor::columns
