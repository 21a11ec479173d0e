#pragma once

#include <cstdint>

#include "records/Field.h"
#include "util/Text.h"

namespace salvor {

/// List row of a chat message.
struct Chat {
    std::int64_t RowId = 0;
    salvor::Text chat_identifier;
    salvor::Text servicType;
    salvor::Text is_from_me;
    salvor::Text date;
    salvor::Text text;

    static constexpr auto fields() {
        return std::make_tuple(
            field("RowId", &Chat::RowId), field("chat_identifier", &Chat::chat_identifier),
            field("servicType", &Chat::servicType), field("is_from_me", &Chat::is_from_me),
            field("date", &Chat::date), field("text", &Chat::text));
    }
};

/// List row of the browser history.
struct InternetHistory {
    std::int32_t SlNo = 0;
    salvor::Text Url;
    salvor::Text LastVisitedDate;
    salvor::Text Title;
    std::int32_t VisitCount = 0;
    std::int32_t isChecked = 0;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &InternetHistory::SlNo),
                               field("Url", &InternetHistory::Url),
                               field("LastVisitedDate", &InternetHistory::LastVisitedDate),
                               field("Title", &InternetHistory::Title),
                               field("VisitCount", &InternetHistory::VisitCount),
                               field("isChecked", &InternetHistory::isChecked));
    }
};

/// List row of a cookie.
struct Cookies {
    std::int32_t SlNo = 0;
    salvor::Text Domain;
    salvor::Text HttpOnly;
    salvor::Text Name;
    salvor::Text Path;
    salvor::Text Value;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Cookies::SlNo), field("Domain", &Cookies::Domain),
                               field("HttpOnly", &Cookies::HttpOnly), field("Name", &Cookies::Name),
                               field("Path", &Cookies::Path), field("Value", &Cookies::Value));
    }
};

/// List row of the map history.
struct MapHistory {
    std::int32_t SlNo = 0;
    salvor::Text Query;
    salvor::Text Location;
    salvor::Text Latitude;
    salvor::Text Longitude;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &MapHistory::SlNo), field("Query", &MapHistory::Query),
                               field("Location", &MapHistory::Location),
                               field("Latitude", &MapHistory::Latitude),
                               field("Longitude", &MapHistory::Longitude));
    }
};

/// List row of a Skype contact or message.
struct Skype {
    std::int32_t skypeID = 0;
    salvor::Text skypeName;
    salvor::Text displayName;
    salvor::Text time;
    salvor::Text body;

    static constexpr auto fields() {
        return std::make_tuple(field("skypeID", &Skype::skypeID),
                               field("skypeName", &Skype::skypeName),
                               field("displayName", &Skype::displayName),
                               field("time", &Skype::time), field("body", &Skype::body));
    }
};

/// List row of a mail account.
struct Account {
    std::int32_t SlNo = 0;
    salvor::Text Username;
    salvor::Text PortNumber;
    salvor::Text ClassName;
    salvor::Text Hostname;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Account::SlNo), field("Username", &Account::Username),
                               field("PortNumber", &Account::PortNumber),
                               field("ClassName", &Account::ClassName),
                               field("Hostname", &Account::Hostname));
    }
};

/// List row of a stored internet password item: account, server, protocol.
struct KeyChain {
    std::int32_t SlNo = 0;
    salvor::Text acct;
    salvor::Text srvr;
    salvor::Text ptcl;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &KeyChain::SlNo), field("acct", &KeyChain::acct),
                               field("srvr", &KeyChain::srvr), field("ptcl", &KeyChain::ptcl));
    }
};

/// List row of an installed application.
struct Application {
    std::int32_t SlNo = 0;
    salvor::Text ApplicationName;
    salvor::Text BundleIdentifer;
    salvor::Text BundleVersion;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Application::SlNo),
                               field("ApplicationName", &Application::ApplicationName),
                               field("BundleIdentifer", &Application::BundleIdentifer),
                               field("BundleVersion", &Application::BundleVersion));
    }
};

/// List row of a music file.
struct Music {
    std::int32_t SlNo = 0;
    salvor::Text FileName;
    salvor::Text FileID;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Music::SlNo), field("FileName", &Music::FileName),
                               field("FileID", &Music::FileID));
    }
};

/// List row of the keyboard dictionary.
struct UserDict {
    std::int32_t SlNo = 0;
    salvor::Text UserKey;

    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &UserDict::SlNo),
                               field("UserKey", &UserDict::UserKey));
    }
};

/// List row of a picture: `Location` is the path of the copy in the work folder.
struct Photo {
    salvor::Text Name;
    salvor::Text Location;
    std::int32_t isChecked = 1;

    static constexpr auto fields() {
        return std::make_tuple(field("Name", &Photo::Name), field("Location", &Photo::Location),
                               field("isChecked", &Photo::isChecked));
    }
};

/// List row of a video.
struct Video {
    salvor::Text Name;
    salvor::Text Location;
    salvor::Text Image;
    std::int32_t isChecked = 1;

    static constexpr auto fields() {
        return std::make_tuple(field("Name", &Video::Name), field("Location", &Video::Location),
                               field("isChecked", &Video::isChecked));
    }
};

}  // namespace salvor
