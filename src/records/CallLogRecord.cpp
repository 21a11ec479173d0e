#include "records/CallLogRecord.h"

namespace salvor {

using Type = CallLogRecord::Type;

const std::array<CallLogRecord::Column, 17> CallLogRecord::ZCALLRECORDSchema{{
    {"Z_PK", Type::Integer},
    {"Z_ENT", Type::Integer},
    {"Z_OPT", Type::Integer},
    {"ZANSWERED", Type::Integer},
    {"ZCALLTYPE", Type::Integer},
    {"ZDISCONNECTED_CAUSE", Type::Integer},
    {"ZFACE_TIME_DATA", Type::Integer},
    {"ZNUMBER_AVAILABILITY", Type::Integer},
    {"ZORIGINATED", Type::Integer},
    {"ZREAD", Type::Integer},
    {"ZDATE", Type::Timestamp},
    {"ZDURATION", Type::Float},
    {"ZADDRESS", Type::String},
    {"ZDEVICE_ID", Type::String},
    {"ZISO_COUNTRY_CODE", Type::String},
    {"ZNAME", Type::String},
    {"ZUNIQUE_ID", Type::String},
}};

}  // namespace salvor
