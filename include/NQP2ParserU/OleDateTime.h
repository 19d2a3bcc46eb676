// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <cstdint>

#pragma pack(push, 4)
/// A moment as a day count since 1899-12-30 (fraction = time of day) and a status word.
/// 12 bytes; 0.0 with status `valid` when default-constructed. No time zone.
class NQP2_API COleDateTime {
public:
    /// Whether the day count means something; the platform's values.
    enum DateTimeStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

    /// Midnight of 1899-12-30, with status `valid`.
    COleDateTime() = default;
    /// Takes a day count as it is, with status `valid`.
    explicit COleDateTime(double days) : m_dt(days) {}

    /// Sets a calendar date and time of day (years 100 to 9999). An impossible one sets
    /// status `invalid` and day count 0. Returns the new status.
    DateTimeStatus SetDateTime(int year, int month, int day, int hour, int minute, int second);

    /// What the day count is worth.
    [[nodiscard]] DateTimeStatus GetStatus() const { return m_status; }
    /// Sets the status alone.
    void SetStatus(DateTimeStatus status) { m_status = status; }
    /// The day count; days before 1899-12-30 count negative with a positive fraction of day.
    [[nodiscard]] double GetDays() const { return m_dt; }

private:
    double m_dt = 0.0;
    DateTimeStatus m_status = valid;
};
#pragma pack(pop)

static_assert(sizeof(COleDateTime) == 12);
