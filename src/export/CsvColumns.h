#pragma once

#include <cstdint>
#include <fmt/format.h>
#include <string>

#include "export/CsvWriter.h"
#include "scan/ScanState.h"
#include "util/DateUtils.h"

/// The columns of every exported file, a table per record class.
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
    csv.writeField(row.*Member);
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
    csv.writeField(date ? date : shown);
}

inline void callDuration(CsvWriter& csv, const CallLog& row, std::int32_t /*number*/) {
    csv.writeField(fmt::format("{}(Secs)", row.CallDuration));
}

inline constexpr Column<SMS> smsColumns[] = {
    serial<SMS>,           dateOf<SMS, &SMS::LocalTime>, text<SMS, &SMS::Message>,
    text<SMS, &SMS::Type>, text<SMS, &SMS::Address>,
};

inline constexpr Column<Contact> contactColumns[] = {
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

inline constexpr Column<CallLog> callLogColumns[] = {
    serial<CallLog>,
    text<CallLog, &CallLog::ContactName>,
    text<CallLog, &CallLog::LocalTime>,
    text<CallLog, &CallLog::Address>,
    text<CallLog, &CallLog::CallType>,
    callDuration,
};

inline constexpr Column<Note> noteColumns[] = {
    serial<Note>,
    dateOf<Note, &Note::CreatedDate>,
    text<Note, &Note::Title>,
    text<Note, &Note::Summary>,
};

inline constexpr Column<Calendar> calendarColumns[] = {
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

inline constexpr Column<WhatsApp> whatsAppColumns[] = {
    serial<WhatsApp>,
    dateOf<WhatsApp, &WhatsApp::MessageDate>,
    text<WhatsApp, &WhatsApp::zText>,
    text<WhatsApp, &WhatsApp::PhoneNo>,
    text<WhatsApp, &WhatsApp::ContactName>,
};

inline constexpr Column<InternetHistory> internetColumns[] = {
    ownSerial<InternetHistory>,
    text<InternetHistory, &InternetHistory::Url>,
    dateOf<InternetHistory, &InternetHistory::LastVisitedDate>,
    text<InternetHistory, &InternetHistory::Title>,
    number<InternetHistory, &InternetHistory::VisitCount>,
};

inline constexpr Column<MapHistory> mapColumns[] = {
    ownSerial<MapHistory>,
    text<MapHistory, &MapHistory::Query>,
    text<MapHistory, &MapHistory::Location>,
    text<MapHistory, &MapHistory::Latitude>,
    text<MapHistory, &MapHistory::Longitude>,
};

inline constexpr Column<Account> accountColumns[] = {
    ownSerial<Account>,
    text<Account, &Account::Username>,
    text<Account, &Account::ClassName>,
    text<Account, &Account::Hostname>,
    text<Account, &Account::PortNumber>,
};

inline constexpr Column<Application> applicationColumns[] = {
    ownSerial<Application>,
    text<Application, &Application::ApplicationName>,
    text<Application, &Application::BundleIdentifer>,
    text<Application, &Application::BundleVersion>,
};

inline constexpr Column<UserDict> dictionaryColumns[] = {
    ownSerial<UserDict>,
    text<UserDict, &UserDict::UserKey>,
};

}  // namespace salvor::columns
