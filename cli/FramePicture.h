#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "receiver/analysis/Report.h"

namespace zor::cli {

/// How many frames of each sender and leg are kept for pictures: more than 20 s of any named pace.
inline constexpr std::size_t kFramesInPictures = 5000;

inline double toSeconds(std::int64_t microseconds) {
  return static_cast<double>(microseconds) / 1e6;
}

/// The names of the rows of a timeline, by `FrameRole`.
inline constexpr std::array<const char*, receiver::kFrameRoles> kRoleNames = {
    "multicast sync", "multicast data", "broadcast sync", "value",
    "position",       "version 3 sync", "version 3 data", "other broadcast"};

/// What frames say, by `News`; the first words are classes of `SvgWriter`, too.
inline constexpr std::array<const char*, receiver::kNews> kNewsNames = {"none", "repeated", "new",
                                                                        "contradicting"};

/// The frames of a leg as a picture may show them, their times counted from `start`, the capture's first
/// moment. Unless `showSecrets`, credentials cannot be read from them: they have no destination and no
/// length, and their times do not say how long they were either. For a longer frame takes longer: a value has
/// a time halfway between those of the frames before and after it.
std::vector<receiver::LoggedFrame> pictureFrames(const receiver::LegReport& leg, std::int64_t start,
                                                 bool showSecrets);

/// The part of a leg's time that a picture shows first: until somewhat after the credentials were complete.
struct PictureRange {
  std::int64_t from = 0;  ///< Microseconds from the capture's first moment.
  std::int64_t to = 1;    ///< Later than `from`.
};
PictureRange pictureRange(const receiver::LegReport& leg, std::int64_t start);

/// The number of frames of each role.
using RoleCounts = std::array<std::size_t, receiver::kFrameRoles>;
RoleCounts countRoles(const std::vector<receiver::LoggedFrame>& frames);

/// True when a timeline has a row for these frames: even an empty one shows something for version 5's.
bool isRowShown(receiver::FrameRole role, const RoleCounts& counts);

}  // namespace zor::cli
