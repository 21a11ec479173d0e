#pragma once

#include <cstdint>
#include <span>
#include <stop_token>
#include <string>

#include "backup/extraction/WorkFolder.h"
#include "scan/ScanState.h"

namespace salvor {

/// What the first bytes of a stored file say it is.
enum class PictureKind : std::uint8_t {
    Png = 0,
    Jpeg = 1,
    ExifJpeg = 2,
    QuickTime = 4,
    Database = 6,
    Other = 8,
};

constexpr std::size_t kPictureHead = 20;  ///< bytes that decide the kind

PictureKind pictureKind(std::span<const std::uint8_t> head);

/// Makes the work folder afresh, empties the photo and video lists and counters of `state`, then
/// copies every picture and film that lies in the backup folder under whatever name into the work
/// folder and lists it; without a work folder nothing is copied and each is listed at its place in
/// the backup. Files that cannot be read are passed over, a fault of the category; copies that
/// cannot be written are left out, told once and counted in `picturesNotCopied`. Ends early when
/// the scan is cancelled. Returns "" or why there is no work folder or no room in it; nothing is
/// emptied then.
std::string sweepPictures(ScanState& state, WorkFolder* workFolder,
                          const std::stop_token& cancelled = {});

}  // namespace salvor
