#include "QzZone.h"

#include <time.h>

static_assert(sizeof(time_t) >= 8, "years 0..9999 need a 64-bit time_t");

const QzZone& QzZone::utc() noexcept {
    static constexpr QzZone zone(true);
    return zone;
}

const QzZone& QzZone::local() noexcept {
    static constexpr QzZone zone(false);
    return zone;
}

QzZone::Offset QzZone::offsetAt(std::int64_t utcSeconds) const {
    const Offset utcOffset = {0, false, "UTC"};
    if (isUtc_) return utcOffset;
    // localtime_r need not read TZ again; tzset makes a change of TZ visible at once.
    tzset();
    const time_t t = static_cast<time_t>(utcSeconds);
    tm wall{};
    if (localtime_r(&t, &wall) == nullptr) return utcOffset;
    return {wall.tm_gmtoff, wall.tm_isdst > 0, wall.tm_zone};
}

std::int64_t QzZone::toUtc(std::int64_t wallSeconds) const {
    // The offset at the wall time read as UTC is at most one transition away from the
    // right one, so a second step settles it. A wall time that a change of offset repeats
    // maps to one of its two instants; one that it skips, to an instant beside the gap.
    const std::int64_t guess = wallSeconds - offsetAt(wallSeconds).seconds;
    return wallSeconds - offsetAt(guess).seconds;
}
