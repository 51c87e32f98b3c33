#ifndef QZZONE_H
#define QZZONE_H

#include "QzXmlExport.h"

#include <cstdint>

/// A time-zone rule: how wall-clock time in the zone relates to UTC. There are exactly two
/// zones, UTC and the process's local zone; both are process-wide and have identity, so
/// zones are passed by reference and never copied.
class QZXML_API QzZone {
public:
    /// What the zone applies at one instant.
    struct Offset {
        long seconds;              ///< Offset east of UTC, in seconds.
        bool dst;                  ///< True while daylight saving time is in force.
        const char* abbreviation;  ///< Such as "UTC" or "CET"; lives as long as the process.
    };

    /// The UTC zone.
    static const QzZone& utc() noexcept;
    /// The local zone; each conversion follows the TZ environment variable as it is then.
    static const QzZone& local() noexcept;

    QzZone(const QzZone&) = delete;
    QzZone& operator=(const QzZone&) = delete;

    /// True for utc() only (local() is another zone even when its offset is 0).
    bool isUtc() const noexcept { return isUtc_; }
    /// The offset in force at utcSeconds (seconds since 1970-01-01T00:00:00Z).
    Offset offsetAt(std::int64_t utcSeconds) const;
    /// The UTC instant, in seconds since the epoch, at which this zone's wall clock reads
    /// wallSeconds (wall-clock fields counted as seconds since 1970-01-01T00:00:00).
    std::int64_t toUtc(std::int64_t wallSeconds) const;

private:
    explicit constexpr QzZone(bool isUtc) noexcept : isUtc_(isUtc) {}

    bool isUtc_;
};

#endif
