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

    template <class Self = Chat>
    static constexpr auto fields() {
        return std::make_tuple(
            field("RowId", &Self::RowId), field("chat_identifier", &Self::chat_identifier),
            field("servicType", &Self::servicType), field("is_from_me", &Self::is_from_me),
            field("date", &Self::date), field("text", &Self::text));
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

    template <class Self = InternetHistory>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("Url", &Self::Url),
                               field("LastVisitedDate", &Self::LastVisitedDate),
                               field("Title", &Self::Title), field("VisitCount", &Self::VisitCount),
                               field("isChecked", &Self::isChecked));
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

    template <class Self = Cookies>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("Domain", &Self::Domain),
                               field("HttpOnly", &Self::HttpOnly), field("Name", &Self::Name),
                               field("Path", &Self::Path), field("Value", &Self::Value));
    }
};

/// List row of the map history.
struct MapHistory {
    std::int32_t SlNo = 0;
    salvor::Text Query;
    salvor::Text Location;
    salvor::Text Latitude;
    salvor::Text Longitude;

    template <class Self = MapHistory>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("Query", &Self::Query),
                               field("Location", &Self::Location),
                               field("Latitude", &Self::Latitude),
                               field("Longitude", &Self::Longitude));
    }
};

/// List row of a Skype contact or message.
struct Skype {
    std::int32_t skypeID = 0;
    salvor::Text skypeName;
    salvor::Text displayName;
    salvor::Text time;
    salvor::Text body;

    template <class Self = Skype>
    static constexpr auto fields() {
        return std::make_tuple(field("skypeID", &Self::skypeID),
                               field("skypeName", &Self::skypeName),
                               field("displayName", &Self::displayName), field("time", &Self::time),
                               field("body", &Self::body));
    }
};

/// List row of a mail account.
struct Account {
    std::int32_t SlNo = 0;
    salvor::Text Username;
    salvor::Text PortNumber;
    salvor::Text ClassName;
    salvor::Text Hostname;

    template <class Self = Account>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("Username", &Self::Username),
                               field("PortNumber", &Self::PortNumber),
                               field("ClassName", &Self::ClassName),
                               field("Hostname", &Self::Hostname));
    }
};

/// List row of a stored internet password item: account, server, protocol.
struct KeyChain {
    std::int32_t SlNo = 0;
    salvor::Text acct;
    salvor::Text srvr;
    salvor::Text ptcl;

    template <class Self = KeyChain>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("acct", &Self::acct),
                               field("srvr", &Self::srvr), field("ptcl", &Self::ptcl));
    }
};

/// List row of an installed application.
struct Application {
    std::int32_t SlNo = 0;
    salvor::Text ApplicationName;
    salvor::Text BundleIdentifer;
    salvor::Text BundleVersion;

    template <class Self = Application>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo),
                               field("ApplicationName", &Self::ApplicationName),
                               field("BundleIdentifer", &Self::BundleIdentifer),
                               field("BundleVersion", &Self::BundleVersion));
    }
};

/// List row of a music file.
struct Music {
    std::int32_t SlNo = 0;
    salvor::Text FileName;
    salvor::Text FileID;

    template <class Self = Music>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("FileName", &Self::FileName),
                               field("FileID", &Self::FileID));
    }
};

/// List row of the keyboard dictionary.
struct UserDict {
    std::int32_t SlNo = 0;
    salvor::Text UserKey;

    template <class Self = UserDict>
    static constexpr auto fields() {
        return std::make_tuple(field("SlNo", &Self::SlNo), field("UserKey", &Self::UserKey));
    }
};

/// List row of a picture: `Location` is the path of the copy in the work folder.
struct Photo {
    salvor::Text Name;
    salvor::Text Location;
    std::int32_t isChecked = 1;

    template <class Self = Photo>
    static constexpr auto fields() {
        return std::make_tuple(field("Name", &Self::Name), field("Location", &Self::Location),
                               field("isChecked", &Self::isChecked));
    }
};

/// List row of a video.
struct Video {
    salvor::Text Name;
    salvor::Text Location;
    salvor::Text Image;
    std::int32_t isChecked = 1;

    template <class Self = Video>
    static constexpr auto fields() {
        return std::make_tuple(field("Name", &Self::Name), field("Location", &Self::Location),
                               field("isChecked", &Self::isChecked));
    }
};

}  // namespace salvor
